#pragma once

#include "orvane_host/present/detail/HoleEffect.h"

namespace OV::Host::Detail
{

/// Draws which way each face of the surfaces looks, as the eye sees it, in four channels: the plane
/// that each pixel lies in, whatever normals the shading goes by, and however thin the face is.
///
/// What opacity maps, see-through texels and clip planes leave out of the looks is left out here.
class FaceEffect final : public HoleEffect
{
public:
    FaceEffect();

    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;
    void BindMeshUniforms(MeshNode* node) override;

private:
    double m_perUnit = 1.0; ///< what places are counted in, for one of the scene
};

} // namespace OV::Host::Detail
