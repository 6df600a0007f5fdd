#define GL_GLEXT_PROTOTYPES

#include "orvane_host/present/Picking.h"

#include "orvane_host/present/PresentationRenderer.h"
#include "orvane_host/present/detail/PickEffect.h"
#include "orvane/effects/EffectES20.h"
#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/math/Quaternion.h"
#include "orvane/math/Transform.h"
#include "orvane/platform/ESTextureLoader.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/NodeMaterial.h"
#include "orvane/scene/RawLine.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"
#include "orvane/scene/SimMaterial.h"
#include "tests/effects/EffectSettingsGuard.h"
#include "tests/support/GLFixture.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

using namespace OV;
using namespace OV::Host;
using OV::Test::GLState;
using OV::Test::GLStateValues;
using OV::Test::Picture;

namespace
{

using MeshAtNode = std::pair<Mesh*, MeshNode*>;

/// A square of edge 4 about the origin that faces +z.
std::shared_ptr<RawMesh> MakeSquare()
{
    auto raw = std::make_shared<RawMesh>();
    raw->StartDescription();
    raw->SetPositionBuffer({Vector(-2, -2, 0), Vector(2, -2, 0), Vector(2, 2, 0), Vector(-2, 2, 0)});
    raw->SetNormalBuffer(std::vector<Vector>(4, Vector(0, 0, 1)));
    raw->SetIndices({0, 1, 2, 0, 2, 3});
    raw->EndDescription(true);
    return raw;
}

Transform At(float x, float y, float z)
{
    Transform place;
    place.SetPosition(Vector(x, y, z));
    return place;
}

/// Turned about an axis by an angle in radians.
Transform Turned(const Vector& axis, float angle, const Vector& position = Vector())
{
    Quaternion turn;
    const float s = std::sin(angle / 2.0f);
    turn.x = axis.x * s;
    turn.y = axis.y * s;
    turn.z = axis.z * s;
    turn.w = std::cos(angle / 2.0f);
    Transform place;
    place.SetRotation(turn);
    place.SetPosition(position);
    return place;
}

/// The eye is 5 before a square of edge 4, in a view 10 high and wide at the square.
struct PickingTest : OV::Test::GLFixture
{
    static constexpr float Turn = 3.14159265f;
    static constexpr int Middle = DefaultSize / 2;
    static constexpr float PixelsPerUnit = DefaultSize / 10.0f;

    OV::Test::EffectSettingsGuard settings;
    Platform::Linux::ESTextureLoader loader;
    AppContext app;
    std::unique_ptr<PresentationRenderer> renderer;
    std::unique_ptr<Picking> picking;
    Scene* scene = nullptr;
    CameraNode* camera = nullptr;
    Material* material = nullptr;
    MeshAtNode square;

    PickingTest()
    {
        renderer = std::make_unique<PresentationRenderer>(&loader, app.GetContext()->GetRenderCapabilities());
        picking = std::make_unique<Picking>(*renderer);
        app.GetContext()->SetScene(std::make_unique<Scene>());
        scene = app.GetContext()->GetScene();
        camera = scene->GetCameraNode();
        app.SetScreenSize(Width(), Height());
        renderer->Resize(Width(), Height());
        camera->SetFOV(0.78539816f);
        camera->SetLocal(At(0, 0, 5));
        material = AddMaterial();
        square = AddSquare(*material);
        Update();
    }

    ~PickingTest() override { app.Suspend(renderer.get()); }

    Material* AddMaterial()
    {
        auto* made = new Material("material");
        scene->AddMaterial(made);
        return made;
    }

    MeshNode* AddNode(const Transform& place = Transform())
    {
        auto* node = new MeshNode(scene);
        scene->GetRoot()->AddChild(node, false);
        node->SetLocal(place);
        return node;
    }

    Mesh* AddMesh(Material& of, const std::shared_ptr<RawMesh>& raw = MakeSquare())
    {
        auto* mesh = new Mesh(raw, scene);
        of.AddMesh(mesh);
        return mesh;
    }

    MeshAtNode AddSquare(Material& of, const Transform& place = Transform())
    {
        Mesh* const mesh = AddMesh(of);
        MeshNode* const node = AddNode(place);
        mesh->AddNode(node);
        return {mesh, node};
    }

    void Update()
    {
        scene->MarkDirty();
        app.Update(0.0f);
    }

    std::vector<PickHit> Pick(const PickArea& area) { return picking->Pick(*scene, *camera, area); }

