#include "orvane_host/geometry/detail/BoxTree.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <set>
#include <vector>

namespace OV::Host::Test
{

namespace
{

using Detail::Box;
using Detail::BoxBranch;

bool Holds(const Box& outer, const Box& inner)
{
    for (int axis = 0; axis < 3; ++axis)
    {
        if (inner.low[axis] < outer.low[axis] || inner.high[axis] > outer.high[axis])
        {
            return false;
        }
    }
    return true;
}

/// Each box is in one leaf, which holds it, as do all branches above.
void ExpectWhole(const std::vector<Box>& boxes)
{
    std::vector<std::uint32_t> order;
    const std::vector<BoxBranch> branches = Detail::BuildBoxTree(boxes, order);
    ASSERT_EQ(std::set<std::uint32_t>(order.begin(), order.end()).size(), boxes.size());
    std::size_t found = 0;
    std::vector<std::pair<std::uint32_t, std::size_t>> waiting{{0, 0}};
    while (!waiting.empty())
    {
        const auto [index, depth] = waiting.back();
        waiting.pop_back();
        ASSERT_LT(depth, Detail::kDeepestBoxTree);
        const BoxBranch& branch = branches.at(index);
        for (std::uint32_t i = branch.first; i < branch.first + branch.count; ++i)
        {
            EXPECT_TRUE(Holds(branch.box, boxes[order.at(i)])) << order[i];
            ++found;
        }
        if (branch.count == 0)
        {
            for (const std::uint32_t child : {index + 1, branch.second})
            {
                EXPECT_TRUE(Holds(branch.box, branches.at(child).box));
                waiting.emplace_back(child, depth + 1);
            }
        }
    }
    EXPECT_EQ(found, boxes.size());
}

} // namespace

TEST(BoxTree, HoldsEachBoxOnce)
{
    std::mt19937 numbers(1);
    std::vector<Box> boxes;
    for (int i = 0; i < 1000; ++i)
    {
        Box box{};
        for (int axis = 0; axis < 3; ++axis)
        {
            box.low[axis] = static_cast<double>(numbers() % 1000);
            box.high[axis] = box.low[axis] + static_cast<double>(numbers() % 10);
        }
        boxes.push_back(box);
    }
    ExpectWhole(boxes);
}

TEST(BoxTree, WhatHasNoMiddleHasAPlaceToo)
{
    const double infinity = std::numeric_limits<double>::infinity();
    const double most = std::numeric_limits<double>::max();
    const double ends[] = {-infinity, -most, -1.0, 0.0, 2.0, most, infinity, std::numeric_limits<double>::quiet_NaN()};
    std::mt19937 numbers(2);
    for (const std::size_t kinds : {std::size_t(7), std::size_t(8)})
    {
        std::vector<Box> boxes;
        for (int i = 0; i < 2000; ++i)
        {
            Box box{};
            for (int axis = 0; axis < 3; ++axis)
            {
                const double a = ends[numbers() % kinds];
                const double b = ends[numbers() % kinds];
                box.low[axis] = b < a ? b : a;
                box.high[axis] = b < a ? a : b;
            }
            boxes.push_back(box);
        }
        ExpectWhole(boxes);
    }
}

} // namespace OV::Host::Test
