#include "orvane/math/Base64.h"

#include <cstring>
#include <utility>

#if __BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__
#error "The decoder moves groups as little-endian words."
#endif

namespace OV
{

namespace
{

constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char padding = '=';

/// Entry of the characters outside the alphabet. Its bit 24 stands in no valid group, so that
/// one comparison of the combined entries finds any of them.
constexpr std::uint32_t invalidEntry = 0x01FFFFFF;

constexpr std::uint64_t failure = 0xFFFFFFFFFFFFFFFF;

/// For each place in a group and each character, its six bits where they stand in the three
/// decoded bytes read as a little-endian word.
struct DecodingTables
{
    constexpr DecodingTables()
    {
        for (auto& table : entries)
        {
            for (std::uint32_t& entry : table)
            {
                entry = invalidEntry;
            }
        }
        for (std::uint32_t bits = 0; bits < 64; ++bits)
        {
            const auto character = static_cast<unsigned char>(alphabet[bits]);
            entries[0][character] = bits << 2;
            entries[1][character] = bits >> 4 | (bits & 0x0F) << 12;
            entries[2][character] = bits >> 2 << 8 | (bits & 0x03) << 22;
            entries[3][character] = bits << 16;
        }
    }

    std::uint32_t entries[4][256] = {};
};

constexpr DecodingTables tables;

/// The decoded bytes of the first characters of a group, as a little-endian word.
std::uint32_t LookUp(const char* src, unsigned int characters)
{
    std::uint32_t result = 0;
    for (unsigned int i = 0; i < characters; ++i)
    {
        result |= tables.entries[i][static_cast<unsigned char>(src[i])];
    }
    return result;
}

std::uint32_t LookUpGroup(const char* src)
{
    std::uint32_t word = 0;
    std::memcpy(&word, src, sizeof word);
    return tables.entries[0][word & 0xFF] | tables.entries[1][word >> 8 & 0xFF] |
           tables.entries[2][word >> 16 & 0xFF] | tables.entries[3][word >> 24];
}

bool IsBad(std::uint32_t group)
{
    return group >= invalidEntry;
}

std::size_t EncodedSize(std::size_t bytes)
{
    return (bytes / 3 + (bytes % 3 != 0 ? 1 : 0)) * 4;
}

/// Writes EncodedSize(n) characters.
void EncodeBytes(const unsigned char* in, std::size_t n, char* out)
{
    for (; n >= 3; n -= 3, in += 3, out += 4)
    {
        out[0] = alphabet[in[0] >> 2];
        out[1] = alphabet[(in[0] & 0x03) << 4 | in[1] >> 4];
        out[2] = alphabet[(in[1] & 0x0F) << 2 | in[2] >> 6];
        out[3] = alphabet[in[2] & 0x3F];
    }
    if (n != 0)
    {
        const unsigned int second = n == 2 ? in[1] : 0;
        out[0] = alphabet[in[0] >> 2];
        out[1] = alphabet[(in[0] & 0x03) << 4 | second >> 4];
        out[2] = n == 2 ? alphabet[(second & 0x0F) << 2] : padding;
        out[3] = padding;
    }
}

} // namespace

void Base64::Encode(const std::vector<char>& in, std::vector<char>& out)
{
    std::vector<char> encoded(EncodedSize(in.size()));
    EncodeBytes(reinterpret_cast<const unsigned char*>(in.data()), in.size(), encoded.data());
    out = std::move(encoded);
}

void Base64::Encode(const unsigned char* in, unsigned int n, char* out)
{
    EncodeBytes(in, n, out);
    out[EncodedSize(n)] = '\0';
}

bool Base64::Decode(const std::string& in, std::vector<char>& out)
{
    return DecodeBytes(in.data(), in.size(), out);
}

bool Base64::Decode(const std::vector<char>& in, std::vector<char>& out)
{
    return DecodeBytes(in.data(), in.size(), out);
}

bool Base64::DecodeBytes(const char* src, std::size_t length, std::vector<char>& out)
{
    std::vector<char> scratch((length / 4 + 1) * 3);
    const std::uint64_t size = _decode(scratch.data(), src, length);
    if (size == failure)
    {
        return false;
    }
    scratch.resize(static_cast<std::size_t>(size));
    out = std::move(scratch);
    return true;
}

std::uint64_t Base64::_decode(char* dest, const char* src, std::uint64_t length)
{
    if (dest == nullptr || src == nullptr || length < 4 || length % 4 != 0)
    {
        return failure;
    }
    for (int i = 0; i < 2 && src[length - 1] == padding; ++i)
    {
        --length;
    }

    const std::uint64_t rest = length % 4;
    const std::uint64_t groups = length / 4;
    // A word store writes one byte more than the group has. The bytes of the next group or of
    // the rest cover it; the group that ends the data is stored byte by byte instead.
    const std::uint64_t wordGroups = rest == 0 ? groups - 1 : groups;
    for (std::uint64_t i = 0; i < wordGroups; ++i, src += 4, dest += 3)
    {
        const std::uint32_t group = LookUpGroup(src);
        if (IsBad(group))
        {
            return failure;
        }
        std::memcpy(dest, &group, sizeof group);
    }

    const std::uint64_t lastCharacters = rest == 0 ? 4 : rest;
    const std::uint64_t lastBytes = lastCharacters - 1;
    const std::uint32_t last = LookUp(src, static_cast<unsigned int>(lastCharacters));
    if (IsBad(last))
    {
        return failure;
    }
    for (std::uint64_t i = 0; i < lastBytes; ++i)
    {
        dest[i] = static_cast<char>(last >> (8 * i) & 0xFF);
    }
    return wordGroups * 3 + lastBytes;
}

} // namespace OV