    std::vector<PickHit> PickThrough(int x = Middle, int y = Middle, int most = 16)
    {
        return picking->PickThrough(*scene, *camera, x, y, most);
    }

    static std::vector<MeshAtNode> WhatOf(const std::vector<PickHit>& hits)
    {
        std::vector<MeshAtNode> what;
        for (const PickHit& hit : hits)
        {
            what.emplace_back(hit.mesh, hit.node);
        }
        return what;
    }

    std::vector<MeshAtNode> What(const PickArea& area = {Middle, Middle, 1, 1}) { return WhatOf(Pick(area)); }

    /// Of a distance from the eye along the line of sight, in perspective.
    double DepthOf(double distance) const
    {
        float nearDistance = 0.0f;
        float farDistance = 0.0f;
        camera->GetNearFar(nearDistance, farDistance);
        const double n = nearDistance;
        const double f = farDistance;
        return f / (f - n) - f * n / ((f - n) * distance);
    }

    static void ExpectNear(const Vector& actual, float x, float y, float z, float tolerance = 2e-4f)
    {
        EXPECT_NEAR(actual.x, x, tolerance);
        EXPECT_NEAR(actual.y, y, tolerance);
        EXPECT_NEAR(actual.z, z, tolerance);
    }
};

using Found = std::vector<MeshAtNode>;

} // namespace

TEST_F(PickingTest, ASurfaceIsFoundWhereItIsAndNothingBesideIt)
{
    EXPECT_EQ(What(), (Found{square}));
    // The square ends 25.6 pixels from the middle.
    EXPECT_EQ(What({Middle + 25, Middle, 1, 1}), (Found{square}));
    EXPECT_EQ(What({Middle + 26, Middle, 1, 1}), (Found{}));
    EXPECT_EQ(What({Middle - 26, Middle, 1, 1}), (Found{square}));
    EXPECT_EQ(What({Middle - 27, Middle, 1, 1}), (Found{}));
}

TEST_F(PickingTest, AHitTellsPixelDepthAndThePlaceInTheWorld)
{
    const std::vector<PickHit> hits = Pick({70, 50, 1, 1});
    ASSERT_EQ(hits.size(), 1u);
    EXPECT_EQ(hits[0].x, 70);
    EXPECT_EQ(hits[0].y, 50);
    EXPECT_NEAR(hits[0].depth, DepthOf(5.0), 1e-6);
    ExpectNear(hits[0].position, 6.5f / PixelsPerUnit, 13.5f / PixelsPerUnit, 0.0f);
}

TEST_F(PickingTest, RowsCountFromTheTop)
{
    square.second->SetLocal(At(0, 2.5f, 0));
    Update();
    EXPECT_EQ(What({Middle, 10, 1, 1}), (Found{square}));
    EXPECT_EQ(What({Middle, Height() - 1 - 10, 1, 1}), (Found{}));
    // The square ends 57.6 pixels above the middle.
    EXPECT_EQ(What({Middle, 6, 1, 1}), (Found{square}));
    EXPECT_EQ(What({Middle, 5, 1, 1}), (Found{}));
    EXPECT_EQ(What({0, 0, Width(), 6}), (Found{}));
}

TEST_F(PickingTest, ThePlaceIsThatOfATurnedSurfaceSeenByACameraThatIsTurnedToo)
{
    square.second->SetLocal(Turned(Vector(0, 1, 0), 0.6f, Vector(20, 3, -7)));
    camera->SetLocal(Turned(Vector(0, 1, 0), 0.3f, Vector(21, 3.5f, -3)));
    Update();
    const std::vector<PickHit> hits = Pick({40, 60, 1, 1});
    ASSERT_EQ(hits.size(), 1u);
    // The ray through the pixel's middle, cut with the plane of the square, in double.
    const double c = std::cos(0.3);
    const double s = std::sin(0.3);
    const double u = (40.5 - Middle) / Middle;
    const double v = (Middle - 60.5) / Middle;
    const double dx = u * c - s;
    const double dz = -u * s - c;
    const double nx = std::sin(0.6);
    const double nz = std::cos(0.6);
    const double t = ((20.0 - 21.0) * nx + (-7.0 + 3.0) * nz) / (dx * nx + dz * nz);
    ExpectNear(hits[0].position, static_cast<float>(21.0 + t * dx), static_cast<float>(3.5 + t * v),
               static_cast<float>(-3.0 + t * dz), 1e-3f);
}

