#pragma once

#include <glm/vec3.hpp>

#include <cstddef>
#include <limits>
#include <vector>

namespace OV
{

class Material;
class Mesh;
class MeshNode;
class Scene;

} // namespace OV

namespace OV::Test
{

/// In world space. The direction may have any length, which distances are then measured in.
struct Ray
{
    glm::dvec3 origin;
    glm::dvec3 direction;
    double from = 0.0;
    double to = std::numeric_limits<double>::infinity();
};

struct RayHit
{
    double distance = std::numeric_limits<double>::infinity();
    Mesh* mesh = nullptr;
    MeshNode* node = nullptr;

    /// What one thing is: a mesh at a node. Nothing is the same as nothing.
    bool IsSame(const RayHit& other) const { return mesh == other.mesh && node == other.node; }
};

/// Casts rays at the triangles of a scene, in double and without GL.
///
/// Backs of triangles are hit only where their material or mesh shows them, hidden and culled
/// nodes not at all. The scene must stay as it is.
class RayCaster
{
public:
    explicit RayCaster(const Scene& scene);

    /// The nearest hit; one without a mesh where there is none.
    RayHit Cast(const Ray& ray) const;

    /// The nearest hit of each thing, the nearest first.
    std::vector<RayHit> CastThrough(const Ray& ray) const;

    std::size_t GetTriangleCount() const { return m_triangles.size(); }

private:
    struct Triangle
    {
        glm::dvec3 corner;
        glm::dvec3 edges[2]; ///< from the corner to the second and the third
        bool twoSided;
        Mesh* mesh;
        MeshNode* node;
    };

    struct Box
    {
        glm::dvec3 low;
        glm::dvec3 high;
    };

    /// The children of an inner one are the one after it and `second`.
    struct Branch
    {
        Box box;
        std::size_t first = 0;  ///< in m_triangles
        std::size_t count = 0;  ///< 0 for an inner one
        std::size_t second = 0; ///< in m_branches
    };

    void Collect(Material& material);
    void Collect(Mesh& mesh, MeshNode& node, bool twoSided);
    void Build(std::size_t first, std::size_t count);
    static Box BoxOf(const Triangle& triangle);
    static bool Meets(const Ray& ray, const Box& box, double limit);
    static bool Hits(const Ray& ray, const Triangle& triangle, double& distance);

    template <class Visitor>
    void Visit(const Ray& ray, const double& limit, const Visitor& visit) const;

    std::vector<Triangle> m_triangles;
    std::vector<Branch> m_branches;
};

} // namespace OV::Test
