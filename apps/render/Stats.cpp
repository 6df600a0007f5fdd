#include "apps/render/Stats.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

namespace OV::RenderApp
{

namespace
{

double Rounded(double milliseconds)
{
    return std::round(milliseconds * 1000.0) / 1000.0;
}

} // namespace

double Stats::MedianFrame() const
{
    if (frames.empty())
    {
        return 0.0;
    }
    std::vector<double> steady(frames.size() > 1 ? frames.begin() + 1 : frames.begin(), frames.end());
    std::sort(steady.begin(), steady.end());
    const std::size_t middle = steady.size() / 2;
    return steady.size() % 2 == 1 ? steady[middle] : (steady[middle - 1] + steady[middle]) / 2.0;
}

void Stats::AddTo(nlohmann::ordered_json& json) const
{
    json["load_ms"] = Rounded(load);
    json["pack_ms"] = Rounded(pack);
    json["first_frame_ms"] = Rounded(frames.empty() ? 0.0 : frames.front());
    json["median_frame_ms"] = Rounded(MedianFrame());
    json["frames"] = frames.size();
    json["nodes"] = presented.nodes;
    json["meshes"] = presented.meshes;
    json["triangles"] = presented.triangles;
    json["coplanar_pairs"] = presented.coplanarPairs;
    json["draws"] = presented.drawn.draws;
    json["drawn_triangles"] = presented.drawn.drawnTriangles;
    json["batches"] = presented.batches.batches;
    json["batched"] = presented.batches.pieces;
    json["buffers"] = presented.drawn.buffers;
    json["bytes"] = presented.drawn.bytes;
    nlohmann::ordered_json& kinds = json["gl_calls"];
    for (std::size_t kind = 0; kind < GLCallKindCount; ++kind)
    {
        kinds[GLCallKindNames[kind]] = calls[kind];
    }
    json["width"] = width;
    json["height"] = height;
    json["samples"] = samples;
    json["gl_vendor"] = glVendor;
    json["gl_renderer"] = glRenderer;
    json["gl_version"] = glVersion;
}

} // namespace OV::RenderApp
