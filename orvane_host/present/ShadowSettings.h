#pragma once

namespace OV::Host
{

/// How the shadows of the sun look.
struct ShadowSettings
{
    /// Rims get wider with the distance of what casts the shadow, as those of a real sun do.
    bool soft = false;
    /// How wide the sun is in the sky, in degrees, above 0 and at most 20; only counts for soft
    /// shadows.
    float sunWidth = 0.53f;
    /// How much of their colour shadows take in the looks that know no light, Monotone, Crosshatch
    /// and VertexColor, 0 for none to 1 for all.
    float darkness = 0.35f;
    /// Whether what clip planes have cut away still casts its shadow.
    bool clippedCasts = false;
};

inline bool operator==(const ShadowSettings& left, const ShadowSettings& right)
{
    return left.soft == right.soft && left.sunWidth == right.sunWidth && left.darkness == right.darkness
        && left.clippedCasts == right.clippedCasts;
}

inline bool operator!=(const ShadowSettings& left, const ShadowSettings& right)
{
    return !(left == right);
}

} // namespace OV::Host
