#include "orvane/engine/AppContext.h"

#include "tests/engine/CountingRenderer.h"
#include "tests/engine/SceneDoubles.h"
#include "tests/overlay/LayerShapes.h"
#include "tests/support/GLRecorder.h"

#include "orvane/math/Color.h"
#include "orvane/platform/GenericDeviceConfig.h"
#include "orvane/platform/LinuxRenderCapabilities.h"
#include "orvane/renderer/Renderer20.h"
#include "orvane/scene/CameraNode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>

namespace
{

bool nothrowNewFails = false;

}  // namespace

// Fails on demand; else as usual.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    if (nothrowNewFails)
    {
        return nullptr;
    }
    try
    {
        return ::operator new(size);
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}

namespace OV::Test
{

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

class AppContextTest : public testing::Test
{
protected:
    AppContextTest()
        : scenes(*app.GetContext(), log)
    {
        log.clear();
        renderer.background = scenes.background;
        renderer.onCall = [this](const std::string& call) { log.push_back(call); };
    }

    Log log;
    AppContext app;
    LoggedScenes scenes;
    CountingRenderer renderer;
};

TEST(AppContext, StartsWithItsContextAndNoScreen)
{
    const AppContext app;
    ASSERT_NE(app.GetContext(), nullptr);
    EXPECT_EQ(app.GetWidth(), 0);
    EXPECT_EQ(app.GetHeight(), 0);
    EXPECT_EQ(app.GetContext()->GetScene(), nullptr);

    auto* const config = dynamic_cast<Platform::Generic::DeviceConfig*>(app.GetContext()->GetConfig());
    ASSERT_NE(config, nullptr);
    EXPECT_EQ(config->GetDisplayScale(), 1.0f);
    EXPECT_NE(dynamic_cast<Platform::Linux::RenderCapabilities*>(app.GetContext()->GetRenderCapabilities()), nullptr);
}

TEST(AppContext, PassesOnThatThereWasNoMemoryForTheConfig)
{
    nothrowNewFails = true;
    AppContext app;
    nothrowNewFails = false;
    EXPECT_EQ(app.GetContext()->GetConfig(), nullptr);
    CountingRenderer renderer;
    app.GetContext()->SetScene(std::make_unique<Scene>());
    EXPECT_TRUE(app.Update(0.0f));
    app.Render(&renderer, false);
    EXPECT_EQ(renderer.calls.size(), 5u);
}

TEST(AppContext, MakesNoGLCallWithoutARenderer)
{
    const GLRecorder recorder;
    {
        AppContext app;
        app.SetScreenSize(64, 64);
        app.GetContext()->SetScene(std::make_unique<Scene>());
        app.Update(0.0f);
        app.GetContext()->UpdateUI(0.0f);
    }
    EXPECT_THAT(recorder.Strings(), IsEmpty());
}

TEST_F(AppContextTest, UpdatePassesTheTimeAndTheScreenSizeOn)
{
    app.SetScreenSize(300, 200);
    EXPECT_TRUE(app.Update(7.0f));
    EXPECT_EQ(app.GetContext()->GetRunningTime(), 7.0f);
    EXPECT_EQ(scenes.scene->GetCameraNode()->screenWidth, 300.0f);
    EXPECT_EQ(scenes.scene->GetCameraNode()->screenHeight, 200.0f);
    EXPECT_FALSE(app.Update(8.0f));
}

TEST_F(AppContextTest, ANewScreenSizeDirtiesNothingAndWaitsForTheNextUpdate)
{
    app.SetScreenSize(300, 200);
    app.Update(0.0f);
    log.clear();
    app.SetScreenSize(640, 480);
    EXPECT_EQ(app.GetWidth(), 640);
    EXPECT_EQ(app.GetHeight(), 480);
    EXPECT_THAT(log, IsEmpty());
    EXPECT_THAT(renderer.calls, IsEmpty());
    EXPECT_FALSE(scenes.scene->IsDirty());
    EXPECT_EQ(scenes.scene->GetCameraNode()->screenWidth, 300.0f);

    EXPECT_FALSE(app.Update(0.0f));
    EXPECT_EQ(scenes.scene->GetCameraNode()->screenWidth, 640.0f);
    EXPECT_EQ(scenes.scene->GetCameraNode()->screenHeight, 480.0f);
}

TEST_F(AppContextTest, RenderWithCaptureDrawsTheBackgroundAndTheSceneInsideIt)
{
    app.GetContext()->SetBackgroundColor(Color(0.5f, 0.25f, 0.0f, 1.0f));
    app.Render(&renderer, true);
    EXPECT_THAT(renderer.calls,
                ElementsAre("BeginRender captured 0.5 0.25 0 1", "BeginCapture", "Render2D background", "Render3D",
                            "EndCapture", "ApplyCapture", "Render2D foreground", "EndRender"));
    EXPECT_EQ(renderer.lastScene, scenes.scene);
    EXPECT_EQ(renderer.lastCamera, scenes.scene->GetCameraNode());
}

TEST_F(AppContextTest, RenderWithoutCaptureMakesNoCaptureCalls)
{
    app.Render(&renderer, false);
    EXPECT_THAT(renderer.calls, ElementsAre("BeginRender direct 1 1 1 1", "Render2D background", "Render3D",
                                            "Render2D foreground", "EndRender"));
}

TEST_F(AppContextTest, RenderTakesTheCameraInUse)
{
    auto* camera = new CameraNode(scenes.scene);
    scenes.scene->GetRoot()->AddChild(camera, false);
    scenes.scene->SetCamera(camera);
    app.Render(&renderer, false);
    EXPECT_EQ(renderer.lastCamera, camera);
}

TEST_F(AppContextTest, RenderUpdatesNothing)
{
    app.Render(&renderer, true);
    EXPECT_TRUE(scenes.scene->IsDirty());
    EXPECT_EQ(scenes.scene->GetUpdateID(), 1u);
}

TEST_F(AppContextTest, RenderCapturedAndUIClearsInWhiteWhateverTheBackground)
{
    app.GetContext()->SetBackgroundColor(Color(0.5f, 0.25f, 0.0f, 1.0f));
    app.RenderCapturedAndUI(&renderer);
    EXPECT_THAT(renderer.calls,
                ElementsAre("BeginRender direct 1 1 1 1", "ApplyCapture", "Render2D foreground", "EndRender"));
}

TEST_F(AppContextTest, RenderClearDrawsTheForegroundAlone)
{
    app.RenderClear(&renderer, Color(0.0f, 0.5f, 1.0f, 0.25f));
    EXPECT_THAT(renderer.calls, ElementsAre("BeginRender direct 0 0.5 1 0.25", "Render2D foreground", "EndRender"));
}

TEST_F(AppContextTest, ClearOffscreenBuffersGoesToTheRendererAndDoesNothingElse)
{
    app.ClearOffscreenBuffers(&renderer);
    EXPECT_THAT(log, ElementsAre("ClearOffscreenBuffers"));
}

TEST_F(AppContextTest, SuspendGoesFromTheSceneToTheRenderer)
{
    app.Suspend(&renderer);
    EXPECT_THAT(log, ElementsAre("Suspend scene", "Suspend background", "Suspend foreground", "Suspend renderer"));
}

TEST_F(AppContextTest, ResumeKeepsTheOrderOfSuspend)
{
    app.Suspend(&renderer);
    log.clear();
    app.Resume(&renderer);
    EXPECT_THAT(log, ElementsAre("Resume scene", "Resume background", "Resume foreground", "Resume renderer"));
}

TEST_F(AppContextTest, ResumeLeavesEverythingToBeDrawnAnew)
{
    app.Update(0.0f);
    app.Suspend(&renderer);
    app.Resume(&renderer);
    EXPECT_TRUE(scenes.scene->IsDirty());
    EXPECT_TRUE(scenes.background->IsDirty());
    EXPECT_TRUE(scenes.foreground->IsDirty());
    EXPECT_TRUE(app.Update(0.0f));
}

TEST(AppContext, WithoutASceneTheFrameLeavesTheSceneOut)
{
    AppContext app;
    CountingRenderer renderer;
    renderer.background = app.GetContext()->GetBackground2D();
    EXPECT_FALSE(app.Update(0.0f));
    app.Render(&renderer, true);
    EXPECT_THAT(renderer.calls,
                ElementsAre("BeginRender captured 1 1 1 1", "BeginCapture", "Render2D background", "EndCapture",
                            "ApplyCapture", "Render2D foreground", "EndRender"));
    renderer.calls.clear();
    app.RenderCapturedAndUI(&renderer);
    app.RenderClear(&renderer, Color());
    EXPECT_EQ(renderer.calls.size(), 7u);
    renderer.calls.clear();
    app.Suspend(&renderer);
    app.Resume(&renderer);
    EXPECT_THAT(renderer.calls, ElementsAre("Suspend renderer", "Resume renderer"));
}

TEST(AppContext, WithoutACaptureRenderCapturedAndUIDrawsTheForegroundAlone)
{
    const GLRecorder recorder;
    AppContext app;
    CoreContext& core = *app.GetContext();
    Scene2D& foreground = *core.GetForeground2D();
    AddLayerMesh(foreground, *AddShapeNode(foreground, 20, 20, 0), *AddLayerMaterial(foreground, 1.0f));
    Scene2D& background = *core.GetBackground2D();
    AddLayerMesh(background, *AddShapeNode(background, 20, 20, 0), *AddLayerMaterial(background, 1.0f));
    core.SetScene(std::make_unique<Scene>());
    app.SetScreenSize(64, 64);
    app.Update(0.0f);
    Renderer20 renderer(nullptr, core.GetRenderCapabilities());
    renderer.Resize(64, 64);
    app.RenderCapturedAndUI(&renderer);
    EXPECT_EQ(recorder.Count("glDrawElements"), 1u);
    EXPECT_EQ(recorder.Count("glGenFramebuffers"), 0u);
    app.Suspend(&renderer);
}

TEST_F(AppContextTest, TheRendererIsNotOwned)
{
    auto other = std::make_unique<CountingRenderer>();
    {
        AppContext second;
        second.Render(other.get(), false);
    }
    EXPECT_EQ(other->calls.size(), 4u);
}

}  // namespace

}  // namespace OV::Test
