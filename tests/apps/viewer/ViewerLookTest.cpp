#include "tests/apps/viewer/ViewerTool.h"

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <string>
#include <vector>

using namespace OV::Test;

namespace
{

class ViewerLook : public ViewerTool
{
};

/// Rounds of the program, in each of which it may draw: it goes round once for each action.
constexpr std::size_t kRounds = 50;

std::string Rounds(const std::string& action)
{
    std::string actions;
    for (std::size_t i = 0; i < kRounds; ++i)
    {
        actions += action;
    }
    return actions;
}

std::vector<std::string> LinesOf(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
    {
        lines.push_back(line);
    }
    return lines;
}

} // namespace

TEST_F(ViewerLook, TheWindowShowsThePictureThatIsSaved)
{
    // Too small for sides, so that only bars are beside the picture.
    View(WriteCube(), "picture FOLDER/saved.png\nscreenshot FOLDER/window.png");
    const Picture saved = PictureAt("saved.png");
    const Picture window = PictureAt("window.png");
    ASSERT_EQ(window.GetWidth(), 640);
    ASSERT_EQ(saved.GetWidth(), 640);
    ASSERT_LT(saved.GetHeight(), 480);
    constexpr int status = 26;
    int different = 0;
    for (int y = 0; y < saved.GetHeight(); ++y)
    {
        // Without the cube of the views.
        for (int x = 0; x < 520; ++x)
        {
            different += saved.At(x, y) != window.At(x, y + status) ? 1 : 0;
        }
    }
    EXPECT_EQ(different, 0);
}

TEST_F(ViewerLook, AnIdleWindowDrawsNothing)
{
    const std::vector<std::string> told =
        LinesOf(View(WriteCube(), Rounds("print statistics\n") + "print sleep\nkey l\nwait\nprint statistics"));
    ASSERT_EQ(told.size(), kRounds + 2);
    EXPECT_EQ(std::count(told.begin(), told.end(), told[0]), static_cast<std::ptrdiff_t>(kRounds));
    EXPECT_EQ(told[kRounds], "until something happens");
    EXPECT_NE(told[kRounds + 1], told[0]);
}

TEST_F(ViewerLook, AnIdleWindowSleeps)
{
    // What would wake the program by itself keeps a processor busy.
    const auto sleepAfter = [this](const std::string& script, const std::vector<std::string>& options)
    { return View(WriteCube(), script + "wait\nprint sleep", options); };
    const std::string forEver = "until something happens\n";
    EXPECT_EQ(sleepAfter("", {"--forget"}), forEver);
    EXPECT_EQ(sleepAfter("drag 300,240 340,260\nkey ?\n", {"--forget"}), forEver);
    EXPECT_EQ(sleepAfter("key m\nclick 320,240\nmove 340,260\nset occlusion true\nset sky true\n", {"--forget"}), forEver);
    EXPECT_EQ(sleepAfter("minimise\nview top\nset sky true\n", {"--forget"}), forEver);
    // A watched file is looked at now and then, also after the script, and nothing is drawn for that.
    EXPECT_EQ(sleepAfter("", {"--forget", "--watch"}), "300 ms\n");
}

TEST_F(ViewerLook, AFieldThatWaitsForLettersDrawsNothing)
{
    const std::vector<std::string> told =
        LinesOf(View(WriteCube(), "key ctrl+o\nwait\n" + Rounds("print statistics\n") + "print sleep"));
    ASSERT_EQ(told.size(), kRounds + 1);
    EXPECT_EQ(std::count(told.begin(), told.end(), told[0]), static_cast<std::ptrdiff_t>(kRounds));
    EXPECT_EQ(told[kRounds], "until something happens");
}

TEST_F(ViewerLook, WhatIsSelectedIsDescribed)
{
    const std::string told = View(WritePair(), "set lines {}\nview front\nwait\nclick 520,240\nprint thing\nkey escape\nprint thing");
    EXPECT_EQ(told, "right\npair.obj/right\nMaterial: green\nSize: 2 x 2 x 0\n2 triangles\n\n");
}