TEST_F(PickingTest, WhatIsBehindIsNotSeen)
{
    const MeshAtNode behind = AddSquare(*material, At(1, 0, -1));
    Update();
    EXPECT_EQ(What(), (Found{square}));
    EXPECT_EQ(What({Middle + 27, Middle, 1, 1}), (Found{behind}));
}

TEST_F(PickingTest, WhatIsHiddenIsNotFound)
{
    square.second->SetFlags(NodeFlagHidden, false);
    EXPECT_EQ(What(), (Found{}));
    square.second->ClearFlags(NodeFlagHidden, false);
    EXPECT_EQ(What(), (Found{square}));
}

TEST_F(PickingTest, WhatIsCulledIsNotFound)
{
    square.second->SetFlags(NodeFlagCulled, false);
    EXPECT_EQ(What(), (Found{}));
}

TEST_F(PickingTest, WhatAPlaneClipsAwayIsNotFound)
{
    const MeshAtNode behind = AddSquare(*material, At(0, 0, -1));
    EffectES20::AddClipPlane(glm::vec3(1, 0, 0), glm::vec3(0, 0, 0));
    Update();
    EXPECT_EQ(What({Middle - 2, Middle, 1, 1}), (Found{square}));
    EXPECT_EQ(What({Middle + 2, Middle, 1, 1}), (Found{}));
    EffectES20::ClearClipPlanes();
    EffectES20::AddClipPlane(glm::vec3(0, 0, 1), glm::vec3(0, 0, -0.5f));
    EXPECT_EQ(What(), (Found{behind}));
}

TEST_F(PickingTest, WhatTurnsItsBackIsFoundOnlyWhereBacksAreDrawn)
{
    square.second->SetLocal(Turned(Vector(0, 1, 0), Turn));
    Update();
    EXPECT_EQ(What(), (Found{}));
    material->SetFlags(MaterialFlagNoCull);
    EXPECT_EQ(What(), (Found{square}));
    material->ClearFlags(MaterialFlagNoCull);
    EXPECT_EQ(What(), (Found{}));
    square.first->SetFlags(MeshFlagNoCull);
    EXPECT_EQ(What(), (Found{square}));
}

TEST_F(PickingTest, AMirrorTurnsTheFrontIntoTheBack)
{
    Transform mirror;
    mirror.SetScale(Vector(-1, 1, 1));
    square.second->SetLocal(mirror);
    Update();
    EXPECT_EQ(What(), (Found{}));
    square.second->SetLocal(Turned(Vector(0, 1, 0), Turn));
    Transform both = square.second->GetLocal();
    both.SetScale(Vector(-1, 1, 1));
    square.second->SetLocal(both);
    Update();
    EXPECT_EQ(What(), (Found{square}));
}

TEST_F(PickingTest, NodesOfOneMeshAreToldApart)
{
    MeshNode* const right = AddNode(At(4, 0, 0));
    square.first->AddNode(right);
    Update();
    EXPECT_EQ(What(), (Found{square}));
    EXPECT_EQ(What({Middle + 28, Middle, 1, 1}), (Found{{square.first, right}}));
}

TEST_F(PickingTest, UserDataDoNotMatterAndStay)
{
    const MeshAtNode behind = AddSquare(*material, At(1, 0, -1));
    square.second->SetUserData(77);
    behind.second->SetUserData(77);
    Update();
    EXPECT_EQ(What({0, 0, Width(), Height()}), (Found{square, behind}));
    EXPECT_EQ(square.second->GetUserData(), 77);
    EXPECT_EQ(behind.second->GetUserData(), 77);
}

TEST_F(PickingTest, MeshesOfOneGeometryAreToldApart)
{
    Material* const other = AddMaterial();
    Mesh* const sameMaterial = AddMesh(*material, square.first->GetRawMesh());
    MeshNode* const left = AddNode(At(-4, 0, 0));
    sameMaterial->AddNode(left);
    Mesh* const otherMaterial = AddMesh(*other, square.first->GetRawMesh());
    MeshNode* const right = AddNode(At(4, 0, 0));
    otherMaterial->AddNode(right);
    Update();
    EXPECT_EQ(What({Middle - 28, Middle, 1, 1}), (Found{{sameMaterial, left}}));
    EXPECT_EQ(What(), (Found{square}));
    EXPECT_EQ(What({Middle + 28, Middle, 1, 1}), (Found{{otherMaterial, right}}));
}

