#include "orvane_host/geometry/RayCaster.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/RawMesh.h"
#include "tests/orvane_host/present/LineFixture.h"
#include "tests/support/ShowMesh.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <random>
#include <vector>

namespace OV::Test
{

namespace
{

using Host::HiddenLineLook;
using Host::RayCaster;
using QGM::Point3d;
using QGM::Vector3d;

constexpr int kWidth = 240;
constexpr int kHeight = 160;
constexpr double kEye = 30.0; ///< on the Z axis, which it looks down
constexpr double kNearest = 2.0;
constexpr double kTangent = 0.45; ///< of half the view's height

/// What lies behind a surface by less, an eighth of what a pixel is wide there, may be seen or not.
constexpr double kDoubt = 0.02;

double Mixed(double a, double b, double share)
{
    return a + share * (b - a);
}

Point3d Mixed(const Point3d& a, const Point3d& b, double share)
{
    return {Mixed(a.x, b.x, share), Mixed(a.y, b.y, share), Mixed(a.z, b.z, share)};
}

/// A segment as it is in the picture.
class DrawnSegment
{
public:
    DrawnSegment(const Point3d& start, const Point3d& end, double width) : m_start(start), m_end(end), m_width(width)
    {
        // From the near plane on.
        const double limit = kEye - kNearest;
        if (m_start.z > limit)
        {
            m_start = Mixed(start, end, (start.z - limit) / (start.z - end.z));
        }
        else if (m_end.z > limit)
        {
            m_end = Mixed(end, start, (end.z - limit) / (end.z - start.z));
        }
        m_first = PixelOf(m_start);
        const std::array<double, 2> last = PixelOf(m_end);
        m_length = std::hypot(last[0] - m_first[0], last[1] - m_first[1]);
        m_along = {(last[0] - m_first[0]) / m_length, (last[1] - m_first[1]) / m_length};
    }

    double GetLength() const { return m_length; }

    double AlongAt(double x, double y) const { return (x - m_first[0]) * m_along[0] + (y - m_first[1]) * m_along[1]; }

    /// @param more by which it is wider and longer.
    bool Covers(double x, double y, double more = 0.0) const
    {
        const double along = AlongAt(x, y);
        const double across = std::abs((x - m_first[0]) * m_along[1] - (y - m_first[1]) * m_along[0]);
        return across <= m_width / 2.0 + more && along >= -more && along <= m_length + more;
    }

    /// A place in the picture, so many pixels along the segment and beside it.
    std::array<double, 2> PlaceAt(double along, double beside) const
    {
        return {m_first[0] + along * m_along[0] - beside * m_along[1], m_first[1] + along * m_along[1] + beside * m_along[0]};
    }

    /// Whether a ray meets nothing before the segment, so many pixels along it. @param room before it that doesn't count.
    bool IsSeen(const RayCaster& caster, double along, double room = 0.003) const
    {
        const double share = std::clamp(along / m_length, 0.0, 1.0);
        const double start = kEye - m_start.z;
        const double end = kEye - m_end.z;
        const Point3d place = Mixed(m_start, m_end, share * start / (share * start + (1.0 - share) * end));
        const double distance = std::hypot(place.x, place.y, place.z - kEye);
        return !caster.IsBlocked({0, 0, kEye}, {place.x, place.y, place.z - kEye}, 0.0, 1.0 - room / distance);
    }

private:
    static std::array<double, 2> PixelOf(const Point3d& place)
    {
        const double half = kTangent * (kEye - place.z);
        return {(place.x / half + double(kWidth) / kHeight) * kHeight / 2.0, (place.y / half + 1.0) * kHeight / 2.0};
    }

    Point3d m_start;
    Point3d m_end;
    double m_width;
    std::array<double, 2> m_first{};
    std::array<double, 2> m_along{};
    double m_length = 0.0;
};

struct Solid
{
    std::vector<Point3d> corners;
    std::vector<std::uint32_t> indices;
};

/// A box by its middle, and half of its sides as vectors.
Solid BoxOf(const Point3d& middle, const std::array<std::array<double, 3>, 3>& sides)
{
    Solid box;
    for (unsigned int corner = 0; corner < 8; ++corner)
    {
        Point3d place = middle;
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            const double sign = (corner >> axis & 1) != 0 ? 1.0 : -1.0;
            place = {place.x + sign * sides[axis][0], place.y + sign * sides[axis][1], place.z + sign * sides[axis][2]};
        }
        box.corners.push_back(place);
    }
    constexpr std::uint32_t faces[6][4] = {{4, 5, 7, 6}, {1, 0, 2, 3}, {5, 1, 3, 7}, {0, 4, 6, 2}, {6, 7, 3, 2}, {0, 1, 5, 4}};
    for (const auto& face : faces)
    {
        box.indices.insert(box.indices.end(), {face[0], face[1], face[2], face[0], face[2], face[3]});
    }
    return box;
}

class PerspectiveLines : public LineFixture
{
protected:
    PerspectiveLines() : LineFixture(kWidth, kHeight) { LookDown(); }

