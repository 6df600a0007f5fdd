#include "orvane_host/sheet/Sheet.h"

#include "orvane/math/Transform.h"
#include "orvane/math/Vector.h"
#include "orvane/overlay/Material2D.h"
#include "orvane/overlay/Rect.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/overlay/Shape2DNode.h"
#include "orvane/overlay/Sprite.h"
#include "orvane/overlay/Text.h"
#include "orvane/scene/CameraNode.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>

namespace OV::Host
{

namespace
{

constexpr double Pi = 3.14159265358979323846;

// From the panels up; backdrops of texts lie a tenth below their text.
constexpr float PanelZ = 0.0f;
constexpr float FigureZ = 1.0f;
constexpr float FillZ = 2.0f;
constexpr float TextZ = 3.0f;

/// The scale bar takes at most this share of the picture's width.
constexpr double BarShare = 0.25;

/// A text with a wider picture is drawn smaller and stretched.
constexpr int WidestSharpText = 1024;

/// Side of the panel of the north arrow, in letters: a needle of four, and room for its letter.
constexpr int NorthLetters = 7;

int Round(double value)
{
    return static_cast<int>(std::lround(value));
}

Color Opaque(const Color& color)
{
    return Color(color.r, color.g, color.b, 1.0f);
}

Color Mix(const Color& a, const Color& b, float share)
{
    return Color(a.r + (b.r - a.r) * share, a.g + (b.g - a.g) * share, a.b + (b.b - a.b) * share, 1.0f);
}

/// The shortest form that tells the number, without an exponent as long as that is readable.
std::string NumberText(double number)
{
    char text[64];
    const bool plain = number == 0.0 || (number >= 1e-4 && number < 1e7);
    const auto end = std::to_chars(std::begin(text), std::end(text), number,
                                   plain ? std::chars_format::fixed : std::chars_format::scientific);
    return std::string(text, end.ptr);
}

void PlaceAt(Node& node, float x, float y, float z)
{
    Transform place;
    place.SetPosition(Vector(x, y, z));
    node.SetLocal(place);
}

/// 1, 2 or 5: what a round length begins with.
int LeadingDigit(double length)
{
    return static_cast<int>(std::lround(length / std::pow(10.0, std::floor(std::log10(length) + 1e-6))));
}

} // namespace

Sheet::Sheet(Scene2D& layer, SheetOptions options) : m_layer(&layer), m_options(std::move(options))
{
}

Sheet::~Sheet() = default;

double Sheet::PixelsPerUnit(const CameraNode& camera, int width, int height)
{
    // The angle belongs to the shorter side in perspective and to the height without.
    const int side = camera.GetProjection() == CameraNode::Perspective ? std::min(width, height) : height;
    const double reach = std::tan(static_cast<double>(camera.GetFOV())) * camera.GetDistanceToTarget();
    const double pixels = side / 2.0 / reach;
    return std::isfinite(pixels) && pixels > 0.0 ? pixels : 0.0;
}

double Sheet::RoundLength(double limit)
{
    if (!(limit > 0.0) || !std::isfinite(limit))
    {
        return 0.0;
    }
    // A limit that is such a length but for rounding is one.
    const double generous = limit * (1.0 + 1e-9);
    for (int exponent = static_cast<int>(std::floor(std::log10(limit))) + 1;; --exponent)
    {
        for (const double digit : {5.0, 2.0, 1.0})
        {
            // Divided, a power below 1 gives the number nearest to the decimal.
            const double length =
                exponent < 0 ? digit / std::pow(10.0, -exponent) : digit * std::pow(10.0, exponent);
            if (length <= generous)
            {
                return length;
            }
        }
    }
}

int Sheet::LetterSize(int width, int height)
{
    return std::clamp(Round(std::min(width, height) / 45.0), 12, 72);
}

int Sheet::NorthRoom(int width, int height)
{
    const Measures measures = MeasuresFor(width, height);
    return measures.margin + NorthLetters * measures.font;
}

Sheet::Measures Sheet::MeasuresFor(int width, int height)
{
    Measures measures;
    measures.font = LetterSize(width, height);
    measures.margin = std::max(4, measures.font);
    measures.pad = std::max(3, measures.font / 2);
    measures.line = std::max(1, Round(measures.font / 14.0));
    return measures;
}

void Sheet::Layout(const CameraNode& camera, int width, int height)
{
    const double pixelsPerUnit = PixelsPerUnit(camera, width, height);
    if (width == m_width && height == m_height && pixelsPerUnit == m_pixelsPerUnit)
    {
        return;
    }
    m_width = width;
    m_height = height;
    m_pixelsPerUnit = pixelsPerUnit;
    m_sprites.clear();
    m_texts.clear();
    m_barLength = 0.0;
    m_barPixels = m_panelRight = m_panelTop = 0;

    const Measures measures = MeasuresFor(width, height);
    if (m_options.scaleBar)
    {
        AddScaleBar(measures);
    }
    if (m_options.north)
    {
        AddNorthArrow(measures);
    }
    if (!m_options.title.empty())
    {
        AddTitle(measures);
    }
}

void Sheet::AddScaleBar(const Measures& measures)
{
    m_barLength = m_pixelsPerUnit > 0.0 ? RoundLength(m_width * BarShare / m_pixelsPerUnit) : 0.0;
    if (m_barLength == 0.0)
    {
        return;
    }
    m_barPixels = std::max(1, Round(m_barLength * m_pixelsPerUnit));
    const int lead = LeadingDigit(m_barLength);
    const std::string first = NumberText(0.0);
    const std::string middle = NumberText(m_barLength / 2.0);
    const std::string last = NumberText(m_barLength) + (m_options.unit.empty() ? "" : " " + m_options.unit);
    const int firstWidth = WidthOf(first, measures.font);
    const int middleWidth = WidthOf(middle, measures.font);
    const auto [lastWidth, labelHeight] = SizeOf(last, measures.font);

    const int barHeight = measures.font / 2;
    const int left = measures.margin + measures.pad + firstWidth / 2;
    const int bottom = measures.margin + measures.pad;
    const int labels = bottom + barHeight + measures.pad / 3;
    m_panelRight = left + m_barPixels + (lastWidth + 1) / 2 + measures.pad;
    m_panelTop = labels + labelHeight + measures.pad / 2;
    AddBox(measures.margin, measures.margin, m_panelRight - measures.margin, m_panelTop - measures.margin,
           m_options.paper, PanelZ);
    AddBar(measures, left, bottom, lead == 5 ? 5 : 4);
    AddLabel(first, measures.font, left, labels, false);
    AddLabel(last, measures.font, left + m_barPixels, labels, false);
    const int room = m_barPixels / 2 - std::max(firstWidth, lastWidth) / 2 - middleWidth / 2;
    if (lead != 5 && room > measures.font / 2)
    {
        AddLabel(middle, measures.font, left + Round(m_barLength / 2.0 * m_pixelsPerUnit), labels, false);
    }
}

void Sheet::AddBar(const Measures& measures, int left, int bottom, int segments)
{
    const int height = measures.font / 2;
    AddBox(left, bottom, m_barPixels, height, Opaque(m_options.ink), FigureZ);
    const auto edge = [&](int segment) { return left + Round(m_barLength * m_pixelsPerUnit * segment / segments); };
    for (int segment = 1; segment < segments; segment += 2)
    {
        const int begin = edge(segment);
        const int end = edge(segment + 1) - (segment + 1 == segments ? measures.line : 0);
        AddBox(begin, bottom + measures.line, end - begin, height - 2 * measures.line, Opaque(m_options.paper), FillZ);
    }
}

void Sheet::AddNorthArrow(const Measures& measures)
{
    const int side = NorthLetters * measures.font;
    const int left = m_width - measures.margin - side;
    const int bottom = m_height - measures.margin - side;
    AddBox(left, bottom, side, side, m_options.paper, PanelZ);

    const double angle = *m_options.north * Pi / 180.0;
    const auto x = static_cast<float>(std::sin(angle));
    const auto y = static_cast<float>(std::cos(angle));
    const auto middleX = static_cast<float>(left) + static_cast<float>(side) / 2.0f;
    const auto middleY = static_cast<float>(bottom) + static_cast<float>(side) / 2.0f;
    // Along the needle and to its right, in pixels from the middle of the panel. It makes room
    // for the letter at its tip.
    const auto at = [&](double along, double across) {
        const auto a = static_cast<float>((along - 0.6) * measures.font);
        const auto b = static_cast<float>(across * measures.font);
        return Vector(middleX + a * x + b * y, middleY + a * y - b * x, 0.0f);
    };
    const Vector tip = at(2.0, 0.0);
    const Vector notch = at(-1.1, 0.0);
    AddTriangle(tip, at(-2.0, -1.1), notch, Opaque(m_options.ink));
    AddTriangle(tip, notch, at(-2.0, 1.1), Mix(m_options.ink, m_options.paper, 0.6f));
    const Vector letter = at(3.0, 0.0);
    AddLabel("N", measures.font, Round(letter.x), Round(letter.y), true);
}

void Sheet::AddTitle(const Measures& measures)
{
    const int around = 2 * (measures.margin + measures.pad);
    int bottom = measures.margin;
    int room = m_width - around - (m_panelRight > 0 ? m_panelRight : 0);
    if (m_panelRight > 0 && room < m_width / 3)
    {
        bottom = m_panelTop + measures.margin / 2;
        room = m_width - around;
    }
    room = std::clamp(room, 1, WidestSharpText);
    int size = Round(measures.font * 1.4);
    while (size > measures.font && WidthOf(m_options.title, size) > room)
    {
        --size;
    }
    auto title = std::make_unique<Text>(m_options.font, size, m_options.title, m_layer, false, false, room);
    const int width = title->GetRight() - title->GetLeft();
    const int height = title->GetTop() - title->GetBottom();
    title->GetMaterial()->color = Opaque(m_options.ink);
    title->AddBackdrop(m_options.paper, width + 2 * measures.pad, height + measures.pad, -measures.pad,
                       -measures.pad / 2);
    PlaceAt(*title->GetInstance(0), static_cast<float>(m_width - measures.margin - measures.pad - width),
            static_cast<float>(bottom + measures.pad / 2), TextZ);
    m_texts.push_back(std::move(title));
}

void Sheet::AddBox(int x, int y, int width, int height, const Color& color, float z)
{
    auto* const rect = new Rect(m_layer, static_cast<float>(width), static_cast<float>(height), false);
    m_sprites.push_back(std::make_unique<Sprite>(m_layer, rect));
    m_sprites.back()->SetColor(color);
    PlaceAt(*m_sprites.back()->GetNode(), static_cast<float>(x), static_cast<float>(y), z);
}

void Sheet::AddTriangle(const Vector& a, const Vector& b, const Vector& c, const Color& color)
{
    auto* const rect = new Rect(m_layer, 1.0f, 1.0f, false);
    rect->SetCorners(a.x, a.y, a.z, b.x, b.y, b.z, c.x, c.y, c.z, a.x, a.y, a.z);
    m_sprites.push_back(std::make_unique<Sprite>(m_layer, rect));
    m_sprites.back()->SetColor(color);
    PlaceAt(*m_sprites.back()->GetNode(), 0.0f, 0.0f, FigureZ);
}

void Sheet::AddLabel(const std::string& text, int fontSize, int x, int y, bool centerY)
{
    m_texts.push_back(std::make_unique<Text>(m_options.font, fontSize, text, m_layer, true, centerY, 0));
    m_texts.back()->GetMaterial()->color = Opaque(m_options.ink);
    PlaceAt(*m_texts.back()->GetInstance(0), static_cast<float>(x), static_cast<float>(y), TextZ);
}

int Sheet::WidthOf(const std::string& text, int fontSize) const
{
    return SizeOf(text, fontSize).first;
}

std::pair<int, int> Sheet::SizeOf(const std::string& text, int fontSize) const
{
    int width = 0;
    int height = 0;
    int textureWidth = 0;
    int textureHeight = 0;
    Text::GetTextSize(m_options.font, fontSize, text, 0, width, height, textureWidth, textureHeight);
    return {width, height};
}

} // namespace OV::Host
