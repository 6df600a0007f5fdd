#include "orvane_host/geometry/FeatureLines.h"
#include "orvane_host/geometry/SectionFaces.h"

#include "orvane/math/Transform.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <vector>

namespace OV::Host::Test
{

namespace
{

/// A cube of edge 2, closed.
std::shared_ptr<RawMesh> MakeCube()
{
    auto raw = std::make_shared<RawMesh>();
    std::vector<Vector> positions;
    for (int corner = 0; corner < 8; ++corner)
    {
        positions.emplace_back(corner & 1 ? 1.0f : -1.0f, corner & 2 ? 1.0f : -1.0f, corner & 4 ? 1.0f : -1.0f);
    }
    raw->SetPositionBuffer(std::move(positions));
    raw->SetIndices({0, 2, 3, 0, 3, 1, 4, 5, 7, 4, 7, 6, 0, 1, 5, 0, 5, 4, 2, 6, 7, 2, 7, 3, 0, 4, 6, 0, 6, 2, 1, 3, 7, 1, 7, 5});
    raw->EndDescription(true);
    return raw;
}

/// Three cubes in a row, one material for the first two.
struct Row
{
    Scene scene;
    std::vector<Mesh*> cubes;
    Material* shared = new Material("shared");
    Material* alone = new Material("alone");

