#include "tests/apps/viewer/ViewerTool.h"

using namespace OV::Test;

namespace
{

class ViewerNotes : public ViewerTool
{
};

} // namespace

TEST_F(ViewerNotes, AnglesSnapToCorners)
{
    // Three corners of a square of edge 2 that is seen from the front.
    const std::string told = View(WriteSquare(), "set view.orthographic true\nview front\nwait\nkey shift+m\nclick 118,36\n"
                                                 "print measure\nclick 522,36\nprint measure\nclick 522,440\nprint measure\n"
                                                 "click 118,36\nprint measure");
    EXPECT_EQ(told, "Click the corner of the angle\nClick the last point\n90\u00B0\nClick the corner of the angle\n");
}

TEST_F(ViewerNotes, ACornerIsMetFromBesideTheModelToo)
{
    // A few pixels beside the corners, where there is nothing, and then before a wall far behind.
    const std::string script = "set view.orthographic true\nview front\nwait\nkey m\n"
                               "print message\nclick 10,200\nprint message\nclick 113,33\nprint message\nclick 526,33\n"
                               "print message\nkey escape\nprint message";
    EXPECT_EQ(View(WriteSquare(), script), "Distance: Click a point\nThere is nothing to measure at that place.\n"
                                           "Point 1 at a corner. Click the last point\nPoint 2 at a corner. 2\n\n");
    const std::string before = WriteObj("before.obj", "v -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nf 1 2 3 4\no wall\n"
                                                      "v -1.1 -1.1 -9\nv 1.1 -1.1 -9\nv 1.1 1.1 -9\nv -1.1 1.1 -9\nf 5 6 7 8\n");
    EXPECT_EQ(View(before, "set view.orthographic true\nview front\nwait\nkey m\nclick 134,52\nprint message\n"
                           "click 506,52\nprint message"),
              "Point 1 at a corner. Click the last point\nPoint 2 at a corner. 2\n");
}

TEST_F(ViewerNotes, MeasuresStayInPicturesOfAnySizeUntilTheyAreTakenAway)
{
    View(WriteSquare(), "set view.orthographic true\nview front\nwait\npicture FOLDER/plain.png\npicture-of 900x700 FOLDER/large-plain.png\n"
                        "key m\nclick 118,36\nclick 522,440\nkey escape\nwait\npicture FOLDER/measured.png\n"
                        "picture-of 900x700 FOLDER/large.png\nkey delete\nwait\npicture FOLDER/gone.png");
    ExpectDifferent(PictureAt("plain.png"), PictureAt("measured.png"));
    ExpectDifferent(PictureAt("large-plain.png"), PictureAt("large.png"));
    ExpectSame(PictureAt("plain.png"), PictureAt("gone.png"));
}

TEST_F(ViewerNotes, MeasuresHaveTheUnitOfTheModel)
{
    const std::string unit = R"(<?xml version="1.0"?><COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">
<asset><unit name="millimeter" meter="0.001"/><up_axis>Y_UP</up_axis></asset>
<library_geometries><geometry id="g"><mesh><source id="p"><float_array id="a" count="12">-1 -1 0 1 -1 0 1 1 0 -1 1 0</float_array>
<technique_common><accessor source="#a" count="4" stride="3"><param name="X" type="float"/><param name="Y" type="float"/>
<param name="Z" type="float"/></accessor></technique_common></source><vertices id="v"><input semantic="POSITION" source="#p"/>
</vertices><triangles count="2"><input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2 0 2 3</p></triangles></mesh></geometry>
</library_geometries><library_visual_scenes><visual_scene id="s"><node id="n"><instance_geometry url="#g"/></node></visual_scene>
</library_visual_scenes><scene><instance_visual_scene url="#s"/></scene></COLLADA>)";
    WriteWholeFile(folder.Path("square.dae"), unit);
    const std::string told = View(folder.Path("square.dae"), "set view.orthographic true\nview front\nwait\nkey m\n"
                                                             "click 118,36\nclick 522,36\nprint measure");
    // As the file is read, in metres.
    EXPECT_EQ(told, "0.002 m\n");
}

TEST_F(ViewerNotes, NamesAreSetAndTakenBackAndFollowTheirNodes)
{
    const std::string told =
        View(WritePair(), "view front\nwait\npicture FOLDER/plain.png\nselect left\nkey n\nkey escape\nwait\nprint labels\n"
                          "picture FOLDER/named.png\nselect left\nkey h\nwait\npicture FOLDER/hidden-named.png\n"
                          "key shift+h\nwait\npicture FOLDER/shown.png\nselect left\nkey n\nkey escape\nwait\n"
                          "picture FOLDER/back.png\nprint labels\nselect left\nkey h\nwait\npicture FOLDER/hidden.png");
    EXPECT_EQ(told, "left\n\n");
    ExpectDifferent(PictureAt("plain.png"), PictureAt("named.png"));
    ExpectSame(PictureAt("named.png"), PictureAt("shown.png"));
    ExpectSame(PictureAt("plain.png"), PictureAt("back.png"));
    ExpectSame(PictureAt("hidden-named.png"), PictureAt("hidden.png"));
}

TEST_F(ViewerNotes, NamesMoveWithTheirNodesInThePicture)
{
    const std::string views[] = {"front", "back"};
    std::string script = "set cullBacks false\n";
    for (const std::string& view : views)
    {
        script += "view " + view + "\nwait\npicture FOLDER/" + view + "-plain.png\n";
    }
    script += "select left\nkey n\nkey escape\nwait\n";
    for (const std::string& view : views)
    {
        script += "view " + view + "\nwait\npicture FOLDER/" + view + "-named.png\n";
    }
    View(WritePair(), script);
    // Left as it is seen from the front.
    for (const bool isFront : {true, false})
    {
        const std::string view = isFront ? "front" : "back";
        const Picture plain = PictureAt(view + "-plain.png");
        const Picture named = PictureAt(view + "-named.png");
        int left = 0;
        int right = 0;
        for (int y = 0; y < plain.GetHeight(); ++y)
        {
            for (int x = 0; x < plain.GetWidth(); ++x)
            {
                (x < plain.GetWidth() / 2 ? left : right) += plain.At(x, y) != named.At(x, y) ? 1 : 0;
            }
        }
        EXPECT_GT(isFront ? left : right, 0) << view;
        EXPECT_EQ(isFront ? right : left, 0) << view;
    }
}
