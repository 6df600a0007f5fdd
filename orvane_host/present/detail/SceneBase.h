#pragma once

namespace OV
{

class Scene;

} // namespace OV

namespace OV::Host::Detail
{

/// Whether a scene has a root and a camera, which last until a host deletes them.
bool HasBase(const Scene& scene);

/// Gives a scene what it lacks of them, as it had them at first.
void GiveBase(Scene& scene);

} // namespace OV::Host::Detail
