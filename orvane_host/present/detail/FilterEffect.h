#pragma once

#include "orvane_host/present/detail/ScreenEffect.h"

#include <string>

namespace OV::Host::Detail
{

/// Smooths a captured picture along the edges in its luminance, as the engine's FXAAEffectES20 does, from
/// the pixels about each alone: where in a picture they lie, and in which tile of it, changes nothing.
class FilterEffect final : public ScreenEffect
{
public:
    /// Of the picture, in pixels; it is on texture unit 0.
    void SetSize(int width, int height);

    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;
    void Remove() override;

private:
    int m_width = 1;
    int m_height = 1;
};

} // namespace OV::Host::Detail
