#pragma once

#include "orvane/scene/MeshNode.h"
#include "orvane/scene/detail/DrawItemPlace.h"

#include <cstdint>
#include <vector>

namespace OV
{

/// What few mesh nodes have.
struct MeshNode::Links
{
    /// Of the meshes after the first.
    std::vector<std::uint64_t> laterRanks;
    std::vector<NodeLineStyle*> lineStyles;
    std::vector<DrawItemPlace> drawItems;
};

} // namespace OV
