#include "orvane_host/present/SceneRenderer.h"

#include "orvane_host/present/detail/LevelLineES20.h"
#include "orvane/math/TextureCoordinate.h"
#include "orvane/math/Transform.h"
#include "orvane/math/Vector.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <GL/gl.h>

#include <cmath>
#include <utility>

namespace OV::Host
{

namespace
{

constexpr double Pi = 3.14159265358979323846;

/// Rings from straight down to straight up, so many degrees apart that the usual stops of the
/// gradient, a tenth and a fifth of the way up, lie on rings.
constexpr int RingStepDegrees = 3;
constexpr int Rings = 180 / RingStepDegrees;
/// Enough that the chords of a ring do not sag visibly.
constexpr int Segments = 96;

/// Sphere of radius 1. v of the texture runs evenly with the elevation: 0 at the horizon, 1
/// straight up, -1 straight down.
std::shared_ptr<RawMesh> MakeDome()
{
    std::vector<Vector> positions;
    std::vector<TextureCoordinate> coordinates;
    std::vector<unsigned short> indices;
    for (int ring = 0; ring <= Rings; ++ring)
    {
        const double elevation = (ring * RingStepDegrees - 90) * Pi / 180.0;
        const float height = static_cast<float>(ring * RingStepDegrees - 90) / 90.0f;
        for (int segment = 0; segment <= Segments; ++segment)
        {
            const double azimuth = 2.0 * Pi * segment / Segments;
            positions.emplace_back(static_cast<float>(std::cos(elevation) * std::sin(azimuth)),
                                   static_cast<float>(std::sin(elevation)),
                                   static_cast<float>(std::cos(elevation) * std::cos(azimuth)));
            coordinates.emplace_back(static_cast<float>(segment) / Segments, height);
        }
    }
    for (int ring = 0; ring < Rings; ++ring)
    {
        for (int segment = 0; segment < Segments; ++segment)
        {
            const auto lower = static_cast<unsigned short>(ring * (Segments + 1) + segment);
            const auto upper = static_cast<unsigned short>(lower + Segments + 1);
            const auto next = [](unsigned short index) { return static_cast<unsigned short>(index + 1); };
            indices.insert(indices.end(), {lower, upper, next(lower), next(lower), upper, next(upper)});
        }
    }
    auto dome = std::make_shared<RawMesh>();
    dome->StartDescription();
    dome->SetPositionBuffer(std::move(positions));
    dome->SetTextureBuffer(std::move(coordinates));
    dome->SetIndices(std::move(indices));
    dome->EndDescription(true);
    return dome;
}

/// Shows the camera as a perspective one for the length of a scope.
class PerspectiveGuard
{
public:
    explicit PerspectiveGuard(CameraNode* camera) : m_camera(camera), m_projection(camera->GetProjection())
    {
        camera->SetProjection(CameraNode::Perspective);
    }

    ~PerspectiveGuard() { m_camera->SetProjection(m_projection); }

    PerspectiveGuard(const PerspectiveGuard&) = delete;
    PerspectiveGuard& operator=(const PerspectiveGuard&) = delete;

private:
    CameraNode* m_camera;
    CameraNode::CameraProjection m_projection;
};

} // namespace

SceneRenderer::SceneRenderer(TextureLoader* loader, RenderCapabilities* caps) : Renderer20(loader, caps)
{
}

SceneRenderer::~SceneRenderer() = default;

void SceneRenderer::ShowSky(bool show)
{
    m_skyShown = show;
}

void SceneRenderer::Pack(Scene* scene, CameraNode* camera)
{
    CameraNodeES20* cameraData = scene && camera ? CameraDataOf(camera) : nullptr;
    if (!cameraData)
    {
        return;
    }
    std::vector<RenderItemES20> items;
    for (const auto* list : {&scene->GetOptimizedMaterials(), &scene->GetAlphaMaterials()})
    {
        for (Material* material : *list)
        {
            PrepareOptimizedMaterial(material, cameraData, items, false);
        }
    }
    LevelLines(*scene);
    for (LineStyle* style : scene->GetLineStyles())
    {
        PrepareLineStyle(style, cameraData, items, false);
    }
    bufferPool.GenerateVBOs();
    MeshES20::ResetBufferCache();
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

void SceneRenderer::Render3D(Scene* scene, CameraNode* camera)
{
    // Over-draw adds to a picture that has its sky already.
    if (m_skyShown && !overDraw && scene && camera)
    {
        DrawSky(camera);
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

void SceneRenderer::Suspend()
{
    if (m_skyScene)
    {
        m_skyScene->Suspend();
    }
    Renderer20::Suspend();
}

void SceneRenderer::MakeSkyScene()
{
    if (m_skyScene)
    {
        return;
    }
    m_skyScene = std::make_unique<Scene>();
    auto* material = new Material("sky");
    // The dome is seen from inside.
    material->flags = MaterialFlagNoCull | MaterialFlagUnlit;
    m_skyScene->AddMaterial(material);
    auto* mesh = new Mesh(MakeDome(), m_skyScene.get());
    material->AddMesh(mesh);
    m_skyNode = new MeshNode(m_skyScene.get());
    m_skyScene->GetRoot()->AddChild(m_skyNode, false);
    mesh->AddNode(m_skyNode);
}

void SceneRenderer::MoveSkyTo(CameraNode* camera)
{
    const Vector eye = camera->GetGlobal().GetPosition();
    // The matrices are of single precision: with a dome as large as the eye is far out, what
    // they lose is small against it. The near plane stands at 1.
    const float distance = std::sqrt(eye.x * eye.x + eye.y * eye.y + eye.z * eye.z);
    const float radius = 16.0f + distance;
    Transform transform;
    transform.SetScale(Vector(radius, radius, radius));
    transform.SetPosition(eye);
    if (m_skyNode->GetLocal() != transform)
    {
        m_skyNode->SetLocal(transform);
    }
    m_skyScene->UpdateGraph(static_cast<float>(width), static_cast<float>(height));
}

void SceneRenderer::DrawSky(CameraNode* camera)
{
    CameraNodeES20* cameraData = CameraDataOf(camera);
    if (!cameraData)
    {
        return;
    }
    MakeSkyScene();
    MoveSkyTo(camera);

    const float pointsPerPixel = GetPxToPtScale();
    float nearDistance = 0.0f;
    float farDistance = 0.0f;
    camera->GetNearFar(nearDistance, farDistance);
    {
        const PerspectiveGuard guard(camera);
        cameraData->UpdateInfiniteMVP(static_cast<int>(width * pointsPerPixel),
                                      static_cast<int>(height * pointsPerPixel), 1.0f - nearDistance);
    }
    m_skyItems.clear();
    for (Material* material : m_skyScene->GetOptimizedMaterials())
    {
        PrepareOptimizedMaterial(material, cameraData, m_skyItems, false);
    }
    bufferPool.GenerateVBOs();
    glDisable(GL_BLEND);
    RenderItemList(cameraData, m_skyItems, RenderPassSky);
    MeshES20::ResetBufferCache();
}

} // namespace OV::Host
