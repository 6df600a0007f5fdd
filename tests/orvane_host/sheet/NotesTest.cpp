#include "orvane_host/sheet/Notes.h"

#include "orvane_host/sheet/Sheet.h"
#include "orvane/math/Transform.h"
#include "orvane/math/Vector.h"
#include "orvane/overlay/Rect.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/overlay/Shape2DNode.h"
#include "orvane/overlay/Sprite.h"
#include "orvane/overlay/Text.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Scene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

using namespace OV;
using namespace OV::Host;

namespace
{

constexpr int kWidth = 800;
constexpr int kHeight = 600;

/// A camera 10 before the origin that sees 6 units of its height.
class NotesTest : public ::testing::Test
{
protected:
    NotesTest()
    {
        CameraNode& camera = Camera();
        camera.SetFOV(std::atan(0.3f));
        camera.SetDistanceToTarget(10.0f);
        PlaceCamera(Vector(0, 0, 10));
    }

    CameraNode& Camera() { return *world.GetCameraNode(); }

    void PlaceCamera(const Vector& eye)
    {
        Transform place;
        place.SetPosition(eye);
        Camera().SetGlobal(place);
    }

    void Show(Notes::Content content)
    {
        notes.SetContent(std::move(content));
        Layout();
    }

    void Layout()
    {
        notes.Layout(Camera(), kWidth, kHeight);
        layer.UpdateGraph(kWidth, kHeight);
    }

    static Dimension Distance(const QGM::Point3d& from, const QGM::Point3d& to) { return {{from, to}}; }

    /// The middle of the box of a text.
    static Vector MiddleOf(Text& text)
    {
        const Vector place = text.GetInstance(0)->GetGlobal().GetPosition();
        return Vector(place.x + static_cast<float>(text.GetRight() + text.GetLeft()) / 2.0f,
                      place.y + static_cast<float>(text.GetTop() + text.GetBottom()) / 2.0f, 0.0f);
    }

    /// In pixels of the picture.
    struct Box
    {
        float left;
        float bottom;
        float right;
        float top;
    };

    static Box BoxOf(Text& text)
    {
        const Vector place = text.GetInstance(0)->GetGlobal().GetPosition();
        return {place.x + static_cast<float>(text.GetLeft()), place.y + static_cast<float>(text.GetBottom()),
                place.x + static_cast<float>(text.GetRight()), place.y + static_cast<float>(text.GetTop())};
    }

    Text& OnlyText()
    {
        EXPECT_EQ(layer.GetTexts().size(), 1u);
        return *layer.GetTexts().front();
    }

    /// Extent of all lines in x.
    std::pair<float, float> Reach() const
    {
        std::pair<float, float> reach(std::numeric_limits<float>::max(), std::numeric_limits<float>::lowest());
        for (Sprite* sprite : layer.GetSprites())
        {
            const auto* const rect = static_cast<Rect*>(sprite->GetShape());
            reach.first = std::min(reach.first, rect->GetMinX());
            reach.second = std::max(reach.second, rect->GetMaxX());
        }
        return reach;
    }

    Scene world;
    Scene2D layer{nullptr};
    Notes notes{layer};
};

} // namespace

TEST(Dimension, IsADistanceOfTwoPointsAndAnAngleOfThree)
{
    EXPECT_DOUBLE_EQ((Dimension{{{1, 2, 3}, {1, 2, 5.5}}}).Value(), 2.5);
    EXPECT_NEAR((Dimension{{{2, 0, 0}, {0, 0, 0}, {0, 3, 0}}}).Value(), 90.0, 1e-12);
    EXPECT_NEAR((Dimension{{{1, 0, 0}, {0, 0, 0}, {1, 0, std::sqrt(3.0)}}}).Value(), 60.0, 1e-12);
    EXPECT_NEAR((Dimension{{{1, 0, 0}, {0, 0, 0}, {-5, 0, 0}}}).Value(), 180.0, 1e-12);
    EXPECT_EQ((Dimension{{{1, 0, 0}, {0, 0, 0}, {5, 0, 0}}}).Value(), 0.0);
    EXPECT_EQ((Dimension{{{1, 0, 0}}}).Value(), 0.0);
    EXPECT_EQ(Dimension().Value(), 0.0);
}

