#pragma once

namespace OV
{

class Material;

} // namespace OV

namespace OV::Host::Detail
{

/// Gives a material that was copied what copying leaves out, pixels among it, but for meshes, scene and
/// render data.
void CompleteCopy(const Material& from, Material& copy);

} // namespace OV::Host::Detail
