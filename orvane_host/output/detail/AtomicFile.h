#pragma once

#include <string>
#include <vector>

namespace OV::Host::Detail
{

/// Writes a file beside `path` and renames it there, so that nobody ever sees a part of it. A
/// device or a pipe is opened and written to.
/// @param error on failure the reason and the remedy in one line, without the path.
bool WriteFileAtomically(const std::string& path, const std::vector<unsigned char>& bytes, std::string& error);

/// Goes as far as WriteFileAtomically does before its first byte, and leaves nothing behind.
bool CanWriteFile(const std::string& path, std::string& error);

}  // namespace OV::Host::Detail
