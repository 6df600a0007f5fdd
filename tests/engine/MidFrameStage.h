#pragma once

#include "orvane/base/WatchedPtr.h"
#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/imaging/TextureLoader.h"
#include "orvane/overlay/Rect.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/overlay/Sprite.h"
#include "orvane/overlay/Text.h"
#include "orvane/renderer/Renderer20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/IScreen.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/NodeMaterial.h"
#include "tests/support/GLRecorder.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace OV::Test
{

/// Where the engine calls a host in the middle of an operation.
enum class Place
{
    Nowhere,
    LoadBase,
    LoadAgain, ///< the question that is repeated after "still to come"
    LoadNormalMap,
    LoadOpacityMap,
    LoadOfAlpha,
    LoadOfNodeMaterial,
    LoadOfLayer,
    LoadText,
    LoadPixels,
    Release,
    LoaderSuspend,
    LoaderResume,
    NodeUpdateBegin,
    NodeUpdateEnd,
    ChildUpdateEnd,
    SiblingUpdateEnd,
    CameraUpdateBegin,
    CameraUpdateEnd,
    ScreenMapping,
    LayerNodeSetLocal,
    LayerNodeUpdateEnd,
    LayerCullingEnd,
    SceneOrder,
    MaterialType,
    LineStyleType,
    MeshDraw,
    BeginRender,
    BeginCapture,
    BeforeRender2D,
    BeforeRender3D,
    AfterRender3D,
    EndCapture,
    ApplyCapture,
    EndRender,
};

/// A whole presentation with a host's code in every place, which runs one edit in one of them.
///
/// The tree is root, parent, node, child, with a sibling of parent. Every mesh has another
/// number of indices, so that a draw tells which mesh it is of.
class MidFrameStage
{
public:
    MidFrameStage();
    ~MidFrameStage();

    /// Runs the edit when the host is next called in this place; every time, if `always`.
    void Arm(Place place, std::function<void(MidFrameStage&)> edit, bool always);

    /// What the host's code in this place does.
    void Called(Place place);

    /// Two frames with another size of screen, Suspend, Resume and another frame: every place
    /// is called.
    void Run();

    /// The same until the context is gone.
    void RunWhileThereIsAContext();

    void Frame();

    /// The numbers of indices of the draws of one more frame, in order.
    std::vector<int> DrawnInAFrame();

    Scene* CurrentScene() const { return app->GetContext()->GetScene(); }
    Scene2D* Foreground() const { return app->GetContext()->GetForeground2D(); }
    Scene2D* Background() const { return app->GetContext()->GetBackground2D(); }

    /// Deletes a node by itself. What was below it has a root of its own then, which the stage
    /// deletes at its end unless it is in a tree again.
    void DeleteAlone(Node* node);

    /// A scene with one mesh that the first one does not have.
    std::unique_ptr<Scene> MakeOtherScene();

    /// Puts one more mesh under a material of its own into a scene.
    void Fill(Scene& scene);

    GLRecorder recorder;
    std::unique_ptr<TextureLoader> loader;
    std::unique_ptr<Renderer20> renderer;
    std::unique_ptr<AppContext> app;

    // As made; an edit that takes one away happens once.
    MeshNode* parent = nullptr;
    MeshNode* node = nullptr;
    MeshNode* child = nullptr;
    MeshNode* sibling = nullptr;
    CameraNode* camera = nullptr;
    Mesh* mesh = nullptr; ///< at node, under material
    Material* material = nullptr;
    Material* otherMaterial = nullptr;
    Material* alphaMaterial = nullptr;
    NodeMaterial* nodeMaterial = nullptr;
    LineStyle* lineStyle = nullptr;
    Line* line = nullptr;
    std::unique_ptr<Sprite> sprite;
    std::unique_ptr<Sprite> backdrop;
    std::unique_ptr<Text> text;
    Shape2DNode* follower = nullptr;

    int edits = 0;    ///< how often the edit ran
    int deepest = 0;  ///< how many of them ran inside one another

private:
    void MarkAllDirty();
    void BuildScene(Scene& scene, int firstCount);
    void BuildLayers();

    std::vector<WatchedPtr<Node>> m_orphans;
    Place m_place = Place::Nowhere;
    std::function<void(MidFrameStage&)> m_edit;
    bool m_always = false;
    int m_depth = 0;
};

} // namespace OV::Test
