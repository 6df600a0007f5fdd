#include "orvane_host/import/detail/ImportedMaterial.h"
#include "orvane_host/present/BatchSettings.h"
#include "orvane_host/present/GlassSettings.h"
#include "orvane_host/present/ShadowSettings.h"
#include "orvane_host/present/Surroundings.h"
#include "orvane/math/Transform.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"
#include "tests/orvane_host/present/AddedStage.h"
#include "tests/orvane_host/present/PresentationStage.h"
#include "tests/support/CountingMeshData.h"
#include "tests/support/GLRecorder.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// Where nothing looks at each mesh, a frame draws whole materials by the lists that they keep. A host's stage is handed
// each mesh: with one that does nothing, calls and picture must be the same.
namespace OV::Test
{

namespace
{

using Host::ImportedMaterial;
using Host::Look;

class WholeMaterials : public FlatStage
{
protected:
    WholeMaterials()
    {
        renderer->SetBatches({Host::BatchUse::Off});
        auto* const light = new LightNode(&World());
        World().GetRoot()->AddChild(light, false);
        light->SetLocalDirection(Vector(0.3f, 0.2f, -1.0f));
        plain = Imported(Color(0.7f, 0.7f, 0.2f));
        coloured = Imported(Color(0.9f, 0.9f, 0.9f));
        mixed = Imported(Color(0.5f, 0.9f, 0.9f));
        glass = Imported(Color(0.2f, 0.5f, 0.9f, 0.5f));
        Material& own = AddMaterial(Color(0.4f, 0.8f, 0.4f));
        own.ClearFlags(MaterialFlagUnlit);
        Material* const rows[] = {&own, plain, coloured, mixed, glass};
        for (int row = 0; row < 5; ++row)
        {
            for (int column = 0; column < 6; ++column)
            {
                const bool isColoured = row == 2 || (row >= 3 && column % 2 == 1);
                Add(*rows[row], column, row, isColoured);
            }
        }
    }

    ImportedMaterial* Imported(const Color& color)
    {
        auto* const material = new ImportedMaterial("imported");
        material->SetAmbient(Color(0.2f, 0.2f, 0.2f, 1.0f));
        material->SetDiffuse(color);
        material->SetSpecular(Color(0.5f, 0.5f, 0.5f));
        World().AddMaterial(material);
        return material;
    }

    void Add(Material& material, int column, int row, bool isColoured)
    {
        const std::vector<Color> colors(4, Color(0.8f, 0.2f, 0.4f));
        MeshNode& node = AddRect(material, {column * 15 + 2, row * 12 + 2, 14, 12}, static_cast<float>(row), column,
                                 isColoured ? colors : std::vector<Color>());
        Transform turned;
        if (column % 3 == 2)
        {
            // About the middle of the picture.
            turned.SetPosition(Vector(static_cast<float>(2 * (column * 15 + 9)), 0.0f, 0.0f));
            turned.SetScale(Vector(-1.0f, 1.0f, 1.0f));
        }
        node.SetLocal(turned);
        node.SetPath({{static_cast<std::uint64_t>(column % 2), 0}});
        nodes.push_back(&node);
    }

    Mesh& MeshOf(std::size_t index) { return *nodes[index]->GetMeshes().front(); }

    struct Frame
    {
        Picture picture;
        std::vector<std::string> calls;
    };

    Frame Record()
    {
        World().MarkDirty();
        app.Update(0.0f);
        renderer->BeginRender(false, Color(1, 1, 1));
        Frame frame;
        {
            const GLRecorder recorder(GLRecorder::Mode::Forward);
            renderer->Render3D(&World(), &Camera());
            for (const GLCall& call : recorder.Calls())
            {
                frame.calls.push_back(call.ToString());
            }
        }
        renderer->EndRender();
        frame.picture = ReadPixels();
        return frame;
    }

