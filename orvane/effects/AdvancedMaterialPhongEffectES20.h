#pragma once

#include "orvane/Export.h"
#include "orvane/effects/AdvancedMaterialBaseES20.h"

namespace OV
{

/// Per-pixel shading with soft shadows and a strength of the sun that can be set, from flat
/// ambient shading to full sun.
class ORVANE_API AdvancedMaterialPhongEffectES20 : public AdvancedMaterialBaseES20
{
public:
    explicit AdvancedMaterialPhongEffectES20(EffectCache* cache);

    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;

protected:
    void SetModelUniforms() override;
    int MeshMonochromeUniform() const override;
    int ReflectionTintUniform() const override;
};

} // namespace OV
