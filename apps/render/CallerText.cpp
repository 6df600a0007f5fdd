#include "apps/render/CallerText.h"

#include <cstddef>
#include <cstdint>
#include <cwchar>

namespace OV::RenderApp
{

namespace
{

void AppendUtf8(std::uint32_t character, std::string& text)
{
    if (character < 0x80)
    {
        text += static_cast<char>(character);
        return;
    }
    const int more = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    static constexpr std::uint32_t heads[] = {0, 0xC0, 0xE0, 0xF0};
    text += static_cast<char>(heads[more] | character >> (6 * more));
    for (int shift = 6 * (more - 1); shift >= 0; shift -= 6)
    {
        text += static_cast<char>(0x80 | (character >> shift & 0x3F));
    }
}

} // namespace

std::string ToUtf8(const std::string& text)
{
    std::string utf8;
    std::mbstate_t state{};
    for (std::size_t at = 0; at < text.size();)
    {
        wchar_t character = 0;
        const std::size_t length = std::mbrtowc(&character, text.data() + at, text.size() - at, &state);
        const bool isText = length != 0 && length <= text.size() - at;
        state = isText ? state : std::mbstate_t{};
        at += isText ? length : 1;
        AppendUtf8(isText ? static_cast<std::uint32_t>(character) : '?', utf8);
    }
    return utf8;
}

} // namespace OV::RenderApp
