#pragma once

#include <optional>

namespace OV::Host
{

/// What lies under a model that has no site of its own.
enum class GroundKind
{
    Shadow, ///< nothing but the shadows that fall on it, over whatever is behind the model
};

/// A ground under the model, level with its lowest point.
struct GroundSettings
{
    GroundKind kind = GroundKind::Shadow;
    /// Where it lies along the axis that points up, in the units of the model; none for the model's
    /// lowest point.
    std::optional<float> height;
    /// How dark a shadow is on it, 0 for none to 1 for black.
    float darkness = 0.35f;
};

inline bool operator==(const GroundSettings& left, const GroundSettings& right)
{
    return left.kind == right.kind && left.height == right.height && left.darkness == right.darkness;
}

inline bool operator!=(const GroundSettings& left, const GroundSettings& right)
{
    return !(left == right);
}

} // namespace OV::Host
