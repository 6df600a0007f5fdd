// What a host's own code may do where the engine calls it in the middle of an operation.

#include "tests/engine/MidFrameStage.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace OV::Test
{

namespace
{

struct PlaceCase
{
    const char* name;
    Place place;
    /// Whether the place's own objects are used after the edit, by the engine's part of the same
    /// virtual operation: then a host must not delete them itself.
    bool goesOn = false;
    /// The edit that calls this very operation of the renderer: without end, but for the host.
    const char* isOperation = "";
};

struct EditCase
{
    const char* name;
    std::function<void(MidFrameStage&)> edit;
    /// Deletes with plain delete what the place's own code may be a member of.
    bool deletesItself = false;
    /// Leads back into the engine, which then may call the host in the same place again.
    bool again = false;
    /// What the frames after it draw depends on when it happened.
    bool dependsOnTime = false;
};

const PlaceCase kPlaces[] = {
    {"LoadBase", Place::LoadBase},
    {"LoadAgain", Place::LoadAgain},
    {"LoadNormalMap", Place::LoadNormalMap},
    {"LoadOpacityMap", Place::LoadOpacityMap},
    {"LoadOfAlpha", Place::LoadOfAlpha},
    {"LoadOfNodeMaterial", Place::LoadOfNodeMaterial},
    {"LoadOfLayer", Place::LoadOfLayer},
    {"LoadText", Place::LoadText},
    {"LoadPixels", Place::LoadPixels},
    {"Release", Place::Release},
    {"LoaderSuspend", Place::LoaderSuspend},
    {"LoaderResume", Place::LoaderResume},
    {"NodeUpdateBegin", Place::NodeUpdateBegin, true},
    {"NodeUpdateEnd", Place::NodeUpdateEnd},
    {"ChildUpdateEnd", Place::ChildUpdateEnd},
    {"SiblingUpdateEnd", Place::SiblingUpdateEnd},
    {"CameraUpdateBegin", Place::CameraUpdateBegin, true},
    {"CameraUpdateEnd", Place::CameraUpdateEnd},
    {"ScreenMapping", Place::ScreenMapping},
    {"LayerNodeSetLocal", Place::LayerNodeSetLocal},
    {"LayerNodeUpdateEnd", Place::LayerNodeUpdateEnd},
    {"LayerCullingEnd", Place::LayerCullingEnd},
    {"SceneOrder", Place::SceneOrder},
    {"MaterialType", Place::MaterialType},
    {"LineStyleType", Place::LineStyleType},
    {"MeshDraw", Place::MeshDraw},
    {"BeginRender", Place::BeginRender},
    {"BeginCapture", Place::BeginCapture},
    {"BeforeRender2D", Place::BeforeRender2D, false, "Render2D"},
    {"BeforeRender3D", Place::BeforeRender3D, true, "Render3D"},
    {"AfterRender3D", Place::AfterRender3D, false, "Render3D"},
    {"EndCapture", Place::EndCapture},
    {"ApplyCapture", Place::ApplyCapture},
    {"EndRender", Place::EndRender},
};

void DeleteMesh(MidFrameStage& s)
{
    delete s.mesh;
    s.mesh = nullptr;
}

const EditCase kEdits[] = {
    {"DeleteNode", [](MidFrameStage& s) { s.DeleteAlone(s.node); }, true},
    {"DeleteParent", [](MidFrameStage& s) { s.DeleteAlone(s.parent); }},
    {"DeleteChild", [](MidFrameStage& s) { s.DeleteAlone(s.child); }, true},
    {"DeleteSibling", [](MidFrameStage& s) { s.DeleteAlone(s.sibling); }, true},
    {"DeleteRoot", [](MidFrameStage& s) { s.DeleteAlone(s.CurrentScene()->GetRoot()); }},
    {"DeleteCamera", [](MidFrameStage& s) { s.DeleteAlone(s.camera); }, true},
    {"DeleteMesh", &DeleteMesh},
    {"DeleteMaterial", [](MidFrameStage& s) { delete s.material; }, true},
    {"DeleteOtherMaterial", [](MidFrameStage& s) { delete s.otherMaterial; }},
    {"DeleteAlphaMaterial", [](MidFrameStage& s) { delete s.alphaMaterial; }},
    {"DeleteNodeMaterial", [](MidFrameStage& s) { delete s.nodeMaterial; }},
    {"DeleteLine", [](MidFrameStage& s) { delete s.line; }},
    {"DeleteLineStyle", [](MidFrameStage& s) { delete s.lineStyle; }, true},
    {"DeleteSprites",
     [](MidFrameStage& s) {
         s.sprite.reset();
         s.backdrop.reset();
     }},
    {"DeleteText", [](MidFrameStage& s) { s.text.reset(); }},
    {"DeleteFollower", [](MidFrameStage& s) { s.DeleteAlone(s.follower); }, true},
    {"DeleteRootOfLayers",
     [](MidFrameStage& s) {
         s.DeleteAlone(s.Foreground()->GetRoot());
         s.DeleteAlone(s.Background()->GetRoot());
     }},
    {"DeleteSubtreeOfNode", [](MidFrameStage& s) { s.CurrentScene()->DeleteSubtree(s.node); }},
    {"DeleteSubtreeOfParent", [](MidFrameStage& s) { s.CurrentScene()->DeleteSubtree(s.parent); }},
    {"DeleteSubtreeOfSibling", [](MidFrameStage& s) { s.CurrentScene()->DeleteSubtree(s.sibling); }},
    {"DeleteSubtreeOfCamera", [](MidFrameStage& s) { s.CurrentScene()->DeleteSubtree(s.camera); }},
    {"DeleteSubtreeOfRoot", [](MidFrameStage& s) { s.CurrentScene()->DeleteSubtree(s.CurrentScene()->GetRoot()); }},
    {"DeleteSubtreeTwice",
     [](MidFrameStage& s) {
         s.CurrentScene()->DeleteSubtree(s.node);
         s.CurrentScene()->DeleteSubtree(s.parent);
     }},
    {"ClearScene",
     [](MidFrameStage& s) {
         s.CurrentScene()->Clear();
         s.mesh = nullptr;
     }},
    {"ClearAndFillScene",
     [](MidFrameStage& s) {
         s.CurrentScene()->Clear();
         s.mesh = nullptr;
         s.Fill(*s.CurrentScene());
     }},
    {"ClearLayers",
     [](MidFrameStage& s) {
         s.Foreground()->Clear();
         s.Background()->Clear();
     }},
    {"SetScene",
     [](MidFrameStage& s) {
         s.mesh = nullptr;
         s.app->GetContext()->SetScene(s.MakeOtherScene());
     }},
    {"SetSceneToNone",
     [](MidFrameStage& s) {
         s.mesh = nullptr;
         s.app->GetContext()->SetScene(nullptr);
     }},
    {"RemoveMaterial",
     [](MidFrameStage& s) {
         s.CurrentScene()->RemoveMaterial(s.otherMaterial);
         delete s.otherMaterial;
     }},
    {"MoveMaterial",
     [](MidFrameStage& s) {
         s.material->SetOpacity(0.5f);
         s.CurrentScene()->ProcessChangedMaterial(s.material);
     },
     false, false, true},
    {"DropRenderData",
     [](MidFrameStage& s) {
         s.material->SetRenderData(nullptr);
         s.lineStyle->SetRenderData(nullptr);
         s.mesh->SetRenderData(nullptr, true);
         s.camera->SetRenderData(nullptr);
     }},
    {"SuspendScenes",
     [](MidFrameStage& s) {
         s.CurrentScene()->Suspend();
         s.Foreground()->Suspend();
         s.Background()->Suspend();
     }},
    {"MoveNodes",
     [](MidFrameStage& s) {
         s.sibling->AddChild(s.node, true);
         s.CurrentScene()->GetRoot()->AddChild(s.parent, true);
     }},
    {"FillLists",
     [](MidFrameStage& s) {
         s.Fill(*s.CurrentScene());
         s.CurrentScene()->PopulateZOrderedDrawItems();
         s.Foreground()->PopulateZOrderedDrawItems();
     },
     false, false, true},
    {"ReleaseFollower", [](MidFrameStage& s) { s.follower->Set3DParent(nullptr); }},
    {"DeleteLoader", [](MidFrameStage& s) { s.loader.reset(); }},
    {"Suspend", [](MidFrameStage& s) { s.app->Suspend(s.renderer.get()); }, false, true, true},
    {"Resume", [](MidFrameStage& s) { s.app->Resume(s.renderer.get()); }, false, true},
    {"SuspendAndResume",
     [](MidFrameStage& s) {
         s.app->Suspend(s.renderer.get());
         s.app->Resume(s.renderer.get());
     },
     false, true},
    {"Update", [](MidFrameStage& s) { s.app->Update(2.0f); }, false, true},
    {"Render", [](MidFrameStage& s) { s.app->Render(s.renderer.get(), true); }, false, true},
    {"Frame", [](MidFrameStage& s) { s.Frame(); }, false, true},
    {"RenderCapturedAndUI", [](MidFrameStage& s) { s.app->RenderCapturedAndUI(s.renderer.get()); }, false, true},
    {"RenderClear", [](MidFrameStage& s) { s.app->RenderClear(s.renderer.get(), Color()); }, false, true},
    {"UpdateOfScenes",
     [](MidFrameStage& s) {
         s.CurrentScene()->UpdateGraph(64.0f, 48.0f);
         s.Foreground()->UpdateGraph(64.0f, 48.0f);
         s.Background()->UpdateGraph(64.0f, 48.0f);
     },
     false, true},
    {"Render3D", [](MidFrameStage& s) { s.renderer->Render3D(s.CurrentScene(), s.CurrentScene()->GetCameraNode()); },
     false, true},
    {"Render2D", [](MidFrameStage& s) { s.renderer->Render2D(s.Foreground()); }, false, true},
    {"FrameTheScene", [](MidFrameStage& s) { s.CurrentScene()->Frame(); }, false, true},
    {"ClearOffscreenBuffers", [](MidFrameStage& s) { s.app->ClearOffscreenBuffers(s.renderer.get()); }},
    {"SuspendRenderer",
     [](MidFrameStage& s) {
         s.renderer->Suspend();
         s.renderer->Resume();
     },
     false, true},
    {"SetAAMode", [](MidFrameStage& s) { s.renderer->SetAAMode(AAModeFXAA); }},
};

class MidFrameEdit : public ::testing::TestWithParam<PlaceCase>
{
};

void TryEdit(const PlaceCase& place, const EditCase& edit)
{
    SCOPED_TRACE(edit.name);
    std::vector<int> drawn;
    {
        MidFrameStage stage;
        stage.Arm(place.place, edit.edit, edit.again && std::string(edit.name) != place.isOperation);
        stage.Run();
        EXPECT_GE(stage.edits, 1) << "the place was never called";
        EXPECT_LT(stage.deepest, 5) << "the engine calls itself without end";
        stage.Arm(Place::Nowhere, nullptr, false);
        stage.Frame();
        drawn = stage.DrawnInAFrame();
    }
    if (edit.dependsOnTime)
    {
        return;
    }
    MidFrameStage between;
    between.Run();
    edit.edit(between);
    between.Frame();
    EXPECT_EQ(drawn, between.DrawnInAFrame()) << "not what the same edit between two frames leads to";
}

TEST_P(MidFrameEdit, IsCarriedOutWithoutHarm)
{
    const PlaceCase& place = GetParam();
    for (const EditCase& edit : kEdits)
    {
        if (!(place.goesOn && edit.deletesItself))
        {
            TryEdit(place, edit);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(EveryPlace, MidFrameEdit, ::testing::ValuesIn(kPlaces),
                         [](const auto& info) { return std::string(info.param.name); });

class MidFrame : public ::testing::Test
{
protected:
    MidFrameStage stage;
};

TEST_F(MidFrame, WhatClearTakesAwayIsGoneAtOnceAndDeletedAtTheEnd)
{
    int seen = -1;
    LifetimeWatch node;
    node.Watch(stage.node->GetLifetime());
    bool livedOn = false;
    stage.Arm(
        Place::LoadAgain,
        [&](MidFrameStage& s) {
            s.CurrentScene()->Clear();
            s.mesh = nullptr;
            seen = static_cast<int>(s.CurrentScene()->GetMeshes().size() + s.CurrentScene()->GetLines().size() +
                                    s.CurrentScene()->GetOptimizedMaterials().size());
            livedOn = node.IsAlive();
        },
        false);
    stage.Frame();
    stage.Frame();
    EXPECT_EQ(seen, 0);
    EXPECT_TRUE(livedOn);
    EXPECT_FALSE(node.IsAlive());
}

TEST_F(MidFrame, WhatDeleteSubtreeTakesAwayLeavesTreeAndMeshesAtOnce)
{
    LifetimeWatch node;
    node.Watch(stage.node->GetLifetime());
    std::size_t children = 99;
    std::size_t places = 99;
    bool livedOn = false;
    stage.Arm(
        Place::NodeUpdateBegin,
        [&](MidFrameStage& s) {
            s.CurrentScene()->DeleteSubtree(s.node);
            children = s.parent->GetChildren().size();
            places = s.mesh->GetNodes().size();
            livedOn = node.IsAlive();
        },
        false);
    stage.app->Update(1.0f);
    EXPECT_EQ(children, 0u);
    EXPECT_EQ(places, 0u);
    EXPECT_TRUE(livedOn);
    EXPECT_FALSE(node.IsAlive());
}

TEST_F(MidFrame, WhatIsPutInForAClearedTreeIsInPlaceInTheSameUpdate)
{
    Node* added = nullptr;
    stage.Arm(
        Place::SiblingUpdateEnd,
        [&](MidFrameStage& s) {
            s.CurrentScene()->Clear();
            s.mesh = nullptr;
            added = new Node(s.CurrentScene());
            s.CurrentScene()->GetRoot()->AddChild(added, false);
            Transform place;
            place.SetPosition(Vector(1.0f, 2.0f, 3.0f));
            added->SetLocal(place);
        },
        false);
    stage.app->Update(1.0f);
    ASSERT_NE(added, nullptr);
    EXPECT_EQ(added->GetGlobal().GetPosition().y, 2.0f);
}

TEST_F(MidFrame, AContextMayBeDestroyedInEveryPlace)
{
    for (const PlaceCase& place : kPlaces)
    {
        if (place.place == Place::LoaderSuspend || place.place == Place::LoaderResume)
        {
            continue; // Stage::Run goes on to use the context.
        }
        SCOPED_TRACE(place.name);
        MidFrameStage own;
        own.Arm(
            place.place, [](MidFrameStage& s) {
                s.mesh = nullptr;
                s.app.reset();
            },
            false);
        own.RunWhileThereIsAContext();
        EXPECT_EQ(own.edits, 1);
    }
}

/// A node that deletes the scene it stands in.
class LastNode : public Node
{
public:
    LastNode(Scene* scene, std::unique_ptr<Scene>& owner) : Node(scene), m_owner(owner) {}

    void UpdateGraph() override { m_owner.reset(); }

private:
    std::unique_ptr<Scene>& m_owner;
};

TEST(MidFrameScene, AHostMayDeleteItsOwnSceneFromWithinAnUpdate)
{
    auto scene = std::make_unique<Scene>();
    scene->GetRoot()->AddChild(new LastNode(scene.get(), scene), false);
    scene->GetRoot()->AddChild(new Node(scene.get()), false);
    scene->UpdateGraph(64.0f, 48.0f);
    EXPECT_EQ(scene, nullptr);
}

TEST(MidFrameScene, NodesFarDownMayLeaveTheTreeFromWithinAnUpdate)
{
    for (const bool byDelete : {true, false})
    {
        Scene scene;
        std::vector<Node*> chain{scene.GetRoot()};
        int visits = 0;
        class Counted : public Node
        {
        public:
            Counted(Scene* s, int& visits, std::function<void()> onVisit) :
                Node(s), m_visits(visits), m_onVisit(std::move(onVisit))
            {
            }
            void UpdateGraph() override
            {
                ++m_visits;
                if (m_onVisit)
                {
                    const std::function<void()> call = m_onVisit;
                    call();
                    return;
                }
                Node::UpdateGraph();
            }

        private:
            int& m_visits;
            std::function<void()> m_onVisit;
        };
        constexpr int levels = 600;
        constexpr int edited = 500;
        for (int level = 1; level <= levels; ++level)
        {
            std::function<void()> onVisit;
            if (level == edited)
            {
                onVisit = [&]
                {
                    // The node in work and one above it that the same walk has come through.
                    if (byDelete)
                    {
                        delete chain[edited];
                        delete chain[edited - 100];
                    }
                    else
                    {
                        scene.DeleteSubtree(chain[edited - 100]);
                    }
                };
            }
            Node* const node = new Counted(&scene, visits, onVisit);
            chain.back()->AddChild(node, false);
            if (level == edited - 150)
            {
                // Comes after the long branch.
                chain.back()->AddChild(new Counted(&scene, visits, nullptr), false);
            }
            chain.push_back(node);
        }
        scene.UpdateGraph(64.0f, 48.0f);
        EXPECT_EQ(visits, edited + 1) << "what stood beside the branch was not visited";
        if (byDelete)
        {
            // Roots of their own now, which nobody but their host deletes.
            for (int level : {edited - 99, edited + 1})
            {
                scene.DeleteSubtree(chain[level]);
            }
        }
    }
}

} // namespace

} // namespace OV::Test
