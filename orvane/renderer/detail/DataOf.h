#pragma once

#include "orvane/base/Object.h"

#include <typeinfo>

namespace OV::detail
{

/// Render data of a scene object as what the engine puts there. Null if there is none, and for
/// an object of the host's.
template <class Data>
Data* DataOf(Object* object)
{
    // The cast, which searches the classes, is for what derives.
    if (object && typeid(*object) == typeid(Data))
    {
        return static_cast<Data*>(object);
    }
    return dynamic_cast<Data*>(object);
}

} // namespace OV::detail