TEST_F(ViewerLook, PanelsMoveWithoutTheModelBeingDrawn)
{
    const std::string told = View(WriteCube(), "print statistics\nmove 20,10\nmove 60,10\nkey ?\nwait\nkey escape\n"
                                               "wait\nprint statistics");
    const auto modelFrames = [&](std::size_t from)
    {
        const std::size_t at = told.find("model frames", from);
        return told.substr(at, told.find('\n', at) - at);
    };
    EXPECT_EQ(modelFrames(0), modelFrames(told.find('\n') + 1)) << told;
}

TEST_F(ViewerLook, AClickSelectsAndHidesAndIsolates)
{
    View(WritePair(), "view front\nwait\npicture FOLDER/all.png\n"
                      "click 120,240\nexpect selection left\nwait\nscreenshot FOLDER/selected.png\n"
                      "shift-click 520,240\nexpect selection right\nexpect selection left\n"
                      "key escape\nclick 520,240\nkey h\nwait\npicture FOLDER/hidden.png\n"
                      "key shift+h\nwait\npicture FOLDER/shown.png\n"
                      "click 120,240\nkey i\nwait\npicture FOLDER/alone.png");
    const Picture all = PictureAt("all.png");
    const Picture hidden = PictureAt("hidden.png");
    const int middle = all.GetHeight() / 2;
    EXPECT_EQ(hidden.At(120, middle), all.At(120, middle));
    EXPECT_NE(hidden.At(120, middle), ToPixel(1, 1, 1));
    EXPECT_EQ(hidden.At(520, middle), ToPixel(1, 1, 1));
    EXPECT_NE(all.At(520, middle), ToPixel(1, 1, 1));
    ExpectSame(all, PictureAt("shown.png"));
    ExpectSame(hidden, PictureAt("alone.png"));
    EXPECT_NE(PictureAt("selected.png").At(120, 240), all.At(120, middle));
}

TEST_F(ViewerLook, ABoxSelectsAllThatIsInIt)
{
    View(WritePair(), "view front\nwait\nctrl-drag 10,60 630,440\nexpect selection left\nexpect selection right\n"
                      "ctrl-drag 10,60 300,440\nexpect selection left\nctrl-drag 300,60 340,440\n");
    const ProcessResult other = RunScript(WritePair(), "view front\nwait\nctrl-drag 10,60 300,440\n"
                                                       "expect selection right");
    EXPECT_EQ(other.exitCode, 1);
}

TEST_F(ViewerLook, ASecondClickWithShiftTakesOutAgain)
{
    EXPECT_EQ(View(WritePair(), "view front\nwait\nclick 120,240\nshift-click 520,240\nshift-click 120,240\nprint selection\n"
                                "shift-click 520,240\nprint selection\nshift-click 520,240\nprint selection"),
              "pair.obj/right (green)\n\npair.obj/right (green)\n");
}

TEST_F(ViewerLook, EditGreysAllElse)
{
    View(WritePair(), "view front\nwait\nclick 120,240\nkey e\nwait\npicture FOLDER/edit.png\nkey e\nwait\n"
                      "picture FOLDER/again.png");
    const Picture edit = PictureAt("edit.png");
    const int middle = edit.GetHeight() / 2;
    EXPECT_EQ(edit.At(120, middle), PictureAt("again.png").At(120, middle));
    EXPECT_NE(edit.At(520, middle), PictureAt("again.png").At(520, middle));
}

TEST_F(ViewerLook, ASectionIsDraggedByItsHandle)
{
    // Seen from the right the arrow of a plane towards the front points to the left.
    const std::string told =
        View(WriteCube(), "view right\nwait\nset section.planes [{\"normal\": [0,0,1], \"position\": [0,0,0]}]\nwait\n"
                          "picture FOLDER/before.png\ndrag 290,240 250,240\nwait\npicture FOLDER/after.png\n"
                          "print settings");
    ExpectDifferent(PictureAt("before.png"), PictureAt("after.png"));
    EXPECT_NE(told.find("\"eye\": null"), std::string::npos) << "the view was turned instead";
}

