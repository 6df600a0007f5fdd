#pragma once

#include <list>

namespace OV
{

class Node;

namespace detail
{

/// Where a walk stands among the children of a node.
///
/// A walk calls the host, which may take nodes out of the tree or delete them. Cursors of a
/// scene stand in a list, so that a node that loses a child, or dies, can set right those that
/// stand on it: a step of a walk costs no more than that of a plain loop.
class ChildCursor
{
public:
    /// @param first of the cursors of the scene, the ones of outer walks behind it.
    ChildCursor(const Node* parent, const std::list<Node*>& children, ChildCursor*& first) :
        m_parent(parent), m_children(&children), m_next(children.begin()), m_first(&first), m_outer(first)
    {
        first = this;
    }

    ~ChildCursor()
    {
        if (m_first)
        {
            *m_first = m_outer;
        }
    }

    ChildCursor(const ChildCursor&) = delete;
    ChildCursor& operator=(const ChildCursor&) = delete;

    /// The next child; null at the end, and once the parent is gone. Asked for only after the
    /// one before has been dealt with, so that what was appended meanwhile is walked too.
    Node* Next()
    {
        if (m_isOnChild)
        {
            ++m_next;
        }
        m_isOnChild = m_children && m_next != m_children->end();
        return m_isOnChild ? *m_next : nullptr;
    }

    /// Said before the parent loses the child.
    static void ChildLeaves(ChildCursor* first, const Node* parent, const Node* child)
    {
        for (ChildCursor* cursor = first; cursor; cursor = cursor->m_outer)
        {
            const bool isHere = cursor->m_parent == parent && cursor->m_next != cursor->m_children->end();
            if (isHere && *cursor->m_next == child)
            {
                ++cursor->m_next;
                cursor->m_isOnChild = false;
            }
        }
    }

    /// Said before the parent dies.
    static void ParentDies(ChildCursor* first, const Node* parent)
    {
        for (ChildCursor* cursor = first; cursor; cursor = cursor->m_outer)
        {
            if (cursor->m_parent == parent)
            {
                cursor->m_parent = nullptr;
                cursor->m_children = nullptr;
                cursor->m_isOnChild = false;
            }
        }
    }

    /// Said before the scene dies.
    static void SceneDies(ChildCursor* first)
    {
        for (ChildCursor* cursor = first; cursor; cursor = cursor->m_outer)
        {
            cursor->m_first = nullptr;
        }
    }

private:
    const Node* m_parent;
    const std::list<Node*>* m_children;
    std::list<Node*>::const_iterator m_next;
    bool m_isOnChild = false;
    ChildCursor** m_first;
    ChildCursor* m_outer;
};

} // namespace detail
} // namespace OV
