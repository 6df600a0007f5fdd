#include "apps/viewer/CommandText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace OV;
using namespace OV::ViewerApp;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;

TEST(CommandText, TellsAPlainPicture)
{
    const RenderCommand command = MakeRenderCommand(Host::PresentationSettings(), "a.obj", 320, 200, "out.png");
    EXPECT_THAT(command.arguments,
                ElementsAre("a.obj", "-o", "out.png", "--size=320x200", "--aa=msaa", "--view=iso", "--fov=35",
                            "--look=advanced", "--background=FFFFFF"));
    EXPECT_TRUE(command.leftOut.empty());
}

TEST(CommandText, QuotesWhatAShellWouldRead)
{
    Host::PresentationSettings settings;
    settings.sheet.title = "It's $HOME";
    const RenderCommand command = MakeRenderCommand(settings, "-my model.obj", 1, 1, "out.png");
    const std::string line = command.ToShell();
    EXPECT_NE(line.find("orvane-render './-my model.obj' "), std::string::npos) << line;
    EXPECT_NE(line.find("'--title=It'\\''s $HOME'"), std::string::npos) << line;
}

TEST(CommandText, NumbersComeBackAsTheyWere)
{
    Host::PresentationSettings settings;
    settings.view.eye = Vector(0.1f, -3.0e-7f, 123456.79f);
    settings.view.target = Vector(1.0f / 3.0f, 0.0f, 0.0f);
    const RenderCommand command = MakeRenderCommand(settings, "a.obj", 1, 1, "out.png");
    EXPECT_THAT(command.arguments, Contains("--eye=0.1,-3e-07,123456.79"));
    EXPECT_THAT(command.arguments, Contains("--target=0.33333334,0,0"));
    EXPECT_THAT(command.arguments, Not(Contains("--view=iso")));
}

TEST(CommandText, TellsWhatIsUnderAndAboutTheModel)
{
    Host::PresentationSettings settings;
    settings.surroundings = "room *.png";
    settings.ground = Host::GroundSettings{Host::GroundKind::Plain, Color(1.0f, 0.0f, 0.2f), std::nullopt};
    RenderCommand command = MakeRenderCommand(settings, "a.obj", 1, 1, "out.png");
    EXPECT_THAT(command.arguments, Contains("--surroundings=room *.png"));
    EXPECT_THAT(command.arguments, Contains("--ground=FF0033"));
    EXPECT_NE(command.ToShell().find("'--surroundings=room *.png'"), std::string::npos);
    EXPECT_TRUE(command.leftOut.empty());
    settings.ground = Host::GroundSettings{Host::GroundKind::ShadowCatcher, Color(), 2.0f};
    command = MakeRenderCommand(settings, "a.obj", 1, 1, "out.png");
    EXPECT_THAT(command.arguments, Contains("--ground=shadow"));
    EXPECT_THAT(command.leftOut, ElementsAre("the ground is as low as the model"));
}

TEST(CommandText, TellsHowCornersAreDark)
{
    Host::PresentationSettings settings;
    settings.occlusionLook = {Host::OcclusionKind::Spiral, 0.5f, 1.25f};
    EXPECT_THAT(MakeRenderCommand(settings, "a.obj", 1, 1, "out.png").arguments, Not(Contains("--ao-kind=spiral")));
    settings.occlusion = true;
    const RenderCommand command = MakeRenderCommand(settings, "a.obj", 1, 1, "out.png");
    for (const char* argument : {"--ao", "--ao-kind=spiral", "--ao-radius=0.5", "--ao-strength=1.25"})
    {
        EXPECT_THAT(command.arguments, Contains(argument));
    }
}

