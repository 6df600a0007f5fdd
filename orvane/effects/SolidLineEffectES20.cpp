#include "orvane/effects/SolidLineEffectES20.h"

#include "orvane/effects/SkySettings.h"
#include "orvane/effects/shaders/SolidLineEffectES20.frag.h"
#include "orvane/effects/shaders/SolidLineEffectES20.vert.h"
#include "orvane/math/Matrix.h"
#include "orvane/math/Quaternion.h"
#include "orvane/math/Vector.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/MeshNode.h"

#include <GL/glew.h>

#include <algorithm>

namespace OV
{

namespace
{

enum Option : std::uint64_t
{
    OptionMobile = 1,
    OptionAntialias = 2,
    OptionOverlay = 4,
    OptionDashed = 8,
    OptionFog = 16,
};

constexpr OptionRow kOptions[] = {
    {0, "DEFAULT"},
    {OptionMobile, "MOBILE"},
    {OptionAntialias, "ANTIALIAS"},
    {OptionOverlay, "OVERLAY"},
    {OptionDashed, "DASHED"},
    {OptionFog, "FOG"},
};

constexpr std::uint64_t OptionIf(bool condition, Option option)
{
    return condition ? option : std::uint64_t(0);
}

enum Uniform : int
{
    UniformColor,
    UniformDashedLineFrequency,
    UniformDepthTexture,
    UniformFogColor,
    UniformFogRange,
    UniformGroupTexture,
    UniformIdTexture,
    UniformInvViewDims,
    UniformInvWidth,
    UniformIsPerspCamera,
    UniformMvpMatrix,
    UniformOffsetToCameraPos,
    UniformOrthoOffset,
    UniformViewDims,
    UniformVpMatrix,
    UniformWidth,
    UniformZFar,
    UniformZNear,
    UniformWorldTransform,
    UniformNumClipPlanes,
    UniformClipPlaneNormals,
    UniformClipPlanePositions,
};

constexpr IndexedName kUniforms[] = {
    {UniformColor, "u_color"},
    {UniformDashedLineFrequency, "u_dashedLineFrequency"},
    {UniformDepthTexture, "u_depthTexture"},
    {UniformFogColor, "u_fogColor"},
    {UniformFogRange, "u_fogRange"},
    {UniformGroupTexture, "u_groupTexture"},
    {UniformIdTexture, "u_idTexture"},
    {UniformInvViewDims, "u_invViewDims"},
    {UniformInvWidth, "u_invWidth"},
    {UniformIsPerspCamera, "u_isPerspCamera"},
    {UniformMvpMatrix, "u_mvpMatrix"},
    {UniformOffsetToCameraPos, "u_offsetToCameraPos"},
    {UniformOrthoOffset, "u_orthoOffset"},
    {UniformViewDims, "u_viewDims"},
    {UniformVpMatrix, "u_vpMatrix"},
    {UniformWidth, "u_width"},
    {UniformZFar, "u_zfar"},
    {UniformZNear, "u_znear"},
    {UniformWorldTransform, "u_worldTransform"},
    {UniformNumClipPlanes, "u_numClipPlanes"},
    {UniformClipPlaneNormals, "u_clipPlaneNormals"},
    {UniformClipPlanePositions, "u_clipPlanePositions"},
};
static_assert(IsDense(kUniforms));

enum Attribute : unsigned
{
    AttributeStartPosition,
    AttributeEndPosition,
    AttributeChoiceDirNone,
};

constexpr IndexedName kAttributes[] = {
    {AttributeStartPosition, "a_startPosition"},
    {AttributeEndPosition, "a_endPosition"},
    {AttributeChoiceDirNone, "a_choiceDirNone"},
};

constexpr ProgramTemplate kTemplate = {
    "SolidLineEffect", Shaders::SolidLineEffectES20Vert, Shaders::SolidLineEffectES20Frag, kOptions, kUniforms,
    kAttributes,
};

/// A style's offset of 1 is this part of the depth range.
constexpr float kOffsetsPerRange = 500.0f;

void BindTexture(unsigned int unit, unsigned int texture)
{
    glActiveTexture(GL_TEXTURE0 + unit);
    glBindTexture(GL_TEXTURE_2D, texture);
}

} // namespace

SolidLineEffectES20::SolidLineEffectES20(EffectCache* cache) : EffectES20(cache)
{
    m_discardsAtPlanes = true;
}

unsigned int SolidLineEffectES20::CreateProgramForOptions(std::uint64_t options, std::string& name)
{
    return CreateFromTemplate(kTemplate, options, name);
}

void SolidLineEffectES20::Apply(LineStyle* style, CameraNodeES20* camera, bool addSecondColor)
{
    const std::uint64_t options = OptionsOf(*style);
    UseOptions(options);
    m_camera = camera;

    float nearDistance = 1.0f;
    float farDistance = 1000.0f;
    if (const CameraNode* node = camera->GetCameraNode())
    {
        node->GetNearFar(nearDistance, farDistance);
    }
    // Asks for an attribute by the name of a uniform and so never finds it: the two stay unset.
    // That is meant.
    if ((options & OptionOverlay) != 0 && HasAttribute(m_currentProgram, "u_znear"))
    {
        Set(UniformZNear, nearDistance);
        Set(UniformZFar, farDistance);
    }
    if ((options & OptionFog) != 0)
    {
        SetFog(UniformFogRange, UniformFogColor);
    }
    SetColorAndWidth(*style, addSecondColor);
    SetOffset(*style, nearDistance, farDistance);
    SetDepthState(*style);
    SetViewDimensions(options);
    BindOverlayTextures(options, *style);
    SetClipPlanes(UniformClipPlaneNormals, UniformClipPlanePositions, UniformNumClipPlanes, clipPlanesActive);
}

std::uint64_t SolidLineEffectES20::OptionsOf(const LineStyle& style) const
{
    const bool overlay = idTexture != 0 && style.overlay;
    return OptionIf(depthTexture == 0 || !overlay, OptionMobile) | OptionIf(overlay, OptionOverlay) |
           OptionIf(style.antialias, OptionAntialias) | OptionIf(style.IsDashed(), OptionDashed) |
           OptionIf(style.fog && SkySettings::inst().UseFog(), OptionFog);
}

void SolidLineEffectES20::SetColorAndWidth(const LineStyle& style, bool addSecondColor)
{
    Color color = style.color;
    if (addSecondColor)
    {
        color.AddRGB(style.secondColor);
    }
    Set(UniformColor, color);
    if (style.IsDashed())
    {
        Set(UniformDashedLineFrequency, 1.0f / style.GetDashFrequency());
    }
    // The ratio counts twice: that is meant.
    const float ratio = std::max(pixelRatio, 1.0f);
    const float width = style.width * ratio * ratio;
    Set(UniformWidth, width);
    if (style.antialias)
    {
        glEnable(GL_BLEND);
        Set(UniformInvWidth, 1.0f / width);
    }
    // For every style: all lines blend, and not by what was drawn before them.
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
}

void SolidLineEffectES20::SetOffset(const LineStyle& style, float nearDistance, float farDistance)
{
    CameraNode* const node = m_camera->GetCameraNode();
    offsetActive = style.offset != 0.0f && node != nullptr;
    if (!offsetActive)
    {
        Set(UniformOffsetToCameraPos, 0.0f);
        return;
    }
    const float offset = style.offset * ((farDistance - nearDistance) / kOffsetsPerRange);
    Vector view;
    view.Multiply(node->GetGlobal().GetRotation(), Vector(0.0f, 0.0f, -1.0f));
    Set(UniformOffsetToCameraPos, offset);
    Set(UniformOrthoOffset, -view.x * offset, -view.y * offset, -view.z * offset, 0.0f);
    Set(UniformIsPerspCamera, node->GetProjection() == CameraNode::Perspective ? 1 : 0);
    Set(UniformVpMatrix, CameraMatrix());
}

void SolidLineEffectES20::SetDepthState(const LineStyle& style)
{
    if (!m_depthBefore.saved)
    {
        GLboolean write = GL_TRUE;
        glGetBooleanv(GL_DEPTH_WRITEMASK, &write);
        glGetIntegerv(GL_DEPTH_FUNC, &m_depthBefore.function);
        m_depthBefore.test = glIsEnabled(GL_DEPTH_TEST) == GL_TRUE;
        m_depthBefore.write = write == GL_TRUE;
        m_depthBefore.saved = true;
    }
    glDepthMask(style.noDepthWrite ? GL_FALSE : GL_TRUE);
    // With identifiers and a depth picture the shader tests depth itself.
    const bool overlay = idTexture != 0 && style.overlay;
    if (style.noDepthTest || (overlay && depthTexture != 0))
    {
        glDisable(GL_DEPTH_TEST);
    }
    else
    {
        glEnable(GL_DEPTH_TEST);
    }
    glDepthFunc((style.GetFlags() & LineStyleFlagDepthLessEqual) != 0 ? GL_GREATER : GL_LEQUAL);
}

void SolidLineEffectES20::RestoreDepthState()
{
    EndUse();
    if (!m_depthBefore.saved)
    {
        return;
    }
    m_depthBefore.saved = false;
    glDepthMask(m_depthBefore.write ? GL_TRUE : GL_FALSE);
    glDepthFunc(static_cast<GLenum>(m_depthBefore.function));
    if (m_depthBefore.test)
    {
        glEnable(GL_DEPTH_TEST);
    }
    else
    {
        glDisable(GL_DEPTH_TEST);
    }
}

void SolidLineEffectES20::SetViewDimensions(std::uint64_t options)
{
    GLint viewport[4] = {0, 0, 0, 0};
    glGetIntegerv(GL_VIEWPORT, viewport);
    // The origin is taken off the size: that is meant, and matters only away from 0.
    const float width = static_cast<float>(viewport[2] - viewport[0]);
    const float height = static_cast<float>(viewport[3] - viewport[1]);
    // Dashes are measured in pixels too.
    if ((options & (OptionAntialias | OptionDashed)) != 0)
    {
        Set(UniformViewDims, width, height);
    }
    Set(UniformInvViewDims, 1.0f / width, 1.0f / height);
}

void SolidLineEffectES20::BindOverlayTextures(std::uint64_t options, const LineStyle& style)
{
    const bool hasOverlay = (options & OptionOverlay) != 0;
    const bool hasDepth = depthTexture != 0 && style.overlay;
    if (!hasOverlay && !hasDepth)
    {
        return;
    }
    Set(UniformIdTexture, 0);
    BindTexture(0, idTexture);
    if (hasDepth)
    {
        Set(UniformDepthTexture, 1);
        BindTexture(1, depthTexture);
    }
    Set(UniformGroupTexture, 2);
    BindTexture(2, groupTexture);
    glActiveTexture(GL_TEXTURE0);
}

const Matrix& SolidLineEffectES20::CameraMatrix() const
{
    return m_camera->isHudCamera() ? m_camera->GetHudMVP() : m_camera->GetMVP();
}

void SolidLineEffectES20::BindMeshAttributes(MeshES20* mesh)
{
    const int stride = mesh->GetStride();
    const int start = mesh->GetPositionOffset();
    EnableAttribute(AttributeStartPosition, 3, stride, start);
    EnableAttribute(AttributeEndPosition, 3, stride, start + VerticesPerPoint * stride);
    if (mesh->GetNormalOffset() >= 0)
    {
        EnableAttribute(AttributeChoiceDirNone, 3, stride, mesh->GetNormalOffset());
    }
    // For every line, antialiased or not, and turned off by nobody here: that is meant.
    glEnable(GL_BLEND);
}

void SolidLineEffectES20::ReleaseMeshAttributes(MeshES20*)
{
    DisableAttribute(AttributeStartPosition);
    DisableAttribute(AttributeEndPosition);
    DisableAttribute(AttributeChoiceDirNone);
    glDepthMask(GL_TRUE);
}

void SolidLineEffectES20::BindMeshUniforms(MeshNode* node)
{
    const Matrix& world = *node->GetGlobalMatrix();
    if (offsetActive)
    {
        Set(UniformMvpMatrix, world);
    }
    else
    {
        Matrix matrix;
        matrix.Multiply(CameraMatrix(), world);
        Set(UniformMvpMatrix, matrix);
    }
    Set(UniformWorldTransform, world);
    SetClipPlanes(UniformClipPlaneNormals, UniformClipPlanePositions, UniformNumClipPlanes, clipPlanesActive);
}

} // namespace OV
