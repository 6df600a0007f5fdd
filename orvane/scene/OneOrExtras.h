#pragma once

#include "orvane/scene/PointerSpan.h"

#include <cstdint>
#include <memory>

namespace OV
{

/// What nearly all objects of a class have, at most one pointer, or in the place of it what the
/// few others have. Takes the room of a pointer: a large scene has hundreds of thousands.
///
/// Extras is complete where Make, Delete and what they serve are called.
template <class T, class Extras>
class OneOrExtras
{
public:
    OneOrExtras() = default;
    OneOrExtras(const OneOrExtras&) = delete;
    OneOrExtras& operator=(const OneOrExtras&) = delete;

    bool HasExtras() const
    {
        return (Bits() & kIsExtras) != 0;
    }

    /// Null while there are none.
    Extras* GetExtras() const
    {
        return HasExtras() ? reinterpret_cast<Extras*>(Bits() & ~kIsExtras) : nullptr;
    }

    bool IsEmpty() const
    {
        return !m_pointer;
    }

    /// The pointer; null for none. Only without extras.
    T* GetPointer() const
    {
        return m_pointer;
    }

    /// The same as a run of one or none.
    PointerSpan<T> GetOne() const
    {
        return PointerSpan<T>(&m_pointer, m_pointer ? 1 : 0);
    }

    /// Only without extras.
    void SetOne(T* one)
    {
        m_pointer = one;
    }

    /// Puts extras in the place of the pointer, unless they are there.
    /// @param take called with new extras and the pointer, if there is one, which they take over.
    template <class Take>
    Extras& Make(Take take)
    {
        static_assert(alignof(Extras) > kIsExtras);
        if (Extras* const present = GetExtras())
        {
            return *present;
        }
        auto made = std::make_unique<Extras>();
        if (m_pointer)
        {
            take(*made, m_pointer);
        }
        m_pointer = reinterpret_cast<T*>(reinterpret_cast<std::uintptr_t>(made.get()) | kIsExtras);
        return *made.release();
    }

    /// Deletes extras; what a pointer names belongs to others.
    void Delete()
    {
        delete GetExtras();
        m_pointer = nullptr;
    }

private:
    /// A bit that no address has.
    static constexpr std::uintptr_t kIsExtras = 1;

    std::uintptr_t Bits() const
    {
        return reinterpret_cast<std::uintptr_t>(m_pointer);
    }

    T* m_pointer = nullptr;
};

} // namespace OV
