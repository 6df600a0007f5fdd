#pragma once

#include "orvane/overlay/Rect.h"
#include "orvane/overlay/Sprite.h"
#include "orvane/overlay/Text.h"

#include "orvane/math/TextureCoordinate.h"
#include "orvane/math/Vector.h"
#include "orvane/overlay/Shape2DNode.h"
#include "orvane/platform/ESTextureLoader.h"

#include <string>
#include <vector>

namespace OV::Test
{

/// A rectangle whose fields lie open.
struct OpenRect : Rect
{
    using Rect::flipV;
    using Rect::fullU;
    using Rect::fullV;
    using Rect::maxX;
    using Rect::maxY;
    using Rect::minX;
    using Rect::minY;
    using Rect::pickBottom;
    using Rect::pickLeft;
    using Rect::pickPadding;
    using Rect::pickRight;
    using Rect::pickTop;
    using Rect::Rect;
    using Rect::uvPristine;
};

/// Corners of a shape, x and y one after the other.
inline std::vector<float> CornersOf(const Mesh& shape)
{
    std::vector<float> corners;
    for (const Vector& p : shape.GetPositionBuffer())
    {
        corners.push_back(p.x);
        corners.push_back(p.y);
    }
    return corners;
}

/// Texture coordinates of a shape, u and v one after the other.
inline std::vector<float> TextureOf(const Mesh& shape)
{
    std::vector<float> coordinates;
    for (const TextureCoordinate& t : shape.GetTextureBuffer())
    {
        coordinates.push_back(t.u);
        coordinates.push_back(t.v);
    }
    return coordinates;
}

inline bool IsHidden(const MeshNode& node)
{
    return (node.GetFlags() & NodeFlagHidden) != 0;
}

inline bool IsLeftOutOfHitTests(const MeshNode& node)
{
    return (node.GetFlags() & NodeFlagNoHitTest) != 0;
}

inline void Place(Node& node, float x, float y, float z = 0.0f)
{
    Transform place;
    place.SetPosition(Vector(x, y, z));
    node.SetLocal(place);
}

/// Render data that tell when they go.
class CountedData : public Object
{
public:
    explicit CountedData(int& alive) : m_alive(alive) { ++m_alive; }
    ~CountedData() override { --m_alive; }

private:
    int& m_alive;
};

/// Measures texts without a font as long as it lives: half the font size for every character,
/// one font size high, in a texture of the text's size times a factor.
class PlainMeasure
{
public:
    struct Call
    {
        std::string font;
        int fontSize;
        std::string text;
        int maxWidth;
    };

    PlainMeasure()
    {
        s_calls.clear();
        s_textureFactor = 1;
        Text::AddSizeCallback(&Measure);
    }

    PlainMeasure(const PlainMeasure&) = delete;
    PlainMeasure& operator=(const PlainMeasure&) = delete;

    ~PlainMeasure() { Text::AddSizeCallback(&Platform::Linux::ESTextureLoader::TextSize); }

    std::vector<Call>& Calls() { return s_calls; }
    void SetTextureFactor(int factor) { s_textureFactor = factor; }

private:
    static void Measure(const std::string& font, int fontSize, const std::string& text, int maxWidth, int& width,
                        int& height, int& textureWidth, int& textureHeight)
    {
        s_calls.push_back({font, fontSize, text, maxWidth});
        width = static_cast<int>(text.size()) * fontSize / 2;
        height = fontSize;
        textureWidth = width * s_textureFactor;
        textureHeight = height * s_textureFactor;
    }

    inline static std::vector<Call> s_calls;
    inline static int s_textureFactor = 1;
};

} // namespace OV::Test
