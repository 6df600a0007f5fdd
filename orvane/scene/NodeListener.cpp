#include "orvane/scene/NodeListener.h"

#include "orvane/scene/Scene.h"

namespace OV
{

NodeListener::~NodeListener()
{
    if (m_scene)
    {
        m_scene->RemoveNodeListener(this);
    }
}

} // namespace OV
