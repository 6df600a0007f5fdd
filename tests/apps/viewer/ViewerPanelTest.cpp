#include "tests/apps/viewer/ViewerTool.h"

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

} // namespace

TEST_F(ViewerPanel, SettingsAreTicked)
{
    View(WriteCube(), kWide + "expect settings \"occlusion\": false\nclick 728,117\nexpect settings \"occlusion\": true\n"
                              "click 728,117\nexpect settings \"occlusion\": false\n"
                              "expect settings \"lines\": null\nclick 728,195\nexpect settings \"crease\"");
}

TEST_F(ViewerPanel, GroundAndReflectedSkyAreTicked)
{
    View(WriteCube(), kHigh + "expect settings \"ground\": null\nclick 728,533\nwait\nexpect settings \"kind\": \"plain\"\n"
                              "expect settings \"surroundings\": \"\"\nclick 728,481\nwait\n"
                              "expect settings \"surroundings\": \"sky\"\nclick 728,481\nclick 728,533\nwait\n"
                              "expect settings \"ground\": null\nexpect settings \"surroundings\": \"\"");
}

TEST_F(ViewerPanel, SunTimePlaceAndShadowsAreSet)
{
    View(WriteCube(), kHigh + "picture FOLDER/before.png\n"
                              // The headings of sun and shadows, and then what they hold.
                              "click 850,611\nwait\nclick 850,585\nwait\n"
                              "expect settings \"shadows\": null\nclick 728,611\nwait\n"
                              "expect settings \"soft\": false\n"
                              "expect settings \"sun\": null\nclick 728,767\nwait\n"
                              "expect settings \"direction\": [0.5, 1.0, 0.3]\npicture FOLDER/direction.png\n"
                              "click 845,793\nwait\nexpect settings \"latitude\": 52.52\n"
                              "double-click 790,819\nkey ctrl+a\ntype 2026-12-21T10:00Z\nkey enter\nwait\n"
                              "expect settings \"time\": \"2026-12-21T10:00Z\"\n"
                              "click 750,949\nwait\nexpect settings \"north\": 0.0\n"
                              // Near the left end of the slider.
                              "click 778,897\nwait\nexpect settings \"latitude\": -7\n"
                              "click 750,637\nwait\nexpect settings \"soft\": true\n"
                              "click 728,767\nwait\nexpect settings \"sun\": null\n"
                              "click 728,611\nwait\nexpect settings \"shadows\": null\npicture FOLDER/after.png");
    ExpectDifferent(PictureAt("before.png"), PictureAt("direction.png"));
    ExpectSame(PictureAt("before.png"), PictureAt("after.png"));
}

TEST_F(ViewerPanel, AClickOnAPanelIsNoneOnTheModel)
{
    View(WritePair(), kWide + "select left\nclick 860,650\nexpect selection left\ndrag 860,640 900,600\n"
                              "expect settings \"eye\": null");
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
}

TEST_F(ViewerPanel, TheFilePanelOpensAModelOfTheFolder)
{
    WriteWholeFile(folder.Path("notes.txt"), "no model");
    WritePair();
    // Below the folder above and cube.obj comes pair.obj; others than models are not listed.
    View(WriteCube(), "key ctrl+o\nwait\nclick 200,115\nwait\nexpect model pair.obj");
}
