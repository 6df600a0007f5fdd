#include "orvane_host/present/detail/HorizonStage.h"

#include "orvane_host/present/StageAccess.h"
#include "orvane_host/present/detail/Effects.h"
#include "orvane_host/present/detail/FaceEffect.h"
#include "orvane_host/present/detail/HorizonEffect.h"
#include "orvane_host/present/detail/NeededScope.h"
#include "orvane_host/present/detail/OverSceneScope.h"
#include "orvane_host/present/detail/OverScreenScope.h"
#include "orvane_host/present/detail/SurfacePass.h"
#include "orvane/effects/SkySettings.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/scene/CameraNode.h"

#include <GL/gl.h>

#include <algorithm>
#include <cmath>

namespace OV::Host::Detail
{

namespace
{

/// How far occlusion sees at most, as a share of the shorter side of the picture: what is nearer to
/// the eye than the radius asks for is darkened by what is within fewer units.
constexpr double kMostReach = 0.25;

/// Pixels beyond which a coarser picture of all that the view shows is looked at: parts of a large
/// picture need to overlap by no more, and what is that far away makes no small difference.
constexpr int kNearReach = 128;

/// The shorter side of the coarser picture, in which the same number of pixels is as far as
/// occlusion sees.
constexpr double kFarSide = kNearReach / kMostReach;

/// Pixels about one that are taken together.
constexpr int kSmoothed = 2;

/// Of a depth buffer.
constexpr double kDepthStep = 1.0 / (1 << 24);

float Narrow(double value)
{
    return static_cast<float>(value);
}

double ReachIn(const PixelSize& whole)
{
    return kMostReach * std::min(whole.width, whole.height);
}

/// What fog leaves at a distance, as the shaders of surfaces take it: factor and offset.
glm::vec2 FogAt(double nearest, double farthest, bool isPerspective)
{
    const SkySettings& sky = SkySettings::inst();
    if (!sky.UseFog())
    {
        return {0.0f, 1.0f};
    }
    const double factor = (isPerspective ? farthest : 1.0) / (farthest - nearest);
    const double length = static_cast<double>(sky.GetFogEnd()) - sky.GetFogStart();
    return {Narrow(-factor / length), Narrow((sky.GetFogEnd() + factor * nearest) / length)};
}

} // namespace

HorizonStage::~HorizonStage()
{
    Drop(m_faceEffect);
    Drop(m_effect);
}

void HorizonStage::ReleaseGL()
{
    Drop(m_faceEffect);
    Drop(m_effect);
    m_faces.Resize(0, 0);
    m_far.Resize(0, 0);
    m_hidden.Resize(0, 0);
    m_found.reset();
}

FrameNeeds HorizonStage::NeedsOf(const PresentationFrame&) const
{
    FrameNeeds needs;
    needs.target = m_look.has_value();
    return needs;
}

int HorizonStage::MarginOf(const PixelSize& whole) const
{
    return m_look ? static_cast<int>(std::ceil(std::min<double>(ReachIn(whole), kNearReach))) + kSmoothed + 1 : 0;
}

bool HorizonStage::MakeBuffers(const PresentationFrame& frame)
{
    if (!m_effect)
    {
        m_effect = new HorizonEffect;
        m_faceEffect = new FaceEffect;
    }
    // Where the picture has samples, rims are to be as smooth as those of surfaces.
    m_finer = frame.multisampled ? 2 : 1;
    if (m_finer > 1 && !m_faces.Resize(2 * frame.target.width, 2 * frame.target.height))
    {
        m_finer = 1;
    }
    m_apart = m_look->coarse ? 2 : 1;
    m_hiddenSize = {(frame.target.width + m_apart - 1) / m_apart, (frame.target.height + m_apart - 1) / m_apart};
    return (m_finer > 1 || m_faces.Resize(frame.target.width, frame.target.height))
        && m_hidden.Resize(m_hiddenSize.width, m_hiddenSize.height);
}

void HorizonStage::DrawSurfaces(PresentationFrame& frame, ScreenBuffer& buffer,
                                const std::vector<RenderItemES20>& surfaces)
{
    const EffectInPlace inPlace(surfaces, RenderPassDepthId, *m_faceEffect, &m_replaced);
    glDisable(GL_DITHER);
    glDepthRange(0.0, 1.0);
    buffer.GetTarget().BeginCapture(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    frame.renderer.DrawInPicture(frame, surfaces, RenderPassDepthId);
    buffer.GetTarget().EndCapture();
    glDepthRange(frame.depthRange[0], frame.depthRange[1]);
}

void HorizonStage::DrawFaces(PresentationFrame& frame)
{
    DrawSurfaces(frame, m_faces, frame.items.Seen().surfaces);
}

void HorizonStage::DrawFar(PresentationFrame& frame)
{
    if (m_farSize.width == 0)
    {
        return;
    }
    const ViewPart part = frame.cameraData.GetPart();
    frame.cameraData.SetPart(ViewPart());
    frame.cameraData.UpdateMVP(frame.view.width, frame.view.height, false);
    DrawSurfaces(frame, m_far, frame.items.surfaces);
    frame.cameraData.SetPart(part);
    frame.cameraData.UpdateMVP(frame.view.width, frame.view.height, false);
}

void HorizonStage::SetValues(const PresentationFrame& frame)
{
    HorizonEffect::Values& values = m_effect->values;
    values.depth = m_faces.GetTarget().GetDepthTexture();
    values.faces = m_faces.GetTarget().GetColorTexture();
    values.hidden = 0;
    values.perspective = frame.camera.GetProjection() == CameraNode::Perspective;
    values.size = {m_finer * frame.target.width, m_finer * frame.target.height};
    values.finer = static_cast<float>(m_finer);
    values.apart = static_cast<float>(m_finer * m_apart);
    values.hiddenSize = {m_hiddenSize.width, m_hiddenSize.height};
    float nearest = 0.0f;
    float farthest = 1.0f;
    frame.camera.GetNearFar(nearest, farthest);
    const double n = nearest;
    const double f = farthest;
    // Of the whole view, as the camera's matrices have it.
    const double tangent = std::tan(static_cast<double>(frame.camera.GetFOV()));
    const auto w = static_cast<double>(frame.view.width);
    const auto h = static_cast<double>(frame.view.height);
    double right = tangent * w / h;
    double top = tangent;
    if (values.perspective)
    {
        right = h > w ? tangent : right;
        top = h > w ? tangent * h / w : top;
        values.distance = {Narrow((n - f) / (f * n)), Narrow(1.0 / n)};
        values.precision = Narrow(kDepthStep * (f - n) / (f * n));
    }
    else
    {
        right *= frame.camera.GetDistanceToTarget();
        top *= frame.camera.GetDistanceToTarget();
        values.distance = {Narrow(f - n), Narrow(n)};
        values.precision = Narrow(kDepthStep * (f - n));
    }
    // What is looked up may have finer pixels than the picture.
    const PicturePart& part = frame.part;
    const double finer = FinerThanScreen(frame);
    const double factorX = 2.0 * right / (part.whole.width * finer);
    const double factorY = 2.0 * top / (part.whole.height * finer);
    values.first = {Narrow(part.x * finer), Narrow(part.y * finer)};
    values.view = {Narrow(factorX), Narrow(factorY), Narrow(-right), Narrow(-top)};
    values.radius = m_look->radius;
    values.reach = Narrow(ReachIn(part.whole) * finer);
    values.strength = m_look->strength;
    values.fog = FogAt(n, f, values.perspective);
    SetFar(frame, right, top);
}

double HorizonStage::FinerThanScreen(const PresentationFrame& frame) const
{
    return static_cast<double>(m_finer) * frame.target.width / frame.screen.width;
}

void HorizonStage::SetFar(const PresentationFrame& frame, double right, double top)
{
    HorizonEffect::Values& values = m_effect->values;
    const PicturePart& part = frame.part;
    const double finer = FinerThanScreen(frame);
    values.nearReach = Narrow(kNearReach * finer);
    values.farDepth = 0;
    m_farSize = {};
    // The largest reach is that of what is nearest to the eye.
    float nearest = 1.0f;
    float farthest = 1.0f;
    frame.camera.GetNearFar(nearest, farthest);
    const double smallest = std::min(values.view.x, values.view.y) * (values.perspective ? nearest : 1.0f);
    if (std::min<double>(values.reach, values.radius / smallest) <= values.nearReach)
    {
        return;
    }
    const double coarser = kFarSide / std::min(part.whole.width, part.whole.height);
    const PixelSize size = {std::max(1, static_cast<int>(part.whole.width * coarser)),
                            std::max(1, static_cast<int>(part.whole.height * coarser))};
    if (!m_far.Resize(size.width, size.height))
    {
        return;
    }
    m_farSize = size;
    values.farDepth = m_far.GetTarget().GetDepthTexture();
    values.farSize = {size.width, size.height};
    values.farView = {Narrow(2.0 * right / size.width), Narrow(2.0 * top / size.height), Narrow(-right), Narrow(-top)};
    values.toFar = {Narrow(size.width / (part.whole.width * finer)), Narrow(size.height / (part.whole.height * finer))};
}

/// The first run.
void HorizonStage::FindHidden(PresentationFrame& frame)
{
    const OffscreenScope offscreen(frame);
    DrawFar(frame);
    DrawFaces(frame);
    const OverScreenScope overScreen;
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glDisable(GL_DEPTH_TEST);
    m_hidden.GetTarget().ResumeCapture();
    const NeededScope needed(frame.part, m_hiddenSize, m_apart * (kSmoothed + 1));
    frame.renderer.DrawOverScreen(*m_effect);
    m_hidden.GetTarget().SuspendCapture();
    glEnable(GL_DEPTH_TEST);
}

void HorizonStage::Draw(PresentationFrame& frame)
{
    if (!m_look || !MakeBuffers(frame))
    {
        m_found.reset();
        return;
    }
    SetValues(frame);
    if (!frame.part.isAgain || m_found != frame.part)
    {
        FindHidden(frame);
        m_found = frame.part;
    }
    m_effect->values.hidden = m_hidden.GetTarget().GetColorTexture();
    const OverScreenScope overScreen;
    const OverSceneScope overScene(frame.depthRange);
    glEnable(GL_BLEND);
    glBlendFunc(GL_ZERO, GL_SRC_COLOR);
    const NeededScope needed(frame.part, frame.target);
    frame.renderer.DrawOverScreen(*m_effect);
    glDisable(GL_BLEND);
}

} // namespace OV::Host::Detail