TEST_F(ViewerLook, DistancesSnapToCorners)
{
    // The square of edge 2 is seen from the front; its corners are near these places.
    const std::string told = View(WriteSquare(), "set view.orthographic true\nview front\nwait\n"
                                                 "key m\nclick 118,36\nclick 522,36\nprint measure\nprint message");
    EXPECT_EQ(told, "2\nPoint 2 at a corner. 2\n");
}

TEST_F(ViewerLook, ViewsAreKeptFromOneTimeToTheNext)
{
    const std::string cube = WriteCube();
    View(cube, "drag 300,240 340,200\nwait\npicture FOLDER/kept.png\nsave-view mine\nview top\nwait", {});
    View(cube, "view back\nwait\nrecall-view mine\nwait\npicture FOLDER/recalled.png", {});
    ExpectSame(PictureAt("kept.png"), PictureAt("recalled.png"));
}

TEST_F(ViewerLook, ADoubleClickFitsWhatIsThereAndTwoClicksDoNot)
{
    const std::string pair = WritePair();
    View(pair, "view front\nwait\nclick 120,240\nclick 120,240\nwait\nexpect settings \"eye\": null\n"
               "double-click 120,240\nwait\npicture FOLDER/fit.png\nexpect selection left");
    const Picture fit = PictureAt("fit.png");
    EXPECT_NE(fit.At(fit.GetWidth() / 2, fit.GetHeight() / 2), ToPixel(1, 1, 1));
    EXPECT_EQ(RunScript(pair, "view front\nwait\ndouble-click 120,240\nwait\nexpect settings \"eye\": null").exitCode, 1);
}

TEST_F(ViewerLook, FinerScreensHaveMorePixelsOfTheSamePoints)
{
    const std::string pair = WritePair();
    const std::string script = "view front\nwait\nclick 120,240\nexpect selection left\nclick 520,240\n"
                               "expect selection right\nkey escape\nwait\nscreenshot FOLDER/";
    View(pair, script + "coarse.png");
    View(pair, script + "fine.png", {"--forget", "--scale", "2"});
    const Picture coarse = PictureAt("coarse.png");
    const Picture fine = PictureAt("fine.png");
    ASSERT_EQ(coarse.GetWidth(), 640);
    ASSERT_EQ(fine.GetWidth(), 1280);
    ASSERT_EQ(fine.GetHeight(), 960);
    EXPECT_EQ(fine.At(240, 480), coarse.At(120, 240));
    EXPECT_EQ(fine.At(1040, 480), coarse.At(520, 240));
}

TEST_F(ViewerLook, AScreenWithOtherPixelsIsFollowed)
{
    // A window of as many pixels, half as many points: what is measured in points grows.
    const std::string script = "set lines {\"width\": 3}\nview front\nwait\n";
    View(WriteCube(), script + "resize 640x480\nscreenshot FOLDER/coarse.png\nscale 2\nresize 640x480\nwait\n"
                      "screenshot FOLDER/fine.png\nscale 1\nresize 640x480\nwait\nscreenshot FOLDER/back.png");
    View(WriteCube(), script + "screenshot FOLDER/straight.png", {"--forget", "--scale", "2"});
    EXPECT_EQ(PictureAt("fine.png").GetWidth(), 1280);
    ExpectSame(PictureAt("fine.png"), PictureAt("straight.png"));
    ExpectSame(PictureAt("back.png"), PictureAt("coarse.png"));
}

TEST_F(ViewerLook, APictureMayHaveAnySize)
{
    const std::string cube = WriteCube();
    View(cube, "view front\nwait\npicture-of 333x777 FOLDER/tall.png");
    ExpectSame(PictureAt("tall.png"), Render(cube, {"--view", "front", "--size", "333x777", "--samples", "4"}));
}
