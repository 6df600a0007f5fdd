#include "orvane/scene/Line.h"

#include "orvane/scene/LineStyle.h"
#include "orvane/scene/NodeLineStyle.h"
#include "orvane/scene/RawLine.h"
#include "tests/scene/SceneDoubles.h"
#include "tests/support/VirtualSlot.h"

#include <set>
#include <type_traits>

namespace OV
{
namespace
{

using namespace Test;

std::shared_ptr<RawLine> Segment()
{
    auto geometry = std::make_shared<RawLine>();
    geometry->SetPositionBuffer({Vector(0, 0, 0), Vector(1, 0, 0)});
    geometry->SetIndices({0, 1});
    return geometry;
}

TEST(RawLine, TwoPointsGiveTwelveVertices)
{
    RawLine line;
    const Vector points[2] = {Vector(1, 2, 3), Vector(4, 5, 6)};
    EXPECT_TRUE(line.SetPositionBuffer({points[0], points[1]}));
    ASSERT_EQ(line.positions.size(), 12u);
    ASSERT_EQ(line.normals.size(), 12u);
    ASSERT_EQ(line.textureCoordinates.size(), 12u);
    const Vector normals[4] = {Vector(0, 1, 0), Vector(0, -1, 0), Vector(1, 1, 0), Vector(1, -1, 0)};
    const TextureCoordinate coordinates[4] = {{0, 1}, {0, 0}, {1, 1}, {1, 0}};
    for (int vertex = 0; vertex < 8; ++vertex)
    {
        EXPECT_TRUE(IsNear(line.positions[vertex], points[vertex / 4], 0.0f)) << vertex;
        EXPECT_TRUE(IsNear(line.normals[vertex], normals[vertex % 4], 0.0f)) << vertex;
        EXPECT_EQ(line.textureCoordinates[vertex].u, coordinates[vertex % 4].u) << vertex;
        EXPECT_EQ(line.textureCoordinates[vertex].v, coordinates[vertex % 4].v) << vertex;
    }
    for (int vertex = 8; vertex < 12; ++vertex)
    {
        EXPECT_TRUE(IsNear(line.positions[vertex], points[0], 0.0f)) << "the first point again";
        EXPECT_TRUE(IsNear(line.normals[vertex], Vector(0, 0, 0), 0.0f)) << vertex;
        EXPECT_EQ(line.textureCoordinates[vertex].u, 0.0f) << vertex;
        EXPECT_EQ(line.textureCoordinates[vertex].v, 0.0f) << vertex;
    }
}

TEST(RawLine, LastTextureCoordinatesKeepWhatTheyHad)
{
    RawLine line;
    line.SetTextureBuffer(std::vector<TextureCoordinate>(8, TextureCoordinate(7, 8)));
    line.SetPositionBuffer({Vector(1, 2, 3)});
    ASSERT_EQ(line.textureCoordinates.size(), 8u);
    EXPECT_EQ(line.textureCoordinates[3].u, 1.0f);
    EXPECT_EQ(line.textureCoordinates[4].u, 7.0f);
    EXPECT_EQ(line.textureCoordinates[7].v, 8.0f);
}

TEST(RawLine, LastNormalsAreZeroWhateverTheyWere)
{
    RawLine line;
    line.SetNormalBuffer(std::vector<Vector>(8, Vector(7, 7, 7)));
    line.SetPositionBuffer({Vector(1, 2, 3)});
    ASSERT_EQ(line.normals.size(), 8u);
    EXPECT_TRUE(IsNear(line.normals[3], Vector(1, -1, 0), 0.0f));
    EXPECT_TRUE(IsNear(line.normals[4], Vector(0, 0, 0), 0.0f));
    EXPECT_TRUE(IsNear(line.normals[7], Vector(0, 0, 0), 0.0f));
}

TEST(RawLine, AfterTwoPointsOnlyThreePass)
{
    RawLine line;
    const std::vector<Vector> two(2, Vector(1, 1, 1));
    const std::vector<Vector> three(3, Vector(2, 2, 2));
    EXPECT_TRUE(line.SetPositionBuffer(two));
    EXPECT_FALSE(line.SetPositionBuffer(two));
    EXPECT_FALSE(line.SetPositionBuffer(std::vector<Vector>(4)));
    EXPECT_FALSE(line.SetPositionBuffer(std::vector<Vector>()));
    EXPECT_EQ(line.positions.size(), 12u);
    EXPECT_TRUE(IsNear(line.positions[0], Vector(1, 1, 1), 0.0f)) << "nothing changes";
    EXPECT_TRUE(line.SetPositionBuffer(three));
    EXPECT_EQ(line.positions.size(), 16u);
    EXPECT_EQ(line.normals.size(), 16u);
    EXPECT_EQ(line.textureCoordinates.size(), 16u);
    EXPECT_TRUE(IsNear(line.normals[8], Vector(0, 1, 0), 0.0f)) << "what was trailing is a point's now";
    EXPECT_EQ(line.textureCoordinates[8].v, 1.0f);
    line.StartDescription();
    EXPECT_TRUE(line.SetPositionBuffer(two));
}

TEST(RawLine, NoPointsGiveTheFourTrailingVerticesAtTheOrigin)
{
    RawLine line;
    EXPECT_TRUE(line.SetPositionBuffer(std::vector<Vector>()));
    ASSERT_EQ(line.positions.size(), 4u);
    EXPECT_EQ(line.normals.size(), 4u);
    EXPECT_EQ(line.textureCoordinates.size(), 4u);
    for (const Vector& position : line.positions)
    {
        EXPECT_TRUE(IsNear(position, Vector(0, 0, 0), 0.0f));
    }
}

TEST(RawLine, PointsMayBeItsOwnPositions)
{
    RawLine line;
    line.positions = {};
    line.SetPositionBuffer({Vector(1, 2, 3)});
    line.positions.resize(2);
    line.positions[1] = Vector(4, 5, 6);
    EXPECT_FALSE(line.SetPositionBuffer(line.positions)) << "two points where none pass";
    EXPECT_EQ(line.positions.size(), 2u);
}

TEST(RawLine, IndicesMakeAQuadOfTheFirstOfEachPair)
{
    RawLine line;
    EXPECT_TRUE(line.SetIndices({0, 1, 1, 2}));
    EXPECT_EQ(line.indices, (std::vector<unsigned short>{0, 3, 1, 0, 2, 3, 4, 7, 5, 4, 6, 7}));
    EXPECT_TRUE(line.SetIndices({2, 999, 5})) << "replaced; the second of a pair and a rest are not read";
    EXPECT_EQ(line.indices, (std::vector<unsigned short>{8, 11, 9, 8, 10, 11}));
    EXPECT_TRUE(line.SetIndices({}));
    EXPECT_TRUE(line.indices.empty());
    EXPECT_TRUE(line.SetIndices({9}));
    EXPECT_TRUE(line.indices.empty());
}

TEST(RawLine, IndicesWrapAroundFrom16384Up)
{
    RawLine line;
    line.SetIndices({16383, 0, 16384, 0, 65535, 0});
    EXPECT_EQ(line.indices, (std::vector<unsigned short>{65532, 65535, 65533, 65532, 65534, 65535, //
                                                         0, 3, 1, 0, 2, 3,                         //
                                                         65532, 65535, 65533, 65532, 65534, 65535}));
}

TEST(RawLine, IndicesMayBeItsOwn)
{
    RawLine line;
    line.indices = {1, 2};
    line.SetIndices(line.indices);
    EXPECT_EQ(line.indices, (std::vector<unsigned short>{4, 7, 5, 4, 6, 7}));
}

TEST(Line, StandsAmongTheLinesOfItsScene)
{
    Scene scene;
    scene.UpdateGraph(1, 1);
    const auto geometry = Segment();
    Line* const line = new Line(geometry, &scene);
    EXPECT_EQ(line->GetScene(), &scene);
    EXPECT_EQ(line->GetRawLine(), geometry);
    EXPECT_EQ(line->GetRawMesh(), geometry);
    EXPECT_EQ(line->GetStyle(), nullptr);
    EXPECT_EQ(scene.GetLines(), std::set<Line*>{line});
    EXPECT_TRUE(scene.GetMeshes().empty());
    EXPECT_TRUE(scene.IsDirty());
    EXPECT_EQ(line->GetNumVertices(), 12u);
}

TEST(Line, WithoutASceneBelongsToTheCaller)
{
    const Mesh before(nullptr);
    Line line(Segment(), nullptr);
    EXPECT_EQ(line.GetScene(), nullptr);
    EXPECT_EQ(line.GetSortID(), before.GetSortID() + 1);
    const Line empty(nullptr, nullptr);
    ASSERT_NE(empty.GetRawLine(), nullptr);
    EXPECT_EQ(empty.GetNumVertices(), 0u);
}

TEST(Line, OverAnotherLineSharesTheGeometryAndIsOtherwiseNew)
{
    Scene scene;
    LineStyle style("a");
    MeshNode node(nullptr);
    Line line(Segment(), nullptr);
    style.AddLine(&line);
    line.AddNode(&node);
    line.SetFlags(MeshFlagNoCull);
    Line* const use = new Line(line, &scene);
    EXPECT_EQ(use->GetRawLine(), line.GetRawLine());
    EXPECT_EQ(use->GetStyle(), nullptr);
    EXPECT_TRUE(use->GetNodes().empty());
    EXPECT_EQ(use->GetFlags(), 0u);
    EXPECT_EQ(use->GetSortID(), line.GetSortID() + 1);
    EXPECT_EQ(scene.GetLines(), std::set<Line*>{use});
}

TEST(Line, DyingLeavesSceneAndStyle)
{
    Scene scene;
    LineStyle style("a");
    Line* const line = new Line(Segment(), &scene);
    style.AddLine(line);
    scene.UpdateGraph(1, 1);
    delete line;
    EXPECT_TRUE(scene.GetLines().empty());
    EXPECT_TRUE(style.GetLines().empty());
    EXPECT_TRUE(scene.IsDirty());
}

TEST(Line, InTheMeshesOfItsSceneTooLeavesBoth)
{
    Scene scene;
    Line* const line = new Line(Segment(), &scene);
    line->SetScene(&scene);
    EXPECT_EQ(scene.GetLines().size(), 1u);
    EXPECT_EQ(scene.GetMeshes().size(), 1u);
    delete line;
    EXPECT_TRUE(scene.GetLines().empty());
    EXPECT_TRUE(scene.GetMeshes().empty());

    new Line(Segment(), &scene);
    (*scene.GetLines().begin())->SetScene(&scene);
    scene.Clear();
    EXPECT_TRUE(scene.GetLines().empty());
    EXPECT_TRUE(scene.GetMeshes().empty());
}

TEST(Line, SetSceneOfAnotherSceneTakesItOutOfTheLinesOfTheFirst)
{
    Scene second;
    auto first = std::make_unique<Scene>();
    Line* const line = new Line(Segment(), first.get());
    line->SetScene(&second);
    EXPECT_TRUE(first->GetLines().empty());
    EXPECT_EQ(line->GetScene(), &second);
    EXPECT_EQ(second.GetMeshes(), std::set<Mesh*>{line}) << "SetScene makes it one of the meshes";
    first.reset();
    EXPECT_EQ(line->GetScene(), &second);
}

TEST(LineStyle, StartsAsStated)
{
    LineStyle style("thin");
    EXPECT_TRUE(style.color.IsExactlyEqual(Color(1, 1, 1, 1)));
    EXPECT_TRUE(style.secondColor.IsExactlyEqual(Color(1, 1, 1, 1)));
    EXPECT_EQ(style.width, 1.0f);
    EXPECT_EQ(style.flags, 0u);
    EXPECT_EQ(style.offset, 0.0f);
    EXPECT_FALSE(style.dashed);
    EXPECT_FALSE(style.IsDashed());
    EXPECT_EQ(style.dashFrequency, 1.0f);
    EXPECT_TRUE(style.antialias);
    EXPECT_FALSE(style.noDepthTest);
    EXPECT_FALSE(style.noDepthWrite);
    EXPECT_TRUE(style.fog);
    EXPECT_FALSE(style.overlay);
    EXPECT_TRUE(style.clipping);
    EXPECT_TRUE(style.IsClippingEnabled());
    EXPECT_EQ(style.GetName(), "thin");
    EXPECT_TRUE(style.GetLines().empty());
    EXPECT_EQ(style.GetRenderData(), nullptr);
    EXPECT_EQ(style.GetScene(), nullptr);
}

TEST(LineStyle, WithoutANameHasNoDashFrequency)
{
    EXPECT_FALSE(std::is_default_constructible_v<LineStyle>);
    NodeLineStyle style;
    EXPECT_EQ(style.GetDashFrequency(), 0.0f);
    EXPECT_EQ(style.GetName(), "");
    EXPECT_EQ(style.width, 1.0f);
    EXPECT_TRUE(style.antialias);
    EXPECT_TRUE(style.IsClippingEnabled());
    EXPECT_EQ(style.GetNode(), nullptr);
}

TEST(LineStyle, SettersStoreInThePublicFields)
{
    LineStyle style("a");
    style.SetDashed(true);
    style.SetDashFrequency(2.5f);
    EXPECT_TRUE(style.IsDashed());
    EXPECT_TRUE(style.dashed);
    EXPECT_EQ(style.GetDashFrequency(), 2.5f);
    style.clipping = false;
    EXPECT_FALSE(style.IsClippingEnabled());
    EXPECT_EQ(LineStyleFlagStrip, 0x01u);
    EXPECT_EQ(LineStyleFlagDepthLessEqual, 0x02u);
    style.SetFlags(LineStyleFlagDepthLessEqual);
    style.SetFlags(LineStyleFlagStrip);
    EXPECT_EQ(style.GetFlags(), 0x03u);
}

TEST(LineStyle, AddLineMovesALineOfAnotherStyleAndRefusesItsOwn)
{
    LineStyle first("a");
    LineStyle second("b");
    Line line(Segment(), nullptr);
    EXPECT_TRUE(first.AddLine(&line));
    EXPECT_FALSE(first.AddLine(&line));
    EXPECT_EQ(line.GetStyle(), &first);
    EXPECT_TRUE(second.AddLine(&line));
    EXPECT_TRUE(first.GetLines().empty());
    EXPECT_EQ(second.GetLines(), std::set<Line*>{&line});
    EXPECT_EQ(line.GetStyle(), &second);
    EXPECT_FALSE(second.AddLine(nullptr));
}

TEST(LineStyle, RemoveLineRefusesAStranger)
{
    LineStyle style("a");
    LineStyle other("b");
    Line line(Segment(), nullptr);
    other.AddLine(&line);
    EXPECT_FALSE(style.RemoveLine(&line));
    EXPECT_FALSE(style.RemoveLine(nullptr));
    EXPECT_EQ(line.GetStyle(), &other);
    EXPECT_TRUE(other.RemoveLine(&line));
    EXPECT_EQ(line.GetStyle(), nullptr);
    EXPECT_FALSE(other.RemoveLine(&line));
}

TEST(LineStyle, OwnsItsRenderData)
{
    int deaths = 0;
    {
        LineStyle style("a");
        ExpectOwningSlot([&] { return style.GetRenderData(); },
                         [&](Object* data) { style.SetRenderData(data); });
        style.SetRenderData(Counted(deaths));
    }
    EXPECT_EQ(deaths, 1);
}

TEST(LineStyle, SuspendDeletesTheRenderData)
{
    LineStyle style("a");
    style.Suspend();
    bool wasEmpty = false;
    style.SetRenderData(new WatchedObject([&] { wasEmpty = style.GetRenderData() == nullptr; }));
    style.Suspend();
    EXPECT_TRUE(wasEmpty);
    EXPECT_EQ(style.GetRenderData(), nullptr);
    style.Resume();
    EXPECT_EQ(style.GetRenderData(), nullptr);
}

TEST(LineStyle, DyingLeavesTheSceneThenDeletesTheRenderDataThenLeavesTheLines)
{
    Scene scene;
    LineStyle* const style = new LineStyle("a");
    scene.AddLineStyle(style);
    Line line(Segment(), nullptr);
    style->AddLine(&line);
    scene.UpdateGraph(1, 1);
    bool asExpected = false;
    style->SetRenderData(new WatchedObject(
        [&] { asExpected = scene.GetLineStyles().empty() && line.GetStyle() == style; }));
    delete style;
    EXPECT_TRUE(asExpected);
    EXPECT_EQ(line.GetStyle(), nullptr);
    EXPECT_TRUE(scene.IsDirty());
}

TEST(LineStyle, VirtualsStandInTheirOrder)
{
    EXPECT_EQ(VirtualSlot(&LineStyle::Type), 1);
    EXPECT_EQ(VirtualSlot(&LineStyle::HasType), 2);
    EXPECT_EQ(VirtualSlot(&LineStyle::AddLine), -1);
}

TEST(NodeLineStyle, BindingFlagsTheNode)
{
    MeshNode first(nullptr);
    MeshNode second(nullptr);
    MeshNode below(nullptr);
    first.AddChild(&below, false);
    NodeLineStyle style;
    style.SetNode(&first);
    EXPECT_EQ(style.GetNode(), &first);
    EXPECT_EQ(first.GetFlags(), 0x04u);
    EXPECT_EQ(below.GetFlags(), 0x00u);
    below.SetFlags(NodeFlagHasNodeMaterial, false);
    style.SetNode(&second);
    EXPECT_EQ(first.GetFlags(), 0x00u);
    EXPECT_EQ(below.GetFlags(), 0x04u) << "the node alone";
    EXPECT_EQ(second.GetFlags(), 0x04u);
    style.SetNode(&second);
    EXPECT_EQ(second.GetFlags(), 0x04u);
    style.SetNode(nullptr);
    EXPECT_EQ(second.GetFlags(), 0x00u);
    EXPECT_EQ(style.GetNode(), nullptr);
}

TEST(NodeLineStyle, DyingUnflagsItsNode)
{
    MeshNode node(nullptr);
    {
        NodeLineStyle style;
        style.SetNode(&node);
    }
    EXPECT_EQ(node.GetFlags(), 0x00u);
}

TEST(NodeLineStyle, ForgetsANodeThatDies)
{
    NodeLineStyle first;
    NodeLineStyle second;
    {
        MeshNode node(nullptr);
        first.SetNode(&node);
        second.SetNode(&node);
    }
    EXPECT_EQ(first.GetNode(), nullptr);
    EXPECT_EQ(second.GetNode(), nullptr);
    MeshNode other(nullptr);
    first.SetNode(&other);
    EXPECT_EQ(other.GetFlags(), 0x04u);
}

TEST(NodeLineStyle, InASceneSurvivesTheTreeThatGoesFirst)
{
    Scene scene;
    MeshNode* const node = new MeshNode(&scene);
    scene.GetRoot()->AddChild(node, false);
    NodeLineStyle* const style = new NodeLineStyle;
    style->SetNode(node);
    scene.AddLineStyle(style);
    scene.Clear();
    EXPECT_TRUE(scene.GetLineStyles().empty());
}

} // namespace
} // namespace OV