TEST(Dimension, ItsTextIsRoundedToWhatIsBuilt)
{
    const auto text = [](double length, const char* unit)
    { return Dimension{{{0, 0, 0}, {length, 0, 0}}}.Text(unit); };
    EXPECT_EQ(text(7.02466, "m"), "7.025 m");
    EXPECT_EQ(text(702.466, "cm"), "702.5 cm");
    EXPECT_EQ(text(7024.66, "mm"), "7025 mm");
    EXPECT_EQ(text(1234567.8, "mm"), "1234568 mm");
    EXPECT_EQ(text(123.45678, "m"), "123.457 m");
    EXPECT_EQ(text(2.0, "mm"), "2 mm");
    EXPECT_EQ(text(2.5, "m"), "2.5 m");
    EXPECT_EQ(text(1000.0, "m"), "1000 m");
    // A small part in large units.
    EXPECT_EQ(text(0.00123456, "m"), "0.001235 m");
    EXPECT_EQ(text(24.6612, "mm"), "24.66 mm");
    // A unit of its own, or none.
    EXPECT_EQ(text(1.0 / 3.0, ""), "0.33333");
    EXPECT_EQ(text(23.04567, "ft"), "23.046 ft");
    EXPECT_EQ(text(1234567.0, "ft"), "1234567 ft");
    // Far from the origin as well, where floats have no such digits.
    EXPECT_EQ((Dimension{{{5e6, 0, 0}, {5e6 + 0.125, 0, 0}}}).Text("m"), "0.125 m");
}

TEST(Dimension, ItsTextNeverRunsLong)
{
    const auto text = [](double length) { return Dimension{{{0, 0, 0}, {length, 0, 0}}}.Text("m"); };
    EXPECT_EQ(text(0.0), "0 m");
    EXPECT_EQ(text(1.23456e-8), "1.235e-08 m");
    EXPECT_EQ(text(4e15), "4e+15 m");
    EXPECT_EQ(Dimension().Text("m"), "0 m");
}

TEST(Dimension, AnglesAreToldToAHundredthOfADegree)
{
    EXPECT_EQ((Dimension{{{2, 0, 0}, {0, 0, 0}, {0, 3, 0}}}).Text("m"), "90\u00B0");
    EXPECT_EQ((Dimension{{{3, 1, 0}, {0, 0, 0}, {3, 0, 0}}}).Text("m"), "18.43\u00B0");
}

TEST_F(NotesTest, AFinishedDimensionStandsWhereItsPointsAre)
{
    // A unit at the origin takes 100 pixels.
    Show({{Distance({-1, 0, 0}, {2, 0, 0})}, {"3 m"}, {}});
    EXPECT_EQ(OnlyText().GetText(), "3 m");
    EXPECT_NEAR(MiddleOf(OnlyText()).x, 450.0f, 1.0f);
    EXPECT_NEAR(MiddleOf(OnlyText()).y, 300.0f, 1.0f);
    EXPECT_NEAR(Reach().first, 300.0f, 10.0f);
    EXPECT_NEAR(Reach().second, 600.0f, 10.0f);
    PlaceCamera(Vector(1, 1, 10));
    Layout();
    EXPECT_NEAR(MiddleOf(OnlyText()).x, 350.0f, 1.0f);
    EXPECT_NEAR(MiddleOf(OnlyText()).y, 200.0f, 1.0f);
}

TEST_F(NotesTest, WithoutPerspectiveDepthMovesNothing)
{
    Camera().SetProjection(CameraNode::Orthographic);
    Show({{}, {}, {{{1, 0, -50}, "far"}, {{-1, 0, 5}, "near"}}});
    ASSERT_EQ(layer.GetTexts().size(), 2u);
    EXPECT_NEAR(MiddleOf(*layer.GetTexts()[0]).x, 500.0f, 1.0f);
    EXPECT_NEAR(MiddleOf(*layer.GetTexts()[1]).x, 300.0f, 1.0f);
}

