#include "orvane/overlay/Shape2D.h"

#include "tests/overlay/LayerShapes.h"
#include "tests/overlay/OverlayDoubles.h"
#include "tests/support/VirtualSlot.h"

#include "orvane/math/Sphere.h"
#include "orvane/overlay/Arrow.h"
#include "orvane/overlay/Material2D.h"
#include "orvane/scene/NodeType.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <type_traits>
#include <vector>

namespace OV::Test
{

namespace
{

using Names = std::vector<std::string>;

/// Notes which of its operations a caller that knows only Shape2D reaches.
class NotingShape : public Shape2D
{
public:
    using Shape2D::Shape2D;

    void ShiftX(float) override { calls.push_back("ShiftX"); }
    void ShiftY(float) override { calls.push_back("ShiftY"); }
    void ShiftZ(float) override { calls.push_back("ShiftZ"); }
    void GetBounds(float&, float&) override { calls.push_back("GetBounds"); }

    bool IsInside(float, float) override
    {
        calls.push_back("IsInside");
        return true;
    }

    void ComputeEdgePoint(float&, float&, float) override { calls.push_back("ComputeEdgePoint"); }
    void Resize(float, float) override { calls.push_back("Resize"); }
    void Padding(float) override { calls.push_back("Padding"); }
    void ComputeContentArea(int&, int&) override { calls.push_back("ComputeContentArea"); }