TEST_F(PickingTest, MeshesOfOneGeometryAtOneNodeAreToldApartByTheirMaterials)
{
    Mesh* const second = AddMesh(*AddMaterial(), square.first->GetRawMesh());
    second->AddNode(square.second);
    Update();
    std::vector<MeshAtNode> what = WhatOf(PickThrough());
    std::sort(what.begin(), what.end());
    Found both{square, {second, square.second}};
    std::sort(both.begin(), both.end());
    EXPECT_EQ(what, both);
}

TEST_F(PickingTest, MeshesThatNothingTellsApartAreFoundOnce)
{
    Mesh* const second = AddMesh(*material, square.first->GetRawMesh());
    second->AddNode(square.second);
    Update();
    EXPECT_EQ(What({0, 0, Width(), Height()}), (Found{square}));
    EXPECT_EQ(WhatOf(PickThrough()), (Found{square}));
}

TEST_F(PickingTest, ANodeWithAMaterialOfItsOwnIsFound)
{
    Mesh* const other = AddMesh(*material);
    other->AddNode(square.second);
    auto* own = new NodeMaterial;
    scene->AddMaterial(own);
    own->AddNode(square.second);
    MeshNode* const plain = AddNode(At(4, 0, 0));
    square.first->AddNode(plain);
    Update();
    EXPECT_EQ(What(), (Found{square}));
    EXPECT_EQ(What({Middle + 28, Middle, 1, 1}), (Found{{square.first, plain}}));
    EXPECT_EQ(WhatOf(PickThrough()), (Found{square, {other, square.second}}));
}

TEST_F(PickingTest, SeeThroughSurfacesAreSurfaces)
{
    auto* glass = new Material("glass");
    glass->SetDiffuse(Color(1.0f, 1.0f, 1.0f, 0.1f));
    scene->AddMaterial(glass);
    const MeshAtNode pane = AddSquare(*glass, At(0, 0, 1));
    Update();
    ASSERT_EQ(scene->GetAlphaMaterials().size(), 1u);
    EXPECT_EQ(What(), (Found{pane}));
    EXPECT_EQ(WhatOf(PickThrough()), (Found{pane, square}));
}

TEST_F(PickingTest, MaterialsWithoutIdentifiersAreLeftOut)
{
    auto* sim = new SimMaterial("sim");
    scene->AddMaterial(sim);
    AddSquare(*sim, At(0, 0, 1));
    Update();
    EXPECT_EQ(WhatOf(PickThrough()), (Found{square}));
}

TEST_F(PickingTest, LinesAreLeftOut)
{
    auto* style = new LineStyle("style");
    style->width = 20.0f;
    scene->AddLineStyle(style);
    auto raw = std::make_shared<RawLine>();
    raw->SetPositionBuffer({Vector(-4, 0, 1), Vector(4, 0, 1)});
    raw->SetIndices({0, 1});
    auto* line = new Line(raw, scene);
    style->AddLine(line);
    line->AddNode(AddNode());
    Update();
    EXPECT_EQ(WhatOf(PickThrough()), (Found{square}));
    EXPECT_EQ(What({Middle + 30, Middle, 1, 1}), (Found{}));
}

TEST_F(PickingTest, PointsAreFoundAsLargeAsTheyAreDrawn)
{
    material->SetFlags(MaterialFlagPoints);
    material->pointSize = 9.0f;
    // A corner of the square lies 25.6 pixels from the middle both ways.
    EXPECT_EQ(What(), (Found{}));
    EXPECT_EQ(What({Middle + 25, Middle - 26, 1, 1}), (Found{square}));
    EXPECT_EQ(What({Middle + 25 + 3, Middle - 26 - 3, 1, 1}), (Found{square}));
    EXPECT_EQ(What({Middle + 25 + 6, Middle - 26, 1, 1}), (Found{}));
    material->pointSize = 0.0f;
    EXPECT_EQ(What({Middle + 20, Middle - 32, 12, 12}), (Found{square}));
    EXPECT_EQ(What({Middle + 25 + 3, Middle - 26 - 3, 1, 1}), (Found{}));
}

TEST_F(PickingTest, WhatPassesWhateverTheDepthIsWhatIsSeen)
{
    Material* const marker = AddMaterial();
    marker->SetFlags(MaterialFlagAlwaysPass);
    const MeshAtNode mark = AddSquare(*marker, At(0, 0, -1));
    Update();
    EXPECT_EQ(WhatOf(PickThrough()), (Found{mark, square}));
}

