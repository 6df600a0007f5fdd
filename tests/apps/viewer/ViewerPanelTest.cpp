#include "tests/apps/viewer/ViewerTool.h"

#include <filesystem>
#include <sstream>

using namespace OV::Test;

namespace
{

class ViewerPanel : public ViewerTool
{
};

/// Wide enough for both sides.
const std::string kWide = "resize 1000x700\nwait\n";

/// High enough for the sun too.
const std::string kHigh = "resize 1000x1100\nwait\n";

/// Pixels of a part of two pictures that are not the same; rows are counted from below.
int Difference(const Picture& left, const Picture& right, int beginX, int beginY, int endX, int endY)
{
    int found = 0;
    for (int y = beginY; y < endY; ++y)
    {
        for (int x = beginX; x < endX; ++x)
        {
            const Pixel one = left.At(x, y);
            const Pixel other = right.At(x, y);
            found += one.r != other.r || one.g != other.g || one.b != other.b ? 1 : 0;
        }
    }
    return found;
}

} // namespace

TEST_F(ViewerPanel, SettingsAreTicked)
{
    View(WriteCube(), kWide + "expect settings \"occlusion\": false\nclick 728,169\nexpect settings \"occlusion\": true\n"
                              "click 728,169\nexpect settings \"occlusion\": false\n"
                              "expect settings \"lines\": null\nclick 728,247\nexpect settings \"crease\"");
}

TEST_F(ViewerPanel, GroundAndReflectedSkyAreTicked)
{
    View(WriteCube(), kHigh + "expect settings \"ground\": null\nclick 728,585\nwait\nexpect settings \"kind\": \"plain\"\n"
                              "expect settings \"surroundings\": \"\"\nclick 728,533\nwait\n"
                              "expect settings \"surroundings\": \"sky\"\nclick 728,533\nclick 728,585\nwait\n"
                              "expect settings \"ground\": null\nexpect settings \"surroundings\": \"\"");
}

TEST_F(ViewerPanel, SunTimePlaceAndShadowsAreSet)
{
    View(WriteCube(), kHigh + "picture FOLDER/before.png\n"
                              // The headings of sun and shadows, and then what they hold.
                              "click 850,663\nwait\nclick 850,637\nwait\n"
                              "expect settings \"shadows\": null\nclick 728,663\nwait\n"
                              "expect settings \"soft\": false\n"
                              // A sun comes with them, leaves with them, and comes by itself.
                              "expect settings \"direction\": [0.5, 1.0, 0.3]\nclick 728,663\nwait\n"
                              "expect settings \"sun\": null\nclick 728,715\nwait\nclick 728,663\nwait\n"
                              "expect settings \"direction\": [0.5, 1.0, 0.3]\npicture FOLDER/direction.png\n"
                              "click 845,845\nwait\nexpect settings \"latitude\": 52.52\n"
                              "double-click 790,871\nkey ctrl+a\ntype 2026-12-21T10:00Z\nkey enter\nwait\n"
                              "expect settings \"time\": \"2026-12-21T10:00Z\"\n"
                              "click 750,1001\nwait\nexpect settings \"north\": 0.0\n"
                              // Near the left end of the slider.
                              "click 778,949\nwait\nexpect settings \"latitude\": -7\n"
                              "click 750,689\nwait\nexpect settings \"soft\": true\n"
                              "click 728,819\nwait\nexpect settings \"sun\": null\n"
                              "click 728,663\nwait\nexpect settings \"shadows\": null\npicture FOLDER/after.png");
    ExpectDifferent(PictureAt("before.png"), PictureAt("direction.png"));
    ExpectSame(PictureAt("before.png"), PictureAt("after.png"));
}

TEST_F(ViewerPanel, AClickOnAPanelIsNoneOnTheModel)
{
    View(WritePair(), kWide + "select left\nclick 860,650\nexpect selection left\ndrag 860,640 900,600\n"
                              "expect settings \"eye\": null");
}

