#include "orvane_host/import/detail/MapBuilder.h"

#include "orvane_host/import/detail/FileFinder.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <exception>
#include <filesystem>
#include <utility>
#include <vector>

namespace OV::Host
{

namespace
{

/// How far a colour may be from a unit vector; JPEG and mipmapping bring it about.
constexpr float kLengthTolerance = 0.25f;
/// Share of the pixels that must be such vectors: the room between the parts of a picture may
/// be of any colour.
constexpr double kDirectionShare = 0.75;
/// How much more blue than red or green there must be on the average, of 255. A surface that
/// is level has twice as much, a clear sky half of this.
constexpr double kBlueExcess = 45.0;

constexpr char kNoFile[] = "is one more than can be held in memory";

bool IsDirection(const unsigned char* rgb)
{
    float squares = 0.0f;
    for (int i = 0; i < 3; ++i)
    {
        const float component = static_cast<float>(rgb[i]) / 127.5f - 1.0f;
        squares += component * component;
    }
    return rgb[2] >= 127 && std::abs(std::sqrt(squares) - 1.0f) <= kLengthTolerance;
}

/// @return false when the bytes are no valid UTF-8.
bool ToWide(const std::string& utf8, std::wstring& wide)
{
    try
    {
        wide = std::filesystem::path(utf8).wstring();
        return true;
    }
    catch (const std::exception&)
    {
        return false;
    }
}

/// The opacities as a grey picture.
DecodedPicture Opacities(DecodedPicture picture, bool areInAlpha, bool isInverted)
{
    unsigned char* pixel = picture.pixels.get();
    for (std::uint64_t i = 0; i < picture.Count(); ++i, pixel += 4)
    {
        const unsigned char value = areInAlpha ? pixel[3] : pixel[0];
        std::fill(pixel, pixel + 3, isInverted ? static_cast<unsigned char>(255 - value) : value);
        pixel[3] = 255;
    }
    return picture;
}

} // namespace

MapBuilder::MapBuilder(PictureReader& pictures, ImportReport& report) : m_pictures(pictures), m_report(report)
{
}

void MapBuilder::SetMaps(const MaterialData& data, ImportedMaterial& material)
{
    // What takes no light would get some where it has normals.
    const std::string normalMap = data.isUnlit ? std::string() : NormalMapFile(data, material);
    const std::string opacityMap = OpacityMapFile(data, material);
    if (normalMap.empty() && opacityMap.empty())
    {
        return;
    }
    m_report.normalMaps += normalMap.empty() ? 0 : 1;
    m_report.opacityMaps += opacityMap.empty() ? 0 : 1;
    const std::string texture =
        material.textureName.empty()
            ? std::string()
            : std::filesystem::path(material.texturePath.path).string() + material.textureName;
    SetTexturePaths(material, texture, normalMap, opacityMap);
}

FoundPicture MapBuilder::Find(const MapData& map)
{
    FoundPicture picture = m_pictures.Find(map.picture);
    if (picture.IsUsable() && map.isOnOtherCoordinates)
    {
        picture.obstacle = "lies on texture coordinates of its own";
    }
    else if (picture.IsUsable() && picture.facts.isDistorted)
    {
        picture.obstacle = "has a form of pixels that is taken for another";
    }
    return picture;
}

std::string MapBuilder::NormalMapFile(const MaterialData& data, ImportedMaterial& material)
{
    const MapData& map = data.normalMap;
    if (map.picture.IsNone())
    {
        return std::string();
    }
    FoundPicture picture = Find(map);
    if (picture.IsUsable() && (picture.embedded || !map.isCertain))
    {
        const DecodedPicture decoded = m_pictures.Decode(picture);
        if (decoded.pixels && !map.isCertain && !HoldsNormals(decoded))
        {
            // Its normals could be worked out if it were known how high white is.
            picture.obstacle = "holds no normals, but heights of an unknown scale";
        }
    }
    const std::string file = FileOf(picture, DecodedPicture(), material);
    if (file.empty())
    {
        ReportMissing(m_report, data.name, "normal map", picture);
    }
    return file;
}

std::string MapBuilder::OpacityMapFile(const MaterialData& data, ImportedMaterial& material)
{
    const MapData& map = data.opacityMap;
    if (map.picture.IsNone())
    {
        return std::string();
    }
    FoundPicture picture = Find(map);
    DecodedPicture replacement;
    if (picture.IsUsable() && (picture.embedded || picture.facts.hasAlpha || map.isInverted))
    {
        DecodedPicture decoded = m_pictures.Decode(picture);
        const bool areInAlpha = decoded.pixels && decoded.HasTransparentPixel();
        if (areInAlpha || (decoded.pixels && map.isInverted))
        {
            // The engine takes the red of an opacity map, where white is opaque.
            replacement = Opacities(std::move(decoded), areInAlpha, map.isInverted);
        }
    }
    const std::string file = FileOf(picture, replacement, material);
    if (file.empty())
    {
        ReportMissing(m_report, data.name, "opacity map", picture);
    }
    return file;
}

std::string MapBuilder::FileOf(FoundPicture& picture, const DecodedPicture& replacement,
                               ImportedMaterial& material)
{
    if (!picture.IsUsable())
    {
        return std::string();
    }
    std::string path = picture.path;
    if (picture.embedded || replacement.pixels || !IsText(path))
    {
        const std::shared_ptr<const MemoryFile> file = HoldInMemory(picture, replacement);
        if (!file)
        {
            return std::string();
        }
        material.files.push_back(file);
        path = file->GetPath();
    }
    ++(picture.path.empty() ? m_report.embeddedTextures : m_report.fileTextures);
    return path;
}

std::shared_ptr<const MemoryFile> MapBuilder::HoldInMemory(FoundPicture& picture,
                                                           const DecodedPicture& replacement)
{
    const bool isShared = picture.embedded && !replacement.pixels;
    const auto known = m_embedded.find(picture.embedded);
    if (isShared && known != m_embedded.end())
    {
        return known->second;
    }
    const std::vector<unsigned char> bytes =
        replacement.pixels ? EncodePng(replacement) : m_pictures.FileBytes(picture);
    if (!picture.IsUsable())
    {
        return nullptr;
    }
    std::shared_ptr<const MemoryFile> file;
    if (m_memoryFiles < MemoryFile::MostAtOnce())
    {
        file = MemoryFile::Create(bytes.data(), bytes.size());
    }
    if (!file)
    {
        picture.obstacle = kNoFile;
        return nullptr;
    }
    ++m_memoryFiles;
    m_pictures.Keep(bytes.size());
    if (isShared)
    {
        m_embedded.emplace(picture.embedded, file);
    }
    return file;
}

bool HoldsNormals(const DecodedPicture& picture)
{
    std::uint64_t directions = 0;
    std::uint64_t sums[3] = {};
    const unsigned char* pixel = picture.pixels.get();
    for (std::uint64_t i = 0; i < picture.Count(); ++i, pixel += 4)
    {
        directions += IsDirection(pixel) ? 1 : 0;
        for (int channel = 0; channel < 3; ++channel)
        {
            sums[channel] += pixel[channel];
        }
    }
    const double count = static_cast<double>(picture.Count());
    const double excess = static_cast<double>(sums[2]) - static_cast<double>(std::max(sums[0], sums[1]));
    return count > 0.0 && static_cast<double>(directions) >= kDirectionShare * count &&
           excess >= kBlueExcess * count;
}

void SetTexturePaths(Material& material, const std::string& texture, const std::string& normalMap,
                     const std::string& opacityMap)
{
    const std::pair<const std::string&, std::string&> files[] = {{texture, material.textureName},
                                                                 {normalMap, material.normalMapName},
                                                                 {opacityMap, material.opacityMapName}};
    std::string folder;
    bool isFirst = true;
    for (const auto& file : files)
    {
        if (file.first.empty())
        {
            continue;
        }
        const std::string other = FolderOf(file.first);
        if (isFirst)
        {
            folder = other;
            isFirst = false;
        }
        // Cut at a slash, a path names the same file whatever links its folders are.
        const auto end = std::mismatch(folder.begin(), folder.end(), other.begin(), other.end()).first;
        folder = FolderOf(std::string(folder.begin(), end));
    }
    std::wstring wide;
    if (!ToWide(folder, wide))
    {
        return;
    }
    for (const auto& file : files)
    {
        if (!file.first.empty())
        {
            file.second = file.first.substr(folder.size());
        }
    }
    material.texturePath.path = wide;
}

bool IsText(const std::string& path)
{
    std::wstring wide;
    return ToWide(path, wide);
}

} // namespace OV::Host