TEST_F(PickingTest, AnAreaGivesEachMeshAtANodeOnceTheNearestFirst)
{
    const MeshAtNode before = AddSquare(*material, At(-3, 0, 1));
    const MeshAtNode behind = AddSquare(*material, At(3, 0, -1));
    Update();
    const std::vector<PickHit> hits = Pick({0, 0, Width(), Height()});
    EXPECT_EQ(WhatOf(hits), (Found{before, square, behind}));
    ASSERT_EQ(hits.size(), 3u);
    EXPECT_NEAR(hits[0].depth, DepthOf(4.0), 1e-6);
    EXPECT_NEAR(hits[1].depth, DepthOf(5.0), 1e-6);
    EXPECT_NEAR(hits[2].depth, DepthOf(6.0), 1e-6);
}

TEST_F(PickingTest, AHitIsThePixelWhereItIsNearestInTheArea)
{
    // The right edge comes nearer, so that of each row the last pixel is the nearest.
    square.second->SetLocal(Turned(Vector(0, 1, 0), -0.5f));
    Update();
    const std::vector<PickHit> hits = Pick({Middle - 10, Middle - 5, 20, 10});
    ASSERT_EQ(hits.size(), 1u);
    EXPECT_EQ(hits[0].x, Middle + 9);
    const std::vector<PickHit> same = Pick({hits[0].x, hits[0].y, 1, 1});
    ASSERT_EQ(same.size(), 1u);
    EXPECT_EQ(hits[0].depth, same[0].depth);
    EXPECT_GT(hits[0].position.z, 0.0f);
}

TEST_F(PickingTest, OfPixelsOfOneDepthTheFirstInReadingOrderCounts)
{
    MeshNode* const right = AddNode(At(2.5f, 0, 0));
    square.first->AddNode(right);
    camera->SetProjection(CameraNode::Orthographic);
    camera->SetDistanceToTarget(5.0f);
    square.second->SetLocal(At(-2.5f, -1, 0));
    Update();
    const std::vector<PickHit> hits = Pick({0, 0, Width(), Height()});
    ASSERT_EQ(WhatOf(hits), (Found{{square.first, right}, square}));
    EXPECT_EQ(hits[0].depth, hits[1].depth);
    EXPECT_EQ(hits[0].x, 70) << "0.5 right of the middle";
    EXPECT_EQ(hits[0].y, 38) << "2 above the middle";
    EXPECT_EQ(hits[1].x, 6);
    EXPECT_EQ(hits[1].y, 51);
}

TEST_F(PickingTest, AnOrthographicCameraGivesDepthAndPlaceToo)
{
    camera->SetProjection(CameraNode::Orthographic);
    camera->SetDistanceToTarget(5.0f);
    Update();
    const std::vector<PickHit> hits = Pick({70, 50, 1, 1});
    ASSERT_EQ(hits.size(), 1u);
    float nearDistance = 0.0f;
    float farDistance = 0.0f;
    camera->GetNearFar(nearDistance, farDistance);
    EXPECT_NEAR(hits[0].depth, (5.0 - nearDistance) / (farDistance - nearDistance), 1e-6);
    ExpectNear(hits[0].position, 6.5f / PixelsPerUnit, 13.5f / PixelsPerUnit, 0.0f);
}

TEST_F(PickingTest, AnAreaCountsAsFarAsItIsInside)
{
    constexpr int largest = std::numeric_limits<int>::max();
    constexpr int smallest = std::numeric_limits<int>::min();
    EXPECT_EQ(What({-50, -50, 50 + Middle, 50 + Middle}), (Found{square}));
    EXPECT_EQ(What({Middle, Middle, largest, largest}), (Found{square}));
    EXPECT_EQ(What({-largest, -largest, largest, largest}), (Found{}));
    EXPECT_EQ(What({-1, Middle, 1, 1}), (Found{}));
    EXPECT_EQ(What({Width(), Middle, 1, 1}), (Found{}));
    EXPECT_EQ(What({Middle, Height(), 1, 1}), (Found{}));
    EXPECT_EQ(What({Middle, Middle, 0, 1}), (Found{}));
    EXPECT_EQ(What({Middle, Middle, 1, 0}), (Found{}));
    EXPECT_EQ(What({Middle, Middle, -3, 5}), (Found{}));
    EXPECT_EQ(What({Middle, Middle, 5, smallest}), (Found{}));
    EXPECT_EQ(What({largest, smallest, largest, largest}), (Found{}));
    const std::vector<PickHit> hits = Pick({-50, -50, 50 + Middle, 50 + Middle});
    ASSERT_EQ(hits.size(), 1u);
    EXPECT_GE(hits[0].x, 38);
    EXPECT_GE(hits[0].y, 38);
    EXPECT_LT(hits[0].x, Middle);
    EXPECT_LT(hits[0].y, Middle);
}

