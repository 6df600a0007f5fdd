#pragma once

#include "orvane/effects/LightShare.h"

#include <array>

namespace OV::Host::Detail
{

/// The sun's light that reaches each fragment, read from maps that a ShadowStage has drawn.
class SunShare final : public LightShare
{
public:
    static constexpr int MostTiles = 8;

    /// Units in which the maps are bound while the share is in force: the looks use those below.
    static constexpr int DepthUnit = 6;
    static constexpr int GlassUnit = 7;

    /// As the uniforms of SunShare.frag.
    struct Values
    {
        std::array<float, 2> texel{};
        std::array<float, 4> pixel{};
        int tiles = 0;
        std::array<std::array<float, 4>, 3 * MostTiles> toMap{};
        std::array<std::array<float, 4>, MostTiles> rects{};
        std::array<std::array<float, 2>, MostTiles> steps{};
        std::array<float, 4> look{};
    };

    Values values;

    const char* Source() const override;
    NameTable Uniforms() const override;
    void Feed(ShaderProgram& program, int first) override;
};

} // namespace OV::Host::Detail
