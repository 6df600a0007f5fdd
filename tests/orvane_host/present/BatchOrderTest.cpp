#include "orvane_host/present/detail/BatchOrder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <set>
#include <vector>

namespace OV::Test
{

namespace
{

using Host::Detail::BatchPlace;
using Host::Detail::CutByPlace;
using Host::Detail::PartSize;

/// A square of so many places each way.
std::vector<BatchPlace> Square(std::uint32_t side, std::uint32_t vertices)
{
    std::vector<BatchPlace> places;
    for (std::uint32_t i = 0; i < side * side; ++i)
    {
        const Vector middle(static_cast<float>(i % side), static_cast<float>(i / side), 0.0f);
        places.push_back({middle, 0, i, vertices});
    }
    return places;
}

std::size_t VerticesOf(const std::vector<BatchPlace>& places, std::size_t first, std::size_t last)
{
    std::size_t sum = 0;
    for (std::size_t i = first; i < last; ++i)
    {
        sum += places[i].vertices;
    }
    return sum;
}

void ExpectAllOnce(const std::vector<BatchPlace>& places, const std::vector<std::size_t>& ends)
{
    std::set<std::uint32_t> indices;
    for (const BatchPlace& place : places)
    {
        indices.insert(place.index);
    }
    EXPECT_EQ(indices.size(), places.size());
    EXPECT_EQ(*indices.rbegin() + 1, places.size());
    EXPECT_TRUE(std::is_sorted(ends.begin(), ends.end()));
    EXPECT_EQ(ends.back(), places.size());
}

} // namespace

TEST(BatchOrder, PartsAreAsFewAsItTakesAndCompact)
{
    std::vector<BatchPlace> places = Square(40, 10);
    const std::vector<std::size_t> ends = CutByPlace(places, 1010, PartSize::Even);
    ExpectAllOnce(places, ends);
    ASSERT_EQ(ends.size(), 16u);
    std::size_t first = 0;
    for (const std::size_t end : ends)
    {
        EXPECT_EQ(VerticesOf(places, first, end), 1000u);
        const auto isLeft = [](const BatchPlace& a, const BatchPlace& b) { return a.middle.x < b.middle.x; };
        const auto isBelow = [](const BatchPlace& a, const BatchPlace& b) { return a.middle.y < b.middle.y; };
        const auto begin = places.begin() + static_cast<std::ptrdiff_t>(first);
        const auto behind = places.begin() + static_cast<std::ptrdiff_t>(end);
        const auto [left, right] = std::minmax_element(begin, behind, isLeft);
        const auto [bottom, top] = std::minmax_element(begin, behind, isBelow);
        EXPECT_LE(right->middle.x - left->middle.x, 10.0f);
        EXPECT_LE(top->middle.y - bottom->middle.y, 10.0f);
        first = end;
    }
}

TEST(BatchOrder, PartsOfUnequalThingsHaveNoMoreThanTheyMay)
{
    for (const bool hasLarge : {false, true})
    {
        std::vector<BatchPlace> places = Square(30, 0);
        for (BatchPlace& place : places)
        {
            place.vertices = 1 + place.index * 37 % 201;
        }
        places[17].vertices = hasLarge ? 5000 : 1;
        const std::size_t all = VerticesOf(places, 0, places.size());
        const std::vector<std::size_t> ends = CutByPlace(places, 3000, PartSize::Even);
        ExpectAllOnce(places, ends);
        std::size_t first = 0;
        for (const std::size_t end : ends)
        {
            ASSERT_LT(first, end);
            EXPECT_TRUE(VerticesOf(places, first, end) <= 3000 || (hasLarge && end == first + 1));
            first = end;
        }
        EXPECT_LE(ends.size(), all * 115 / 100 / 3000 + 1) << "a seventh more than it takes";
    }
}

TEST(BatchOrder, FullPartsAreFullButTheLast)
{
    std::vector<BatchPlace> places = Square(29, 1);
    const std::vector<std::size_t> ends = CutByPlace(places, 100, PartSize::Full);
    ExpectAllOnce(places, ends);
    ASSERT_EQ(ends.size(), 9u);
    for (std::size_t i = 0; i + 1 < ends.size(); ++i)
    {
        EXPECT_EQ(ends[i], 100 * (i + 1));
    }
}

TEST(BatchOrder, WhatStandsAtOnePlaceKeepsItsOrderAcrossParts)
{
    std::vector<BatchPlace> places;
    for (std::uint32_t i = 0; i < 50; ++i)
    {
        places.push_back({Vector(1.0f, 2.0f, 3.0f), i * 7 % 50, i, 10});
    }
    const std::vector<std::size_t> ends = CutByPlace(places, 106, PartSize::Even);
    EXPECT_EQ(ends.size(), 5u);
    for (std::uint32_t i = 0; i < 50; ++i)
    {
        EXPECT_EQ(places[i].order, i);
    }
}

TEST(BatchOrder, WhatIsNoNumberIsPutAnywhere)
{
    std::vector<BatchPlace> places = Square(20, 10);
    for (std::size_t i = 0; i < places.size(); i += 3)
    {
        places[i].middle.x = std::numeric_limits<float>::quiet_NaN();
        places[i + i % 2].middle.y = std::numeric_limits<float>::infinity();
    }
    const std::vector<std::size_t> ends = CutByPlace(places, 200, PartSize::Even);
    ExpectAllOnce(places, ends);
    std::vector<BatchPlace> none;
    EXPECT_TRUE(CutByPlace(none, 200, PartSize::Even).empty());
}

TEST(BatchOrder, WhatIsNoNumberLeavesTheOthersCompact)
{
    std::vector<BatchPlace> places = Square(20, 10);
    for (const std::size_t lost : {37u, 38u})
    {
        places[lost].middle.y = std::numeric_limits<float>::infinity();
    }
    const std::vector<std::size_t> ends = CutByPlace(places, 250, PartSize::Even);
    ExpectAllOnce(places, ends);
    std::size_t first = 0;
    for (const std::size_t end : ends)
    {
        float least = 20.0f;
        float most = 0.0f;
        for (std::size_t i = first; i < end; ++i)
        {
            least = std::min(least, places[i].middle.x);
            most = std::max(most, places[i].middle.x);
        }
        EXPECT_LE(most - least, 6.0f);
        first = end;
    }
}

} // namespace OV::Test
