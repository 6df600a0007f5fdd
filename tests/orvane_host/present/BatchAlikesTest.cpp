// Materials that differ in their colours alone share batches, as long as they differ in nothing else.

#include "orvane_host/import/detail/ImportedMaterial.h"
#include "orvane_host/present/BatchSettings.h"
#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/StageAccess.h"
#include "orvane/effects/EffectES20.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"
#include "tests/orvane_host/present/AddedStage.h"
#include "tests/orvane_host/present/PresentationStage.h"
#include "tests/support/GLRecorder.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace OV::Test
{

namespace
{

using Host::BatchCounts;
using Host::BatchUse;
using Host::ImportedMaterial;
using Host::Look;

/// A class of a host's, which might do anything.
class OwnMaterial : public Material
{
public:
    using Material::Material;
};

/// Rectangles side by side, each of a material and a colour of its own.
class BatchAlikes : public FlatStage
{
protected:
    static constexpr int Columns = 12;
    static constexpr int Rows = 8; ///< in the view
    static constexpr int Cell = 8;

    template <class Made = Material>
    Made& Add(const Color& diffuse, const Color& ambient = Color(0.0f, 0.0f, 0.0f))
    {
        auto* const material = new Made("colour");
        material->SetFlags(MaterialFlagUnlit);
        material->SetDiffuse(diffuse);
        material->SetAmbient(ambient);
        World().AddMaterial(material);
        const auto at = static_cast<int>(materials.size());
        nodes.push_back(&AddRect(*material, {at % Columns * Cell, at / Columns * Cell, Cell, Cell}, 0.0f, at));
        materials.push_back(material);
        return *material;
    }

    static Color ColorOf(std::size_t index)
    {
        const auto share = [index](std::size_t step, std::size_t of) {
            return static_cast<float>(index * step % of) / static_cast<float>(of);
        };
        return Color(share(7, 31), share(11, 29), share(5, 37));
    }

    template <class Made = Material>
    void Fill(std::size_t count)
    {
        for (std::size_t i = 0; i < count; ++i)
        {
            Add<Made>(ColorOf(materials.size()));
        }
    }

    void DrawTogether(int frames = 2)
    {
        renderer->SetBatches({BatchUse::On});
        DrawOften(frames);
    }

    Picture DrawOften(int frames)
    {
        for (int i = 1; i < frames; ++i)
        {
            Draw();
        }
        return Draw();
    }

    BatchCounts Counts() const { return renderer->CountBatches(); }

    static Pixel Middle(const Picture& picture, std::size_t index)
    {
        const auto at = static_cast<int>(index);
        return picture.At(at % Columns * Cell + Cell / 2, at / Columns * Cell + Cell / 2);
    }

    static Pixel Shown(const Material& material)
    {
        const auto channel = [](float ambient, float diffuse) {
            return static_cast<unsigned char>(std::lround(255.0f * std::min(ambient + diffuse, 1.0f)));
        };
        const Color& a = material.GetAmbient();
        const Color& d = material.GetDiffuse();
        return {channel(a.r, d.r), channel(a.g, d.g), channel(a.b, d.b), 255};
    }

    static int Difference(const Pixel& a, const Pixel& b)
    {
        return std::max({std::abs(a.r - b.r), std::abs(a.g - b.g), std::abs(a.b - b.b)});
    }

    /// That each rectangle has the colours that its material has by now; none for a null one.
    void ExpectColors(const Picture& picture, const std::string& what)
    {
        ExpectColors(picture, materials.size(), what);
    }

    /// Likewise of those in the view.
    void ExpectSeenColors(const Picture& picture, const std::string& what)
    {
        ExpectColors(picture, static_cast<std::size_t>(Columns * Rows), what);
    }

    void ExpectColors(const Picture& picture, std::size_t count, const std::string& what)
    {
        for (std::size_t i = 0; i < count; ++i)
        {
            const Pixel expected = materials[i] ? Shown(*materials[i]) : Ground;
            EXPECT_LE(Difference(Middle(picture, i), expected), 1)
                << what << ": rectangle " << i << " is " << Middle(picture, i) << ", not " << expected;
        }
    }

    std::size_t CountDraws()
    {
        World().MarkDirty();
        app.Update(0.0f);
        renderer->BeginRender(false, Color(1, 1, 1));
        std::size_t draws = 0;
        {
            const GLRecorder recorder(GLRecorder::Mode::Forward);
            renderer->Render3D(&World(), &Camera());
            for (const GLCall& call : recorder.Calls())
            {
                draws += call.name.find("DrawElements") != std::string::npos ? 1 : 0;
            }
        }
        renderer->EndRender();
        return draws;
    }

    std::vector<Material*> materials;
    std::vector<MeshNode*> nodes;
};

} // namespace

TEST_F(BatchAlikes, ManyMaterialsThatDifferInColoursAreOneDraw)
{
    Fill(90);
    DrawTogether();
    EXPECT_EQ(CountDraws(), 1u);
    EXPECT_EQ(Counts().batches, 1u);
    EXPECT_EQ(Counts().pieces, 90u);
    EXPECT_EQ(Counts().bytes, 90u * (4 * 6 * sizeof(float) + 6 * sizeof(unsigned short))) << "none for the materials";
    ExpectColors(Draw(), "together");
    renderer->SetBatches({BatchUse::Off});
    DrawOften(2);
    EXPECT_EQ(CountDraws(), 90u);
}

TEST_F(BatchAlikes, TwentyThousandMaterialsAreABatchForEachTwoHundred)
{
    Fill(20000);
    DrawTogether();
    EXPECT_EQ(Counts().pieces, 20000u);
    const auto most = static_cast<std::size_t>(EffectES20::MostMaterialColors());
    EXPECT_EQ(most, 256u);
    EXPECT_EQ(Counts().batches, (20000 + most - 1) / most);
    // Those near each other share one: of all but the 96 in the view one is seen, or a few.
    EXPECT_LE(CountDraws(), 2u);
    ExpectSeenColors(Draw(), "the first of many");
    // What is not seen is not compared, and shows once it is seen.
    materials[40]->SetDiffuse(Color(0.9f, 0.1f, 0.8f));
    materials[19999]->SetFlags(MaterialFlagNoCull);
    ExpectSeenColors(Draw(), "another colour");
    EXPECT_EQ(Counts().pieces, 20000u);
}

TEST_F(BatchAlikes, EveryLookShowsThemAsNodeByNode)
{
    auto* const light = new LightNode(&World());
    World().GetRoot()->AddChild(light, false);
    light->SetLocalDirection(Vector(0.3f, 0.5f, -1.0f));
    light->SetColor(0.9f, 0.7f, 0.5f);
    for (std::size_t i = 0; i < 90; ++i)
    {
        Material& material = Add(ColorOf(i), ColorOf(i + 40));
        material.ClearFlags(i % 2 == 0 ? MaterialFlagUnlit : MaterialFlags{});
        material.ignoreLightColor = i % 3 == 0;
        material.reflectionFactors[0] = i % 5 == 0 ? 0.3f : 0.0f;
        material.reflectionFactors[1] = i % 5 == 0 ? 0.6f : 0.0f;
    }
    // Those of a look that are too few stay by themselves.
    for (const Look look : {Look::Basic, Look::Advanced, Look::Phong, Look::Monotone, Look::VertexColor})
    {
        renderer->SetLook(look);
        renderer->SetBatches({BatchUse::Off});
        const Picture expected = DrawOften(2);
        const std::size_t drawsApart = CountDraws();
        DrawTogether(3);
        EXPECT_LT(CountDraws(), drawsApart);
        const Picture actual = Draw();
        for (std::size_t i = 0; i < materials.size(); ++i)
        {
            EXPECT_LE(Difference(Middle(actual, i), Middle(expected, i)), 1)
                << "look " << static_cast<int>(look) << ", rectangle " << i << ": " << Middle(actual, i)
                << ", node by node " << Middle(expected, i);
        }
    }
}

TEST_F(BatchAlikes, AStageOfTheHostsThatDrawsTheFramesItemsShowsTheirColours)
{
    Fill(60);
    auto* const stage = new AddedStage(std::make_shared<StageRecord>());
    bool asPart = false;
    stage->draw = [&](Host::PresentationFrame& frame) {
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        if (asPart)
        {
            frame.renderer.DrawInPicture(frame, frame.items.all, RenderPassDefault);
        }
        else
        {
            frame.renderer.Draw(frame.cameraData, frame.items.all, RenderPassDefault);
        }
    };
    renderer->AddStage(std::unique_ptr<Host::PresentationStage>(stage), Host::StageSlot::AfterSurfaces);
    DrawTogether(3);
    ASSERT_GT(Counts().pieces, 0u);
    ExpectColors(Draw(), "drawn anew");
    asPart = true;
    ExpectColors(Draw(), "drawn anew as a part of the picture");
}

TEST_F(BatchAlikes, AColourThatChangesShowsAtOnceAndTakesNoDrawMore)
{
    Fill(60);
    DrawTogether();
    for (int step = 0; step < 5; ++step)
    {
        materials[static_cast<std::size_t>(7 * step)]->SetDiffuse(Color(0.1f * static_cast<float>(step), 1.0f, 0.3f));
        materials[31]->SetAmbient(Color(0.0f, 0.1f * static_cast<float>(step), 0.2f));
        ExpectColors(Draw(), "step " + std::to_string(step));
        EXPECT_EQ(CountDraws(), 1u);
    }
    for (std::size_t i = 0; i < materials.size(); ++i)
    {
        materials[i]->SetDiffuse(ColorOf(i + 13));
    }
    ExpectColors(Draw(), "all at once");
    EXPECT_EQ(CountDraws(), 1u);
}

TEST_F(BatchAlikes, WhatMovesAfterItsColourHasChangedKeepsIt)
{
    Fill(60);
    DrawTogether();
    materials[20]->SetDiffuse(Color(1.0f, 0.5f, 0.0f));
    Transform place;
    place.SetPosition(Vector(0.0f, 0.0f, 1.0f));
    nodes[20]->SetLocal(place);
    ExpectColors(Draw(), "moved");
    // It moves on, and comes back in other colours.
    for (int i = 0; i < 3; ++i)
    {
        place.SetPosition(Vector(0.0f, 0.0f, 2.0f + static_cast<float>(i)));
        nodes[20]->SetLocal(place);
        materials[20]->SetDiffuse(Color(0.2f, 0.5f, 0.25f * static_cast<float>(i)));
        ExpectColors(Draw(), "moving on");
    }
    EXPECT_EQ(CountDraws(), 2u);
    ExpectColors(DrawOften(40), "back");
    EXPECT_EQ(CountDraws(), 1u);
}

TEST_F(BatchAlikes, WhatBecomesAnotherIsDrawnByItselfAtOnce)
{
    struct Case
    {
        const char* label;
        std::function<void(Material&)> change;
        bool showsColor = true;
    };
    const Case cases[] = {
        {"flags", [](Material& m) { m.SetFlags(MaterialFlagNoCull); }},
        {"polygon offset",
         [](Material& m) {
             m.SetFlags(MaterialFlagPolygonOffset);
             m.polygonOffsetUnits = 2.0f;
         }},
        {"whatever the depth", [](Material& m) { m.SetFlags(MaterialFlagAlwaysPass); }},
        {"light's colour", [](Material& m) { m.ignoreLightColor = false; }},
        {"reflection", [](Material& m) { m.reflectionFactors[1] = 0.5f; }},
        {"gloss", [](Material& m) { m.reflectionFactors[2] = 0.5f; }},
        {"stippling", [](Material& m) { m.stippling = true; }, false},
        {"opacity", [](Material& m) { m.SetOpacity(0.5f); }, false},
        {"draw ID", [](Material& m) { m.SetDrawID(1); }, false},
        {"more than white", [](Material& m) { m.SetDiffuse(Color(2.0f, 0.3f, 0.1f)); }},
        {"less than black", [](Material& m) { m.SetAmbient(Color(-0.25f, 0.0f, 0.0f)); }, false},
        {"no number", [](Material& m) { m.reflectionFactors[0] = std::nanf(""); }, false},
        {"texture", [](Material& m) { m.textureName = "absent.png"; }},
        {"normal map", [](Material& m) { m.normalMapName = "absent.png"; }},
        {"opacity map", [](Material& m) { m.opacityMapName = "absent.png"; }},
        {"alpha", [](Material& m) { m.hasAlpha = true; }},
    };
    for (const Case& one : cases)
    {
        app.GetContext()->SetScene(std::make_unique<Scene>());
        FitCamera();
        materials.clear();
        nodes.clear();
        NewRenderer();
        renderer->SetLook(Look::Basic);
        Fill(60);
        DrawTogether();
        ASSERT_EQ(Counts().pieces, 60u);
        one.change(*materials[33]);
        const Picture changed = Draw();
        EXPECT_EQ(Counts().pieces, 59u) << one.label;
        if (one.showsColor)
        {
            ExpectColors(changed, one.label);
        }
        const Picture later = DrawOften(20);
        EXPECT_EQ(Difference(Middle(later, 33), Middle(changed, 33)), 0) << one.label;
        EXPECT_EQ(Counts().pieces, 59u) << one.label;
    }
}

TEST_F(BatchAlikes, WhatIsLikeTheOthersAgainComesBack)
{
    Fill(60);
    DrawTogether();
    materials[5]->SetFlags(MaterialFlagNoCull);
    DrawOften(15);
    EXPECT_EQ(Counts().single, 1u);
    materials[5]->ClearFlags(MaterialFlagNoCull);
    materials[5]->SetDiffuse(Color(0.0f, 0.6f, 0.6f));
    // What rests by itself is looked at when it is stirred.
    Transform place;
    place.SetPosition(Vector(0.0f, 0.0f, 1.0f));
    nodes[5]->SetLocal(place);
    ExpectColors(DrawOften(30), "back");
    Fill(2);
    ExpectColors(DrawOften(30), "with others");
    EXPECT_EQ(CountDraws(), 2u) << "too few to be packed anew with all";
    EXPECT_EQ(Counts().pieces, 62u);
}

TEST_F(BatchAlikes, WhereAllChangeInOneWayTheyStayTogether)
{
    Fill(60);
    DrawTogether();
    for (Material* material : materials)
    {
        material->SetFlags(MaterialFlagNoCull);
        material->SetAmbient(Color(0.1f, 0.0f, 0.1f));
    }
    ExpectColors(Draw(), "changed");
    EXPECT_EQ(CountDraws(), 1u);
    Fill(1);
    Draw();
    EXPECT_EQ(Counts().pieces, 60u) << "the new one is of the look that was";
}

TEST_F(BatchAlikes, MaterialsThatLeaveTheSceneOrDieTakeTheirPiecesAlong)
{
    Fill(60);
    DrawTogether();
    Material* const left = materials[0];
    materials[0] = nullptr;
    World().RemoveMaterial(left);
    ExpectColors(Draw(), "removed");
    delete materials[1];
    materials[1] = nullptr;
    ExpectColors(Draw(), "deleted");
    // All but one, the first of them first.
    for (std::size_t i = 2; i < 59; ++i)
    {
        delete materials[i];
        materials[i] = nullptr;
        ExpectColors(Draw(), "one more deleted");
    }
    materials[0] = left;
    World().AddMaterial(left);
    ExpectColors(Draw(), "back in the scene");
    ExpectColors(DrawOften(20), "rested");
    delete materials[59];
    delete left;
    materials[0] = nullptr;
    materials[59] = nullptr;
    ExpectColors(Draw(), "none");
    EXPECT_EQ(Counts().batches, 0u);
}

TEST_F(BatchAlikes, TheFirstMaterialMayLoseItsMeshes)
{
    Fill(60);
    DrawTogether();
    // A material without meshes isn't drawn with.
    Material* const first = materials[0];
    Mesh* const mesh = *first->EachMesh().begin();
    materials[1]->AddMesh(mesh);
    materials[0] = materials[1];
    ExpectColors(Draw(), "given away");
    ExpectColors(DrawOften(20), "rested");
    EXPECT_EQ(first->EachMesh().size(), 0u);
}

TEST_F(BatchAlikes, FewMaterialsKeepBatchesOfTheirOwnUntilTheyAreMany)
{
    Fill(4);
    DrawTogether(12);
    EXPECT_EQ(Counts().pieces, 0u) << "each has one mesh";
    EXPECT_EQ(CountDraws(), 4u);
    Fill(1);
    ExpectColors(DrawOften(12), "five");
    EXPECT_EQ(CountDraws(), 1u);
    EXPECT_EQ(Counts().pieces, 5u);
    EXPECT_EQ(Counts().single, 0u);
}

TEST_F(BatchAlikes, BatchesOfTheirOwnBecomeSharedOnes)
{
    Fill(4);
    const auto addToEach = [this] {
        for (Material* material : materials)
        {
            AddRect(*material, {90, 60, 2, 2}, 0.0f, 1000);
        }
    };
    addToEach();
    DrawTogether(12);
    EXPECT_EQ(CountDraws(), 4u);
    EXPECT_EQ(Counts().batches, 4u);
    Fill(10);
    ExpectColors(Draw(), "at once");
    ExpectColors(DrawOften(20), "rested");
    EXPECT_EQ(Counts().pieces, 18u);
    EXPECT_LE(CountDraws(), 2u);
}

TEST_F(BatchAlikes, LargeMaterialsShareBatchesByPlace)
{
    Fill(40);
    // Of four vertices each: both have more than a batch takes, side by side.
    for (int i = 0; i < 34000; ++i)
    {
        AddRect(*materials[static_cast<std::size_t>(i % 2)], {i % 170 * 200 + 200, i / 170 * 200, 1, 1}, 0.0f, 2000 + i);
    }
    DrawTogether();
    ExpectColors(Draw(), "large");
    EXPECT_EQ(Counts().pieces, 34040u);
    EXPECT_EQ(Counts().batches, 3u) << "as few as hold the vertices";
    EXPECT_EQ(CountDraws(), 1u) << "what is far is none of the batch in the view";
    materials[1]->SetDiffuse(Color(0.5f, 0.25f, 1.0f));
    ExpectColors(Draw(), "another colour");
    EXPECT_EQ(CountDraws(), 1u);
}

TEST_F(BatchAlikes, MaterialsNearEachOtherShareBatchesInWhateverOrderTheyCome)
{
    constexpr int count = 2048;
    for (int i = 0; i < count; ++i)
    {
        const int at = i * 1051 % count;
        Material& material = AddMaterial(ColorOf(static_cast<std::size_t>(i)));
        AddRect(material, {at % 32 * 20, at / 32 * 20, 20, 20}, 0.0f, i);
    }
    DrawTogether();
    EXPECT_EQ(Counts().pieces, static_cast<std::size_t>(count));
    EXPECT_EQ(Counts().batches, 8u);
    EXPECT_EQ(CountDraws(), 1u) << "one corner is seen";
}

TEST_F(BatchAlikes, MoreThanAProgramHasRoomForShareBatchesOfAsMany)
{
    const auto most = static_cast<std::size_t>(EffectES20::MostMaterialColors());
    Fill(most);
    DrawTogether();
    EXPECT_EQ(Counts().batches, 1u);
    // A number that is given back becomes another material's.
    World().RemoveMaterial(materials[50]);
    delete materials[50];
    materials[50] = nullptr;
    ExpectSeenColors(Draw(), "one less");
    materials[50] = &AddMaterial(Color(0.1f, 0.9f, 0.6f));
    AddRect(*materials[50], {50 % Columns * Cell, 50 / Columns * Cell, Cell, Cell}, 0.0f, 50);
    ExpectSeenColors(Draw(), "another in its place");
    EXPECT_EQ(Counts().pieces, most);
    // Too few for batches of their own, at first.
    Fill(4);
    DrawOften(12);
    EXPECT_EQ(Counts().pieces, most);
    EXPECT_EQ(Counts().single, 4u);
    Fill(1);
    ExpectSeenColors(DrawOften(12), "more");
    EXPECT_EQ(Counts().pieces, most + 5);
    EXPECT_EQ(Counts().single, 0u);
}

TEST_F(BatchAlikes, NormalsAreKeptAndMayBeMissing)
{
    auto* const light = new LightNode(&World());
    World().GetRoot()->AddChild(light, false);
    light->SetLocalDirection(Vector(0.3f, 0.5f, -1.0f));
    const Vector normals[] = {Vector(0.0f, 0.0f, 1.0f), Vector(0.0f, 1.0f, 0.0f), Vector(-1.0f, 0.0f, 0.0f),
                              Vector(0.6f, -0.0f, 0.8f), Vector(0.0f, 0.0f, 1e-30f)};
    for (std::size_t i = 0; i < 80; ++i)
    {
        Add(ColorOf(i), ColorOf(i + 9)).ClearFlags(i % 7 != 0 ? MaterialFlagUnlit : MaterialFlags{});
        Mesh& mesh = **nodes.back()->EachMesh().begin();
        RawMesh& raw = *mesh.GetRawMesh();
        std::vector<Vector> positions = mesh.GetPositionBuffer();
        std::vector<unsigned short> indices = mesh.GetIndices();
        raw.StartDescription();
        raw.SetPositionBuffer(std::move(positions));
        raw.SetIndices(std::move(indices));
        if (i % 4 != 3)
        {
            raw.SetNormalBuffer(std::vector<Vector>(4, normals[i % 5]));
        }
        raw.EndDescription(false);
    }
    for (const Look look : {Look::Basic, Look::Advanced, Look::Phong})
    {
        renderer->SetLook(look);
        renderer->SetBatches({BatchUse::Off});
        const Picture expected = DrawOften(2);
        DrawTogether(3);
        EXPECT_LE(CountDraws(), 4u);
        const Picture actual = Draw();
        for (std::size_t i = 0; i < materials.size(); ++i)
        {
            EXPECT_LE(Difference(Middle(actual, i), Middle(expected, i)), 1)
                << "look " << static_cast<int>(look) << ", rectangle " << i << ": " << Middle(actual, i)
                << ", node by node " << Middle(expected, i);
        }
    }
}

TEST_F(BatchAlikes, AHostsClassOfMaterialIsDrawnByItselfAndTheImportersIsNot)
{
    Fill<OwnMaterial>(30);
    Fill<ImportedMaterial>(30);
    Fill(30);
    DrawTogether();
    // The importer's look at colours of vertices, which others don't.
    EXPECT_EQ(CountDraws(), 32u);
    ExpectColors(Draw(), "three classes");
}

TEST_F(BatchAlikes, ImportedMaterialsShowTheColoursOfTheirVerticesTimesTheirOwn)
{
    auto* const light = new LightNode(&World());
    World().GetRoot()->AddChild(light, false);
    light->SetLocalDirection(Vector(0.0f, 0.0f, -1.0f));
    renderer->SetLook(Look::Advanced);
    for (std::size_t i = 0; i < 40; ++i)
    {
        auto* const material = new ImportedMaterial("imported");
        material->SetDiffuse(ColorOf(i));
        material->SetAmbient(ColorOf(i + 3));
        World().AddMaterial(material);
        const auto at = static_cast<int>(i);
        const std::vector<Color> colors(i % 2 == 0 ? 4 : 0, Color(0.5f, 0.75f, 0.25f));
        AddRect(*material, {at % Columns * Cell, at / Columns * Cell, Cell, Cell}, 0.0f, at, colors);
    }
    const Picture expected = DrawOften(2);
    DrawTogether();
    EXPECT_EQ(CountDraws(), 2u);
    const Picture actual = Draw();
    for (std::size_t i = 0; i < 40; ++i)
    {
        EXPECT_LE(Difference(Middle(actual, i), Middle(expected, i)), 1) << "rectangle " << i;
    }
}

TEST_F(BatchAlikes, AtOnePlaceTheFirstMaterialShows)
{
    Fill(40);
    // Faces in one plane, at the place of each other: the first that is drawn stays.
    std::vector<Material*> over;
    for (std::size_t i = 0; i < 40; ++i)
    {
        Material& material = AddMaterial(ColorOf(i + 17));
        const auto at = static_cast<int>(i);
        AddRect(material, {at % Columns * Cell, at / Columns * Cell, Cell, Cell}, 0.0f, 500 + at);
    }
    renderer->SetBatches({BatchUse::Off});
    const Picture expected = DrawOften(2);
    DrawTogether();
    EXPECT_EQ(CountDraws(), 1u);
    ExpectSame(Draw(), expected, "together");
}

TEST_F(BatchAlikes, ColoursThatChangeUnseenShowOnceTheyAreSeen)
{
    Fill(60);
    DrawTogether();
    Transform away;
    away.SetPosition(Vector(5000.0f, 0.0f, 100.0f));
    const Transform before = Camera().GetLocal();
    Camera().SetLocal(away);
    Draw();
    EXPECT_EQ(CountDraws(), 0u);
    materials[8]->SetDiffuse(Color(0.9f, 0.8f, 0.1f));
    Material* const deleted = materials[9];
    materials[9] = nullptr;
    World().RemoveMaterial(deleted);
    DrawOften(3);
    // What comes while nothing is seen must not take the others along as they were.
    Fill(3);
    DrawOften(3);
    Camera().SetLocal(before);
    ExpectColors(Draw(), "seen again");
    delete deleted;
}

TEST_F(BatchAlikes, HiddenAndDeletedNodesShowNothing)
{
    Fill(60);
    DrawTogether();
    std::vector<Material*> shown = materials;
    nodes[4]->SetFlags(NodeFlagHidden, false);
    materials[4] = nullptr;
    World().DeleteSubtree(nodes[5]);
    materials[5] = nullptr;
    ExpectColors(Draw(), "hidden and deleted");
    shown[4]->SetDiffuse(Color(0.3f, 0.9f, 0.2f));
    ExpectColors(Draw(), "another colour while hidden");
    nodes[4]->ClearFlags(NodeFlagHidden, false);
    materials[4] = shown[4];
    ExpectColors(Draw(), "shown again");
    ExpectColors(DrawOften(20), "rested");
    EXPECT_EQ(CountDraws(), 1u);
}

} // namespace OV::Test
