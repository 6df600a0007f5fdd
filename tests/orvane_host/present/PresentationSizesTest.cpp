#include "orvane/math/Transform.h"
#include "orvane/overlay/Rect.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/overlay/Shape2DNode.h"
#include "orvane/overlay/Sprite.h"
#include "orvane/renderer/AAMode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawLine.h"
#include "orvane/scene/Scene.h"
#include "tests/orvane_host/present/PresentationStage.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

namespace OV::Test
{

namespace
{

const Color kGrey(0.4f, 0.4f, 0.4f);
constexpr Pixel Green{0, 255, 0, 255};

class PresentationSizes : public StageByStage
{
protected:
    using StageByStage::StageByStage;

    /// A rectangle of a layer at its units 10, 10, of the size 20, 10.
    void AddSprite(Scene2D& layer)
    {
        sprites.push_back(std::make_unique<Sprite>(&layer, new Rect(&layer, 20.0f, 10.0f, false)));
        sprites.back()->SetColor(Color(0.0f, 1.0f, 0.0f, 1.0f));
        Transform place;
        place.SetPosition(Vector(10.0f, 10.0f, 1.0f));
        sprites.back()->GetNode()->SetLocal(place);
    }

    /// A green line of a layer at a height of 40, 4 pixels wide.
    static LineStyle& AddLayerLine(Scene2D& layer)
    {
        auto* const style = new LineStyle("line of a layer");
        style->color = Color(0, 1, 0);
        style->secondColor = Color(0, 0, 0, 0);
        style->antialias = false;
        style->width = 2.0f;
        layer.AddLineStyle(style);
        auto raw = std::make_shared<RawLine>();
        raw->SetPositionBuffer({Vector(5, 40, 0), Vector(90, 40, 0)});
        raw->SetIndices({0, 1});
        auto* const line = new Line(raw, &layer);
        style->AddLine(line);
        auto* const node = new MeshNode(&layer);
        layer.GetRoot()->AddChild(node, false);
        line->AddNode(node);
        return *style;
    }

    static PixelRect Covered(const Picture& picture, const Pixel& color)
    {
        int left = picture.GetWidth();
        int bottom = picture.GetHeight();
        int right = -1;
        int top = -1;
        for (int y = 0; y < picture.GetHeight(); ++y)
        {
            for (int x = 0; x < picture.GetWidth(); ++x)
            {
                if (picture.At(x, y) == color)
                {
                    left = std::min(left, x);
                    right = std::max(right, x);
                    bottom = std::min(bottom, y);
                    top = std::max(top, y);
                }
            }
        }
        return {left, bottom, right - left + 1, top - bottom + 1};
    }

    static void ExpectRect(const PixelRect& actual, const PixelRect& expected)
    {
        EXPECT_EQ(actual.x, expected.x);
        EXPECT_EQ(actual.y, expected.y);
        EXPECT_EQ(actual.width, expected.width);
        EXPECT_EQ(actual.height, expected.height);
    }

