#include "orvane_host/present/detail/NearestFirst.h"

#include "orvane_host/present/detail/ItemBox.h"
#include "orvane/effects/MonotoneEffectES20.h"
#include "orvane/math/Matrix.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <glm/geometric.hpp>
#include <glm/vec3.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace OV::Host::Detail
{

namespace
{

/// Whether the picture is the same whenever a style's meshes are drawn.
bool IsFree(MeshStyleES20& style, RenderPass pass)
{
    const auto* const data = dynamic_cast<const MaterialES20*>(&style);
    const Material* const material = data ? data->GetMaterial() : nullptr;
    return material && (material->GetFlags() & (MaterialFlagAlwaysPass | MaterialFlagPoints)) == 0
        && dynamic_cast<const MonotoneEffectES20*>(style.GetShader(pass));
}

bool AreFree(const std::vector<RenderItemES20>& items, std::size_t end, RenderPass pass)
{
    const MeshStyleES20* style = nullptr;
    for (std::size_t i = 0; i < end; ++i)
    {
        // The meshes of a material stand in a row.
        if (!items[i].mesh || (items[i].style != style && !IsFree(*items[i].style, pass)))
        {
            return false;
        }
        style = items[i].style;
    }
    return true;
}

/// How far things lie along a view.
struct Depths
{
    explicit Depths(const Matrix& worldToClip)
    {
        const float* const m = worldToClip.m;
        along = {m[2], m[6], m[10]};
        start = m[14];
        // Where clip space begins z is minus w, and z follows from w.
        const glm::dvec3 w(m[3], m[7], m[11]);
        const double steepness = glm::dot(w, w);
        const double factor = steepness > 0.0 ? glm::dot(along, w) / steepness : 0.0;
        least = steepness > 0.0 ? (start - factor * m[15]) / (factor + 1.0) : -static_cast<double>(m[15]);
    }

    glm::dvec3 along{0.0};
    double start = 0.0; ///< of the origin
    double least = 0.0; ///< that is seen
};

/// Of the middle of what is drawn, without what lies nearer than the view begins; of several places the nearest.
double DistanceOf(const RenderItemES20& item, const Depths& depths)
{
    double nearest = std::numeric_limits<double>::infinity();
    const auto add = [&](const MeshNode& node) {
        const CastBox box = BoxOf(*item.mesh, node);
        const double middle = glm::dot(depths.along, box.middle) + depths.start;
        double reach = 0.0;
        for (const glm::dvec3& half : box.halves)
        {
            reach += std::abs(glm::dot(depths.along, half));
        }
        const double from = std::max(middle - reach, depths.least);
        const double to = std::max(middle + reach, depths.least);
        nearest = std::min(nearest, 0.5 * (from + to));
    };
    if (item.specificNode)
    {
        add(*item.node);
        return nearest;
    }
    for (const MeshNode* node : item.mesh->EachNode())
    {
        add(*node);
    }
    return nearest;
}

} // namespace

const std::vector<RenderItemES20>& NearestFirst::Arrange(const std::vector<RenderItemES20>& items, std::size_t end,
                                                         const Matrix& worldToClip, RenderPass pass)
{
    if (end < 2 || !AreFree(items, end, pass))
    {
        return items;
    }
    const Depths depths(worldToClip);
    m_distances.clear();
    double nearest = std::numeric_limits<double>::infinity();
    double farthest = -nearest;
    for (std::size_t i = 0; i < end; ++i)
    {
        const double distance = DistanceOf(items[i], depths);
        m_distances.push_back(distance);
        if (std::isfinite(distance))
        {
            nearest = std::min(nearest, distance);
            farthest = std::max(farthest, distance);
        }
    }
    const double scale = (Steps - 1) / std::max(farthest - nearest, std::numeric_limits<double>::min());
    const auto stepOf = [&](double distance) {
        const double step = (distance - nearest) * scale;
        return step >= 0.0 && step < Steps ? static_cast<std::size_t>(step) : Steps - 1;
    };
    // Where the items of each step begin.
    std::array<std::size_t, Steps + 1> places{};
    for (const double distance : m_distances)
    {
        ++places[stepOf(distance) + 1];
    }
    for (std::size_t step = 1; step <= Steps; ++step)
    {
        places[step] += places[step - 1];
    }
    m_sorted.assign(items.begin(), items.end());
    for (std::size_t i = 0; i < end; ++i)
    {
        m_sorted[places[stepOf(m_distances[i])]++] = items[i];
    }
    return m_sorted;
}

} // namespace OV::Host::Detail
