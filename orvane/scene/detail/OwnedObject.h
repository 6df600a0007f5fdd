#pragma once

#include "orvane/base/Object.h"

#include <memory>

namespace OV::detail
{

/// Puts a new object into an owning slot. The slot is empty while the old object dies, which
/// may look back at the slot's holder. Given its own object, that dies and the slot ends empty.
inline void ReplaceObject(std::unique_ptr<Object>& slot, Object* data)
{
    Object* const old = slot.release();
    delete old;
    slot.reset(data == old ? nullptr : data);
}

} // namespace OV::detail
