#include "orvane/effects/DepthIdPassEffectES20.h"
#include "orvane/effects/LineFilterEffectES20.h"
#include "orvane/renderer/RenderTarget.h"
#include "tests/renderer/PixelScene.h"

#include <GL/glew.h>
#include <gtest/gtest.h>

namespace OV::Test
{

namespace
{

class DepthIdPixels : public PixelScene
{
protected:
    DepthIdPixels() { AllowStateChange("dithering"); }

    /// The identifiers of the scene over a white ground.
    Picture Identifiers(int mode, bool clip = false)
    {
        context->Update(0.0f);
        auto* effect = renderer->effectCache.GetEffect(EffectCache::DepthIdPass);
        static_cast<DepthIdPassEffectES20*>(effect)->SetIdMode(mode);
        CameraNode* camera = scene->GetCameraNode();
        if (!camera->GetRenderData())
        {
            camera->SetRenderData(new CameraNodeES20(camera));
        }
        auto* data = static_cast<CameraNodeES20*>(camera->GetRenderData());
        data->UpdateMVP(Width(), Height(), false);
        glClearColor(1.0f, 1.0f, 1.0f, 1.0f);
        glDepthMask(GL_TRUE);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glEnable(GL_CULL_FACE);
        glEnable(GL_DEPTH_TEST);
        std::vector<RenderItemES20> items;
        for (Material* material : scene->GetOptimizedMaterials())
        {
            renderer->PrepareOptimizedMaterial(material, data, items, clip);
        }
        renderer->bufferPool.GenerateVBOs();
        renderer->RenderItemList(data, items, RenderPassDepthId);
        MeshES20::ResetBufferCache();
        effect->Release();
        return ReadPixels();
    }

