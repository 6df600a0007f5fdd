#include "orvane_host/sheet/Notes.h"

#include "orvane_host/sheet/Sheet.h"
#include "orvane/math/Transform.h"
#include "orvane/overlay/Material2D.h"
#include "orvane/overlay/Rect.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/overlay/Shape2DNode.h"
#include "orvane/overlay/Sprite.h"
#include "orvane/overlay/Text.h"
#include "orvane/scene/CameraNode.h"

#include <glm/common.hpp>
#include <glm/geometric.hpp>
#include <glm/trigonometric.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <optional>
#include <utility>

namespace OV::Host
{

namespace
{

const char* const Font = "DejaVu Sans";
const Color Ink(0.10f, 0.12f, 0.15f);
const Color Paper(1.0f, 1.0f, 1.0f, 0.9f);

// Of the size of letters.
constexpr double TickShare = 0.45;
constexpr double DotShare = 0.22;
constexpr double LeaderShare = 2.0;
constexpr int ArcSteps = 24;
/// Of a pixel, in which the rims of what slants pass over into the picture.
constexpr int RimSteps = 4;
/// Pixels from end to end, by which what slants less counts as upright or level.
constexpr double LeastSlant = 0.01;
/// Of the shorter leg.
constexpr double ArcShare = 0.35;
/// Of the distance to the target: what is nearer to the eye is left out.
constexpr double NearShare = 1e-4;
/// No picture is as large; farther away lines would lose their direction in floats.
constexpr double FarPixels = 1e5;

/// Decimals that make a millimetre in units that plans are drawn in.
constexpr std::pair<const char*, int> MillimetreDecimals[] = {{"m", 3}, {"cm", 1}, {"mm", 0}};
constexpr int OtherDigits = 5;
constexpr int LeastDigits = 4;
constexpr int AngleDecimals = 2;
/// Beyond these a number is written with an exponent.
constexpr int MostDecimals = 9;
constexpr double LargestPlain = 1e12;

/// Without zeros at the end.
std::string RoundedText(double value, int decimals)
{
    const bool isPlain = decimals <= MostDecimals && std::abs(value) < LargestPlain;
    char text[32];
    const auto end = (isPlain ? std::to_chars(std::begin(text), std::end(text), value, std::chars_format::fixed,
                                              std::max(decimals, 0))
                              : std::to_chars(std::begin(text), std::end(text), value, std::chars_format::general,
                                              LeastDigits)).ptr;
    std::string number(text, end);
    if (isPlain && number.find('.') != std::string::npos)
    {
        number.erase(number.find_last_not_of('0') + 1);
        if (number.back() == '.')
        {
            number.pop_back();
        }
    }
    return number;
}

glm::dvec3 ToGlm(const QGM::Point3d& point)
{
    return {point.x, point.y, point.z};
}

/// Paper beside the letters of a caption.
int PadOf(int letters)
{
    return std::max(2, letters / 4);
}

/// Where a caption about a middle begins that stays in the picture; one that is too long begins in it.
int BeginOf(float middle, int length, int pad, int picture)
{
    // Letters are sharp on whole pixels alone.
    const auto begin = static_cast<int>(std::round(middle - static_cast<float>(length) / 2.0f));
    return std::max(std::min(begin, picture - pad - length), pad);
}

/// Where the camera sees points of the world, in pixels from the lower left corner.
class Projection
{
public:
    Projection(const CameraNode& camera, int width, int height) :
        m_middle(width / 2.0, height / 2.0), m_isFlat(camera.GetProjection() != CameraNode::Perspective)
    {
        QGM::Transf3d inverse = camera.GetGlobal().GetTransf3d().invert();
        std::memcpy(m_toCamera, inverse.m, sizeof(m_toCamera));
        const double distance = camera.GetDistanceToTarget();
        const double unit = Sheet::PixelsPerUnit(camera, width, height);
        m_scale = m_isFlat ? unit : unit * distance;
        m_near = distance * NearShare;
    }

