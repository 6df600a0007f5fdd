#pragma once

#include "orvane/imaging/TextureLoaderPtr.h"

#include <array>
#include <vector>

namespace OV::Host
{

/// Four pictures of pen strokes for hosts that draw with the engine's CrosshatchEffectES20, from a few strokes
/// to many.
///
/// Each has all the strokes of the lighter ones, so that a tone that darkens only gains strokes.
/// They repeat without a seam, have mipmaps, and are the same in every process.
class HatchTextures
{
public:
    static constexpr int Tones = 4;

    /// Pixels of an edge; a power of two.
    static constexpr int Size = 512;

    /// The most strokes for a length, against the usual number.
    static constexpr int MostDensity = 4;

    /// Draws the strokes and makes the textures. GL.
    /// @param loader not owned; it may die first.
    /// @param density how many times the strokes come in a texture, along each edge; as many times
    ///        as large it becomes. Taken into 1 to MostDensity; 1 suits a house in metres.
    explicit HatchTextures(TextureLoader& loader, int density = 1);
    HatchTextures(const HatchTextures&) = delete;
    HatchTextures& operator=(const HatchTextures&) = delete;

    /// Releases the textures. GL.
    ~HatchTextures();

    /// GL name; 0 is the lightest, Tones - 1 the densest. 0 if the loader failed.
    unsigned int GetTexture(int tone) const { return m_textures[static_cast<std::size_t>(tone)]; }

    /// How much ink lies on each pixel of a tone, 0 to 255, row by row. Not GL.
    static std::vector<unsigned char> DrawTone(int tone);

private:
    TextureLoaderPtr m_loader;
    std::array<unsigned int, Tones> m_textures{};
};

} // namespace OV::Host
