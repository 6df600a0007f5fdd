#pragma once

#include "orvane/Export.h"

namespace OV
{

class Mesh;

/// Which streams the vertices of a mesh carry: meshes of equal keys may share a buffer.
struct MeshFormatKey
{
    bool hasNormals = false;
    bool hasTexture = false;
    bool hasColor = false;
    bool reserved = false; ///< always false

    /// The key of a mesh, by which of its streams are not empty.
    ORVANE_API static MeshFormatKey Of(const Mesh& mesh);

    /// Lexicographic in the order of the fields, false before true.
    ORVANE_API friend bool operator<(const MeshFormatKey& a, const MeshFormatKey& b);
};

} // namespace OV
