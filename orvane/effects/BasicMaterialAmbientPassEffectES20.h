#pragma once

#include "orvane/Export.h"
#include "orvane/effects/MaterialEffectES20.h"
#include "orvane/math/Color.h"

namespace OV
{

/// The part of the standard look that no direction of light enters: ambient colour, texture, fog
/// and stipple. Unlit materials show in full.
class ORVANE_API BasicMaterialAmbientPassEffectES20 : public MaterialEffectES20
{
public:
    explicit BasicMaterialAmbientPassEffectES20(EffectCache* cache);

    void BindMeshAttributes(MeshES20* mesh) override;
    void ReleaseMeshAttributes(MeshES20* mesh) override;
    void BindMeshUniforms(MeshNode* node) override;
    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;
    void Remove() override;

protected:
    /// Apply turned blending on.
    bool blendEnabled = false;

    /// The material takes light in the main pass.
    bool lit = false;

    /// What Apply gave the shader, to be given again after a mesh without normals.
    Color ambientColor;

private:
    static Color AmbientColor(Material* material);

    /// A mesh without normals can't take the light of the main pass.
    bool ShowsWholeColor(MeshES20* mesh) const;
};

} // namespace OV
