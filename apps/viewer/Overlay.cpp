#include "apps/viewer/Overlay.h"

#include "apps/viewer/Desk.h"
#include "apps/viewer/Measure.h"
#include "orvane_host/sheet/Sheet.h"

#include <glm/geometric.hpp>
#include <imgui.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace OV::ViewerApp
{

namespace
{

// In points.
constexpr float CubeSide = 52.0f;
constexpr float CubeInset = 64.0f;
constexpr double ArrowLength = 60.0;
constexpr double HandleReach = 10.0;

const ImU32 Ink = IM_COL32(30, 34, 40, 255);
const ImU32 Paper = IM_COL32(255, 255, 255, 235);
const ImU32 Grip = IM_COL32(20, 105, 215, 255);
const ImU32 Accent = IM_COL32(225, 105, 20, 255);

struct CubeFace
{
    Host::NamedView view;
    const char* name;
    glm::dvec3 normal; ///< with Y up
};

const std::array<CubeFace, 6>& CubeFaces()
{
    static const std::array<CubeFace, 6> faces = {{
        {Host::NamedView::Front, "Front", {0.0, 0.0, 1.0}},
        {Host::NamedView::Back, "Back", {0.0, 0.0, -1.0}},
        {Host::NamedView::Left, "Left", {-1.0, 0.0, 0.0}},
        {Host::NamedView::Right, "Right", {1.0, 0.0, 0.0}},
        {Host::NamedView::Top, "Top", {0.0, 1.0, 0.0}},
        {Host::NamedView::Bottom, "Bottom", {0.0, -1.0, 0.0}},
    }};
    return faces;
}

/// A direction of a model with Y up, in one whose up axis is told.
glm::dvec3 InModel(const glm::dvec3& direction, Host::UpAxis axis)
{
    return axis == Host::UpAxis::Y ? direction : glm::dvec3(direction.x, -direction.z, direction.y);
}

/// The corners of a face in the picture, round about, as far from the middle of the cube as told.
std::array<glm::dvec2, 4> CornersOf(const glm::dvec3& normal, const Navigator& view, double half)
{
    const glm::dvec3 right = view.Right();
    const glm::dvec3 up = view.Up();
    const glm::dvec3 side = std::abs(normal.y) > 0.5 ? glm::dvec3(1.0, 0.0, 0.0) : glm::dvec3(0.0, 1.0, 0.0);
    const glm::dvec3 other = glm::cross(normal, side);
    std::array<glm::dvec2, 4> corners;
    constexpr int signs[4][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
    for (std::size_t i = 0; i < 4; ++i)
    {
        const glm::dvec3 corner =
            (normal + side * static_cast<double>(signs[i][0]) + other * static_cast<double>(signs[i][1])) * half;
        corners[i] = {glm::dot(corner, right), -glm::dot(corner, up)};
    }
    return corners;
}

bool IsInside(const std::array<glm::dvec2, 4>& corners, const glm::dvec2& point)
{
    bool hasLeft = false;
    bool hasRight = false;
    for (std::size_t i = 0; i < 4; ++i)
    {
        const glm::dvec2 along = corners[(i + 1) % 4] - corners[i];
        const glm::dvec2 to = point - corners[i];
        const double side = along.x * to.y - along.y * to.x;
        hasLeft = hasLeft || side > 0.0;
        hasRight = hasRight || side < 0.0;
    }
    return !(hasLeft && hasRight);
}

glm::dvec3 ToGlm(const Vector& vector)
{
    return {vector.x, vector.y, vector.z};
}

/// Draws in the pixels of the picture.
class Pen
{
public:
    Pen(const PointRect& rect, float ratio) : m_list(*ImGui::GetBackgroundDrawList()), m_rect(rect), m_ratio(ratio)
    {
        m_list.PushClipRect({rect.x, rect.y}, {rect.x + rect.width, rect.y + rect.height}, false);
    }
    ~Pen() { m_list.PopClipRect(); }
    Pen(const Pen&) = delete;
    Pen& operator=(const Pen&) = delete;

    ImVec2 At(const glm::dvec2& pixel) const
    {
        return {m_rect.x + static_cast<float>(pixel.x) / m_ratio, m_rect.y + static_cast<float>(pixel.y) / m_ratio};
    }

    void Line(const glm::dvec2& from, const glm::dvec2& to, ImU32 color, float width)
    {
        m_list.AddLine(At(from), At(to), color, width);
    }

    void Dot(const glm::dvec2& pixel)
    {
        m_list.AddCircleFilled(At(pixel), 4.5f, Paper);
        m_list.AddCircleFilled(At(pixel), 3.0f, Accent);
    }

    ImDrawList& List() { return m_list; }

private:
    ImDrawList& m_list;
    const PointRect& m_rect;
    float m_ratio;
};

} // namespace

void Overlay::SetBox(const std::optional<glm::dvec2>& from, const glm::dvec2& to)
{
    m_boxFrom = from;
    m_boxTo = to;
}

bool Overlay::HasCube() const
{
    return m_desk.GetWidth() > 4.0f * CubeInset * m_ratio && m_desk.GetHeight() > 3.0f * CubeInset * m_ratio;
}

glm::dvec2 Overlay::CubeMiddle() const
{
    const int width = m_desk.GetWidth();
    // The arrow of the sheet stands in the same corner.
    const int arrow = m_desk.GetSettings().sheet.north ? Host::Sheet::NorthRoom(width, m_desk.GetHeight()) : 0;
    return glm::dvec2(width - arrow - CubeInset * m_ratio, CubeInset * m_ratio);
}

int Overlay::CubeFaceAt(const glm::dvec2& pixel) const
{
    if (!HasCube())
    {
        return -1;
    }
    const Navigator& view = m_desk.GetNavigator();
    const glm::dvec2 point = pixel - CubeMiddle();
    for (std::size_t i = 0; i < CubeFaces().size(); ++i)
    {
        const glm::dvec3 normal = InModel(CubeFaces()[i].normal, m_desk.GetSettings().view.upAxis);
        // One that is seen from the side is nothing to press on.
        if (glm::dot(normal, view.Forward()) < -0.05
            && IsInside(CornersOf(normal, view, CubeSide * m_ratio / 2.0), point))
        {
            return static_cast<int>(i);
        }
    }
    return -1;
}

std::optional<Overlay::Handle> Overlay::HandleOf(std::size_t index) const
{
    const auto& planes = m_desk.GetSettings().section.planes;
    const auto box = m_desk.GetModel() ? m_desk.GetModel()->GetModelBox() : std::nullopt;
    if (index >= planes.size() || !box)
    {
        return std::nullopt;
    }
    const Navigator& view = m_desk.GetNavigator();
    Handle handle;
    handle.normal = glm::normalize(ToGlm(planes[index].normal));
    // Where the plane lies before the middle of the model.
    const glm::dvec3 middle = (ToGlm(box->low) + ToGlm(box->high)) / 2.0;
    handle.foot = middle - handle.normal * glm::dot(middle - ToGlm(planes[index].position), handle.normal);
    const auto from = view.PixelOf(handle.foot);
    const double step = view.UnitsPerPixel(handle.foot);
    const auto ahead = view.PixelOf(handle.foot + handle.normal * step);
    if (!from || !ahead)
    {
        return std::nullopt;
    }
    glm::dvec2 along = *ahead - *from;
    const double length = glm::length(along);
    // Seen from its end an arrow has no length to drag along; the pointer's way up serves.
    along = length > 0.15 ? along : glm::dvec2(0.0, -0.15);
    handle.from = *from;
    handle.to = *from + glm::normalize(along) * (ArrowLength * m_ratio);
    handle.unitsPerPixel = step / glm::length(along);
    return handle;
}

std::optional<std::size_t> Overlay::HandleAt(const glm::dvec2& pixel) const
{
    for (std::size_t i = 0; i < m_desk.GetSettings().section.planes.size(); ++i)
    {
        if (const auto handle = HandleOf(i))
        {
            const glm::dvec2 along = handle->to - handle->from;
            const double share =
                std::clamp(glm::dot(pixel - handle->from, along) / glm::dot(along, along), 0.0, 1.0);
            if (glm::distance(pixel, handle->from + along * share) < HandleReach * m_ratio)
            {
                return i;
            }
        }
    }
    return std::nullopt;
}

bool Overlay::Press(const glm::dvec2& pixel)
{
    if (!m_desk.GetModel())
    {
        return false;
    }
    const int face = CubeFaceAt(pixel);
    if (face >= 0)
    {
        m_desk.TurnTo(CubeFaces()[static_cast<std::size_t>(face)].view);
        return true;
    }
    m_held = HandleAt(pixel);
    if (m_held)
    {
        m_heldAt = pixel;
        m_heldHandle = *HandleOf(*m_held);
        m_heldPosition = ToGlm(m_desk.GetSettings().section.planes[*m_held].position);
    }
    return IsHeld();
}

bool Overlay::DragTo(const glm::dvec2& pixel)
{
    if (!m_held || *m_held >= m_desk.GetSettings().section.planes.size())
    {
        return false;
    }
    const glm::dvec2 along = glm::normalize(m_heldHandle.to - m_heldHandle.from);
    const double way = glm::dot(pixel - m_heldAt, along) * m_heldHandle.unitsPerPixel;
    const glm::dvec3 position = m_heldPosition + m_heldHandle.normal * way;
    Host::PresentationSettings settings = m_desk.GetSettings();
    settings.section.planes[*m_held].position =
        Vector(static_cast<float>(position.x), static_cast<float>(position.y), static_cast<float>(position.z));
    m_desk.ApplyInMotion(settings);
    return true;
}

void Overlay::Release()
{
    m_held.reset();
}

void Overlay::Draw(const PointRect& rect, float ratio)
{
    m_ratio = ratio;
    if (!m_desk.GetModel() || rect.width < 1.0f || rect.height < 1.0f)
    {
        return;
    }
    DrawHandles(rect);
    DrawMeasure(rect);
    if (HasCube())
    {
        DrawCube(rect);
    }
    if (m_boxFrom)
    {
        Pen pen(rect, m_ratio);
        pen.List().AddRectFilled(pen.At(*m_boxFrom), pen.At(m_boxTo), IM_COL32(225, 105, 20, 40));
        pen.List().AddRect(pen.At(*m_boxFrom), pen.At(m_boxTo), Accent);
    }
}

void Overlay::DrawHandles(const PointRect& rect) const
{
    Pen pen(rect, m_ratio);
    constexpr auto none = static_cast<std::size_t>(-1);
    const std::size_t hovered = m_held ? *m_held : m_pointer ? HandleAt(*m_pointer).value_or(none) : none;
    for (std::size_t i = 0; i < m_desk.GetSettings().section.planes.size(); ++i)
    {
        const auto handle = HandleOf(i);
        if (!handle)
        {
            continue;
        }
        const ImU32 color = hovered == i ? Accent : Grip;
        const glm::dvec2 along = glm::normalize(handle->to - handle->from);
        const glm::dvec2 across(-along.y, along.x);
        const double head = 11.0 * m_ratio;
        const glm::dvec2 neck = handle->to - along * head;
        const std::array<ImVec2, 3> tip = {pen.At(handle->to), pen.At(neck + across * head * 0.6),
                                           pen.At(neck - across * head * 0.6)};
        // On paper, so that it is seen before dark sections as well.
        pen.List().AddPolyline(tip.data(), 3, Paper, ImDrawFlags_Closed, 4.0f);
        pen.List().AddCircleFilled(pen.At(handle->from), 6.5f, Paper);
        pen.Line(handle->from, neck, Paper, 7.0f);
        pen.Line(handle->from, neck, color, 3.5f);
        pen.List().AddTriangleFilled(tip[0], tip[1], tip[2], color);
        pen.List().AddCircleFilled(pen.At(handle->from), 4.5f, color);
    }
}

void Overlay::DrawCube(const PointRect& rect) const
{
    Pen pen(rect, m_ratio);
    const Navigator& view = m_desk.GetNavigator();
    const glm::dvec2 middle = CubeMiddle();
    const int hovered = m_pointer ? CubeFaceAt(*m_pointer) : -1;
    for (std::size_t i = 0; i < CubeFaces().size(); ++i)
    {
        const CubeFace& face = CubeFaces()[i];
        const glm::dvec3 normal = InModel(face.normal, m_desk.GetSettings().view.upAxis);
        const double turned = -glm::dot(normal, view.Forward());
        if (turned < 1e-3)
        {
            continue;
        }
        const std::array<glm::dvec2, 4> corners = CornersOf(normal, view, CubeSide * m_ratio / 2.0);
        std::array<ImVec2, 4> points;
        std::transform(corners.begin(), corners.end(), points.begin(),
                       [&](const glm::dvec2& corner) { return pen.At(middle + corner); });
        const int shade = static_cast<int>(205.0 + 45.0 * turned);
        const bool isHovered = hovered == static_cast<int>(i);
        pen.List().AddConvexPolyFilled(points.data(), 4,
                                       isHovered ? IM_COL32(255, 214, 170, 245) : IM_COL32(shade, shade, shade + 4, 240));
        pen.List().AddPolyline(points.data(), 4, IM_COL32(90, 96, 105, 255), ImDrawFlags_Closed, 1.0f);
        if (turned > 0.3)
        {
            const float size = 12.0f;
            const ImVec2 extent = ImGui::GetFont()->CalcTextSizeA(size, 1e9f, 0.0f, face.name);
            const glm::dvec3 centre = normal * (CubeSide * m_ratio / 2.0);
            const glm::dvec2 place(glm::dot(centre, view.Right()), -glm::dot(centre, view.Up()));
            const glm::dvec2 reach = glm::dvec2(extent.x / 2.0, extent.y / 2.0 - 1.0) * static_cast<double>(m_ratio);
            const bool fits = IsInside(corners, place + reach) && IsInside(corners, place - reach)
                && IsInside(corners, place + glm::dvec2(reach.x, -reach.y))
                && IsInside(corners, place - glm::dvec2(reach.x, -reach.y));
            if (!fits)
            {
                continue;
            }
            const ImVec2 at = pen.At(middle + place);
            pen.List().AddText(ImGui::GetFont(), size,
                               {std::floor(at.x - extent.x / 2.0f), std::floor(at.y - extent.y / 2.0f)}, Ink, face.name);
        }
    }
}

void Overlay::DrawMeasure(const PointRect& rect) const
{
    // A whole measure is part of the picture.
    if (!m_measure.IsOn() || m_measure.IsWhole())
    {
        return;
    }
    Pen pen(rect, m_ratio);
    std::optional<glm::dvec2> last;
    for (const glm::dvec3& point : m_measure.GetPoints())
    {
        const auto pixel = m_desk.GetNavigator().PixelOf(point);
        if (pixel && last)
        {
            pen.Line(*last, *pixel, Paper, 4.0f);
            pen.Line(*last, *pixel, Accent, 2.0f);
        }
        if (pixel)
        {
            pen.Dot(*pixel);
        }
        last = pixel;
    }
    if (last && m_pointer)
    {
        pen.Line(*last, *m_pointer, Accent, 1.0f);
    }
}

} // namespace OV::ViewerApp
