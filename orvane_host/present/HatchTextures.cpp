#include "orvane_host/present/HatchTextures.h"

#include "orvane/imaging/TextureLoader.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace OV::Host
{

namespace
{

constexpr double Pi = 3.14159265358979323846;

/// One layer of parallel strokes. Directions are those of whole steps over the picture, so that
/// the rows of strokes close over its edges.
struct Layer
{
    int stepX;
    int stepY;
    /// Rows of strokes from edge to edge.
    int rows;
    /// Strokes in a row.
    int strokes;
};

/// What each tone adds to the one before it.
constexpr Layer kLayers[HatchTextures::Tones] = {
    {1, 1, 11, 3},
    {1, 1, 17, 3},
    {1, -1, 22, 3},
    {1, 2, 30, 4},
};

/// Numbers that are the same everywhere.
class Dice
{
public:
    explicit Dice(std::uint32_t seed) : m_state(seed) {}

    /// From low up to high.
    double Between(double low, double high)
    {
        m_state = m_state * 1664525u + 1013904223u;
        return low + (high - low) * ((m_state >> 8) / 16777216.0);
    }

private:
    std::uint32_t m_state;
};

/// A stroke in pixels, and how thick and dark it is in its middle.
struct Stroke
{
    double x;
    double y;
    double directionX;
    double directionY;
    double length;
    double bend;
    double halfWidth;
    double ink;
};

/// The ink so far from the middle of a stroke, along it from 0 to 1: thinner to its ends, as a
/// pen leaves the paper.
double InkAt(const Stroke& stroke, double along, double aside)
{
    const double taper = std::min(1.0, 6.0 * std::min(along, 1.0 - along) + 0.25);
    const double rim = stroke.halfWidth * taper - std::abs(aside) + 0.5;
    return stroke.ink * std::clamp(rim, 0.0, 1.0);
}

/// Draws over the edges of the picture and on from the other side. Ink adds nothing to ink.
void Draw(std::vector<unsigned char>& picture, const Stroke& stroke)
{
    constexpr int size = HatchTextures::Size;
    const int reach = static_cast<int>(stroke.halfWidth) + 2;
    const int steps = static_cast<int>(stroke.length * 2.0);
    for (int step = 0; step <= steps; ++step)
    {
        const double along = static_cast<double>(step) / steps;
        const double bow = stroke.bend * std::sin(along * Pi);
        const double x = stroke.x + stroke.directionX * stroke.length * along - stroke.directionY * bow;
        const double y = stroke.y + stroke.directionY * stroke.length * along + stroke.directionX * bow;
        for (int dy = -reach; dy <= reach; ++dy)
        {
            for (int dx = -reach; dx <= reach; ++dx)
            {
                const double pixelX = std::floor(x) + dx;
                const double pixelY = std::floor(y) + dy;
                const double aside = (pixelX + 0.5 - x) * -stroke.directionY + (pixelY + 0.5 - y) * stroke.directionX;
                const double ahead = (pixelX + 0.5 - x) * stroke.directionX + (pixelY + 0.5 - y) * stroke.directionY;
                if (std::abs(ahead) > 0.75)
                {
                    continue;
                }
                const int column = static_cast<int>(pixelX) & (size - 1);
                const int row = static_cast<int>(pixelY) & (size - 1);
                unsigned char& pixel = picture[static_cast<std::size_t>(row * size + column)];
                const double ink = 255.0 * InkAt(stroke, along, aside);
                pixel = std::max(pixel, static_cast<unsigned char>(std::lround(ink)));
            }
        }
    }
}

void DrawLayer(std::vector<unsigned char>& picture, const Layer& layer, Dice& dice)
{
    constexpr double size = HatchTextures::Size;
    const double steps = std::hypot(layer.stepX, layer.stepY);
    const double directionX = layer.stepX / steps;
    const double directionY = layer.stepY / steps;
    // One row runs over the picture until it meets itself.
    const double rowLength = size * steps;
    // Rows begin evenly along the edge that they cross less often.
    for (int row = 0; row < layer.rows; ++row)
    {
        const double start = size * (row + dice.Between(-0.3, 0.3)) / layer.rows / std::abs(layer.stepX);
        const double offset = dice.Between(0.0, rowLength);
        for (int i = 0; i < layer.strokes; ++i)
        {
            const double share = rowLength / layer.strokes;
            const double at = offset + share * (i + dice.Between(-0.1, 0.1));
            Stroke stroke{};
            const double wobble = dice.Between(-0.02, 0.02);
            stroke.directionX = directionX * std::cos(wobble) - directionY * std::sin(wobble);
            stroke.directionY = directionX * std::sin(wobble) + directionY * std::cos(wobble);
            stroke.x = directionX * at;
            stroke.y = start + directionY * at + dice.Between(-1.5, 1.5);
            stroke.length = share * dice.Between(0.85, 1.1);
            stroke.bend = dice.Between(-2.0, 2.0);
            stroke.halfWidth = dice.Between(0.9, 1.5);
            stroke.ink = dice.Between(0.7, 1.0);
            Draw(picture, stroke);
        }
    }
}

/// Filters strokes with four readings a look-up. There are 24 look-ups a pixel, and the software
/// renderer takes ten times as long for each that is anisotropic, whatever the degree. Sharper by
/// half a level instead, a slanted surface keeps the strokes that run across its slant.
void FilterPlainly(unsigned int texture)
{
    GLint bound = 0;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &bound);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_NEAREST);
    glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_LOD_BIAS, -0.5f);
    const auto* const names = reinterpret_cast<const char*>(glGetString(GL_EXTENSIONS));
    if (names && std::strstr(names, "GL_EXT_texture_filter_anisotropic"))
    {
        glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY_EXT, 1.0f);
    }
    glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(bound));
}

} // namespace

HatchTextures::HatchTextures(TextureLoader& loader, int density) : m_loader(&loader)
{
    const int edge = Size * std::clamp(density, 1, MostDensity);
    // The shader reads the strokes from alpha.
    std::vector<unsigned char> pixels(static_cast<std::size_t>(edge) * edge * 4, 0);
    for (int tone = 0; tone < Tones; ++tone)
    {
        const std::vector<unsigned char> ink = DrawTone(tone);
        for (std::size_t i = 0; i < pixels.size() / 4; ++i)
        {
            const std::size_t row = i / edge % Size;
            pixels[4 * i + 3] = ink[row * Size + i % Size];
        }
        float uScale = 1.0f;
        float vScale = 1.0f;
        bool hasAlpha = true;
        unsigned int& texture = m_textures[static_cast<std::size_t>(tone)];
        texture = loader.CreateTexture(pixels.data(), edge, edge, uScale, vScale, hasAlpha, false);
        if (texture != 0)
        {
            FilterPlainly(texture);
        }
    }
}

HatchTextures::~HatchTextures()
{
    for (const unsigned int texture : m_textures)
    {
        if (texture != 0)
        {
            m_loader.Release(texture);
        }
    }
}

std::vector<unsigned char> HatchTextures::DrawTone(int tone)
{
    std::vector<unsigned char> picture(static_cast<std::size_t>(Size) * Size, 0);
    for (int layer = 0; layer <= std::min(tone, Tones - 1); ++layer)
    {
        // A seed of its own lets a layer be the same in every tone.
        Dice dice(0x9E3779B9u * (static_cast<std::uint32_t>(layer) + 1u));
        DrawLayer(picture, kLayers[layer], dice);
    }
    return picture;
}

} // namespace OV::Host
