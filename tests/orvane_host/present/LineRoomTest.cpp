#include "orvane_host/geometry/FeatureEdges.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"
#include "tests/orvane_host/present/PresentationStage.h"

#include <GL/gl.h>

#include <memory>
#include <utility>
#include <vector>

using namespace OV;
using namespace OV::Host;
using namespace OV::Test;

namespace
{

constexpr Pixel kGreen{0, 255, 0, 255};
constexpr Pixel kRed{255, 0, 0, 255};
constexpr Pixel kBlack{0, 0, 0, 255};

/// A green slope over all of the picture that falls away upwards, and a red wall behind it that
/// faces the eye and ends under the slope, a tenth of a pixel above the middle of a row.
struct LineRoomTest : FlatStage
{
    static constexpr int WallTop = 40;

    LineRoomTest()
    {
        const auto depthAt = [](float y) { return 40.0f - y; };
        const auto width = static_cast<float>(Width());
        const auto height = static_cast<float>(Height());
        const float top = static_cast<float>(WallTop) + 0.6f;
        slope = &AddMaterial(Color(0, 1, 0));
        wall = &AddMaterial(Color(1, 0, 0));
        AddFace(*wall, {{0, 0, depthAt(top)}, {width, 0, depthAt(top)}, {width, top, depthAt(top)}, {0, top, depthAt(top)}});
        slopeMesh = &AddFace(*slope, {{0, 0, depthAt(0)},
                                      {width, 0, depthAt(0)},
                                      {width, height, depthAt(height)},
                                      {0, height, depthAt(height)}});
        // On the slope, with half of its width where the slope is nearer to the eye.
        line = &AddLine(Vector(0, 20, depthAt(20)), Vector(width, 20, depthAt(20)), Color(0, 0, 0), 0.5f);
        MakeRoom();
    }

    void MakeRoom() { FeatureEdges::MakeRoom(World(), 1.0f, 2.0f); }

    Mesh& AddFace(Material& material, std::vector<Vector> corners)
    {
        auto raw = std::make_shared<RawMesh>();
        raw->SetPositionBuffer(std::move(corners));
        raw->SetNormalBuffer(std::vector<Vector>(4, Vector(0, 0, 1)));
        raw->SetIndices({0, 1, 2, 0, 2, 3});
        raw->EndDescription(true);
        auto* const mesh = new Mesh(raw, &World());
        material.AddMesh(mesh);
        auto* const node = new MeshNode(&World());
        World().GetRoot()->AddChild(node, false);
        mesh->AddNode(node);
        return *mesh;
    }

    Material* slope = nullptr;
    Material* wall = nullptr;
    Mesh* slopeMesh = nullptr;
    LineStyle* line = nullptr;
};

} // namespace

TEST_F(LineRoomTest, AFaceHidesWhatEndsUnderIt)
{
    const Picture picture = Draw();
    EXPECT_EQ(picture.Count(kRed), 0);
    EXPECT_EQ(picture.At(10, WallTop), kGreen);
}

TEST_F(LineRoomTest, LinesHaveTheirRoomAllTheSame)
{
    // So that lines are compared with the depth buffer.
    renderer->OverlayLines(true);
    const Picture picture = Draw();
    const int black = picture.Count(kBlack);
    EXPECT_GT(black, 0);
    EXPECT_TRUE(picture.At(10, 19) == kBlack || picture.At(10, 20) == kBlack);
    slope->ClearFlags(MaterialFlagPolygonOffset);
    wall->ClearFlags(MaterialFlagPolygonOffset);
    EXPECT_LT(Draw().Count(kBlack), black) << "the slope hides one half of the line";
    MakeRoom();
    EXPECT_EQ(Draw().Count(kBlack), black);
}

TEST_F(LineRoomTest, SettingsAreThereAfterTheFrame)
{
    glColorMask(GL_TRUE, GL_FALSE, GL_TRUE, GL_TRUE);
    Draw();
    GLboolean mask[4] = {};
    glGetBooleanv(GL_COLOR_WRITEMASK, mask);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    EXPECT_EQ(mask[0], GL_TRUE);
    EXPECT_EQ(mask[1], GL_FALSE);
    for (const Material* material : {slope, wall})
    {
        EXPECT_TRUE(FeatureEdges::HasRoom(*material));
    }
}

TEST_F(LineRoomTest, AnOffsetOfTheHostStays)
{
    // Moved back far enough to lie behind the wall.
    slope->polygonOffsetFactor = 0.0f;
    slope->polygonOffsetUnits = 1e7f;
    EXPECT_FALSE(FeatureEdges::HasRoom(*slope));
    EXPECT_GT(Draw().Count(kRed), 0);
}

TEST_F(LineRoomTest, WhatIsDrawnByItsDrawIDHidesLinesToo)
{
    // A second line behind the slope.
    AddLine(Vector(0, 10, -40), Vector(static_cast<float>(Width()), 10, -40), Color(0, 0, 0), 2.0f);
    const Picture whole = Draw();
    World().MarkDirty();
    app.Update(0.0f);
    slopeMesh->SetDrawID(World().GetUpdateID());
    app.Render(renderer.get(), false);
    ExpectSame(ReadPixels(), whole, "with a draw ID");
    EXPECT_FALSE(slopeMesh->ReadyToDraw()) << "it is used up";
}

TEST_F(LineRoomTest, WithoutLinesTheDepthIsDrawnOnce)
{
    renderer->ShowLines(false);
    const Picture picture = Draw();
    EXPECT_EQ(picture.Count(kBlack), 0);
    EXPECT_EQ(picture.Count(kGreen), Width() * Height());
}
