#pragma once

#include "orvane/Export.h"
#include "orvane/base/Lifetime.h"
#include "orvane/base/Object.h"
#include "orvane/math/Matrix.h"
#include "orvane/math/Matrix3x3.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/NodeType.h"
#include "orvane/scene/OneOrExtras.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <list>
#include <new>
#include <utility>
#include <vector>

namespace OV
{

class NodeChildren;
class Scene;
enum NodeChange : unsigned;

namespace detail
{

class ChildCursor;
struct Children;
struct MarkedChildren;
struct TreeWalks;

} // namespace detail

/// Place in the scene's tree, with a local and a global transform.
///
/// A node belongs to one scene for life. The scene's update ID is the clock that says which
/// global transforms are stale; UpdateGraph brings them up to date once a frame. Whoever
/// creates a node owns it until Scene::DeleteSubtree, or the end of the scene that holds it
/// in its tree, deletes it.
///
/// The tree decides where a node is, not whether it is drawn. A mesh is drawn at a node when
///
/// | what                                                               | changed by                  |
/// |--------------------------------------------------------------------|-----------------------------|
/// | the mesh lists the node                                            | Mesh::AddNode, RemoveNode   |
/// | the mesh has a material                                            | Material::AddMesh           |
/// | or the node has one, or a line style, of its own                   | NodeMaterial, NodeLineStyle |
/// | that is in a list of the scene which is drawn                      | Scene::AddMaterial          |
/// | the node is neither NodeFlagHidden nor NodeFlagCulled              | MeshNode::SetFlags, culling |
/// | draw IDs of node, mesh and material are 0 or the scene's update ID | SetDrawID                   |
///
/// So a node that RemoveChild has taken out of the tree is still drawn, where it was last: hide
/// it, take it from its meshes, or delete it. Scene::Show hides nothing: the host alone reads it.
/// Which of these calls a frame notices by itself stands at Scene.
///
/// What a host overrides may add, move and remove nodes, and delete them with
/// Scene::DeleteSubtree or by delete, this one and those above it too. What the walk has passed
/// already is not walked again. After a plain delete of its own node an override returns at once.
class ORVANE_API Node
{
public:
    using Path = std::vector<std::pair<std::uint64_t, std::uint64_t>>;

    /// Makes a node with identity transforms that is attached to nothing. A node may have no
    /// scene; UpdateGraph then does nothing.
    explicit Node(Scene* ownScene);

    /// Leaves the parent. The children stay alive, as roots of their own.
    virtual ~Node();

    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;

    // Nodes that are made one after another, of the engine's own classes that scenes have many of, lie side
    // by side in memory: a large scene whose nodes move is bound by it. For any thread.
    static void* operator new(std::size_t size);
    static void* operator new(std::size_t size, const std::nothrow_t& tag) noexcept;
    static void* operator new(std::size_t size, std::align_val_t alignment);
    static void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t& tag) noexcept;
    static void* operator new(std::size_t size, void* place) noexcept;
    static void operator delete(void* memory) noexcept;
    static void operator delete(void* memory, const std::nothrow_t& tag) noexcept;
    static void operator delete(void* memory, std::align_val_t alignment) noexcept;
    static void operator delete(void* memory, std::align_val_t alignment, const std::nothrow_t& tag) noexcept;
    static void operator delete(void* memory, void* place) noexcept;

    /// Places the node relative to its parent. The global transform follows at the next
    /// UpdateGraph.
    virtual void SetLocal(const Transform& t);

    /// Places the node in the world; the local transform follows at once, from the parent's
    /// global transform as that stands now.
    virtual void SetGlobal(const Transform& t);

    /// Brings the global transforms of this node and everything below it up to date.
    /// Composes only where the node or its direct parent changed since the last walk, and goes
    /// only to where there is something to compose, or a node of a host's own class: of such a
    /// class each node that is in the tree is called in every walk, in the order of the tree.
    virtual void UpdateGraph();

    /// Culls everything below and widens the range of visible depths, which count along the
    /// camera's line of sight.
    virtual void UpdateCulling(float& nearValue, float& farValue);

    /// Widens a box in world space, which the caller has set, by everything below.
    virtual void ComputeBoundingBox(Vector& boxMin, Vector& boxMax);

    /// The centre, in world space, of a box that starts at the origin and is widened by
    /// ComputeBoundingBox: the origin is always in it.
    virtual void ComputeCenter(Vector& out);

    virtual int Type() const;
    virtual bool HasType(int type);

    /// Appends the child, which leaves its present parent first, this one too. Nothing
    /// happens for null, this node, an ancestor of it, or a node of another scene.
    /// @param keepGlobal whether the child stays where it is in the world, by a new local
    /// transform. Otherwise it keeps both transforms and takes its new place when its global
    /// transform is next recomputed; the scene is not marked dirty.
    void AddChild(Node* child, bool keepGlobal);

    /// Detaches the child, which keeps its transforms, is drawn on where it was, and then belongs
    /// to the caller. Nothing happens for a node that is no child of this one. Does not mark the
    /// scene dirty.
    void RemoveChild(Node* child);

