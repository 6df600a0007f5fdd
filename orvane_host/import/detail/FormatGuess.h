#pragma once

#include <string>

namespace OV::Host
{

/// The ending that a file should have by what it begins with, such as "ifc".
///
/// Knows what the parser mistakes or misses where there is no ending; for anything else it is empty and the
/// parser tells best.
std::string GuessFormat(const std::string& path);

} // namespace OV::Host
