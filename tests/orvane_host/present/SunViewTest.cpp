#include "orvane_host/present/detail/SunView.h"

#include <glm/ext/matrix_clip_space.hpp>
#include <glm/ext/matrix_transform.hpp>
#include <glm/geometric.hpp>
#include <glm/gtc/matrix_access.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <random>
#include <set>
#include <vector>

namespace OV::Host::Detail
{

namespace
{

CastBox BoxAt(const glm::dvec3& middle, const glm::dvec3& half)
{
    CastBox box;
    box.middle = middle;
    for (int axis = 0; axis < 3; ++axis)
    {
        box.halves[static_cast<std::size_t>(axis)] = glm::dvec3(0.0);
        box.halves[static_cast<std::size_t>(axis)][axis] = half[axis];
    }
    return box;
}

/// A flat site of a length, seen from an eye near the ground or from afar.
struct Site
{
    explicit Site(double length) : half(length / 2.0)
    {
        boxes = {BoxAt(glm::dvec3(0, -0.5, 0), glm::dvec3(half, 0.5, half)),
                 BoxAt(glm::dvec3(0, 5, 0), glm::dvec3(4, 5, 4))};
    }

    SunView See(const glm::dvec3& eye, const glm::dvec3& target, int mostParts = SunView::MostTiles) const
    {
        SunView::Request request;
        request.mostParts = mostParts;
        request.towardSun = glm::normalize(glm::dvec3(0.4, 0.5, 0.3));
        request.worldToClip = glm::perspective(0.8, 1.5, 0.1, 4.0 * half + glm::length(eye))
            * glm::lookAt(eye, target, glm::dvec3(0, 1, 0));
        request.pixels = {900, 600};
        request.low = glm::dvec3(-half, -1, -half);
        request.high = glm::dvec3(half, 10, half);
        worldToClip = request.worldToClip;
        return SunView(request, boxes);
    }

    double half;
    std::vector<CastBox> boxes;
    mutable glm::dmat4 worldToClip{1.0};
};

bool IsIn(const SunView::Tile& tile, const glm::dvec3& place, int rim = 3)
{
    const glm::dvec4 at = tile.toMap * glm::dvec4(place, 1.0);
    return at.x >= tile.low.x + rim && at.x <= tile.high.x - rim && at.y >= tile.low.y + rim && at.y <= tile.high.y - rim;
}

/// The part that what lies at a distance from the eye is looked up in.
const SunView::Tile& TileAt(const SunView& view, double distance)
{
    const SunView::Slices& slices = view.GetSlices();
    const double slice = std::floor(slices.perOctave * std::log2(distance) + slices.atOne);
    return view.GetTiles()[static_cast<std::size_t>(std::clamp(slice, 0.0, static_cast<double>(view.GetTiles().size() - 1)))];
}

/// Pixels between two places that are close together.
double PixelsBetween(const glm::dmat4& worldToClip, const glm::dvec3& a, const glm::dvec3& b)
{
    const auto pixel = [&](const glm::dvec3& place) {
        const glm::dvec4 clip = worldToClip * glm::dvec4(place, 1.0);
        return glm::dvec2(450.0 * clip.x / clip.w, 300.0 * clip.y / clip.w);
    };
    return glm::length(pixel(b) - pixel(a));
}

} // namespace

TEST(SunView, NothingCastsFromBeyondItsReach)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<double> from(-1.0, 1.0);
    for (int i = 0; i < 200; ++i)
    {
        SunView::Request request;
        request.towardSun = glm::normalize(glm::dvec3(from(random), from(random), from(random)));
        request.low = glm::dvec3(-40);
        request.high = glm::dvec3(40);
        request.worldToClip = glm::perspective(0.8, 1.5, 0.1, 400.0)
            * glm::lookAt(glm::dvec3(70, 50, 60), glm::dvec3(0), glm::dvec3(0, 1, 0));
        const glm::dvec3 half(30, 2, 20);
        const SunView view(request, {BoxAt(glm::dvec3(1, 2, 3), half)});
        const glm::dvec4 reach = view.GetReach();
        const glm::dvec3 inside = glm::dvec3(1, 2, 3) + half * glm::dvec3(from(random), from(random), from(random));
        const double length = glm::dot(reach, glm::dvec4(inside, 1.0)) * view.GetRange();
        // To the faces of the box on the side of the sun, of which the nearest is passed first.
        double ways[3];
        for (int axis = 0; axis < 3; ++axis)
        {
            const double toward = request.towardSun[axis];
            const double face = glm::dvec3(1, 2, 3)[axis] + (toward > 0.0 ? half : -half)[axis];
            ways[axis] = (face - inside[axis]) / toward;
        }
        const double nearest = *std::min_element(std::begin(ways), std::end(ways));
        EXPECT_GE(length, nearest - 1e-9);
        // Between two faces, of the pair that light passes fastest.
        double fastest = std::numeric_limits<double>::infinity();
        for (int axis = 0; axis < 3; ++axis)
        {
            fastest = std::min(fastest, 2.0 * half[axis] / std::abs(request.towardSun[axis]));
        }
        EXPECT_LE(length, fastest + 1e-9);
    }
}

