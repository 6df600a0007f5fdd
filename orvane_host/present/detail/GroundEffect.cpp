#include "orvane_host/present/detail/GroundEffect.h"

#include "orvane_host/present/shaders/GroundEffect.frag.h"
#include "orvane_host/present/shaders/ScreenEffect.vert.h"

#include <GL/gl.h>

namespace OV::Host::Detail
{

namespace
{

enum Uniform : int
{
    UniformStart,
    UniformStartRight,
    UniformStartUp,
    UniformRay,
    UniformRayRight,
    UniformRayUp,
    UniformColor,
    UniformReach,
    UniformFog,
    UniformFogColor,
    UniformShadow,
    UniformShadowPlace,
    UniformShadowStrength,
    UniformDepth,
    UniformFirst,
    UniformSize,
};

constexpr IndexedName kUniforms[] = {
    {UniformStart, "u_start"},
    {UniformStartRight, "u_startRight"},
    {UniformStartUp, "u_startUp"},
    {UniformRay, "u_ray"},
    {UniformRayRight, "u_rayRight"},
    {UniformRayUp, "u_rayUp"},
    {UniformColor, "u_color"},
    {UniformReach, "u_reach"},
    {UniformFog, "u_fog"},
    {UniformFogColor, "u_fogColor"},
    {UniformShadow, "u_shadow"},
    {UniformShadowPlace, "u_shadowPlace"},
    {UniformShadowStrength, "u_shadowStrength"},
    {UniformDepth, "u_depth"},
    {UniformFirst, "u_first"},
    {UniformSize, "u_size"},
};
static_assert(IsDense(kUniforms));

constexpr OptionRow kOptions[] = {{0, "DEFAULT"}};

constexpr ProgramTemplate kTemplate = {
    "GroundEffect", Shaders::ScreenEffectVert, Shaders::GroundEffectFrag, kOptions, kUniforms, ScreenAttributes,
};

} // namespace

unsigned int GroundEffect::CreateProgramForOptions(std::uint64_t options, std::string& name)
{
    return CreateFromTemplate(kTemplate, options, name);
}

void GroundEffect::Apply(MaterialES20*, CameraNodeES20*)
{
    UseOptions(0);
    Set(UniformStart, m_look.start.middle);
    Set(UniformStartRight, m_look.start.right);
    Set(UniformStartUp, m_look.start.up);
    Set(UniformRay, m_look.ray.middle);
    Set(UniformRayRight, m_look.ray.right);
    Set(UniformRayUp, m_look.ray.up);
    Set(UniformColor, m_look.color);
    Set(UniformReach, m_look.reach);
    Set(UniformFog, m_look.fog.x, m_look.fog.y);
    Set(UniformFogColor, m_look.fogColor);
    Set(UniformShadow, 0);
    const glm::vec4& place = m_look.shadowPlace;
    Set(UniformShadowPlace, place.x, place.y, place.z, place.w);
    Set(UniformShadowStrength, m_look.shadow != 0 ? m_look.shadowStrength : 0.0f);
    const glm::vec4& depth = m_look.depth;
    Set(UniformDepth, depth.x, depth.y, depth.z, depth.w);
    Set(UniformFirst, m_look.first.x, m_look.first.y);
    Set(UniformSize, m_look.size.x, m_look.size.y);
    BindTexture(0, m_look.shadow);
}

} // namespace OV::Host::Detail
