#pragma once

#include "orvane_host/import/detail/ImageProbe.h"

#include <cstdint>
#include <vector>

namespace OV::Host
{

/// What the head of a TGA, BMP, GIF or WebP file says: pictures that the engine does not decode itself.
/// @return facts with neither sizes nor an obstacle for a file of no such kind.
ImageFacts ProbeForeign(const ByteSource& source);

/// Decodes a whole file of such a kind, the first picture of one that moves.
///
/// Takes up to three times the memory of the result for a while. What a cut off file lacks is black.
/// @param facts what its head says; the caller has found the size bearable.
/// @return R, G, B, A with the top row first; empty for a file that is damaged or differs from the facts.
std::vector<unsigned char> DecodeForeign(const unsigned char* bytes, std::uint64_t size, const ImageFacts& facts);

} // namespace OV::Host
