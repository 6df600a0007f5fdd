#pragma once

#include "orvane/math/Vector.h"

#include <memory>
#include <vector>

namespace OV
{

class CameraNode;
class Mesh;
class MeshNode;
class Scene;

} // namespace OV

namespace OV::Host
{

class PresentationRenderer;

namespace Detail
{

class PickDrawing;

} // namespace Detail

/// Pixels of a view from its upper left corner, as a pointer device counts them.
struct PickArea
{
    int x = 0;
    int y = 0;
    int width = 1;
    int height = 1;
};

/// A mesh at a node, where it is seen nearest.
struct PickHit
{
    MeshNode* node = nullptr; ///< owned by the scene
    Mesh* mesh = nullptr;     ///< owned by the scene
    float depth = 1.0f;       ///< as in the depth buffer: 0 at the near plane, 1 at the far plane
    Vector position;          ///< world space, in the middle of the pixel
    int x = 0;                ///< the pixel
    int y = 0;
};

/// Finds what is seen in a view: draws the surfaces with an identifier for each mesh at each node
/// and reads the pixels back.
///
/// What is hidden, culled, clipped away, turned away from the eye or of a material without a pass
/// for identifiers is not found, since it isn't drawn either. See-through surfaces count as
/// surfaces, also where a texture leaves them out. Lines are not found, and neither are draws
/// beyond the 16,777,215th. A depth and a position are those that the surface is drawn with: an
/// offset of polygons moves them along.
///
/// The scene is as after the last update; the view is that of the renderer, in pixels without
/// antialiasing, whatever the renderer shows of the surfaces itself. Draw IDs are not used up.
/// Nobody's identifiers are touched.
class Picking
{
public:
    /// @param renderer draws the surfaces; outlives this. Not GL.
    explicit Picking(PresentationRenderer& renderer);

    /// GL if anything was picked.
    ~Picking();

    Picking(const Picking&) = delete;
    Picking& operator=(const Picking&) = delete;

    /// Everything that is seen in an area, the nearest first, each mesh at a node once. Where
    /// two are equally near, and of the pixels where one is, the first in reading order counts.
    /// An area that reaches beyond the view counts as far as it is inside. Nothing for one
    /// without pixels, and where GL can't make the buffers. GL; what is bound stays, and so do
    /// viewport, scissor, clear colour and switches.
    std::vector<PickHit> Pick(Scene& scene, CameraNode& camera, const PickArea& area);

    /// Everything under one pixel, in the order in which it would come to light if what is before
    /// it were taken away: the nearest first, but for what is drawn whatever the depth. Each mesh
    /// at a node once, where it is nearest. GL, as Pick.
    /// @param most hits to look for, each of which takes a drawing of the scene.
    std::vector<PickHit> PickThrough(Scene& scene, CameraNode& camera, int x, int y, int most = 16);

    /// Gives the buffers back; the next pick makes them anew. GL.
    void Suspend();

private:
    Detail::PickDrawing& Drawing();

    PresentationRenderer& m_renderer;
    std::unique_ptr<Detail::PickDrawing> m_drawing; ///< null until the first pick
};

} // namespace OV::Host
