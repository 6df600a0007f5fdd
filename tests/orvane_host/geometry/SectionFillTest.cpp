#include "orvane_host/geometry/SectionFill.h"

#include "orvane_host/geometry/FeatureEdges.h"
#include "orvane_host/geometry/detail/ClosedShells.h"
#include "orvane_host/geometry/detail/PlaneSection.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <random>
#include <vector>

namespace OV::Host::Test
{

namespace
{

using Detail::PlaneSection;
using Point = PlaneSection::Point;
using Triangle = std::array<Vector, 3>;

void AddQuad(std::vector<Triangle>& triangles, const Vector& a, const Vector& b, const Vector& c, const Vector& d)
{
    triangles.push_back({a, b, c});
    triangles.push_back({a, c, d});
}

/// Faces outward, counter-clockwise. The lid, which is the upper side, comes last.
std::vector<Triangle> Box(const Vector& low, const Vector& high)
{
    const auto corner = [&](bool x, bool y, bool z)
    { return Vector(x ? high.x : low.x, y ? high.y : low.y, z ? high.z : low.z); };
    std::vector<Triangle> faces;
    const Vector v000 = corner(false, false, false), v100 = corner(true, false, false), v010 = corner(false, true, false);
    const Vector v110 = corner(true, true, false), v001 = corner(false, false, true), v101 = corner(true, false, true);
    const Vector v011 = corner(false, true, true), v111 = corner(true, true, true);
    AddQuad(faces, v000, v010, v110, v100);
    AddQuad(faces, v001, v101, v111, v011);
    AddQuad(faces, v000, v100, v101, v001);
    AddQuad(faces, v000, v001, v011, v010);
    AddQuad(faces, v100, v110, v111, v101);
    AddQuad(faces, v010, v011, v111, v110);
    return faces;
}

std::vector<Triangle> Turned(std::vector<Triangle> triangles)
{
    for (Triangle& triangle : triangles)
    {
        std::swap(triangle[1], triangle[2]);
    }
    return triangles;
}

template <typename Item>
std::vector<Item> operator+(std::vector<Item> left, const std::vector<Item>& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

std::shared_ptr<RawMesh> Soup(const std::vector<Triangle>& triangles)
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
    auto mesh = std::make_shared<RawMesh>();
    mesh->SetPositionBuffer(std::move(positions));
    mesh->SetIndices(std::move(indices));
    mesh->EndDescription(true);
    return mesh;
}

std::size_t ClosedCount(const std::vector<Triangle>& triangles)
{
    const std::shared_ptr<RawMesh> mesh = Soup(triangles);
    return Detail::FindClosedShells(Detail::VertexWelder({mesh.get()})).size();
}

/// Area of triangles in a plane across z, positive when they are counter-clockwise from +z.
double AreaFromZ(const std::vector<Point>& corners)
{
    double area = 0.0;
    for (std::size_t i = 0; i + 2 < corners.size(); i += 3)
    {
        const Point& a = corners[i];
        const Point& b = corners[i + 1];
        const Point& c = corners[i + 2];
        area += ((b[0] - a[0]) * (c[1] - a[1]) - (c[0] - a[0]) * (b[1] - a[1])) / 2.0;
    }
    return area;
}

std::vector<Point> SectionAtZ(const std::vector<Triangle>& triangles, double z, double sense = 1.0)
{
    PlaneSection section({0.0, 0.0, sense}, {7.0, -3.0, z});
    for (const Triangle& triangle : triangles)
    {
        std::array<Point, 3> corners;
        std::array<double, 3> heights{};
        for (std::size_t i = 0; i < 3; ++i)
        {
            corners[i] = {triangle[i].x, triangle[i].y, triangle[i].z};
            heights[i] = section.HeightOf(corners[i]);
        }
        section.Add(corners, heights);
    }
    return section.Fill();
}

/// A scene with one material, and what SectionFill adds to it.
struct FilledScene
{
    Scene scene;
    Material* material = new Material("solid");
    Mesh* mesh = nullptr;
    MeshNode* node = new MeshNode(&scene);

    explicit FilledScene(const std::vector<Triangle>& triangles)
    {
        scene.AddMaterial(material);
        scene.GetRoot()->AddChild(node, false);
        mesh = new Mesh(Soup(triangles), &scene);
        material->AddMesh(mesh);
        mesh->AddNode(node);
    }

