#pragma once

#include "orvane_host/geometry/detail/BoxTree.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace OV::Host::Detail
{

using FaceCorners = std::array<std::array<double, 3>, 3>;

/// A connected surface at one place, as far as the order of faces in one plane goes by it.
struct PlacedSolid
{
    Box box = {};             ///< around all of its faces
    double thickness = 0.0;   ///< of an open surface 0
    bool showsBacks = false;  ///< whether its faces are seen from behind too
    std::uint32_t family = 0; ///< those of one family look the same where they overlap, and need no order
};

/// What FindCoplanarOrder has found.
struct CoplanarOrder
{
    /// For each solid how far it stands back: 0 for what lies behind nobody, at most kMostRank.
    std::vector<std::uint8_t> ranks;
    /// Pairs of solids that share some of a plane.
    std::size_t pairs = 0;
    /// False where there was too much to look through: then all ranks are 0.
    bool isComplete = true;
};

constexpr std::uint8_t kMostRank = 15;

/// How much FindCoplanarOrder looks at before it gives up.
struct CoplanarLimits
{
    std::size_t faces = 2'000'000;        ///< near the boxes of other solids
    std::size_t comparisons = 50'000'000; ///< of two faces, and of boxes about them
};

/// Hands each face of a solid, by the solid's number, to a function. Faces are seen from where their corners go
/// round counter-clockwise.
using SolidFaces = std::function<void(std::uint32_t, const std::function<void(const FaceCorners&)>&)>;

/// Orders solids that have faces in one plane of which parts lie in the same place: there the depths are the same but
/// for rounding, and what is seen would differ from pixel to pixel. Faces that look opposite ways count only where
/// the back of one may be seen.
///
/// The thinner solid lies before the other, so that a board before a wall and a picture before a board
/// is seen; of two as thick the later one. That is one order for all, so that no ring of solids, each before the
/// next, can come out.
/// @param tolerance faces no farther apart lie in one plane.
CoplanarOrder FindCoplanarOrder(const std::vector<PlacedSolid>& solids, const SolidFaces& faces, double tolerance,
                                const CoplanarLimits& limits = {});

} // namespace OV::Host::Detail
