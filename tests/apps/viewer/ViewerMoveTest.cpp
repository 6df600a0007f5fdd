#include "tests/apps/viewer/RandomActions.h"
#include "tests/apps/viewer/ViewerTool.h"

#include <cmath>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

using namespace OV::Test;

namespace
{

class ViewerMove : public ViewerTool
{
};

} // namespace

TEST_F(ViewerMove, KeysTurnToNamedViews)
{
    static constexpr const char* views[] = {"iso", "front", "back", "left", "right", "top", "bottom"};
    const std::string cube = WriteCube();
    for (int i = 0; i < 7; ++i)
    {
        const std::string other = i == 0 ? "view top\n" : "view iso\n";
        View(cube, other + "wait\nkey " + std::to_string(i + 1) + "\nwait\npicture FOLDER/seen.png");
        const Picture seen = PictureAt("seen.png");
        const std::string size = std::to_string(seen.GetWidth()) + "x" + std::to_string(seen.GetHeight());
        ExpectSame(seen, Render(cube, {"--view", views[i], "--size", size, "--samples", "4"}));
    }
}

TEST_F(ViewerMove, ADragThereAndBackIsNoMovement)
{
    View(WriteCube(), "drag 300,240 301,240\nwait\ndrag 300,240 400,300\nwait\npicture FOLDER/away.png\n"
                      "shift-drag 300,240 350,260\nwait\npicture FOLDER/panned.png\nscroll 300,240 2\nwait\n"
                      "picture FOLDER/near.png\nscroll 300,240 -2\nwait\npicture FOLDER/back.png");
    ExpectDifferent(PictureAt("away.png"), PictureAt("panned.png"));
    ExpectDifferent(PictureAt("panned.png"), PictureAt("near.png"));
    const PictureDifference difference = Compare(PictureAt("panned.png"), PictureAt("back.png"));
    // Eye and target are of floats.
    EXPECT_LT(difference.differingShare, 0.01);
}

TEST_F(ViewerMove, FitShowsAllAgain)
{
    View(WriteCube(), "view front\nwait\npicture FOLDER/front.png\nshift-drag 300,240 900,240\nscroll 300,240 -5\nwait\n"
                      "picture FOLDER/away.png\nkey f\nwait\npicture FOLDER/fit.png\nkey p\nwait\n"
                      "expect settings \"orthographic\": true");
    ExpectDifferent(PictureAt("front.png"), PictureAt("away.png"));
    const PictureDifference difference = Compare(PictureAt("front.png"), PictureAt("fit.png"));
    EXPECT_LT(difference.differingShare, 0.01);
}

TEST_F(ViewerMove, ADroppedFileIsOpened)
{
    View("", "drop " + WriteCube() + "\nwait\nwait\nexpect model cube.obj");
}

TEST_F(ViewerMove, AWatchedFileIsReadAgainWithTheSameView)
{
    const std::string square = WriteSquare();
    WriteWholeFile(folder.Path("green.obj"),
                   "mtllib colours.mtl\nusemtl green\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nf 1 2 3 4\n");
    const std::string told = View(square,
                                  "view front\nwait\nset sky true\nexpect message square.obj\ncopy FOLDER/green.obj "
                                      + square + "\nawait message again\nwait\nprint settings\npicture FOLDER/green.png",
                                  {"--forget", "--watch"});
    EXPECT_NE(told.find("\"named\": \"front\""), std::string::npos);
    EXPECT_NE(told.find("\"sky\": true"), std::string::npos);
    const Picture picture = PictureAt("green.png");
    const Pixel middle = picture.At(picture.GetWidth() / 2, picture.GetHeight() / 2);
    EXPECT_EQ(middle.r, 0);
    EXPECT_GT(middle.g, 100);
}

