#pragma once

#include "orvane/base/detail/Prefetch.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"

#include <algorithm>
#include <cstdint>
#include <limits>

// What the draw of a mesh asks, in place: it is asked for every mesh of every frame.
namespace OV::detail
{

/// A mesh in a material's list of draws. One with a node is drawn by what stands here: it is of the engine's
/// own classes and has one node, no flag and no draw ID.
struct PlainDraw
{
    Mesh* mesh;
    MeshES20* data;
    const RawMesh* geometry;
    MeshNode* node; ///< null where the draw takes more than this

    /// Whether it is uploaded and has a vertex.
    bool HasVertices() const { return data->vertexBufferId != 0 && !geometry->positions.empty(); }
};

/// Asks for all that a draw touches.
inline void Prefetch(const PlainDraw& draw)
{
    PrefetchHead(draw.data);
    PrefetchHead(draw.geometry);
    // Flags, draw ID, matrix and normals stand first in it.
    PrefetchLines<4>(draw.node);
}

/// See MeshES20::DrawnIndexCount.
inline int DrawnIndexCount(const MeshES20& data, const RawMesh& geometry, int reach = 0)
{
    if (data.spareVertices < reach)
    {
        return 0;
    }
    // The mesh's own list may have changed since the upload.
    const auto present = static_cast<std::int64_t>(geometry.indices.size());
    const std::int64_t drawn = std::min(present, data.indexCount);
    constexpr std::int64_t most = std::numeric_limits<int>::max();
    return static_cast<int>(std::min(drawn, most));
}

inline const void* FirstIndex(const MeshES20& data)
{
    return reinterpret_cast<const void*>(static_cast<std::intptr_t>(data.indexOffset));
}

/// See MeshES20::IsDrawn.
inline bool IsDrawn(const MeshNode& node, bool specificNode)
{
    constexpr unsigned int invisible = NodeFlagHidden | NodeFlagCulled;
    const unsigned int excluded = specificNode ? invisible : invisible | NodeFlagHasNodeMaterial;
    return (node.GetFlags() & excluded) == 0 && node.ReadyToDraw();
}

} // namespace OV::detail
