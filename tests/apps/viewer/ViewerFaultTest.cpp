#include "tests/apps/viewer/ViewerTool.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

using namespace OV::Test;

namespace
{

class ViewerFault : public ViewerTool
{
};

} // namespace

TEST_F(ViewerFault, ABrokenFileLeavesWhatWasOpen)
{
    const std::string cube = WriteCube();
    WriteWholeFile(folder.Path("broken.gltf"), "{");
    View(cube, "picture FOLDER/before.png\nopen FOLDER/broken.gltf\nexpect message broken.gltf\nexpect model cube.obj\n"
               "picture FOLDER/after.png\nopen FOLDER/none.obj\nexpect message none.obj\nexpect model cube.obj");
    ExpectSame(PictureAt("before.png"), PictureAt("after.png"));
}

TEST_F(ViewerFault, ALostContextEndsInTheSamePicture)
{
    View(WriteCube(), "set lines {}\nset occlusion true\nset sky true\nclick 320,240\nkey m\nwait\n"
                      "screenshot FOLDER/before.png\n"
                      "lose-context\nwait\nscreenshot FOLDER/after.png");
    ExpectSame(PictureAt("before.png"), PictureAt("after.png"));
}

TEST_F(ViewerFault, KeyAndMenuLoseTheContextToo)
{
    const std::string told =
        View(WriteCube(), "set lines {}\nset antialiasing \"ssaa\"\nwait\nscreenshot FOLDER/before.png\nprint statistics\n"
                          "key f9\nwait\nscreenshot FOLDER/key.png\nprint statistics\n"
                          "click 272,10\nwait\nclick 300,36\nmove 1,1\nwait\nscreenshot FOLDER/menu.png\nprint statistics");
    ExpectSame(PictureAt("before.png"), PictureAt("key.png"));
    ExpectSame(PictureAt("before.png"), PictureAt("menu.png"));
    // Nothing else draws the model again.
    std::vector<int> drawn;
    for (std::size_t at = told.find("model frames "); at != std::string::npos; at = told.find("model frames ", at + 1))
    {
        drawn.push_back(std::stoi(told.substr(at + 13)));
    }
    ASSERT_EQ(drawn.size(), 3u) << told;
    EXPECT_GT(drawn[1], drawn[0]);
    EXPECT_GT(drawn[2], drawn[1]);
}

TEST_F(ViewerFault, AWindowOfNoPixelsTakesWhatComes)
{
    const std::string pair = WritePair();
    View(WriteCube(), "minimise\nwait\npicture-of 60x40 FOLDER/small.png\nopen " + pair + "\nkey f9\nview front\nclick 120,240\ndrag 300,240 340,200\n"
                      "scroll 300,240 2\nscale 2\nscale 1\nkey ?\nkey escape\n"
                      "lose-context\nresize 700x500\nresize 640x480\nview top\nview front\nkey escape\nwait\nrestore\nwait\n"
                      "move 1,1\nwait\nscreenshot FOLDER/after.png");
    View(pair, "view front\nwait\nmove 1,1\nwait\nscreenshot FOLDER/straight.png");
    ExpectSame(PictureAt("after.png"), PictureAt("straight.png"));
    EXPECT_EQ(PictureAt("small.png").GetWidth(), 60);
}

TEST_F(ViewerFault, AWindowOfAPixelIsNoTrouble)
{
    View(WriteCube(), "screenshot FOLDER/before.png\nresize 1x1\nwait\nkey f\nwait\nresize 3x200\nwait\nresize 640x480\n"
                      "wait\nscreenshot FOLDER/after.png");
    EXPECT_EQ(PictureAt("after.png").GetWidth(), 640);
}

TEST_F(ViewerFault, AWindowMayBeResizedAgainAndAgain)
{
    std::string script;
    for (int i = 0; i < 12; ++i)
    {
        script += "resize " + std::to_string(200 + 37 * i) + "x" + std::to_string(520 - 23 * i) + "\n";
    }
    View(WriteCube(), script + "resize 640x480\nwait\nview iso\nwait\nscreenshot FOLDER/after.png\nexpect model cube.obj");
    View(WriteCube(), "screenshot FOLDER/straight.png");
    ExpectSame(PictureAt("after.png"), PictureAt("straight.png"));
}

TEST_F(ViewerFault, AWindowMayBeResizedInEveryFrame)
{
    // In the middle of a turn, with buffers that are made for the size.
    const std::string script = "set occlusion true\nset lines {}\nview top\n";
    const std::string told =
        View(WriteCube(), script + "print statistics\nresize-often 25\nwait\nprint statistics\nmove 1,1\nwait\n"
                                   "screenshot FOLDER/after.png");
    View(WriteCube(), script + "wait\nmove 1,1\nwait\nscreenshot FOLDER/straight.png");
    ExpectSame(PictureAt("after.png"), PictureAt("straight.png"));
    const auto frames = [&told](std::size_t from) { return std::stoi(told.substr(told.find("model frames ", from) + 13)); };
    EXPECT_GE(frames(told.find('\n')) - frames(0), 15) << "they were drawn meanwhile";
}

