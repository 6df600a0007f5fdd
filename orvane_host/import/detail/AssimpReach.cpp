#include "orvane_host/import/detail/AssimpReach.h"

#include "orvane_host/import/detail/MeshSplitter.h"

#include "orvane/math/Transf3d.h"

#include <assimp/scene.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <vector>

namespace OV::Host
{

namespace
{

using Vec = QGM::Vector3d;

/// Smaller scenes leave a camera too little between the eye and the model.
constexpr double SmallestSize = 1e-4;

/// Of the distance from the origin. Places in floats are up to 1.2e-7 of it apart: in a smaller scene that is more than
/// a pixel, by which parts stand beside their places and shadows beside what casts them.
constexpr double SmallestPart = 1e-4;

QGM::Transf3d ToTransform(const aiMatrix4x4& from)
{
    const double rows[3][4] = {{from.a1, from.a2, from.a3, from.a4},
                               {from.b1, from.b2, from.b3, from.b4},
                               {from.c1, from.c2, from.c3, from.c4}};
    QGM::Transf3d result;
    std::copy(&rows[0][0], &rows[0][0] + 12, &result.m[0][0]);
    return result;
}

/// How far the vertices of a scene reach, in numbers that no file can overflow.
struct Reach
{
    double low[3];
    double high[3];
    /// The largest coordinate, in the mesh that it belongs to.
    double farthestInMesh = 0.0;

    Reach()
    {
        std::fill(low, low + 3, std::numeric_limits<double>::max());
        std::fill(high, high + 3, std::numeric_limits<double>::lowest());
    }

    void Add(const QGM::Transf3d& place, const aiVector3D& point)
    {
        for (unsigned int axis = 0; axis < 3; ++axis)
        {
            const double* row = place.m[axis];
            const double at = row[0] * point.x + row[1] * point.y + row[2] * point.z + row[3];
            low[axis] = std::min(low[axis], at);
            high[axis] = std::max(high[axis], at);
            farthestInMesh = std::max(farthestInMesh, std::fabs(static_cast<double>(point[axis])));
        }
    }

    bool IsEmpty() const { return !(low[0] <= high[0]); }

    double Size() const
    {
        return IsEmpty() ? 0.0 : std::hypot(high[0] - low[0], high[1] - low[1], high[2] - low[2]);
    }

    double Farthest() const
    {
        double farthest = 0.0;
        for (int axis = 0; axis < 3; ++axis)
        {
            farthest = std::max({farthest, std::fabs(low[axis]), std::fabs(high[axis])});
        }
        return IsEmpty() ? 0.0 : farthest;
    }

    Vec Middle() const
    {
        return Vec(0.5 * (low[0] + high[0]), 0.5 * (low[1] + high[1]), 0.5 * (low[2] + high[2]));
    }

