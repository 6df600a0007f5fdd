#include "orvane_host/present/detail/LineLayEffect.h"

#include "orvane_host/present/shaders/LineLayEffect.frag.h"
#include "orvane_host/present/shaders/ScreenEffect.vert.h"

namespace OV::Host::Detail
{

namespace
{

enum Option : std::uint64_t
{
    OptionFinished = 1,
};

constexpr OptionRow kOptions[] = {{OptionFinished, "FINISHED"}};

enum Uniform : int
{
    UniformLines,
    UniformChannels,
    UniformColor,
    UniformFogColor,
};

constexpr IndexedName kUniforms[] = {
    {UniformLines, "u_lines"},
    {UniformChannels, "u_channels"},
    {UniformColor, "u_color"},
    {UniformFogColor, "u_fogColor"},
};
static_assert(IsDense(kUniforms));

constexpr ProgramTemplate kTemplate = {
    "LineLayEffect", Shaders::ScreenEffectVert, Shaders::LineLayEffectFrag, kOptions, kUniforms, ScreenAttributes,
};

} // namespace

void LineLayEffect::ShowLines(unsigned int lines, Channels channels, const Color& color, const Color& fogColor)
{
    m_texture = lines;
    m_isFinished = false;
    m_channels = channels;
    m_color = color;
    m_fogColor = fogColor;
}

void LineLayEffect::ShowPicture(unsigned int picture)
{
    m_texture = picture;
    m_isFinished = true;
}

unsigned int LineLayEffect::CreateProgramForOptions(std::uint64_t options, std::string& name)
{
    return CreateFromTemplate(kTemplate, options, name);
}

void LineLayEffect::Apply(MaterialES20*, CameraNodeES20*)
{
    UseOptions(m_isFinished ? OptionFinished : std::uint64_t(0));
    Set(UniformLines, 0);
    Set(UniformChannels, static_cast<int>(m_channels));
    Set(UniformColor, m_color);
    Set(UniformFogColor, m_fogColor);
    BindTexture(0, m_texture);
}

} // namespace OV::Host::Detail
