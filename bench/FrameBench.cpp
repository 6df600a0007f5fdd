#include "bench/GLFingerprint.h"
#include "host/HeadlessContext.h"
#include "orvane/effects/EffectES20.h"
#include "orvane/effects/SkySettings.h"
#include "orvane/math/Matrix.h"
#include "orvane/math/Matrix3x3.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/renderer/Renderer20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <GL/glew.h>
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

// A static scene drawn by the renderer and, in the same run, by a hand-written loop over flat
// arrays that makes the same GL calls with the same arguments. Drawing itself is dropped
// (GALLIUM_NOOP), so what counts is the ratio of the two.
namespace
{

using namespace OV;
using OV::Bench::GLFingerprint;

constexpr int kMeshes = 10000;
constexpr int kMaterials = 50;
constexpr int kCells = 7; // 7 x 7 cells of two triangles: 98 a mesh

std::shared_ptr<RawMesh> MakePatch()
{
    std::vector<Vector> positions;
    std::vector<Vector> normals;
    std::vector<unsigned short> indices;
    for (int y = 0; y <= kCells; ++y)
    {
        for (int x = 0; x <= kCells; ++x)
        {
            positions.emplace_back(static_cast<float>(x), static_cast<float>(y), 0.0f);
            normals.emplace_back(0.0f, 0.0f, 1.0f);
        }
    }
    for (int y = 0; y < kCells; ++y)
    {
        for (int x = 0; x < kCells; ++x)
        {
            const auto a = static_cast<unsigned short>(y * (kCells + 1) + x);
            const auto b = static_cast<unsigned short>(a + 1);
            const auto c = static_cast<unsigned short>(a + kCells + 1);
            const auto d = static_cast<unsigned short>(c + 1);
            indices.insert(indices.end(), {a, b, d, a, d, c});
        }
    }
    auto raw = std::make_shared<RawMesh>();
    raw->SetPositionBuffer(std::move(positions));
    raw->SetNormalBuffer(std::move(normals));
    raw->SetIndices(std::move(indices));
    raw->EndDescription(true);
    return raw;
}

/// Shows what the hand-written loop has to know.
class BenchRenderer : public Renderer20
{
public:
    BenchRenderer() : Renderer20(nullptr, nullptr) {}
    EffectCache& Effects() { return effectCache; }
};

/// What changes from mesh to mesh, ready for GL.
struct FlatMesh
{
    unsigned vertexBuffer;
    unsigned indexBuffer;
    int stride;
    std::intptr_t positionOffset;
    std::intptr_t normalOffset;
    std::intptr_t indexOffset;
    int indexCount;
    Matrix mvp;
    Matrix world;
    Matrix3x3 normal;
};

struct FlatMaterial
{
    Color ambient;
    Color color;
    Vector lightDirection;
    float pointSize;
    std::size_t first;
    std::size_t last;
};

struct Locations
{
    int ambient, color, enableLight, isMirrored, isShowFaceSides, lightDir, mvpMatrix, normalMatrix, pointSize,
        worldTransform, numClipPlanes, pocheColor, pocheColorEnabled;
};

class FrameBench
{
public:
    FrameBench()
    {
        Host::HeadlessContext::Options options;
        options.width = 256;
        options.height = 256;
        std::string error;
        m_context = Host::HeadlessContext::Create(options, error);
        if (!m_context)
        {
            std::fprintf(stderr, "no GL context: %s\n", error.c_str());
            std::exit(1);
        }
        SkySettings::inst().SetUseFog(false);
        MakeScene();
        m_renderer.Resize(256, 256);
        m_scene.UpdateGraph(256.0f, 256.0f);
        DrawWithEngine();
        Flatten();
    }

    ~FrameBench() { m_scene.Suspend(); }

    void DrawWithEngine()
    {
        m_renderer.Render3D(&m_scene, m_scene.GetCameraNode());
    }

    void DrawByHand() const;

private:
    void MakeScene();
    void Flatten();