    glm::dvec3 ToCamera(const glm::dvec3& point) const
    {
        glm::dvec3 seen(0.0);
        for (int row = 0; row < 3; ++row)
        {
            const double* const m = m_toCamera[row];
            seen[row] = m[0] * point.x + m[1] * point.y + m[2] * point.z + m[3];
        }
        return seen;
    }

    bool IsBefore(const glm::dvec3& seen) const { return m_isFlat || -seen.z >= m_near; }

    /// Of a point before the eye.
    glm::dvec2 ToPixel(const glm::dvec3& seen) const
    {
        const double share = m_isFlat ? m_scale : m_scale / -seen.z;
        return m_middle + glm::dvec2(seen) * share;
    }

    std::optional<glm::dvec2> PixelOf(const glm::dvec3& point) const
    {
        const glm::dvec3 seen = ToCamera(point);
        return IsBefore(seen) ? std::optional<glm::dvec2>(ToPixel(seen)) : std::nullopt;
    }

    /// What of a line is before the eye and no farther away than lines can be drawn.
    std::optional<std::pair<glm::dvec2, glm::dvec2>> LineOf(const glm::dvec3& from, const glm::dvec3& to) const
    {
        glm::dvec3 begin = ToCamera(from);
        glm::dvec3 end = ToCamera(to);
        if (!IsBefore(begin) && !IsBefore(end))
        {
            return std::nullopt;
        }
        const glm::dvec3 along = end - begin;
        glm::dvec3& behind = IsBefore(begin) ? end : begin;
        if (!IsBefore(behind))
        {
            behind = begin + along * ((-m_near - begin.z) / along.z);
            behind.z = -m_near;
        }
        const glm::dvec2 low = m_middle - FarPixels;
        const glm::dvec2 high = m_middle + FarPixels;
        return Cut(ToPixel(begin), ToPixel(end), low, high);
    }

    /// What of a line lies in a rectangle.
    static std::optional<std::pair<glm::dvec2, glm::dvec2>> Cut(const glm::dvec2& from, const glm::dvec2& to,
                                                                const glm::dvec2& low, const glm::dvec2& high)
    {
        const glm::dvec2 along = to - from;
        double begin = 0.0;
        double end = 1.0;
        for (int axis = 0; axis < 2; ++axis)
        {
            if (along[axis] == 0.0)
            {
                end = from[axis] >= low[axis] && from[axis] <= high[axis] ? end : -1.0;
                continue;
            }
            const double one = (low[axis] - from[axis]) / along[axis];
            const double other = (high[axis] - from[axis]) / along[axis];
            begin = std::max(begin, std::min(one, other));
            end = std::min(end, std::max(one, other));
        }
        if (!(begin <= end))
        {
            return std::nullopt;
        }
        return std::pair(from + along * begin, from + along * end);
    }

private:
    double m_toCamera[4][4];
    glm::dvec2 m_middle;
    bool m_isFlat;
    double m_scale = 0.0; ///< pixels for each unit at a distance of 1, or anywhere where it is flat
    double m_near = 0.0;
};

} // namespace

double Dimension::Value() const
{
    if (points.size() == 2)
    {
        return glm::distance(ToGlm(points[0]), ToGlm(points[1]));
    }
    if (points.size() != 3)
    {
        return 0.0;
    }
    const glm::dvec3 a = ToGlm(points[0]) - ToGlm(points[1]);
    const glm::dvec3 b = ToGlm(points[2]) - ToGlm(points[1]);
    return glm::degrees(std::atan2(glm::length(glm::cross(a, b)), glm::dot(a, b)));
}

std::string Dimension::Text(const std::string& unit) const
{
    if (points.size() == 3)
    {
        return RoundedText(Value(), AngleDecimals) + "\u00B0";
    }
    const double value = Value();
    const int leading = value > 0.0 && std::isfinite(value) ? static_cast<int>(std::floor(std::log10(value))) : 0;
    const auto named = std::find_if(std::begin(MillimetreDecimals), std::end(MillimetreDecimals),
                                    [&](const auto& entry) { return unit == entry.first; });
    const int wanted = named != std::end(MillimetreDecimals) ? named->second : OtherDigits - 1 - leading;
    return RoundedText(value, std::max(wanted, LeastDigits - 1 - leading)) + (unit.empty() ? "" : " " + unit);
}

/// Lists what is drawn in a picture.
class Notes::Drawing
{
public:
    Drawing(Notes& notes, const CameraNode& camera, int width, int height) :
        m_notes(notes), m_projection(camera, width, height), m_size(width, height),
        m_letters(Sheet::LetterSize(width, height))
    {
    }

