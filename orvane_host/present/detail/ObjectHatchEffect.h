#pragma once

#include "orvane/effects/CrosshatchEffectES20.h"
#include "orvane/math/Vector.h"

namespace OV::Host::Detail
{

/// Pen strokes that lie on each face of an object as it faces in the object's own axes.
///
/// The engine's effect picks the axes to draw along by the normal in world space, but draws in
/// object space: on an object that is turned it draws along the wrong axis, where the strokes are
/// pulled out to stripes. Here normal and light are both in object space, which gives every
/// surface the same light and turns the strokes with it.
class ObjectHatchEffect : public CrosshatchEffectES20
{
public:
    ObjectHatchEffect();

    void Apply(MaterialES20* material, CameraNodeES20* camera) override;
    void BindMeshUniforms(MeshNode* node) override;

private:
    Vector m_towardsLight; ///< world space
};

} // namespace OV::Host::Detail
