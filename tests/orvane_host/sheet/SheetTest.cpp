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
#include <memory>
#include <string>
#include <utility>
#include <vector>

using namespace OV;
using namespace OV::Host;

namespace
{

class SheetTest : public ::testing::Test
{
protected:
    SheetTest() { Look(CameraNode::Orthographic, 0.4f, 50.0f); }

    void Look(CameraNode::CameraProjection projection, float halfAngle, float distance)
    {
        Camera().SetProjection(projection);
        Camera().SetFOV(halfAngle);
        Camera().SetDistanceToTarget(distance);
        Camera().SetNearFar(1.0f, 1000.0f);
        Transform view;
        view.EyeLookUp(Vector(3, 4, 5), Vector(-10, 2, 1), Vector(0, 1, 0));
        Camera().SetGlobal(view);
    }

    CameraNode& Camera() { return *world.GetCameraNode(); }

    std::unique_ptr<Sheet> MakeSheet(const SheetOptions& options, int width = 1280, int height = 720)
    {
        auto sheet = std::make_unique<Sheet>(*layer, options);
        sheet->Layout(Camera(), width, height);
        layer->UpdateGraph(static_cast<float>(width), static_cast<float>(height));
        return sheet;
    }

    static SheetOptions Everything()
    {
        SheetOptions options;
        options.title = "Ground floor";
        options.scaleBar = true;
        options.unit = "m";
        options.north = 30.0f;
        return options;
    }

    std::vector<std::string> Words() const
    {
        std::vector<std::string> words;
        for (Text* text : layer->GetTexts())
        {
            words.push_back(text->GetText());
        }
        return words;
    }

    /// Left, bottom, right and top of what a text shows in the layer.
    static std::vector<int> BoxOf(Text& text)
    {
        const Vector place = text.GetInstance(0)->GetGlobal().GetPosition();
        return {static_cast<int>(place.x) + text.GetLeft(), static_cast<int>(place.y) + text.GetBottom(),
                static_cast<int>(place.x) + text.GetRight(), static_cast<int>(place.y) + text.GetTop()};
    }

    Scene world;
    std::unique_ptr<Scene2D> layer = std::make_unique<Scene2D>(nullptr);
};

} // namespace

TEST(SheetRoundLength, IsTheLargestOneTwoOrFiveNotAboveTheLimit)
{
    struct
    {
        double limit, expected;
    } const cases[] = {
        {1.0, 1.0},        {0.999, 0.5},   {1.999, 1.0},  {2.0, 2.0},       {4.999, 2.0},       {5.0, 5.0},
        {9.999, 5.0},      {10.0, 10.0},   {123.0, 100.0}, {0.3, 0.2},       {0.05, 0.05},       {0.0499, 0.02},
        {7e-6, 5e-6},      {3e9, 2e9},     {0.1, 0.1},    {1e-3, 1e-3},     {2.3e5, 2e5},       {0.7, 0.5},
    };
    for (const auto& [limit, expected] : cases)
    {
        EXPECT_EQ(Sheet::RoundLength(limit), expected) << limit;
    }
    EXPECT_EQ(Sheet::RoundLength(0.0), 0.0);
    EXPECT_EQ(Sheet::RoundLength(-3.0), 0.0);
    EXPECT_EQ(Sheet::RoundLength(std::numeric_limits<double>::infinity()), 0.0);
    EXPECT_EQ(Sheet::RoundLength(std::numeric_limits<double>::quiet_NaN()), 0.0);
}

TEST_F(SheetTest, AUnitAtTheTargetTakesAsManyPixelsAsTheCameraShows)
{
    const struct
    {
        int width, height;
    } sizes[] = {{1280, 720}, {300, 900}, {500, 500}};
    for (const auto projection : {CameraNode::Perspective, CameraNode::Orthographic})
    {
        for (const auto& size : sizes)
        {
            SCOPED_TRACE(testing::Message() << projection << " " << size.width << "x" << size.height);
            Look(projection, 0.35f, 40.0f);
            world.UpdateGraph(static_cast<float>(size.width), static_cast<float>(size.height));
            Vector target;
            target.Multiply(Camera().GetGlobal(), Vector(0, 0, -40));
            Vector besides;
            besides.Multiply(Camera().GetGlobal(), Vector(1, 0, -40));
            Vector at;
            Camera().WorldPosToScreenPos(target, at);
            Vector shifted;
            Camera().WorldPosToScreenPos(besides, shifted);
            EXPECT_NEAR(Sheet::PixelsPerUnit(Camera(), size.width, size.height), shifted.x - at.x, 0.01);
        }
    }
}

