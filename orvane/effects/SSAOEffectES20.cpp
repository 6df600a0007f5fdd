#include "orvane/effects/SSAOEffectES20.h"

#include "orvane/effects/shaders/SSAOEffectES20.frag.h"
#include "orvane/effects/shaders/SSAOEffectES20.vert.h"
#include "orvane/renderdata/MeshES20.h"

#include <GL/glew.h>

namespace OV
{

namespace
{

enum Option : std::uint64_t
{
    OptionMist = 1,
    OptionNoise = 2,
    OptionPart = 4, ///< the pictures are a part of a larger one
};

constexpr OptionRow kOptions[] = {
    {0, "DEFAULT"},
    {OptionMist, "USE_MIST"},
    {OptionNoise, "USE_NOISE"},
    {OptionPart, "PART"},
};

enum Uniform : int
{
    UniformDepthTexture,
    UniformRenderedTexture,
    UniformRenderedTextureHeight,
    UniformRenderedTextureWidth,
    UniformZFar,
    UniformZNear,
    UniformPart, ///< this and the next with OptionPart
    UniformWhole,
};

constexpr IndexedName kUniforms[] = {
    {UniformDepthTexture, "uDepthTexture"},
    {UniformRenderedTexture, "uRenderedTexture"},
    {UniformRenderedTextureHeight, "uRenderedTextureHeight"},
    {UniformRenderedTextureWidth, "uRenderedTextureWidth"},
    {UniformZFar, "uZFar"},
    {UniformZNear, "uZNear"},
};
static_assert(IsDense(kUniforms));

constexpr IndexedName kPartUniforms[] = {{UniformPart, "uPart"}, {UniformWhole, "uWhole"}};

enum Attribute : unsigned
{
    AttributePosition = 0,
    AttributeTexture = 2,
};

constexpr IndexedName kAttributes[] = {
    {AttributePosition, "a_position"},
    {AttributeTexture, "a_texture"},
};

constexpr ProgramTemplate kTemplate = {
    "SSAOEffectES20", Shaders::SSAOEffectES20Vert, Shaders::SSAOEffectES20Frag, kOptions, kUniforms, kAttributes,
};

} // namespace

SSAOEffectES20::SSAOEffectES20(EffectCache* cache) : MaterialEffectES20(cache) {}

unsigned int SSAOEffectES20::CreateProgramForOptions(std::uint64_t options, std::string& name)
{
    return (options & OptionPart) != 0 ? CreateFromTemplate(kTemplate, options, name, kPartUniforms)
                                       : CreateFromTemplate(kTemplate, options, name);
}

void SSAOEffectES20::Bind()
{
    UseOptions(isPart ? OptionMist | OptionPart : OptionMist);
    BindTexture(0, static_cast<GLuint>(depthTexture));
    BindTexture(1, static_cast<GLuint>(renderTexture));
    glActiveTexture(GL_TEXTURE0);
}

void SSAOEffectES20::Apply(MaterialES20*, CameraNodeES20*)
{
    Bind();
}

void SSAOEffectES20::Remove()
{
    EndUse();
}

void SSAOEffectES20::BindMeshAttributes(MeshES20* mesh)
{
    EnableAttribute(AttributePosition, 3, mesh->GetStride(), mesh->GetPositionOffset());
    EnableStream(AttributeTexture, 2, mesh->GetStride(), mesh->GetTextureOffset());
}

void SSAOEffectES20::ReleaseMeshAttributes(MeshES20*)
{
    DisableAttribute(AttributePosition);
    DisableAttribute(AttributeTexture);
}

void SSAOEffectES20::BindMeshUniforms(MeshNode*)
{
    Set(UniformRenderedTextureWidth, static_cast<float>(width));
    Set(UniformRenderedTextureHeight, static_cast<float>(height));
    Set(UniformDepthTexture, 0);
    Set(UniformRenderedTexture, 1);
    Set(UniformZNear, zNear);
    Set(UniformZFar, zFar);
    if (isPart)
    {
        Set(UniformPart, part[0], part[1], part[2], part[3]);
        Set(UniformWhole, whole[0], whole[1]);
    }
}

} // namespace OV
