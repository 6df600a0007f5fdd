#pragma once

#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/StageAccess.h"
#include "orvane_host/view/ViewFit.h"
#include "orvane/renderer/Renderer20.h"

#include <memory>
#include <optional>
#include <vector>

namespace OV::Host::Detail
{

class SkyStage;

} // namespace OV::Host::Detail

namespace OV::Host
{

/// The engine's renderer with a sky behind the scene, with lines for edges, and with render
/// data made ahead of the first frame.
///
/// Lines keep their depth whatever their slope, so that none comes through what is before it;
/// FeatureEdges::MakeRoom lets them stand out from the faces that they bound.
///
/// The sky is that of SkySettings, on a dome about the eye: the horizon lies at eye level. It has
/// no depth, so everything is in front of it. An orthographic camera sees the sky that a perspective
/// one of its angle would see.
class SceneRenderer : public Renderer20
{
public:
    /// As Renderer20. Not GL.
    SceneRenderer(TextureLoader* textureLoader, RenderCapabilities* capabilities);

    /// GL if a sky was drawn.
    ~SceneRenderer() override;

    /// Draws the sky behind each scene from now on. Off at first.
    void ShowSky(bool show) { m_skyShown = show; }
    bool IsSkyShown() const { return m_skyShown; }

    /// The axis of the world that the sky is above from now on; Y at first.
    void SetSkyAxis(UpAxis axis);

    /// Draws a part of a larger picture from the next frame on: the camera and the 2D layers see all of
    /// the picture, the framebuffer has the size of the part. None, as at first, for pictures drawn in
    /// one. GL.
    void ShowPart(const std::optional<PicturePart>& part);
    const std::optional<PicturePart>& GetPart() const { return m_part; }

    /// Makes the render data of everything in the scene that is ready, packs the geometry and
    /// uploads it, so that the next frame only draws. Null does nothing. GL.
    void Pack(Scene* scene, CameraNode* camera);

    void Render2D(Scene2D* layer) override;
    void Render3D(Scene* scene, CameraNode* camera) override;
    void Suspend() override;

    /// The private scene of the sky, for whoever counts what is drawn; null until it is drawn.
    const Scene* GetSkyScene() const;

protected:
    /// Draws the scene in front of what is there.
    virtual void DrawScene(Scene& scene, CameraNode& camera);

    /// Lists the surfaces of a scene for Pack, giving them render data at need. GL.
    virtual void ListSurfaces(Scene& scene, CameraNode& camera, std::vector<RenderItemES20>& items);

    /// The camera's render data, made at need; null if the host has put something else there.
    static CameraNodeES20* CameraDataOf(CameraNode* camera);

    /// What stages share of a frame that begins, drawn into the screen.
    /// @param items listed later; outlive the frame.
    PresentationFrame BeginFrame(Scene& scene, CameraNode& camera, CameraNodeES20& cameraData,
                                 const FrameItems& items);

private:
    friend class StageAccess;

    /// Whether there was a context ever: the engine loads no entry points without one.
    bool FindGL();
    void LevelLines(Scene& scene);
    void DrawSky(Scene& scene, CameraNode& camera);

    std::optional<PicturePart> m_part;
    StageAccess m_access{*this};
    bool m_hasGL = false;
    bool m_isDrawing = false;
    bool m_skyShown = false;
    std::unique_ptr<Detail::SkyStage> m_sky;
};

} // namespace OV::Host
