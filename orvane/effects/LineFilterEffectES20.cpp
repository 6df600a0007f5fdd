#include "orvane/effects/LineFilterEffectES20.h"

#include "orvane/effects/shaders/LineFilterEffectES20.frag.h"
#include "orvane/effects/shaders/LineFilterEffectES20.vert.h"
#include "orvane/renderdata/MeshES20.h"

#include <GL/glew.h>

namespace OV
{

namespace
{

constexpr IndexedName kAttributes[] = {
    {0, "a_position"},
    {1, "a_texture"},
};

// The program lacks what the shader declares and does not read.
void SetAt(int location, float value)
{
    if (location >= 0)
    {
        glUniform1f(location, value);
    }
}

void SetAt(int location, int value)
{
    if (location >= 0)
    {
        glUniform1i(location, value);
    }
}

} // namespace

LineFilterEffectES20::LineFilterEffectES20(EffectCache* cache) : MaterialEffectES20(cache)
{
    LinkFixedProgram("LineFilter", Shaders::LineFilterEffectES20Vert, Shaders::LineFilterEffectES20Frag, kAttributes);
    if (m_currentProgram == 0)
    {
        return;
    }
    m_positionAttribute = glGetAttribLocation(m_currentProgram, "a_position");
    m_textureAttribute = glGetAttribLocation(m_currentProgram, "a_texture");
    const auto locate = [this](const char* name) { return glGetUniformLocation(m_currentProgram, name); };
    m_depthTextureLocation = locate("uDepthTexture");
    m_renderedTextureLocation = locate("uRenderedTexture");
    m_idTextureLocation = locate("uIDTexture");
    m_widthLocation = locate("uRenderedTextureWidth");
    m_heightLocation = locate("uRenderedTextureHeight");
    m_overlayOnlyLocation = locate("uOverlayOnly");
    m_edgeWeightLocation = locate("uEdgeWeight");
    m_showIdsLocation = locate("uShowIds");
    m_showDebugLocation = locate("uShowDebug");
    m_zNearLocation = locate("uZNear");
    m_zFarLocation = locate("uZFar");
    m_edgeColorLocation = locate("uEdgeColor");
}

void LineFilterEffectES20::Bind()
{
    glUseProgram(m_currentProgram);
    BindTexture(0, static_cast<GLuint>(depthTexture));
    BindTexture(1, static_cast<GLuint>(renderTexture));
    BindTexture(2, static_cast<GLuint>(idTexture));
    glActiveTexture(GL_TEXTURE0);
}

void LineFilterEffectES20::Apply(MaterialES20*, CameraNodeES20*)
{
    Bind();
}

void LineFilterEffectES20::Remove()
{
    EndUse();
}

void LineFilterEffectES20::BindMeshAttributes(MeshES20* mesh)
{
    EnableStream(m_positionAttribute, 3, mesh->GetStride(), mesh->GetPositionOffset());
    EnableStream(m_textureAttribute, 2, mesh->GetStride(), mesh->GetTextureOffset());
}

void LineFilterEffectES20::ReleaseMeshAttributes(MeshES20*)
{
    // Whatever the mesh has: both may be enabled.
    DisableStream(m_positionAttribute, 0);
    DisableStream(m_textureAttribute, 0);
}

void LineFilterEffectES20::BindMeshUniforms(MeshNode*)
{
    SetAt(m_widthLocation, static_cast<float>(textureWidth));
    SetAt(m_heightLocation, static_cast<float>(textureHeight));
    SetAt(m_depthTextureLocation, 0);
    SetAt(m_renderedTextureLocation, 1);
    SetAt(m_idTextureLocation, 2);
    SetAt(m_overlayOnlyLocation, overlayOnly ? 1 : 0);
    SetAt(m_edgeWeightLocation, edgeWeight);
    SetAt(m_showIdsLocation, showIds ? 1 : 0);
    SetAt(m_showDebugLocation, showDebug ? 1 : 0);
    SetAt(m_zNearLocation, zNear);
    SetAt(m_zFarLocation, zFar);
    glUniform4f(m_edgeColorLocation, edgeColor.r, edgeColor.g, edgeColor.b, edgeColor.a);
}

} // namespace OV
