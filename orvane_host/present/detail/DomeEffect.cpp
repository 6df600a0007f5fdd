#include "orvane_host/present/detail/DomeEffect.h"

#include "orvane_host/present/shaders/DomeEffect.frag.h"
#include "orvane_host/present/shaders/DomeEffect.vert.h"
#include "orvane/effects/SkySettings.h"
#include "orvane/math/Color.h"
#include "orvane/math/Matrix.h"
#include "orvane/math/Vector.h"

#include <GL/gl.h>

namespace OV::Host::Detail
{

namespace
{

enum Uniform : int
{
    UniformMvpMatrix,
    UniformHorizonColor,
    UniformSkyColor,
    UniformUpperSkyColor,
    UniformHorizonStop,
    UniformSkyStop,
    UniformFirst,
    UniformRay,
    UniformRayRight,
    UniformRayUp,
};

constexpr IndexedName kUniforms[] = {
    {UniformMvpMatrix, "u_mvpMatrix"},
    {UniformHorizonColor, "u_horizonColor"},
    {UniformSkyColor, "u_skyColor"},
    {UniformUpperSkyColor, "u_upperSkyColor"},
    {UniformHorizonStop, "u_horizonStop"},
    {UniformSkyStop, "u_skyStop"},
    {UniformFirst, "u_first"},
    {UniformRay, "u_ray"},
    {UniformRayRight, "u_rayRight"},
    {UniformRayUp, "u_rayUp"},
};
static_assert(IsDense(kUniforms));

constexpr ProgramTemplate kTemplate = {
    "DomeEffect", Shaders::DomeEffectVert, Shaders::DomeEffectFrag, {}, kUniforms, ScreenAttributes,
};

Vector ToVector(const glm::vec3& v)
{
    return Vector(v.x, v.y, v.z);
}

} // namespace

void DomeEffect::Show(const glm::mat3& toRay, const glm::vec2& first)
{
    m_toRay = toRay;
    m_first = first;
}

unsigned int DomeEffect::CreateProgramForOptions(std::uint64_t options, std::string& name)
{
    return CreateFromTemplate(kTemplate, options, name);
}

void DomeEffect::Apply(MaterialES20*, CameraNodeES20* camera)
{
    m_camera = camera;
    UseOptions(0);
    const SkySettings& sky = SkySettings::inst();
    const Color white(1.0f, 1.0f, 1.0f, 1.0f);
    const Color horizon = sky.IsMonotone() ? white : sky.GetHorizonColor();
    const bool isPlain = sky.IsMonotone() || !sky.UseSkyColor();
    Set(UniformHorizonColor, horizon);
    Set(UniformSkyColor, isPlain ? horizon : sky.GetSkyColor());
    Set(UniformUpperSkyColor, isPlain ? horizon : sky.GetUpperSkyColor());
    Set(UniformHorizonStop, sky.HorizonStop());
    Set(UniformSkyStop, sky.SkyStop());
    Set(UniformFirst, m_first.x, m_first.y);
    Set(UniformRay, ToVector(m_toRay[2]));
    Set(UniformRayRight, ToVector(m_toRay[0]));
    Set(UniformRayUp, ToVector(m_toRay[1]));
    glDisable(GL_DEPTH_TEST);
}

void DomeEffect::Remove()
{
    EndUse();
    glEnable(GL_DEPTH_TEST);
}

void DomeEffect::BindMeshUniforms(MeshNode* node)
{
    Set(UniformMvpMatrix, ModelViewProjection(node));
}

} // namespace OV::Host::Detail
