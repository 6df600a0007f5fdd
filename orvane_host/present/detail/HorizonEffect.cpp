#include "orvane_host/present/detail/HorizonEffect.h"

#include "orvane_host/present/shaders/HorizonEffect.frag.h"
#include "orvane_host/present/shaders/ScreenEffect.vert.h"

#include <GL/gl.h>

namespace OV::Host::Detail
{

namespace
{

enum Option : std::uint64_t
{
    OptionPerspective = 1,
    OptionShade = 2, ///< the second run
    OptionFar = 4,
    OptionFiner = 8,
};

constexpr OptionRow kOptions[] = {
    {OptionPerspective, "PERSPECTIVE"},
    {OptionShade, "SHADE"},
    {OptionFar, "FAR"},
    {OptionFiner, "FINER"},
};

enum Uniform : int
{
    UniformDepth,
    UniformFaces,
    UniformHidden,
    UniformSize,
    UniformView,
    UniformDistance,
    UniformPrecision,
    UniformRadius,
    UniformPerRadius,
    UniformReach,
    UniformStrength,
    UniformFog,
    UniformFarDepth,
    UniformFarSize,
    UniformFarView,
    UniformToFar,
    UniformNearReach,
    UniformFiner,
    UniformApart,
    UniformHiddenSize,
    UniformFirst,
};

constexpr IndexedName kUniforms[] = {
    {UniformDepth, "u_depth"},
    {UniformFaces, "u_faces"},
    {UniformHidden, "u_hidden"},
    {UniformSize, "u_size"},
    {UniformView, "u_view"},
    {UniformDistance, "u_distance"},
    {UniformPrecision, "u_precision"},
    {UniformRadius, "u_radius"},
    {UniformPerRadius, "u_perRadius"},
    {UniformReach, "u_reach"},
    {UniformStrength, "u_strength"},
    {UniformFog, "u_fog"},
    {UniformFarDepth, "u_farDepth"},
    {UniformFarSize, "u_farSize"},
    {UniformFarView, "u_farView"},
    {UniformToFar, "u_toFar"},
    {UniformNearReach, "u_nearReach"},
    {UniformFiner, "u_finer"},
    {UniformApart, "u_apart"},
    {UniformHiddenSize, "u_hiddenSize"},
    {UniformFirst, "u_first"},
};
static_assert(IsDense(kUniforms));

constexpr ProgramTemplate kTemplate = {
    "HorizonEffect", Shaders::ScreenEffectVert, Shaders::HorizonEffectFrag, kOptions, kUniforms, ScreenAttributes,
};

enum TextureUnit : int
{
    UnitDepth,
    UnitFaces,
    UnitOther, ///< what is far in the first run, what the first run found in the second
};

} // namespace

unsigned int HorizonEffect::CreateProgramForOptions(std::uint64_t options, std::string& name)
{
    return CreateFromTemplate(kTemplate, options, name);
}

void HorizonEffect::Apply(MaterialES20*, CameraNodeES20*)
{
    const bool isFirst = values.hidden == 0;
    const unsigned int other = isFirst ? values.farDepth : values.hidden;
    UseOptions((values.perspective ? OptionPerspective : std::uint64_t(0)) | (isFirst ? std::uint64_t(0) : OptionShade)
               | (isFirst && values.farDepth != 0 ? OptionFar : std::uint64_t(0))
               | (!isFirst && values.finer > 1.0f ? OptionFiner : std::uint64_t(0)));
    Set(UniformDepth, static_cast<int>(UnitDepth));
    Set(UniformFaces, static_cast<int>(UnitFaces));
    Set(UniformHidden, static_cast<int>(UnitOther));
    Set(UniformFarDepth, static_cast<int>(UnitOther));
    Set(UniformFirst, values.first.x, values.first.y);
    Set(UniformSize, values.size.x, values.size.y);
    Set(UniformFiner, values.finer);
    Set(UniformApart, values.apart);
    Set(UniformHiddenSize, values.hiddenSize.x, values.hiddenSize.y);
    Set(UniformView, values.view.x, values.view.y, values.view.z, values.view.w);
    Set(UniformDistance, values.distance.x, values.distance.y);
    Set(UniformPrecision, values.precision);
    Set(UniformRadius, values.radius);
    Set(UniformPerRadius, 1.0f / values.radius);
    Set(UniformReach, values.reach);
    Set(UniformStrength, values.strength);
    Set(UniformFog, values.fog.x, values.fog.y);
    Set(UniformFarSize, values.farSize.x, values.farSize.y);
    Set(UniformFarView, values.farView.x, values.farView.y, values.farView.z, values.farView.w);
    Set(UniformToFar, values.toFar.x, values.toFar.y);
    Set(UniformNearReach, values.nearReach);
    BindTexture(UnitOther, other);
    BindTexture(UnitFaces, values.faces);
    BindTexture(UnitDepth, values.depth);
}

void HorizonEffect::Remove()
{
    EndUse();
    BindTexture(UnitOther, 0);
    BindTexture(UnitFaces, 0);
    BindTexture(UnitDepth, 0);
}

} // namespace OV::Host::Detail
