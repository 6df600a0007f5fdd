#pragma once

#include "orvane_host/present/detail/ScreenEffect.h"

#include <glm/mat3x3.hpp>
#include <glm/vec2.hpp>

#include <string>

namespace OV::Host::Detail
{

/// The engine's sky (SkySettings), of which each pixel follows from its number in all of the picture: how high it
/// looks is not passed on from corners, which would round in another way in each part of a picture.
class DomeEffect final : public ScreenEffect
{
public:
    /// @param toRay from pixels of all of the picture and a 1 to a direction of world space.
    /// @param first the pixel at the lower left corner of the target.
    void Show(const glm::mat3& toRay, const glm::vec2& first);

    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;
    void Remove() override;
    void BindMeshUniforms(MeshNode* node) override;

private:
    glm::mat3 m_toRay{1.0f};
    glm::vec2 m_first{0.0f};
};

} // namespace OV::Host::Detail
