#include "orvane_host/import/ImportResult.h"

namespace OV::Host
{

namespace
{

constexpr std::size_t kMaxText = 400;

/// Bytes of a UTF-8 sequence by its first byte, 0 for none.
std::size_t SequenceLength(unsigned char first)
{
    return first < 0x80                    ? 1
           : first >= 0xC2 && first < 0xE0 ? 2
           : first >= 0xE0 && first < 0xF0 ? 3
           : first >= 0xF0 && first < 0xF5 ? 4
                                           : 0;
}

bool IsSequence(const std::string& text, std::size_t at, std::size_t length)
{
    if (length == 0 || at + length > text.size())
    {
        return false;
    }
    for (std::size_t i = 1; i < length; ++i)
    {
        if ((static_cast<unsigned char>(text[at + i]) & 0xC0) != 0x80)
        {
            return false;
        }
    }
    return true;
}

/// Text from a file or a file system, made fit for a terminal: no control characters, none
/// of the C1 set in two bytes either, and nothing that is not UTF-8.
std::string Printable(const std::string& text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size();)
    {
        if (result.size() >= kMaxText)
        {
            result += "...";
            break;
        }
        const unsigned char first = static_cast<unsigned char>(text[i]);
        const std::size_t length = SequenceLength(first);
        if (!IsSequence(text, i, length))
        {
            result += '?';
            ++i;
            continue;
        }
        const bool isC1 = first == 0xC2 && static_cast<unsigned char>(text[i + 1]) < 0xA0;
        if (first < 0x20 || first == 0x7F || isC1)
        {
            result += ' ';
        }
        else
        {
            result.append(text, i, length);
        }
        i += length;
    }
    return result;
}

/// The same without a full stop at the end, or several.
std::string Clause(const std::string& text)
{
    const std::string result = Printable(text);
    const std::size_t last = result.find_last_not_of(" .");
    return result.substr(0, last == std::string::npos ? 0 : last + 1);
}

} // namespace

std::string ImportError::Line() const
{
    return Printable(file) + ": cannot be imported: " + Clause(reason) + ". " + Clause(remedy) + ".";
}

} // namespace OV::Host
