#pragma once

#include "orvane/Export.h"
#include "orvane/effects/MaterialEffectES20.h"

namespace OV
{

/// Counts layers: every fragment adds white to what is there.
class ORVANE_API WeightedAverageSecondPassEffectES20 : public MaterialEffectES20
{
public:
    explicit WeightedAverageSecondPassEffectES20(EffectCache* cache);

    void BindMeshAttributes(MeshES20* mesh) override;
    void ReleaseMeshAttributes(MeshES20* mesh) override;
    void BindMeshUniforms(MeshNode* node) override;
    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;
    void Remove() override;
};

} // namespace OV
