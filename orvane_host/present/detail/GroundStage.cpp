#define GL_GLEXT_PROTOTYPES

#include "orvane_host/present/detail/GroundStage.h"

#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/StageAccess.h"
#include "orvane_host/present/detail/ContactShadow.h"
#include "orvane_host/present/detail/Effects.h"
#include "orvane_host/present/detail/GroundEffect.h"
#include "orvane_host/present/detail/NeededScope.h"
#include "orvane_host/present/detail/UploadScope.h"
#include "orvane_host/present/detail/WholeView.h"
#include "orvane/effects/SkySettings.h"
#include "orvane/math/Matrix.h"
#include "orvane/math/Transform.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/scene/CameraNode.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace OV::Host::Detail
{

namespace
{

/// Extents of the model to where half of a plain has faded.
constexpr float kReach = 4.0f;
/// The same in distances of the eye, so that from afar there is no disc.
constexpr float kReachOfEye = 1.5f;
/// Of the light that a contact shadow takes where it is darkest.
constexpr float kShadowStrength = 0.6f;
/// How much farther a ground is drawn than it is.
constexpr double kFarther = 1.0005;

using Direction = std::array<double, 3>;

/// The eye, and its axes in world space.
struct Eye
{
    explicit Eye(const CameraNode& camera)
    {
        const auto& m = camera.GetGlobal().GetTransf3d().m;
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            const double length = std::sqrt(m[0][axis] * m[0][axis] + m[1][axis] * m[1][axis] + m[2][axis] * m[2][axis]);
            for (std::size_t row = 0; row < 3; ++row)
            {
                axes[axis][row] = length > 0.0 ? m[row][axis] / length : 0.0;
            }
        }
        position = {m[0][3], m[1][3], m[2][3]};
    }

    std::array<Direction, 3> axes{};
    Direction position{};
};

/// The first two rows of a projection, of which a ray of a pixel comes.
struct Projection
{
    /// The matrix is of single precision: only its last column, which counts without perspective, is
    /// worked out against large numbers.
    Projection(const Matrix& worldToClip, const Eye& eye)
    {
        for (std::size_t row = 0; row < 2; ++row)
        {
            const auto at = [&](std::size_t column) { return static_cast<double>(worldToClip.m[column * 4 + row]); };
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                rows[row][axis] = at(0) * eye.axes[axis][0] + at(1) * eye.axes[axis][1] + at(2) * eye.axes[axis][2];
            }
            rows[row][3] = at(0) * eye.position[0] + at(1) * eye.position[1] + at(2) * eye.position[2] + at(3);
        }
    }

    std::array<std::array<double, 4>, 2> rows{};
};

Vector Along(const Ground& ground, const Direction& direction)
{
    return ground.up == UpAxis::Y ? Vector(static_cast<float>(direction[0]), static_cast<float>(direction[2]),
                                           static_cast<float>(direction[1]))
                                  : Vector(static_cast<float>(direction[0]), static_cast<float>(direction[1]),
                                           static_cast<float>(direction[2]));
}

Direction Sum(const Direction& a, double factor, const Direction& b)
{
    return {a[0] + factor * b[0], a[1] + factor * b[1], a[2] + factor * b[2]};
}

Direction Scaled(const Direction& a, double factor)
{
    return {a[0] * factor, a[1] * factor, a[2] * factor};
}

/// The rays of all pixels.
void SetRays(const Ground& ground, const Eye& eye, const Projection& projection, bool isPerspective,
             GroundEffect::Look& look)
{
    const auto& [x, y] = projection.rows;
    const Direction forward = Scaled(eye.axes[2], -1.0);
    const Direction right = Scaled(eye.axes[0], 1.0 / x[0]);
    const Direction up = Scaled(eye.axes[1], 1.0 / y[1]);
    double place[3];
    ground.ToGround(eye.position[0], eye.position[1], eye.position[2], place);
    look.start.middle = Vector(static_cast<float>(place[0]), static_cast<float>(place[1]), static_cast<float>(place[2]));
    if (isPerspective)
    {
        look.ray.middle = Along(ground, Sum(Sum(forward, x[2], right), y[2], up));
        look.ray.right = Along(ground, right);
        look.ray.up = Along(ground, up);
        return;
    }
    look.ray.middle = Along(ground, forward);
    look.start.middle.Add(look.start.middle, Along(ground, Sum(Scaled(right, -x[3]), -y[3], up)));
    look.start.right = Along(ground, right);
    look.start.up = Along(ground, up);
}

