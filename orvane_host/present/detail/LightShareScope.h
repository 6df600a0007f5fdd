#pragma once

#include "orvane/effects/EffectES20.h"

namespace OV::Host::Detail
{

/// Puts the share of the light that reaches the surfaces in force, for the length of a scope.
class LightShareScope
{
public:
    /// @param share null leaves what is in force.
    explicit LightShareScope(LightShare* share) : m_before(EffectES20::GetLightShare()), m_isSet(share != nullptr)
    {
        if (m_isSet)
        {
            EffectES20::SetLightShare(share);
        }
    }

    ~LightShareScope()
    {
        if (m_isSet)
        {
            EffectES20::SetLightShare(m_before);
        }
    }

    LightShareScope(const LightShareScope&) = delete;
    LightShareScope& operator=(const LightShareScope&) = delete;

private:
    LightShare* m_before;
    bool m_isSet;
};

} // namespace OV::Host::Detail
