#pragma once

#include "host/detail/FileFinder.h"

#include <assimp/DefaultIOSystem.h>

#include <cstdint>
#include <string>

namespace OV::Host
{

/// The parser's way to the file system: regular files only, up to a size, for reading only.
///
/// A model may name anything as a part of it. A pipe or a device would never end.
class AssimpFiles : public Assimp::DefaultIOSystem
{
public:
    AssimpFiles(const std::string& modelPath, std::uint64_t maxBytes);

    bool Exists(const char* file) const override;
    Assimp::IOStream* Open(const char* file, const char* mode) override;

private:
    /// Caches listings, which does not show.
    mutable FileFinder m_finder;
    std::uint64_t m_maxBytes;
};

} // namespace OV::Host
