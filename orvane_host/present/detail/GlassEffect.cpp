#include "orvane_host/present/detail/GlassEffect.h"

#include "orvane_host/present/shaders/GlassEffect.frag.h"
#include "orvane_host/present/shaders/ScreenEffect.vert.h"

namespace OV::Host::Detail
{

namespace
{

enum Uniform : int
{
    UniformLayer,
    UniformPixel,
};

constexpr IndexedName kUniforms[] = {
    {UniformLayer, "u_layer"},
    {UniformPixel, "u_pixel"},
};
static_assert(IsDense(kUniforms));

constexpr OptionRow kOptions[] = {
    {GlassEffect::Layer, "LAYER"},
    {GlassEffect::Sum, "SUM"},
    {GlassEffect::Lay, "LAY"},
};

constexpr ProgramTemplate kTemplate = {
    "GlassEffect", Shaders::ScreenEffectVert, Shaders::GlassEffectFrag, kOptions, kUniforms, ScreenAttributes,
};

} // namespace

void GlassEffect::Show(Step step, unsigned int texture, int width, int height)
{
    m_step = step;
    m_texture = texture;
    m_pixel[0] = 1.0f / static_cast<float>(width);
    m_pixel[1] = 1.0f / static_cast<float>(height);
}

unsigned int GlassEffect::CreateProgramForOptions(std::uint64_t options, std::string& name)
{
    return CreateFromTemplate(kTemplate, options, name);
}

void GlassEffect::Apply(MaterialES20*, CameraNodeES20*)
{
    UseOptions(m_step);
    Set(UniformLayer, 0);
    Set(UniformPixel, m_pixel[0], m_pixel[1]);
    BindTexture(0, m_texture);
}

} // namespace OV::Host::Detail
