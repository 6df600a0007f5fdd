#include "orvane_host/sheet/ColorScale.h"

#include "orvane/math/Transform.h"
#include "orvane/math/Vector.h"
#include "orvane/overlay/Material2D.h"
#include "orvane/overlay/Rect.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/overlay/Shape2DNode.h"
#include "orvane/overlay/Sprite.h"
#include "orvane/overlay/Text.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

namespace OV::Host
{

namespace
{

constexpr float PanelZ = 0.0f;
constexpr float FigureZ = 1.0f;
constexpr float TextZ = 3.0f;

/// Steps of colour; the eye tells no more apart over so short a length.
constexpr int Steps = 60;

/// With one decimal where it has any.
std::string NumberText(double number)
{
    char text[32];
    const bool isWhole = std::abs(number - std::round(number)) < 0.05;
    std::snprintf(text, sizeof text, isWhole ? "%.0f" : "%.1f", number);
    return text;
}

void PlaceAt(Node& node, float x, float y, float z)
{
    Transform place;
    place.SetPosition(Vector(x, y, z));
    node.SetLocal(place);
}

} // namespace

ColorScale::ColorScale(Scene2D& layer, ColorScaleOptions options) : m_layer(layer), m_options(std::move(options))
{
}

ColorScale::~ColorScale() = default;

Color ColorScale::ColorOf(float value)
{
    const float v = std::clamp(value, 0.0f, 1.0f);
    const auto rise = [](float x) { return std::clamp(x, 0.0f, 1.0f); };
    return Color(rise((v - 0.5f) * 4.0f), rise(std::min(v * 4.0f, 4.0f - v * 4.0f)), rise(2.0f - v * 4.0f));
}

void ColorScale::Layout(int width, int height)
{
    m_sprites.clear();
    m_texts.clear();
    // As on a sheet.
    const int side = std::min(width, height);
    const int font = std::clamp(static_cast<int>(std::lround(side / 45.0)), 12, 72);
    const int margin = font;
    const int pad = std::max(3, font / 2);
    const int stepWidth = std::max(1, std::min(width / 4, 20 * font) / Steps);
    const int barWidth = Steps * stepWidth;
    const int barHeight = font;
    const int labelRoom = 2 * font;

    int titleWidth = 0;
    if (!m_options.title.empty())
    {
        // Measured, and gone again.
        const Text title(m_options.font, font, m_options.title, &m_layer, false, false, 0);
        titleWidth = title.GetRight() - title.GetLeft();
    }
    const int panelWidth = std::max(barWidth + labelRoom, titleWidth) + labelRoom + 2 * pad;
    const int panelHeight = 2 * pad + barHeight + (m_options.title.empty() ? 2 : 4) * font;
    const int panelBottom = height - margin - panelHeight;
    AddBox(margin, panelBottom, panelWidth, panelHeight, m_options.paper, PanelZ);
    const int left = margin + pad + labelRoom;
    const int labels = panelBottom + pad;
    const int bar = labels + font + font / 2;
    for (int step = 0; step < Steps; ++step)
    {
        AddBox(left + step * stepWidth, bar, stepWidth, barHeight,
               ColorOf((static_cast<float>(step) + 0.5f) / Steps), FigureZ);
    }
    const std::string unit = m_options.unit.empty() ? "" : " " + m_options.unit;
    AddText("0", font, left, labels, true);
    AddText(NumberText(m_options.most / 2.0), font, left + barWidth / 2, labels, true);
    AddText(NumberText(m_options.most) + unit, font, left + barWidth, labels, true);
    if (!m_options.title.empty())
    {
        AddText(m_options.title, font, left, bar + barHeight + font / 2, false);
    }
}

void ColorScale::AddBox(int x, int y, int width, int height, const Color& color, float z)
{
    auto* const rect = new Rect(&m_layer, static_cast<float>(width), static_cast<float>(height), false);
    m_sprites.push_back(std::make_unique<Sprite>(&m_layer, rect));
    m_sprites.back()->SetColor(color);
    PlaceAt(*m_sprites.back()->GetNode(), static_cast<float>(x), static_cast<float>(y), z);
}

void ColorScale::AddText(const std::string& text, int fontSize, int x, int y, bool isCentered)
{
    m_texts.push_back(std::make_unique<Text>(m_options.font, fontSize, text, &m_layer, isCentered, false, 0));
    m_texts.back()->GetMaterial()->color = Color(m_options.ink.r, m_options.ink.g, m_options.ink.b, 1.0f);
    PlaceAt(*m_texts.back()->GetInstance(0), static_cast<float>(x), static_cast<float>(y), TextZ);
}

} // namespace OV::Host
