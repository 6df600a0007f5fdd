#pragma once

#include "orvane_host/present/detail/SunPatchEffect.h"
#include "orvane/math/Vector.h"

namespace OV::Host::Detail
{

/// The same in strokes of a pen, those that StrokeEffect draws for shadow, with nothing between them.
/// How dark they make it, the shadows tell, as on surfaces.
class SunStrokeEffect final : public SunPatchEffect
{
public:
    Vector across;      ///< the edges of the patch, world space
    Vector along;
    float width = 1.0f; ///< of a stroke, in pixels of what is drawn into

    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;
    void BindMeshUniforms(MeshNode* node) override;
};

} // namespace OV::Host::Detail
