#include "host/detail/AssimpFiles.h"

#include <cstring>
#include <sys/stat.h>

namespace OV::Host
{

AssimpFiles::AssimpFiles(const std::string& modelPath, std::uint64_t maxBytes)
    : m_finder(modelPath), m_maxBytes(maxBytes)
{
}

bool AssimpFiles::Exists(const char* file) const
{
    return IsRegularFile(file) || !m_finder.Find(file).empty();
}

Assimp::IOStream* AssimpFiles::Open(const char* file, const char* mode)
{
    if (std::strpbrk(mode, "wa+"))
    {
        return nullptr;
    }
    const std::string path = IsRegularFile(file) ? std::string(file) : m_finder.Find(file);
    struct stat info = {};
    if (path.empty() || stat(path.c_str(), &info) != 0 || static_cast<std::uint64_t>(info.st_size) > m_maxBytes)
    {
        return nullptr;
    }
    return DefaultIOSystem::Open(path.c_str(), mode);
}

} // namespace OV::Host
