#include "orvane_host/sheet/Sheet.h"
#include "orvane_host/sheet/Watermark.h"
#include "orvane_host/output/WritePNG.h"
#include "tests/overlay/LayerStage.h"
#include "tests/support/TemporaryFolder.h"

#include "orvane/overlay/Material2D.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"

#include <algorithm>
#include <cmath>
#include <fstream>

namespace OV::Test
{

namespace
{

constexpr int kWidth = 640;
constexpr int kHeight = 400;

class SheetPicture : public LayerStage
{
protected:
    SheetPicture() : LayerStage(kWidth, kHeight)
    {
        CameraNode& camera = Camera();
        camera.SetFOV(std::atan(0.5f));
        camera.SetDistanceToTarget(40.0f);
        camera.SetNearFar(1.0f, 1000.0f);
        Place(camera, 0, 0, 40);
    }

    CameraNode& Camera() { return *World().GetCameraNode(); }

    /// A green strip of this length at the camera's target, in the upper half of the picture.
    void AddStrip(float length)
    {
        auto raw = std::make_shared<RawMesh>();
        raw->SetPositionBuffer(
            {{-length / 2, 2, 0}, {length / 2, 2, 0}, {length / 2, 6, 0}, {-length / 2, 6, 0}});
        raw->SetIndices({0, 1, 2, 0, 2, 3});
        raw->EndDescription(true);
        auto* const mesh = new Mesh(raw, &World());
        auto* const material = new Material("strip");
        material->SetFlags(MaterialFlagUnlit);
        material->SetAmbient(Color(0, 0, 0, 0));
        material->SetDiffuse(Color(0, 1, 0, 1));
        World().AddMaterial(material);
        material->AddMesh(mesh);
        auto* const node = new MeshNode(&World());
        mesh->AddNode(node);
        World().GetRoot()->AddChild(node, false);
    }

    Picture FrameWith(Host::Sheet& sheet)
    {
        context->Update(0.0f);
        sheet.Layout(Camera(), kWidth, kHeight);
        return Frame();
    }

    /// Columns that hold a colour, from the first to the last.
    static int ExtentOf(const Picture& picture, const Pixel& color, const PixelRect& within)
    {
        int first = kWidth;
        int last = -1;
        for (int y = within.y; y < within.y + within.height; ++y)
        {
            for (int x = within.x; x < within.x + within.width; ++x)
            {
                if (picture.At(x, y) == color)
                {
                    first = std::min(first, x);
                    last = std::max(last, x);
                }
            }
        }
        return last - first + 1;
    }

    std::string WritePicture(const std::string& name, const std::vector<unsigned char>& rgba, int width, int height)
    {
        std::string error;
        EXPECT_TRUE(Host::WritePNG(rgba, width, height, folder.Path(name), Host::PNGAlpha::Keep, error)) << error;
        return folder.Path(name);
    }

