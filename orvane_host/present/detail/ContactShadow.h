#pragma once

#include "orvane/math/Vector.h"

#include <array>
#include <cstddef>
#include <functional>
#include <vector>

namespace OV::Host::Detail
{

/// How dark a level ground is where what stands on it keeps the light of a grey sky off.
///
/// The ground is a grid of squares; what is above a square is taken for solid from its lowest to its
/// highest point. In a fan of directions it is summed up how much of the sky, counted as it lights a
/// level surface, those solids hide. What is far away counts less, so that the shadow ends.
class ContactShadow
{
public:
    /// Squares of an edge of the grid.
    static constexpr int Size = 192;

    using Point = std::array<double, 3>;
    /// Calls with one convex polygon after another, of one corner or more. Along the ground in x and
    /// y, above it in z.
    using Polygons = std::function<void(const std::function<void(const std::vector<Point>&)>&)>;

    /// Looks at the polygons twice. Takes 2 MiB, and a time that is bounded by the number of
    /// polygons. What is below the ground counts for nothing.
    explicit ContactShadow(const Polygons& polygons);

    /// 0 for as bright as without anything, 255 for black; row by row from the smallest y on. The
    /// rim is 0.
    const std::vector<unsigned char>& GetTexels() const { return m_texels; }

    /// Where the grid begins, and its size, along the ground. A size of 0: there is no shadow.
    double GetLeft() const { return m_left; }
    double GetFront() const { return m_front; }
    double GetWidth() const { return m_size; }

private:
    struct Column
    {
        float low;
        float high;
    };

    struct Offset
    {
        int x;
        int y;
    };

    void Measure(const Polygons& polygons);
    void Fill(const std::vector<Point>& polygon);
    void FillEdge(const Point& from, const Point& to);
    void FillInside(const Point& a, const Point& b, const Point& c);
    void Raise(int x, int y, double height);
    void SetOffsets();
    float DarknessAt(int x, int y) const;
    void Smooth(std::vector<float>& darkness) const;

    double m_left = 0.0;
    double m_front = 0.0;
    double m_size = 0.0;
    double m_reach = 0.0; ///< along the ground, beyond which nothing counts
    std::size_t m_budget = 0;
    std::vector<Column> m_columns;
    std::vector<Offset> m_offsets; ///< squares of one direction after another, from near to far
    std::vector<unsigned char> m_texels;
};

} // namespace OV::Host::Detail
