#include "orvane_host/present/detail/OverScreenScope.h"

#include <GL/gl.h>

namespace OV::Host::Detail
{

OverScreenScope::OverScreenScope()
{
    glDisable(GL_CULL_FACE);
    glDisable(GL_BLEND);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_FALSE);
}

OverScreenScope::~OverScreenScope()
{
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glEnable(GL_CULL_FACE);
}

} // namespace OV::Host::Detail