    std::size_t Fill(const std::vector<SectionPlane>& planes = {{Vector(0, 0, 1), Vector(0, 0, 0.25f)}})
    {
        scene.UpdateGraph(100.0f, 100.0f);
        return SectionFill::AddTo(scene, planes, 0.125f, Color(1.0f, 0.0f, 0.0f));
    }

    /// Corners of the faces that were added, in world space.
    std::vector<Point> Faces()
    {
        std::vector<Point> corners;
        scene.UpdateGraph(100.0f, 100.0f);
        for (Mesh* added : node->GetMeshes())
        {
            if (added == mesh)
            {
                continue;
            }
            for (const unsigned short index : added->GetIndices())
            {
                const Vector& v = added->GetPositionBuffer()[index];
                const auto& m = node->GetGlobal().GetTransf3d().m;
                corners.push_back({m[0][0] * v.x + m[0][1] * v.y + m[0][2] * v.z + m[0][3],
                                   m[1][0] * v.x + m[1][1] * v.y + m[1][2] * v.z + m[1][3],
                                   m[2][0] * v.x + m[2][1] * v.y + m[2][2] * v.z + m[2][3]});
            }
        }
        return corners;
    }
};

const std::vector<Triangle> UnitBox = Box(Vector(-1, -1, -1), Vector(1, 1, 1));

} // namespace

TEST(ClosedShells, ABoxIsClosedAndIsNotWithoutATriangle)
{
    EXPECT_EQ(ClosedCount(UnitBox), 12u);
    for (std::size_t missing = 0; missing < 12; ++missing)
    {
        std::vector<Triangle> open = UnitBox;
        open.erase(open.begin() + static_cast<std::ptrdiff_t>(missing));
        EXPECT_EQ(ClosedCount(open), 0u) << missing;
    }
}

TEST(ClosedShells, OneTriangleThatIsTurnedOverOpensIt)
{
    std::vector<Triangle> box = UnitBox;
    std::swap(box[5][0], box[5][1]);
    EXPECT_EQ(ClosedCount(box), 0u);
    EXPECT_EQ(ClosedCount(Turned(UnitBox)), 12u) << "all of them turned over";
}

TEST(ClosedShells, WhatHangsTogetherIsJudgedByItself)
{
    std::vector<Triangle> open = Box(Vector(5, 0, 0), Vector(6, 1, 1));
    open.pop_back();
    EXPECT_EQ(ClosedCount(UnitBox + open), 12u);
    EXPECT_EQ(ClosedCount(UnitBox + Box(Vector(5, 0, 0), Vector(6, 1, 1))), 24u);
}

TEST(ClosedShells, ALongEdgeMayMeetSeveralShortOnes)
{
    std::vector<Triangle> box = UnitBox;
    box.pop_back();
    box.pop_back();
    // The lid in two halves, whose seam ends in the middle of edges.
    std::vector<Triangle> halves = box;
    AddQuad(halves, Vector(-1, 1, -1), Vector(-1, 1, 1), Vector(0.3f, 1, 1), Vector(0.3f, 1, -1));
    AddQuad(halves, Vector(0.3f, 1, -1), Vector(0.3f, 1, 1), Vector(1, 1, 1), Vector(1, 1, -1));
    EXPECT_EQ(ClosedCount(halves), 14u);
    // A gap between the halves, and halves that overlap.
    std::vector<Triangle> gap = box;
    AddQuad(gap, Vector(-1, 1, -1), Vector(-1, 1, 1), Vector(0.3f, 1, 1), Vector(0.3f, 1, -1));
    AddQuad(gap, Vector(0.31f, 1, -1), Vector(0.31f, 1, 1), Vector(1, 1, 1), Vector(1, 1, -1));
    EXPECT_EQ(ClosedCount(gap), 0u);
    std::vector<Triangle> overlap = box;
    AddQuad(overlap, Vector(-1, 1, -1), Vector(-1, 1, 1), Vector(0.3f, 1, 1), Vector(0.3f, 1, -1));
    AddQuad(overlap, Vector(0.29f, 1, -1), Vector(0.29f, 1, 1), Vector(1, 1, 1), Vector(1, 1, -1));
    EXPECT_EQ(ClosedCount(overlap), 0u);
}

TEST(PlaneSectionFill, IsThatOfTheSolidAndClockwiseFromTheNormal)
{
    const std::vector<Triangle> box = Box(Vector(1, 2, -1), Vector(4, 7, 1));
    EXPECT_NEAR(AreaFromZ(SectionAtZ(box, 0.5)), -15.0, 1e-9);
    EXPECT_NEAR(AreaFromZ(SectionAtZ(box, 0.5, -1.0)), 15.0, 1e-9);
    EXPECT_TRUE(SectionAtZ(box, 1.5).empty());
    for (const Point& corner : SectionAtZ(box, 0.5))
    {
        EXPECT_NEAR(corner[2], 0.5, 1e-12);
    }
}

TEST(PlaneSectionFill, ASolidInASolidIsFilledOnceAndACavityIsLeftOut)
{
    const std::vector<Triangle> outer = Box(Vector(-2, -2, -2), Vector(2, 2, 2));
    EXPECT_NEAR(AreaFromZ(SectionAtZ(outer + UnitBox, 0.0)), -16.0, 1e-9);
    EXPECT_NEAR(AreaFromZ(SectionAtZ(outer + Turned(UnitBox), 0.0)), -12.0, 1e-9);
    EXPECT_NEAR(AreaFromZ(SectionAtZ(outer + Box(Vector(1, -1, -1), Vector(4, 1, 1)), 0.0)), -20.0, 1e-9);
    EXPECT_TRUE(SectionAtZ(Turned(UnitBox), 0.0).empty()) << "what faces inward encloses nothing";
}

TEST(PlaneSectionFill, APlaneThroughCornersAndFacesFillsOneSideOrTheOther)
{
    // Through the lower face and through the upper one: points on the plane count to the normal.
    EXPECT_NEAR(AreaFromZ(SectionAtZ(UnitBox, -1.0)), 0.0, 1e-9);
    EXPECT_NEAR(AreaFromZ(SectionAtZ(UnitBox, 1.0)), -4.0, 1e-9);
    // A double pyramid, cut through its waist.
    std::vector<Triangle> gem;
    const Vector waist[4] = {Vector(1, 0, 0), Vector(0, 1, 0), Vector(-1, 0, 0), Vector(0, -1, 0)};
    for (int i = 0; i < 4; ++i)
    {
        gem.push_back({waist[i], waist[(i + 1) % 4], Vector(0, 0, 1)});
        gem.push_back({waist[(i + 1) % 4], waist[i], Vector(0, 0, -1)});
    }
    EXPECT_NEAR(AreaFromZ(SectionAtZ(gem, 0.0)), -2.0, 1e-9);
    EXPECT_NEAR(AreaFromZ(SectionAtZ(gem, 0.5)), -0.5, 1e-9);
}

TEST(PlaneSectionFill, ARoundSolidHasTheAreaOfItsPolygon)
{
    constexpr int corners = 97;
    std::vector<Triangle> cylinder;
    const auto at = [](int i, float z)
    {
        const double angle = 2.0 * 3.14159265358979323846 * (i % corners) / corners;
        return Vector(static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle)), z);
    };
    for (int i = 0; i < corners; ++i)
    {
        AddQuad(cylinder, at(i, -1), at(i + 1, -1), at(i + 1, 1), at(i, 1));
    }
    const double area = corners / 2.0 * std::sin(2.0 * 3.14159265358979323846 / corners);
    EXPECT_NEAR(AreaFromZ(SectionAtZ(cylinder, 0.1)), -area, 1e-6);
}

