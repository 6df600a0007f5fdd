#include "orvane/effects/SimMaterialEffectES20.h"

#include "orvane/effects/detail/ViewSpaceLight.h"
#include "orvane/effects/shaders/SimMaterialEffectES20.frag.h"
#include "orvane/effects/shaders/SimMaterialEffectES20.vert.h"
#include "orvane/math/Color.h"
#include "orvane/math/Matrix.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/NodeType.h"
#include "orvane/scene/SimMaterial.h"

#include <GL/glew.h>

#include <glm/gtc/type_ptr.hpp>

namespace OV
{

namespace
{

constexpr IndexedName kAttributes[] = {
    {0, "a_position"},
    {1, "a_normal"},
    {2, "a_scalardata"},
};

} // namespace

SimMaterialEffectES20::SimMaterialEffectES20(EffectCache* cache) : MaterialEffectES20(cache)
{
    LinkFixedProgram("SimMaterialEffectES20", Shaders::SimMaterialEffectES20Vert,
                     Shaders::SimMaterialEffectES20Frag, kAttributes);
    if (m_currentProgram == 0)
    {
        return;
    }
    m_positionAttribute = glGetAttribLocation(m_currentProgram, "a_position");
    m_normalAttribute = glGetAttribLocation(m_currentProgram, "a_normal");
    m_scalarAttribute = glGetAttribLocation(m_currentProgram, "a_scalardata");
    m_mvpMatrixLocation = glGetUniformLocation(m_currentProgram, "u_mvpMatrix");
    m_normalMatrixLocation = glGetUniformLocation(m_currentProgram, "u_normalMatrix");
    m_lightDirLocation = glGetUniformLocation(m_currentProgram, "u_lightDir");
    m_colorLocation = glGetUniformLocation(m_currentProgram, "u_color");
    m_enableTextureLocation = glGetUniformLocation(m_currentProgram, "u_enableTexture");
    m_enableLightLocation = glGetUniformLocation(m_currentProgram, "u_enableLight");
    m_rangeLocation = glGetUniformLocation(m_currentProgram, "u_scalarcliprange");
}

void SimMaterialEffectES20::Apply(MaterialES20* data, CameraNodeES20* camera)
{
    Material* const material = data->GetMaterial();
    const unsigned int texture = ColorTexture(data);
    glUseProgram(m_currentProgram);
    if (texture != 0 || material->GetOpacity() < 1.0f)
    {
        blending = true;
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    }
    glUniform1i(m_enableTextureLocation, texture != 0 ? 1 : 0);
    if (texture != 0)
    {
        BindTexture(0, texture);
    }
    glUniform1i(m_enableLightLocation, (material->GetFlags() & MaterialFlagUnlit) != 0 ? 0 : 1);
    const Color& color = material->GetDiffuse();
    glUniform4f(m_colorLocation, color.r, color.g, color.b, color.a);
    glUniform4fv(m_lightDirLocation, 1, glm::value_ptr(Detail::kViewSpaceLight));
    const auto* const ranged =
        material->HasType(NodeTypeSimMaterial) ? dynamic_cast<const SimMaterial*>(material) : nullptr;
    if (ranged)
    {
        glUniform2f(m_rangeLocation, ranged->rangeLower, ranged->rangeUpper);
    }
    m_camera = camera;
}

void SimMaterialEffectES20::Remove()
{
    EndUse();
    if (blending)
    {
        glDisable(GL_BLEND);
        blending = false;
    }
}

void SimMaterialEffectES20::BindMeshAttributes(MeshES20* mesh)
{
    const int stride = mesh->GetStride();
    EnableStream(m_positionAttribute, 3, stride, mesh->GetPositionOffset());
    EnableStream(m_normalAttribute, 3, stride, mesh->GetNormalOffset());
    EnableStream(m_scalarAttribute, 1, stride, mesh->GetScalarOffset());
}

void SimMaterialEffectES20::ReleaseMeshAttributes(MeshES20* mesh)
{
    DisableStream(m_normalAttribute, mesh->GetNormalOffset());
    DisableStream(m_scalarAttribute, mesh->GetScalarOffset());
    DisableStream(m_positionAttribute, mesh->GetPositionOffset());
}

void SimMaterialEffectES20::BindMeshUniforms(MeshNode* node)
{
    glUniformMatrix4fv(m_mvpMatrixLocation, 1, GL_FALSE, ModelViewProjection(node).m);
    glUniformMatrix3fv(m_normalMatrixLocation, 1, GL_FALSE, Detail::ViewSpaceNormalMatrix(*m_camera, *node).m);
}

} // namespace OV
