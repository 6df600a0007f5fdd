#include "bench/BenchSupport.h"
#include "orvane/effects/EffectES20.h"
#include "orvane/effects/SkySettings.h"
#include "orvane/math/Matrix.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/LineES20.h"
#include "orvane/renderer/Renderer20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawLine.h"
#include "orvane/scene/Scene.h"

#include <GL/glew.h>
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

// 100,000 segments in 100 lines of one style, drawn by the renderer and, in the same run, by a
// hand-written loop over flat arrays that makes the same GL calls with the same arguments.
// What counts is the ratio of the two.
namespace
{

using namespace OV;
using namespace OV::Bench;

constexpr int kLines = 100;
constexpr int kSegments = 1000;
constexpr int kSize = 256;

std::shared_ptr<RawLine> MakeRawLine(int number)
{
    std::vector<Vector> points;
    std::vector<unsigned short> pairs;
    for (int i = 0; i <= kSegments; ++i)
    {
        const float angle = 0.1f * static_cast<float>(i);
        points.emplace_back(std::cos(angle), std::sin(angle), static_cast<float>(number) + 0.01f * angle);
        if (i < kSegments)
        {
            pairs.push_back(static_cast<unsigned short>(i));
            pairs.push_back(static_cast<unsigned short>(i + 1));
        }
    }
    auto raw = std::make_shared<RawLine>();
    raw->SetPositionBuffer(points);
    raw->SetIndices(pairs);
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

struct FlatLine
{
    unsigned vertexBuffer;
    unsigned indexBuffer;
    int stride;
    std::intptr_t positionOffset;
    std::intptr_t normalOffset;
    std::intptr_t indexOffset;
    int indexCount;
};

class LineBench
{
public:
    LineBench();
    ~LineBench() { m_scene.Suspend(); }

    void DrawWithEngine() { m_renderer.Render3D(&m_scene, m_scene.GetCameraNode()); }
    void DrawByHand() const;

private:
    void Flatten();
    void ApplyByHand() const;

    std::unique_ptr<Host::HeadlessContext> m_context;
    BenchRenderer m_renderer;
    Scene m_scene;
    LineStyle* m_style = nullptr;
    unsigned m_program = 0;
    std::vector<FlatLine> m_flat;
};

LineBench::LineBench()
{
    m_context = OpenContext(kSize, kSize);
    SkySettings::inst().SetUseFog(false);
    m_style = new LineStyle("style");
    m_style->secondColor = Color(0.0f, 0.0f, 0.0f, 0.0f);
    m_scene.AddLineStyle(m_style);
    for (int i = 0; i < kLines; ++i)
    {
        auto* line = new Line(MakeRawLine(i), &m_scene);
        auto* node = new MeshNode(&m_scene);
        m_scene.GetRoot()->AddChild(node, false);
        line->AddNode(node);
        m_style->AddLine(line);
    }
    m_renderer.Resize(kSize, kSize);
    m_scene.UpdateGraph(kSize, kSize);
    DrawWithEngine();
    Flatten();
}

void LineBench::Flatten()
{
    EffectES20* effect = m_renderer.Effects().GetEffect(EffectCache::SolidLine);
    constexpr std::uint64_t mobileAntialias = 3;
    m_program = effect->ProgramForOptions(mobileAntialias | EffectES20::OptionNoClipPlanes);
    effect->Release();
    for (Line* line : m_style->GetLines())
    {
        const auto* data = static_cast<MeshES20*>(line->GetRenderData());
        FlatLine flat;
        flat.vertexBuffer = data->vertexBufferId;
        flat.indexBuffer = data->indexBufferId;
        flat.stride = data->GetStride();
        flat.positionOffset = data->GetPositionOffset();
        flat.normalOffset = data->GetNormalOffset();
        flat.indexOffset = data->indexOffset;
        flat.indexCount = static_cast<int>(data->indexCount);
        m_flat.push_back(flat);
    }
}

void LineBench::ApplyByHand() const
{
    // One style and one place for all lines: every uniform holds from frame to frame.
    glUseProgram(m_program);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    GLboolean write = GL_TRUE;
    GLint function = 0;
    glGetBooleanv(GL_DEPTH_WRITEMASK, &write);
    glGetIntegerv(GL_DEPTH_FUNC, &function);
    benchmark::DoNotOptimize(glIsEnabled(GL_DEPTH_TEST));
    glDepthMask(GL_TRUE);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    GLint viewport[4];
    glGetIntegerv(GL_VIEWPORT, viewport);
    benchmark::DoNotOptimize(viewport);
}

void LineBench::DrawByHand() const
{
    glDisable(GL_BLEND);
    glDepthMask(GL_TRUE);
    glClear(GL_DEPTH_BUFFER_BIT);
    glEnable(GL_CULL_FACE);
    glEnable(GL_DEPTH_TEST);
    glBlendEquation(GL_FUNC_ADD);
    ApplyByHand();
    unsigned bound = 0;
    bool isFirst = true;
    for (const FlatLine& line : m_flat)
    {
        if (line.vertexBuffer != bound)
        {
            glBindBuffer(GL_ARRAY_BUFFER, line.vertexBuffer);
            glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, line.indexBuffer);
            bound = line.vertexBuffer;
        }
        glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, line.stride, Pointer(line.positionOffset));
        if (isFirst)
        {
            glEnableVertexAttribArray(0);
        }
        glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, line.stride, Pointer(line.positionOffset + 4 * line.stride));
        if (isFirst)
        {
            glEnableVertexAttribArray(1);
        }
        glVertexAttribPointer(2, 3, GL_FLOAT, GL_FALSE, line.stride, Pointer(line.normalOffset));
        if (isFirst)
        {
            glEnableVertexAttribArray(2);
        }
        glEnable(GL_BLEND);
        glEnable(GL_POLYGON_OFFSET_FILL);
        glPolygonOffset(-1.0f, -1.0f);
        glDrawElements(GL_TRIANGLES, line.indexCount, GL_UNSIGNED_SHORT, Pointer(line.indexOffset));
        glDepthMask(GL_TRUE);
        isFirst = false;
    }
    glDisableVertexAttribArray(0);
    glDisableVertexAttribArray(1);
    glDisableVertexAttribArray(2);
    glDepthMask(GL_TRUE);
    glDepthFunc(GL_LESS);
    glEnable(GL_DEPTH_TEST);
}

LineBench& Lines()
{
    static LineBench bench;
    return bench;
}

void LinesByEngine(benchmark::State& state)
{
    Repeat(state, kLines, [] { Lines().DrawWithEngine(); });
}

void LinesByHand(benchmark::State& state)
{
    Repeat(state, kLines, [] { Lines().DrawByHand(); });
}

BENCHMARK(LinesByEngine)->Unit(benchmark::kMicrosecond);
BENCHMARK(LinesByHand)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv)
{
    DropDrawing();
    benchmark::Initialize(&argc, argv);
    RequireSameCalls([] { Lines().DrawWithEngine(); }, [] { Lines().DrawByHand(); });
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
