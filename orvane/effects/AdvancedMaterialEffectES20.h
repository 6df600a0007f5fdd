#pragma once

#include "orvane/Export.h"
#include "orvane/effects/AdvancedMaterialBaseES20.h"

namespace OV
{

/// Per-pixel shading with a reflection term, by the light's angle.
class ORVANE_API AdvancedMaterialEffectES20 : public AdvancedMaterialBaseES20
{
public:
    explicit AdvancedMaterialEffectES20(EffectCache* cache);

    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;

protected:
    void SetModelUniforms() override;
    int MeshMonochromeUniform() const override;
    int ReflectionTintUniform() const override;
};

} // namespace OV
