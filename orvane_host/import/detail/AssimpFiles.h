#pragma once

#include "orvane_host/import/detail/FileFinder.h"
#include "orvane_host/import/detail/ModelSource.h"

#include <assimp/DefaultIOSystem.h>

#include <cstdint>
#include <functional>
#include <string>

namespace OV::Host
{

/// The parser's way to the file system: regular files only, up to a size, for reading only.
///
/// A model may name anything as a part of it. A pipe or a device would never end.
class AssimpFiles : public Assimp::DefaultIOSystem
{
public:
    /// @param model its content is opened by its name.
    /// @param opened called with the size of all files opened so far, each time one is.
    AssimpFiles(const ModelSource& model, std::uint64_t maxBytes,
                std::function<void(std::uint64_t)> opened);

    bool Exists(const char* file) const override;
    Assimp::IOStream* Open(const char* file, const char* mode) override;

private:
    /// The path of a regular file, or empty.
    std::string Find(const char* file) const;

    ModelSource m_model;
    /// Caches listings, which does not show.
    mutable FileFinder m_finder;
    std::uint64_t m_maxBytes;
    std::uint64_t m_openedBytes = 0;
    std::function<void(std::uint64_t)> m_opened;
};

} // namespace OV::Host
