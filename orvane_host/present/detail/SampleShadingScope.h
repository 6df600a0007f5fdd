#pragma once

namespace OV::Host::Detail
{

/// Shades every sample of a multisampled picture for the length of a scope.
class SampleShadingScope
{
public:
    /// GL.
    /// @param wanted only where it is of use.
    explicit SampleShadingScope(bool wanted);
    ~SampleShadingScope();

    SampleShadingScope(const SampleShadingScope&) = delete;
    SampleShadingScope& operator=(const SampleShadingScope&) = delete;

    /// Whether the current GL can. GL.
    static bool IsSupported();

    /// Whether the current GL can and does not do so already, in which case it stays on. GL.
    static bool IsOfUse();

    /// Whether it gives a sample its own place in perspective too. GL.
    ///
    /// Mesa's llvmpipe (22.3) divides what it interpolates at a sample by the depth at the middle of
    /// the pixel: positions scale about the origin by what the depth changes in half a pixel, so
    /// that a model a kilometre away from it is cut metres off.
    static bool IsExactInPerspective();

private:
    bool m_on;
};

} // namespace OV::Host::Detail
