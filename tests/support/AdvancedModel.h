#pragma once

#include "tests/support/ShadingModel.h"
#include "tests/support/SurfaceModel.h"

#include <glm/mat3x3.hpp>
#include <glm/mat4x4.hpp>

#include <optional>

namespace OV::Test
{

/// What the two models of per-pixel shading are told of a material and its surroundings, in the
/// terms of the shading rules.
struct AdvancedLook
{
    bool phong = false;
    bool ambientPass = false;

    glm::vec4 ambient{1.0f};
    glm::vec4 color{1.0f};                   ///< diffuse, the light's colour already in it
    glm::vec4 specular{0.0f, 0.0f, 0.0f, 1.0f};
    glm::vec3 towardsLight{0.0f, 0.0f, 1.0f};
    bool lit = false;                        ///< the mesh takes the light, and has normals
    glm::vec3 camera{0.0f};
    glm::vec3 reflection{0.0f};              ///< straight on, grazing, gloss
    glm::vec2 textureScale{1.0f};            ///< factor of the coordinate

    const Texels* texture = nullptr;
    const Texels* normalMap = nullptr;
    const Texels* opacityMap = nullptr;
    const CubeColors* reflectionMap = nullptr; ///< without one the sampler gives opaque black

    float colorIntensity = 1.0f;
    float textureIntensity = 1.24f;
    float shadow = 0.0f;                     ///< share of the light that a shadow takes; 0: none
    float sun = 0.25f;

    bool showFaceSides = false;
    bool backFaces = false;                  ///< the mesh counts as the inside of a solid
    bool grey = false;
    ClipModel clip;
    std::optional<glm::vec4> poche;          ///< none when it is switched off
    std::optional<Fragment::Fog> fog;
    std::optional<Fragment::Stipple> stipple;
};

/// What a vertex hands on.
struct AdvancedVaryings
{
    glm::vec3 world{0.0f};
    glm::vec3 normal{0.0f};
    glm::vec3 view{0.0f};
    glm::vec3 cube{0.0f};
    glm::vec2 coordinate{0.0f};
    float colorFactor = 1.0f;

    AdvancedVaryings operator*(float share) const;
    AdvancedVaryings operator+(const AdvancedVaryings& other) const;
};

/// @param position object space.
AdvancedVaryings AdvancedVertex(const AdvancedLook& look, const glm::mat4& world, const glm::mat3& normalMatrix,
                                const glm::vec3& position, const glm::vec3& normal, const glm::vec2& coordinate);

/// How the view vector and the texture coordinate change from pixel to pixel, to the right and up.
struct ScreenChange
{
    glm::vec3 viewX{0.0f};
    glm::vec3 viewY{0.0f};
    glm::vec2 coordinateX{0.0f};
    glm::vec2 coordinateY{0.0f};
};

/// What becomes of a fragment.
struct Shaded
{
    enum class Outcome
    {
        Drawn,
        Discarded,
        Unsure ///< so near to a bound that rounding might decide
    };

    Outcome outcome = Outcome::Drawn;
    glm::vec4 color{0.0f};
};

Shaded ShadeAdvanced(const AdvancedLook& look, const AdvancedVaryings& at, const ScreenChange& change,
                     bool frontFacing);

} // namespace OV::Test
