#include "tests/support/SketchModel.h"

#include <glm/common.hpp>
#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>

namespace OV::Test
{

namespace
{

using glm::vec2;
using glm::vec3;
using glm::vec4;

constexpr float kBrush = 0.2f;
constexpr float kNearBound = 1e-4f;

std::optional<vec4> SurfaceColor(const CrosshatchLook& look, const CrosshatchVaryings& at)
{
    std::optional<vec4> texel = vec4(1.0f);
    if (look.texture)
    {
        texel = look.texture->At(at.coordinate / look.divisor);
    }
    if (!texel)
    {
        return std::nullopt;
    }
    return look.ambientPass ? look.ambient * *texel
                            : glm::clamp(look.ambient + look.color * at.colorFactor, 0.0f, 1.0f) * *texel;
}

/// The strokes of one picture at one scale, laid on along the three axes.
std::optional<float> Strokes(const Texels& hatch, const CrosshatchVaryings& at, float scale)
{
    const vec3 facing = glm::max(glm::abs(at.normal), vec3(0.00001f));
    const vec3 share = facing / (facing.x + facing.y + facing.z);
    const vec3 place = at.position * scale;
    const std::optional<vec4> along[] = {hatch.At({place.y, place.z}), hatch.At({place.x, place.z}),
                                         hatch.At({place.x, place.y})};
    if (!along[0] || !along[1] || !along[2])
    {
        return std::nullopt;
    }
    return along[0]->a * share.x + along[1]->a * share.y + along[2]->a * share.z;
}

bool Near(float left, float right)
{
    return std::abs(left - right) < kNearBound;
}

} // namespace

CrosshatchVaryings CrosshatchVaryings::operator*(float share) const
{
    return {position * share, normal * share, coordinate * share, colorFactor * share};
}

CrosshatchVaryings CrosshatchVaryings::operator+(const CrosshatchVaryings& other) const
{
    return {position + other.position, normal + other.normal, coordinate + other.coordinate,
            colorFactor + other.colorFactor};
}

float ToneOf(float luminance, const float (&tones)[4])
{
    const float steps[] = {tones[0], tones[1], tones[2], tones[3], 1.0f};
    const int band = std::clamp(static_cast<int>(std::floor(luminance / 0.25f)), 0, 3);
    const float share = (luminance - 0.25f * static_cast<float>(band)) / 0.25f;
    return steps[band] + (steps[band + 1] - steps[band]) * share;
}

std::optional<vec4> ShadeCrosshatch(const CrosshatchLook& look, const CrosshatchVaryings& at)
{
    const std::optional<vec4> color = SurfaceColor(look, at);
    if (!color)
    {
        return std::nullopt;
    }
    float tones[4];
    for (int i = 0; i < 4; ++i)
    {
        // The densest strokes make the darkest tone.
        const Texels& hatch = *look.hatches[3 - i];
        const std::optional<float> coarse = Strokes(hatch, at, kBrush);
        const std::optional<float> fine = Strokes(hatch, at, 0.618f * kBrush);
        if (!coarse || !fine)
        {
            return std::nullopt;
        }
        tones[i] = 1.0f - std::max(*coarse, *fine);
    }
    const float tone = ToneOf(glm::dot(vec3(*color), vec3(0.299f, 0.587f, 0.114f)), tones);
    return vec4(tone, tone, tone, 1.0f);
}

std::optional<vec4> ShadeMonotone(const MonotoneLook& look, const vec3& world, bool frontFacing)
{
    switch (look.clip.At(world))
    {
    case ClipModel::Place::Cut:
    case ClipModel::Place::Unsure:
        return std::nullopt;
    case ClipModel::Place::Outline:
        return look.clip.outlineColor;
    case ClipModel::Place::Kept:
        break;
    }
    const bool filled = look.poche && !look.clip.planes.empty();
    vec4 color(look.color, 1.0f);
    if (!frontFacing && look.showFaceSides)
    {
        color = vec4(look.color * vec3(0.8f, 0.5f, 0.4f), 1.0f);
    }
    else if (filled && (!frontFacing || look.backFaces))
    {
        color = *look.poche;
    }
    return color * (1.0f - look.shadow);
}

vec3 ScalarRamp(float value)
{
    const vec3 stops[] = {{0, 0, 1}, {0, 1, 1}, {0, 1, 0}, {1, 1, 0}, {1, 0, 0}};
    const float place = std::clamp(value, 0.0f, 1.0f) * 4.0f;
    const int stop = std::min(static_cast<int>(place), 3);
    return glm::mix(stops[stop], stops[stop + 1], place - static_cast<float>(stop));
}

std::optional<vec4> ShadeScalar(const ScalarLook& look, float value, float colorFactor)
{
    const bool empty = !(look.lower < look.upper);
    if (!empty && (Near(value, look.lower) || Near(value, look.upper)))
    {
        return std::nullopt;
    }
    if (empty || value < look.lower || value > look.upper)
    {
        return vec4(vec3(0.75f * colorFactor), 0.5f);
    }
    if (!look.texture)
    {
        return vec4(colorFactor * ScalarRamp(value), 1.0f);
    }
    // The shader samples the lower edge of the lowest row, the model the middle of it.
    const std::optional<vec4> texel = look.texture->At({value, 0.5f / static_cast<float>(look.texture->Height())});
    return texel ? std::optional<vec4>(vec4(colorFactor * vec3(*texel), texel->a)) : std::nullopt;
}

} // namespace OV::Test
