#define GL_GLEXT_PROTOTYPES

#include "orvane_host/present/detail/PickDrawing.h"

#include "orvane_host/present/PresentationRenderer.h"
#include "orvane_host/present/detail/Effects.h"
#include "orvane_host/present/detail/PickEffect.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/scene/CameraNode.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <glm/gtc/type_ptr.hpp>
#include <glm/mat4x4.hpp>
#include <glm/matrix.hpp>
#include <glm/vec4.hpp>

#include <algorithm>
#include <cstdint>

namespace OV::Host::Detail
{

namespace
{

void Switch(GLenum capability, bool on)
{
    (on ? glEnable : glDisable)(capability);
}

/// Puts everything that a drawing changes back at the end of a scope.
class DrawingScope
{
public:
    DrawingScope()
    {
        glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &m_drawFramebuffer);
        glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &m_readFramebuffer);
        glGetIntegerv(GL_RENDERBUFFER_BINDING, &m_renderbuffer);
        glGetIntegerv(GL_VIEWPORT, m_viewport);
        glGetIntegerv(GL_SCISSOR_BOX, m_scissor);
        glGetFloatv(GL_COLOR_CLEAR_VALUE, m_clearColor);
        glGetFloatv(GL_POINT_SIZE, &m_pointSize);
        glGetBooleanv(GL_DEPTH_WRITEMASK, &m_depthMask);
        for (Capability& capability : m_capabilities)
        {
            capability.on = glIsEnabled(capability.name) != GL_FALSE;
        }
    }

    ~DrawingScope()
    {
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(m_drawFramebuffer));
        glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(m_readFramebuffer));
        glBindRenderbuffer(GL_RENDERBUFFER, static_cast<GLuint>(m_renderbuffer));
        glViewport(m_viewport[0], m_viewport[1], m_viewport[2], m_viewport[3]);
        glScissor(m_scissor[0], m_scissor[1], m_scissor[2], m_scissor[3]);
        glClearColor(m_clearColor[0], m_clearColor[1], m_clearColor[2], m_clearColor[3]);
        glPointSize(m_pointSize);
        glDepthMask(m_depthMask);
        for (const Capability& capability : m_capabilities)
        {
            Switch(capability.name, capability.on);
        }
    }

    DrawingScope(const DrawingScope&) = delete;
    DrawingScope& operator=(const DrawingScope&) = delete;

private:
    struct Capability
    {
        GLenum name;
        bool on;
    };

    GLint m_drawFramebuffer = 0;
    GLint m_readFramebuffer = 0;
    GLint m_renderbuffer = 0;
    GLint m_viewport[4] = {};
    GLint m_scissor[4] = {};
    GLfloat m_clearColor[4] = {};
    GLfloat m_pointSize = 1.0f;
    GLboolean m_depthMask = GL_TRUE;
    Capability m_capabilities[6] = {{GL_SCISSOR_TEST, false}, {GL_DITHER, false},
                                    {GL_BLEND, false},        {GL_CULL_FACE, false},
                                    {GL_DEPTH_TEST, false},   {GL_POLYGON_OFFSET_FILL, false}};
};

/// Draws into a target for the length of a scope.
class TargetScope
{
public:
    explicit TargetScope(RenderTarget& target) : m_target(target) { m_target.ResumeCapture(); }
    ~TargetScope() { m_target.EndCapture(); }

    TargetScope(const TargetScope&) = delete;
    TargetScope& operator=(const TargetScope&) = delete;

private:
    RenderTarget& m_target;
};

/// Makes GL write tight rows to memory for the length of a scope.
class PackScope
{
public:
    PackScope()
    {
        for (Setting& setting : m_settings)
        {
            glGetIntegerv(setting.name, &setting.value);
            glPixelStorei(setting.name, setting.name == GL_PACK_ALIGNMENT ? 4 : 0);
        }
        glGetIntegerv(GL_PIXEL_PACK_BUFFER_BINDING, &m_buffer);
        glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    }

    ~PackScope()
    {
        for (const Setting& setting : m_settings)
        {
            glPixelStorei(setting.name, setting.value);
        }
        glBindBuffer(GL_PIXEL_PACK_BUFFER, static_cast<GLuint>(m_buffer));
    }

    PackScope(const PackScope&) = delete;
    PackScope& operator=(const PackScope&) = delete;

private:
    struct Setting
    {
        GLenum name;
        GLint value;
    };

    Setting m_settings[5] = {
        {GL_PACK_ALIGNMENT, 4}, {GL_PACK_ROW_LENGTH, 0}, {GL_PACK_SKIP_ROWS, 0}, {GL_PACK_SKIP_PIXELS, 0},
        {GL_PACK_SWAP_BYTES, 0},
    };
    GLint m_buffer = 0;
};