TEST_F(ViewerPanel, ATapIsAClickHoweverLongAFrameTakes)
{
    View(WriteCube(), kWide + "expect settings \"occlusion\": false\ntap 728,169\nexpect settings \"occlusion\": true\n"
                              "tap 728,169\nexpect settings \"occlusion\": false\n"
                              // A menu, and what is in it.
                              "expect settings \"lines\": null\ntap 118,11\nwait\ntap 150,117\nwait\n"
                              "expect settings \"crease\"");
    // From a panel to the model, and back.
    View(WritePair(), kWide + "view front\nwait\nmove 850,300\nwait\ntap 340,350\nexpect selection left\n"
                              "tap 860,650\nexpect selection left");
}

TEST_F(ViewerPanel, EscapeLeavesAMenuOrAFieldBeforeTheSelection)
{
    View(WritePair(), kWide + "select left\nmove 118,11\nwait\nscreenshot FOLDER/before.png\nclick 118,11\nwait\n"
                              "screenshot FOLDER/open.png\nkey escape\nwait\nscreenshot FOLDER/after.png\n"
                              "expect selection left\nclick 120,39\nkey escape\nwait\nexpect selection left\n"
                              "key escape\nwait\nscreenshot FOLDER/none.png");
    ExpectDifferent(PictureAt("before.png"), PictureAt("open.png"));
    ExpectSame(PictureAt("before.png"), PictureAt("after.png"));
    ExpectDifferent(PictureAt("after.png"), PictureAt("none.png"));
}

TEST_F(ViewerPanel, KeysAndMenusTellWhatTheyLack)
{
    const std::string pair = WritePair();
    static constexpr struct
    {
        bool hasModel;
        const char* keys;
        const char* other; ///< tells something else in between
        const char* lack;
    } cases[] = {
        {false, "ctrl+r ctrl+s ctrl+c f w s m shift+m", "h", "There is no model; Ctrl+O opens one."},
        {true, "shift+f h i e n", "delete", "Nothing is selected; click something first."},
        {true, "delete", "h", "There is no measure to take away."},
        {true, "shift+delete", "h", "There is no measure and no name to take away."},
    };
    for (const auto& entry : cases)
    {
        std::istringstream keys(entry.keys);
        std::string script;
        std::string expected;
        for (std::string key; keys >> key; expected += std::string(entry.lack) + "\n")
        {
            script += "key " + std::string(entry.other) + "\nkey " + key + "\nprint message\n";
        }
        EXPECT_EQ(View(entry.hasModel ? pair : std::string(), script), expected);
    }
    // What is there is done, and what is edited is left without a selection.
    View(pair, "select left\nkey n\nexpect labels left\nkey shift+delete\nselect left\nkey e\n"
               "expect settings \"editPath\": \"left\"\nkey e\nexpect settings \"editPath\": \"\"");
    // To hide the selection, the first line of its menu, is black only where there is one.
    View(pair, kWide + "click 118,11\nwait\nscreenshot FOLDER/none.png\nkey escape\nwait\nselect left\nclick 118,11\nwait\n"
                       "screenshot FOLDER/one.png");
    const auto black = [](const Picture& picture)
    {
        int found = 0;
        // Rows are counted from below.
        for (int y = 28; y < 46; ++y)
        {
            for (int x = 95; x < 250; ++x)
            {
                found += picture.At(x, picture.GetHeight() - 1 - y).r < 100 ? 1 : 0;
            }
        }
        return found;
    };
    EXPECT_EQ(black(PictureAt("none.png")), 0);
    EXPECT_GT(black(PictureAt("one.png")), 50);
}

TEST_F(ViewerPanel, TheSunGoesByThePlaceOfTheFile)
{
    View(TestModel("IFC/AC14-FZK-Haus.ifc"), kHigh + "click 850,663\nwait\nclick 728,689\nwait\nclick 845,715\nwait\n"
                                                     "expect settings \"direction\": null\nexpect settings \"place\": null");
}

TEST_F(ViewerPanel, KeysThatComeAtOnceAreTakenInTheirOrder)
{
    WritePair();
    // L would be for lines.
    View(WriteCube(), "hammer ctrl+o lair\nwait\nkey home\nkey delete\nwait\nkey enter\nwait\nexpect model pair.obj\n"
                      "expect settings \"lines\": null");
}

