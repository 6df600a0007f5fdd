#include "orvane_host/present/detail/SunShare.h"

#include "orvane_host/present/shaders/SunShare.frag.h"
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
    UniformPixel,
    UniformTiles,
    UniformToMap,
    UniformRects,
    UniformSteps,
    UniformLook,
};

constexpr IndexedName kUniforms[] = {
    {UniformDepth, "u_sunDepth"}, {UniformGlass, "u_sunGlass"}, {UniformTexel, "u_sunTexel"},
    {UniformPixel, "u_sunPixel"}, {UniformTiles, "u_sunTiles"}, {UniformToMap, "u_sunToMap"},
    {UniformRects, "u_sunRects"}, {UniformSteps, "u_sunSteps"}, {UniformLook, "u_sunLook"},
};
static_assert(IsDense(kUniforms));

} // namespace

const char* SunShare::Source() const
{
    return Shaders::SunShareFrag;
}

NameTable SunShare::Uniforms() const
{
    return kUniforms;
}

void SunShare::Feed(ShaderProgram& program, int first)
{
    const int tiles = values.tiles;
    program.Uniform1i(first + UniformDepth, DepthUnit);
    program.Uniform1i(first + UniformGlass, GlassUnit);
    program.Uniform2fv(first + UniformTexel, 1, values.texel.data());
    program.Uniform4fv(first + UniformPixel, 1, values.pixel.data());
    program.Uniform1i(first + UniformTiles, tiles);
    program.Uniform4fv(first + UniformLook, 1, values.look.data());
    if (tiles > 0)
    {
        program.Uniform4fv(first + UniformToMap, 3 * tiles, values.toMap.front().data());
        program.Uniform4fv(first + UniformRects, tiles, values.rects.front().data());
        program.Uniform2fv(first + UniformSteps, tiles, values.steps.front().data());
    }
}

} // namespace OV::Host::Detail
