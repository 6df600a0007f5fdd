#include "orvane_host/present/detail/SunLight.h"

#include "orvane/math/Quaternion.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Scene.h"

#include <algorithm>

namespace OV::Host::Detail
{

namespace
{

/// The direction that a light was given. To read it and to put it back takes a subclass; the setter
/// would make it unit once more, which may change its last bits.
class OpenLight : public LightNode
{
public:
    static Vector& DirectionOf(LightNode& light) { return light.*(&OpenLight::localDirection); }
};

} // namespace

bool SunLight::IsThere(const Scene& scene) const
{
    const auto& lights = scene.GetLights();
    return m_watch.IsAlive() && std::find(lights.begin(), lights.end(), m_light) != lights.end();
}

void SunLight::Take(Scene& scene, const Vector& towardSun, float strength)
{
    GiveBack(scene);
    m_light = scene.GetLights().empty() ? nullptr : scene.GetLights().front();
    if (!m_light)
    {
        return;
    }
    m_watch.Watch(m_light->GetLifetime());
    m_towardSun = towardSun;
    m_color = m_light->GetColor();
    m_direction = OpenLight::DirectionOf(*m_light);
    m_light->SetColor(strength, strength, strength);
    Aim(scene);
}

void SunLight::Aim(const Scene& scene)
{
    if (!IsThere(scene))
    {
        return;
    }
    Quaternion back = m_light->GetGlobal().GetRotation();
    back.x = -back.x;
    back.y = -back.y;
    back.z = -back.z;
    Vector local;
    local.Multiply(back, Vector(-m_towardSun.x, -m_towardSun.y, -m_towardSun.z));
    m_light->SetLocalDirection(local);
}

void SunLight::GiveBack(const Scene& scene)
{
    if (IsThere(scene))
    {
        m_light->SetColor(m_color.r, m_color.g, m_color.b);
        OpenLight::DirectionOf(*m_light) = m_direction;
    }
    m_watch.Stop();
    m_light = nullptr;
}

} // namespace OV::Host::Detail
