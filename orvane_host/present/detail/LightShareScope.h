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

/// Draws without a share of the light, for the length of a scope: looking up shadows takes most of a frame that has
/// them, and depths alone don't depend on it.
class NoLightShareScope
{
public:
    /// @param isWanted else what is in force stays.
    explicit NoLightShareScope(bool isWanted) : m_before(isWanted ? EffectES20::GetLightShare() : nullptr)
    {
        Set(nullptr);
    }

    ~NoLightShareScope() { Set(m_before); }

    NoLightShareScope(const NoLightShareScope&) = delete;
    NoLightShareScope& operator=(const NoLightShareScope&) = delete;

private:
    void Set(LightShare* share) const
    {
        if (m_before)
        {
            EffectES20::SetLightShare(share);
        }
    }

    LightShare* m_before;
};

} // namespace OV::Host::Detail
