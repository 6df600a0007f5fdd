#pragma once

#include "tests/support/Picture.h"

#include <glm/mat3x3.hpp>
#include <glm/mat4x4.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <optional>

namespace OV::Test
{

/// What is known of one fragment, in the terms of the shading rules: a second, independent
/// statement of what the shaders of the engine compute. All colours are RGBA, 0 to 1.
struct Fragment
{
    glm::vec4 ambient{0.0f};
    glm::vec4 color{0.0f};                 ///< diffuse, the light's colour already in it
    float lightFactor = 1.0f;              ///< interpolated from the vertices; 1 when unlit
    bool frontFacing = true;               ///< by the winding on the screen
    bool mirrored = false;                 ///< as the shader was told
    bool showFaceSides = false;
    std::optional<glm::vec4> texel;
    std::optional<glm::vec4> poche;        ///< set when there is a clip plane and poche is enabled

    struct Fog
    {
        float distance = 0.0f;             ///< of the fragment
        float start = 0.0f;
        float end = 1.0f;
        glm::vec4 color{1.0f};
    };
    std::optional<Fog> fog;

    struct Stipple
    {
        float offset = 0.0f;               ///< pixels
        float size = 0.0f;                 ///< pixels
        glm::vec4 color{1.0f};
        glm::vec2 position{0.0f};          ///< of the fragment's centre, in pixels
    };
    std::optional<Stipple> stipple;
};

/// What the standard material pass writes for a fragment.
glm::vec4 ShadeBasic(const Fragment& fragment);

/// What the ambient pass writes for a fragment: its poche needs no clip plane, and light plays no
/// part.
/// @param shadow how much of the light a shadow takes; 0 without shadow.
glm::vec4 ShadeAmbientPass(const Fragment& fragment, const glm::vec4& poche, float shadow);

/// What fog and stippling, where there are any, make of a colour; the last step of the material
/// passes.
glm::vec4 FogAndStipple(const Fragment& fragment, glm::vec4 color);

/// The light at a vertex.
/// @param towardsLight unit, in world space.
float LightAtVertex(const glm::vec3& normal, const glm::mat3& normalMatrix, const glm::vec3& towardsLight,
                    bool mirrored);

/// The distance that fog goes by, of a point given in object space.
float FogDistance(const glm::mat4& modelViewProjection, const glm::vec3& position);

/// The three colours and two heights of a sky.
struct Sky
{
    glm::vec4 horizon{1.0f};
    glm::vec4 middle{1.0f};
    glm::vec4 upper{1.0f};
    float horizonStop = 0.1f;
    float skyStop = 0.2f;
};

/// @param height 0 at the horizon, 1 straight up.
glm::vec4 ShadeSky(const Sky& sky, float height);

/// Blending by the source's alpha, of what a framebuffer of 8 bits holds.
glm::vec4 BlendOver(const glm::vec4& source, const glm::vec4& destination);
glm::vec4 BlendAdd(const glm::vec4& source, const glm::vec4& destination);

Pixel ToPixel(const glm::vec4& color);

} // namespace OV::Test
