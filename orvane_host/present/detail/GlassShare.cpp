#include "orvane_host/present/detail/GlassShare.h"

#include "orvane_host/present/shaders/GlassShare.frag.h"
#include "orvane/effects/EffectES20.h"
#include "orvane/effects/ShaderProgram.h"

namespace OV::Host::Detail
{

namespace
{

enum Uniform : unsigned int
{
    UniformSolid,
    UniformLast,
    UniformPixel,
};

constexpr IndexedName kUniforms[] = {
    {UniformSolid, "u_glassSolid"},
    {UniformLast, "u_glassLast"},
    {UniformPixel, "u_glassPixel"},
};
static_assert(IsDense(kUniforms));

/// Before what stands for the light. Layers may have other pixels than the target, in which it counts.
const char* const kPlaces = R"(
uniform vec3 u_glassPixel; // 1 by width and height of the layers; pixels of the target for one of them

vec4 glassFragCoord()
{
    return vec4(gl_FragCoord.xy * u_glassPixel.z, gl_FragCoord.zw);
}
)";

const char* const kFullLight = R"(
float OVSL_LightShare(bool wanted)
{
    return 1.0;
}

float OVSL_ShadowTone()
{
    return 1.0;
}
)";

void ReplaceAll(std::string& text, const std::string& what, const std::string& with)
{
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size()))
    {
        text.replace(at, what.size(), with);
    }
}

/// The text of a light that is told the pixels of the target.
std::string InPixelsOfTarget(std::string text)
{
    ReplaceAll(text, "gl_FragCoord", "glassFragCoord()");
    for (const char* const change : {"dFdx(", "dFdy(", "fwidth("})
    {
        ReplaceAll(text, change, std::string("(1.0 / u_glassPixel.z) * ") + change);
    }
    return text;
}

} // namespace

void GlassShare::Set(Form form, LightShare* light, int width, int height, float scale)
{
    m_form = form;
    m_light = light;
    m_pixel = {1.0f / static_cast<float>(width), 1.0f / static_cast<float>(height), scale};
    const char* const of = light ? light->Source() : kFullLight;
    if (m_text.light == light && m_text.of == of)
    {
        return;
    }
    m_text.light = light;
    m_text.of = of;
    m_text.source = kPlaces + InPixelsOfTarget(of);
    m_text.uniforms.clear();
    const NameTable names = light ? light->Uniforms() : NameTable(nullptr, 0);
    m_text.uniforms.assign(names.begin(), names.end());
    const auto first = static_cast<unsigned int>(m_text.uniforms.size());
    for (const IndexedName& row : kUniforms)
    {
        m_text.uniforms.push_back({first + row.index, row.name});
    }
}

const char* GlassShare::Source() const
{
    return m_text.source.c_str();
}

const char* GlassShare::Enclosure() const
{
    // Each made once, to be the same text for good.
    static const auto make = [](const char* options)
    { return EffectES20::ExpandTemplate(Shaders::GlassShareFrag, {{"@GLASS_OPTIONS@", options}}); };
    static const std::string layer = make("");
    static const std::string sum = make("#define GLASS_SUM\n");
    return (m_form == Form::Sum ? sum : layer).c_str();
}

const char* GlassShare::VertexEnclosure() const
{
    return m_light ? m_light->VertexEnclosure() : nullptr;
}

NameTable GlassShare::Uniforms() const
{
    return NameTable(m_text.uniforms.data(), m_text.uniforms.size());
}

void GlassShare::Feed(ShaderProgram& program, int first)
{
    if (m_light)
    {
        m_light->Feed(program, first);
    }
    const int own = first + static_cast<int>(m_text.uniforms.size() - std::size(kUniforms));
    program.Uniform1i(own + UniformSolid, SolidUnit);
    program.Uniform1i(own + UniformLast, LastUnit);
    program.Uniform3f(own + UniformPixel, m_pixel[0], m_pixel[1], m_pixel[2]);
}

} // namespace OV::Host::Detail