TEST_F(NotesTest, AnAngleHasItsNumberBetweenItsLegs)
{
    Show({{{{{2, 0, 0}, {0, 0, 0}, {0, 2, 0}}}}, {"90"}, {}});
    const Vector middle = MiddleOf(OnlyText());
    EXPECT_NEAR(middle.x - 400.0f, middle.y - 300.0f, 2.0f);
    EXPECT_GT(middle.x, 420.0f);
    EXPECT_LT(middle.x, 500.0f);
    const std::size_t bent = layer.GetSprites().size();
    // Legs in one line have no arc between them.
    Show({{{{{2, 0, 0}, {0, 0, 0}, {-2, 0, 0}}}}, {"180"}, {}});
    EXPECT_LT(layer.GetSprites().size(), bent);
    EXPECT_EQ(OnlyText().GetText(), "180");
}

TEST_F(NotesTest, WhatIsBehindTheEyeIsLeftOut)
{
    Show({{Distance({0, 0, 11}, {3, 0, 20})}, {"9"}, {{{0, 0, 12}, "behind"}}});
    EXPECT_TRUE(layer.GetTexts().empty());
    EXPECT_TRUE(layer.GetSprites().empty());
    // From before the eye to behind it, which it passes on the left: the number stands in the middle of
    // what is seen.
    Show({{Distance({-1, 0, 0}, {1, 0, 30})}, {"30"}, {}});
    EXPECT_NEAR(MiddleOf(OnlyText()).x, 150.0f, 1.0f);
    EXPECT_LT(Reach().first, -1000.0f);
    for (Sprite* sprite : layer.GetSprites())
    {
        const auto* const rect = static_cast<Rect*>(sprite->GetShape());
        EXPECT_TRUE(std::isfinite(rect->GetMinX()) && std::isfinite(rect->GetMaxY()));
        EXPECT_LT(std::abs(rect->GetMaxX()), 2e5f);
    }
}

TEST_F(NotesTest, TheNumberOfALineThatLeavesThePictureIsSeen)
{
    Show({{Distance({3, 0, 0}, {300, 0, 0})}, {"297"}, {}});
    EXPECT_NEAR(MiddleOf(OnlyText()).x, 750.0f, 1.0f);
    Show({{Distance({5, 0, 0}, {300, 0, 0})}, {"295"}, {}});
    EXPECT_TRUE(layer.GetTexts().empty());
}

TEST_F(NotesTest, ATextAtTheRimIsInThePicture)
{
    const auto show = [&](const std::string& words, const QGM::Point3d& place)
    {
        Show({{}, {}, {{place, words}}});
        return BoxOf(OnlyText());
    };
    for (const QGM::Point3d& place : {QGM::Point3d(-3.9, 0, 0), QGM::Point3d(3.9, 0, 0), QGM::Point3d(0, 2.99, 0),
                                      QGM::Point3d(-3.9, -2.99, 0)})
    {
        SCOPED_TRACE(testing::Message() << place.x << ' ' << place.y);
        const Box box = show("a window with a long name", place);
        EXPECT_GT(box.left, 0.0f);
        EXPECT_GT(box.bottom, 0.0f);
        EXPECT_LT(box.right, static_cast<float>(kWidth));
        EXPECT_LT(box.top, static_cast<float>(kHeight));
    }
    const Box box = show(std::string(300, 'w'), {0, 0, 0});
    EXPECT_GT(box.left, 0.0f) << "one that is longer than the picture begins in it";
    EXPECT_LT(box.left, 20.0f);
}

TEST_F(NotesTest, ALabelStandsBelowAPlaceThatHasNoRoomAbove)
{
    Show({{}, {}, {{{0, 2, 0}, "wall"}}});
    EXPECT_GT(BoxOf(OnlyText()).bottom, 500.0f);
    Show({{}, {}, {{{0, 2.95, 0}, "wall"}}});
    EXPECT_LT(BoxOf(OnlyText()).top, 595.0f);
}

