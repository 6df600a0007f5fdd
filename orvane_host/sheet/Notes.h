#pragma once

#include "orvane/math/Color.h"
#include "orvane/math/Point3d.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace OV
{

class CameraNode;
class Scene2D;
class Sprite;
class Text;

} // namespace OV

namespace OV::Host
{

/// A distance between two points, or an angle of three about the second, in world space.
struct Dimension
{
    std::vector<QGM::Point3d> points;

    /// The distance in the units of the world, or the angle in degrees, 0 to 180; 0 for other numbers
    /// of points.
    double Value() const;

    /// The value as people read it: to the millimetre where the unit is "m", "cm" or "mm", else of five
    /// digits; what is small keeps four digits, and a hundredth of a degree is the least. UTF-8.
    /// @param unit behind a distance, such as "m"; may be empty.
    std::string Text(const std::string& unit) const;
};

/// A text at a point in world space.
struct Label
{
    QGM::Point3d place;
    std::string text; ///< in the encoding of the C locale in force
};

/// What stands on a picture where the model is: dimension lines with their numbers, and labels.
///
/// Lines and letters are as large as those of a Sheet, whatever the distance. What lies behind the
/// eye is left out, and a line that ends there is cut. Numbers and texts stay in the picture as far as
/// they have room, and those of places outside are left out. When the layer goes first the notes are
/// empty, and there must be no further Layout.
class Notes
{
public:
    struct Content
    {
        /// Others than of two or three points count as none.
        std::vector<Dimension> dimensions;
        /// One for each dimension, in the encoding of the C locale in force.
        std::vector<std::string> numbers;
        std::vector<Label> labels;

        bool IsEmpty() const { return dimensions.empty() && labels.empty(); }
    };

    /// Shows nothing before the first Layout.
    explicit Notes(Scene2D& layer);
    Notes(const Notes&) = delete;
    Notes& operator=(const Notes&) = delete;
    ~Notes();

    void SetContent(Content content);

    /// Puts a label of the content to another point.
    void MoveLabel(std::size_t index, const QGM::Point3d& place);

    /// Puts all in its place in a picture of this size in pixels. Leaves the layer alone where nothing
    /// moved. GL, if the notes were drawn.
    /// @param camera its global must be up to date.
    void Layout(const CameraNode& camera, int width, int height);

private:
    /// A flat area in pixels of the picture, from its lower left corner.
    struct Area
    {
        float corners[4][2];
        bool isPaper;  ///< behind all lines, of the colour of paper
        float opacity; ///< of ink
    };

    struct Caption
    {
        std::string text;
        int size; ///< of the letters
        float x;  ///< of its middle
        float y;
    };

    class Drawing;

    void Show(int width, int height);

    Scene2D* m_layer;
    Content m_content;
    std::vector<Area> m_areas;
    std::vector<Caption> m_captions;
    std::vector<Area> m_shownAreas;
    std::vector<Caption> m_shownCaptions;
    int m_shownWidth = 0;
    int m_shownHeight = 0;
    std::vector<std::unique_ptr<Sprite>> m_sprites;
    std::vector<std::unique_ptr<Text>> m_texts;
};

} // namespace OV::Host
