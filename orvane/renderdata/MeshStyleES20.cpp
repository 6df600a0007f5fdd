#include "orvane/renderdata/MeshStyleES20.h"

namespace OV
{

MeshStyleES20::~MeshStyleES20() = default;

} // namespace OV
