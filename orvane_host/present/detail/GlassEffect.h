#pragma once

#include "orvane_host/present/detail/ScreenEffect.h"

#include <string>

namespace OV::Host::Detail
{

/// Puts layers of glass together, over all of the target. How it is blended is the caller's.
class GlassEffect final : public ScreenEffect
{
public:
    enum Step : unsigned
    {
        Layer = 1, ///< a layer: its colour by its opacity, and the opacity
        Sum = 2,   ///< what was summed: its mean colour by its opacity, and the opacity
        Lay = 4,   ///< what was put together: its colour, and what it lets through
    };

    /// @param texture what is read.
    /// @param width, height of what is drawn into.
    void Show(Step step, unsigned int texture, int width, int height);

    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;

private:
    Step m_step = Layer;
    unsigned int m_texture = 0;
    float m_pixel[2] = {1.0f, 1.0f};
};

} // namespace OV::Host::Detail
