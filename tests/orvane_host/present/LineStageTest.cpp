#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"
#include "tests/orvane_host/present/LineFixture.h"
#include "tests/support/ShowMesh.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <memory>
#include <optional>
#include <random>
#include <vector>

using namespace OV;
using namespace OV::Host;
using namespace OV::Test;

namespace
{

constexpr Pixel kBlack{0, 0, 0, 255};
constexpr Pixel kGrey{128, 128, 128, 255};

using Point = std::array<double, 3>;

/// A flat face over a rectangle of the picture, and how deep it lies.
struct Face
{
    double left, bottom, right, top;
    double height, slopeX, slopeY; ///< at the origin, and how it changes

    double HeightAt(double x, double y) const { return height + slopeX * x + slopeY * y; }
    bool Covers(double x, double y) const { return x >= left && x < right && y >= bottom && y < top; }
};

struct Segment
{
    Point start;
    Point end;
    double width;
};

/// What a picture of lines over faces is to be: black lines, each as wide as it is, wherever no face
/// lies over its middle.
class LineModel
{
public:
    std::vector<Face> faces;
    std::vector<Segment> segments;

    bool IsHidden(double x, double y, double height) const
    {
        return std::any_of(faces.begin(), faces.end(), [&](const Face& face)
                           { return face.Covers(x, y) && face.HeightAt(x, y) > height + 1e-3; });
    }

    /// Whether a line covers a place. @param more by which lines are wider.
    bool IsLine(double x, double y, double more) const
    {
        return std::any_of(segments.begin(), segments.end(), [&](const Segment& segment) {
            const double dx = segment.end[0] - segment.start[0];
            const double dy = segment.end[1] - segment.start[1];
            const double length = std::hypot(dx, dy);
            const double along = ((x - segment.start[0]) * dx + (y - segment.start[1]) * dy) / length;
            const double across = std::abs((x - segment.start[0]) * dy - (y - segment.start[1]) * dx) / length;
            if (across > segment.width / 2.0 + more || along < -more || along > length + more)
            {
                return false;
            }
            const double share = std::clamp(along / length, 0.0, 1.0);
            const auto at = [&](std::size_t axis)
            { return segment.start[axis] + share * (segment.end[axis] - segment.start[axis]); };
            return !IsHidden(at(0), at(1), at(2));
        });
    }

    /// Whether all places within a pixel of one are alike, so that there is no doubt about it.
    std::optional<bool> Certain(double x, double y) const
    {
        const bool here = IsLine(x, y, 0.0);
        for (double away : {0.35, 0.7, 1.0})
        {
            for (int i = 0; i < 16; ++i)
            {
                const double angle = i * 3.14159265358979 / 8.0;
                if (IsLine(x + away * std::cos(angle), y + away * std::sin(angle), 0.0) != here)
                {
                    return std::nullopt;
                }
            }
        }
        return here;
    }
};

struct LineStageTest : LineFixture
{
    using LineFixture::LineFixture;

    void AddFace(const Face& face)
    {
        const auto corner = [&](double x, double y) {
            return Vector(static_cast<float>(x), static_cast<float>(y), static_cast<float>(face.HeightAt(x, y)));
        };
        auto raw = std::make_shared<RawMesh>();
        raw->SetPositionBuffer({corner(face.left, face.bottom), corner(face.right, face.bottom),
                                corner(face.right, face.top), corner(face.left, face.top)});
        raw->SetNormalBuffer(std::vector<Vector>(4, Vector(0, 0, 1)));
        raw->SetIndices({0, 1, 2, 0, 2, 3});
        raw->EndDescription(true);
        ShowMesh(raw, AddMaterial(Color(0.5f, 0.5f, 0.5f)), World());
    }
};

struct WideLines : LineStageTest
{
    WideLines() : LineStageTest(240, 160) {}
};

} // namespace

