#include "orvane_host/geometry/detail/DepthRank.h"

#include "orvane/scene/Material.h"

#include <cmath>

namespace OV::Host::Detail
{

namespace
{

/// Of many more steps than there are.
constexpr float kMostUnits = 1e6f;

} // namespace

DepthOffset DepthRank::OffsetOf(const Material& material)
{
    return {(material.flags & MaterialFlagPolygonOffset) != 0, material.polygonOffsetFactor, material.polygonOffsetUnits};
}

void DepthRank::Give(Material& material, const DepthOffset& offset)
{
    material.polygonOffsetFactor = offset.factor;
    material.polygonOffsetUnits = offset.units;
    if (offset.isOn)
    {
        material.SetFlags(MaterialFlagPolygonOffset);
    }
    else
    {
        material.ClearFlags(MaterialFlagPolygonOffset);
    }
}

bool DepthRank::HasRoom(const DepthOffset& offset)
{
    return offset.isOn && offset.units > 0.0f && std::fmod(offset.units, Units) == RoomUnits;
}

int DepthRank::Of(const DepthOffset& offset)
{
    const bool isOwn = offset.isOn && offset.units > 0.0f && std::fmod(offset.units, Units) == 0.0f
        && offset.factor == offset.units / Units * Factor;
    // A host may have set any number.
    const bool isRank = (isOwn || HasRoom(offset)) && offset.units < kMostUnits;
    return isRank ? static_cast<int>(offset.units / Units) : 0;
}

DepthOffset DepthRank::Steps(int rank)
{
    const auto steps = static_cast<float>(rank);
    return {rank > 0, steps * Factor, steps * Units};
}

DepthOffset DepthRank::WithRoom(int rank, float factor, float units)
{
    const DepthOffset steps = Steps(rank);
    return {true, steps.factor + factor, steps.units + units};
}

} // namespace OV::Host::Detail
