#pragma once

#include "orvane/base/Object.h"
#include "orvane/base/detail/Walk.h"

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

/// As ReplaceObject, where a walk that draws may stand on the old object.
inline void ReplaceDrawnObject(std::unique_ptr<Object>& slot, Object* data)
{
    Object* const old = slot.release();
    Walk::DiscardDrawn(std::unique_ptr<Object>(old));
    slot.reset(data == old ? nullptr : data);
}

} // namespace OV::detail
