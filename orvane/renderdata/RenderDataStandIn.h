#pragma once

#include "orvane/Export.h"
#include "orvane/base/Object.h"

namespace OV
{

/// Hangs on a mesh in the place of render data, for whoever wants to hear by its death that the
/// geometry is described anew. Whoever draws the mesh replaces it, as if nothing were there.
class ORVANE_API RenderDataStandIn : public Object
{
};

} // namespace OV
