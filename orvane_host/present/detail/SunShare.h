#pragma once

#include "orvane/effects/LightShare.h"

#include <array>
#include <string>

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
        int tiles = 0;
        std::array<std::array<float, 3>, 4 * MostTiles> toMap{};
        std::array<std::array<float, 4>, MostTiles> rects{};
        std::array<std::array<float, 2>, MostTiles> steps{};
        std::array<float, 4> look{};
    };

    /// As the options of SunShare.frag.
    enum Option : unsigned
    {
        OptionPerspective = 1,
        OptionParts = 2, ///< of the map there are several
        OptionSoft = 4,
        OptionGlass = 8,
        EndOfOptions = 16,
    };

    Values values;

    /// Each set of options has a text of its own, made when it is first wanted.
    void SetOptions(unsigned options);

    const char* Source() const override;
    NameTable Uniforms() const override;
    void Feed(ShaderProgram& program, int first) override;

private:
    std::array<std::string, EndOfOptions> m_sources; ///< empty until wanted
    unsigned m_options = 0;
};

} // namespace OV::Host::Detail
