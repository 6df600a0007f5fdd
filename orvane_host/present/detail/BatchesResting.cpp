// What moves on is drawn by itself, and comes back when it has rested.

#include "orvane_host/present/detail/Batches.h"

#include <cstddef>
#include <utility>

namespace OV::Host::Detail
{

void Batches::SetMovesOn(Member& member, bool movesOn)
{
    m_movesOnCount += static_cast<std::size_t>(movesOn) - static_cast<std::size_t>(member.movesOn);
    member.movesOn = movesOn;
    m_isDeaf = m_isDeaf && movesOn;
}

bool Batches::DoAllMoveOn() const
{
    return m_movesOnCount == m_members.size() - m_freeMembers.size();
}

void Batches::ListenOrNot()
{
    // While all move, looking each up to note that costs more than all else that is done about them. With the few
    // that rest among them nothing is lost. What moves may also be nodes that show nothing, which is seen now and
    // then.
    const std::size_t moved = std::exchange(m_movedCount, 0);
    m_deafEnd = m_wasDeaf ? m_deafEnd : m_frame + kDeafFor;
    m_isDeaf = moved > 0 && DoAllMoveOn() && 8 * moved >= 7 * m_movesOnCount && m_frame < m_deafEnd;
    const bool wasDeaf = std::exchange(m_wasDeaf, m_isDeaf);
    if (!wasDeaf || m_isDeaf)
    {
        return;
    }
    for (const Member& member : m_members)
    {
        if (member.movesOn)
        {
            m_loose[member.loose].due = m_frame + (kRest << member.losses);
        }
    }
}

void Batches::Stir(Index index)
{
    LooseOf(index).due = m_frame + (kRest << m_members[index].losses);
    LeaveTree(m_members[index]);
    Queue(index);
}

void Batches::Queue(Index index)
{
    Member& member = m_members[index];
    if (!member.isQueued)
    {
        member.isQueued = true;
        m_resting.emplace_back(m_frame + kRest, index);
    }
}

void Batches::Rest(Index index, unsigned int frames)
{
    LooseOf(index).due = m_frame + frames;
    Queue(index);
}

bool Batches::HasRested(const Member& member) const
{
    return member.loose == kNone || m_loose[member.loose].due <= m_frame;
}

void Batches::MakeRested(Index index)
{
    Member& member = m_members[index];
    const BatchKind kind = KindOf(member);
    if (member.batch && kind != member.batch->GetKind())
    {
        LeaveBatch(member);
    }
    if (!member.isRested)
    {
        member.isRested = true;
        member.group->rested[kind].push_back(index);
    }
    LookAtRested(member);
}

void Batches::LookAtRested(const Member& member)
{
    if (member.isRested && member.group)
    {
        member.group->isRestedDue = true;
    }
}

void Batches::WakeRested()
{
    // What rested since lies in no cache any more. Each step reads what the one before has asked for.
    constexpr std::size_t forMember = 8;
    constexpr std::size_t forLoose = 4;
    while (!m_resting.empty() && m_resting.front().first <= m_frame)
    {
        if (m_resting.size() > forMember)
        {
            __builtin_prefetch(&m_members[m_resting[forMember].second]);
            const Index loose = m_members[m_resting[forLoose].second].loose;
            if (loose != kNone)
            {
                __builtin_prefetch(&m_loose[loose]);
            }
        }
        const Index index = m_resting.front().second;
        m_resting.pop_front();
        Member& member = m_members[index];
        if (member.isGone || !member.isQueued)
        {
            continue;
        }
        if (!HasRested(member))
        {
            m_resting.emplace_back(m_frame + kRest, index);
            continue;
        }
        member.isQueued = false;
        SetMovesOn(member, false);
        if (!member.group || member.isFresh)
        {
            if (!member.isSingle)
            {
                FreeLoose(member);
                continue;
            }
        }
        else if (CanBeTogether(member))
        {
            MakeRested(index);
            continue;
        }
        else
        {
            LeaveBatch(member);
        }
        if (StandsAlone(member))
        {
            PutIntoTree(index);
        }
    }
}

} // namespace OV::Host::Detail
