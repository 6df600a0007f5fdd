#include "tests/apps/viewer/ViewerTool.h"

using namespace OV::Test;

namespace
{

class ViewerPanel : public ViewerTool
{
};

/// Wide enough for both sides.
const std::string kWide = "resize 1000x700\nwait\n";

} // namespace

TEST_F(ViewerPanel, SettingsAreTicked)
{
    View(WriteCube(), kWide + "expect settings \"occlusion\": false\nclick 728,117\nexpect settings \"occlusion\": true\n"
                              "click 728,117\nexpect settings \"occlusion\": false\n"
                              "expect settings \"lines\": null\nclick 728,195\nexpect settings \"crease\"");
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
