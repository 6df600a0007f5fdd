#pragma once

#include "orvane/Export.h"
#include "orvane/effects/MaterialEffectES20.h"

namespace OV
{

/// Shows the colours of the vertices, lit along the line of sight, with clip planes and their
/// outline.
class ORVANE_API VertexColorEffectES20 : public MaterialEffectES20
{
public:
    explicit VertexColorEffectES20(EffectCache* cache);

    void BindMeshAttributes(MeshES20* mesh) override;
    void ReleaseMeshAttributes(MeshES20* mesh) override;
    void BindMeshUniforms(MeshNode* node) override;
    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;
    void Remove() override;
};

} // namespace OV
