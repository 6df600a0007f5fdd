#pragma once

#include "orvane/base/detail/Prefetch.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <typeinfo>

// What the draw of a mesh asks, in place: it is asked for every mesh of every frame.
namespace OV::detail
{

/// A mesh in a material's list of draws. One with a node is drawn by what stands here: it is of the engine's
/// own classes and has one node, no flag and no draw ID.
struct PlainDraw
{
    Mesh* mesh;
    const RawMesh* geometry;
    MeshNode* node; ///< null where the draw takes more than this

    // Of the mesh's render data, which is looked at no more: it stays as it is from the upload on, and whoever
    // keeps this asks whether render data are gone or clipped otherwise. In few bytes, since each mesh of a
    // scene has one; indices for more than 4 GB have no room in a buffer.
    unsigned int vertexBuffer; ///< 0 before the upload
    int positionOffset;
    std::uint32_t indexOffset;
    std::uint32_t indexCount : 31; ///< 0 where one leads out of the mesh
    std::uint32_t isClipped : 1;

    MeshES20& Data() const { return static_cast<MeshES20&>(*mesh->GetRenderData()); }

    /// Whether it is uploaded and has a vertex.
    bool HasVertices()
    {
        if (vertexBuffer == 0)
        {
            TakeOver(Data());
        }
        return vertexBuffer != 0 && !geometry->positions.empty();
    }

    /// The mesh's own list may have changed since the upload.
    int DrawnIndexCount() const
    {
        return static_cast<int>(std::min<std::size_t>(geometry->indices.size(), indexCount));
    }

    const void* FirstIndex() const { return reinterpret_cast<const void*>(static_cast<std::uintptr_t>(indexOffset)); }

private:
    void TakeOver(const MeshES20& data)
    {
        vertexBuffer = data.vertexBufferId;
        positionOffset = data.positionOffset;
        isClipped = data.clippingPlaneEnabled;
        indexOffset = static_cast<std::uint32_t>(data.indexOffset);
        constexpr std::int64_t most = std::numeric_limits<int>::max();
        const std::int64_t count = data.spareVertices < 0 ? 0 : std::min(data.indexCount, most);
        indexCount = static_cast<std::uint32_t>(count) & static_cast<std::uint32_t>(most);
    }
};

/// Whether Render is that of MeshES20 itself.
inline bool DrawsAsBase(const MeshES20& data)
{
    return data.DrawsAsBase() || typeid(data) == typeid(MeshES20);
}

/// The draw of a mesh that has this render data, apart from its draw ID.
inline PlainDraw PlainDrawOf(Mesh* mesh, MeshES20* data)
{
    const PointerSpan<MeshNode> nodes = mesh->EachNode();
    // A class of the host's may change without a word what it has inherited.
    const bool isPlain = typeid(*mesh) == typeid(Mesh) && DrawsAsBase(*data) && data->mesh == mesh &&
                         nodes.size() == 1 && mesh->GetFlags() == 0;
    PlainDraw draw{};
    draw.mesh = mesh;
    draw.geometry = mesh->GetRawMesh().get();
    draw.node = isPlain ? nodes.front() : nullptr;
    return draw;
}

/// Asks for all that a draw touches, once it was uploaded.
inline void Prefetch(const PlainDraw& draw)
{
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
