#pragma once

#include <string>

namespace OV::detail
{

/// The wide form of a text in UTF-8, whatever the locale.
/// @throw std::range_error "bad conversion" where the bytes are not UTF-8: cut or overlong
/// sequences, surrogates and code points past U+10FFFF included.
std::wstring WideFromUtf8(const std::string& text);

/// The UTF-8 form of a wide text, whatever the locale.
/// @return false, with `utf8` unspecified, where a character is no code point.
bool Utf8FromWide(const std::wstring& text, std::string& utf8);

}  // namespace OV::detail
