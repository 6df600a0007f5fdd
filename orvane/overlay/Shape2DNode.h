#pragma once

#include "orvane/base/WatchedPtr.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/MeshNode.h"

namespace OV
{

class Node;
class Scene2D;

/// Places meshes in a layer, in pixels, and remembers how far the picking of them has come.
class ORVANE_API Shape2DNode : public MeshNode
{
public:
    /// @param scene the layer, or null for none yet.
    explicit Shape2DNode(Scene2D* scene);
    ~Shape2DNode() override;

    /// Null once the layer is gone.
    Scene2D* GetScene2D() const { return scene ? scene2D : nullptr; }

    /// The node of a 3D scene that this one follows; null for none, and once that is gone.
    Node* Get3DParent() const { return parent3D; }

    /// Stands, from the next update of the layer on, where the node's 3D scene shows that node
    /// on the screen. Its own z, rotation and scale stay. What is behind the eye is culled. When
    /// the followed node is gone, this one stays where it was last.
    /// @param node not owned; null ends it.
    void Set3DParent(Node* node);

    /// Whether a point of the layer is inside any of the node's shapes, as of the last update.
    /// @return false without a layer, and in one without a height.
    bool IsInside(float x, float y);

    void SetPickState(unsigned int state) { pickState = state; }

    bool PickCaptured() const { return pickState == 1 || pickState == 2; }
    bool PickMoved() const { return pickState == 3; }
    bool PickReleased() const { return pickState == 4; }

    /// Makes the node count in the layer's depth range with its meshes' whole extent, instead
    /// of its own position alone.
    void DisableBillboard(bool disable) { billboard = !disable; }

    void UpdateGraph() override;

    /// Culls the node by whether it is on the screen; the last of its meshes decides. Widens
    /// the two depths by its own. A hidden node is passed over, its children are not.
    void UpdateCulling(float& nearValue, float& farValue) override;

    int Type() const override;
    bool HasType(int type) override;

    /// 0 idle, 1 and 2 captured, 3 moved, 4 released. The host writes it, the layer resets it.
    unsigned int pickState = 0;

    /// Kept for the host's input handling.
    unsigned int pickData[3] = {0, 0, 0};

protected:
    friend class Scene2D;

    Scene2D* scene2D;
    Transform inverseGlobal;  ///< of the global transform, as of the last UpdateGraph
    WatchedPtr<Node> parent3D;
    bool billboard = true;

private:
    bool IsOffScreen(const Mesh& mesh) const;

    /// Moves to where the 3D parent is shown.
    void FollowParent();

    /// The place of the layer in the space of this node's parent.
    Vector ToParentSpace(const Vector& place) const;
    void SetBehindEye(bool isBehind);
    void LeaveFollowers();

    bool m_follows = false;   ///< stands in the layer's list of followers
    bool m_behindEye = false; ///< the followed node is
};

}  // namespace OV
