#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/base/RenderCapabilities.h"
#include "orvane/renderdata/SharedBuffer.h"
#include "orvane/scene/CameraNode.h"
#include "tests/renderer/RendererDoubles.h"
#include "tests/support/GLFixture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <utility>
#include <vector>

namespace OV::Test
{

namespace
{

/// An orthographic scene in which a world unit is a pixel and the origin is the middle of the
/// picture. Everything is unlit, so that colours are exact.
class Renderer20PictureTest : public GLFixture
{
protected:
    Renderer20PictureTest()
    {
        context = std::make_unique<AppContext>();
        context->GetContext()->SetScene(std::make_unique<Scene>());
        scene = context->GetContext()->GetScene();
        renderer = std::make_unique<OpenRenderer20>(nullptr, context->GetContext()->GetRenderCapabilities());
        renderer->Resize(Width(), Height());
        context->SetScreenSize(Width(), Height());
        context->GetContext()->SetBackgroundColor(Color(0.0f, 0.0f, 1.0f, 1.0f));

        CameraNode& camera = *scene->GetCameraNode();
        camera.SetProjection(CameraNode::Orthographic);
        camera.SetFOV(std::atan(1.0f));
        camera.SetDistanceToTarget(static_cast<float>(Height()) / 2.0f);
        camera.SetNearFar(1.0f, 200.0f);
        Transform place;
        place.SetPosition(Vector(0.0f, 0.0f, 100.0f));
        camera.SetGlobal(place);
    }

    ~Renderer20PictureTest() override
    {
        renderer.reset();
        context.reset();
    }

    Material* AddColor(const Color& color)
    {
        Material* material = new Material("colour");
        material->SetFlags(MaterialFlagUnlit);
        material->SetAmbient(Color(0.0f, 0.0f, 0.0f, 0.0f));
        material->SetDiffuse(color);
        scene->AddMaterial(material);
        return material;
    }

    /// A rectangle of window pixels, seen from the front, at this height over the ground.
    ScenePart AddQuad(Material& material, const PixelRect& rect, float z = 0.0f, bool clockwise = false)
    {
        const float left = static_cast<float>(rect.x - Width() / 2);
        const float bottom = static_cast<float>(rect.y - Height() / 2);
        const float right = left + static_cast<float>(rect.width);
        const float top = bottom + static_cast<float>(rect.height);
        auto raw = std::make_shared<RawMesh>();
        raw->SetPositionBuffer({{left, bottom, 0}, {right, bottom, 0}, {right, top, 0}, {left, top, 0}});
        raw->SetIndices(clockwise ? std::vector<unsigned short>{0, 2, 1, 0, 3, 2}
                                  : std::vector<unsigned short>{0, 1, 2, 0, 2, 3});
        raw->EndDescription(true);
        ScenePart part;
        part.mesh = new Mesh(raw, scene);
        part.node = new MeshNode(scene);
        Transform place;
        place.SetPosition(Vector(0.0f, 0.0f, z));
        part.node->SetLocal(place);
        part.mesh->AddNode(part.node);
        scene->GetRoot()->AddChild(part.node, false);
        material.AddMesh(part.mesh);
        return part;
    }

    Picture Frame(bool capture = false)
    {
        context->Update(0.0f);
        context->Render(renderer.get(), capture);
        return ReadPixels();
    }