TEST_F(SheetTest, ACameraWithoutAReachShowsNoScale)
{
    Camera().SetDistanceToTarget(0.0f);
    EXPECT_EQ(Sheet::PixelsPerUnit(Camera(), 100, 100), 0.0);
    Camera().SetDistanceToTarget(std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(Sheet::PixelsPerUnit(Camera(), 100, 100), 0.0);
    SheetOptions options;
    options.scaleBar = true;
    const auto sheet = MakeSheet(options);
    EXPECT_EQ(sheet->GetBarLength(), 0.0);
    EXPECT_EQ(sheet->GetBarPixels(), 0);
    EXPECT_TRUE(layer->GetSprites().empty());
}

TEST_F(SheetTest, ShowsWhatIsAskedForAndNothingElse)
{
    EXPECT_TRUE(MakeSheet(SheetOptions())->GetBarLength() == 0.0);
    EXPECT_TRUE(layer->GetSprites().empty());
    EXPECT_TRUE(layer->GetTexts().empty());
    {
        SheetOptions options;
        options.title = "Only a title";
        const auto sheet = MakeSheet(options);
        EXPECT_EQ(Words(), std::vector<std::string>{"Only a title"});
        EXPECT_NE(layer->GetTexts()[0]->GetLeftBackdrop(), nullptr);
        EXPECT_TRUE(layer->GetSprites().empty());
    }
    EXPECT_TRUE(layer->GetTexts().empty()) << "it goes with the sheet";
    {
        SheetOptions options;
        options.north = 0.0f;
        const auto sheet = MakeSheet(options);
        EXPECT_EQ(Words(), std::vector<std::string>{"N"});
    }
}

TEST_F(SheetTest, TheBarIsOfARoundLengthThatTakesATenthToAQuarterOfTheWidth)
{
    SheetOptions options;
    options.scaleBar = true;
    for (float distance = 0.01f; distance < 1.0e6f; distance *= 1.7f)
    {
        SCOPED_TRACE(distance);
        Look(CameraNode::Orthographic, 0.4f, distance);
        const auto sheet = MakeSheet(options);
        const double pixels = sheet->GetBarLength() * Sheet::PixelsPerUnit(Camera(), 1280, 720);
        EXPECT_EQ(sheet->GetBarPixels(), std::lround(pixels));
        EXPECT_LE(pixels, 320.5);
        EXPECT_GE(pixels, 127.5);
        EXPECT_EQ(Words()[0], "0");
        EXPECT_EQ(std::stod(Words()[1]), sheet->GetBarLength());
        if (Words().size() > 2)
        {
            EXPECT_EQ(std::stod(Words()[2]), sheet->GetBarLength() / 2.0);
        }
    }
}

TEST_F(SheetTest, LabelsAreShortDecimals)
{
    SheetOptions options;
    options.scaleBar = true;
    options.unit = "mm";
    const struct
    {
        double pixelsPerUnit;
        const char* last;
    } cases[] = {{3100.0, "0.1 mm"}, {310.0, "1 mm"}, {150.0, "2 mm"}, {60.0, "5 mm"}, {0.031, "10000 mm"}};
    for (const auto& expected : cases)
    {
        Look(CameraNode::Orthographic, std::atan(1.0f), static_cast<float>(360.0 / expected.pixelsPerUnit));
        const auto sheet = MakeSheet(options);
        EXPECT_EQ(Words()[1], expected.last);
    }
}

TEST_F(SheetTest, StandsInsideOfThePictureOnWholePixelsWithoutOverlaps)
{
    const struct
    {
        int width, height;
    } sizes[] = {{1280, 720}, {640, 480}, {1920, 1080}, {7680, 4320}, {360, 800}, {900, 300}, {333, 333}};
    for (const auto& size : sizes)
    {
        SCOPED_TRACE(testing::Message() << size.width << "x" << size.height);
        const auto sheet = MakeSheet(Everything(), size.width, size.height);
        std::vector<std::vector<int>> boxes;
        for (Text* text : layer->GetTexts())
        {
            SCOPED_TRACE(text->GetText());
            const Vector place = text->GetInstance(0)->GetGlobal().GetPosition();
            EXPECT_EQ(place.x, std::floor(place.x));
            EXPECT_EQ(place.y, std::floor(place.y));
            EXPECT_EQ(text->GetMaterial()->fontSize, text->GetFontSize()) << "drawn in its own size";
            const std::vector<int> box = BoxOf(*text);
            EXPECT_GE(box[0], 0);
            EXPECT_GE(box[1], 0);
            EXPECT_LE(box[2], size.width);
            EXPECT_LE(box[3], size.height);
            for (const std::vector<int>& other : boxes)
            {
                EXPECT_TRUE(box[2] <= other[0] || other[2] <= box[0] || box[3] <= other[1] || other[3] <= box[1]);
            }
            boxes.push_back(box);
        }
        for (const Sprite* sprite : layer->GetSprites())
        {
            EXPECT_FALSE(sprite->GetNode()->GetFlags() & NodeFlagCulled);
            const Vector place = sprite->GetNode()->GetGlobal().GetPosition();
            for (const Vector& corner : sprite->GetShape()->GetPositionBuffer())
            {
                EXPECT_GE(place.x + corner.x, 0.0f);
                EXPECT_GE(place.y + corner.y, 0.0f);
                EXPECT_LE(place.x + corner.x, static_cast<float>(size.width));
                EXPECT_LE(place.y + corner.y, static_cast<float>(size.height));
            }
        }
    }
}

TEST_F(SheetTest, TheArrowKeepsToItsRoom)
{
    SheetOptions options;
    options.north = 30.0f;
    for (const auto& [width, height] : {std::pair{1280, 720}, std::pair{320, 200}, std::pair{7680, 4320}})
    {
        const auto sheet = MakeSheet(options, width, height);
        auto left = static_cast<float>(width);
        auto bottom = static_cast<float>(height);
        for (const Sprite* sprite : layer->GetSprites())
        {
            const Vector place = sprite->GetNode()->GetGlobal().GetPosition();
            for (const Vector& corner : sprite->GetShape()->GetPositionBuffer())
            {
                left = std::min(left, place.x + corner.x);
                bottom = std::min(bottom, place.y + corner.y);
            }
        }
        const int room = Sheet::NorthRoom(width, height);
        EXPECT_EQ(left, static_cast<float>(width - room));
        EXPECT_EQ(bottom, static_cast<float>(height - room));
    }
}

TEST_F(SheetTest, ATitleWithoutRoomEndsInAnEllipsis)
{
    SheetOptions options;
    options.title = "A title that is far too long for a picture of this size, whatever its letters";
    const auto sheet = MakeSheet(options, 300, 200);
    const std::vector<int> box = BoxOf(*layer->GetTexts()[0]);
    EXPECT_GE(box[0], 0);
    EXPECT_LE(box[2], 300);
    EXPECT_EQ(layer->GetTexts()[0]->GetMaterial()->maxWidth, box[2] - box[0]);
}

TEST_F(SheetTest, NothingIsMadeAnewUntilSizeOrScaleChange)
{
    const auto sheet = MakeSheet(Everything());
    const Text* const before = layer->GetTexts()[0];
    ASSERT_FALSE(layer->IsDirty());
    sheet->Layout(Camera(), 1280, 720);
    EXPECT_FALSE(layer->IsDirty());
    EXPECT_EQ(layer->GetTexts()[0], before);

    Camera().SetDistanceToTarget(55.0f);
    sheet->Layout(Camera(), 1280, 720);
    EXPECT_TRUE(layer->IsDirty());
    const std::size_t texts = layer->GetTexts().size();
    layer->UpdateGraph(1280, 720);
    sheet->Layout(Camera(), 1281, 720);
    EXPECT_TRUE(layer->IsDirty());
    EXPECT_EQ(layer->GetTexts().size(), texts) << "in place of those before";
}

TEST_F(SheetTest, MayGoBeforeOrAfterItsLayer)
{
    auto sheet = MakeSheet(Everything());
    sheet.reset();
    EXPECT_TRUE(layer->GetTexts().empty());
    EXPECT_TRUE(layer->GetSprites().empty());
    EXPECT_TRUE(layer->GetAlphaMaterials().empty());
    sheet = MakeSheet(Everything());
    layer.reset();
    sheet.reset();
}