TEST_F(ViewerMove, WhatStepsBackInMotionComesBackAtRest)
{
    View(WriteCube(), "resize 1500x1100\nset occlusion true\nset antialiasing \"ssaa\"\ndrag 300,240 400,300\n"
                      "drag 300,240 420,310\nwait\nscreenshot FOLDER/after.png\n"
                      "look advanced\nkey l\nwait\nkey l\nwait\nscreenshot FOLDER/drawn.png");
    // Settings that are applied anew have nothing of what was drawn with in motion.
    ExpectSame(PictureAt("after.png"), PictureAt("drawn.png"));
}

TEST_F(ViewerMove, WalksOnWhatIsUnderfoot)
{
    // A floor with a step up of half a metre at x = 0, which is walked up.
    const std::string floor = WriteObj("floor.obj",
                                       "v -9 0 -9\nv 0 0 -9\nv 0 0 9\nv -9 0 9\nf 4 3 2 1\n"
                                       "v 0 0.5 -9\nv 9 0.5 -9\nv 9 0.5 9\nv 0 0.5 9\nf 8 7 6 5\n");
    const std::string begin = "set view.eye [-0.75, 5, 0]\nset view.target [4, 5, 0]\n";
    const auto heightAfter = [&](const std::string& keys)
    {
        const std::string told = View(floor, begin + keys + "wait\nprint settings");
        const std::size_t eye = told.find("\"eye\"");
        const std::size_t first = told.find(',', told.find('[', eye));
        return std::stod(told.substr(first + 1));
    };
    EXPECT_NEAR(heightAfter("key w\n"), 1.6, 1e-4);
    EXPECT_NEAR(heightAfter("key w\nkey w\n"), 2.1, 1e-4);
    EXPECT_NEAR(heightAfter("key w\nkey w\nkey s\n"), 1.6, 1e-4);
}

TEST_F(ViewerMove, WhoWalksInASmallModelIsAsSmall)
{
    // A person is half as large as what is 0.018 each way: a metre is half of 0.018 times the root of 2.
    const std::string part = WriteObj("part.obj", "v -0.009 0 -0.009\nv 0.009 0 -0.009\nv 0.009 0 0.009\nv -0.009 0 0.009\nf 4 3 2 1\n");
    const std::string told = View(part, "set view.eye [-0.005, 0.03, 0]\nset view.target [0.01, 0.03, 0]\nkey w\nwait\nprint settings");
    const std::size_t begin = told.find('[', told.find("\"eye\""));
    const double metre = 0.009 * std::sqrt(2.0);
    EXPECT_NEAR(std::stod(told.substr(begin + 1)), -0.005 + 0.5 * metre, 1e-6);
    EXPECT_NEAR(std::stod(told.substr(told.find(',', begin) + 1)), 1.6 * metre, 1e-6);
}

TEST_F(ViewerMove, WallsStopAPersonWhoWalks)
{
    // A floor, and a wall across the way two metres ahead.
    const std::string room = WriteObj("room.obj",
                                      "v -9 0 -9\nv 9 0 -9\nv 9 0 9\nv -9 0 9\nf 4 3 2 1\n"
                                      "o wall\nv 2 0 -9\nv 2 3 -9\nv 2 3 9\nv 2 0 9\nf 5 6 7 8\n");
    const std::string begin = "set cullBacks false\nset view.eye [0, 1.6, 0]\nset view.target [4, 1.6, 0]\n";
    std::string steps;
    for (int i = 0; i < 8; ++i)
    {
        steps += "key w\n";
    }
    const auto placeAfter = [&](const std::string& keys)
    {
        const std::string told = View(room, begin + keys + "wait\nprint settings");
        return std::stod(told.substr(told.find('[', told.find("\"eye\"")) + 1));
    };
    EXPECT_NEAR(placeAfter(steps), 1.7, 1e-4);
    EXPECT_NEAR(placeAfter("select wall\nkey h\n" + steps), 4.0, 1e-4) << "what is hidden stops nobody";
}