TEST(PlaneSectionFill, SidesMayCrossEachOther)
{
    // An upright wall around a polygon whose sides cross: it encloses only what lies below the crossing.
    const Vector corners[4] = {Vector(0, 0, -1), Vector(1, 0, -1), Vector(0, 1, -1), Vector(0.6f, 1, -1)};
    std::vector<Triangle> wall;
    for (int i = 0; i < 4; ++i)
    {
        const Vector& from = corners[i];
        const Vector& to = corners[(i + 1) % 4];
        AddQuad(wall, from, to, Vector(to.x, to.y, 1), Vector(from.x, from.y, 1));
    }
    EXPECT_NEAR(AreaFromZ(SectionAtZ(wall, 0.0)), -0.3125, 1e-6);
    EXPECT_NEAR(AreaFromZ(SectionAtZ(Turned(wall), 0.0)), -0.1125, 1e-6) << "above it";
    // Two walls of one solid that cross at many angles.
    const auto turned = [](std::vector<Triangle> box, double degrees) {
        const double c = std::cos(degrees * 3.14159265358979323846 / 180.0);
        const double s = std::sin(degrees * 3.14159265358979323846 / 180.0);
        for (Triangle& triangle : box)
        {
            for (Vector& v : triangle)
            {
                v = Vector(static_cast<float>(v.x * c - v.y * s), static_cast<float>(v.x * s + v.y * c), v.z);
            }
        }
        return box;
    };
    const std::vector<Triangle> along = Box(Vector(-4, -0.5f, -1), Vector(4, 0.5f, 1));
    for (const double angle : {0.0, 10.0, 30.0, 45.0, 77.0})
    {
        const double area = 16.0 - 1.0 / std::cos(7.0 * 3.14159265358979323846 / 180.0);
        EXPECT_NEAR(AreaFromZ(SectionAtZ(turned(along, angle) + turned(along, angle + 97.0), 0.0)), -area, 1e-4) << angle;
    }
    // A ball of paper: every face of a fine grid goes somewhere.
    std::mt19937 numbers(3);
    std::vector<Triangle> paper;
    std::vector<Vector> places(40 * 20);
    for (Vector& place : places)
    {
        const auto next = [&] { return static_cast<float>(numbers() % 1000) / 500.0f - 1.0f; };
        place = Vector(next(), next(), next());
    }
    for (std::size_t row = 0; row < 20; ++row)
    {
        for (std::size_t column = 0; column < 40; ++column)
        {
            const auto at = [&](std::size_t x, std::size_t y) { return places[y % 20 * 40 + x % 40]; };
            AddQuad(paper, at(column, row), at(column + 1, row), at(column + 1, row + 1), at(column, row + 1));
        }
    }
    for (const Point& corner : SectionAtZ(paper, 0.0))
    {
        ASSERT_LE(std::abs(corner[0]), 1.0 + 1e-6);
        ASSERT_LE(std::abs(corner[1]), 1.0 + 1e-6);
    }
}

