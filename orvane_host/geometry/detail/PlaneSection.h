#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <map>
#include <utility>
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

        /// Where the side is at a height; no farther than its ends.
        double At(double v) const { return u1 + (u2 - u1) * std::clamp((v - v1) / (v2 - v1), 0.0, 1.0); }
    };

    /// Places in order, those apart that are to be told apart.
    using Levels = std::vector<double>;

    /// A part of the section between two sides, from one level to another.
    struct Strip
    {
        std::size_t left;
        std::size_t right;
        std::size_t bottom;
        std::size_t top;
    };

    /// Strips that may go on above, by their sides.
    using OpenStrips = std::map<std::pair<std::size_t, std::size_t>, std::size_t>;

    static Levels FindLevels(std::vector<double> places, double thinnest);

    /// The last level that is not above a place.
    static std::size_t LevelOf(const Levels& levels, double place);

    /// @param crossings null, or is given where sides cross between levels.
    std::vector<Strip> FindStrips(const Levels& levels, double thinnest, Levels* crossings) const;

    /// Adds the heights at which sides of a row cross from one height to another.
    void FindCrossings(const std::vector<std::size_t>& row, double bottom, double top, double thinnest,
                       Levels& crossings) const;

    /// Adds the strips from one level to the next.
    /// @param row the sides there, from left to right.
    void AddStrips(std::size_t level, const std::vector<std::size_t>& row, std::vector<Strip>& strips,
                   OpenStrips& open) const;
    Point ToSpace(double u, double v) const;

    Point m_normal;
    Point m_origin;
    Point m_u{};
    Point m_v{};
    std::vector<Side> m_sides;
};

} // namespace OV::Host::Detail
