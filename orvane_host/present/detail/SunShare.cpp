#include "orvane_host/present/detail/SunShare.h"

#include "orvane_host/present/shaders/SunShare.frag.h"
#include "orvane_host/present/shaders/SunShare.vert.h"
#include "orvane/effects/EffectES20.h"
#include "orvane/effects/ShaderProgram.h"
#include "orvane/math/Matrix.h"
#include "orvane/renderdata/CameraNodeES20.h"

#include <glm/gtc/type_ptr.hpp>
#include <glm/mat3x3.hpp>
#include <glm/matrix.hpp>

#include <algorithm>
#include <iterator>

namespace OV::Host::Detail
{

namespace
{

enum Uniform : int
{
    UniformDepth,
    UniformGlass,
    UniformTable,
    UniformTexel,
    UniformSlices,
    UniformPlace,
    UniformStep,
    UniformLook,
};

constexpr IndexedName kUniforms[] = {
    {UniformDepth, "u_sunDepth"}, {UniformGlass, "u_sunGlass"}, {UniformTable, "u_sunTable"},
    {UniformTexel, "u_sunTexel"}, {UniformSlices, "u_sunSlices"}, {UniformPlace, "u_sunPlace"},
    {UniformStep, "u_sunStep"}, {UniformLook, "u_sunLook"},
};
static_assert(IsDense(kUniforms));

constexpr OptionRow kOptions[] = {
    {SunShare::OptionParts, "SUN_PARTS"},
    {SunShare::OptionSoft, "SUN_SOFT"},
    {SunShare::OptionGlass, "SUN_GLASS"},
    {SunShare::OptionWide, "SUN_WIDE"},
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

const char* SunShare::VertexEnclosure() const
{
    return Shaders::SunShareVert;
}

NameTable SunShare::Uniforms() const
{
    return kUniforms;
}

glm::dmat4 SunShare::ToWorld(const Matrix& worldToClip, bool isPerspective)
{
    const glm::dmat4 toClip(glm::make_mat4(worldToClip.m));
    const int rows[3] = {0, 1, isPerspective ? 3 : 2};
    glm::dmat3 turned(1.0);
    glm::dvec3 moved(0.0);
    for (int row = 0; row < 3; ++row)
    {
        for (int column = 0; column < 3; ++column)
        {
            turned[column][row] = toClip[column][rows[row]];
        }
        moved[row] = toClip[3][rows[row]];
    }
    const glm::dmat3 back = glm::inverse(turned);
    glm::dmat4 toWorld(back);
    toWorld[3] = glm::dvec4(-(back * moved), 1.0);
    return toWorld;
}

void SunShare::FeedPlace(ShaderProgram& program, int uniform) const
{
    const glm::dmat4 toMap = frame.toMap * ToWorld(frame.camera->GetMVP(), frame.isPerspective);
    const glm::dvec4 none(0.0);
    const glm::dvec4 adds[] = {toMap[0], toMap[1], frame.isPerspective ? none : toMap[2],
                               frame.isPerspective ? toMap[2] : none, toMap[3] - glm::dvec4(frame.start, 0.0)};
    glm::vec4 rows[std::size(adds)];
    std::copy(std::begin(adds), std::end(adds), rows);
    program.Uniform4fv(uniform, static_cast<int>(std::size(rows)), glm::value_ptr(rows[0]));
}

void SunShare::Feed(ShaderProgram& program, int first)
{
    program.Uniform1i(first + UniformDepth, DepthUnit);
    if ((m_options & OptionGlass) != 0)
    {
        program.Uniform1i(first + UniformGlass, GlassUnit);
    }
    program.Uniform2fv(first + UniformTexel, 1, values.texel.data());
    if ((m_options & OptionParts) != 0)
    {
        program.Uniform1i(first + UniformTable, TableUnit);
        program.Uniform2fv(first + UniformSlices, 1, values.slices.data());
    }
    program.Uniform3fv(first + UniformLook, 1, values.look.data());
    program.Uniform2fv(first + UniformStep, 1, values.step.data());
    if (frame.camera)
    {
        FeedPlace(program, first + UniformPlace);
    }
}

} // namespace OV::Host::Detail
