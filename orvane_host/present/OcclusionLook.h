#pragma once

#include <optional>

namespace OV::Host
{

/// What darkens corners.
enum class OcclusionKind
{
    Horizon, ///< how much of its surroundings within a radius each place sees hidden, as rays would tell
    Spiral,  ///< the engine's effect: some pixels about a corner, whatever the model's size
};

/// How ambient occlusion looks.
struct OcclusionLook
{
    OcclusionKind kind = OcclusionKind::Horizon;
    /// How far what hides something may be, in the units of the model, above 0; none suits the model's
    /// size. Only counts for Horizon.
    std::optional<float> radius;
    /// How much of what is hidden surfaces lose of their colour: 1 for as much as is hidden, 0 for
    /// none to 2. Only counts for Horizon.
    float strength = 1.0f;
};

inline bool operator==(const OcclusionLook& left, const OcclusionLook& right)
{
    return left.kind == right.kind && left.radius == right.radius && left.strength == right.strength;
}

inline bool operator!=(const OcclusionLook& left, const OcclusionLook& right)
{
    return !(left == right);
}

} // namespace OV::Host
