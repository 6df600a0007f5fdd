#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace OV::Host::Detail
{

/// A box along the axes.
struct Box
{
    double low[3];
    double high[3];
};

/// A place in a tree of boxes. The children of an inner one are the one after it and `second`.
struct BoxBranch
{
    Box box;
    std::uint32_t first = 0;  ///< of a leaf, in the order of the leaves
    std::uint32_t count = 0;  ///< 0 for an inner one
    std::uint32_t second = 0; ///< of an inner one
    std::uint32_t axis = 0;   ///< along which the first child lies lower than the second
};

/// From the root to the deepest leaf, at most.
constexpr std::size_t kDeepestBoxTree = 80;

/// Makes a tree over boxes, such that rays meet few of them. Fewer than 2^32; those without a middle that is a
/// number lie somewhere in it.
/// @param order is filled with the numbers of the boxes in the order of the leaves.
/// @return the root first; empty without boxes.
std::vector<BoxBranch> BuildBoxTree(const std::vector<Box>& boxes, std::vector<std::uint32_t>& order);

} // namespace OV::Host::Detail