TEST_F(PickingTest, PickingThroughGivesWhatIsBehindInItsOrder)
{
    const MeshAtNode farthest = AddSquare(*material, At(0, 0, -2));
    const MeshAtNode nearest = AddSquare(*AddMaterial(), At(0, 0, 2));
    const MeshAtNode beside = AddSquare(*material, At(4.2f, 0, 0));
    Update();
    const std::vector<PickHit> hits = PickThrough();
    EXPECT_EQ(WhatOf(hits), (Found{nearest, square, farthest}));
    ASSERT_EQ(hits.size(), 3u);
    for (const auto& [hit, z] : {std::pair(hits[0], 2.0f), std::pair(hits[1], 0.0f), std::pair(hits[2], -2.0f)})
    {
        EXPECT_NEAR(hit.depth, DepthOf(5.0 - z), 1e-6);
        EXPECT_NEAR(hit.position.z, z, 1e-3f);
        EXPECT_EQ(hit.x, Middle);
        EXPECT_EQ(hit.y, Middle);
    }
    EXPECT_EQ(WhatOf(PickThrough()), (Found{nearest, square, farthest})) << "nothing is left out the next time";
    EXPECT_EQ(What({0, 0, Width(), Height()}), (Found{nearest, beside}));
}

TEST_F(PickingTest, PickingThroughStopsAtTheMostThatIsAskedFor)
{
    const MeshAtNode nearest = AddSquare(*material, At(0, 0, 2));
    Update();
    EXPECT_EQ(WhatOf(PickThrough(Middle, Middle, 1)), (Found{nearest}));
    EXPECT_EQ(WhatOf(PickThrough(Middle, Middle, 2)), (Found{nearest, square}));
    EXPECT_EQ(WhatOf(PickThrough(Middle, Middle, 0)), (Found{}));
    EXPECT_EQ(WhatOf(PickThrough(Middle, Middle, -1)), (Found{}));
    EXPECT_EQ(WhatOf(PickThrough(2, 2)), (Found{}));
    EXPECT_EQ(WhatOf(PickThrough(-1, 2)), (Found{}));
}

TEST_F(PickingTest, PickingThroughGivesASolidOnceWhereItIsNearest)
{
    // A second square in the same mesh, a bit farther off, seen through its back.
    auto raw = std::make_shared<RawMesh>();
    raw->StartDescription();
    raw->SetPositionBuffer({Vector(-2, -2, 1), Vector(2, -2, 1), Vector(2, 2, 1), Vector(-2, -2, 0.5f),
                            Vector(2, 2, 0.5f), Vector(2, -2, 0.5f)});
    raw->SetIndices({0, 1, 2, 3, 4, 5});
    raw->EndDescription(true);
    Mesh* const solid = AddMesh(*material, raw);
    MeshNode* const node = AddNode();
    solid->AddNode(node);
    material->SetFlags(MaterialFlagNoCull);
    Update();
    const std::vector<PickHit> hits = PickThrough(Middle + 5, Middle);
    EXPECT_EQ(WhatOf(hits), (Found{{solid, node}, square}));
    EXPECT_NEAR(hits.at(0).position.z, 1.0f, 1e-3f);
}

TEST_F(PickingTest, NothingIsFoundInAViewWithoutASize)
{
    renderer->Resize(0, 0);
    EXPECT_EQ(What(), (Found{}));
    EXPECT_EQ(WhatOf(PickThrough()), (Found{}));
    renderer->Resize(Width(), Height());
    EXPECT_EQ(What(), (Found{square}));
}

