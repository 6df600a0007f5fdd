#include "orvane/imaging/detail/LocaleText.h"

#include <cwchar>

namespace OV::detail
{

std::u32string DecodeLocaleText(const std::string& text)
{
    std::u32string result;
    result.reserve(text.size());
    std::mbstate_t state{};
    const char* at = text.c_str();
    const char* const end = at + text.size();
    while (at < end)
    {
        wchar_t wide = 0;
        const std::size_t length = std::mbrtowc(&wide, at, static_cast<std::size_t>(end - at), &state);
        if (length == 0)
        {
            break;
        }
        const bool refused = length == static_cast<std::size_t>(-1) || length == static_cast<std::size_t>(-2);
        if (refused)
        {
            wide = static_cast<unsigned char>(*at);
            state = std::mbstate_t{};
        }
        result.push_back(static_cast<char32_t>(wide));
        at += refused ? 1 : length;
    }
    return result;
}

}  // namespace OV::detail
