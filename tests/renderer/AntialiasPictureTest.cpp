#include "orvane/overlay/Rect.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/overlay/Sprite.h"
#include "tests/renderer/PixelBuffers.h"
#include "tests/renderer/PixelScene.h"

#include <GL/glew.h>
#include <gtest/gtest.h>

#include <set>
#include <tuple>

namespace OV::Test
{

namespace
{

const Pixel kBlue = ToPixel(0, 0, 1);
const Pixel kRed = ToPixel(1, 0, 0);
const Pixel kGreen = ToPixel(0, 1, 0);

constexpr AAMode kModes[] = {AAModeNone, AAModeMSAA, AAModeFXAA, AAModeSupersampling};

/// A red triangle with slanted sides in front of a green rectangle.
class AntialiasPicture : public PixelScene
{
protected:
    AntialiasPicture()
    {
        AddQuad(AddColor(Color(0, 1, 0, 1)), {70, 60, 40, 50});
        AddShape(AddColor(Color(1, 0, 0, 1)), {{10.3f, 10.2f, 5}, {100.7f, 35.4f, 5}, {30.1f, 110.6f, 5}});
    }

    Picture FrameOf(AAMode mode)
    {
        renderer->SetAAMode(mode);
        return Frame(true);
    }

    static void ExpectScene(const Picture& picture)
    {
        ExpectColorInRect(picture, {40, 40, 15, 20}, kRed);
        ExpectColorInRect(picture, {90, 70, 15, 35}, kGreen);
        ExpectColorInRect(picture, {2, 60, 8, 60}, kBlue);
        ExpectColorInRect(picture, {114, 2, 12, 120}, kBlue);
    }

