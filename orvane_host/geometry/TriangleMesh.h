#pragma once

#include "orvane/math/Color.h"
#include "orvane/math/TextureCoordinate.h"
#include "orvane/math/Vector.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace OV
{

class RawMesh;

} // namespace OV

namespace OV::Host
{

/// Triangles of any number of vertices, ready for Meshes.
class TriangleMesh
{
public:
    /// The vertices that one RawMesh has 16-bit indices for.
    static constexpr std::size_t MostVertices = 65536;

    /// What bends more where triangles share a vertex is an edge, in degrees.
    static constexpr float UsualCrease = 35.0f;

    /// Parallel arrays, one element per vertex. All but positions and indices may be empty.
    struct Source
    {
        std::vector<Vector> positions; ///< finite
        std::vector<Vector> normals;   ///< finite; empty has them made
        std::vector<TextureCoordinate> textureCoordinates;
        std::vector<Color> colors;
        /// Three for each triangle, counter-clockwise from the front.
        std::vector<std::uint32_t> indices;
    };

    /// Makes geometry of arrays. What fits into one RawMesh and has normals is taken over as it is.
    ///
    /// Normals that have to be made are those of the triangles about a vertex, by their areas; where
    /// these bend more than the crease the vertex comes out several times.
    /// @param error on failure one sentence: which array is too short, or holds what is no number or
    ///        no vertex. Untouched otherwise.
    /// @return as many parts as it takes, each with a box and a sphere; none on failure.
    static std::vector<std::shared_ptr<RawMesh>> Make(Source&& source, std::string& error,
                                                      float creaseDegrees = UsualCrease);
};

} // namespace OV::Host