    void LookDown()
    {
        Camera().SetProjection(CameraNode::Perspective);
        Camera().SetFOV(static_cast<float>(std::atan(kTangent)));
        Camera().SetNearFar(static_cast<float>(kNearest), 100.0f);
        Transform place;
        place.SetPosition(Vector(0, 0, static_cast<float>(kEye)));
        Camera().SetLocal(place);
    }

    void AddSolid(const Solid& solid)
    {
        std::vector<Vector> corners;
        for (const Point3d& corner : solid.corners)
        {
            corners.push_back(VectorOf(corner));
        }
        auto raw = std::make_shared<RawMesh>();
        raw->SetNormalBuffer(std::vector<Vector>(corners.size(), Vector(0, 0, 1)));
        raw->SetPositionBuffer(std::move(corners));
        raw->SetIndices(std::vector<unsigned short>(solid.indices.begin(), solid.indices.end()));
        raw->EndDescription(true);
        ShowMesh(raw, AddMaterial(Color(0.5f, 0.5f, 0.5f)), World());
        const auto first = static_cast<std::uint32_t>(points.size());
        points.insert(points.end(), solid.corners.begin(), solid.corners.end());
        for (const std::uint32_t index : solid.indices)
        {
            indices.push_back(first + index);
        }
    }

    void AddSegment(const Point3d& start, const Point3d& end, double width)
    {
        segments.emplace_back(start, end, width);
        AddPolyline(AddStyle(Color(0, 0, 0), static_cast<float>(width)), {VectorOf(start), VectorOf(end)});
    }

    static Vector VectorOf(const Point3d& point)
    {
        return {static_cast<float>(point.x), static_cast<float>(point.y), static_cast<float>(point.z)};
    }

    /// Nothing where the places within so many pixels are not all alike.
    std::optional<bool> Certain(const RayCaster& caster, double x, double y, double pixels) const
    {
        std::vector<const DrawnSegment*> nearby;
        for (const DrawnSegment& segment : segments)
        {
            if (segment.Covers(x, y, pixels))
            {
                nearby.push_back(&segment);
            }
        }
        const auto isLine = [&](double atX, double atY, double room) {
            return std::any_of(nearby.begin(), nearby.end(), [&](const DrawnSegment* segment) {
                return segment->Covers(atX, atY) && segment->IsSeen(caster, segment->AlongAt(atX, atY), room);
            });
        };
        const bool here = isLine(x, y, kDoubt);
        for (const double away : {0.0, 0.35, 0.7, 1.0})
        {
            for (int i = 0; i < 16; ++i)
            {
                const double angle = i * std::acos(-1.0) / 8.0;
                const double atX = x + away * pixels * std::cos(angle);
                const double atY = y + away * pixels * std::sin(angle);
                if (isLine(atX, atY, 0.003) != here || isLine(atX, atY, kDoubt) != here)
                {
                    return std::nullopt;
                }
            }
        }
        return here;
    }

    double Random(double low, double high)
    {
        return low + (high - low) * static_cast<double>(random() % 10000) / 10000.0;
    }

    Point3d RandomPlace() { return {Random(-14, 14), Random(-10, 10), Random(-20, 15)}; }

    /// One with lines along its edges.
    void AddEdgedBox()
    {
        // Turned about the line of sight and then about the height.
        const double roll = Random(0, 3);
        const double turn = Random(0, 3);
        const double size[] = {Random(1, 5), Random(1, 4), Random(1, 4)};
        const std::array<std::array<double, 3>, 3> turned = {{{std::cos(roll) * std::cos(turn), std::sin(roll), -std::cos(roll) * std::sin(turn)},
                                                              {-std::sin(roll) * std::cos(turn), std::cos(roll), std::sin(roll) * std::sin(turn)},
                                                              {std::sin(turn), 0.0, std::cos(turn)}}};
        std::array<std::array<double, 3>, 3> sides = turned;
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            for (double& part : sides[axis])
            {
                part *= size[axis];
            }
        }
        const Solid box = BoxOf(RandomPlace(), sides);
        AddSolid(box);
        const double width = std::floor(Random(3, 9));
        for (unsigned int corner = 0; corner < 8; ++corner)
        {
            for (unsigned int bit = 1; bit < 8; bit *= 2)
            {
                if ((corner & bit) == 0)
                {
                    AddSegment(box.corners[corner], box.corners[corner | bit], width);
                }
            }
        }
    }