TEST(PlaneSectionFill, WhatIsBeyondAllNumbersIsLeftOut)
{
    const double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double damaged : {infinity, nan, 1e300, -1e200})
    {
        PlaneSection section({0.0, 0.0, 1.0}, {0.0, 0.0, 0.0});
        for (int i = 0; i < 64; ++i)
        {
            section.Add({{{damaged, 1.0 * i, -1.0}, {1.0, damaged, 1.0}, {2.0, 3.0 * i, damaged}}}, {-1.0, 1.0, 1.0});
            section.Add({{{damaged, 1.0 * i, -1.0}, {1.0, 2.0, 1.0}, {2.0, 3.0 * i, 1.0}}}, {-infinity, 1.0, infinity});
        }
        EXPECT_TRUE(section.Fill().empty()) << damaged;
    }
}

TEST(PlaneSectionFill, WhatWouldTakeForEverIsLeftOpen)
{
    // Fewer sides than a fine model has in a section, but each right across all of it.
    PlaneSection section({0.0, 0.0, 1.0}, {0.0, 0.0, 0.0});
    std::mt19937 numbers(5);
    const auto next = [&] { return static_cast<double>(numbers() % 100000); };
    for (int i = 0; i < 14000; ++i)
    {
        section.Add({{{next(), next(), -1.0}, {next(), next(), 1.0}, {next(), next(), 1.0}}}, {-1.0, 1.0, 1.0});
    }
    EXPECT_TRUE(section.Fill().empty());
}

TEST(PlaneSectionFill, SoManySidesMayCrossThatNotAllCrossingsAreLookedFor)
{
    // Polygons in rows, two sides of each of which cross: what lies below the crossing is enclosed.
    constexpr int columns = 50;
    constexpr double area = 0.3125;
    const auto areaOf = [](int rows) {
        PlaneSection section({0.0, 0.0, 1.0}, {0.0, 0.0, 0.0});
        const double corners[4][2] = {{0.0, 0.0}, {1.0, 0.0}, {0.0, 1.0}, {0.6, 1.0}};
        for (int i = 0; i < rows * columns; ++i)
        {
            const double x = 1.25 * (i / columns);
            const double y = 1.25 * (i % columns);
            for (int k = 0; k < 4; ++k)
            {
                const auto& from = corners[k];
                const auto& to = corners[(k + 1) % 4];
                section.Add({{{0.0, 0.0, -1.0},
                              {2.0 * (x + to[0]), 2.0 * (y + to[1]), 1.0},
                              {2.0 * (x + from[0]), 2.0 * (y + from[1]), 1.0}}},
                            {-1.0, 1.0, 1.0});
            }
        }
        return std::abs(AreaFromZ(section.Fill()));
    };
    EXPECT_NEAR(areaOf(399), 399 * columns * area, 1e-3);
    // Of those in the last rows it is beside.
    const double more = areaOf(500);
    EXPECT_GT(std::abs(more - 500 * columns * area), 90 * columns * 0.01);
    EXPECT_NEAR(more, 500 * columns * area, 100 * columns * area);
}

