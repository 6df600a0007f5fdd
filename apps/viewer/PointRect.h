#pragma once

namespace OV::ViewerApp
{

/// A part of the window in points from its upper left corner.
struct PointRect
{
    float x = 0.0f;
    float y = 0.0f;
    float width = 0.0f;
    float height = 0.0f;
};

} // namespace OV::ViewerApp
