#include "orvane/effects/EffectES20.h"
#include "orvane/math/Quaternion.h"
#include "orvane/math/Transform.h"
#include "orvane/renderer/AAMode.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"
#include "tests/orvane_host/present/PresentationStage.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <set>

namespace OV::Test
{

namespace
{

using Host::EdgeLook;
using Host::Identity;

const Color kGrey(0.4f, 0.4f, 0.4f);
constexpr Pixel Grey{102, 102, 102, 255};

/// What the filter reads of a pixel of identifiers, in single precision as it does.
float Unpack(const Pixel& pixel)
{
    const auto channel = [](int value) { return static_cast<float>(value) / 255.0f; };
    return (channel(pixel.b) * 256.0f * 256.0f + channel(pixel.g) * 256.0f + channel(pixel.r)) * 256.0f;
}

/// How much of a line there is at a pixel: half for one neighbour of another thing, all for two
/// or three. The left one does not count.
float EdgeAt(const Picture& identifiers, int x, int y)
{
    const auto at = [&](int column, int row) {
        return Unpack(identifiers.At(std::clamp(column, 0, identifiers.GetWidth() - 1),
                                     std::clamp(row, 0, identifiers.GetHeight() - 1)));
    };
    const float centre = at(x, y);
    int differing = 0;
    for (const float neighbour : {at(x + 1, y), at(x, y + 1), at(x, y - 1)})
    {
        differing += std::abs(neighbour - centre) >= 1.0f ? 1 : 0;
    }
    return std::min(static_cast<float>(differing) * 0.5f, 1.0f);
}

Pixel Mix(const Pixel& from, const Color& to, float share)
{
    const auto channel = [&](int value, float other) {
        return (static_cast<float>(value) / 255.0f) * (1.0f - share) + other * share;
    };
    Pixel mixed = ToPixel(channel(from.r, to.r), channel(from.g, to.g), channel(from.b, to.b));
    mixed.a = from.a;
    return mixed;
}

class PresentationEdges : public FlatStage
{
protected:
    using FlatStage::FlatStage;

    static EdgeLook LookOf(Identity identity, float weight = 1.0f, const Color& color = Color(1.0f, 0.0f, 0.0f))
    {
        EdgeLook look;
        look.identity = identity;
        look.weight = weight;
        look.color = color;
        return look;
    }

    Picture DrawEdges(const EdgeLook& look)
    {
        renderer->SetEdges(look);
        Picture picture = Draw();
        renderer->SetEdges(std::nullopt);
        return picture;
    }

    /// Expects lines of a look just where a model puts them on the identifiers, and all else to be
    /// as it is without lines.
    void ExpectModel(const EdgeLook& look)
    {
        const Picture plain = Draw();
        renderer->SetEdges(look);
        const Picture identifiers = DrawIdentifiers();
        const Picture picture = DrawEdges(look);
        std::set<float> amounts;
        int wrong = 0;
        for (int y = 0; y < picture.GetHeight(); ++y)
        {
            for (int x = 0; x < picture.GetWidth(); ++x)
            {
                const float amount = EdgeAt(identifiers, x, y) * look.weight;
                amounts.insert(EdgeAt(identifiers, x, y));
                const Pixel expected = Mix(plain.At(x, y), look.color, amount);
                const int tolerance = amount == 0.0f ? 0 : 1;
                const bool right = ChannelDifference(picture.At(x, y), expected) <= tolerance;
                EXPECT_TRUE(right || wrong > 3) << picture.At(x, y) << " is not " << expected << " at " << x << ", " << y;
                wrong += right ? 0 : 1;
            }
        }
        EXPECT_EQ(wrong, 0);
        EXPECT_EQ(amounts, (std::set<float>{0.0f, 0.5f, 1.0f})) << "every case occurs";
    }