TEST(SunView, OfAllThereIsOnePartThatStaysWhileTheEyeMoves)
{
    const Site site(20.0);
    const SunView first = site.See({30, 20, 30}, {0, 0, 0});
    ASSERT_EQ(first.GetTiles().size(), 1u);
    for (const glm::dvec3 eye : {glm::dvec3(30.1, 20.2, 29.8), glm::dvec3(-30, 20, 30)})
    {
        const SunView next = site.See(eye, {0.1, 0, 0});
        ASSERT_EQ(next.GetTiles().size(), 1u);
        EXPECT_EQ(next.GetTiles().front().toMap, first.GetTiles().front().toMap);
        EXPECT_EQ(next.GetSize(), first.GetSize());
    }
}

// As of plans, elevations and what is seen of a site from above.
TEST(SunView, HasTexelsOfAPixelOnWhatFacesAnEyeWithoutPerspective)
{
    std::mt19937 random(11);
    std::uniform_real_distribution<double> from(-1.0, 1.0);
    int checked = 0;
    for (int i = 0; i < 500; ++i)
    {
        SunView::Request request;
        request.perspective = false;
        request.towardSun = glm::normalize(glm::dvec3(from(random), 1.0 + from(random), from(random)));
        const glm::dvec3 eye = 90.0 * glm::normalize(glm::dvec3(from(random), 0.9 * from(random), from(random)));
        const glm::dvec3 normal = glm::normalize(eye);
        // Flatter light would take more texels than there are.
        const double toward = std::abs(glm::dot(request.towardSun, normal));
        if (toward < 0.3)
        {
            continue;
        }
        ++checked;
        request.pixels = {900, 600};
        request.low = glm::dvec3(-20);
        request.high = glm::dvec3(20);
        request.worldToClip =
            glm::ortho(-60.0, 60.0, -40.0, 40.0, 1.0, 200.0) * glm::lookAt(eye, glm::dvec3(0), glm::dvec3(0, 1, 0));
        const SunView view(request, {BoxAt(glm::dvec3(0), glm::dvec3(20))});
        ASSERT_EQ(view.GetTiles().size(), 1u);
        const glm::dmat3 toMap(view.GetTiles().front().toMap);
        glm::dmat3 toPlane(glm::row(toMap, 0), glm::row(toMap, 1), normal);
        toPlane = glm::inverse(glm::transpose(toPlane));
        for (int axis = 0; axis < 2; ++axis)
        {
            EXPECT_LE(PixelsBetween(request.worldToClip, glm::dvec3(0), toPlane[axis]), 1.001) << axis << " of " << i;
        }
    }
    EXPECT_GT(checked, 200);
}

TEST(SunView, HasOnePartWithoutPerspectiveHoweverLargeThePicture)
{
    SunView::Request request;
    request.perspective = false;
    request.towardSun = glm::normalize(glm::dvec3(0.4, 0.5, 0.3));
    request.pixels = {9000, 6000};
    request.mostTexels = 2048;
    request.low = glm::dvec3(-20);
    request.high = glm::dvec3(20);
    request.worldToClip = glm::ortho(-60.0, 60.0, -40.0, 40.0, 1.0, 200.0)
        * glm::lookAt(glm::dvec3(30, 20, 60), glm::dvec3(0), glm::dvec3(0, 1, 0));
    const SunView view(request, {BoxAt(glm::dvec3(0), glm::dvec3(20))});
    ASSERT_EQ(view.GetTiles().size(), 1u);
    const glm::ivec2 texels = view.GetTiles().front().high - view.GetTiles().front().low;
    EXPECT_GT(std::min(texels.x, texels.y), 1500);
    EXPECT_LE(std::max(texels.x, texels.y), 2048);
}

