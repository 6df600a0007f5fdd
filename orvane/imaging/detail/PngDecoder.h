#pragma once

#include "orvane/imaging/Image.h"

#include <cstddef>
#include <memory>

namespace OV::detail
{

/// Decodes a block that begins like a PNG file, as ImageCodec::DecodeImage tells.
std::unique_ptr<Image> DecodePng(const unsigned char* data, std::size_t size, bool swapRedBlue, bool flipVertical);

}  // namespace OV::detail