TEST_F(WideLines, AreAsACleanDrawingHasThemWithinAPixelOfTheirRims)
{
    std::mt19937 random(7);
    const auto of = [&](double low, double high)
    { return low + (high - low) * static_cast<double>(random() % 10000) / 10000.0; };
    int certain = 0;
    for (int round = 0; round < 4; ++round)
    {
        NewRenderer();
        app.GetContext()->SetScene(std::make_unique<Scene>());
        renderer->SetLook(Look::Basic);
        FitCamera();
        LineModel model;
        for (int i = 0; i < 7; ++i)
        {
            const double left = std::floor(of(0, 200));
            const double bottom = std::floor(of(0, 120));
            model.faces.push_back({left, bottom, left + std::floor(of(20, 90)), bottom + std::floor(of(20, 60)),
                                   of(-40, 0), of(-0.15, 0.15), of(-0.15, 0.15)});
        }
        // Rims of faces, and lines that run anywhere.
        for (const Face& face : model.faces)
        {
            const double width = std::floor(of(3, 9));
            const Point corners[] = {{face.left, face.bottom, face.HeightAt(face.left, face.bottom)},
                                     {face.right, face.bottom, face.HeightAt(face.right, face.bottom)},
                                     {face.right, face.top, face.HeightAt(face.right, face.top)},
                                     {face.left, face.top, face.HeightAt(face.left, face.top)}};
            model.segments.push_back({corners[0], corners[1], width});
            model.segments.push_back({corners[2], corners[3], width});
        }
        for (int i = 0; i < 6; ++i)
        {
            model.segments.push_back({{of(0, 240), of(0, 160), of(-60, 40)}, {of(0, 240), of(0, 160), of(-60, 40)},
                                      std::floor(of(3, 9))});
        }
        for (const Face& face : model.faces)
        {
            AddFace(face);
        }
        for (const Segment& segment : model.segments)
        {
            const auto place = [](const Point& point) {
                return Vector(static_cast<float>(point[0]), static_cast<float>(point[1]), static_cast<float>(point[2]));
            };
            AddPolyline(AddStyle(Color(0, 0, 0), static_cast<float>(segment.width)),
                        {place(segment.start), place(segment.end)});
        }
        const Picture picture = Draw();
        int wrong = 0;
        for (int y = 0; y < Height(); ++y)
        {
            for (int x = 0; x < Width(); ++x)
            {
                const std::optional<bool> expected = model.Certain(x + 0.5, y + 0.5);
                certain += expected && *expected ? 1 : 0;
                if (expected && IsBlack(picture.At(x, y)) != *expected && ++wrong < 5)
                {
                    ADD_FAILURE() << "at " << x << ", " << y << " of round " << round << " " << picture.At(x, y)
                                  << (*expected ? " is to be a line" : " is to be none");
                }
            }
        }
        EXPECT_EQ(wrong, 0) << round;
    }
    EXPECT_GT(certain, 5000) << "the lines are to be looked at, not their rims alone";
}

TEST_F(LineStageTest, JointsOfATranslucentLineAreCoveredOnce)
{
    const float width = 7.0f;
    const std::vector<Vector> points = {{10, 12, 0}, {60, 12, 0}, {20, 50, 0}, {85, 50, 0}, {60, 20, 0}};
    LineStyle& style = AddStyle(Color(1, 0, 0, 0.5f), 2.0f * width);
    style.antialias = true;
    AddPolyline(style, points);
    const Picture picture = Draw();
    // Whether a place is on any of the segments, with round ends where they are joined.
    const auto isCovered = [&](double x, double y, std::size_t from, std::size_t to) {
        for (std::size_t i = from; i < to; ++i)
        {
            const double dx = points[i + 1].x - points[i].x;
            const double dy = points[i + 1].y - points[i].y;
            const double share = ((x - points[i].x) * dx + (y - points[i].y) * dy) / (dx * dx + dy * dy);
            const bool isBeyond = (share < 0.0 && i == 0) || (share > 1.0 && i + 2 == points.size());
            const double onto = std::clamp(share, 0.0, 1.0);
            const double away = std::hypot(x - points[i].x - onto * dx, y - points[i].y - onto * dy);
            if (!isBeyond && away <= width / 2.0)
            {
                return true;
            }
        }
        return false;
    };
    const auto shareOf = [&](int x, int y, std::size_t from, std::size_t to) {
        constexpr int steps = 16;
        int covered = 0;
        for (int i = 0; i < steps * steps; ++i)
        {
            covered += isCovered(x + (i % steps + 0.5) / steps, y + (double(i) / steps + 0.5) / steps, from, to) ? 1 : 0;
        }
        return covered / double(steps * steps);
    };
    int partly = 0;
    for (int y = 0; y < Height(); ++y)
    {
        for (int x = 0; x < Width(); ++x)
        {
            double most = 0.0;
            double sum = 0.0;
            for (std::size_t i = 0; i + 1 < points.size(); ++i)
            {
                most = std::max(most, shareOf(x, y, i, i + 1));
                sum += shareOf(x, y, i, i + 1);
            }
            const double all = shareOf(x, y, 0, points.size() - 1);
            const double drawn = picture.At(x, y).r / 127.5;
            constexpr double rounding = 0.08;
            EXPECT_LE(drawn, all + rounding) << x << ", " << y << " is covered twice";
            EXPECT_GE(drawn, most - rounding) << x << ", " << y << " has a gap";
            partly += sum > std::min(all, 1.0) + 2.0 * rounding && all < 0.9 ? 1 : 0;
        }
    }
    EXPECT_GT(partly, 20) << "pixels at joints that would be covered more often";
}

