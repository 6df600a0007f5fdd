#include "orvane_host/import/detail/AssimpNormals.h"

#include "orvane_host/import/detail/MeshSplitter.h"

#include <assimp/mesh.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace OV::Host
{

namespace
{

/// What is beyond is left out of the scene; one such vertex says nothing of the others.
bool IsPlace(const aiVector3D& position)
{
    return std::fabs(position.x) <= kMaxCoordinate && std::fabs(position.y) <= kMaxCoordinate
        && std::fabs(position.z) <= kMaxCoordinate;
}

bool AreCornersShared(const aiMesh& mesh)
{
    std::size_t corners = 0;
    for (unsigned int face = 0; face < mesh.mNumFaces; ++face)
    {
        corners += mesh.mFaces[face].mNumIndices;
    }
    return corners > mesh.mNumVertices;
}

/// The parser makes none that are of use where a mesh has a single vertex without a place.
bool AreAllPlaced(const aiMesh& mesh)
{
    return std::all_of(mesh.mVertices, mesh.mVertices + mesh.mNumVertices, IsPlace);
}

bool IsOfTriangles(const aiMesh& mesh)
{
    return std::all_of(mesh.mFaces, mesh.mFaces + mesh.mNumFaces,
                       [](const aiFace& face) { return face.mNumIndices == 3; });
}

bool AreIndicesValid(const aiMesh& mesh)
{
    for (unsigned int face = 0; face < mesh.mNumFaces; ++face)
    {
        for (unsigned int corner = 0; corner < mesh.mFaces[face].mNumIndices; ++corner)
        {
            if (mesh.mFaces[face].mIndices[corner] >= mesh.mNumVertices)
            {
                return false;
            }
        }
    }
    return true;
}

using Indices = std::vector<unsigned int>;

Indices CornersOf(const aiMesh& mesh)
{
    Indices corners;
    for (unsigned int face = 0; face < mesh.mNumFaces; ++face)
    {
        const aiFace& indices = mesh.mFaces[face];
        corners.insert(corners.end(), indices.mIndices, indices.mIndices + indices.mNumIndices);
    }
    return corners;
}

/// Replaces an array of one element a vertex by one of the elements named.
template <typename T>
void Spread(T*& array, const Indices& sources)
{
    if (!array)
    {
        return;
    }
    std::unique_ptr<T[]> spread(new T[sources.size()]);
    for (std::size_t i = 0; i < sources.size(); ++i)
    {
        spread[i] = array[sources[i]];
    }
    delete[] array;
    array = spread.release();
}

/// Makes each vertex anew from the old one that is named, and points the corners at the new ones.
void DivideVertices(aiMesh& mesh, const Indices& sources, const Indices& corners)
{
    Spread(mesh.mVertices, sources);
    for (auto& channel : mesh.mTextureCoords)
    {
        Spread(channel, sources);
    }
    for (auto& channel : mesh.mColors)
    {
        Spread(channel, sources);
    }
    std::size_t next = 0;
    for (unsigned int face = 0; face < mesh.mNumFaces; ++face)
    {
        aiFace& indices = mesh.mFaces[face];
        for (unsigned int corner = 0; corner < indices.mNumIndices; ++corner)
        {
            indices.mIndices[corner] = corners[next++];
        }
    }
    mesh.mNumVertices = static_cast<unsigned int>(sources.size());
}

void SeparateCorners(aiMesh& mesh)
{
    const Indices sources = CornersOf(mesh);
    Indices corners(sources.size());
    for (std::size_t i = 0; i < corners.size(); ++i)
    {
        corners[i] = static_cast<unsigned int>(i);
    }
    DivideVertices(mesh, sources, corners);
}

/// Which vertices lie so near to each other that the parser takes them for one place.
class NearVertices
{
public:
    explicit NearVertices(const aiMesh& mesh) : m_positions(mesh.mVertices), m_count(mesh.mNumVertices)
    {
        constexpr float most = std::numeric_limits<float>::max();
        aiVector3D upper(-most, -most, -most);
        m_lower = aiVector3D(most, most, most);
        for (unsigned int i = 0; i < m_count; ++i)
        {
            for (unsigned int axis = 0; axis < 3 && IsPlace(m_positions[i]); ++axis)
            {
                m_lower[axis] = std::min(m_lower[axis], m_positions[i][axis]);
                upper[axis] = std::max(upper[axis], m_positions[i][axis]);
            }
        }
        m_reach = m_lower.x <= upper.x ? (upper - m_lower).Length() * kPartOfDiagonal : 0.0f;
        if (IsUsable())
        {
            FillCells();
        }
    }

    /// False where no vertex has a place or all have one.
    bool IsUsable() const { return m_reach > 0.0f; }

    /// Replaces the list by all vertices near one, which is among them.
    void Find(unsigned int vertex, Indices& found) const
    {
        found.clear();
        const aiVector3D place = m_positions[vertex];
        if (!IsPlace(place))
        {
            found.push_back(vertex);
            return;
        }
        std::int64_t first[3];
        std::int64_t last[3];
        for (unsigned int axis = 0; axis < 3; ++axis)
        {
            first[axis] = CellAt(place[axis] - m_reach, axis);
            last[axis] = CellAt(place[axis] + m_reach, axis);
        }
        for (std::int64_t x = first[0]; x <= last[0]; ++x)
        {
            for (std::int64_t y = first[1]; y <= last[1]; ++y)
            {
                // Along the last axis the cells lie side by side.
                auto entry = std::lower_bound(m_cells.begin(), m_cells.end(), Cell(Key(x, y, first[2]), 0));
                for (; entry != m_cells.end() && entry->first <= Key(x, y, last[2]); ++entry)
                {
                    if ((m_positions[entry->second] - place).SquareLength() < m_reach * m_reach)
                    {
                        found.push_back(entry->second);
                    }
                }
            }
        }
    }

private:
    using Cell = std::pair<std::uint64_t, unsigned int>;

    // As the parser measures.
    static constexpr float kPartOfDiagonal = 1e-4f;

    /// No more than some 5,000 a side, so that three fit into one number. One before the first is 0.
    std::int64_t CellAt(float coordinate, unsigned int axis) const
    {
        return static_cast<std::int64_t>(std::floor((coordinate - m_lower[axis]) / (2.0f * m_reach))) + 1;
    }

    static std::uint64_t Key(std::int64_t x, std::int64_t y, std::int64_t z)
    {
        return static_cast<std::uint64_t>(x) << 42 | static_cast<std::uint64_t>(y) << 21 |
               static_cast<std::uint64_t>(z);
    }

    void FillCells()
    {
        m_cells.reserve(m_count);
        for (unsigned int i = 0; i < m_count; ++i)
        {
            const aiVector3D& place = m_positions[i];
            if (IsPlace(place))
            {
                m_cells.emplace_back(Key(CellAt(place.x, 0), CellAt(place.y, 1), CellAt(place.z, 2)), i);
            }
        }
        std::sort(m_cells.begin(), m_cells.end());
    }

    const aiVector3D* m_positions;
    unsigned int m_count;
    aiVector3D m_lower;
    float m_reach = 0.0f;
    std::vector<Cell> m_cells;
};

std::vector<aiVector3D> FaceNormals(const aiMesh& mesh)
{
    std::vector<aiVector3D> normals;
    normals.reserve(mesh.mNumFaces);
    for (unsigned int face = 0; face < mesh.mNumFaces; ++face)
    {
        const unsigned int* const corners = mesh.mFaces[face].mIndices;
        const aiVector3D& first = mesh.mVertices[corners[0]];
        const aiVector3D across =
            (mesh.mVertices[corners[1]] - first) ^ (mesh.mVertices[corners[2]] - first);
        normals.push_back(aiVector3D(across).NormalizeSafe());
    }
    return normals;
}

/// The corners of each vertex side by side, from starts[vertex] on.
struct CornersByVertex
{
    CornersByVertex(const Indices& vertexOf, unsigned int vertices) : starts(vertices + 1u), corners(vertexOf.size())
    {
        for (const unsigned int vertex : vertexOf)
        {
            ++starts[vertex + 1];
        }
        for (unsigned int vertex = 0; vertex < vertices; ++vertex)
        {
            starts[vertex + 1] += starts[vertex];
        }
        Indices next(starts.begin(), starts.end() - 1);
        for (std::size_t corner = 0; corner < vertexOf.size(); ++corner)
        {
            corners[next[vertexOf[corner]]++] = static_cast<unsigned int>(corner);
        }
    }

    Indices starts;
    Indices corners;
};

/// Works the normals of a mesh of triangles out, corner by corner.
std::vector<aiVector3D> CornerNormals(const aiMesh& mesh, const Indices& vertexOf, const NearVertices& places,
                                      float maxAngle)
{
    // At which the parser leaves the angle out of account.
    constexpr float anyAngle = 175.0f;
    constexpr float degree = 0.01745329252f;
    const float least = maxAngle >= anyAngle ? -2.0f : std::cos(maxAngle * degree);
    const std::vector<aiVector3D> faces = FaceNormals(mesh);
    const CornersByVertex byVertex(vertexOf, mesh.mNumVertices);
    std::vector<aiVector3D> normals(vertexOf.size());
    Indices near;
    Indices around;
    for (unsigned int vertex = 0; vertex < mesh.mNumVertices; ++vertex)
    {
        places.Find(vertex, near);
        around.clear();
        for (const unsigned int other : near)
        {
            around.insert(around.end(), byVertex.corners.begin() + byVertex.starts[other],
                          byVertex.corners.begin() + byVertex.starts[other + 1]);
        }
        for (unsigned int i = byVertex.starts[vertex]; i < byVertex.starts[vertex + 1]; ++i)
        {
            const unsigned int corner = byVertex.corners[i];
            const aiVector3D& own = faces[corner / 3];
            aiVector3D sum;
            for (const unsigned int other : around)
            {
                const aiVector3D& normal = faces[other / 3];
                if (other == corner || normal * own >= least)
                {
                    sum += normal;
                }
            }
            normals[corner] = sum.NormalizeSafe();
        }
    }
    return normals;
}

/// Divides each vertex into as many as there are normals at its corners.
void SmoothCorners(aiMesh& mesh, const NearVertices& places, float maxAngle)
{
    const Indices vertexOf = CornersOf(mesh);
    const std::vector<aiVector3D> normals = CornerNormals(mesh, vertexOf, places, maxAngle);
    Indices corners(vertexOf.size());
    Indices sources;
    Indices firstOf; // by new vertex, the corner whose normal it has
    constexpr unsigned int none = ~0u;
    Indices latest(mesh.mNumVertices, none); // by old vertex, the new one that was made last
    Indices before;                          // by new vertex, the one made before it of the same
    for (std::size_t corner = 0; corner < vertexOf.size(); ++corner)
    {
        unsigned int made = latest[vertexOf[corner]];
        while (made != none && normals[firstOf[made]] != normals[corner])
        {
            made = before[made];
        }
        if (made == none)
        {
            made = static_cast<unsigned int>(sources.size());
            sources.push_back(vertexOf[corner]);
            firstOf.push_back(static_cast<unsigned int>(corner));
            before.push_back(std::exchange(latest[vertexOf[corner]], made));
        }
        corners[corner] = made;
    }
    DivideVertices(mesh, sources, corners);
    std::unique_ptr<aiVector3D[]> array(new aiVector3D[sources.size()]);
    for (std::size_t i = 0; i < sources.size(); ++i)
    {
        array[i] = normals[firstOf[i]];
    }
    mesh.mNormals = array.release();
}

} // namespace

bool GiveNormalsToSharedCorners(aiScene& scene, float maxAngle)
{
    bool isAnyChanged = false;
    for (unsigned int i = 0; i < scene.mNumMeshes; ++i)
    {
        aiMesh& mesh = *scene.mMeshes[i];
        const bool isPlain = mesh.mNumBones == 0 && mesh.mNumAnimMeshes == 0 && !mesh.mTangents;
        if (!isPlain || !(mesh.mPrimitiveTypes & aiPrimitiveType_TRIANGLE) || mesh.mNormals ||
            !AreIndicesValid(mesh) || (!AreCornersShared(mesh) && AreAllPlaced(mesh)))
        {
            continue;
        }
        isAnyChanged = true;
        const NearVertices places(mesh);
        if (IsOfTriangles(mesh) && places.IsUsable())
        {
            SmoothCorners(mesh, places, maxAngle);
        }
        else
        {
            SeparateCorners(mesh);
        }
    }
    return isAnyChanged;
}

void LeaveOutEmptyNormals(aiScene& scene)
{
    const auto isEmpty = [](const aiVector3D& normal) { return !(normal.SquareLength() > 0.0f); };
    for (unsigned int i = 0; i < scene.mNumMeshes; ++i)
    {
        aiMesh& mesh = *scene.mMeshes[i];
        if (mesh.mNormals && !mesh.mTangents && std::all_of(mesh.mNormals, mesh.mNormals + mesh.mNumVertices, isEmpty))
        {
            delete[] mesh.mNormals;
            mesh.mNormals = nullptr;
        }
    }
}

} // namespace OV::Host
