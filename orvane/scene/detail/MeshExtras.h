#pragma once

#include "orvane/base/Object.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/detail/DrawItemPlace.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace OV
{

/// What few meshes have.
struct Mesh::Extras
{
    std::vector<MeshNode*> nodes;
    /// The slot of the mesh alone.
    std::unique_ptr<Object> renderData;
    /// One for each entry of the nodes, rising, and kept where the node has left: a node that
    /// knows its own is found by bisection, however many stand before it. None for a node that
    /// is, and was, the only one: its rank is 0.
    std::vector<std::uint64_t> nodeRanks;
    /// How many entries of the nodes are null.
    std::uint32_t goneNodes = 0;
    std::vector<DrawItemPlace> drawItems;
};

} // namespace OV
