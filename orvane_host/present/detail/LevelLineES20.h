#pragma once

#include "orvane_host/present/detail/LineShape.h"
#include "orvane/renderdata/LineES20.h"

#include <cstdint>
#include <optional>

namespace OV::Host::Detail
{

/// Render data of a line that keeps its depth.
///
/// The engine's own pulls a line towards the eye by its slope in depth. A line that is seen nearly
/// end-on would so come through the wall before it, as a spot.
class LevelLineES20 : public LineES20
{
public:
    LevelLineES20(Line* sceneLine, SharedBufferPool* pool);

    void Render(EffectES20* effect, const std::vector<MeshNode*>& nodes, bool specificNode) override;

    /// Worked out when it is asked for first.
    const LineShape& GetShape();

    /// What all its segments have at their ends (LineShape::Joint); none where they differ.
    std::optional<unsigned char> GetJoints();

    /// Of no other line of the process.
    std::uint64_t GetNumber() const { return m_number; }

private:
    std::optional<LineShape> m_shape;
    std::optional<unsigned char> m_joints;
    std::uint64_t m_number;
};

} // namespace OV::Host::Detail
