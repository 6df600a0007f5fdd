#include "orvane_host/present/detail/SceneReach.h"

#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <cmath>

namespace OV::Host::Detail
{

int ReachOfPoints(const Scene& scene)
{
    float largest = 0.0f;
    for (const auto* materials : {&scene.GetOptimizedMaterials(), &scene.GetAlphaMaterials()})
    {
        for (const Material* material : *materials)
        {
            const bool isPoints = (material->GetFlags() & MaterialFlagPoints) != 0;
            largest = isPoints ? std::max(largest, material->pointSize) : largest;
        }
    }
    return static_cast<int>(std::ceil(std::min(largest, 1024.0f) / 2.0f));
}

int ReachOfLines(const Scene& scene)
{
    constexpr float looksAt = 4.0f;
    float widest = 0.0f;
    for (const LineStyle* style : scene.GetLineStyles())
    {
        widest = style->GetLines().empty() ? widest : std::max(widest, style->width + looksAt);
    }
    return static_cast<int>(std::ceil(std::min(widest, 1024.0f)));
}

} // namespace OV::Host::Detail
