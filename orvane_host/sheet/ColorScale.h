#pragma once

#include "orvane/math/Color.h"

#include <memory>
#include <string>
#include <vector>

namespace OV
{

class Scene2D;
class Sprite;
class Text;

} // namespace OV

namespace OV::Host
{

/// What a colour scale says.
struct ColorScaleOptions
{
    /// Over the scale. In the encoding of the C locale in force.
    std::string title;
    double most = 1.0; ///< at its right end; 0 is at the left one
    /// Behind the last number, such as "h"; may be empty.
    std::string unit;

    std::string font = "DejaVu Sans";
    Color ink{0.0f, 0.0f, 0.0f};
    Color paper{1.0f, 1.0f, 1.0f, 0.85f};
};

/// The scale of a coloured map, in the upper left corner of a layer: the colours of scalar materials
/// (SimMaterial) from 0 to the most, with numbers under it.
///
/// When the layer goes first the scale is empty, and there must be no further Layout.
class ColorScale
{
public:
    /// Shows nothing before the first Layout.
    ColorScale(Scene2D& layer, ColorScaleOptions options);
    ~ColorScale();

    ColorScale(const ColorScale&) = delete;
    ColorScale& operator=(const ColorScale&) = delete;

    /// Makes the parts for a picture of this size in pixels, in place of earlier ones. GL, if the scale
    /// was drawn.
    void Layout(int width, int height);

    /// What scalar materials show a number by: blue, cyan, green, yellow, red.
    /// @param value taken into 0 to 1.
    static Color ColorOf(float value);

private:
    void AddBox(int x, int y, int width, int height, const Color& color, float z);
    void AddText(const std::string& text, int fontSize, int x, int y, bool isCentered);

    Scene2D& m_layer;
    ColorScaleOptions m_options;
    std::vector<std::unique_ptr<Sprite>> m_sprites;
    std::vector<std::unique_ptr<Text>> m_texts;
};

} // namespace OV::Host
