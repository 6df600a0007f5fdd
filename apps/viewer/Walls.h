#pragma once

#include "apps/viewer/Walker.h"

#include <glm/vec2.hpp>

#include <array>

namespace OV::ViewerApp
{

/// What stands in the way of a person, from above: all that lies between two heights, as areas in the
/// plane of the ground.
class Walls
{
public:
    /// @param up of length 1.
    /// @param low, high along up.
    Walls(const glm::dvec3& up, double low, double high, const std::vector<Walker::Cut>& cuts);

    /// Takes in what of a triangle is between the heights and not cut away.
    void Add(const std::array<glm::dvec3, 3>& corners);

    /// The end of a way for somebody round, who goes along walls but not into them. Who stands in one
    /// already may leave it.
    glm::dvec3 Follow(const glm::dvec3& from, const glm::dvec3& way, double radius) const;

private:
    using Area = std::vector<glm::dvec2>; ///< corners, round about

    glm::dvec2 OnGround(const glm::dvec3& point) const;
    bool Crosses(const glm::dvec2& from, const glm::dvec2& to) const;
    /// The nearest place of all areas, and how far it is.
    double Nearest(const glm::dvec2& point, glm::dvec2& place) const;
    glm::dvec2 PushedOut(glm::dvec2 point, double radius) const;

    glm::dvec3 m_up;
    glm::dvec3 m_right;
    glm::dvec3 m_ahead;
    std::vector<Walker::Cut> m_cuts; ///< with the heights among them
    std::vector<Area> m_areas;
};

} // namespace OV::ViewerApp
