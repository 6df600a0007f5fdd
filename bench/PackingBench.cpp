#include "bench/BenchSupport.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/renderdata/SharedBuffer.h"
#include "orvane/renderdata/SharedBufferPool.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/RawMesh.h"

#include <GL/glew.h>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

// Meshes packed and uploaded by the pool and, in the same run, by a loop of memcpy that writes
// the same layout into buffers of the same sizes. What counts is the ratio of the two.
namespace
{

using namespace OV;

constexpr int kMeshes = 10000;
constexpr std::size_t kVertices = 64;
constexpr std::size_t kIndices = 300;

/// Streams of all meshes, one after the other in memory as an import leaves them.
struct Streams
{
    bool normals;
    bool texture;
    bool colors;
};

constexpr Streams kFormats[] = {{false, false, false}, {true, false, false}, {true, true, false}, {true, true, true}};

struct Meshes
{
    explicit Meshes(const Streams& streams)
    {
        for (int i = 0; i < kMeshes; ++i)
        {
            auto raw = std::make_shared<RawMesh>();
            raw->SetPositionBuffer(std::vector<Vector>(kVertices, Vector(1, 2, 3)));
            if (streams.normals)
                raw->SetNormalBuffer(std::vector<Vector>(kVertices, Vector(4, 5, 6)));
            if (streams.texture)
                raw->SetTextureBuffer(std::vector<TextureCoordinate>(kVertices, TextureCoordinate(7, 8)));
            if (streams.colors)
                raw->SetColorBuffer(std::vector<Color>(kVertices, Color(0.5f, 0.5f, 0.5f, 1.0f)));
            raw->SetIndices(std::vector<unsigned short>(kIndices, 1));
            raw->EndDescription(true);
            meshes.push_back(std::make_unique<Mesh>(raw));
        }
    }

    std::vector<std::unique_ptr<Mesh>> meshes;
};

void PackedByPool(benchmark::State& state)
{
    Meshes all(kFormats[state.range(0)]);
    for (auto _ : state)
    {
        SharedBufferPool pool;
        for (const auto& mesh : all.meshes)
        {
            mesh->SetRenderData(new MeshES20(mesh.get(), &pool), true);
        }
        pool.GenerateVBOs();
        state.PauseTiming();
        for (const auto& mesh : all.meshes)
        {
            mesh->Suspend();
        }
        state.ResumeTiming();
    }
}

/// Copies one stream element behind the last.
template <class T>
unsigned char* Put(unsigned char* out, const T& element)
{
    std::memcpy(out, &element, sizeof(T));
    return out + sizeof(T);
}

void UploadByHand(const Meshes& all, std::size_t first, std::size_t last, std::size_t stride,
                  std::vector<unsigned>& buffers)
{
    const std::size_t count = last - first;
    std::vector<unsigned char> vertices(count * kVertices * stride);
    std::vector<unsigned short> indices(count * kIndices);
    unsigned names[2];
    glGenBuffers(2, names);
    glBindBuffer(GL_ARRAY_BUFFER, names[0]);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, names[1]);
    unsigned char* vertex = vertices.data();
    unsigned short* index = indices.data();
    for (std::size_t i = first; i < last; ++i)
    {
        const RawMesh& raw = *all.meshes[i]->GetRawMesh();
        for (std::size_t v = 0; v < kVertices; ++v, vertex += stride)
        {
            unsigned char* out = Put(vertex, raw.positions[v]);
            if (!raw.normals.empty())
                out = Put(out, raw.normals[v]);
            if (!raw.textureCoordinates.empty())
                out = Put(out, raw.textureCoordinates[v]);
            if (!raw.colors.empty())
                Put(out, raw.colors[v]);
        }
        std::memcpy(index, raw.indices.data(), kIndices * sizeof(unsigned short));
        index += kIndices;
    }
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(vertices.size()), vertices.data(), GL_DYNAMIC_DRAW);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER, static_cast<GLsizeiptr>(indices.size() * 2), indices.data(),
                 GL_DYNAMIC_DRAW);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    buffers.insert(buffers.end(), names, names + 2);
}

void PackedByHand(benchmark::State& state)
{
    const Streams& streams = kFormats[state.range(0)];
    Meshes all(streams);
    const std::size_t used = 12u + (streams.normals ? 12u : 0u) + (streams.texture ? 8u : 0u) +
                             (streams.colors ? 16u : 0u);
    const std::size_t stride = (used & ~std::size_t(31)) + 32;
    const std::size_t perBuffer = static_cast<std::size_t>(SharedBuffer::MaxBytes) / (kVertices * stride);
    std::vector<unsigned> buffers;
    for (auto _ : state)
    {
        for (std::size_t first = 0; first < all.meshes.size(); first += perBuffer)
        {
            UploadByHand(all, first, std::min(first + perBuffer, all.meshes.size()), stride, buffers);
        }
        state.PauseTiming();
        glDeleteBuffers(static_cast<GLsizei>(buffers.size()), buffers.data());
        buffers.clear();
        state.ResumeTiming();
    }
}

BENCHMARK(PackedByPool)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);
BENCHMARK(PackedByHand)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    Bench::DropDrawing();
    benchmark::Initialize(&argc, argv);
    const auto context = Bench::OpenContext(1, 1);
    {
        // Loads the entry points.
        SharedBufferPool pool;
        auto raw = std::make_shared<RawMesh>();
        raw->SetPositionBuffer({Vector(0, 0, 0)});
        Mesh mesh(raw);
        mesh.SetRenderData(new MeshES20(&mesh, &pool), true);
        pool.GenerateVBOs();
    }
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
