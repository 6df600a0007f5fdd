#pragma once

#include "orvane_host/present/Picking.h"
#include "orvane_host/present/detail/ScreenBuffer.h"

#include <vector>

namespace OV::Host::Detail
{

class PickEffect;

/// The surfaces of a scene drawn in numbers, and what is read back of a part of the view.
///
/// Numbers are those of PickEffect. They and what is found by them hold until the next drawing.
class PickDrawing
{
public:
    /// @param renderer draws the surfaces; outlives this. Not GL.
    explicit PickDrawing(PresentationRenderer& renderer);

    /// GL if anything was drawn.
    ~PickDrawing();

    PickDrawing(const PickDrawing&) = delete;
    PickDrawing& operator=(const PickDrawing&) = delete;

    /// Draws and reads an area as far as it is in the view. GL; what is bound stays.
    /// @return false where there is nothing to read: the area has no pixel in the view, or GL
    ///         can't make the buffers.
    bool Draw(Scene& scene, CameraNode& camera, const PickArea& area);

    /// What was read last.
    const PickArea& GetArea() const { return m_area; }

    /// The number at a pixel of the area; 0 where there is no surface.
    unsigned int NumberAt(int x, int y) const;

    /// As in the depth buffer, at a pixel of the area.
    float DepthAt(int x, int y) const;

    /// What is at a pixel of the area that has a number.
    PickHit HitAt(int x, int y) const;

    /// Leaves the draw of a number out of the drawings to come.
    void LeaveOut(unsigned int number);
    void LeaveNothingOut();

private:
    std::size_t IndexOf(int x, int y) const;
    PickArea Inside(const PickArea& area) const;
    void ReadNumbers();
    void ReadDepths();
    std::size_t PixelsOfArea() const;
    int BottomOfArea() const;
    Vector ToWorld(int x, int y) const;

    PresentationRenderer& m_renderer;
    ScreenBuffer m_buffer;
    PickEffect* m_effect = nullptr; ///< one reference; null until the first drawing
    PickArea m_area{0, 0, 0, 0};
    int m_width = 0;  ///< of the view
    int m_height = 0; ///< of the view

    // Row by row from the bottom, as GL reads them.
    std::vector<unsigned char> m_colors; ///< four bytes a pixel
    std::vector<float> m_depths;

    double m_toWorld[16] = {}; ///< clip space to world space, column by column
};

} // namespace OV::Host::Detail
