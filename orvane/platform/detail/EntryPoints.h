#pragma once

namespace OV::Platform
{

/// Loads the GL functions past version 1.1, unless that is done already, by us or by the
/// host. Needs a current GL context the first time; afterwards it costs one comparison.
/// @return false when they cannot be called: no context is current.
bool LoadEntryPoints();

}  // namespace OV::Platform