    void AddDistance(const glm::dvec3& from, const glm::dvec3& to, const std::string& text)
    {
        const auto line = AddLine(from, to);
        if (!line)
        {
            return;
        }
        for (const glm::dvec3& end : {from, to})
        {
            AddTick(end, line->second - line->first);
        }
        if (const auto inside = Projection::Cut(line->first, line->second, {0.0, 0.0}, m_size))
        {
            AddCaption((inside->first + inside->second) / 2.0, text);
        }
    }

    void AddAngle(const glm::dvec3& first, const glm::dvec3& corner, const glm::dvec3& last, const std::string& text)
    {
        AddLine(first, corner);
        AddLine(corner, last);
        const glm::dvec3 a = first - corner;
        const glm::dvec3 b = last - corner;
        const double reach = std::min(glm::length(a), glm::length(b)) * ArcShare;
        const glm::dvec3 across = b * glm::dot(a, a) - a * glm::dot(a, b);
        const double angle = std::atan2(glm::length(glm::cross(a, b)), glm::dot(a, b));
        const auto at = [&](double turned)
        { return corner + (glm::normalize(a) * std::cos(turned) + glm::normalize(across) * std::sin(turned)) * reach; };
        // Legs in one line span no plane for an arc to lie in.
        const bool hasArc = reach > 0.0 && glm::length(across) > 1e-12 * glm::dot(a, a) * glm::length(b);
        for (int step = 0; hasArc && step < ArcSteps; ++step)
        {
            AddLine(at(angle * step / ArcSteps), at(angle * (step + 1) / ArcSteps));
        }
        // In the middle of the arc, or as near to it as there is picture.
        for (int step = 0; step <= (hasArc ? ArcSteps : 0); ++step)
        {
            const double aside = (step % 2 == 0 ? 1.0 : -1.0) * ((step + 1) / 2) / ArcSteps;
            const auto pixel = m_projection.PixelOf(hasArc ? at(angle * (0.5 + aside)) : corner);
            if (pixel && IsInside(*pixel))
            {
                AddCaption(*pixel, text);
                return;
            }
        }
    }

    void AddLabel(const glm::dvec3& place, const std::string& text)
    {
        const auto pixel = m_projection.PixelOf(place);
        if (!pixel || !IsInside(*pixel))
        {
            return;
        }
        const double reach = LeaderShare * m_letters;
        // Where there is no room above it, below.
        const bool isHigh = pixel->y + reach + m_letters > m_size.y;
        const glm::dvec2 beside = *pixel + glm::dvec2(0.0, isHigh ? -reach : reach);
        AddStroke(*pixel, beside, Width());
        const glm::dvec2 half(DotShare * m_letters, 0.0);
        AddStroke(*pixel - half, *pixel + half, 2.0 * half.x);
        AddCaption(beside, text);
    }

private:
    double Width() const { return std::max(1.0, m_letters / 11.0); }
    double Rim() const { return std::max(1.0, m_letters / 12.0); }

    bool IsInside(const glm::dvec2& pixel) const
    {
        return pixel.x >= 0.0 && pixel.y >= 0.0 && pixel.x <= m_size.x && pixel.y <= m_size.y;
    }

