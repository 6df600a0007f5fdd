#include "orvane/effects/FXAAEffectES20.h"
#include "tests/renderer/OffscreenStage.h"

#include <GL/glew.h>
#include <glm/common.hpp>
#include <glm/geometric.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>

#include <algorithm>
#include <cmath>
#include <optional>
#include <random>

namespace OV::Test
{

namespace
{

constexpr int kSize = GLFixture::DefaultSize;

const glm::dvec3 kLuma(0.299, 0.587, 0.114);

/// A picture as the sampler sees it: linear filter, clamped.
class Sampler
{
public:
    explicit Sampler(const Picture& picture) : m_picture(picture) {}

    /// At a place in pixels.
    glm::dvec3 At(glm::dvec2 place) const
    {
        const glm::dvec2 corner = glm::floor(place - 0.5);
        const glm::dvec2 part = place - 0.5 - corner;
        const int x = static_cast<int>(corner.x);
        const int y = static_cast<int>(corner.y);
        return glm::mix(glm::mix(Texel(x, y), Texel(x + 1, y), part.x),
                        glm::mix(Texel(x, y + 1), Texel(x + 1, y + 1), part.x), part.y);
    }

private:
    glm::dvec3 Texel(int x, int y) const
    {
        const Pixel pixel = m_picture.At(std::clamp(x, 0, m_picture.GetWidth() - 1),
                                         std::clamp(y, 0, m_picture.GetHeight() - 1));
        return glm::dvec3(pixel.r, pixel.g, pixel.b) / 255.0;
    }

    const Picture& m_picture;
};

/// The filter at a pixel; none where the choice between its two results hangs on a rounding.
/// @param step what the filter takes for one pixel, in pixels of the picture.
/// @param rounding how far off a luminance may be.
std::optional<glm::dvec3> Filter(const Sampler& source, int x, int y, glm::dvec2 step, double rounding)
{
    const glm::dvec2 centre(x + 0.5, y + 0.5);
    const auto lumaAt = [&](double dx, double dy) { return glm::dot(source.At(centre + glm::dvec2(dx, dy) * step), kLuma); };
    const double nw = lumaAt(-1, -1);
    const double ne = lumaAt(1, -1);
    const double sw = lumaAt(-1, 1);
    const double se = lumaAt(1, 1);
    const double m = lumaAt(0, 0);
    const double lowest = std::min({nw, ne, sw, se, m});
    const double highest = std::max({nw, ne, sw, se, m});
    glm::dvec2 dir(-((nw + ne) - (sw + se)), (nw + sw) - (ne + se));
    const double reduce = std::max((nw + ne + sw + se) * 0.25 / 8.0, 1.0 / 128.0);
    dir = glm::clamp(dir / (std::min(std::abs(dir.x), std::abs(dir.y)) + reduce), -8.0, 8.0);
    const auto along = [&](double part) { return source.At(centre + dir * part * step); };
    const glm::dvec3 a = 0.5 * (along(1.0 / 3.0 - 0.5) + along(2.0 / 3.0 - 0.5));
    const glm::dvec3 b = a * 0.5 + 0.25 * (along(-0.5) + along(0.5));
    const double lumaB = glm::dot(b, kLuma);
    const double margin = std::min(std::abs(lumaB - lowest), std::abs(lumaB - highest));
    const glm::dvec3 apart = glm::abs(a - b);
    if (margin < rounding && std::max({apart.r, apart.g, apart.b}) > 0.004)
    {
        return std::nullopt;
    }
    return lumaB < lowest || lumaB > highest ? a : b;
}

/// From the darkest pixel to the brightest.
double LumaRange(const Picture& picture)
{
    double lowest = 1.0;
    double highest = 0.0;
    for (int y = 0; y < picture.GetHeight(); ++y)
    {
        for (int x = 0; x < picture.GetWidth(); ++x)
        {
            const Pixel pixel = picture.At(x, y);
            const double luma = glm::dot(glm::dvec3(pixel.r, pixel.g, pixel.b) / 255.0, kLuma);
            lowest = std::min(lowest, luma);
            highest = std::max(highest, luma);
        }
    }
    return highest - lowest;
}

class FXAAPixels : public OffscreenStage
{
protected:
    /// @param size what the filter is told of the picture.
    Picture Filtered(const std::function<Pixel(int, int)>& color, glm::ivec2 size = glm::ivec2(kSize))
    {
        const unsigned int texture = MakeColors(kSize, kSize, color);
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, texture);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        auto& effect = Get<FXAAEffectES20>(EffectCache::FXAA);
        effect.SetDimensions(size.x, size.y);
        return Draw(effect);
    }

