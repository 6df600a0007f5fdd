#include "orvane_host/present/detail/OcclusionStage.h"

#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/StageAccess.h"
#include "orvane_host/present/detail/Effects.h"
#include "orvane_host/present/detail/OcclusionView.h"
#include "orvane_host/present/detail/OverScreenScope.h"
#include "orvane/effects/SSAOEffectES20.h"

#include <GL/gl.h>

#include <array>

namespace OV::Host::Detail
{

namespace
{

/// Lets only what has something of the scene in it be drawn over, sample by sample, for the
/// length of a scope. A background, which lies at the far plane, keeps its colour. The depth test
/// is on, as the passes over a scene leave it.
class OverSceneScope
{
public:
    /// @param depthRange to have at the end.
    explicit OverSceneScope(const std::array<float, 2>& depthRange) : m_range(depthRange)
    {
        glGetIntegerv(GL_DEPTH_FUNC, &m_function);
        glDepthMask(GL_FALSE);
        glDepthFunc(GL_GREATER);
        glDepthRange(1.0, 1.0);
    }

    ~OverSceneScope()
    {
        glDepthRange(m_range[0], m_range[1]);
        glDepthFunc(static_cast<GLenum>(m_function));
        glDepthMask(GL_TRUE);
    }

    OverSceneScope(const OverSceneScope&) = delete;
    OverSceneScope& operator=(const OverSceneScope&) = delete;

private:
    GLint m_function = GL_LESS;
    std::array<float, 2> m_range;
};

} // namespace

FrameNeeds OcclusionStage::NeedsOf(const PresentationFrame&) const
{
    FrameNeeds needs;
    needs.depth = m_shown;
    needs.picture = m_shown;
    return needs;
}

void OcclusionStage::ReleaseGL()
{
    Drop(m_effect);
}

void OcclusionStage::Draw(PresentationFrame& frame)
{
    if (!m_shown || !FetchOnce(m_effect, frame.renderer.GetEffects(), EffectCache::SSAO))
    {
        return;
    }
    const OcclusionView view(frame.camera);
    m_effect->SetNearFar(view.nearDistance, view.farDistance);
    m_effect->SetDimensions(frame.screen.width, frame.screen.height);
    m_effect->SetDepthTexture(static_cast<int>(frame.depth));
    m_effect->SetRenderTexture(static_cast<int>(frame.picture));
    const OverScreenScope overScreen;
    const OverSceneScope overScene(frame.depthRange);
    frame.renderer.DrawOverScreen(*m_effect);
    frame.usedUnits[0] = true;
    frame.usedUnits[1] = true;
}

} // namespace OV::Host::Detail