    /// Null at the root and for a node that was never added.
    Node* GetParent() const
    {
        return parent;
    }

    /// The children in the order of AddChild, as a list that the node keeps from now on: EachChild
    /// needs none. The list of a node that never had a child is not yet its own: ask again after the
    /// first AddChild.
    const std::list<Node*>& GetChildren() const;

    /// The same children, for whoever goes through them. One that leaves its parent ends the way
    /// through them that stands on it.
    NodeChildren EachChild() const;

    /// Null without children.
    Node* GetFirstChild() const
    {
        return m_more.IsEmpty() ? nullptr : EndChild(false);
    }

    Node* GetLastChild() const
    {
        return m_more.IsEmpty() ? nullptr : EndChild(true);
    }

    /// The next child of the same parent; null for the last one, and without a parent.
    Node* GetNextSibling() const
    {
        return m_nextSibling;
    }

    Node* GetPreviousSibling() const
    {
        return m_previousSibling;
    }

    const Transform& GetLocal() const
    {
        return local;
    }

    /// The place in the world as of the last UpdateGraph or SetGlobal.
    const Transform& GetGlobal() const
    {
        return global;
    }

    /// The global transform as of the last UpdateGraph in floats, for rendering. Converted
    /// once per change, and never null: the matrix is the node's own and lives as long. What
    /// it holds changes with an UpdateGraph that moves the node.
    Matrix* GetGlobalMatrix()
    {
        if (globalMatrixDirty.m_state == MatrixFlag::UpAhead)
        {
            globalMatrixDirty = false;
        }
        return m_hasGlobalMatrix && !globalMatrixDirty ? &m_globalMatrix : UpdateGlobalMatrix();
    }

    /// What carries normals to world space by GetGlobal: its transposed inverse in floats,
    /// which keeps no length. Computed once per change; the node's own.
    const Matrix3x3& GetGlobalNormalMatrix()
    {
        return Normals();
    }

    /// Whether GetGlobal turns right-handed into left-handed. Computed once per change.
    bool IsGlobalMirror()
    {
        Normals();
        return m_isGlobalMirror;
    }

    /// What GetGlobalMatrix gave last, without bringing it up to date; null before the first
    /// time.
    const Matrix* PeekGlobalMatrix() const
    {
        return m_hasGlobalMatrix ? &m_globalMatrix : nullptr;
    }

    /// Null for a node without a scene and once the scene is gone.
    Scene* GetScene() const
    {
        return scene;
    }

    /// Ends with the node.
    Lifetime& GetLifetime();

    /// A number that is the host's alone.
    int GetUserData() const
    {
        return userData;
    }

    void SetUserData(int data)
    {
        userData = data;
        TellIdentityChange();
    }

    /// The host's identification of this place, compared with the path of the part of the
    /// model that is being edited. Ask again after the first SetPath.
    const Path& GetPath() const;

    void SetPath(const Path& newPath);

    Object* GetAnimationData() const;

    /// Takes the object over and deletes the present one, even where they are the same: then
    /// none is left.
    void SetAnimationData(Object* data);

protected:
    /// A flag for the derived class that reads and writes it. Within, it also knows of a walk
    /// that raised it and has converted the matrix already.
    class MatrixFlag
    {
    public:
        operator bool() const
        {
            return m_state != Down;
        }

        MatrixFlag& operator=(bool isUp)
        {
            m_state = isUp ? Up : Down;
            return *this;
        }

    private:
        friend class Node;

        enum State : unsigned char
        {
            Down,
            Up,
            UpAhead,
        };
        State m_state = Down;
    };

    /// What goes down a tree by virtual operations.
    enum TreeWalk
    {
        TreeWalkUpdate,
        TreeWalkCulling,
        TreeWalkBox,
        TreeWalkCount,
    };

    /// Tells the listeners of the scene, if there are any.
    void TellChange(NodeChange change);

    /// The node after this one in the tree below top, a node before its children; null at the
    /// end.
    /// @param intoChildren whether the children of the node are walked or passed over.
    static Node* NextInTree(const Node* node, const Node* top, bool intoChildren);

    // What a draw, SetLocal and the walk touch stands first and together: a large scene is bound by
    // memory.
    Node* parent = nullptr;
    Scene* scene = nullptr;
    /// The scene's update ID at the last change of the transforms.
    unsigned int updateID = 0;
    /// NodeFlags and draw ID, of a MeshNode alone: a draw reads them with the matrix.
    unsigned int flags = 0;
    unsigned int drawID = 0;
    /// Whether the global transform was composed or synchronised since GetGlobalMatrix gave it.
    MatrixFlag globalMatrixDirty;
    bool globalNormalsDirty = true;

private:
    /// Whether a walk has to come to a node in any case.
    enum Kind : unsigned char
    {
        KindNotYetKnown, ///< until the first walk after its construction
        KindOfEngine,    ///< only where it moved, or something below it
        KindVisited,     ///< always
    };

