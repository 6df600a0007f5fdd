#include "orvane_host/import/detail/CoplanarFaces.h"

#include "orvane_host/geometry/detail/CoplanarOrder.h"
#include "orvane_host/import/detail/SurfaceParts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <tuple>
#include <utility>

namespace OV::Host
{

namespace
{

using Matrix4 = std::array<double, 16>;
using Point = std::array<double, 3>;

/// Of a long list of small surfaces nobody sees the order.
constexpr std::size_t kMostSolids = 1'000'000;

Matrix4 Product(const Matrix4& a, const double (&b)[16])
{
    Matrix4 product{};
    for (std::size_t row = 0; row < 4; ++row)
    {
        for (std::size_t column = 0; column < 4; ++column)
        {
            for (std::size_t i = 0; i < 4; ++i)
            {
                product[4 * row + column] += a[4 * row + i] * b[4 * i + column];
            }
        }
    }
    return product;
}

Point Moved(const Matrix4& m, const Point& p)
{
    Point result;
    for (std::size_t row = 0; row < 3; ++row)
    {
        result[row] = m[4 * row] * p[0] + m[4 * row + 1] * p[1] + m[4 * row + 2] * p[2] + m[4 * row + 3];
    }
    return result;
}

double DeterminantOf(const Matrix4& m)
{
    return m[0] * (m[5] * m[10] - m[6] * m[9]) - m[1] * (m[4] * m[10] - m[6] * m[8])
        + m[2] * (m[4] * m[9] - m[5] * m[8]);
}

bool IsFinite(const Detail::Box& box)
{
    return std::all_of(box.low, box.low + 3, [](double x) { return std::isfinite(x); })
        && std::all_of(box.high, box.high + 3, [](double x) { return std::isfinite(x); });
}

Detail::Box BoxAt(const Matrix4& place, const Detail::Box& box)
{
    Detail::Box result;
    std::fill(result.low, result.low + 3, std::numeric_limits<double>::infinity());
    std::fill(result.high, result.high + 3, -std::numeric_limits<double>::infinity());
    for (unsigned int corner = 0; corner < 8; ++corner)
    {
        const Point point = Moved(place, Point{(corner & 1) != 0 ? box.low[0] : box.high[0],
                                               (corner & 2) != 0 ? box.low[1] : box.high[1],
                                               (corner & 4) != 0 ? box.low[2] : box.high[2]});
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            result.low[axis] = std::min(result.low[axis], point[axis]);
            result.high[axis] = std::max(result.high[axis], point[axis]);
        }
    }
    return result;
}

void Widen(Detail::Box& box, double rim)
{
    for (int axis = 0; axis < 3; ++axis)
    {
        box.low[axis] -= rim;
        box.high[axis] += rim;
    }
}

/// A mesh at a node.
struct Placement
{
    std::size_t node;
    std::size_t slot; ///< in the node's list
    std::uint32_t mesh;
    std::size_t firstSolid = 0;
};

class Order
{
public:
    Order(ModelData& model, bool showsBacks) : m_model(model), m_showsBacks(showsBacks), m_parts(model.meshes.size()) {}

    void Run()
    {
        FindPlaces();
        Place();
        if (m_placements.empty() || !ListSolids())
        {
            return;
        }
        const auto faces = [this](std::uint32_t solid, const std::function<void(const Detail::FaceCorners&)>& take)
        { HandFaces(solid, take); };
        const Detail::CoplanarOrder order = Detail::FindCoplanarOrder(m_solids, faces, m_tolerance);
        if (!order.isComplete)
        {
            WarnOfSize();
            return;
        }
        m_model.coplanarPairs = order.pairs;
        Divide(order.ranks);
    }

private:
    void FindPlaces()
    {
        for (std::size_t i = 0; i < m_model.nodes.size(); ++i)
        {
            const NodeData& node = m_model.nodes[i];
            const bool hasParent = node.parent >= 0 && std::size_t(node.parent) < i;
            constexpr Matrix4 unmoved = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
            m_places.push_back(Product(hasParent ? m_places[std::size_t(node.parent)] : unmoved, node.local));
        }
    }

