#pragma once

#include "orvane/math/Color.h"

#include <string>

namespace OV::Host
{

/// How the surfaces of a scene are drawn.
enum class Look
{
    Basic,       ///< light at the vertices
    Advanced,    ///< light at every pixel, with maps and reflection
    Phong,       ///< the same with soft shadows and a sun of settable strength
    Crosshatch,  ///< pen strokes
    Monotone,    ///< one flat colour
    VertexColor, ///< the colours of the vertices; white where a mesh has none
};

/// Finds a look by its name on a command line, such as "vertex-color".
/// @return false, with nothing changed, if there is none.
bool ParseLook(const std::string& name, Look& look);

/// The name that ParseLook knows a look by; null for what is no look.
const char* NameOfLook(Look look);

/// What counts as one thing where edges are drawn.
enum class Identity
{
    Object, ///< what has one colour at the vertices of a mesh; a mesh without colours is one thing
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