TEST_F(ViewerFault, AMinimisedWindowDrawsNothingAndComesBackAsItWas)
{
    const std::string told =
        View(WriteCube(), "set occlusion true\nwait\nscreenshot FOLDER/before.png\nwait\nminimise\nwait\nprint statistics\n"
                          "key l\nkey l\nview top\nwait\nprint statistics\nview iso\nwait\nrestore\nwait\n"
                          "screenshot FOLDER/after.png");
    const std::size_t line = told.find('\n');
    EXPECT_EQ(told.substr(0, line), told.substr(line + 1, line)) << told;
    ExpectSame(PictureAt("before.png"), PictureAt("after.png"));
}

TEST_F(ViewerFault, MayBeClosedWhileAFileIsRead)
{
    View("", "begin-open " + TestModel("IFC/AC14-FZK-Haus.ifc") + "\nexpect opening AC14-FZK-Haus.ifc");
}

TEST_F(ViewerFault, WorkGoesOnWhileAFileIsRead)
{
    // So large that it is still read when the pointer has done its work.
    std::string grid;
    constexpr int side = 300;
    for (int i = 0; i <= side * side; ++i)
    {
        grid += "v " + std::to_string(i % side) + " " + std::to_string(i % 7) + " " + std::to_string(i / side) + "\n";
    }
    for (int i = 1; i + side + 1 < side * side; ++i)
    {
        grid += "f " + std::to_string(i) + " " + std::to_string(i + 1) + " " + std::to_string(i + side + 1) + " "
            + std::to_string(i + side) + "\n";
    }
    View(WriteCube(), "begin-open " + WriteObj("large.obj", grid) + "\nclick 320,240\nexpect selection cube\nkey p\n"
                      "expect settings \"orthographic\": true\nexpect opening large.obj\nkey escape\nwait\n"
                      "expect message cancelled\nexpect model cube.obj\nexpect selection cube");
}

TEST_F(ViewerFault, OpeningMayBeCancelled)
{
    const std::string cube = WriteCube();
    View(cube, "begin-open " + TestModel("IFC/AC14-FZK-Haus.ifc") + "\nkey escape\nwait\nexpect message cancelled\n"
               "expect model cube.obj");
}

TEST_F(ViewerFault, AScriptThatFailsEndsWithAStatusAndALine)
{
    const ProcessResult unknown = RunScript(WriteCube(), "dance");
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_NE(unknown.errors.find("line 2: there is no action 'dance'"), std::string::npos) << unknown.errors;
    const ProcessResult unmet = RunScript(WriteCube(), "expect model sphere.obj");
    EXPECT_EQ(unmet.exitCode, 1);
    EXPECT_NE(unmet.errors.find("sphere.obj"), std::string::npos) << unmet.errors;
    const ProcessResult bad = RunScript(WriteCube(), "set lines 3");
    EXPECT_EQ(bad.exitCode, 1);
    EXPECT_NE(bad.errors.find("lines"), std::string::npos) << bad.errors;
}

TEST_F(ViewerFault, WrongUsageAndNoDisplayAreTold)
{
    const ProcessResult usage = RunViewer({"--nothing"});
    EXPECT_EQ(usage.exitCode, 2);
    EXPECT_NE(usage.errors.find("orvane-view: "), std::string::npos);
    const ProcessResult display = RunProcess({ORVANE_VIEW_PROGRAM, "--forget"}, {"DISPLAY=:9999", "WAYLAND_DISPLAY="});
    EXPECT_EQ(display.exitCode, 1);
    EXPECT_NE(display.errors.find("there is no display"), std::string::npos) << display.errors;
}

TEST_F(ViewerFault, ADamagedStateIsSetAsideWithAWord)
{
    const std::string cube = WriteCube();
    View(cube, "set sky true", {});
    ASSERT_TRUE(std::filesystem::exists(StatePath()));
    View(cube, "expect settings \"sky\": true\nexpect message cube.obj", {});
    WriteWholeFile(StatePath(), "{\"settings\": {\"sky\": 3");
    const std::string told = View("", "print message\nexpect settings \"sky\": false", {});
    EXPECT_NE(told.find("set aside"), std::string::npos) << told;
    EXPECT_EQ(ReadWholeFile(StatePath() + ".damaged"), "{\"settings\": {\"sky\": 3");
    View(cube, "expect settings \"sky\": false", {});
}