TEST_F(ViewerMove, ASwipeMovesAndGoesOnMovingWhereItBegan)
{
    const auto targetAfter = [this](const std::string& swipes)
    {
        const std::string told = View(WriteCube(), "view front\nwait\nkey f\nwait\n" + swipes + "wait\nprint settings");
        const std::size_t eye = told.find('[', told.find("\"eye\""));
        const std::size_t target = told.find('[', told.find("\"target\""));
        const std::size_t height = told.find(',', told.find(',', eye) + 1);
        return std::pair(std::stod(told.substr(target + 1)), std::stod(told.substr(height + 1)));
    };
    const auto before = targetAfter("");
    // It begins to the side; what goes up after that moves as well, and comes no nearer.
    const auto swiped = targetAfter("swipe 300,240 3,0.5\nswipe 300,240 0,2\n");
    EXPECT_LT(swiped.first, before.first - 0.05);
    EXPECT_NEAR(swiped.second, before.second, 1e-4);
    const auto scrolled = targetAfter("move 320,240\nswipe 320,240 0,2\nswipe 320,240 0.5,0\n");
    EXPECT_LT(scrolled.second, before.second - 0.1);
    EXPECT_NEAR(scrolled.first, before.first, 0.02);
}

TEST_F(ViewerMove, WithControlAScrollComesNearerAndWithShiftItMovesWhicheverWayItGoes)
{
    const auto viewAfter = [this](const std::string& swipes)
    {
        const std::string told = View(WriteCube(), "set view.eye [0, 0, 8]\nset view.target [0, 0, 0]\n" + swipes
                                                       + "wait\nprint settings");
        const std::size_t eye = told.find('[', told.find("\"eye\""));
        const std::size_t second = told.find(',', eye);
        const std::size_t third = told.find(',', second + 1);
        return std::vector<double>{std::stod(told.substr(eye + 1)), std::stod(told.substr(second + 1)),
                                   std::stod(told.substr(third + 1))};
    };
    // However the fingers go to the side meanwhile, and however little a step is.
    const auto spread = viewAfter("ctrl-swipe 320,237 2,0.25\nctrl-swipe 320,237 0,0.5\n");
    EXPECT_LT(spread[2], 7.7);
    EXPECT_NEAR(spread[0], 0.0, 0.05);
    const auto moved = viewAfter("shift-swipe 320,237 0,2\n");
    EXPECT_NEAR(moved[2], 8.0, 1e-4);
    EXPECT_GT(std::abs(moved[1]), 0.1);
    EXPECT_NEAR(moved[0], 0.0, 1e-4);
}

TEST_F(ViewerMove, TheSignOfHelpIsReadWhereverItIsOnTheKeyboard)
{
    View(WriteCube(), "screenshot FOLDER/plain.png\ntype ?\nwait\nscreenshot FOLDER/typed.png\nkey escape\nwait\n"
                      "screenshot FOLDER/closed.png\nkey f1\nwait\nscreenshot FOLDER/key.png");
    ExpectDifferent(PictureAt("plain.png"), PictureAt("typed.png"));
    ExpectSame(PictureAt("plain.png"), PictureAt("closed.png"));
    ExpectSame(PictureAt("typed.png"), PictureAt("key.png"));
}

TEST_F(ViewerMove, RandomActionsDoNoHarm)
{
    WriteRandomModels(folder.Path());
    // As many as a test has time for; viewer_random_actions does more.
    const std::string told = View(folder.Path("one.obj"), MakeRandomScript(11, 150, folder.Path()) + "print models",
                                  {"--forget", "--watch"});
    EXPECT_NE(told.find(".obj"), std::string::npos);
}

TEST_F(ViewerMove, RandomActionsPressEveryKeyThatDoesSomething)
{
    std::istringstream keys(View("", "print keys"));
    const std::string actions = MakeRandomScript(3, 8000, folder.Path());
    int count = 0;
    for (std::string key; std::getline(keys, key); ++count)
    {
        // It ends the window.
        EXPECT_TRUE(key == "ctrl+q" || actions.find("try key " + key + "\n") != std::string::npos) << key;
    }
    EXPECT_GT(count, 40);
}
