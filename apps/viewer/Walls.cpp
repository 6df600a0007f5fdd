#include "apps/viewer/Walls.h"

#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace OV::ViewerApp
{

namespace
{

/// Steps are shorter than the radius by this, so that nobody is beyond a wall before it is felt.
constexpr double StepShare = 1.0 / 3.0;
constexpr double MostSteps = 10000.0;
/// As many walls as stand in a corner, twice.
constexpr int Pushes = 6;
constexpr double Touching = 1e-6;

double Cross(const glm::dvec2& a, const glm::dvec2& b)
{
    return a.x * b.y - a.y * b.x;
}

} // namespace

Walls::Walls(const glm::dvec3& up, double low, double high, const std::vector<Walker::Cut>& cuts) :
    m_up(up), m_cuts(cuts)
{
    const glm::dvec3 side = std::abs(up.x) < 0.5 ? glm::dvec3(1.0, 0.0, 0.0) : glm::dvec3(0.0, 0.0, 1.0);
    m_right = glm::normalize(glm::cross(side, up));
    m_ahead = glm::cross(up, m_right);
    m_cuts.push_back({up, up * high});
    m_cuts.push_back({-up, up * low});
}

glm::dvec2 Walls::OnGround(const glm::dvec3& point) const
{
    return {glm::dot(point, m_right), glm::dot(point, m_ahead)};
}

void Walls::Add(const std::array<glm::dvec3, 3>& corners)
{
    std::vector<glm::dvec3> left(corners.begin(), corners.end());
    for (const Walker::Cut& cut : m_cuts)
    {
        std::vector<glm::dvec3> kept;
        for (std::size_t i = 0; i < left.size(); ++i)
        {
            const glm::dvec3& here = left[i];
            const glm::dvec3& next = left[(i + 1) % left.size()];
            const double above = glm::dot(here - cut.position, cut.normal);
            const double nextAbove = glm::dot(next - cut.position, cut.normal);
            if (above <= 0.0)
            {
                kept.push_back(here);
            }
            if ((above < 0.0 && nextAbove > 0.0) || (above > 0.0 && nextAbove < 0.0))
            {
                kept.push_back(here + (next - here) * (above / (above - nextAbove)));
            }
        }
        left.swap(kept);
    }
    if (left.empty())
    {
        return;
    }
    Area area;
    std::transform(left.begin(), left.end(), std::back_inserter(area),
                   [this](const glm::dvec3& point) { return OnGround(point); });
    m_areas.push_back(std::move(area));
}

bool Walls::Crosses(const glm::dvec2& from, const glm::dvec2& to) const
{
    const auto crosses = [&](const glm::dvec2& a, const glm::dvec2& b)
    {
        const double first = Cross(to - from, a - from);
        const double second = Cross(to - from, b - from);
        const double third = Cross(b - a, from - a);
        const double fourth = Cross(b - a, to - a);
        return first * second < 0.0 && third * fourth < 0.0;
    };
    return std::any_of(m_areas.begin(), m_areas.end(),
                       [&](const Area& area)
                       {
                           for (std::size_t i = 0; i < area.size(); ++i)
                           {
                               if (crosses(area[i], area[(i + 1) % area.size()]))
                               {
                                   return true;
                               }
                           }
                           return false;
                       });
}

double Walls::Nearest(const glm::dvec2& point, glm::dvec2& place) const
{
    double nearest = std::numeric_limits<double>::max();
    for (const Area& area : m_areas)
    {
        for (std::size_t i = 0; i < area.size(); ++i)
        {
            const glm::dvec2 along = area[(i + 1) % area.size()] - area[i];
            const double length = glm::dot(along, along);
            const double share = length > 0.0 ? std::clamp(glm::dot(point - area[i], along) / length, 0.0, 1.0) : 0.0;
            const glm::dvec2 foot = area[i] + along * share;
            const double distance = glm::distance(point, foot);
            if (distance < nearest)
            {
                nearest = distance;
                place = foot;
            }
        }
    }
    return nearest;
}

glm::dvec2 Walls::PushedOut(glm::dvec2 point, double radius) const
{
    for (int push = 0; push < Pushes; ++push)
    {
        glm::dvec2 place(0.0);
        const double distance = Nearest(point, place);
        if (distance >= radius || !(distance > 0.0))
        {
            break;
        }
        point = place + (point - place) * (radius / distance);
    }
    return point;
}

glm::dvec3 Walls::Follow(const glm::dvec3& from, const glm::dvec3& way, double radius) const
{
    const glm::dvec2 begin = OnGround(from);
    glm::dvec2 all = OnGround(way);
    const double wanted = std::ceil(glm::length(all) / (radius * StepShare));
    if (!std::isfinite(wanted))
    {
        return from;
    }
    // Further than that nobody goes at once.
    all *= std::min(1.0, MostSteps / wanted);
    const int steps = static_cast<int>(std::clamp(wanted, 1.0, MostSteps));
    glm::dvec2 here = begin;
    glm::dvec2 ignored(0.0);
    for (int step = 0; step < steps && !m_areas.empty(); ++step)
    {
        const glm::dvec2 wanted = here + all / static_cast<double>(steps);
        const glm::dvec2 next = PushedOut(wanted, radius);
        const double room = std::min(radius, Nearest(here, ignored));
        if (Crosses(here, next) || Nearest(next, ignored) < room * (1.0 - Touching))
        {
            break;
        }
        here = next;
    }
    const glm::dvec2 gone = m_areas.empty() ? all : here - begin;
    return from + m_right * gone.x + m_ahead * gone.y;
}

} // namespace OV::ViewerApp
