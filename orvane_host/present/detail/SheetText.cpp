#include "orvane_host/present/detail/SheetText.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cwchar>

namespace OV::Host::Detail
{

std::string UnitSign(double metres)
{
    static constexpr struct
    {
        double metres;
        const char* sign;
    } units[] = {{1.0, "m"}, {0.001, "mm"}, {0.01, "cm"}, {0.1, "dm"}, {1000.0, "km"}, {0.3048, "ft"}, {0.0254, "in"}};
    for (const auto& unit : units)
    {
        if (std::abs(metres - unit.metres) < 1e-6 * unit.metres)
        {
            return unit.sign;
        }
    }
    return {};
}

std::string InLocale(const std::string& utf8)
{
    std::string text;
    std::mbstate_t state{};
    for (std::size_t at = 0; at < utf8.size();)
    {
        const auto head = static_cast<unsigned char>(utf8[at++]);
        const int more = head < 0xC0 ? 0 : head < 0xE0 ? 1 : head < 0xF0 ? 2 : 3;
        std::uint32_t character = more == 0 ? head : head & (0x3Fu >> more);
        for (int i = 0; i < more && at < utf8.size(); ++i)
        {
            character = character << 6 | (static_cast<unsigned char>(utf8[at++]) & 0x3Fu);
        }
        std::array<char, 64> bytes{};
        const std::size_t length = std::wcrtomb(bytes.data(), static_cast<wchar_t>(character), &state);
        if (length > bytes.size())
        {
            return utf8;
        }
        text.append(bytes.data(), length);
    }
    return text;
}

} // namespace OV::Host::Detail
