#include "orvane/platform/detail/GLString.h"

#include <GL/glew.h>

namespace OV::Platform
{

std::string GLString(unsigned int name)
{
    std::string text;
    ReadGLString(name, text);
    return text;
}

bool ReadGLString(unsigned int name, std::string& text)
{
    const GLubyte* const answer = glGetString(name);
    text = answer ? reinterpret_cast<const char*>(answer) : "";
    return answer != nullptr;
}

}  // namespace OV::Platform
