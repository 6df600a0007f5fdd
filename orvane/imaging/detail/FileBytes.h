#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace OV::detail
{

/// A block of bytes; without any, nothing was read.
struct FileBytes
{
    std::unique_ptr<unsigned char[]> data;
    std::size_t size = 0;
};

/// Reads a whole file.
/// @param name in UTF-8.
/// @return no bytes where there is no such file, where it is empty, longer than `limit`, or
/// anything but a regular file, and where it can not be read to its end.
FileBytes ReadWholeFile(const std::string& name, std::size_t limit);

}  // namespace OV::detail
