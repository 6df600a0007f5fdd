#pragma once

namespace OV::Host::Detail
{

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
