#pragma once

#include "orvane/renderer/RenderTarget.h"

namespace OV::Host::Detail
{

/// A render target that frees what it holds, and that puts up with a GL that can't make it.
class ScreenBuffer
{
public:
    /// How finely a depth texture tells depths apart.
    enum class Depths
    {
        Finest,  ///< as GL likes
        Offsets, ///< so that a unit of a polygon offset counts
        Short,   ///< in 16 bits, for those that are looked up here and there: fewer lie in memory
    };

    /// Not GL.
    explicit ScreenBuffer(eRenderTargetProfile profile, Depths depths = Depths::Finest) :
        m_target(profile, depths)
    {
    }

    /// GL if there are buffers.
    ~ScreenBuffer();

    ScreenBuffer(const ScreenBuffer&) = delete;
    ScreenBuffer& operator=(const ScreenBuffer&) = delete;

    /// Makes the buffers where the size is another than before, in pixels. What is bound stays.
    /// GL.
    /// @return false if there are none: the size is beyond GL, or GL refused, which is not tried
    ///         again in this size.
    bool Resize(int width, int height);

    /// Where depths are to be others than before, lets go of the buffers, for Resize to make them anew. GL.
    void SetDepths(Depths depths);

    /// Copies the colours of a framebuffer, samples resolved, from its lower left corner. GL.
    /// @param framebuffer that is bound, for drawing and for reading.
    void CopyFrom(unsigned int framebuffer, bool multisampled);

    /// Whether depths are looked up between the middles of pixels or at the nearest; the latter at
    /// first, and again in another size. GL.
    void SmoothDepth(bool smooth);

    RenderTarget& GetTarget() { return m_target; }

private:
    class Target : public RenderTarget
    {
    public:
        Target(eRenderTargetProfile profile, Depths depths) : RenderTarget(profile), m_depths(depths) {}

        unsigned int GetFramebuffer() const { return framebuffer; }
        Depths GetDepths() const { return m_depths; }

        /// For the buffers that are made from now on.
        void SetDepths(Depths depths) { m_depths = depths; }

    protected:
        /// Without the renderbuffer that the base has beside a texture of depths, and without making these twice: of a
        /// large map that is several times the memory.
        bool InitializeBuffers() override;

    private:
        /// Gives textures of one pixel their size and format.
        bool Enlarge();

        Depths m_depths;
    };

    Target m_target;
    int m_width = 0;
    int m_height = 0;
    bool m_usable = false;
    bool m_smooth = false;
};

} // namespace OV::Host::Detail
