#include "orvane_host/import/detail/ModelText.h"

#include <algorithm>
#include <cwchar>
#include <fstream>
#include <iterator>
#include <locale>
#include <sstream>
#include <utility>

namespace OV::Host
{

namespace
{

constexpr std::size_t kMarkBytes = 2;

/// Takes memory for what there is, however much may be read.
std::string ReadAtMost(std::istream& stream, std::size_t most)
{
    std::string bytes;
    char block[65536];
    while (bytes.size() < most && stream)
    {
        const std::size_t wanted = std::min(most - bytes.size(), sizeof(block));
        stream.read(block, static_cast<std::streamsize>(wanted));
        bytes.append(block, static_cast<std::size_t>(std::max<std::streamsize>(stream.gcount(), 0)));
    }
    return bytes;
}

} // namespace

bool IsMarkedUtf16(const std::string& start)
{
    return start.compare(0, kMarkBytes, "\xFF\xFE") == 0 || start.compare(0, kMarkBytes, "\xFE\xFF") == 0;
}

std::string Utf8OfUtf16(const std::string& bytes)
{
    const bool isBigEndian = !bytes.empty() && bytes[0] == '\xFE';
    std::u16string units;
    units.reserve(bytes.size() / 2);
    for (std::size_t i = kMarkBytes; i + 1 < bytes.size(); i += 2)
    {
        const auto first = static_cast<unsigned char>(bytes[i]);
        const auto second = static_cast<unsigned char>(bytes[i + 1]);
        units.push_back(static_cast<char16_t>(isBigEndian ? first << 8 | second : second << 8 | first));
    }
    using Converter = std::codecvt<char16_t, char, std::mbstate_t>;
    const auto& converter = std::use_facet<Converter>(std::locale::classic());
    std::string text;
    const char16_t* from = units.data();
    const char16_t* const end = from + units.size();
    while (from != end)
    {
        char part[4096];
        char* to = part;
        std::mbstate_t state{};
        const char16_t* const before = from;
        const auto result = converter.out(state, before, end, from, std::begin(part), std::end(part), to);
        text.append(part, to);
        if (result == Converter::error || from == before)
        {
            text.push_back('?');
            ++from;
        }
    }
    return text;
}

std::unique_ptr<std::istream> OpenModelText(const std::string& path, std::size_t mostBytes)
{
    auto file = std::make_unique<std::ifstream>(path, std::ios::in | std::ios::binary);
    const bool isWide = IsMarkedUtf16(ReadAtMost(*file, kMarkBytes));
    file->clear();
    file->seekg(0);
    if (!isWide)
    {
        return file;
    }
    return std::make_unique<std::istringstream>(Utf8OfUtf16(ReadAtMost(*file, mostBytes)));
}

} // namespace OV::Host
