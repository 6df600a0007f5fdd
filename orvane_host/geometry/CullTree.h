#pragma once

#include "orvane_host/geometry/ViewVolume.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace OV::Host
{

/// A tree of boxes that finds what a view sees without looking at each.
///
/// Entries come, go and move one by one, each in a time that grows with the depth of the tree,
/// which stays balanced.
class CullTree
{
public:
    using Entry = std::int32_t;

    static constexpr Entry NoEntry = -1;

    /// @param value found again by Collect.
    Entry Insert(const WorldBox& box, std::uint32_t value);

    /// Puts many in at once, in place of all that was there and in less time than one by one.
    /// @param values as many as boxes.
    /// @return the entries of the boxes in their order.
    std::vector<Entry> Fill(const std::vector<WorldBox>& boxes, const std::vector<std::uint32_t>& values);

    /// The entry must be in the tree; so below.
    void Remove(Entry entry);

    void Move(Entry entry, const WorldBox& box);

    const WorldBox& GetBox(Entry entry) const { return m_nodes[static_cast<std::size_t>(entry)].box; }

    /// How many entries there are.
    std::size_t GetCount() const { return m_count; }

    void Clear();

    /// Calls a function with the value of each entry that the view may see, in no certain order.
    template <class Found>
    void Collect(const ViewVolume& view, Found found) const
    {
        if (m_root != NoEntry)
        {
            Collect(m_root, view, ViewVolume::AllPlanes, found);
        }
    }

    /// Calls a function with the values of entries that lie within a distance, the nearer of two branches first.
    /// @param distanceOf of a box: no more than that of anything in it, and infinite for what is not asked for.
    /// @param found given a value; answers below which distance others are asked for from then on.
    template <class DistanceOf, class Found>
    void Search(double limit, DistanceOf distanceOf, Found found) const
    {
        if (m_root != NoEntry)
        {
            Search(m_root, distanceOf(At(m_root).box), limit, distanceOf, found);
        }
    }

private:
    struct TreeNode
    {
        WorldBox box;
        Entry parent;    ///< the next free one where there is none
        Entry children[2]; ///< NoEntry at a leaf
        std::int32_t height; ///< 0 at a leaf
        std::uint32_t value;
    };

    TreeNode& At(Entry entry) { return m_nodes[static_cast<std::size_t>(entry)]; }
    const TreeNode& At(Entry entry) const { return m_nodes[static_cast<std::size_t>(entry)]; }

    template <class Found>
    void Collect(Entry entry, const ViewVolume& view, ViewVolume::PlaneSet planes, Found& found) const
    {
        const TreeNode& node = At(entry);
        planes = planes == 0 ? 0 : view.PlanesAcross(node.box, planes);
        if (planes == ViewVolume::NoneSeen)
        {
            return;
        }
        if (node.height == 0)
        {
            found(node.value);
            return;
        }
        Collect(node.children[0], view, planes, found);
        Collect(node.children[1], view, planes, found);
    }

    template <class DistanceOf, class Found>
    void Search(Entry entry, double distance, double& limit, DistanceOf& distanceOf, Found& found) const
    {
        if (!(distance < limit))
        {
            return;
        }
        const TreeNode& node = At(entry);
        if (node.height == 0)
        {
            limit = found(node.value);
            return;
        }
        const double distances[] = {distanceOf(At(node.children[0]).box), distanceOf(At(node.children[1]).box)};
        const int nearer = distances[1] < distances[0] ? 1 : 0;
        Search(node.children[nearer], distances[nearer], limit, distanceOf, found);
        Search(node.children[1 - nearer], distances[1 - nearer], limit, distanceOf, found);
    }

    Entry Join(const std::vector<WorldBox>& boxes, std::uint32_t* first, std::uint32_t* last, Entry parent,
               std::vector<Entry>& leaves);
    Entry Allocate();
    void Free(Entry entry);
    void Attach(Entry leaf);
    void Detach(Entry leaf);
    Entry BestSibling(const WorldBox& box) const;
    void Refit(Entry entry);
    Entry Balance(Entry entry);
    Entry RotateUp(Entry entry, int side);
    void Update(Entry entry);

    std::vector<TreeNode> m_nodes;
    Entry m_root = NoEntry;
    Entry m_free = NoEntry;
    std::size_t m_count = 0;
};

} // namespace OV::Host