    /// Things that touch, that share user data and that cover each other.
    void AddThings()
    {
        AddRect(kGrey, {10, 10, 30, 20}, 0.0f, 1);
        AddRect(Color(0.2f, 0.6f, 0.2f), {40, 10, 20, 30}, 0.0f, 2);
        AddRect(Color(0.6f, 0.6f, 0.2f), {25, 30, 10, 20}, 0.0f, 1);
        AddRect(Color(0.9f, 0.6f, 0.8f), {15, 15, 9, 7}, 5.0f, 3);
        AddRect(Color(0.9f, 0.9f, 0.9f), {70, 40, 26, 24}, 0.0f, 0x12345678);
        AddRect(Color(0.5f, 0.9f, 0.9f), {80, 45, 6, 6}, 1.0f, -5);
    }
};

} // namespace

TEST_F(PresentationEdges, AreOffAtFirst)
{
    EXPECT_FALSE(renderer->GetEdges());
    AddThings();
    const Picture plain = Draw();
    EXPECT_EQ(plain.At(30, 20), Grey);
    renderer->SetEdges(EdgeLook());
    EXPECT_NE(Draw(), plain);
    renderer->SetEdges(std::nullopt);
    ExpectSame(Draw(), plain, "with edges off again");
}

TEST_F(PresentationEdges, OfASquareLieOnBothSidesOfItsUpperAndLowerRimAndOnOneOfTheOthers)
{
    AddRect(kGrey, {20, 10, 30, 20}, 0.0f, 7);
    const Picture picture = DrawEdges(LookOf(Identity::Group));
    const Pixel halfOnGround = Mix(Ground, Color(1, 0, 0), 0.5f);
    const Pixel halfOnGrey = Mix(Grey, Color(1, 0, 0), 0.5f);
    const Pixel full{255, 0, 0, 255};
    const struct
    {
        const char* label;
        int x;
        int y;
        Pixel expected;
    } cases[] = {
        {"left of the left rim", 19, 15, halfOnGround},
        {"two left of it", 18, 15, Ground},
        {"right of the left rim: its left neighbour does not count", 20, 15, Grey},
        {"left of the right rim", 49, 15, halfOnGrey},
        {"right of the right rim: likewise", 50, 15, Ground},
        {"above the lower rim", 30, 10, halfOnGrey},
        {"below the lower rim", 30, 9, halfOnGround},
        {"two below it", 30, 8, Ground},
        {"below the upper rim", 30, 29, halfOnGrey},
        {"above the upper rim", 30, 30, halfOnGround},
        {"in the upper right corner", 49, 29, full},
        {"in the lower right corner", 49, 10, full},
        {"in the upper left corner", 20, 29, halfOnGrey},
        {"before the upper left corner", 19, 29, halfOnGround},
        {"beside a corner", 19, 30, Ground},
        {"in the middle", 35, 20, Grey},
    };
    for (const auto& tested : cases)
    {
        EXPECT_LE(ChannelDifference(picture.At(tested.x, tested.y), tested.expected), 1)
            << tested.label << ": " << picture.At(tested.x, tested.y);
    }
}

TEST_F(PresentationEdges, BetweenGroupsFollowTheModel)
{
    AddThings();
    for (const float weight : {1.0f, 0.5f, 0.2f})
    {
        ExpectModel(LookOf(Identity::Group, weight));
        ExpectModel(LookOf(Identity::Group, weight, Color(0.1f, 0.9f, 0.3f)));
    }
    ExpectSame(DrawEdges(LookOf(Identity::Group, 0.0f)), Draw(), "with edges of no weight");
}

TEST_F(PresentationEdges, BetweenObjectsFollowTheModelAndPartColoursOfVertices)
{
    Material& grey = AddMaterial(kGrey);
    const std::vector<Color> red(4, Color(1.0f, 0.0f, 0.0f));
    const std::vector<Color> green(4, Color(0.0f, 1.0f, 0.0f));
    AddRect(grey, {10, 10, 20, 20}, 0.0f, 1, red);
    AddRect(grey, {30, 10, 20, 20}, 0.0f, 2, red);
    AddRect(grey, {30, 30, 20, 20}, 0.0f, 2, green);
    AddRect(grey, {60, 10, 15, 20}, 0.0f, 3);
    AddRect(grey, {75, 10, 15, 20}, 0.0f, 4);
    ExpectModel(LookOf(Identity::Object));
    ExpectModel(LookOf(Identity::Group));
    const auto isLine = [&](const EdgeLook& look, int x, int y) { return DrawEdges(look).At(x, y) != Grey; };
    const EdgeLook objects = LookOf(Identity::Object);
    const EdgeLook groups = LookOf(Identity::Group);
    EXPECT_FALSE(isLine(objects, 29, 20)) << "one colour in two groups";
    EXPECT_TRUE(isLine(groups, 29, 20));
    EXPECT_TRUE(isLine(objects, 40, 29)) << "two colours in one group";
    EXPECT_FALSE(isLine(groups, 40, 29));
    EXPECT_FALSE(isLine(objects, 74, 20)) << "meshes without colours are one thing";
    EXPECT_TRUE(isLine(groups, 74, 20));
    EXPECT_TRUE(isLine(objects, 89, 20)) << "and another than nothing";
}

TEST_F(PresentationEdges, IdentifiersShowTheColoursThatStandForThem)
{
    AddThings();
    const Picture groups = DrawIdentifiers();
    EXPECT_EQ(groups.At(12, 12), IdentifierOf(1));
    EXPECT_EQ(groups.At(30, 40), IdentifierOf(1));
    EXPECT_EQ(groups.At(50, 20), IdentifierOf(2));
    EXPECT_EQ(groups.At(18, 18), IdentifierOf(3)) << "the nearest counts";
    EXPECT_EQ(groups.At(72, 60), IdentifierOf(0x12345678));
    EXPECT_EQ(groups.At(82, 47), IdentifierOf(-5));
    EXPECT_EQ(groups.At(2, 2), (Pixel{0, 0, 0, 255})) << "nothing is there";

    Material& grey = AddMaterial(kGrey);
    AddRect(grey, {0, 0, 8, 8}, 0.0f, 1, std::vector<Color>(4, Color(0.2f, 0.4f, 0.8f)));
    renderer->SetEdges(LookOf(Identity::Object));
    const Picture objects = DrawIdentifiers();
    EXPECT_EQ(objects.At(4, 4), (Pixel{51, 102, 204, 255}));
    EXPECT_EQ(objects.At(12, 12), (Pixel{255, 255, 255, 255})) << "a mesh without colours";
    renderer->SetEdges(LookOf(Identity::Group));
    EXPECT_EQ(DrawIdentifiers().At(4, 4), IdentifierOf(1));
}

TEST_F(PresentationEdges, OfWhatIsNotSeenDoNotAppear)
{
    AddRect(kGrey, {40, 20, 20, 20}, 0.0f, 1);
    const EdgeLook look = LookOf(Identity::Group);
    const Picture alone = DrawEdges(look);
    MeshNode& hidden = AddRect(kGrey, {5, 5, 20, 20}, 0.0f, 2);
    hidden.SetFlags(NodeFlagHidden, false);
    AddRect(kGrey, {45, 25, 5, 5}, -5.0f, 3);
    AddRect(kGrey, {200, 20, 20, 20}, 0.0f, 4);
    AddRect(kGrey, {5, 40, 10, 10}, 150.0f, 5);
    // Turned away.
    Transform away;
    Quaternion half;
    half.y = 1.0f;
    half.w = 0.0f;
    away.SetRotation(half);
    away.SetPosition(Vector(30, 0, 0));
    AddRect(kGrey, {5, 40, 10, 10}, 0.0f, 6).SetLocal(away);
    ExpectSame(DrawEdges(look), alone, "with things that are hidden, covered, beside or behind the eye, or turned away");
    hidden.ClearFlags(NodeFlagHidden, false);
    EXPECT_NE(DrawEdges(look), alone);
}

TEST_F(PresentationEdges, FollowWhatTheClipPlanesLeave)
{
    // The planes cut no unlit surface in the basic look.
    renderer->SetLook(Host::Look::Advanced);
    EffectES20::SetClipPlaneOutlineSize(0.0f);
    AddRect(kGrey, {20, 10, 40, 30}, 0.0f, 1);
    EffectES20::AddClipPlane(glm::vec3(1, 0, 0), glm::vec3(45, 0, 0));
    ExpectModel(LookOf(Identity::Group));
    EXPECT_EQ(DrawIdentifiers().At(44, 20), IdentifierOf(1));
    EXPECT_EQ(DrawIdentifiers().At(45, 20), (Pixel{0, 0, 0, 255}));
    EXPECT_EQ(Draw().At(45, 20), Ground);
    EXPECT_NE(DrawEdges(LookOf(Identity::Group)).At(44, 20), Draw().At(44, 20)) << "a line along the cut";
    EffectES20::AddClipPlane(glm::vec3(-1, 0, 0), glm::vec3(45, 0, 0));
    EXPECT_EQ(DrawEdges(LookOf(Identity::Group)).Count(Ground), Width() * Height()) << "all is cut away";
}

TEST_F(PresentationEdges, KeepTheAlphaOfThePicture)
{
    app.GetContext()->SetBackgroundColor(Color(0.0f, 0.0f, 1.0f, 0.25f));
    AddThings();
    const Picture plain = Draw();
    const Picture edges = DrawEdges(LookOf(Identity::Group));
    const Picture identifiers = DrawIdentifiers();
    for (int y = 0; y < Height(); ++y)
    {
        for (int x = 0; x < Width(); ++x)
        {
            ASSERT_EQ(edges.At(x, y).a, plain.At(x, y).a);
            ASSERT_EQ(identifiers.At(x, y).a, plain.At(x, y).a);
        }
    }
    EXPECT_EQ(plain.At(2, 2).a, 64);
}

TEST_F(PresentationEdges, NeedNoSurfacesToBeShown)
{
    AddThings();
    const EdgeLook look = LookOf(Identity::Group);
    const Picture identifiers = DrawIdentifiers();
    renderer->ShowSurfaces(false);
    const Picture without = Draw();
    EXPECT_EQ(without.Count(Ground), Width() * Height());
    const Picture picture = DrawEdges(look);
    for (int y = 0; y < Height(); ++y)
    {
        for (int x = 0; x < Width(); ++x)
        {
            const Pixel expected = Mix(Ground, look.color, EdgeAt(identifiers, x, y));
            ASSERT_LE(ChannelDifference(picture.At(x, y), expected), 1) << x << ", " << y;
        }
    }
}

TEST_F(PresentationEdges, SeeNoLinesAndNoPoints)
{
    AddRect(kGrey, {20, 10, 40, 30}, 0.0f, 1);
    const Picture before = DrawIdentifiers();
    AddLine(Vector(0, 50, 1), Vector(90, 50, 1), Color(0, 1, 0), 3.0f);
    Material& points = AddMaterial(kGrey);
    points.SetFlags(MaterialFlagPoints);
    points.pointSize = 5.0f;
    AddRect(points, {10, 45, 10, 10}, 2.0f, 2);
    ExpectSame(DrawIdentifiers(), before, "with a line and points");
    EXPECT_EQ(Draw().At(10, 45), Grey) << "they are drawn themselves";
    EXPECT_EQ(Draw().At(50, 50), (Pixel{0, 255, 0, 255}));
}

TEST_F(PresentationEdges, WithSeveralSamplesAreAsSmoothAsSurfacesAndTheSameOnStraightRims)
{
    const EdgeLook look = LookOf(Identity::Group);
    // Of one colour with the ground, so that all red comes from lines.
    MeshNode& node = AddRect(Color(0.0f, 0.0f, 1.0f), {30, 15, 30, 30}, 0.0f, 1);
    const Picture straight = DrawEdges(look);
    Transform turned;
    Quaternion rotation;
    rotation.z = std::sin(0.15f);
    rotation.w = std::cos(0.15f);
    turned.SetRotation(rotation);
    turned.SetPosition(Vector(10.0f, -10.0f, 0.0f));
    node.SetLocal(turned);
    const auto reds = [](const Picture& picture) {
        std::set<int> found;
        for (int y = 0; y < picture.GetHeight(); ++y)
        {
            for (int x = 0; x < picture.GetWidth(); ++x)
            {
                found.insert(picture.At(x, y).r);
            }
        }
        return found;
    };
    EXPECT_LE(reds(DrawEdges(look)).size(), 3u) << "nothing, half and all";

    UseFramebuffer(Width(), Height(), 4);
    const std::set<int> smooth = reds(DrawEdges(look));
    EXPECT_GE(smooth.size(), 6u);
    EXPECT_TRUE(smooth.lower_bound(20) != smooth.end() && *smooth.lower_bound(20) < 110) << "less than half";
    EXPECT_TRUE(smooth.lower_bound(140) != smooth.end() && *smooth.lower_bound(140) < 240) << "less than all";
    node.SetLocal(Transform());
    const Picture fourStraight = DrawEdges(look);
    const PictureDifference difference = Compare(fourStraight, straight);
    EXPECT_LE(difference.largestChannelDifference, 1);
}

TEST_F(PresentationEdges, OfASupersampledPictureAreAsWideAsOthers)
{
    AddThings();
    const Picture edges = DrawEdges(LookOf(Identity::Group));
    renderer->SetAAMode(AAModeSupersampling);
    renderer->SetEdges(LookOf(Identity::Group));
    // All rims lie between pixels, so that there is nothing to smooth.
    const PictureDifference difference = Compare(Draw(true), edges);
    EXPECT_LE(difference.largestChannelDifference, 1);
}

TEST_F(PresentationEdges, OfOneColourKeepToTheirFrame)
{
    AddThings();
    const Picture red = DrawEdges(LookOf(Identity::Group));
    const Picture green = DrawEdges(LookOf(Identity::Object, 0.3f, Color(0, 1, 0)));
    EXPECT_NE(green, red);
    ExpectSame(DrawEdges(LookOf(Identity::Group)), red, "after another look of edges");
}

namespace
{

/// Lines that are marked for overlay.
class PresentationOverlay : public PresentationEdges
{
protected:
    PresentationOverlay() { AddRect(kGrey, {20, 10, 30, 30}, 0.0f, 1); }

