#include "orvane/effects/FXAAEffectES20.h"

#include "orvane/effects/shaders/FXAAEffectES20.frag.h"
#include "orvane/effects/shaders/FXAAEffectES20.vert.h"

#include <GL/glew.h>

namespace OV
{

FXAAEffectES20::FXAAEffectES20(EffectCache* cache) : BaseAAES20(cache)
{
    Link("FXAA", Shaders::FXAAEffectES20Vert, Shaders::FXAAEffectES20Frag);
    if (m_currentProgram != 0)
    {
        m_widthLocation = glGetUniformLocation(m_currentProgram, "u_width");
        m_heightLocation = glGetUniformLocation(m_currentProgram, "u_height");
    }
}

void FXAAEffectES20::BindMeshUniforms(MeshNode*)
{
    glUniform1f(m_widthLocation, static_cast<float>(width));
    glUniform1f(m_heightLocation, static_cast<float>(height));
}

} // namespace OV
