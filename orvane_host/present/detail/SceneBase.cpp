#include "orvane_host/present/detail/SceneBase.h"

#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Scene.h"

namespace OV::Host::Detail
{

namespace
{

/// Root and camera of a scene's own. To put others there takes a subclass, or all that is in the scene.
class OpenScene : public Scene
{
public:
    static Node*& RootOf(Scene& scene) { return scene.*(&OpenScene::root); }
    static CameraNode*& CameraOf(Scene& scene) { return scene.*(&OpenScene::defaultCamera); }
};

} // namespace

bool HasBase(const Scene& scene)
{
    return scene.GetRoot() && scene.GetCameraNode();
}

void GiveBase(Scene& scene)
{
    if (!scene.GetRoot())
    {
        OpenScene::RootOf(scene) = new Node(&scene);
    }
    CameraNode*& camera = OpenScene::CameraOf(scene);
    if (!camera)
    {
        camera = new CameraNode(&scene);
    }
    if (!camera->GetParent())
    {
        scene.GetRoot()->AddChild(camera, false);
    }
    scene.MarkDirty();
}

} // namespace OV::Host::Detail
