#include "tests/support/AdvancedModel.h"

#include <glm/common.hpp>
#include <glm/geometric.hpp>
#include <glm/matrix.hpp>

#include <algorithm>
#include <cmath>

namespace OV::Test
{

namespace
{

using glm::vec2;
using glm::vec3;
using glm::vec4;

constexpr float kShininess = 0.3f;
/// Where its root is steep, rounding decides about the highlight.
constexpr float kSteepHighlight = 0.002f;

vec3 Luminance(bool phong)
{
    return phong ? vec3(0.212f, 0.7152f, 0.0722f) : vec3(0.299f, 0.587f, 0.114f);
}

/// A quarter turn about X, by columns.
glm::mat3 CubeMatrix()
{
    constexpr float halfAngle = 0.7853975f;
    const float s = 2.0f * std::sin(halfAngle) * std::cos(halfAngle);
    const float c = 1.0f - 2.0f * std::sin(halfAngle) * std::sin(halfAngle);
    return glm::mat3(vec3(1, 0, 0), vec3(0, c, s), vec3(0, -s, c));
}

vec3 ToCube(const vec3& view, const vec3& normal)
{
    return glm::normalize(glm::transpose(CubeMatrix()) * glm::reflect(view, normal));
}

vec3 Perturb(const vec3& normal, const ScreenChange& change, const vec3& texel)
{
    const vec3 map = texel * (255.0f / 127.0f) - 128.0f / 127.0f;
    // The position is minus the view vector.
    const vec3 right = -change.viewX;
    const vec3 up = -change.viewY;
    const vec3 upNormal = glm::cross(up, normal);
    const vec3 normalRight = glm::cross(normal, right);
    const vec3 tangent = upNormal * change.coordinateX.x + normalRight * change.coordinateY.x;
    const vec3 bitangent = upNormal * change.coordinateX.y + normalRight * change.coordinateY.y;
    const float longest = std::max(glm::dot(tangent, tangent), glm::dot(bitangent, bitangent));
    const float scale = 1.0f / std::sqrt(std::max(longest, 1e-30f));
    return glm::normalize(tangent * scale * map.x + bitangent * scale * map.y + normal * map.z);
}

/// The parts of the shading that are looked up or need the normal.
struct Surface
{
    vec3 normal{0.0f};
    vec4 reflection{0.0f, 0.0f, 0.0f, 1.0f};
    std::optional<vec4> texel;
};

/// False when rounding might decide.
bool LookUp(const AdvancedLook& look, const AdvancedVaryings& at, const ScreenChange& change, Surface& surface)
{
    surface.normal = glm::normalize(at.normal);
    vec3 direction = at.cube;
    if (look.normalMap)
    {
        const std::optional<vec4> texel = look.normalMap->At(at.coordinate);
        if (!texel)
        {
            return false;
        }
        surface.normal = Perturb(surface.normal, change, vec3(*texel));
        direction = ToCube(at.view, surface.normal);
    }
    if (look.reflectionMap)
    {
        const std::optional<vec4> reflection = look.reflectionMap->At(direction);
        if (!reflection)
        {
            return false;
        }
        surface.reflection = *reflection;
    }
    if (look.texture)
    {
        surface.texel = look.texture->At(at.coordinate);
        return surface.texel.has_value();
    }
    return true;
}

float Facing(const AdvancedVaryings& at, bool frontFacing)
{
    return std::max(frontFacing ? at.colorFactor : -at.colorFactor, 0.0f);
}

vec4 Highlight(const AdvancedLook& look, float towardsEye, float brightness)
{
    return std::pow(std::max(towardsEye, 0.0f), kShininess) * brightness * look.specular;
}

float ReflectionShare(const AdvancedLook& look, const AdvancedVaryings& at, const vec3& normal)
{
    return glm::mix(look.reflection.y, look.reflection.x, std::abs(glm::dot(at.view, normal)));
}

vec4 Clamped(const vec4& color, float alpha)
{
    return vec4(glm::clamp(vec3(color), 0.0f, 1.0f), alpha);
}

vec4 ShadePlain(const AdvancedLook& look, const AdvancedVaryings& at, const Surface& surface, bool frontFacing,
                float towardsEye)
{
    float light = 0.0f;
    if (!look.ambientPass)
    {
        light = look.normalMap ? std::abs(glm::dot(surface.normal, look.towardsLight)) : Facing(at, frontFacing);
    }
    const vec4 highlight = Highlight(look, towardsEye, look.ambientPass ? 0.2f : 1.0f);
    const vec4 shine =
        glm::mix(highlight, surface.reflection, look.reflection.z) * ReflectionShare(look, at, surface.normal);
    const float dimming = glm::dot(vec3(look.ambient), Luminance(false));
    const vec4 texel = surface.texel.value_or(vec4(1.0f));
    const vec4 dark = vec4(dimming * vec3(look.color), 1.0f) * texel;
    return Clamped(glm::mix(dark, look.color * texel, light) + shine, texel.a * look.color.a);
}

vec4 ShadePhong(const AdvancedLook& look, const AdvancedVaryings& at, const Surface& surface, bool frontFacing,
                float towardsEye)
{
    float light = glm::mix(1.0f, Facing(at, frontFacing), look.sun);
    if (look.normalMap)
    {
        const vec3 direction = frontFacing ? look.towardsLight : -look.towardsLight;
        const float bump = std::max(glm::dot(surface.normal, direction), 0.0f);
        light = glm::mix(1.0f - 0.1f * (1.0f - glm::dot(at.view, surface.normal)), bump, look.sun);
    }
    const vec4 shine = glm::mix(Highlight(look, towardsEye, 1.0f) * look.sun, surface.reflection, look.reflection.z) *
                       ReflectionShare(look, at, surface.normal) * 0.9f;
    const float dimming = std::max(0.7f, glm::dot(vec3(look.ambient), Luminance(true)));
    vec4 diffuse = look.color;
    float intensity = look.colorIntensity;
    float alpha = look.color.a;
    if (surface.texel)
    {
        diffuse = look.color * vec4(0.8f, 0.8f, 0.8f, 1.0f) * *surface.texel;
        intensity = look.textureIntensity;
        alpha *= surface.texel->a;
    }
    const vec4 glow = 0.5f * look.sun * vec4(dimming * vec3(diffuse), 1.0f);
    return Clamped(light * intensity * (glow + diffuse + shine), alpha);
}

/// The colour with its side marked: the tint goes by the colour before any shadow.
vec4 MarkSide(const AdvancedLook& look, const vec4& color, const vec4& unshadowed, bool frontFacing)
{
    const bool filled = unshadowed.a > 0.999f && look.poche && !look.clip.planes.empty();
    if (!frontFacing && look.showFaceSides)
    {
        return vec4(unshadowed.r * 0.8f, unshadowed.g * 0.5f, unshadowed.b * 0.4f, unshadowed.a);
    }
    return filled && (!frontFacing || look.backFaces) ? *look.poche : color;
}

} // namespace

AdvancedVaryings AdvancedVaryings::operator*(float share) const
{
    return {world * share, normal * share, view * share, cube * share, coordinate * share, colorFactor * share};
}

AdvancedVaryings AdvancedVaryings::operator+(const AdvancedVaryings& other) const
{
    return {world + other.world, normal + other.normal,         view + other.view,
            cube + other.cube,   coordinate + other.coordinate, colorFactor + other.colorFactor};
}

AdvancedVaryings AdvancedVertex(const AdvancedLook& look, const glm::mat4& world, const glm::mat3& normalMatrix,
                                const glm::vec3& position, const glm::vec3& normal, const glm::vec2& coordinate)
{
    AdvancedVaryings at;
    at.world = vec3(world * vec4(position, 1.0f));
    at.coordinate = coordinate * look.textureScale;
    at.view = glm::normalize(look.camera - at.world);
    at.normal = look.lit ? normalMatrix * normal : at.view;
    at.colorFactor = look.lit ? glm::dot(glm::normalize(at.normal), look.towardsLight) : 1.0f;
    at.cube = ToCube(at.view, at.normal);
    return at;
}

Shaded ShadeAdvanced(const AdvancedLook& look, const AdvancedVaryings& at, const ScreenChange& change,
                     bool frontFacing)
{
    const Shaded unsure{Shaded::Outcome::Unsure, vec4(0.0f)};
    const Shaded discarded{Shaded::Outcome::Discarded, vec4(0.0f)};
    if (look.opacityMap)
    {
        const std::optional<vec4> opacity = look.opacityMap->At(at.coordinate);
        // Eight bits hold the bound itself, which the two sides may round differently.
        if (!opacity || std::abs(opacity->r - 0.4f) < 0.001f)
        {
            return unsure;
        }
        if (opacity->r < 0.4f)
        {
            return discarded;
        }
    }
    switch (look.clip.At(at.world))
    {
    case ClipModel::Place::Cut:
        return discarded;
    case ClipModel::Place::Outline:
        return {Shaded::Outcome::Drawn, look.clip.outlineColor};
    case ClipModel::Place::Unsure:
        return unsure;
    case ClipModel::Place::Kept:
        break;
    }
    Surface surface;
    if (!LookUp(look, at, change, surface))
    {
        return unsure;
    }
    const float towardsEye =
        glm::dot(-glm::normalize(glm::reflect(look.towardsLight, surface.normal)), at.view);
    if (std::abs(towardsEye) < kSteepHighlight)
    {
        return unsure;
    }
    if (surface.texel && surface.texel->a < 0.25f)
    {
        return discarded;
    }
    const auto shade = look.phong ? ShadePhong : ShadePlain;
    const vec4 plain = shade(look, at, surface, frontFacing, towardsEye);
    const vec4 shadowed(vec3(plain) * (1.0f - look.shadow), plain.a);
    vec4 color = MarkSide(look, shadowed, plain, frontFacing);
    if (look.grey)
    {
        color = vec4(vec3(glm::dot(vec3(color), Luminance(look.phong)) * 0.6f + 0.15f), color.a);
    }
    Fragment last;
    last.fog = look.fog;
    last.stipple = look.stipple;
    return {Shaded::Outcome::Drawn, FogAndStipple(last, color)};
}

} // namespace OV::Test
