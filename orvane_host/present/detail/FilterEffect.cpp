#include "orvane_host/present/detail/FilterEffect.h"

#include "orvane_host/present/shaders/FilterEffect.frag.h"
#include "orvane_host/present/shaders/ScreenEffect.vert.h"

#include <GL/gl.h>

namespace OV::Host::Detail
{

namespace
{

enum Uniform : int
{
    UniformPicture,
    UniformSize,
};

constexpr IndexedName kUniforms[] = {
    {UniformPicture, "u_picture"},
    {UniformSize, "u_size"},
};
static_assert(IsDense(kUniforms));

constexpr ProgramTemplate kTemplate = {
    "FilterEffect", Shaders::ScreenEffectVert, Shaders::FilterEffectFrag, {}, kUniforms, ScreenAttributes,
};

} // namespace

void FilterEffect::SetSize(int width, int height)
{
    m_width = width;
    m_height = height;
}

unsigned int FilterEffect::CreateProgramForOptions(std::uint64_t options, std::string& name)
{
    return CreateFromTemplate(kTemplate, options, name);
}

void FilterEffect::Apply(MaterialES20*, CameraNodeES20*)
{
    UseOptions(0);
    Set(UniformPicture, 0);
    Set(UniformSize, static_cast<float>(m_width), static_cast<float>(m_height));
    // Look-ups lie a varying number of texels apart, for which the captured picture has another filter.
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
}

void FilterEffect::Remove()
{
    EndUse();
}

} // namespace OV::Host::Detail
