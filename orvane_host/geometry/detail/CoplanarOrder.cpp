#include "orvane_host/geometry/detail/CoplanarOrder.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <unordered_set>

namespace OV::Host::Detail
{

namespace
{

using Point = std::array<double, 3>;

Point Minus(const Point& a, const Point& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

double Dot(const Point& a, const Point& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Point Cross(const Point& a, const Point& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

bool DoMeet(const Box& a, const Box& b)
{
    for (int axis = 0; axis < 3; ++axis)
    {
        if (a.low[axis] > b.high[axis] || b.low[axis] > a.high[axis])
        {
            return false;
        }
    }
    return true;
}

Box BoxAround(const FaceCorners& corners, double rim)
{
    Box box;
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        const auto [low, high] = std::minmax({corners[0][axis], corners[1][axis], corners[2][axis]});
        box.low[axis] = low - rim;
        box.high[axis] = high + rim;
    }
    return box;
}

/// Boxes that can be asked for those that meet another.
class BoxSearch
{
public:
    explicit BoxSearch(const std::vector<Box>& boxes) : m_boxes(boxes), m_branches(BuildBoxTree(boxes, m_order)) {}

    /// @param visit is given the numbers of boxes; false ends the search.
    /// @return false where it was ended.
    template <typename Visit>
    bool Each(const Box& box, const Visit& visit) const
    {
        std::array<std::uint32_t, kDeepestBoxTree + 1> waiting;
        std::size_t count = 0;
        if (!m_branches.empty())
        {
            waiting[count++] = 0;
        }
        while (count > 0)
        {
            const std::uint32_t at = waiting[--count];
            const BoxBranch& branch = m_branches[at];
            if (!DoMeet(branch.box, box))
            {
                continue;
            }
            if (branch.count == 0)
            {
                waiting[count++] = branch.second;
                waiting[count++] = at + 1;
                continue;
            }
            for (std::uint32_t i = branch.first; i < branch.first + branch.count; ++i)
            {
                if (DoMeet(m_boxes[m_order[i]], box) && !visit(m_order[i]))
                {
                    return false;
                }
            }
        }
        return true;
    }

private:
    const std::vector<Box>& m_boxes;
    std::vector<std::uint32_t> m_order;
    std::vector<BoxBranch> m_branches;
};

struct Face
{
    FaceCorners corners;
    Point normal; ///< unit
    std::uint32_t solid;
};

/// @return whether it is large enough to have a plane.
bool SetNormal(Face& face, double tolerance)
{
    const FaceCorners& c = face.corners;
    const Point sides[] = {Minus(c[1], c[0]), Minus(c[2], c[1]), Minus(c[0], c[2])};
    face.normal = Cross(sides[0], sides[1]);
    const double doubled = std::sqrt(Dot(face.normal, face.normal));
    const double longest = std::sqrt(std::max({Dot(sides[0], sides[0]), Dot(sides[1], sides[1]), Dot(sides[2], sides[2])}));
    if (!(doubled > 4.0 * tolerance * longest))
    {
        return false;
    }
    for (double& part : face.normal)
    {
        part /= doubled;
    }
    return true;
}

bool LiesInPlaneOf(const Face& face, const Face& other, double tolerance)
{
    return std::all_of(face.corners.begin(), face.corners.end(), [&](const Point& corner) {
        return std::abs(Dot(other.normal, Minus(corner, other.corners[0]))) <= tolerance;
    });
}

/// Whether a line along one of the sides of a face, in its plane, has the other face beyond it.
bool IsApart(const Face& face, const Face& other, double rim)
{
    for (std::size_t i = 0; i < 3; ++i)
    {
        const Point& from = face.corners[i];
        const Point side = Minus(face.corners[(i + 1) % 3], from);
        // Points inwards.
        const Point across = Cross(face.normal, side);
        const double length = std::sqrt(Dot(across, across));
        double farthest = -std::numeric_limits<double>::infinity();
        for (const Point& corner : other.corners)
        {
            farthest = std::max(farthest, Dot(across, Minus(corner, from)));
        }
        if (farthest <= rim * length)
        {
            return true;
        }
    }
    return false;
}

class Finder
{
public:
    Finder(const std::vector<PlacedSolid>& solids, double tolerance, const CoplanarLimits& limits) :
        m_solids(solids), m_tolerance(tolerance), m_limits(limits)
    {
    }

    CoplanarOrder Find(const SolidFaces& faces)
    {
        CoplanarOrder order;
        order.ranks.resize(m_solids.size());
        order.isComplete = Gather(faces) && Compare();
        if (order.isComplete)
        {
            order.pairs = m_pairs.size();
            Rank(order.ranks);
        }
        return order;
    }

private:
    bool MayFight(std::uint32_t a, std::uint32_t b) const
    {
        return a != b && m_solids[a].family != m_solids[b].family;
    }

    /// Finds the faces that come near another solid.
    bool Gather(const SolidFaces& faces)
    {
        std::vector<Box> boxes;
        boxes.reserve(m_solids.size());
        for (const PlacedSolid& solid : m_solids)
        {
            boxes.push_back(solid.box);
        }
        const BoxSearch search(boxes);
        bool isRoom = true;
        std::size_t comparisons = 0;
        for (std::uint32_t solid = 0; solid < m_solids.size() && isRoom; ++solid)
        {
            // Of a family whose boxes all meet, each is looked at from each.
            const auto meetsNone = [&](std::uint32_t other) {
                isRoom = ++comparisons <= m_limits.comparisons;
                return isRoom && !MayFight(solid, other);
            };
            if (search.Each(boxes[solid], meetsNone))
            {
                continue;
            }
            faces(solid, [&](const FaceCorners& corners) {
                Face face{corners, {}, solid};
                if (!isRoom || !SetNormal(face, m_tolerance) || search.Each(BoxAround(corners, m_tolerance), meetsNone))
                {
                    return;
                }
                isRoom = isRoom && m_faces.size() < m_limits.faces;
                m_faces.push_back(face);
            });
        }
        return isRoom;
    }

    bool Compare()
    {
        std::vector<Box> boxes;
        boxes.reserve(m_faces.size());
        for (const Face& face : m_faces)
        {
            boxes.push_back(BoxAround(face.corners, m_tolerance));
        }
        const BoxSearch search(boxes);
        std::size_t comparisons = 0;
        for (std::uint32_t i = 0; i < m_faces.size(); ++i)
        {
            const bool isDone = search.Each(boxes[i], [&](std::uint32_t j) {
                if (j > i && MayFight(m_faces[i].solid, m_faces[j].solid))
                {
                    Note(m_faces[i], m_faces[j]);
                }
                return ++comparisons <= m_limits.comparisons;
            });
            if (!isDone)
            {
                return false;
            }
        }
        return true;
    }

    void Note(const Face& a, const Face& b)
    {
        const double facing = Dot(a.normal, b.normal);
        const bool isSeen = facing > 0.0 || m_solids[a.solid].showsBacks || m_solids[b.solid].showsBacks;
        // What is no plane of both is told apart by the distances of corners; this only saves work.
        constexpr double nearlyOne = 0.99;
        if (!isSeen || std::abs(facing) < nearlyOne)
        {
            return;
        }
        const auto [low, high] = std::minmax(a.solid, b.solid);
        const std::uint64_t key = std::uint64_t(low) << 32 | high;
        // What overlaps by less is rounding too.
        const double rim = 8.0 * m_tolerance;
        if (m_pairs.count(key) == 0
            && (LiesInPlaneOf(a, b, m_tolerance) || LiesInPlaneOf(b, a, m_tolerance))
            && !IsApart(a, b, rim) && !IsApart(b, a, rim))
        {
            m_pairs.insert(key);
        }
    }

    /// Puts each solid behind all that lie before it.
    void Rank(std::vector<std::uint8_t>& ranks) const
    {
        // As thick as makes no difference: so that rounding doesn't decide.
        const auto stepOf = [this](std::uint32_t solid) {
            constexpr double stepsPerDouble = 256.0;
            const double thickness = m_solids[solid].thickness;
            return thickness > m_tolerance ? std::lround(stepsPerDouble * std::log2(thickness / m_tolerance)) : -1;
        };
        std::vector<long> steps(m_solids.size());
        std::vector<std::uint32_t> order(m_solids.size());
        std::iota(order.begin(), order.end(), 0u);
        std::transform(order.begin(), order.end(), steps.begin(), stepOf);
        std::sort(order.begin(), order.end(), [&](std::uint32_t a, std::uint32_t b) {
            return steps[a] != steps[b] ? steps[a] < steps[b] : a > b;
        });
        std::vector<std::uint32_t> places(order.size());
        for (std::uint32_t i = 0; i < order.size(); ++i)
        {
            places[order[i]] = i;
        }
        std::vector<std::vector<std::uint32_t>> behind(m_solids.size());
        for (const std::uint64_t key : m_pairs)
        {
            const auto low = static_cast<std::uint32_t>(key >> 32);
            const auto high = static_cast<std::uint32_t>(key);
            const bool isLowFirst = places[low] < places[high];
            behind[isLowFirst ? low : high].push_back(isLowFirst ? high : low);
        }
        for (const std::uint32_t solid : order)
        {
            const int next = std::min<int>(ranks[solid] + 1, kMostRank);
            for (const std::uint32_t other : behind[solid])
            {
                ranks[other] = static_cast<std::uint8_t>(std::max<int>(ranks[other], next));
            }
        }
    }

    const std::vector<PlacedSolid>& m_solids;
    double m_tolerance;
    const CoplanarLimits& m_limits;
    std::vector<Face> m_faces;
    std::unordered_set<std::uint64_t> m_pairs;
};

} // namespace

CoplanarOrder FindCoplanarOrder(const std::vector<PlacedSolid>& solids, const SolidFaces& faces, double tolerance,
                                const CoplanarLimits& limits)
{
    return Finder(solids, tolerance, limits).Find(faces);
}

} // namespace OV::Host::Detail
