#include "orvane/scene/Node.h"

#include "orvane/base/detail/Walk.h"
#include "orvane/scene/NodeListener.h"
#include "orvane/scene/Scene.h"
#include "orvane/scene/detail/Children.h"
#include "orvane/scene/detail/OwnedObject.h"
#include "orvane/scene/detail/TreeCursor.h"

#include <iterator>
#include <limits>
#include <memory>
#include <utility>

namespace OV
{

namespace
{

/// Below this many levels the tree is walked without recursion: it may be deeper than the stack.
/// What a derived class does after the walk of its base finds everything below it done down to
/// there alone.
constexpr unsigned int kDeepestRecursion = 256;

} // namespace

struct Node::Extras
{
    std::unique_ptr<Object> animationData;
    Path path;
    std::unique_ptr<detail::Children> children;
    Lifetime lifetime;
};

Node::Node(Scene* ownScene) :
    scene(ownScene),
    m_kind(KindNotYetKnown),
    m_isGlobalMirror(false),
    m_hasGlobalNormals(false)
{
    if (scene)
    {
        scene->Register(this);
    }
}

Node::~Node()
{
    detail::Walk::Tell(this);
    detail::TreeCursor::NodeDies(Walks(), this);
    if (parent)
    {
        parent->RemoveChild(this);
    }
    for (Node* child = GetFirstChild(); child;)
    {
        child->parent = nullptr;
        child->m_markedAt = 0;
        child->m_previousSibling = nullptr;
        child = std::exchange(child->m_nextSibling, nullptr);
    }
    if (scene)
    {
        scene->Unregister(this);
    }
    if (Extras* const extras = m_more.GetExtras())
    {
        // The slot is empty while the object dies, as at every other death of one.
        extras->animationData.reset();
        extras->lifetime.End();
        m_more.Delete();
    }
    else
    {
        delete m_more.GetPointer();
    }
}

void Node::SetLocal(const Transform& t)
{
    local = t;
    MarkMoved();
}

void Node::SetGlobal(const Transform& t)
{
    Transform toParent;
    if (parent)
    {
        toParent.Invert(parent->global);
    }
    global = t;
    globalNormalsDirty = true;
    // What the walk converted is out of date now. A flag that is down stays down: that is meant.
    globalMatrixDirty = static_cast<bool>(globalMatrixDirty);
    local.Multiply(toParent, global);
    MarkMoved();
}

inline void Node::FollowParent()
{
    const unsigned int current = scene->GetUpdateID();
    const bool parentMoved = parent && parent->updateID == current;
    if (!parentMoved && updateID != current)
    {
        return;
    }
    updateID = current;
    globalNormalsDirty = true;
    // At once what a draw takes, while the transform is at hand: to come back for it makes 10,000 moving nodes
    // a third slower. A host's class may go on to write the transform.
    const bool convertsAhead = parent && m_hasGlobalMatrix && m_kind == KindOfEngine;
    if (convertsAhead)
    {
        global.Multiply(parent->global, local, m_globalMatrix);
    }
    else if (parent)
    {
        global.Multiply(parent->global, local);
    }
    else
    {
        global = local;
    }
    globalMatrixDirty.m_state = convertsAhead ? MatrixFlag::UpAhead : MatrixFlag::Up;
    if (convertsAhead && m_hasGlobalNormals)
    {
        UpdateNormals();
    }
    TellChange(NodeChangePlace);
}

void Node::UpdateGraph()
{
    if (!scene)
    {
        return;
    }
    FollowParent();
    if (!m_more.IsEmpty())
    {
        UpdateBelow();
    }
}

void Node::UpdateBelow()
{
    if (!GetFirstChild())
    {
        return;
    }
    const unsigned int current = scene->GetUpdateID();
    scene->MarkVisitedNodes();
    if (updateID != current && !OwnChildren()->marked.HasAny(current))
    {
        return;
    }
    WalkChildren(TreeWalkUpdate,
                 [](Node* child)
                 {
                     // What the engine's own classes do in it is known.
                     child->m_kind == KindOfEngine ? child->Node::UpdateGraph() : child->UpdateGraph();
                 });
}

void Node::UpdateCulling(float& nearValue, float& farValue)
{
    WalkChildren(TreeWalkCulling, [&](Node* child) { child->UpdateCulling(nearValue, farValue); });
}

void Node::ComputeBoundingBox(Vector& boxMin, Vector& boxMax)
{
    WalkChildren(TreeWalkBox, [&](Node* child) { child->ComputeBoundingBox(boxMin, boxMax); });
}

/// Where a walk without recursion stands below a node.
class Node::DeepCursor final : public detail::TreeCursor
{
public:
    DeepCursor(const Node* top, detail::TreeWalks& walks, TreeWalk walk) :
        TreeCursor(top, walks), m_walk(walk), m_visitedBefore(walks.visited[walk])
    {
    }

