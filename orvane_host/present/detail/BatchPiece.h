#pragma once

#include "orvane/renderdata/MeshFormatKey.h"

#include <cstddef>
#include <tuple>
#include <vector>

namespace OV
{

class Mesh;
class Transform;

} // namespace OV

namespace OV::Host
{

struct WorldBox;

} // namespace OV::Host

namespace OV::Host::Detail
{

/// What meshes of one material must share to be drawn together.
struct BatchKind
{
    MeshFormatKey streams;
    unsigned int meshFlags = 0; ///< those that the engine reads
    bool isMirrored = false;    ///< the transform turns right-handed into left-handed

    bool operator<(const BatchKind& other) const
    {
        return std::tie(streams, meshFlags, isMirrored) < std::tie(other.streams, other.meshFlags, other.isMirrored);
    }
    bool operator!=(const BatchKind& other) const { return *this < other || other < *this; }
};

/// Where the streams of a vertex lie, in floats from its position on; none at -1.
///
/// Of what has normals at most, all positions stand before all normals: where something is only shifted its
/// normals stay as they are, and are neither read nor written. Other streams stand vertex by vertex, since what
/// is drawn has one distance between vertices for all of them.
///
/// The number of a vertex's material takes no room where there are normals: it is the lowest byte of their third
/// number, which that changes by a part in 32,000 at most. Where there are none it is that of a number of its own.
struct BatchLayout
{
    /// @param vertices how many there are in all.
    BatchLayout(const MeshFormatKey& streams, std::size_t vertices, bool isOfSeveralMaterials);

    bool AreNormalsApart() const { return normal >= 0 && size == 3; }

    /// Of the byte that is the number of a vertex's material.
    int MaterialByte() const;

    int normal = -1;
    int material = -1; ///< the number that has it
    int texture = -1;
    int color = -1;
    int size = 3;   ///< from one vertex to the next
    int floats = 3; ///< that a vertex takes
};

/// By what texture coordinates are multiplied.
struct TextureFactors
{
    float u = 1.0f;
    float v = 1.0f;
};

/// Writes the vertices of a mesh as they are at a place: positions and normals are carried over in
/// double, the rest is copied.
/// @param place from the mesh's space to that of the batch.
/// @param out room for all of its vertices.
/// @return the box of the positions written.
WorldBox WriteVertices(const Mesh& mesh, const Transform& place, const TextureFactors& factors,
                       const BatchLayout& layout, float* out);

/// Writes the positions alone, where they stand one after another, at a place that neither turns nor scales.
/// @return their box.
WorldBox WriteShiftedPositions(const Mesh& mesh, const Transform& place, float* out);

/// Writes the number of the material into each of so many vertices, which are written.
void WriteMaterial(unsigned char number, std::size_t vertices, const BatchLayout& layout, float* out);

/// Whether a place neither turns nor scales.
bool IsShift(const Transform& place);

/// The box of a mesh at a place, around its vertices.
WorldBox BoxAt(const Mesh& mesh, const Transform& place);

/// A box that encloses another one at a place.
WorldBox BoxAt(const WorldBox& box, const Transform& place);

/// Whether the box that a mesh names encloses its vertices: a host may have set another.
bool IsBoxTrue(const Mesh& mesh);

/// Whether a mesh has a triangle, each index names a vertex, and each stream has one value for each.
bool IsSound(const Mesh& mesh);

} // namespace OV::Host::Detail
