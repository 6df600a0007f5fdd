#include "orvane_host/present/detail/GroundEffect.h"

#include "orvane_host/present/shaders/GroundEffect.frag.h"
#include "orvane_host/present/shaders/GroundEffect.vert.h"
#include "orvane/effects/SkySettings.h"
#include "orvane/renderdata/MeshES20.h"

namespace OV::Host::Detail
{

namespace
{

constexpr std::uint64_t OptionFog = 1;

constexpr OptionRow kOptions[] = {
    {OptionFog, "FOG"},
};

enum Uniform : int
{
    UniformPatchToClip,
    UniformDarkness,
    UniformFogRange,
    UniformFogColor,
};

constexpr IndexedName kUniforms[] = {
    {UniformPatchToClip, "u_patchToClip"},
    {UniformDarkness, "u_darkness"},
    {UniformFogRange, "u_fogRange"},
    {UniformFogColor, "u_fogColor"},
};
static_assert(IsDense(kUniforms));

constexpr unsigned AttributeTexture = 0;

constexpr IndexedName kAttributes[] = {
    {AttributeTexture, "a_texture"},
};

constexpr ProgramTemplate kTemplate = {
    "GroundEffect", Shaders::GroundEffectVert, Shaders::GroundEffectFrag, kOptions, kUniforms, kAttributes,
};

} // namespace

GroundEffect::GroundEffect() : MaterialEffectES20(nullptr)
{
    m_takesLightShare = true;
}

unsigned int GroundEffect::CreateProgramForOptions(std::uint64_t options, std::string& name)
{
    return CreateFromTemplate(kTemplate, options, name);
}

void GroundEffect::Apply(MaterialES20*, CameraNodeES20*)
{
    UseOptions(SkySettings::inst().UseFog() ? OptionFog : 0);
    SetFog(UniformFogRange, UniformFogColor);
}

void GroundEffect::Remove()
{
    EndUse();
}

void GroundEffect::BindMeshAttributes(MeshES20* mesh)
{
    EnableAttribute(AttributeTexture, 2, mesh->GetStride(), mesh->GetTextureOffset());
}

void GroundEffect::ReleaseMeshAttributes(MeshES20*)
{
    DisableAttribute(AttributeTexture);
}

void GroundEffect::BindMeshUniforms(MeshNode*)
{
    Set(UniformPatchToClip, patchToClip);
    Set(UniformDarkness, darkness);
}

} // namespace OV::Host::Detail
