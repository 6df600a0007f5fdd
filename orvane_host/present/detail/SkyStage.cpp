#include "orvane_host/present/detail/SkyStage.h"

#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/StageAccess.h"
#include "orvane_host/present/detail/DomeEffect.h"
#include "orvane_host/present/detail/Effects.h"
#include "orvane_host/present/detail/NeededScope.h"
#include "orvane_host/present/detail/WholeView.h"
#include "orvane/math/TextureCoordinate.h"
#include "orvane/math/Transform.h"
#include "orvane/math/Vector.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <GL/gl.h>
#include <glm/mat3x3.hpp>
#include <glm/matrix.hpp>

#include <algorithm>
#include <cmath>
#include <utility>

namespace OV::Host::Detail
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
    explicit PerspectiveGuard(CameraNode& camera) : m_camera(camera), m_projection(camera.GetProjection())
    {
        camera.SetProjection(CameraNode::Perspective);
    }

    ~PerspectiveGuard() { m_camera.SetProjection(m_projection); }

    PerspectiveGuard(const PerspectiveGuard&) = delete;
    PerspectiveGuard& operator=(const PerspectiveGuard&) = delete;

private:
    CameraNode& m_camera;
    CameraNode::CameraProjection m_projection;
};

} // namespace

SkyStage::SkyStage() = default;

SkyStage::~SkyStage()
{
    Drop(m_effect);
}

void SkyStage::ReleaseGL()
{
    Drop(m_effect);
    if (m_scene)
    {
        m_scene->Suspend();
    }
}

void SkyStage::MakeScene()
{
    if (m_scene)
    {
        return;
    }
    m_scene = std::make_unique<Scene>();
    auto* material = new Material("sky");
    // The dome is seen from inside.
    material->flags = MaterialFlagNoCull | MaterialFlagUnlit;
    m_scene->AddMaterial(material);
    auto* mesh = new Mesh(MakeDome(), m_scene.get());
    material->AddMesh(mesh);
    m_node = new MeshNode(m_scene.get());
    m_scene->GetRoot()->AddChild(m_node, false);
    mesh->AddNode(m_node);
}

void SkyStage::MoveTo(const PresentationFrame& frame)
{
    const Vector eye = frame.camera.GetGlobal().GetPosition();
    // The matrices are of single precision: with a dome as large as the eye is far out, what
    // they lose is small against it. The near plane stands at 1.
    const float distance = std::sqrt(eye.x * eye.x + eye.y * eye.y + eye.z * eye.z);
    const float radius = 16.0f + distance;
    Transform transform;
    transform.SetScale(Vector(radius, radius, radius));
    transform.SetPosition(eye);
    if (m_node->GetLocal() != transform)
    {
        m_node->SetLocal(transform);
    }
    m_scene->UpdateGraph(static_cast<float>(frame.screen.width), static_cast<float>(frame.screen.height));
}

/// Aims the matrices of the frame and the rays of its pixels.
void SkyStage::LookFrom(PresentationFrame& frame)
{
    // The sky comes before the frame knows what it is drawn into.
    GLint viewport[4] = {};
    glGetIntegerv(GL_VIEWPORT, viewport);
    frame.target = {std::max(viewport[2], 1), std::max(viewport[3], 1)};
    const WholeView whole(frame);
    float nearDistance = 0.0f;
    float farDistance = 0.0f;
    frame.camera.GetNearFar(nearDistance, farDistance);
    const PerspectiveGuard guard(frame.camera);
    const auto aim = [&](const ViewPart& part) {
        frame.cameraData.SetPart(part);
        frame.cameraData.UpdateInfiniteMVP(frame.view.width, frame.view.height, 1.0f - nearDistance);
    };
    const ViewPart part = frame.cameraData.GetPart();
    aim(ViewPart());
    // Of a direction a pixel tells its places times the distance and the distance.
    const float* const m = frame.cameraData.GetMVP().m;
    glm::dmat3 toClip(1.0);
    for (int column = 0; column < 3; ++column)
    {
        toClip[column] = {m[4 * column], m[4 * column + 1], m[4 * column + 3]};
    }
    const glm::dmat3 back = glm::inverse(toClip);
    aim(part);
    glm::dmat3 toRay(back[0] * (2.0 / whole.size.width), back[1] * (2.0 / whole.size.height),
                     back[2] - back[0] - back[1]);
    if (m_upAxis == UpAxis::Z)
    {
        // The effect knows a sky above Y; what lies all around it looks the same.
        for (int column = 0; column < 3; ++column)
        {
            toRay[column] = {toRay[column].x, toRay[column].z, -toRay[column].y};
        }
    }
    m_effect->Show(glm::mat3(toRay), {whole.first.width, whole.first.height});
}

void SkyStage::Draw(PresentationFrame& frame)
{
    MakeScene();
    MoveTo(frame);
    if (!m_effect)
    {
        m_effect = new DomeEffect;
    }
    LookFrom(frame);
    m_items.clear();
    for (Material* material : m_scene->GetOptimizedMaterials())
    {
        frame.renderer.List(*material, frame.cameraData, m_items, false);
    }
    frame.renderer.Upload();
    glDisable(GL_BLEND);
    const NeededScope needed(frame.part, frame.target);
    const EffectInPlace inPlace(m_items, RenderPassSky, *m_effect, &m_replaced);
    frame.renderer.Draw(frame.cameraData, m_items, RenderPassSky);
    MeshES20::ResetBufferCache();
}

} // namespace OV::Host::Detail
