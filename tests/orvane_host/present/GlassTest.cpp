#include "tests/orvane_host/present/PictureRows.h"
#include "tests/orvane_host/present/PresentationModels.h"
#include "tests/support/ShowMesh.h"

#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace OV::Test
{

namespace
{

using Host::GlassOrder;
using Host::PresentationSettings;

/// A sheet that looks along +Z, over -1 to 1 each way, unlit.
struct Sheet
{
    Color color;   ///< alpha is the opacity
    float z = 0.0f;
    float tilt = 0.0f; ///< how much farther it is at x = 1 than at 0
};

constexpr int kWidth = 64;
constexpr int kHeight = 48;
constexpr float kBackground = 1.0f;

class Glass : public PresentationFixture
{
protected:
    explicit Glass(int samples = 0) : PresentationFixture(kWidth, kHeight, samples) {}

    static std::unique_ptr<Host::Presentation> Present(const std::vector<Sheet>& sheets)
    {
        auto scene = std::make_unique<Scene>();
        for (const Sheet& sheet : sheets)
        {
            auto raw = std::make_shared<RawMesh>();
            raw->SetPositionBuffer({Vector(-1, -1, sheet.z + sheet.tilt), Vector(1, -1, sheet.z - sheet.tilt),
                                    Vector(1, 1, sheet.z - sheet.tilt), Vector(-1, 1, sheet.z + sheet.tilt)});
            raw->SetNormalBuffer(std::vector<Vector>(4, Vector(0, 0, 1)));
            raw->SetIndices({0, 1, 2, 0, 2, 3});
            raw->EndDescription(true);
            auto* const material = new Material("sheet");
            material->SetDiffuse(sheet.color);
            material->SetAmbient(Color(0, 0, 0));
            material->SetFlags(MaterialFlagUnlit);
            scene->AddMaterial(material);
            ShowMesh(raw, *material, *scene);
        }
        return std::make_unique<Host::Presentation>(std::move(scene));
    }

    static PresentationSettings FromTheFront(GlassOrder order)
    {
        PresentationSettings wanted;
        wanted.antialiasing = Host::Antialiasing::None;
        wanted.background = Color(kBackground, kBackground, kBackground);
        wanted.view.eye = Vector(0, 0, 20);
        wanted.view.target = Vector(0, 0, 0);
        wanted.view.orthographic = true;
        // The sheets are as high as the view, and leave a rim beside.
        wanted.view.fov = 5.7f;
        wanted.glass.order = order;
        return wanted;
    }

    /// Over a background, the nearest last.
    static std::array<float, 3> Over(std::vector<Sheet> sheets, float x, float background = kBackground)
    {
        const auto depthOf = [x](const Sheet& sheet) { return sheet.z - x * sheet.tilt; };
        std::sort(sheets.begin(), sheets.end(),
                  [&](const Sheet& a, const Sheet& b) { return depthOf(a) < depthOf(b); });
        std::array<float, 3> seen = {background, background, background};
        for (const Sheet& sheet : sheets)
        {
            const float channels[] = {sheet.color.r, sheet.color.g, sheet.color.b};
            for (std::size_t i = 0; i < 3; ++i)
            {
                seen[i] += sheet.color.a * (channels[i] - seen[i]);
            }
        }
        return seen;
    }

    static void ExpectNear(const Pixel& actual, const std::array<float, 3>& expected, const std::string& what)
    {
        constexpr float most = 2.0f;
        EXPECT_NEAR(actual.r, 255.0f * expected[0], most) << what;
        EXPECT_NEAR(actual.g, 255.0f * expected[1], most) << what;
        EXPECT_NEAR(actual.b, 255.0f * expected[2], most) << what;
    }

    /// The column at a share of the sheets' half width.
    static int ColumnAt(float x, int width, int height)
    {
        // Half the view's height is tan(2.85 degrees) of the distance, which the sheets fill.
        const float half = static_cast<float>(height) / 2.0f / (20.0f * std::tan(2.85f * std::acos(-1.0f) / 180.0f));
        return static_cast<int>(static_cast<float>(width) / 2.0f + x * half);
    }

    static Pixel At(const Picture& picture, float x)
    {
        return picture.At(ColumnAt(x, kWidth, kHeight), kHeight / 2);
    }

    static Rows Write(Host::Presentation& presentation, const Host::PictureOptions& options, int leastTiles)
    {
        Host::PictureFacts facts;
        const Rows rows = WriteRows(presentation, options, facts);
        EXPECT_GE(facts.tiles, leastTiles);
        return rows;
    }

    Picture DrawWith(Host::Presentation& presentation, const PresentationSettings& wanted) const
    {
        Apply(presentation, wanted);
        return Draw(presentation);
    }

    const std::vector<Sheet> sheets = {
        {Color(0.8f, 0.8f, 0.2f, 1.0f), -3.0f},
        {Color(1.0f, 0.0f, 0.0f, 0.5f), 1.0f},
        {Color(0.0f, 1.0f, 0.0f, 0.3f), 1.5f, 2.0f}, ///< through the two about it
        {Color(0.0f, 0.2f, 1.0f, 0.8f), 2.0f},
    };
};

/// The same where the picture has samples.
class SampledGlass : public Glass
{
protected:
    SampledGlass() : Glass(4) {}
};

constexpr float kPlaces[] = {-0.9f, -0.5f, -0.1f, 0.1f, 0.5f, 0.9f};

TEST_F(Glass, LiesInOrderAtEveryPixelHoweverItIsListed)
{
    std::vector<std::size_t> order = {0, 1, 2, 3};
    do
    {
        std::vector<Sheet> listed;
        std::string name;
        for (const std::size_t i : order)
        {
            listed.push_back(sheets[i]);
            name += std::to_string(i);
        }
        const auto presentation = Present(listed);
        Apply(*presentation, FromTheFront(GlassOrder::Exact));
        const Picture picture = Draw(*presentation);
        for (const float x : kPlaces)
        {
            ExpectNear(At(picture, x), Over(sheets, x), name + " at " + std::to_string(x));
        }
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(Glass, DiffersFromTheOrderOfTheScene)
{
    // The nearest first: its depth hides what comes later.
    const std::vector<Sheet> two = {{Color(1.0f, 0.0f, 0.0f, 0.5f), 2.0f}, {Color(0.0f, 0.0f, 1.0f, 0.5f), 1.0f}};
    const auto presentation = Present(two);
    Apply(*presentation, FromTheFront(GlassOrder::Scene));
    ExpectNear(At(Draw(*presentation), 0.1f), Over({two[0]}, 0.1f), "the order of the scene");
    Apply(*presentation, FromTheFront(GlassOrder::Exact));
    ExpectNear(At(Draw(*presentation), 0.1f), Over(two, 0.1f), "at every pixel");
}

TEST_F(Glass, IsTheSameInEveryLookThatShowsIt)
{
    const auto presentation = Present(sheets);
    const auto turned = Present({sheets[3], sheets[2], sheets[1], sheets[0]});
    for (const Host::Look look : {Host::Look::Basic, Host::Look::Advanced, Host::Look::Phong})
    {
        PresentationSettings wanted = FromTheFront(GlassOrder::Exact);
        wanted.look = look;
        for (const Host::BatchUse use : {Host::BatchUse::Off, Host::BatchUse::On})
        {
            wanted.batches.use = use;
            Apply(*presentation, wanted);
            const Picture first = Draw(*presentation);
            const Picture picture = Draw(*presentation);
            ExpectSame(picture, first, "the same frame again");
            const Picture other = DrawWith(*turned, wanted);
            for (const float x : kPlaces)
            {
                // That look adds a shine of its own.
                const Pixel pixel = At(other, x);
                const std::array<float, 3> seen = {pixel.r / 255.0f, pixel.g / 255.0f, pixel.b / 255.0f};
                ExpectNear(At(picture, x), look == Host::Look::Phong ? seen : Over(sheets, x), Host::NameOfLook(look));
            }
        }
    }
}

TEST_F(SampledGlass, IsAsRightAndHasSmoothRims)
{
    std::vector<Sheet> before = {{Color(1.0f, 0.0f, 0.0f, 0.5f), 1.0f}, {Color(0.0f, 0.0f, 1.0f, 0.5f), 2.0f}};
    const auto presentation = Present(before);
    PresentationSettings wanted = FromTheFront(GlassOrder::Exact);
    wanted.antialiasing = Host::Antialiasing::Multisampling;
    // Turned, so that rims cross pixels.
    wanted.view.up = Vector(0.3f, 1.0f, 0.0f);
    wanted.view.fov = 9.0f;
    Apply(*presentation, wanted);
    const Picture picture = Draw(*presentation);
    ExpectNear(picture.At(kWidth / 2, kHeight / 2), Over(before, 0.0f), "in the middle");
    const Pixel middle = picture.At(kWidth / 2, kHeight / 2);
    const int between = kWidth * kHeight - picture.Count(middle) - picture.Count(Pixel{255, 255, 255, 255});
    EXPECT_GT(between, 60) << "pixels that the rims cross";
}

TEST_F(Glass, HasItsColorsBesideLines)
{
    const auto presentation = Present(sheets);
    PresentationSettings wanted = FromTheFront(GlassOrder::Exact);
    wanted.lines.emplace();
    Apply(*presentation, wanted);
    const Picture picture = Draw(*presentation);
    for (const float x : kPlaces)
    {
        ExpectNear(At(picture, x), Over(sheets, x), std::to_string(x));
    }
}

TEST_F(Glass, HasItsColorsWhereRimsAreFilteredAndWherePixelsAreFiner)
{
    const auto presentation = Present(sheets);
    for (const Host::Antialiasing way : {Host::Antialiasing::Filter, Host::Antialiasing::Supersampling})
    {
        for (const bool lines : {false, true})
        {
            PresentationSettings wanted = FromTheFront(GlassOrder::Exact);
            wanted.antialiasing = way;
            wanted.lines = lines ? std::optional<Host::LineSettings>(Host::LineSettings()) : std::nullopt;
            const Picture picture = DrawWith(*presentation, wanted);
            for (const float x : kPlaces)
            {
                ExpectNear(At(picture, x), Over(sheets, x),
                           std::to_string(static_cast<int>(way)) + (lines ? " with lines at " : " at ") + std::to_string(x));
            }
        }
    }
}

TEST_F(Glass, HasStraightAlphaOverNothing)
{
    const std::vector<Sheet> panes(sheets.begin() + 1, sheets.end());
    float through = 1.0f;
    for (const Sheet& pane : panes)
    {
        through *= 1.0f - pane.color.a;
    }
    const auto presentation = Present(panes);
    for (const Host::Antialiasing way : {Host::Antialiasing::None, Host::Antialiasing::Multisampling})
    {
        PresentationSettings wanted = FromTheFront(GlassOrder::Exact);
        wanted.antialiasing = way;
        // Nothing of it is to be seen.
        wanted.background = Color(0.2f, 0.9f, 0.4f);
        Apply(*presentation, wanted);
        for (const int bits : {8, 16})
        {
            for (const int tile : {0, 64})
            {
                Host::PictureOptions options;
                options.width = 256;
                options.height = 192;
                options.transparent = true;
                options.bits = bits;
                options.longestTile = tile;
                const Rows rows = Write(*presentation, options, tile > 0 ? 12 : 1);
                const double unit = bits == 16 ? 257.0 : 1.0;
                for (const float x : kPlaces)
                {
                    const std::string what = std::to_string(bits) + " bits in tiles of " + std::to_string(tile) + " at "
                        + std::to_string(x);
                    const int column = ColumnAt(x, options.width, options.height);
                    const std::array<float, 3> light = Over(panes, x, 0.0f);
                    for (int channel = 0; channel < 3; ++channel)
                    {
                        const float straight = light[static_cast<std::size_t>(channel)] / (1.0f - through);
                        EXPECT_NEAR(rows.At(column, options.height / 2, channel) / unit, 255.0f * straight, 2.0f) << what;
                    }
                    EXPECT_NEAR(rows.At(column, options.height / 2, 3) / unit, 255.0f * (1.0f - through), 2.0f) << what;
                }
                for (int channel = 0; channel < 4; ++channel)
                {
                    EXPECT_EQ(rows.At(2, 100, channel), 0) << "beside the panes";
                }
            }
        }
    }
}

TEST_F(Glass, IsTheSameInTiles)
{
    const auto presentation = Present(sheets);
    for (const Host::Antialiasing way : {Host::Antialiasing::None, Host::Antialiasing::Multisampling,
                                         Host::Antialiasing::Filter, Host::Antialiasing::Supersampling})
    {
        for (const GlassOrder order : {GlassOrder::Exact, GlassOrder::Weighted})
        {
            PresentationSettings wanted = FromTheFront(order);
            wanted.antialiasing = way;
            wanted.lines.emplace();
            wanted.view.orthographic = false;
            wanted.view.up = Vector(0.3f, 1.0f, 0.0f);
            wanted.view.eye = Vector(3, 2, 20);
            Apply(*presentation, wanted);
            Host::PictureOptions options;
            options.width = 400;
            options.height = 300;
            const Rows whole = Write(*presentation, options, 1);
            options.longestTile = 128;
            const Rows tiled = Write(*presentation, options, 6);
            int differing = 0;
            for (std::size_t i = 0; i < whole.data.size(); ++i)
            {
                differing += std::abs(int(whole.data[i]) - int(tiled.data[i])) > 1 ? 1 : 0;
            }
            EXPECT_EQ(differing, 0) << "way " << static_cast<int>(way) << ", order " << static_cast<int>(order);
            std::vector<unsigned char> colors(whole.data);
            std::sort(colors.begin(), colors.end());
            EXPECT_GT(std::unique(colors.begin(), colors.end()) - colors.begin(), 10) << "there is something to see";
        }
    }
}

TEST_F(Glass, BeyondTheLayersIsMixed)
{
    const std::vector<Sheet> three = {sheets[1], {Color(0.0f, 1.0f, 0.0f, 0.3f), 1.5f}, sheets[3]};
    const auto presentation = Present(three);
    PresentationSettings wanted = FromTheFront(GlassOrder::Exact);
    wanted.glass.layers = 1;
    Apply(*presentation, wanted);
    // Each counts by how dense it is.
    const float red = -std::log(0.5f);
    const float green = -std::log(0.7f);
    const float opacity = 1.0f - 0.5f * 0.7f;
    const Sheet mixed{Color(red / (red + green), green / (red + green), 0.0f, opacity), 1.0f};
    ExpectNear(At(Draw(*presentation), 0.1f), Over({mixed, sheets[3]}, 0.1f), "one layer");
    wanted.glass.layers = 3;
    Apply(*presentation, wanted);
    ExpectNear(At(Draw(*presentation), 0.1f), Over(three, 0.1f), "as many as there are");
}

TEST_F(Glass, MixedDoesNotDependOnTheOrder)
{
    const std::vector<Sheet> two = {sheets[0], sheets[1], sheets[3]};
    const auto first = Present(two);
    const auto second = Present({sheets[3], sheets[1], sheets[0]});
    Apply(*first, FromTheFront(GlassOrder::Weighted));
    Apply(*second, FromTheFront(GlassOrder::Weighted));
    const Picture picture = Draw(*first);
    const Picture other = Draw(*second);
    for (const float x : kPlaces)
    {
        const Pixel pixel = At(other, x);
        ExpectNear(At(picture, x), {pixel.r / 255.0f, pixel.g / 255.0f, pixel.b / 255.0f}, "the other order");
    }
    // One alone is as it should be.
    const auto one = Present({sheets[0], sheets[3]});
    Apply(*one, FromTheFront(GlassOrder::Weighted));
    ExpectNear(At(Draw(*one), 0.1f), Over({sheets[0], sheets[3]}, 0.1f), "one");
}

TEST_F(Glass, IsMixedInAHurryAndExactAtRest)
{
    const auto presentation = Present(sheets);
    Apply(*presentation, FromTheFront(GlassOrder::Exact));
    const Picture exact = Draw(*presentation);
    presentation->Hurry(false);
    EXPECT_FALSE(presentation->NeedsDraw());
    presentation->Hurry(true);
    EXPECT_TRUE(presentation->NeedsDraw());
    const Picture hurried = Draw(*presentation);
    EXPECT_NE(At(hurried, 0.1f), At(exact, 0.1f));
    Apply(*presentation, FromTheFront(GlassOrder::Weighted));
    ExpectSame(Draw(*presentation), hurried, "mixed");
    Apply(*presentation, FromTheFront(GlassOrder::Exact));
    presentation->Hurry(false);
    ExpectSame(Draw(*presentation), exact, "exact again");
}

TEST_F(Glass, IsCutByPlanes)
{
    const auto presentation = Present(sheets);
    PresentationSettings wanted = FromTheFront(GlassOrder::Exact);
    wanted.section.planes.push_back({Vector(0, 0, 1), Vector(0, 0, 1.75f)});
    wanted.section.fill.reset();
    wanted.section.outlineWidth = 0.0f;
    Apply(*presentation, wanted);
    // What is left of the slanting one is its farther half.
    const Picture picture = Draw(*presentation);
    ExpectNear(At(picture, 0.5f), Over({sheets[0], sheets[1], sheets[2]}, 0.5f), "the farther half");
    ExpectNear(At(picture, -0.5f), Over({sheets[0], sheets[1]}, -0.5f), "the nearer half");
}

} // namespace

} // namespace OV::Test