    std::mt19937 random{11};
    std::vector<DrawnSegment> segments;
    std::vector<Point3d> points; ///< of all solids
    std::vector<std::uint32_t> indices;
};

TEST_F(PerspectiveLines, AreAsRaysHaveThem)
{
    int lines = 0;
    for (int round = 0; round < 12; ++round)
    {
        NewRenderer();
        app.GetContext()->SetScene(std::make_unique<Scene>());
        renderer->SetLook(Host::Look::Basic);
        LookDown();
        segments.clear();
        points.clear();
        indices.clear();
        for (int i = 0; i < 6; ++i)
        {
            AddEdgedBox();
        }
        for (int i = 0; i < 4; ++i)
        {
            AddSegment(RandomPlace(), RandomPlace(), std::floor(Random(3, 9)));
        }
        // From behind the eye.
        AddSegment({Random(-3, 3), Random(-3, 3), 40.0}, RandomPlace(), 5.0);
        const RayCaster caster(points, indices);
        const Picture picture = Draw();
        for (int y = 0; y < kHeight; ++y)
        {
            for (int x = 0; x < kWidth; ++x)
            {
                const std::optional<bool> expected = Certain(caster, x + 0.5, y + 0.5, 1.0);
                lines += expected && *expected ? 1 : 0;
                if (expected)
                {
                    EXPECT_EQ(IsBlack(picture.At(x, y)), *expected) << x << ", " << y << " of round " << round;
                }
            }
        }
    }
    EXPECT_GT(lines, 16000) << "the lines are to be looked at, not their rims alone";
}

TEST_F(PerspectiveLines, AreDashedAndThinnerWhereRaysFindThemHidden)
{
    AddSolid(BoxOf({0, 0, 0}, {{{7, 0, 0}, {0, 6, 0}, {0, 0, 1}}}));
    AddSegment({-20, 1, -10}, {20, 3, -30}, 6.0);
    AddSegment({-20, 4, -12}, {20, 6.5, -25}, 6.0);
    // From behind the eye, and through the wall.
    AddSegment({-2, -5, 40}, {4, -2, -40}, 6.0);
    constexpr double dash = 6.0;
    constexpr double gap = 4.0;
    renderer->SetHiddenLines(HiddenLineLook{float(dash), float(gap), 0.5f});
    const RayCaster caster(points, indices);
    const Picture picture = Draw();
    const auto isBlackAt = [&](const std::array<double, 2>& at) {
        return IsBlack(picture.At(static_cast<int>(std::floor(at[0])), static_cast<int>(std::floor(at[1]))));
    };
    int seen = 0;
    int hidden[] = {0, 0};
    for (const DrawnSegment& segment : segments)
    {
        for (double along = 4.0; along < segment.GetLength() - 4.0; along += 1.0)
        {
            const std::array<double, 2> middle = segment.PlaceAt(along, 0.0);
            const bool isSeen = segment.IsSeen(caster, along);
            const bool isEven = segment.IsSeen(caster, along - 3.0) == isSeen && segment.IsSeen(caster, along + 3.0) == isSeen;
            if (!isEven || middle[0] < 4.0 || middle[0] > kWidth - 4.0 || middle[1] < 4.0 || middle[1] > kHeight - 4.0)
            {
                continue;
            }
            const double into = std::fmod(along, dash + gap);
            // A pixel's middle is up to 0.71 from the place that is asked.
            const bool isAtRim = std::min({into, std::abs(into - dash), dash + gap - into}) < 1.25;
            const bool isBeside = isBlackAt(segment.PlaceAt(along, 2.25)) || isBlackAt(segment.PlaceAt(along, -2.25));
            EXPECT_EQ(isBeside, isSeen) << along << " of " << segment.GetLength();
            if (isSeen || !isAtRim)
            {
                EXPECT_EQ(isBlackAt(middle), isSeen || into < dash) << along << " of " << segment.GetLength();
                ++(isSeen ? seen : hidden[into < dash ? 0 : 1]);
            }
        }
    }
    EXPECT_GT(seen, 60);
    EXPECT_GT(hidden[0], 30);
    EXPECT_GT(hidden[1], 15);
}

} // namespace

} // namespace OV::Test
