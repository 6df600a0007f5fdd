#include "orvane_host/present/detail/LevelLineES20.h"

#include "orvane/effects/SolidLineEffectES20.h"
#include "orvane/scene/Line.h"

#include <GL/gl.h>

namespace OV::Host::Detail
{

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
