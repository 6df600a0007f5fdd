#include "orvane_host/present/detail/FarthestEffect.h"

#include "orvane_host/present/shaders/FarthestEffect.frag.h"
#include "orvane_host/present/shaders/ScreenEffect.vert.h"

namespace OV::Host::Detail
{

namespace
{

enum Option : std::uint64_t
{
    OptionNeighbours = 1,
};

constexpr OptionRow kOptions[] = {{OptionNeighbours, "NEIGHBOURS"}};

enum Uniform : int
{
    UniformFrom,
    UniformSize,
};

constexpr IndexedName kUniforms[] = {
    {UniformFrom, "u_from"},
    {UniformSize, "u_size"},
};
static_assert(IsDense(kUniforms));

constexpr ProgramTemplate kTemplate = {
    "FarthestEffect", Shaders::ScreenEffectVert, Shaders::FarthestEffectFrag, kOptions, kUniforms, ScreenAttributes,
};

} // namespace

void FarthestEffect::ShowBlocks(unsigned int depth, int width, int height)
{
    m_texture = depth;
    m_takesNeighbours = false;
    m_width = width;
    m_height = height;
}

void FarthestEffect::ShowNeighbours(unsigned int blocks, int width, int height)
{
    m_texture = blocks;
    m_takesNeighbours = true;
    m_width = width;
    m_height = height;
}

unsigned int FarthestEffect::CreateProgramForOptions(std::uint64_t options, std::string& name)
{
    return CreateFromTemplate(kTemplate, options, name);
}

void FarthestEffect::Apply(MaterialES20*, CameraNodeES20*)
{
    static_assert(Block == 4, "as in the shader");
    UseOptions(m_takesNeighbours ? OptionNeighbours : std::uint64_t(0));
    Set(UniformFrom, 0);
    Set(UniformSize, static_cast<float>(m_width), static_cast<float>(m_height));
    BindTexture(0, m_texture);
}

} // namespace OV::Host::Detail
