#include "orvane/scene/LightNode.h"

#include "orvane/scene/Scene.h"
#include "orvane/scene/detail/OwnedObject.h"

namespace OV
{

LightNode::LightNode(Scene* ownScene) :
    Node(ownScene)
{
    if (scene)
    {
        scene->AddLightNode(this);
    }
}

LightNode::~LightNode()
{
    if (scene)
    {
        scene->RemoveLightNode(this);
    }
    renderData.reset();
}

int LightNode::Type() const
{
    return NodeTypeLightNode;
}

bool LightNode::HasType(int type)
{
    return type == NodeTypeLightNode || type == NodeTypeNode;
}

void LightNode::SetAmbient(float red, float green, float blue)
{
    ambient.Set(red, green, blue);
    hasAmbient = true;
}

void LightNode::SetLocalDirection(const Vector& direction)
{
    localDirection = direction;
    localDirection.Normalize();
}

const Vector& LightNode::GetGlobalDirection()
{
    globalDirection.Multiply(global.GetRotation(), localDirection);
    return globalDirection;
}

void LightNode::SetRenderData(Object* data)
{
    detail::ReplaceObject(renderData, data);
}

} // namespace OV
