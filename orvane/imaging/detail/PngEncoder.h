#pragma once

#include <cstdint>
#include <vector>

namespace OV::detail
{

/// Packs pixels as ImageCodec::EncodeImagePNG tells.
/// @param pixels 8 bits a channel, exactly width * height * channels bytes.
/// @param channels 3 or 4.
std::vector<unsigned char> EncodePng(std::vector<unsigned char>& pixels, std::uint64_t width, std::uint64_t height,
                                     std::uint64_t channels);

}  // namespace OV::detail
