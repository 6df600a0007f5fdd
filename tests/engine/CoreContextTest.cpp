#include "orvane/engine/CoreContext.h"

#include "tests/engine/SceneDoubles.h"

#include "orvane/math/Color.h"
#include "orvane/overlay/Shape2DNode.h"
#include "orvane/platform/GenericDeviceConfig.h"
#include "orvane/platform/LinuxRenderCapabilities.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/RawMesh.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace OV::Test
{

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

class CoreContextTest : public testing::Test
{
protected:
    CoreContextTest()
        : scenes(context, log)
    {
        log.clear();
    }

    // Leaves nothing dirty and an empty log.
    void Settle()
    {
        context.Update(0.0f, 640, 480);
        log.clear();
    }

    Log log;
    CoreContext context{nullptr, nullptr};
    LoggedScenes scenes;
};

TEST(CoreContext, StartsWithoutASceneWithTwoLayersAndAWhiteBackground)
{
    auto config = std::make_unique<Platform::Generic::DeviceConfig>();
    auto capabilities = std::make_unique<Platform::Linux::RenderCapabilities>();
    DeviceConfig* const rawConfig = config.get();
    RenderCapabilities* const rawCapabilities = capabilities.get();
    const CoreContext context(std::move(config), std::move(capabilities));
    EXPECT_EQ(context.GetConfig(), rawConfig);
    EXPECT_EQ(context.GetRenderCapabilities(), rawCapabilities);
    EXPECT_TRUE(context.GetBackgroundColor().IsExactlyEqual(Color(1.0f, 1.0f, 1.0f, 1.0f)));
    EXPECT_EQ(context.GetRunningTime(), 0.0f);
    EXPECT_FALSE(context.OnlyForegroundWasDirty());
    EXPECT_EQ(context.GetScene(), nullptr);
    EXPECT_EQ(context.GetCamera(), nullptr);
    ASSERT_NE(context.GetForeground2D(), nullptr);
    ASSERT_NE(context.GetBackground2D(), nullptr);
    EXPECT_NE(context.GetForeground2D(), context.GetBackground2D());
    EXPECT_EQ(context.GetForeground2D()->GetContext(), &context);
    EXPECT_EQ(context.GetBackground2D()->GetContext(), &context);
}

TEST(CoreContext, PassesMissingConfigAndCapabilitiesOn)
{
    const CoreContext context(nullptr, nullptr);
    EXPECT_EQ(context.GetConfig(), nullptr);
    EXPECT_EQ(context.GetRenderCapabilities(), nullptr);
}

TEST_F(CoreContextTest, UpdateStoresTheTimeUnchangedAndAddsNothingUp)
{
    context.Update(2.5f, 1, 1);
    EXPECT_EQ(context.GetRunningTime(), 2.5f);
    context.Update(1.25f, 1, 1);
    EXPECT_EQ(context.GetRunningTime(), 1.25f);
    context.Update(-3.0f, 1, 1);
    EXPECT_EQ(context.GetRunningTime(), -3.0f);
}

TEST_F(CoreContextTest, FirstUpdateFindsTheNewScenesDirty)
{
    EXPECT_TRUE(context.Update(0.0f, 640, 480));
    EXPECT_FALSE(context.OnlyForegroundWasDirty());
    EXPECT_THAT(log, ElementsAre("Update scene", "Update background", "Update foreground"));
    EXPECT_FALSE(scenes.scene->IsDirty());
    EXPECT_FALSE(scenes.background->IsDirty());
    EXPECT_FALSE(scenes.foreground->IsDirty());
}

TEST_F(CoreContextTest, UpdateOfACleanSceneReturnsFalseAndStillUpdatesAllThree)
{
    Settle();
    EXPECT_FALSE(context.Update(1.0f, 640, 480));
    EXPECT_FALSE(context.OnlyForegroundWasDirty());
    EXPECT_THAT(log, ElementsAre("Update scene", "Update background", "Update foreground"));
}

TEST_F(CoreContextTest, TheFrustumFollowsTheScreenSizeWhileNothingIsDrawn)
{
    Settle();
    const Vector before = context.GetCamera()->GetFrustum().rightNormal;
    EXPECT_FALSE(context.Update(1.0f, 1280, 480));
    const Vector after = context.GetCamera()->GetFrustum().rightNormal;
    EXPECT_NE(before, after);
    EXPECT_EQ(scenes.background->screenWidth, 1280.0f);
    EXPECT_EQ(scenes.foreground->screenHeight, 480.0f);
}

TEST_F(CoreContextTest, UpdateWritesTheScreenSizeToTheCameraInUse)
{
    auto* camera = new CameraNode(scenes.scene);
    scenes.scene->GetRoot()->AddChild(camera, false);
    CameraNode* const defaultCamera = context.GetCamera();
    scenes.scene->SetCamera(camera);
    EXPECT_EQ(context.GetCamera(), camera);
    context.Update(0.0f, 800, 600);
    EXPECT_EQ(camera->screenWidth, 800.0f);
    EXPECT_EQ(camera->screenHeight, 600.0f);
    EXPECT_EQ(defaultCamera->screenWidth, 0.0f);
}

TEST_F(CoreContextTest, TheCameraHasTheScreenSizeBeforeTheSceneIsUpdated)
{
    // A scene that passes other numbers on shows that the context writes to the camera itself.
    struct Narrow : Scene
    {
        void UpdateGraph(float, float) override
        {
            seenWidth = GetCameraNode()->screenWidth;
            seenHeight = GetCameraNode()->screenHeight;
        }
        float seenWidth = -1.0f;
        float seenHeight = -1.0f;
    };
    auto scene = std::make_unique<Narrow>();
    Narrow* const raw = scene.get();
    context.SetScene(std::move(scene));
    context.Update(0.0f, 31, 17);
    EXPECT_EQ(raw->seenWidth, 31.0f);
    EXPECT_EQ(raw->seenHeight, 17.0f);
}

TEST_F(CoreContextTest, OnlyTheForegroundDirtyIsReportedAsSuch)
{
    Settle();
    scenes.foreground->MarkDirty();
    EXPECT_TRUE(context.Update(0.0f, 640, 480));
    EXPECT_TRUE(context.OnlyForegroundWasDirty());
    EXPECT_FALSE(context.Update(0.0f, 640, 480));
    EXPECT_FALSE(context.OnlyForegroundWasDirty());
}

TEST_F(CoreContextTest, TheBackgroundLayerBelongsToTheSceneSide)
{
    Settle();
    scenes.background->MarkDirty();
    EXPECT_TRUE(context.Update(0.0f, 640, 480));
    EXPECT_FALSE(context.OnlyForegroundWasDirty());

    scenes.background->MarkDirty();
    scenes.foreground->MarkDirty();
    EXPECT_TRUE(context.Update(0.0f, 640, 480));
    EXPECT_FALSE(context.OnlyForegroundWasDirty());
}

TEST_F(CoreContextTest, TheSceneDirtyIsReportedWithoutTheHint)
{
    Settle();
    scenes.scene->MarkDirty();
    EXPECT_TRUE(context.Update(0.0f, 640, 480));
    EXPECT_FALSE(context.OnlyForegroundWasDirty());

    scenes.scene->MarkDirty();
    scenes.foreground->MarkDirty();
    EXPECT_TRUE(context.Update(0.0f, 640, 480));
    EXPECT_FALSE(context.OnlyForegroundWasDirty());
}

TEST_F(CoreContextTest, ASceneDirtiedByALayersUpdateRunsAgainInTheSameFrame)
{
    Settle();
    scenes.foreground->afterUpdate = [this] { scenes.scene->MarkDirty(); };
    EXPECT_TRUE(context.Update(0.0f, 640, 480));
    EXPECT_FALSE(context.OnlyForegroundWasDirty());
    EXPECT_THAT(log, ElementsAre("Update scene", "Update background", "Update foreground", "Update scene"));
    EXPECT_FALSE(scenes.scene->IsDirty());
}

TEST_F(CoreContextTest, ASecondRunTakesTheHintAwayFromADirtyForeground)
{
    Settle();
    scenes.foreground->MarkDirty();
    scenes.background->afterUpdate = [this] { scenes.scene->MarkDirty(); };
    EXPECT_TRUE(context.Update(0.0f, 640, 480));
    EXPECT_FALSE(context.OnlyForegroundWasDirty());
    EXPECT_THAT(log, ElementsAre("Update scene", "Update background", "Update foreground", "Update scene"));
}

TEST_F(CoreContextTest, ALayerDirtiedByAnUpdateGivesTheSceneASecondRunAndWaitsItself)
{
    Settle();
    bool once = true;
    scenes.foreground->afterUpdate = [&] {
        if (once)
        {
            scenes.background->MarkDirty();
        }
        once = false;
    };
    EXPECT_TRUE(context.Update(0.0f, 640, 480));
    EXPECT_FALSE(context.OnlyForegroundWasDirty());
    EXPECT_THAT(log, ElementsAre("Update scene", "Update background", "Update foreground", "Update scene"));
    EXPECT_TRUE(scenes.background->IsDirty());

    log.clear();
    EXPECT_TRUE(context.Update(0.0f, 640, 480));
    EXPECT_FALSE(scenes.background->IsDirty());
    EXPECT_THAT(log, ElementsAre("Update scene", "Update background", "Update foreground"));
}

TEST_F(CoreContextTest, AForegroundThatStaysDirtyGivesTheSceneASecondRun)
{
    Settle();
    scenes.foreground->afterUpdate = [this] { scenes.foreground->MarkDirty(); };
    EXPECT_TRUE(context.Update(0.0f, 640, 480));
    EXPECT_FALSE(context.OnlyForegroundWasDirty());
    EXPECT_TRUE(scenes.foreground->IsDirty());
    EXPECT_THAT(log, ElementsAre("Update scene", "Update background", "Update foreground", "Update scene"));
}

TEST_F(CoreContextTest, ADirtySceneSideGetsNoSecondRunWhateverTheUpdatesDo)
{
    Settle();
    scenes.background->MarkDirty();
    scenes.foreground->afterUpdate = [this] { scenes.scene->MarkDirty(); };
    EXPECT_TRUE(context.Update(0.0f, 640, 480));
    EXPECT_THAT(log, ElementsAre("Update scene", "Update background", "Update foreground"));
    EXPECT_TRUE(scenes.scene->IsDirty());
}

TEST(CoreContext, WithoutASceneUpdateReturnsFalseAndUpdatesTheLayersAlone)
{
    CoreContext context(nullptr, nullptr);
    EXPECT_FALSE(context.Update(4.0f, 320, 200));
    EXPECT_EQ(context.GetRunningTime(), 4.0f);
    EXPECT_FALSE(context.OnlyForegroundWasDirty());
    EXPECT_EQ(context.GetForeground2D()->screenWidth, 320.0f);
    EXPECT_EQ(context.GetBackground2D()->screenHeight, 200.0f);
    EXPECT_EQ(context.GetForeground2D()->GetUpdateID(), 2u);
    EXPECT_EQ(context.GetBackground2D()->GetUpdateID(), 2u);

    context.GetForeground2D()->MarkDirty();
    EXPECT_FALSE(context.Update(5.0f, 320, 200));
    EXPECT_FALSE(context.OnlyForegroundWasDirty());
}

TEST_F(CoreContextTest, UpdateCopesWithASceneThatHasLostItsCameras)
{
    scenes.scene->DeleteSubtree(scenes.scene->GetCameraNode());
    ASSERT_EQ(context.GetCamera(), nullptr);
    EXPECT_TRUE(context.Update(0.0f, 640, 480));
}

TEST_F(CoreContextTest, ABackgroundColourWithinTheToleranceChangesNothing)
{
    Settle();
    const Color close(1.0f, 1.0f - 0.00009f, 1.0f, 1.0f);
    context.SetBackgroundColor(close);
    EXPECT_TRUE(context.GetBackgroundColor().IsExactlyEqual(Color(1.0f, 1.0f, 1.0f, 1.0f)));
    EXPECT_FALSE(scenes.scene->IsDirty());
}

TEST_F(CoreContextTest, ABackgroundColourBeyondTheToleranceIsStoredAndDirtiesTheScene)
{
    Settle();
    const Color other(1.0f, 1.0f, 1.0f, 0.9998f);
    context.SetBackgroundColor(other);
    EXPECT_TRUE(context.GetBackgroundColor().IsExactlyEqual(other));
    EXPECT_TRUE(scenes.scene->IsDirty());
    EXPECT_FALSE(scenes.background->IsDirty());
    EXPECT_FALSE(scenes.foreground->IsDirty());
}

TEST(CoreContext, ABackgroundColourMayComeBeforeTheScene)
{
    CoreContext context(nullptr, nullptr);
    context.SetBackgroundColor(Color(0.25f, 0.5f, 0.75f, 1.0f));
    EXPECT_TRUE(context.GetBackgroundColor().IsExactlyEqual(Color(0.25f, 0.5f, 0.75f, 1.0f)));
}

TEST_F(CoreContextTest, SetSceneDestroysTheOldSceneWithItsRenderData)
{
    struct Data : Object
    {
        explicit Data(Log& log)
            : m_log(log)
        {
        }
        ~Data() override { m_log.push_back("~render data"); }
        Log& m_log;
    };
    auto* material = new Material("m");
    scenes.scene->AddMaterial(material);
    material->SetRenderData(new Data(log));

    auto next = std::make_unique<LoggedScene>("next", log);
    Scene* const raw = next.get();
    context.SetScene(std::move(next));
    EXPECT_EQ(context.GetScene(), raw);
    EXPECT_EQ(next, nullptr);
    EXPECT_THAT(log, ElementsAre("~scene", "~render data"));
}

TEST_F(CoreContextTest, SetSceneFromTheMemberItselfDoesNothing)
{
    context.SetScene(std::move(ContextParts::SceneOf(context)));
    EXPECT_EQ(context.GetScene(), scenes.scene);
    EXPECT_THAT(log, IsEmpty());
}

TEST_F(CoreContextTest, SetSceneOfNothingLeavesTheContextWithoutAScene)
{
    context.SetScene(nullptr);
    EXPECT_EQ(context.GetScene(), nullptr);
    EXPECT_THAT(log, ElementsAre("~scene"));
    EXPECT_FALSE(context.Update(0.0f, 1, 1));
}

TEST(CoreContext, IsDestroyedFromTheSceneToTheConfig)
{
    Log log;
    struct Config : Platform::Generic::DeviceConfig
    {
        explicit Config(Log& log)
            : m_log(log)
        {
        }
        ~Config() override { m_log.push_back("~config"); }
        Log& m_log;
    };
    struct Capabilities : Platform::Linux::RenderCapabilities
    {
        explicit Capabilities(Log& log)
            : m_log(log)
        {
        }
        ~Capabilities() override { m_log.push_back("~capabilities"); }
        Log& m_log;
    };
    {
        CoreContext context(std::make_unique<Config>(log), std::make_unique<Capabilities>(log));
        const LoggedScenes scenes(context, log);
        log.clear();
    }
    EXPECT_THAT(log, ElementsAre("~scene", "~background", "~foreground", "~capabilities", "~config"));
}

TEST(CoreContext, CanBeDestroyedThroughItsBase)
{
    bool gone = false;
    struct Derived : CoreContext
    {
        explicit Derived(bool& gone)
            : CoreContext(nullptr, nullptr)
            , m_gone(gone)
        {
        }
        ~Derived() override { m_gone = true; }
        bool& m_gone;
    };
    std::unique_ptr<CoreContext> context = std::make_unique<Derived>(gone);
    context.reset();
    EXPECT_TRUE(gone);
}

// One layer's shape, with a mesh of a material.
Shape2DNode* AddShape(Scene2D& layer, float opacity)
{
    auto* material = new Material("m");
    material->SetOpacity(opacity);
    layer.AddMaterial(material);
    auto* mesh = new Mesh(std::make_shared<RawMesh>(), &layer);
    material->AddMesh(mesh);
    auto* node = new Shape2DNode(&layer);
    layer.GetRoot()->AddChild(node, false);
    mesh->AddNode(node);
    return node;
}

TEST(CoreContext, UpdateUIResetsThePickingOfBothLayers)
{
    CoreContext context(nullptr, nullptr);
    Shape2DNode* const opaque = AddShape(*context.GetBackground2D(), 1.0f);
    Shape2DNode* const transparent = AddShape(*context.GetForeground2D(), 0.5f);
    opaque->pickState = 3;
    transparent->pickState = 1;
    context.UpdateUI(std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(opaque->pickState, 0u);
    EXPECT_EQ(transparent->pickState, 0u);
}

}  // namespace

}  // namespace OV::Test
