#include "orvane/effects/SkyEffectES20.h"

#include "orvane/effects/SkySettings.h"
#include "orvane/effects/shaders/SkyEffectES20.frag.h"
#include "orvane/effects/shaders/SkyEffectES20.vert.h"
#include "orvane/math/Color.h"
#include "orvane/math/Matrix.h"
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

void SetColor(int location, const Color& color)
{
    if (location >= 0)
    {
        glUniform4f(location, color.r, color.g, color.b, color.a);
    }
}

void SetNumber(int location, float number)
{
    if (location >= 0)
    {
        glUniform1f(location, number);
    }
}

} // namespace

SkyEffectES20::SkyEffectES20(EffectCache* cache) : MaterialEffectES20(cache)
{
    LinkFixedProgram("SkyEffect", Shaders::SkyEffectES20Vert, Shaders::SkyEffectES20Frag,
                     kAttributes);
    if (m_currentProgram == 0)
    {
        return;
    }
    m_horizonColorLocation = glGetUniformLocation(m_currentProgram, "u_horizonColor");
    m_skyColorLocation = glGetUniformLocation(m_currentProgram, "u_skyColor");
    m_upperSkyColorLocation = glGetUniformLocation(m_currentProgram, "u_upperSkyColor");
    m_horizonStopLocation = glGetUniformLocation(m_currentProgram, "u_horizonStop");
    m_skyStopLocation = glGetUniformLocation(m_currentProgram, "u_skyStop");
    m_mvpMatrixLocation = glGetUniformLocation(m_currentProgram, "u_mvpMatrix");
    m_positionAttribute = glGetAttribLocation(m_currentProgram, "a_position");
    m_textureAttribute = glGetAttribLocation(m_currentProgram, "a_texture");
}

void SkyEffectES20::Apply(MaterialES20*, CameraNodeES20* camera)
{
    m_camera = camera;
    glUseProgram(m_currentProgram);
    const SkySettings& sky = SkySettings::inst();
    Color horizon = sky.GetHorizonColor();
    Color middle = sky.GetSkyColor();
    Color upper = sky.GetUpperSkyColor();
    if (sky.IsMonotone())
    {
        horizon = middle = upper = Color(1.0f, 1.0f, 1.0f, 1.0f);
    }
    else if (!sky.UseSkyColor())
    {
        middle = upper = horizon;
    }
    SetColor(m_horizonColorLocation, horizon);
    SetColor(m_skyColorLocation, middle);
    SetColor(m_upperSkyColorLocation, upper);
    SetNumber(m_horizonStopLocation, sky.HorizonStop());
    SetNumber(m_skyStopLocation, sky.SkyStop());
    glDisable(GL_DEPTH_TEST);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, 0);
}

void SkyEffectES20::Remove()
{
    EndUse();
    glEnable(GL_DEPTH_TEST);
    glBindTexture(GL_TEXTURE_2D, 0);
}

void SkyEffectES20::BindMeshAttributes(MeshES20* mesh)
{
    EnableStream(m_positionAttribute, 3, mesh->GetStride(), mesh->GetPositionOffset());
    EnableStream(m_textureAttribute, 2, mesh->GetStride(), mesh->GetTextureOffset());
}

void SkyEffectES20::ReleaseMeshAttributes(MeshES20* mesh)
{
    DisableStream(m_textureAttribute, mesh->GetTextureOffset());
    DisableStream(m_positionAttribute, mesh->GetPositionOffset());
}

void SkyEffectES20::BindMeshUniforms(MeshNode* node)
{
    if (m_mvpMatrixLocation >= 0)
    {
        glUniformMatrix4fv(m_mvpMatrixLocation, 1, GL_FALSE, ModelViewProjection(node).m);
    }
}

} // namespace OV