TEST_F(ViewerPanel, TheTreeSelectsAndHidesAndIsSearched)
{
    const std::string pair = WritePair();
    View(pair, kWide + "view front\nwait\npicture FOLDER/all.png\n"
                       // The only row that is left is that of the right square.
                       "click 120,39\ntype right\nwait\nclick 120,73\nexpect selection right\nclick 26,73\nkey escape\n"
                       "wait\npicture FOLDER/hidden.png");
    const Picture all = PictureAt("all.png");
    const Picture hidden = PictureAt("hidden.png");
    const int x = all.GetWidth() * 4 / 5;
    const int y = all.GetHeight() / 2;
    EXPECT_NE(all.At(x, y), ToPixel(1, 1, 1));
    EXPECT_EQ(hidden.At(x, y), ToPixel(1, 1, 1));
    EXPECT_EQ(hidden.At(all.GetWidth() / 5, y), all.At(all.GetWidth() / 5, y));
}

TEST_F(ViewerPanel, KeysThatAreTypedIntoAFieldDoNothingElse)
{
    View(WriteCube(), kWide + "view front\nwait\nclick 120,39\nkey 6\ntype 6\nkey l\ntype l\nwait\n"
                              "expect settings \"named\": \"front\"\nexpect settings \"lines\": null");
}

TEST_F(ViewerPanel, TheCubeTurnsTheView)
{
    View(WriteCube(), "click 578,70\nwait\nexpect settings \"named\": \"top\"\nview iso\nwait\nclick 564,92\nwait\n"
                      "expect settings \"named\": \"front\"");
    // Beside the arrow of a sheet, and nowhere in a picture that has no room for it.
    View(WriteCube(), "set sheet {\"north\": 0}\nwait\nclick 578,70\nwait\nexpect settings \"named\": \"iso\"\n"
                      "click 482,70\nwait\nexpect settings \"named\": \"top\"\nset sheet {}\nview iso\n"
                      "resize 240x300\nwait\nclick 178,70\nwait\nexpect settings \"named\": \"iso\"");
}

TEST_F(ViewerPanel, TheFilePanelOpensAModelOfTheFolder)
{
    WriteWholeFile(folder.Path("notes.txt"), "no model");
    WritePair();
    const std::string cube = WriteCube();
    // Below cube.obj comes pair.obj; others than models are not listed. A click alone opens nothing.
    View(cube, "key ctrl+o\nwait\nclick 100,116\nwait\nexpect model cube.obj\nclick 30,460\nwait\nexpect model pair.obj");
    View(cube, "key ctrl+o\nwait\ndouble-click 100,116\nwait\nexpect model pair.obj");
    // What was clicked is opened by Enter too.
    View(cube, "key ctrl+o\nwait\nclick 100,116\nwait\nkey enter\nwait\nexpect model pair.obj");
}

TEST_F(ViewerPanel, TheFilePanelGoesUpFromAPathThatWasTyped)
{
    WritePair();
    std::filesystem::create_directory(folder.Path("deeper"));
    // What is typed after the click is looked for in the folder above.
    View(WriteCube(), "key ctrl+o\nwait\ntype " + folder.Path("deeper/") + "\nkey enter\nwait\nclick 75,39\nwait\n"
                      "type AIR\nwait\nkey enter\nwait\nexpect model pair.obj");
}

TEST_F(ViewerPanel, TheFilePanelTellsOfNoFileUntilAnotherIsTyped)
{
    View(WriteCube(), "key ctrl+o\nwait\ntype cub\nwait\nscreenshot FOLDER/plain.png\nkey ctrl+a\ntype nothing\n"
                      "key enter\nwait\nkey ctrl+a\nwait\nscreenshot FOLDER/told.png\ntype cub\nwait\n"
                      "screenshot FOLDER/again.png");
    ExpectDifferent(PictureAt("plain.png"), PictureAt("told.png"));
    ExpectSame(PictureAt("plain.png"), PictureAt("again.png"));
}