    /// A line up the picture.
    LineStyle& AddOverlay(float x, float z)
    {
        LineStyle& style = AddLine(Vector(x, 12, z), Vector(x, 38, z), Color(0, 1, 0), 3.0f);
        style.overlay = true;
        return style;
    }

    /// Columns that are green half way up.
    static std::vector<int> GreenColumns(const Picture& picture)
    {
        std::vector<int> columns;
        for (int x = 0; x < picture.GetWidth(); ++x)
        {
            if (picture.At(x, 25) == Pixel{0, 255, 0, 255})
            {
                columns.push_back(x);
            }
        }
        return columns;
    }

    std::vector<int> Overlaid()
    {
        renderer->OverlayLines(true);
        std::vector<int> columns = GreenColumns(Draw());
        renderer->OverlayLines(false);
        return columns;
    }
};

using Columns = std::vector<int>;

} // namespace

TEST_F(PresentationOverlay, LinesAreDrawnOnRimsOnlyAndOthersAsEver)
{
    LineStyle& style = AddOverlay(35.0f, 1.0f);
    EXPECT_EQ(GreenColumns(Draw()), (Columns{32, 33, 34, 35, 36, 37}));
    EXPECT_EQ(Overlaid(), (Columns{})) << "the middle of a face";
    style.overlay = false;
    EXPECT_EQ(Overlaid(), (Columns{32, 33, 34, 35, 36, 37}));
}

TEST_F(PresentationOverlay, NeitherSideOfARimHidesHalfOfALine)
{
    AddOverlay(50.0f, -1.0f);
    EXPECT_EQ(GreenColumns(Draw()), (Columns{47, 48, 49, 50, 51, 52})) << "its middle is seen";
    EXPECT_EQ(Overlaid(), (Columns{49, 50}));
    renderer->OverlayLines(true);
    renderer->ShowSurfaces(false);
    EXPECT_EQ(GreenColumns(Draw()), (Columns{49, 50})) << "also where the surfaces don't show";
}

TEST_F(PresentationOverlay, LinesBehindBothSidesOfARimAreHidden)
{
    AddRect(kGrey, {50, 10, 30, 30}, 0.0f, 2);
    AddOverlay(50.0f, -5.0f);
    EXPECT_EQ(Overlaid(), (Columns{}));
    AddOverlay(50.0f, 0.0f);
    EXPECT_EQ(Overlaid(), (Columns{49, 50}));
}

TEST_F(PresentationOverlay, ARimOfEitherIdentityCounts)
{
    Material& grey = AddMaterial(kGrey);
    const std::vector<Color> red(4, Color(1, 0, 0));
    AddOverlay(60.0f, 3.0f);
    MeshNode& left = AddRect(grey, {55, 10, 5, 30}, 2.0f, 5, red);
    AddRect(grey, {60, 10, 5, 30}, 2.0f, 5, red);
    EXPECT_EQ(Overlaid(), (Columns{})) << "one group, one colour";
    left.SetUserData(6);
    EXPECT_EQ(Overlaid(), (Columns{59, 60})) << "two groups";
    left.SetUserData(5);
    EXPECT_EQ(Overlaid(), (Columns{}));
    left.SetFlags(NodeFlagHidden, false);
    AddRect(grey, {55, 10, 5, 30}, 2.0f, 5);
    EXPECT_EQ(Overlaid(), (Columns{59, 60})) << "two colours";
}

TEST_F(PresentationOverlay, IsOffWhereNoLineIsShown)
{
    AddOverlay(50.0f, 0.0f);
    renderer->ShowLines(false);
    EXPECT_EQ(GreenColumns(Draw()), (Columns{}));
    const GLObjects before = GLState::CaptureObjects();
    EXPECT_EQ(Overlaid(), (Columns{}));
    EXPECT_EQ(GLState::CaptureObjects(), before) << "nor is anything made for them";
}

} // namespace OV::Test
