#pragma once

#include "apps/viewer/PointRect.h"

#include <glm/vec2.hpp>
#include <glm/vec3.hpp>

#include <cstddef>
#include <optional>

namespace OV::ViewerApp
{

class Desk;
class Measure;

/// What is drawn over the picture of the model and held with the pointer there: a cube of the
/// views, handles of planes that cut, a measure that is begun, the box of a selection. Pixels of the picture.
class Overlay
{
public:
    Overlay(Desk& desk, const Measure& measure) : m_desk(desk), m_measure(measure) {}

    /// Draws, between Gui::Begin and Gui::Draw.
    void Draw(const PointRect& rect, float ratio);

    /// Tells where the pointer is; none elsewhere.
    void Hover(const std::optional<glm::dvec2>& pixel) { m_pointer = pixel; }

    /// Takes hold of what is there, or turns to the view of the cube.
    /// @return whether something is there.
    bool Press(const glm::dvec2& pixel);

    /// Drags what is held.
    /// @return whether something is.
    bool DragTo(const glm::dvec2& pixel);
    void Release();
    bool IsHeld() const { return m_held.has_value(); }

    void SetBox(const std::optional<glm::dvec2>& from, const glm::dvec2& to);

private:
    /// The arrow of a plane, in world space and in the picture.
    struct Handle
    {
        glm::dvec3 foot;
        glm::dvec3 normal; ///< of length 1
        glm::dvec2 from;
        glm::dvec2 to;
        double unitsPerPixel = 0.0; ///< along the arrow in the picture
    };

    std::optional<Handle> HandleOf(std::size_t plane) const;
    std::optional<std::size_t> HandleAt(const glm::dvec2& pixel) const;
    bool HasCube() const;
    int CubeFaceAt(const glm::dvec2& pixel) const;
    glm::dvec2 CubeMiddle() const;
    void DrawHandles(const PointRect& rect) const;
    void DrawCube(const PointRect& rect) const;
    void DrawMeasure(const PointRect& rect) const;

    Desk& m_desk;
    const Measure& m_measure;
    std::optional<glm::dvec2> m_pointer;
    std::optional<std::size_t> m_held; ///< a plane
    glm::dvec2 m_heldAt{0.0, 0.0};
    Handle m_heldHandle;
    glm::dvec3 m_heldPosition{0.0, 0.0, 0.0};
    std::optional<glm::dvec2> m_boxFrom;
    glm::dvec2 m_boxTo{0.0, 0.0};
    float m_ratio = 1.0f;
};

} // namespace OV::ViewerApp
