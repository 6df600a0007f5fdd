#include "orvane_host/present/detail/DrawnCasters.h"

#include <algorithm>

namespace OV::Host::Detail
{

namespace
{

/// How far on it is looked for where two lists are the same again: as many as move together side by side in them.
constexpr std::size_t kAhead = 256;

/// So many of all changed ones are looked at one by one: beyond, little of the maps stays.
constexpr std::size_t kMostChanged = 512;

void Append(std::vector<std::size_t>& numbers, std::size_t first, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
    {
        numbers.push_back(first + i);
    }
}

} // namespace

void DrawnCasters::Become(std::uint64_t layout, const std::vector<Print>& casters,
                          const std::function<SunView::Footprint(std::size_t)>& footprintOf)
{
    m_changed[0].clear();
    m_changed[1].clear();
    m_hasAllChanged = m_layout != layout || !Compare(casters);
    m_layout = layout;
    if (m_hasAllChanged)
    {
        m_footprints.resize(casters.size());
        for (std::size_t i = 0; i < casters.size(); ++i)
        {
            m_footprints[i] = footprintOf(i);
        }
        m_prints = casters;
        return;
    }
    NoteChanged(m_gone);
    if (m_gone != m_new)
    {
        // Those that stay move up or down.
        std::vector<SunView::Footprint> moved(casters.size());
        auto gone = m_gone.begin();
        auto added = m_new.begin();
        std::size_t from = 0;
        for (std::size_t i = 0; i < moved.size(); ++i)
        {
            if (added != m_new.end() && *added == i)
            {
                ++added;
                continue;
            }
            for (; gone != m_gone.end() && *gone == from; ++gone)
            {
                ++from;
            }
            moved[i] = m_footprints[from++];
        }
        m_footprints.swap(moved);
    }
    m_prints = casters;
    for (const std::size_t number : m_new)
    {
        m_footprints[number] = footprintOf(number);
    }
    NoteChanged(m_new);
}

void DrawnCasters::Forget()
{
    *this = DrawnCasters();
}

// What is drawn of casters that stay, in the order in which they were, is the same where none of the others reaches: how
// the lists are laid against each other is of no matter but for the time. Of solid casters the order would not count;
// that of glass does, in the last bit of what it lets through.
bool DrawnCasters::Compare(const std::vector<Print>& casters)
{
    m_gone.clear();
    m_new.clear();
    const std::vector<Print>& before = m_prints;
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < before.size() && j < casters.size())
    {
        if (before[i] == casters[j])
        {
            ++i;
            ++j;
            continue;
        }
        const auto isSame = [&](std::size_t a, std::size_t b) {
            return a < before.size() && b < casters.size() && before[a] == casters[b];
        };
        std::size_t gone = 0;
        std::size_t added = 0;
        for (std::size_t ahead = 1; ahead <= kAhead && gone + added == 0; ++ahead)
        {
            const bool isReplaced = isSame(i + ahead, j + ahead);
            gone = isReplaced || isSame(i + ahead, j) ? ahead : 0;
            added = isReplaced || (gone == 0 && isSame(i, j + ahead)) ? ahead : 0;
        }
        if (gone + added == 0)
        {
            break;
        }
        Append(m_gone, i, gone);
        Append(m_new, j, added);
        i += gone;
        j += added;
        if (m_gone.size() + m_new.size() > kMostChanged)
        {
            return false;
        }
    }
    // Whatever is left at the ends has no like.
    const std::size_t left = before.size() - i + casters.size() - j;
    if (m_gone.size() + m_new.size() + left > kMostChanged)
    {
        return false;
    }
    Append(m_gone, i, before.size() - i);
    Append(m_new, j, casters.size() - j);
    return true;
}

void DrawnCasters::NoteChanged(const Numbers& numbers)
{
    for (const std::size_t number : numbers)
    {
        m_changed[IsGlass(m_prints[number]) ? 1 : 0].push_back(m_footprints[number]);
    }
}

} // namespace OV::Host::Detail
