#include "orvane_host/import/detail/SurfaceParts.h"

#include "orvane_host/import/detail/MeshSplitter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <unordered_map>

namespace OV::Host
{

namespace
{

constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

using Point = std::array<double, 3>;

Point PointAt(const MeshData& mesh, std::uint64_t vertex)
{
    return {mesh.positions[3 * vertex], mesh.positions[3 * vertex + 1], mesh.positions[3 * vertex + 2]};
}

bool IsUsable(const MeshData& mesh, std::uint64_t triangle)
{
    for (std::uint64_t i = 3 * triangle; i < 3 * triangle + 3; ++i)
    {
        const std::uint64_t vertex = mesh.indices[i];
        if (3 * vertex + 2 >= mesh.positions.count)
        {
            return false;
        }
        for (std::uint64_t part = 3 * vertex; part < 3 * vertex + 3; ++part)
        {
            if (!(std::fabs(mesh.positions[part]) <= kMaxCoordinate))
            {
                return false;
            }
        }
    }
    return true;
}

Detail::Box Nothing()
{
    Detail::Box box;
    std::fill(box.low, box.low + 3, std::numeric_limits<double>::infinity());
    std::fill(box.high, box.high + 3, -std::numeric_limits<double>::infinity());
    return box;
}

void Widen(Detail::Box& box, const Point& point)
{
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        box.low[axis] = std::min(box.low[axis], point[axis]);
        box.high[axis] = std::max(box.high[axis], point[axis]);
    }
}

/// Three floats by their bits, but for the sign of a zero.
struct PositionKey
{
    std::array<std::uint32_t, 3> bits{};

    explicit PositionKey(const float* position)
    {
        for (std::size_t i = 0; i < 3; ++i)
        {
            const float value = position[i] + 0.0f;
            std::memcpy(&bits[i], &value, sizeof(value));
        }
    }

    bool operator==(const PositionKey& other) const { return bits == other.bits; }
};

struct PositionHash
{
    std::size_t operator()(const PositionKey& key) const
    {
        std::uint64_t hash = 0;
        for (const std::uint32_t bits : key.bits)
        {
            hash = (hash ^ bits) * 0x9E3779B97F4A7C15u;
            hash ^= hash >> 29;
        }
        return static_cast<std::size_t>(hash);
    }
};

/// Joins what hangs together.
class Groups
{
public:
    explicit Groups(std::size_t count) : m_parents(count) { std::iota(m_parents.begin(), m_parents.end(), 0u); }

    std::uint32_t Of(std::uint32_t element)
    {
        while (m_parents[element] != element)
        {
            m_parents[element] = m_parents[m_parents[element]];
            element = m_parents[element];
        }
        return element;
    }

    void Join(std::uint32_t a, std::uint32_t b) { m_parents[Of(a)] = Of(b); }

private:
    std::vector<std::uint32_t> m_parents;
};

/// Sums over triangles, from which the rest comes.
struct Measure
{
    Point rim{}; ///< of what is closed 0
    double area = 0.0;
    double volume = 0.0;

