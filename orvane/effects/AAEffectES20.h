#pragma once

#include "orvane/Export.h"
#include "orvane/effects/BaseAAES20.h"

namespace OV
{

/// Draws the captured picture as it is; a larger one is reduced by the texture's own filter. The
/// captured alpha does not reach the screen.
class ORVANE_API AAEffectES20 : public BaseAAES20
{
public:
    /// Links its program. GL.
    explicit AAEffectES20(EffectCache* cache);
};

} // namespace OV