TEST_F(PickingTest, TheViewMayChangeItsSize)
{
    EXPECT_EQ(What(), (Found{square}));
    renderer->Resize(2 * Width(), Height());
    app.SetScreenSize(2 * Width(), Height());
    Update();
    // The height stays 10 units.
    EXPECT_EQ(What(), (Found{}));
    EXPECT_EQ(What({Width(), Middle, 1, 1}), (Found{square}));
    const std::vector<PickHit> hits = Pick({Width() + 6, 50, 1, 1});
    ASSERT_EQ(hits.size(), 1u);
    ExpectNear(hits[0].position, 6.5f / PixelsPerUnit, 13.5f / PixelsPerUnit, 0.0f);
    renderer->Resize(Width(), Height());
}

TEST_F(PickingTest, DrawIdsAreKept)
{
    const MeshAtNode other = AddSquare(*material, At(0, 0, 1));
    Update();
    square.first->SetDrawID(scene->GetUpdateID());
    other.first->SetDrawID(scene->GetUpdateID() + 1);
    EXPECT_EQ(WhatOf(PickThrough()), (Found{square}));
    EXPECT_EQ(WhatOf(PickThrough()), (Found{square}));
    EXPECT_TRUE(square.first->ReadyToDraw());
    EXPECT_TRUE(square.first->UsingDrawID());
    EXPECT_FALSE(other.first->ReadyToDraw());
}

TEST_F(PickingTest, TheStateOfGLStaysAsItWas)
{
    GLuint pack = 0;
    glGenBuffers(1, &pack);
    material->SetFlags(MaterialFlagPolygonOffset);
    square.first->SetFlags(MeshFlagNoCull);
    Material* const points = AddMaterial();
    points->SetFlags(MaterialFlagPoints);
    points->pointSize = 7.0f;
    AddSquare(*points);
    Update();
    const GLStateValues start = GLState::Capture();
    for (const bool on : {false, true})
    {
        const auto set = [on](GLenum name) { (on ? glEnable : glDisable)(name); };
        for (const GLenum name : {GL_SCISSOR_TEST, GL_DITHER, GL_BLEND, GL_CULL_FACE, GL_DEPTH_TEST,
                                  GL_POLYGON_OFFSET_FILL})
        {
            set(name);
        }
        glDepthMask(on ? GL_TRUE : GL_FALSE);
        // The scissor must not cut the drawing: the square is outside it.
        glScissor(1, 2, 3, 4);
        glViewport(5, 6, 7, 8);
        glClearColor(0.1f, 0.2f, 0.3f, 0.4f);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glPixelStorei(GL_PACK_ROW_LENGTH, 31);
        glPixelStorei(GL_PACK_SKIP_ROWS, 2);
        glPixelStorei(GL_PACK_SKIP_PIXELS, 3);
        glPixelStorei(GL_PACK_SWAP_BYTES, GL_TRUE);
        glBindBuffer(GL_PIXEL_PACK_BUFFER, pack);
        glPointSize(3.0f);
        GLStateValues before = GLState::Capture();

        EXPECT_EQ(What({Middle, Middle, 5, 3}), (Found{square}));
        EXPECT_EQ(WhatOf(PickThrough()), (Found{square}));

        GLStateValues after = GLState::Capture();
        for (const char* documented : {"program", "array buffer", "element buffer"})
        {
            before.erase(documented);
            after.erase(documented);
        }
        EXPECT_EQ(before, after);
        GLint values[5] = {};
        glGetIntegerv(GL_PACK_ROW_LENGTH, &values[0]);
        glGetIntegerv(GL_PACK_SKIP_ROWS, &values[1]);
        glGetIntegerv(GL_PACK_SKIP_PIXELS, &values[2]);
        glGetIntegerv(GL_PACK_SWAP_BYTES, &values[3]);
        glGetIntegerv(GL_PIXEL_PACK_BUFFER_BINDING, &values[4]);
        EXPECT_EQ(values[0], 31);
        EXPECT_EQ(values[1], 2);
        EXPECT_EQ(values[2], 3);
        EXPECT_EQ(values[3], GL_TRUE);
        EXPECT_EQ(values[4], static_cast<GLint>(pack));
        GLfloat pointSize = 0.0f;
        glGetFloatv(GL_POINT_SIZE, &pointSize);
        EXPECT_EQ(pointSize, 3.0f);
    }
    glDeleteBuffers(1, &pack);
    for (const GLenum name : {GL_PACK_ROW_LENGTH, GL_PACK_SKIP_ROWS, GL_PACK_SKIP_PIXELS, GL_PACK_SWAP_BYTES})
    {
        glPixelStorei(name, 0);
    }
    glPointSize(1.0f);
    glScissor(static_cast<GLint>(start.at("scissor box")[0]), static_cast<GLint>(start.at("scissor box")[1]),
              static_cast<GLsizei>(start.at("scissor box")[2]), static_cast<GLsizei>(start.at("scissor box")[3]));
    GLState::Reset();
}

