#include "orvane_host/present/detail/OverSceneScope.h"

#include <GL/gl.h>

namespace OV::Host::Detail
{

OverSceneScope::OverSceneScope(const std::array<float, 2>& depthRange) : m_function(GL_LESS), m_range(depthRange)
{
    glGetIntegerv(GL_DEPTH_FUNC, &m_function);
    glDepthMask(GL_FALSE);
    glDepthFunc(GL_GREATER);
    glDepthRange(1.0, 1.0);
}

OverSceneScope::~OverSceneScope()
{
    glDepthRange(m_range[0], m_range[1]);
    glDepthFunc(static_cast<GLenum>(m_function));
    glDepthMask(GL_TRUE);
}

} // namespace OV::Host::Detail
