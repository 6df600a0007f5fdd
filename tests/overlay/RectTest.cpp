#include "orvane/overlay/Rect.h"

#include "tests/overlay/LayerShapes.h"
#include "tests/overlay/OverlayDoubles.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace OV::Test
{

namespace
{

using Floats = std::vector<float>;

const Floats kWholeTexture = {0, 0, 1, 0, 1, 1, 0, 1};

Floats BoxOf(const Rect& rect)
{
    return {rect.GetMinX(), rect.GetMinY(), rect.GetMaxX(), rect.GetMaxY()};
}

/// The bounding box of the vertices, x and y alone.
Floats VertexBoxOf(const Mesh& mesh)
{
    Vector low;
    Vector high;
    mesh.GetBBox(low, high);
    return {low.x, low.y, high.x, high.y};
}

TEST(Rect, StartsAtTheOriginWithItsWholeTexture)
{
    Scene2D layer(nullptr);
    auto* const rect = new OpenRect(&layer, 30, 20, true);
    EXPECT_EQ(rect->GetScene(), &layer);
    EXPECT_EQ(CornersOf(*rect), (Floats{0, 0, 30, 0, 30, 20, 0, 20}));
    EXPECT_EQ(TextureOf(*rect), kWholeTexture);
    EXPECT_EQ(rect->GetIndices(), (std::vector<unsigned short>{0, 1, 2, 0, 2, 3}));
    EXPECT_EQ(BoxOf(*rect), (Floats{0, 0, 30, 20}));
    EXPECT_EQ(VertexBoxOf(*rect), (Floats{0, 0, 30, 20}));
    EXPECT_EQ(rect->pickPadding, 0.0f);
    EXPECT_EQ(rect->pickLeft, 0.0f);
    EXPECT_EQ(rect->pickRight, 0.0f);
    EXPECT_EQ(rect->pickTop, 0.0f);
    EXPECT_EQ(rect->pickBottom, 0.0f);
    EXPECT_EQ(rect->fullU, 0.0f);
    EXPECT_EQ(rect->fullV, 0.0f);
    EXPECT_FALSE(rect->flipV);
    EXPECT_TRUE(rect->uvPristine);
}

TEST(Rect, WithoutTextureClipMovesTheCornersAndStaysPristine)
{
    OpenRect rect(nullptr, 10, 10, false);
    EXPECT_TRUE(rect.GetTextureBuffer().empty());
    rect.Clip(1, 2, 3, 4);
    EXPECT_EQ(CornersOf(rect), (Floats{1, 4, 7, 4, 7, 8, 1, 8}));
    EXPECT_TRUE(rect.GetTextureBuffer().empty());
    EXPECT_TRUE(rect.uvPristine);
}

TEST(Rect, ClipCutsTheTextureWithTheCorners)
{
    OpenRect rect(nullptr, 10, 20, true);
    rect.Clip(1, 2, 3, 4);
    EXPECT_EQ(CornersOf(rect), (Floats{1, 4, 7, 4, 7, 18, 1, 18}));
    EXPECT_EQ(TextureOf(rect), (Floats{0.1f, 0.2f, 0.7f, 0.2f, 0.7f, 0.9f, 0.1f, 0.9f}));
    EXPECT_FALSE(rect.uvPristine);
    EXPECT_EQ(rect.fullU, 1.0f);
    EXPECT_EQ(rect.fullV, 1.0f);
    EXPECT_EQ(BoxOf(rect), (Floats{0, 0, 10, 20}));
}

TEST(Rect, ClipOnEachSideLeavesTheOthers)
{
    struct
    {
        const char* label;
        float left, top, right, bottom;
        Floats corners, texture;
    } const cases[] = {
        {"left", 5, 0, 0, 0, {5, 0, 10, 0, 10, 10, 5, 10}, {0.5f, 0, 1, 0, 1, 1, 0.5f, 1}},
        {"top", 0, 5, 0, 0, {0, 0, 10, 0, 10, 5, 0, 5}, {0, 0, 1, 0, 1, 0.5f, 0, 0.5f}},
        {"right", 0, 0, 5, 0, {0, 0, 5, 0, 5, 10, 0, 10}, {0, 0, 0.5f, 0, 0.5f, 1, 0, 1}},
        {"bottom", 0, 0, 0, 5, {0, 5, 10, 5, 10, 10, 0, 10}, {0, 0.5f, 1, 0.5f, 1, 1, 0, 1}},
    };
    for (const auto& cut : cases)
    {
        SCOPED_TRACE(cut.label);
        Rect rect(nullptr, 10, 10, true);
        rect.Clip(cut.left, cut.top, cut.right, cut.bottom);
        EXPECT_EQ(CornersOf(rect), cut.corners);
        EXPECT_EQ(TextureOf(rect), cut.texture);
    }
}

TEST(Rect, ClipWithZerosRestoresTheFullTexture)
{
    Rect rect(nullptr, 10, 20, true);
    rect.SetTextureCoordinates(0, 0, 0.5f, 0, 0.5f, 0.25f, 0, 0.25f);
    rect.Clip(1, 2, 3, 4);
    rect.Clip(0, 0, 0, 0);
    EXPECT_EQ(CornersOf(rect), (Floats{0, 0, 10, 0, 10, 20, 0, 20}));
    EXPECT_EQ(TextureOf(rect), (Floats{0, 0, 0.5f, 0, 0.5f, 0.25f, 0, 0.25f}));
}

TEST(Rect, RepeatedCutsDoNotAccumulate)
{
    Rect rect(nullptr, 10, 20, true);
    for (int i = 0; i < 3; ++i)
    {
        rect.Clip(5, 0, 0, 10);
        EXPECT_EQ(CornersOf(rect), (Floats{5, 10, 10, 10, 10, 20, 5, 20}));
        EXPECT_EQ(TextureOf(rect), (Floats{0.5f, 0.5f, 1, 0.5f, 1, 1, 0.5f, 1}));
    }
}

TEST(Rect, ClipOfATextureThatRunsDownwardCutsItUpsideDown)
{
    OpenRect rect(nullptr, 10, 20, true);
    rect.flipV = true;
    rect.SetTextureCoordinates(0, 0.5f, 0.25f, 0.5f, 0.25f, 0, 0, 0);
    rect.Clip(0, 5, 0, 10);
    EXPECT_EQ(rect.fullU, 0.25f);
    EXPECT_EQ(rect.fullV, 0.5f);
    EXPECT_EQ(CornersOf(rect), (Floats{0, 10, 10, 10, 10, 15, 0, 15}));
    EXPECT_EQ(TextureOf(rect), (Floats{0, 0.25f, 0.25f, 0.25f, 0.25f, 0.125f, 0, 0.125f}));
    rect.Clip(0, 0, 0, 0);
    EXPECT_EQ(TextureOf(rect), (Floats{0, 0.5f, 0.25f, 0.5f, 0.25f, 0, 0, 0}));
}

TEST(Rect, ClipOfARectangleWithoutWidthOrHeightIsNotFiniteAndNothingGuardsIt)
{
    Rect noWidth(nullptr, 0, 10, true);
    noWidth.Clip(0, 0, 0, 0);
    EXPECT_FALSE(std::isfinite(noWidth.GetTextureBuffer()[1].u));
    EXPECT_TRUE(std::isfinite(noWidth.GetTextureBuffer()[2].v));
    Rect noHeight(nullptr, 10, 0, true);
    noHeight.Clip(0, 0, 0, 0);
    EXPECT_FALSE(std::isfinite(noHeight.GetTextureBuffer()[2].v));
    EXPECT_TRUE(std::isfinite(noHeight.GetTextureBuffer()[1].u));
}

TEST(Rect, ClipDropsTheRenderData)
{
    int alive = 0;
    Rect rect(nullptr, 10, 10, false);
    rect.SetRenderData(new CountedData(alive), true);
    rect.Clip(1, 1, 1, 1);
    EXPECT_EQ(alive, 0);
}

TEST(Rect, ResizeStartsAtTheOriginAgain)
{
    Scene2D layer(nullptr);
    auto* const rect = new Rect(&layer, 10, 10, true);
    rect->ShiftX(5);
    rect->ShiftY(6);
    int alive = 0;
    rect->SetRenderData(new CountedData(alive), true);
    layer.UpdateGraph(100, 100);
    Shape2D& shape = *rect;
    shape.Resize(30, 40);
    EXPECT_EQ(CornersOf(*rect), (Floats{0, 0, 30, 0, 30, 40, 0, 40}));
    EXPECT_EQ(BoxOf(*rect), (Floats{0, 0, 30, 40}));
    EXPECT_EQ(VertexBoxOf(*rect), (Floats{0, 0, 30, 40}));
    EXPECT_EQ(alive, 0);
    EXPECT_TRUE(layer.IsDirty());
}

TEST(Rect, ResizePutsEveryCornerBackToZeroInZ)
{
    Rect rect(nullptr, 10, 10, false);
    rect.SetCorners(0, 0, 1, 5, 0, 2, 5, 5, 3, 0, 5, 4);
    rect.Resize(30, 40);
    for (const Vector& corner : rect.GetPositionBuffer())
    {
        EXPECT_EQ(corner.z, 0.0f);
    }
}

TEST(Rect, ShiftsCarryTheBoxAlong)
{
    Rect rect(nullptr, 10, 20, false);
    Shape2D& shape = rect;
    shape.ShiftX(3);
    shape.ShiftY(-4);
    EXPECT_EQ(CornersOf(rect), (Floats{3, -4, 13, -4, 13, 16, 3, 16}));
    EXPECT_EQ(BoxOf(rect), (Floats{3, -4, 13, 16}));
    EXPECT_EQ(VertexBoxOf(rect), (Floats{3, -4, 13, 16}));
    shape.ShiftZ(7);
    EXPECT_EQ(rect.GetPositionBuffer()[2], Vector(13, 16, 7));
    EXPECT_EQ(BoxOf(rect), (Floats{3, -4, 13, 16}));
}

TEST(Rect, SetCornersTakesTheBoxOfAnyFourCorners)
{
    Scene2D layer(nullptr);
    auto* const rect = new Rect(&layer, 1, 1, true);
    int alive = 0;
    rect->SetRenderData(new CountedData(alive), true);
    layer.UpdateGraph(100, 100);
    rect->SetCorners(5, 0, 1, 10, 5, 2, 5, 10, 3, 0, 5, 4);
    EXPECT_EQ(CornersOf(*rect), (Floats{5, 0, 10, 5, 5, 10, 0, 5}));
    EXPECT_EQ(rect->GetPositionBuffer()[3], Vector(0, 5, 4));
    EXPECT_EQ(BoxOf(*rect), (Floats{0, 0, 10, 10}));
    EXPECT_EQ(VertexBoxOf(*rect), (Floats{0, 0, 10, 10}));
    EXPECT_EQ(TextureOf(*rect), kWholeTexture);
    EXPECT_EQ(alive, 0);
    EXPECT_TRUE(layer.IsDirty());
}

TEST(Rect, SetCornersTakesNegativeCornersToo)
{
    Rect rect(nullptr, 1, 1, true);
    rect.SetCorners(-9, -8, 0, -2, -8, 0, -2, -3, 0, -9, -3, 0);
    EXPECT_EQ(BoxOf(rect), (Floats{-9, -8, -2, -3}));
}

TEST(Rect, SetTextureCoordinatesDropsNoRenderData)
{
    int alive = 0;
    Rect rect(nullptr, 10, 10, true);
    rect.SetRenderData(new CountedData(alive), true);
    rect.SetTextureCoordinates(1, 2, 3, 4, 5, 6, 7, 8);
    EXPECT_EQ(TextureOf(rect), (Floats{1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(alive, 1);
}

TEST(Rect, WritersLeaveABufferAloneThatIsTooShort)
{
    Rect rect(nullptr, 10, 10, true);
    RawMesh& raw = *rect.GetRawMesh();
    raw.StartDescription();
    raw.SetPositionBuffer({Vector(1, 1, 0), Vector(2, 1, 0), Vector(2, 2, 0)});
    raw.SetTextureBuffer({{9, 9}, {9, 9}, {9, 9}});
    raw.EndDescription(true);
    rect.SetCorners(0, 0, 0, 5, 0, 0, 5, 5, 0, 0, 5, 0);
    rect.SetTextureCoordinates(0, 0, 0, 0, 0, 0, 0, 0);
    rect.Resize(7, 7);
    rect.Clip(1, 1, 1, 1);
    EXPECT_EQ(CornersOf(rect), (Floats{1, 1, 2, 1, 2, 2}));
    EXPECT_EQ(TextureOf(rect), (Floats{9, 9, 9, 9, 9, 9}));
    raw.StartDescription();
    EXPECT_FALSE(rect.IsInside(0, 0));
}

TEST(Rect, EdgesAreInside)
{
    struct
    {
        const char* label;
        float x, y;
        bool inside;
    } const cases[] = {
        {"lower left corner", 0, 0, true},     {"upper right corner", 10, 20, true},
        {"left edge", 0, 5, true},             {"past the left edge", -0.01f, 5, false},
        {"right edge", 10, 5, true},           {"past the right edge", 10.01f, 5, false},
        {"bottom edge", 5, 0, true},           {"past the bottom edge", 5, -0.01f, false},
        {"top edge", 5, 20, true},             {"past the top edge", 5, 20.01f, false},
        {"not a number", std::nanf(""), 5, false},
    };
    Rect rect(nullptr, 10, 20, false);
    for (const auto& expected : cases)
    {
        EXPECT_EQ(rect.IsInside(expected.x, expected.y), expected.inside) << expected.label;
    }
}

TEST(Rect, PickPaddingGrowsTheInsideOnAllSidesAndOnEach)
{
    OpenRect rect(nullptr, 10, 10, false);
    rect.pickPadding = 1;
    rect.pickLeft = 2;
    rect.pickRight = 4;
    rect.pickTop = 8;
    rect.pickBottom = 16;
    EXPECT_TRUE(rect.IsInside(-3, 5));
    EXPECT_FALSE(rect.IsInside(-3.01f, 5));
    EXPECT_TRUE(rect.IsInside(15, 5));
    EXPECT_FALSE(rect.IsInside(15.01f, 5));
    EXPECT_TRUE(rect.IsInside(5, 19));
    EXPECT_FALSE(rect.IsInside(5, 19.01f));
    EXPECT_TRUE(rect.IsInside(5, -17));
    EXPECT_FALSE(rect.IsInside(5, -17.01f));
}

TEST(Rect, IsInsideTestsARotatedQuadByItsFirstThreeCornersAsIfUpright)
{
    Rect rect(nullptr, 1, 1, false);
    rect.SetCorners(5, 0, 0, 10, 5, 0, 5, 10, 0, 0, 5, 0);
    EXPECT_TRUE(rect.IsInside(9, 9)) << "outside of the quad, between the corners";
    EXPECT_FALSE(rect.IsInside(2, 5)) << "inside of the quad, left of the first corner";
}

TEST(Rect, ACutChangesWhatIsInside)
{
    Rect rect(nullptr, 10, 10, false);
    rect.Clip(5, 0, 0, 0);
    EXPECT_FALSE(rect.IsInside(4, 5));
    EXPECT_TRUE(rect.IsInside(6, 5));
}

TEST(Rect, CopiesAndMovesTakeEveryField)
{
    OpenRect rect(nullptr, 10, 20, true);
    rect.ShiftX(2);
    rect.flipV = true;
    rect.pickPadding = 1;
    rect.pickLeft = 2;
    rect.pickRight = 3;
    rect.pickTop = 4;
    rect.pickBottom = 5;
    rect.Clip(1, 0, 0, 0);
    const auto expectSame = [&](const OpenRect& other) {
        EXPECT_EQ(other.GetRawMesh(), rect.GetRawMesh());
        EXPECT_EQ(BoxOf(other), BoxOf(rect));
        EXPECT_TRUE(other.flipV);
        EXPECT_FALSE(other.uvPristine);
        EXPECT_EQ(other.fullU, rect.fullU);
        EXPECT_EQ(other.fullV, rect.fullV);
        EXPECT_EQ(other.pickPadding, 1.0f);
        EXPECT_EQ(other.pickLeft, 2.0f);
        EXPECT_EQ(other.pickRight, 3.0f);
        EXPECT_EQ(other.pickTop, 4.0f);
        EXPECT_EQ(other.pickBottom, 5.0f);
    };
    OpenRect copy(rect);
    expectSame(copy);
    const OpenRect moved(std::move(copy));
    expectSame(moved);
    OpenRect assigned(nullptr, 1, 1, false);
    assigned = moved;
    expectSame(assigned);
}

TEST(Rect, TellsWhoeverWatchesItWhenItGoes)
{
    WatchedPtr<Rect> watched;
    {
        Rect rect(nullptr, 1, 1, false);
        watched = &rect;
        EXPECT_EQ(watched.Get(), &rect);
    }
    EXPECT_EQ(watched.Get(), nullptr);
}

} // namespace

} // namespace OV::Test
