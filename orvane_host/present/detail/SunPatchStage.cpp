#include "orvane_host/present/detail/SunPatchStage.h"

#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/StageAccess.h"
#include "orvane_host/present/detail/Effects.h"
#include "orvane_host/present/detail/LightShareScope.h"
#include "orvane_host/present/detail/NeededScope.h"
#include "orvane_host/present/detail/ShadowStage.h"
#include "orvane_host/present/detail/SunStrokeEffect.h"
#include "orvane_host/present/detail/SurfaceStage.h"
#include "orvane/renderdata/CameraNodeES20.h"

#include <GL/gl.h>

#include <glm/gtc/type_ptr.hpp>
#include <glm/mat4x4.hpp>
#include <glm/matrix.hpp>

#include <algorithm>

namespace OV::Host::Detail
{

namespace
{

/// Blends over the picture without a trace in the depths, for the length of a scope.
class StainScope
{
public:
    StainScope()
    {
        glDepthMask(GL_FALSE);
        glDisable(GL_CULL_FACE);
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        // A picture without a background keeps what it has of one.
        glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_FALSE);
    }

    ~StainScope()
    {
        glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
        glDisable(GL_BLEND);
        glEnable(GL_CULL_FACE);
        glDepthMask(GL_TRUE);
    }

    StainScope(const StainScope&) = delete;
    StainScope& operator=(const StainScope&) = delete;
};

/// Whether the eye sees the side of the patch that its edges turn counter-clockwise on.
bool IsSeenFromAbove(const glm::dmat4& patchToClip)
{
    // The sign of the volume of the corners as the eye sees them.
    const glm::dmat3 corners(glm::dvec3(patchToClip[0].x, patchToClip[0].y, patchToClip[0].w),
                             glm::dvec3(patchToClip[1].x, patchToClip[1].y, patchToClip[1].w),
                             glm::dvec3(patchToClip[3].x, patchToClip[3].y, patchToClip[3].w));
    return glm::determinant(corners) > 0.0;
}

Vector ToVector(const glm::dvec3& vector)
{
    return {static_cast<float>(vector.x), static_cast<float>(vector.y), static_cast<float>(vector.z)};
}

} // namespace

SunPatchStage::~SunPatchStage()
{
    ReleaseGL();
}

void SunPatchStage::ReleaseGL()
{
    Drop(m_effect);
    Drop(m_strokes);
}

SunPatchEffect& SunPatchStage::EffectFor(const PresentationFrame& frame)
{
    if (const std::optional<float> width = m_surfaces ? m_surfaces->GetStrokeWidth(frame) : std::nullopt)
    {
        if (!m_strokes)
        {
            m_strokes = new SunStrokeEffect;
        }
        m_strokes->width = *width;
        m_strokes->across = ToVector(m_shadows.GetPatch()->across);
        m_strokes->along = ToVector(m_shadows.GetPatch()->along);
        return *m_strokes;
    }
    if (!m_effect)
    {
        m_effect = new SunPatchEffect;
    }
    m_effect->darkness = m_darkness;
    return *m_effect;
}

void SunPatchStage::Draw(PresentationFrame& frame)
{
    const std::optional<ShadowStage::Patch>& patch = m_shadows.GetPatch();
    if (!patch || !m_shadows.GetShare() || !(m_darkness > 0.0f))
    {
        return;
    }
    glm::dmat4 toWorld(0.0);
    toWorld[0] = glm::dvec4(patch->across, 0.0);
    toWorld[1] = glm::dvec4(patch->along, 0.0);
    toWorld[3] = glm::dvec4(patch->corner, 1.0);
    const glm::dmat4 toClip = glm::dmat4(glm::make_mat4(frame.cameraData.GetMVP().m)) * toWorld;
    if (!IsSeenFromAbove(toClip))
    {
        return;
    }
    SunPatchEffect& effect = EffectFor(frame);
    std::transform(glm::value_ptr(toClip), glm::value_ptr(toClip) + 16, effect.patchToClip.m,
                   [](double value) { return static_cast<float>(value); });
    const LightShareScope light(m_shadows.GetShare());
    const StainScope stain;
    const NeededScope needed(frame.part, frame.target);
    frame.renderer.DrawOverScreen(effect);
}

} // namespace OV::Host::Detail