    ~DeepCursor()
    {
        if (m_walks)
        {
            m_walks->visited[m_walk] = m_visitedBefore;
        }
    }

    /// The first node below, then the next after the one that was dealt with; null at the end,
    /// and once the top or the scene is gone. A derived class that did not call its base keeps
    /// the walk from going on below.
    Node* Next()
    {
        if (!m_top || !m_walks)
        {
            return nullptr;
        }
        if (m_hasLeft)
        {
            m_hasLeft = false;
        }
        else
        {
            m_node = NextInTree(m_node ? m_node : m_top, m_top, !m_node || !m_walks->visited[m_walk]);
        }
        m_walks->visited[m_walk] = m_node;
        return m_node;
    }

private:
    void Leave(const Node*, const Node* child) override
    {
        for (const Node* node = m_node; node && node != m_top; node = node->parent)
        {
            if (node == child)
            {
                m_node = NextInTree(child, m_top, false);
                m_hasLeft = true;
                return;
            }
        }
    }

    TreeWalk m_walk;
    const Node* m_visitedBefore;
    Node* m_node = nullptr;
    /// Whether the node is one that is still to be dealt with, since the one before left.
    bool m_hasLeft = false;
};

detail::TreeWalks& Node::Walks() const
{
    thread_local detail::TreeWalks walksWithoutScene;
    return scene ? *scene->m_treeWalks : walksWithoutScene;
}

template <class Visit>
void Node::WalkChildren(TreeWalk walk, Visit visit)
{
    if (!GetFirstChild())
    {
        return;
    }
    detail::TreeWalks& walks = Walks();
    static_assert(std::size(detail::TreeWalks().visited) == TreeWalkCount);
    const Node*& visited = walks.visited[walk];
    if (visited == this)
    {
        // The walk that asked goes on below this node.
        visited = nullptr;
        return;
    }
    if (walks.depth < kDeepestRecursion)
    {
        // Where this node has moved, all below it move along.
        const bool isOfSome = walk == TreeWalkUpdate && updateID != scene->GetUpdateID();
        for (detail::ChildCursor cursor(this, walks, isOfSome);
             Node* child = cursor.Next();)
        {
            visit(child);
        }
        return;
    }
    for (DeepCursor cursor(this, walks, walk); Node* node = cursor.Next();)
    {
        visit(node);
    }
}

Node* Node::NextInTree(const Node* node, const Node* top, bool intoChildren)
{
    if (Node* const child = intoChildren ? node->GetFirstChild() : nullptr)
    {
        return child;
    }
    for (; node != top && node->parent; node = node->parent)
    {
        if (node->m_nextSibling)
        {
            return node->m_nextSibling;
        }
    }
    return nullptr;
}

void Node::ComputeCenter(Vector& out)
{
    Vector boxMin;
    Vector boxMax;
    ComputeBoundingBox(boxMin, boxMax);
    out.Add(boxMin, boxMax);
    out.Scale(0.5f);
}

int Node::Type() const
{
    return NodeTypeNode;
}

bool Node::HasType(int type)
{
    return type == NodeTypeNode;
}

void Node::AddChild(Node* child, bool keepGlobal)
{
    if (!child || child->scene != scene || child->IsSameOrAbove(this))
    {
        return;
    }
    detail::Children& children = MakeChildren();
    Node* const former = child->parent;
    if (children.list)
    {
        // First, since it may fail.
        former == this ? children.list->MoveToEnd(child) : children.list->Append(child);
    }
    if (former)
    {
        detail::TreeCursor::ChildLeaves(Walks(), former, child);
        child->Unmark();
        detail::Children& formerOnes = *former->OwnChildren();
        formerOnes.Unlink(child);
        if (former != this && formerOnes.list)
        {
            formerOnes.list->Remove(child);
        }
    }
    children.Link(child);
    child->parent = this;
    child->TakeRank();
    if (scene)
    {
        // It, or something below it, may have moved before.
        child->Mark(scene->GetUpdateID());
    }
    if (keepGlobal)
    {
        child->SetGlobal(child->global);
    }
}

void Node::RemoveChild(Node* child)
{
    if (!child || child->parent != this)
    {
        return;
    }
    detail::TreeCursor::ChildLeaves(Walks(), this, child);
    child->Unmark();
    detail::Children& children = *OwnChildren();
    children.Unlink(child);
    if (children.list)
    {
        children.list->Remove(child);
    }
    child->parent = nullptr;
}

Matrix* Node::UpdateGlobalMatrix()
{
    if (!m_hasGlobalMatrix)
    {
        // The flag stays as it is: one more extraction on the next call is meant.
        m_hasGlobalMatrix = true;
        globalNormalsDirty = true;
        global.ExtractMatrix(m_globalMatrix, true);
    }
    else if (globalMatrixDirty)
    {
        global.ExtractMatrix(m_globalMatrix, true);
        globalMatrixDirty = false;
    }
    return &m_globalMatrix;
}

const Matrix3x3& Node::UpdateNormals()
{
    if (!m_hasGlobalMatrix)
    {
        UpdateGlobalMatrix();
    }
    global.ExtractAffineInverseTranspose3x3(m_globalNormals.m);
    m_isGlobalMirror = global.GetTransf3d().isMirror();
    m_hasGlobalNormals = true;
    globalNormalsDirty = false;
    return m_globalNormals;
}

const Node::Path& Node::GetPath() const
{
    static const Path none;
    const Extras* const extras = m_more.GetExtras();
    return extras ? extras->path : none;
}

void Node::SetPath(const Path& newPath)
{
    if (m_more.HasExtras() || !newPath.empty())
    {
        MakeExtras().path = newPath;
    }
    TellIdentityChange();
}

Object* Node::GetAnimationData() const
{
    const Extras* const extras = m_more.GetExtras();
    return extras ? extras->animationData.get() : nullptr;
}

void Node::SetAnimationData(Object* data)
{
    if (m_more.HasExtras() || data)
    {
        detail::ReplaceObject(MakeExtras().animationData, data);
    }
}

Node::Extras& Node::MakeExtras()
{
    return m_more.Make([](Extras& extras, detail::Children* children) { extras.children.reset(children); });
}

detail::Children* Node::OwnChildren() const
{
    const Extras* const extras = m_more.GetExtras();
    return extras ? extras->children.get() : m_more.GetPointer();
}

detail::Children& Node::MakeChildren()
{
    if (detail::Children* const present = OwnChildren())
    {
        return *present;
    }
    auto made = std::make_unique<detail::Children>();
    if (Extras* const extras = m_more.GetExtras())
    {
        extras->children = std::move(made);
    }
    else
    {
        m_more.SetOne(made.release());
    }
    return *OwnChildren();
}

Lifetime& Node::GetLifetime()
{
    return MakeExtras().lifetime;
}

Node* Node::EndChild(bool last) const
{
    const detail::Children* const children = OwnChildren();
    return !children ? nullptr : last ? children->last : children->first;
}

const std::list<Node*>& Node::GetChildren() const
{
    static const std::list<Node*> none;
    detail::Children* const children = OwnChildren();
    return children ? children->List() : none;
}

bool Node::IsSameOrAbove(const Node* other) const
{
    // Upward from the other and through what is below this one, by turns: whichever ends first
    // has the answer, so that a deep tree can be put together of small ones or of large ones.
    const Node* above = other;
    const Node* below = this;
    while (above && below)
    {
        if (above == this || below == other)
        {
            return true;
        }
        above = above->parent;
        below = NextInTree(below, this, true);
    }
    return false;
}

void Node::TellChange(NodeChange change)
{
    if (scene && scene->HasNodeListeners())
    {
        scene->TellNodeChanged(*this, change);
    }
}

void Node::TellIdentityChange()
{
    TellChange(NodeChangeIdentity);
}

void Node::MarkMoved()
{
    if (scene)
    {
        updateID = scene->GetUpdateID();
        scene->MarkDirty();
        Mark(updateID);
    }
}

void Node::MarkUpwards(unsigned int current)
{
    for (Node* node = this; node->parent && node->m_markedAt != current; node = node->parent)
    {
        node->m_markedAt = current;
        node->parent->OwnChildren()->marked.Add(node, current);
    }
}

void Node::TakeRank()
{
    const Node* const before = m_previousSibling;
    if (before && before->m_rank == std::numeric_limits<std::uint32_t>::max())
    {
        m_rank = 0;
        for (Node* child : parent->EachChild())
        {
            child->m_rank = m_rank++;
        }
        --m_rank;
        return;
    }
    m_rank = before ? before->m_rank + 1 : 0;
}

void Node::Unmark()
{
    detail::MarkedChildren& marked = parent->OwnChildren()->marked;
    if (m_markedAt == marked.updateID)
    {
        marked.Lose();
    }
    m_markedAt = 0;
}

} // namespace OV