/// Depth and fog at a distance along the line of sight, as the surfaces have them.
void SetDistances(const CameraNode& camera, bool isPerspective, GroundEffect::Look& look)
{
    float nearest = 0.0f;
    float farthest = 1.0f;
    camera.GetNearFar(nearest, farthest);
    const double n = nearest;
    const double f = farthest;
    const double range = f - n;
    const auto farther = static_cast<float>(kFarther);
    look.depth = isPerspective ? glm::vec4(f / range * kFarther, -f * n / range, farther, 0.0f)
                               : glm::vec4(kFarther / range, -n / range, 0.0f, 1.0f);
    const SkySettings& sky = SkySettings::inst();
    if (sky.UseFog())
    {
        // What the shaders of surfaces take for the distance.
        const double factor = (isPerspective ? f : 1.0) / range;
        const double length = static_cast<double>(sky.GetFogEnd()) - sky.GetFogStart();
        look.fog = glm::vec2(-factor / length, (sky.GetFogEnd() + factor * n) / length);
        look.fogColor = sky.GetFogColor();
    }
}

} // namespace

void Ground::ToGround(double x, double y, double z, double (&place)[3]) const
{
    const bool isY = up == UpAxis::Y;
    place[0] = x - middle.x;
    place[1] = isY ? z - middle.z : y - middle.y;
    place[2] = (isY ? y : z) - height;
}

GroundStage::GroundStage() = default;

GroundStage::~GroundStage() = default;

void GroundStage::ReleaseGL()
{
    Drop(m_effect);
    if (m_texture != 0)
    {
        glDeleteTextures(1, &m_texture);
    }
    m_texture = 0;
    m_uploaded.reset();
}

void GroundStage::UploadShadow()
{
    if (m_uploaded == m_ground->shadow)
    {
        return;
    }
    m_uploaded = m_ground->shadow;
    if (!m_uploaded)
    {
        return;
    }
    const UploadScope scope;
    glActiveTexture(GL_TEXTURE0);
    if (m_texture == 0)
    {
        glGenTextures(1, &m_texture);
    }
    glBindTexture(GL_TEXTURE_2D, m_texture);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_LUMINANCE, ContactShadow::Size, ContactShadow::Size, 0, GL_LUMINANCE,
                 GL_UNSIGNED_BYTE, m_uploaded->GetTexels().data());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glBindTexture(GL_TEXTURE_2D, 0);
}

void GroundStage::Draw(PresentationFrame& frame)
{
    if (!m_ground || frame.overDraw)
    {
        return;
    }
    if (!m_effect)
    {
        m_effect = new GroundEffect;
    }
    UploadShadow();
    const Ground& ground = *m_ground;
    const bool isPerspective = frame.camera.GetProjection() == CameraNode::Perspective;
    const Eye eye(frame.camera);
    GroundEffect::Look look;
    const WholeView whole(frame);
    look.first = {whole.first.width, whole.first.height};
    look.size = {whole.size.width, whole.size.height};
    SetRays(ground, eye, Projection(whole.worldToClip, eye), isPerspective, look);
    SetDistances(frame.camera, isPerspective, look);
    look.color = Color(ground.color.r, ground.color.g, ground.color.b, ground.kind == GroundKind::Plain ? 1.0f : 0.0f);
    const Vector& start = look.start.middle;
    look.reach = std::max(kReach * ground.extent, kReachOfEye * std::hypot(start.x, start.y, start.z));
    if (m_uploaded && m_uploaded->GetWidth() > 0.0)
    {
        const double factor = 1.0 / m_uploaded->GetWidth();
        look.shadow = m_texture;
        look.shadowPlace = glm::vec4(factor, factor, -m_uploaded->GetLeft() * factor, -m_uploaded->GetFront() * factor);
        look.shadowStrength = kShadowStrength;
    }
    m_effect->Show(look);
    glDisable(GL_CULL_FACE);
    glEnable(GL_BLEND);
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    glDepthMask(ground.hides ? GL_TRUE : GL_FALSE);
    // Beyond the far plane it is as deep as what the depth was cleared to.
    GLint function = GL_LESS;
    glGetIntegerv(GL_DEPTH_FUNC, &function);
    glDepthFunc(GL_ALWAYS);
    {
        const NeededScope needed(frame.part, frame.target);
        frame.renderer.DrawOverScreen(*m_effect);
    }
    frame.usedUnits[0] = true;
    glDepthFunc(static_cast<GLenum>(function));
    glDepthMask(GL_TRUE);
    glDisable(GL_BLEND);
    glEnable(GL_CULL_FACE);
}

} // namespace OV::Host::Detail
