#pragma once

#include "orvane/base/Lifetime.h"
#include "orvane/math/Color.h"
#include "orvane/math/Vector.h"

namespace OV
{

class LightNode;
class Scene;

} // namespace OV

namespace OV::Host::Detail
{

/// Makes the first light of a scene, the only one that the looks know, shine as the sun does, and
/// gives it back as it was.
class SunLight
{
public:
    /// Takes the light that is the first. Nothing where there is none.
    /// @param towardSun world space, of any length above 0.
    /// @param strength of each of its colours, 0 to 1.
    void Take(Scene& scene, const Vector& towardSun, float strength);

    /// Turns it towards the sun, wherever the node is that holds it: before each frame, the globals
    /// up to date.
    void Aim(const Scene& scene);

    /// As it was; nothing where none was taken, or where it is gone.
    void GiveBack(const Scene& scene);

private:
    bool IsThere(const Scene& scene) const;

    LightNode* m_light = nullptr; ///< of the scene, as long as it is watched; null where none is taken
    LifetimeWatch m_watch;
    Vector m_towardSun;
    // As it was.
    Color m_color;
    Vector m_direction;
};

} // namespace OV::Host::Detail
