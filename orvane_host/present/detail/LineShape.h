#pragma once

#include <cstdint>
#include <vector>

namespace OV
{

class Mesh;

} // namespace OV

namespace OV::Host::Detail
{

/// How the segments of a line hang together.
class LineShape
{
public:
    /// Bits of what a segment has at its ends, as LineEffect has them.
    enum Joint : unsigned char
    {
        JointAtStart = 1,
        JointAtEnd = 2,
    };

    struct Segment
    {
        std::uint32_t point;  ///< where it starts; it ends at the next one
        unsigned char joints; ///< Joint
        bool goesOn;          ///< where the segment before it ends
    };

    LineShape() = default;

    /// Segments that end in one place are joined, whether or not they follow each other.
    explicit LineShape(const Mesh& line);

    const std::vector<Segment>& GetSegments() const { return m_segments; }

    /// Of the line when it was looked at, four vertices each.
    std::size_t CountPoints() const { return m_points; }

    /// What all segments have at their ends.
    /// @return false where they differ.
    bool HasSameJoints(unsigned char& joints) const;

private:
    std::vector<Segment> m_segments;
    std::size_t m_points = 0;
};

} // namespace OV::Host::Detail
