#include "orvane/base/detail/Walk.h"

#include <unordered_set>

namespace OV::detail
{

struct Walk::Losses
{
    std::unordered_set<const void*> objects;
};

Walk::Thread& Walk::ThisThread()
{
    thread_local Thread thread{};
    return thread;
}

Walk::Walk(const void* subject, Kind kind) :
    m_thread(ThisThread()), m_outer(m_thread.innermost), m_subject(subject), m_kind(kind)
{
    m_thread.innermost = this;
}

Walk::~Walk()
{
    m_thread.innermost = m_outer;
    if (!m_outer)
    {
        delete std::exchange(m_thread.losses, nullptr);
        m_thread.lossesUnknown = false;
        if (m_thread.first && !m_thread.settling)
        {
            Settle();
        }
    }
}

void Walk::Settle()
{
    // What is carried out may walk itself, and postpone: that comes last.
    m_thread.settling = true;
    while (m_thread.first)
    {
        const std::unique_ptr<Postponed> call(m_thread.first);
        m_thread.first = call->next;
        try
        {
            call->Call();
        }
        catch (...)
        {
            // Nobody is left to whom a host's exception would mean anything.
        }
    }
    m_thread.settling = false;
}

bool Walk::IsRunning()
{
    return ThisThread().innermost != nullptr;
}

bool Walk::HaveLosses()
{
    const Thread& thread = ThisThread();
    return thread.innermost && (thread.losses || thread.lossesUnknown);
}

bool Walk::IsDrawing()
{
    for (const Walk* walk = ThisThread().innermost; walk; walk = walk->m_outer)
    {
        if (walk->m_kind == Draw)
        {
            return true;
        }
    }
    return false;
}

bool Walk::IsOn(const void* subject, unsigned kinds)
{
    for (const Walk* walk = ThisThread().innermost; walk; walk = walk->m_outer)
    {
        if (walk->m_subject == subject && (walk->m_kind & kinds) != 0)
        {
            return true;
        }
    }
    return false;
}

bool Walk::IsAmongLosses(const void* object) const
{
    return m_thread.lossesUnknown || m_thread.losses->objects.count(object) != 0;
}

void Walk::Withdraw(const void* owner)
{
    for (Postponed** link = &ThisThread().first; *link;)
    {
        Postponed* const call = *link;
        if (call->owner == owner || call->other == owner)
        {
            *link = call->next;
            delete call;
        }
        else
        {
            link = &call->next;
        }
    }
}

void Walk::Tell(const void* object)
{
    Withdraw(object);
    Thread& thread = ThisThread();
    if (!thread.innermost)
    {
        return;
    }
    try
    {
        if (!thread.losses)
        {
            thread.losses = new Losses;
        }
        thread.losses->objects.insert(object);
    }
    catch (const std::bad_alloc&)
    {
        thread.lossesUnknown = true;
    }
}

void Walk::Append(Postponed* call)
{
    Postponed** link = &ThisThread().first;
    while (*link)
    {
        link = &(*link)->next;
    }
    *link = call;
}

bool Walk::IsPostponed(const void* owner)
{
    for (const Postponed* call = ThisThread().first; call; call = call->next)
    {
        if (call->owner == owner)
        {
            return true;
        }
    }
    return false;
}

} // namespace OV::detail
