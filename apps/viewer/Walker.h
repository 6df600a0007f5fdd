#pragma once

#include <glm/vec3.hpp>

#include <optional>

namespace OV
{

class Node;

} // namespace OV

namespace OV::ViewerApp
{

/// The ground under a person who walks through a model.
class Walker
{
public:
    // In metres.
    static constexpr double EyeHeight = 1.6;
    /// What is no higher than this above the feet is stepped on.
    static constexpr double StepHeight = 0.6;

    /// How far under a point the first triangle lies that is below a node; none where there is none.
    /// Hidden nodes carry nobody. Globals must be up to date.
    static std::optional<double> DepthOfFloor(const Node& node, const glm::dvec3& point, const glm::dvec3& up);
};

} // namespace OV::ViewerApp
