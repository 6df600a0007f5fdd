#include "orvane_host/present/detail/LineShape.h"

#include "orvane/scene/Line.h"
#include "orvane/scene/RawLine.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <vector>

namespace OV::Test
{

namespace
{

using Host::Detail::LineShape;

LineShape ShapeOf(const std::vector<Vector>& points)
{
    std::vector<unsigned short> pairs;
    for (std::size_t i = 0; i + 1 < points.size(); ++i)
    {
        pairs.push_back(static_cast<unsigned short>(i));
        pairs.push_back(static_cast<unsigned short>(i + 1));
    }
    const auto raw = std::make_shared<RawLine>();
    raw->SetPositionBuffer(points);
    raw->SetIndices(pairs);
    raw->EndDescription(true);
    const Line line(raw, nullptr);
    return LineShape(line);
}

} // namespace

TEST(LineShape, SegmentsAreJoinedWhereTheyMeet)
{
    const LineShape shape = ShapeOf({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}});
    ASSERT_EQ(shape.GetSegments().size(), 2u);
    EXPECT_EQ(shape.GetSegments()[0].joints, LineShape::JointAtEnd);
    EXPECT_EQ(shape.GetSegments()[1].joints, LineShape::JointAtStart);
    EXPECT_TRUE(shape.GetSegments()[1].goesOn);
}

TEST(LineShape, WhatIsNoNumberIsInNoPlace)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    std::vector<Vector> points;
    for (int i = 0; i < 40; ++i)
    {
        points.push_back(Vector(static_cast<float>(i), i % 3 == 0 ? nan : 0.0f, 0.0f));
    }
    const LineShape shape = ShapeOf(points);
    ASSERT_EQ(shape.GetSegments().size(), 39u);
    for (std::size_t i = 0; i < 39; ++i)
    {
        // Those from one number to another meet only others at their ends.
        const unsigned int expected = i % 3 == 0 ? LineShape::JointAtEnd : i % 3 == 1 ? LineShape::JointAtStart | LineShape::JointAtEnd
                                                                                     : LineShape::JointAtStart;
        EXPECT_EQ(shape.GetSegments()[i].joints, expected) << i;
    }
}

} // namespace OV::Test
