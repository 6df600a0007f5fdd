#include "orvane/platform/detail/GLString.h"

#include <GL/glew.h>

namespace OV::Platform
{

std::string GLString(unsigned int name)
{
    const GLubyte* text = glGetString(name);
    return text ? reinterpret_cast<const char*>(text) : "";
}

}  // namespace OV::Platform
