#include "orvane/overlay/Text.h"

#include "tests/overlay/LayerShapes.h"
#include "tests/overlay/OverlayDoubles.h"

#include "orvane/imaging/FilePath.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace OV::Test
{

namespace
{

using Floats = std::vector<float>;

struct OpenText : Text
{
    using Text::centerMaterial;
    using Text::clipActive;
    using Text::clipBottom;
    using Text::clipLeft;
    using Text::clipped;
    using Text::clipRight;
    using Text::clipTop;
    using Text::height;
    using Text::leftMaterial;
    using Text::LimitFontSize;
    using Text::rect;
    using Text::rightMaterial;
    using Text::Text;
    using Text::width;
};

class TextTest : public testing::Test
{
protected:
    std::unique_ptr<OpenText> AddText(const std::string& string, int fontSize = 20, bool centerX = false,
                                      bool centerY = false, int maxWidth = 0)
    {
        return std::make_unique<OpenText>("Sans", fontSize, string, layer.get(), centerX, centerY, maxWidth);
    }

    void Update() { layer->UpdateGraph(200, 100); }

    /// Where the lower left corner of a text stands. Its globals follow.
    void Move(OpenText& text, float x, float y)
    {
        Place(*text.GetInstance(0), x, y);
        Update();
    }

    PlainMeasure measure;
    std::unique_ptr<Scene2D> layer = std::make_unique<Scene2D>(nullptr);
};

TEST_F(TextTest, StandsInItsLayerWithMaterialRectangleAndNode)
{
    OpenText text("Sans", 20, "word", layer.get(), false, false, 300);
    const Material2D& material = *text.GetMaterial();
    EXPECT_EQ(material.GetName(), "text");
    EXPECT_TRUE(material.color.IsExactlyEqual(Color(1, 1, 1, 1)));
    EXPECT_EQ(material.fontName, "Sans");
    EXPECT_EQ(material.fontSize, 20);
    EXPECT_EQ(material.text, "word");
    EXPECT_EQ(material.maxWidth, 300);
    EXPECT_EQ(material.GetScene(), layer.get());
    EXPECT_EQ(text.GetScene2D(), layer.get());
    EXPECT_EQ(text.GetText(), "word");
    EXPECT_EQ(text.GetFontSize(), 20);
    EXPECT_EQ(text.rect->GetMaterial(), &material);
    ASSERT_EQ(text.rect->GetNodes().size(), 1u);
    Shape2DNode* const node = text.GetInstance(0);
    EXPECT_EQ(node->GetParent(), layer->GetRoot());
    EXPECT_EQ(node->GetLocal(), Transform());
    EXPECT_TRUE(IsLeftOutOfHitTests(*node));
    EXPECT_EQ(layer->GetTexts(), (std::vector<Text*>{&text}));
    EXPECT_EQ(text.GetLeftBackdrop(), nullptr);
    EXPECT_EQ(text.GetCenterBackdrop(), nullptr);
    EXPECT_EQ(text.GetRightBackdrop(), nullptr);
    EXPECT_FALSE(std::is_polymorphic_v<Text>);
}

TEST_F(TextTest, SetColorSetsTheColourThatIsDrawnAndMarksTheLayerDirty)
{
    const auto text = AddText("word");
    EXPECT_TRUE(text->GetColor().IsExactlyEqual(Color(1, 1, 1, 1)));
    Update();
    ASSERT_FALSE(layer->IsDirty());
    text->SetColor(Color(0.25f, 0.5f, 0.75f, 0.5f));
    EXPECT_TRUE(text->GetMaterial()->color.IsExactlyEqual(Color(0.25f, 0.5f, 0.75f, 0.5f)));
    EXPECT_TRUE(text->GetColor().IsExactlyEqual(Color(0.25f, 0.5f, 0.75f, 0.5f)));
    EXPECT_TRUE(layer->IsDirty());
    layer->Clear();
    text->SetColor(Color(0, 0, 0, 1));
    EXPECT_TRUE(text->GetColor().IsExactlyEqual(Color(1, 1, 1, 1)));
}

TEST_F(TextTest, GetInstanceIsNullBeforeTheFirstAndPastTheLastNode)
{
    const auto text = AddText("word");
    EXPECT_EQ(text->GetInstance(-1), nullptr);
    EXPECT_NE(text->GetInstance(0), nullptr);
    EXPECT_EQ(text->GetInstance(1), nullptr);
    auto* const second = AddShapeNode(*layer, 0, 0, 0);
    text->rect->AddNode(second);
    EXPECT_EQ(text->GetInstance(1), second);
    EXPECT_EQ(text->GetInstance(2), nullptr);
}

TEST_F(TextTest, ItsBoxIsTheMeasuredSizeAndItsTextureRunsDownward)
{
    const auto text = AddText("word");
    EXPECT_EQ(text->width, 40);
    EXPECT_EQ(text->height, 20);
    EXPECT_EQ(text->GetLeft(), 0);
    EXPECT_EQ(text->GetRight(), 40);
    EXPECT_EQ(text->GetBottom(), 0);
    EXPECT_EQ(text->GetTop(), 20);
    EXPECT_EQ(CornersOf(*text->rect), (Floats{0, 0, 40, 0, 40, 20, 0, 20}));
    EXPECT_EQ(TextureOf(*text->rect), (Floats{0, 1, 1, 1, 1, 0, 0, 0}));
    EXPECT_EQ(text->rect->GetMinX(), 0.0f);
    EXPECT_EQ(text->rect->GetMaxX(), 40.0f);
    EXPECT_EQ(text->rect->GetMinY(), 0.0f);
    EXPECT_EQ(text->rect->GetMaxY(), 20.0f);
}

TEST_F(TextTest, FillsTheTopLeftOfALargerTexture)
{
    measure.SetTextureFactor(4);
    const auto text = AddText("word");
    EXPECT_EQ(TextureOf(*text->rect), (Floats{0, 0.25f, 0.25f, 0.25f, 0.25f, 0, 0, 0}));
}

TEST_F(TextTest, CentredItsBoxLiesAroundTheNode)
{
    const auto text = AddText("word", 21, true, true);
    EXPECT_EQ(text->GetLeft(), -21);
    EXPECT_EQ(text->GetRight(), 21);
    EXPECT_EQ(text->GetBottom(), -10);
    EXPECT_EQ(text->GetTop(), 11);
    EXPECT_EQ(CornersOf(*text->rect), (Floats{-21, -10, 21, -10, 21, 11, -21, 11}));
}

TEST_F(TextTest, ACentredWidthOf5GoesFromMinus2To3)
{
    measure.SetTextureFactor(1);
    const auto text = AddText("x", 10, true);
    EXPECT_EQ(text->width, 5);
    EXPECT_EQ(text->GetLeft(), -2);
    EXPECT_EQ(text->GetRight(), 3);
}

TEST_F(TextTest, AnEmptyStringIsMeasuredThroughTheCallbackLikeAnyOther)
{
    const auto text = AddText("");
    ASSERT_EQ(measure.Calls().size(), 1u);
    EXPECT_EQ(measure.Calls()[0].text, "");
    EXPECT_EQ(text->width, 0);
    EXPECT_EQ(text->height, 20);
    EXPECT_EQ(TextureOf(*text->rect), (Floats{0, 1, 0, 1, 0, 0, 0, 0}));
}

TEST_F(TextTest, TheCallbackGetsFontSizeTextAndLimit)
{
    const OpenText text("Serif", 30, "words", layer.get(), false, false, 77);
    ASSERT_EQ(measure.Calls().size(), 1u);
    EXPECT_EQ(measure.Calls()[0].font, "Serif");
    EXPECT_EQ(measure.Calls()[0].fontSize, 30);
    EXPECT_EQ(measure.Calls()[0].text, "words");
    EXPECT_EQ(measure.Calls()[0].maxWidth, 77);
}

TEST_F(TextTest, WithoutACallbackItMeasuresNothing)
{
    Text::AddSizeCallback(nullptr);
    int width = 7;
    int height = 7;
    int textureWidth = 7;
    int textureHeight = 7;
    Text::GetTextSize("Sans", 20, "word", 0, width, height, textureWidth, textureHeight);
    EXPECT_EQ(width, 0);
    EXPECT_EQ(height, 0);
    EXPECT_EQ(textureWidth, 1);
    EXPECT_EQ(textureHeight, 1);
    const auto text = AddText("word");
    EXPECT_EQ(text->width, 0);
    EXPECT_EQ(CornersOf(*text->rect), (Floats(8, 0.0f)));
}

TEST_F(TextTest, GetTextSizeAsksTheCallback)
{
    int width = 0;
    int height = 0;
    int textureWidth = 0;
    int textureHeight = 0;
    measure.SetTextureFactor(3);
    Text::GetTextSize("Sans", 10, "four", 5, width, height, textureWidth, textureHeight);
    EXPECT_EQ(width, 20);
    EXPECT_EQ(height, 10);
    EXPECT_EQ(textureWidth, 60);
    EXPECT_EQ(textureHeight, 30);
    EXPECT_EQ(measure.Calls().back().maxWidth, 5);
}

TEST(TextSizeCallback, IsTheTextureLoadersFromTheStart)
{
    int width = 0;
    int height = 0;
    int textureWidth = 0;
    int textureHeight = 0;
    Text::GetTextSize("DejaVu Sans", 20, "word", 0, width, height, textureWidth, textureHeight);
    EXPECT_GT(width, 20);
    EXPECT_GT(height, 20);
    EXPECT_EQ(textureWidth, width);
    EXPECT_EQ(textureHeight, height);
}

TEST_F(TextTest, ASizeOf8IsRaisedTo12InTheMaterialAlone)
{
    const auto text = AddText("word", 8);
    EXPECT_EQ(text->GetFontSize(), 8);
    EXPECT_EQ(text->GetMaterial()->fontSize, 12);
    EXPECT_EQ(text->width, 16) << "the box keeps the first measure";
    EXPECT_EQ(text->GetRight(), 16);
    ASSERT_EQ(measure.Calls().size(), 2u);
    EXPECT_EQ(measure.Calls()[0].fontSize, 8);
    EXPECT_EQ(measure.Calls()[1].fontSize, 12);
    EXPECT_EQ(TextureOf(*text->rect), (Floats{0, 1, 1, 1, 1, 0, 0, 0}));
}

TEST_F(TextTest, ASizeOf12IsLeftAlone)
{
    const auto text = AddText("word", 12);
    EXPECT_EQ(text->GetMaterial()->fontSize, 12);
    EXPECT_EQ(measure.Calls().size(), 1u);
}

TEST_F(TextTest, ATextureOf2048AtSize20GetsSize12AtTheLeast)
{
    measure.SetTextureFactor(2);
    // 1024 pixels wide, in a texture of 2048.
    OpenText text("Sans", 20, std::string(102, 'x') + "xx", layer.get(), false, false, 0);
    EXPECT_EQ(text.width, 1040);
    EXPECT_EQ(text.GetMaterial()->fontSize, 12);
}

TEST_F(TextTest, ATextureAbove1024ShrinksTheFont)
{
    struct
    {
        const char* label;
        std::size_t length;
        int fontSize, expected;
    } const cases[] = {
        {"at the bound", 32, 64, 64},
        {"just above", 33, 64, 62}, // 64 * 1024 / 1056
        {"twice", 64, 64, 32},
        {"far above", 1000, 64, 12},
        {"too high", 1, 2000, 1024},
    };
    for (const auto& expected : cases)
    {
        SCOPED_TRACE(expected.label);
        const auto text = AddText(std::string(expected.length, 'x'), expected.fontSize);
        EXPECT_EQ(text->GetMaterial()->fontSize, expected.expected);
        EXPECT_EQ(text->width, static_cast<int>(expected.length) * expected.fontSize / 2);
    }
}

TEST_F(TextTest, TheTexturesWidthIsComparedWithTheTextsHeight)
{
    const auto text = AddText("x", 64);
    // 1500 by 2000 texture, text 1600 high: the width is not above that, the height decides.
    int width = 100;
    int height = 1600;
    int textureWidth = 1500;
    int textureHeight = 2000;
    text->LimitFontSize(width, height, textureWidth, textureHeight);
    EXPECT_EQ(text->GetMaterial()->fontSize, 64 * 1024 / 2000);
    // The width is above the text's height and decides, though the texture is higher still.
    height = 1400;
    textureWidth = 1500;
    textureHeight = 2000;
    text->LimitFontSize(width, height, textureWidth, textureHeight);
    EXPECT_EQ(text->GetMaterial()->fontSize, 64 * 1024 / 1500);
    EXPECT_EQ(width, (64 * 1024 / 1500) / 2) << "measured anew";
    EXPECT_EQ(height, 64 * 1024 / 1500);
}

TEST_F(TextTest, LimitFontSizeNeitherOverflowsNorDividesByZero)
{
    const auto text = AddText("x", 12);
    OpenText huge("Sans", std::numeric_limits<int>::max(), "", layer.get(), false, false, 0);
    EXPECT_EQ(huge.GetMaterial()->fontSize, 1024);
    int width = 0;
    int height = 5000;
    int textureWidth = 2000;
    int textureHeight = 0;
    text->LimitFontSize(width, height, textureWidth, textureHeight);
    EXPECT_EQ(text->GetMaterial()->fontSize, 12 * 1024);
}

TEST_F(TextTest, UpdateReplacesTheStringAndItsRenderData)
{
    const auto text = AddText("word", 20, true);
    int alive = 0;
    text->rect->SetRenderData(new CountedData(alive), true);
    text->GetMaterial()->SetRenderData(new CountedData(alive));
    Update();
    ASSERT_FALSE(layer->IsDirty());
    text->Update("longer");
    EXPECT_EQ(alive, 0);
    EXPECT_EQ(text->GetMaterial()->GetRenderData(), nullptr);
    EXPECT_EQ(text->GetText(), "longer");
    EXPECT_EQ(text->GetMaterial()->text, "longer");
    EXPECT_EQ(text->GetLeft(), -30);
    EXPECT_EQ(text->GetRight(), 30);
    EXPECT_EQ(CornersOf(*text->rect), (Floats{-30, 0, 30, 0, 30, 20, -30, 20}));
    EXPECT_TRUE(layer->IsDirty());
}

TEST_F(TextTest, AShorterStringGoesBackToTheSizeAskedFor)
{
    const auto text = AddText(std::string(64, 'x'), 64);
    ASSERT_EQ(text->GetMaterial()->fontSize, 32);
    text->Update("x");
    EXPECT_EQ(text->GetMaterial()->fontSize, 64);
    EXPECT_EQ(text->width, 32);
}

TEST_F(TextTest, UpdateOfACutTextTakesTheTextureRangeOfTheNewOne)
{
    const auto text = AddText("wordword");
    Move(*text, 0, 0);
    text->SetClipRegion(0, 0, 40, 100);
    ASSERT_EQ(TextureOf(*text->rect)[2], 0.5f);
    measure.SetTextureFactor(2);
    text->Update("four");
    EXPECT_EQ(TextureOf(*text->rect), (Floats{0, 0.5f, 0.5f, 0.5f, 0.5f, 0, 0, 0}));
    Update();
    text->SetClipRegion(0, 0, 10, 100);
    EXPECT_EQ(TextureOf(*text->rect), (Floats{0, 0.5f, 0.125f, 0.5f, 0.125f, 0, 0, 0}));
    text->SetClipRegion(0, 0, 100, 100);
    EXPECT_EQ(TextureOf(*text->rect), (Floats{0, 0.5f, 0.5f, 0.5f, 0.5f, 0, 0, 0}));
}

TEST_F(TextTest, APlainBackdropLiesATenthBehindAndFollows)
{
    const auto text = AddText("word");
    text->AddBackdrop(Color(1, 0, 0, 0.5f), 50, 30, -5, -6);
    Rect* const backdrop = text->GetLeftBackdrop();
    ASSERT_NE(backdrop, nullptr);
    EXPECT_EQ(CornersOf(*backdrop), (Floats{-5, -6, 45, -6, 45, 24, -5, 24}));
    EXPECT_EQ(backdrop->GetPositionBuffer()[0].z, -0.1f);
    EXPECT_TRUE(backdrop->GetTextureBuffer().empty());
    EXPECT_EQ(backdrop->GetNodes(), text->rect->GetNodes());
    EXPECT_EQ(backdrop->GetMaterial(), text->leftMaterial.Get());
    EXPECT_EQ(backdrop->GetMaterial()->GetName(), "left");
    EXPECT_TRUE(text->leftMaterial->color.IsExactlyEqual(Color(1, 0, 0, 0.5f)));
    EXPECT_EQ(text->leftMaterial->GetScene(), layer.get());
    EXPECT_EQ(text->GetCenterBackdrop(), nullptr);
    EXPECT_EQ(text->GetRightBackdrop(), nullptr);
}

TEST_F(TextTest, ASecondPlainBackdropDeletesTheFirst)
{
    const auto text = AddText("word");
    text->AddBackdrop(Color(1, 0, 0, 1), 50, 30, 0, 0);
    const WatchedPtr<Rect> firstRect = text->GetLeftBackdrop();
    const WatchedPtr<Material2D> firstMaterial = text->leftMaterial;
    text->AddBackdrop(Color(0, 1, 0, 1), 20, 10, 0, 0);
    EXPECT_EQ(firstRect.Get(), nullptr);
    EXPECT_EQ(firstMaterial.Get(), nullptr);
    EXPECT_EQ(CornersOf(*text->GetLeftBackdrop())[2], 20.0f);
    EXPECT_EQ(layer->GetAlphaMaterials().size(), 2u);
    EXPECT_EQ(layer->GetMeshes().size(), 2u);
}

TEST_F(TextTest, AThreeSliceBackdropStartingAtTheNodeLiesAroundTheText)
{
    const auto text = AddText("word");
    const FilePath path{L"pictures/"};
    text->AddBackdrop(path, "l.png", "c.png", "r.png", 7, 9, 30, -4, 0.5f, -1);
    EXPECT_EQ(CornersOf(*text->GetLeftBackdrop()), (Floats{-7, -4, 0, -4, 0, 26, -7, 26}));
    EXPECT_EQ(CornersOf(*text->GetCenterBackdrop()), (Floats{0, -4, 40, -4, 40, 26, 0, 26}));
    EXPECT_EQ(CornersOf(*text->GetRightBackdrop()), (Floats{40, -4, 49, -4, 49, 26, 40, 26}));
    const struct
    {
        Rect* rect;
        const char* name;
        const char* file;
    } slices[] = {{text->GetLeftBackdrop(), "left", "l.png"},
                  {text->GetCenterBackdrop(), "center", "c.png"},
                  {text->GetRightBackdrop(), "right", "r.png"}};
    for (const auto& slice : slices)
    {
        SCOPED_TRACE(slice.name);
        const auto& material = dynamic_cast<const Material2D&>(*slice.rect->GetMaterial());
        EXPECT_EQ(material.name, slice.name);
        EXPECT_EQ(material.textureName, slice.file);
        EXPECT_EQ(material.texturePath.path, L"pictures/");
        EXPECT_TRUE(material.transparent);
        EXPECT_TRUE(material.color.IsExactlyEqual(Color(1, 1, 1, 0.5f)));
        EXPECT_EQ(material.GetScene(), layer.get());
        EXPECT_EQ(slice.rect->GetPositionBuffer()[2].z, -0.1f);
        EXPECT_EQ(slice.rect->GetTextureBuffer().size(), 4u);
        EXPECT_EQ(slice.rect->GetNodes(), text->rect->GetNodes());
    }
}

TEST_F(TextTest, TheMiddleOfAThreeSliceBackdropMayHaveAWidthOfItsOwn)
{
    const auto text = AddText("word");
    text->AddBackdrop(FilePath(), "l", "c", "r", 7, 9, 30, 0, 1.0f, 100);
    EXPECT_EQ(CornersOf(*text->GetCenterBackdrop()), (Floats{0, 0, 100, 0, 100, 30, 0, 30}));
    EXPECT_EQ(CornersOf(*text->GetRightBackdrop())[0], 100.0f);
    text->AddBackdrop(FilePath(), "l", "c", "r", 7, 9, 30, 0, 1.0f, 0);
    EXPECT_EQ(CornersOf(*text->GetRightBackdrop())[0], 0.0f) << "0 is a width too";
}

TEST_F(TextTest, AThreeSliceBackdropOfACentredTextIsAsWideAsThat)
{
    const auto text = AddText("word", 20, true, true);
    text->AddBackdrop(FilePath(), "l", "c", "r", 7, 9, 30, -3, 1.0f, 100);
    EXPECT_EQ(CornersOf(*text->GetLeftBackdrop()), (Floats{-27, -3, -20, -3, -20, 27, -27, 27}));
    // From the text's own lower edge, unlike the caps.
    EXPECT_EQ(CornersOf(*text->GetCenterBackdrop()), (Floats{-20, -13, 20, -13, 20, 17, -20, 17}));
    EXPECT_EQ(CornersOf(*text->GetRightBackdrop()), (Floats{20, -3, 29, -3, 29, 27, 20, 27}));
}

TEST_F(TextTest, TheShortFormHasEqualCapsAndTheWidthOfTheText)
{
    const auto text = AddText("word");
    text->AddBackdrop(FilePath(), "l", "c", "r", 8, 30, 2, 0.25f);
    EXPECT_EQ(CornersOf(*text->GetLeftBackdrop()), (Floats{-8, 2, 0, 2, 0, 32, -8, 32}));
    EXPECT_EQ(CornersOf(*text->GetCenterBackdrop())[2], 40.0f);
    EXPECT_EQ(CornersOf(*text->GetRightBackdrop())[2], 48.0f);
    EXPECT_TRUE(text->rightMaterial->color.IsExactlyEqual(Color(1, 1, 1, 0.25f)));
}

TEST_F(TextTest, ASecondThreeSliceBackdropDeletesTheFirst)
{
    const auto text = AddText("word");
    text->AddBackdrop(FilePath(), "l", "c", "r", 8, 30, 0, 1.0f);
    const WatchedPtr<Rect> first = text->GetCenterBackdrop();
    text->AddBackdrop(FilePath(), "l", "c", "r", 8, 30, 0, 1.0f);
    EXPECT_EQ(first.Get(), nullptr);
    EXPECT_EQ(layer->GetMeshes().size(), 4u);
    EXPECT_EQ(layer->GetAlphaMaterials().size(), 4u);
}

TEST_F(TextTest, ShowHidesEveryNodeAndBringsThemBack)
{
    const auto text = AddText("word");
    auto* const second = AddShapeNode(*layer, 5, 5, 0);
    text->rect->AddNode(second);
    Update();
    text->Show(false);
    EXPECT_TRUE(IsHidden(*text->GetInstance(0)));
    EXPECT_TRUE(IsHidden(*second));
    EXPECT_TRUE(layer->IsDirty());
    Place(*second, 30, 40);
    text->Show(true);
    EXPECT_FALSE(IsHidden(*text->GetInstance(0)));
    EXPECT_FALSE(IsHidden(*second));
    EXPECT_EQ(second->GetGlobal().GetPosition(), Vector(30, 40, 0)) << "its globals follow at once";
}

TEST_F(TextTest, ShowDoesNotBringBackWhatItsRegionHides)
{
    const auto text = AddText("word");
    Move(*text, 100, 0);
    text->SetClipRegion(0, 0, 50, 50);
    text->Show(true);
    EXPECT_TRUE(IsHidden(*text->GetInstance(0)));
}

TEST_F(TextTest, UpdatingTheRegionMayShowAHiddenTextSinceShowDoesNotRemember)
{
    const auto text = AddText("word");
    Move(*text, 10, 10);
    text->SetClipRegion(0, 0, 100, 100);
    text->Show(false);
    EXPECT_TRUE(text->UpdateToClipRegion());
    EXPECT_FALSE(IsHidden(*text->GetInstance(0)));
}

TEST_F(TextTest, IgnorePickFlagsEveryNode)
{
    const auto text = AddText("word");
    auto* const second = AddShapeNode(*layer, 0, 0, 0);
    text->rect->AddNode(second);
    text->IgnorePick(false);
    EXPECT_FALSE(IsLeftOutOfHitTests(*text->GetInstance(0)));
    text->IgnorePick(true);
    EXPECT_TRUE(IsLeftOutOfHitTests(*text->GetInstance(0)));
    EXPECT_TRUE(IsLeftOutOfHitTests(*second));
}

TEST_F(TextTest, AClipRegionIsKeptByItsFourEdges)
{
    const auto text = AddText("word");
    Update();
    text->SetClipRegion(1, 2, 30, std::numeric_limits<int>::max());
    EXPECT_TRUE(text->clipped);
    EXPECT_EQ(text->clipLeft, 1);
    EXPECT_EQ(text->clipTop, 2);
    EXPECT_EQ(text->clipRight, 31);
    EXPECT_EQ(text->clipBottom, std::numeric_limits<int>::max());
    EXPECT_TRUE(layer->IsDirty());
}

TEST_F(TextTest, ClipRegionsCutOnEverySide)
{
    struct
    {
        const char* label;
        int x, y, width, height;
        Floats corners, texture;
    } const cases[] = {
        {"left", 20, 0, 100, 100, {10, 0, 40, 0, 40, 20, 10, 20}, {0.25f, 1, 1, 1, 1, 0, 0.25f, 0}},
        {"right", 0, 0, 30, 100, {0, 0, 20, 0, 20, 20, 0, 20}, {0, 1, 0.5f, 1, 0.5f, 0, 0, 0}},
        {"the lower edge", 0, 35, 100, 100, {0, 5, 40, 5, 40, 20, 0, 20}, {0, 0.75f, 1, 0.75f, 1, 0, 0, 0}},
        {"the upper edge", 0, 0, 100, 40, {0, 0, 40, 0, 40, 10, 0, 10}, {0, 1, 1, 1, 1, 0.5f, 0, 0.5f}},
        {"all", 20, 35, 10, 5, {10, 5, 20, 5, 20, 10, 10, 10},
         {0.25f, 0.75f, 0.5f, 0.75f, 0.5f, 0.5f, 0.25f, 0.5f}},
    };
    for (const auto& region : cases)
    {
        SCOPED_TRACE(region.label);
        const auto text = AddText("word");
        Move(*text, 10, 30);
        text->SetClipRegion(region.x, region.y, region.width, region.height);
        EXPECT_EQ(CornersOf(*text->rect), region.corners);
        EXPECT_EQ(TextureOf(*text->rect), region.texture);
        EXPECT_TRUE(text->clipActive);
        EXPECT_FALSE(IsHidden(*text->GetInstance(0)));
        EXPECT_TRUE(text->UpdateToClipRegion());
        EXPECT_EQ(CornersOf(*text->rect), region.corners) << "a second time";
    }
}

TEST_F(TextTest, OutsideOfItsRegionATextIsHidden)
{
    struct
    {
        const char* label;
        int x, y, width, height;
        bool visible;
    } const cases[] = {
        {"left of the region", 51, 0, 50, 100, false}, {"touching its left edge", 50, 0, 50, 100, true},
        {"right of the region", 0, 0, 9, 100, false},  {"touching its right edge", 0, 0, 10, 100, true},
        {"below the region", 0, 51, 100, 50, false},   {"touching its lower edge", 0, 50, 100, 50, true},
        {"above the region", 0, 0, 100, 29, false},    {"touching its upper edge", 0, 0, 100, 30, true},
    };
    for (const auto& region : cases)
    {
        SCOPED_TRACE(region.label);
        const auto text = AddText("word");
        Move(*text, 10, 30);
        text->SetClipRegion(region.x, region.y, region.width, region.height);
        EXPECT_EQ(text->UpdateToClipRegion(), region.visible);
        EXPECT_EQ(IsHidden(*text->GetInstance(0)), !region.visible);
        EXPECT_TRUE(text->clipActive);
    }
}

TEST_F(TextTest, WhatComesBackInsideIsWholeAgain)
{
    const auto text = AddText("word");
    Move(*text, 10, 30);
    text->SetClipRegion(20, 0, 100, 100);
    ASSERT_TRUE(text->clipActive);
    Move(*text, 300, 30);
    EXPECT_FALSE(text->UpdateToClipRegion());
    Move(*text, 20, 30);
    EXPECT_TRUE(text->UpdateToClipRegion());
    EXPECT_FALSE(text->clipActive);
    EXPECT_FALSE(IsHidden(*text->GetInstance(0)));
    EXPECT_EQ(CornersOf(*text->rect), (Floats{0, 0, 40, 0, 40, 20, 0, 20}));
    EXPECT_EQ(TextureOf(*text->rect), (Floats{0, 1, 1, 1, 1, 0, 0, 0}));
}

TEST_F(TextTest, AtTwoNodesUpdatingTheRegionDoesNothingAndIsTrue)
{
    const auto text = AddText("word");
    Move(*text, 500, 0);
    text->rect->AddNode(AddShapeNode(*layer, 0, 0, 0));
    text->SetClipRegion(0, 0, 10, 10);
    EXPECT_TRUE(text->UpdateToClipRegion());
    EXPECT_FALSE(IsHidden(*text->GetInstance(0)));
    EXPECT_FALSE(text->clipActive);
    EXPECT_EQ(CornersOf(*text->rect), (Floats{0, 0, 40, 0, 40, 20, 0, 20}));
}

TEST_F(TextTest, WithoutARegionUpdatingItDoesNothingAndIsTrue)
{
    const auto text = AddText("word");
    Move(*text, 500, 0);
    text->Show(false);
    EXPECT_TRUE(text->UpdateToClipRegion());
    EXPECT_TRUE(IsHidden(*text->GetInstance(0)));
}

TEST_F(TextTest, TakesNodesRectanglesAndMaterialsWithIt)
{
    auto text = AddText("word");
    auto* const second = AddShapeNode(*layer, 0, 0, 0);
    text->rect->AddNode(second);
    text->AddBackdrop(FilePath(), "l", "c", "r", 8, 30, 0, 1.0f);
    Update();
    text.reset();
    EXPECT_EQ(layer->GetRoot()->GetChildren().size(), 1u) << "the camera stays";
    EXPECT_TRUE(layer->GetMeshes().empty());
    EXPECT_TRUE(layer->GetAlphaMaterials().empty());
    EXPECT_TRUE(layer->GetTexts().empty());
    EXPECT_TRUE(layer->IsDirty());
}

TEST_F(TextTest, ABackdropsMaterialThatShowsSomethingElseStaysInTheLayer)
{
    auto text = AddText("word");
    text->AddBackdrop(Color(1, 0, 0, 1), 50, 30, 0, 0);
    auto* const other = new Rect(layer.get(), 5, 5, false);
    Material2D* const material = text->leftMaterial;
    material->AddMesh(other);
    text.reset();
    EXPECT_EQ(layer->GetMaterial("left"), material);
    EXPECT_EQ(other->GetMaterial(), material);
}

TEST_F(TextTest, IsEmptyOnceItsLayerIsGone)
{
    const auto text = AddText("word");
    text->AddBackdrop(FilePath(), "l", "c", "r", 8, 30, 0, 1.0f);
    layer.reset();
    EXPECT_EQ(text->GetMaterial(), nullptr);
    EXPECT_EQ(text->GetScene2D(), nullptr);
    EXPECT_EQ(text->GetText(), "");
    EXPECT_EQ(text->GetInstance(0), nullptr);
    EXPECT_EQ(text->GetLeftBackdrop(), nullptr);
    EXPECT_EQ(text->GetCenterBackdrop(), nullptr);
    EXPECT_EQ(text->GetRightBackdrop(), nullptr);
    text->Update("other");
    text->Show(true);
    text->IgnorePick(true);
    text->SetClipRegion(0, 0, 1, 1);
    EXPECT_TRUE(text->UpdateToClipRegion());
    text->AddBackdrop(Color(), 1, 1, 0, 0);
    text->AddBackdrop(FilePath(), "l", "c", "r", 8, 30, 0, 1.0f);
    EXPECT_EQ(text->GetFontSize(), 20);
}

TEST_F(TextTest, IsEmptyOnceItsLayerIsCleared)
{
    auto text = AddText("word");
    layer->Clear();
    EXPECT_EQ(text->GetMaterial(), nullptr);
    EXPECT_TRUE(layer->GetTexts().empty());
    Update();
    text.reset();
    EXPECT_FALSE(layer->IsDirty()) << "it has nothing to do with the layer any more";
}

TEST_F(TextTest, CopesWithAHostThatDeletesItsParts)
{
    auto text = AddText("word");
    text->AddBackdrop(Color(1, 0, 0, 1), 50, 30, 0, 0);
    delete text->GetLeftBackdrop();
    delete text->leftMaterial.Get();
    EXPECT_EQ(text->GetLeftBackdrop(), nullptr);
    text->AddBackdrop(Color(1, 0, 0, 1), 50, 30, 0, 0);
    EXPECT_NE(text->GetLeftBackdrop(), nullptr);

    layer->DeleteSubtree(text->GetInstance(0));
    EXPECT_EQ(text->GetInstance(0), nullptr);
    text->Update("other");
    text->Show(true);
    text->SetClipRegion(0, 0, 10, 10);

    delete text->GetMaterial();
    EXPECT_EQ(text->GetText(), "");
    text->Update("third");
    delete text->rect.Get();
    text->Update("fourth");
    text->Show(false);
    Update();
    text.reset();
    EXPECT_TRUE(layer->GetMeshes().empty());
}

TEST_F(TextTest, SuspendingItsLayerKeepsTheTextAndDropsItsRenderData)
{
    const auto text = AddText("word");
    int alive = 0;
    text->rect->SetRenderData(new CountedData(alive), true);
    text->GetMaterial()->SetRenderData(new CountedData(alive));
    layer->Suspend();
    EXPECT_EQ(alive, 0);
    text->Update("while suspended");
    layer->Resume();
    EXPECT_EQ(text->GetText(), "while suspended");
    EXPECT_TRUE(layer->IsDirty());
}

} // namespace

} // namespace OV::Test
