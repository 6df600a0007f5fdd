#include "tests/orvane_host/import/TinyModels.h"
#include "tests/orvane_host/present/Crowd.h"
#include "tests/orvane_host/present/NearestByHand.h"
#include "tests/orvane_host/present/PictureRows.h"
#include "tests/orvane_host/present/PresentationModels.h"
#include "tests/orvane_host/present/SettingsDice.h"
#include "tests/support/Sanitized.h"
#include "tests/support/ShowMesh.h"

#include "orvane_host/geometry/Primitives.h"
#include "orvane_host/geometry/SectionFill.h"
#include "orvane_host/import/ModelImporter.h"
#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/PresentationRenderer.h"
#include "orvane_host/present/PresentationStage.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>

namespace OV::Test
{

namespace
{

using Host::BatchUse;
using Host::Presentation;
using Host::PresentationSettings;

class PresentationNear : public PresentationFixture
{
protected:
    PresentationNear() : PresentationFixture(120, 80, 0) {}

    struct Depths
    {
        float nearest = 0.0f;
        float farthest = 0.0f;
    };

    static Depths DepthsOf(const Presentation& presentation)
    {
        Depths depths;
        presentation.GetCamera().GetNearFar(depths.nearest, depths.farthest);
        return depths;
    }

    Depths DrawnDepths(Presentation& presentation) const
    {
        presentation.Draw(Width(), Height());
        return DepthsOf(presentation);
    }

    double NearestOf(const Presentation& presentation, const std::vector<Host::SectionPlane>& cuts = {}) const
    {
        return NearestByHand(presentation.GetScene(), presentation.GetCamera(),
                             static_cast<double>(Width()) / Height(), cuts);
    }

    static PresentationSettings From(const Vector& eye, const Vector& target)
    {
        PresentationSettings wanted;
        wanted.antialiasing = Host::Antialiasing::None;
        wanted.cullBacks = false;
        wanted.background = Color(1, 1, 1);
        wanted.view.eye = eye;
        wanted.view.target = target;
        wanted.view.fov = 45.0f;
        return wanted;
    }

    /// A model of boxes, the materials of which have colours without light.
    class Model
    {
    public:
        MeshNode& Add(const Color& color, const Vector& low, const Vector& high)
        {
            auto* const material = new Material("flat");
            material->SetDiffuse(color);
            material->SetFlags(MaterialFlagUnlit);
            scene->AddMaterial(material);
            return ShowMesh(Host::Primitives::Box(low, high), *material, *scene);
        }

        std::unique_ptr<Presentation> Present(const PresentationSettings& wanted)
        {
            auto presentation = std::make_unique<Presentation>(std::move(scene));
            Apply(*presentation, wanted);
            return presentation;
        }

        std::unique_ptr<Scene> scene = std::make_unique<Scene>();
    };

    static constexpr Vector TableEye{0.0f, 1.6f, 0.0f};

    /// A house of 40 m from a room of it, and a table half a metre before the eye.
    std::unique_ptr<Presentation> PresentHouse()
    {
        Model model;
        model.Add(Color(0.8f, 0.8f, 0.8f), Vector(-20, 0, -20), Vector(20, 12, 20));
        model.Add(Color(0.6f, 0.6f, 0.4f), Vector(-4, 0.1f, -5), Vector(3, 2.8f, 6));
        table = &model.Add(Color(1, 0, 0), Vector(-0.4f, 1.2f, -1.5f), Vector(0.4f, 1.7f, -0.5f));
        return model.Present(From(TableEye, Vector(0.0f, 1.5f, -3.0f)));
    }

    static void Move(Node& node, const Vector& place)
    {
        Transform transform;
        transform.SetPosition(place);
        node.SetLocal(transform);
    }

    MeshNode* table = nullptr;
};

/// A stage that draws nothing.
class QuietStage : public Host::PresentationStage
{
public:
    explicit QuietStage(bool drawsBesideScene) : m_drawsBesideScene(drawsBesideScene) {}

