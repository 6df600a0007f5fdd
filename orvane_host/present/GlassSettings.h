#pragma once

namespace OV::Host
{

/// In which order see-through surfaces are laid over each other.
enum class GlassOrder
{
    Scene,    ///< as the scene lists them, the depth of one hiding those that come later
    Weighted, ///< in none: where several lie one behind the other, their colours are mixed by how dense they are
    Exact,    ///< the nearer over the farther at every pixel
};

/// How see-through surfaces are drawn in the looks Basic, Advanced and Phong. The others show none.
struct GlassSettings
{
    static constexpr int MostLayers = 64;

    GlassOrder order = GlassOrder::Exact;
    /// How many surfaces, one behind the other, come in order, 1 to MostLayers; what lies behind them is
    /// mixed as with Weighted. Only counts for Exact, which draws as often as there are layers.
    int layers = 8;
};

inline bool operator==(const GlassSettings& left, const GlassSettings& right)
{
    return left.order == right.order && left.layers == right.layers;
}

inline bool operator!=(const GlassSettings& left, const GlassSettings& right)
{
    return !(left == right);
}

} // namespace OV::Host
