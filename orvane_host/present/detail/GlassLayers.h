#pragma once

#include "orvane_host/present/GlassSettings.h"
#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/detail/GlassShare.h"

#include <array>
#include <functional>

namespace OV::Host::Detail
{

class GlassEffect;

/// Puts see-through surfaces together off screen, whatever their order, and lays them over the picture.
///
/// Exact: each time the surfaces are drawn the nearest is kept of those that lie behind the last one, until
/// nothing more comes. Weighted: all of them are added up at once.
class GlassLayers
{
public:
    /// Draws into what is bound.
    using Drawing = std::function<void()>;

    GlassLayers() = default;
    GlassLayers(const GlassLayers&) = delete;
    GlassLayers& operator=(const GlassLayers&) = delete;

    /// GL if it was drawn.
    ~GlassLayers();

    /// Makes what it takes to draw a frame. GL.
    /// @return false where GL can't: surfaces are then drawn as the scene lists them.
    bool Prepare(const PresentationFrame& frame, const GlassSettings& settings);

    PixelSize Size() const { return m_size; }

    /// Puts the layers of a frame together, after Prepare, in a frame that is served. What is bound stays. GL.
    /// @param light in force, or null.
    /// @param solidDepth of what hides glass, a texture of Size(); 0 where that is yet to be drawn.
    /// @param solid draws what hides glass.
    /// @param glass draws the surfaces.
    void Gather(PresentationFrame& frame, LightShare* light, unsigned int solidDepth, const Drawing& solid,
                const Drawing& glass);

    /// Lays them over the picture. GL.
    void Lay(PresentationFrame& frame);

    void ReleaseGL();

private:
    enum Texture
    {
        Solid,  ///< depth of what is solid
        First,  ///< depths of layers, in turns
        Second,
        Layer,  ///< colour and opacity of a layer
        Sum,    ///< of colours by their densities; what all let through
        Glass,  ///< what was put together: colour, and what is let through
        TextureCount,
    };

    enum Framebuffer
    {
        IntoSolid,
        IntoFirst,
        IntoSecond,
        IntoSum,
        IntoGlass,
        FramebufferCount,
    };

    bool Make();
    void MakeTexture(Texture texture, int format) const;
    bool Attach(Framebuffer into, Texture color, Texture depth) const;
    void Begin(Framebuffer into, float depth) const;
    void Put(PresentationFrame& frame, Texture texture);
    bool DrawLayer(int number, const Drawing& glass);
    void DrawSum(PresentationFrame& frame, LightShare* light, const Drawing& glass, Texture last);

    GlassSettings m_settings;
    PixelSize m_size;
    int m_scale = 1;
    bool m_isUsable = false;
    std::array<unsigned int, TextureCount> m_textures{};
    std::array<unsigned int, FramebufferCount> m_framebuffers{};
    unsigned int m_query = 0;
    GlassShare m_share;
    GlassEffect* m_effect = nullptr; ///< one counted reference; null until drawn
};

} // namespace OV::Host::Detail