TEST(CommandText, LeavesOutWhatDoesNotCount)
{
    Host::PresentationSettings settings;
    settings.look = Host::Look::Crosshatch;
    settings.section.planes.push_back({});
    settings.editPath = "wall";
    settings.sky = true;
    settings.sheet.watermark = "mark.png";
    settings.antialiasing = Host::Antialiasing::Filter;
    settings.samples = 8;
    const std::string line = MakeRenderCommand(settings, "a.obj", 1, 1, "out.png").ToShell();
    for (const char* option : {"--clip", "--poche", "--edit", "--watermark", "--samples"})
    {
        EXPECT_EQ(line.find(option), std::string::npos) << option;
    }
}

TEST(CommandText, TellsTheSunAndOneNorth)
{
    Host::PresentationSettings settings;
    settings.sheet.north = 10.0f;
    settings.sun.emplace().direction = Vector(1.0f, 2.0f, 3.0f);
    RenderCommand command = MakeRenderCommand(settings, "a.obj", 1, 1, "out.png");
    EXPECT_THAT(command.arguments, Contains("--sun=1,2,3"));
    EXPECT_THAT(command.arguments, Contains("--north=10"));
    EXPECT_TRUE(command.leftOut.empty());
    settings.sun->direction.reset();
    settings.sun->time = "2026-06-21T15:00+02:00";
    settings.sun->place = Host::GeoPlace{52.52f, -13.4f};
    settings.sun->north = 30.0f;
    command = MakeRenderCommand(settings, "a.obj", 1, 1, "out.png");
    EXPECT_THAT(command.arguments, Contains("--sun=2026-06-21T15:00+02:00"));
    EXPECT_THAT(command.arguments, Contains("--place=52.52,-13.4"));
    EXPECT_THAT(command.arguments, Contains("--north=30"));
    EXPECT_THAT(command.arguments, Not(Contains("--north=10")));
    EXPECT_TRUE(command.leftOut.empty());
    settings.sheet.north.reset();
    EXPECT_THAT(MakeRenderCommand(settings, "a.obj", 1, 1, "out.png").leftOut, ElementsAre("there is no north arrow"));
    settings.sun->north.reset();
    EXPECT_TRUE(MakeRenderCommand(settings, "a.obj", 1, 1, "out.png").leftOut.empty());
    settings.sheet.north = 10.0f;
    command = MakeRenderCommand(settings, "a.obj", 1, 1, "out.png");
    EXPECT_THAT(command.leftOut, ElementsAre("there is a north arrow"));
    EXPECT_THAT(command.arguments, Not(Contains("--north=10")));
}

TEST(CommandText, SaysWhatTheToolHasNoOptionFor)
{
    Host::PresentationSettings settings;
    settings.background = Color(0.5f, 0.5f, 0.5f);
    const RenderCommand command = MakeRenderCommand(settings, "a.obj", 1, 1, "out.png");
    EXPECT_THAT(command.leftOut, ElementsAre("the colour of --background is rounded"));
}

TEST(CommandText, TellsWhatIsNoSetting)
{
    Shown shown;
    shown.besides = {"b.obj", "-c.obj"};
    shown.hidden = {"house/roof", "-odd"};
    shown.isolated = "house";
    shown.labels = {"house/door"};
    shown.dimensions = {{{{5000000.125, 0.1, -3}, {1, 2, 3}}}, {{{1, 0, 0}, {0, 0, 0}, {0, 1, 0}}}};
    shown.pixelRatio = 1.5f;
    Host::PresentationSettings settings;
    settings.view.upAxis = Host::UpAxis::Z;
    const RenderCommand command = MakeRenderCommand(settings, "a.obj", 1, 1, "out.png", shown);
    const std::string line = command.ToShell();
    EXPECT_NE(line.find("orvane-render a.obj b.obj ./-c.obj -o out.png"), std::string::npos) << line;
    for (const char* word : {"--up-axis=z", "--hide=house/roof", "--hide=-odd", "--isolate=house", "--label=house/door",
                             "--distance=5000000.125,0.1,-3,1,2,3", "--angle=1,0,0,0,0,0,0,1,0", "--pixel-ratio=1.5"})
    {
        EXPECT_THAT(command.arguments, Contains(word));
    }
    EXPECT_TRUE(command.leftOut.empty());
}
