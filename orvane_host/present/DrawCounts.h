#pragma once

#include <cstdint>
#include <vector>

namespace OV
{

class Scene;

} // namespace OV

namespace OV::Host
{

/// What one frame of a scene draws, counted from its render data after the frame.
struct DrawCounts
{
    std::uint64_t draws = 0;
    std::uint64_t drawnTriangles = 0;
    std::uint64_t buffers = 0;
    std::uint64_t bytes = 0;
};

/// Counts the draws of several scenes that share buffers. GL: sizes of buffers are asked of it.
DrawCounts CountDraws(const std::vector<const Scene*>& scenes);

} // namespace OV::Host
