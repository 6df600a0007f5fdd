#include "tests/orvane_host/present/Crowd.h"
#include "tests/orvane_host/present/SettingsDice.h"
#include "tests/orvane_host/present/ShadowStageModels.h"
#include "tests/orvane_host/present/WatchedMaps.h"
#include "tests/support/GLRecorder.h"
#include "tests/support/ShowMesh.h"

#include "orvane/math/Quaternion.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"

#include <cmath>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace OV::Test
{

namespace
{

using Host::BatchUse;
using Host::Presentation;
using Host::PresentationSettings;

class ShadowMoves : public PresentationFixture
{
protected:
    ShadowMoves() : PresentationFixture(120, 80, 0) {}

    /// Another sun for a frame, so that the next one draws all of the maps.
    void DrawInOtherLight(Watched& watched, const PresentationSettings& wanted)
    {
        PresentationSettings other = wanted;
        other.sun->direction = Vector(-0.2f, 0.7f, 0.5f);
        Apply(watched.Get(), other);
        Draw(watched.Get());
        Apply(watched.Get(), wanted);
    }

    /// Draws a frame of two alike, of which one draws its maps whole.
    /// @return whether the other has drawn a map in part.
    bool ExpectTexelsOfWholeMap(Watched& partly, Watched& whole)
    {
        GLRecorder recorder(GLRecorder::Mode::Forward);
        const Picture picture = Draw(partly.Get());
        // A map that is drawn in part is not cleared where drawing into it begins.
        const bool isPartial = recorder.Count("glClear", {0}) > 0;
        ExpectSame(picture, Draw(whole.Get()), "picture");
        EXPECT_TRUE(partly.maps == whole.maps);
        EXPECT_FALSE(partly.maps.depths.empty());
        return isPartial;
    }

    /// The same of many frames, between which the same is done to both.
    /// @return how many frames have drawn a map in part.
    int ExpectTexelsOfWholeMaps(Watched& partly, Watched& whole, const PresentationSettings& wanted,
                                const std::function<void(std::size_t, Dice&)>& edit, unsigned int seed)
    {
        Apply(partly.Get(), wanted);
        Draw(partly.Get());
        Dice dice(seed);
        Dice same(seed);
        int partial = 0;
        for (int step = 0; step < kSteps && !HasFailure(); ++step)
        {
            SCOPED_TRACE(step);
            // As many frames for both: what rests for some time goes into batches.
            Draw(partly.Get());
            DrawInOtherLight(whole, wanted);
            edit(0, dice);
            edit(1, same);
            partial += ExpectTexelsOfWholeMap(partly, whole) ? 1 : 0;
        }
        return partial;
    }

    static constexpr int kSteps = 16;
};

PresentationSettings FromOutside(bool orthographic)
{
    PresentationSettings settings = LookingDown();
    settings.view = {};
    settings.view.eye = Vector(14.0f, 9.0f, 16.0f);
    settings.view.target = Vector(3.0f, 0.0f, 3.0f);
    settings.view.orthographic = orthographic;
    settings.sun->direction = Vector(0.5f, 0.8f, 0.3f);
    return settings;
}

/// Among what there is, so that the map has parts.
PresentationSettings FromInside()
{
    PresentationSettings settings = FromOutside(false);
    settings.view.eye = Vector(2.6f, 1.2f, 2.5f);
    settings.view.target = Vector(5.0f, 0.4f, 5.5f);
    return settings;
}

struct Kind
{
    const char* name;
    PresentationSettings settings;
};

std::vector<Kind> Kinds()
{
    std::vector<Kind> kinds = {{"outside", FromOutside(false)}, {"orthographic", FromOutside(true)},
                               {"inside", FromInside()}, {"clipped", FromOutside(false)},
                               {"clipped, casting", FromOutside(false)}, {"soft, in batches", FromOutside(false)},
                               {"inside, in batches", FromInside()}};
    for (Kind& kind : kinds)
    {
        const std::string name = kind.name;
        const auto has = [&](const char* word) { return name.find(word) != std::string::npos; };
        kind.settings.batches.use = has("batches") ? BatchUse::On : BatchUse::Off;
        kind.settings.shadows->soft = has("soft");
        kind.settings.shadows->clippedCasts = has("casting");
        if (has("clipped"))
        {
            kind.settings.section.planes.emplace_back();
            kind.settings.section.planes.back().normal = Vector(0.6f, 0.8f, 0);
            kind.settings.section.planes.back().position = Vector(3, 0.5f, 3);
        }
    }
    return kinds;
}

/// Two crowds alike, each in a presentation of its own.
struct Twins
{
    Crowd crowds[2] = {Crowd(64, 7, 6), Crowd(64, 7, 6)};
    Watched partly{std::make_unique<Presentation>(std::move(crowds[0].scene), crowds[0].named)};
    Watched whole{std::make_unique<Presentation>(std::move(crowds[1].scene), crowds[1].named)};
};

TEST_F(ShadowMoves, MapsAreThoseThatAreDrawnWholeWhateverIsEdited)
{
    unsigned int seed = 1;
    for (const Kind& kind : Kinds())
    {
        SCOPED_TRACE(kind.name);
        Twins twins;
        const auto edit = [&](std::size_t which, Dice& dice) { twins.crowds[which].Edit(dice); };
        EXPECT_GT(ExpectTexelsOfWholeMaps(twins.partly, twins.whole, kind.settings, edit, ++seed), 5);
    }
}

/// Goes on, looks about and now and then stands still or is somewhere else.
void MoveEye(Host::ViewSettings& view, Dice& dice)
{
    if (dice.Below(8) == 0)
    {
        return;
    }
    const float length = dice.Below(8) == 0 ? 2.0f : 0.1f;
    for (std::optional<Vector>* const place : {&view.eye, &view.target})
    {
        const Vector by(length * (dice.Share() - 0.5f), 0.1f * length * (dice.Share() - 0.5f),
                        length * (dice.Share() - 0.5f));
        place->value().Add(**place, by);
    }
}

TEST_F(ShadowMoves, MapsAreThoseThatAreDrawnWholeWhereverTheEyeGoes)
{
    unsigned int seed = 200;
    for (const Kind& kind : Kinds())
    {
        SCOPED_TRACE(kind.name);
        Twins twins;
        Watched& partly = twins.partly;
        PresentationSettings settings = kind.settings;
        Dice eye(++seed);
        Dice dice(seed);
        Dice same(seed);
        Apply(partly.Get(), settings);
        Draw(partly.Get());
        int partial = 0;
        for (int step = 0; step < 2 * kSteps && !HasFailure(); ++step)
        {
            SCOPED_TRACE(step);
            Draw(partly.Get());
            MoveEye(settings.view, eye);
            DrawInOtherLight(twins.whole, settings);
            Apply(partly.Get(), settings);
            if (step % 4 == 3)
            {
                twins.crowds[0].Edit(dice);
                twins.crowds[1].Edit(same);
            }
            partial += ExpectTexelsOfWholeMap(partly, twins.whole) ? 1 : 0;
        }
        // One part that holds all stays as it is.
        EXPECT_GT(partial, std::string(kind.name).find("inside") == 0 ? kSteps : 0);
    }
}

void MoveBy(Node& node, const Vector& by)
{
    Transform place = node.GetLocal();
    Vector position;
    position.Add(place.GetPosition(), by);
    place.SetPosition(position);
    node.SetLocal(place);
}

/// Moves some nodes of a scene a little or to anywhere among the others.
void MoveSome(const Scene& scene, Dice& dice)
{
    const PointerSpan<Mesh> each = scene.EachMesh();
    const std::vector<Mesh*> meshes(each.begin(), each.end());
    for (int i = 1 + dice.Below(3); i > 0; --i)
    {
        const Mesh& mesh = *meshes[static_cast<std::size_t>(dice.Below(static_cast<int>(meshes.size())))];
        const bool isFar = dice.Below(4) == 0;
        const Vector by((isFar ? 4.0f : 0.3f) * (dice.Share() - 0.5f), 0.2f * (dice.Share() - 0.5f),
                        (isFar ? 4.0f : 0.3f) * (dice.Share() - 0.5f));
        if (!mesh.EachNode().empty())
        {
            MoveBy(*mesh.EachNode().front(), by);
        }
    }
}

TEST_F(ShadowMoves, MapsAreThoseThatAreDrawnWholeWhateverMaterialsMove)
{
    unsigned int seed = 100;
    for (const Kind& kind : Kinds())
    {
        SCOPED_TRACE(kind.name);
        std::unique_ptr<EveryFeatureScene> features[2];
        std::unique_ptr<Watched> watched[2];
        for (int i = 0; i < 2; ++i)
        {
            auto scene = std::make_unique<Scene>();
            features[i] = std::make_unique<EveryFeatureScene>(*scene);
            auto presentation = std::make_unique<Presentation>(std::move(scene), std::vector<Host::ImportedNode>());
            watched[i] = std::make_unique<Watched>(std::move(presentation));
        }
        PresentationSettings settings = kind.settings;
        settings.view.eye = Vector(5.0f, 4.0f, 9.0f);
        settings.view.target = Vector(0.0f, 0.0f, 0.0f);
        const auto edit = [&](std::size_t which, Dice& dice) {
            MoveSome(watched[which]->Get().GetScene(), dice);
            watched[which]->Get().GetScene().MarkDirty();
        };
        EXPECT_GT(ExpectTexelsOfWholeMaps(*watched[0], *watched[1], settings, edit, ++seed), 5);
    }
}

/// A cube whose corners are told from so far away that floats leave them by several texels of where they are.
MeshNode& AddFarDescribed(FloorAndCube& made, float away)
{
    auto raw = std::make_shared<RawMesh>(*made.cube->GetMeshes().front()->GetRawMesh());
    for (Vector& position : raw->positions)
    {
        position.Add(position, Vector(away, 0, away));
    }
    raw->ComputeBBox();
    return ShowMesh(raw, *made.cubeMaterial, made.presentation->GetScene());
}

TEST_F(ShadowMoves, MapsAreThoseThatAreDrawnWholeOfShapesFarFromTheirOrigin)
{
    constexpr float kAway = 4194304.0f;
    FloorAndCube made[2] = {MakeFloorAndCube(1.0f), MakeFloorAndCube(1.0f)};
    MeshNode* const nodes[2] = {&AddFarDescribed(made[0], kAway), &AddFarDescribed(made[1], kAway)};
    const auto edit = [&](std::size_t which, Dice& dice) {
        // Turned, so that what comes of the way there and back is no whole number.
        const float angle = 0.5f * dice.Share();
        Quaternion turn;
        turn.w = std::cos(0.5f * angle);
        turn.x = 0.0f;
        turn.y = std::sin(0.5f * angle);
        turn.z = 0.0f;
        Transform place;
        place.SetRotation(turn);
        const auto& rows = place.GetTransf3d().m;
        const double x = kAway * (rows[0][0] + rows[0][2]);
        const double z = kAway * (rows[2][0] + rows[2][2]);
        const float across = 2.0f * dice.Share();
        const float along = 2.0f * dice.Share();
        place.SetPosition(Vector(static_cast<float>(-x) + across, 0.3f, static_cast<float>(-z) + along));
        nodes[which]->SetLocal(place);
        nodes[which]->GetScene()->MarkDirty();
    };
    PresentationSettings settings = LookingDown();
    settings.batches.use = BatchUse::Off;
    Dice none(1);
    edit(0, none);
    Dice same(1);
    edit(1, same);
    for (FloorAndCube& each : made)
    {
        each.presentation->Refresh();
    }
    Watched partly(std::move(made[0].presentation));
    Watched whole(std::move(made[1].presentation));
    EXPECT_GT(ExpectTexelsOfWholeMaps(partly, whole, settings, edit, 5), 5);
}

/// A floor with small cubes on it, 6 each way, of which those of one row are of glass.
struct Cubes
{
    std::unique_ptr<Presentation> presentation;
    std::vector<MeshNode*> nodes;

    static constexpr int kSide = 6;

    MeshNode& At(int column, int row) const { return *nodes[static_cast<std::size_t>(row * kSide + column)]; }

    void Move(MeshNode& node, float by) const
    {
        MoveBy(node, Vector(by, 0, 0));
        presentation->GetScene().MarkDirty();
    }
};

PresentationSettings LookingDownWith(BatchUse batches)
{
    PresentationSettings settings = LookingDown();
    settings.batches.use = batches;
    return settings;
}

Cubes MakeCubes()
{
    FloorAndCube made = MakeFloorAndCube(0.5f);
    Scene& scene = made.presentation->GetScene();
    auto* const glass = new Material("glass");
    glass->SetDiffuse(Color(0.5f, 0.6f, 0.9f, 0.4f));
    scene.AddMaterial(glass);
    auto* const pane = new Mesh(made.cube->GetMeshes().front()->GetRawMesh(), &scene);
    glass->AddMesh(pane);
    Cubes cubes;
    for (int i = 0; i < Cubes::kSide * Cubes::kSide; ++i)
    {
        auto* const node = new MeshNode(&scene);
        scene.GetRoot()->AddChild(node, false);
        const int row = i / Cubes::kSide;
        (row == 0 ? pane : made.cube->GetMeshes().front())->AddNode(node);
        Transform place;
        place.SetScale(Vector(0.3f, 0.3f, 0.3f));
        place.SetPosition(Vector(1.6f * static_cast<float>(i % Cubes::kSide) - 4.0f, 0,
                                 1.6f * static_cast<float>(row) - 4.0f));
        node->SetLocal(place);
        cubes.nodes.push_back(node);
    }
    made.presentation->Hide("cube");
    made.presentation->Refresh();
    cubes.presentation = std::move(made.presentation);
    return cubes;
}

class ShadowDraws : public ShadowMoves
{
protected:
    static std::size_t CountDraws(const GLRecorder& recorder)
    {
        std::size_t count = 0;
        for (const GLCall& call : recorder.Calls())
        {
            count += call.name.rfind("glDraw", 0) == 0 || call.name.rfind("glMultiDraw", 0) == 0 ? 1 : 0;
        }
        return count;
    }

    std::size_t DrawsOfFrame(const Cubes& cubes)
    {
        const GLRecorder recorder(GLRecorder::Mode::Forward);
        Draw(*cubes.presentation);
        return CountDraws(recorder);
    }
};

TEST_F(ShadowDraws, OfSomethingSmallThatMovesAreFew)
{
    const Cubes cubes = MakeCubes();
    PresentationSettings settings = LookingDownWith(BatchUse::Off);
    Apply(*cubes.presentation, settings);
    Draw(*cubes.presentation);
    const std::size_t resting = DrawsOfFrame(cubes);
    settings.sun->direction = Vector(1, 1, 0.1f);
    Apply(*cubes.presentation, settings);
    // Glass is drawn twice.
    EXPECT_EQ(DrawsOfFrame(cubes) - resting, cubes.nodes.size() + Cubes::kSide + 1);
    ASSERT_EQ(DrawsOfFrame(cubes), resting);
    for (int i = 0; i < 3; ++i)
    {
        cubes.Move(cubes.At(2, 3), 0.05f);
        EXPECT_EQ(DrawsOfFrame(cubes) - resting, 2u) << "itself and the floor";
    }
    cubes.Move(cubes.At(2, 0), 0.1f);
    EXPECT_EQ(DrawsOfFrame(cubes) - resting, 2u) << "glass, twice";
    cubes.Move(cubes.At(4, 1), 0.1f);
    cubes.Move(cubes.At(1, 5), -0.1f);
    EXPECT_EQ(DrawsOfFrame(cubes) - resting, 4u) << "two far from each other, and the floor under each";
    // Where it was and where it comes to lie.
    cubes.Move(cubes.At(0, 3), 4.0f);
    EXPECT_LE(DrawsOfFrame(cubes) - resting, 8u);
    cubes.At(4, 2).SetFlags(NodeFlagHidden, false);
    cubes.presentation->GetScene().MarkDirty();
    EXPECT_EQ(DrawsOfFrame(cubes), resting) << "the floor under what is hidden, and one less for the eye";
}

TEST_F(ShadowDraws, OfAShapeThatIsDescribedAnewAreFew)
{
    const Cubes cubes = MakeCubes();
    Scene& scene = cubes.presentation->GetScene();
    const Mesh& cube = *cubes.At(2, 3).GetMeshes().front();
    const auto described = std::make_shared<RawMesh>(*cube.GetRawMesh());
    ShowMesh(described, *cube.GetMaterial(), scene).SetLocal(cubes.At(2, 3).GetLocal());
    Apply(*cubes.presentation, LookingDownWith(BatchUse::Off));
    cubes.presentation->Refresh();
    Draw(*cubes.presentation);
    const std::size_t resting = DrawsOfFrame(cubes);
    for (const float height : {1.4f, 1.3f})
    {
        RawMesh& raw = *described;
        std::vector<Vector> positions = raw.positions;
        std::vector<Vector> normals = raw.normals;
        std::vector<unsigned short> indices = raw.indices;
        for (Vector& position : positions)
        {
            position.y = position.y > 1.0f ? height : position.y;
        }
        raw.StartDescription();
        raw.SetPositionBuffer(std::move(positions));
        raw.SetNormalBuffer(std::move(normals));
        raw.SetIndices(std::move(indices));
        raw.EndDescription(true);
        scene.MarkDirty();
        EXPECT_EQ(DrawsOfFrame(cubes) - resting, 3u) << "itself, the cube in it and the floor";
    }
}

TEST_F(ShadowDraws, OfSomethingSmallThatMovesAreFewBesideBatches)
{
    const Cubes cubes = MakeCubes();
    Apply(*cubes.presentation, LookingDownWith(BatchUse::On));
    for (int i = 0; i < 3; ++i)
    {
        // It leaves its batch.
        cubes.Move(cubes.At(2, 3), 0.1f);
        Draw(*cubes.presentation);
    }
    cubes.Move(cubes.At(2, 3), 0.1f);
    GLRecorder recorder(GLRecorder::Mode::Forward);
    Draw(*cubes.presentation);
    EXPECT_EQ(recorder.Count("glClear", {0}), 1u) << "what is solid, in part";
}

TEST_F(ShadowDraws, AreOfAllWhereNothingOfTheMapHolds)
{
    const Cubes cubes = MakeCubes();
    Apply(*cubes.presentation, LookingDownWith(BatchUse::Off));
    Draw(*cubes.presentation);
    const std::size_t resting = DrawsOfFrame(cubes);
    const std::size_t all = cubes.nodes.size() + Cubes::kSide + 1;
    cubes.presentation->Suspend();
    cubes.presentation->Resume();
    EXPECT_GE(DrawsOfFrame(cubes) - resting, all) << "after a suspend";
    // What is nearest to the sun is what depths are counted from.
    Transform place = cubes.At(2, 3).GetLocal();
    place.SetPosition(Vector(5, 3, 0));
    cubes.At(2, 3).SetLocal(place);
    cubes.presentation->GetScene().MarkDirty();
    EXPECT_EQ(DrawsOfFrame(cubes) - resting, all) << "with something higher";
}

} // namespace

} // namespace OV::Test
