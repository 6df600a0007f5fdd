#include "orvane_host/geometry/FeatureEdges.h"

#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawLine.h"
#include "orvane/scene/Scene.h"
#include "tests/support/SmallStack.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <limits>
#include <random>
#include <set>
#include <thread>
#include <tuple>

namespace OV::Host::Test
{

namespace
{

using Triangle = std::array<Vector, 3>;
using Corner = std::tuple<float, float, float>;
using Edge = std::set<Corner>;

Corner ToCorner(const Vector& v)
{
    return {v.x, v.y, v.z};
}

Edge MakeEdge(const Vector& a, const Vector& b)
{
    return {ToCorner(a), ToCorner(b)};
}

/// Every triangle with corners of its own, as importers give them.
RawMesh Soup(const std::vector<Triangle>& triangles)
{
    std::vector<Vector> positions;
    std::vector<unsigned short> indices;
    for (const Triangle& triangle : triangles)
    {
        for (const Vector& corner : triangle)
        {
            indices.push_back(static_cast<unsigned short>(positions.size()));
            positions.push_back(corner);
        }
    }
    RawMesh mesh;
    mesh.SetPositionBuffer(std::move(positions));
    mesh.SetIndices(std::move(indices));
    return mesh;
}

void AddQuad(std::vector<Triangle>& triangles, const Vector& a, const Vector& b, const Vector& c, const Vector& d)
{
    triangles.push_back({a, b, c});
    triangles.push_back({a, c, d});
}

/// A box from the origin, in twelve triangles.
std::vector<Triangle> Box(float x, float y, float z)
{
    const auto p = [&](int i) {
        return Vector((i & 1) != 0 ? x : 0.0f, (i & 2) != 0 ? y : 0.0f, (i & 4) != 0 ? z : 0.0f);
    };
    std::vector<Triangle> triangles;
    AddQuad(triangles, p(0), p(2), p(3), p(1));
    AddQuad(triangles, p(4), p(5), p(7), p(6));
    AddQuad(triangles, p(0), p(1), p(5), p(4));
    AddQuad(triangles, p(2), p(6), p(7), p(3));
    AddQuad(triangles, p(0), p(4), p(6), p(2));
    AddQuad(triangles, p(1), p(3), p(7), p(5));
    return triangles;
}

/// Two squares that meet along the Y axis and turn from each other by an angle.
std::vector<Triangle> Fold(float degrees)
{
    const float angle = degrees * 3.14159265f / 180.0f;
    std::vector<Triangle> triangles;
    AddQuad(triangles, Vector(-1, 0, 0), Vector(0, 0, 0), Vector(0, 1, 0), Vector(-1, 1, 0));
    AddQuad(triangles, Vector(0, 0, 0), Vector(std::cos(angle), 0, std::sin(angle)),
            Vector(std::cos(angle), 1, std::sin(angle)), Vector(0, 1, 0));
    return triangles;
}

std::set<Edge> Unordered(const std::vector<FeatureEdge>& edges)
{
    std::set<Edge> unordered;
    for (const FeatureEdge& edge : edges)
    {
        EXPECT_TRUE(unordered.insert(MakeEdge(edge.start, edge.end)).second) << "an edge twice";
    }
    return unordered;
}

std::set<Edge> EdgesOf(const std::vector<Triangle>& triangles, float crease = 30.0f)
{
    return Unordered(FeatureEdges::Find(Soup(triangles), crease));
}

double TotalLength(const std::vector<FeatureEdge>& edges)
{
    double length = 0.0;
    for (const FeatureEdge& edge : edges)
    {
        length += std::hypot(edge.end.x - edge.start.x, edge.end.y - edge.start.y, edge.end.z - edge.start.z);
    }
    return length;
}

const Edge kFoldLine = MakeEdge(Vector(0, 0, 0), Vector(0, 1, 0));

} // namespace

TEST(FeatureEdges, ABoxHasItsTwelveEdgesAndNoDiagonal)
{
    const std::set<Edge> edges = EdgesOf(Box(2.0f, 3.0f, 4.0f));
    EXPECT_EQ(edges.size(), 12u);
    for (const Edge& edge : edges)
    {
        const auto [ax, ay, az] = *edge.begin();
        const auto [bx, by, bz] = *edge.rbegin();
        EXPECT_EQ((ax != bx) + (ay != by) + (az != bz), 1);
    }
}

TEST(FeatureEdges, ACreaseIsSeenFromItsAngleUp)
{
    EXPECT_EQ(EdgesOf(Fold(29.9f), 30.0f).count(kFoldLine), 0u);
    EXPECT_EQ(EdgesOf(Fold(30.1f), 30.0f).count(kFoldLine), 1u);
    EXPECT_EQ(EdgesOf(Fold(-29.9f), 30.0f).count(kFoldLine), 0u);
    EXPECT_EQ(EdgesOf(Fold(-30.1f), 30.0f).count(kFoldLine), 1u);
    EXPECT_EQ(EdgesOf(Fold(0.0f), 0.0f).count(kFoldLine), 0u);
    EXPECT_EQ(EdgesOf(Fold(1.0f), 0.0f).count(kFoldLine), 1u);
    EXPECT_EQ(EdgesOf(Fold(119.0f), 120.0f).count(kFoldLine), 0u);
    EXPECT_EQ(EdgesOf(Fold(121.0f), 120.0f).count(kFoldLine), 1u);
    EXPECT_EQ(EdgesOf(Fold(170.0f), 180.0f).count(kFoldLine), 0u);
}

TEST(FeatureEdges, AnOpenSheetHasItsRim)
{
    const std::set<Edge> edges = EdgesOf(Fold(0.0f), 180.0f);
    EXPECT_EQ(edges.size(), 6u);
    EXPECT_EQ(edges.count(MakeEdge(Vector(-1, 0, 0), Vector(0, 0, 0))), 1u);
}

TEST(FeatureEdges, WindingDoesNotMatter)
{
    for (const float degrees : {10.0f, 90.0f})
    {
        std::vector<Triangle> triangles = Fold(degrees);
        const std::set<Edge> expected = EdgesOf(triangles);
        std::swap(triangles[2][0], triangles[2][1]);
        EXPECT_EQ(EdgesOf(triangles), expected) << degrees;
    }
}

TEST(FeatureEdges, ASheetWithTwoSidesIsLikeOneWithOne)
{
    std::vector<Triangle> triangles = Fold(10.0f);
    const std::set<Edge> expected = EdgesOf(triangles);
    for (const Triangle& triangle : Fold(10.0f))
    {
        triangles.push_back({triangle[0], triangle[2], triangle[1]});
    }
    EXPECT_EQ(EdgesOf(triangles), expected);
}

TEST(FeatureEdges, VerticesNearEachOtherAreOne)
{
    std::vector<Triangle> triangles = Box(2.0f, 3.0f, 4.0f);
    std::mt19937 random(7);
    std::uniform_real_distribution<float> noise(-1e-6f, 1e-6f);
    for (Triangle& triangle : triangles)
    {
        for (Vector& corner : triangle)
        {
            corner = Vector(corner.x + noise(random), corner.y + noise(random), corner.z + noise(random));
        }
    }
    EXPECT_EQ(FeatureEdges::Find(Soup(triangles)).size(), 12u);
    // A gap that can be seen is none to weld.
    triangles = Fold(0.0f);
    for (std::size_t i = 2; i < 4; ++i)
    {
        for (Vector& corner : triangles[i])
        {
            corner.x += 0.01f;
        }
    }
    EXPECT_EQ(FeatureEdges::Find(Soup(triangles)).size(), 8u);
}

TEST(FeatureEdges, AnEndIsFoundWhileAnotherThreadWritesPoints)
{
    RawMesh mesh = Soup(Box(2.0f, 3.0f, 4.0f));
    Vector& last = mesh.positions.back();
    std::atomic<bool> stop{false};
    std::atomic<int> rounds{0};
    std::thread writer([&] {
        volatile float* const coordinates[] = {&last.x, &last.y, &last.z};
        const float values[] = {0.5f, -1e38f, std::numeric_limits<float>::quiet_NaN(), 1e38f};
        for (; !stop; ++rounds)
        {
            for (const float value : values)
            {
                for (volatile float* coordinate : coordinates)
                {
                    *coordinate = value;
                }
            }
        }
    });
    std::size_t most = 0;
    while (rounds < 4'000'000)
    {
        most = std::max(most, FeatureEdges::Find(mesh).size());
    }
    stop = true;
    writer.join();
    // The eleven triangles that stand still have at most so many sides.
    EXPECT_LE(most, 12u * 3u);
}

TEST(FeatureEdges, FarFromTheOriginABoxIsStillABox)
{
    std::vector<Triangle> triangles = Box(2.0f, 3.0f, 4.0f);
    for (Triangle& triangle : triangles)
    {
        for (Vector& corner : triangle)
        {
            corner = Vector(corner.x + 500000.0f, corner.y - 4000000.0f, corner.z + 70.0f);
        }
    }
    EXPECT_EQ(EdgesOf(triangles).size(), 12u);
}

TEST(FeatureEdges, ATJunctionInAFlatWallIsNotSeen)
{
    // One long side against three short ones of unequal length.
    std::vector<Triangle> triangles = {{Vector(0, 0, 0), Vector(4, 0, 0), Vector(2, 2, 0)}};
    const float stations[] = {0.0f, 0.7f, 1.9f, 4.0f};
    for (int i = 0; i < 3; ++i)
    {
        triangles.push_back({Vector(stations[i], 0, 0), Vector(stations[i + 1], 0, 0), Vector(2, -2, 0)});
    }
    const std::set<Edge> edges = EdgesOf(triangles);
    EXPECT_EQ(edges, (std::set<Edge>{MakeEdge(Vector(0, 0, 0), Vector(2, 2, 0)),
                                     MakeEdge(Vector(4, 0, 0), Vector(2, 2, 0)),
                                     MakeEdge(Vector(0, 0, 0), Vector(2, -2, 0)),
                                     MakeEdge(Vector(4, 0, 0), Vector(2, -2, 0))}));
}

TEST(FeatureEdges, ATJunctionAtACreaseIsOneLine)
{
    std::vector<Triangle> triangles = {{Vector(0, 0, 0), Vector(4, 0, 0), Vector(2, 0, 2)}};
    const float stations[] = {0.0f, 0.7f, 1.9f, 4.0f};
    for (int i = 0; i < 3; ++i)
    {
        triangles.push_back({Vector(stations[i], 0, 0), Vector(stations[i + 1], 0, 0), Vector(2, -2, 0)});
    }
    const std::vector<FeatureEdge> edges = FeatureEdges::Find(Soup(triangles));
    const double expected = 4.0 + 4.0 * std::sqrt(8.0);
    EXPECT_NEAR(TotalLength(edges), expected, 1e-5);
}

TEST(FeatureEdges, SidesThatOverlapInPartAreSeenWhereTheyAreOpen)
{
    // Two squares along one line, shifted: flat, but open where only one of them is.
    std::vector<Triangle> triangles;
    AddQuad(triangles, Vector(0, 0, 0), Vector(2, 0, 0), Vector(2, 2, 0), Vector(0, 2, 0));
    AddQuad(triangles, Vector(1, -2, 0), Vector(3, -2, 0), Vector(3, 0, 0), Vector(1, 0, 0));
    const std::set<Edge> edges = EdgesOf(triangles);
    EXPECT_EQ(edges.count(MakeEdge(Vector(0, 0, 0), Vector(1, 0, 0))), 1u);
    EXPECT_EQ(edges.count(MakeEdge(Vector(2, 0, 0), Vector(3, 0, 0))), 1u);
    EXPECT_EQ(edges.size(), 8u);
}

TEST(FeatureEdges, TrianglesThatAreNoneCountForNothing)
{
    const std::set<Edge> expected = EdgesOf(Box(2.0f, 3.0f, 4.0f));
    std::vector<Triangle> triangles = Box(2.0f, 3.0f, 4.0f);
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    constexpr float infinity = std::numeric_limits<float>::infinity();
    triangles.push_back({Vector(0, 0, 0), Vector(0, 0, 0), Vector(1, 1, 1)});
    triangles.push_back({Vector(0, 0, 0), Vector(1, 1, 1), Vector(2, 2, 2)});
    triangles.push_back({Vector(0, 0, 0), Vector(1, 0, 0), Vector(2, 1e-7f, 0)});
    triangles.push_back({Vector(nan, 0, 0), Vector(1, 0, 0), Vector(2, 1, 0)});
    triangles.push_back({Vector(0, infinity, 0), Vector(1, 0, 0), Vector(2, 1, 0)});
    EXPECT_EQ(EdgesOf(triangles), expected);
}

TEST(FeatureEdges, ASliverThatFillsATJunctionIsPassedOver)
{
    std::vector<Triangle> triangles;
    AddQuad(triangles, Vector(0, 0, 0), Vector(4, 0, 0), Vector(4, 2, 0), Vector(0, 2, 0));
    triangles.push_back({Vector(0, 0, 0), Vector(1, 0, 0), Vector(4, 0, 0)});
    triangles.push_back({Vector(0, 0, 0), Vector(1, 0, 0), Vector(1, -2, 0)});
    triangles.push_back({Vector(1, 0, 0), Vector(4, 0, 0), Vector(1, -2, 0)});
    EXPECT_NEAR(TotalLength(FeatureEdges::Find(Soup(triangles))), 4 + 2 + 2 + std::sqrt(5.0) + std::sqrt(13.0), 1e-5);
}

TEST(FeatureEdges, WhereThreeFacesMeetThereIsAnEdge)
{
    std::vector<Triangle> triangles = Fold(0.0f);
    AddQuad(triangles, Vector(0, 0, 0), Vector(0, 0, 1), Vector(0, 1, 1), Vector(0, 1, 0));
    EXPECT_EQ(EdgesOf(triangles, 80.0f).count(kFoldLine), 1u);
}

TEST(FeatureEdges, WhereSolidsTouchTheirCommonWallIsNotSeen)
{
    std::vector<Triangle> triangles = Box(2.0f, 3.0f, 4.0f);
    for (Triangle triangle : Box(2.0f, 3.0f, 4.0f))
    {
        for (Vector& corner : triangle)
        {
            corner.x += 2.0f;
        }
        triangles.push_back(triangle);
    }
    // Those of a box of double length, each of its long edges in two.
    EXPECT_EQ(EdgesOf(triangles).size(), 16u);
    // However the walls are divided into triangles.
    const Vector a(2, 0, 0);
    const Vector b(2, 3, 0);
    const Vector c(2, 3, 4);
    const Vector d(2, 0, 4);
    triangles[10] = {a, b, d};
    triangles[11] = {b, c, d};
    EXPECT_EQ(EdgesOf(triangles).size(), 16u);
}

TEST(FeatureEdges, AFaceFoldedOntoItselfShowsItsFold)
{
    std::vector<Triangle> triangles = {{Vector(0, 0, 0), Vector(0, 1, 0), Vector(1, 0, 0)},
                                       {Vector(0, 0, 0), Vector(0, 1, 0), Vector(2, 0.5f, 0)}};
    EXPECT_EQ(EdgesOf(triangles).count(kFoldLine), 1u);
}

TEST(FeatureEdges, ARoundTubeShowsItsRimsAlone)
{
    constexpr int sides = 24;
    std::vector<Triangle> triangles;
    const auto at = [](int i, float z) {
        const float angle = 6.2831853f * static_cast<float>(i % sides) / sides;
        return Vector(std::cos(angle), std::sin(angle), z);
    };
    for (int i = 0; i < sides; ++i)
    {
        AddQuad(triangles, at(i, 0), at(i + 1, 0), at(i + 1, 2), at(i, 2));
    }
    EXPECT_EQ(EdgesOf(triangles).size(), 2u * sides);
    EXPECT_EQ(EdgesOf(triangles, 10.0f).size(), 3u * sides);
}

TEST(FeatureEdges, PartsOfOneSpaceAreOneSurface)
{
    const std::vector<Triangle> fold = Fold(0.0f);
    const RawMesh left = Soup({fold[0], fold[1]});
    const RawMesh right = Soup({fold[2], fold[3]});
    EXPECT_EQ(Unordered(FeatureEdges::Find({&left, &right})), EdgesOf(fold));
    EXPECT_EQ(FeatureEdges::Find({&left}).size() + FeatureEdges::Find({&right}).size(), 8u);
}

TEST(FeatureEdges, NothingHasNone)
{
    EXPECT_TRUE(FeatureEdges::Find(std::vector<const RawMesh*>{}).empty());
    EXPECT_TRUE(FeatureEdges::Find(RawMesh()).empty());
    RawMesh mesh = Soup({{Vector(1, 1, 1), Vector(1, 1, 1), Vector(1, 1, 1)}});
    EXPECT_TRUE(FeatureEdges::Find(mesh).empty());
    mesh.indices = {0, 1, 700, 65535, 2, 1, 0};
    EXPECT_TRUE(FeatureEdges::Find(mesh).empty());
}

TEST(FeatureEdges, AreTheSameEveryTime)
{
    std::mt19937 random(11);
    std::uniform_real_distribution<float> place(-1.0f, 1.0f);
    std::vector<Triangle> triangles = Box(2.0f, 3.0f, 4.0f);
    for (int i = 0; i < 200; ++i)
    {
        Triangle triangle;
        for (Vector& corner : triangle)
        {
            corner = Vector(place(random), std::round(place(random)), 0.0f);
        }
        triangles.push_back(triangle);
    }
    const RawMesh mesh = Soup(triangles);
    const std::vector<FeatureEdge> first = FeatureEdges::Find(mesh);
    const std::vector<FeatureEdge> second = FeatureEdges::Find(mesh);
    ASSERT_EQ(first.size(), second.size());
    for (std::size_t i = 0; i < first.size(); ++i)
    {
        EXPECT_EQ(ToCorner(first[i].start), ToCorner(second[i].start));
        EXPECT_EQ(ToCorner(first[i].end), ToCorner(second[i].end));
    }
}

TEST(FeatureEdges, TheLowestNodeOfATreeDeeperThanTheStackGetsItsLines)
{
    OV::Test::OnASmallStack(
        []
        {
            Scene scene;
            Node* lowest = scene.GetRoot();
            for (int level = 0; level < 60000; ++level)
            {
                Node* const next = new Node(&scene);
                lowest->AddChild(next, false);
                lowest = next;
            }
            auto* const node = new MeshNode(&scene);
            lowest->AddChild(node, false);
            auto* const material = new Material("material");
            scene.AddMaterial(material);
            auto* const mesh = new Mesh(std::make_shared<RawMesh>(Soup(Box(1, 1, 1))), &scene);
            material->AddMesh(mesh);
            mesh->AddNode(node);
            auto* const style = new LineStyle("edges");
            scene.AddLineStyle(style);
            EXPECT_EQ(FeatureEdges::AddTo(scene, *style), 12u);
        });
}

TEST(FeatureEdges, EveryNodeOfASceneGetsTheLinesOfItsGeometry)
{
    Scene scene;
    auto* material = new Material("material");
    scene.AddMaterial(material);
    auto* points = new Material("points");
    points->SetFlags(MaterialFlagPoints);
    scene.AddMaterial(points);
    auto* mesh = new Mesh(std::make_shared<RawMesh>(Soup(Box(1, 1, 1))), &scene);
    auto* cloud = new Mesh(std::make_shared<RawMesh>(Soup(Box(2, 2, 2))), &scene);
    material->AddMesh(mesh);
    points->AddMesh(cloud);
    std::vector<MeshNode*> nodes;
    for (int i = 0; i < 3; ++i)
    {
        nodes.push_back(new MeshNode(&scene));
        // The last below the second.
        (i == 2 ? static_cast<Node*>(nodes[1]) : scene.GetRoot())->AddChild(nodes.back(), false);
        (i == 1 ? cloud : mesh)->AddNode(nodes.back());
    }
    auto* style = new LineStyle("edges");
    scene.AddLineStyle(style);
    EXPECT_EQ(FeatureEdges::AddTo(scene, *style), 24u);
    ASSERT_EQ(style->GetLines().size(), 1u);
    Line* line = *style->GetLines().begin();
    EXPECT_EQ(line->GetNodes(), (std::vector<MeshNode*>{nodes[0], nodes[2]}));
    EXPECT_EQ(line->GetRawLine()->positions.size(), 4u * 24 + 4);
    EXPECT_EQ(line->GetRawLine()->indices.size(), 6u * 12);
    EXPECT_EQ(scene.GetLines().size(), 1u);
}

TEST(FeatureEdges, LinesDoNotCountAsGeometryTheNextTime)
{
    Scene scene;
    auto* mesh = new Mesh(std::make_shared<RawMesh>(Soup(Box(1, 1, 1))), &scene);
    auto* node = new MeshNode(&scene);
    scene.GetRoot()->AddChild(node, false);
    mesh->AddNode(node);
    for (int i = 0; i < 2; ++i)
    {
        auto* style = new LineStyle("edges");
        scene.AddLineStyle(style);
        EXPECT_EQ(FeatureEdges::AddTo(scene, *style), 12u);
    }
}

TEST(FeatureEdges, MoreThanOneLineHoldsAreDivided)
{
    // Loose triangles, each with three open sides: 12,000 in all.
    std::vector<const RawMesh*> parts;
    Scene scene;
    auto* node = new MeshNode(&scene);
    scene.GetRoot()->AddChild(node, false);
    for (int part = 0; part < 4; ++part)
    {
        std::vector<Triangle> triangles;
        for (int i = 0; i < 1000; ++i)
        {
            const Vector corner(static_cast<float>(i % 40), static_cast<float>(i / 40), static_cast<float>(part));
            triangles.push_back({corner, Vector(corner.x + 0.5f, corner.y, corner.z),
                                 Vector(corner.x, corner.y + 0.5f, corner.z)});
        }
        auto* mesh = new Mesh(std::make_shared<RawMesh>(Soup(triangles)), &scene);
        mesh->AddNode(node);
    }
    auto* style = new LineStyle("edges");
    scene.AddLineStyle(style);
    EXPECT_EQ(FeatureEdges::AddTo(scene, *style), 12000u);
    std::multiset<std::size_t> segments;
    for (const Line* line : style->GetLines())
    {
        segments.insert(line->GetRawLine()->indices.size() / 6);
        const auto& indices = line->GetRawLine()->indices;
        EXPECT_LT(*std::max_element(indices.begin(), indices.end()), line->GetRawLine()->positions.size() - 4);
    }
    EXPECT_EQ(segments, (std::multiset<std::size_t>{12000 - 8192, 8192}));
}

TEST(FeatureEdges, SidesOfAFewLinesWithManyEndsOnThemAreLeftInOnePiece)
{
    // A mesh whose places fell onto three lines: each of its sides has the ends of thousands of others on it.
    std::mt19937 numbers(7);
    std::vector<Triangle> triangles;
    for (int i = 0; i < 20000; ++i)
    {
        Triangle triangle;
        for (Vector& corner : triangle)
        {
            corner = Vector(static_cast<float>(numbers() % 100000), static_cast<float>(numbers() % 3) * 50000.0f, 0.0f);
        }
        triangles.push_back(triangle);
    }
    EXPECT_GT(FeatureEdges::Find(Soup(triangles)).size(), 1000u);
}

namespace
{

/// Triangles like pages of a book, each with a side in its back: the ends of each are within all before it.
void AddPages(std::vector<Triangle>& triangles, int count, const Vector& at)
{
    const auto size = static_cast<float>(count);
    for (int i = 0; i < count; ++i)
    {
        const auto inset = static_cast<float>(i);
        const float angle = 1.5f * inset / size;
        triangles.push_back({Vector(at.x + inset, at.y, at.z), Vector(at.x + 2.0f * size - inset, at.y, at.z),
                             Vector(at.x + size, at.y + size * std::cos(angle), at.z + size * std::sin(angle))});
    }
}

} // namespace

TEST(FeatureEdges, SidesAreCutIntoAMillionPiecesAndNoMore)
{
    // The back is one edge where all sides in it are cut to what they have in common, and two more sides are of each page.
    std::vector<Triangle> few;
    AddPages(few, 950, Vector(0, 0, 0));
    EXPECT_EQ(FeatureEdges::Find(Soup(few)).size(), 1u + 2u * few.size());
    std::vector<Triangle> many;
    AddPages(many, 1500, Vector(0, 0, 0));
    EXPECT_GT(FeatureEdges::Find(Soup(many)).size(), 1000u + 2u * many.size());
}

TEST(FeatureEdges, AsManyMorePiecesAreCutAsALargeModelHas)
{
    // A bit more than a million, of which each side has few.
    constexpr int edge = 15;
    std::vector<RawMesh> layers;
    std::size_t sides = 0;
    for (int layer = 0; layer < edge; ++layer)
    {
        std::vector<Triangle> triangles;
        for (int i = 0; i < edge * edge; ++i)
        {
            AddPages(triangles, 17, Vector(40.0f * static_cast<float>(i % edge), 40.0f * static_cast<float>(i / edge),
                                           40.0f * static_cast<float>(layer)));
        }
        sides += edge * edge + 2 * triangles.size();
        layers.push_back(Soup(triangles));
    }
    std::vector<const RawMesh*> parts;
    for (const RawMesh& layer : layers)
    {
        parts.push_back(&layer);
    }
    EXPECT_EQ(FeatureEdges::Find(parts).size(), sides);
}

} // namespace OV::Host::Test
