#include "orvane/scene/Node.h"

#include "orvane/base/detail/Walk.h"
#include "orvane/scene/Scene.h"
#include "orvane/scene/detail/ChildCursor.h"
#include "orvane/scene/detail/OwnedObject.h"

namespace OV
{

Node::Node(Scene* ownScene) :
    scene(ownScene)
{
    if (scene)
    {
        scene->Register(this);
    }
}

Node::~Node()
{
    detail::Walk::Tell(this);
    if (scene)
    {
        detail::ChildCursor::ParentDies(scene->m_cursors, this);
    }
    if (parent)
    {
        parent->RemoveChild(this);
    }
    for (Node* child : children)
    {
        child->parent = nullptr;
    }
    if (scene)
    {
        scene->Unregister(this);
    }
    globalMatrix.reset();
    // The slot is empty while the object dies, as at every other death of one.
    animationData.reset();
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
    if (m_isMatrixAhead)
    {
        // As if the walk had left the conversion to GetGlobalMatrix.
        globalMatrixDirty = true;
        m_isMatrixAhead = false;
    }
    local.Multiply(toParent, global);
    MarkMoved();
}

void Node::UpdateGraph()
{
    if (!scene)
    {
        return;
    }
    const unsigned int current = scene->GetUpdateID();
    const bool parentMoved = parent && parent->updateID == current;
    if (parentMoved || updateID == current)
    {
        if (parent)
        {
            global.Multiply(parent->global, local);
        }
        else
        {
            global = local;
        }
        if (parentMoved)
        {
            updateID = current;
        }
        globalMatrixDirty = true;
        globalNormalsDirty = true;
        if (globalMatrix)
        {
            // At once, while the transform is in the cache: to come back for it makes 10,000
            // moving nodes a third slower.
            global.ExtractMatrix(*globalMatrix, true);
            globalMatrixDirty = false;
            m_isMatrixAhead = true;
        }
    }
    WalkChildren([](Node* child) { child->UpdateGraph(); });
}

void Node::UpdateCulling(float& nearValue, float& farValue)
{
    WalkChildren([&](Node* child) { child->UpdateCulling(nearValue, farValue); });
}

void Node::ComputeBoundingBox(Vector& boxMin, Vector& boxMax)
{
    WalkChildren([&](Node* child) { child->ComputeBoundingBox(boxMin, boxMax); });
}

template <class Visit>
void Node::WalkChildren(Visit visit)
{
    if (children.empty())
    {
        return;
    }
    detail::ChildCursor* unlisted = nullptr;
    for (detail::ChildCursor cursor(this, children, scene ? scene->m_cursors : unlisted); Node* child = cursor.Next();)
    {
        visit(child);
    }
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
    if (child->parent)
    {
        child->parent->RemoveChild(child);
    }
    child->parent = this;
    children.push_back(child);
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
    if (scene)
    {
        detail::ChildCursor::ChildLeaves(scene->m_cursors, this, child);
    }
    children.remove(child);
    child->parent = nullptr;
}

Matrix* Node::UpdateGlobalMatrix()
{
    if (!globalMatrix)
    {
        // The flag stays as it is: one more extraction on the next call is meant.
        globalMatrix = std::make_unique<GlobalMatrix>();
        globalNormalsDirty = true;
        global.ExtractMatrix(*globalMatrix, true);
    }
    else if (globalMatrixDirty)
    {
        global.ExtractMatrix(*globalMatrix, true);
        globalMatrixDirty = false;
    }
    m_isMatrixAhead = false;
    return globalMatrix.get();
}

const Node::GlobalMatrix& Node::UpdateNormals()
{
    if (!globalMatrix)
    {
        UpdateGlobalMatrix();
    }
    global.ExtractAffineInverseTranspose3x3(globalMatrix->normalMatrix.m);
    globalMatrix->isMirror = global.GetTransf3d().isMirror();
    globalNormalsDirty = false;
    return *globalMatrix;
}

void Node::SetAnimationData(Object* data)
{
    detail::ReplaceObject(animationData, data);
}

bool Node::IsSameOrAbove(const Node* other) const
{
    while (other && other != this)
    {
        other = other->parent;
    }
    return other == this;
}

void Node::MarkMoved()
{
    if (scene)
    {
        updateID = scene->GetUpdateID();
        scene->MarkDirty();
    }
}

} // namespace OV
