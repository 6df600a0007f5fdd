#pragma once

namespace OV
{

/// How a captured frame reaches the screen.
enum AAMode : int
{
    AAModeNone = 0,         ///< captured at the device pixel ratio, not filtered
    AAModeMSAA = 1,         ///< not captured: multisampling is left to the host's buffers
    AAModeFXAA = 2,         ///< captured at ratio 1 and filtered on the way out
    AAModeSupersampling = 3 ///< captured at a ratio of at least 2 and reduced on the way out
};

} // namespace OV