    std::optional<std::pair<glm::dvec2, glm::dvec2>> AddLine(const glm::dvec3& from, const glm::dvec3& to)
    {
        const auto line = m_projection.LineOf(from, to);
        if (line)
        {
            AddStroke(line->first, line->second, Width());
        }
        return line;
    }

    /// A short stroke through the end of a dimension line, slanting as on drawings.
    void AddTick(const glm::dvec3& end, const glm::dvec2& along)
    {
        const auto pixel = m_projection.PixelOf(end);
        if (!pixel || !(glm::length(along) > 0.0) || !IsInside(*pixel))
        {
            return;
        }
        const glm::dvec2 ahead = glm::normalize(along);
        const glm::dvec2 slanting = (ahead + glm::dvec2(-ahead.y, ahead.x)) * (TickShare * m_letters);
        AddStroke(*pixel - slanting, *pixel + slanting, 1.6 * Width());
    }

    /// A line of ink on a rim of paper.
    void AddStroke(const glm::dvec2& from, const glm::dvec2& to, double width)
    {
        const double length = glm::distance(from, to);
        if (!(length > 0.0))
        {
            return;
        }
        const glm::dvec2 ahead = (to - from) / length;
        AddArea(from - ahead * Rim(), to + ahead * Rim(), width + 2.0 * Rim(), true);
        const glm::dvec2 slant = glm::abs(to - from);
        if (std::min(slant.x, slant.y) < LeastSlant)
        {
            AddArea(from, to, width, false);
            return;
        }
        // Nothing smooths a layer: each of the areas over each other covers its part of what is left.
        for (int step = 0; step < RimSteps; ++step)
        {
            const double wider = 1.0 - (2 * step + 1.0) / RimSteps;
            const float opacity = 1.0f / static_cast<float>(RimSteps - step);
            AddArea(from, to, width + wider, false, opacity);
        }
    }

    void AddArea(const glm::dvec2& from, const glm::dvec2& to, double width, bool isPaper, float opacity = 1.0f)
    {
        const glm::dvec2 ahead = glm::normalize(to - from);
        const glm::dvec2 side = glm::dvec2(-ahead.y, ahead.x) * (width / 2.0);
        const std::array<glm::dvec2, 4> corners = {from - side, to - side, to + side, from + side};
        Area area{};
        for (std::size_t i = 0; i < corners.size(); ++i)
        {
            area.corners[i][0] = static_cast<float>(corners[i].x);
            area.corners[i][1] = static_cast<float>(corners[i].y);
        }
        area.isPaper = isPaper;
        area.opacity = opacity;
        m_notes.m_areas.push_back(area);
    }

    void AddCaption(const glm::dvec2& middle, const std::string& text)
    {
        m_notes.m_captions.push_back(
            {text, m_letters, static_cast<float>(middle.x), static_cast<float>(middle.y)});
    }

