#pragma once

#include "orvane/imaging/Image.h"

#include <cstddef>
#include <memory>

namespace OV::detail
{

/// Decodes a block as JPEG, as ImageCodec::DecodeImage tells.
std::unique_ptr<Image> DecodeJpeg(const unsigned char* data, std::size_t size, bool swapRedBlue, bool flipVertical);

}  // namespace OV::detail
