#include "orvane_host/present/SceneRenderer.h"

#include "orvane_host/context/detail/GLVersion.h"
#include "orvane_host/present/detail/LevelLineES20.h"
#include "orvane_host/present/detail/SkyStage.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Scene.h"

#include <cmath>

namespace OV::Host
{

namespace
{

/// Says that something is being drawn, until the scope ends.
class DrawingScope
{
public:
    explicit DrawingScope(bool& isDrawing) : m_isDrawing(isDrawing) { m_isDrawing = true; }
    ~DrawingScope() { m_isDrawing = false; }

    DrawingScope(const DrawingScope&) = delete;
    DrawingScope& operator=(const DrawingScope&) = delete;

private:
    bool& m_isDrawing;
};

/// Where a part of a picture lies in normalised device coordinates of all of it.
ViewPart ViewPartOf(const PicturePart& part)
{
    const auto shift = [](int whole, int size, int begin)
    { return (static_cast<double>(whole) - 2.0 * begin - size) / size; };
    return {static_cast<double>(part.whole.width) / part.size.width,
            static_cast<double>(part.whole.height) / part.size.height,
            shift(part.whole.width, part.size.width, part.x), shift(part.whole.height, part.size.height, part.y)};
}

} // namespace

SceneRenderer::SceneRenderer(TextureLoader* loader, RenderCapabilities* caps) :
    Renderer20(loader, caps), m_sky(std::make_unique<Detail::SkyStage>())
{
}

SceneRenderer::~SceneRenderer() = default;

void SceneRenderer::SetSkyAxis(UpAxis axis)
{
    m_sky->SetUpAxis(axis);
}

void SceneRenderer::Pack(Scene* scene, CameraNode* camera)
{
    CameraNodeES20* cameraData = scene && camera && FindGL() ? CameraDataOf(camera) : nullptr;
    if (!cameraData)
    {
        return;
    }
    std::vector<RenderItemES20> items;
    ListSurfaces(*scene, *camera, items);
    LevelLines(*scene);
    PrepareLineStyles(scene->GetLineStyles(), cameraData, items, false);
    bufferPool.GenerateVBOs();
    MeshES20::ResetBufferCache();
}

void SceneRenderer::ListSurfaces(Scene& scene, CameraNode& camera, std::vector<RenderItemES20>& items)
{
    CameraNodeES20* const cameraData = CameraDataOf(&camera);
    PrepareOptimizedMaterials(scene.GetOptimizedMaterials(), cameraData, items, false);
    PrepareOptimizedMaterials(scene.GetAlphaMaterials(), cameraData, items, false);
}

bool SceneRenderer::FindGL()
{
    // Entry points that are loaded once stay so.
    m_hasGL = m_hasGL || Detail::HasContext();
    return m_hasGL;
}

void SceneRenderer::LevelLines(Scene& scene)
{
    for (LineStyle* style : scene.GetLineStyles())
    {
        for (Line* line : style->GetLines())
        {
            const auto* data = dynamic_cast<const MeshES20*>(line->GetRenderData());
            if (!data || !data->pool)
            {
                line->SetRenderData(new Detail::LevelLineES20(line, &bufferPool), true);
            }
        }
    }
}

void SceneRenderer::ShowPart(const std::optional<PicturePart>& part)
{
    const PixelSize size = part ? part->size : m_part ? m_part->whole : PixelSize{width, height};
    if (size != PixelSize{width, height})
    {
        // A capture keeps its size otherwise.
        ClearOffscreenBuffers();
        Resize(size.width, size.height);
    }
    m_part = part;
}

void SceneRenderer::Render2D(Scene2D* layer)
{
    if (m_part)
    {
        // Layers are as large in a part as in the whole, and begin elsewhere.
        hudCamera->SetPart({1.0, 1.0, -2.0 * m_part->x / m_part->size.width, -2.0 * m_part->y / m_part->size.height});
    }
    Renderer20::Render2D(layer);
    hudCamera->SetPart({});
}

void SceneRenderer::Render3D(Scene* scene, CameraNode* camera)
{
    // A host that is called while a frame is listed may ask for another one: the lists are in use.
    if (m_isDrawing || !FindGL())
    {
        return;
    }
    const DrawingScope drawing(m_isDrawing);
    // Over-draw adds to a picture that has its sky already.
    if (m_skyShown && !overDraw && scene && camera)
    {
        DrawSky(*scene, *camera);
    }
    if (scene && camera)
    {
        LevelLines(*scene);
        DrawScene(*scene, *camera);
    }
}

void SceneRenderer::DrawScene(Scene& scene, CameraNode& camera)
{
    Renderer20::Render3D(&scene, &camera);
}

CameraNodeES20* SceneRenderer::CameraDataOf(CameraNode* camera)
{
    if (!camera->GetRenderData())
    {
        camera->SetRenderData(new CameraNodeES20(camera));
    }
    return dynamic_cast<CameraNodeES20*>(camera->GetRenderData());
}

PresentationFrame SceneRenderer::BeginFrame(Scene& scene, CameraNode& camera, CameraNodeES20& cameraData,
                                            const FrameItems& items)
{
    PresentationFrame frame{scene, camera, cameraData, m_access, items};
    frame.screen = {width, height};
    frame.part = m_part.value_or(PicturePart{frame.screen, frame.screen, 0, 0});
    const auto inPoints = [scale = GetPxToPtScale()](int pixels) {
        const float points = static_cast<float>(pixels) * scale;
        // Any number may have been set for the ratio.
        return std::abs(points) < 2147483648.0f ? static_cast<int>(points) : pixels;
    };
    frame.view.width = inPoints(frame.part.whole.width);
    frame.view.height = inPoints(frame.part.whole.height);
    cameraData.SetPart(m_part ? ViewPartOf(*m_part) : ViewPart());
    frame.target = frame.screen;
    frame.background = clearColor;
    frame.overDraw = overDraw;
    return frame;
}

const Scene* SceneRenderer::GetSkyScene() const
{
    return m_sky->GetScene();
}

void SceneRenderer::DrawSky(Scene& scene, CameraNode& camera)
{
    if (CameraNodeES20* const cameraData = CameraDataOf(&camera))
    {
        const FrameItems none;
        PresentationFrame frame = BeginFrame(scene, camera, *cameraData, none);
        m_sky->Draw(frame);
    }
}

void SceneRenderer::Suspend()
{
    m_sky->ReleaseGL();
    Renderer20::Suspend();
}

} // namespace OV::Host
