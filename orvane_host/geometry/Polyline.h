#pragma once

#include "orvane/math/Vector.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace OV
{

class RawLine;

} // namespace OV

namespace OV::Host
{

/// A line through points, ready for a Line.
class Polyline
{
public:
    /// The points that one RawLine has 16-bit indices for, four vertices each.
    static constexpr std::size_t MostPoints = 65536 / 4;

    /// Joins each point to the next. Points that are not finite or the same as the one before are
    /// passed over.
    /// @param closed joins the last point to the first too, where there are more than two.
    /// @return the line in as many parts as it takes, each of which begins where the one before
    ///         ends; none for fewer than two points.
    static std::vector<std::shared_ptr<RawLine>> Make(const std::vector<Vector>& points, bool closed = false);
};

} // namespace OV::Host