    static Pixel ColorOf(int id)
    {
        float color[4];
        DepthIdPassEffectES20::EncodeId(id, color);
        return ToPixel(color[0], color[1], color[2]);
    }
};

} // namespace

TEST_F(DepthIdPixels, EveryNodeHasTheColourOfItsIdentifierTheNearestInFront)
{
    Material& material = AddColor(Color(0.3f, 0.2f, 0.1f, 1));
    AddQuad(material, {10, 10, 60, 60}, 5.0f).SetUserData(0);
    AddQuad(material, {40, 40, 60, 60}).SetUserData(41);
    AddQuad(material, {100, 4, 20, 20}).SetUserData(0xFFFF);
    const Picture picture = Identifiers(1);
    ExpectColorInRect(picture, {10, 10, 60, 60}, ColorOf(0));
    ExpectColorInRect(picture, {70, 40, 30, 60}, ColorOf(41));
    ExpectColorInRect(picture, {40, 70, 60, 30}, ColorOf(41));
    ExpectColorInRect(picture, {100, 4, 20, 20}, {0, 0, 122, 255});
    ExpectColorInRect(picture, {0, 0, 10, 128}, {255, 255, 255, 255});
    EXPECT_EQ(ColorOf(0), (Pixel{122, 0, 0, 255}));
}

TEST_F(DepthIdPixels, VertexIdentifiersAreTheMeshsColoursWithoutTheirAlpha)
{
    Material& material = AddColor(Color(0, 0, 0, 1));
    AddQuad(material, {10, 10, 60, 60}, 0.0f, std::vector<Color>(6, Color(0.2f, 0.4f, 0.6f, 0.1f))).SetUserData(9);
    ExpectColorInRect(Identifiers(0), {10, 10, 60, 60}, {51, 102, 153, 255});
    ExpectColorInRect(Identifiers(1), {10, 10, 60, 60}, ColorOf(9));
}

TEST_F(DepthIdPixels, AMeshWithoutColoursHasWhatTheDisabledAttributeHolds)
{
    AddQuad(AddColor(Color(0, 0, 0, 1)), {10, 10, 60, 60}).SetUserData(9);
    glVertexAttrib4f(1, 0.2f, 0.8f, 0.4f, 1.0f);
    ExpectColorInRect(Identifiers(0), {10, 10, 60, 60}, {51, 204, 102, 255});
    glVertexAttrib4f(1, 0.0f, 0.0f, 0.0f, 1.0f);
}

TEST_F(DepthIdPixels, ClipPlanesCutTheIdentifiersToo)
{
    AddQuad(AddColor(Color(0, 0, 0, 1)), {10, 10, 100, 100}).SetUserData(5);
    const auto shift = static_cast<float>(DefaultSize) / 2.0f;
    for (int i = 0; i < 5; ++i)
    {
        EffectES20::AddClipPlane(glm::vec3(0, 0, 1), glm::vec3(0, 0, 50));
    }
    EffectES20::AddClipPlane(glm::vec3(1, 0, 0), glm::vec3(60.0f - shift, 0, 0));
    EffectES20::AddClipPlane(glm::vec3(0, 1, 0), glm::vec3(0, 60.0f - shift, 0));
    const Picture picture = Identifiers(1, true);
    ExpectColorInRect(picture, {10, 10, 50, 100}, ColorOf(5));
    ExpectColorInRect(picture, {60, 10, 50, 100}, {255, 255, 255, 255});
}

TEST_F(DepthIdPixels, DrawnIntoATargetTheyGiveTheLinesOfTheNodesOverThePicture)
{
    Material& material = AddColor(Color(0, 1, 0, 1));
    AddQuad(material, {10, 10, 60, 60}, 5.0f).SetUserData(3);
    AddQuad(material, {40, 40, 60, 60}).SetUserData(4);
    RenderTarget picture(RenderTargetProfileColor);
    RenderTarget identifiers(RenderTargetProfileColorDepth);
    for (RenderTarget* target : {&picture, &identifiers})
    {
        target->SetDimensions(Width(), Height());
        target->BeginCapture(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        if (target == &picture)
        {
            Frame();
        }
        else
        {
            Identifiers(1);
        }
        target->EndCapture();
    }
    auto& filter = static_cast<LineFilterEffectES20&>(*renderer->effectCache.GetEffect(EffectCache::LineFilter));
    filter.SetDimensions(Width(), Height());
    filter.SetRenderTexture(static_cast<int>(picture.GetColorTexture()));
    filter.SetDepthTexture(static_cast<int>(identifiers.GetDepthTexture()));
    filter.SetIdTexture(static_cast<int>(identifiers.GetColorTexture()));
    filter.SetEdgeColor(Color(1, 0, 0, 1));
    filter.EdgeWeight(1.0f);
    filter.Apply(nullptr, nullptr);
    identifiers.ApplyCapture(&filter);
    filter.Release();
    const Picture lines = ReadPixels();
    const Pixel blue = ToPixel(0, 0, 1);
    const Pixel green = ToPixel(0, 1, 0);
    const Pixel overGreen = ToPixel(0.5f, 0.5f, 0);
    const Pixel overBlue = ToPixel(0.5f, 0, 0.5f);
    ExpectColorInRect(lines, {11, 11, 58, 28}, green);
    ExpectColorInRect(lines, {71, 41, 28, 58}, green);
    ExpectColorInRect(lines, {0, 72, 39, 56}, blue);
    // Sides have their line before what differs from its right neighbour, tops and bottoms on both.
    ExpectColorInRect(lines, {9, 12, 1, 56}, overBlue, 1);
    ExpectColorInRect(lines, {10, 12, 1, 56}, green);
    ExpectColorInRect(lines, {69, 42, 1, 26}, overGreen, 1);
    ExpectColorInRect(lines, {70, 42, 1, 26}, green);
    ExpectColorInRect(lines, {42, 69, 26, 2}, overGreen, 1);
    ExpectColorInRect(lines, {12, 9, 56, 1}, overBlue, 1);
    ExpectColorInRect(lines, {12, 10, 56, 1}, overGreen, 1);
    for (RenderTarget* target : {&picture, &identifiers})
    {
        target->SetDimensions(0, 0);
    }
}

TEST_F(DepthIdPixels, ABlendStateLeftOnDoesNotReachTheIdentifiers)
{
    AddQuad(AddColor(Color(0, 0, 0, 1)), {10, 10, 60, 60}).SetUserData(77);
    glEnable(GL_BLEND);
    glBlendFunc(GL_ONE, GL_ONE);
    ExpectColorInRect(Identifiers(1), {10, 10, 60, 60}, ColorOf(77));
}

} // namespace OV::Test
