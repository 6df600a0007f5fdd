#pragma once

#include <string>

namespace OV::Apps
{

/// What every program does first. Trouble with a file is to be told in words, so that no signal comes
/// between; a stream that the caller closed must not become the number of the next file opened; and
/// words on the command line are read in the caller's encoding, or as UTF-8 where none is told.
void PrepareProcess();

/// Writes one line to standard error, with the program's name before it. Control characters, which a
/// file name may hold, become question marks.
void PrintLine(const std::string& program, const std::string& text);

} // namespace OV::Apps
