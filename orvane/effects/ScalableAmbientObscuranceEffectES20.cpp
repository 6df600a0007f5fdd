#include "orvane/effects/ScalableAmbientObscuranceEffectES20.h"

#include "orvane/effects/shaders/SSAOEffectES20.vert.h"
#include "orvane/effects/shaders/ScalableAmbientObscuranceEffectES20.frag.h"
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

} // namespace

ScalableAmbientObscuranceEffectES20::ScalableAmbientObscuranceEffectES20(EffectCache* cache) :
    MaterialEffectES20(cache)
{
    LinkFixedProgram("ScalableAmbientObscurance", Shaders::SSAOEffectES20Vert,
                     Shaders::ScalableAmbientObscuranceEffectES20Frag, kAttributes);
    if (m_currentProgram == 0)
    {
        return;
    }
    m_positionAttribute = glGetAttribLocation(m_currentProgram, "a_position");
    m_textureAttribute = glGetAttribLocation(m_currentProgram, "a_texture");
    m_depthTextureLocation = glGetUniformLocation(m_currentProgram, "uDepthTexture");
    m_renderedTextureLocation = glGetUniformLocation(m_currentProgram, "uRenderedTexture");
    m_widthLocation = glGetUniformLocation(m_currentProgram, "uRenderedTextureWidth");
    m_heightLocation = glGetUniformLocation(m_currentProgram, "uRenderedTextureHeight");
}

void ScalableAmbientObscuranceEffectES20::Bind()
{
    glUseProgram(m_currentProgram);
    BindTexture(0, static_cast<GLuint>(depthTexture));
    BindTexture(1, static_cast<GLuint>(renderTexture));
    glActiveTexture(GL_TEXTURE0);
}

void ScalableAmbientObscuranceEffectES20::Apply(MaterialES20*, CameraNodeES20*)
{
    Bind();
}

void ScalableAmbientObscuranceEffectES20::Remove()
{
    EndUse();
}

void ScalableAmbientObscuranceEffectES20::BindMeshAttributes(MeshES20* mesh)
{
    EnableStream(m_positionAttribute, 3, mesh->GetStride(), mesh->GetPositionOffset());
    EnableStream(m_textureAttribute, 2, mesh->GetStride(), mesh->GetTextureOffset());
}

void ScalableAmbientObscuranceEffectES20::ReleaseMeshAttributes(MeshES20*)
{
    // Whatever the mesh has: both may be enabled.
    DisableStream(m_positionAttribute, 0);
    DisableStream(m_textureAttribute, 0);
}

void ScalableAmbientObscuranceEffectES20::BindMeshUniforms(MeshNode*)
{
    glUniform1f(m_widthLocation, static_cast<float>(width));
    glUniform1f(m_heightLocation, static_cast<float>(height));
    glUniform1i(m_depthTextureLocation, 0);
    glUniform1i(m_renderedTextureLocation, 1);
}

} // namespace OV
