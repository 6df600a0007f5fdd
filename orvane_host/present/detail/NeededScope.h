#pragma once

#include "orvane_host/present/PresentationFrame.h"

#include <array>

namespace OV::Host::Detail
{

/// Draws only what is needed of a part of a picture, for the length of a scope: what is drawn about it, for
/// stages that look at surfaces there, costs as much to colour and is thrown away. Where all of the part is needed,
/// and where something else is cut out already, nothing changes. GL.
class NeededScope
{
public:
    /// @param buffer size of what is drawn into, which lies over the part from corner to corner.
    /// @param rim pixels of the picture about what is needed that are drawn too.
    NeededScope(const PicturePart& part, const PixelSize& buffer, int rim = 0);
    ~NeededScope();

    NeededScope(const NeededScope&) = delete;
    NeededScope& operator=(const NeededScope&) = delete;

private:
    bool m_cuts = false;
    std::array<int, 4> m_box{};
};

} // namespace OV::Host::Detail