    TemporaryFolder folder;
};

TEST_F(SheetPicture, TheBarIsAsLongAsAStripOfTheModelOfItsLength)
{
    Host::SheetOptions options;
    options.scaleBar = true;
    for (const auto projection : {CameraNode::Perspective, CameraNode::Orthographic})
    {
        SCOPED_TRACE(projection);
        Camera().SetProjection(projection);
        Host::Sheet sheet(Layer(), options);
        sheet.Layout(Camera(), kWidth, kHeight);
        ASSERT_GT(sheet.GetBarLength(), 0.0);
        World().Clear();
        Camera().SetProjection(projection);
        Camera().SetFOV(std::atan(0.5f));
        Camera().SetDistanceToTarget(40.0f);
        Camera().SetNearFar(1.0f, 1000.0f);
        Place(Camera(), 0, 0, 40);
        AddStrip(static_cast<float>(sheet.GetBarLength()));
        const Picture picture = FrameWith(sheet);
        const int strip = ExtentOf(picture, kGreen, {0, kHeight / 2, kWidth, kHeight / 2});
        // Ink, from the bar's first segment to its last line; numbers stand above.
        const int bar = ExtentOf(picture, kBlack, {0, 18, kWidth, 3});
        EXPECT_NEAR(bar, strip, 1);
        EXPECT_EQ(bar, sheet.GetBarPixels());
    }
}

TEST_F(SheetPicture, TheNeedlePointsNorthClockwiseFromTheTop)
{
    for (const float angle : {0.0f, 45.0f, 90.0f, 180.0f, -90.0f, 200.0f})
    {
        SCOPED_TRACE(angle);
        Host::SheetOptions options;
        options.north = angle;
        options.paper = Color(1, 1, 1, 1);
        options.ink = Color(1, 0, 0, 1);
        Host::Sheet sheet(Layer(), options);
        const Picture picture = FrameWith(sheet);
        // The letter stands at the tip: the ink there lies north of the middle of all ink.
        const Text* const letter = Layer().GetTexts()[0];
        const Vector at = const_cast<Text*>(letter)->GetInstance(0)->GetGlobal().GetPosition();
        double x = 0.0;
        double y = 0.0;
        int count = 0;
        for (int row = 0; row < kHeight; ++row)
        {
            for (int column = 0; column < kWidth; ++column)
            {
                const Pixel pixel = picture.At(column, row);
                const bool atLetter = std::abs(column - at.x) < 7 && std::abs(row - at.y) < 8;
                if (!atLetter && pixel.g < 200)
                {
                    x += column + 0.5;
                    y += row + 0.5;
                    ++count;
                }
            }
        }
        ASSERT_GT(count, 100);
        const double direction = std::atan2(at.x - x / count, at.y - y / count) * 180.0 / 3.14159265358979;
        EXPECT_NEAR(std::remainder(direction - angle, 360.0), 0.0, 6.0);
    }
}

TEST_F(SheetPicture, EveryPartIsLegibleOnADarkPicture)
{
    context->GetContext()->SetBackgroundColor(Color(0, 0, 0, 1));
    Host::SheetOptions options;
    options.title = "Title";
    options.scaleBar = true;
    options.north = 0.0f;
    Host::Sheet sheet(Layer(), options);
    const Picture picture = FrameWith(sheet);
    // Paper of an opacity of 0.85 in all three corners.
    const Pixel paper{217, 217, 217, picture.At(14, 14).a};
    for (const PixelRect corner : {PixelRect{13, 13, 4, 4}, PixelRect{kWidth - 16, 13, 2, 2},
                                   PixelRect{kWidth - 16, kHeight - 16, 2, 2}})
    {
        ExpectColorInRect(picture, corner, paper, 1);
    }
}

TEST_F(SheetPicture, AWatermarkStandsInTheMiddleBehindTheModel)
{
    std::vector<unsigned char> rgba;
    for (int i = 0; i < 40 * 20; ++i)
    {
        // Blue above, red below.
        const bool above = i < 40 * 10;
        rgba.insert(rgba.end(), {static_cast<unsigned char>(above ? 0 : 255), 0,
                                 static_cast<unsigned char>(above ? 255 : 0), 255});
    }
    std::string error;
    const auto mark = Host::Watermark::Read(WritePicture("mark.png", rgba, 40, 20), error);
    ASSERT_NE(mark, nullptr) << error;
    EXPECT_EQ(mark->GetWidth(), 40);
    EXPECT_EQ(mark->GetHeight(), 20);
    mark->Show(Background(), kWidth, kHeight);
    Picture picture = Frame();
    ExpectColorInRect(picture, {300, 190, 40, 10}, kRed);
    ExpectColorInRect(picture, {300, 200, 40, 10}, kBlue);
    EXPECT_EQ(picture.Count(kWhite), kWidth * kHeight - 800) << "pixel by pixel";

    AddStrip(60.0f);
    Camera().SetProjection(CameraNode::Orthographic);
    Place(Camera(), 0, 4, 40);
    picture = Frame();
    EXPECT_EQ(picture.Count(kBlue), 0);
    EXPECT_GT(picture.Count(kGreen), 1000);
}

TEST_F(SheetPicture, ALargeWatermarkIsFittedAndSmoothed)
{
    std::vector<unsigned char> rgba;
    for (int i = 0; i < 2000 * 1000; ++i)
    {
        // Columns of black and of transparent white, one pixel each.
        const bool black = i % 2 == 0;
        const auto level = static_cast<unsigned char>(black ? 0 : 255);
        rgba.insert(rgba.end(), {level, level, level, static_cast<unsigned char>(black ? 255 : 0)});
    }
    std::string error;
    const auto mark = Host::Watermark::Read(WritePicture("large.png", rgba, 2000, 1000), error);
    ASSERT_NE(mark, nullptr) << error;
    mark->Show(Background(), kWidth, kHeight);
    const Picture picture = Frame();
    ExpectColorInRect(picture, {4, 44, kWidth - 8, 312}, {127, 127, 127, picture.At(300, 200).a}, 2);
    ExpectColorInRect(picture, {0, 0, kWidth, 38}, kWhite);
}

TEST_F(SheetPicture, AWatermarkThatCannotBeReadSaysWhy)
{
    const auto expectError = [](const std::string& path, const std::string& part) {
        std::string error;
        EXPECT_EQ(Host::Watermark::Read(path, error), nullptr);
        EXPECT_NE(error.find(part), std::string::npos) << error;
        EXPECT_NE(error.find("; "), std::string::npos) << "a remedy";
        EXPECT_EQ(error.find('\n'), std::string::npos);
    };
    expectError(folder.Path("missing.png"), "No such file");
    expectError(folder.Path(""), "folder");
    const auto write = [&](const std::string& name, const std::string& bytes) {
        std::ofstream(folder.Path(name), std::ios::binary) << bytes;
        return folder.Path(name);
    };
    expectError(write("empty.png", ""), "empty");
    expectError(write("text.png", "no picture at all, but long enough to be looked at"), "no PNG, JPEG, TGA, BMP, GIF or WebP");
    const std::string whole = WritePicture("whole.png", std::vector<unsigned char>(64 * 64 * 4, 77), 64, 64);
    std::ifstream file(whole, std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    expectError(write("cut.png", bytes.substr(0, bytes.size() / 2)), "");
}

TEST_F(SheetPicture, AWatermarkMayBeShownAgainAndGoAfterItsLayer)
{
    std::string error;
    const auto mark =
        Host::Watermark::Read(WritePicture("mark.png", std::vector<unsigned char>(40 * 20 * 4, 255), 40, 20), error);
    ASSERT_NE(mark, nullptr) << error;
    mark->Show(Background(), kWidth, kHeight);
    Frame();
    mark->Show(Background(), 10, 10);
    EXPECT_EQ(Background().GetSprites().size(), 1u);
    Frame();
    renderer.reset();
    context.reset();
}

} // namespace

} // namespace OV::Test