    void Add(const Point& a, const Point& b, const Point& c, const Point& origin)
    {
        Point u;
        Point v;
        Point from;
        for (std::size_t i = 0; i < 3; ++i)
        {
            u[i] = b[i] - a[i];
            v[i] = c[i] - a[i];
            from[i] = a[i] - origin[i];
        }
        const Point cross = {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
        for (std::size_t i = 0; i < 3; ++i)
        {
            rim[i] += cross[i] / 2.0;
        }
        area += std::sqrt(cross[0] * cross[0] + cross[1] * cross[1] + cross[2] * cross[2]) / 2.0;
        volume += (cross[0] * from[0] + cross[1] * from[1] + cross[2] * from[2]) / 6.0;
    }

    bool IsClosed() const
    {
        constexpr double rounding = 1e-4;
        return std::sqrt(rim[0] * rim[0] + rim[1] * rim[1] + rim[2] * rim[2]) <= rounding * area;
    }
};

Measure MeasureOf(const MeshData& mesh, const SurfacePart& part)
{
    Measure measure;
    Point origin{};
    for (std::size_t i = 0; i < part.triangles.size(); ++i)
    {
        const std::uint32_t* corners = mesh.indices.data + 3 * std::uint64_t(part.triangles[i]);
        origin = i == 0 ? PointAt(mesh, corners[0]) : origin;
        measure.Add(PointAt(mesh, corners[0]), PointAt(mesh, corners[1]), PointAt(mesh, corners[2]), origin);
    }
    return measure;
}

double ThicknessOf(const Measure& measure)
{
    return measure.IsClosed() && measure.area > 0.0 ? 2.0 * std::abs(measure.volume) / measure.area : 0.0;
}

void Finish(const MeshData& mesh, SurfacePart& part)
{
    part.box = Nothing();
    for (const std::uint32_t triangle : part.triangles)
    {
        for (std::uint64_t i = 3 * std::uint64_t(triangle); i < 3 * std::uint64_t(triangle) + 3; ++i)
        {
            Widen(part.box, PointAt(mesh, mesh.indices[i]));
        }
    }
    part.thickness = ThicknessOf(MeasureOf(mesh, part));
}

/// Makes one of the parts with rims, where that has none.
void JoinOpenParts(const MeshData& mesh, std::vector<SurfacePart>& parts)
{
    SurfacePart joined;
    std::vector<SurfacePart> closed;
    std::size_t open = 0;
    for (const SurfacePart& part : parts)
    {
        if (MeasureOf(mesh, part).IsClosed())
        {
            closed.push_back(part);
            continue;
        }
        ++open;
        joined.triangles.insert(joined.triangles.end(), part.triangles.begin(), part.triangles.end());
    }
    std::sort(joined.triangles.begin(), joined.triangles.end());
    if (open < 2 || !MeasureOf(mesh, joined).IsClosed())
    {
        return;
    }
    parts = std::move(closed);
    const auto place = std::find_if(parts.begin(), parts.end(), [&](const SurfacePart& part)
                                    { return part.triangles.front() > joined.triangles.front(); });
    parts.insert(place, std::move(joined));
}

void CopyOf(const ArrayView<float>& from, const std::vector<std::uint32_t>& vertices, std::uint64_t width,
            std::vector<float>& to)
{
    if (from.IsEmpty())
    {
        return;
    }
    to.reserve(vertices.size() * width);
    for (const std::uint32_t vertex : vertices)
    {
        for (std::uint64_t i = width * vertex; i < width * (vertex + std::uint64_t(1)); ++i)
        {
            // A short array is of no use to any of its vertices; not a number says so.
            to.push_back(i < from.count ? from[i] : std::numeric_limits<float>::quiet_NaN());
        }
    }
}

} // namespace

Detail::Box BoxOfUsable(const MeshData& mesh)
{
    Detail::Box box = Nothing();
    for (std::uint64_t triangle = 0; 3 * triangle + 2 < mesh.indices.count; ++triangle)
    {
        if (IsUsable(mesh, triangle))
        {
            for (std::uint64_t i = 3 * triangle; i < 3 * triangle + 3; ++i)
            {
                Widen(box, PointAt(mesh, mesh.indices[i]));
            }
        }
    }
    return box;
}

SurfaceParts FindSurfaceParts(const MeshData& mesh)
{
    const auto count = static_cast<std::uint32_t>(mesh.positions.count / 3);
    std::unordered_map<PositionKey, std::uint32_t, PositionHash> firsts;
    firsts.reserve(count);
    std::vector<std::uint32_t> welded(count);
    for (std::uint32_t vertex = 0; vertex < count; ++vertex)
    {
        welded[vertex] = firsts.try_emplace(PositionKey(mesh.positions.data + 3 * std::uint64_t(vertex)), vertex).first->second;
    }
    Groups groups(count);
    const auto triangles = static_cast<std::uint32_t>(mesh.indices.count / 3);
    std::vector<bool> isUsed(triangles);
    for (std::uint32_t triangle = 0; triangle < triangles; ++triangle)
    {
        isUsed[triangle] = IsUsable(mesh, triangle);
        if (isUsed[triangle])
        {
            const std::uint32_t* corners = mesh.indices.data + 3 * std::uint64_t(triangle);
            groups.Join(welded[corners[0]], welded[corners[1]]);
            groups.Join(welded[corners[1]], welded[corners[2]]);
        }
    }
    SurfaceParts result;
    std::vector<std::uint32_t> partOf(count, kNone);
    for (std::uint32_t triangle = 0; triangle < triangles; ++triangle)
    {
        if (!isUsed[triangle])
        {
            ++result.dropped;
            continue;
        }
        std::uint32_t& part = partOf[groups.Of(welded[mesh.indices[3 * std::uint64_t(triangle)]])];
        if (part == kNone)
        {
            part = static_cast<std::uint32_t>(result.parts.size());
            result.parts.emplace_back();
        }
        result.parts[part].triangles.push_back(triangle);
    }
    JoinOpenParts(mesh, result.parts);
    for (SurfacePart& part : result.parts)
    {
        Finish(mesh, part);
    }
    return result;
}

MeshData ExtractParts(const MeshData& mesh, const SurfaceParts& all, const std::vector<std::uint32_t>& parts,
                      std::vector<std::shared_ptr<const void>>& keepAlive)
{
    struct Arrays
    {
        std::vector<float> positions;
        std::vector<float> normals;
        std::vector<float> texCoords;
        std::vector<float> colors;
        std::vector<std::uint32_t> indices;
    };
    const auto arrays = std::make_shared<Arrays>();
    std::vector<std::uint32_t> triangles;
    for (const std::uint32_t part : parts)
    {
        triangles.insert(triangles.end(), all.parts[part].triangles.begin(), all.parts[part].triangles.end());
    }
    std::sort(triangles.begin(), triangles.end());
    std::unordered_map<std::uint32_t, std::uint32_t> numbers;
    std::vector<std::uint32_t> vertices;
    for (const std::uint32_t triangle : triangles)
    {
        for (std::uint64_t i = 3 * std::uint64_t(triangle); i < 3 * std::uint64_t(triangle) + 3; ++i)
        {
            const auto [number, isNew] =
                numbers.try_emplace(mesh.indices[i], static_cast<std::uint32_t>(vertices.size()));
            if (isNew)
            {
                vertices.push_back(mesh.indices[i]);
            }
            arrays->indices.push_back(number->second);
        }
    }
    CopyOf(mesh.positions, vertices, 3, arrays->positions);
    CopyOf(mesh.normals, vertices, 3, arrays->normals);
    CopyOf(mesh.texCoords, vertices, 2, arrays->texCoords);
    CopyOf(mesh.colors, vertices, 4, arrays->colors);
    MeshData piece;
    piece.name = mesh.name;
    piece.material = mesh.material;
    piece.kind = mesh.kind;
    piece.positions = {arrays->positions.data(), arrays->positions.size()};
    piece.normals = {arrays->normals.data(), arrays->normals.size()};
    piece.texCoords = {arrays->texCoords.data(), arrays->texCoords.size()};
    piece.colors = {arrays->colors.data(), arrays->colors.size()};
    piece.indices = {arrays->indices.data(), arrays->indices.size()};
    keepAlive.push_back(arrays);
    return piece;
}

} // namespace OV::Host