    bool DrawsBesideScene() const override { return m_drawsBesideScene; }
    void Draw(Host::PresentationFrame&) override {}
    void ReleaseGL() override {}

private:
    bool m_drawsBesideScene;
};

/// A level plane of depths apart, in steps of a depth buffer of 24 bits.
double StepAt(double distance, float nearest)
{
    return distance * distance / (static_cast<double>(nearest) * (1 << 24));
}

} // namespace

TEST_F(PresentationNear, InARoomItStandsBeforeTheTable)
{
    const auto house = PresentHouse();
    const Depths bounds = DepthsOf(*house);
    EXPECT_LT(bounds.nearest, 0.005f) << "the eye is in the box of the house";
    const Depths depths = DrawnDepths(*house);
    EXPECT_GE(depths.nearest, 0.05f);
    EXPECT_LT(depths.nearest, 0.5f);
    EXPECT_EQ(depths.farthest, bounds.farthest);
    EXPECT_LT(StepAt(10.0, depths.nearest), 5e-5) << "of a metre";
    EXPECT_EQ(Draw(*house).At(Width() / 2, Height() / 2), (Pixel{255, 0, 0, 255}));
    table->SetFlags(NodeFlagHidden, false);
    EXPECT_GT(DrawnDepths(*house).nearest, 0.5f);
    table->ClearFlags(NodeFlagHidden, false);
    Move(*table, Vector(0, 0, -2));
    EXPECT_GT(DrawnDepths(*house).nearest, 0.5f);
    Move(*table, Vector(0, 0, 0.45f));
    EXPECT_LT(DrawnDepths(*house).nearest, 0.05f);
}

TEST_F(PresentationNear, NothingThatIsSeenLiesBeforeIt)
{
    for (const BatchUse use : {BatchUse::Off, BatchUse::On})
    {
        Dice dice(4);
        Model model;
        const auto any = [&](float reach) { return reach * (2.0f * dice.Share() - 1.0f); };
        for (int i = 0; i < 2000; ++i)
        {
            const float half = 0.1f + 0.4f * dice.Share();
            const Vector middle(any(20.0f), any(3.0f), any(20.0f));
            model.Add(Color(dice.Share(), 0.5f, 0.5f), Vector(middle.x - half, middle.y - half, middle.z - half),
                      Vector(middle.x + half, middle.y + half, middle.z + half));
        }
        PresentationSettings wanted = From(Vector(0, 0, 0), Vector(1, 0, 0));
        wanted.batches.use = use;
        const auto presentation = model.Present(wanted);
        int fitted = 0;
        int tight = 0;
        const int views = isSanitized ? 20 : 150;
        for (int i = 0; i < views; ++i)
        {
            ASSERT_TRUE(presentation->SetCamera(Vector(any(15.0f), any(2.0f), any(15.0f)),
                                                Vector(any(20.0f), any(3.0f), any(20.0f))));
            const Depths depths = DrawnDepths(*presentation);
            const double nearest = NearestOf(*presentation);
            if (nearest < 1e-4)
            {
                continue; // the eye is in a face
            }
            ++fitted;
            ASSERT_LT(depths.nearest, nearest) << i;
            // A thing right beside the view may be what it stands before.
            tight += depths.nearest >= 0.1 * nearest ? 1 : 0;
        }
        EXPECT_GT(fitted, views * 9 / 10);
        EXPECT_GT(tight, fitted * 9 / 10);
    }
}

TEST_F(PresentationNear, AThingTwoMillimetresFromTheEyeOnASiteOfAKilometreIsSeen)
{
    Model model;
    model.Add(Color(0, 1, 0), Vector(-500, -2, -500), Vector(500, -1, 500));
    model.Add(Color(1, 0, 0), Vector(-0.0004f, -0.0004f, -0.003f), Vector(0.0004f, 0.0004f, -0.002f));
    const auto site = model.Present(From(Vector(0, 0, 0), Vector(0, 0, -1)));
    const Picture picture = Draw(*site);
    EXPECT_EQ(picture.At(Width() / 2, Height() / 2), (Pixel{255, 0, 0, 255}));
    EXPECT_EQ(picture.At(Width() / 2, 5), (Pixel{0, 255, 0, 255})) << "and what is far away";
}

TEST_F(PresentationNear, IsNeverNearerThanAProjectionCanBe)
{
    // Within a centimetre, all of which would be shown as it lies in the space of the eye.
    Model model;
    model.Add(Color(0, 1, 0), Vector(-0.005f, -0.005f, -0.005f), Vector(0.005f, 0.005f, 0.005f));
    model.Add(Color(1, 0, 0), Vector(-1e-7f, -1e-7f, -1.2e-6f), Vector(1e-7f, 1e-7f, -1e-6f));
    const auto room = model.Present(From(Vector(0, 0, 0), Vector(0, 0, -1)));
    const Depths bounds = DepthsOf(*room);
    EXPECT_EQ(DrawnDepths(*room).nearest, bounds.nearest);
    EXPECT_EQ(Draw(*room).At(3, 3), (Pixel{0, 255, 0, 255}));
}

TEST_F(PresentationNear, WhereTheEyeIsInAFaceTheBoundsOfTheModelGiveIt)
{
    Model model;
    model.Add(Color(0, 1, 0), Vector(-20, -5, -20), Vector(20, 0, 20));
    const auto slab = model.Present(From(Vector(0, 0, 0), Vector(0, 0, -1)));
    const Depths bounds = DepthsOf(*slab);
    EXPECT_EQ(DrawnDepths(*slab).nearest, bounds.nearest);
}

TEST_F(PresentationNear, WhatPlanesCutAwayDoesNotCount)
{
    const auto house = PresentHouse();
    PresentationSettings wanted = house->GetSettings();
    wanted.section.planes.push_back({Vector(0, 0, 1), Vector(0, 0, -1.8f)});
    Apply(*house, wanted);
    const Depths depths = DrawnDepths(*house);
    EXPECT_GT(depths.nearest, 0.5f);
    EXPECT_LT(depths.nearest, 1.8f);
    wanted.section.planes.clear();
    Apply(*house, wanted);
    EXPECT_LT(DrawnDepths(*house).nearest, 0.5f);
}

TEST_F(PresentationNear, IsTheSameWhateverWasDrawnBefore)
{
    const auto walked = PresentHouse();
    Depths before = DrawnDepths(*walked);
    int changes = 0;
    for (int i = 0; i <= 200; ++i)
    {
        const float ahead = 0.002f * static_cast<float>(i);
        ASSERT_TRUE(walked->SetCamera(Vector(0.0f, 1.6f, -ahead), Vector(0.0f, 1.5f, -3.0f)));
        const Depths depths = DrawnDepths(*walked);
        changes += depths.nearest != before.nearest ? 1 : 0;
        before = depths;
    }
    EXPECT_LE(changes, 4) << "it steps while the eye comes from half a metre to a tenth";
    EXPECT_GE(changes, 1);
    ASSERT_TRUE(walked->SetCamera(TableEye, Vector(0.0f, 1.5f, -3.0f)));
    const Depths depths = DrawnDepths(*walked);
    const auto fresh = PresentHouse();
    EXPECT_EQ(depths.nearest, DrawnDepths(*fresh).nearest);
    ExpectSame(Draw(*walked), Draw(*fresh), "after a walk");
}

TEST_F(PresentationNear, FollowsWhatAHostEdits)
{
    Crowd crowd(80);
    Dice dice(21);
    PresentationSettings wanted = From(Vector(3.3f, 0.6f, 4.2f), Vector(6.0f, 0.5f, 3.0f));
    wanted.batches.use = BatchUse::On;
    auto presentation = std::make_unique<Presentation>(std::move(crowd.scene), crowd.named);
    Apply(*presentation, wanted);
    int tight = 0;
    const int steps = isSanitized ? 60 : 400;
    for (int step = 0; step < steps; ++step)
    {
        crowd.Edit(dice);
        const Depths depths = DrawnDepths(*presentation);
        const double nearest = NearestOf(*presentation);
        if (nearest > 1e-4)
        {
            ASSERT_LT(depths.nearest, nearest) << step;
        }
        tight += depths.nearest >= 0.1 * std::min(nearest, 2.0) ? 1 : 0;
    }
    EXPECT_GT(tight, steps * 8 / 10);
}

TEST_F(PresentationNear, FollowsWhatAHostDescribesAnewWithoutAWord)
{
    for (const bool hurries : {false, true})
    {
        const auto house = PresentHouse();
        house->Hurry(hurries);
        EXPECT_GT(DrawnDepths(*house).nearest, 0.2f);
        const std::shared_ptr<RawMesh> other =
            Host::Primitives::Box(Vector(-0.4f, 1.2f, -1.5f), Vector(0.4f, 1.7f, -0.2f));
        RawMesh& raw = *table->GetMeshes().front()->GetRawMesh();
        raw.StartDescription();
        raw.SetPositionBuffer(std::move(other->positions));
        raw.SetNormalBuffer(std::move(other->normals));
        raw.SetIndices(std::move(other->indices));
        raw.EndDescription(true);
        EXPECT_LT(DrawnDepths(*house).nearest, 0.2f);
    }
}

TEST_F(PresentationNear, WhatAHostHasSetStays)
{
    const auto house = PresentHouse();
    Draw(*house);
    const Depths fitted = DepthsOf(*house);
    house->GetCamera().SetNearFar(0.01f, 77.0f);
    EXPECT_EQ(DrawnDepths(*house).nearest, 0.01f);
    EXPECT_EQ(DepthsOf(*house).farthest, 77.0f);
    ASSERT_TRUE(house->SetCamera(TableEye, Vector(0.0f, 1.5f, 3.0f)));
    ASSERT_TRUE(house->SetCamera(TableEye, Vector(0.0f, 1.5f, -3.0f)));
    EXPECT_EQ(DrawnDepths(*house).nearest, fitted.nearest);
    EXPECT_EQ(DepthsOf(*house).farthest, fitted.farthest);
}

TEST_F(PresentationNear, StaysWithoutPerspectiveAndWhereTheModelIsFarFromTheEye)
{
    const auto house = PresentHouse();
    PresentationSettings wanted = house->GetSettings();
    wanted.view.orthographic = true;
    Apply(*house, wanted);
    Depths bounds = DepthsOf(*house);
    EXPECT_LT(bounds.nearest, 0.0f) << "what lies behind the eye is seen too";
    EXPECT_EQ(DrawnDepths(*house).nearest, bounds.nearest);
    wanted.view.orthographic = false;
    wanted.view.eye = Vector(10, 30, 60);
    Apply(*house, wanted);
    bounds = DepthsOf(*house);
    EXPECT_EQ(DrawnDepths(*house).nearest, bounds.nearest);
}

TEST_F(PresentationNear, StagesThatDrawThingsOfTheirOwnKeepTheBoundsOfTheModel)
{
    const auto house = PresentHouse();
    const Depths bounds = DepthsOf(*house);
    const Depths fitted = DrawnDepths(*house);
    auto& renderer = house->GetRenderer();
    const auto* const solid = renderer.AddStage(std::make_unique<QuietStage>(true), Host::StageSlot::AfterSurfaces);
    EXPECT_EQ(DrawnDepths(*house).nearest, bounds.nearest);
    renderer.RemoveStage(solid);
    EXPECT_EQ(DrawnDepths(*house).nearest, fitted.nearest);
    renderer.AddStage(std::make_unique<QuietStage>(false), Host::StageSlot::AfterSurfaces);
    EXPECT_EQ(DrawnDepths(*house).nearest, fitted.nearest);
}

TEST_F(PresentationNear, StandsBeforeTheGroundThatIsSeen)
{
    Model model;
    model.Add(Color(1, 0, 0), Vector(-20, 0, -20), Vector(-19, 3, -19));
    model.Add(Color(1, 0, 0), Vector(19, 0, 19), Vector(20, 3, 20));
    PresentationSettings wanted = From(Vector(0, 1.6f, 0), Vector(-18, 1.6f, -18));
    const auto posts = model.Present(wanted);
    EXPECT_GE(DrawnDepths(*posts).nearest, 4.0f);
    wanted.ground.emplace();
    Apply(*posts, wanted);
    const double depth = 1.6 / std::tan(22.5 * std::acos(-1.0) / 180.0);
    EXPECT_LT(DrawnDepths(*posts).nearest, depth);
    EXPECT_GT(DrawnDepths(*posts).nearest, 0.1 * depth);
}

TEST_F(PresentationNear, TheFirstPictureOfAViewIsAsTheSecondAndItsTilesAsTheWhole)
{
    for (const Host::OcclusionKind kind : {Host::OcclusionKind::Horizon, Host::OcclusionKind::Spiral})
    {
        const auto house = PresentHouse();
        PresentationSettings wanted = house->GetSettings();
        wanted.fog = Host::FogRange{0.5f, 9.0f};
        wanted.occlusion = true;
        wanted.occlusionLook.kind = kind;
        wanted.edges.emplace();
        wanted.lines.emplace();
        Apply(*house, wanted);
        const Picture first = Draw(*house);
        const Depths depths = DepthsOf(*house);
        ExpectSame(Draw(*house), first, "the second");
        ASSERT_TRUE(house->SetCamera(TableEye, Vector(2.0f, 1.5f, 3.0f)));
        house->Pick(2, 2);
        EXPECT_NE(DepthsOf(*house).nearest, depths.nearest);
        ASSERT_TRUE(house->SetCamera(TableEye, Vector(0.0f, 1.5f, -3.0f)));
        ExpectSame(Draw(*house), first, "once it has looked elsewhere");

        Host::PictureOptions options;
        options.width = 320;
        options.height = 200;
        Host::PictureFacts facts;
        const Rows whole = WriteRows(*house, options, facts);
        ASSERT_EQ(facts.tiles, 1);
        options.longestTile = 130;
        const Rows tiled = WriteRows(*house, options, facts);
        EXPECT_GT(facts.tiles, 1);
        int other = 0;
        for (std::size_t i = 0; i < whole.data.size(); ++i)
        {
            // What is interpolated rounds by the place in the tile.
            other += std::abs(tiled.data[i] - whole.data[i]) > 1 ? 1 : 0;
        }
        EXPECT_EQ(other, 0);
    }
}

TEST_F(PresentationNear, PicksWhatLiesAtIt)
{
    const auto house = PresentHouse();
    house->Resize(Width(), Height());
    const std::optional<Host::PickHit> hit = house->Pick(Width() / 2, Height() / 2);
    ASSERT_TRUE(hit.has_value());
    EXPECT_EQ(hit->node, table);
    EXPECT_NEAR(hit->position.z, -0.5, 1e-4);
    EXPECT_GT(DepthsOf(*house).nearest, 0.05f);
}

TEST_F(PresentationNear, InsideOfAHouseBatchesHardlyChangeThePicture)
{
    const std::string house = kTestModels + "IFC/AC14-FZK-Haus.ifc";
    const auto open = [&](BatchUse use) {
        Host::ImportResult result = Host::ModelImporter::Import(house);
        EXPECT_TRUE(result) << result.error.Line();
        auto presentation = std::make_unique<Presentation>(std::move(result));
        PresentationSettings wanted = From(Vector(0, 0, 0), Vector(1, 0, 0));
        wanted.batches.use = use;
        wanted.view.fov = 60.0f;
        Apply(*presentation, wanted);
        return presentation;
    };
    const auto together = open(BatchUse::On);
    const auto single = open(BatchUse::Off);
    const Vector views[][2] = {{Vector(3, 1.6f, -3), Vector(9, 1.2f, -6)},    {Vector(6, 1.6f, -5), Vector(0, 1.2f, -2)},
                               {Vector(10, 1.6f, -2), Vector(4, 1.2f, -8)},   {Vector(2, 4.5f, -5), Vector(10, 4, -5)},
                               {Vector(9, 1.6f, -8), Vector(2, 1.4f, -3)},    {Vector(5, 1.6f, -8), Vector(11, 1.2f, -1)},
                               {Vector(8, 4.4f, -4), Vector(1, 4.2f, -7)},    {Vector(3, 4.4f, -7), Vector(11, 4, -4)}};
    int differing = 0;
    for (const auto& view : views)
    {
        Host::PictureOptions options;
        options.width = 240;
        options.height = 135;
        Host::PictureFacts facts;
        ASSERT_TRUE(together->SetCamera(view[0], view[1]));
        ASSERT_TRUE(single->SetCamera(view[0], view[1]));
        const Rows a = WriteRows(*together, options, facts);
        const Rows b = WriteRows(*single, options, facts);
        for (std::size_t i = 0; i < a.data.size(); i += 3)
        {
            const auto isOther = [&](std::size_t at) { return std::abs(a.data[at] - b.data[at]) > 1; };
            differing += isOther(i) || isOther(i + 1) || isOther(i + 2) ? 1 : 0;
        }
    }
    EXPECT_GT(together->GetStatistics().batches.pieces, 0u);
    // By the bounds of the house there would be some hundred.
    EXPECT_LE(differing, 20);
}

} // namespace OV::Test
