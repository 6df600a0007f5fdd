#define GL_GLEXT_PROTOTYPES

#include "orvane_host/present/detail/SampleShadingScope.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <cstring>

namespace OV::Host::Detail
{

SampleShadingScope::SampleShadingScope(bool wanted) : m_on(wanted)
{
    if (m_on)
    {
        glEnable(GL_SAMPLE_SHADING);
        glMinSampleShading(1.0f);
    }
}

SampleShadingScope::~SampleShadingScope()
{
    if (m_on)
    {
        glMinSampleShading(0.0f);
        glDisable(GL_SAMPLE_SHADING);
    }
}

bool SampleShadingScope::IsSupported()
{
    const auto* const names = reinterpret_cast<const char*>(glGetString(GL_EXTENSIONS));
    return names && std::strstr(names, "GL_ARB_sample_shading");
}

bool SampleShadingScope::IsOfUse()
{
    return IsSupported() && !glIsEnabled(GL_SAMPLE_SHADING);
}

bool SampleShadingScope::IsExactInPerspective()
{
    const auto* const renderer = reinterpret_cast<const char*>(glGetString(GL_RENDERER));
    return renderer && !std::strstr(renderer, "llvmpipe");
}

} // namespace OV::Host::Detail