/// The part of a range of pixels that lies in 0 to `limit`.
void Clip(int& start, int& count, int limit)
{
    const std::int64_t first = std::max<std::int64_t>(start, 0);
    const std::int64_t end = std::min<std::int64_t>(std::int64_t(start) + count, limit);
    start = static_cast<int>(std::min<std::int64_t>(first, limit));
    count = static_cast<int>(std::max<std::int64_t>(end - start, 0));
}

} // namespace

PickDrawing::PickDrawing(PresentationRenderer& renderer) :
    m_renderer(renderer), m_buffer(RenderTargetProfileColorDepth)
{
}

PickDrawing::~PickDrawing()
{
    Drop(m_effect);
}

PickArea PickDrawing::Inside(const PickArea& area) const
{
    PickArea inside = area;
    Clip(inside.x, inside.width, m_width);
    Clip(inside.y, inside.height, m_height);
    return inside;
}

bool PickDrawing::Draw(Scene& scene, CameraNode& camera, const PickArea& area)
{
    m_width = m_renderer.GetWidthPx();
    m_height = m_renderer.GetHeightPx();
    m_area = Inside(area);
    if (m_area.width == 0 || m_area.height == 0)
    {
        return false;
    }
    const DrawingScope scope;
    if (!m_buffer.Resize(m_width, m_height))
    {
        return false;
    }
    if (!m_effect)
    {
        m_effect = new PickEffect;
    }
    const TargetScope target(m_buffer.GetTarget());
    glEnable(GL_SCISSOR_TEST);
    glScissor(m_area.x, m_height - m_area.y - m_area.height, m_area.width, m_area.height);
    glDisable(GL_DITHER);
    glDepthMask(GL_TRUE);
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    m_effect->Begin(PickEffect::Depths::Offset);
    m_renderer.DrawSurfaces(scene, camera, *m_effect, &m_area);
    ReadNumbers();
    if (m_effect->HasOffsets())
    {
        glClear(GL_DEPTH_BUFFER_BIT);
        m_effect->Begin(PickEffect::Depths::InPlace);
        m_renderer.DrawSurfaces(scene, camera, *m_effect, &m_area);
    }
    ReadDepths();
    if (const auto* const data = dynamic_cast<const CameraNodeES20*>(camera.GetRenderData()))
    {
        const glm::dmat4 toWorld = glm::inverse(glm::dmat4(glm::make_mat4(data->GetMVP().m)));
        std::copy_n(glm::value_ptr(toWorld), 16, m_toWorld);
    }
    return true;
}

void PickDrawing::ReadNumbers()
{
    m_colors.resize(4 * PixelsOfArea());
    const PackScope pack;
    glReadPixels(m_area.x, BottomOfArea(), m_area.width, m_area.height, GL_RGBA, GL_UNSIGNED_BYTE, m_colors.data());
}

void PickDrawing::ReadDepths()
{
    m_depths.resize(PixelsOfArea());
    const PackScope pack;
    glReadPixels(m_area.x, BottomOfArea(), m_area.width, m_area.height, GL_DEPTH_COMPONENT, GL_FLOAT, m_depths.data());
}

std::size_t PickDrawing::PixelsOfArea() const
{
    return static_cast<std::size_t>(m_area.width) * static_cast<std::size_t>(m_area.height);
}

int PickDrawing::BottomOfArea() const
{
    return m_height - m_area.y - m_area.height;
}

std::size_t PickDrawing::IndexOf(int x, int y) const
{
    const int row = m_area.height - 1 - (y - m_area.y);
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(m_area.width)
        + static_cast<std::size_t>(x - m_area.x);
}

unsigned int PickDrawing::NumberAt(int x, int y) const
{
    return PickEffect::Decode(&m_colors[4 * IndexOf(x, y)]);
}

float PickDrawing::DepthAt(int x, int y) const
{
    return m_depths[IndexOf(x, y)];
}

PickHit PickDrawing::HitAt(int x, int y) const
{
    const unsigned int number = NumberAt(x, y);
    PickHit hit;
    hit.node = m_effect->NodeOf(number);
    hit.mesh = m_effect->MeshOf(number);
    hit.depth = DepthAt(x, y);
    hit.position = ToWorld(x, y);
    hit.x = x;
    hit.y = y;
    return hit;
}

Vector PickDrawing::ToWorld(int x, int y) const
{
    const glm::dvec4 inClip(2.0 * (x + 0.5) / m_width - 1.0, 1.0 - 2.0 * (y + 0.5) / m_height,
                            2.0 * DepthAt(x, y) - 1.0, 1.0);
    const glm::dvec4 inWorld = glm::make_mat4(m_toWorld) * inClip;
    return Vector(static_cast<float>(inWorld.x / inWorld.w), static_cast<float>(inWorld.y / inWorld.w),
                  static_cast<float>(inWorld.z / inWorld.w));
}

void PickDrawing::LeaveOut(unsigned int number)
{
    m_effect->LeaveOut(number);
}

void PickDrawing::LeaveNothingOut()
{
    if (m_effect)
    {
        m_effect->LeaveNothingOut();
    }
}

} // namespace OV::Host::Detail
