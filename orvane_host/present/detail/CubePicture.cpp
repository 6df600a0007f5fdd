#include "orvane_host/present/detail/CubePicture.h"

#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>

namespace OV::Host::Detail
{

namespace
{

constexpr float kPi = 3.14159265f;

/// A direction about +Z that a lobe is sampled in, what it counts, and the level to look it up in.
struct LobeSample
{
    glm::vec3 direction;
    float weight;
    std::size_t level;
};

/// The bits of a number in reverse order behind the point: 0, 1/2, 1/4, 3/4 and so on.
float Reversed(unsigned int number)
{
    float result = 0.0f;
    for (float digit = 0.5f; number != 0; number >>= 1, digit /= 2.0f)
    {
        result += (number & 1u) != 0 ? digit : 0.0f;
    }
    return result;
}

std::vector<LobeSample> SampleLobe(float alpha, int samples, int baseSize, std::size_t levels)
{
    const float texelAngle = 4.0f * kPi / (6.0f * static_cast<float>(baseSize) * static_cast<float>(baseSize));
    std::vector<LobeSample> lobe;
    for (int i = 0; i < samples; ++i)
    {
        const float share = (static_cast<float>(i) + 0.5f) / static_cast<float>(samples);
        const float turn = 2.0f * kPi * Reversed(static_cast<unsigned int>(i));
        const float cos2 = (1.0f - share) / (1.0f + (alpha * alpha - 1.0f) * share);
        // About the half vector the direction turns twice as far.
        const float cosine = 2.0f * cos2 - 1.0f;
        if (cosine <= 0.0f)
        {
            continue;
        }
        const float sine = std::sqrt(std::max(0.0f, 1.0f - cosine * cosine));
        // As large a part of the sphere as a sample stands for is what a texel should cover.
        const float peak = cos2 * (alpha * alpha - 1.0f) + 1.0f;
        const float density = alpha * alpha / (4.0f * kPi * peak * peak);
        const float angle = 1.0f / (static_cast<float>(samples) * density);
        const float level = 0.5f * std::log2(angle / texelAngle) + 0.5f;
        lobe.push_back({{sine * std::cos(turn), sine * std::sin(turn), cosine}, cosine,
                        static_cast<std::size_t>(std::clamp(level + 0.5f, 0.0f, static_cast<float>(levels - 1)))});
    }
    return lobe;
}

} // namespace

CubePicture::CubePicture(int size) :
    m_size(size), m_texels(static_cast<std::size_t>(Faces) * static_cast<std::size_t>(size)
                           * static_cast<std::size_t>(size))
{
}

glm::vec3 CubePicture::DirectionOf(int face, float x, float y) const
{
    const float s = 2.0f * x / static_cast<float>(m_size) - 1.0f;
    const float t = 2.0f * y / static_cast<float>(m_size) - 1.0f;
    switch (face)
    {
    case 0: return {1.0f, -t, -s};
    case 1: return {-1.0f, -t, s};
    case 2: return {s, 1.0f, t};
    case 3: return {s, -1.0f, -t};
    case 4: return {s, -t, 1.0f};
    default: return {-s, -t, -1.0f};
    }
}

glm::vec3 CubePicture::Sample(const glm::vec3& d) const
{
    const glm::vec3 size(std::abs(d.x), std::abs(d.y), std::abs(d.z));
    int face = 0;
    float s = 0.0f;
    float t = 0.0f;
    float reach = 0.0f;
    if (size.x >= size.y && size.x >= size.z)
    {
        face = d.x >= 0.0f ? 0 : 1;
        s = d.x >= 0.0f ? -d.z : d.z;
        t = -d.y;
        reach = size.x;
    }
    else if (size.y >= size.z)
    {
        face = d.y >= 0.0f ? 2 : 3;
        s = d.x;
        t = d.y >= 0.0f ? d.z : -d.z;
        reach = size.y;
    }
    else
    {
        face = d.z >= 0.0f ? 4 : 5;
        s = d.z >= 0.0f ? d.x : -d.x;
        t = -d.y;
        reach = size.z;
    }
    const float half = static_cast<float>(m_size) / 2.0f;
    const float last = static_cast<float>(m_size - 1);
    const float x = std::clamp((s / reach + 1.0f) * half - 0.5f, 0.0f, last);
    const float y = std::clamp((t / reach + 1.0f) * half - 0.5f, 0.0f, last);
    const int left = static_cast<int>(x);
    const int top = static_cast<int>(y);
    const int right = std::min(left + 1, m_size - 1);
    const int bottom = std::min(top + 1, m_size - 1);
    const float u = x - static_cast<float>(left);
    const float v = y - static_cast<float>(top);
    return (At(face, left, top) * (1.0f - u) + At(face, right, top) * u) * (1.0f - v)
        + (At(face, left, bottom) * (1.0f - u) + At(face, right, bottom) * u) * v;
}

CubePicture CubePicture::Halved() const
{
    CubePicture half(m_size / 2);
    for (int face = 0; face < Faces; ++face)
    {
        for (int y = 0; y < half.m_size; ++y)
        {
            for (int x = 0; x < half.m_size; ++x)
            {
                half.At(face, x, y) = (At(face, 2 * x, 2 * y) + At(face, 2 * x + 1, 2 * y)
                                       + At(face, 2 * x, 2 * y + 1) + At(face, 2 * x + 1, 2 * y + 1))
                    * 0.25f;
            }
        }
    }
    return half;
}

CubePicture CubePicture::Blurred(const std::vector<CubePicture>& levels, int size, float alpha, int samples)
{
    const std::vector<LobeSample> lobe = SampleLobe(alpha, samples, levels.front().GetSize(), levels.size());
    CubePicture blurred(size);
    for (int face = 0; face < Faces; ++face)
    {
        for (int y = 0; y < size; ++y)
        {
            for (int x = 0; x < size; ++x)
            {
                const glm::vec3 middle = glm::normalize(
                    blurred.DirectionOf(face, static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f));
                const glm::vec3 other = std::abs(middle.y) < 0.9f ? glm::vec3(0.0f, 1.0f, 0.0f)
                                                                  : glm::vec3(1.0f, 0.0f, 0.0f);
                const glm::vec3 side = glm::normalize(glm::cross(other, middle));
                const glm::vec3 up = glm::cross(middle, side);
                glm::vec3 sum(0.0f);
                float weights = 0.0f;
                for (const LobeSample& sample : lobe)
                {
                    const glm::vec3& d = sample.direction;
                    sum += levels[sample.level].Sample(side * d.x + up * d.y + middle * d.z) * sample.weight;
                    weights += sample.weight;
                }
                blurred.At(face, x, y) = sum / weights;
            }
        }
    }
    return blurred;
}

} // namespace OV::Host::Detail
