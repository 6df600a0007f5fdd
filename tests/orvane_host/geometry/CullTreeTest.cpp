#include "orvane_host/geometry/CullTree.h"

#include "orvane/math/Matrix.h"
#include "tests/orvane_host/present/SettingsDice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <set>
#include <utility>
#include <vector>

namespace OV::Test
{

namespace
{

using Host::CullTree;
using Host::ViewVolume;
using Host::WorldBox;

WorldBox AnyBox(Dice& dice)
{
    const Vector low(20.0f * dice.Share() - 10.0f, 20.0f * dice.Share() - 10.0f, 20.0f * dice.Share() - 10.0f);
    const float size = dice.Below(20) == 0 ? 6.0f : 0.5f;
    return {low, Vector(low.x + size * dice.Share(), low.y + size * dice.Share(), low.z + size * dice.Share())};
}

Matrix AnyView(Dice& dice)
{
    Matrix projection;
    if (dice.Below(2) == 0)
    {
        const float half = 0.02f + dice.Share();
        projection.CalculatePerspMatrix(-half, half, -half, half, 1.0f, 5.0f + 20.0f * dice.Share());
    }
    else
    {
        const float half = 0.1f + 5.0f * dice.Share();
        projection.CalculateOrthoMatrix(-half, half, -half, half, -10.0f, 10.0f * dice.Share());
    }
    // Any two axes at right angles, and the one that they leave.
    const float a = 6.28f * dice.Share();
    const float b = 3.0f * dice.Share();
    const Vector x(std::cos(a), 0.0f, -std::sin(a));
    const Vector z(std::sin(a) * std::cos(b), std::sin(b), std::cos(a) * std::cos(b));
    Vector y;
    y.Cross(z, x);
    const Vector eye(12.0f * dice.Share() - 6.0f, 12.0f * dice.Share() - 6.0f, 12.0f * dice.Share() - 6.0f);
    Matrix view;
    view.Identity();
    const Vector rows[] = {x, y, z};
    for (int r = 0; r < 3; ++r)
    {
        view.m[r] = rows[r].x;
        view.m[4 + r] = rows[r].y;
        view.m[8 + r] = rows[r].z;
        view.m[12 + r] = -(rows[r].x * eye.x + rows[r].y * eye.y + rows[r].z * eye.z);
    }
    Matrix both;
    both.Multiply(projection, view);
    return both;
}

bool IsInView(const Matrix& m, const Vector& p)
{
    double clip[4];
    for (int r = 0; r < 4; ++r)
    {
        clip[r] = static_cast<double>(m.m[r]) * p.x + static_cast<double>(m.m[4 + r]) * p.y
            + static_cast<double>(m.m[8 + r]) * p.z + m.m[12 + r];
    }
    return std::abs(clip[0]) <= clip[3] && std::abs(clip[1]) <= clip[3] && std::abs(clip[2]) <= clip[3];
}

/// Whether any of many points of a box lies in a view.
bool HasPointInView(const Matrix& view, const WorldBox& box)
{
    constexpr int most = 4;
    for (int i = 0; i < 125; ++i)
    {
        const auto at = [](float low, float high, int step) {
            return low + (high - low) * static_cast<float>(step) / static_cast<float>(most);
        };
        if (IsInView(view, Vector(at(box.low.x, box.high.x, i % 5), at(box.low.y, box.high.y, i / 5 % 5),
                                  at(box.low.z, box.high.z, i / 25 % 5))))
        {
            return true;
        }
    }
    return false;
}

std::set<std::uint32_t> Found(const CullTree& tree, const ViewVolume& view)
{
    std::set<std::uint32_t> found;
    tree.Collect(view, [&](std::uint32_t value) { EXPECT_TRUE(found.insert(value).second); });
    return found;
}

} // namespace

TEST(CullTree, NothingThatTouchesAViewIsLostInTenThousandViews)
{
    Dice dice(1);
    CullTree tree;
    std::vector<WorldBox> boxes;
    std::vector<CullTree::Entry> entries;
    for (std::uint32_t i = 0; i < 300; ++i)
    {
        boxes.push_back(AnyBox(dice));
        entries.push_back(tree.Insert(boxes.back(), i));
    }
    int seen = 0;
    int listed = 0;
    for (int i = 0; i < 10000 && !testing::Test::HasFailure(); ++i)
    {
        // The tree changes between the views.
        const auto moved = static_cast<std::size_t>(dice.Below(300));
        boxes[moved] = AnyBox(dice);
        tree.Move(entries[moved], boxes[moved]);
        const Matrix matrix = AnyView(dice);
        const ViewVolume view(matrix);
        const std::set<std::uint32_t> found = Found(tree, view);
        listed += static_cast<int>(found.size());
        for (std::uint32_t box = 0; box < boxes.size(); ++box)
        {
            ASSERT_EQ(found.count(box) != 0, view.Sees(boxes[box])) << i << ", " << box;
            if (HasPointInView(matrix, boxes[box]))
            {
                ++seen;
                ASSERT_TRUE(found.count(box) != 0) << i << ", " << box;
            }
        }
    }
    // What is found besides lies near the view.
    EXPECT_GT(seen, 10000);
    EXPECT_LT(listed, 2 * seen);
}

TEST(CullTree, EntriesComeAndGo)
{
    Dice dice(2);
    CullTree tree;
    Matrix all;
    all.CalculateOrthoMatrix(-100.0f, 100.0f, -100.0f, 100.0f, -100.0f, 100.0f);
    std::vector<std::pair<CullTree::Entry, std::uint32_t>> entries;
    std::set<std::uint32_t> expected;
    for (std::uint32_t i = 0; i < 3000; ++i)
    {
        if (entries.empty() || dice.Below(5) < 3)
        {
            entries.emplace_back(tree.Insert(AnyBox(dice), i), i);
            expected.insert(i);
        }
        else
        {
            const auto gone = entries.begin() + dice.Below(static_cast<int>(entries.size()));
            tree.Remove(gone->first);
            expected.erase(gone->second);
            entries.erase(gone);
        }
        if (i % 100 == 0)
        {
            ASSERT_EQ(Found(tree, ViewVolume(all)), expected);
            ASSERT_EQ(tree.GetCount(), expected.size());
        }
    }
}

TEST(CullTree, WhatIsFilledInAtOnceIsATreeLikeAnyOther)
{
    Dice dice(3);
    Matrix all;
    all.CalculateOrthoMatrix(-100.0f, 100.0f, -100.0f, 100.0f, -100.0f, 100.0f);
    for (const std::size_t count : {0u, 1u, 2u, 3u, 1000u})
    {
        CullTree tree;
        tree.Insert(AnyBox(dice), 77);
        std::vector<WorldBox> boxes;
        std::vector<std::uint32_t> values;
        for (std::size_t i = 0; i < count; ++i)
        {
            boxes.push_back(AnyBox(dice));
            values.push_back(static_cast<std::uint32_t>(10 * i));
        }
        const std::vector<CullTree::Entry> entries = tree.Fill(boxes, values);
        ASSERT_EQ(entries.size(), count);
        EXPECT_EQ(tree.GetCount(), count);
        std::set<std::uint32_t> expected(values.begin(), values.end());
        EXPECT_EQ(Found(tree, ViewVolume(all)), expected);
        for (std::size_t i = 0; i < count; ++i)
        {
            EXPECT_EQ(std::memcmp(&tree.GetBox(entries[i]), &boxes[i], sizeof(WorldBox)), 0);
            if (i % 3 == 0)
            {
                tree.Move(entries[i], AnyBox(dice));
            }
            else if (i % 3 == 1)
            {
                tree.Remove(entries[i]);
                expected.erase(values[i]);
            }
        }
        tree.Insert(AnyBox(dice), 5);
        expected.insert(5);
        EXPECT_EQ(Found(tree, ViewVolume(all)), expected);
    }
}

TEST(CullTree, SearchFindsTheNearestAndLooksAtFew)
{
    Dice dice(6);
    CullTree tree;
    std::vector<WorldBox> boxes;
    for (std::uint32_t i = 0; i < 2000; ++i)
    {
        boxes.push_back(AnyBox(dice));
        tree.Insert(boxes.back(), i);
    }
    int looks = 0;
    for (int i = 0; i < 300; ++i)
    {
        const Vector from(20.0f * dice.Share() - 10.0f, 20.0f * dice.Share() - 10.0f, 20.0f * dice.Share() - 10.0f);
        const auto distanceOf = [&](const WorldBox& box) {
            const auto beyond = [](float low, float high, float at) { return std::max({low - at, at - high, 0.0f}); };
            return static_cast<double>(std::hypot(beyond(box.low.x, box.high.x, from.x),
                                                  beyond(box.low.y, box.high.y, from.y),
                                                  beyond(box.low.z, box.high.z, from.z)));
        };
        double expected = 4.0;
        for (const WorldBox& box : boxes)
        {
            expected = std::min(expected, distanceOf(box));
        }
        double nearest = 4.0;
        tree.Search(nearest, distanceOf, [&](std::uint32_t value) {
            ++looks;
            nearest = std::min(nearest, distanceOf(boxes[value]));
            return nearest;
        });
        EXPECT_EQ(nearest, expected);
    }
    EXPECT_LT(looks, 300 * 10);
}

TEST(ViewVolume, APartOfThePictureSeesWhatLiesInIt)
{
    Matrix view;
    view.CalculateOrthoMatrix(-10.0f, 10.0f, -10.0f, 10.0f, -10.0f, 10.0f);
    const ViewVolume right(view, {0.5f, 1.0f, -1.0f, 1.0f});
    const auto at = [](float x) { return WorldBox{Vector(x, 0.0f, 0.0f), Vector(x + 1.0f, 1.0f, 1.0f)}; };
    EXPECT_EQ(right.RelationOf(at(3.9f)), ViewVolume::Relation::Outside);
    EXPECT_EQ(right.RelationOf(at(4.1f)), ViewVolume::Relation::Touches);
    EXPECT_EQ(right.RelationOf(at(6.0f)), ViewVolume::Relation::Inside);
    EXPECT_EQ(right.RelationOf(at(10.1f)), ViewVolume::Relation::Outside);
    EXPECT_FLOAT_EQ(right.ShareOfHeight(Vector(0.0f, 0.0f, 0.0f), 2.0f), 0.1f);
}

} // namespace OV::Test
