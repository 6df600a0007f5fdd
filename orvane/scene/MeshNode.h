#pragma once

#include "orvane/scene/BitSet.h"
#include "orvane/scene/Node.h"
#include "orvane/scene/OneOrExtras.h"
#include "orvane/scene/PointerSpan.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace OV
{

class Mesh;
class NodeLineStyle;
class NodeMaterial;

/// What the engine reads of a node; all other bits are the host's.
enum NodeFlags : unsigned
{
    /// Not drawn, culled, counted or hit.
    NodeFlagHidden = 0x01,
    /// Outside the frustum at the last test, and so not drawn.
    NodeFlagCulled = 0x02,
    /// Drawn by an item of its own, with a material or line style of its own.
    NodeFlagHasNodeMaterial = 0x04,
    /// Left out of the overlay's hit test.
    NodeFlagNoHitTest = 0x08,
};
ORVANE_BIT_SET(NodeFlags)

/// Node that places meshes in the world. Mesh::AddNode links the two, many to many.
class ORVANE_API MeshNode : public Node
{
public:
    explicit MeshNode(Scene* ownScene);

    /// Leaves its meshes, node materials and line styles, which all stay alive.
    ~MeshNode() override;

    void UpdateGraph() override;

    /// Culls this node, then everything below it, even below a hidden or culled node.
    void UpdateCulling(float& nearValue, float& farValue) override;

    /// Widens the box by the bounding spheres of the meshes, unless hidden, then by
    /// everything below.
    void ComputeBoundingBox(Vector& boxMin, Vector& boxMax) override;

    int Type() const override;
    bool HasType(int type) override;

    /// Tests the bounding spheres against the scene's camera, keeps the result in
    /// NodeFlagCulled, and widens the range of depths by a visible node's meshes. A hidden
    /// node, or one without a camera to test against, is left as it is.
    /// @return whether the node is culled, as one without meshes always is.
    bool FrustumCulling(float& nearValue, float& farValue);

    /// In the order of Mesh::AddNode, as a list that the node keeps from now on: EachMesh needs none.
    const std::vector<Mesh*>& GetMeshes() const;

    /// The same meshes, for whoever goes through them at once: good until a mesh comes or leaves, or
    /// GetMeshes is called.
    PointerSpan<Mesh> EachMesh() const
    {
        return m_meshes.HasExtras() ? ListedMeshes() : m_meshes.GetOne();
    }

    /// NodeFlags and the host's own bits.
    unsigned int GetFlags() const
    {
        return flags;
    }

    /// Sets bits; does not mark the scene dirty. A recursive call descends from MeshNode to
    /// MeshNode: a child of another kind ends it on its branch.
    void SetFlags(NodeFlags bits, bool recursive);

    /// Clears bits, with the reach of SetFlags.
    void ClearFlags(NodeFlags bits, bool recursive);

    /// Asks to be drawn only in the frame of this update ID of the scene; 0 in every frame.
    void SetDrawID(unsigned int id)
    {
        drawID = id;
        TellStateChange();
    }

    bool UsingDrawID() const
    {
        return drawID != 0;
    }

    /// Keeps the node from being drawn until the next SetDrawID.
    void InvalidateDrawID()
    {
        SetDrawID(1);
    }

    /// False for a node that uses a draw ID and has no scene.
    bool ReadyToDraw() const
    {
        return drawID == 0 || MatchesUpdateID();
    }

    /// The node material that was added first of those present, or null.
    NodeMaterial* CurrentNodeMaterial() const
    {
        return m_meshes.HasExtras() ? FirstNodeMaterial() : nullptr;
    }

    Object* GetRenderData() const;

    /// Takes the object over and deletes the present one, even where they are the same: then
    /// none is left.
    void SetRenderData(Object* data);

    /// Held for the host alone. The name is spelled so.
    Object* GetCollisonData() const;

    /// As SetRenderData.
    void SetCollisionData(Object* data);

protected:
    /// Nothing for a material that is there already.
    void PushNodeMaterial(NodeMaterial* material);

    /// Clears NodeFlagHasNodeMaterial when no material is left, even if this one never was
    /// there.
    void RemoveNodeMaterial(NodeMaterial* material);

    /// In the order of PushNodeMaterial.
    const std::vector<NodeMaterial*>& GetNodeMaterials() const;

private:
    friend class Mesh;
    friend class NodeLineStyle;
    friend class NodeMaterial;
    friend class Scene;

    struct Links;

    Links* GetLinks() const
    {
        return m_meshes.GetExtras();
    }

    Links& MakeLinks() const;
    PointerSpan<Mesh> ListedMeshes() const;

    NodeMaterial* FirstNodeMaterial() const;

    void TellStateChange();

    void ChangeFlags(unsigned int kept, unsigned int added, bool recursive);

    void AddMesh(Mesh* mesh, std::uint64_t rank);
    void RemoveMeshAt(std::size_t index);

    /// By which the mesh of that index finds this node among its own.
    std::uint64_t RankAt(std::size_t index) const;

    bool MatchesUpdateID() const;

    /// Leaves the meshes and the lists of draw items.
    void LeaveMeshes();

    /// Of the first mesh.
    std::uint64_t m_firstRank = 0;
    /// The only mesh, or what few nodes have, the list of meshes among it. Mesh::AddNode and
    /// RemoveNode alone put meshes in and take them out.
    mutable OneOrExtras<Mesh, Links> m_meshes;
};

} // namespace OV
