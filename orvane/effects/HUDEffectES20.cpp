#include "orvane/effects/HUDEffectES20.h"

#include "orvane/effects/shaders/HUDEffectES20.frag.h"
#include "orvane/effects/shaders/HUDEffectES20.vert.h"
#include "orvane/math/Matrix.h"
#include "orvane/overlay/Material2D.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/NodeType.h"

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

HUDEffectES20::HUDEffectES20(EffectCache* cache) : MaterialEffectES20(cache)
{
    LinkFixedProgram("HudEffectES20", Shaders::HUDEffectES20Vert, Shaders::HUDEffectES20Frag, kAttributes);
    if (m_currentProgram == 0)
    {
        return;
    }
    m_positionAttribute = glGetAttribLocation(m_currentProgram, "a_position");
    m_textureAttribute = glGetAttribLocation(m_currentProgram, "a_texture");
    m_mvpMatrixLocation = glGetUniformLocation(m_currentProgram, "u_mvpMatrix");
    m_colorLocation = glGetUniformLocation(m_currentProgram, "u_color");
    m_enableTextureLocation = glGetUniformLocation(m_currentProgram, "u_enableTexture");
}

void HUDEffectES20::Apply(MaterialES20* data, CameraNodeES20* camera)
{
    Material* const material = data->GetMaterial();
    const auto* const flat =
        material->HasType(NodeTypeMaterial2D) ? dynamic_cast<const Material2D*>(material) : nullptr;
    const Color& color = flat ? flat->color : material->GetDiffuse();
    const unsigned int texture = ColorTexture(data);

    glUseProgram(m_currentProgram);
    glDepthMask(material->noDepthWrite ? GL_FALSE : GL_TRUE);
    if (texture != 0 || (flat && color.a < 1.0f) || material->GetOpacity() < 1.0f)
    {
        blending = true;
        glEnable(GL_BLEND);
        if (!flat || flat->blend != 0)
        {
            glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        }
        else
        {
            glBlendFunc(GL_ONE, GL_ZERO);
        }
    }
    glUniform1i(m_enableTextureLocation, texture != 0 ? 1 : 0);
    BindTexture(0, texture);
    glUniform4f(m_colorLocation, color.r, color.g, color.b, color.a);
    m_camera = camera;
}

void HUDEffectES20::Remove()
{
    EndUse();
    if (blending)
    {
        glDisable(GL_BLEND);
        blending = false;
    }
    glDepthMask(GL_TRUE);
}

void HUDEffectES20::BindMeshAttributes(MeshES20* mesh)
{
    EnableStream(m_positionAttribute, 3, mesh->GetStride(), mesh->GetPositionOffset());
    EnableStream(m_textureAttribute, 2, mesh->GetStride(), mesh->GetTextureOffset());
}

void HUDEffectES20::ReleaseMeshAttributes(MeshES20* mesh)
{
    DisableStream(m_textureAttribute, mesh->GetTextureOffset());
    DisableStream(m_positionAttribute, mesh->GetPositionOffset());
}

void HUDEffectES20::BindMeshUniforms(MeshNode* node)
{
    Matrix matrix;
    matrix.Multiply(m_camera->isHudCamera() ? m_camera->GetHudMVP() : m_camera->GetMVP(), *node->GetGlobalMatrix());
    glUniformMatrix4fv(m_mvpMatrixLocation, 1, GL_FALSE, matrix.m);
}

} // namespace OV