TEST(SunView, CoversAllThatIsSeenByTheDistanceOfIt)
{
    std::mt19937 random(5);
    for (const double length : {20.0, 400.0, 10000.0})
    {
        const Site site(length);
        for (const glm::dvec3 eye : {glm::dvec3(12, 1.7, 9), glm::dvec3(30, 20, 30)})
        {
            const SunView view = site.See(eye, {0, 2, 0});
            int seen = 0;
            for (int i = 0; i < 20000; ++i)
            {
                std::uniform_real_distribution<double> across(-site.half, site.half);
                // Most of what is seen is close by.
                const double share = std::pow(10.0, -static_cast<double>(i % 4));
                const glm::dvec3 place(share * across(random), 0.0, share * across(random));
                const glm::dvec4 clip = site.worldToClip * glm::dvec4(place, 1.0);
                if (std::abs(clip.x) < clip.w && std::abs(clip.y) < clip.w && std::abs(clip.z) < clip.w)
                {
                    ++seen;
                    EXPECT_TRUE(IsIn(TileAt(view, clip.w), place)) << place.x << ", " << place.z << " of " << length;
                }
            }
            EXPECT_GT(seen, 1000);
        }
    }
}

TEST(SunView, HasNoMorePartsThanItMay)
{
    const Site site(400.0);
    for (const int parts : {1, 3, 4, 7, 8})
    {
        const SunView view = site.See({12, 1.7, 9}, {0, 2, 0}, parts);
        EXPECT_LE(view.GetTiles().size(), static_cast<std::size_t>(parts));
        EXPECT_EQ(view.CountCells(), parts < 4 ? 1 : parts < 8 ? 4 : 8);
        for (const glm::dvec3 place : {glm::dvec3(6, 0, 5), glm::dvec3(-30, 0, -20)})
        {
            const glm::dvec4 clip = site.worldToClip * glm::dvec4(place, 1.0);
            EXPECT_TRUE(IsIn(TileAt(view, clip.w), place)) << place.x << " of " << parts;
        }
    }
}

TEST(SunView, LeavesNoPartEmptyBetweenOthers)
{
    // What is seen of a box and what casts are convex: those nearer than it or beyond it alone can be empty.
    std::mt19937 random(3);
    std::uniform_real_distribution<double> across(-200.0, 200.0);
    std::uniform_real_distribution<double> size(0.5, 30.0);
    int between = 0;
    for (int i = 0; i < 1000; ++i)
    {
        Site site(400.0);
        site.boxes = {BoxAt({across(random), 5, across(random)}, {size(random), 5, size(random)})};
        const SunView view = site.See({across(random), 1.7, across(random)}, {across(random), 2, across(random)});
        for (std::size_t part = 1; part + 1 < view.GetTiles().size(); ++part)
        {
            // One without anything has the margins alone.
            const glm::ivec2 texels = view.GetTiles()[part].high - view.GetTiles()[part].low;
            EXPECT_GT(std::min(texels.x, texels.y), 10) << part << " of " << i;
            ++between;
        }
    }
    EXPECT_GT(between, 50);
}

TEST(SunView, FindsTheShadowOfWhatStandsFarFromTheEye)
{
    // Nothing casts into the parts near the eye, which there are none of then.
    Site site(1000.0);
    site.boxes = {BoxAt(glm::dvec3(0, 5, -265), glm::dvec3(25, 5, 235))};
    const SunView view = site.See({0, 1.7, 0}, {0, 2, -300});
    ASSERT_GT(view.GetTiles().size(), 1u);
    std::mt19937 random(9);
    std::uniform_real_distribution<double> across(-60.0, 60.0);
    std::uniform_real_distribution<double> away(20.0, 500.0);
    int seen = 0;
    for (int i = 0; i < 5000; ++i)
    {
        const glm::dvec3 place(across(random), 0.0, -away(random));
        const glm::dvec4 clip = site.worldToClip * glm::dvec4(place, 1.0);
        // Rims of parts reach up to so many texels beyond what casts.
        const bool isShadowed = std::any_of(view.GetTiles().begin(), view.GetTiles().end(),
                                            [&](const SunView::Tile& tile) { return IsIn(tile, place, 10); });
        if (isShadowed && std::abs(clip.x) < clip.w)
        {
            ++seen;
            EXPECT_TRUE(IsIn(TileAt(view, clip.w), place)) << place.x << ", " << place.z;
        }
    }
    EXPECT_GT(seen, 500);
}