    /// How many pixels have a colour that nothing in the scene has.
    static int Mixed(const Picture& picture)
    {
        return picture.GetWidth() * picture.GetHeight() - picture.Count(kRed) - picture.Count(kGreen) -
               picture.Count(kBlue);
    }
};

/// Each pixel the mean of four.
Picture Halve(const Picture& large)
{
    Picture half(large.GetWidth() / 2, large.GetHeight() / 2,
                 std::vector<unsigned char>(large.GetRows().size() / 4, 0));
    for (int y = 0; y < half.GetHeight(); ++y)
    {
        for (int x = 0; x < half.GetWidth(); ++x)
        {
            Pixel sum{0, 0, 0, 0};
            for (const auto& [dx, dy] : {std::pair{0, 0}, std::pair{1, 0}, std::pair{0, 1}, std::pair{1, 1}})
            {
                const Pixel part = large.At(2 * x + dx, 2 * y + dy);
                sum = {sum.r + part.r, sum.g + part.g, sum.b + part.b, 0};
            }
            half.Set(x, y, {(sum.r + 2) / 4, (sum.g + 2) / 4, (sum.b + 2) / 4, 255});
        }
    }
    return half;
}

} // namespace

TEST_F(AntialiasPicture, EveryModeShowsTheScene)
{
    for (const AAMode mode : kModes)
    {
        SCOPED_TRACE(mode);
        const Picture picture = FrameOf(mode);
        ExpectScene(picture);
        EXPECT_EQ(Frame(true), picture) << "the second frame";
    }
}

TEST_F(AntialiasPicture, PixelBuffersOfTheHostDoNoHarm)
{
    for (const AAMode mode : kModes)
    {
        SCOPED_TRACE(mode);
        const Picture expected = FrameOf(mode);
        context->Suspend(renderer.get());
        context->Resume(renderer.get());
        Picture drawn;
        {
            // Too small for the textures: GL would refuse to read them from there.
            const PixelBuffers buffers;
            drawn = FrameOf(mode);
            buffers.ExpectBound();
        }
        EXPECT_EQ(drawn, expected);
        EXPECT_EQ(Frame(true), expected) << "the next frame";
    }
}

TEST_F(AntialiasPicture, WithoutAModeTheCaptureIsThePictureItself)
{
    const Picture direct = Frame(false);
    EXPECT_EQ(Mixed(direct), 0);
    EXPECT_EQ(FrameOf(AAModeNone), direct);
}

TEST_F(AntialiasPicture, MultisamplingDrawsStraightOnTheScreen)
{
    const Picture hard = Frame(false);
    EXPECT_EQ(FrameOf(AAModeMSAA), hard) << "the framebuffer has one sample a pixel";
    EXPECT_EQ(renderer->offscreenFramebuffer, 0u);
    UseFramebuffer(DefaultSize, DefaultSize, 4);
    const Picture smooth = Frame(true);
    ExpectScene(smooth);
    EXPECT_GT(Mixed(smooth), 50);
}

TEST_F(AntialiasPicture, FxaaAndSupersamplingSmoothEdgesAndNothingElse)
{
    const Picture hard = Frame(false);
    for (const AAMode mode : {AAModeFXAA, AAModeSupersampling})
    {
        SCOPED_TRACE(mode);
        const Picture smooth = FrameOf(mode);
        EXPECT_GT(Mixed(smooth), 50);
        int changedOffEdges = 0;
        for (int y = 0; y < Height(); ++y)
        {
            for (int x = 0; x < Width(); ++x)
            {
                bool flat = true;
                for (int dy = -1; dy <= 1; ++dy)
                {
                    for (int dx = -1; dx <= 1; ++dx)
                    {
                        const int nx = std::min(std::max(x + dx, 0), Width() - 1);
                        const int ny = std::min(std::max(y + dy, 0), Height() - 1);
                        flat = flat && hard.At(nx, ny) == hard.At(x, y);
                    }
                }
                changedOffEdges += flat && smooth.At(x, y) != hard.At(x, y) ? 1 : 0;
            }
        }
        EXPECT_EQ(changedOffEdges, 0);
    }
}

TEST_F(AntialiasPicture, TheModesDiffer)
{
    const Picture none = FrameOf(AAModeNone);
    const Picture fxaa = FrameOf(AAModeFXAA);
    const Picture supersampled = FrameOf(AAModeSupersampling);
    EXPECT_NE(none, fxaa);
    EXPECT_NE(none, supersampled);
    EXPECT_NE(fxaa, supersampled);
    EXPECT_EQ(FrameOf(AAModeNone), none) << "and back";
}

TEST_F(AntialiasPicture, SupersamplingIsALargerPictureBoxFiltered)
{
    const Picture supersampled = FrameOf(AAModeSupersampling);
    renderer.reset();
    UseFramebuffer(2 * DefaultSize, 2 * DefaultSize);
    NewRenderer();
    const Picture large = Frame(false);
    EXPECT_GT(Mixed(Halve(large)), 50);
    const PictureDifference difference = Compare(supersampled, Halve(large));
    EXPECT_TRUE(difference.sameSize);
    EXPECT_LE(difference.largestChannelDifference, 2);
}

TEST_F(AntialiasPicture, UnderSupersamplingAUnitOfALayerIsAPointOfTwoPixels)
{
    const auto addSprite = [](Scene2D& layer, float x, float y, const Color& color)
    {
        auto sprite = std::make_unique<Sprite>(&layer, new Rect(&layer, 4.0f, 3.0f, false));
        sprite->SetColor(color);
        Transform place;
        place.SetPosition(Vector(x, y, 0.0f));
        sprite->GetNode()->SetLocal(place);
        return sprite;
    };
    // One goes through the capture and one does not.
    const auto behind = addSprite(*context->GetContext()->GetBackground2D(), 56.0f, 2.0f, Color(1, 1, 1, 1));
    const auto above = addSprite(*context->GetContext()->GetForeground2D(), 56.0f, 20.0f, Color(0, 0, 0, 1));
    const Pixel white = ToPixel(1, 1, 1);
    const Pixel black = ToPixel(0, 0, 0);

    const Picture plain = FrameOf(AAModeNone);
    ExpectColorInRect(plain, {56, 2, 4, 3}, white);
    ExpectColorInRect(plain, {56, 20, 4, 3}, black);
    EXPECT_EQ(plain.Count(white), 4 * 3);
    EXPECT_EQ(plain.Count(black), 4 * 3);

    const Picture supersampled = FrameOf(AAModeSupersampling);
    ExpectColorInRect(supersampled, {112, 4, 8, 6}, white);
    ExpectColorInRect(supersampled, {112, 40, 8, 6}, black);
    EXPECT_EQ(supersampled.Count(white), 8 * 6);
    EXPECT_EQ(supersampled.Count(black), 8 * 6);
}

TEST_F(AntialiasPicture, TheCapturedAlphaDoesNotReachTheScreen)
{
    context->GetContext()->SetBackgroundColor(Color(0.0f, 0.0f, 1.0f, 0.25f));
    for (const AAMode mode : {AAModeNone, AAModeFXAA, AAModeSupersampling})
    {
        const Picture picture = FrameOf(mode);
        EXPECT_EQ(picture.At(120, 5), (Pixel{0, 0, 255, 255})) << mode;
    }
    EXPECT_EQ(Frame(false).At(120, 5).a, 64);
}

TEST_F(AntialiasPicture, AResizeStretchesTheOldCaptureUntilItsBuffersAreCleared)
{
    FrameOf(AAModeNone);
    renderer->Resize(DefaultSize / 2, DefaultSize / 2);
    EXPECT_EQ(renderer->offscreenWidth, DefaultSize);
    renderer->ApplyCapture();
    ExpectColorInRect(ReadPixels(), {20, 20, 7, 10}, kRed);
    renderer->BeginCapture();
    EXPECT_EQ(renderer->offscreenWidth, DefaultSize);
    renderer->ApplyCapture();
    context->ClearOffscreenBuffers(renderer.get());
    renderer->BeginCapture();
    EXPECT_EQ(renderer->offscreenWidth, DefaultSize / 2);
    renderer->ApplyCapture();
}

TEST_F(AntialiasPicture, EveryModeRepeatsItsPictureAfterASuspensionAndLeavesNoObject)
{
    for (const AAMode mode : kModes)
    {
        SCOPED_TRACE(mode);
        const Picture before = FrameOf(mode);
        Mesh* quad = renderer->screenMesh;
        context->Suspend(renderer.get());
        EXPECT_EQ(renderer->offscreenFramebuffer, 0u);
        context->Resume(renderer.get());
        EXPECT_EQ(renderer->screenMesh, quad);
        EXPECT_EQ(Frame(true), before);
    }
}

TEST_F(AntialiasPicture, LaterFramesMakeNoObject)
{
    for (const AAMode mode : kModes)
    {
        FrameOf(mode);
        const GLObjects objects = GLState::CaptureObjects();
        Frame(true);
        EXPECT_EQ(GLState::CaptureObjects(), objects) << mode;
    }
}

TEST_F(AntialiasPicture, TheCapturedPictureIsShownAgainWithoutTheScene)
{
    for (const AAMode mode : {AAModeNone, AAModeFXAA, AAModeSupersampling})
    {
        const Picture picture = FrameOf(mode);
        context->RenderCapturedAndUI(renderer.get());
        EXPECT_EQ(ReadPixels(), picture) << mode;
    }
}

} // namespace OV::Test
