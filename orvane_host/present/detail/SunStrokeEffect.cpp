#include "orvane_host/present/detail/SunStrokeEffect.h"

#include "orvane_host/present/shaders/StrokeEffect.frag.h"
#include "orvane_host/present/shaders/SunStrokeEffect.vert.h"
#include "orvane/math/Color.h"

namespace OV::Host::Detail
{

namespace
{

enum Uniform : int
{
    UniformPatchToClip,
    UniformAcross,
    UniformAlong,
    UniformColor,
    UniformWidth,
    UniformOpacity,
    UniformVeil,
    UniformEnableNormals,
};

constexpr IndexedName kUniforms[] = {
    {UniformPatchToClip, "u_patchToClip"},
    {UniformAcross, "u_across"},
    {UniformAlong, "u_along"},
    {UniformColor, "u_color"},
    {UniformWidth, "u_width"},
    {UniformOpacity, "u_opacity"},
    {UniformVeil, "u_veil"},
    {UniformEnableNormals, "u_enableNormals"},
};
static_assert(IsDense(kUniforms));

constexpr ProgramTemplate kTemplate = {
    "SunStrokeEffect", Shaders::SunStrokeEffectVert, Shaders::StrokeEffectFrag, {}, kUniforms, kPatchAttributes,
};

} // namespace

unsigned int SunStrokeEffect::CreateProgramForOptions(std::uint64_t options, std::string& name)
{
    return CreateFromTemplate(kTemplate, options, name);
}

void SunStrokeEffect::Apply(MaterialES20*, CameraNodeES20*)
{
    UseOptions(0);
    // White in full light, so that shadow alone takes strokes, on a veil that covers nothing.
    Set(UniformColor, Color(1.0f, 1.0f, 1.0f));
    Set(UniformOpacity, 1.0f);
    Set(UniformVeil, 0.0f);
    Set(UniformWidth, width);
    Set(UniformEnableNormals, 1);
}

void SunStrokeEffect::BindMeshUniforms(MeshNode*)
{
    Set(UniformPatchToClip, patchToClip);
    Set(UniformAcross, across);
    Set(UniformAlong, along);
}

} // namespace OV::Host::Detail