TEST(SunView, HasTexelsNoLargerThanPixelsOnASmallSite)
{
    const Site site(20.0);
    const SunView view = site.See({30, 20, 30}, {0, 0, 0});
    const SunView::Tile& tile = view.GetTiles().front();
    const glm::dmat4 toWorld = glm::inverse(tile.toClip);
    const glm::dvec2 texels = tile.cellHigh - tile.cellLow;
    const glm::dvec3 middle(0, 0, 0);
    const glm::dvec3 across = glm::dvec3(toWorld[0]) * (2.0 / texels.x);
    const glm::dvec3 up = glm::dvec3(toWorld[1]) * (2.0 / texels.y);
    EXPECT_LE(PixelsBetween(site.worldToClip, middle, across), 1.0);
    EXPECT_LE(PixelsBetween(site.worldToClip, middle, up), 1.0);
    EXPECT_GT(PixelsBetween(site.worldToClip, middle, across), 0.2);
}

// The higher the sun stands, the farther it draws texels out on walls, and the lower, on the ground.
TEST(SunView, HasTexelsNoTallerThanAPixelOnWallsAndTheGround)
{
    for (const double height : {0.27, 0.5, 1.0, 2.0, 3.6})
    {
        SCOPED_TRACE(height);
        SunView::Request request;
        request.towardSun = glm::normalize(glm::dvec3(0.2, height, 1.0));
        request.pixels = {900, 600};
        request.low = glm::dvec3(-5);
        request.high = glm::dvec3(5);
        request.worldToClip = glm::perspective(0.8, 1.5, 0.1, 100.0)
            * glm::lookAt(glm::dvec3(9, 14, 34), glm::dvec3(0), glm::dvec3(0, 1, 0));
        const SunView view(request, {BoxAt(glm::dvec3(0), glm::dvec3(5))});
        ASSERT_EQ(view.GetTiles().size(), 1u);
        const glm::dmat3 back = glm::inverse(glm::dmat3(view.GetTiles().front().toMap));
        for (const int normal : {1, 2})
        {
            // A texel's upright edge, along the light to what it lies on.
            const glm::dvec3 edge = back[1] - back[2] * (back[1][normal] / back[2][normal]);
            EXPECT_LE(PixelsBetween(request.worldToClip, glm::dvec3(0), edge), 1.0) << normal;
        }
    }
}

TEST(SunView, HasFinerTexelsWhereOnePartHoldsAll)
{
    const auto see = [](double texelOfWhole, int mostTexels) {
        SunView::Request request;
        request.towardSun = glm::normalize(glm::dvec3(0.4, 0.8, 0.3));
        request.texel = 1.2;
        request.texelOfWhole = texelOfWhole;
        request.mostTexels = mostTexels;
        request.pixels = {900, 600};
        request.low = glm::dvec3(-5);
        request.high = glm::dvec3(5);
        request.worldToClip = glm::perspective(0.8, 1.5, 0.1, 100.0)
            * glm::lookAt(glm::dvec3(0, 14, 34), glm::dvec3(0), glm::dvec3(0, 1, 0));
        return SunView(request, {BoxAt(glm::dvec3(0), glm::dvec3(5))});
    };
    const SunView coarse = see(1.2, 4096);
    const SunView fine = see(0.6, 4096);
    const SunView unaware = see(5.0, 4096);
    const SunView small = see(0.6, std::max(coarse.GetSize().x, coarse.GetSize().y));
    ASSERT_EQ(fine.GetTiles().size(), 1u);
    EXPECT_NEAR(fine.GetTiles().front().step.x, 0.5 * coarse.GetTiles().front().step.x, 1e-9);
    EXPECT_NEAR(fine.GetTiles().front().step.y, 0.5 * coarse.GetTiles().front().step.y, 1e-9);
    EXPECT_EQ(unaware.GetTiles().front().toMap, coarse.GetTiles().front().toMap);
    // Rather coarse ones than several parts, which are drawn anew whenever the eye moves.
    ASSERT_EQ(small.GetTiles().size(), 1u);
    EXPECT_EQ(small.GetTiles().front().toMap, coarse.GetTiles().front().toMap);
}