TEST_F(ViewerPanel, TheFilePanelIsUsedByKeys)
{
    const std::string pair = WritePair();
    const std::string cube = WriteCube();
    std::filesystem::create_directory(folder.Path("deeper"));
    std::filesystem::copy_file(pair, folder.Path("deeper/inside.obj"));
    View(cube, "key ctrl+o\nwait\nkey down\nkey down\nkey enter\nwait\nexpect model pair.obj");
    View(cube, "key ctrl+o\nwait\ntype AIR\nwait\nkey enter\nwait\nexpect model pair.obj");
    // A folder is entered, and then what is in it is chosen.
    View(cube, "key ctrl+o\nwait\nkey enter\nwait\nkey enter\nwait\nexpect model deeper/inside.obj");
    View(cube, "key ctrl+o\nwait\ntype deeper/inside.obj\nkey enter\nwait\nexpect model deeper/inside.obj");
    View(cube, "key ctrl+o\nwait\ntype " + pair + "\nkey enter\nwait\nexpect model pair.obj");
    // What isn't there leaves the panel, and escape takes it away.
    View(cube, "screenshot FOLDER/before.png\nkey ctrl+o\nwait\ntype nothing/there\nkey enter\nwait\nexpect model cube.obj\n"
               "screenshot FOLDER/asked.png\nkey escape\nwait\nscreenshot FOLDER/after.png");
    ExpectDifferent(PictureAt("before.png"), PictureAt("asked.png"));
    ExpectSame(PictureAt("before.png"), PictureAt("after.png"));
}

TEST_F(ViewerPanel, ASavedPictureReplacesNoneInSilence)
{
    const std::string name = folder.Path("kept.png");
    const std::string begin = "key ctrl+s\nwait\nclick 200,214\nkey ctrl+a\ntype " + name + "\nwait\nscreenshot FOLDER/";
    View(WriteCube(), begin + "new.png\nclick 80,292\nwait\nexpect message Saved\nkey ctrl+s\nwait\nscreenshot FOLDER/there.png");
    EXPECT_EQ(PictureAt("kept.png").GetWidth(), 1920);
    // What stands beside the buttons then; rows are counted from below.
    const Picture before = PictureAt("new.png");
    const Picture there = PictureAt("there.png");
    int different = 0;
    for (int y = 175; y < 200; ++y)
    {
        for (int x = 240; x < 500; ++x)
        {
            different += before.At(x, y) != there.At(x, y) ? 1 : 0;
        }
    }
    EXPECT_GT(different, 200);
}

TEST_F(ViewerPanel, APictureIsSavedByKeysUnlessItReplacesOne)
{
    const std::string name = folder.Path("kept.png");
    const std::string save = "key ctrl+s\nwait\nkey ctrl+a\ntype " + name + "\nkey enter\nwait\n";
    View(WriteCube(), save + "expect message Saved\n" + "look monotone\n" + "key f\nwait\nkey m\nexpect message Distance\n"
                          + save + "expect message Distance");
    EXPECT_EQ(PictureAt("kept.png").GetWidth(), 1920);
}

TEST_F(ViewerPanel, HelpHasRoomForWhatItSaysInSmallWindows)
{
    View(WriteCube(), "key ?\nwait\nscreenshot FOLDER/small.png\nresize 1000x700\nwait\nscreenshot FOLDER/large.png");
    // The colour of the keys, at the left of each column.
    const auto keysFrom = [](const Picture& picture, int begin)
    {
        int found = 0;
        for (int y = 0; y < picture.GetHeight(); ++y)
        {
            for (int x = begin; x < picture.GetWidth(); ++x)
            {
                const Pixel pixel = picture.At(x, y);
                found += pixel.r > 180 && pixel.r < 200 && pixel.g > 80 && pixel.g < 100 && pixel.b < 25 ? 1 : 0;
            }
        }
        return found;
    };
    const Picture small = PictureAt("small.png");
    EXPECT_GT(keysFrom(small, 0), 200);
    EXPECT_EQ(keysFrom(small, small.GetWidth() / 2), 0);
    const Picture large = PictureAt("large.png");
    EXPECT_GT(keysFrom(large, large.GetWidth() / 2), 200);
}

TEST_F(ViewerPanel, ALongWordIsReadWholeUnderThePointer)
{
    const std::string name(100, 'a');
    View(WriteCube(), "open FOLDER/" + name + ".obj\nmove 300,200\nwait\nscreenshot FOLDER/away.png\nmove 100,468\nwait\n"
                      "screenshot FOLDER/whole.png\nkey m\nmove 300,200\nwait\nscreenshot FOLDER/short-away.png\n"
                      "move 100,468\nwait\nscreenshot FOLDER/short.png");
    ExpectDifferent(PictureAt("away.png"), PictureAt("whole.png"));
    ExpectSame(PictureAt("short-away.png"), PictureAt("short.png"));
}