    Names calls;
};

void SetTriangle(Shape2D& shape)
{
    RawMesh& raw = *shape.GetRawMesh();
    raw.StartDescription();
    raw.SetPositionBuffer({Vector(0, 0, 0), Vector(4, 0, 0), Vector(0, 2, 1)});
    raw.SetIndices({0, 1, 2});
    raw.EndDescription(true);
}

TEST(Shape2D, KeepsTheOrderOfItsVirtualOperations)
{
    EXPECT_EQ(VirtualSlot(&Shape2D::Type), 1);
    EXPECT_EQ(VirtualSlot(&Shape2D::HasType), 2);
    EXPECT_EQ(VirtualSlot(&Shape2D::ShiftX), 3);
    EXPECT_EQ(VirtualSlot(&Shape2D::ShiftY), 4);
    EXPECT_EQ(VirtualSlot(&Shape2D::ShiftZ), 5);
    EXPECT_EQ(VirtualSlot(&Shape2D::GetBounds), 6);
    EXPECT_EQ(VirtualSlot(&Shape2D::IsInside), 7);
    EXPECT_EQ(VirtualSlot(&Shape2D::ComputeEdgePoint), 8);
    EXPECT_EQ(VirtualSlot(&Shape2D::Resize), 9);
    EXPECT_EQ(VirtualSlot(&Shape2D::Padding), 10);
    EXPECT_EQ(VirtualSlot(&Shape2D::ComputeContentArea), 11);
    EXPECT_TRUE(std::has_virtual_destructor_v<Shape2D>);
    // A rectangle replaces operations of the shape and adds none.
    EXPECT_EQ(VirtualSlot(&Rect::Resize), 9);
    EXPECT_EQ(VirtualSlot(&Rect::Clip), -1);
    EXPECT_EQ(VirtualSlot(&Rect::SetCorners), -1);
}

TEST(Shape2D, DerivedClassesAreReachedThroughTheShape)
{
    NotingShape shape(nullptr);
    Shape2D& base = shape;
    float number = 0.0f;
    int whole = 0;
    base.ShiftX(1);
    base.ShiftY(1);
    base.ShiftZ(1);
    base.GetBounds(number, number);
    EXPECT_TRUE(base.IsInside(0, 0));
    base.ComputeEdgePoint(number, number, 1);
    base.Resize(1, 1);
    base.Padding(1);
    base.ComputeContentArea(whole, whole);
    EXPECT_EQ(shape.calls, (Names{"ShiftX", "ShiftY", "ShiftZ", "GetBounds", "IsInside", "ComputeEdgePoint", "Resize",
                                  "Padding", "ComputeContentArea"}));
}

TEST(Shape2D, AnswersAsShapeAndNotAsMesh)
{
    Shape2D shape(nullptr);
    EXPECT_EQ(shape.Type(), 0x53703244);
    EXPECT_TRUE(shape.HasType(NodeTypeShape2D));
    EXPECT_FALSE(shape.HasType(NodeTypeMesh));
    EXPECT_FALSE(shape.HasType(NodeTypeRect));

    Rect rect(nullptr, 1, 1, false);
    EXPECT_EQ(rect.Type(), 0x52633244);
    EXPECT_TRUE(rect.HasType(NodeTypeRect));
    EXPECT_TRUE(rect.HasType(NodeTypeShape2D));
    EXPECT_FALSE(rect.HasType(NodeTypeMesh));

    Arrow arrow(1, 1, nullptr);
    EXPECT_EQ(arrow.Type(), NodeTypeShape2D);
    EXPECT_TRUE(arrow.HasType(NodeTypeShape2D));
    EXPECT_FALSE(arrow.HasType(NodeTypeMesh));
    EXPECT_FALSE(arrow.HasType(NodeTypeRect));
}

TEST(Shape2D, BelongsToTheSceneThatItIsGiven)
{
    Scene2D layer(nullptr);
    auto* const shape = new Shape2D(&layer);
    EXPECT_EQ(shape->GetScene(), &layer);
    EXPECT_EQ(layer.GetMeshes().count(shape), 1u);
    EXPECT_EQ(shape->GetNumVertices(), 0u);
}

TEST(Shape2D, AShiftMovesEveryVertexAndTheBoxAndTheSphere)
{
    Shape2D shape(nullptr);
    SetTriangle(shape);
    shape.ShiftX(10);
    shape.ShiftY(-3);
    shape.ShiftZ(0.5f);
    EXPECT_EQ(shape.GetPositionBuffer(),
              (std::vector<Vector>{Vector(10, -3, 0.5f), Vector(14, -3, 0.5f), Vector(10, -1, 1.5f)}));
    Vector low;
    Vector high;
    shape.GetBBox(low, high);
    EXPECT_EQ(low, Vector(10, -3, 0.5f));
    EXPECT_EQ(high, Vector(14, -1, 1.5f));
    EXPECT_EQ(shape.GetSphere().center, Vector(12, -2, 1));
    EXPECT_FLOAT_EQ(shape.GetSphere().radius, std::sqrt(5.25f));
}

TEST(Shape2D, AShiftDropsTheRenderDataAndDirtiesTheLayer)
{
    void (Shape2D::*const shifts[])(float) = {&Shape2D::ShiftX, &Shape2D::ShiftY, &Shape2D::ShiftZ};
    Scene2D layer(nullptr);
    auto* const shape = new Shape2D(&layer);
    SetTriangle(*shape);
    int alive = 0;
    for (const auto shift : shifts)
    {
        shape->SetRenderData(new CountedData(alive), true);
        layer.UpdateGraph(100, 100);
        ASSERT_FALSE(layer.IsDirty());
        (shape->*shift)(1.0f);
        EXPECT_EQ(alive, 0);
        EXPECT_EQ(shape->GetRenderData(), nullptr);
        EXPECT_TRUE(layer.IsDirty());
    }
}

TEST(Shape2D, AShiftWithoutVerticesOrSceneIsHarmless)
{
    Shape2D shape(nullptr);
    shape.ShiftX(1);
    EXPECT_EQ(shape.GetNumVertices(), 0u);
}

TEST(Shape2D, IsNeverInsideAndDoesNothingOfItsOwn)
{
    Shape2D shape(nullptr);
    SetTriangle(shape);
    EXPECT_FALSE(shape.IsInside(1.0f, 0.5f));
    float width = 7.0f;
    float height = 8.0f;
    shape.GetBounds(width, height);
    shape.ComputeEdgePoint(width, height, 1.0f);
    shape.Resize(100, 100);
    shape.Padding(5);
    int areaWidth = 3;
    int areaHeight = 4;
    shape.ComputeContentArea(areaWidth, areaHeight);
    EXPECT_EQ(width, 7.0f);
    EXPECT_EQ(height, 8.0f);
    EXPECT_EQ(areaWidth, 3);
    EXPECT_EQ(areaHeight, 4);
    EXPECT_EQ(shape.GetPositionBuffer()[1], Vector(4, 0, 0));
}

TEST(Shape2D, ACopySharesTheGeometryAndHasNeitherSceneNorNodes)
{
    Scene2D layer(nullptr);
    auto* const shape = new Shape2D(&layer);
    SetTriangle(*shape);
    const Shape2D copy(*shape);
    EXPECT_EQ(copy.GetRawMesh(), shape->GetRawMesh());
    EXPECT_EQ(copy.GetScene(), nullptr);
    EXPECT_TRUE(copy.GetNodes().empty());
}

TEST(Arrow, StandsWithItsTipAtTheOriginAndItsBaseToTheRight)
{
    const Arrow arrow(10.0f, 2.0f, nullptr);
    EXPECT_EQ(CornersOf(arrow), (std::vector<float>{0, 0, 20, -5, 20, 5}));
    EXPECT_EQ(arrow.GetIndices(), (std::vector<unsigned short>{0, 1, 2}));
    EXPECT_TRUE(arrow.GetTextureBuffer().empty());
    Vector low;
    Vector high;
    arrow.GetBBox(low, high);
    EXPECT_EQ(low, Vector(0, -5, 0));
    EXPECT_EQ(high, Vector(20, 5, 0));
}

TEST(Arrow, ItsTwoEdgesAtTheTipAreInsideItsFarEdgeIsNot)
{
    struct
    {
        const char* label;
        float x, y;
        bool inside;
    } const cases[] = {
        {"tip", 0, 0, true},
        {"middle", 8, 0, true},
        {"on the lower edge", 8, -4, true},
        {"on the upper edge", 8, 4, true},
        {"just below", 8, -4.01f, false},
        {"just above", 8, 4.01f, false},
        {"before the tip", -0.01f, 0, false},
        {"just within the far edge", 15.99f, 0, true},
        {"on the far edge", 16, 0, false},
        {"on the far edge off the axis", 16, 4, false},
        {"a base corner", 16, 8, false},
        {"beyond", 17, 0, false},
    };
    Arrow arrow(16.0f, 1.0f, nullptr);
    for (const auto& expected : cases)
    {
        EXPECT_EQ(arrow.IsInside(expected.x, expected.y), expected.inside) << expected.label;
    }
}

TEST(Arrow, OfSizeZeroHasNoInside)
{
    Arrow arrow(0.0f, 1.0f, nullptr);
    EXPECT_FALSE(arrow.IsInside(0, 0));
    EXPECT_FALSE(arrow.IsInside(1, 1));
}

TEST(Arrow, WithoutVerticesHasNoInside)
{
    Arrow arrow(1.0f, 1.0f, nullptr);
    arrow.GetRawMesh()->StartDescription();
    EXPECT_FALSE(arrow.IsInside(0.5f, 0));
}

TEST(Arrow, CopiesAndMoves)
{
    const Arrow arrow(16.0f, 1.0f, nullptr);
    Arrow copy(arrow);
    EXPECT_TRUE(copy.IsInside(8, 0));
    Arrow moved(std::move(copy));
    EXPECT_TRUE(moved.IsInside(8, 0));
    Arrow other(1.0f, 1.0f, nullptr);
    other = moved;
    EXPECT_EQ(CornersOf(other), CornersOf(arrow));
    other = Arrow(4.0f, 1.0f, nullptr);
    EXPECT_EQ(CornersOf(other), (std::vector<float>{0, 0, 4, -2, 4, 2}));
}

TEST(Material2D, StartsWhiteTransparentAndWithoutText)
{
    Material2D material("name");
    EXPECT_EQ(material.GetName(), "name");
    EXPECT_TRUE(material.color.IsExactlyEqual(Color(1, 1, 1, 1)));
    EXPECT_EQ(material.blend, 1u);
    EXPECT_EQ(material.fontName, "");
    EXPECT_EQ(material.fontSize, 0);
    EXPECT_EQ(material.maxWidth, 0);
    EXPECT_EQ(material.text, "");
    EXPECT_EQ(material.textureWidth, 0);
    EXPECT_EQ(material.textureHeight, 0);
    EXPECT_TRUE(material.transparent);
    EXPECT_EQ(material.Type(), 0x4D615432);
    EXPECT_TRUE(material.HasType(NodeTypeMaterial2D));
    EXPECT_TRUE(material.HasType(NodeTypeMaterial));
    EXPECT_FALSE(material.HasType(NodeTypeNodeMaterial));
}

TEST(Material2D, IsTransparentByItsFieldWhateverTheOpacity)
{
    Material2D material("name");
    Material& base = material;
    EXPECT_TRUE(base.IsTransparent());
    material.transparent = false;
    material.SetOpacity(0.1f);
    material.color.a = 0.1f;
    EXPECT_FALSE(base.IsTransparent());
    Scene2D layer(nullptr);
    auto* const opaque = new Material2D("opaque");
    opaque->transparent = false;
    layer.AddMaterial(opaque);
    layer.AddMaterial(new Material2D("transparent"));
    EXPECT_EQ(layer.GetOptimizedMaterials().size(), 1u);
    EXPECT_EQ(layer.GetAlphaMaterials().size(), 1u);
}

} // namespace

} // namespace OV::Test