    /// Lists the meshes at their nodes, and finds what counts as one plane.
    void Place()
    {
        std::vector<std::optional<Detail::Box>> boxes(m_model.meshes.size());
        std::vector<std::size_t> lastNodes(m_model.meshes.size(), m_model.nodes.size());
        Detail::Box whole = {{1, 1, 1}, {-1, -1, -1}};
        double reach = 0.0;
        for (std::size_t node = 0; node < m_model.nodes.size(); ++node)
        {
            const std::vector<std::uint32_t>& meshes = m_model.nodes[node].meshes;
            for (std::size_t slot = 0; slot < meshes.size(); ++slot)
            {
                const std::uint32_t mesh = meshes[slot];
                if (mesh >= m_model.meshes.size() || m_model.meshes[mesh].kind != PrimitiveKind::Triangles
                    || std::exchange(lastNodes[mesh], node) == node)
                {
                    // Among others one that the node shows twice.
                    continue;
                }
                if (!boxes[mesh])
                {
                    boxes[mesh] = BoxOfUsable(m_model.meshes[mesh]);
                }
                const Detail::Box box = BoxAt(m_places[node], *boxes[mesh]);
                if (boxes[mesh]->low[0] > boxes[mesh]->high[0] || !IsFinite(box))
                {
                    continue;
                }
                m_placements.push_back({node, slot, mesh});
                const bool isFirst = m_placements.size() == 1;
                for (int axis = 0; axis < 3; ++axis)
                {
                    whole.low[axis] = isFirst ? box.low[axis] : std::min(whole.low[axis], box.low[axis]);
                    whole.high[axis] = isFirst ? box.high[axis] : std::max(whole.high[axis], box.high[axis]);
                    reach = std::max({reach, std::abs(boxes[mesh]->low[axis]) * ScaleAt(node),
                                      std::abs(boxes[mesh]->high[axis]) * ScaleAt(node)});
                }
            }
        }
        double size = 0.0;
        for (int axis = 0; axis < 3; ++axis)
        {
            size = std::max(size, whole.high[axis] - whole.low[axis]);
        }
        // A few steps of the coordinates as the file has them, which count from the origin of each mesh.
        constexpr double least = 1e-6;
        constexpr double most = 1e-4;
        constexpr double steps = 1.0 / (1 << 21);
        m_tolerance = std::clamp(steps * reach, least * size, most * size);
    }

    double ScaleAt(std::size_t node) const { return std::cbrt(std::abs(DeterminantOf(m_places[node]))); }

    /// What overlaps itself in one colour looks the same whichever part is seen.
    bool IsPlain(const MeshData& mesh) const
    {
        return mesh.colors.IsEmpty()
            && (mesh.material >= m_model.materials.size() || m_model.materials[mesh.material].texture.IsNone());
    }

    /// @return false where there is nothing to put in order, or too much.
    bool ListSolids()
    {
        const bool isOne = m_placements.size() == 1;
        if (isOne && IsPlain(m_model.meshes[m_placements.front().mesh]))
        {
            return false;
        }
        std::uint32_t family = 0;
        for (Placement& placement : m_placements)
        {
            const MeshData& mesh = m_model.meshes[placement.mesh];
            std::optional<SurfaceParts>& parts = m_parts[placement.mesh];
            if (!parts)
            {
                parts = FindSurfaceParts(mesh);
            }
            placement.firstSolid = m_solids.size();
            if (m_solids.size() + parts->parts.size() > kMostSolids)
            {
                WarnOfSize();
                return false;
            }
            const bool isTwoSided =
                mesh.material < m_model.materials.size() && m_model.materials[mesh.material].isTwoSided;
            const bool isPlain = IsPlain(mesh);
            for (const SurfacePart& part : parts->parts)
            {
                Detail::PlacedSolid solid;
                solid.box = BoxAt(m_places[placement.node], part.box);
                Widen(solid.box, m_tolerance);
                solid.thickness = part.thickness * ScaleAt(placement.node);
                // Those of what is closed are seen by nobody.
                solid.showsBacks = isTwoSided || (m_showsBacks && solid.thickness <= 0.0);
                solid.family = family;
                family += isPlain ? 0 : 1;
                m_solids.push_back(solid);
            }
            ++family;
        }
        return true;
    }

