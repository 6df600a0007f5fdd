#include "orvane_host/geometry/detail/BoxTree.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>

namespace OV::Host::Detail
{

namespace
{

constexpr std::size_t kLeafSize = 4;
constexpr std::size_t kBins = 16;
/// Below this, ranges are halved: 32 more levels then do for all that can be counted.
constexpr std::size_t kDeepestByCost = kDeepestBoxTree - 33;

constexpr Box kNothing = {{std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity(),
                           std::numeric_limits<double>::infinity()},
                          {-std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
                           -std::numeric_limits<double>::infinity()}};

void Widen(Box& box, const Box& other)
{
    for (int axis = 0; axis < 3; ++axis)
    {
        box.low[axis] = std::min(box.low[axis], other.low[axis]);
        box.high[axis] = std::max(box.high[axis], other.high[axis]);
    }
}

/// Half the surface, which the share of rays that meet a box goes by.
double AreaOf(const Box& box)
{
    const double x = box.high[0] - box.low[0];
    const double y = box.high[1] - box.low[1];
    const double z = box.high[2] - box.low[2];
    return x < 0.0 ? 0.0 : x * y + y * z + z * x;
}

double MiddleOf(const Box& box, std::size_t axis)
{
    const double middle = 0.5 * box.low[axis] + 0.5 * box.high[axis];
    // By numbers alone is there an order.
    return std::isfinite(middle) ? middle : 0.0;
}

/// Part of the order, on its way to become a branch.
struct Range
{
    std::uint32_t first;
    std::uint32_t count;
    std::uint32_t depth;
    std::uint32_t parent; ///< that it is the second child of; none for the root and first children
};

constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

/// Where a range is divided.
struct Cut
{
    std::size_t axis = 0;
    std::size_t bin = 0; ///< the first one of the upper part; 0 where the range is halved
    double low = 0.0;    ///< of the bins
    double scale = 0.0;

    std::size_t BinOf(const Box& box) const
    {
        // Where middles lie farther apart than numbers reach it is none.
        const double place = (MiddleOf(box, axis) - low) * scale;
        return place > 0.0 ? static_cast<std::size_t>(std::min(place, static_cast<double>(kBins - 1))) : 0;
    }
};

class Builder
{
public:
    Builder(const std::vector<Box>& boxes, std::vector<std::uint32_t>& order) : m_boxes(boxes), m_order(order) {}

    std::vector<BoxBranch> Build()
    {
        std::vector<BoxBranch> branches;
        std::vector<Range> waiting{{0, static_cast<std::uint32_t>(m_order.size()), 0, kNone}};
        while (!waiting.empty())
        {
            const Range range = waiting.back();
            waiting.pop_back();
            const auto self = static_cast<std::uint32_t>(branches.size());
            if (range.parent != kNone)
            {
                branches[range.parent].second = self;
            }
            branches.push_back({BoxOf(range), range.first, range.count, 0, 0});
            if (range.count <= kLeafSize)
            {
                continue;
            }
            const Cut cut = FindCut(range);
            const std::uint32_t below = Divide(range, cut);
            branches[self].count = 0;
            branches[self].axis = static_cast<std::uint32_t>(cut.axis);
            // The last in is the next out: the first child comes right after its parent.
            waiting.push_back({range.first + below, range.count - below, range.depth + 1, self});
            waiting.push_back({range.first, below, range.depth + 1, kNone});
        }
        return branches;
    }

private:
    Box BoxOf(const Range& range) const
    {
        Box box = kNothing;
        for (std::uint32_t i = range.first; i < range.first + range.count; ++i)
        {
            Widen(box, m_boxes[m_order[i]]);
        }
        return box;
    }

    /// The cut that lets a ray meet the fewest boxes, as far as areas tell.
    Cut FindCut(const Range& range) const
    {
        Box middles = kNothing;
        for (std::uint32_t i = range.first; i < range.first + range.count; ++i)
        {
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                const double middle = MiddleOf(m_boxes[m_order[i]], axis);
                middles.low[axis] = std::min(middles.low[axis], middle);
                middles.high[axis] = std::max(middles.high[axis], middle);
            }
        }
        Cut best;
        for (std::size_t axis = 1; axis < 3; ++axis)
        {
            const auto length = [&](std::size_t a) { return middles.high[a] - middles.low[a]; };
            best.axis = length(axis) > length(best.axis) ? axis : best.axis;
        }
        if (range.depth >= kDeepestByCost)
        {
            return best;
        }
        double least = std::numeric_limits<double>::infinity();
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            Cut cut;
            cut.axis = axis;
            cut.low = middles.low[axis];
            cut.scale = static_cast<double>(kBins) / (middles.high[axis] - middles.low[axis]);
            // Middles at one place, or so near to it that the scale is none.
            if (cut.scale < std::numeric_limits<double>::max())
            {
                TryCuts(range, cut, least, best);
            }
        }
        return best;
    }

    /// Tries the cuts between the bins of one axis.
    void TryCuts(const Range& range, Cut cut, double& least, Cut& best) const
    {
        std::array<Box, kBins> boxes;
        std::array<std::uint32_t, kBins> counts{};
        boxes.fill(kNothing);
        for (std::uint32_t i = range.first; i < range.first + range.count; ++i)
        {
            const Box& box = m_boxes[m_order[i]];
            const std::size_t bin = cut.BinOf(box);
            ++counts[bin];
            Widen(boxes[bin], box);
        }
        std::array<double, kBins> above{};
        Box box = kNothing;
        std::uint32_t count = 0;
        for (std::size_t bin = kBins - 1; bin > 0; --bin)
        {
            Widen(box, boxes[bin]);
            count += counts[bin];
            above[bin] = count * AreaOf(box);
        }
        box = kNothing;
        count = 0;
        for (std::size_t bin = 1; bin < kBins; ++bin)
        {
            Widen(box, boxes[bin - 1]);
            count += counts[bin - 1];
            const double cost = count * AreaOf(box) + above[bin];
            if (count > 0 && count < range.count && cost < least)
            {
                least = cost;
                best = cut;
                best.bin = bin;
            }
        }
    }

    /// Puts the lower part first.
    /// @return how many are in it: neither none nor all.
    std::uint32_t Divide(const Range& range, const Cut& cut)
    {
        const auto begin = m_order.begin() + range.first;
        const auto end = begin + range.count;
        if (cut.bin > 0)
        {
            const auto middle = std::partition(begin, end, [&](std::uint32_t number)
                                               { return cut.BinOf(m_boxes[number]) < cut.bin; });
            return static_cast<std::uint32_t>(middle - begin);
        }
        const std::uint32_t half = range.count / 2;
        std::nth_element(begin, begin + half, end,
                         [&](std::uint32_t left, std::uint32_t right)
                         { return MiddleOf(m_boxes[left], cut.axis) < MiddleOf(m_boxes[right], cut.axis); });
        return half;
    }

    const std::vector<Box>& m_boxes;
    std::vector<std::uint32_t>& m_order;
};

} // namespace

std::vector<BoxBranch> BuildBoxTree(const std::vector<Box>& boxes, std::vector<std::uint32_t>& order)
{
    order.resize(boxes.size());
    std::iota(order.begin(), order.end(), 0u);
    return boxes.empty() ? std::vector<BoxBranch>() : Builder(boxes, order).Build();
}

} // namespace OV::Host::Detail
