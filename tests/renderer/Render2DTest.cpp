#include "orvane/overlay/Material2D.h"
#include "orvane/overlay/Rect.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/overlay/Shape2DNode.h"
#include "orvane/overlay/Sprite.h"
#include "orvane/overlay/Text.h"
#include "orvane/platform/ESTextureLoader.h"
#include "tests/renderer/RendererDoubles.h"
#include "tests/support/GLRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace OV::Test
{

namespace
{

using ::testing::ElementsAre;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

class Render2DTest : public ::testing::Test
{
protected:
    Render2DTest() : renderer(&loader, nullptr)
    {
        renderer.Resize(200, 100);
        m_clampBefore = GLEW_ARB_depth_clamp;
    }

    ~Render2DTest() override { OfferDepthClamp(m_clampBefore != GL_FALSE); }

    static void OfferDepthClamp(bool offer) { __GLEW_ARB_depth_clamp = offer ? GL_TRUE : GL_FALSE; }

    void Draw()
    {
        layer.UpdateGraph(200, 100);
        gl.Clear();
        renderer.Render2D(&layer);
    }

    /// The depth range of the layer's matrix.
    static std::vector<float> RangeOf(const Matrix& hud)
    {
        const float span = -2.0f / hud.m[10];
        const float middle = hud.m[14] / hud.m[10];
        return {middle - span / 2.0f, middle + span / 2.0f};
    }

    std::unique_ptr<Sprite> AddSprite(float z, bool opaque = false)
    {
        auto sprite = std::make_unique<Sprite>(&layer, new Rect(&layer, 10, 10, false));
        sprite->GetMaterial()->transparent = !opaque;
        layer.ProcessChangedMaterial(sprite->GetMaterial());
        Transform place;
        place.SetPosition(Vector(0, 0, z));
        sprite->GetNode()->SetLocal(place);
        return sprite;
    }

    GLRecorder gl;
    Platform::Linux::ESTextureLoader loader;
    OpenRenderer20 renderer;
    Scene2D layer{nullptr};

private:
    GLboolean m_clampBefore;
};

TEST_F(Render2DTest, LetsEqualDepthBeSeenAndPutsTheDepthFunctionBack)
{
    const auto sprite = AddSprite(0);
    glDepthFunc(GL_GEQUAL);
    Draw();
    const std::vector<GLCall> functions = gl.All("glDepthFunc");
    ASSERT_EQ(functions.size(), 2u);
    EXPECT_EQ(functions[0].Int(0), GL_LEQUAL);
    EXPECT_EQ(functions[1].Int(0), GL_GEQUAL);
    EXPECT_LT(gl.IndexOf("glDepthFunc", {GL_LEQUAL}), gl.IndexOf("glDrawElements"));
    EXPECT_GT(gl.IndexOf("glDepthFunc", {GL_GEQUAL}), gl.IndexOf("glDrawElements"));
    EXPECT_LT(gl.IndexOf("glClear", {GL_DEPTH_BUFFER_BIT}), gl.IndexOf("glEnable", {GL_DEPTH_TEST}));
}

TEST_F(Render2DTest, ClampsDepthWhereTheDriverCan)
{
    const auto sprite = AddSprite(0);
    OfferDepthClamp(false);
    Draw();
    EXPECT_EQ(gl.Count("glEnable", {GL_DEPTH_CLAMP}), 0u);
    EXPECT_EQ(gl.Count("glDisable", {GL_DEPTH_CLAMP}), 0u);
    OfferDepthClamp(true);
    Draw();
    EXPECT_EQ(gl.Count("glEnable", {GL_DEPTH_CLAMP}), 1u);
    EXPECT_LT(gl.IndexOf("glEnable", {GL_DEPTH_CLAMP}), gl.IndexOf("glDrawElements"));
    EXPECT_GT(gl.IndexOf("glDisable", {GL_DEPTH_CLAMP}), gl.IndexOf("glDrawElements"));
}

TEST_F(Render2DTest, LeavesAHostsDepthClampOn)
{
    OfferDepthClamp(true);
    glEnable(GL_DEPTH_CLAMP);
    Draw();
    EXPECT_EQ(gl.Count("glDisable", {GL_DEPTH_CLAMP}), 0u);
    EXPECT_TRUE(gl.IsEnabled(GL_DEPTH_CLAMP));
    glDisable(GL_DEPTH_CLAMP);
}

TEST_F(Render2DTest, TheRangeIsThatOfTheLayerAndATenthMore)
{
    const auto lower = AddSprite(-4);
    const auto upper = AddSprite(6);
    Draw();
    EXPECT_EQ(layer.nearZ, -6.0f);
    EXPECT_EQ(layer.farZ, 4.0f);
    const std::vector<float> range = RangeOf(renderer.hudCamera->GetHudMVP());
    EXPECT_NEAR(range[0], -6.1f, 1e-4f);
    EXPECT_NEAR(range[1], 4.1f, 1e-4f);
}

TEST_F(Render2DTest, SoFarOutThatATenthIsLostTheNextFloatStandsForIt)
{
    const auto sprite = AddSprite(3.0e8f);
    Draw();
    CameraNodeES20 expected(nullptr);
    expected.UpdateHudMVP(200, 100, std::nextafter(-3.0e8f, -kInfinity), std::nextafter(-3.0e8f, kInfinity));
    EXPECT_THAT(renderer.hudCamera->GetHudMVP().m, testing::ElementsAreArray(expected.GetHudMVP().m));
}

TEST_F(Render2DTest, OpaqueMaterialsComeBeforeTheOrderedItemsOfTheLayer)
{
    const auto third = AddSprite(3);
    const auto first = AddSprite(9, true);
    const auto second = AddSprite(1);
    third->SetColor(Color(0, 0, 1, 1));
    first->SetColor(Color(1, 0, 0, 1));
    second->SetColor(Color(0, 1, 0, 1));
    Draw();
    std::vector<int> order;
    for (const GLCall& call : gl.All("glUniform4f"))
    {
        order.push_back(call.Float(1) == 1.0f ? 1 : call.Float(2) == 1.0f ? 2 : 3);
    }
    EXPECT_THAT(order, ElementsAre(1, 2, 3));
    EXPECT_EQ(gl.Count("glDrawElements"), 3u);
}

TEST_F(Render2DTest, SpritesOfOneMaterialSideBySideInZCostOneProgram)
{
    auto* const shared = new Material2D("shared");
    layer.AddMaterial(shared);
    std::vector<std::unique_ptr<Sprite>> sprites;
    for (int i = 0; i < 20; ++i)
    {
        sprites.push_back(std::make_unique<Sprite>(shared, &layer, new Rect(&layer, 10, 10, false)));
    }
    Draw();
    // With everything uploaded.
    Draw();
    EXPECT_EQ(gl.Count("glDrawElements"), 20u);
    EXPECT_EQ(gl.Count("glUseProgram"), 1u);
    EXPECT_EQ(gl.Count("glBindBuffer", {GL_ARRAY_BUFFER}), 1u);
}

TEST_F(Render2DTest, WhatIsHiddenOrOffTheScreenIsNotDrawn)
{
    const auto shown = AddSprite(0);
    const auto hidden = AddSprite(0);
    const auto outside = AddSprite(0);
    hidden->Show(false);
    Transform place;
    place.SetPosition(Vector(500, 0, 0));
    outside->GetNode()->SetLocal(place);
    Draw();
    EXPECT_EQ(gl.Count("glDrawElements"), 1u);
    EXPECT_FALSE(layer.IsDirty());
}

TEST_F(Render2DTest, ATextIsRasterisedWhenItIsFirstDrawnAndNotBefore)
{
    Text text("DejaVu Sans", 20, "word", &layer, false, false, 0);
    EXPECT_TRUE(gl.Live(GLObjectKind::Texture).empty());
    EXPECT_EQ(text.GetMaterial()->textureWidth, 0);
    Draw();
    ASSERT_EQ(gl.Live(GLObjectKind::Texture).size(), 1u);
    EXPECT_EQ(text.GetMaterial()->textureWidth, text.GetRight());
    EXPECT_EQ(text.GetMaterial()->textureHeight, text.GetTop());
    EXPECT_TRUE(text.GetMaterial()->hasAlpha);
    const GLTexels texels = gl.TextureTexels(*gl.Live(GLObjectKind::Texture).begin());
    EXPECT_EQ(texels.width, text.GetRight());
    EXPECT_EQ(texels.height, text.GetTop());
}

TEST_F(Render2DTest, ATextBelow12PixelsIsRasterisedAt12)
{
    const Text text("DejaVu Sans", 8, "word", &layer, false, false, 0);
    Draw();
    int width = 0;
    int height = 0;
    int textureWidth = 0;
    int textureHeight = 0;
    Text::GetTextSize("DejaVu Sans", 12, "word", 0, width, height, textureWidth, textureHeight);
    const GLTexels texels = gl.TextureTexels(*gl.Live(GLObjectKind::Texture).begin());
    EXPECT_EQ(texels.width, width);
    EXPECT_EQ(texels.height, height);
    EXPECT_LT(text.GetRight(), width);
}

TEST_F(Render2DTest, AMaterialHasATextureOfItsTextForOneMeshAlone)
{
    struct
    {
        const char* label;
        const char* font;
        const char* text;
        int fontSize, meshes;
        bool textured;
    } const cases[] = {
        {"whole", "DejaVu Sans", "word", 20, 1, true}, {"no font", "", "word", 20, 1, false},
        {"no text", "DejaVu Sans", "", 20, 1, false},  {"no size", "DejaVu Sans", "word", 0, 1, false},
        {"two meshes", "DejaVu Sans", "word", 20, 2, false},
    };
    for (const auto& expected : cases)
    {
        SCOPED_TRACE(expected.label);
        std::vector<std::unique_ptr<Sprite>> sprites;
        auto* const material = new Material2D("text");
        layer.AddMaterial(material);
        for (int i = 0; i < expected.meshes; ++i)
        {
            sprites.push_back(std::make_unique<Sprite>(material, &layer, new Rect(&layer, 10, 10, true)));
        }
        material->fontName = expected.font;
        material->text = expected.text;
        material->fontSize = expected.fontSize;
        Draw();
        EXPECT_EQ(gl.Live(GLObjectKind::Texture).size(), expected.textured ? 1u : 0u);
        EXPECT_EQ(material->hasAlpha, expected.textured);
        delete material;
    }
}

} // namespace

} // namespace OV::Test
