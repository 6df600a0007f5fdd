#pragma once

#include <string>

namespace OV::detail
{

/// The code points of a text in the encoding of the C locale in force, up to its first zero.
///
/// A byte that the locale refuses becomes the code point of the same value. Changes no locale.
std::u32string DecodeLocaleText(const std::string& text);

}  // namespace OV::detail
