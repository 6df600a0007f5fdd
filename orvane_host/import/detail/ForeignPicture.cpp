#include "orvane_host/import/detail/ForeignPicture.h"

#include <webp/decode.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>

// Memory that it fills in part only, where a file is cut off, must not hold what lay there before.
#define STBI_MALLOC(size) std::calloc(1, size)
#define STBI_REALLOC(block, size) std::realloc(block, size)
#define STBI_FREE(block) std::free(block)
#define STBI_ONLY_TGA
#define STBI_ONLY_BMP
#define STBI_ONLY_GIF
#define STBI_NO_STDIO
#define STB_IMAGE_STATIC
#define STB_IMAGE_IMPLEMENTATION
#include <stb/stb_image.h>

namespace OV::Host
{

namespace
{

/// All heads are shorter.
constexpr std::size_t kHeadBytes = 256;

struct Head
{
    std::array<unsigned char, kHeadBytes> bytes = {};
    std::size_t size = 0;

    bool StartsWith(const char* magic, std::size_t at = 0) const
    {
        const std::size_t length = std::strlen(magic);
        return at + length <= size && std::memcmp(bytes.data() + at, magic, length) == 0;
    }
};

/// As much as there is of it.
Head ReadHead(const ByteSource& source)
{
    Head head;
    head.size = kHeadBytes;
    while (head.size > 0 && !source(0, head.bytes.data(), head.size))
    {
        --head.size;
    }
    return head;
}

bool IsWebp(const Head& head)
{
    return head.StartsWith("RIFF") && head.StartsWith("WEBP", 8);
}

/// The files have no mark of their own: no other picture has numbers like these.
bool IsTga(const Head& head)
{
    const auto& bytes = head.bytes;
    const int kind = bytes[2] & ~8;
    const int depth = bytes[16];
    const bool hasPalette = bytes[1] == 1;
    return head.size >= 18 && bytes[1] <= 1 && kind >= 1 && kind <= 3 && (bytes[2] & ~11) == 0 &&
           hasPalette == (kind == 1) &&
           (depth == 8 || depth == 15 || depth == 16 || depth == 24 || depth == 32);
}

ImageFacts Damaged()
{
    ImageFacts facts;
    facts.obstacle = "is damaged";
    return facts;
}

ImageFacts ProbeWebp(const Head& head)
{
    WebPBitstreamFeatures features;
    if (WebPGetFeatures(head.bytes.data(), head.size, &features) != VP8_STATUS_OK || features.width < 1 ||
        features.height < 1)
    {
        return Damaged();
    }
    ImageFacts facts;
    facts.width = static_cast<std::uint32_t>(features.width);
    facts.height = static_cast<std::uint32_t>(features.height);
    if (features.has_animation)
    {
        facts.obstacle = "is a WebP that moves, which cannot be read";
        return facts;
    }
    facts.hasAlpha = features.has_alpha != 0;
    facts.isReadable = true;
    return facts;
}

bool DecodeWebp(const unsigned char* bytes, std::uint64_t size, const ImageFacts& facts,
                std::vector<unsigned char>& rgba)
{
    const std::size_t row = std::size_t(facts.width) * 4;
    rgba.resize(row * facts.height);
    int width = 0;
    int height = 0;
    return WebPGetInfo(bytes, size, &width, &height) != 0 &&
           static_cast<std::uint32_t>(width) == facts.width &&
           static_cast<std::uint32_t>(height) == facts.height &&
           WebPDecodeRGBAInto(bytes, size, rgba.data(), rgba.size(), static_cast<int>(row)) != nullptr;
}

bool DecodeOther(const unsigned char* bytes, std::uint64_t size, const ImageFacts& facts,
                 std::vector<unsigned char>& rgba)
{
    int width = 0;
    int height = 0;
    int channels = 0;
    const std::unique_ptr<stbi_uc, decltype(&std::free)> pixels(
        stbi_load_from_memory(bytes, static_cast<int>(size), &width, &height, &channels, 4), &std::free);
    if (!pixels || static_cast<std::uint32_t>(width) != facts.width ||
        static_cast<std::uint32_t>(height) != facts.height)
    {
        return false;
    }
    rgba.assign(pixels.get(), pixels.get() + facts.Pixels() * 4);
    return true;
}

} // namespace

ImageFacts ProbeForeign(const ByteSource& source)
{
    const Head head = ReadHead(source);
    if (IsWebp(head))
    {
        return ProbeWebp(head);
    }
    if (!head.StartsWith("BM") && !head.StartsWith("GIF8") && !IsTga(head))
    {
        return ImageFacts();
    }
    int width = 0;
    int height = 0;
    int channels = 0;
    if (!stbi_info_from_memory(head.bytes.data(), static_cast<int>(head.size), &width, &height, &channels) ||
        width < 0 || height < 0)
    {
        return Damaged();
    }
    ImageFacts facts;
    facts.width = static_cast<std::uint32_t>(width);
    facts.height = static_cast<std::uint32_t>(height);
    facts.hasAlpha = channels == 2 || channels == 4;
    facts.isReadable = true;
    return facts;
}

std::vector<unsigned char> DecodeForeign(const unsigned char* bytes, std::uint64_t size, const ImageFacts& facts)
{
    std::vector<unsigned char> rgba;
    if (size == 0 || size > static_cast<std::uint64_t>(std::numeric_limits<int>::max()))
    {
        return rgba;
    }
    Head head;
    head.size = static_cast<std::size_t>(std::min<std::uint64_t>(size, kHeadBytes));
    std::copy_n(bytes, head.size, head.bytes.begin());
    const bool isDecoded =
        IsWebp(head) ? DecodeWebp(bytes, size, facts, rgba) : DecodeOther(bytes, size, facts, rgba);
    if (!isDecoded)
    {
        rgba.clear();
    }
    return rgba;
}

} // namespace OV::Host
