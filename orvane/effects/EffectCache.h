#pragma once

#include "orvane/Export.h"
#include "orvane/effects/EffectHolder.h"

#include <map>
#include <memory>

namespace OV
{

class EffectES20;

/// Keeps at most one effect of each type and hands out references to it.
///
/// The cache counts no reference of its own: an effect lives as long as its users. Who keeps a
/// reference beyond a call derives from EffectHolder, so that the cache may die first. A copy
/// lists the same effects and changes no count.
class ORVANE_API EffectCache
{
public:
    enum EffectType
    {
        BasicMaterial = 0,
        HUD = 1,
        VertexColor = 2,
        AA = 3,
        FXAA = 4,
        SimMaterial = 5,
        SolidLine = 6,
        BasicMaterialAmbientPass = 7,
        BasicMaterialAdditive = 8,
        WeightedAverageSecondPass = 9,
        DepthIdPass = 10,
        SSAO = 11,
        Sky = 12,
        LineFilter = 13,
        AdvancedMaterial = 14,
        Crosshatch = 15,
        Monotone = 16,
        AdvancedMaterialPhong = 17
    };

    EffectCache();
    EffectCache(const EffectCache& other);
    EffectCache& operator=(const EffectCache& other);

    /// Tells the holders, then takes one reference of each effect that is left: at 0 the effect
    /// is destroyed, else it lives on without a cache. GL when an effect is destroyed.
    ~EffectCache();

    /// The effect of a type, made on first request. GL for a new one.
    ///
    /// AdvancedMaterial gives the Phong effect while that is the shader type in force.
    /// @return with one reference, which the caller gives back with EffectES20::Release; null
    /// for a type that has no class.
    EffectES20* GetEffect(EffectType type);

    /// Takes the effect out of the cache. It is not touched itself. A stranger is ignored.
    void RemoveEffect(EffectES20* effect);

private:
    friend class EffectES20;
    friend class EffectHolder;

    void JoinFamily(const std::shared_ptr<EffectHolder::Family>& family);
    void LeaveFamily();
    EffectCache* OtherCacheWith(EffectES20* effect) const;
    void Forget(EffectES20* effect);

    std::map<EffectType, EffectES20*> m_effects;

    // Copies list the same effects, so what one copy destroys, the others must forget, and
    // their holders as well.
    std::shared_ptr<EffectHolder::Family> m_family;
};

} // namespace OV
