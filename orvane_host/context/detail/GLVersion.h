#pragma once

namespace OV::Host::Detail
{

/// Whether a context is current on this thread: without one, entry points may not even be loaded.
bool HasContext();

/// What the current context is able to do beyond GL 2.1.
class GLVersion
{
public:
    /// GL.
    GLVersion();

    /// Whether the context is of this version at least or has the extension, null for none.
    bool Has(int major, int minor, const char* extension = nullptr) const;

private:
    int m_major = 1;
    int m_minor = 0;
};

} // namespace OV::Host::Detail
