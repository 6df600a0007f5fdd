#pragma once

#include <string>

namespace OV::Host::Detail
{

/// Sign of a unit of length; none for one that has none.
std::string UnitSign(double metres);

/// UTF-8 in the encoding of the C locale in force; as it is where that has no such characters.
std::string InLocale(const std::string& utf8);

} // namespace OV::Host::Detail