    Notes& m_notes;
    Projection m_projection;
    glm::dvec2 m_size;
    int m_letters;
};

Notes::Notes(Scene2D& layer) : m_layer(&layer)
{
}

Notes::~Notes() = default;

void Notes::SetContent(Content content)
{
    m_content = std::move(content);
    m_content.numbers.resize(m_content.dimensions.size());
}

void Notes::MoveLabel(std::size_t index, const QGM::Point3d& place)
{
    m_content.labels[index].place = place;
}

void Notes::Layout(const CameraNode& camera, int width, int height)
{
    m_areas.clear();
    m_captions.clear();
    Drawing drawing(*this, camera, width, height);
    for (std::size_t i = 0; i < m_content.dimensions.size(); ++i)
    {
        const std::vector<QGM::Point3d>& points = m_content.dimensions[i].points;
        const std::string& number = m_content.numbers[i];
        if (points.size() == 2)
        {
            drawing.AddDistance(ToGlm(points[0]), ToGlm(points[1]), number);
        }
        else if (points.size() == 3)
        {
            drawing.AddAngle(ToGlm(points[0]), ToGlm(points[1]), ToGlm(points[2]), number);
        }
    }
    for (const Label& label : m_content.labels)
    {
        drawing.AddLabel(ToGlm(label.place), label.text);
    }
    const bool isSame =
        std::equal(m_areas.begin(), m_areas.end(), m_shownAreas.begin(), m_shownAreas.end(),
                   [](const Area& one, const Area& other)
                   {
                       return one.isPaper == other.isPaper && one.opacity == other.opacity
                           && std::equal(&one.corners[0][0], &one.corners[0][0] + 8, &other.corners[0][0]);
                   })
        && std::equal(m_captions.begin(), m_captions.end(), m_shownCaptions.begin(), m_shownCaptions.end(),
                      [](const Caption& one, const Caption& other)
                      { return one.text == other.text && one.size == other.size && one.x == other.x && one.y == other.y; });
    if (!isSame || width != m_shownWidth || height != m_shownHeight)
    {
        Show(width, height);
    }
}

void Notes::Show(int width, int height)
{
    // All of it lies behind a sheet, and each caption before the earlier ones with its paper.
    constexpr float between = 0.5f;
    float z = -1.0f - between * static_cast<float>(m_captions.size());
    const auto placeAt = [](Node& node, float x, float y, float depth)
    {
        Transform place;
        place.SetPosition(Vector(x, y, depth));
        node.SetLocal(place);
    };
    m_sprites.resize(std::min(m_sprites.size(), m_areas.size()));
    for (std::size_t i = 0; i < m_areas.size(); ++i)
    {
        if (i == m_sprites.size())
        {
            m_sprites.push_back(std::make_unique<Sprite>(m_layer, new Rect(m_layer, 1.0f, 1.0f, false)));
        }
        const auto& c = m_areas[i].corners;
        static_cast<Rect*>(m_sprites[i]->GetShape())
            ->SetCorners(c[0][0], c[0][1], 0.0f, c[1][0], c[1][1], 0.0f, c[2][0], c[2][1], 0.0f, c[3][0], c[3][1], 0.0f);
        m_sprites[i]->SetColor(m_areas[i].isPaper ? Paper : Color(Ink.r, Ink.g, Ink.b, m_areas[i].opacity));
        placeAt(*m_sprites[i]->GetNode(), 0.0f, 0.0f, m_areas[i].isPaper ? z - 2.0f * between : z - between);
    }
    m_texts.resize(std::min(m_texts.size(), m_captions.size()));
    for (std::size_t i = 0; i < m_captions.size(); ++i)
    {
        const Caption& caption = m_captions[i];
        const bool isKept = i < m_texts.size() && i < m_shownCaptions.size()
            && m_shownCaptions[i].text == caption.text && m_shownCaptions[i].size == caption.size;
        if (!isKept)
        {
            auto text = std::make_unique<Text>(Font, caption.size, caption.text, m_layer, false, false, 0);
            const int pad = PadOf(caption.size);
            text->SetColor(Ink);
            text->AddBackdrop(Paper, text->GetRight() - text->GetLeft() + 2 * pad,
                              text->GetTop() - text->GetBottom() + pad, -pad, -pad / 2);
            m_texts.resize(std::max(m_texts.size(), i + 1));
            m_texts[i] = std::move(text);
        }
        const Text& text = *m_texts[i];
        const int pad = PadOf(caption.size);
        const int left = BeginOf(caption.x, text.GetRight() - text.GetLeft(), pad, width);
        const int bottom = BeginOf(caption.y, text.GetTop() - text.GetBottom(), pad, height);
        placeAt(*m_texts[i]->GetInstance(0), static_cast<float>(left), static_cast<float>(bottom),
                z + between * static_cast<float>(i));
    }
    m_shownAreas.swap(m_areas);
    m_shownCaptions.swap(m_captions);
    m_shownWidth = width;
    m_shownHeight = height;
}

} // namespace OV::Host
