#pragma once

#include "orvane_host/import/detail/ModelData.h"

#include "orvane/math/Color.h"
#include "orvane/math/TextureCoordinate.h"
#include "orvane/math/Vector.h"

#include <cstdint>
#include <vector>

namespace OV::Host
{

/// Arrays of one RawMesh.
struct MeshPart
{
    std::vector<Vector> positions;
    std::vector<Vector> normals;
    std::vector<TextureCoordinate> texCoords;
    std::vector<Color> colors;
    std::vector<unsigned short> indices;
};

struct MeshParts
{
    std::vector<MeshPart> parts;
    /// Triangles and points left out: an index or a coordinate was of no use.
    std::uint64_t dropped = 0;
};

/// Largest coordinate that is taken for meant; the radius of a sphere around it stays finite.
constexpr float kMaxCoordinate = 1e15f;

/// Cuts a mesh into parts of at most 65,536 vertices, in the order of its triangles.
///
/// A vertex used by several triangles of a part is there once. Triangles always have
/// normals in the result. Trusts nothing in the mesh but that its arrays can be read.
MeshParts SplitMesh(const MeshData& mesh);

} // namespace OV::Host
