#pragma once

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

} // namespace OV::Host
