#include "orvane/effects/BaseAAES20.h"

#include "orvane/renderdata/MeshES20.h"

#include <GL/glew.h>

namespace OV
{

namespace
{

constexpr IndexedName kAttributes[] = {
    {0, "a_position"},
};

} // namespace

BaseAAES20::BaseAAES20(EffectCache* cache) : MaterialEffectES20(cache) {}

void BaseAAES20::Link(const char* name, const char* vertexSource, const char* fragmentSource)
{
    LinkFixedProgram(name, vertexSource, fragmentSource, kAttributes);
    if (m_currentProgram != 0)
    {
        m_positionAttribute = glGetAttribLocation(m_currentProgram, "a_position");
    }
}

void BaseAAES20::SetDimensions(int newWidth, int newHeight)
{
    width = newWidth;
    height = newHeight;
}

void BaseAAES20::Apply(MaterialES20*, CameraNodeES20*)
{
    glUseProgram(m_currentProgram);
}

void BaseAAES20::Remove()
{
    EndUse();
}

void BaseAAES20::BindMeshAttributes(MeshES20* mesh)
{
    // Where the quad lies: it may share its buffer.
    EnableStream(m_positionAttribute, 3, mesh->GetStride(), mesh->GetPositionOffset());
}

void BaseAAES20::ReleaseMeshAttributes(MeshES20*)
{
    DisableStream(m_positionAttribute, 0);
}

void BaseAAES20::BindMeshUniforms(MeshNode*) {}

} // namespace OV
