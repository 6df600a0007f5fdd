#pragma once

#include "orvane/Export.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace OV
{

/// Standard Base64 with padding, of RFC 4648.
///
/// Decoding tolerates nothing: blanks, line breaks, the URL-safe alphabet, missing padding
/// and empty input are refused.
class ORVANE_API Base64
{
public:
    Base64() = delete;

    /// Gives exactly 4 * ceil(n / 3) characters, with no terminator. in may be out.
    static void Encode(const std::vector<char>& in, std::vector<char>& out);

    /// Writes 4 * ceil(n / 3) characters and a terminating 0, for which out has the room.
    /// in may be null when n is 0.
    static void Encode(const unsigned char* in, unsigned int n, char* out);

    /// Replaces out by the decoded bytes.
    /// @return false, with out as it was, when in is refused.
    static bool Decode(const std::string& in, std::vector<char>& out);

    /// Replaces out by the decoded bytes. in may be out.
    /// @return false, with out as it was, when in is refused.
    static bool Decode(const std::vector<char>& in, std::vector<char>& out);

protected:
    /// Decodes length characters. dest has room for 3 bytes for every 4 characters.
    /// @return the number of bytes written, or 0xFFFFFFFFFFFFFFFF when the input is refused,
    ///         in which case dest may hold part of them.
    static std::uint64_t _decode(char* dest, const char* src, std::uint64_t length);

private:
    static bool DecodeBytes(const char* src, std::size_t length, std::vector<char>& out);
};

} // namespace OV
