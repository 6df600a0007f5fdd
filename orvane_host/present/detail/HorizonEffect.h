#pragma once

#include "orvane_host/present/detail/ScreenEffect.h"

#include <glm/vec2.hpp>
#include <glm/vec4.hpp>

namespace OV::Host::Detail
{

/// Ambient occlusion over all of the screen, in two runs: how much each pixel sees hidden, and from it
/// what to multiply the picture by.
class HorizonEffect final : public ScreenEffect
{
public:
    /// As the uniforms of HorizonEffect.frag.
    struct Values
    {
        unsigned int depth = 0; ///< textures
        unsigned int faces = 0;
        unsigned int hidden = 0; ///< of the first run, for the second; 0 in the first
        bool perspective = false;
        glm::vec2 first{0, 0};
        glm::vec2 size{1, 1};
        float finer = 1.0f;
        float apart = 1.0f;
        glm::vec2 hiddenSize{1, 1};
        glm::vec4 view{1, 1, 0, 0};
        glm::vec2 distance{1, 0};
        float precision = 0.0f;
        float radius = 1.0f;
        float reach = 1.0f;
        unsigned int farDepth = 0; ///< texture; 0 where all is near
        glm::vec2 farSize{1, 1};
        glm::vec4 farView{1, 1, 0, 0};
        glm::vec2 toFar{1, 1};
        float nearReach = 1.0f;
        float strength = 1.0f;
        glm::vec2 fog{0, 1};
    };

    Values values;

    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;
    void Remove() override;
};

} // namespace OV::Host::Detail