TEST_F(LineStageTest, AJointOfALineThatGoesStraightOnIsNotSeen)
{
    // Half of the rows at its rims.
    LineStyle& style = AddStyle(Color(1, 0, 0, 0.5f), 14.0f);
    style.antialias = true;
    AddPolyline(style, {Vector(-10, 12, 0), Vector(30, 12, 0), Vector(60, 12, 0), Vector(110, 12, 0)});
    const Picture picture = Draw();
    for (int x = 0; x < Width(); ++x)
    {
        EXPECT_NEAR(picture.At(x, 8).r, 64, 1) << x;
        EXPECT_NEAR(picture.At(x, 12).r, 128, 1) << x;
        EXPECT_NEAR(picture.At(x, 15).r, 64, 1) << x;
    }
}

TEST_F(LineStageTest, DashesRunOnOverJoints)
{
    constexpr float dash = 7.0f;
    LineStyle& style = AddStyle(Color(0, 0, 0), 3.0f);
    style.SetDashed(true);
    style.SetDashFrequency(dash);
    // Along the middles of pixels, with lengths that are no multiples of a dash, and a long one that
    // begins outside.
    const std::vector<Vector> points = {{-1000.5f, 5.5f, 0},  {30.5f, 5.5f, 0},  {30.5f, 15.5f, 0}, {41.5f, 15.5f, 0},
                                        {41.5f, 39.5f, 0}, {44.5f, 39.5f, 0}, {44.5f, 50.5f, 0}, {90.5f, 50.5f, 0}};
    AddPolyline(style, points);
    const Picture picture = Draw();
    double run = 0.0;
    int looked = 0;
    for (std::size_t i = 0; i + 1 < points.size(); ++i)
    {
        const double dx = points[i + 1].x - points[i].x;
        const double dy = points[i + 1].y - points[i].y;
        const double length = std::hypot(dx, dy);
        for (double along = 2.0; along <= length - 2.0; along += 1.0)
        {
            const int x = static_cast<int>(std::floor(points[i].x + dx * along / length));
            const int y = static_cast<int>(std::floor(points[i].y + dy * along / length));
            if (x < 0)
            {
                continue;
            }
            const double into = std::fmod(run + along, 2.0 * dash);
            const double toRim = std::min({into, std::abs(into - dash), 2.0 * dash - into});
            if (toRim > 0.5)
            {
                ++looked;
                EXPECT_EQ(IsBlack(picture.At(x, y)), into < dash) << "segment " << i << " at " << along;
            }
        }
        run += length;
    }
    EXPECT_GT(looked, 90);
}

TEST_F(LineStageTest, LinesOfAPixelStayLinesUnderTheFilter)
{
    AddRect(AddMaterial(Color(0.5f, 0.5f, 0.5f)), {0, 0, 96, 64}, 0.0f, 1);
    AddPolyline(AddStyle(Color(0, 0, 0), 1.0f), {Vector(0, 20.5f, 0), Vector(96, 20.5f, 0)});
    AddPolyline(AddStyle(Color(0, 0, 0), 1.0f), {Vector(0, 30.0f, 0), Vector(96, 60.0f, 0)});
    const Picture plain = Draw();
    renderer->SetAAMode(AAModeFXAA);
    const Picture filtered = Draw(true);
    for (int x = 4; x < 92; ++x)
    {
        EXPECT_EQ(filtered.At(x, 20), kBlack) << x;
        EXPECT_EQ(filtered.At(x, 19), kGrey) << x;
        EXPECT_EQ(filtered.At(x, 21), kGrey) << x;
        // As much of a slanted one as a line of a pixel has, in each column.
        int taken = 0;
        for (int y = 24; y < 64; ++y)
        {
            taken += 128 - filtered.At(x, y).r;
        }
        EXPECT_NEAR(taken / 128.0, std::sqrt(1.0 + 30.0 * 30.0 / (96.0 * 96.0)), 0.1) << x;
    }
    // Shown once more without being drawn anew.
    app.RenderCapturedAndUI(renderer.get());
    ExpectSame(ReadPixels(), filtered, "shown again");
    EXPECT_EQ(plain.At(50, 20), kBlack);
}

