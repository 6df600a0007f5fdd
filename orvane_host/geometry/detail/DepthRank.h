#pragma once

namespace OV
{

class Material;

} // namespace OV

namespace OV::Host::Detail
{

/// A polygon offset, and whether it is in force.
struct DepthOffset
{
    bool isOn = false;
    float factor = 0.0f;
    float units = 0.0f;
};

/// How far back a material's surfaces stand among those in one plane with them, kept as a polygon offset of so
/// many steps.
///
/// A step is more than what the depths in one plane may differ by, for which they fight: the rounding of corners to
/// a fraction of a pixel, which counts with the slope, and that of the depth itself.
struct DepthRank
{
    static constexpr float Factor = 0.0625f;
    static constexpr float Units = 8.0f;

    /// What room for lines comes with, besides its factor. No round number, by which it is told from an offset that
    /// a host has set, and less than a step.
    static constexpr float RoomUnits = 4.0625f;

    static DepthOffset OffsetOf(const Material& material);
    static void Give(Material& material, const DepthOffset& offset);

    static bool HasRoom(const DepthOffset& offset);

    /// The number of steps, room for lines apart; 0 for an offset of another kind.
    static int Of(const DepthOffset& offset);

    /// The offset of a number of steps, 0 for none.
    static DepthOffset Steps(int rank);

    /// The same with room for lines.
    static DepthOffset WithRoom(int rank, float factor, float units);
};

} // namespace OV::Host::Detail
