#pragma once

#include "orvane/Export.h"

#include <map>
#include <memory>

namespace OV
{

class EffectES20;
class Lifetime;

/// Keeps at most one effect of each type and hands out references to it.
///
/// The cache counts no reference of its own: an effect lives as long as its users. A copy lists
/// the same effects and changes no count.
class ORVANE_API EffectCache
{
public:
    /// What GetEffect is asked for. Any other number may be asked for too, and has no class.
    enum EffectType : int
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

    /// Tells the watchers, then takes one reference of each effect that is left: at 0 the effect
    /// is destroyed, else it lives on without a cache. What an EffectReferencePlaceholder keeps
    /// alive loses none. GL when an effect is destroyed.
    ~EffectCache();

    /// The end of this cache, or of a copy of it. Who keeps references for longer than the
    /// cache may live watches it, and on notice releases every effect that came from the cache:
    /// what is not released by then loses one reference that its user still counts as his.
    Lifetime& GetLifetime() const;

    /// The effect of a type, made on first request. GL for a new one.
    ///
    /// AdvancedMaterial gives the Phong effect while that is the shader type in force.
    /// @return with one reference, which the caller gives back with EffectES20::Release; null
    /// for a type that has no class.
    EffectES20* GetEffect(EffectType type);

    /// Takes the effect out of the cache. It is not touched itself. A stranger is ignored.
    void RemoveEffect(EffectES20* effect);

protected:
    /// The effects by type. A type that was asked for and has no class stands with null.
    std::map<EffectType, EffectES20*> m_effects;

private:
    friend class EffectES20;

    struct Family;

    void JoinFamily(const std::shared_ptr<Family>& family);
    void LeaveFamily();
    bool Lists(const EffectES20* effect) const;

    /// Takes a dying effect out of this cache and its copies.
    void Forget(EffectES20* effect);

    /// Finds another cache, or none, for an effect that this cache will no longer list.
    void HandOver(EffectES20* effect);

    // Copies list the same effects: what one of them destroys, all of them must forget.
    std::shared_ptr<Family> m_family;
};

} // namespace OV
