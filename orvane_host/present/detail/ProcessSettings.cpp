#include "orvane_host/present/detail/ProcessSettings.h"

#include "orvane_host/present/PresentationSettings.h"
#include "orvane_host/present/detail/SectionPlanes.h"
#include "orvane/effects/EffectES20.h"
#include "orvane/scene/CameraNode.h"

#include <cstddef>

namespace OV::Host::Detail
{

namespace
{

glm::vec3 ToVec(const Vector& v)
{
    return {v.x, v.y, v.z};
}

glm::vec4 ToVec(const Color& color)
{
    return {color.r, color.g, color.b, 1.0f};
}

/// What the fog of the shaders takes a distance from the eye for: they multiply the depth in
/// the buffer by the distance in perspective, and have the depth alone without it. Both are
/// straight lines over the distance.
float ToShaderDistance(float distance, const CameraNode& camera)
{
    float nearDistance = 0.0f;
    float farDistance = 0.0f;
    camera.GetNearFar(nearDistance, farDistance);
    const float share = (distance - nearDistance) / (farDistance - nearDistance);
    return camera.GetProjection() == CameraNode::Perspective ? share * farDistance : share;
}

} // namespace

ProcessSettings::ProcessSettings(const PresentationSettings& settings, const CameraNode& camera, float outlineWidth) :
    m_sky(SkySettings::inst()), m_normals(EffectES20::GetClipPlaneNormals()),
    m_positions(EffectES20::GetClipPlanePositions()), m_outlineSize(EffectES20::GetClipPlaneOutlineSize()),
    m_outlineColor(EffectES20::GetClipPlaneOutlineColor()), m_pocheEnabled(EffectES20::IsPocheColorEnabled()),
    m_pocheColor(EffectES20::GetPocheColor()), m_shaderType(EffectES20::GetAdvancedMaterialShaderType())
{
    SkySettings sky;
    sky.SetHorizonColor(settings.background);
    sky.SetUseFog(settings.fog.has_value());
    SkySettings::inst() = sky;
    FollowDepths(settings, camera);
    EffectES20::ClearClipPlanes();
    for (const SectionPlane& plane : SectionPlanesOf(settings.section))
    {
        EffectES20::AddClipPlane(ToVec(plane.normal), ToVec(plane.position));
    }
    EffectES20::SetClipPlaneOutlineSize(outlineWidth);
    EffectES20::SetClipPlaneOutlineColor(ToVec(settings.section.outlineColor));
    EffectES20::EnablePocheColor(settings.section.fill.has_value());
    EffectES20::SetPocheColor(ToVec(settings.section.fill.value_or(Color())));
}

void ProcessSettings::FollowDepths(const PresentationSettings& settings, const CameraNode& camera)
{
    if (settings.fog)
    {
        SkySettings::inst().SetFogStart(ToShaderDistance(settings.fog->start, camera));
        SkySettings::inst().SetFogEnd(ToShaderDistance(settings.fog->end, camera));
    }
}

ProcessSettings::~ProcessSettings()
{
    SkySettings::inst() = m_sky;
    EffectES20::ClearClipPlanes();
    for (std::size_t i = 0; i < m_normals.size(); ++i)
    {
        EffectES20::AddClipPlane(m_normals[i], m_positions[i]);
    }
    EffectES20::SetClipPlaneOutlineSize(m_outlineSize);
    EffectES20::SetClipPlaneOutlineColor(m_outlineColor);
    EffectES20::EnablePocheColor(m_pocheEnabled);
    EffectES20::SetPocheColor(m_pocheColor);
    EffectES20::SetAdvancedMaterialShaderType(m_shaderType);
}

} // namespace OV::Host::Detail
