#include "orvane_host/present/detail/SlopeEffect.h"

#include "orvane_host/present/shaders/SlopeEffect.frag.h"
#include "orvane_host/present/shaders/SlopeEffect.vert.h"

namespace OV::Host::Detail
{

namespace
{

constexpr OptionRow kOptions[] = {{0, "DEFAULT"}};

/// In the places of the base, which sets them.
constexpr IndexedName kUniforms[] = {
    {0, "u_encodedGroupInstance"},
    {1, "u_mvpMatrix"},
    {2, "u_worldTransform"},
    {3, "u_numClipPlanes"},
    {4, "u_clipPlaneNormals"},
    {5, "u_clipPlanePositions"},
};
static_assert(IsDense(kUniforms));

constexpr IndexedName kAttributes[] = {
    {0, "a_position"},
    {1, "a_color"},
};

constexpr ProgramTemplate kTemplate = {
    "SlopeEffect", Shaders::SlopeEffectVert, Shaders::SlopeEffectFrag, kOptions, kUniforms, kAttributes,
};

} // namespace

SlopeEffect::SlopeEffect() : DepthIdPassEffectES20(nullptr)
{
    static_assert(kUniforms[UniformIdentifier].index == UniformIdentifier
                  && kUniforms[UniformObjectToClip].index == UniformObjectToClip);
    // Without colours at the vertices.
    SetIdMode(1);
    DrawByStreams(kAttributes[0].index);
}

unsigned int SlopeEffect::CreateProgramForOptions(std::uint64_t options, std::string& name)
{
    return CreateFromTemplate(kTemplate, options, name);
}

} // namespace OV::Host::Detail
