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
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(depthTexture));
    glActiveTexture(GL_TEXTURE1);
    glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(renderTexture));
    glActiveTexture(GL_TEXTURE0);
}

void ScalableAmbientObscuranceEffectES20::Apply(MaterialES20*, CameraNodeES20*)
{
    Bind();
}

void ScalableAmbientObscuranceEffectES20::Remove() {}

void ScalableAmbientObscuranceEffectES20::BindMeshAttributes(MeshES20* mesh)
{
    if (m_positionAttribute >= 0)
    {
        EnableAttribute(static_cast<unsigned int>(m_positionAttribute), 3, mesh->GetStride(),
                        mesh->GetPositionOffset());
    }
    if (m_textureAttribute >= 0 && mesh->GetTextureOffset() >= 0)
    {
        EnableAttribute(static_cast<unsigned int>(m_textureAttribute), 2, mesh->GetStride(),
                        mesh->GetTextureOffset());
    }
}

void ScalableAmbientObscuranceEffectES20::ReleaseMeshAttributes(MeshES20*)
{
    for (const int attribute : {m_positionAttribute, m_textureAttribute})
    {
        if (attribute >= 0)
        {
            DisableAttribute(static_cast<unsigned int>(attribute));
        }
    }
}

void ScalableAmbientObscuranceEffectES20::BindMeshUniforms(MeshNode*)
{
    glUniform1f(m_widthLocation, static_cast<float>(width));
    glUniform1f(m_heightLocation, static_cast<float>(height));
    glUniform1i(m_depthTextureLocation, 0);
    glUniform1i(m_renderedTextureLocation, 1);
}

} // namespace OV
