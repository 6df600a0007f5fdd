#include "tests/orvane_host/present/PresentationModels.h"

#include "orvane_host/present/PresentationRenderer.h"
#include "orvane/scene/Material.h"
#include "tests/support/Golden.h"
#include "tests/support/TemporaryFolder.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <array>
#include <filesystem>

namespace OV::Test
{

namespace
{

using Host::PresentationSettings;

class PresentationFrame : public PresentationFixture
{
protected:
    PresentationFrame() : presentation(PresentBoxes()) {}

    std::unique_ptr<Host::Presentation> presentation;
    TemporaryFolder folder;
};

/// A picture as a file without alpha keeps it.
Picture Opaque(const Picture& picture)
{
    Picture opaque = picture;
    for (int y = 0; y < picture.GetHeight(); ++y)
    {
        for (int x = 0; x < picture.GetWidth(); ++x)
        {
            Pixel pixel = picture.At(x, y);
            pixel.a = 255;
            opaque.Set(x, y, pixel);
        }
    }
    return opaque;
}

PresentationSettings WithSheet(Host::Antialiasing antialiasing)
{
    PresentationSettings wanted;
    wanted.antialiasing = antialiasing;
    wanted.sheet.title = "House";
    wanted.sheet.scaleBar = true;
    wanted.lines = Host::LineSettings();
    return wanted;
}

constexpr Host::Antialiasing Ways[] = {Host::Antialiasing::None, Host::Antialiasing::Multisampling,
                                       Host::Antialiasing::Filter, Host::Antialiasing::Supersampling};

TEST_F(PresentationFrame, ASavedPictureIsTheOneThatIsDrawn)
{
    for (const Host::Antialiasing way : Ways)
    {
        // A framebuffer of the host's has the samples that it has.
        UseFramebuffer(SmallWidth, SmallHeight, way == Host::Antialiasing::Multisampling ? 4 : 0);
        Apply(*presentation, WithSheet(way));
        const Picture drawn = Draw(*presentation);
        const std::string path = folder.Path("saved.png");
        std::string error;
        ASSERT_TRUE(presentation->SavePicture(path, Width(), Height(), error)) << error;
        ExpectSame(LoadPicture(path), Opaque(drawn), "saved");
        std::vector<unsigned char> rgba;
        ASSERT_TRUE(presentation->TakePicture(rgba, Width(), Height(), error)) << error;
        ExpectSame(Picture(Width(), Height(), rgba), Opaque(drawn), "taken");
        ExpectSame(Draw(*presentation), drawn, "drawn afterwards");
    }
}

TEST_F(PresentationFrame, SavingInAnotherSizeLeavesTheHostsFramebufferAndItsPictureAlone)
{
    for (const Host::Antialiasing way : Ways)
    {
        Apply(*presentation, WithSheet(way));
        const Picture drawn = Draw(*presentation);
        glViewport(1, 2, 30, 20);
        std::string error;
        ASSERT_TRUE(presentation->SavePicture(folder.Path("large.png"), 200, 120, error)) << error;
        std::array<GLint, 4> viewport{};
        glGetIntegerv(GL_VIEWPORT, viewport.data());
        EXPECT_EQ(viewport, (std::array<GLint, 4>{1, 2, 30, 20}));
        EXPECT_FALSE(presentation->NeedsDraw());
        ExpectSame(ReadPixels(), drawn, "in the framebuffer");
        ExpectSame(Draw(*presentation), drawn, "drawn afterwards");
        const auto other = PresentBoxes();
        Apply(*other, presentation->GetSettings());
        ASSERT_TRUE(other->SavePicture(folder.Path("alone.png"), 200, 120, error)) << error;
        ExpectSame(LoadPicture(folder.Path("large.png")), LoadPicture(folder.Path("alone.png")), "of another size");
    }
}

TEST_F(PresentationFrame, APictureThatCannotBeMadeIsToldAndChangesNothing)
{
    const Picture drawn = Draw(*presentation);
    std::string error;
    EXPECT_FALSE(presentation->SavePicture(folder.Path("none.png"), 0, 10, error));
    EXPECT_NE(error.find("0x10"), std::string::npos) << error;
    EXPECT_FALSE(presentation->SavePicture(folder.Path("none.png"), 1 << 20, 10, error));
    EXPECT_FALSE(std::filesystem::exists(folder.Path("none.png")));
    EXPECT_FALSE(presentation->SavePicture(folder.Path("no/folder.png"), 20, 10, error));
    ExpectSame(Draw(*presentation), drawn, "afterwards");
}

TEST_F(PresentationFrame, AChangeOfTheSheetAloneIsDrawnOverTheCapture)
{
    for (const Host::Antialiasing way : {Host::Antialiasing::Filter, Host::Antialiasing::Supersampling})
    {
        PresentationSettings wanted = WithSheet(way);
        Apply(*presentation, wanted);
        Draw(*presentation);
        // What is behind the sheet is not drawn again, so that it stays as it was even where the
        // look is another one by now.
        wanted.sheet.title = "B";
        Apply(*presentation, wanted);
        const Picture titled = Draw(*presentation);
        const auto fresh = PresentBoxes();
        Apply(*fresh, wanted);
        ExpectSame(titled, Draw(*fresh), "with another title");
        wanted.look = Host::Look::Monotone;
        Apply(*presentation, wanted);
        Apply(*fresh, wanted);
        ExpectSame(Draw(*presentation), Draw(*fresh), "and in another look");
    }
}

TEST_F(PresentationFrame, ACaptureServesWhereOnlyTheSheetChanged)
{
    Apply(*presentation, WithSheet(Host::Antialiasing::Filter));
    const Picture before = Draw(*presentation);
    PresentationSettings wanted = presentation->GetSettings();
    wanted.sheet.title.clear();
    wanted.sheet.scaleBar = false;
    Apply(*presentation, wanted);
    // A renderer that draws nothing of the scene shows it all the same, from the capture.
    presentation->GetRenderer().ShowSurfaces(false);
    presentation->GetRenderer().ShowLines(false);
    const Picture reused = Draw(*presentation);
    presentation->GetRenderer().ShowSurfaces(true);
    presentation->GetRenderer().ShowLines(true);
    const auto fresh = PresentBoxes();
    Apply(*fresh, wanted);
    ExpectSame(reused, Draw(*fresh), "from the capture");
    EXPECT_NE(reused, before);
}

TEST_F(PresentationFrame, ACaptureGoesToWhateverFramebufferIsBound)
{
    for (const Host::Antialiasing way : {Host::Antialiasing::Filter, Host::Antialiasing::Supersampling})
    {
        Apply(*presentation, WithSheet(way));
        UseFramebuffer(SmallWidth, SmallHeight);
        const Picture first = Draw(*presentation);
        UseFramebuffer(SmallWidth, SmallHeight);
        ExpectSame(Draw(*presentation), first, "in another framebuffer");
        UseFramebuffer(2 * SmallWidth, SmallHeight);
        const Picture wide = Draw(*presentation);
        const auto fresh = PresentBoxes();
        Apply(*fresh, presentation->GetSettings());
        ExpectSame(wide, Draw(*fresh), "in another size");
        UseFramebuffer(SmallWidth, SmallHeight);
        ExpectSame(Draw(*presentation), first, "and back");
    }
}

TEST_F(PresentationFrame, LinesAreAsWideAsThePixelRatioSays)
{
    PresentationSettings thin;
    thin.lines = Host::LineSettings();
    PresentationSettings wide = thin;
    wide.lines->width = 2.0f;
    Apply(*presentation, thin);
    presentation->Draw(Width(), Height(), 2.0f);
    const Picture scaled = ReadPixels();
    const auto fresh = PresentBoxes();
    Apply(*fresh, wide);
    ExpectSame(scaled, Draw(*fresh), "two pixels for one");
    Apply(*fresh, thin);
    ExpectSame(Draw(*presentation), Draw(*fresh), "one for one");
}

TEST(PresentedMaterials, WithOnlyADiffuseColourShowThatColourInTheBasicLook)
{
    auto scene = std::make_unique<Scene>();
    auto* const clay = new Material("clay");
    clay->SetDiffuse(Color(0.8f, 0.4f, 0.2f));
    auto* const chalk = new Material("chalk");
    chalk->SetAmbient(Color(0.9f, 0.9f, 0.9f));
    scene->AddMaterial(clay);
    scene->AddMaterial(chalk);
    Host::Presentation presentation(std::move(scene));
    PresentationSettings wanted;
    std::string error;
    wanted.look = Host::Look::Basic;
    ASSERT_TRUE(presentation.Apply(wanted, error)) << error;
    const float share = Host::ImportOptions().ambientLevel;
    EXPECT_FLOAT_EQ(clay->GetAmbient().r, share * 0.8f);
    EXPECT_FLOAT_EQ(clay->GetAmbient().b, share * 0.2f);
    EXPECT_EQ(chalk->GetAmbient().r, 0.9f) << "what the host has set stays";
    wanted.look = Host::Look::Advanced;
    ASSERT_TRUE(presentation.Apply(wanted, error)) << error;
    EXPECT_EQ(clay->GetAmbient().r, clay->GetAmbient().b);
}

TEST_F(PresentationFrame, StatisticsTellTheModelAndTheLastFrame)
{
    Draw(*presentation);
    const Host::PresentationStatistics plain = presentation->GetStatistics();
    EXPECT_EQ(plain.meshes, 5u);
    EXPECT_EQ(plain.triangles, 5u * 12u);
    EXPECT_EQ(plain.drawn.draws, 6u) << "the twins are one mesh";
    EXPECT_EQ(plain.drawn.drawnTriangles, 6u * 12u);
    EXPECT_GT(plain.drawn.bytes, 0u);
    PresentationSettings wanted;
    wanted.lines = Host::LineSettings();
    Apply(*presentation, wanted);
    Draw(*presentation);
    EXPECT_EQ(presentation->GetStatistics().triangles, plain.triangles);
    EXPECT_GT(presentation->GetStatistics().drawn.draws, plain.drawn.draws);
}

} // namespace

} // namespace OV::Test
