#include "tests/support/OcclusionModel.h"

#include <glm/common.hpp>
#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace OV::Test
{

namespace
{

double Fract(double value)
{
    return value - std::floor(value);
}

double Compare(double first, double second, bool& beyond)
{
    const double diff = (first - second) * 100.0;
    const double area = diff < 0.3 ? 0.3 : 2.0;
    beyond = beyond || diff >= 0.3;
    return std::pow(2.7182, -2.0 * (diff - 0.3) * (diff - 0.3) / (area * area));
}

} // namespace

std::optional<glm::dvec3> OcclusionModel::Shade(int x, int y, glm::dvec3 color) const
{
    bool uncertain = false;
    const glm::dvec2 place((x + 0.5) / width, (y + 0.5) / height);
    const double depth = Depth(place, uncertain);
    const glm::dvec2 noise = Rand(place);
    const glm::dvec2 step = 1.0 / size / std::clamp(depth, 0.3, 1.0) + noise * (1.0 - noise);
    double ao = 0.0;
    double l = 0.0;
    double z = 1.0 - 1.0 / 32.0;
    for (int i = 0; i <= 16; ++i)
    {
        const double r = std::sqrt(1.0 - z);
        ao += Sample(place, depth, glm::dvec2(std::cos(l), std::sin(l)) * r * step, uncertain);
        z -= 1.0 / 16.0;
        l += 3.1415926 * (3.0 - std::sqrt(5.0));
    }
    if (uncertain)
    {
        return std::nullopt;
    }
    ao = 1.0 - ao / 16.0;
    if ((options & Mist) != 0)
    {
        const double raw = Raw(place, uncertain);
        const double distance = -zFar * zNear / (raw * (zFar - zNear) - zFar);
        ao = std::clamp(glm::mix(ao, 1.0, std::clamp((distance - zNear) / zFar, 0.0, 1.0)), 0.0, 1.0);
    }
    const double lum = glm::dot(color, glm::dvec3(0.299, 0.587, 0.114));
    return color * glm::mix(ao, 1.0, lum * 0.5);
}

double OcclusionModel::Raw(glm::dvec2 place, bool& uncertain) const
{
    const glm::dvec2 texel = place * glm::dvec2(width, height);
    if (linear)
    {
        return Mixed(texel);
    }
    const double value = Nearest(texel);
    for (const glm::dvec2 around : {glm::dvec2(1, 0), glm::dvec2(-1, 0), glm::dvec2(0, 1), glm::dvec2(0, -1)})
    {
        uncertain = uncertain || std::abs(Linear(Nearest(texel + around * 0.002)) - Linear(value)) > 1e-4;
    }
    return value;
}

double OcclusionModel::Nearest(glm::dvec2 texel) const
{
    return Texel(static_cast<int>(std::floor(texel.x)), static_cast<int>(std::floor(texel.y)));
}

double OcclusionModel::Mixed(glm::dvec2 texel) const
{
    const glm::dvec2 from = glm::floor(texel - 0.5);
    const glm::dvec2 share = texel - 0.5 - from;
    const int x = static_cast<int>(from.x);
    const int y = static_cast<int>(from.y);
    return glm::mix(glm::mix(Texel(x, y), Texel(x + 1, y), share.x),
                    glm::mix(Texel(x, y + 1), Texel(x + 1, y + 1), share.x), share.y);
}

double OcclusionModel::Texel(int x, int y) const
{
    const int column = std::clamp(x, 0, width - 1);
    const int row = std::clamp(y, 0, height - 1);
    return double(depths[static_cast<std::size_t>(row) * static_cast<std::size_t>(width)
                         + static_cast<std::size_t>(column)]);
}

double OcclusionModel::Linear(double raw) const
{
    return 2.0 * zNear / (zFar + zNear - raw * (zFar - zNear));
}

double OcclusionModel::Depth(glm::dvec2 place, bool& uncertain) const
{
    return Linear(Raw(place, uncertain));
}

glm::dvec2 OcclusionModel::Rand(glm::dvec2 place) const
{
    const double s = Fract(1.0 - place.x * size.x / 2.0);
    const double t = Fract(place.y * size.y / 2.0);
    return glm::dvec2((s * 0.25 + t * 0.75) * 2.0 - 1.0, (s * 0.75 + t * 0.25) * 2.0 - 1.0) * 0.0002;
}

double OcclusionModel::Sample(glm::dvec2 place, double depth, glm::dvec2 offset, bool& uncertain) const
{
    const glm::dvec2 reach = offset * (1.0 - depth) * 4.0;
    bool beyond = false;
    double result = Compare(depth, Depth(place + reach, uncertain), beyond);
    if (beyond)
    {
        result += (1.0 - result) * Compare(Depth(place - reach, uncertain), depth, beyond);
    }
    return result;
}

} // namespace OV::Test
