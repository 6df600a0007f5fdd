#pragma once

#include "orvane/Export.h"
#include "orvane/renderdata/MeshES20.h"

namespace OV
{

class Line;

/// Render data of a line: the same place in a shared buffer as a mesh has, drawn as ribbons.
class ORVANE_API LineES20 : public MeshES20
{
public:
    /// As for MeshES20. @param sceneLine not owned; not null.
    LineES20(Line* sceneLine, SharedBufferPool* pool);
    ~LineES20() override;

    /// Draws the line once for each node that is visible and ready, in list order. GL.
    ///
    /// Before the upload, or with a null effect, it returns with no state changed. After a
    /// draw polygon offset stays on; the next material sets it either way.
    void Render(EffectES20* effect, const std::vector<MeshNode*>& nodes, bool specificNode) override;

    Line* line = nullptr; ///< not owned; the same object as mesh
};

} // namespace OV
