#include "orvane/imaging/detail/Utf8.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <stdexcept>

// By hand: std::wstring_convert is on its way out of the language and lets surrogates pass,
// and what is left of the standard library obeys the locale.
namespace OV::detail
{

namespace
{

static_assert(sizeof(wchar_t) == 4, "a wide character must hold any code point");

constexpr std::uint32_t kNoCodePoint = 0xFFFFFFFF;

bool IsCodePoint(std::uint32_t value)
{
    return value < 0xD800 || (value > 0xDFFF && value <= 0x10FFFF);
}

// How a sequence of so many bytes begins, and the lowest code point that needs it.
struct Form
{
    std::size_t length;
    std::uint32_t leadMask;
    std::uint32_t lead;
    std::uint32_t lowest;
};

constexpr Form kForms[] = {
    {1, 0x80, 0x00, 0x0},
    {2, 0xE0, 0xC0, 0x80},
    {3, 0xF0, 0xE0, 0x800},
    {4, 0xF8, 0xF0, 0x10000},
};

// Reads one code point and moves past it; kNoCodePoint where there is none.
std::uint32_t ReadCodePoint(const std::string& text, std::size_t& position)
{
    const auto byteAt = [&](std::size_t i) { return std::uint32_t(static_cast<unsigned char>(text[i])); };
    const std::uint32_t first = byteAt(position);
    for (const Form& form : kForms)
    {
        if ((first & form.leadMask) != form.lead)
        {
            continue;
        }
        if (form.length > text.size() - position)
        {
            return kNoCodePoint;
        }
        std::uint32_t value = first & ~form.leadMask & 0xFF;
        for (std::size_t i = 1; i < form.length; ++i)
        {
            const std::uint32_t next = byteAt(position + i);
            if ((next & 0xC0) != 0x80)
            {
                return kNoCodePoint;
            }
            value = (value << 6) | (next & 0x3F);
        }
        position += form.length;
        return value >= form.lowest && IsCodePoint(value) ? value : kNoCodePoint;
    }
    return kNoCodePoint;
}

}  // namespace

std::wstring WideFromUtf8(const std::string& text)
{
    std::wstring wide;
    wide.reserve(text.size());
    for (std::size_t position = 0; position < text.size();)
    {
        const std::uint32_t codePoint = ReadCodePoint(text, position);
        if (codePoint == kNoCodePoint)
        {
            throw std::range_error("bad conversion");
        }
        wide.push_back(static_cast<wchar_t>(codePoint));
    }
    return wide;
}

bool Utf8FromWide(const std::wstring& text, std::string& utf8)
{
    utf8.clear();
    for (const wchar_t character : text)
    {
        const std::uint32_t codePoint = static_cast<std::uint32_t>(character);
        if (!IsCodePoint(codePoint))
        {
            return false;
        }
        const Form* form = kForms;
        while (form + 1 != std::end(kForms) && codePoint >= form[1].lowest)
        {
            ++form;
        }
        std::size_t shift = (form->length - 1) * 6;
        utf8.push_back(static_cast<char>(form->lead | (codePoint >> shift)));
        while (shift > 0)
        {
            shift -= 6;
            utf8.push_back(static_cast<char>(0x80 | ((codePoint >> shift) & 0x3F)));
        }
    }
    return true;
}

}  // namespace OV::detail
