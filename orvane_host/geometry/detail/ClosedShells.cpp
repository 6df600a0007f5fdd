#include "orvane_host/geometry/detail/ClosedShells.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <map>
#include <numeric>
#include <utility>

namespace OV::Host::Detail
{

namespace
{

/// A point this many weldings off an edge still lies on it: where a short edge meets a long one,
/// its end was rounded by itself.
constexpr double kOnEdge = 8.0;

/// To compare more loose edges with one another would take long; so many are not those of a solid.
constexpr std::size_t kMostLooseEdges = 4096;

using Place = std::array<double, 3>;

Place Minus(const Place& a, const Place& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

double Dot(const Place& a, const Place& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

/// An edge that is run along more often one way than the other.
struct LooseEdge
{
    Place start;
    Place along; ///< of length 1
    double length;
    int surplus; ///< of runs from the start to the end
};

class ShellFinder
{
public:
    explicit ShellFinder(const VertexWelder& welded) : m_welded(welded), m_parents(welded.Points().size())
    {
        std::iota(m_parents.begin(), m_parents.end(), 0u);
    }

    std::vector<WeldedTriangle> Find()
    {
        Connect();
        CollectLooseEdges();
        JudgeShells();
        std::vector<WeldedTriangle> closed;
        for (const WeldedTriangle& triangle : m_welded.Triangles())
        {
            if (!m_isOpen[ShellOf(triangle[0])])
            {
                closed.push_back(triangle);
            }
        }
        return closed;
    }

private:
    /// The point that stands for all that hang together with one.
    std::uint32_t ShellOf(std::uint32_t point)
    {
        while (m_parents[point] != point)
        {
            m_parents[point] = m_parents[m_parents[point]];
            point = m_parents[point];
        }
        return point;
    }

    void Connect()
    {
        for (const WeldedTriangle& triangle : m_welded.Triangles())
        {
            m_parents[ShellOf(triangle[1])] = ShellOf(triangle[0]);
            m_parents[ShellOf(triangle[2])] = ShellOf(triangle[0]);
        }
    }

    void CollectLooseEdges()
    {
        std::map<std::pair<std::uint32_t, std::uint32_t>, int> surplus;
        for (const WeldedTriangle& triangle : m_welded.Triangles())
        {
            for (std::size_t side = 0; side < 3; ++side)
            {
                const std::uint32_t from = triangle[side];
                const std::uint32_t to = triangle[(side + 1) % 3];
                surplus[std::minmax(from, to)] += from < to ? 1 : -1;
            }
        }
        for (const auto& [ends, count] : surplus)
        {
            if (count != 0)
            {
                m_loose[ShellOf(ends.first)].push_back(MakeLooseEdge(ends.first, ends.second, count));
            }
        }
    }

    LooseEdge MakeLooseEdge(std::uint32_t from, std::uint32_t to, int surplus) const
    {
        const Vector& a = m_welded.Points()[from];
        const Vector& b = m_welded.Points()[to];
        LooseEdge edge{{a.x, a.y, a.z}, Minus({b.x, b.y, b.z}, {a.x, a.y, a.z}), 0.0, surplus};
        edge.length = std::sqrt(Dot(edge.along, edge.along));
        for (double& part : edge.along)
        {
            part /= edge.length;
        }
        return edge;
    }

    void JudgeShells()
    {
        m_isOpen.assign(m_parents.size(), false);
        for (const auto& [shell, edges] : m_loose)
        {
            m_isOpen[shell] = edges.size() > kMostLooseEdges
                || !std::all_of(edges.begin(), edges.end(),
                                [&, all = &edges](const LooseEdge& edge) { return IsMadeUpFor(edge, *all); });
        }
    }

    /// Whether along all of an edge others run as often against it as it and others run with it.
    bool IsMadeUpFor(const LooseEdge& edge, const std::vector<LooseEdge>& all) const
    {
        const double reach = kOnEdge * m_welded.Tolerance();
        // Steps of the surplus along the edge.
        std::vector<std::pair<double, int>> steps;
        for (const LooseEdge& other : all)
        {
            const double first = PlaceOn(edge, other.start, reach);
            const Place end{other.start[0] + other.along[0] * other.length,
                            other.start[1] + other.along[1] * other.length,
                            other.start[2] + other.along[2] * other.length};
            const double last = PlaceOn(edge, end, reach);
            if (std::isfinite(first) && std::isfinite(last))
            {
                steps.emplace_back(first, other.surplus);
                steps.emplace_back(last, -other.surplus);
            }
        }
        std::sort(steps.begin(), steps.end());
        int surplus = 0;
        double from = 0.0;
        for (const auto& [place, step] : steps)
        {
            const double to = std::clamp(place, 0.0, edge.length);
            if (surplus != 0 && to - from > 2.0 * reach)
            {
                return false;
            }
            surplus += step;
            from = to;
        }
        return surplus == 0;
    }

    /// How far along an edge's line a point lies; not a number off the line.
    static double PlaceOn(const LooseEdge& edge, const Place& point, double reach)
    {
        const Place off = Minus(point, edge.start);
        const double along = Dot(off, edge.along);
        const double aside = Dot(off, off) - along * along;
        return aside <= reach * reach ? along : std::numeric_limits<double>::quiet_NaN();
    }

    const VertexWelder& m_welded;
    std::vector<std::uint32_t> m_parents;
    std::map<std::uint32_t, std::vector<LooseEdge>> m_loose; ///< by shell
    std::vector<bool> m_isOpen;                              ///< by shell
};

} // namespace

std::vector<WeldedTriangle> FindClosedShells(const VertexWelder& welded)
{
    return ShellFinder(welded).Find();
}

} // namespace OV::Host::Detail
