#pragma once

namespace OV
{

class DepthIdPassEffectES20;

} // namespace OV

namespace OV::Host
{

struct PresentationFrame;

} // namespace OV::Host

namespace OV::Host::Detail
{

class ScreenBuffer;

/// Draws the surfaces of a frame into buffers of its own, with identifiers for colours.
class SurfacePass
{
public:
    SurfacePass() = default;
    SurfacePass(const SurfacePass&) = delete;
    SurfacePass& operator=(const SurfacePass&) = delete;

    /// The state that surfaces are drawn with, where none is blended. GL.
    static void SetState();

    /// Fetches the effect, if there is none yet. GL.
    /// @return false where there is no such effect.
    bool Fetch(PresentationFrame& frame);

    /// Draws within an OffscreenScope, with the effect. GL.
    /// @param clearMask buffers to clear first; GL's bits.
    /// @param groups whether colours are the identifiers of groups, not those of vertices.
    /// @param asDepth whether the depth is to be that of PresentationFrame::depth.
    void Draw(PresentationFrame& frame, ScreenBuffer& buffer, unsigned int clearMask, bool groups, bool asDepth);

    /// GL with the last reference to the effect.
    void ReleaseGL();

private:
    DepthIdPassEffectES20* m_effect = nullptr; ///< one counted reference; null until fetched
};

/// Prepares for drawing into other buffers than the frame's, and comes back to these at the end of
/// a scope. GL.
class OffscreenScope
{
public:
    explicit OffscreenScope(const PresentationFrame& frame);
    ~OffscreenScope();

    OffscreenScope(const OffscreenScope&) = delete;
    OffscreenScope& operator=(const OffscreenScope&) = delete;

private:
    const PresentationFrame& m_frame;
    bool m_dithered;
};

} // namespace OV::Host::Detail
