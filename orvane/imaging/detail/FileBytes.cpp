#include "orvane/imaging/detail/FileBytes.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace OV::detail
{

FileBytes ReadWholeFile(const std::string& name, std::size_t limit)
{
    // A null byte would end the name early and name another file. The kind is asked first:
    // a directory opens and has a size, and opening a pipe would wait for its writer.
    std::error_code error;
    if (name.find('\0') != std::string::npos || !std::filesystem::is_regular_file(name, error))
    {
        return {};
    }
    std::ifstream file(name, std::ios::in | std::ios::binary | std::ios::ate);
    const std::streamoff size = file ? std::streamoff(file.tellg()) : 0;
    if (size <= 0 || std::uint64_t(size) > limit)
    {
        return {};
    }
    FileBytes bytes;
    bytes.data.reset(new unsigned char[static_cast<std::size_t>(size)]);
    bytes.size = static_cast<std::size_t>(size);
    file.seekg(0);
    if (!file.read(reinterpret_cast<char*>(bytes.data.get()), size))
    {
        return {};
    }
    return bytes;
}

}  // namespace OV::detail
