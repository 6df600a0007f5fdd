#pragma once

#include "orvane_host/present/detail/HoleEffect.h"

#include <glm/mat4x4.hpp>

namespace OV::Host::Detail
{

/// Draws what casts shadows as the sun sees it, from either side: solid surfaces for their depth,
/// glass for what it lets through. What opacity maps, see-through texels and clip planes leave out
/// of the looks is left out here.
class CasterEffect final : public HoleEffect
{
public:
    CasterEffect();

    /// World space to the sun's clip space, from the next mesh on.
    void SetView(const glm::dmat4& worldToClip) { m_worldToClip = worldToClip; }

    /// Whether glass is drawn: its length along the light as a colour, what it lets through as alpha.
    void DrawGlass(bool glass) { m_glass = glass; }

    /// Whether clip planes take what they cut out of the light.
    void Clip(bool clip);

    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;
    void BindMeshUniforms(MeshNode* node) override;

private:
    glm::dmat4 m_worldToClip{1.0};
    bool m_glass = false;
    bool m_clip = true;
};

} // namespace OV::Host::Detail
