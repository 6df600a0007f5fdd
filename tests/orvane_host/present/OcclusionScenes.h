#pragma once

#include "orvane/math/Vector.h"

#include <memory>
#include <utility>
#include <vector>

namespace OV
{

class Material;
class Scene;

} // namespace OV

namespace OV::Test
{

/// Builds a scene of closed white solids, with Y up.
class SolidScene
{
public:
    SolidScene();
    ~SolidScene();

    void AddBox(const Vector& low, const Vector& high);

    /// A convex outline in X and Y, counter-clockwise seen from +Z, drawn out from a Z to a higher one.
    void AddPrism(const std::vector<std::pair<float, float>>& outline, float fromZ, float toZ);

    std::unique_ptr<Scene> Take();

private:
    std::unique_ptr<Scene> m_scene;
    Material* m_white;
};

std::unique_ptr<Scene> MakeBoxOnPlane();

/// Two walls and a floor, with a beam along a wall.
std::unique_ptr<Scene> MakeRoomCorner();
std::unique_ptr<Scene> MakeStairs();

} // namespace OV::Test
