#pragma once

#include "orvane_host/present/detail/ScreenEffect.h"
#include "orvane/math/Color.h"
#include "orvane/math/Vector.h"

#include <glm/vec2.hpp>
#include <glm/vec4.hpp>

#include <string>

namespace OV::Host::Detail
{

/// A level ground over all of the screen: each pixel's ray is met with it, so that it ends nowhere
/// and no plane of the view cuts it.
class GroundEffect final : public ScreenEffect
{
public:
    /// A value in the middle of the picture and how it changes up to the right and the upper edge.
    struct OverScreen
    {
        Vector middle;
        Vector right;
        Vector up;
    };

    /// What is drawn. Places and directions are along the ground in x and y, from the middle of the
    /// model, and above the ground in z.
    struct Look
    {
        glm::vec2 first{0, 0}; ///< pixel of the picture at the lower left corner of the target
        glm::vec2 size{1, 1};  ///< of the picture, in pixels of the target
        OverScreen start;
        OverScreen ray; ///< as long as a unit along the line of sight
        Color color;            ///< alpha: 1 for a plain, 0 for shadows alone
        float reach = 1.0f;     ///< along the ground, to where half of the plain has faded
        glm::vec2 fog{0, 1};    ///< factor and offset: what is left at a distance
        Color fogColor;
        unsigned int shadow = 0; ///< texture, in red; 0 for none
        glm::vec4 shadowPlace{0, 0, 0, 0}; ///< factor and offset from the ground to the texture
        float shadowStrength = 0.0f;
        glm::vec4 depth{0, 1, 0, 1}; ///< a, b, c, d of the depth (a z + b) / (c z + d) at a distance z
    };

    void Show(const Look& look) { m_look = look; }

    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;

private:
    Look m_look;
};

} // namespace OV::Host::Detail
