#include "orvane_host/present/Picking.h"

#include "orvane_host/present/detail/PickDrawing.h"

#include <algorithm>
#include <set>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace OV::Host
{

namespace
{

struct Pixel
{
    int x;
    int y;
};

/// Where each number of a drawing is nearest; of pixels of one depth the first in reading order.
std::unordered_map<unsigned int, Pixel> NearestPixels(const Detail::PickDrawing& drawing)
{
    const PickArea& area = drawing.GetArea();
    std::unordered_map<unsigned int, Pixel> nearest;
    for (int y = area.y; y < area.y + area.height; ++y)
    {
        for (int x = area.x; x < area.x + area.width; ++x)
        {
            const unsigned int number = drawing.NumberAt(x, y);
            if (number == 0)
            {
                continue;
            }
            Pixel& pixel = nearest.emplace(number, Pixel{x, y}).first->second;
            if (drawing.DepthAt(x, y) < drawing.DepthAt(pixel.x, pixel.y))
            {
                pixel = {x, y};
            }
        }
    }
    return nearest;
}

bool IsNearer(const PickHit& left, const PickHit& right)
{
    return std::tie(left.depth, left.y, left.x) < std::tie(right.depth, right.y, right.x);
}

bool IsSame(const PickHit& left, const PickHit& right)
{
    return left.mesh == right.mesh && left.node == right.node;
}

} // namespace

Picking::Picking(PresentationRenderer& renderer) : m_renderer(renderer)
{
}

Picking::~Picking() = default;

Detail::PickDrawing& Picking::Drawing()
{
    if (!m_drawing)
    {
        m_drawing = std::make_unique<Detail::PickDrawing>(m_renderer);
    }
    return *m_drawing;
}

std::vector<PickHit> Picking::Pick(Scene& scene, CameraNode& camera, const PickArea& area)
{
    std::vector<PickHit> hits;
    Detail::PickDrawing& drawing = Drawing();
    if (!drawing.Draw(scene, camera, area))
    {
        return hits;
    }
    for (const auto& [number, pixel] : NearestPixels(drawing))
    {
        hits.push_back(drawing.HitAt(pixel.x, pixel.y));
    }
    std::sort(hits.begin(), hits.end(), IsNearer);
    // Two draws of one mesh at one node are rare: meshes of one geometry under one material.
    std::set<std::pair<const Mesh*, const MeshNode*>> seen;
    hits.erase(std::remove_if(hits.begin(), hits.end(),
                              [&](const PickHit& hit) { return !seen.emplace(hit.mesh, hit.node).second; }),
               hits.end());
    return hits;
}

std::vector<PickHit> Picking::PickThrough(Scene& scene, CameraNode& camera, int x, int y, int most)
{
    std::vector<PickHit> hits;
    Detail::PickDrawing& drawing = Drawing();
    for (int i = 0; i < most && drawing.Draw(scene, camera, {x, y, 1, 1}); ++i)
    {
        const unsigned int number = drawing.NumberAt(x, y);
        if (number == 0)
        {
            break;
        }
        // Next time what is behind it shows.
        drawing.LeaveOut(number);
        const PickHit hit = drawing.HitAt(x, y);
        if (std::none_of(hits.begin(), hits.end(), [&](const PickHit& known) { return IsSame(known, hit); }))
        {
            hits.push_back(hit);
        }
    }
    drawing.LeaveNothingOut();
    return hits;
}

void Picking::Suspend()
{
    m_drawing.reset();
}

} // namespace OV::Host
