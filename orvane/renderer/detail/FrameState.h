#pragma once

namespace OV::Detail
{

/// Gives the state of GL that a frame depends on the value that it needs, as far as one call a
/// state does it: a host draws with GL of its own between two frames. What stays the host's to
/// leave alone is listed in docs/contract.md. The entry points must be loaded.
void SetFrameState();

} // namespace OV::Detail