    void ExpectSameByMeshes(const std::string& what)
    {
        const Frame first = Record();
        AddedStage* const stage = new AddedStage(std::make_shared<StageRecord>());
        renderer->AddStage(std::unique_ptr<Host::PresentationStage>(stage), Host::StageSlot::OverPicture);
        const Frame byMeshes = Record();
        renderer->RemoveStage(stage);
        ExpectSame(first.picture, byMeshes.picture, (what + ", the first").c_str());
        const Frame whole = Record();
        ExpectSame(whole.picture, byMeshes.picture, what.c_str());
        EXPECT_EQ(whole.calls, byMeshes.calls) << what;
    }

    /// The stages that draw the scene, or part of it, into buffers of their own.
    struct Stage
    {
        const char* label;
        std::function<void()> use;
    };

    std::vector<Stage> Stages()
    {
        const auto edges = [this](Host::Identity identity)
        {
            Host::EdgeLook look;
            look.identity = identity;
            renderer->SetEdges(look);
        };
        const auto shadows = [this] { renderer->SetShadows(Host::ShadowSettings()); };
        const auto horizons = [this] { renderer->SetHorizonOcclusion({{20.0f, 1.0f}}); };
        return {
            {"edges of objects", [edges] { edges(Host::Identity::Object); }},
            {"edges of groups", [edges] { edges(Host::Identity::Group); }},
            {"occlusion", [this] { renderer->ShowAmbientOcclusion(true); }},
            {"occlusion by horizons", horizons},
            {"shadows", shadows},
            {"lines", [this] { renderer->ShowLines(true); }},
            {"cut shadows, horizons and lines",
             [this, shadows, horizons]
             {
                 EffectES20::AddClipPlane({1, 0, 0}, {50, 0, 0});
                 shadows();
                 horizons();
                 renderer->ShowLines(true);
             }},
            {"all",
             [this, edges, shadows, horizons]
             {
                 edges(Host::Identity::Group);
                 renderer->ShowAmbientOcclusion(true);
                 shadows();
                 horizons();
                 renderer->ShowLines(true);
             }},
        };
    }

    void DropStages()
    {
        EffectES20::ClearClipPlanes();
        renderer->SetEdges(std::nullopt);
        renderer->ShowAmbientOcclusion(false);
        renderer->SetHorizonOcclusion(std::nullopt);
        renderer->SetShadows(std::nullopt);
        renderer->ShowLines(false);
    }

    /// A frame in which what the sun sees is drawn anew, into a map of the same size, and all else is as in the frame
    /// before.
    Frame RecordWithNewSun()
    {
        renderer->SetSun(Vector(0.3f, 0.2f, 1.0f));
        Record();
        renderer->SetSun(Vector(0.29f, 0.2f, 1.0f));
        return Record();
    }

