#pragma once

#include "host/FeatureEdges.h"
#include "host/detail/VertexWelder.h"

#include <array>
#include <cstdint>
#include <vector>

namespace OV::Host::Detail
{

/// Finds the feature edges of welded triangles.
class EdgeFinder
{
public:
    EdgeFinder(const VertexWelder& welded, float creaseDegrees);

    std::vector<FeatureEdge> Find();

private:
    /// One side of a triangle, or a piece of one, by the numbers of its points.
    struct Side
    {
        std::uint32_t low; ///< the smaller of the two
        std::uint32_t high;
        std::uint32_t face;
        std::uint32_t order; ///< among the pieces; they follow one another along each side
    };

    /// What a piece belongs to.
    struct PieceOrigin
    {
        std::uint32_t open; ///< which of the open sides
        std::uint32_t start;
        std::uint32_t end;
    };

    void CollectFaces();
    void CollectSides();
    void JudgeSides();
    void SplitOpenSides();
    void JudgePieces();
    void EmitPieces(const std::vector<bool>& kept);

    /// Whether faces that meet along their sides make an edge that is seen.
    template <class Iterator>
    bool IsFeature(Iterator first, Iterator last) const;

    /// Whether an edge between two points has been found already as that of several faces.
    bool IsEmitted(const Side& piece) const;

    /// Unit direction in the plane of a face, away from one of its sides.
    std::array<double, 3> Inward(const Side& side) const;
    double Height(const WeldedTriangle& triangle) const;
    void Emit(std::uint32_t start, std::uint32_t end);

    const VertexWelder& m_welded;
    double m_cosine;
    std::vector<WeldedTriangle> m_faces;
    std::vector<Side> m_sides;
    std::vector<Side> m_open;
    std::vector<Side> m_pieces;
    std::vector<PieceOrigin> m_origins;
    std::vector<FeatureEdge> m_found;
};

} // namespace OV::Host::Detail
