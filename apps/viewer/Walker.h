#pragma once

#include <glm/vec3.hpp>

#include <optional>
#include <vector>

namespace OV
{

class Node;

} // namespace OV

namespace OV::ViewerApp
{

/// The ground under a person who walks through a model, and the walls before them.
///
/// Hidden nodes carry nobody and stop nobody, and neither does what is cut away. Globals must be up to
/// date.
class Walker
{
public:
    /// A plane that cuts away what lies on the side of its normal.
    struct Cut
    {
        glm::dvec3 normal;
        glm::dvec3 position;
    };

    // In metres.
    static constexpr double EyeHeight = 1.6;
    /// What is no higher than this above the feet is stepped on.
    static constexpr double StepHeight = 0.6;
    /// From the middle of a person to a wall.
    static constexpr double Radius = 0.3;
    /// Above the eyes.
    static constexpr double HeadRoom = 0.1;

    /// @param model the node that all is below.
    /// @param up of length 1.
    /// @param metre in units of the world.
    Walker(const Node& model, const glm::dvec3& up, double metre, std::vector<Cut> cuts = {});

    /// How far under a point the first triangle lies; none where there is none.
    std::optional<double> DepthOfFloor(const glm::dvec3& point) const;

    /// Where the eyes are after a way along the ground: up to walls, along them, and as high above the
    /// floor as eyes are, where there is one.
    glm::dvec3 Walk(const glm::dvec3& eye, const glm::dvec3& way) const;

private:
    const Node& m_model;
    glm::dvec3 m_up;
    double m_metre;
    std::vector<Cut> m_cuts;
};

} // namespace OV::ViewerApp
