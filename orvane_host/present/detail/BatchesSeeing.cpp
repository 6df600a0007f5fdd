// What a view sees of what is drawn by itself.

#include "orvane_host/present/detail/Batches.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <cstring>

namespace OV::Host::Detail
{

namespace
{

bool IsTooSmall(const WorldBox& box, const ViewVolume& view, float leastShare)
{
    if (!(leastShare > 0.0f))
    {
        return false;
    }
    Vector size;
    size.Subtract(box.high, box.low);
    Vector middle;
    middle.Add(box.low, box.high);
    middle.Scale(0.5f);
    return view.ShareOfHeight(middle, size.Magnitude()) < leastShare;
}

} // namespace

void Batches::Look(const ViewVolume& view, const Matrix& worldToClip, float leastShare)
{
    if (m_lookShare != leastShare || std::memcmp(m_lookMatrix.m, worldToClip.m, sizeof(worldToClip.m)) != 0)
    {
        m_lookMatrix = worldToClip;
        m_lookShare = leastShare;
        ++m_look;
        m_treeHolds = false;
    }
    if (m_treeHolds)
    {
        return;
    }
    m_treeHolds = true;
    ++m_treeLook;
    m_tree.Collect(view, [&](Index index) {
        const Member& member = m_members[index];
        Loose& loose = m_loose[member.loose];
        if (!IsTooSmall(m_tree.GetBox(loose.leaf), view, leastShare))
        {
            loose.seenLook = m_treeLook;
            member.group->seenLook = m_treeLook;
        }
    });
}

WorldBox Batches::BoxOf(Member& member) const
{
    if (!member.isBoxKnown)
    {
        member.isBoxKnown = true;
        member.isBoxTrue = IsBoxTrue(*member.mesh);
    }
    if (!member.isBoxTrue)
    {
        return BoxAt(*member.mesh, member.node->GetGlobal());
    }
    WorldBox box;
    member.mesh->GetBBox(box.low, box.high);
    return BoxAt(box, member.node->GetGlobal());
}

bool Batches::Sees(const ViewVolume& view, float leastShare, Member& member) const
{
    if (!member.isPlain)
    {
        return true;
    }
    const WorldBox box = BoxOf(member);
    return view.Sees(box) && !IsTooSmall(box, view, leastShare);
}

bool Batches::IsSeen(Member& member, const ViewVolume& view, float leastShare) const
{
    return StandsAlone(member) ? Sees(view, leastShare, member) : m_loose[member.loose].seenLook == m_treeLook;
}

void Batches::ListSeen(Group& group, const ViewVolume& view, float leastShare, std::vector<RenderItemES20>& seen)
{
    if ((group.material->GetFlags() & MaterialFlagPoints) != 0)
    {
        // A point may reach beyond its place.
        seen.insert(seen.end(), group.items.begin(), group.items.end());
        return;
    }
    // What gets too small has to leave the picture at once.
    const bool mayWait = !(leastShare > 0.0f);
    for (std::size_t i = 0; i < group.items.size(); ++i)
    {
        const std::size_t first = i;
        while (mayWait && i < group.items.size() && group.lookDue[i] > m_frame)
        {
            ++i;
        }
        const auto begin = group.items.begin();
        seen.insert(seen.end(), begin + static_cast<std::ptrdiff_t>(first), begin + static_cast<std::ptrdiff_t>(i));
        if (i < group.items.size())
        {
            ListIfSeen(group, i, view, leastShare, seen);
        }
    }
}

bool Batches::IsItemSeen(Group& group, std::size_t item, const ViewVolume& view, float leastShare)
{
    const auto [begin, end] = group.spans[item];
    bool areAllSeen = true;
    bool doesOneMove = false;
    for (Index at = begin; areAllSeen && at < end; ++at)
    {
        Member& member = m_members[group.singles[at]];
        areAllSeen = IsSeen(member, view, leastShare);
        doesOneMove = doesOneMove || (member.isQueued && StandsAlone(member));
    }
    if (areAllSeen)
    {
        // Not all in the same frame, and neighbours together, which are then copied together.
        constexpr unsigned int half = kSeenFor / 2;
        constexpr std::size_t neighbours = 64;
        group.lookDue[item] =
            doesOneMove ? m_frame + half + static_cast<unsigned int>(item / neighbours % (half + 1)) : 0;
    }
    return areAllSeen;
}

void Batches::ListIfSeen(Group& group, std::size_t item, const ViewVolume& view, float leastShare,
                         std::vector<RenderItemES20>& seen)
{
    if (IsItemSeen(group, item, view, leastShare))
    {
        seen.push_back(group.items[item]);
    }
    else if (!group.items[item].specificNode)
    {
        ListSeenOneByOne(group, item, view, leastShare, seen);
    }
}

void Batches::ListSeenOneByOne(const Group& group, std::size_t item, const ViewVolume& view, float leastShare,
                               std::vector<RenderItemES20>& seen)
{
    const RenderItemES20& all = group.items[item];
    for (Index at = group.spans[item].first; at < group.spans[item].second; ++at)
    {
        Member& member = m_members[group.singles[at]];
        if (IsSeen(member, view, leastShare) && IsShown(member))
        {
            seen.push_back({all.mesh, all.style, true, member.node});
        }
    }
}

} // namespace OV::Host::Detail
