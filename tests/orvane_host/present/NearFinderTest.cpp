#include "orvane_host/present/detail/NearFinder.h"

#include "orvane_host/geometry/Primitives.h"
#include "orvane_host/geometry/SectionFill.h"
#include "orvane_host/view/ViewFit.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawLine.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"
#include "tests/orvane_host/present/NearestByHand.h"
#include "tests/orvane_host/present/SettingsDice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

namespace OV::Test
{

namespace
{

using Host::SectionPlane;
using Host::Detail::NearFinder;
using Host::Detail::NearView;

constexpr double kAspect = 1.5;
constexpr std::size_t kAll = NearFinder::kAllCorners;
constexpr double kNothing = std::numeric_limits<double>::infinity();

class NearFinderTest : public testing::Test
{
protected:
    NearFinderTest()
    {
        scene.AddMaterial(material);
        Look(Vector(0, 0, 0), Vector(0, 0, -1));
    }

    void Look(const Vector& eye, const Vector& target)
    {
        Host::ViewFitOptions options;
        options.aspect = static_cast<float>(kAspect);
        options.fovDegrees = 50.0f;
        ASSERT_TRUE(Host::ViewFit::Look(*scene.GetCameraNode(), eye, target, Vector(0, 1, 0), Vector(-20, -20, -20),
                                        Vector(20, 20, 20), options));
    }

    MeshNode& AddNode(Mesh& mesh, const Vector& place)
    {
        auto* const node = new MeshNode(&scene);
        scene.GetRoot()->AddChild(node, false);
        mesh.AddNode(node);
        Move(*node, place);
        return *node;
    }

    Mesh& AddMesh(const std::shared_ptr<RawMesh>& raw)
    {
        auto* const mesh = new Mesh(raw, &scene);
        material->AddMesh(mesh);
        return *mesh;
    }

    static void Move(Node& node, const Vector& place, double turn = 0.0, double size = 1.0)
    {
        QGM::Transf3d to;
        const double rows[3][3] = {{std::cos(turn), 0.0, std::sin(turn)}, {0.0, 1.0, 0.0},
                                   {-std::sin(turn), 0.0, std::cos(turn)}};
        for (int row = 0; row < 3; ++row)
        {
            for (int column = 0; column < 3; ++column)
            {
                to.m[row][column] = size * rows[row][column];
            }
        }
        to.m[0][3] = place.x;
        to.m[1][3] = place.y;
        to.m[2][3] = place.z;
        Transform transform;
        transform.SetTransf3d(to);
        node.SetLocal(transform);
    }

    /// A box, in the middle of which nothing is.
    static std::shared_ptr<RawMesh> BoxOf(float half)
    {
        return Host::Primitives::Box(Vector(-half, -half, -half), Vector(half, half, half));
    }

    static Vector AnyPlace(Dice& dice, float reach)
    {
        const auto any = [&] { return reach * (2.0f * dice.Share() - 1.0f); };
        return {any(), any(), any()};
    }

    double Find(const std::vector<SectionPlane>& cuts = {}, std::size_t most = kAll)
    {
        scene.UpdateGraph(300.0f, 200.0f);
        return finder.Find(NearView(*scene.GetCameraNode(), kAspect, {}, cuts), 1e-9, most);
    }

    double FindByHand(const std::vector<SectionPlane>& cuts = {})
    {
        scene.UpdateGraph(300.0f, 200.0f);
        return NearestByHand(scene, *scene.GetCameraNode(), kAspect, cuts);
    }

    /// @return how near what is seen lies.
    double ExpectAsByHand(const std::string& what, const std::vector<SectionPlane>& cuts = {})
    {
        const double expected = FindByHand(cuts);
        const double found = Find(cuts);
        if (expected == kNothing)
        {
            EXPECT_EQ(found, expected) << what;
        }
        else
        {
            EXPECT_NEAR(found, expected, 1e-4 * expected + 1e-4 * (cuts.empty() ? 0 : 1)) << what;
        }
        return expected;
    }

    Scene scene;
    Material* material = new Material("grey"); // the scene's
    NearFinder finder{scene};
};

/// A node that moves itself.
class OwnNode : public MeshNode
{
public:
    using MeshNode::MeshNode;

