#include "orvane_host/present/detail/SunShare.h"

#include "orvane_host/present/shaders/SunShare.frag.h"
#include "orvane/effects/EffectES20.h"
#include "orvane/effects/ShaderProgram.h"

namespace OV::Host::Detail
{

namespace
{

enum Uniform : int
{
    UniformDepth,
    UniformGlass,
    UniformTexel,
    UniformTiles,
    UniformToMap,
    UniformRects,
    UniformSteps,
    UniformLook,
};

constexpr IndexedName kUniforms[] = {
    {UniformDepth, "u_sunDepth"}, {UniformGlass, "u_sunGlass"}, {UniformTexel, "u_sunTexel"},
    {UniformTiles, "u_sunTiles"}, {UniformToMap, "u_sunToMap"},
    {UniformRects, "u_sunRects"}, {UniformSteps, "u_sunSteps"}, {UniformLook, "u_sunLook"},
};
static_assert(IsDense(kUniforms));

constexpr OptionRow kOptions[] = {
    {SunShare::OptionPerspective, "SUN_PERSPECTIVE"},
    {SunShare::OptionParts, "SUN_PARTS"},
    {SunShare::OptionSoft, "SUN_SOFT"},
    {SunShare::OptionGlass, "SUN_GLASS"},
};

} // namespace

void SunShare::SetOptions(unsigned options)
{
    m_options = options;
    std::string& source = m_sources[options];
    if (source.empty())
    {
        source = EffectES20::ExpandTemplate(Shaders::SunShareFrag,
                                            {{"@SUN_OPTIONS@", EffectES20::OptionsDefines(options, kOptions)}});
    }
}

const char* SunShare::Source() const
{
    return m_sources[m_options].c_str();
}

NameTable SunShare::Uniforms() const
{
    return kUniforms;
}

void SunShare::Feed(ShaderProgram& program, int first)
{
    const int tiles = values.tiles;
    program.Uniform1i(first + UniformDepth, DepthUnit);
    if ((m_options & OptionGlass) != 0)
    {
        program.Uniform1i(first + UniformGlass, GlassUnit);
    }
    program.Uniform2fv(first + UniformTexel, 1, values.texel.data());
    if ((m_options & OptionParts) != 0)
    {
        program.Uniform1i(first + UniformTiles, tiles);
    }
    program.Uniform4fv(first + UniformLook, 1, values.look.data());
    if (tiles > 0)
    {
        program.Uniform3fv(first + UniformToMap, 4 * tiles, values.toMap.front().data());
        program.Uniform4fv(first + UniformRects, tiles, values.rects.front().data());
        program.Uniform2fv(first + UniformSteps, tiles, values.steps.front().data());
    }
}

} // namespace OV::Host::Detail
