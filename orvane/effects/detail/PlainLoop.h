#pragma once

#include "orvane/base/GLCheckpoint.h"
#include "orvane/effects/detail/PlainPointers.h"
#include "orvane/effects/detail/RepeatedUniform.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/renderdata/detail/PlainDraw.h"

#include <GL/glew.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace OV::detail
{

/// Draws meshes one after another as MeshES20::Render does each, with the same calls, by an effect that is applied.
///
/// What an effect has for it beside its operations, all by private members:
/// - BindStreams and ReleaseStreams, what it does about the attributes of a mesh;
/// - PointersOf, which of them BindStreams points at what for a mesh whose streams lie so behind its positions;
/// - BindNoFlags, the uniforms of a mesh that has no flag;
/// - EndMesh, what it sends between two meshes;
/// - CanRepeat, whether nothing but those pointers, NodeUniforms and EndMesh is sent for a mesh in the same buffer
///   as the one before, which was not clipped otherwise;
/// - NodeUniforms, with Send for a node.
template <class Effect>
class PlainLoop
{
public:
    explicit PlainLoop(Effect& effect) : m_effect(effect) {}

    void Draw(PlainDraw* draw, PlainDraw* end)
    {
        // The first was asked for with its material.
        for (std::ptrdiff_t i = 1; i < std::min(kAhead, end - draw); ++i)
        {
            Prefetch(draw[i]);
        }
        m_effect.meshNodeFlag = false;
        while (draw != end)
        {
            draw = draw->HasVertices() ? DrawBuffer(draw, end) : draw + 1;
        }
    }

private:
    using Streams = typename Effect::Streams;
    using Layout = typename Effect::BufferLayout;

    /// How many draws ahead their memory is asked for.
    static constexpr std::ptrdiff_t kAhead = 8;

    const Layout& LayoutOf(const PlainDraw& draw)
    {
        Layout& known = m_effect.m_layout;
        if (known.vertexBuffer != draw.vertexBuffer || known.listing != MeshES20::GetListingRevision())
        {
            const MeshES20& data = draw.Data();
            const auto fromPosition = [&](int offset) { return offset < 0 ? -1 : offset - data.positionOffset; };
            known.vertexBuffer = data.vertexBufferId;
            known.indexBuffer = data.indexBufferId;
            known.fromPosition = {data.stride, 0, fromPosition(data.normalOffset), fromPosition(data.textureOffset),
                                  fromPosition(data.colorOffset)};
            known.listing = MeshES20::GetListingRevision();
        }
        return known;
    }

    static Streams StreamsAt(const Streams& fromPosition, int position)
    {
        const auto behind = [&](int offset) { return offset < 0 ? -1 : position + offset; };
        return {fromPosition.stride, position, behind(fromPosition.normal), behind(fromPosition.texture),
                behind(fromPosition.color)};
    }

    /// Draws the first, and those after it that lie in the same buffer.
    /// @return the first that does not.
    PlainDraw* DrawBuffer(PlainDraw* draw, PlainDraw* end)
    {
        const PlainDraw& first = *draw;
        const Layout& layout = LayoutOf(first);
        MeshES20::ApplyBuffer(layout.vertexBuffer, layout.indexBuffer);
        OV_GL_CHECKPOINT();
        m_effect.clipPlanesActive = first.isClipped != 0;
        // As BindMeshAttributes for a mesh without flags, which is not looked at.
        const Streams streams = layout.fromPosition;
        m_effect.BindStreams(StreamsAt(streams, first.positionOffset));
        m_effect.BindNoFlags();
        Effect::DisableSpareAttributes();
        OV_GL_CHECKPOINT();

        // Where others have drawn since Apply, nothing is known of the program.
        const bool isAlone = end - draw == 1; // as in materials of one mesh, which may be many
        const bool canRepeat =
            !isAlone && m_effect.CanRepeat() && RepeatedUniform::AreFollowed(m_effect.m_current);
        const PlainPointers pointers = canRepeat ? m_effect.PointersOf(streams) : PlainPointers();
        bool isFirstNode = true;
        // Not made for a mesh that is alone.
        std::optional<typename Effect::NodeUniforms> uniforms;
        for (;;)
        {
            if (end - draw > kAhead)
            {
                Prefetch(draw[kAhead]);
            }
            MeshNode& node = *draw->node;
            const int count = draw->DrawnIndexCount();
            if (count != 0 && IsDrawn(node, false))
            {
                if (isFirstNode)
                {
                    m_effect.Effect::BindMeshUniforms(&node);
                    isFirstNode = false;
                }
                else
                {
                    if (!uniforms)
                    {
                        uniforms.emplace(m_effect);
                    }
                    uniforms->Send(node);
                }
                glDrawElements(GL_TRIANGLES, count, GL_UNSIGNED_SHORT, draw->FirstIndex());
            }
            ++draw;
            if (!canRepeat || draw == end || !draw->HasVertices() || draw->vertexBuffer != first.vertexBuffer ||
                draw->isClipped != first.isClipped)
            {
                break;
            }
            m_effect.EndMesh();
            // As BindStreams, with the arrays enabled.
            pointers.Point(streams.stride, draw->positionOffset);
        }
        m_effect.ReleaseStreams(streams);
        return draw;
    }

    Effect& m_effect;
};

} // namespace OV::detail
