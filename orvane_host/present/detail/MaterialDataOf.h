#pragma once

#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshStyleES20.h"

#include <typeinfo>

namespace OV::Host::Detail
{

/// A style as the render data of a material; null for another one. Asked of each material in each frame.
inline const MaterialES20* MaterialDataOf(const MeshStyleES20& style)
{
    // The cast, which searches the classes, is for what derives.
    return typeid(style) == typeid(MaterialES20) ? static_cast<const MaterialES20*>(&style)
                                                 : dynamic_cast<const MaterialES20*>(&style);
}

} // namespace OV::Host::Detail
