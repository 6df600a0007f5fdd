#pragma once

#include "orvane/math/Color.h"

namespace OV::Host
{

/// What counts as one thing where edges are drawn.
enum class Identity
{
    /// What has one colour at the vertices of a mesh; a mesh without colours is one thing. Where colours fade over a
    /// surface all of it counts as edges.
    Object,
    Group,  ///< the nodes of one Node::GetUserData
};

/// How the edges between things are drawn.
struct EdgeLook
{
    /// Opacity, 0 to 1. Where only one neighbour of a pixel is of another thing, half of it.
    float weight = 0.5f;
    Color color{0.0f, 0.0f, 0.0f};
    Identity identity = Identity::Group;
};

} // namespace OV::Host