    std::unique_ptr<AppContext> context;
    std::unique_ptr<OpenRenderer20> renderer;
    Scene* scene = nullptr;
};

const Pixel kBlue = ToPixel(0, 0, 1);
const Pixel kRed = ToPixel(1, 0, 0);
const Pixel kGreen = ToPixel(0, 1, 0);

} // namespace

TEST_F(Renderer20PictureTest, OpaqueThingsAreOrderedByDepthAndAlphaBlendsOverThem)
{
    Material* red = AddColor(Color(1, 0, 0, 1));
    Material* green = AddColor(Color(0, 1, 0, 1));
    Material* glass = AddColor(Color(1, 1, 1, 0.5f));
    AddQuad(*red, {10, 10, 60, 60}, 5.0f);
    AddQuad(*green, {40, 40, 60, 60}, 0.0f);
    AddQuad(*glass, {0, 20, 128, 10}, 10.0f);
    const Picture picture = Frame();
    ExpectColorInRect(picture, Inset({10, 30, 60, 40}), kRed);
    ExpectColorInRect(picture, Inset({70, 70, 30, 30}), kGreen);
    ExpectColorInRect(picture, Inset({110, 40, 18, 80}), kBlue);
    // Half white over red, and over the blue ground.
    ExpectColorInRect(picture, Inset({10, 20, 60, 10}), {255, 128, 128, picture.At(40, 25).a}, 1);
    ExpectColorInRect(picture, Inset({80, 20, 40, 10}), {128, 128, 255, picture.At(100, 25).a}, 1);
}

TEST_F(Renderer20PictureTest, BackFacesShowOnlyWhereCullingIsOff)
{
    // Ambient colour alone shows on both sides.
    Material* plain = AddColor(Color(0, 0, 0, 1));
    plain->SetAmbient(Color(1, 0, 0, 1));
    Material* noCull = AddColor(Color(0, 0, 0, 1));
    noCull->SetAmbient(Color(0, 1, 0, 1));
    noCull->SetFlags(MaterialFlagNoCull);
    AddQuad(*plain, {0, 0, 32, 32}, 0.0f, true);
    AddQuad(*plain, {32, 0, 32, 32}, 0.0f, true).mesh->SetFlags(MeshFlagNoCull);
    AddQuad(*noCull, {64, 0, 32, 32}, 0.0f, true);
    AddQuad(*plain, {96, 0, 32, 32}, 0.0f, false);
    const Picture picture = Frame();
    ExpectColorInRect(picture, Inset({0, 0, 32, 32}), kBlue);
    ExpectColorInRect(picture, Inset({32, 0, 32, 32}), kRed);
    ExpectColorInRect(picture, Inset({64, 0, 32, 32}), kGreen);
    ExpectColorInRect(picture, Inset({96, 0, 32, 32}), kRed);
}

TEST_F(Renderer20PictureTest, AlwaysPassShowsThroughWhatLiesBeforeIt)
{
    Material* front = AddColor(Color(1, 0, 0, 1));
    Material* through = AddColor(Color(0, 1, 0, 1));
    Material* behind = AddColor(Color(1, 1, 1, 1));
    through->SetFlags(MaterialFlagAlwaysPass);
    AddQuad(*front, {0, 0, 64, 64}, 10.0f);
    AddQuad(*through, {16, 16, 32, 32}, 0.0f);
    AddQuad(*behind, {0, 0, 16, 64}, -10.0f);
    const Picture picture = Frame();
    ExpectColorInRect(picture, Inset({16, 16, 32, 32}), kGreen);
    ExpectColorInRect(picture, Inset({0, 0, 16, 64}), kRed);
}

TEST_F(Renderer20PictureTest, PolygonOffsetDecidesBetweenEqualDepths)
{
    Material* raised = AddColor(Color(1, 0, 0, 1));
    raised->SetFlags(MaterialFlagPolygonOffset);
    raised->polygonOffsetFactor = -1.0f;
    raised->polygonOffsetUnits = -4.0f;
    Material* plain = AddColor(Color(0, 1, 0, 1));
    AddQuad(*raised, {0, 0, 64, 64});
    AddQuad(*plain, {0, 0, 128, 64});
    const Picture picture = Frame();
    ExpectColorInRect(picture, Inset({0, 0, 64, 64}), kRed);
    ExpectColorInRect(picture, Inset({64, 0, 64, 64}), kGreen);
}

TEST_F(Renderer20PictureTest, PointsHaveTheSizeOfTheirMaterial)
{
    Material* points = AddColor(Color(1, 0, 0, 1));
    points->SetFlags(MaterialFlagPoints);
    points->pointSize = 16.0f;
    auto raw = std::make_shared<RawMesh>();
    raw->SetPositionBuffer({Vector(0, 0, 0)});
    raw->SetIndices({0});
    raw->EndDescription(true);
    auto* mesh = new Mesh(raw, scene);
    auto* node = new MeshNode(scene);
    mesh->AddNode(node);
    scene->GetRoot()->AddChild(node, false);
    points->AddMesh(mesh);
    const Picture picture = Frame();
    ExpectColorInRect(picture, {57, 57, 14, 14}, kRed);
    EXPECT_EQ(picture.Count(kRed), 16 * 16);
}

TEST_F(Renderer20PictureTest, MeshesOverManyBuffersAreAllDrawn)
{
    // Each mesh has 6000 vertices of 32 bytes: eleven buffers in all.
    Material* red = AddColor(Color(1, 0, 0, 1));
    for (int i = 0; i < 100; ++i)
    {
        const ScenePart part = AddQuad(*red, {(i % 10) * 12 + 2, (i / 10) * 12 + 2, 8, 8});
        part.mesh->GetRawMesh()->positions.resize(6000);
    }
    const Picture picture = Frame();
    EXPECT_EQ(picture.Count(kRed), 100 * 64);
    EXPECT_EQ(picture.Count(kBlue), 128 * 128 - 100 * 64);
}

TEST_F(Renderer20PictureTest, AMeshAboveTheCapIsDrawnAlone)
{
    Material* red = AddColor(Color(1, 0, 0, 1));
    const ScenePart large = AddQuad(*red, {0, 0, 64, 64});
    large.mesh->GetRawMesh()->positions.resize(65536);
    AddQuad(*red, {64, 64, 64, 64});
    const Picture picture = Frame();
    EXPECT_NE(DataOf(*large.mesh)->sharedBuffer, nullptr);
    EXPECT_EQ(DataOf(*large.mesh)->sharedBuffer->bytesUsed, 65536 * 32);
    EXPECT_EQ(DataOf(*large.mesh)->sharedBuffer->meshes.size(), 1u);
    EXPECT_EQ(picture.Count(kRed), 2 * 64 * 64);
}

TEST_F(Renderer20PictureTest, TenSuspensionsLeaveNoObjectAndRepeatThePicture)
{
    Material* red = AddColor(Color(1, 0, 0, 1));
    Material* glass = AddColor(Color(0, 1, 0, 0.25f));
    AddQuad(*red, {10, 10, 60, 60});
    AddQuad(*glass, {40, 40, 60, 60}, 5.0f);
    const GLObjects none = GLState::CaptureObjects();
    const Picture first = Frame();
    EXPECT_GT(first.Count(kRed), 0);
    const GLObjects drawn = GLState::CaptureObjects();
    const auto counts = [](const GLObjects& objects)
    {
        std::map<std::string, std::size_t> result;
        for (const auto& [kind, names] : objects)
            result[kind] = names.size();
        return result;
    };
    EXPECT_NE(counts(none), counts(drawn));
    for (int round = 0; round < 10; ++round)
    {
        context->Suspend(renderer.get());
        GLState::Unbind();
        EXPECT_EQ(GLState::CaptureObjects(), none) << "round " << round;
        context->Resume(renderer.get());
        EXPECT_EQ(Frame(), first) << "round " << round;
        EXPECT_EQ(counts(GLState::CaptureObjects()), counts(drawn)) << "round " << round;
    }
}

TEST_F(Renderer20PictureTest, FramesAreTheSameBytesWhateverWasDrawnBefore)
{
    Material* red = AddColor(Color(1, 0, 0, 1));
    Material* glass = AddColor(Color(0, 1, 0, 0.25f));
    Material* raised = AddColor(Color(1, 1, 0, 1));
    raised->SetFlags(MaterialFlagPolygonOffset | MaterialFlagNoCull);
    raised->polygonOffsetUnits = -10.0f;
    AddQuad(*red, {10, 10, 60, 60});
    AddQuad(*raised, {20, 20, 20, 20}, 0.0f, true);
    AddQuad(*glass, {40, 40, 60, 60}, 5.0f);
    const Picture first = Frame();
    EXPECT_EQ(Frame(), first);
    // What a pass of the host's may leave behind.
    glDepthMask(GL_FALSE);
    glEnable(GL_BLEND);
    glBlendFunc(GL_ONE, GL_ONE);
    glBlendEquation(GL_FUNC_SUBTRACT);
    glDisable(GL_CULL_FACE);
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_POLYGON_OFFSET_FILL);
    EXPECT_EQ(Frame(), first);
    EXPECT_EQ(Frame(), first);
}

