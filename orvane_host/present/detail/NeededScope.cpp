#include "orvane_host/present/detail/NeededScope.h"

#include <GL/gl.h>

#include <cmath>

namespace OV::Host::Detail
{

namespace
{

/// With samples llvmpipe cuts a part of a pixel beside where it is told to.
constexpr int Spare = 1;

/// Pixels of a buffer, or parts of them, that a range of pixels of the picture lies in.
struct Range
{
    Range(int first, int size, int rim, int part, int buffer)
    {
        const double scale = static_cast<double>(buffer) / part;
        const double from = std::floor((first - rim) * scale);
        const double to = std::ceil((first + size + rim) * scale);
        low = static_cast<int>(from);
        length = static_cast<int>(to - from);
    }

    int low = 0;
    int length = 0;
};

} // namespace

NeededScope::NeededScope(const PicturePart& part, const PixelSize& buffer, int rim)
{
    const PictureRect& needed = part.needed;
    const bool isAll = needed.size == PixelSize() || needed.size == part.size;
    if (isAll || glIsEnabled(GL_SCISSOR_TEST) != GL_FALSE)
    {
        return;
    }
    m_cuts = true;
    glGetIntegerv(GL_SCISSOR_BOX, m_box.data());
    const int about = rim + Spare;
    const Range across(needed.x - part.x, needed.size.width, about, part.size.width, buffer.width);
    const Range up(needed.y - part.y, needed.size.height, about, part.size.height, buffer.height);
    glScissor(across.low, up.low, across.length, up.length);
    glEnable(GL_SCISSOR_TEST);
}

NeededScope::~NeededScope()
{
    if (m_cuts)
    {
        glDisable(GL_SCISSOR_TEST);
        glScissor(m_box[0], m_box[1], m_box[2], m_box[3]);
    }
}

} // namespace OV::Host::Detail