    std::unique_ptr<Host::HeadlessContext> m_context;
    BenchRenderer m_renderer;
    Scene m_scene;
    unsigned m_program = 0;
    Locations m_locations{};
    float m_pocheColor[4];
    std::vector<FlatMaterial> m_flatMaterials;
    std::vector<FlatMesh> m_flatMeshes;
};

void FrameBench::MakeScene()
{
    auto* light = new LightNode(&m_scene);
    m_scene.GetRoot()->AddChild(light, false);
    std::vector<Material*> materials;
    for (int i = 0; i < kMaterials; ++i)
    {
        materials.push_back(new Material("material " + std::to_string(i)));
        m_scene.AddMaterial(materials.back());
    }
    for (int i = 0; i < kMeshes; ++i)
    {
        auto* mesh = new Mesh(MakePatch(), &m_scene);
        auto* node = new MeshNode(&m_scene);
        Transform place;
        place.SetPosition(Vector(static_cast<float>(i % 100), static_cast<float>(i / 100), -50.0f));
        node->SetLocal(place);
        mesh->AddNode(node);
        m_scene.GetRoot()->AddChild(node, false);
        materials[static_cast<std::size_t>(i % kMaterials)]->AddMesh(mesh);
    }
}

void FrameBench::Flatten()
{
    const auto* camera = static_cast<CameraNodeES20*>(m_scene.GetCameraNode()->GetRenderData());
    EffectES20* effect = m_renderer.Effects().GetEffect(EffectCache::BasicMaterial);
    m_program = effect->ProgramForOptions(0);
    effect->Release();
    const auto locate = [this](const char* name) { return glGetUniformLocation(m_program, name); };
    m_locations = {locate("u_ambient"),         locate("u_color"),          locate("u_enableLight"),
                   locate("u_isMirrored"),      locate("u_isShowFaceSides"), locate("u_lightDir"),
                   locate("u_mvpMatrix"),       locate("u_normalMatrix"),   locate("u_pointSize"),
                   locate("u_worldTransform"),  locate("u_numClipPlanes"),  locate("u_pocheColor"),
                   locate("u_pocheColorEnabled")};
    const glm::vec4& poche = EffectES20::GetPocheColor();
    const float pocheColor[] = {poche.x, poche.y, poche.z, poche.w};
    std::memcpy(m_pocheColor, pocheColor, sizeof(m_pocheColor));
    Vector towardsLight;
    towardsLight.Scale(-1.0f, m_scene.GetLights().front()->GetGlobalDirection());
    for (Material* material : m_scene.GetOptimizedMaterials())
    {
        FlatMaterial flat{material->GetAmbient(), material->GetDiffuse(), towardsLight, material->pointSize,
                          m_flatMeshes.size(), 0};
        for (Mesh* mesh : material->GetMeshes())
        {
            const auto* data = static_cast<MeshES20*>(mesh->GetRenderData());
            MeshNode* node = mesh->GetNodes().front();
            FlatMesh flatMesh;
            flatMesh.vertexBuffer = data->vertexBufferId;
            flatMesh.indexBuffer = data->indexBufferId;
            flatMesh.stride = data->GetStride();
            flatMesh.positionOffset = data->GetPositionOffset();
            flatMesh.normalOffset = data->GetNormalOffset();
            flatMesh.indexOffset = data->indexOffset;
            flatMesh.indexCount = static_cast<int>(mesh->GetNumIndices());
            flatMesh.world = *node->GetGlobalMatrix();
            flatMesh.mvp.Multiply(camera->GetMVP(), flatMesh.world);
            node->GetGlobal().ExtractAffineInverseTranspose3x3(flatMesh.normal.m);
            m_flatMeshes.push_back(flatMesh);
        }
        flat.last = m_flatMeshes.size();
        m_flatMaterials.push_back(flat);
    }
}

const void* Pointer(std::intptr_t offset)
{
    return reinterpret_cast<const void*>(offset);
}

void FrameBench::DrawByHand() const
{
    glDisable(GL_BLEND);
    glDepthMask(GL_TRUE);
    glClear(GL_DEPTH_BUFFER_BIT);
    glEnable(GL_CULL_FACE);
    glEnable(GL_DEPTH_TEST);
    glBlendEquation(GL_FUNC_ADD);
    unsigned bound = 0;
    for (const FlatMaterial& material : m_flatMaterials)
    {
        glDisable(GL_POLYGON_OFFSET_FILL);
        glUseProgram(m_program);
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, 0);
        glUniform1i(m_locations.enableLight, 1);
        glUniform4f(m_locations.ambient, material.ambient.r, material.ambient.g, material.ambient.b,
                    material.ambient.a);
        glUniform3f(m_locations.lightDir, material.lightDirection.x, material.lightDirection.y,
                    material.lightDirection.z);
        glUniform4f(m_locations.color, material.color.r, material.color.g, material.color.b, material.color.a);
        glUniform1f(m_locations.pointSize, material.pointSize);
        for (std::size_t i = material.first; i < material.last; ++i)
        {
            const FlatMesh& mesh = m_flatMeshes[i];
            if (mesh.vertexBuffer != bound)
            {
                glBindBuffer(GL_ARRAY_BUFFER, mesh.vertexBuffer);
                glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, mesh.indexBuffer);
                bound = mesh.vertexBuffer;
            }
            glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, mesh.stride, Pointer(mesh.positionOffset));
            glEnableVertexAttribArray(0);
            glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, mesh.stride, Pointer(mesh.normalOffset));
            glEnableVertexAttribArray(1);
            glUniform1i(m_locations.isShowFaceSides, 0);
            glUniformMatrix4fv(m_locations.mvpMatrix, 1, GL_FALSE, mesh.mvp.m);
            glUniformMatrix3fv(m_locations.normalMatrix, 1, GL_FALSE, mesh.normal.m);
            glUniform1i(m_locations.isMirrored, 0);
            glUniformMatrix4fv(m_locations.worldTransform, 1, GL_FALSE, mesh.world.m);
            glUniform1i(m_locations.numClipPlanes, 0);
            glUniform4fv(m_locations.pocheColor, 1, m_pocheColor);
            glUniform1i(m_locations.pocheColorEnabled, 1);
            glDrawElements(GL_TRIANGLES, mesh.indexCount, GL_UNSIGNED_SHORT, Pointer(mesh.indexOffset));
            glDisableVertexAttribArray(1);
            glDisableVertexAttribArray(0);
        }
    }
}

