#pragma once

#include "orvane/Export.h"

#include <cstdint>
#include <string>
#include <vector>

namespace OV
{

class Image;
struct FilePath;

/// Turns PNG and JPEG, from files or from memory, into images, and pixels into PNG.
///
/// Nothing but the limit is kept between calls: any thread may call, several at once. No GL context is
/// needed. Bytes from outside are not trusted: whatever they hold, nothing is read past
/// their end, nothing is printed, and the process goes on. Nor does a small file cost much
/// memory: what it claims is held against its own bytes and against a limit on the picture
/// before anything of that size is taken.
class ORVANE_API ImageCodec
{
public:
    ImageCodec() = default;
    ImageCodec(const ImageCodec&) = default;
    ImageCodec(ImageCodec&&) = default;
    /// There is nothing to assign.
    ImageCodec& operator=(const ImageCodec&) { return *this; }
    ImageCodec& operator=(ImageCodec&&) { return *this; }

    /// Decodes a file as DecodeImage does. The caller deletes the image.
    /// @param path put right in front of the name, without a separator.
    /// @param name in UTF-8.
    /// @return null also where the file is missing, empty, no regular file, or larger than an
    /// int can tell.
    /// @throw std::range_error "bad conversion" where the name is not UTF-8.
    static Image* LoadImageData(const FilePath& path, const std::string& name, bool swapRedBlue, bool flipVertical);

    /// Decodes a block that begins with the PNG signature, as far as it goes, as PNG, and
    /// any other as JPEG. The caller deletes the image.
    ///
    /// Colours come as they are stored, without colour management. Only RGBA and a palette
    /// with transparency bring their own alpha; all else is opaque. A few forms come out
    /// distorted on purpose, their bytes read as 8-bit RGB or RGBA pixels just as they lie:
    /// grey PNG with alpha, PNG with 16 bits, JPEG of two or four components. A JPEG that
    /// ends early shows what there was of it.
    /// @param data stays the caller's and is not written to.
    /// @param swapRedBlue exchanges red and blue.
    /// @param flipVertical puts the bottom row first, as GL has it.
    /// @return null for an interlaced PNG and for a grey one of 16 bits.
    /// @throw std::domain_error "Error reading PNG" or "Error reading JPEG" where the library
    /// gives up, where the picture would pass GetMaxPictureBytes, and where the rows of a PNG or
    /// the RGBA bytes of a JPEG would be more than 1,032 times the block. Texts, profiles and
    /// the like of a PNG are passed over unread; no other chunk may take more than 8 MiB.
    static Image* DecodeImage(unsigned char* data, int size, bool swapRedBlue, bool flipVertical);

    /// The most bytes that a decoded picture may have, at 4 a pixel; of the whole process.
    static void SetMaxPictureBytes(std::uint64_t bytes);
    static std::uint64_t GetMaxPictureBytes();

    /// Packs 8-bit pixels, top row first and without padding, into the bytes of a PNG file.
    /// @param pixels width * height * channels bytes; not written to.
    /// @param channels 3 for RGB, 4 for RGBA.
    /// @return empty where the arguments do not fit together.
    /// @throw std::domain_error with the step that failed, where the library gives up.
    static std::vector<unsigned char> EncodeImagePNG(std::vector<unsigned char>& pixels, std::uint64_t width,
                                                     std::uint64_t height, std::uint64_t channels);
};

}  // namespace OV
