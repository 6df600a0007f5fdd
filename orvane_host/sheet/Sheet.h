#pragma once

#include "orvane/math/Color.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace OV
{

class CameraNode;
class Scene2D;
class Sprite;
class Text;
class Vector;

} // namespace OV

namespace OV::Host
{

/// What stands on a sheet, and in what colours.
struct SheetOptions
{
    /// Lower right corner, cut with an ellipsis where there is no room; empty for none. In the
    /// encoding of the C locale in force.
    std::string title;
    /// Lower left corner.
    bool scaleBar = false;
    /// Behind the last number of the scale bar, such as "m"; may be empty.
    std::string unit;
    /// Upper right corner: where north is in the picture, in degrees clockwise from its top.
    std::optional<float> north;

    std::string font = "DejaVu Sans";
    Color ink{0.0f, 0.0f, 0.0f};
    /// Behind each part, so that it is legible on every picture.
    Color paper{1.0f, 1.0f, 1.0f, 0.85f};
};

/// A title block, a scale bar and a north arrow in a layer.
///
/// The scale bar is right for what lies as far away as the camera's target, and everywhere
/// without perspective. All parts stand on whole pixels. When the layer goes first the sheet is
/// empty, and there must be no further Layout.
class Sheet
{
public:
    /// Shows nothing before the first Layout.
    Sheet(Scene2D& layer, SheetOptions options);
    Sheet(const Sheet&) = delete;
    Sheet& operator=(const Sheet&) = delete;
    ~Sheet();

    /// Makes the parts for a picture of this size in pixels. Cheap when neither the size nor the
    /// scale has changed since; else what was there is replaced. GL, if the sheet was drawn.
    /// @param camera its global must be up to date.
    void Layout(const CameraNode& camera, int width, int height);

    /// Of the scale bar, in units of the model and in pixels, as of the last Layout; 0 where none
    /// is shown.
    double GetBarLength() const { return m_barLength; }
    int GetBarPixels() const { return m_barPixels; }

    /// Pixels of the picture that a unit of the model takes at the camera's target; 0 where that
    /// is no finite number.
    static double PixelsPerUnit(const CameraNode& camera, int width, int height);

    /// Em of the letters in a picture of this size, in pixels.
    static int LetterSize(int width, int height);

    /// Side of the square in the upper right corner that a north arrow takes, with its margin, in
    /// pixels.
    static int NorthRoom(int width, int height);

    /// The largest length of 1, 2 or 5 times a power of ten that is not above a limit; 0 for a
    /// limit that is not above 0 or not finite.
    static double RoundLength(double limit);

private:
    /// What all parts are measured by, in pixels.
    struct Measures
    {
        int font;   ///< of labels
        int margin; ///< about the sheet
        int pad;    ///< about the content of a panel
        int line;   ///< width of a thin line
    };

    static Measures MeasuresFor(int width, int height);
    void AddScaleBar(const Measures& measures);
    void AddBar(const Measures& measures, int left, int bottom, int segments);
    void AddNorthArrow(const Measures& measures);
    void AddTitle(const Measures& measures);
    void AddBox(int x, int y, int width, int height, const Color& color, float z);
    void AddTriangle(const Vector& a, const Vector& b, const Vector& c, const Color& color);
    void AddLabel(const std::string& text, int fontSize, int x, int y, bool centerY);
    int WidthOf(const std::string& text, int fontSize) const;

    /// Width and height.
    std::pair<int, int> SizeOf(const std::string& text, int fontSize) const;

    Scene2D* m_layer;
    SheetOptions m_options;
    std::vector<std::unique_ptr<Sprite>> m_sprites;
    std::vector<std::unique_ptr<Text>> m_texts;
    int m_width = 0;
    int m_height = 0;
    double m_pixelsPerUnit = -1.0;
    double m_barLength = 0.0;
    int m_barPixels = 0;
    int m_panelRight = 0; ///< of the panel behind the scale bar; 0 without one
    int m_panelTop = 0;
};

} // namespace OV::Host