    std::vector<std::unique_ptr<Sprite>> sprites;
};

} // namespace

TEST_F(PresentationSizes, LinesAreAsWideOnTheScreenHoweverFineThePictureIs)
{
    AddThings();
    AddLine(Vector(5, 50, 1), Vector(90, 50, 1), Color(0, 1, 0), 2.0f);
    AddLine(Vector(80, 5, 1), Vector(80, 45, 1), Color(0, 1, 0), 3.0f);
    const Picture plain = Draw();
    EXPECT_EQ(Covered(plain, Green).height, 52 - 5);
    for (int y = 46; y < 54; ++y)
    {
        EXPECT_EQ(plain.At(40, y) == Green, y >= 48 && y < 52) << y;
    }
    ExpectSame(Draw(true), plain, "of a capture");
    renderer->SetAAMode(AAModeSupersampling);
    // All rims lie between pixels.
    ExpectSame(Draw(true), plain, "of a finer capture");
    renderer->SetDevicePixelRatio(4.0f);
    SuspendAndResume();
    ExpectSame(Draw(true), plain, "of a capture that is finer still");
}

TEST_F(PresentationSizes, LinesOfACapturedLayerAreAsWideTooAndTheNextFrameKnowsNothingOfIt)
{
    AddLayerLine(*app.GetContext()->GetBackground2D());
    const Picture plain = Draw();
    EXPECT_EQ(plain.Count(Green), 85 * 4);
    renderer->SetAAMode(AAModeSupersampling);
    renderer->SetLayerRatio(1.0f);
    ExpectSame(Draw(true), plain, "of a finer capture");
    renderer->SetAAMode(AAModeNone);
    ExpectSame(Draw(), plain, "without a capture again");
}

TEST_F(PresentationSizes, LinesOfALayerAreNeverOverlaid)
{
    AddThings();
    AddLine(Vector(40, 12, -1), Vector(40, 38, -1), Color(1, 0, 0), 1.0f).overlay = true;
    AllowStateChange("blending"); // as a line that comes last leaves it
    AddLayerLine(*app.GetContext()->GetForeground2D()).overlay = true;
    AddLayerLine(*app.GetContext()->GetBackground2D()).overlay = true;
    const int whole = Draw().Count(Green);
    EXPECT_EQ(whole, 85 * 4);
    renderer->OverlayLines(true);
    EXPECT_EQ(Draw().Count(Green), whole);
    EXPECT_EQ(Draw().Count(Green), whole) << "in the second frame";
}

TEST_F(PresentationSizes, ALayerGrowsWithTheRatioOfTheHostAndNotWithSupersampling)
{
    for (const bool background : {false, true})
    {
        sprites.clear();
        AddSprite(background ? *app.GetContext()->GetBackground2D() : *app.GetContext()->GetForeground2D());
        renderer->SetLayerRatio(std::nullopt);
        renderer->SetAAMode(AAModeNone);
        ExpectRect(Covered(Draw(true), Green), {10, 10, 20, 10});
        renderer->SetAAMode(AAModeSupersampling);
        EXPECT_EQ(renderer->GetDevicePixelRatio(), 2.0f);
        ExpectRect(Covered(Draw(true), Green), {10, 10, 20, 10});
        renderer->SetDevicePixelRatio(2.0f);
        ExpectRect(Covered(Draw(true), Green), {20, 20, 40, 20});
        renderer->SetLayerRatio(1.0f);
        ExpectRect(Covered(Draw(true), Green), {10, 10, 20, 10});
        ExpectRect(Covered(Draw(false), Green), {10, 10, 20, 10});
        EXPECT_EQ(renderer->GetDevicePixelRatio(), 2.0f) << "for all else it stays";
        renderer->SetLayerRatio(0.5f);
        ExpectRect(Covered(Draw(true), Green), {5, 5, 10, 5});
    }
}

TEST_F(PresentationSizes, AViewThatIsResizedInBetweenIsDrawnAsANewOne)
{
    AddThings();
    for (const Stage& stage : Stages())
    {
        UseFramebuffer(SmallWidth, SmallHeight);
        FitCamera();
        NewRenderer();
        renderer->SetLook(Host::Look::Basic);
        stage.use(*renderer);
        const Picture first = Draw();
        for (const auto& [width, height] : {std::pair(80, 80), std::pair(50, 40), std::pair(SmallWidth, SmallHeight)})
        {
            UseFramebuffer(width, height);
            FitCamera();
            renderer->Resize(width, height);
            app.SetScreenSize(width, height);
            const Picture resized = Draw();
            EXPECT_EQ(GLState::Capture().at("viewport"), (std::vector<double>{0, 0, double(width), double(height)}));
            SuspendAndResume();
            ExpectSame(resized, Draw(), stage.label);
            if (width == SmallWidth)
            {
                ExpectSame(resized, first, stage.label);
            }
        }
        DropStages();
    }
}

TEST_F(PresentationSizes, ACaptureThatKeepsItsSizeHasStagesOfThatSize)
{
    // All coordinates are even, so that half of the picture has whole pixels.
    AddRect(kGrey, {10, 10, 30, 20}, 0.0f, 1);
    AddRect(kGrey, {40, 10, 20, 30}, 6.0f, 2);
    const Picture before = DrawIdentifiers(true);
    EXPECT_EQ(before.At(20, 20), IdentifierOf(1));
    // The lower left quarter of the framebuffer.
    renderer->Resize(SmallWidth / 2, SmallHeight / 2);
    app.SetScreenSize(SmallWidth / 2, SmallHeight / 2);
    const Picture stretched = DrawIdentifiers(true);
    ExpectNoGLError();
    for (int y = 0; y < SmallHeight / 2; ++y)
    {
        for (int x = 0; x < SmallWidth / 2; ++x)
        {
            ASSERT_EQ(stretched.At(x, y), before.At(2 * x, 2 * y)) << x << ", " << y;
        }
    }
    UseAllStages();
    const Picture all = Draw(true);
    ExpectNoGLError();
    ExpectSame(Draw(true), all, "in the second frame");
    app.ClearOffscreenBuffers(renderer.get());
    const Picture fresh = Draw(true);
    SuspendAndResume();
    ExpectSame(Draw(true), fresh, "after a suspension");
}

} // namespace OV::Test
