#pragma once

#include "orvane/Export.h"
#include "orvane/scene/AlphaMeshNode.h"
#include "orvane/scene/PointerSpan.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace OV
{

class CameraNode;
class Color;
class LightNode;
class Line;
class LineStyle;
class Material;
class Mesh;
class MeshNode;
class Node;
class NodeListener;
class Vector;
enum NodeChange : unsigned;
struct DrawItemPlace;

namespace detail
{

struct TreeWalks;

} // namespace detail

/// The 3D world: a tree of nodes, and the materials, meshes, lines and line styles in it.
///
/// The scene owns what is in it and deletes it at Clear and at its end; what leaves through a
/// Remove operation belongs to the caller. It is the clock of the nodes, by the update ID, and
/// knows whether anything changed since the last frame, by the dirty flag.
///
/// A clean scene is neither walked nor, where the host goes by AppContext::Update, drawn anew.
///
/// | marks the scene dirty                            | does not: the host calls MarkDirty         |
/// |--------------------------------------------------|--------------------------------------------|
/// | SetLocal, SetGlobal, AddChild that keeps globals | AddChild that does not, RemoveChild        |
/// | DeleteSubtree, Clear                             | deletion of a node by itself               |
/// | meshes, lines and lights made or gone            | AddNode, RemoveNode, flags and draw IDs    |
/// | materials and line styles added or removed,      | AddMesh, RemoveMesh, and any value of a    |
/// | ProcessChangedMaterial                           | material, light, line style or geometry    |
/// | nodes of a NodeMaterial                          | the node of a NodeLineStyle                |
/// | Show, Resume, a texture still to come            | EnableLights, SetCamera, OverrideViewport  |
/// | setters of Sprite and Text, moves of a Shape2D   | values of a Material2D, UpdateToClipRegion |
///
/// Taking a node out by RemoveChild and putting it back by AddChild(child, false) is thus seen by
/// nobody: call MarkDirty after each.
///
/// A host that the engine calls while it updates, draws or suspends (a texture loader, a derived
/// node, a screen mapping) may edit the scene there. What Clear and DeleteSubtree take away
/// leaves the scene at once and is deleted when the outermost operation of the engine ends; what
/// a host deletes by delete is gone at once and no longer visited or drawn. What is added is
/// drawn from the next frame on. A scene that is being updated or drawn is not updated again:
/// UpdateGraph then returns at once.
class ORVANE_API Scene
{
public:
    /// Makes a scene with a root and a default camera below it. It starts dirty, with update
    /// ID 1.
    Scene();
    virtual ~Scene();

    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    /// Deletes everything in the scene and gives it a new root and default camera. Settings,
    /// update ID and a camera of the host's that is not in the tree stay. Called from within an
    /// operation of the engine it empties the scene at once and deletes later.
    virtual void Clear();

    /// Takes the material over, into the alpha list when it is transparent now, else into the
    /// optimized list.
    /// @return false when it is null or in a scene already.
    virtual bool AddMaterial(Material* material);

    /// Hands the material back to the caller.
    /// @return false when it is in neither list.
    virtual bool RemoveMaterial(Material* material);

    /// The first material of exactly this name, opaque ones first, or null.
    virtual Material* GetMaterial(const std::string& name);

    /// Takes the style over.
    /// @return false when it is null or in a scene already.
    virtual bool AddLineStyle(LineStyle* style);

    /// Hands the style back to the caller.
    /// @return false when it is not in the list.
    virtual bool RemoveLineStyle(LineStyle* style);

    /// Brings the scene up to date, once a frame: the camera always, the tree and the order of
    /// the draw items only when dirty. Then the update ID rises and the scene is clean. The
    /// size is that of the screen, in the unit that the camera maps to.
    virtual void UpdateGraph(float width, float height);

    /// Deletes the render data of line styles, lines, materials and meshes, before the GL
    /// context is lost.
    virtual void Suspend();

    /// Marks the scene dirty; the next frame makes render data anew.
    virtual void Resume();

    /// Gives the exact box of all vertices at plain mesh nodes, in world space, by the global
    /// transforms as they stand. An empty scene gives the extremes of float, the wrong way
    /// round.
    virtual void GetBoundingBox(Vector& boxMin, Vector& boxMax);

    /// Kept for the host; the engine does not read it.
    bool IsVisible() const
    {
        return visible;
    }

    void Show(bool show)
    {
        visible = show;
        MarkDirty();
    }

    bool IsDirty() const
    {
        return dirty;
    }

    void MarkDirty()
    {
        dirty = true;
    }

    bool IsLit() const
    {
        return lit;
    }

    /// Does not mark the scene dirty.
    void EnableLights(bool enable)
    {
        lit = enable;
    }

    /// The number of the coming update, by which changes and draw IDs are stamped.
    unsigned int GetUpdateID() const
    {
        return updateID;
    }

    bool IsMemoryLow() const
    {
        return memoryLow;
    }

    /// There is no way back.
    void SetLowMemory()
    {
        memoryLow = true;
    }

    /// Gives three numbers that a host or a derived class keeps; the engine writes none.
    void GetTextureStats(int& first, int& second, int& third) const;

    /// Kept for the host; the engine does not read it.
    float& ConversionFactor()
    {
        return conversionFactor;
    }

    /// Kept for the host; the engine does not read it.
    bool& UnitScalingFlag()
    {
        return unitScaling;
    }

    /// Stores the rectangle whether enabled or not.
    void OverrideViewport(bool enable, int x, int y, int width, int height);

    /// Gives the rectangle whether enabled or not.
    /// @return whether it is enabled.
    bool GetOverrideViewport(int& x, int& y, int& width, int& height) const;

    /// Null only once a host has deleted it.
    Node* GetRoot() const
    {
        return root;
    }

    const std::vector<LightNode*>& GetLights() const
    {
        return lights;
    }

    /// Ordered by address.
    const std::set<Line*>& GetLines() const
    {
        return lines;
    }

    /// Ordered by address, as a set that the scene keeps from now on: EachMesh needs none. Lines are
    /// not among them.
    const std::set<Mesh*>& GetMeshes() const;

    /// The same meshes in no order, for whoever goes through them at once: good until a mesh comes or
    /// leaves.
    PointerSpan<Mesh> EachMesh() const
    {
        return PointerSpan<Mesh>(m_meshes.data(), m_meshes.size());
    }

    const std::vector<LineStyle*>& GetLineStyles() const
    {
        return lineStyles;
    }

    const std::vector<Material*>& GetAlphaMaterials() const
    {
        return alphaMaterials;
    }

    const std::vector<Material*>& GetOptimizedMaterials() const
    {
        return optimizedMaterials;
    }

    /// The scene's own; an item leaves the list when its node or mesh dies.
    ///
    /// Ask again after that: in a list of several hundred such an item stays, with null for node
    /// and mesh, until the next call takes it out.
    const std::vector<AlphaMeshNode*>& GetZOrderedDrawItems() const
    {
        if (m_hasGoneDrawItems)
        {
            DropGoneDrawItems();
        }
        return zOrderedDrawItems;
    }

    /// Looks through this camera, or through the default camera again for null. The camera
    /// stays the caller's; deleting it ends its use here.
    void SetCamera(CameraNode* camera);

    /// The camera set, else the default one. Null only once a host has deleted that.
    CameraNode* GetCameraNode() const
    {
        return overrideCamera ? overrideCamera : defaultCamera;
    }

    /// The first style of exactly this name, or null.
    LineStyle* GetLineStyle(const std::string& name) const;

    /// Null, always: styles are not found by colour.
    LineStyle* GetLineStyle(const Color& color) const;

    /// Moves a material to the end of the list that its present transparency calls for.
    /// @return false when it is not in this scene.
    bool ProcessChangedMaterial(Material* material);

    /// Fills the list of draw items anew from the alpha list: material by material, mesh by
    /// mesh, node by node. They are sorted by the next update that finds the scene dirty.
    void PopulateZOrderedDrawItems();

    /// Moves a perspective camera back along the world's Z, until it sees all bounding
    /// spheres. The arithmetic of an empty scene is not finite. From within an update of the
    /// scene it returns at once.
    void Frame();

    /// Tells a listener what changes at the nodes from now on. It stays the caller's; it leaves the
    /// scene that it listened to before. Nothing happens for null.
    void AddNodeListener(NodeListener* listener);

    /// Nothing for a listener that is not there.
    void RemoveNodeListener(NodeListener* listener);

    bool HasNodeListeners() const
    {
        return !m_nodeListeners.empty();
    }

    /// Deletes the node and everything below it, and marks the scene dirty, also for null.
    /// Called from within an operation of the engine it takes them out of the tree and off their
    /// meshes at once and deletes them when the outermost operation ends.
    void DeleteSubtree(Node* node);

protected:
    /// Sorts the draw items back to front; not stable.
    virtual void ProcessZOrderedDrawItems();

    void Initialize();
    void Cleanup();

    /// Culls the whole tree and gives the camera the range of visible depths.
    void UpdateCulling();

    /// Gives the camera planes around a range of depths.
    void ProcessNearFar(float nearValue, float farValue);

    /// Takes the mesh over, from another scene too.
    bool AddMesh(Mesh* mesh);
    bool RemoveMesh(Mesh* mesh);
    bool AddLine(Line* line);
    bool RemoveLine(Line* line);
    bool AddLightNode(LightNode* light);
    bool RemoveLightNode(LightNode* light);

    struct Viewport
    {
        int x = -1;
        int y = -1;
        int width = -1;
        int height = -1;
    };

    bool visible = true;
    Node* root = nullptr;
    CameraNode* overrideCamera = nullptr;
    CameraNode* defaultCamera = nullptr;
    std::vector<Material*> alphaMaterials;
    std::vector<Material*> optimizedMaterials;
    std::vector<LineStyle*> lineStyles;
    std::set<Line*> lines;
    /// A derived class may reorder the items and write their z, but not add or remove any.
    /// Outside ProcessZOrderedDrawItems it reads them through GetZOrderedDrawItems.
    mutable std::vector<AlphaMeshNode*> zOrderedDrawItems;
    std::vector<LightNode*> lights;
    bool unitScaling = true;
    float conversionFactor = 1.0f;
    unsigned int updateID = 1;
    bool dirty = true;
    bool viewportOverridden = false;
    Viewport viewport;
    bool lit = true;
    int textureStats[3] = {0, 0, 0};
    bool memoryLow = false;

private:
    friend class CameraNode;
    friend class LightNode;
    friend class Line;
    friend class Mesh;
    friend class MeshNode;
    friend class Node;

    /// What a scene owns.
    struct Contents
    {
        Node* root = nullptr;
        std::vector<Mesh*> meshes;
        std::set<Line*> lines;
        std::vector<LineStyle*> lineStyles;
        std::vector<Material*> optimizedMaterials;
        std::vector<Material*> alphaMaterials;
    };

    void TellNodeChanged(Node& node, NodeChange change);

    void Register(Node* node);
    void Unregister(Node* node);

    /// The list that a node of this scene stands in.
    Node*& FirstOfItsKind(const Node* node);
    void Link(Node* node);
    void Unlink(Node* node);

    /// Lets the walks of this update come to each node of a class of which the engine does not know
    /// what it does in a walk.
    void MarkVisitedNodes()
    {
        if (m_visitedNodesMarkedAt != updateID)
        {
            FindAndMarkVisitedNodes();
        }
    }

    void FindAndMarkVisitedNodes();

    /// Brings the tree up to date, and the one that a host puts in its place meanwhile.
    void UpdateTree();

    Contents TakeContents();
    void Delete(Contents& contents);

    /// Empties the scene for Clear while a walk may stand on what is in it.
    void SetContentsAside();
    void DeleteContentsSetAside();

    /// Takes out of what is set aside what its owner removes or deletes.
    bool TakeBack(Material* material);
    bool TakeBack(LineStyle* style);
    bool TakeBack(Mesh* mesh);
    bool TakeBackLine(Line* line);

    /// Leaves a subtree to the end of the walk, out of sight.
    void PostponeDeletion(Node* top);
    static void DeleteDetached(Node* top);

    /// Whether a mesh stands in a list of meshes of this scene: it knows its place there.
    static bool IsAmong(const std::vector<Mesh*>& list, const Mesh* mesh);

    /// Takes out a mesh that is there; the last one takes its place.
    static void TakeOut(std::vector<Mesh*>& list, const Mesh* mesh);

    /// Brings the meshes into the order of their addresses.
    void SortMeshes();

    /// Takes a mesh or line out of the registries of any other scene.
    void LeaveOtherScene(Mesh* mesh);

    /// Clears the back pointer of a mesh or line that is in no registry of this scene.
    void ReleaseMesh(Mesh* mesh);

    /// How node and mesh of a draw item find it, and it them. Its number is its place among
    /// the links; the list of items may have any order.
    struct DrawItemLink
    {
        /// Null once node or mesh are gone.
        AlphaMeshNode* item;
        MeshNode* node;
        Mesh* mesh;
        /// Its places in the lists of the two.
        std::size_t placeAtNode;
        std::size_t placeAtMesh;
    };

    void AppendDrawItem(MeshNode* node, Mesh* mesh);

    /// Makes node and mesh forget an item, and the item them. It stays in the list.
    void UnlinkDrawItem(DrawItemLink& link);

    /// Takes out all items of a node or mesh that dies, of whatever scene.
    static void RemoveDrawItemsOf(std::vector<DrawItemPlace>& places);
    void DropGoneDrawItems() const;
    void ClearDrawItems();

    std::vector<Mesh*> m_meshes; ///< in no order
    std::uint64_t m_meshesRevision = 0;
    mutable std::unique_ptr<std::set<Mesh*>> m_meshSet; ///< null until it is asked for
    /// Out of the scene by a Clear, and to be deleted when the walks are over.
    std::vector<Contents> m_setAside;
    /// Heads of the lists of all nodes of this scene, attached or not: of those that every walk has
    /// to come to, and of all others, where new ones stand first until the next walk.
    Node* m_firstVisitedNode = nullptr;
    Node* m_firstNode = nullptr;
    unsigned int m_visitedNodesMarkedAt = 0;
    std::unique_ptr<detail::TreeWalks> m_treeWalks;
    std::vector<NodeListener*> m_nodeListeners;
    std::vector<DrawItemLink> m_drawItemLinks;
    mutable bool m_hasGoneDrawItems = false;
    /// Draw items out of use, so that filling the list anew allocates nothing.
    std::vector<std::unique_ptr<AlphaMeshNode>> m_spareDrawItems;
};

} // namespace OV