    void ExpectModel(const std::function<Pixel(int, int)>& color, glm::ivec2 size = glm::ivec2(kSize))
    {
        const Picture actual = Filtered(color, size);
        Picture source(kSize, kSize, std::vector<unsigned char>(std::size_t(kSize) * kSize * 4));
        for (int y = 0; y < kSize; ++y)
        {
            for (int x = 0; x < kSize; ++x)
            {
                source.Set(x, y, color(x, y));
            }
        }
        const Sampler sampler(source);
        const double rounding = 0.01 * LumaRange(source);
        int compared = 0;
        int wrong = 0;
        int smoothed = 0;
        for (int y = 0; y < kSize; ++y)
        {
            for (int x = 0; x < kSize; ++x)
            {
                const std::optional<glm::dvec3> model = Filter(sampler, x, y, glm::dvec2(kSize) / glm::dvec2(size), rounding);
                if (!model)
                {
                    continue;
                }
                ++compared;
                const glm::vec3 expected(*model);
                const Pixel pixel = ToPixel(expected.r, expected.g, expected.b);
                smoothed += ChannelDifference(pixel, source.At(x, y)) > 4 ? 1 : 0;
                wrong += ChannelDifference(actual.At(x, y), pixel) > 3 ? 1 : 0;
            }
        }
        EXPECT_EQ(wrong, 0) << "of " << compared;
        EXPECT_GT(compared, kSize * kSize * 4 / 5);
        EXPECT_GT(smoothed, 100);
    }
};

Pixel Grey(int level)
{
    return {level, level, level, 255};
}

} // namespace

TEST_F(FXAAPixels, AFlatPictureStaysAsItIs)
{
    for (const Pixel& color : {Pixel{0, 0, 0, 255}, Pixel{255, 255, 255, 255}, Pixel{13, 130, 201, 255}})
    {
        EXPECT_EQ(Filtered([&](int, int) { return color; }).Count(color), kSize * kSize);
    }
}

TEST_F(FXAAPixels, AlphaIsOneWhateverThePictures)
{
    EXPECT_EQ(Filtered([](int, int) { return Pixel{10, 20, 30, 40}; }).Count({10, 20, 30, 255}), kSize * kSize);
}

TEST_F(FXAAPixels, ASlantedEdgeFollowsTheModel)
{
    ExpectModel([](int x, int y) { return 3 * y > x + 40 ? Pixel{250, 120, 30, 255} : Pixel{10, 40, 160, 255}; });
}

TEST_F(FXAAPixels, ASteepEdgeFollowsTheModel)
{
    ExpectModel([](int x, int y) { return y < 5 * x - 200 ? Grey(230) : Grey(20); });
}

TEST_F(FXAAPixels, WidthAndHeightAreEachOfTheirOwnDirection)
{
    const auto edge = [](int x, int y) { return 3 * y > x + 40 ? Pixel{250, 120, 30, 255} : Pixel{10, 40, 160, 255}; };
    ExpectModel(edge, {kSize, kSize / 2});
    ExpectModel(edge, {kSize * 3 / 4, kSize});
}

TEST_F(FXAAPixels, ThinLinesFollowTheModel)
{
    ExpectModel([](int x, int y) { return (x + y) % 17 == 0 || (x - 2 * y + 400) % 23 == 0 ? Grey(255) : Grey(64); });
}

TEST_F(FXAAPixels, NoiseFollowsTheModel)
{
    std::mt19937 random(5);
    std::vector<Pixel> pixels;
    for (int i = 0; i < kSize * kSize; ++i)
    {
        pixels.push_back({int(random() % 256), int(random() % 256), int(random() % 256), 255});
    }
    ExpectModel([&](int x, int y) { return pixels[std::size_t(y * kSize + x)]; });
}

TEST_F(FXAAPixels, InTheDarkTheDirectionIsReducedByAFixedShare)
{
    // Blue alone: of strong contrast, and hardly any luminance.
    std::mt19937 random(6);
    std::vector<Pixel> pixels;
    for (int i = 0; i < kSize * kSize; ++i)
    {
        pixels.push_back({0, 0, int(random() % 120), 255});
    }
    ExpectModel([&](int x, int y) { return pixels[std::size_t(y * kSize + x)]; });
}

TEST_F(FXAAPixels, AWidthOfZeroDividesByZeroAndDoesNoHarm)
{
    auto& effect = Get<FXAAEffectES20>(EffectCache::FXAA);
    effect.SetDimensions(0, 0);
    Draw(effect);
    ExpectNoGLError();
}

} // namespace OV::Test
