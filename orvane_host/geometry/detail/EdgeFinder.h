#pragma once

#include "orvane_host/geometry/FeatureEdges.h"
#include "orvane_host/geometry/detail/VertexWelder.h"

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
        std::uint32_t order; ///< among the pieces, from 1; they follow one another along each side
        bool rising;         ///< whether the face is wound from low to high here
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

    /// How faces meet along their sides.
    enum class Meeting
    {
        Open,   ///< they lie to one side only
        Smooth, ///< they go straight on
        Sharp,
    };

    /// Faces at one side of an edge that lie on each other.
    struct Sheet
    {
        std::array<double, 3> inward;
        bool hasRising;
        bool hasFalling;
    };

    Meeting Judge(const Side* first, const Side* last);
    void CollectSheets(const Side* first, const Side* last);

    /// Whether an edge between two points has been found already as that of several faces.
    bool IsEmitted(const Side& piece);

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
    std::vector<Sheet> m_sheets;
    std::vector<FeatureEdge> m_found;
};

} // namespace OV::Host::Detail
