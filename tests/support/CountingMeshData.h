#pragma once

#include "orvane/renderdata/MeshES20.h"

#include <vector>

namespace OV::Test
{

/// Render data that counts how often it is asked to draw.
class CountingMeshData : public MeshES20
{
public:
    /// @param drawsAsBase whether it says that it draws as its base does.
    CountingMeshData(Mesh* mesh, SharedBufferPool* pool, bool drawsAsBase) : MeshES20(mesh, pool)
    {
        if (drawsAsBase)
        {
            DrawAsBase();
        }
    }

    void Render(EffectES20* effect, const std::vector<MeshNode*>& nodes, bool specificNode) override
    {
        ++renders;
        MeshES20::Render(effect, nodes, specificNode);
    }

    int renders = 0;
};

} // namespace OV::Test