TEST(SectionFill, FacesLieBelowThePlaneAndShowTheirBacks)
{
    FilledScene filled(UnitBox);
    EXPECT_EQ(filled.Fill(), 1u);
    const std::vector<Point> faces = filled.Faces();
    EXPECT_NEAR(AreaFromZ(faces), -4.0, 1e-5);
    for (const Point& corner : faces)
    {
        EXPECT_NEAR(corner[2], 0.125, 1e-5);
    }
    const Material* const material = filled.node->GetMeshes().back()->GetMaterial();
    EXPECT_EQ(material->GetFlags(), static_cast<unsigned>(MaterialFlagUnlit | MaterialFlagNoCull));
    EXPECT_EQ(material->GetDiffuse().r, 1.0f);
    EXPECT_EQ(filled.node->GetMeshes().back()->GetColorBuffer().front().g, 0.0f);
}

TEST(SectionFill, FollowsTheNodeAndKeepsItsFacingWhenMirrored)
{
    for (const float mirror : {1.0f, -1.0f})
    {
        FilledScene filled(UnitBox);
        Transform place;
        place.SetScale(Vector(2.0f * mirror, 1.0f, 3.0f));
        place.SetPosition(Vector(10.0f, 20.0f, 1.0f));
        filled.node->SetLocal(place);
        EXPECT_EQ(filled.Fill(), 1u);
        const std::vector<Point> faces = filled.Faces();
        // GL turns the front of a mirrored node over.
        EXPECT_NEAR(AreaFromZ(faces), -8.0 * mirror, 1e-4) << mirror;
        double farthest = 0.0;
        for (const Point& corner : faces)
        {
            EXPECT_NEAR(corner[2], 0.125, 1e-4);
            farthest = std::max(farthest, std::abs(corner[0] - 10.0));
        }
        EXPECT_NEAR(farthest, 2.0, 1e-5);
    }
}

TEST(SectionFill, NodesWithTheSameMeshHaveEachTheirOwn)
{
    FilledScene filled(UnitBox);
    auto* const second = new MeshNode(&filled.scene);
    filled.scene.GetRoot()->AddChild(second, false);
    filled.mesh->AddNode(second);
    Transform place;
    place.SetPosition(Vector(0.0f, 0.0f, 0.5f));
    second->SetLocal(place);
    EXPECT_EQ(filled.Fill(), 2u);
    EXPECT_EQ(filled.node->GetMeshes().size(), 2u);
    EXPECT_EQ(second->GetMeshes().size(), 2u);
    EXPECT_NEAR(second->GetMeshes().back()->GetPositionBuffer().front().z, -0.375f, 1e-5);
}

TEST(SectionFill, EachPlaneHasItsSection)
{
    FilledScene filled(UnitBox);
    EXPECT_EQ(filled.Fill({{Vector(0, 0, 1), Vector(0, 0, 0)}, {Vector(1, 0, 0), Vector(0.5f, 0, 0)},
                           {Vector(0, 1, 0), Vector(0, 9, 0)}}), 2u);
    EXPECT_NEAR(AreaFromZ(filled.Faces()), -4.0, 1e-5) << "the other stands on its edge";
}

TEST(SectionFill, WhatIsNoSolidGetsNone)
{
    std::vector<Triangle> open = UnitBox;
    open.pop_back();
    EXPECT_EQ(FilledScene(open).Fill(), 0u);
    EXPECT_EQ(FilledScene(Turned(UnitBox)).Fill(), 0u);
    FilledScene glass(UnitBox);
    glass.material->SetDiffuse(Color(1.0f, 1.0f, 1.0f, 0.5f));
    EXPECT_EQ(glass.Fill(), 0u);
    FilledScene points(UnitBox);
    points.material->SetFlags(MaterialFlagPoints);
    EXPECT_EQ(points.Fill(), 0u);
    FilledScene hidden(UnitBox);
    hidden.node->SetFlags(NodeFlagHidden, false);
    EXPECT_EQ(hidden.Fill(), 0u);
    FilledScene flat(UnitBox);
    Transform place;
    place.SetScale(Vector(0.0f, 1.0f, 1.0f));
    flat.node->SetLocal(place);
    EXPECT_EQ(flat.Fill(), 0u);
    const std::size_t materials = hidden.scene.GetOptimizedMaterials().size();
    EXPECT_EQ(materials, 1u) << "nothing is added for nothing";
}

