#pragma once

#include <glm/vec2.hpp>

namespace OV::Host::Detail
{

/// Texels of a map: first and behind the last, across and up.
struct TexelRect
{
    glm::ivec2 low{0};
    glm::ivec2 high{0};
};

inline bool IsEmpty(const TexelRect& rect)
{
    return rect.low.x >= rect.high.x || rect.low.y >= rect.high.y;
}

inline bool operator==(const TexelRect& a, const TexelRect& b)
{
    return a.low == b.low && a.high == b.high;
}

} // namespace OV::Host::Detail
