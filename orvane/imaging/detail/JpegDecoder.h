#pragma once

#include "orvane/imaging/Image.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace OV::detail
{

/// Decodes a block as JPEG, as ImageCodec::DecodeImage tells.
/// @param maxPictureBytes the most that the pixels of the image may take.
std::unique_ptr<Image> DecodeJpeg(const unsigned char* data, std::size_t size, std::uint64_t maxPictureBytes,
                                  bool swapRedBlue, bool flipVertical);

}  // namespace OV::detail
