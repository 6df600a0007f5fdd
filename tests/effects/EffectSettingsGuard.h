#pragma once

#include "orvane/effects/EffectES20.h"
#include "orvane/effects/SkySettings.h"

#include <vector>

namespace OV::Test
{

/// Puts the settings of effects and sky, which are global, back to their start around a test.
class EffectSettingsGuard
{
public:
    EffectSettingsGuard() { Reset(); }
    EffectSettingsGuard(const EffectSettingsGuard&) = delete;
    EffectSettingsGuard& operator=(const EffectSettingsGuard&) = delete;
    ~EffectSettingsGuard() { Reset(); }

private:
    static void Reset()
    {
        SkySettings::inst() = SkySettings();
        EffectES20::ClearClipPlanes();
        EffectES20::SetClipPlaneOutlineSize(0.3f);
        EffectES20::SetClipPlaneOutlineColor(glm::vec4(0.0f, 0.0f, 0.0f, 1.0f));
        EffectES20::EnablePocheColor(true);
        EffectES20::SetPocheColor(glm::vec4(0.0f, 0.0f, 0.0f, 1.0f));
        EffectES20::SetAmbientColorIntensity(1.0f);
        EffectES20::SetAmbientTextureIntensity(1.24f);
        EffectES20::SetShadowIntensity(0.2f);
        EffectES20::SetSunShading(0.25f);
        EffectES20::SetShadow(false);
        EffectES20::SetAdvancedMaterialShaderType(EffectCache::AdvancedMaterial);
    }
};

} // namespace OV::Test