TEST_F(LineStageTest, WhatIsHiddenIsDashedAndThinnerOnRequest)
{
    AddRect(AddMaterial(Color(0.5f, 0.5f, 0.5f)), {20, 0, 60, 64}, 10.0f, 1);
    AddPolyline(AddStyle(Color(0, 0, 0), 6.0f), {Vector(0, 32, 0), Vector(96, 32, 0)});
    const Picture without = Draw();
    EXPECT_EQ(without.Count(kBlack), 6 * (20 + 16));
    renderer->SetHiddenLines(HiddenLineLook{6.0f, 4.0f, 0.5f});
    const Picture with = Draw();
    int dashed = 0;
    for (int x = 24; x < 76; ++x)
    {
        EXPECT_EQ(with.At(x, 29), kGrey) << "as wide as half of the line";
        EXPECT_EQ(with.At(x, 34), kGrey);
        dashed += with.At(x, 32) == kBlack ? 1 : 0;
        EXPECT_EQ(with.At(x, 32) == kBlack, x % 10 < 6) << x;
    }
    EXPECT_GT(dashed, 20);
    EXPECT_EQ(with.At(10, 30), kBlack) << "what is seen is as ever";
    renderer->SetHiddenLines(std::nullopt);
    ExpectSame(Draw(), without, "taken back");
}

TEST_F(LineStageTest, GlassTintsWhatIsBehindItAndNotWhatIsBefore)
{
    Material& glass = AddMaterial(Color(1, 1, 1));
    glass.SetOpacity(0.5f);
    World().ProcessChangedMaterial(&glass);
    AddRect(glass, {20, 0, 60, 64}, 10.0f, 1);
    AddRect(AddMaterial(Color(0, 1, 0)), {0, 0, 96, 64}, -10.0f, 1);
    AddPolyline(AddStyle(Color(0, 0, 0), 4.0f), {Vector(0, 20, 0), Vector(96, 20, 0)});
    AddPolyline(AddStyle(Color(0, 0, 0), 4.0f), {Vector(0, 40, 20), Vector(96, 40, 20)});
    AddPolyline(AddStyle(Color(0, 0, 0), 4.0f), {Vector(0, 50, -20), Vector(96, 50, -20)});
    for (int styles = 3; styles > 0; styles -= 2)
    {
        const Picture picture = Draw();
        EXPECT_EQ(picture.At(10, 20), kBlack) << styles;
        EXPECT_NEAR(picture.At(50, 20).r, 128, 1) << styles;
        EXPECT_NEAR(picture.At(50, 20).g, 128, 1) << styles;
        EXPECT_EQ(picture.At(50, 40), styles == 3 ? kBlack : picture.At(50, 45)) << styles;
        EXPECT_EQ(picture.At(50, 50), picture.At(50, 55)) << "hidden behind the wall";
        // One style alone goes another way.
        while (World().GetLineStyles().size() > 1)
        {
            delete World().GetLineStyles().back();
        }
    }
}

TEST_F(LineStageTest, TheNearerOfTwoLinesOfOtherStylesIsOnTop)
{
    AddPolyline(AddStyle(Color(1, 0, 0), 6.0f), {Vector(20, 32, 0), Vector(80, 32, 0)});
    AddPolyline(AddStyle(Color(0, 1, 0), 6.0f), {Vector(30, 10, 5), Vector(30, 50, 5)});
    AddPolyline(AddStyle(Color(1, 1, 0), 6.0f), {Vector(60, 10, -5), Vector(60, 50, -5)});
    const Picture picture = Draw();
    EXPECT_EQ(picture.At(30, 32), (Pixel{0, 255, 0, 255}));
    EXPECT_EQ(picture.At(60, 32), (Pixel{255, 0, 0, 255}));
    EXPECT_EQ(picture.At(60, 20), (Pixel{255, 255, 0, 255}));
}

TEST_F(LineStageTest, WithoutSurfacesNothingHidesLines)
{
    AddRect(AddMaterial(Color(0.5f, 0.5f, 0.5f)), {20, 0, 60, 64}, 10.0f, 1);
    AddPolyline(AddStyle(Color(0, 0, 0), 4.0f), {Vector(0, 32, 0), Vector(96, 32, 0)});
    EXPECT_EQ(Draw().At(50, 32), kGrey);
    renderer->ShowSurfaces(false);
    EXPECT_EQ(Draw().At(50, 32), kBlack);
}
