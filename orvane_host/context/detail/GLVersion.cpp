#include "orvane_host/context/detail/GLVersion.h"

#include <GL/gl.h>

#include <cstdio>
#include <cstring>

namespace OV::Host::Detail
{

bool HasContext()
{
    return glGetString(GL_VERSION) != nullptr;
}

GLVersion::GLVersion()
{
    // The query of numbers is not of GL 2.1.
    const auto* const text = reinterpret_cast<const char*>(glGetString(GL_VERSION));
    if (!text || std::sscanf(text, "%d.%d", &m_major, &m_minor) != 2)
    {
        m_major = 1;
        m_minor = 0;
    }
}

bool GLVersion::Has(int major, int minor, const char* extension) const
{
    if (m_major > major || (m_major == major && m_minor >= minor))
    {
        return true;
    }
    const auto* const all = reinterpret_cast<const char*>(extension ? glGetString(GL_EXTENSIONS) : nullptr);
    const char* found = all ? std::strstr(all, extension) : nullptr;
    const std::size_t length = extension ? std::strlen(extension) : 0;
    while (found)
    {
        const bool isWhole =
            (found == all || found[-1] == ' ') && (found[length] == ' ' || found[length] == '\0');
        if (isWhole)
        {
            return true;
        }
        found = std::strstr(found + length, extension);
    }
    return false;
}

} // namespace OV::Host::Detail
