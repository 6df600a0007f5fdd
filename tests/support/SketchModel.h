#pragma once

#include "tests/support/SurfaceModel.h"

#include <optional>

namespace OV::Test
{

/// What the pen strokes are drawn by.
struct CrosshatchLook
{
    bool ambientPass = false;
    glm::vec4 ambient{1.0f};
    glm::vec4 color{1.0f};              ///< diffuse, the light's colour already in it
    const Texels* texture = nullptr;
    glm::vec2 divisor{1.0f};            ///< of the texture coordinate
    const Texels* hatches[4] = {};      ///< strokes in alpha, the lightest first
};

struct CrosshatchVaryings
{
    glm::vec3 position{0.0f};           ///< object space
    glm::vec3 normal{0.0f};
    glm::vec2 coordinate{0.0f};
    float colorFactor = 1.0f;

    CrosshatchVaryings operator*(float share) const;
    CrosshatchVaryings operator+(const CrosshatchVaryings& other) const;
};

/// The grey of a luminance between the four tones, the densest first; white lies beyond the last.
float ToneOf(float luminance, const float (&tones)[4]);

/// None where rounding might decide about a texel.
std::optional<glm::vec4> ShadeCrosshatch(const CrosshatchLook& look, const CrosshatchVaryings& at);

/// What a surface of one flat colour is drawn by.
struct MonotoneLook
{
    glm::vec3 color{1.0f};
    bool showFaceSides = false;
    bool backFaces = false;
    ClipModel clip;
    std::optional<glm::vec4> poche;
    float shadow = 0.0f;
};

/// None where it is cut away, and where the place isn't sure.
std::optional<glm::vec4> ShadeMonotone(const MonotoneLook& look, const glm::vec3& world, bool frontFacing);

/// The ramp from blue over cyan, green and yellow to red.
glm::vec3 ScalarRamp(float value);

/// What a number at each vertex is shown by.
struct ScalarLook
{
    float lower = 0.0f;
    float upper = 0.0f;
    const Texels* texture = nullptr;
};

/// None where rounding might decide about the range or a texel.
std::optional<glm::vec4> ShadeScalar(const ScalarLook& look, float value, float colorFactor);

} // namespace OV::Test
