#pragma once

#include "orvane/effects/DepthIdPassEffectES20.h"

#include <string>

namespace OV::Host::Detail
{

/// Paints surfaces in how their depth changes from pixel to pixel, for LineEffect: a face that is
/// narrower than a pixel has a slope too.
class SlopeEffect final : public DepthIdPassEffectES20
{
public:
    SlopeEffect();

    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;
};

} // namespace OV::Host::Detail
