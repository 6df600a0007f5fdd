#pragma once

#include "orvane/effects/MaterialEffectES20.h"

namespace OV::Host::Detail
{

/// Draws which way each face of the surfaces looks, as the eye sees it, in four channels: the plane
/// that each pixel lies in, whatever normals the shading goes by, and however thin the face is.
///
/// What opacity maps, see-through texels and clip planes leave out of the looks is left out here.
class FaceEffect final : public MaterialEffectES20
{
public:
    FaceEffect();

    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;
    void Remove() override;
    void BindMeshAttributes(MeshES20* mesh) override;
    void ReleaseMeshAttributes(MeshES20* mesh) override;
    void BindMeshUniforms(MeshNode* node) override;

private:
    bool m_boundTextures = false;
};

} // namespace OV::Host::Detail
