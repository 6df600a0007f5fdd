#include "orvane/overlay/Shape2DNode.h"

#include "orvane/math/Sphere.h"
#include "orvane/math/Vector.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/NodeType.h"

#include <algorithm>

namespace OV
{

namespace
{

void Widen(float& lowest, float& highest, float from, float to)
{
    lowest = std::min(lowest, from);
    highest = std::max(highest, to);
}

}  // namespace

Shape2DNode::Shape2DNode(Scene2D* scene)
    : MeshNode(scene)
    , scene2D(scene)
{
}

Shape2DNode::~Shape2DNode() = default;

void Shape2DNode::UpdateGraph()
{
    Node::UpdateGraph();
    const float z = -global.GetPosition().z;
    if (scene2D)
    {
        Widen(scene2D->nearZ, scene2D->farZ, z, z);
    }
    inverseGlobal.Invert(global);
}

bool Shape2DNode::IsOffScreen(const Mesh& mesh) const
{
    Vector first;
    Vector second;
    mesh.GetBBox(first, second);
    first.Multiply(global, first);
    second.Multiply(global, second);
    const auto [left, right] = std::minmax(first.x, second.x);
    const auto [bottom, top] = std::minmax(first.y, second.y);
    return left > scene2D->screenWidth || right < 0.0f || bottom > scene2D->screenHeight || top < 0.0f;
}

void Shape2DNode::UpdateCulling(float& nearValue, float& farValue)
{
    if ((flags & NodeFlagHidden) == 0)
    {
        const float nearBefore = nearValue;
        const float farBefore = farValue;
        const float z = -global.GetPosition().z;
        bool offScreen = false;
        for (const Mesh* mesh : meshes)
        {
            // The last mesh alone decides, whatever the others found.
            offScreen = scene2D && IsOffScreen(*mesh);
            const float reach = billboard ? 0.0f : global.GetMaxScale() * mesh->GetSphere().radius;
            Widen(nearValue, farValue, z - reach, z + reach);
        }
        if (offScreen)
        {
            nearValue = nearBefore;
            farValue = farBefore;
            SetFlags(NodeFlagCulled, false);
        }
        else
        {
            ClearFlags(NodeFlagCulled, false);
        }
    }
    for (Node* child : children)
    {
        child->UpdateCulling(nearValue, farValue);
    }
}

int Shape2DNode::Type() const
{
    return NodeTypeShape2DNode;
}

bool Shape2DNode::HasType(int type)
{
    return type == NodeTypeShape2DNode || type == NodeTypeMeshNode || type == NodeTypeNode;
}

}  // namespace OV
