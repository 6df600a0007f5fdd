#pragma once

#include "orvane/renderdata/MeshFormatKey.h"

namespace OV
{

class Mesh;
}

namespace OV::Detail
{

/// Where the streams lie in a packed vertex. Offsets in bytes from its start; -1: absent.
struct VertexLayout
{
    int stride = 0;
    int normalOffset = -1;
    int textureOffset = -1;
    int colorOffset = -1;

    static VertexLayout Of(const MeshFormatKey& format);
};

/// Factors by which the packer multiplies texture coordinates. 1 and 1 copies them.
struct TextureFactors
{
    float u = 1.0f;
    float v = 1.0f;
};

/// Writes all vertices of a mesh, each stride bytes after the last and filled up with zeros.
/// A stream that the format has and the mesh lacks, wholly or for the last vertices, is zeros.
/// @param out room for the mesh's vertex count times the stride of the format.
void PackVertices(const Mesh& mesh, const MeshFormatKey& format, const TextureFactors& factors,
                  float* out);

} // namespace OV::Detail
