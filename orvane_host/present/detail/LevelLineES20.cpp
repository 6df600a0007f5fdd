#include "orvane_host/present/detail/LevelLineES20.h"

#include "orvane/effects/SolidLineEffectES20.h"
#include "orvane/scene/Line.h"

#include <GL/gl.h>

namespace OV::Host::Detail
{

namespace
{

std::uint64_t g_lines = 0;

} // namespace

LevelLineES20::LevelLineES20(Line* sceneLine, SharedBufferPool* bufferPool) :
    LineES20(sceneLine, bufferPool), m_number(++g_lines)
{
}

const LineShape& LevelLineES20::GetShape()
{
    if (!m_shape)
    {
        m_shape.emplace(*mesh);
        unsigned char joints = 0;
        if (m_shape->HasSameJoints(joints))
        {
            m_joints = joints;
        }
    }
    return *m_shape;
}

std::optional<unsigned char> LevelLineES20::GetJoints()
{
    GetShape();
    return m_joints;
}

void LevelLineES20::Render(EffectES20* effect, const std::vector<MeshNode*>& nodes, bool specificNode)
{
    const int count = DrawnIndexCount(SolidLineEffectES20::VerticesPerPoint);
    if (!effect || vertexBufferId == 0 || count == 0)
    {
        return;
    }
    ApplyBuffer(vertexBufferId, indexBufferId);
    effect->clipPlanesActive = clippingPlaneEnabled;
    effect->BindMeshAttributes(this);
    EffectES20::DisableSpareAttributes();
    // By what rounding may differ, without regard to the slope.
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(0.0f, -1.0f);
    for (MeshNode* node : nodes)
    {
        if (IsDrawn(*node, specificNode))
        {
            effect->BindMeshUniforms(node);
            glDrawElements(GL_TRIANGLES, count, GL_UNSIGNED_SHORT, FirstIndex());
        }
    }
    if (mesh->UsingDrawID())
    {
        mesh->InvalidateDrawID();
    }
    effect->ReleaseMeshAttributes(this);
}

} // namespace OV::Host::Detail
