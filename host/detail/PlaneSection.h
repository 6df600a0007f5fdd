#pragma once

#include <array>
#include <vector>

namespace OV::Host::Detail
{

/// The section of closed triangles with a plane, as triangles in the plane.
///
/// What triangles enclose is filled where they face outward; what they enclose twice is filled
/// once, and what an inner shell that faces inward leaves out is left out.
class PlaneSection
{
public:
    using Point = std::array<double, 3>;

    /// @param normal of length 1.
    PlaneSection(const Point& normal, const Point& point);

    /// Which side of the plane a point lies on, and how far from it. Points on the plane count to
    /// the side of the normal.
    double HeightOf(const Point& point) const;

    /// Adds a triangle, counter-clockwise from outside, with the heights of its corners. Triangles
    /// to one side only change nothing.
    void Add(const std::array<Point, 3>& corners, const std::array<double, 3>& heights);

    /// Whether any triangle went through the plane.
    bool IsEmpty() const { return m_sides.empty(); }

    /// The corners of the triangles that fill the section, three for each, clockwise as seen from
    /// the side of the normal.
    std::vector<Point> Fill() const;

private:
    /// A side of the section; what is enclosed lies to the left of it, with v up.
    struct Side
    {
        double u1, v1, u2, v2;

        double At(double v) const { return u1 + (u2 - u1) * (v - v1) / (v2 - v1); }
    };

    /// A part of the section between two sides, from one height to another.
    struct Strip
    {
        std::size_t left;
        std::size_t right;
        double bottom;
        double top;
    };

    std::vector<Strip> FindStrips() const;
    Point ToSpace(double u, double v) const;

    Point m_normal;
    Point m_origin;
    Point m_u{};
    Point m_v{};
    std::vector<Side> m_sides;
};

} // namespace OV::Host::Detail
