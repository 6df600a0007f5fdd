#pragma once

namespace OV::Host::Detail
{

/// Shades every sample of a multisampled picture for the length of a scope, where GL can.
class SampleShadingScope
{
public:
    /// GL.
    explicit SampleShadingScope(bool wanted);
    ~SampleShadingScope();

    SampleShadingScope(const SampleShadingScope&) = delete;
    SampleShadingScope& operator=(const SampleShadingScope&) = delete;

    /// Whether the current GL can. GL.
    static bool IsSupported();

private:
    bool m_on;
};

} // namespace OV::Host::Detail
