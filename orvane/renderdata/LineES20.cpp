#include "orvane/renderdata/LineES20.h"

#include "orvane/effects/SolidLineEffectES20.h"
#include "orvane/base/GLCheckpoint.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/MeshNode.h"

#include <GL/glew.h>

namespace OV
{

LineES20::LineES20(Line* sceneLine, SharedBufferPool* bufferPool) :
    MeshES20(sceneLine, bufferPool), line(sceneLine)
{
}

LineES20::~LineES20() = default;

void LineES20::Render(EffectES20* effect, const std::vector<MeshNode*>& nodes, bool specificNode)
{
    if (!mesh || !effect || vertexBufferId == 0 || mesh->GetNumVertices() == 0)
    {
        return;
    }
    ApplyBuffer(vertexBufferId, indexBufferId);
    effect->clipPlanesActive = clippingPlaneEnabled;
    effect->BindMeshAttributes(this);
    EffectES20::DisableSpareAttributes();

    const LineStyle* const style = line->GetStyle();
    const bool strip = style && (style->GetFlags() & LineStyleFlagStrip) != 0;
    // The flag picks a mode that no draw ever sees, since ribbons are triangles: that is meant.
    GLenum mode = strip ? GL_LINE_STRIP : GL_LINES;
    for (MeshNode* node : nodes)
    {
        if (!IsDrawn(*node, specificNode))
        {
            continue;
        }
        effect->BindMeshUniforms(node);
        OV_GL_CHECKPOINT();
        if (mode != GL_TRIANGLES)
        {
            mode = GL_TRIANGLES;
            glEnable(GL_POLYGON_OFFSET_FILL);
            glPolygonOffset(-1.0f, -1.0f);
        }
        // Drawn even without an index: that is meant.
        glDrawElements(mode, DrawnIndexCount(SolidLineEffectES20::VerticesPerPoint), GL_UNSIGNED_SHORT, FirstIndex());
        OV_GL_CHECKPOINT();
    }
    if (mesh->UsingDrawID())
    {
        mesh->InvalidateDrawID();
    }
    effect->ReleaseMeshAttributes(this);
}

} // namespace OV
