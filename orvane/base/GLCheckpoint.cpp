#include "orvane/base/GLCheckpoint.h"

namespace OV
{

void OV_GL_CHECKPOINT()
{
}

}  // namespace OV
