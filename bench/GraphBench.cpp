#include "orvane/math/Matrix.h"
#include "orvane/math/Transform.h"
#include "orvane/math/Vector.h"
#include "orvane/scene/Node.h"
#include "orvane/scene/Scene.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

// 10,000 nodes that all move in every frame: the scene's update, with the matrices for
// rendering, against a plain loop over arrays that does the same products in double. And one node
// of 100,000 that moves, against all of them.
namespace
{

using namespace OV;

constexpr int kGroups = 100;
constexpr int kNodesPerGroup = 100;

Transform Place(int index, int frame)
{
    Transform place;
    place.SetPosition(Vector(float(index % 37), float(index % 11), float(frame % 101)));
    return place;
}

void SceneGraph(benchmark::State& state)
{
    Scene scene;
    std::vector<Node*> nodes;
    for (int group = 0; group < kGroups; ++group)
    {
        auto* const parent = new Node(&scene);
        scene.GetRoot()->AddChild(parent, false);
        for (int i = 0; i < kNodesPerGroup; ++i)
        {
            auto* const node = new Node(&scene);
            parent->AddChild(node, false);
            nodes.push_back(node);
        }
    }
    const Transform places[2] = {Place(1, 1), Place(2, 2)};
    int frame = 0;
    for (auto _ : state)
    {
        const Transform& place = places[++frame & 1];
        for (Node* node : nodes)
        {
            node->SetLocal(place);
        }
        scene.UpdateGraph(1280.0f, 720.0f);
        for (Node* node : nodes)
        {
            benchmark::DoNotOptimize(node->GetGlobalMatrix()->m[12]);
        }
    }
    state.SetItemsProcessed(state.iterations() * std::int64_t(nodes.size()));
}
BENCHMARK(SceneGraph);

void PlainArrays(benchmark::State& state)
{
    const std::size_t count = std::size_t(kGroups) * kNodesPerGroup;
    std::vector<Transform> parents(kGroups);
    std::vector<Transform> locals(count);
    std::vector<Transform> globals(count);
    std::vector<Matrix> matrices(count);
    const Transform places[2] = {Place(1, 1), Place(2, 2)};
    int frame = 0;
    for (auto _ : state)
    {
        const Transform& place = places[++frame & 1];
        for (std::size_t i = 0; i < count; ++i)
        {
            locals[i] = place;
        }
        for (std::size_t i = 0; i < count; ++i)
        {
            globals[i].SetTransf3d(parents[i / kNodesPerGroup].GetTransf3d() * locals[i].GetTransf3d());
        }
        for (std::size_t i = 0; i < count; ++i)
        {
            globals[i].ExtractMatrix(matrices[i], true);
            benchmark::DoNotOptimize(matrices[i].m[12]);
        }
    }
    state.SetItemsProcessed(state.iterations() * std::int64_t(count));
}
BENCHMARK(PlainArrays);

/// Moves the first nodes of a scene, as many as the argument says, and brings it up to date.
void MovedAmong100000(benchmark::State& state)
{
    Scene scene;
    std::vector<Node*> nodes;
    for (int i = 0; i < 100000; ++i)
    {
        auto* const node = new Node(&scene);
        scene.GetRoot()->AddChild(node, false);
        nodes.push_back(node);
    }
    scene.UpdateGraph(1280.0f, 720.0f);
    const Transform places[2] = {Place(1, 1), Place(2, 2)};
    int frame = 0;
    for (auto _ : state)
    {
        const Transform& place = places[++frame & 1];
        for (std::int64_t i = 0; i < state.range(0); ++i)
        {
            nodes[static_cast<std::size_t>(i)]->SetLocal(place);
        }
        scene.UpdateGraph(1280.0f, 720.0f);
    }
}
BENCHMARK(MovedAmong100000)->Arg(1)->Arg(100000);

} // namespace

BENCHMARK_MAIN();
