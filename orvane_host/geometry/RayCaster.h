#pragma once

#include "orvane/math/Point3d.h"
#include "orvane/math/Vector3d.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <vector>

namespace OV
{

class Mesh;
class MeshNode;
class Scene;

} // namespace OV

namespace OV::Host
{

namespace Detail
{

struct BoxBranch;

} // namespace Detail

/// Where a ray meets a triangle.
struct RayHit
{
    double distance = 0.0;    ///< in lengths of the ray's direction
    MeshNode* node = nullptr; ///< owned by the scene; null without one
    Mesh* mesh = nullptr;     ///< owned by the scene; null without one
    /// Of the mesh, or of the arrays: its corners are the indices from three times this on.
    std::size_t triangle = 0;
    /// The shares of the second and the third corner in the place, each 0 to 1, as is the rest.
    double second = 0.0;
    double third = 0.0;
};

/// Casts rays at triangles, in double precision and without GL.
///
/// Holds a copy of the triangles as they were, in world space: make another when the scene has
/// changed. A ray that meets an edge which triangles share, by corners that are the same in every
/// bit, meets one of them at least: nothing leaks in between. Triangles without area, with corners
/// that are not finite or with an index beyond the corners are left out. A ray without a direction,
/// or with a number that is not finite where that makes no sense, meets nothing.
///
/// All queries may be made from several threads at once. None of them, nor the making, uses a stack
/// that grows with the number of triangles.
class RayCaster
{
public:
    /// Which sides of a mesh at a node stop rays.
    enum class Faces
    {
        None,
        Front, ///< where corners run counter-clockwise in world space, seen against the ray
        Both,
    };
    using Choice = std::function<Faces(const MeshNode&, const Mesh&)>;

    /// Takes in the meshes at the nodes of a scene's tree, by the global transforms as they stand.
    /// @param choice none for ShownFaces.
    explicit RayCaster(const Scene& scene, const Choice& choice = {});

    /// Takes in triangles of three indices each, both sides of which stop rays.
    RayCaster(const std::vector<QGM::Point3d>& points, const std::vector<std::uint32_t>& indices);

    ~RayCaster();
    RayCaster(RayCaster&& other) noexcept;
    RayCaster& operator=(RayCaster&& other) noexcept;

    /// Both sides of what is drawn: of meshes with a material at nodes that aren't hidden. Whether a
    /// node is culled, that is out of the view, doesn't count.
    static Faces ShownFaces(const MeshNode& node, const Mesh& mesh);

    /// The nearest hit within a range of distances, both ends of which are in it. Of several that
    /// are equally near, the first in the order of the tree, of the meshes of a node and of the
    /// triangles.
    std::optional<RayHit> Cast(const QGM::Point3d& origin, const QGM::Vector3d& direction, double from = 0.0,
                               double to = std::numeric_limits<double>::infinity()) const;

    /// Whether there is any hit within the range: quicker than Cast.
    bool IsBlocked(const QGM::Point3d& origin, const QGM::Vector3d& direction, double from = 0.0,
                   double to = std::numeric_limits<double>::infinity()) const;

    /// All hits within the range, in the order in which Cast would find them.
    std::vector<RayHit> CastThrough(const QGM::Point3d& origin, const QGM::Vector3d& direction, double from = 0.0,
                                    double to = std::numeric_limits<double>::infinity()) const;

    std::size_t GetTriangleCount() const { return m_triangles.size(); }

private:
    /// A mesh at a node, or the arrays.
    struct Thing
    {
        MeshNode* node;
        Mesh* mesh;
        bool frontOnly;
    };

    struct Triangle
    {
        QGM::Point3d corners[3];
        std::uint32_t thing;
        std::uint32_t number; ///< within the thing
    };

    class Ray;
    struct Meeting;

    /// Takes a triangle into the last thing.
    void Take(const std::vector<QGM::Point3d>& points, const std::uint32_t (&corners)[3], std::size_t number);
    void Build();

    /// Calls visit for all triangles met up to a limit, which visit may lower; ends when visit says
    /// true.
    template <class Visitor>
    void Visit(const Ray& ray, const double& limit, const Visitor& visit) const;

    RayHit HitOf(const Meeting& meeting) const;
    bool IsBefore(const Meeting& left, const Meeting& right) const;

    std::vector<Thing> m_things;
    std::vector<Triangle> m_triangles;        ///< as the leaves of the tree hold them
    std::vector<Detail::BoxBranch> m_branches; ///< the root first
};

} // namespace OV::Host
