#include "orvane_host/geometry/Polyline.h"

#include "orvane/scene/RawLine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <tuple>

namespace OV::Host::Test
{

namespace
{

using Place = std::tuple<float, float, float>;
using Segment = std::pair<Place, Place>;

/// The segments as the shader sees them: a quad at a point, and the vertices four further on for
/// the point that it reaches to.
std::vector<Segment> SegmentsOf(const std::vector<std::shared_ptr<RawLine>>& parts)
{
    std::vector<Segment> segments;
    for (const auto& part : parts)
    {
        for (std::size_t i = 0; i < part->indices.size(); i += 6)
        {
            const std::size_t vertex = part->indices[i];
            EXPECT_LT(vertex + 7, part->positions.size());
            const Vector& from = part->positions[vertex];
            const Vector& to = part->positions[vertex + 4];
            segments.push_back({{from.x, from.y, from.z}, {to.x, to.y, to.z}});
        }
    }
    return segments;
}

std::vector<Segment> Expected(const std::vector<Vector>& points, bool closed)
{
    std::vector<Segment> segments;
    for (std::size_t i = 0; i + (closed ? 0 : 1) < points.size(); ++i)
    {
        const Vector& from = points[i];
        const Vector& to = points[(i + 1) % points.size()];
        segments.push_back({{from.x, from.y, from.z}, {to.x, to.y, to.z}});
    }
    return segments;
}

std::vector<Vector> Helix(std::size_t count)
{
    std::vector<Vector> points;
    for (std::size_t i = 0; i < count; ++i)
    {
        const float t = static_cast<float>(i);
        points.emplace_back(std::cos(t), std::sin(t), t);
    }
    return points;
}

} // namespace

TEST(Polyline, JoinsEachPointToTheNext)
{
    const std::vector<Vector> points = Helix(5);
    EXPECT_EQ(SegmentsOf(Polyline::Make(points)), Expected(points, false));
    EXPECT_EQ(SegmentsOf(Polyline::Make(points, true)), Expected(points, true));
    EXPECT_EQ(Polyline::Make(points).size(), 1u);
    EXPECT_GT(Polyline::Make(points)[0]->sphere.radius, 0.0f);
}

TEST(Polyline, LongOnesComeInPartsThatMeet)
{
    const std::size_t most = Polyline::MostPoints;
    const std::pair<std::size_t, std::size_t> cases[] = {{most - 1, 1},     {most, 1},     {most + 1, 2},
                                                         {2 * most - 1, 2}, {2 * most, 3}, {100000, 7}};
    for (const auto& [count, parts] : cases)
    {
        SCOPED_TRACE(count);
        const std::vector<Vector> points = Helix(count);
        const auto made = Polyline::Make(points);
        EXPECT_EQ(made.size(), parts);
        EXPECT_EQ(SegmentsOf(made), Expected(points, false));
    }
    for (const std::size_t count : {most - 1, most, most + 1})
    {
        SCOPED_TRACE(count);
        const std::vector<Vector> points = Helix(count);
        const auto made = Polyline::Make(points, true);
        EXPECT_EQ(made.size(), count == most - 1 ? 1u : 2u);
        EXPECT_EQ(SegmentsOf(made), Expected(points, true));
    }
}

TEST(Polyline, PassesOverWhatMakesNoSegment)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::vector<Vector> clean = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}};
    const std::vector<Vector> points = {
        {nan, 0, 0}, {0, 0, 0}, {0, 0, 0}, {1, 0, 0}, {1, std::numeric_limits<float>::infinity(), 0},
        {1, 0, 0},   {1, 1, 0}, {0, 0, 0}};
    EXPECT_EQ(SegmentsOf(Polyline::Make(points, true)), Expected(clean, true));
    EXPECT_TRUE(Polyline::Make({}).empty());
    EXPECT_TRUE(Polyline::Make({{1, 2, 3}}).empty());
    EXPECT_TRUE(Polyline::Make({{1, 2, 3}, {1, 2, 3}}, true).empty());
    EXPECT_EQ(SegmentsOf(Polyline::Make({{1, 2, 3}, {4, 5, 6}}, true)).size(), 1u);
    EXPECT_EQ(SegmentsOf(Polyline::Make({{0, 0, 0}, {1e-7f, 0, 0}})).size(), 1u);
}

} // namespace OV::Host::Test
