#pragma once

#include "orvane/Export.h"

namespace OV
{

/// Marks the end of a group of GL calls, as a place to stop at when hunting a GL error.
///
/// It does nothing, in every build.
ORVANE_API void OV_GL_CHECKPOINT();

}  // namespace OV
