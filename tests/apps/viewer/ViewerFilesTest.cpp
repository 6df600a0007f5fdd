#include "tests/apps/viewer/ViewerTool.h"

using namespace OV::Test;

namespace
{

/// Two squares in files of their own, which have a node of the same name.
class ViewerFiles : public ViewerTool
{
protected:
    std::string WriteLeft() const
    {
        return WriteObj("left.obj", "o square\nv -3 -1 0\nv -1 -1 0\nv -1 1 0\nv -3 1 0\nf 1 2 3 4\n");
    }

    std::string WriteRight(const std::string& name = "right.obj", int height = 1) const
    {
        const std::string top = std::to_string(height);
        return WriteObj(name, "o square\nv 1 -1 0\nv 3 -1 0\nv 3 " + top + " 0\nv 1 " + top + " 0\nf 1 2 3 4\n");
    }
};

} // namespace

TEST_F(ViewerFiles, StandBesideEachOtherHoweverTheyCome)
{
    const std::string left = WriteLeft();
    const std::string right = WriteRight();
    const std::string end = "wait\nview front\nwait\npicture FOLDER/";
    View(left, end + "words.png\nexpect models left.obj\nexpect models right.obj", {"--forget", right});
    View(left, "add " + right + "\n" + end + "added.png\nexpect models right.obj");
    View(left, "shift-drop " + right + "\nwait\nwait\n" + end + "dropped.png");
    View("", "drop-two " + left + " " + right + "\nwait\nwait\nwait\n" + end + "together.png");
    View(left, "drop " + right + "\nwait\nwait\nexpect model right.obj\n" + end + "alone.png");
    const Picture words = PictureAt("words.png");
    ExpectSame(words, PictureAt("added.png"));
    ExpectSame(words, PictureAt("dropped.png"));
    ExpectSame(words, PictureAt("together.png"));
    ExpectDifferent(words, PictureAt("alone.png"));
}

TEST_F(ViewerFiles, ThoseThatWereOpenedLastAreListedAndOpenedAgain)
{
    const std::string left = WriteLeft();
    const std::string right = WriteRight();
    // Each of several counts, and one that can't be read doesn't.
    EXPECT_EQ(View(left, "open FOLDER/none.obj\nprint recent", {right}), right + "\n" + left + "\n");
    // The menu lists them below what else it has, the last one first.
    View("", "click 22,10\nwait\nclick 60,181\nwait\nexpect model left.obj\nprint recent", {});
    EXPECT_EQ(View("", "click 22,10\nwait\nclick 60,181\nwait\nexpect model right.obj\nprint recent", {}),
              right + "\n" + left + "\n");
    // So does what stands in an empty window.
    View("", "click 270,282\nwait\nexpect model left.obj", {});
    EXPECT_EQ(View("", "print recent"), "\n") << "forgotten";
}

TEST_F(ViewerFiles, NodesOfOneNameAreToldApart)
{
    const std::string told = View(WriteLeft(), "view front\nwait\nclick 120,240\nprint selection\nclick 520,240\n"
                                               "print selection\nkey h\nwait\npicture FOLDER/hidden.png\nprint nodes",
                                  {"--forget", WriteRight()});
    EXPECT_NE(told.find("left.obj/square (red)\nright.obj/square (red)\n"), std::string::npos) << told;
    EXPECT_NE(told.find("left.obj\nleft.obj/square\nright.obj\nright.obj/square"), std::string::npos) << told;
    const Picture hidden = PictureAt("hidden.png");
    EXPECT_EQ(hidden.At(520, hidden.GetHeight() / 2), ToPixel(1, 1, 1));
    EXPECT_NE(hidden.At(120, hidden.GetHeight() / 2), ToPixel(1, 1, 1));
}

TEST_F(ViewerFiles, TheOneThatChangedIsReadAgain)
{
    const std::string right = WriteRight();
    WriteRight("higher.obj", 5);
    View(WriteLeft(), "view front\nwait\nset sky true\nset view.eye [0, 0, 20]\nset view.target [0, 0, 0]\nselect left.obj\n"
                      "copy FOLDER/higher.obj " + right + "\nawait message again\nwait\nexpect message right.obj\n"
                      "expect models left.obj\nexpect selection left.obj\nexpect settings \"sky\": true\n"
                      "set sky false\nkey escape\nwait\npicture FOLDER/again.png",
         {"--forget", "--watch", right});
    View(WriteLeft(), "set view.eye [0, 0, 20]\nset view.target [0, 0, 0]\nwait\npicture FOLDER/straight.png",
         {"--forget", folder.Path("higher.obj")});
    ExpectSame(PictureAt("again.png"), PictureAt("straight.png"));
}

TEST_F(ViewerFiles, LinesAndPointsAreCountedWhereThereIsNoTriangle)
{
    const std::string corners = "v 0 0 0\nv 1 0 0\nv 1 1 0\n";
    View("", "open " + WriteObj("lines.obj", corners + "l 1 2 3\n") + "\nexpect message lines.obj, 2 lines\nopen "
                 + WriteObj("points.obj", corners + "p 1 2 3\n") + "\nexpect message points.obj, 3 points\nopen "
                 + WriteObj("all.obj", corners + "f 1 2 3\nl 1 2 3\np 1\n") + "\nexpect message all.obj, 1 triangle\n");
    const std::string told = View(folder.Path("lines.obj"), "select lines.obj\nprint thing");
    EXPECT_NE(told.find("Size: 1 x 1 x 0\n"), std::string::npos) << told;
    EXPECT_EQ(told.find("triangle"), std::string::npos) << told;
}

TEST_F(ViewerFiles, WhatAnotherModelCannotHaveIsLeftOutAlone)
{
    const std::string house = TestModel("IFC/AC14-FZK-Haus.ifc");
    // The place that the house tells is none of the cube.
    View(house, "set lines {}\nset sun {\"time\": \"2026-06-21T12:00Z\"}\nwait\nopen " + WriteCube() + "\n"
                "expect settings \"crease\"\nexpect settings \"sun\": null\n"
                "expect message sun.place is missing");
    WriteWholeFile(folder.Path("settings.json"),
                   "{\"version\": 1, \"lines\": {}, \"surroundings\": \"gone.png\", \"sheet\": {\"watermark\": \"lost.png\"},"
                   " \"sun\": {\"direction\": [1, 1, 0]}, \"occlusion\": true}");
    View(WriteCube(), "expect settings \"crease\"\nexpect settings \"occlusion\": true\nexpect settings \"direction\"\n"
                      "expect settings \"watermark\": \"\"\nexpect settings \"surroundings\": \"\"\nexpect message is left out",
         {"--forget", "--settings", folder.Path("settings.json")});
}

TEST_F(ViewerFiles, OneGoesAgainAndABrokenOneLeavesTheOthers)
{
    WriteWholeFile(folder.Path("broken.gltf"), "{");
    const std::string left = WriteLeft();
    View(left, "view front\nwait\npicture FOLDER/one.png\nadd FOLDER/broken.gltf\nexpect message broken.gltf\nadd "
                   + WriteRight() + "\nwait\ntake-away right.obj\nview front\nwait\npicture FOLDER/again.png\n"
                   "expect model left.obj");
    ExpectSame(PictureAt("one.png"), PictureAt("again.png"));
    EXPECT_EQ(RunScript(left, "take-away left.obj").exitCode, 1) << "the only one stays";
}
