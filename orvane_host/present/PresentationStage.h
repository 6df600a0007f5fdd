#pragma once

namespace OV::Host
{

struct FrameNeeds;
struct PixelSize;
struct PresentationFrame;

/// Where in a frame a stage from outside draws. Those of one place draw in the order in which
/// they were added.
enum class StageSlot
{
    BeforeSurfaces, ///< after the sky, on a cleared depth: it can hide surfaces
    AfterSurfaces,  ///< on surfaces; occlusion, edges and lines come over it
    OverPicture,    ///< on everything but the layer above, and lines where the picture is filtered
};

/// One step of a presented frame, such as the edges. A host adds its own with
/// PresentationRenderer::AddStage.
///
/// What a stage draws with GL it begins and ends in the state of a pass over a scene: depth test,
/// depth writes and culling on, no scissor, all colours written, the frame's framebuffer bound and
/// its viewport set. Blending may be either where it begins and is off where it ends.
///
/// It may change the scene, and what it deletes is drawn no more from then on, but for what was put together with
/// others for the frame; what it adds is drawn from the next frame on. A frame whose camera it deletes ends there.
class PresentationStage
{
public:
    PresentationStage(const PresentationStage&) = delete;
    PresentationStage& operator=(const PresentationStage&) = delete;
    virtual ~PresentationStage();

    /// Asked once a frame, after the meshes are listed. Nothing by default. Not GL.
    virtual FrameNeeds NeedsOf(const PresentationFrame& frame) const;

    /// How many pixels about one the stage looks at to draw it: where a picture is drawn in tiles, they
    /// overlap by as much. None by default. Not GL.
    /// @param whole size of the picture.
    virtual int MarginOf(const PixelSize& whole) const;

    /// Whether it may draw things in space that lie before all that the nodes of the scene show. The near
    /// plane of a Presentation then goes by the bounds of the model. True by default. Not GL.
    virtual bool DrawsBesideScene() const;

    /// Called before the meshes of a frame are listed and uploaded: for what changes how they are
    /// made, and for geometry of its own. Nothing by default. GL.
    virtual void Prepare(PresentationFrame& frame);

    /// GL.
    virtual void Draw(PresentationFrame& frame) = 0;

    /// Lets go of every GL object; the next frame makes them anew. Called on suspend, and by the
    /// renderer before it gives the stage up. May come twice. GL.
    virtual void ReleaseGL() = 0;

protected:
    PresentationStage() = default;
};

} // namespace OV::Host
