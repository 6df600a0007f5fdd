#pragma once

#include "orvane/Export.h"

namespace OV
{

/// Root of everything that hangs on a scene object without the scene knowing what it is:
/// the GL side's render data, and what a host attaches for animation or collision.
///
/// The scene object that holds one owns it and deletes it through this destructor.
class ORVANE_API Object
{
public:
    virtual ~Object() = default;
};

} // namespace OV
