#pragma once

#include "orvane/Export.h"
#include "orvane/scene/BitSet.h"

namespace OV
{

class Node;
class Scene;

/// What has changed of where, how and whether a node is drawn.
enum NodeChange : unsigned
{
    /// The global transform was composed anew.
    NodeChangePlace = 0x01,
    /// Flags, draw ID or node materials of the node.
    NodeChangeState = 0x02,
    /// Which meshes the node shows, or material, flags, draw ID or geometry of one of them.
    NodeChangeMeshes = 0x04,
    /// User data or path.
    NodeChangeIdentity = 0x08,
};
ORVANE_BIT_SET(NodeChange)

/// Is told what changes at the nodes of a scene, for whoever keeps something made of many of them
/// and would otherwise have to look at each in every frame.
///
/// Not told: what a derived class writes into its node itself, and geometry that a host writes
/// into a RawMesh. Called in the middle of a change, also while the tree is walked or drawn: it
/// takes a note to look later, and neither edits the scene nor throws.
class ORVANE_API NodeListener
{
public:
    NodeListener() = default;
    NodeListener(const NodeListener&) = delete;
    NodeListener& operator=(const NodeListener&) = delete;

    /// Leaves the scene that it listens to.
    virtual ~NodeListener();

    virtual void NodeChanged(Node& node, NodeChange change) = 0;

    /// The node is being destroyed: only its address is of use.
    virtual void NodeGone(const Node& node) = 0;

    /// The scene ends, with all its nodes: nothing more is told.
    virtual void SceneGone() = 0;

    /// The scene that it listens to; null for none, and once that is gone.
    Scene* GetListenedScene() const
    {
        return m_scene;
    }

private:
    friend class Scene;

    Scene* m_scene = nullptr;
};

} // namespace OV