TEST(SectionFill, AnEmptySceneAndNoPlanesAreFine)
{
    Scene scene;
    scene.UpdateGraph(100.0f, 100.0f);
    EXPECT_EQ(SectionFill::AddTo(scene, {{Vector(0, 0, 1), Vector()}}, 0.0f, Color()), 0u);
    EXPECT_EQ(FilledScene(UnitBox).Fill({}), 0u);
}

TEST(SectionFill, ItsRimIsFoundAsEdges)
{
    FilledScene filled(UnitBox);
    filled.Fill();
    const std::vector<FeatureEdge> edges = FeatureEdges::Find(*filled.node->GetMeshes().back()->GetRawMesh());
    double length = 0.0;
    for (const FeatureEdge& edge : edges)
    {
        length += std::hypot(edge.end.x - edge.start.x, edge.end.y - edge.start.y);
    }
    EXPECT_NEAR(length, 8.0, 1e-5);
}

TEST(SectionInsides, AMaterialOfWhatIsCutShowsThemAndAnotherDoesNot)
{
    for (const float height : {0.0f, 5.0f})
    {
        FilledScene filled(UnitBox);
        filled.scene.UpdateGraph(100.0f, 100.0f);
        SectionFill::ShowInsides(filled.scene, {{Vector(0, 0, 1), Vector(0, 0, 9)}, {Vector(0, 0, 1), Vector(0, 0, height)}});
        EXPECT_EQ(filled.material->GetFlags(), height == 0.0f ? static_cast<unsigned>(MaterialFlagNoCull) : 0u);
        EXPECT_EQ(filled.scene.GetOptimizedMaterials().size(), 1u);
    }
}

TEST(SectionInsides, AMaterialOfBothIsCopiedForWhatIsCut)
{
    FilledScene filled(UnitBox);
    auto* const below = new Mesh(Soup(Box(Vector(-1, -1, -9), Vector(1, 1, -8))), &filled.scene);
    filled.material->AddMesh(below);
    below->AddNode(filled.node);
    Material& material = *filled.material;
    material.SetDiffuse(Color(0.1f, 0.2f, 0.3f));
    material.flags = MaterialFlagUnlit;
    material.pixels = static_cast<unsigned char*>(std::calloc(2 * 3, 4));
    material.pixels[23] = 99;
    material.pixelWidth = 2;
    material.pixelHeight = 3;
    material.uScale = 4.0f;
    material.normalMapName = "bumps.png";
    material.reflectionFactors[2] = 0.7f;
    filled.scene.UpdateGraph(100.0f, 100.0f);
    SectionFill::ShowInsides(filled.scene, {{Vector(0, 0, 1), Vector(0, 0, 0)}});

    EXPECT_EQ(below->GetMaterial(), &material);
    EXPECT_EQ(material.GetFlags(), static_cast<unsigned>(MaterialFlagUnlit));
    EXPECT_EQ(material.GetMeshes().size(), 1u);
    const Material* const copy = filled.mesh->GetMaterial();
    ASSERT_NE(copy, &material);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->GetScene(), &filled.scene);
    EXPECT_EQ(copy->GetFlags(), static_cast<unsigned>(MaterialFlagUnlit | MaterialFlagNoCull));
    EXPECT_EQ(copy->GetDiffuse().b, 0.3f);
    EXPECT_NE(copy->pixels, material.pixels);
    EXPECT_EQ(copy->pixels[23], 99);
    EXPECT_EQ(copy->pixelHeight, 3);
    EXPECT_EQ(copy->uScale, 4.0f);
    EXPECT_EQ(copy->normalMapName, "bumps.png");
    EXPECT_EQ(copy->reflectionFactors[2], 0.7f);
}

TEST(SectionInsides, AMeshIsCutIfItIsAtAnyOfItsNodes)
{
    FilledScene filled(UnitBox);
    auto* const second = new MeshNode(&filled.scene);
    filled.scene.GetRoot()->AddChild(second, false);
    filled.mesh->AddNode(second);
    Transform place;
    place.SetPosition(Vector(0.0f, 0.0f, 5.0f));
    second->SetLocal(place);
    filled.scene.UpdateGraph(100.0f, 100.0f);
    SectionFill::ShowInsides(filled.scene, {{Vector(0, 0, 1), Vector(0, 0, 5.5f)}});
    EXPECT_EQ(filled.material->GetFlags(), static_cast<unsigned>(MaterialFlagNoCull));
}

} // namespace OV::Host::Test
