#include "orvane_host/geometry/detail/EdgeFinder.h"

#include "orvane_host/geometry/detail/PointTree.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <tuple>
#include <utility>

namespace OV::Host::Detail
{

namespace
{

using Direction = std::array<double, 3>;

/// Cosines closer than this are the same: what is flat but for rounding stays flat.
constexpr double kCosineTolerance = 1e-6;

/// Pieces that open sides are cut into, besides so many for each. More are those of thousands of sides that lie
/// in a few lines, each with the ends of thousands of others on it, which would take minutes and all memory.
constexpr std::size_t kMostPieces = 1'000'000;
constexpr std::size_t kMostPiecesOfASide = 8;

constexpr double kPi = 3.14159265358979323846;

Direction Between(const Vector& from, const Vector& to)
{
    return {double(to.x) - from.x, double(to.y) - from.y, double(to.z) - from.z};
}

double Dot(const Direction& a, const Direction& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

double Length(const Direction& a)
{
    return std::sqrt(Dot(a, a));
}

/// What is left of a direction across another one.
Direction Across(const Direction& a, const Direction& along)
{
    const double share = Dot(a, along) / Dot(along, along);
    return {a[0] - share * along[0], a[1] - share * along[1], a[2] - share * along[2]};
}

template <class Item>
bool SharesPoints(const Item& a, const Item& b)
{
    return a.low == b.low && a.high == b.high;
}

template <class Item>
bool ComesFirst(const Item& a, const Item& b)
{
    return std::tie(a.low, a.high, a.order, a.face) < std::tie(b.low, b.high, b.order, b.face);
}

/// Calls visit with the ends of each range of sorted items that have the same two points.
template <class Item, class Visitor>
void ForEachGroup(const std::vector<Item>& items, Visitor visit)
{
    const Item* first = items.data();
    const Item* const last = first + items.size();
    while (first != last)
    {
        const Item* const end =
            std::find_if(first, last, [first](const Item& item) { return !SharesPoints(item, *first); });
        visit(first, end);
        first = end;
    }
}

} // namespace

EdgeFinder::EdgeFinder(const VertexWelder& welded, float creaseDegrees) :
    m_welded(welded), m_cosine(std::cos(std::clamp(double(creaseDegrees), 0.0, 180.0) * kPi / 180.0))
{
}

std::vector<FeatureEdge> EdgeFinder::Find()
{
    CollectFaces();
    CollectSides();
    JudgeSides();
    SplitOpenSides();
    JudgePieces();
    return std::move(m_found);
}

void EdgeFinder::CollectFaces()
{
    for (const WeldedTriangle& triangle : m_welded.Triangles())
    {
        // What is thinner than the welding has no direction; its neighbours meet in its place.
        if (Height(triangle) > m_welded.Tolerance())
        {
            m_faces.push_back(triangle);
        }
    }
}

double EdgeFinder::Height(const WeldedTriangle& triangle) const
{
    const std::vector<Vector>& points = m_welded.Points();
    const Direction a = Between(points[triangle[0]], points[triangle[1]]);
    const Direction b = Between(points[triangle[1]], points[triangle[2]]);
    const Direction c = Between(points[triangle[2]], points[triangle[0]]);
    const Direction& longest = std::max({a, b, c}, [](const Direction& left, const Direction& right) {
        return Dot(left, left) < Dot(right, right);
    });
    // The part of another side across the longest.
    const Direction& other = longest == a ? b : a;
    return Length(Across(other, longest));
}

void EdgeFinder::CollectSides()
{
    m_sides.reserve(3 * m_faces.size());
    for (std::size_t face = 0; face < m_faces.size(); ++face)
    {
        for (std::size_t corner = 0; corner < 3; ++corner)
        {
            const std::uint32_t start = m_faces[face][corner];
            const std::uint32_t end = m_faces[face][(corner + 1) % 3];
            const auto [low, high] = std::minmax(start, end);
            m_sides.push_back({low, high, static_cast<std::uint32_t>(face), 0, start < end});
        }
    }
    std::sort(m_sides.begin(), m_sides.end(), ComesFirst<Side>);
}

void EdgeFinder::JudgeSides()
{
    ForEachGroup(m_sides, [this](const Side* first, const Side* last) {
        switch (Judge(first, last))
        {
        case Meeting::Open: m_open.push_back(*first); break;
        case Meeting::Sharp: Emit(first->low, first->high); break;
        case Meeting::Smooth: break;
        }
    });
}

EdgeFinder::Meeting EdgeFinder::Judge(const Side* first, const Side* last)
{
    CollectSheets(first, last);
    if (m_sheets.size() == 1)
    {
        return Meeting::Open;
    }
    // Two faces back to back are the wall between solids that touch, which nobody sees; unless
    // they are a sheet with two sides that ends here.
    const auto isInner = [](const Sheet& sheet) { return sheet.hasRising && sheet.hasFalling; };
    const auto inner = std::stable_partition(m_sheets.begin(), m_sheets.end(), std::not_fn(isInner));
    if (inner - m_sheets.begin() >= 2)
    {
        m_sheets.erase(inner, m_sheets.end());
    }

    // Smooth is where all lie to one side or straight to the other.
    const double limit = m_cosine - kCosineTolerance;
    bool hasOpposite = false;
    for (std::size_t i = 1; i < m_sheets.size(); ++i)
    {
        const double cosine = Dot(m_sheets[0].inward, m_sheets[i].inward);
        const bool isOpposite = -cosine >= limit;
        if (!isOpposite && cosine < std::max(limit, 0.0))
        {
            return Meeting::Sharp;
        }
        hasOpposite = hasOpposite || isOpposite;
    }
    return hasOpposite ? Meeting::Smooth : Meeting::Sharp;
}

void EdgeFinder::CollectSheets(const Side* first, const Side* last)
{
    m_sheets.clear();
    for (const Side* side = first; side != last; ++side)
    {
        const Direction inward = Inward(*side);
        auto sheet = std::find_if(m_sheets.begin(), m_sheets.end(), [&](const Sheet& known) {
            return Dot(known.inward, inward) > 1.0 - kCosineTolerance;
        });
        if (sheet == m_sheets.end())
        {
            sheet = m_sheets.insert(sheet, {inward, false, false});
        }
        (side->rising ? sheet->hasRising : sheet->hasFalling) = true;
    }
}

std::array<double, 3> EdgeFinder::Inward(const Side& side) const
{
    // A piece looks the same way as the side that it is a piece of.
    const Side& whole = side.order == 0 ? side : m_open[m_origins[side.order - 1].open];
    const std::vector<Vector>& points = m_welded.Points();
    const WeldedTriangle& face = m_faces[side.face];
    const std::uint32_t third = *std::find_if(
        face.begin(), face.end(), [&](std::uint32_t point) { return point != whole.low && point != whole.high; });
    Direction inward =
        Across(Between(points[whole.low], points[third]), Between(points[whole.low], points[whole.high]));
    const double length = Length(inward);
    for (double& value : inward)
    {
        value /= length;
    }
    return inward;
}

void EdgeFinder::SplitOpenSides()
{
    std::vector<std::uint32_t> ends;
    for (const Side& side : m_open)
    {
        ends.push_back(side.low);
        ends.push_back(side.high);
    }
    std::sort(ends.begin(), ends.end());
    ends.erase(std::unique(ends.begin(), ends.end()), ends.end());
    const PointTree tree(m_welded.Points(), std::move(ends));

    std::vector<PointTree::Hit> hits;
    for (std::size_t open = 0; open < m_open.size(); ++open)
    {
        const Side& side = m_open[open];
        hits.clear();
        if (m_pieces.size() < kMostPieces + kMostPiecesOfASide * m_open.size())
        {
            tree.FindInside(side.low, side.high, m_welded.Tolerance(), hits);
        }
        hits.push_back({1.0, side.high});
        std::uint32_t start = side.low;
        for (const PointTree::Hit& hit : hits)
        {
            m_origins.push_back({static_cast<std::uint32_t>(open), start, hit.point});
            const auto [low, high] = std::minmax(start, hit.point);
            const bool rising = side.rising == (start < hit.point);
            m_pieces.push_back({low, high, side.face, static_cast<std::uint32_t>(m_origins.size()), rising});
            start = hit.point;
        }
    }
}

void EdgeFinder::JudgePieces()
{
    std::sort(m_pieces.begin(), m_pieces.end(), ComesFirst<Side>);
    std::vector<bool> kept(m_origins.size(), false);
    ForEachGroup(m_pieces, [&](const Side* first, const Side* last) {
        kept[first->order - 1] = Judge(first, last) != Meeting::Smooth && !IsEmitted(*first);
    });
    EmitPieces(kept);
}

bool EdgeFinder::IsEmitted(const Side& piece)
{
    const auto [first, last] =
        std::equal_range(m_sides.begin(), m_sides.end(), piece, [](const Side& a, const Side& b) {
            return std::tie(a.low, a.high) < std::tie(b.low, b.high);
        });
    return first != last && Judge(&*first, &*first + (last - first)) == Meeting::Sharp;
}

void EdgeFinder::EmitPieces(const std::vector<bool>& kept)
{
    for (std::size_t i = 0; i < m_origins.size(); ++i)
    {
        if (!kept[i])
        {
            continue;
        }
        const std::uint32_t start = m_origins[i].start;
        while (i + 1 < m_origins.size() && kept[i + 1] && m_origins[i + 1].open == m_origins[i].open)
        {
            ++i;
        }
        Emit(start, m_origins[i].end);
    }
}

void EdgeFinder::Emit(std::uint32_t start, std::uint32_t end)
{
    const std::vector<Vector>& points = m_welded.Points();
    m_found.push_back({points[start], points[end]});
}

} // namespace OV::Host::Detail
