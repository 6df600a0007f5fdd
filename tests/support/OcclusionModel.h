#pragma once

#include <glm/vec2.hpp>
#include <glm/vec3.hpp>

#include <optional>
#include <vector>

namespace OV::Test
{

/// Ambient occlusion on the CPU, pixel by pixel, in double precision.
class OcclusionModel
{
public:
    enum Options : unsigned
    {
        Mist = 1,
    };

    /// @param pictureWidth, pictureHeight of the depth picture and of what is darkened.
    OcclusionModel(int pictureWidth, int pictureHeight) :
        width(pictureWidth), height(pictureHeight), size(pictureWidth, pictureHeight)
    {
    }

    int width;
    int height;
    glm::dvec2 size;            ///< what the effect is told of them
    std::vector<float> depths;  ///< as the depth picture holds them, bottom row first
    double zNear = 1.0;
    double zFar = 50.0;
    unsigned options = Mist;
    bool linear = false;        ///< whether depths are mixed between the middles of pixels

    /// What becomes of a colour at a pixel. Where depths are not mixed, none if a sample lies so
    /// near to the border of two texels of different depth that a rounding decides between them.
    std::optional<glm::dvec3> Shade(int x, int y, glm::dvec3 color) const;

private:
    double Raw(glm::dvec2 place, bool& uncertain) const;
    double Nearest(glm::dvec2 texel) const;
    double Mixed(glm::dvec2 texel) const;
    double Texel(int x, int y) const;
    double Linear(double raw) const;
    double Depth(glm::dvec2 place, bool& uncertain) const;
    glm::dvec2 Rand(glm::dvec2 place) const;
    double Sample(glm::dvec2 place, double depth, glm::dvec2 offset, bool& uncertain) const;
};

} // namespace OV::Test
