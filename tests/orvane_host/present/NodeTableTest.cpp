#include "orvane_host/present/detail/NodeTable.h"
#include "orvane/scene/Node.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <vector>

namespace OV::Test
{

using Host::Detail::NodeTable;

TEST(NodeTable, FindsWhatAMapFindsThroughInsertsAndErasures)
{
    std::vector<std::unique_ptr<Node>> nodes;
    for (int i = 0; i < 500; ++i)
    {
        nodes.push_back(std::make_unique<Node>(nullptr));
    }
    NodeTable table;
    std::map<const Node*, std::uint32_t> expected;
    std::map<std::uint32_t, const Node*> owners;
    std::mt19937 random(7);
    std::uint32_t next = 0;
    const auto find = [&](const Node* node) {
        return table.Find(node, [&](std::uint32_t number) { return owners.at(number) == node; });
    };
    for (int step = 0; step < 20000; ++step)
    {
        const Node* const node = nodes[random() % nodes.size()].get();
        const auto known = expected.find(node);
        ASSERT_EQ(find(node), known == expected.end() ? NodeTable::None : known->second) << "step " << step;
        if (known == expected.end())
        {
            owners[next] = node;
            table.Insert(node, next);
            expected[node] = next++;
        }
        else
        {
            table.Erase(node, known->second);
            expected.erase(known);
        }
    }
    EXPECT_GT(expected.size(), 100u);
    for (const auto& node : nodes)
    {
        const auto known = expected.find(node.get());
        EXPECT_EQ(find(node.get()), known == expected.end() ? NodeTable::None : known->second);
    }
    table.Clear();
    EXPECT_EQ(find(nodes.front().get()), NodeTable::None);
}

} // namespace OV::Test