    ImportedMaterial* plain;
    ImportedMaterial* coloured;
    ImportedMaterial* mixed;
    ImportedMaterial* glass;
    std::vector<MeshNode*> nodes;
};

} // namespace

TEST_F(WholeMaterials, LookAsMeshByMesh)
{
    struct Way
    {
        const char* label;
        std::function<void(WholeMaterials&)> set;
        std::function<void(WholeMaterials&)> takeBack;
    };
    const auto reflect = [this](float share)
    {
        mixed->reflectionFactors[0] = share;
        mixed->reflectionFactors[1] = share;
        mixed->reflectionFactors[2] = share;
    };
    const std::vector<Way> ways = {
        {"plain", [](auto&) {}, [](auto&) {}},
        {"cut", [](auto&) { EffectES20::AddClipPlane({1, 0, 0}, {50, 0, 0}); },
         [](auto&) { EffectES20::ClearClipPlanes(); }},
        {"edited", [this](auto&) { renderer->EditInContext({{1, 0}}); },
         [this](auto&) { renderer->EditInContext({{0, 0}}); }},
        {"in surroundings",
         [this, reflect](auto&)
         {
             renderer->SetSurroundings(Host::Surroundings::OfSky(SkySettings::inst(), std::nullopt, Host::UpAxis::Z));
             reflect(0.5f);
         },
         [this, reflect](auto&)
         {
             renderer->SetSurroundings(nullptr);
             reflect(0.0f);
         }},
        {"glass in layers", [this](auto&) { renderer->SetGlass({Host::GlassOrder::Exact, 4}); },
         [this](auto&) { renderer->SetGlass({Host::GlassOrder::Scene, 4}); }},
        {"with shadows",
         [this](auto&)
         {
             renderer->SetSun(Vector(0.3f, 0.2f, 1.0f));
             renderer->SetShadows(Host::ShadowSettings());
         },
         [this](auto&) { renderer->SetShadows(std::nullopt); }},
        {"with edges", [this](auto&) { renderer->SetEdges(Host::EdgeLook()); },
         [this](auto&) { renderer->SetEdges(std::nullopt); }},
    };
    for (const Look look : {Look::Basic, Look::Advanced, Look::Phong, Look::Monotone, Look::VertexColor})
    {
        renderer->SetLook(look);
        for (const Way& way : ways)
        {
            way.set(*this);
            ExpectSameByMeshes(std::string(NameOfLook(look)) + ", " + way.label);
            way.takeBack(*this);
        }
    }
}

TEST_F(WholeMaterials, LookAsMeshByMeshInEveryStage)
{
    AddLine(Vector(5, 5, 10), Vector(80, 50, 10), Color(1, 0, 0), 1.0f);
    renderer->SetSun(Vector(0.3f, 0.2f, 1.0f));
    renderer->ShowLines(false);
    for (const Look look : {Look::Basic, Look::Advanced, Look::Monotone})
    {
        renderer->SetLook(look);
        for (const Stage& stage : Stages())
        {
            stage.use();
            ExpectSameByMeshes(std::string(NameOfLook(look)) + ", " + stage.label);
            DropStages();
        }
    }
}

class WholeMaterialsOfLook : public WholeMaterials, public ::testing::WithParamInterface<Look>
{
};

INSTANTIATE_TEST_SUITE_P(Looks, WholeMaterialsOfLook, ::testing::Values(Look::Basic, Look::Advanced, Look::Monotone),
                         [](const ::testing::TestParamInfo<Look>& info) { return NameOfLook(info.param); });

// A mesh that is shown at a second node as well is not plain, and draws nothing there while that is hidden.
TEST_P(WholeMaterialsOfLook, StagesMakeTheSameCallsWhereNoMeshIsPlain)
{
    AddLine(Vector(5, 5, 10), Vector(80, 50, 10), Color(1, 0, 0), 1.0f);
    renderer->ShowLines(false);
    renderer->SetLook(GetParam());
    const auto framesOf = [this]
    {
        std::vector<Frame> frames;
        for (const Stage& stage : Stages())
        {
            stage.use();
            Record();
            frames.push_back(RecordWithNewSun());
            DropStages();
        }
        return frames;
    };
    const std::vector<Frame> plainFrames = framesOf();
    for (std::size_t i = 0; i < nodes.size(); ++i)
    {
        auto* const second = new MeshNode(&World());
        second->SetFlags(NodeFlagHidden, false);
        second->SetLocal(nodes[i]->GetLocal());
        World().GetRoot()->AddChild(second, false);
        MeshOf(i).AddNode(second);
    }
    const std::vector<Frame> frames = framesOf();
    for (std::size_t i = 0; i < frames.size(); ++i)
    {
        const std::string what = Stages()[i].label;
        ExpectSame(frames[i].picture, plainFrames[i].picture, what.c_str());
        EXPECT_EQ(frames[i].calls, plainFrames[i].calls) << what;
    }
}

TEST_F(WholeMaterials, StagesDrawPlainMeshesInOneLoop)
{
    AddLine(Vector(5, 5, 10), Vector(80, 50, 10), Color(1, 0, 0), 1.0f);
    renderer->ShowLines(false);
    Record();
    for (const bool drawAsBase : {true, false})
    {
        std::vector<CountingMeshData*> counted;
        for (std::size_t i = 0; i < nodes.size(); ++i)
        {
            Mesh& mesh = MeshOf(i);
            SharedBufferPool* const pool = static_cast<MeshES20*>(mesh.GetRenderData())->pool;
            counted.push_back(new CountingMeshData(&mesh, pool, drawAsBase));
            mesh.SetRenderData(counted.back(), true);
        }
        for (const Stage& stage : Stages())
        {
            stage.use();
            Record();
            for (CountingMeshData* const data : counted)
            {
                data->renders = 0;
            }
            RecordWithNewSun();
            const auto fewer = [](const auto* a, const auto* b) { return a->renders < b->renders; };
            const auto [least, most] = std::minmax_element(counted.begin(), counted.end(), fewer);
            if (drawAsBase)
            {
                EXPECT_EQ((*most)->renders, 0) << stage.label;
            }
            else
            {
                // Two frames, each with one more drawing of the scene at least.
                EXPECT_GE((*least)->renders, 4) << stage.label;
            }
            DropStages();
        }
    }
}

TEST_F(WholeMaterials, LookAsMeshByMeshAfterEachChange)
{
    struct Change
    {
        const char* label;
        std::function<void()> make;
    };
    const std::vector<Change> changes = {
        {"a node is hidden", [this] { nodes[1]->SetFlags(NodeFlagHidden, false); }},
        {"a node moves", [this] { nodes[8]->SetLocal(Transform()); }},
        {"a mesh marks its back faces", [this] { MeshOf(9).SetFlags(MeshFlagShowFaceSides); }},
        {"a mesh with colours comes to those without", [this] { Add(*plain, 5, 1, true); }},
        {"a mesh without colours comes to those with", [this] { Add(*coloured, 5, 2, false); }},
        {"what has colours leaves the mixed",
         [this]
         {
             for (const std::size_t index : {19u, 21u, 23u})
             {
                 coloured->AddMesh(&MeshOf(index));
             }
         }},
        {"a mesh dies", [this] { delete &MeshOf(13); }},
        {"a mesh loses its render data", [this] { MeshOf(14).Suspend(); }},
        {"a material becomes unlit", [this] { mixed->SetFlags(MaterialFlagUnlit); }},
        {"a material becomes points", [this] { plain->SetFlags(MaterialFlagPoints); }},
        {"suspended", [this] { SuspendAndResume(); }},
    };
    for (const Look look : {Look::Advanced, Look::Phong})
    {
        renderer->SetLook(look);
        for (const Change& change : changes)
        {
            if (look == Look::Advanced)
            {
                change.make();
            }
            ExpectSameByMeshes(std::string(NameOfLook(look)) + ", " + change.label);
        }
    }
}

// The way that vertices' colours take through whole materials: each mesh shows its own.
TEST_F(WholeMaterials, ShowTheColoursOfVerticesWhereThereAreAny)
{
    renderer->SetLook(Look::Advanced);
    for (ImportedMaterial* const material : {coloured, mixed})
    {
        material->SetFlags(MaterialFlagUnlit);
        material->SetAmbient(Color(0.0f, 0.0f, 0.0f, 1.0f));
        material->SetDiffuse(Color(1.0f, 1.0f, 1.0f));
    }
    const Picture picture = Draw();
    const auto at = [&](int column, int row) { return picture.At(column * 15 + 5, row * 12 + 8); };
    const Pixel red = ToPixel(0.8f, 0.2f, 0.4f);
    const Pixel white = ToPixel(1.0f, 1.0f, 1.0f);
    EXPECT_EQ(at(0, 2), red);
    EXPECT_EQ(at(1, 2), red);
    EXPECT_EQ(at(0, 3), white);
    EXPECT_EQ(at(1, 3), red);
    EXPECT_EQ(at(4, 3), white);
    EXPECT_EQ(at(3, 3), red);
}

} // namespace OV::Test
