#include "orvane_host/import/detail/ImageProbe.h"

#include "orvane_host/import/detail/ForeignPicture.h"

#include <cstring>

namespace OV::Host
{

namespace
{

/// Segments and chunks looked at before a head counts as endless.
constexpr int kMaxParts = 10'000;

std::uint32_t BigEndian32(const unsigned char* bytes)
{
    return std::uint32_t(bytes[0]) << 24 | std::uint32_t(bytes[1]) << 16 | std::uint32_t(bytes[2]) << 8 |
           bytes[3];
}

std::uint32_t BigEndian16(const unsigned char* bytes)
{
    return std::uint32_t(bytes[0]) << 8 | bytes[1];
}

/// Looks for a chunk between the header and the pixel data.
bool PngHasTransparency(const ByteSource& source)
{
    std::uint64_t offset = 33;
    unsigned char head[8];
    for (int part = 0; part < kMaxParts && source(offset, head, sizeof(head)); ++part)
    {
        if (std::memcmp(head + 4, "tRNS", 4) == 0)
        {
            return true;
        }
        if (std::memcmp(head + 4, "IDAT", 4) == 0)
        {
            return false;
        }
        offset += 12 + std::uint64_t(BigEndian32(head));
    }
    return false;
}

ImageFacts ProbePng(const ByteSource& source)
{
    ImageFacts facts;
    unsigned char header[33];
    if (!source(0, header, sizeof(header)) || std::memcmp(header + 12, "IHDR", 4) != 0)
    {
        facts.obstacle = "is damaged";
        return facts;
    }
    facts.width = BigEndian32(header + 16);
    facts.height = BigEndian32(header + 20);
    const int depth = header[24];
    const int colorType = header[25];
    const bool isInterlaced = header[28] != 0;
    const bool isGrey = colorType == 0 || colorType == 4;
    if (isInterlaced)
    {
        facts.obstacle = "is an interlaced PNG, which cannot be read";
        return facts;
    }
    if (isGrey && depth > 8)
    {
        facts.obstacle = "is a grey PNG of 16 bits, which cannot be read";
        return facts;
    }
    // Grey with alpha comes out opaque, so that it is not listed here.
    facts.hasAlpha = colorType == 6 || (colorType == 3 && PngHasTransparency(source));
    facts.isDistorted = depth > 8 || colorType == 4;
    facts.isReadable = true;
    return facts;
}

/// Whether a JPEG marker begins a frame, whose header has the size.
bool IsFrame(int marker)
{
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

ImageFacts ProbeJpeg(const ByteSource& source)
{
    ImageFacts facts;
    std::uint64_t offset = 2;
    unsigned char head[10];
    for (int part = 0; part < kMaxParts && source(offset, head, 4); ++part)
    {
        const int marker = head[1];
        if (head[0] != 0xFF)
        {
            break;
        }
        if (marker == 0xFF || marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8))
        {
            // Fill bytes and markers without a length.
            offset += marker == 0xFF ? 1 : 2;
            continue;
        }
        if (IsFrame(marker) && source(offset, head, sizeof(head)))
        {
            facts.height = BigEndian16(head + 5);
            facts.width = BigEndian16(head + 7);
            facts.isDistorted = head[9] != 1 && head[9] != 3;
            facts.isReadable = true;
            return facts;
        }
        offset += 2 + std::uint64_t(BigEndian16(head + 2));
    }
    facts.obstacle = "is damaged";
    return facts;
}

} // namespace

ImageFacts ProbeImage(const ByteSource& source)
{
    static const unsigned char pngSignature[8] = {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};
    ImageFacts facts;
    unsigned char start[8] = {};
    if (!source(0, start, sizeof(start)))
    {
        facts.obstacle = "is empty or damaged";
        return facts;
    }
    if (std::memcmp(start, pngSignature, sizeof(pngSignature)) == 0)
    {
        facts = ProbePng(source);
    }
    else if (start[0] == 0xFF && start[1] == 0xD8)
    {
        facts = ProbeJpeg(source);
    }
    else
    {
        facts = ProbeForeign(source);
        facts.needsConversion = facts.isReadable;
        if (!facts.isReadable && facts.obstacle.empty())
        {
            facts.obstacle = "is no PNG, JPEG, TGA, BMP, GIF or WebP";
        }
    }
    if (facts.isReadable && facts.Pixels() == 0)
    {
        facts.isReadable = false;
        facts.obstacle = "has no pixels";
    }
    return facts;
}

ByteSource MemorySource(const unsigned char* bytes, std::uint64_t size)
{
    return [bytes, size](std::uint64_t offset, void* to, std::size_t count)
    {
        if (offset > size || count > size - offset)
        {
            return false;
        }
        std::memcpy(to, bytes + offset, count);
        return true;
    };
}

} // namespace OV::Host
