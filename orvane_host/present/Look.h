#pragma once

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

} // namespace OV::Host
