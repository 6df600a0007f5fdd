#pragma once

#include "orvane_host/import/ImportResult.h"
#include "orvane_host/import/detail/ImportedMaterial.h"
#include "orvane_host/import/detail/ModelData.h"
#include "orvane_host/import/detail/PictureReader.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>

namespace OV::Host
{

/// Gives materials the maps of a model.
///
/// The engine loads maps from files only, all files of a material below one folder. What has no
/// file that it could be told of, because it is embedded, of a name that is no text, or not yet
/// in the form that the engine takes, gets one in memory.
class MapBuilder
{
public:
    /// Both must outlive the builder.
    MapBuilder(PictureReader& pictures, ImportReport& report);

    /// Sets the maps of a material whose texture is set already.
    void SetMaps(const MaterialData& data, ImportedMaterial& material);

private:
    /// @return the path of a file that the engine can load, or empty.
    std::string NormalMapFile(const MaterialData& data, ImportedMaterial& material);
    std::string OpacityMapFile(const MaterialData& data, ImportedMaterial& material);

    /// Finds a map, unless it lies on coordinates of its own.
    FoundPicture Find(const MapData& map);
    /// Sees to a file for the picture, and counts it.
    /// @param replacement what to put in the picture's place; without pixels the picture itself.
    std::string FileOf(FoundPicture& picture, const DecodedPicture& replacement, ImportedMaterial& material);
    std::shared_ptr<const MemoryFile> HoldInMemory(FoundPicture& picture, const DecodedPicture& replacement);

    PictureReader& m_pictures;
    ImportReport& m_report;
    /// Those that hold an embedded picture as it is.
    std::map<const TextureData*, std::shared_ptr<const MemoryFile>> m_embedded;
    std::size_t m_memoryFiles = 0;
};

/// Whether nearly all colours of a picture are directions away from a surface, and mostly
/// straight away from it. A height map is grey, and a photograph seldom that blue.
bool HoldsNormals(const DecodedPicture& picture);

/// Names files to a material: all of one folder by their bare names, else by what is behind the
/// folder that they have in common. Empty paths leave the name as it is.
/// @param texture, normalMap, opacityMap paths in UTF-8.
void SetTexturePaths(Material& material, const std::string& texture, const std::string& normalMap,
                     const std::string& opacityMap);

/// Whether a path can be told to the engine.
bool IsText(const std::string& path);

} // namespace OV::Host
