#include "orvane/platform/detail/EntryPoints.h"

#include <GL/glew.h>

namespace OV::Platform
{

bool LoadEntryPoints()
{
    if (__glewCreateShader)
    {
        return true;
    }
    // GLEW leaves out what the context does not list, unless told to look everywhere.
    glewExperimental = GL_TRUE;
    const GLenum status = glewInit();
    // A context made through EGL has no GLX display; the functions are loaded by then.
    return (status == GLEW_OK || status == GLEW_ERROR_NO_GLX_DISPLAY) && __glewCreateShader;
}

}  // namespace OV::Platform
