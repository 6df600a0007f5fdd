#include "orvane/base/RenderCapabilities.h"

namespace OV
{

RenderCapabilities::~RenderCapabilities() = default;

}  // namespace OV
