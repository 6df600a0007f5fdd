#include "orvane_host/present/detail/ObjectHatchEffect.h"

#include "orvane/math/Matrix3x3.h"
#include "orvane/math/Transform.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/MeshNode.h"

#include <algorithm>

namespace OV::Host::Detail
{

namespace
{

constexpr float kIdentity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};

} // namespace

ObjectHatchEffect::ObjectHatchEffect() : CrosshatchEffectES20(nullptr)
{
}

void ObjectHatchEffect::Apply(MaterialES20* material, CameraNodeES20* camera)
{
    CrosshatchEffectES20::Apply(material, camera);
    if (lit)
    {
        m_towardsLight.Scale(-1.0f, FirstLight(material->GetMaterial())->GetGlobalDirection());
    }
}

void ObjectHatchEffect::BindMeshUniforms(MeshNode* node)
{
    CrosshatchEffectES20::BindMeshUniforms(node);
    if (!lit || !hasNormals)
    {
        return;
    }
    // The product with a normal is what it would be in world space.
    Matrix3x3 toWorld;
    node->GetGlobal().ExtractAffineInverseTranspose3x3(toWorld.m);
    const float* const m = toWorld.m;
    const Vector& light = m_towardsLight;
    const Vector inObject(m[0] * light.x + m[1] * light.y + m[2] * light.z,
                          m[3] * light.x + m[4] * light.y + m[5] * light.z,
                          m[6] * light.x + m[7] * light.y + m[8] * light.z);
    Matrix3x3 identity;
    std::copy(kIdentity, kIdentity + 9, identity.m);
    Set(UniformNormalMatrix, identity);
    Set(UniformLightDir, inObject);
}

} // namespace OV::Host::Detail
