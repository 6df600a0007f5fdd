#pragma once

#include <memory>
#include <new>
#include <utility>

namespace OV::detail
{

/// An operation that goes over scene objects and calls the host on the way, while it runs.
///
/// Such a call may edit what is gone over. Engine operations that delete leave that to the end
/// of the outermost walk of the thread, by Postpone and Discard. What a host deletes itself is
/// gone at once; the destructors tell, and the walks ask.
///
/// Without a host that edits, a walk allocates nothing.
class Walk
{
public:
    /// Bits: what is done to the subject.
    enum Kind : unsigned
    {
        Update = 0x01,
        UpdateLayer = 0x02, ///< the part of an update that layers alone have
        Draw = 0x04,
        Suspend = 0x08,
        Resume = 0x10,
        Other = 0x20,
        Any = 0x3F,
    };

    /// @param subject what is gone over; for comparison only.
    Walk(const void* subject, Kind kind);

    /// The outermost walk ends with what was postponed.
    ~Walk();

    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;

    static bool IsRunning();

    /// HasLosses of whichever walk on this thread is running; false where none is.
    static bool HaveLosses();

    /// Whether any walk on this thread draws.
    static bool IsDrawing();

    /// Whether one of these kinds of walk over the subject is running.
    static bool IsOn(const void* subject, unsigned kinds);

    /// Whether anything at all has died since the outermost walk began.
    bool HasLosses() const { return m_thread.losses != nullptr || m_thread.lossesUnknown; }

    /// Whether this died since then. Says yes to all where there is no memory to tell.
    bool IsGone(const void* object) const { return HasLosses() && IsAmongLosses(object); }

    /// Said by destructors. Takes back what was postponed for the object.
    static void Tell(const void* object);

    /// Calls the function when the outermost walk ends, unless the owner or the other one dies
    /// before. For use while a walk is running.
    template <class Function>
    static void Postpone(const void* owner, const void* other, Function function)
    {
        Append(new (std::nothrow) PostponedCall<Function>(owner, other, std::move(function)));
    }

    /// Takes back what is postponed for this owner.
    static void Withdraw(const void* owner);

    /// Whether something is postponed for this owner.
    static bool IsPostponed(const void* owner);

    /// Deletes the object when the outermost walk ends, at once if there is none.
    template <class T>
    static void Discard(std::unique_ptr<T> object)
    {
        if (!IsRunning())
        {
            object.reset();
        }
        else if (T* const kept = object.release())
        {
            Postpone(kept, nullptr, [kept] { delete kept; });
        }
    }

    /// As Discard, for what only a walk that draws needs.
    template <class T>
    static void DiscardDrawn(std::unique_ptr<T> object)
    {
        if (IsDrawing())
        {
            Discard(std::move(object));
        }
    }

private:
    struct Postponed
    {
        Postponed(const void* ownerOfCall, const void* otherOfCall) : owner(ownerOfCall), other(otherOfCall) {}
        virtual ~Postponed() = default;
        virtual void Call() = 0;

        const void* owner;
        const void* other;
        Postponed* next = nullptr;
    };

    template <class Function>
    struct PostponedCall : Postponed
    {
        PostponedCall(const void* ownerOfCall, const void* otherOfCall, Function&& called) :
            Postponed(ownerOfCall, otherOfCall), function(std::move(called))
        {
        }

        void Call() override { function(); }

        Function function;
    };

    struct Losses;

    /// Of one thread. Plain data, which needs no construction.
    struct Thread
    {
        Walk* innermost;
        Postponed* first;
        Losses* losses;
        bool lossesUnknown; ///< there was no memory to write a loss down
        bool settling;  ///< what was postponed is being carried out
    };

    static Thread& ThisThread();

    /// Null, for want of memory, is left out: what would be deleted leaks.
    static void Append(Postponed* call);

    bool IsAmongLosses(const void* object) const;
    void Settle();

    Thread& m_thread;
    Walk* m_outer;
    const void* m_subject;
    Kind m_kind;
};

} // namespace OV::detail
