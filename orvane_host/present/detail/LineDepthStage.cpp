#include "orvane_host/present/detail/LineDepthStage.h"

#include "orvane_host/present/StageAccess.h"
#include "orvane_host/present/detail/FarthestEffect.h"
#include "orvane_host/present/detail/ScreenBuffer.h"
#include "orvane_host/present/detail/SlopeEffect.h"
#include "orvane_host/present/detail/SurfacePass.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshStyleES20.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/Scene.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <cstddef>

namespace OV::Host::Detail
{

namespace
{

/// What the pass of identifiers doesn't know the shape of.
bool HasShape(MeshStyleES20& style)
{
    const auto* const data = dynamic_cast<const MaterialES20*>(&style);
    const Material* const material = data ? data->GetMaterial() : nullptr;
    return !style.GetShader(RenderPassDepthId)
        || (material && ((material->GetFlags() & MaterialFlagPoints) != 0 || data->GetOpacityMapID() != 0));
}

} // namespace

LineDepthStage::LineDepthStage() = default;

LineDepthStage::~LineDepthStage() = default;

void LineDepthStage::ReleaseGL()
{
    m_effect.reset();
    m_farthestEffect.reset();
    m_blockBuffer.reset();
    m_farthestBuffer.reset();
    m_opaqueBuffer.reset();
    m_glassBuffer.reset();
    m_isReady = false;
    m_depth = {};
    m_glass = {};
}

bool LineDepthStage::IsWanted(const PresentationFrame& frame) const
{
    return m_linesShown && !m_linesOverlaid && !m_identifiersShown && !frame.overDraw
        && frame.items.firstAlpha > frame.items.firstLine;
}

FrameNeeds LineDepthStage::NeedsOf(const PresentationFrame& frame) const
{
    FrameNeeds needs;
    needs.target = IsWanted(frame);
    needs.optional = true;
    return needs;
}

void LineDepthStage::Prepare(PresentationFrame&)
{
    m_isReady = false;
    m_depth = {};
    m_glass = {};
}

void LineDepthStage::Sort(const FrameItems& items)
{
    m_opaque.clear();
    m_shaped.clear();
    m_seeThrough.clear();
    const MeshStyleES20* style = nullptr;
    bool isShaped = false;
    for (std::size_t i = 0; i < items.all.size(); ++i)
    {
        const RenderItemES20& item = items.all[i];
        if (i >= items.firstLine && i < items.firstAlpha)
        {
            continue;
        }
        if (item.style != style)
        {
            style = item.style;
            isShaped = HasShape(*item.style);
        }
        const bool isOpaque = i < items.firstLine;
        if (isOpaque || !isShaped)
        {
            (!isOpaque ? m_seeThrough : isShaped ? m_shaped : m_opaque).push_back(item);
        }
    }
}

LineEffect::SurfaceDepth LineDepthStage::DrawInto(PresentationFrame& frame, std::unique_ptr<ScreenBuffer>& buffer,
                                                  const std::vector<RenderItemES20>& shaped,
                                                  const std::vector<RenderItemES20>& plain)
{
    if (!buffer)
    {
        buffer = std::make_unique<ScreenBuffer>(RenderTargetProfileColorDepth);
    }
    if (!buffer->Resize(frame.target.width, frame.target.height))
    {
        return {};
    }
    RenderTarget& target = buffer->GetTarget();
    target.BeginCapture(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    if (!shaped.empty())
    {
        // Without slopes, and first: what is drawn over them has its own.
        glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
        frame.renderer.DrawInPicture(frame, shaped, RenderPassDefault);
        glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
        SurfacePass::SetState();
    }
    {
        const EffectInPlace inPlace(plain, RenderPassDepthId, *m_effect, &m_replaced);
        frame.renderer.DrawInPicture(frame, plain, RenderPassDepthId);
    }
    target.EndCapture();
    return {target.GetDepthTexture(), target.GetColorTexture(), 0};
}

void LineDepthStage::FindFarthest(PresentationFrame& frame)
{
    GLint units = 0;
    glGetIntegerv(GL_MAX_VERTEX_TEXTURE_IMAGE_UNITS, &units);
    if (units == 0)
    {
        return;
    }
    if (!m_farthestEffect)
    {
        m_farthestEffect = std::make_unique<FarthestEffect>();
        m_blockBuffer = std::make_unique<ScreenBuffer>(RenderTargetProfileColor);
        m_farthestBuffer = std::make_unique<ScreenBuffer>(RenderTargetProfileColor);
    }
    const int width = (frame.target.width + FarthestEffect::Block - 1) / FarthestEffect::Block;
    const int height = (frame.target.height + FarthestEffect::Block - 1) / FarthestEffect::Block;
    if (!m_blockBuffer->Resize(width, height) || !m_farthestBuffer->Resize(width, height))
    {
        return;
    }
    const auto drawInto = [&](ScreenBuffer& buffer) {
        buffer.GetTarget().BeginCapture(GL_COLOR_BUFFER_BIT);
        frame.renderer.DrawOverScreen(*m_farthestEffect);
        buffer.GetTarget().EndCapture();
    };
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    m_farthestEffect->ShowBlocks(m_depth.depth, frame.target.width, frame.target.height);
    drawInto(*m_blockBuffer);
    m_farthestEffect->ShowNeighbours(m_blockBuffer->GetTarget().GetColorTexture(), width, height);
    drawInto(*m_farthestBuffer);
    SurfacePass::SetState();
    m_depth.farthest = m_farthestBuffer->GetTarget().GetColorTexture();
}

void LineDepthStage::Draw(PresentationFrame& frame)
{
    if (!frame.served || !IsWanted(frame))
    {
        return;
    }
    if (!m_surfacesShown)
    {
        m_isReady = true;
        return;
    }
    if (!m_effect)
    {
        m_effect = std::make_unique<SlopeEffect>();
    }
    Sort(frame.items.Seen());
    const OffscreenScope offscreen(frame);
    m_room.Without(m_opaque, m_shaped, [&] { m_depth = DrawInto(frame, m_opaqueBuffer, m_shaped, m_opaque); });
    m_isReady = static_cast<bool>(m_depth);
    if (m_isReady)
    {
        FindFarthest(frame);
    }
    if (m_isReady && !m_seeThrough.empty())
    {
        m_room.Without(m_seeThrough, m_none, [&] { m_glass = DrawInto(frame, m_glassBuffer, m_none, m_seeThrough); });
        m_isReady = static_cast<bool>(m_glass);
    }
}

} // namespace OV::Host::Detail
