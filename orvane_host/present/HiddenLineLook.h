#pragma once

namespace OV::Host
{

/// How lines are drawn where surfaces hide them, as in a technical drawing.
struct HiddenLineLook
{
    float dash = 6.0f;       ///< pixels of a dash, of lines without dashes of their own
    float gap = 3.0f;        ///< pixels after it
    float widthShare = 0.5f; ///< of the line's width
};

} // namespace OV::Host
