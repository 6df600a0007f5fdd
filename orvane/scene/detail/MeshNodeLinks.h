#pragma once

#include "orvane/scene/MeshNode.h"
#include "orvane/scene/detail/DrawItemPlace.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace OV
{

/// What few mesh nodes have.
struct MeshNode::Links
{
    std::vector<Mesh*> meshes;
    /// Of the meshes after the first.
    std::vector<std::uint64_t> laterRanks;
    std::vector<NodeLineStyle*> lineStyles;
    std::vector<DrawItemPlace> drawItems;
    std::vector<NodeMaterial*> nodeMaterials;
    std::unique_ptr<Object> renderData;
    std::unique_ptr<Object> collisionData;
};

} // namespace OV
