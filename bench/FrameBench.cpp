#include "bench/BenchSupport.h"
#include "bench/PatchScene.h"
#include "orvane/effects/EffectES20.h"
#include "orvane/effects/SkySettings.h"
#include "orvane/math/Matrix.h"
#include "orvane/math/Matrix3x3.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/renderer/Renderer20.h"
#include "orvane/scene/CameraNode.h"

#include <GL/glew.h>
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

// A static scene drawn by the renderer and, in the same run, by a hand-written loop over flat
// arrays that makes the same GL calls with the same arguments. What counts is the ratio of the two.
namespace
{

using namespace OV;
using namespace OV::Bench;

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
        m_context = OpenContext(256, 256);
        SkySettings::inst().SetUseFog(false);
        AddPatches(m_scene, 1.0f);
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

FrameBench& Frame()
{
    static FrameBench bench;
    return bench;
}

void StaticSceneByEngine(benchmark::State& state)
{
    Repeat(state, kPatches, [] { Frame().DrawWithEngine(); });
}

void StaticSceneByHand(benchmark::State& state)
{
    Repeat(state, kPatches, [] { Frame().DrawByHand(); });
}

BENCHMARK(StaticSceneByEngine)->Unit(benchmark::kMillisecond);
BENCHMARK(StaticSceneByHand)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    DropDrawing();
    benchmark::Initialize(&argc, argv);
    RequireSameCalls([] { Frame().DrawWithEngine(); }, [] { Frame().DrawByHand(); });
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
