#pragma once

#include "orvane_host/geometry/SunHours.h"
#include "orvane_host/present/detail/SunMapStage.h"
#include "orvane/math/Point3d.h"
#include "orvane/math/Vector3d.h"

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

namespace OV::Host::Detail
{

/// Triangles over surfaces whose corners know their hours of sun: finer where the hours of neighbours
/// lie more than a step apart, and cut there along the rim of the shadow.
///
/// A side that two triangles share is halved or cut in both of them or in none, so that what is laid
/// over them has no gaps. No triangle is halved more than a few times, and none once there are too
/// many.
class SunHoursMesh
{
public:
    struct Face
    {
        QGM::Point3d corners[3];
    };

    struct Triangle
    {
        std::uint32_t corners[3];
        bool isCounted = false;
        float hours = 0.0f; ///< at its middle
    };

    /// @param faces of some area each. What shares corners lies side by side.
    /// @param step hours that neighbours may lie apart.
    /// @param most triangles.
    SunHoursMesh(const std::vector<Face>& faces, const SunHours& hours, double step, std::size_t most);

    const std::vector<Triangle>& GetTriangles() const { return m_triangles; }
    SunSpot MiddleOf(const Triangle& triangle) const;

    /// What is to be drawn.
    /// @param off how far it lies off the surfaces.
    /// @param longest hours at the end of the scale.
    std::vector<SunMapCell> Cells(double off, double longest) const;

private:
    struct Corner
    {
        QGM::Point3d place;
        QGM::Vector3d normal;
        QGM::Point3d counted; ///< where it is counted: a little off rims, where other things may touch
        bool isCounted = false;
        float hours = 0.0f;
    };

    /// Where the rim of a shadow crosses a side.
    struct Crossing
    {
        double low = 0.0; ///< shares of the way from the first corner to the second, about the rim
        double high = 1.0;
        float first = 0.0f;  ///< hours on the side of the first corner
        float second = 0.0f; ///< and of the second
    };

    /// A corner of a cell, before it is placed.
    struct Vertex
    {
        QGM::Point3d place;
        QGM::Vector3d normal; ///< the same for all that share the place
        float hours = 0.0f;
    };

    using Sides = std::unordered_map<std::uint64_t, std::uint32_t>;

    static std::uint64_t KeyOf(std::uint32_t first, std::uint32_t second);
    std::uint64_t SideOf(const Triangle& triangle, int side) const;
    double LengthOf(const Triangle& triangle, int side) const;
    int LongestOf(const Triangle& triangle) const;
    bool IsUneven(const Triangle& triangle) const;
    void Weld(const std::vector<Face>& faces);
    void Count();
    bool Refine(std::size_t most);
    Sides MarkSides() const;
    void Split(const Triangle& triangle, const Sides& halves, std::vector<Triangle>& into) const;
    void FindCrossings();
    bool IsCrossed(std::uint32_t first, std::uint32_t second) const;
    void VerticesOf(std::uint32_t first, std::uint32_t second, Vertex& atFirst, Vertex& atSecond) const;
    Vertex VertexOf(std::uint32_t corner) const;

    const SunHours& m_source;
    double m_step;
    std::vector<Corner> m_corners;
    std::vector<Triangle> m_triangles;
    std::unordered_map<std::uint64_t, Crossing> m_crossings; ///< of sides, from the lower number to the higher
};

} // namespace OV::Host::Detail
