#include "orvane/effects/AAEffectES20.h"

#include "orvane/effects/shaders/AAEffectES20.frag.h"
#include "orvane/effects/shaders/AAEffectES20.vert.h"

namespace OV
{

AAEffectES20::AAEffectES20(EffectCache* cache) : BaseAAES20(cache)
{
    Link("AA", Shaders::AAEffectES20Vert, Shaders::AAEffectES20Frag);
}

} // namespace OV
