#pragma once

#include "orvane/math/Vector.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace OV::Host::Detail
{

/// Where something stands that is to be drawn with others.
struct BatchPlace
{
    Vector middle;       ///< world space
    std::uint32_t order; ///< what stands at one place is drawn by it: of faces in one plane the first one shows
    std::uint32_t index; ///< the caller's
    std::uint32_t vertices;
};

/// How much the parts of something have.
enum class PartSize
{
    Even, ///< all as much as each other, nearly
    Full  ///< as much as they may, but for the last
};

/// Puts what is near together: into about as few parts as it takes, each compact, and within them along a curve that
/// fills space.
/// @param most vertices of a part. What has more by itself is a part of its own.
/// @return where the parts end.
std::vector<std::size_t> CutByPlace(std::vector<BatchPlace>& places, std::size_t most, PartSize size);

} // namespace OV::Host::Detail