TEST_F(ViewerPanel, WhatIsSaidOfARowStaysInTheWindow)
{
    const std::string shape = "\nv 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n";
    View(WriteObj("long.obj", "o " + std::string(200, 'a') + shape), kWide + "screenshot FOLDER/away.png\nmove 120,102\nwait\n"
                                                                            "screenshot FOLDER/over.png");
    const Picture away = PictureAt("away.png");
    const Picture over = PictureAt("over.png");
    ExpectDifferent(away, over);
    // What is wider than the window covers its left too.
    EXPECT_EQ(Difference(away, over, 0, 0, 40, 700), 0);
}

TEST_F(ViewerPanel, WhatIsSelectedIsSaidToBeInWhat)
{
    View(WritePair(), kWide + "select pair.obj/left\nwait\nscreenshot FOLDER/left.png\nselect pair.obj/right\nwait\n"
                              "screenshot FOLDER/right.png");
    // The names, and below them the file that both are in.
    EXPECT_GT(Difference(PictureAt("left.png"), PictureAt("right.png"), 0, 191, 240, 209), 20);
    EXPECT_EQ(Difference(PictureAt("left.png"), PictureAt("right.png"), 0, 172, 240, 189), 0);
}

TEST_F(ViewerPanel, WhatWasFoundIsInSightAmongItsNeighbours)
{
    std::string many = "v 0 0 0\nv 1 0 0\nv 0 1 0\n";
    for (int i = 0; i < 90; ++i)
    {
        many += "o part" + std::to_string(i) + "\nf 1 2 3\n";
    }
    View(WriteObj("many.obj", many), kWide + "click 120,39\ntype part80\nwait\nclick 100,74\nwait\nexpect selection part80\n"
                                             "double-click 120,39\nkey ctrl+a\nkey delete\nkey enter\nwait\nmove 500,300\nwait\n"
                                             "screenshot FOLDER/found.png\nkey escape\nwait\n"
                                             "screenshot FOLDER/none.png");
    EXPECT_GT(Difference(PictureAt("found.png"), PictureAt("none.png"), 60, 400, 200, 640), 200);
}

TEST_F(ViewerPanel, WhatIsSelectedInThePictureComesIntoSightInTheTree)
{
    // So deep, and so many beside it, that its row is neither open nor in the first screen.
    std::string nodes;
    std::string children;
    for (int i = 0; i < 60; ++i)
    {
        nodes += ", {\"name\": \"n" + std::to_string(i) + "\"" + (i == 59 ? ", \"mesh\": 0" : "") + "}";
        children += (i == 0 ? "" : ", ") + std::to_string(i + 3);
    }
    WriteWholeFile(folder.Path("deep.gltf"),
                   R"({"asset": {"version": "2.0"}, "scene": 0, "scenes": [{"nodes": [0]}],
"nodes": [{"name": "a", "children": [1]}, {"name": "b", "children": [2]}, {"name": "c", "children": [)" + children + "]}"
                       + nodes + R"(],
"meshes": [{"primitives": [{"attributes": {"POSITION": 0}}]}],
"accessors": [{"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3", "min": [0, 0, 0], "max": [1, 1, 0]}],
"bufferViews": [{"buffer": 0, "byteLength": 36}],
"buffers": [{"byteLength": 36, "uri": "data:application/octet-stream;base64,AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAA"}]})");
    View(folder.Path("deep.gltf"), kWide + "view front\nwait\nclick 350,500\nexpect selection n59\n"
                                           "wait\nscreenshot FOLDER/selected.png\nclick 120,464\nexpect selection n59\n"
                                           "click 26,464\nwait\nscreenshot FOLDER/hidden.png");
    // Its row, the last one, hides it.
    const Picture selected = PictureAt("selected.png");
    const Picture hidden = PictureAt("hidden.png");
    EXPECT_NE(selected.At(300, 350), ToPixel(1, 1, 1));
    EXPECT_EQ(hidden.At(300, 350), ToPixel(1, 1, 1));
}
