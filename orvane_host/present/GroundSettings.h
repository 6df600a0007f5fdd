#pragma once

#include "orvane/math/Color.h"

#include <optional>

namespace OV::Host
{

/// What a ground shows.
enum class GroundKind
{
    ShadowCatcher, ///< nothing but the shadows on it: what is behind the model stays
    Plain,         ///< a colour that fades into the horizon, and the shadows on it
};

/// A level ground under the model. It belongs to the picture, not to the model: it is not picked,
/// framed, measured or cut, and not seen from below.
struct GroundSettings
{
    GroundKind kind = GroundKind::Plain;
    /// Of a plain; its alpha does not count.
    Color color{0.8f, 0.8f, 0.8f};
    /// Along the axis that is up (ViewSettings::upAxis), in the units of the model; none for the
    /// model's lowest point.
    std::optional<float> height;
};

} // namespace OV::Host