TEST_F(Renderer20PictureTest, ANewRendererDrawsTheSceneOfADeadOne)
{
    AddQuad(*AddColor(Color(1, 0, 0, 1)), {10, 10, 60, 60});
    const Picture first = Frame();
    renderer = std::make_unique<OpenRenderer20>(nullptr, context->GetContext()->GetRenderCapabilities());
    renderer->Resize(Width(), Height());
    EXPECT_EQ(Frame(), first);
}

TEST_F(Renderer20PictureTest, TheCaptureIsCompleteAndShowsTheSamePicture)
{
    AddQuad(*AddColor(Color(1, 0, 0, 1)), {10, 10, 60, 60}, 5.0f);
    AddQuad(*AddColor(Color(0, 1, 0, 1)), {40, 40, 60, 60});
    const Picture direct = Frame(false);

    renderer->SetupAntialiasBuffers();
    renderer->CreateScreenMesh();
    glBindFramebuffer(GL_FRAMEBUFFER, renderer->offscreenFramebuffer);
    EXPECT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER), static_cast<unsigned>(GL_FRAMEBUFFER_COMPLETE));
    glBindFramebuffer(GL_FRAMEBUFFER, renderer->onScreenFramebuffer);
    EXPECT_NE(renderer->offscreenDepthTexture, 0u);

    EXPECT_EQ(Frame(true), direct);
    EXPECT_EQ(Frame(true), direct);
    // The picture can be shown again without the scene.
    context->GetContext()->SetScene(std::make_unique<Scene>());
    context->Update(0.0f);
    context->RenderCapturedAndUI(renderer.get());
    EXPECT_EQ(ReadPixels(), direct);
    scene = nullptr;
}

