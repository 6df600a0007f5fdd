#pragma once

#include "orvane/renderdata/LineES20.h"

namespace OV::Host::Detail
{

/// Render data of a line that keeps its depth.
///
/// The engine's own pulls a line towards the eye by its slope in depth. A line that is seen nearly
/// end-on would so come through the wall before it, as a spot.
class LevelLineES20 : public LineES20
{
public:
    using LineES20::LineES20;

    void Render(EffectES20* effect, const std::vector<MeshNode*>& nodes, bool specificNode) override;
};

} // namespace OV::Host::Detail
