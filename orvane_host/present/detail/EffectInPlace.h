#pragma once

#include "orvane/renderdata/RenderItemES20.h"
#include "orvane/renderdata/RenderPass.h"

#include <utility>
#include <vector>

namespace OV
{

class EffectES20;

} // namespace OV

namespace OV::Host::Detail
{

/// Puts an effect in the place of what materials draw a pass with, for the length of a scope.
class EffectInPlace
{
public:
    EffectInPlace(const std::vector<RenderItemES20>& items, RenderPass pass, EffectES20& effect);
    ~EffectInPlace();

    EffectInPlace(const EffectInPlace&) = delete;
    EffectInPlace& operator=(const EffectInPlace&) = delete;

private:
    std::vector<std::pair<EffectES20**, EffectES20*>> m_replaced;
};

} // namespace OV::Host::Detail
