#pragma once

#include "orvane/Export.h"

namespace OV
{

class Vector;

/// A host's own mapping between world and screen, which replaces the camera's.
///
/// The engine asks it in the middle of an update, for what follows a node of a scene in a layer.
/// What it may do to scenes and layers there is told at Scene. Where it takes away what is asked
/// for, the camera included, its answer is not used.
class ORVANE_API IScreen
{
public:
    virtual ~IScreen() = default;

    /// Gives the screen position of a point in world space, on a screen of the given size.
    virtual void WorldToScreen(const Vector& world, float width, float height, Vector& out) = 0;

    /// Gives the segment in world space behind a screen position. x and y run from 0 to 1,
    /// from the left and from the top.
    /// @param fovOnSmallerSide whether the field of view belongs to the smaller side.
    virtual void ScreenToRay(float x, float y, Vector& start, Vector& end,
                             bool fovOnSmallerSide) = 0;
};

} // namespace OV
