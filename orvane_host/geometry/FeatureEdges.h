#pragma once

#include "orvane/math/Vector.h"

#include <cstddef>
#include <vector>

namespace OV
{

class LineStyle;
class Material;
class RawMesh;
class Scene;

} // namespace OV

namespace OV::Host
{

/// A straight edge between two points, in the space of what it was found in.
struct FeatureEdge
{
    Vector start;
    Vector end;
};

/// The edges of a surface that a drawing of it shows: where it bends sharply, where it ends, and
/// where more than two faces meet.
///
/// Vertices that lie together count as one, whatever their normals and texture coordinates. An
/// edge whose other side is made of several shorter ones (a T-junction) is compared piece by
/// piece, so that a flat wall stays empty. Two faces back to back between others, as where solids
/// touch, are passed over, and triangles that are thinner than the welding, given twice or not
/// finite count for nothing. The same input gives the same edges in the same order.
class FeatureEdges
{
public:
    /// The usual limit, in degrees: what bends less is meant to be round.
    static constexpr float UsualCrease = 30.0f;

    /// Finds the edges of meshes of one space, each edge once over all of them.
    /// @param creaseDegrees how far neighbours may turn from each other and still be one face,
    ///        0 to 180; at 180 only the edges of what is open are left.
    static std::vector<FeatureEdge> Find(const std::vector<const RawMesh*>& parts,
                                         float creaseDegrees = UsualCrease);
    static std::vector<FeatureEdge> Find(const RawMesh& mesh, float creaseDegrees = UsualCrease);

    /// Gives every mesh node of a scene the edges of its meshes as lines of a style, which the
    /// scene owns. Nodes with the same geometry share the lines; what is drawn as points has none.
    /// @param style should be in the scene.
    /// @return the number of segments, those of each node counted.
    static std::size_t AddTo(Scene& scene, LineStyle& style, float creaseDegrees = UsualCrease);

    /// Moves the faces of a scene back as far as their slope makes up for half a pixel, so that
    /// lines on them are seen at any view: in full where they bound what is behind them, in inner
    /// corners at least in the middle. For lines above 2 pixels faces are moved less, since wide
    /// ones come through what is before them soon enough, and above 3.4 not at all.
    /// @param lineWidth in pixels of the picture, of a line in all.
    /// @param scale pixels drawn along an edge of each, as with supersampling.
    static void MakeRoom(Scene& scene, float lineWidth, float scale = 1.0f);

    /// Whether the faces of a material are moved back by MakeRoom.
    static bool HasRoom(const Material& material);
};

} // namespace OV::Host
