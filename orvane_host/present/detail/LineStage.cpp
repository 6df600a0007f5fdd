#define GL_GLEXT_PROTOTYPES

#include "orvane_host/present/detail/LineStage.h"

#include "orvane_host/present/StageAccess.h"
#include "orvane_host/present/detail/LineDepthStage.h"
#include "orvane_host/present/detail/ScreenBuffer.h"
#include "orvane_host/present/detail/SurfacePass.h"
#include "orvane/effects/SkySettings.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/LineStyleES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Mesh.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace OV::Host::Detail
{

namespace
{

Color ColorOf(const LineStyle& style)
{
    Color color = style.color;
    color.AddRGB(style.secondColor);
    const auto within = [](float value) { return std::clamp(value, 0.0f, 1.0f); };
    return {within(color.r), within(color.g), within(color.b), within(color.a)};
}

Color FogColor()
{
    const SkySettings& sky = SkySettings::inst();
    return sky.IsMonotone() ? Color(1.0f, 1.0f, 1.0f) : sky.GetFogColor();
}

/// What is laid over all of the screen, its colours multiplied by their opacity.
class OverlayScope
{
public:
    OverlayScope()
    {
        glDisable(GL_DEPTH_TEST);
        glDisable(GL_CULL_FACE);
        glEnable(GL_BLEND);
        glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    }

    ~OverlayScope()
    {
        glDisable(GL_BLEND);
        glEnable(GL_CULL_FACE);
        glEnable(GL_DEPTH_TEST);
    }

    OverlayScope(const OverlayScope&) = delete;
    OverlayScope& operator=(const OverlayScope&) = delete;
};

} // namespace

LineStage::LineStage(LineDepthStage& depth) : m_depth(depth) {}

LineStage::~LineStage() = default;

void LineStage::ReleaseGL()
{
    m_runs.ReleaseGL();
    m_effect.reset();
    m_layEffect.reset();
    m_coverage.reset();
    m_kept.reset();
    m_isKept = false;
}

void LineStage::Begin(bool isSmooth, bool isDeferred)
{
    m_isSmooth = isSmooth;
    m_isDeferred = isDeferred;
    m_isPrepared = false;
    m_isCovered = false;
    m_isKept = false;
}

bool LineStage::IsActive() const
{
    return m_depth.IsReady();
}

unsigned int LineStage::GetSolidDepth() const
{
    return m_depth.GetDepth().depth;
}

LineEffect::Pen LineStage::PenOf(const LineStyle& style, float scale) const
{
    LineEffect::Pen pen;
    // One that fades to its rims has half of its width for what it looks as wide as.
    pen.halfWidth = style.width * scale * (style.antialias ? 0.5f : 1.0f);
    pen.isSmooth = m_isSmooth || style.antialias;
    if (style.IsDashed())
    {
        pen.dashes = {2.0f * style.GetDashFrequency(), style.GetDashFrequency()};
    }
    if (m_hidden && !style.noDepthTest)
    {
        pen.hiddenHalfWidth = m_hidden->widthShare * pen.halfWidth;
        pen.hiddenDashes = {(m_hidden->dash + m_hidden->gap) * scale, m_hidden->dash * scale};
        if (style.IsDashed())
        {
            pen.hiddenDashes = pen.dashes;
        }
    }
    return pen;
}

void LineStage::ListGroups(const PresentationFrame& frame)
{
    m_groups.clear();
    const FrameItems& items = frame.items.Seen();
    const float scale = std::max(static_cast<float>(frame.target.width) / static_cast<float>(frame.screen.width), 1.0f);
    const MeshStyleES20* last = nullptr;
    for (std::size_t i = items.firstLine; i < items.firstAlpha; ++i)
    {
        MeshStyleES20* const style = items.all[i].style;
        if (style != last)
        {
            last = style;
            const auto* const data = dynamic_cast<const LineStyleES20*>(style);
            const LineStyle* const lineStyle = data ? data->lineStyle : nullptr;
            m_groups.push_back({i, i, lineStyle, lineStyle ? PenOf(*lineStyle, scale) : LineEffect::Pen()});
        }
        m_groups.back().last = i + 1;
    }
    m_groups.erase(std::remove_if(m_groups.begin(), m_groups.end(), [](const Group& group) { return !group.style; }),
                   m_groups.end());
}

LineEffect::View LineStage::ViewOf(PresentationFrame& frame) const
{
    LineEffect::View view;
    view.target = frame.target;
    // A capture may be finer than the screen.
    const int finer = std::max(frame.target.width / std::max(frame.screen.width, 1), 1);
    const bool isPart = !(frame.part.whole == frame.part.size);
    view.whole = isPart ? PixelSize{frame.part.whole.width * finer, frame.part.whole.height * finer} : frame.target;
    view.x = static_cast<float>(frame.part.x * finer);
    view.y = static_cast<float>(frame.part.y * finer);
    // What a part shows is as it is in the whole: its places are worked out as there.
    const ViewPart part = frame.cameraData.GetPart();
    frame.cameraData.SetPart(ViewPart());
    frame.cameraData.UpdateMVP(frame.view.width, frame.view.height, false);
    view.worldToClip = frame.cameraData.GetMVP();
    frame.cameraData.SetPart(part);
    frame.cameraData.UpdateMVP(frame.view.width, frame.view.height, false);
    view.depth = m_depth.GetDepth();
    view.glass = m_depth.GetGlass();
    return view;
}

bool LineStage::PrepareFrame(PresentationFrame& frame)
{
    if (m_isPrepared)
    {
        return !m_groups.empty();
    }
    m_isPrepared = true;
    m_access = &frame.renderer;
    ListGroups(frame);
    if (!m_coverage)
    {
        m_coverage = std::make_unique<ScreenBuffer>(RenderTargetProfileColorDepth);
    }
    if (m_groups.empty() || !m_coverage->Resize(frame.target.width, frame.target.height))
    {
        m_groups.clear();
        return false;
    }
    if (!m_effect)
    {
        m_effect = std::make_unique<LineEffect>();
        m_layEffect = std::make_unique<LineLayEffect>();
    }
    const LineEffect::View view = ViewOf(frame);
    m_runs.Begin(view);
    for (const Group& group : m_groups)
    {
        for (std::size_t i = group.first; i < group.last; ++i)
        {
            m_runs.Add(frame.items.Seen().all[i], group.pen, view.worldToClip);
        }
    }
    m_runs.End();
    return true;
}

bool LineStage::DrawsAtOnce() const
{
    const bool isFogged = SkySettings::inst().UseFog() && m_groups.front().style->fog;
    const bool turnsRound = (m_groups.front().style->GetFlags() & LineStyleFlagDepthLessEqual) != 0;
    return m_groups.size() == 1 && !isFogged && !turnsRound;
}

void LineStage::DrawThroughGlass(PresentationFrame& frame)
{
    if (!IsActive() || !m_depth.GetGlass() || !PrepareFrame(frame))
    {
        return;
    }
    if (!DrawsAtOnce())
    {
        Paint(frame, LineEffect::Kind::ThroughGlass);
        return;
    }
    m_effect->Show(ViewOf(frame), LineEffect::Kind::Both, m_runs);
    DrawCoverage(frame, m_groups.front(), true, true);
    Lay(frame, m_groups.front(), LineLayEffect::Channels::ThroughGlass);
    m_isCovered = true;
}

void LineStage::Draw(PresentationFrame& frame)
{
    if (frame.renderer.HasLosses())
    {
        // A stage of the host's may have deleted lines since they were listed.
        m_isPrepared = false;
        m_isCovered = false;
    }
    if (!IsActive() || !PrepareFrame(frame))
    {
        return;
    }
    if (!m_isCovered)
    {
        Paint(frame, LineEffect::Kind::BeforeAll);
    }
    else if (m_isDeferred)
    {
        KeepLines(frame, m_groups.front(), LineLayEffect::Channels::Clear, true);
    }
    else
    {
        Lay(frame, m_groups.front(), LineLayEffect::Channels::Clear);
    }
}

void LineStage::Paint(PresentationFrame& frame, LineEffect::Kind kind)
{
    m_effect->Show(ViewOf(frame), kind, m_runs);
    bool isFirst = true;
    for (const Group& group : m_groups)
    {
        const bool isLast = &group == &m_groups.back();
        const bool turnsRound = (group.style->GetFlags() & LineStyleFlagDepthLessEqual) != 0;
        if (kind == LineEffect::Kind::ThroughGlass && (turnsRound || group.style->noDepthTest))
        {
            continue;
        }
        DrawCoverage(frame, group, isFirst, isLast);
        if (m_isDeferred && kind == LineEffect::Kind::BeforeAll)
        {
            KeepLines(frame, group, LineLayEffect::Channels::Fogged, isFirst);
        }
        else
        {
            Lay(frame, group, LineLayEffect::Channels::Fogged);
        }
        isFirst = false;
    }
}

void LineStage::DrawCoverage(PresentationFrame& frame, const Group& group, bool isFirst, bool isLast)
{
    const OffscreenScope offscreen(frame);
    RenderTarget& target = m_coverage->GetTarget();
    target.BeginCapture(GL_COLOR_BUFFER_BIT | (isFirst ? GL_DEPTH_BUFFER_BIT : 0u));
    glDisable(GL_CULL_FACE);
    GLint function = GL_LESS;
    glGetIntegerv(GL_DEPTH_FUNC, &function);
    glDepthFunc(GL_LEQUAL);
    if (group.style->noDepthTest || (isFirst && isLast))
    {
        glDisable(GL_DEPTH_TEST);
    }
    // Of lines of one style none hides another: they would leave notches where they meet.
    glDepthMask(GL_FALSE);
    glEnable(GL_BLEND);
    glBlendEquation(GL_MAX);
    DrawLines(frame, group, false);
    glBlendEquation(GL_FUNC_ADD);
    glDisable(GL_BLEND);
    if (!isLast && !group.style->noDepthWrite)
    {
        glEnable(GL_DEPTH_TEST);
        glDepthMask(GL_TRUE);
        glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
        DrawLines(frame, group, true);
        glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    }
    glDepthMask(GL_TRUE);
    glDepthFunc(static_cast<GLenum>(function));
    glDisable(GL_POLYGON_OFFSET_FILL);
    glEnable(GL_CULL_FACE);
    glEnable(GL_DEPTH_TEST);
    target.EndCapture();
}

void LineStage::DrawLines(PresentationFrame& frame, const Group& group, bool core)
{
    const std::vector<RenderItemES20>& items = frame.items.Seen().all;
    m_effect->Apply(*group.style, group.pen, frame.cameraData, core);
    for (std::size_t i = group.first; i < group.last; ++i)
    {
        const RenderItemES20& item = items[i];
        auto* const data = static_cast<MeshES20*>(item.mesh->GetRenderData());
        if (!data)
        {
            continue;
        }
        const PointerSpan<MeshNode> nodes = item.mesh->EachNode();
        const bool isOne = item.specificNode || nodes.size() == 1;
        if (isOne)
        {
            m_node.assign(1, item.specificNode ? item.node : nodes.front());
        }
        data->Render(m_effect.get(), isOne ? m_node : item.mesh->GetNodes(), item.specificNode);
    }
    m_effect->Remove();
}

void LineStage::Lay(PresentationFrame& frame, const Group& group, LineLayEffect::Channels channels)
{
    const OverlayScope overlay;
    m_layEffect->ShowLines(m_coverage->GetTarget().GetColorTexture(), channels, ColorOf(*group.style), FogColor());
    frame.renderer.DrawOverScreen(*m_layEffect);
}

void LineStage::KeepLines(PresentationFrame& frame, const Group& group, LineLayEffect::Channels channels, bool isFirst)
{
    if (!m_kept)
    {
        m_kept = std::make_unique<ScreenBuffer>(RenderTargetProfileColor);
    }
    if (!m_kept->Resize(frame.target.width, frame.target.height))
    {
        // Filtered lines are better than none.
        Lay(frame, group, channels);
        return;
    }
    const OffscreenScope offscreen(frame);
    RenderTarget& target = m_kept->GetTarget();
    if (isFirst)
    {
        target.BeginCapture(GL_COLOR_BUFFER_BIT);
    }
    else
    {
        target.ResumeCapture();
    }
    Lay(frame, group, channels);
    target.EndCapture();
    m_isKept = true;
}

void LineStage::LayOver()
{
    if (!m_isKept || !m_access)
    {
        return;
    }
    const OverlayScope overlay;
    m_layEffect->ShowPicture(m_kept->GetTarget().GetColorTexture());
    m_access->DrawOverScreen(*m_layEffect);
}

} // namespace OV::Host::Detail