TEST_F(PickingTest, TheBoundFramebuffersAndTheirPixelsStay)
{
    glClearColor(0.0f, 1.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    const Picture before = ReadPixels();
    GLuint other = 0;
    glGenFramebuffers(1, &other);
    GLint own = 0;
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &own);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, other);
    EXPECT_EQ(What({0, 0, Width(), Height()}), (Found{square}));
    GLint bound = 0;
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &bound);
    EXPECT_EQ(bound, static_cast<GLint>(other));
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &bound);
    EXPECT_EQ(bound, own);
    glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(own));
    glDeleteFramebuffers(1, &other);
    EXPECT_EQ(ReadPixels(), before);
}

TEST_F(PickingTest, AFrameLooksTheSameAfterAPick)
{
    renderer->SetEdges(EdgeLook());
    renderer->ShowAmbientOcclusion(true);
    scene->GetRoot()->AddChild(new LightNode(scene), false);
    const auto draw = [this]
    {
        Update();
        app.Render(renderer.get(), false);
        return ReadPixels();
    };
    const Picture before = draw();
    EXPECT_EQ(What(), (Found{square}));
    EXPECT_EQ(draw(), before);
}

TEST_F(PickingTest, WhatTheRendererShowsOfTheSurfacesDoesNotMatter)
{
    renderer->ShowSurfaces(false);
    renderer->ShowLines(false);
    renderer->ShowSky(true);
    renderer->SetLook(Look::Crosshatch);
    EXPECT_EQ(What(), (Found{square}));
    EXPECT_EQ(What({2, 2, 1, 1}), (Found{}));
}

TEST_F(PickingTest, SuspendGivesTheBuffersBackAndTheNextPickMakesThemAnew)
{
    const auto counted = [](const char* kind)
    { return GLState::CaptureObjects().at(kind).size(); };
    const std::size_t framebuffers = counted("framebuffer");
    const std::size_t textures = counted("texture");
    picking->Suspend();
    EXPECT_EQ(What(), (Found{square}));
    EXPECT_EQ(counted("framebuffer"), framebuffers + 1);
    EXPECT_EQ(counted("texture"), textures + 2);
    const std::size_t programs = counted("program");
    picking->Suspend();
    EXPECT_EQ(counted("framebuffer"), framebuffers);
    EXPECT_EQ(counted("texture"), textures);
    GLState::Unbind();
    EXPECT_EQ(counted("program"), programs - 1);
    picking->Suspend();
    app.Suspend(renderer.get());
    app.Resume(renderer.get());
    Update();
    EXPECT_EQ(What(), (Found{square}));
}

TEST_F(PickingTest, BuffersAreMadeOnceForASize)
{
    Pick({0, 0, Width(), Height()});
    const auto objects = GLState::CaptureObjects();
    Pick({3, 4, 5, 6});
    PickThrough();
    EXPECT_EQ(GLState::CaptureObjects(), objects);
}

TEST_F(PickingTest, MoreNodesThanTwoChannelsHoldAreToldApart)
{
    for (int i = 0; i < 0x10000; ++i)
    {
        square.first->AddNode(AddNode(At(0, 0, -1)));
    }
    MeshNode* const first = AddNode(At(0, 0, 2));
    MeshNode* const second = AddNode(At(0, 0, 1));
    square.first->AddNode(first);
    square.first->AddNode(second);
    Update();
    EXPECT_EQ(WhatOf(PickThrough(Middle, Middle, 3)),
              (Found{{square.first, first}, {square.first, second}, square}));
}

TEST(PickEffect, NumbersAndColoursStandForEachOther)
{
    for (const unsigned int number : {0u, 1u, 255u, 256u, 0xFFFFu, 0x10000u, 0x123456u, Detail::PickEffect::MostNumbers})
    {
        float color[4];
        Detail::PickEffect::Encode(number, color);
        unsigned char pixel[3];
        for (int i = 0; i < 3; ++i)
        {
            pixel[i] = static_cast<unsigned char>(std::lround(color[i] * 255.0f));
        }
        EXPECT_EQ(Detail::PickEffect::Decode(pixel), number);
        EXPECT_EQ(color[3], 1.0f);
    }
}