FrameBench& Bench()
{
    static FrameBench bench;
    return bench;
}

/// The comparison is of no use unless both make the same calls.
void RequireSameCalls()
{
    FrameBench& bench = Bench();
    std::uint64_t engine = 0;
    std::uint64_t engineCalls = 0;
    {
        GLFingerprint fingerprint;
        bench.DrawWithEngine();
        engine = GLFingerprint::s_value;
        engineCalls = GLFingerprint::s_calls;
    }
    GLFingerprint fingerprint;
    bench.DrawByHand();
    if (GLFingerprint::s_value != engine || GLFingerprint::s_calls != engineCalls)
    {
        std::fprintf(stderr, "the hand-written loop makes other calls (%llu) than the engine (%llu)\n",
                     static_cast<unsigned long long>(GLFingerprint::s_calls),
                     static_cast<unsigned long long>(engineCalls));
        std::exit(1);
    }
}

void StaticSceneByEngine(benchmark::State& state)
{
    for (auto _ : state)
    {
        Bench().DrawWithEngine();
    }
    state.SetItemsProcessed(state.iterations() * kMeshes);
}

void StaticSceneByHand(benchmark::State& state)
{
    for (auto _ : state)
    {
        Bench().DrawByHand();
    }
    state.SetItemsProcessed(state.iterations() * kMeshes);
}

BENCHMARK(StaticSceneByEngine)->Unit(benchmark::kMillisecond);
BENCHMARK(StaticSceneByHand)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    setenv("GALLIUM_NOOP", "1", 1);
    benchmark::Initialize(&argc, argv);
    RequireSameCalls();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
