#include "orvane_host/import/detail/MeshSplitter.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace OV::Host
{

namespace
{

constexpr std::uint32_t kMaxVertices = 65'536;
constexpr std::uint32_t kUnused = std::numeric_limits<std::uint32_t>::max();

bool IsUsable(float x)
{
    return std::fabs(x) <= kMaxCoordinate;
}

Vector VectorAt(const ArrayView<float>& array, std::uint64_t vertex)
{
    return Vector(array[3 * vertex], array[3 * vertex + 1], array[3 * vertex + 2]);
}

bool IsNormal(const Vector& v)
{
    const float squared = v.MagnitudeSquared();
    return squared > 1e-12f && squared < 1e12f;
}

float Finite(float x, float otherwise)
{
    return std::isfinite(x) ? x : otherwise;
}

/// The mesh with what of it can be trusted.
class Source
{
public:
    explicit Source(const MeshData& mesh) : m_mesh(mesh)
    {
        const std::uint64_t count = std::min<std::uint64_t>(mesh.positions.count / 3, kUnused);
        m_count = static_cast<std::uint32_t>(count);
        m_hasTexCoords = mesh.texCoords.count >= count * 2 && !mesh.texCoords.IsEmpty();
        m_hasColors = mesh.colors.count >= count * 4 && !mesh.colors.IsEmpty();
        if (mesh.kind == PrimitiveKind::Triangles)
        {
            FindNormals();
        }
    }

    std::uint32_t Count() const { return m_count; }

    bool IsVertexUsable(std::uint32_t vertex) const
    {
        const Vector p = VectorAt(m_mesh.positions, vertex);
        return IsUsable(p.x) && IsUsable(p.y) && IsUsable(p.z);
    }

    bool IsTriangleUsable(const std::uint32_t* corners) const
    {
        return std::all_of(corners, corners + 3,
                           [this](std::uint32_t vertex)
                           { return vertex < m_count && IsVertexUsable(vertex); });
    }

    void Reserve(MeshPart& part, std::uint32_t vertices) const
    {
        part.positions.reserve(vertices);
        part.normals.reserve(m_normals.empty() ? 0 : vertices);
        part.texCoords.reserve(m_hasTexCoords ? vertices : 0);
        part.colors.reserve(m_hasColors ? vertices : 0);
    }

    void AppendVertex(std::uint32_t vertex, MeshPart& part) const
    {
        part.positions.push_back(VectorAt(m_mesh.positions, vertex));
        if (!m_normals.empty())
        {
            part.normals.push_back(m_normals[vertex]);
        }
        if (m_hasTexCoords)
        {
            const float* uv = m_mesh.texCoords.data + 2 * std::uint64_t(vertex);
            part.texCoords.push_back(TextureCoordinate{Finite(uv[0], 0.0f), Finite(uv[1], 0.0f)});
        }
        if (m_hasColors)
        {
            const float* c = m_mesh.colors.data + 4 * std::uint64_t(vertex);
            part.colors.push_back(
                Color(Finite(c[0], 1.0f), Finite(c[1], 1.0f), Finite(c[2], 1.0f), Finite(c[3], 1.0f)));
        }
    }

private:
    /// Takes the mesh's normals, and the average of the faces around where they are of no use.
    void FindNormals()
    {
        const bool hasNormals = m_mesh.normals.count >= 3 * std::uint64_t(m_count);
        m_normals.resize(m_count);
        bool isComplete = true;
        for (std::uint32_t i = 0; i < m_count; ++i)
        {
            m_normals[i] = hasNormals ? VectorAt(m_mesh.normals, i) : Vector();
            isComplete = isComplete && IsNormal(m_normals[i]);
        }
        if (isComplete)
        {
            return;
        }
        const std::vector<Vector> faces = SumsOfFaces();
        for (std::uint32_t i = 0; i < m_count; ++i)
        {
            if (IsNormal(m_normals[i]))
            {
                continue;
            }
            Vector normal = faces[i];
            const float longest = std::max({std::fabs(normal.x), std::fabs(normal.y), std::fabs(normal.z)});
            // In two steps, as the square of a small number may be none.
            normal.Scale(longest > 0.0f ? 1.0f / longest : 0.0f);
            normal.Normalize();
            m_normals[i] = IsNormal(normal) ? normal : Vector(0.0f, 0.0f, 1.0f);
        }
    }

    /// For each vertex the sum of the cross products of its faces, larger faces counting more.
    std::vector<Vector> SumsOfFaces() const
    {
        std::vector<Vector> sums(m_count);
        for (std::uint64_t i = 0; i + 2 < m_mesh.indices.count; i += 3)
        {
            const std::uint32_t* corners = m_mesh.indices.data + i;
            if (!IsTriangleUsable(corners))
            {
                continue;
            }
            const Vector origin = VectorAt(m_mesh.positions, corners[0]);
            Vector a;
            Vector b;
            Vector normal;
            a.Subtract(VectorAt(m_mesh.positions, corners[1]), origin);
            b.Subtract(VectorAt(m_mesh.positions, corners[2]), origin);
            normal.Cross(a, b);
            for (int corner = 0; corner < 3; ++corner)
            {
                sums[corners[corner]].Add(sums[corners[corner]], normal);
            }
        }
        return sums;
    }

    const MeshData& m_mesh;
    std::uint32_t m_count = 0;
    bool m_hasTexCoords = false;
    bool m_hasColors = false;
    std::vector<Vector> m_normals;
};

/// Gives vertices their numbers in the part at hand, and opens the next part when it is full.
class PartWriter
{
public:
    PartWriter(const Source& source, std::vector<MeshPart>& parts)
        : m_source(source), m_parts(parts), m_numbers(source.Count(), kUnused)
    {
    }

    /// Adds a primitive of usable vertices.
    void Append(const std::uint32_t* corners, int count)
    {
        if (m_parts.empty() || !HasRoom(corners, count))
        {
            Open();
        }
        MeshPart& part = m_parts.back();
        for (int corner = 0; corner < count; ++corner)
        {
            std::uint32_t& number = m_numbers[corners[corner]];
            if (number == kUnused)
            {
                number = static_cast<std::uint32_t>(part.positions.size());
                m_source.AppendVertex(corners[corner], part);
                m_used.push_back(corners[corner]);
            }
            part.indices.push_back(static_cast<unsigned short>(number));
        }
    }

private:
    bool HasRoom(const std::uint32_t* corners, int count) const
    {
        std::size_t size = m_parts.back().positions.size();
        for (int corner = 0; corner < count; ++corner)
        {
            size += m_numbers[corners[corner]] == kUnused ? 1 : 0;
        }
        return size <= kMaxVertices;
    }

    void Open()
    {
        for (std::uint32_t vertex : m_used)
        {
            m_numbers[vertex] = kUnused;
        }
        m_used.clear();
        m_parts.emplace_back();
        m_source.Reserve(m_parts.back(), std::min(m_source.Count(), kMaxVertices));
    }

    const Source& m_source;
    std::vector<MeshPart>& m_parts;
    std::vector<std::uint32_t> m_numbers;
    std::vector<std::uint32_t> m_used;
};

} // namespace

MeshParts SplitMesh(const MeshData& mesh)
{
    MeshParts result;
    const Source source(mesh);
    PartWriter writer(source, result.parts);
    if (mesh.kind == PrimitiveKind::Points)
    {
        for (std::uint32_t vertex = 0; vertex < source.Count(); ++vertex)
        {
            if (source.IsVertexUsable(vertex))
            {
                writer.Append(&vertex, 1);
            }
            else
            {
                ++result.dropped;
            }
        }
        return result;
    }
    for (std::uint64_t i = 0; i + 2 < mesh.indices.count; i += 3)
    {
        const std::uint32_t* corners = mesh.indices.data + i;
        if (source.IsTriangleUsable(corners))
        {
            writer.Append(corners, 3);
        }
        else
        {
            ++result.dropped;
        }
    }
    return result;
}

} // namespace OV::Host