    void HandFaces(std::uint32_t solid, const std::function<void(const Detail::FaceCorners&)>& take) const
    {
        const auto above = std::upper_bound(m_placements.begin(), m_placements.end(), std::size_t(solid),
                                            [](std::size_t number, const Placement& placement)
                                            { return number < placement.firstSolid; });
        const Placement& placement = *(above - 1);
        const MeshData& mesh = m_model.meshes[placement.mesh];
        const SurfaceParts& parts = *m_parts[placement.mesh];
        const Matrix4& place = m_places[placement.node];
        const bool isMirror = DeterminantOf(place) < 0.0;
        for (const std::uint32_t triangle : parts.parts[solid - placement.firstSolid].triangles)
        {
            Detail::FaceCorners corners;
            for (std::size_t i = 0; i < 3; ++i)
            {
                const std::uint64_t vertex = mesh.indices[3 * std::uint64_t(triangle) + i];
                corners[i] = Moved(place, Point{mesh.positions[3 * vertex], mesh.positions[3 * vertex + 1],
                                                mesh.positions[3 * vertex + 2]});
            }
            if (isMirror)
            {
                std::swap(corners[1], corners[2]);
            }
            take(corners);
        }
    }

    /// Gives nodes, in place of meshes of which something stands back, parts that stand back as one.
    void Divide(const std::vector<std::uint8_t>& ranks)
    {
        std::map<std::pair<std::size_t, std::size_t>, std::vector<std::uint32_t>> pieces;
        for (const Placement& placement : m_placements)
        {
            const std::size_t count = m_parts[placement.mesh]->parts.size();
            std::map<std::uint8_t, std::vector<std::uint32_t>> byRank;
            for (std::size_t part = 0; part < count; ++part)
            {
                byRank[ranks[placement.firstSolid + part]].push_back(static_cast<std::uint32_t>(part));
            }
            if (byRank.size() == 1 && byRank.begin()->first == 0)
            {
                continue;
            }
            for (const auto& [rank, parts] : byRank)
            {
                pieces[{placement.node, placement.slot}].push_back(PieceOf(placement.mesh, rank, parts));
            }
        }
        for (auto piece = pieces.begin(); piece != pieces.end();)
        {
            const std::size_t node = piece->first.first;
            std::vector<std::uint32_t>& meshes = m_model.nodes[node].meshes;
            std::vector<std::uint32_t> divided;
            for (std::size_t slot = 0; slot < meshes.size(); ++slot)
            {
                if (piece == pieces.end() || piece->first != std::pair(node, slot))
                {
                    divided.push_back(meshes[slot]);
                    continue;
                }
                divided.insert(divided.end(), piece->second.begin(), piece->second.end());
                ++piece;
            }
            meshes = std::move(divided);
        }
        CountDropped();
    }

    std::uint32_t PieceOf(std::uint32_t mesh, std::uint8_t rank, const std::vector<std::uint32_t>& parts)
    {
        const auto [known, isNew] = m_pieces.try_emplace({mesh, rank, parts}, 0);
        if (isNew)
        {
            known->second = static_cast<std::uint32_t>(m_model.meshes.size());
            m_model.meshes.push_back(ExtractParts(m_model.meshes[mesh], *m_parts[mesh], parts, m_model.keepAlive));
            m_model.meshes.back().pieceOf = static_cast<std::int32_t>(mesh);
            m_model.meshes.back().standsBack = rank;
        }
        return known->second;
    }

    /// Pieces have no triangles that are of no use, which the mesh would tell of where it is shown.
    void CountDropped()
    {
        std::vector<bool> isShown(m_model.meshes.size());
        for (const NodeData& node : m_model.nodes)
        {
            for (const std::uint32_t mesh : node.meshes)
            {
                if (mesh < isShown.size())
                {
                    isShown[mesh] = true;
                }
            }
        }
        for (std::size_t mesh = 0; mesh < m_parts.size(); ++mesh)
        {
            if (!isShown[mesh] && m_parts[mesh])
            {
                m_model.droppedTriangles += m_parts[mesh]->dropped;
            }
        }
    }

    void WarnOfSize()
    {
        m_model.warnings.push_back("Faces in one plane were not put in order: there is too much to compare.");
    }

    ModelData& m_model;
    const bool m_showsBacks;
    std::vector<Matrix4> m_places;
    std::vector<Placement> m_placements;
    std::vector<std::optional<SurfaceParts>> m_parts; ///< of each mesh of the file
    std::vector<Detail::PlacedSolid> m_solids;
    std::map<std::tuple<std::uint32_t, std::uint8_t, std::vector<std::uint32_t>>, std::uint32_t> m_pieces;
    double m_tolerance = 0.0;
};

} // namespace

void OrderCoplanarFaces(ModelData& model, bool showsBacks)
{
    Order(model, showsBacks).Run();
}

} // namespace OV::Host
