#pragma once

#include <cstddef>

namespace OV
{

class Scene;

/// Where a node or a mesh finds one of its draw items: by the number that the item's link has
/// in its scene.
struct DrawItemPlace
{
    Scene* scene;
    std::size_t number;
};

} // namespace OV