    Row()
    {
        scene.AddMaterial(shared);
        scene.AddMaterial(alone);
        for (int i = 0; i < 3; ++i)
        {
            auto* const mesh = new Mesh(MakeCube(), &scene);
            (i < 2 ? shared : alone)->AddMesh(mesh);
            auto* const node = new MeshNode(&scene);
            Transform place;
            place.SetPosition(Vector(3.0f * static_cast<float>(i), 0, 0));
            node->SetLocal(place);
            scene.GetRoot()->AddChild(node, false);
            mesh->AddNode(node);
            cubes.push_back(mesh);
        }
        scene.GetRoot()->UpdateGraph();
    }
};

const std::vector<SectionPlane> ThroughTheSecond = {{Vector(1, 0, 0), Vector(3.5f, 0, 0)}};

TEST(SectionFaces, AreGoneWithTheCopiesOfMaterialsWhenTheCutIsTakenBack)
{
    Row row;
    const std::vector<Material*> materials = row.scene.GetOptimizedMaterials();
    const std::set<Mesh*> meshes = row.scene.GetMeshes();
    SectionFaces faces(row.scene);
    for (int round = 0; round < 3; ++round)
    {
        faces.Cut(ThroughTheSecond, SectionFaces::Fill{0.01f, Color(1, 0, 0)});
        EXPECT_EQ(row.scene.GetOptimizedMaterials().size(), 4u) << "a copy for the second cube, and the faces'";
        EXPECT_EQ(row.scene.GetMeshes().size(), 4u);
        ASSERT_EQ(faces.GetCopies().size(), 1u);
        EXPECT_EQ(row.cubes[0]->GetMaterial(), row.shared);
        EXPECT_EQ(row.cubes[1]->GetMaterial(), faces.GetCopies()[0].material);
        EXPECT_EQ(faces.GetOpened(), std::vector<Material*>{faces.GetCopies()[0].material});
        faces.Heal();
        EXPECT_EQ(row.scene.GetOptimizedMaterials(), materials);
        EXPECT_EQ(row.scene.GetMeshes(), meshes);
        EXPECT_EQ(row.cubes[1]->GetMaterial(), row.shared);
        EXPECT_TRUE(faces.GetOpened().empty());
        EXPECT_EQ(faces.GetMaterial(), nullptr);
    }
}

TEST(SectionFaces, AMaterialOfWhichAllIsCutIsOpenedWithoutACopy)
{
    Row row;
    SectionFaces faces(row.scene);
    faces.Cut({{Vector(0, 1, 0), Vector()}}, std::nullopt);
    EXPECT_EQ(faces.GetOpened(), (std::vector<Material*>{row.shared, row.alone}));
    EXPECT_TRUE(faces.GetCopies().empty());
    EXPECT_EQ(row.scene.GetMeshes().size(), 3u) << "without a fill there are no faces";
}

TEST(SectionFaces, AMaterialThatTheHostDeletedMeanwhileIsNotTouched)
{
    Row row;
    SectionFaces faces(row.scene);
    faces.Cut(ThroughTheSecond, std::nullopt);
    delete row.shared;
    faces.Forget();
    EXPECT_EQ(row.cubes[1]->GetMaterial(), nullptr);
    EXPECT_EQ(row.scene.GetOptimizedMaterials(), std::vector<Material*>{row.alone});
}

TEST(SectionFaces, WhatTheHostDeletedIsNotDeletedAgainAndComesBackWithTheNextCut)
{
    Row row;
    SectionFaces faces(row.scene);
    const auto cut = [&] { faces.Cut(ThroughTheSecond, SectionFaces::Fill{0.01f, Color(1, 0, 0)}); };
    cut();
    ASSERT_TRUE(faces.GetMaterial());
    delete *faces.GetMaterial()->EachMesh().begin();
    EXPECT_EQ(faces.GetMaterial(), nullptr) << "there is no face left";
    cut();
    EXPECT_EQ(row.scene.GetMeshes().size(), 4u);
    ASSERT_EQ(faces.GetCopies().size(), 1u);
    delete faces.GetMaterial();
    delete faces.GetCopies()[0].material;
    faces.Suspend();
    EXPECT_EQ(faces.GetMaterial(), nullptr);
    row.shared->AddMesh(row.cubes[1]);
    cut();
    EXPECT_TRUE(faces.GetMaterial());
    EXPECT_EQ(faces.GetCopies().size(), 1u);
    row.scene.Clear();
    EXPECT_EQ(faces.GetMaterial(), nullptr);
    faces.Heal();
    EXPECT_TRUE(row.scene.GetOptimizedMaterials().empty());
}

TEST(SectionFaces, OutliveTheSceneThatDeletedThem)
{
    auto row = std::make_unique<Row>();
    SectionFaces faces(row->scene);
    faces.Cut(ThroughTheSecond, SectionFaces::Fill{0.01f, Color(1, 0, 0)});
    row.reset();
    EXPECT_EQ(faces.GetMaterial(), nullptr);
}

TEST(SectionFaces, GoWithTheObjectThatMadeThem)
{
    Row row;
    {
        SectionFaces faces(row.scene);
        faces.Cut(ThroughTheSecond, SectionFaces::Fill{0.01f, Color(1, 0, 0)});
    }
    EXPECT_EQ(row.scene.GetMeshes().size(), 3u);
    EXPECT_EQ(row.scene.GetOptimizedMaterials().size(), 2u);
}

TEST(FeatureLines, ComeAndGoWithTheirStyleLeftInPlace)
{
    Row row;
    auto* const style = new LineStyle("edges");
    row.scene.AddLineStyle(style);
    FeatureLines lines(row.scene);
    for (int round = 0; round < 2; ++round)
    {
        EXPECT_EQ(lines.Show(*style, 30.0f), 3u * 12u);
        EXPECT_EQ(row.scene.GetLines().size(), 3u);
        EXPECT_EQ(row.cubes[0]->GetNodes()[0]->GetMeshes().size(), 2u);
        EXPECT_EQ(lines.Show(*style, 30.0f), 3u * 12u) << "in place of those that were there";
        EXPECT_EQ(row.scene.GetLines().size(), 3u);
        lines.Hide();
        EXPECT_TRUE(row.scene.GetLines().empty());
        EXPECT_TRUE(style->GetLines().empty());
        EXPECT_EQ(row.cubes[0]->GetNodes()[0]->GetMeshes().size(), 1u);
    }
    EXPECT_EQ(lines.Show(*style, 120.0f), 0u) << "nothing bends as much";
}

TEST(FeatureLines, WhatTheHostDeletedIsNotDeletedAgainAndComesBackWithTheNextShow)
{
    Row row;
    auto* style = new LineStyle("edges");
    row.scene.AddLineStyle(style);
    FeatureLines lines(row.scene);
    lines.Show(*style, 30.0f);
    delete *row.scene.GetLines().begin();
    EXPECT_EQ(row.scene.GetLines().size(), 2u);
    EXPECT_EQ(lines.Show(*style, 30.0f), 3u * 12u);
    EXPECT_EQ(row.scene.GetLines().size(), 3u);
    delete style;
    lines.Hide();
    EXPECT_TRUE(row.scene.GetLines().empty());
    style = new LineStyle("edges");
    row.scene.AddLineStyle(style);
    lines.Show(*style, 30.0f);
    row.scene.Clear();
    lines.Forget();
    EXPECT_TRUE(row.scene.GetLines().empty());
}

TEST(FeatureLines, OutliveTheSceneThatDeletedThem)
{
    auto row = std::make_unique<Row>();
    auto* const style = new LineStyle("edges");
    row->scene.AddLineStyle(style);
    FeatureLines lines(row->scene);
    lines.Show(*style, 30.0f);
    row.reset();
    lines.Hide();
}

} // namespace

} // namespace OV::Host::Test
