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
    if (!scene.GetCameraNode())
    {
        auto* const camera = new CameraNode(&scene);
        scene.GetRoot()->AddChild(camera, false);
        OpenScene::CameraOf(scene) = camera;
    }
    scene.MarkDirty();
}

} // namespace OV::Host::Detail
