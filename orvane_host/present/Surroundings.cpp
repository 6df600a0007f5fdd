#include "orvane_host/present/Surroundings.h"

#include "orvane_host/import/detail/PictureFile.h"
#include "orvane_host/present/detail/CubePicture.h"
#include "orvane/effects/SkySettings.h"

#include <sys/stat.h>

#include <glm/geometric.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>

namespace OV::Host
{

namespace
{

using Detail::CubePicture;

constexpr float kPi = 3.14159265f;
constexpr int kLeastFaceSize = 16;
/// The gradient of a sky is smooth.
constexpr int kSkyFaceSize = 64;
/// Of the roughest level; below it a lobe would not be told from its neighbour's.
constexpr int kLastFaceSize = 4;
constexpr int kSamples = 64;

/// The names of six sides, each in the order of a CubePicture.
constexpr std::array<std::array<const char*, 6>, 4> kSideNames = {{
    {"px", "nx", "py", "ny", "pz", "nz"},
    {"posx", "negx", "posy", "negy", "posz", "negz"},
    {"right", "left", "top", "bottom", "front", "back"},
    {"right", "left", "up", "down", "front", "back"},
}};

float ToLight(float channel)
{
    return channel <= 0.04045f ? channel / 12.92f : std::pow((channel + 0.055f) / 1.055f, 2.4f);
}

float FromLight(float light)
{
    return light <= 0.0031308f ? light * 12.92f : 1.055f * std::pow(light, 1.0f / 2.4f) - 0.055f;
}

unsigned char ByteOf(float light)
{
    return static_cast<unsigned char>(std::lround(std::clamp(FromLight(light), 0.0f, 1.0f) * 255.0f));
}

glm::vec3 LightOf(const Color& color)
{
    return {ToLight(color.r), ToLight(color.g), ToLight(color.b)};
}

/// A flat picture in linear light.
struct LightPicture
{
    int width = 0;
    int height = 0;
    std::vector<glm::vec3> texels;

    const glm::vec3& At(int x, int y) const
    {
        return texels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
    }
};

/// Brings a picture down to a size that is no larger; each texel is the mean of what it covers.
LightPicture Reduced(const PicturePixels& picture, int width, int height)
{
    std::array<float, 256> lights{};
    for (int i = 0; i < 256; ++i)
    {
        lights[static_cast<std::size_t>(i)] = ToLight(static_cast<float>(i) / 255.0f);
    }
    LightPicture reduced{width, height, {}};
    reduced.texels.reserve(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    const auto edge = [](int i, int from, int to) {
        return static_cast<int>(static_cast<std::int64_t>(i) * from / to);
    };
    for (int y = 0; y < height; ++y)
    {
        for (int x = 0; x < width; ++x)
        {
            glm::vec3 sum(0.0f);
            int count = 0;
            for (int row = edge(y, picture.height, height); row < edge(y + 1, picture.height, height); ++row)
            {
                for (int column = edge(x, picture.width, width); column < edge(x + 1, picture.width, width);
                     ++column, ++count)
                {
                    const unsigned char* const pixel =
                        picture.rgba.data() + (static_cast<std::size_t>(row) * picture.width + column) * 4;
                    sum += glm::vec3(lights[pixel[0]], lights[pixel[1]], lights[pixel[2]]);
                }
            }
            reduced.texels.push_back(sum / static_cast<float>(count));
        }
    }
    return reduced;
}

/// Between the four nearest texels of a picture that runs round from its right edge to its left.
glm::vec3 SampleAround(const LightPicture& picture, float u, float v)
{
    const float x = u * static_cast<float>(picture.width) - 0.5f;
    const float y = std::clamp(v * static_cast<float>(picture.height) - 0.5f, 0.0f,
                               static_cast<float>(picture.height - 1));
    const float floorX = std::floor(x);
    const int left = (static_cast<int>(floorX) + picture.width) % picture.width;
    const int right = (left + 1) % picture.width;
    const int top = static_cast<int>(y);
    const int bottom = std::min(top + 1, picture.height - 1);
    const float s = x - floorX;
    const float t = y - static_cast<float>(top);
    return (picture.At(left, top) * (1.0f - s) + picture.At(right, top) * s) * (1.0f - t)
        + (picture.At(left, bottom) * (1.0f - s) + picture.At(right, bottom) * s) * t;
}

int FaceSizeFor(int texels)
{
    int size = kLeastFaceSize;
    while (size * 2 <= texels && size < Surroundings::MostFaceSize)
    {
        size *= 2;
    }
    return size;
}

bool Exists(const std::string& path)
{
    struct stat facts{};
    return ::stat(path.c_str(), &facts) == 0;
}

std::string SideName(const std::string& pattern, const char* side)
{
    std::string name = pattern;
    const std::size_t star = name.rfind('*');
    return name.replace(star, 1, side);
}

/// The files of six sides; none for what names one picture.
/// @return false where a star stands for names that there are no files of.
bool SidesOf(const std::string& source, std::vector<std::string>& sides, std::string& error)
{
    if (Exists(source))
    {
        return true;
    }
    if (source.find('*') != std::string::npos)
    {
        // The names of which there are most; one that is missing is then told.
        std::ptrdiff_t best = 0;
        for (const auto& names : kSideNames)
        {
            std::vector<std::string> named;
            for (const char* name : names)
            {
                named.push_back(SideName(source, name));
            }
            const auto found = std::count_if(named.begin(), named.end(), &Exists);
            if (found > best)
            {
                best = found;
                sides = std::move(named);
            }
        }
        if (best > 0)
        {
            return true;
        }
        error = "there is no file of that name with px, posx or right in place of the star; "
                         "check the name";
        return false;
    }
    if (std::count(source.begin(), source.end(), ',') == 5)
    {
        for (std::size_t from = 0; from <= source.size();)
        {
            const std::size_t to = std::min(source.find(',', from), source.size());
            sides.push_back(source.substr(from, to - from));
            from = to + 1;
        }
    }
    return true;
}

} // namespace

/// Puts the levels together of a colour for each direction.
class Surroundings::Maker
{
public:
    /// Light from a direction, with Y up and the middle of the picture in -Z.
    using Light = std::function<glm::vec3(const glm::vec3&)>;