    void MoveUntold(const Vector& place) { global.SetPosition(place); }
};

class OwnMesh : public Mesh
{
public:
    using Mesh::Mesh;
};

} // namespace

TEST_F(NearFinderTest, FindsInAThousandViewsWhatLookingAtEachTriangleFinds)
{
    Dice dice(5);
    for (int i = 0; i < 2000; ++i)
    {
        MeshNode& node = AddNode(AddMesh(BoxOf(0.05f + 0.4f * dice.Share())), Vector());
        const Vector place = AnyPlace(dice, 20.0f);
        Move(node, Vector(place.x, 0.2f * place.y, place.z), 6.3 * dice.Share(), 0.5 + dice.Share());
    }
    int seen = 0;
    int within = 0;
    for (int i = 0; i < 1000; ++i)
    {
        const Vector eye = AnyPlace(dice, 15.0f);
        Look(Vector(eye.x, 0.2f * eye.y, eye.z), AnyPlace(dice, 20.0f));
        std::vector<SectionPlane> cuts;
        if (i % 3 == 0)
        {
            const double angle = 6.3 * dice.Share();
            cuts.push_back({Vector(static_cast<float>(std::cos(angle)), 0, static_cast<float>(std::sin(angle))),
                            AnyPlace(dice, 10.0f)});
        }
        const double nearest = ExpectAsByHand("view " + std::to_string(i), cuts);
        seen += nearest < kNothing ? 1 : 0;
        within += nearest < 1.0 ? 1 : 0;
    }
    EXPECT_GT(seen, 900);
    EXPECT_GT(within, 100) << "and near ones among them";
}

TEST_F(NearFinderTest, FindsTheNearestTriangleOfALargeMesh)
{
    // One of which many triangles lie behind the eye, and in its box.
    AddNode(AddMesh(Host::Primitives::Sphere(8.0f, 96, 96)), Vector());
    AddNode(AddMesh(Host::Primitives::Plane(16.0f, 16.0f, 60, 60)), Vector(0.0f, -1.6f, 0.0f));
    Dice dice(9);
    for (int i = 0; i < 200; ++i)
    {
        Look(AnyPlace(dice, 5.0f), AnyPlace(dice, 8.0f));
        EXPECT_LT(ExpectAsByHand("view " + std::to_string(i)), kNothing);
    }
}

TEST_F(NearFinderTest, FollowsWhatMovesRestsIsHiddenComesAndGoes)
{
    Dice dice(3);
    std::vector<MeshNode*> nodes;
    for (int i = 0; i < 60; ++i)
    {
        nodes.push_back(&AddNode(AddMesh(BoxOf(0.5f)), AnyPlace(dice, 6.0f)));
    }
    for (int i = 0; i < 600; ++i)
    {
        const auto any = static_cast<std::size_t>(dice.Below(static_cast<int>(nodes.size())));
        switch (dice.Below(i % 100 < 60 ? 9 : 1))
        {
        case 1: Move(*nodes[any], AnyPlace(dice, 6.0f), 6.3 * dice.Share()); break;
        case 2: nodes[any]->SetFlags(NodeFlagHidden, false); break;
        case 3: nodes[any]->ClearFlags(NodeFlagHidden, false); break;
        case 4: nodes.push_back(&AddNode(AddMesh(BoxOf(0.3f)), AnyPlace(dice, 6.0f))); break;
        case 5:
            scene.DeleteSubtree(nodes[any]);
            nodes.erase(nodes.begin() + static_cast<std::ptrdiff_t>(any));
            break;
        case 6: nodes.push_back(&AddNode(*nodes[any]->GetMeshes().front(), AnyPlace(dice, 6.0f))); break;
        case 7:
            // All at once, again and again.
            for (int step = 0; step < 3; ++step)
            {
                for (MeshNode* node : nodes)
                {
                    Move(*node, AnyPlace(dice, 6.0f));
                }
                ExpectAsByHand("step " + std::to_string(i) + ", all moved");
            }
            break;
        case 8: Look(AnyPlace(dice, 3.0f), AnyPlace(dice, 6.0f)); break;
        default:
            // The same view without what has moved in it, which rests meanwhile.
            Look(Vector(0.001f * static_cast<float>(i % 7), 0, 0), Vector(0, 0, -1));
            break;
        }
        ExpectAsByHand("step " + std::to_string(i));
    }
}

TEST_F(NearFinderTest, WhatWasDescribedAnewWhileItWasHiddenIsFoundAsItIs)
{
    Mesh& mesh = AddMesh(BoxOf(1.0f));
    MeshNode& node = AddNode(mesh, Vector(0, 0, -10));
    EXPECT_NEAR(Find(), 9.0, 1e-4);
    node.SetFlags(NodeFlagHidden, false);
    EXPECT_EQ(Find(), kNothing);
    const std::shared_ptr<RawMesh> other = BoxOf(3.0f);
    mesh.GetRawMesh()->StartDescription();
    mesh.GetRawMesh()->SetPositionBuffer(std::move(other->positions));
    mesh.GetRawMesh()->SetIndices(std::move(other->indices));
    mesh.GetRawMesh()->EndDescription(true);
    node.ClearFlags(NodeFlagHidden, false);
    EXPECT_NEAR(Find(), 7.0, 1e-4);
}

TEST_F(NearFinderTest, ABoxThatAHostHasSetTooSmallHidesNothing)
{
    const std::shared_ptr<RawMesh> raw = BoxOf(1.0f);
    raw->SetBBox(Vector(-0.1f, -0.1f, -0.1f), Vector(0.1f, 0.1f, 0.1f));
    AddNode(AddMesh(raw), Vector(0, 0, -10));
    EXPECT_NEAR(Find(), 9.0, 1e-4);
}

TEST_F(NearFinderTest, CountsLinesAndPoints)
{
    MeshNode& far = AddNode(AddMesh(BoxOf(1.0f)), Vector(0, 0, -10));
    auto raw = std::make_shared<RawMesh>();
    raw->SetPositionBuffer({Vector(0, 0, -5), Vector(0, 9, -1), Vector(0, 0, -7)});
    raw->SetIndices({0, 1, 2});
    raw->EndDescription(true);
    auto* const dots = new Material("dots"); // the scene's
    dots->SetFlags(MaterialFlagPoints);
    scene.AddMaterial(dots);
    auto* const mesh = new Mesh(raw, &scene);
    dots->AddMesh(mesh);
    AddNode(*mesh, Vector());
    EXPECT_NEAR(Find(), 5.0, 1e-4) << "the one at 1 is beside the view, and there is no triangle between them";

    auto* const style = new LineStyle("line"); // the scene's
    scene.AddLineStyle(style);
    auto rawLine = std::make_shared<RawLine>();
    // Into the view from beside it: half the height at a depth of 2 is 0.933.
    rawLine->SetPositionBuffer({Vector(0, 1.866f, -2), Vector(0, 0, -2), Vector(0, 0, -3)});
    rawLine->SetIndices({0, 1, 1, 2});
    rawLine->EndDescription(true);
    auto* const line = new Line(rawLine, &scene);
    style->AddLine(line);
    AddNode(*line, Vector());
    EXPECT_NEAR(Find(), 2.0, 1e-4);
    far.SetFlags(NodeFlagHidden, false);
    EXPECT_NEAR(Find(), 2.0, 1e-4);
}

TEST_F(NearFinderTest, AHostsNodeIsAskedInEveryFrameAndAHostsMeshIsNotKnown)
{
    auto* const own = new OwnNode(&scene);
    scene.GetRoot()->AddChild(own, false);
    AddMesh(BoxOf(1.0f)).AddNode(own);
    own->MoveUntold(Vector(0, 0, -10));
    EXPECT_NEAR(Find(), 9.0, 1e-4);
    own->MoveUntold(Vector(0, 0, -5));
    EXPECT_NEAR(Find(), 4.0, 1e-4) << "nobody was told";
    auto* const mesh = new OwnMesh(BoxOf(1.0f), &scene);
    material->AddMesh(mesh);
    MeshNode& node = AddNode(*mesh, Vector(0, 0, -30));
    EXPECT_EQ(Find(), 0.0);
    node.SetFlags(NodeFlagHidden, false);
    EXPECT_NEAR(Find(), 4.0, 1e-4);
}

TEST_F(NearFinderTest, WithoutAChangeNothingIsLookedAt)
{
    AddNode(AddMesh(BoxOf(1.0f)), Vector(0, 0, -10));
    // Vertices that nobody is told of tell whether they are looked at.
    MeshNode& node = AddNode(AddMesh(BoxOf(1.0f)), Vector(0, 0, -8));
    EXPECT_NEAR(Find(), 7.0, 1e-4);
    node.GetMeshes().front()->GetRawMesh()->positions.assign(24, Vector(0, 0, 5));
    EXPECT_NEAR(Find(), 7.0, 1e-4);
    Look(Vector(0, 0, 1e-5f), Vector(0, 0, -1));
    EXPECT_NEAR(Find(), 3.0, 1e-4) << "another view looks again";
}

TEST_F(NearFinderTest, GivesUpBeyondSoMuchWork)
{
    AddNode(AddMesh(BoxOf(1.0f)), Vector(0, 0, -10));
    AddNode(AddMesh(BoxOf(1.0f)), Vector(0, 0, -7));
    EXPECT_NEAR(Find({}, 36), 6.0, 1e-4) << "the nearer one comes first, and the other one need not be looked at";
    EXPECT_EQ(Find({}, 35), 0.0);
}

TEST_F(NearFinderTest, MayOutliveItsScene)
{
    auto other = std::make_unique<Scene>();
    NearFinder lonely(*other);
    const NearView view(*scene.GetCameraNode(), kAspect, {}, {});
    EXPECT_EQ(lonely.Find(view, 0.0, kAll), kNothing);
    other.reset();
    EXPECT_EQ(lonely.GetListenedScene(), nullptr);
    EXPECT_EQ(lonely.Find(view, 0.0, kAll), kNothing);
}

TEST_F(NearFinderTest, APlaneIsNearestWhereARayThroughACornerMeetsIt)
{
    const NearView view(*scene.GetCameraNode(), kAspect, {}, {});
    const double half = std::tan(25.0 * std::acos(-1.0) / 180.0);
    EXPECT_NEAR(view.DepthOfPlane(Vector(3, -1.6f, 8), Vector(0, 1, 0)), 1.6 / half, 1e-5);
    EXPECT_NEAR(view.DepthOfPlane(Vector(0, 1.6f, 0), Vector(0, 1, 0)), 1.6 / half, 1e-5) << "from below";
    EXPECT_EQ(view.DepthOfPlane(Vector(0, 0, 4), Vector(0, 0, 1)), kNothing) << "behind the eye";
    EXPECT_NEAR(view.DepthOfPlane(Vector(0, 0, -4), Vector(0, 0, 1)), 4.0, 1e-6);
}

} // namespace OV::Test
