#pragma once

#include "orvane/Export.h"
#include "orvane/effects/BaseAAES20.h"

namespace OV
{

/// Draws the captured picture and smooths along the edges that it finds in its luminance.
/// Without SetDimensions it divides by zero.
class ORVANE_API FXAAEffectES20 : public BaseAAES20
{
public:
    /// Links its program. GL.
    explicit FXAAEffectES20(EffectCache* cache);

    void BindMeshUniforms(MeshNode* node) override;

private:
    int m_widthLocation = -1;
    int m_heightLocation = -1;
};

} // namespace OV