    /// The alpha of a level's lobe, which is as wide as a few texels: as sharp as they can show it.
    static float AlphaOf(int level, int size)
    {
        constexpr float texels = 2.4f;
        return texels * kPi / 2.0f * static_cast<float>(1 << level) / static_cast<float>(size);
    }

    static std::shared_ptr<const Surroundings> Make(int size, UpAxis up, const Light& light)
    {
        std::shared_ptr<Surroundings> made(new Surroundings);
        made->m_faceSize = size;
        std::vector<CubePicture> levels = {CubePicture(size)};
        Fill(levels.front(), up, light);
        while (levels.back().GetSize() > 1)
        {
            levels.push_back(levels.back().Halved());
        }
        made->Take(levels.front());
        int count = 1;
        for (int edge = size; edge > kLastFaceSize; edge /= 2)
        {
            ++count;
        }
        for (int level = 1; level < count; ++level)
        {
            // The narrow lobes of the large levels need fewer.
            const int samples = level == 1 ? kSamples / 4 : level == 2 ? kSamples / 2 : kSamples;
            made->Take(CubePicture::Blurred(levels, size >> level, AlphaOf(level, size), samples));
        }
        return made;
    }

    /// The look-up of the effect turns a quarter about X and ends opposite to what is mirrored.
    static glm::vec3 MirroredIn(const glm::vec3& lookUp, UpAxis up)
    {
        const glm::vec3 world(-lookUp.x, lookUp.z, -lookUp.y);
        return up == UpAxis::Y ? world : glm::vec3(world.x, world.z, -world.y);
    }

private:
    /// Each texel is the mean of four places in it.
    static void Fill(CubePicture& cube, UpAxis up, const Light& light)
    {
        for (int face = 0; face < CubePicture::Faces; ++face)
        {
            for (int y = 0; y < cube.GetSize(); ++y)
            {
                for (int x = 0; x < cube.GetSize(); ++x)
                {
                    glm::vec3 sum(0.0f);
                    for (int i = 0; i < 4; ++i)
                    {
                        const float s = static_cast<float>(x) + (i % 2 == 0 ? 0.25f : 0.75f);
                        const float t = static_cast<float>(y) + (i / 2 == 0 ? 0.25f : 0.75f);
                        sum += light(MirroredIn(glm::normalize(cube.DirectionOf(face, s, t)), up));
                    }
                    cube.At(face, x, y) = sum * 0.25f;
                }
            }
        }
    }
};

std::shared_ptr<const Surroundings> Surroundings::Read(const std::string& source, UpAxis up, std::string& error)
{
    std::vector<std::string> sides;
    if (!SidesOf(source, sides, error))
    {
        return nullptr;
    }
    const PictureFileLimits limits{MostFileBytes, MostPixels};
    if (sides.empty())
    {
        PicturePixels picture;
        if (!ReadPictureFile(source, FirstRow::Top, picture, error, limits))
        {
            return nullptr;
        }
        if (std::abs(picture.width - 2 * picture.height) > picture.height / 10)
        {
            error = "has " + std::to_string(picture.width) + "x" + std::to_string(picture.height)
                + " pixels; a picture in all directions is twice as wide as high";
            return nullptr;
        }
        const int size = FaceSizeFor(picture.width / 4);
        const LightPicture around = Reduced(picture, std::min(picture.width, 4 * size), std::min(picture.height, 2 * size));
        picture = PicturePixels();
        return Maker::Make(size, up, [&](const glm::vec3& d) {
            return SampleAround(around, 0.5f + std::atan2(d.x, -d.z) / (2.0f * kPi),
                                0.5f - std::asin(std::clamp(d.y, -1.0f, 1.0f)) / kPi);
        });
    }
    std::unique_ptr<CubePicture> cube;
    for (int face = 0; face < CubePicture::Faces; ++face)
    {
        const std::string& path = sides[static_cast<std::size_t>(face)];
        PicturePixels picture;
        std::string reason;
        if (!ReadPictureFile(path, FirstRow::Top, picture, reason, limits))
        {
            error = path + ": " + reason;
            return nullptr;
        }
        if (picture.width != picture.height)
        {
            error = path + ": has " + std::to_string(picture.width) + "x" + std::to_string(picture.height)
                + " pixels; the side of a cube is square";
            return nullptr;
        }
        if (!cube)
        {
            cube = std::make_unique<CubePicture>(std::min(picture.width, MostFaceSize));
        }
        const int size = cube->GetSize();
        if (picture.width < size)
        {
            error = path + ": is smaller than the side before; all six are of one size";
            return nullptr;
        }
        const LightPicture side = Reduced(picture, size, size);
        for (int y = 0; y < size; ++y)
        {
            for (int x = 0; x < size; ++x)
            {
                cube->At(face, x, y) = side.At(x, y);
            }
        }
    }
    // Sides lie as GL has them where the front is +Z and the right +X: mirrored, seen from outside.
    return Maker::Make(FaceSizeFor(cube->GetSize()), up,
                       [&](const glm::vec3& d) { return cube->Sample({d.x, d.y, -d.z}); });
}

std::shared_ptr<const Surroundings> Surroundings::OfSky(const SkySettings& sky, const std::optional<Color>& ground,
                                                        UpAxis up)
{
    const glm::vec3 horizon = LightOf(sky.GetHorizonColor());
    const glm::vec3 below = ground ? LightOf(*ground) : horizon;
    return Maker::Make(kSkyFaceSize, up, [&](const glm::vec3& d) {
        const float height = std::asin(std::clamp(d.y, -1.0f, 1.0f)) / (kPi / 2.0f);
        if (height < 0.0f)
        {
            // A plain fades into the horizon within a tenth of the way down.
            const float share = std::clamp(-height / 0.1f, 0.0f, 1.0f);
            return horizon + (below - horizon) * share;
        }
        // As the shader of the sky mixes it: colours, not light.
        const float first = std::clamp(height / sky.HorizonStop(), 0.0f, 1.0f);
        const float second = std::clamp((height - sky.HorizonStop()) / (sky.SkyStop() - sky.HorizonStop()), 0.0f, 1.0f);
        const Color& low = sky.GetHorizonColor();
        const Color& middle = sky.GetSkyColor();
        const Color& high = sky.GetUpperSkyColor();
        const auto mixed = [&](float a, float b, float c) { return a * (1.0f - first) + b * (first - second) + c * second; };
        return LightOf(Color(mixed(low.r, middle.r, high.r), mixed(low.g, middle.g, high.g), mixed(low.b, middle.b, high.b)));
    });
}

float Surroundings::LevelOf(float roughness) const
{
    const float share = roughness * roughness / Maker::AlphaOf(0, m_faceSize);
    return share > 1.0f ? std::min(std::log2(share), static_cast<float>(GetLevelCount() - 1)) : 0.0f;
}

const unsigned char* Surroundings::GetTexels(int level, int face) const
{
    const std::size_t edge = static_cast<std::size_t>(m_faceSize >> level);
    return m_levels[static_cast<std::size_t>(level)].data() + static_cast<std::size_t>(face) * edge * edge * 4;
}

void Surroundings::Take(const Detail::CubePicture& cube)
{
    std::vector<unsigned char>& bytes = m_levels.emplace_back();
    const int size = cube.GetSize();
    bytes.reserve(static_cast<std::size_t>(CubePicture::Faces) * static_cast<std::size_t>(size) * static_cast<std::size_t>(size) * 4);
    for (int face = 0; face < CubePicture::Faces; ++face)
    {
        for (int y = 0; y < size; ++y)
        {
            for (int x = 0; x < size; ++x)
            {
                const glm::vec3& light = cube.At(face, x, y);
                bytes.insert(bytes.end(), {ByteOf(light.x), ByteOf(light.y), ByteOf(light.z), 255});
            }
        }
    }
}

} // namespace OV::Host
