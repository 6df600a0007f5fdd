#include "tests/support/ShadingModel.h"

#include <glm/common.hpp>
#include <glm/geometric.hpp>

#include <cmath>

namespace OV::Test
{

namespace
{

glm::vec4 Saturate(const glm::vec4& color)
{
    return glm::clamp(color, glm::vec4(0.0f), glm::vec4(1.0f));
}

glm::vec4 BlueTint(const glm::vec4& color)
{
    return {color.r * 0.5f, color.g * 0.5f, color.b * 0.7f + 0.3f, color.a};
}

bool IsOpaque(const glm::vec4& color)
{
    return color.a > 0.999f;
}

bool ShowsBack(const Fragment& fragment)
{
    return fragment.frontFacing == fragment.mirrored;
}

} // namespace

glm::vec4 FogAndStipple(const Fragment& fragment, glm::vec4 color)
{
    if (fragment.fog)
    {
        const Fragment::Fog& fog = *fragment.fog;
        const float rest = glm::clamp((fog.end - fog.distance) / (fog.end - fog.start), 0.0f, 1.0f);
        color = glm::mix(fog.color, color, rest);
    }
    if (fragment.stipple)
    {
        const Fragment::Stipple& stipple = *fragment.stipple;
        const glm::vec2 cell = glm::mod(stipple.position, stipple.offset);
        if (cell.x < stipple.size && cell.y < stipple.size)
        {
            color = 0.5f * stipple.color + 0.5f * color;
        }
    }
    return color;
}

glm::vec4 ShadeBasic(const Fragment& fragment)
{
    const float factor = std::fmax(fragment.frontFacing ? fragment.lightFactor : -fragment.lightFactor, 0.0f);
    glm::vec4 color = Saturate(fragment.ambient + fragment.color * factor);
    color.a = fragment.color.a;
    if (fragment.texel)
    {
        color = glm::vec4(glm::vec3(color) * glm::vec3(*fragment.texel), fragment.texel->a * fragment.color.a);
    }
    if (ShowsBack(fragment))
    {
        if (fragment.showFaceSides)
        {
            color = BlueTint(color);
        }
        else if (fragment.poche && IsOpaque(color))
        {
            color = *fragment.poche;
        }
    }
    return FogAndStipple(fragment, color);
}

glm::vec4 ShadeAmbientPass(const Fragment& fragment, const glm::vec4& poche, float shadow)
{
    glm::vec4 color = fragment.texel ? fragment.ambient * *fragment.texel : fragment.ambient;
    if (ShowsBack(fragment))
    {
        if (fragment.showFaceSides)
        {
            color = BlueTint(color);
        }
        else if (IsOpaque(color))
        {
            color = poche;
        }
    }
    color = FogAndStipple(fragment, color);
    return {(1.0f - shadow) * glm::vec3(color), color.a};
}

float LightAtVertex(const glm::vec3& normal, const glm::mat3& normalMatrix, const glm::vec3& towardsLight,
                    bool mirrored)
{
    const glm::vec3 direction = mirrored ? -towardsLight : towardsLight;
    return glm::dot(glm::normalize(normalMatrix * normal), direction);
}

float FogDistance(const glm::mat4& modelViewProjection, const glm::vec3& position)
{
    const glm::vec4 clip = modelViewProjection * glm::vec4(position, 1.0f);
    const float windowDepth = clip.z / clip.w * 0.5f + 0.5f;
    return windowDepth * clip.w;
}

glm::vec4 ShadeSky(const Sky& sky, float height)
{
    const float horizon = 1.0f - glm::clamp(height / sky.horizonStop, 0.0f, 1.0f);
    const float middle =
        1.0f - glm::clamp((height - sky.horizonStop) / (sky.skyStop - sky.horizonStop), 0.0f, 1.0f) - horizon;
    const float upper = 1.0f - middle - horizon;
    return sky.horizon * horizon + sky.middle * middle + sky.upper * upper;
}

glm::vec4 BlendOver(const glm::vec4& source, const glm::vec4& destination)
{
    return Saturate(source * source.a + destination * (1.0f - source.a));
}

glm::vec4 BlendAdd(const glm::vec4& source, const glm::vec4& destination)
{
    return Saturate(source + destination);
}

Pixel ToPixel(const glm::vec4& color)
{
    return ToPixel(color.r, color.g, color.b, color.a);
}

} // namespace OV::Test
