#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace OV::Host
{

/// What the head of an image file says, without decoding it.
struct ImageFacts
{
    /// Whether this kind of file is decoded.
    bool isReadable = false;
    /// Whether it is not the engine that decodes it, which reads PNG and JPEG alone.
    bool needsConversion = false;
    /// Why not, as the end of a sentence that begins "the picture".
    std::string obstacle;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    /// Whether pixels can come out other than opaque.
    bool hasAlpha = false;
    /// Whether the engine takes the bytes of this kind of file for others than they are, so
    /// that what comes out can hardly be more than a colour.
    bool isDistorted = false;

    std::uint64_t Pixels() const { return std::uint64_t(width) * height; }
};

/// Copies size bytes from an offset of the file.
/// @return false, with anything copied, where the file does not reach that far.
using ByteSource = std::function<bool(std::uint64_t offset, void* to, std::size_t size)>;

ImageFacts ProbeImage(const ByteSource& source);

/// A source over a block of memory, which must outlive it.
ByteSource MemorySource(const unsigned char* bytes, std::uint64_t size);

} // namespace OV::Host
