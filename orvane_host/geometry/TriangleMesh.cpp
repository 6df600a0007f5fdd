#include "orvane_host/geometry/TriangleMesh.h"

#include "orvane/scene/RawMesh.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace OV::Host
{

namespace
{

using Source = TriangleMesh::Source;

constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();
/// Of one vertex: more would be a fan so fine that nobody sees its folds.
constexpr std::size_t kMostCopies = 16;

bool IsFinite(const Vector& v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

std::string FindNotFinite(const std::vector<Vector>& vectors, const char* name)
{
    const auto found = std::find_if_not(vectors.begin(), vectors.end(), IsFinite);
    return found == vectors.end() ? std::string()
                                  : std::string(name) + "[" + std::to_string(found - vectors.begin())
                                        + "] is not finite; every coordinate has to be";
}

std::string FindWrongCount(std::size_t count, std::size_t vertices, const char* name)
{
    return count == 0 || count == vertices
               ? std::string()
               : std::string(name) + " holds " + std::to_string(count) + "; there are "
                     + std::to_string(vertices) + " positions";
}

std::string FindTrouble(const Source& source)
{
    const std::size_t vertices = source.positions.size();
    if (vertices == 0 || source.indices.empty())
    {
        return vertices == 0 ? "positions is empty; a mesh has to have vertices"
                             : "triangles is empty; a mesh has to have some";
    }
    if (source.indices.size() % 3 != 0 || vertices >= kNone || source.indices.size() >= kNone)
    {
        return "triangles holds " + std::to_string(source.indices.size())
               + " indices; it has to be three for each triangle, fewer than 4294967295 in all";
    }
    for (const std::string& trouble :
         {FindWrongCount(source.normals.size(), vertices, "normals"),
          FindWrongCount(source.textureCoordinates.size(), vertices, "texture coordinates"),
          FindWrongCount(source.colors.size(), vertices, "colors"), FindNotFinite(source.positions, "positions"),
          FindNotFinite(source.normals, "normals")})
    {
        if (!trouble.empty())
        {
            return trouble;
        }
    }
    const auto beyond = std::find_if(source.indices.begin(), source.indices.end(),
                                     [&](std::uint32_t index) { return index >= vertices; });
    return beyond == source.indices.end()
               ? std::string()
               : "triangles[" + std::to_string((beyond - source.indices.begin()) / 3) + "] names vertex "
                     + std::to_string(*beyond) + "; there are " + std::to_string(vertices);
}

/// A direction in double: the square of a small triangle's sides is out of the range of float.
struct Direction
{
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;

    double Length() const { return std::hypot(x, y, z); }

    void Add(const Direction& other)
    {
        x += other.x;
        y += other.y;
        z += other.z;
    }
};

/// Of the length of twice the area.
Direction NormalOf(const Vector& a, const Vector& b, const Vector& c)
{
    const double ux = double(b.x) - a.x, uy = double(b.y) - a.y, uz = double(b.z) - a.z;
    const double vx = double(c.x) - a.x, vy = double(c.y) - a.y, vz = double(c.z) - a.z;
    return {uy * vz - uz * vy, uz * vx - ux * vz, ux * vy - uy * vx};
}

Vector UnitOf(const Direction& sum)
{
    const double length = sum.Length();
    if (!(length > 0.0))
    {
        return Vector(0.0f, 1.0f, 0.0f);
    }
    return Vector(static_cast<float>(sum.x / length), static_cast<float>(sum.y / length),
                  static_cast<float>(sum.z / length));
}

/// Makes normals, and several vertices of one where its triangles bend.
class NormalMaker
{
public:
    NormalMaker(Source& source, float creaseDegrees) :
        m_source(source), m_next(source.positions.size(), kNone), m_sums(source.positions.size()),
        m_first(source.positions.size()), m_isUsed(source.positions.size(), false),
        m_bend(std::cos(static_cast<double>(creaseDegrees) * 3.14159265358979323846 / 180.0))
    {
    }

    void Run()
    {
        for (std::size_t i = 0; i < m_source.indices.size(); i += 3)
        {
            std::uint32_t* const corners = &m_source.indices[i];
            const Direction normal = NormalOf(m_source.positions[corners[0]], m_source.positions[corners[1]],
                                              m_source.positions[corners[2]]);
            for (int corner = 0; corner < 3; ++corner)
            {
                corners[corner] = VertexFor(corners[corner], normal);
            }
        }
        m_source.normals.reserve(m_sums.size());
        for (const Direction& sum : m_sums)
        {
            m_source.normals.push_back(UnitOf(sum));
        }
    }

private:
    /// The copy of a vertex whose triangles lie as this one does.
    std::uint32_t VertexFor(std::uint32_t vertex, const Direction& normal)
    {
        std::uint32_t last = vertex;
        std::size_t copies = 1;
        for (std::uint32_t at = vertex; at != kNone; at = m_next[at], ++copies)
        {
            if (!m_isUsed[at])
            {
                m_isUsed[at] = normal.Length() > 0.0;
                m_first[at] = normal;
                m_sums[at] = normal;
                return at;
            }
            if (IsAlike(m_first[at], normal) || copies == kMostCopies)
            {
                m_sums[at].Add(normal);
                return at;
            }
            last = at;
        }
        return AddCopy(vertex, last, normal);
    }

    bool IsAlike(const Direction& a, const Direction& b) const
    {
        return a.x * b.x + a.y * b.y + a.z * b.z >= m_bend * a.Length() * b.Length();
    }

    std::uint32_t AddCopy(std::uint32_t vertex, std::uint32_t last, const Direction& normal)
    {
        const auto copy = static_cast<std::uint32_t>(m_source.positions.size());
        const Vector position = m_source.positions[vertex];
        m_source.positions.push_back(position);
        if (!m_source.textureCoordinates.empty())
        {
            const TextureCoordinate coordinate = m_source.textureCoordinates[vertex];
            m_source.textureCoordinates.push_back(coordinate);
        }
        if (!m_source.colors.empty())
        {
            const Color color = m_source.colors[vertex];
            m_source.colors.push_back(color);
        }
        m_next[last] = copy;
        m_next.push_back(kNone);
        m_sums.push_back(normal);
        m_first.push_back(normal);
        m_isUsed.push_back(true);
        return copy;
    }

    Source& m_source;
    std::vector<std::uint32_t> m_next; ///< the next copy of a vertex
    std::vector<Direction> m_sums;
    std::vector<Direction> m_first; ///< by which a triangle is held alike
    std::vector<bool> m_isUsed;
    double m_bend; ///< cosine of the crease
};

std::shared_ptr<RawMesh> Finish(Source&& part, std::vector<unsigned short>&& indices)
{
    auto geometry = std::make_shared<RawMesh>();
    geometry->SetPositionBuffer(std::move(part.positions));
    geometry->SetNormalBuffer(std::move(part.normals));
    if (!part.textureCoordinates.empty())
    {
        geometry->SetTextureBuffer(std::move(part.textureCoordinates));
    }
    if (!part.colors.empty())
    {
        geometry->SetColorBuffer(std::move(part.colors));
    }
    geometry->SetIndices(std::move(indices));
    geometry->EndDescription(true);
    return geometry;
}

/// Cuts the triangles, in their order, into parts that 16-bit indices have room for.
class Splitter
{
public:
    explicit Splitter(const Source& source) : m_source(source), m_places(source.positions.size(), kNone) {}

    std::vector<std::shared_ptr<RawMesh>> Run()
    {
        for (std::size_t i = 0; i < m_source.indices.size(); i += 3)
        {
            // A triangle may bring three more.
            if (m_part.positions.size() + 3 > TriangleMesh::MostVertices)
            {
                EndPart();
            }
            for (std::size_t corner = i; corner < i + 3; ++corner)
            {
                m_indices.push_back(PlaceOf(m_source.indices[corner]));
            }
        }
        EndPart();
        return std::move(m_parts);
    }

private:
    unsigned short PlaceOf(std::uint32_t vertex)
    {
        std::uint32_t& place = m_places[vertex];
        if (place == kNone)
        {
            place = static_cast<std::uint32_t>(m_part.positions.size());
            m_taken.push_back(vertex);
            m_part.positions.push_back(m_source.positions[vertex]);
            m_part.normals.push_back(m_source.normals[vertex]);
            if (!m_source.textureCoordinates.empty())
            {
                m_part.textureCoordinates.push_back(m_source.textureCoordinates[vertex]);
            }
            if (!m_source.colors.empty())
            {
                m_part.colors.push_back(m_source.colors[vertex]);
            }
        }
        return static_cast<unsigned short>(place);
    }

    void EndPart()
    {
        m_parts.push_back(Finish(std::move(m_part), std::move(m_indices)));
        for (const std::uint32_t vertex : m_taken)
        {
            m_places[vertex] = kNone;
        }
        m_taken.clear();
        m_part = Source();
        m_indices.clear();
    }

    const Source& m_source;
    std::vector<std::uint32_t> m_places; ///< of the vertices in the part; kNone for others
    std::vector<std::uint32_t> m_taken;
    Source m_part;
    std::vector<unsigned short> m_indices;
    std::vector<std::shared_ptr<RawMesh>> m_parts;
};

} // namespace

std::vector<std::shared_ptr<RawMesh>> TriangleMesh::Make(Source&& source, std::string& error, float creaseDegrees)
{
    const std::string trouble = FindTrouble(source);
    if (!trouble.empty())
    {
        error = trouble;
        return {};
    }
    if (source.normals.empty())
    {
        NormalMaker(source, std::isfinite(creaseDegrees) ? creaseDegrees : UsualCrease).Run();
    }
    if (source.positions.size() <= MostVertices)
    {
        std::vector<unsigned short> indices(source.indices.begin(), source.indices.end());
        return {Finish(std::move(source), std::move(indices))};
    }
    return Splitter(source).Run();
}

} // namespace OV::Host
