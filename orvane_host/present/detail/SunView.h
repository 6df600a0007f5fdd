#pragma once

#include <glm/mat4x4.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <array>
#include <cstddef>
#include <vector>

namespace OV::Host::Detail
{

/// A box anywhere in world space: its middle and half of each of its three edges.
struct CastBox
{
    glm::dvec3 middle{0.0};
    std::array<glm::dvec3, 3> halves{};
};

/// Where the sun's light is followed to: the parts of a map of depths seen from the sun, each laid
/// over what is seen of the scene at some distance from the eye, nearest first.
///
/// Each part is a rectangle of as many texels as it takes for them to be as fine against the pixels of
/// the picture as is wanted, up to a limit. Sizes of texels are steps of a ladder, and texels lie on a grid about
/// the origin of the world, so that the same texels come again while the eye moves; they stay where they are in the map
/// until the eye has gone as far as a part has room beside it. Where one part of all that casts shadows is fine enough,
/// it is the only one, and stays as it is. Lengths along the light are counted from what lies nearest to the sun, 0, to
/// what lies farthest from it, 1.
class SunView
{
public:
    static constexpr int MostTiles = 8;

    /// Where a box casts: a rectangle across the light, in the world's units.
    struct Footprint
    {
        glm::dvec2 from{0.0};
        glm::dvec2 to{0.0};

        bool Meets(const Footprint& other) const
        {
            return from.x <= other.to.x && from.y <= other.to.y && other.from.x <= to.x && other.from.y <= to.y;
        }
    };

    /// What of the world a part of the map is of.
    struct Tile
    {
        /// World space to texels of the map across and up, and to the length along the light. The
        /// last row is that of a point.
        glm::dmat4 toMap{1.0};
        /// World space to the clip space of the part's cell alone.
        glm::dmat4 toClip{1.0};
        /// Texels of the map: first and behind the last, across and up.
        glm::ivec2 low{0};
        glm::ivec2 high{0};
        /// The same of what the map holds for the part, among which these lie.
        glm::ivec2 cellLow{0};
        glm::ivec2 cellHigh{0};
        /// Edges of a texel, in lengths along the light.
        glm::dvec2 step{0.0};
        /// Whatever casts outside casts nothing into it.
        Footprint area;
    };

    /// Which part a distance from the eye is of: `perOctave` times its logarithm to the base 2, and `atOne`, rounded
    /// down. There is none for what comes out below 0 or above the last part, where nothing is shadowed.
    struct Slices
    {
        double perOctave = 0.0;
        double atOne = 0.0;
        int firstCell = 0; ///< of the map, which the first part has; the others have those that follow, around
    };

    /// What the map is laid out for.
    struct Request
    {
        glm::dvec3 towardSun{0.0, 1.0, 0.0}; ///< unit
        glm::dvec3 up{0.0, 1.0, 0.0};        ///< unit, of the ground
        glm::dmat4 worldToClip{1.0};         ///< of the eye
        bool perspective = true;
        glm::ivec2 pixels{1};   ///< of the picture
        double texel = 1.0;     ///< edge of one in pixels of the picture, at most where the map is large enough
        double texelOfWhole = 1.0; ///< the same where one part of all that casts can have it; not above `texel`
        int mostTexels = 4096;  ///< of a side of a part that is alone, of which the map has at most two
        int mostParts = MostTiles; ///< at least 1, which fewer than 4 come to
        glm::dvec3 low{0.0};    ///< of the box of all that may catch shadows
        glm::dvec3 high{0.0};
    };

    /// @param casters may be empty: then there are no parts.
    SunView(const Request& request, const std::vector<CastBox>& casters);

    /// The nearest first.
    const std::vector<Tile>& GetTiles() const { return m_tiles; }

    const Slices& GetSlices() const { return m_slices; }

    /// Whether the map has room for several parts, and how many.
    bool HasParts() const { return m_cells > 1; }
    int CountCells() const { return m_cells; }

    /// Texels of the map; 0 without parts.
    glm::ivec2 GetSize() const { return m_size; }

    Footprint FootprintOf(const CastBox& box) const;

    /// World space to across, up and towards the sun: unit and upright to each other.
    const std::array<glm::dvec3, 3>& GetAxes() const { return m_axes; }

    /// World space to a length along the light: toward the sun, nothing casts from farther off than that. It ends at
    /// that pair of faces of the box about all casters that light takes the shortest way between.
    const glm::dvec4& GetReach() const { return m_reach; }

    /// The world's units of the length 1 along the light.
    double GetRange() const { return m_farthest - m_nearest; }

    /// The longer edge of the finest texels that parts have or may have while the eye moves, in lengths along the light.
    double GetFinestStep() const { return m_finestTexel / GetRange(); }

private:
    /// Across the light.
    struct Area
    {
        glm::dvec2 from{0.0};
        glm::dvec2 to{0.0};
        glm::dvec2 texel{0.0}; ///< edges
        glm::dvec2 first{0.0}; ///< texel of the grid, with what filters may read around
        glm::ivec2 size{0};    ///< in texels
    };

    struct Sight;

    /// One part of all that casts, if that is fine enough.
    /// @param wanted edges of a texel at the distance 1.
    bool HoldAll(const Sight& sight, const glm::dvec2& wanted);
    /// One of what is seen, if that is fine enough or there may be no more; none where nothing is.
    bool HoldWhatIsSeen(const Sight& sight);
    /// @param cell texels of a side that each part has for itself.
    void HoldByDistance(const Sight& sight, int cell);

    void Bound(const std::vector<CastBox>& casters, const Request& request);
    void FindReach(const std::vector<CastBox>& casters);
    /// Shares of their edges, across and up, that texels may have for the light not to draw them out on a plane.
    glm::dvec2 FinerOn(const glm::dvec3& normal) const;
    static bool IsEmpty(const Area& area) { return !(area.from.x < area.to.x); }
    /// Of what lies between two distances from the eye; empty where nothing does.
    Area AreaOf(const Sight& sight, double start, double end) const;
    /// @param most texels of a side.
    /// @param grid in texels, that the area is made to begin and end on.
    /// @return whether it is as fine as wanted.
    static bool Divide(Area& area, const glm::dvec2& wanted, int most, int grid = 1);
    /// @param cell texels that each has for itself.
    void Place(const std::vector<Area>& areas, const glm::ivec2& cell);
    Tile MakeTile(const glm::ivec2& place, const glm::ivec2& cell, const Area& area) const;

    std::array<glm::dvec3, 3> m_axes{};
    glm::dvec2 m_from{0.0}; ///< of all casters, across the light
    glm::dvec2 m_to{0.0};
    double m_nearest = 0.0; ///< to the sun: minus the coordinate along the third axis
    double m_farthest = 0.0;
    glm::dvec4 m_reach{0.0};
    std::vector<Tile> m_tiles;
    Slices m_slices;
    int m_cells = 1;
    glm::ivec2 m_size{0};
    double m_finestTexel = 0.0; ///< its longer edge
};

} // namespace OV::Host::Detail
