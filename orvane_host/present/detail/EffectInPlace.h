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
    using Replaced = std::vector<std::pair<EffectES20**, EffectES20*>>;

    /// @param scratch where it is noted what was replaced, so that who draws each frame allocates
    ///        nothing; none for a list of its own.
    EffectInPlace(const std::vector<RenderItemES20>& items, RenderPass pass, EffectES20& effect,
                  Replaced* scratch = nullptr);
    ~EffectInPlace();

    EffectInPlace(const EffectInPlace&) = delete;
    EffectInPlace& operator=(const EffectInPlace&) = delete;

private:
    Replaced m_own;
    Replaced& m_replaced;
};

} // namespace OV::Host::Detail
