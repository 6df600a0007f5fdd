#include "orvane_host/geometry/CullTree.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace OV::Host
{

namespace
{

WorldBox Union(const WorldBox& a, const WorldBox& b)
{
    WorldBox both = a;
    both.Widen(b);
    return both;
}

/// Half the surface: how likely a view is to touch a box.
double Cost(const WorldBox& box)
{
    const double x = static_cast<double>(box.high.x) - box.low.x;
    const double y = static_cast<double>(box.high.y) - box.low.y;
    const double z = static_cast<double>(box.high.z) - box.low.z;
    return x * y + y * z + z * x;
}

/// Where a box lies along an axis, times two.
float MiddleOf(const WorldBox& box, int axis)
{
    const float middle = axis == 0 ? box.low.x + box.high.x : axis == 1 ? box.low.y + box.high.y : box.low.z + box.high.z;
    // By numbers alone is there an order.
    return std::isfinite(middle) ? middle : 0.0f;
}

} // namespace

CullTree::Entry CullTree::Allocate()
{
    if (m_free == NoEntry)
    {
        m_nodes.emplace_back();
        return static_cast<Entry>(m_nodes.size() - 1);
    }
    const Entry entry = m_free;
    m_free = At(entry).parent;
    return entry;
}

void CullTree::Free(Entry entry)
{
    At(entry).parent = m_free;
    m_free = entry;
}

CullTree::Entry CullTree::Insert(const WorldBox& box, std::uint32_t value)
{
    const Entry leaf = Allocate();
    At(leaf) = {box, NoEntry, {NoEntry, NoEntry}, 0, value};
    Attach(leaf);
    ++m_count;
    return leaf;
}

std::vector<CullTree::Entry> CullTree::Fill(const std::vector<WorldBox>& boxes,
                                            const std::vector<std::uint32_t>& values)
{
    Clear();
    m_count = boxes.size();
    m_nodes.reserve(2 * boxes.size());
    std::vector<Entry> leaves(boxes.size());
    std::vector<std::uint32_t> order(boxes.size());
    std::iota(order.begin(), order.end(), 0u);
    if (!order.empty())
    {
        m_root = Join(boxes, order.data(), order.data() + order.size(), NoEntry, leaves);
    }
    for (std::size_t i = 0; i < leaves.size(); ++i)
    {
        At(leaves[i]).value = values[i];
    }
    return leaves;
}

CullTree::Entry CullTree::Join(const std::vector<WorldBox>& boxes, std::uint32_t* first, std::uint32_t* last,
                               Entry parent, std::vector<Entry>& leaves)
{
    const Entry entry = Allocate();
    if (last - first == 1)
    {
        At(entry) = {boxes[*first], parent, {NoEntry, NoEntry}, 0, *first};
        leaves[*first] = entry;
        return entry;
    }
    // In halves across the axis along which they lie farthest apart: so deep that recursion is no matter.
    int axis = 0;
    float widest = -1.0f;
    for (int i = 0; i < 3; ++i)
    {
        const auto isLess = [&](std::uint32_t a, std::uint32_t b) { return MiddleOf(boxes[a], i) < MiddleOf(boxes[b], i); };
        const auto [low, high] = std::minmax_element(first, last, isLess);
        const float width = MiddleOf(boxes[*high], i) - MiddleOf(boxes[*low], i);
        axis = width > widest ? i : axis;
        widest = std::max(width, widest);
    }
    std::uint32_t* const middle = first + (last - first) / 2;
    std::nth_element(first, middle, last, [&](std::uint32_t a, std::uint32_t b)
                     { return MiddleOf(boxes[a], axis) < MiddleOf(boxes[b], axis); });
    At(entry) = {{}, parent, {NoEntry, NoEntry}, 1, 0};
    const Entry lower = Join(boxes, first, middle, entry, leaves);
    const Entry upper = Join(boxes, middle, last, entry, leaves);
    At(entry).children[0] = lower;
    At(entry).children[1] = upper;
    Update(entry);
    return entry;
}

void CullTree::Remove(Entry entry)
{
    Detach(entry);
    Free(entry);
    --m_count;
}

void CullTree::Move(Entry entry, const WorldBox& box)
{
    Detach(entry);
    At(entry).box = box;
    Attach(entry);
}

void CullTree::Clear()
{
    m_nodes.clear();
    m_root = NoEntry;
    m_free = NoEntry;
    m_count = 0;
}

CullTree::Entry CullTree::BestSibling(const WorldBox& box) const
{
    Entry at = m_root;
    while (At(at).height > 0)
    {
        const TreeNode& node = At(at);
        const double united = Cost(Union(node.box, box));
        // Beside this node, against what each child grows by besides the growth up to here.
        const double here = 2.0 * united;
        const double growth = 2.0 * (united - Cost(node.box));
        const auto below = [&](Entry child) {
            const double grown = Cost(Union(At(child).box, box));
            return growth + (At(child).height == 0 ? grown : grown - Cost(At(child).box));
        };
        const double first = below(node.children[0]);
        const double second = below(node.children[1]);
        if (here < first && here < second)
        {
            break;
        }
        at = first <= second ? node.children[0] : node.children[1];
    }
    return at;
}

void CullTree::Attach(Entry leaf)
{
    if (m_root == NoEntry)
    {
        m_root = leaf;
        At(leaf).parent = NoEntry;
        return;
    }
    const Entry sibling = BestSibling(At(leaf).box);
    const Entry joint = Allocate();
    const Entry above = At(sibling).parent;
    At(joint) = {{}, above, {sibling, leaf}, 1, 0};
    At(sibling).parent = joint;
    At(leaf).parent = joint;
    if (above == NoEntry)
    {
        m_root = joint;
    }
    else
    {
        TreeNode& parent = At(above);
        parent.children[parent.children[0] == sibling ? 0 : 1] = joint;
    }
    Refit(joint);
}

void CullTree::Detach(Entry leaf)
{
    if (leaf == m_root)
    {
        m_root = NoEntry;
        return;
    }
    const Entry joint = At(leaf).parent;
    const Entry above = At(joint).parent;
    const Entry sibling = At(joint).children[At(joint).children[0] == leaf ? 1 : 0];
    At(sibling).parent = above;
    if (above == NoEntry)
    {
        m_root = sibling;
    }
    else
    {
        TreeNode& parent = At(above);
        parent.children[parent.children[0] == joint ? 0 : 1] = sibling;
        Refit(above);
    }
    Free(joint);
}

void CullTree::Refit(Entry entry)
{
    while (entry != NoEntry)
    {
        entry = Balance(entry);
        Update(entry);
        entry = At(entry).parent;
    }
}

void CullTree::Update(Entry entry)
{
    TreeNode& node = At(entry);
    const TreeNode& first = At(node.children[0]);
    const TreeNode& second = At(node.children[1]);
    node.height = 1 + std::max(first.height, second.height);
    node.box = Union(first.box, second.box);
}

CullTree::Entry CullTree::Balance(Entry entry)
{
    const TreeNode& node = At(entry);
    if (node.height == 0)
    {
        return entry;
    }
    const int lean = At(node.children[1]).height - At(node.children[0]).height;
    return lean > 1 ? RotateUp(entry, 1) : lean < -1 ? RotateUp(entry, 0) : entry;
}

CullTree::Entry CullTree::RotateUp(Entry entry, int side)
{
    // The higher child takes the place of the node, which takes the lower of its children.
    const Entry up = At(entry).children[side];
    TreeNode& raised = At(up);
    const int lower = At(raised.children[0]).height < At(raised.children[1]).height ? 0 : 1;
    const Entry handed = raised.children[lower];
    const Entry above = At(entry).parent;
    raised.parent = above;
    raised.children[lower] = entry;
    At(entry).parent = up;
    At(entry).children[side] = handed;
    At(handed).parent = entry;
    if (above == NoEntry)
    {
        m_root = up;
    }
    else
    {
        TreeNode& parent = At(above);
        parent.children[parent.children[0] == entry ? 0 : 1] = up;
    }
    Update(entry);
    return up;
}

} // namespace OV::Host
