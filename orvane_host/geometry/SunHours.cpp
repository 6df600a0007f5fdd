#include "orvane_host/geometry/SunHours.h"

#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/NodeMaterial.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <future>
#include <thread>
#include <utility>

namespace OV::Host
{

namespace
{

using QGM::Point3d;
using QGM::Vector3d;

/// Of the scene's size: coordinates are of single precision, and faces that lie on each other shade
/// each other only where they are meant to.
constexpr double kLiftShare = 1e-5;

/// Of the time between two moments: how closely a change is looked for.
constexpr double kFinestShare = 1.0 / 16.0;

/// Of that time: how far hours may be from those of the moments alone. A trace less than all of it, for rounding.
constexpr double kMostBeside = 0.999;

/// Fewer are counted in less time than threads take to start.
constexpr std::size_t kSpotsOfAThread = 64;

RayCaster::Faces StopsSun(const MeshNode& node, const Mesh& mesh)
{
    const NodeMaterial* const own = node.CurrentNodeMaterial();
    const Material* const material = own ? own : mesh.GetMaterial();
    const bool isClear = material && material->GetOpacity() < 1.0f;
    return isClear ? RayCaster::Faces::None : RayCaster::ShownFaces(node, mesh);
}

double LiftFor(const Scene& scene)
{
    Vector low;
    Vector high;
    const_cast<Scene&>(scene).GetBoundingBox(low, high);
    const double size = std::hypot(double(high.x) - low.x, double(high.y) - low.y, double(high.z) - low.z);
    return low.x <= high.x && std::isfinite(size) && size > 0.0 ? size * kLiftShare : kLiftShare;
}

double Dot(const Vector3d& a, const Vector3d& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

} // namespace

SunHours::SunHours(const Scene& scene, std::vector<SunMoment> moments, std::vector<SectionPlane> cut) :
    m_caster(scene, StopsSun), m_moments(std::move(moments)), m_cut(std::move(cut)), m_lift(LiftFor(scene))
{
}

bool SunHours::IsCutAway(const Point3d& place) const
{
    return std::any_of(m_cut.begin(), m_cut.end(),
                       [&](const SectionPlane& plane)
                       {
                           const Vector3d apart(place.x - plane.position.x, place.y - plane.position.y,
                                                place.z - plane.position.z);
                           return Dot(apart, Vector3d(plane.normal.x, plane.normal.y, plane.normal.z)) > 0.0;
                       });
}

bool SunHours::IsShaded(const Point3d& from, const Vector3d& towardSun) const
{
    if (m_cut.empty())
    {
        return m_caster.IsBlocked(from, towardSun);
    }
    const std::vector<RayHit> hits = m_caster.CastThrough(from, towardSun);
    return std::any_of(hits.begin(), hits.end(),
                       [&](const RayHit& hit)
                       {
                           return !IsCutAway(Point3d(from.x + hit.distance * towardSun.x,
                                                     from.y + hit.distance * towardSun.y,
                                                     from.z + hit.distance * towardSun.z));
                       });
}

bool SunHours::IsLit(const SunSpot& spot, const Point3d& from, const Vector3d& towardSun) const
{
    return Dot(spot.normal, towardSun) > 0.0 && !IsShaded(from, towardSun);
}

double SunHours::At(const SunSpot& spot) const
{
    const Point3d from(spot.place.x + m_lift * spot.normal.x, spot.place.y + m_lift * spot.normal.y,
                       spot.place.z + m_lift * spot.normal.z);
    double hours = 0.0;
    double beside = 0.0;
    double longest = 0.0;
    bool wasLit = false;
    const SunMoment* before = nullptr;
    for (const SunMoment& moment : m_moments)
    {
        const bool isLit = IsLit(spot, from, moment.towardSun);
        hours += isLit ? moment.hours : 0.0;
        const double between = before ? before->toNext : 0.0;
        if (between > 0.0 && isLit != wasLit)
        {
            // The sun's way is all but straight over so short a time.
            Vector3d start = Vector3d(before->towardSun).normalize();
            Vector3d end = Vector3d(moment.towardSun).normalize();
            double change = 0.5;
            for (double half = 0.25; half >= kFinestShare; half *= 0.5)
            {
                const Vector3d middle = Vector3d(start.x + end.x, start.y + end.y, start.z + end.z).normalize();
                const bool isAfter = IsLit(spot, from, middle) == wasLit;
                (isAfter ? start : end) = middle;
                change += isAfter ? half : -half;
            }
            // The moments had the change halfway.
            beside += (wasLit ? change - 0.5 : 0.5 - change) * between;
            longest = std::max(longest, between);
        }
        wasLit = isLit;
        before = &moment;
    }
    return std::max(0.0, hours + std::clamp(beside, -kMostBeside * longest, kMostBeside * longest));
}

std::vector<float> SunHours::At(const std::vector<SunSpot>& spots) const
{
    std::vector<float> hours(spots.size());
    const std::size_t most = std::max<std::size_t>(1, std::thread::hardware_concurrency());
    const std::size_t threads = std::clamp<std::size_t>(spots.size() / kSpotsOfAThread, 1, most);
    const auto count = [&](std::size_t thread)
    {
        const std::size_t end = spots.size() * (thread + 1) / threads;
        for (std::size_t i = spots.size() * thread / threads; i < end; ++i)
        {
            hours[i] = static_cast<float>(At(spots[i]));
        }
    };
    std::vector<std::future<void>> others;
    for (std::size_t thread = 1; thread < threads; ++thread)
    {
        others.push_back(std::async(std::launch::async, count, thread));
    }
    count(0);
    for (std::future<void>& other : others)
    {
        other.get();
    }
    return hours;
}

} // namespace OV::Host
