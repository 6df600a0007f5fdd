#include "orvane_host/present/detail/SurfacePass.h"

#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/StageAccess.h"
#include "orvane_host/present/detail/Effects.h"
#include "orvane_host/present/detail/ScreenBuffer.h"
#include "orvane/effects/DepthIdPassEffectES20.h"

#include <GL/gl.h>

namespace OV::Host::Detail
{

void SurfacePass::SetState()
{
    glDisable(GL_BLEND);
    glDepthMask(GL_TRUE);
    glEnable(GL_CULL_FACE);
    glEnable(GL_DEPTH_TEST);
}

bool SurfacePass::Fetch(PresentationFrame& frame)
{
    return FetchOnce(m_effect, frame.renderer.GetEffects(), EffectCache::DepthIdPass);
}

void SurfacePass::Draw(PresentationFrame& frame, ScreenBuffer& buffer, unsigned int clearMask, bool groups,
                       bool asDepth)
{
    m_effect->SetIdMode(groups ? 1 : 0);
    // The depth of a plane is linear on the screen: without the steps between pixels no pattern
    // comes out on planes.
    buffer.SmoothDepth(asDepth);
    if (asDepth)
    {
        glDepthRange(0.0, frame.depthShare);
    }
    buffer.GetTarget().BeginCapture(clearMask);
    frame.renderer.DrawInPicture(frame, frame.items.Seen().surfaces, RenderPassDepthId);
    buffer.GetTarget().EndCapture();
    if (asDepth)
    {
        glDepthRange(frame.depthRange[0], frame.depthRange[1]);
        frame.depth = buffer.GetTarget().GetDepthTexture();
    }
}

void SurfacePass::ReleaseGL()
{
    Drop(m_effect);
}

OffscreenScope::OffscreenScope(const PresentationFrame& frame) : m_frame(frame), m_dithered(glIsEnabled(GL_DITHER))
{
    SurfacePass::SetState();
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
}

OffscreenScope::~OffscreenScope()
{
    const Color& background = m_frame.background;
    glClearColor(background.r, background.g, background.b, background.a);
    glViewport(0, 0, m_frame.target.width, m_frame.target.height);
    if (m_dithered)
    {
        glEnable(GL_DITHER);
    }
}

} // namespace OV::Host::Detail