TEST_F(NotesTest, TheNumberOfAnArcThatLeavesThePictureIsSeen)
{
    // The middle of the arc is on the right of the picture, its end above the corner is not.
    const Dimension angle{{{13, 0, 0}, {3, 0, 0}, {3, 10, 0}}};
    Camera().SetProjection(CameraNode::Orthographic);
    PlaceCamera(Vector(0, 3, 10));
    Show({{angle}, {"90"}, {}});
    const Box box = BoxOf(OnlyText());
    EXPECT_GT(box.left, 650.0f);
    EXPECT_LT(box.right, static_cast<float>(kWidth));
    EXPECT_NEAR((box.bottom + box.top) / 2.0f, 337.0f, 4.0f);
    PlaceCamera(Vector(-10, 3, 10));
    Layout();
    EXPECT_TRUE(layer.GetTexts().empty());
}

TEST_F(NotesTest, ATextStaysInAPictureThatNarrowsAboutIt)
{
    Camera().SetProjection(CameraNode::Orthographic);
    Show({{}, {}, {{{3.5, 0, 0}, "a window with a long name"}}});
    EXPECT_GT(BoxOf(OnlyText()).right, 775.0f);
    // Its place is at the same pixel.
    PlaceCamera(Vector(-0.125f, 0, 10));
    notes.Layout(Camera(), 775, kHeight);
    layer.UpdateGraph(775, kHeight);
    EXPECT_LT(BoxOf(OnlyText()).right, 775.0f);
}

TEST_F(NotesTest, RimsOfWhatSlantsPassOverIntoThePicture)
{
    // Half of the width, and opacity, of what is drawn over each other of a line that begins at 300.
    const auto layers = [&]
    {
        std::vector<std::pair<double, double>> found;
        for (Sprite* sprite : layer.GetSprites())
        {
            const auto* const rect = static_cast<Rect*>(sprite->GetShape());
            const Color color = sprite->GetColor();
            if (color.r < 0.5f && rect->GetMaxX() - rect->GetMinX() > 100.0f)
            {
                found.push_back({(300.0 - rect->GetMinX()) * std::sqrt(2.0), color.a});
            }
        }
        return found;
    };
    Show({{Distance({-1, -1, 0}, {1, 1, 0})}, {"2.8"}, {}});
    const double width = std::max(1.0, Sheet::LetterSize(kWidth, kHeight) / 11.0);
    for (double aside = 0.0; aside < 1.5; aside += 0.05)
    {
        SCOPED_TRACE(aside);
        double left = 1.0;
        for (const auto& [half, opacity] : layers())
        {
            left *= half > aside ? 1.0 - opacity : 1.0;
        }
        EXPECT_NEAR(1.0 - left, std::clamp(width / 2.0 + 0.5 - aside, 0.0, 1.0), 0.13);
    }
    Show({{Distance({-1, 0, 0}, {1, 0, 0})}, {"2"}, {}});
    ASSERT_EQ(layers().size(), 1u) << "what is level is sharp";
    EXPECT_EQ(layers().front().second, 1.0);
}

TEST_F(NotesTest, AFrameInWhichNothingMovesLeavesTheLayerAlone)
{
    Show({{Distance({-1, 0, 0}, {2, 0, 0})}, {"3 m"}, {{{0, 1, 0}, "wall"}}});
    EXPECT_FALSE(layer.IsDirty());
    notes.Layout(Camera(), kWidth, kHeight);
    EXPECT_FALSE(layer.IsDirty());
    notes.MoveLabel(0, {0.5, 1, 0});
    notes.Layout(Camera(), kWidth, kHeight);
    EXPECT_TRUE(layer.IsDirty());
    Show({});
    EXPECT_TRUE(layer.GetTexts().empty());
    EXPECT_TRUE(layer.GetSprites().empty());
}

TEST_F(NotesTest, LettersGrowWithThePicture)
{
    Show({{}, {}, {{{0, 0, 0}, "wall"}}});
    const int size = OnlyText().GetFontSize();
    notes.Layout(Camera(), 3 * kWidth, 3 * kHeight);
    EXPECT_EQ(OnlyText().GetFontSize(), 40);
    EXPECT_LT(size, 15);
}
