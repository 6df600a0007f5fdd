#pragma once

#include "orvane/Export.h"
#include "orvane/base/Object.h"
#include "orvane/scene/BitSet.h"
#include "orvane/scene/NodeType.h"
#include "orvane/scene/OneOrExtras.h"
#include "orvane/scene/PointerSpan.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace OV
{

class Color;
class Material;
class MeshNode;
class RawMesh;
class Scene;
class Sphere;
class TextureCoordinate;
class Vector;

/// What the engine reads of a mesh; all other bits are the host's.
enum MeshFlags : unsigned
{
    /// Back faces are drawn too, if the mesh has a material.
    MeshFlagNoCull = 0x01,
    /// Back faces are marked.
    MeshFlagShowFaceSides = 0x02,
    /// Handed to the effect with each draw.
    MeshFlagEffectFlag = 0x04,
    /// Drawn without colour by the advanced materials.
    MeshFlagMonochrome = 0x08,
};
ORVANE_BIT_SET(MeshFlags)

/// One use of a RawMesh in a scene: with a material, at nodes, with flags of its own.
///
/// A scene owns its meshes. A mesh without a scene belongs to whoever made it.
class ORVANE_API Mesh
{
public:
    /// Makes a mesh without a scene. Given null it gets an empty RawMesh.
    explicit Mesh(const std::shared_ptr<RawMesh>& geometry);

    /// Makes a mesh that the scene owns, unless that is null.
    Mesh(const std::shared_ptr<RawMesh>& geometry, Scene* ownScene);

    /// Makes a new mesh over the RawMesh of the other; nothing else of it is taken.
    Mesh(const Mesh& other, Scene* ownScene);

    /// Takes the RawMesh, flags, draw ID and sort ID, which then is no longer unique. The copy
    /// has no scene, nodes, material or render data of its own.
    Mesh(const Mesh& other);

    /// Takes what a copy takes. This mesh keeps its scene, nodes and material and drops its
    /// render data; it leaves the material if that holds a mesh of the same sort ID.
    Mesh& operator=(const Mesh& other);

    /// Leaves scene, material and nodes. Deletes the render data of the RawMesh even where
    /// other meshes share that: they make theirs anew at need.
    virtual ~Mesh();

    virtual int Type() const;
    virtual bool HasType(int type);

    /// Never null.
    const std::shared_ptr<RawMesh>& GetRawMesh() const
    {
        return rawMesh;
    }

    Material* GetMaterial() const
    {
        return material;
    }

    /// The nodes that show this mesh, in the order of AddNode, as a list that the mesh keeps from
    /// now on: EachNode needs none.
    ///
    /// Ask again once a node has left: where several hundred stand behind it in the list, its
    /// entry reads null until the next call closes the gap.
    const std::vector<MeshNode*>& GetNodes() const;

    /// The same nodes, for whoever goes through them at once: good until a node comes or leaves, or
    /// GetNodes is called.
    PointerSpan<MeshNode> EachNode() const
    {
        return m_nodes.HasExtras() ? ListedNodes() : m_nodes.GetOne();
    }

    Scene* GetScene() const
    {
        return scene;
    }

    /// Moves the mesh to this scene, which then owns it. Nothing happens for null.
    void SetScene(Scene* newScene);

    /// MeshFlags and the host's own bits.
    unsigned int GetFlags() const
    {
        return flags;
    }

    void SetFlags(MeshFlags bits)
    {
        flags |= bits;
        DrawChanged();
    }

    void ClearFlags(MeshFlags bits)
    {
        flags &= ~bits;
        DrawChanged();
    }

    /// Rises in order of creation, over all meshes of the process.
    std::uint64_t GetSortID() const
    {
        return sortID;
    }

    const std::vector<Vector>& GetPositionBuffer() const;
    const std::vector<Vector>& GetNormalBuffer() const;
    const std::vector<TextureCoordinate>& GetTextureBuffer() const;
    const std::vector<Color>& GetColorBuffer() const;
    const std::vector<unsigned short>& GetIndices() const;
    std::uint64_t GetNumVertices() const;
    std::uint64_t GetNumIndices() const;

    /// In the mesh's own space, like the sphere and the sizes.
    void GetBBox(Vector& boxMin, Vector& boxMax) const;
    const Sphere& GetSphere() const;
    Sphere& GetSphere();
    float GetSizeX() const;
    float GetSizeY() const;
    float GetSizeZ() const;
    /// The diagonal of the box.
    float GetRefSize() const;

    /// Shows this mesh at the node too.
    /// @return false when it is null or shows the mesh already.
    bool AddNode(MeshNode* node);

    /// @return false when the node does not show this mesh.
    bool RemoveNode(MeshNode* node);

    /// Reverses the winding of every whole triangle.
    /// @param makeCopy whether a new mesh over a RawMesh of its own is made, in the scene of
    /// this one, which then owns it; without a scene the caller does. Otherwise the RawMesh is
    /// changed for all that share it, and render data are dropped.
    /// @return the mesh changed; null for null.
    static Mesh* InvertOrder(Mesh* mesh, bool makeCopy);

    /// Asks to be drawn only in the frame of this update ID of the scene; 0 in every frame.
    void SetDrawID(unsigned int id)
    {
        drawID = id;
        DrawChanged();
    }

    bool UsingDrawID() const
    {
        return drawID != 0;
    }

    /// Keeps the mesh from being drawn until the next SetDrawID.
    void InvalidateDrawID()
    {
        SetDrawID(1);
    }

    /// False for a mesh that uses a draw ID and has no scene.
    bool ReadyToDraw() const
    {
        return drawID == 0 || MatchesUpdateID();
    }

    /// Of the RawMesh or of the mesh alone, whichever was set last.
    Object* GetRenderData() const;

    /// Takes the object over for the RawMesh, so for all that share it, or for this mesh
    /// alone, and deletes what was in the slot that counted and in the one that now does. The
    /// object that is in one of them already stays alive.
    void SetRenderData(Object* data, bool onRawMesh);

    /// Deletes the render data; the next frame makes them anew.
    void Suspend();

    /// Does nothing.
    void Resume();

protected:
    // What a draw reads stands first and together: a frame walks every mesh.
    std::shared_ptr<RawMesh> rawMesh;

private:
    /// What few meshes have.
    struct Extras;

    /// The only node, or the extras with the list of nodes. AddNode and RemoveNode alone put nodes in
    /// and take them out.
    mutable OneOrExtras<MeshNode, Extras> m_nodes;

protected:
    Material* material = nullptr;
    unsigned int drawID = 0;
    unsigned int flags = 0;
    Scene* scene = nullptr;
    // In one word: a large scene has many meshes.
    std::uint64_t sortID : 63;
    std::uint64_t renderDataOnRawMesh : 1;

    /// The one taken last, over all meshes of the process.
    static std::uint64_t LastSortID();

    /// What stands in the slot of this mesh alone, whether that counts or not.
    Object* GetOwnRenderData() const;

private:
    friend class Material;
    friend class MeshNode;
    friend class Scene;

    bool MatchesUpdateID() const;

    /// Takes out the node of this rank, in a time that does not grow with the number of nodes.
    void DropNode(std::uint64_t rank);
    void CloseNodeGaps() const;

    /// Tells the material and who listens to the nodes that the mesh is drawn in another way now.
    void DrawChanged();

    /// Tells the material, so that nobody goes by an older list of its meshes.
    void TellMaterial() const;

    /// Tells who listens to the nodes that they show another mesh now.
    void TellNodes() const;

    Extras& MakeExtras() const;
    PointerSpan<MeshNode> ListedNodes() const;

    /// Among the meshes of its scene.
    std::uint32_t m_placeInScene = 0;
};

} // namespace OV
