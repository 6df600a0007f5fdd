#pragma once

#include "orvane_host/geometry/SectionFill.h"
#include "orvane_host/geometry/detail/VertexWelder.h"
#include "orvane/math/Color.h"
#include "orvane/math/Vector.h"

#include <cstddef>
#include <map>
#include <memory>
#include <vector>

namespace OV
{

class Material;
class Mesh;
class MeshNode;
class RawMesh;
class Scene;

} // namespace OV

namespace OV::Host::Detail
{

/// Cuts what closes of the meshes at nodes, and keeps what it has found out about geometry for
/// the next cut.
class SolidCutter
{
public:
    /// The faces that close a node's solids where planes cut them, in the node's own space.
    struct Faces
    {
        std::vector<std::shared_ptr<RawMesh>> meshes;
        std::size_t cuts = 0; ///< planes that run through a solid
    };

    /// @param node its global must be up to date, and no faces of an earlier cut among its meshes.
    Faces Cut(const MeshNode& node, const std::vector<SectionPlane>& planes, float inset, const Color& color);

    /// Forgets what it knows of geometry.
    void Forget() { m_known.clear(); }

private:
    /// What closes of the meshes of a node, in the node's own space. Nodes with the same meshes
    /// share it.
    struct Shells
    {
        std::vector<Vector> points;
        std::vector<WeldedTriangle> triangles;
        Vector low;
        Vector high;
    };

    /// The geometry is kept alive with what is known of it, so that no other takes its address.
    using Geometry = std::vector<std::shared_ptr<RawMesh>>;

    const Shells& ShellsOf(const MeshNode& node);

    std::map<Geometry, Shells> m_known;
};

/// All mesh nodes in the tree of a scene that are not hidden.
std::vector<MeshNode*> ShownMeshNodes(const Scene& scene);

/// Whether any of the planes runs through the box of a mesh at any of its nodes.
bool IsCut(const Mesh& mesh, const std::vector<SectionPlane>& planes);

/// The same surface, without meshes. The caller's.
Material* CopyOf(const Material& material);

/// A material for faces in the plane of a cut. The caller's.
Material* MakeSectionMaterial(const Color& color);
void SetSectionColor(Material& material, const Color& color);

} // namespace OV::Host::Detail
