#include "orvane_host/geometry/detail/EdgeChains.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <tuple>

namespace OV::Host::Detail
{

namespace
{

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

/// Cosine of how far an edge may turn from one that it goes on from where there are others.
constexpr double kStraight = 0.94;

/// Where more meet, none goes on: to compare each with each would take long, and nobody sees which one does.
constexpr std::size_t kMostMeeting = 512;

/// The ends of edges have numbers: twice the edge's, and one more at its end.
class Chains
{
public:
    explicit Chains(const std::vector<FeatureEdge>& edges) : m_edges(edges), m_next(2 * edges.size(), kNone)
    {
        std::vector<std::size_t> ends(2 * edges.size());
        for (std::size_t i = 0; i < ends.size(); ++i)
        {
            ends[i] = i;
        }
        const auto isBefore = [this](std::size_t a, std::size_t b)
        { return std::make_tuple(KeyOf(a), a) < std::make_tuple(KeyOf(b), b); };
        std::sort(ends.begin(), ends.end(), isBefore);
        for (auto first = ends.begin(); first != ends.end();)
        {
            const auto last =
                std::find_if(first + 1, ends.end(), [&](std::size_t end) { return KeyOf(end) != KeyOf(*first); });
            Join(std::vector<std::size_t>(first, last));
            first = last;
        }
    }

    std::vector<FeatureEdge> Order() const
    {
        std::vector<FeatureEdge> ordered;
        ordered.reserve(m_edges.size());
        std::vector<bool> isTaken(m_edges.size(), false);
        const auto follow = [&](std::size_t entry) {
            while (entry != kNone && !isTaken[entry / 2])
            {
                isTaken[entry / 2] = true;
                ordered.push_back({PlaceOf(entry), PlaceOf(entry ^ 1)});
                entry = m_next[entry ^ 1];
            }
        };
        for (std::size_t end = 0; end < m_next.size(); ++end)
        {
            if (m_next[end] == kNone)
            {
                follow(end);
            }
        }
        // Those that go round.
        for (std::size_t end = 0; end < m_next.size(); end += 2)
        {
            follow(end);
        }
        return ordered;
    }

private:
    const Vector& PlaceOf(std::size_t end) const
    {
        return end % 2 == 0 ? m_edges[end / 2].start : m_edges[end / 2].end;
    }

    std::tuple<float, float, float> KeyOf(std::size_t end) const
    {
        const Vector& place = PlaceOf(end);
        return {place.x, place.y, place.z};
    }

    /// Cosine of the angle by which one edge turns into another one at a place where both end.
    double Straightness(std::size_t a, std::size_t b) const
    {
        const auto direction = [this](std::size_t end) {
            const Vector& from = PlaceOf(end);
            const Vector& to = PlaceOf(end ^ 1);
            const double x = static_cast<double>(to.x) - from.x;
            const double y = static_cast<double>(to.y) - from.y;
            const double z = static_cast<double>(to.z) - from.z;
            const double length = std::sqrt(x * x + y * y + z * z);
            return length > 0.0 ? std::make_tuple(x / length, y / length, z / length) : std::make_tuple(0.0, 0.0, 0.0);
        };
        const auto [ax, ay, az] = direction(a);
        const auto [bx, by, bz] = direction(b);
        return -(ax * bx + ay * by + az * bz);
    }

    void Join(const std::vector<std::size_t>& ends)
    {
        if (ends.size() == 2)
        {
            Link(ends[0], ends[1]);
            return;
        }
        for (std::size_t i = 0; i < ends.size() && ends.size() <= kMostMeeting; ++i)
        {
            std::size_t best = kNone;
            double most = kStraight;
            for (std::size_t j = i + 1; j < ends.size() && m_next[ends[i]] == kNone; ++j)
            {
                const double straightness = m_next[ends[j]] == kNone ? Straightness(ends[i], ends[j]) : -1.0;
                if (straightness > most)
                {
                    most = straightness;
                    best = ends[j];
                }
            }
            if (best != kNone)
            {
                Link(ends[i], best);
            }
        }
    }

    void Link(std::size_t a, std::size_t b)
    {
        m_next[a] = b;
        m_next[b] = a;
    }

    const std::vector<FeatureEdge>& m_edges;
    std::vector<std::size_t> m_next; ///< by end: the end of another edge in the same place
};

} // namespace

std::vector<FeatureEdge> ChainEdges(const std::vector<FeatureEdge>& edges)
{
    return Chains(edges).Order();
}

} // namespace OV::Host::Detail