    bool m_hasGlobalMatrix = false;
    Kind m_kind : 4;
    bool m_isGlobalMirror : 1;
    bool m_hasGlobalNormals : 1; ///< whether anybody ever asked for them
    /// The update ID under which this node stands among the marked children of its parent; 0 for
    /// never.
    unsigned int m_markedAt = 0;
    /// Rises from child to child.
    std::uint32_t m_rank = 0;
    Node* m_nextMarked = nullptr;

    /// What few nodes have.
    struct Extras;

    /// The children of a node that ever had one, or the extras, which have them then.
    OneOrExtras<detail::Children, Extras> m_more;
    /// The global transform in the form that rendering takes, all in one place.
    Matrix m_globalMatrix;
    Matrix3x3 m_globalNormals;

protected:
    int userData = 0;

private:
    // Among the children of the parent. Here, so that the transforms begin at a multiple of 16 bytes: moving
    // nodes take a tenth more time where 16 bytes of them lie in two cache lines.
    Node* m_nextSibling = nullptr;

protected:
    Transform local;
    Transform global;

private:
    friend class Scene;
    friend class detail::ChildCursor;
    friend struct detail::Children;
    friend struct detail::MarkedChildren;

    /// Whether this node is the other one or stands above it.
    bool IsSameOrAbove(const Node* other) const;

    Extras& MakeExtras();

    /// Null for a node that never had a child.
    detail::Children* OwnChildren() const;

    detail::Children& MakeChildren();

    /// The last or the first of a node that ever had one.
    Node* EndChild(bool last) const;

    void MarkMoved();
    void TellIdentityChange();

    /// Lets the next walk of this update come to this node.
    void Mark(unsigned int current)
    {
        if (m_markedAt != current)
        {
            MarkUpwards(current);
        }
    }

    void MarkUpwards(unsigned int current);

    /// Said as the node leaves its parent's children.
    void Unmark();

    /// Said as the node has become the last of its parent's children.
    void TakeRank();

    /// Whether walks have to come to it always, by its class.
    bool IsOfEngine() const;

    class DeepCursor;

    /// How far the walks of the tree have come: those of the scene, or those of nodes without one.
    detail::TreeWalks& Walks() const;

    /// Does what visit does to a child for every child, in list order, and leaves it to them to
    /// go on below. Deep in a tree the children's own calls come back at once, and this one
    /// goes on below them. The host may change the tree meanwhile; this node may be gone
    /// afterwards.
    template <class Visit>
    void WalkChildren(TreeWalk walk, Visit visit);

    Matrix* UpdateGlobalMatrix();

    const Matrix3x3& Normals()
    {
        return m_hasGlobalMatrix && !globalNormalsDirty ? m_globalNormals : UpdateNormals();
    }

    const Matrix3x3& UpdateNormals();

    /// Composes the global transform where this node or its parent has moved, in a node that has a scene.
    void FollowParent();

    /// The walk of an update below this node.
    void UpdateBelow();

    /// All nodes of a scene, attached or not, so that it can tell them that it is gone.
    Node* m_previousOfScene = nullptr;
    Node* m_nextOfScene = nullptr;
    Node* m_previousSibling = nullptr; ///< among the children of the parent
};

/// The children of a node, in the order of Node::AddChild.
class NodeChildren
{
public:
    class Iterator
    {
    public:
        using iterator_category = std::bidirectional_iterator_tag;
        using value_type = Node*;
        using difference_type = std::ptrdiff_t;
        using pointer = Node* const*;
        using reference = Node*;

        Iterator() = default;

        Iterator(const Node* parentNode, Node* child) : m_parent(parentNode), m_child(child)
        {
        }

        Node* operator*() const
        {
            return m_child;
        }

        Iterator& operator++()
        {
            m_child = m_child->GetNextSibling();
            return *this;
        }

        Iterator operator++(int)
        {
            const Iterator before = *this;
            ++*this;
            return before;
        }

        Iterator& operator--()
        {
            m_child = m_child ? m_child->GetPreviousSibling() : m_parent->GetLastChild();
            return *this;
        }

        Iterator operator--(int)
        {
            const Iterator before = *this;
            --*this;
            return before;
        }

        bool operator==(const Iterator& other) const
        {
            return m_child == other.m_child;
        }

        bool operator!=(const Iterator& other) const
        {
            return m_child != other.m_child;
        }

    private:
        const Node* m_parent = nullptr;
        Node* m_child = nullptr; ///< null behind the last
    };

    explicit NodeChildren(const Node& parentNode) : m_parent(&parentNode)
    {
    }

    Iterator begin() const
    {
        return Iterator(m_parent, m_parent->GetFirstChild());
    }

    Iterator end() const
    {
        return Iterator(m_parent, nullptr);
    }

    std::reverse_iterator<Iterator> rbegin() const
    {
        return std::make_reverse_iterator(end());
    }

    std::reverse_iterator<Iterator> rend() const
    {
        return std::make_reverse_iterator(begin());
    }

    bool empty() const
    {
        return !m_parent->GetFirstChild();
    }

private:
    const Node* m_parent;
};

inline NodeChildren Node::EachChild() const
{
    return NodeChildren(*this);
}

} // namespace OV
