#include "orvane/scene/LightNode.h"

#include "orvane/scene/Scene.h"
#include "orvane/scene/detail/OwnedObject.h"

#include <cstring>
#include <type_traits>

namespace OV
{

namespace
{

/// Whether both are the same bytes, so that NaN is equal to itself.
template <class T>
bool IsSame(const T& a, const T& b)
{
    static_assert(std::is_trivially_copyable_v<T>);
    return std::memcmp(&a, &b, sizeof(T)) == 0;
}

} // namespace

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
    const QGM::Transf3d& place = global.GetTransf3d();
    const bool isKnown = m_knowsDirection && IsSame(m_directionPlace.GetTransf3d().m, place.m) &&
                         IsSame(m_directionInPlace, localDirection);
    if (!isKnown)
    {
        m_direction.Multiply(global.GetRotation(), localDirection);
        m_directionPlace = global;
        m_directionInPlace = localDirection;
        m_knowsDirection = true;
    }
    globalDirection = m_direction;
    return globalDirection;
}

void LightNode::SetRenderData(Object* data)
{
    detail::ReplaceObject(renderData, data);
}

} // namespace OV
