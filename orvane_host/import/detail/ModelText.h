#pragma once

#include <cstddef>
#include <istream>
#include <memory>
#include <string>

namespace OV::Host
{

/// Whether what a file begins with is the mark of text in UTF-16.
/// @param start two bytes or more; with fewer it is none.
bool IsMarkedUtf16(const std::string& start);

/// Text of UTF-16 as UTF-8, with a question mark for what is none.
/// @param bytes two for a unit, after the mark of their order; an odd last one is left out.
std::string Utf8OfUtf16(const std::string& bytes);

/// The text of a file from its start, in UTF-8 where the file is marked as of UTF-16, so that all who read
/// a model find the same in it.
/// @param mostBytes of the file in UTF-16 that are read; such a file is held in memory.
/// @return never null. It can be read again from its start; a file that does not open has no text.
std::unique_ptr<std::istream> OpenModelText(const std::string& path, std::size_t mostBytes);

} // namespace OV::Host
