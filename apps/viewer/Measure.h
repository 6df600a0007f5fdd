#pragma once

#include "orvane_host/sheet/Notes.h"

#include <glm/vec2.hpp>
#include <glm/vec3.hpp>

#include <optional>
#include <string>
#include <vector>

namespace OV
{

class Mesh;
class Node;

} // namespace OV

namespace OV::ViewerApp
{

class Desk;
class Navigator;

/// Distances between two points of the model and angles of three, which snap to its corners and
/// edges.
class Measure
{
public:
    enum class Kind
    {
        Off,
        Distance,
        Angle,
    };

    /// What a point lies on.
    enum class Snap
    {
        Face,
        Edge,
        Corner,
    };

    /// A place, on what, and how many pixels it is away from the one that is measured at.
    struct Found
    {
        glm::dvec3 place;
        Snap snap = Snap::Face;
        double distance = 0.0;
    };

    /// Begins to measure, or ends it.
    void Turn(Kind kind);
    bool IsOn() const { return m_kind != Kind::Off; }
    Kind GetKind() const { return m_kind; }

    /// Takes the point of the model under a pixel; the first one after a whole measure begins anew. A
    /// whole one is drawn by the desk from then on.
    /// @param ratio pixels per point.
    void Add(Desk& desk, const glm::dvec2& pixel, double ratio);
    void Clear() { m_points.clear(); }

    /// Those taken so far, at most as many as the kind has.
    const std::vector<glm::dvec3>& GetPoints() const { return m_points; }

    /// Whether all points are there.
    bool IsWhole() const { return m_points.size() == Count(); }

    /// The distance or the angle, or what to do next.
    std::string Text() const;

    /// The corner, else the edge, else the place itself that is near in the picture.
    /// @param place on the mesh at the node.
    /// @param reach in pixels.
    static glm::dvec3 Snapped(const Mesh& mesh, const Node& node, const glm::dvec3& place,
                              const Navigator& view, double reach, Snap& snap);

private:
    /// The corner, else the edge that is seen near a pixel, else the place under it.
    /// @param reach in pixels.
    static std::optional<Found> Find(Desk& desk, const glm::dvec2& pixel, double reach);

    /// Of a whole measure.
    Host::Dimension Dimension() const;
    std::size_t Count() const { return m_kind == Kind::Angle ? 3 : 2; }

    Kind m_kind = Kind::Off;
    std::vector<glm::dvec3> m_points;
    std::string m_unit; ///< of the model
};

} // namespace OV::ViewerApp
