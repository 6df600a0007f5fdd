#pragma once

namespace OV::Host::Detail
{

/// Gives meshes without colours white ones, for the length of a scope. GL.
class ConstantColorScope
{
public:
    /// @param attribute that the effect in use reads colours from.
    ConstantColorScope(unsigned int attribute, bool wanted);
    ~ConstantColorScope();

    ConstantColorScope(const ConstantColorScope&) = delete;
    ConstantColorScope& operator=(const ConstantColorScope&) = delete;

private:
    unsigned int m_attribute;
    bool m_wanted;
};

} // namespace OV::Host::Detail
