#include "apps/render/Report.h"
#include "apps/render/Stats.h"
#include "orvane_host/present/DrawCounts.h"

#include "orvane_host/present/SceneRenderer.h"
#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"
#include "tests/support/GLFixture.h"
#include "tests/support/GLRecorder.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <nlohmann/json.hpp>

#include <map>
#include <memory>

using namespace OV;
using namespace OV::Host;
using namespace OV::RenderApp;
using OV::Test::GLCall;
using OV::Test::GLRecorder;

namespace
{

/// What GL itself was asked for in one frame and the uploads before it.
struct Recorded
{
    std::uint64_t draws = 0;
    std::uint64_t triangles = 0;
    std::uint64_t buffers = 0;
    std::uint64_t bytes = 0;
};

struct DrawCount : OV::Test::GLFixture
{
    AppContext app;
    Host::SceneRenderer renderer{nullptr, app.GetContext()->GetRenderCapabilities()};
    Scene* scene = nullptr;

    DrawCount()
    {
        app.GetContext()->SetScene(std::make_unique<Scene>());
        scene = app.GetContext()->GetScene();
        app.SetScreenSize(Width(), Height());
        renderer.Resize(Width(), Height());
    }

    Material* AddMaterial(float opacity)
    {
        auto* material = new Material("m");
        material->diffuse.a = opacity;
        scene->AddMaterial(material);
        return material;
    }

    /// A fan of triangles.
    Mesh* AddMesh(Material* material, int triangles)
    {
        std::vector<Vector> positions = {Vector(0, 0, 0)};
        std::vector<unsigned short> indices;
        for (int i = 0; i <= triangles; ++i)
        {
            positions.emplace_back(static_cast<float>(i), 1.0f, 0.0f);
        }
        for (int i = 0; i < triangles; ++i)
        {
            indices.insert(indices.end(), {0, static_cast<unsigned short>(i + 1), static_cast<unsigned short>(i + 2)});
        }
        auto raw = std::make_shared<RawMesh>();
        raw->SetPositionBuffer(std::move(positions));
        raw->SetIndices(std::move(indices));
        raw->EndDescription(true);
        auto* mesh = new Mesh(raw, scene);
        material->AddMesh(mesh);
        return mesh;
    }

    MeshNode* AddNode(Mesh* mesh)
    {
        auto* node = new MeshNode(scene);
        scene->GetRoot()->AddChild(node, false);
        mesh->AddNode(node);
        return node;
    }

    Recorded RecordFrame()
    {
        GLRecorder recorder(GLRecorder::Mode::Forward);
        app.Update(0);
        app.Render(&renderer, false);
        Recorded result;
        std::map<std::int64_t, std::int64_t> sizes;
        std::int64_t bound[2] = {0, 0};
        for (const GLCall& call : recorder.Calls())
        {
            if (call.name == "glDrawElements")
            {
                ++result.draws;
                result.triangles += call.Int(0) == GL_TRIANGLES ? static_cast<std::uint64_t>(call.Int(1) / 3) : 0;
            }
            else if (call.name == "glBindBuffer")
            {
                bound[call.Int(0) == GL_ARRAY_BUFFER ? 0 : 1] = call.Int(1);
            }
            else if (call.name == "glBufferData")
            {
                sizes[bound[call.Int(0) == GL_ARRAY_BUFFER ? 0 : 1]] = call.Int(1);
            }
        }
        result.buffers = sizes.size();
        for (const auto& [name, size] : sizes)
        {
            result.bytes += static_cast<std::uint64_t>(size);
        }
        return result;
    }

    void ExpectSame(const Recorded& recorded, const DrawCounts& counted)
    {
        EXPECT_EQ(counted.draws, recorded.draws);
        EXPECT_EQ(counted.drawnTriangles, recorded.triangles);
        EXPECT_EQ(counted.buffers, recorded.buffers);
        EXPECT_EQ(counted.bytes, recorded.bytes);
    }
};

} // namespace

TEST_F(DrawCount, IsWhatGLWasAskedFor)
{
    Material* opaque = AddMaterial(1.0f);
    Material* glass = AddMaterial(0.5f);
    Material* points = AddMaterial(1.0f);
    points->flags |= MaterialFlagPoints;
    Mesh* shared = AddMesh(opaque, 3);
    AddNode(shared);
    AddNode(shared);
    AddNode(shared)->SetFlags(NodeFlagHidden, false);
    AddNode(AddMesh(opaque, 5));
    AddNode(AddMesh(glass, 7));
    AddNode(AddMesh(points, 2));
    AddMesh(opaque, 11);
    AddNode(AddMesh(opaque, 0));

    const Recorded recorded = RecordFrame();
    EXPECT_EQ(recorded.draws, 5u);
    EXPECT_EQ(recorded.triangles, 3u + 3u + 5u + 7u);
    EXPECT_GT(recorded.bytes, 0u);
    ExpectSame(recorded, CountDraws({scene}));
}

TEST_F(DrawCount, TheSkyCountsToo)
{
    AddNode(AddMesh(AddMaterial(1.0f), 3));
    renderer.ShowSky(true);
    const Recorded recorded = RecordFrame();
    EXPECT_EQ(recorded.draws, 2u);
    ExpectSame(recorded, CountDraws({scene, renderer.GetSkyScene()}));
}

TEST_F(DrawCount, AnEmptySceneDrawsNothing)
{
    ExpectSame(RecordFrame(), CountDraws({scene}));
}

TEST_F(DrawCount, AskingLeavesBuffersBoundAsTheyWere)
{
    AddNode(AddMesh(AddMaterial(1.0f), 3));
    RecordFrame();
    const OV::Test::GLStateValues before = OV::Test::GLState::Capture();
    CountDraws({scene});
    EXPECT_EQ(OV::Test::GLState::Capture(), before);
}

TEST(StatsNumbers, TheMedianLeavesOutTheFirstFrame)
{
    Stats stats;
    EXPECT_EQ(stats.MedianFrame(), 0.0);
    stats.frames = {9.0};
    EXPECT_EQ(stats.MedianFrame(), 9.0);
    stats.frames = {9.0, 3.0};
    EXPECT_EQ(stats.MedianFrame(), 3.0);
    stats.frames = {100.0, 5.0, 1.0, 2.0};
    EXPECT_EQ(stats.MedianFrame(), 2.0);
    stats.frames = {100.0, 5.0, 1.0, 2.0, 4.0};
    EXPECT_EQ(stats.MedianFrame(), 3.0);
}

TEST(StatsNumbers, StringsThatAreNoTextDoNotBreakTheJson)
{
    Stats stats;
    stats.glRenderer = "caf\xE9 \"quoted\"\n";
    nlohmann::ordered_json json;
    stats.AddTo(json);
    EXPECT_NE(ToText(json).find("\\\"quoted\\\"\\n"), std::string::npos);
}
