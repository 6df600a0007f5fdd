#include "orvane/imaging/detail/CharacterKinds.h"

#include <hb.h>

#include <algorithm>
#include <iterator>

namespace OV::detail
{

namespace
{

// Letters of the west are spared the look-up of a category, which every label would pay for.
constexpr char32_t kFirstAfterAscii = 0x80;
constexpr char32_t kFirstMark = 0x0300;
constexpr char32_t kSoftHyphen = 0x00AD;

struct Range
{
    char32_t first;
    char32_t last;
};

// In order. HarfBuzz knows most of these, but tells nobody.
constexpr Range kUnseen[] = {
    {kSoftHyphen, kSoftHyphen},
    {0x034F, 0x034F},    // grapheme joiner
    {0x061C, 0x061C},    // Arabic letter mark
    {0x115F, 0x1160},    // Hangul fillers
    {0x17B4, 0x17B5},    // Khmer inherent vowels
    {0x180B, 0x180F},    // Mongolian selectors and separator
    {0x200B, 0x200F},    // zero-width space, joiners, direction marks
    {0x2028, 0x202E},    // separators, embeddings and overrides
    {0x2060, 0x206F},    // word joiner, invisible operators, isolates
    {0x3164, 0x3164},    // Hangul filler
    {0xFE00, 0xFE0F},    // variation selectors
    {0xFEFF, 0xFEFF},    // byte order mark
    {0xFFA0, 0xFFA0},    // half-width Hangul filler
    {0xFFF0, 0xFFFB},    // annotations, and what is reserved before them
    {0x1BCA0, 0x1BCA3},  // shorthand controls
    {0x1D173, 0x1D17A},  // musical controls
    {0xE0000, 0xE0FFF},  // tags and more variation selectors
};

hb_unicode_general_category_t Category(char32_t c)
{
    return hb_unicode_general_category(hb_unicode_funcs_get_default(), c);
}

bool IsMarkCategory(hb_unicode_general_category_t category)
{
    switch (category)
    {
    case HB_UNICODE_GENERAL_CATEGORY_NON_SPACING_MARK:
    case HB_UNICODE_GENERAL_CATEGORY_SPACING_MARK:
    case HB_UNICODE_GENERAL_CATEGORY_ENCLOSING_MARK:
        return true;
    default:
        return false;
    }
}

}  // namespace

bool IsUnseen(char32_t c)
{
    if (c < kSoftHyphen)
    {
        return false;
    }
    const Range* const range = std::lower_bound(std::begin(kUnseen), std::end(kUnseen), c,
                                                [](const Range& each, char32_t value) { return each.last < value; });
    return range != std::end(kUnseen) && range->first <= c;
}

bool IsSpace(char32_t c)
{
    return c < kFirstAfterAscii ? c == U' ' : Category(c) == HB_UNICODE_GENERAL_CATEGORY_SPACE_SEPARATOR;
}

bool IsMark(char32_t c)
{
    return c >= kFirstMark && IsMarkCategory(Category(c));
}

bool IsSymbol(char32_t c)
{
    return Category(c) == HB_UNICODE_GENERAL_CATEGORY_OTHER_SYMBOL;
}

bool BelongsToPrevious(char32_t c)
{
    if (c < kFirstMark)
    {
        return c == kSoftHyphen;
    }
    const hb_unicode_general_category_t category = Category(c);
    return IsMarkCategory(category) || category == HB_UNICODE_GENERAL_CATEGORY_FORMAT;
}

}  // namespace OV::detail