TEST(SunView, TellsPixelsApartBesideAWallOfALargeSite)
{
    // The wall stands two metres before the eye.
    const Site site(500.0);
    const SunView view = site.See({6, 1.7, 0}, {4, 1.7, 0});
    for (const glm::dvec3 place : {glm::dvec3(4, 1.7, 0), glm::dvec3(4, 2.2, 0.7), glm::dvec3(4, 1.1, -0.9)})
    {
        const auto tile = std::find_if(view.GetTiles().begin(), view.GetTiles().end(),
                                       [&](const SunView::Tile& one) { return IsIn(one, place); });
        ASSERT_NE(tile, view.GetTiles().end());
        // The wall's own texels: along the light to the wall.
        const glm::dmat3 toMap(tile->toMap);
        const glm::dmat3 back = glm::inverse(toMap);
        for (int axis = 0; axis < 2; ++axis)
        {
            const glm::dvec3 light = back[2];
            const glm::dvec3 edge = back[axis] - light * (back[axis].x / light.x);
            const double pixels = PixelsBetween(site.worldToClip, place, place + edge);
            EXPECT_LE(pixels, 1.4);
            EXPECT_GT(pixels, 0.1);
        }
    }
}

TEST(SunView, HasItsTexelsOnAGridThatStays)
{
    const Site site(2000.0);
    const SunView first = site.See({12, 1.7, 9}, {0, 2, 0});
    const SunView next = site.See({12.37, 1.7, 9.41}, {0.2, 2, 0});
    ASSERT_GT(first.GetTiles().size(), 1u);
    int compared = 0;
    for (const SunView::Tile& one : first.GetTiles())
    {
        for (const SunView::Tile& other : next.GetTiles())
        {
            if (one.step == other.step)
            {
                ++compared;
                for (int axis = 0; axis < 2; ++axis)
                {
                    const double shift = one.toMap[3][axis] - other.toMap[3][axis];
                    EXPECT_NEAR(shift, std::round(shift), 1e-6);
                }
            }
        }
    }
    EXPECT_GT(compared, 0);
}

TEST(SunView, HasTheSameFinestStepWhetherAnythingIsSeenNearTheEyeOrNot)
{
    const std::vector<CastBox> boxes = {BoxAt(glm::dvec3(0, 2, 0), glm::dvec3(4, 2, 4))};
    std::set<std::size_t> counts;
    std::set<double> steps;
    for (double x = 2.0; x < 12.0; x += 0.25)
    {
        SunView::Request request;
        request.towardSun = glm::normalize(glm::dvec3(0.4, 0.5, 0.3));
        const glm::dvec3 eye(x, 1.0, 0.0);
        request.worldToClip = glm::perspective(0.8, 1.5, 0.1, 16.0)
            * glm::lookAt(eye, eye - glm::dvec3(1, 0, 0), glm::dvec3(0, 1, 0));
        request.pixels = {900, 600};
        request.low = glm::dvec3(-60, -60, -60);
        request.high = glm::dvec3(60, 60, 60);
        const SunView view(request, boxes);
        ASSERT_TRUE(view.HasParts());
        counts.insert(view.GetTiles().size());
        steps.insert(view.GetFinestStep() * view.GetRange());
    }
    EXPECT_GT(counts.size(), 1u);
    EXPECT_EQ(steps.size(), 1u);
}

TEST(SunView, LeavesOutWhatCastsNothingIntoAPart)
{
    const Site site(20.0);
    const SunView view = site.See({30, 20, 30}, {0, 0, 0});
    const SunView::Tile& tile = view.GetTiles().front();
    EXPECT_TRUE(view.FootprintOf(site.boxes[1]).Meets(tile.area));
    EXPECT_FALSE(view.FootprintOf(BoxAt({100, 0, 0}, {1, 1, 1})).Meets(tile.area));
    // However far towards the sun.
    const CastBox far = BoxAt(1000.0 * glm::normalize(glm::dvec3(0.4, 0.5, 0.3)), {1, 1, 1});
    EXPECT_TRUE(view.FootprintOf(far).Meets(tile.area));
}

TEST(SunView, IsEmptyWhereNothingCastsOrNothingIsSeen)
{
    Site site(20.0);
    EXPECT_TRUE(site.See({30, 20, 30}, {60, 40, 60}).GetTiles().empty());
    site.boxes.clear();
    const SunView view = site.See({30, 20, 30}, {0, 0, 0});
    EXPECT_TRUE(view.GetTiles().empty());
    EXPECT_EQ(view.GetSize(), glm::ivec2(0));
}

} // namespace OV::Host::Detail