    bool IsTooSmall() const { return Size() < SmallestSize; }
    bool IsTooFar() const { return Size() < SmallestPart * Farthest(); }
};

bool IsWithin(const aiVector3D& point, float most)
{
    return std::fabs(point.x) <= most && std::fabs(point.y) <= most && std::fabs(point.z) <= most;
}

/// Calls visit(node, place) for all nodes, until it returns false.
/// @return whether it never did.
template <typename Visit>
bool VisitPlaces(const aiScene& scene, const Visit& visit)
{
    struct Open
    {
        const aiNode* node;
        QGM::Transf3d place;
    };
    std::vector<Open> open = {{scene.mRootNode, ToTransform(scene.mRootNode->mTransformation)}};
    while (!open.empty())
    {
        const Open next = open.back();
        open.pop_back();
        if (!visit(*next.node, next.place))
        {
            return false;
        }
        for (unsigned int i = 0; i < next.node->mNumChildren; ++i)
        {
            const aiNode* const child = next.node->mChildren[i];
            open.push_back({child, next.place * ToTransform(child->mTransformation)});
        }
    }
    return true;
}

/// Widens a reach by the faces all of whose vertices are within a distance of the origin of their mesh.
/// @return false as soon as it is neither too small nor too far: the rest of a scene does not change that.
bool AddMesh(const aiMesh& mesh, const QGM::Transf3d& place, float most, Reach& reach)
{
    for (unsigned int face = 0; face < mesh.mNumFaces; ++face)
    {
        const unsigned int* first = mesh.mFaces[face].mIndices;
        const unsigned int* last = first + mesh.mFaces[face].mNumIndices;
        const bool counts = std::all_of(first, last, [&](unsigned int index)
        { return index < mesh.mNumVertices && IsWithin(mesh.mVertices[index], most); });
        for (; counts && first != last; ++first)
        {
            reach.Add(place, mesh.mVertices[*first]);
        }
        if (!reach.IsTooSmall() && !reach.IsTooFar())
        {
            return false;
        }
    }
    return true;
}

Reach ReachOf(const aiScene& scene, float most)
{
    Reach reach;
    VisitPlaces(scene, [&](const aiNode& node, const QGM::Transf3d& place)
    {
        return std::all_of(node.mMeshes, node.mMeshes + node.mNumMeshes,
                           [&](unsigned int mesh) { return AddMesh(*scene.mMeshes[mesh], place, most, reach); });
    });
    return reach;
}

/// The power of 1000 that brings the size to between 1 and 1000; 1 where meshes would leave the reach of
/// coordinates, as where it is the nodes that make them small.
double FactorFor(const Reach& reach)
{
    const double size = reach.Size();
    if (!(size > 0.0) || !std::isfinite(size))
    {
        return 1.0;
    }
    const double factor = std::pow(1000.0, -std::floor(std::log10(size) / 3.0));
    return reach.farthestInMesh * factor <= static_cast<double>(kMaxCoordinate) ? factor : 1.0;
}

void Scale(float& value, double factor)
{
    value = static_cast<float>(value * factor);
}

void Scale(aiVector3D& vector, double factor)
{
    Scale(vector.x, factor);
    Scale(vector.y, factor);
    Scale(vector.z, factor);
}

void ScaleNodes(aiNode& root, double factor)
{
    std::vector<aiNode*> open = {&root};
    while (!open.empty())
    {
        aiNode& node = *open.back();
        open.pop_back();
        Scale(node.mTransformation.a4, factor);
        Scale(node.mTransformation.b4, factor);
        Scale(node.mTransformation.c4, factor);
        open.insert(open.end(), node.mChildren, node.mChildren + node.mNumChildren);
    }
}

void ScaleAll(aiScene& scene, double factor)
{
    for (unsigned int i = 0; i < scene.mNumMeshes && factor != 1.0; ++i)
    {
        aiMesh& mesh = *scene.mMeshes[i];
        std::for_each(mesh.mVertices, mesh.mVertices + mesh.mNumVertices,
                      [factor](aiVector3D& vertex) { Scale(vertex, factor); });
    }
    for (unsigned int i = 0; i < scene.mNumCameras; ++i)
    {
        aiCamera& camera = *scene.mCameras[i];
        Scale(camera.mPosition, factor);
        Scale(camera.mClipPlaneNear, factor);
        Scale(camera.mClipPlaneFar, factor);
        Scale(camera.mOrthographicWidth, factor);
    }
    for (unsigned int i = 0; i < scene.mNumLights; ++i)
    {
        Scale(scene.mLights[i]->mPosition, factor);
    }
    ScaleNodes(*scene.mRootNode, factor);
}

/// For each mesh what a step of the world is in it; nothing where that is not the same at all its nodes, or where
/// the nodes stand far away themselves, and are to be moved in place of the vertices.
std::optional<std::vector<Vec>> StepsInMeshes(const aiScene& scene, const Vec& step)
{
    if (scene.mNumCameras > 0 || scene.mNumLights > 0)
    {
        return std::nullopt;
    }
    const double near = SmallestPart * step.length();
    std::vector<std::optional<Vec>> found(scene.mNumMeshes);
    const bool isSame = VisitPlaces(scene, [&](const aiNode& node, const QGM::Transf3d& place)
    {
        QGM::Transf3d turn = place;
        const double away = std::hypot(turn.m[0][3], turn.m[1][3], turn.m[2][3]);
        turn.m[0][3] = turn.m[1][3] = turn.m[2][3] = 0.0;
        const QGM::Transf3d back = turn.invert();
        const Vec own(back.m[0][0] * step.x + back.m[0][1] * step.y + back.m[0][2] * step.z,
                      back.m[1][0] * step.x + back.m[1][1] * step.y + back.m[1][2] * step.z,
                      back.m[2][0] * step.x + back.m[2][1] * step.y + back.m[2][2] * step.z);
        return std::all_of(node.mMeshes, node.mMeshes + node.mNumMeshes, [&](unsigned int mesh)
        {
            std::optional<Vec>& known = found[mesh];
            const bool fits = std::isfinite(own.length()) && away <= near
                && (!known || (known->x == own.x && known->y == own.y && known->z == own.z));
            known = own;
            return fits;
        });
    });
    std::vector<Vec> steps;
    for (const std::optional<Vec>& own : found)
    {
        steps.push_back(own.value_or(Vec(0, 0, 0)));
    }
    return isSame ? std::make_optional(steps) : std::nullopt;
}

void MoveAll(aiScene& scene, const Vec& by)
{
    const std::optional<std::vector<Vec>> steps = StepsInMeshes(scene, by);
    if (!steps)
    {
        aiMatrix4x4& root = scene.mRootNode->mTransformation;
        root.a4 = static_cast<float>(root.a4 + by.x);
        root.b4 = static_cast<float>(root.b4 + by.y);
        root.c4 = static_cast<float>(root.c4 + by.z);
        return;
    }
    for (unsigned int i = 0; i < scene.mNumMeshes; ++i)
    {
        const Vec& step = (*steps)[i];
        aiMesh& mesh = *scene.mMeshes[i];
        std::for_each(mesh.mVertices, mesh.mVertices + mesh.mNumVertices, [&step](aiVector3D& vertex)
        {
            vertex = aiVector3D(static_cast<float>(vertex.x + step.x), static_cast<float>(vertex.y + step.y),
                                static_cast<float>(vertex.z + step.z));
        });
    }
}

void ScaleByPowers(aiScene& scene, const std::vector<int>& exponents, int sign)
{
    for (unsigned int i = 0; i < scene.mNumMeshes && i < exponents.size(); ++i)
    {
        aiMesh& mesh = *scene.mMeshes[i];
        const int exponent = sign * exponents[i];
        for (unsigned int vertex = 0; exponent != 0 && vertex < mesh.mNumVertices; ++vertex)
        {
            aiVector3D& at = mesh.mVertices[vertex];
            at = aiVector3D(std::ldexp(at.x, exponent), std::ldexp(at.y, exponent), std::ldexp(at.z, exponent));
        }
    }
}

/// Of two, that takes the largest coordinate to about 1000; 0 for a mesh that is well as it is.
int ExponentFor(const aiMesh& mesh)
{
    constexpr float least = 0.01f;
    constexpr float most = 1e8f;
    float largest = 0.0f;
    for (unsigned int i = 0; i < mesh.mNumVertices; ++i)
    {
        const aiVector3D& at = mesh.mVertices[i];
        if (IsWithin(at, kMaxCoordinate))
        {
            largest = std::max({largest, std::fabs(at.x), std::fabs(at.y), std::fabs(at.z)});
        }
    }
    const bool isFit = largest == 0.0f || (largest >= least && largest <= most);
    return isFit ? 0 : 10 - std::ilogb(largest);
}

} // namespace

ReachChange BringWithinReach(aiScene& scene)
{
    ReachChange change;
    Reach reach = ReachOf(scene, kMaxCoordinate);
    if (reach.IsEmpty())
    {
        change.factor = FactorFor(ReachOf(scene, std::numeric_limits<float>::max()));
        ScaleAll(scene, change.factor);
        return change;
    }
    if (reach.Size() > 0.0 && reach.IsTooFar())
    {
        const Vec middle = reach.Middle();
        change.movedBy = middle.length();
        MoveAll(scene, Vec(-middle.x, -middle.y, -middle.z));
        reach = ReachOf(scene, kMaxCoordinate);
    }
    if (reach.IsTooSmall())
    {
        change.factor = FactorFor(reach);
        ScaleAll(scene, change.factor);
    }
    return change;
}

MeshSizes::MeshSizes(const aiScene& scene)
{
    for (unsigned int i = 0; i < scene.mNumMeshes; ++i)
    {
        m_exponents.push_back(ExponentFor(*scene.mMeshes[i]));
    }
}

void MeshSizes::TakeAway(aiScene& scene) const
{
    ScaleByPowers(scene, m_exponents, 1);
}

void MeshSizes::GiveBack(aiScene& scene) const
{
    ScaleByPowers(scene, m_exponents, -1);
}

} // namespace OV::Host
