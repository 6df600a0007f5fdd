#pragma once

#include "orvane/Export.h"
#include "orvane/imaging/FilePath.h"

#include <cstdint>
#include <string>

namespace OV
{

/// What makes a shared texture the same as another: the file or the text that it shows.
struct ORVANE_API TextureIndex
{
    /// Key of a texture from a file.
    TextureIndex(const FilePath& path, const std::string& name, bool flag);

    /// Key of a texture that shows text.
    TextureIndex(const std::string& fontName, int fontSize, const std::string& text, int maxWidth);

    /// Text before files; then field by field in the order below. Wide characters count as
    /// UTF-16 units.
    bool operator<(const TextureIndex& other) const;

    bool isFile;
    FilePath filePath;     ///< directory of the file
    std::string fileName;  ///< the file's name, UTF-8
    bool flag;             ///< tells apart what is else the same; false for the engine's own textures
    std::string fontName;  ///< font family
    std::int32_t fontSize;
    std::string text;       ///< UTF-8
    std::int32_t maxWidth;  ///< pixels; below 1 there is no limit
};

}  // namespace OV
