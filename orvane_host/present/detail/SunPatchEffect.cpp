#include "orvane_host/present/detail/SunPatchEffect.h"

#include "orvane_host/present/shaders/SunPatchEffect.frag.h"
#include "orvane_host/present/shaders/SunPatchEffect.vert.h"
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

constexpr ProgramTemplate kTemplate = {
    "SunPatchEffect", Shaders::SunPatchEffectVert, Shaders::SunPatchEffectFrag, kOptions, kUniforms, kPatchAttributes,
};

} // namespace

SunPatchEffect::SunPatchEffect() : MaterialEffectES20(nullptr)
{
    m_takesLightShare = true;
}

unsigned int SunPatchEffect::CreateProgramForOptions(std::uint64_t options, std::string& name)
{
    return CreateFromTemplate(kTemplate, options, name);
}

void SunPatchEffect::Apply(MaterialES20*, CameraNodeES20*)
{
    UseOptions(SkySettings::inst().UseFog() ? OptionFog : 0);
    SetFog(UniformFogRange, UniformFogColor);
}

void SunPatchEffect::Remove()
{
    EndUse();
}

void SunPatchEffect::BindMeshAttributes(MeshES20* mesh)
{
    EnableAttribute(AttributePatchPlace, 2, mesh->GetStride(), mesh->GetTextureOffset());
}

void SunPatchEffect::ReleaseMeshAttributes(MeshES20*)
{
    DisableAttribute(AttributePatchPlace);
}

void SunPatchEffect::BindMeshUniforms(MeshNode*)
{
    Set(UniformPatchToClip, patchToClip);
    Set(UniformDarkness, darkness);
}

} // namespace OV::Host::Detail
