#pragma once

#include "orvane/effects/MaterialEffectES20.h"
#include "orvane/math/Matrix.h"

namespace OV::Host::Detail
{

constexpr unsigned AttributePatchPlace = 0;

/// Of what lays the screen's quad on a patch.
constexpr IndexedName kPatchAttributes[] = {
    {AttributePatchPlace, "a_texture"},
};

/// Darkens a patch of a plane where shadows fall on it. Drawn over the screen's quad, which it lays
/// on the patch.
class SunPatchEffect : public MaterialEffectES20
{
public:
    SunPatchEffect();

    Matrix patchToClip{}; ///< shares of the edges of the patch to clip space
    float darkness = 0.0f;

    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;
    void Remove() override;
    void BindMeshAttributes(MeshES20* mesh) override;
    void ReleaseMeshAttributes(MeshES20* mesh) override;
    void BindMeshUniforms(MeshNode* node) override;
};

} // namespace OV::Host::Detail
