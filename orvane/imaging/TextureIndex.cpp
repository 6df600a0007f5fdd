#include "orvane/imaging/TextureIndex.h"

#include <algorithm>
#include <cstdint>
#include <tuple>

namespace OV
{

namespace
{

constexpr std::uint32_t kAfterSurrogates = 0xE000;
constexpr std::uint32_t kLastOfOneUnit = 0xFFFF;

// Orders characters of 32 bits as their UTF-16 units would be: those that take two units
// begin with a surrogate, and so come before the last ones that take a single unit.
std::uint64_t Utf16Rank(wchar_t character)
{
    const std::uint64_t code = static_cast<std::uint32_t>(character);
    const bool isAfterPairs = code >= kAfterSurrogates && code <= kLastOfOneUnit;
    return isAfterPairs ? code + (std::uint64_t{1} << 32) : code;
}

bool IsLess(wchar_t a, wchar_t b)
{
    return Utf16Rank(a) < Utf16Rank(b);
}

bool IsLess(const std::wstring& a, const std::wstring& b)
{
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                        [](wchar_t left, wchar_t right) { return IsLess(left, right); });
}

}  // namespace

TextureIndex::TextureIndex(const FilePath& path, const std::string& name, bool flag)
    : isFile(true)
    , filePath(path)
    , fileName(name)
    , flag(flag)
    , fontSize(0)
    , maxWidth(0)
{
}

TextureIndex::TextureIndex(const std::string& fontName, int fontSize, const std::string& text, int maxWidth)
    : isFile(false)
    , flag(false)
    , fontName(fontName)
    , fontSize(fontSize)
    , text(text)
    , maxWidth(maxWidth)
{
}

bool TextureIndex::operator<(const TextureIndex& other) const
{
    if (isFile != other.isFile)
    {
        return other.isFile;
    }
    if (!isFile)
    {
        return std::tie(fontName, fontSize, text, maxWidth) <
               std::tie(other.fontName, other.fontSize, other.text, other.maxWidth);
    }
    if (filePath.path != other.filePath.path)
    {
        return IsLess(filePath.path, other.filePath.path);
    }
    return std::tie(fileName, flag) < std::tie(other.fileName, other.flag);
}

}  // namespace OV