TEST_F(Renderer20PictureTest, TenSuspensionsOfACaptureLeaveNoObjectAndRepeatThePicture)
{
    AddQuad(*AddColor(Color(1, 0, 0, 1)), {10, 10, 60, 60}, 5.0f);
    const Picture direct = Frame(false);
    context->Suspend(renderer.get());
    GLState::Unbind();
    const GLObjects none = GLState::CaptureObjects();
    context->Resume(renderer.get());
    for (int round = 0; round < 10; ++round)
    {
        renderer->BeginCapture();
        renderer->ApplyCapture();
        EXPECT_EQ(Frame(true), direct) << "round " << round;
        context->Suspend(renderer.get());
        GLState::Unbind();
        EXPECT_EQ(GLState::CaptureObjects(), none) << "round " << round;
        context->Resume(renderer.get());
    }
}

TEST_F(Renderer20PictureTest, SupersamplingCapturesAtTwiceTheSize)
{
    AddQuad(*AddColor(Color(1, 0, 0, 1)), {10, 10, 60, 60});
    renderer->SetAAMode(AAModeSupersampling);
    renderer->BeginCapture();
    EXPECT_EQ(renderer->offscreenWidth, 2 * Width());
    EXPECT_EQ(renderer->offscreenHeight, 2 * Height());
    renderer->ApplyCapture();
    const Picture picture = Frame(true);
    ExpectColorInRect(picture, Inset({10, 10, 60, 60}), kRed);
    ExpectColorInRect(picture, Inset({80, 80, 40, 40}), kBlue);
}

} // namespace OV::Test
