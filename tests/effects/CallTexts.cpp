#include "tests/effects/CallTexts.h"

#include "tests/support/GLRecorder.h"

#include <GL/glew.h>

namespace OV::Test
{

std::string Enable(unsigned int capability)
{
    return CallText("glEnable", {static_cast<double>(capability)});
}

std::string Disable(unsigned int capability)
{
    return CallText("glDisable", {static_cast<double>(capability)});
}

std::string Unit(unsigned int unit)
{
    return CallText("glActiveTexture", {static_cast<double>(GL_TEXTURE0 + unit)});
}

std::string BindTexture(unsigned int texture)
{
    return CallText("glBindTexture", {GL_TEXTURE_2D, static_cast<double>(texture)});
}

std::vector<std::string> ProgramAndTextures(unsigned int program, const std::vector<unsigned int>& textures)
{
    std::vector<std::string> calls = {CallText("glUseProgram", {static_cast<double>(program)})};
    for (unsigned int unit = 0; unit < textures.size(); ++unit)
    {
        calls.push_back(Unit(unit));
        calls.push_back(BindTexture(textures[unit]));
    }
    calls.push_back(Unit(0));
    return calls;
}

} // namespace OV::Test
