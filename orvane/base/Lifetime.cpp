#include "orvane/base/Lifetime.h"

namespace OV
{

void Lifetime::End()
{
    // One at a time from the head: a notice may take other watches out of the list.
    while (m_first)
    {
        LifetimeWatch& watch = *m_first;
        const LifetimeWatch::Notice notice = watch.m_notice;
        void* const holder = watch.m_holder;
        watch.Stop();
        if (notice)
        {
            notice(holder);
        }
    }
}

void LifetimeWatch::Watch(Lifetime& life, Notice notice, void* holder)
{
    Stop();
    m_life = &life;
    m_notice = notice;
    m_holder = holder;
    m_next = life.m_first;
    m_link = &life.m_first;
    if (m_next)
    {
        m_next->m_link = &m_next;
    }
    life.m_first = this;
}

void LifetimeWatch::Stop()
{
    if (!m_life)
    {
        return;
    }
    *m_link = m_next;
    if (m_next)
    {
        m_next->m_link = m_link;
    }
    m_life = nullptr;
    m_next = nullptr;
    m_link = nullptr;
    m_notice = nullptr;
    m_holder = nullptr;
}

} // namespace OV
