#include "tests/apps/render/RenderTool.h"
#include "tests/support/Golden.h"

#include <nlohmann/json.hpp>

#include <cmath>

using nlohmann::json;

namespace OV::Test
{

namespace
{

class RenderPick : public RenderTool
{
protected:
    /// Looks down -z at the middle of a model of edge 2, unless the options say otherwise.
    static constexpr const char* Front[] = {"--size", "101x101", "--eye", "0,0,10", "--ortho"};
    /// Of the pictures of Front, which is 20 tan 17.5 degrees high.
    static constexpr double UnitsPerPixel = 20.0 * 0.31529879 / 101.0;

    /// What the tool says, which is all that it does.
    json Told(const std::string& model, std::vector<std::string> options) const
    {
        const std::vector<std::string> before = FilesIn(folder.Path());
        options.insert(options.begin(), model);
        const ProcessResult result = Run(options);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.errors, "");
        EXPECT_EQ(FilesIn(folder.Path()), before);
        return json::parse(result.output);
    }

    json Hits(const std::string& model, const std::string& pixel, std::vector<std::string> options = {}) const
    {
        options.insert(options.begin(), std::begin(Front), std::end(Front));
        options.insert(options.end(), {"--pick", pixel});
        return Told(model, options).at("pick").at("hits");
    }

    static std::vector<std::string> Materials(const json& hits)
    {
        std::vector<std::string> materials;
        for (const json& hit : hits)
        {
            materials.push_back(hit.at("material"));
        }
        return materials;
    }

    /// A red square of edge 1 on the left and a green one on the right, farther away and higher.
    std::string WriteTwo() const
    {
        return WriteObj("two.obj", "o left\nv -1.5 -0.5 1\nv -0.5 -0.5 1\nv -0.5 0.5 1\nv -1.5 0.5 1\nf 1 2 3 4\n"
                                   "o right\nusemtl green\nv 0.5 1 0\nv 1.5 1 0\nv 1.5 2 0\nv 0.5 2 0\nf 5 6 7 8\n");
    }
};

using Names = std::vector<std::string>;

} // namespace

TEST_F(RenderPick, AHitHasNodeMeshMaterialDistanceAndPlace)
{
    const json told = Told(WriteTwo(), {"--size", "101x101", "--eye", "0,0,10", "--target", "0,0,0", "--ortho", "--pick",
                                        "34,52"});
    EXPECT_EQ(told.size(), 1u);
    EXPECT_EQ(told.at("pick").at("pixel"), (json{34, 52}));
    const json& hits = told.at("pick").at("hits");
    ASSERT_EQ(hits.size(), 1u);
    EXPECT_EQ(hits[0].at("node"), "two.obj/left");
    EXPECT_EQ(hits[0].at("mesh"), "left");
    EXPECT_EQ(hits[0].at("material"), "red");
    EXPECT_NEAR(hits[0].at("distance").get<double>(), 9.0, 1e-4);
    EXPECT_NEAR(hits[0].at("position")[0].get<double>(), -16 * UnitsPerPixel, 1e-4);
    EXPECT_NEAR(hits[0].at("position")[1].get<double>(), -2 * UnitsPerPixel, 1e-4);
    EXPECT_NEAR(hits[0].at("position")[2].get<double>(), 1.0, 1e-4);
    EXPECT_EQ(hits[0].size(), 5u);
}

TEST_F(RenderPick, TheDistanceIsThatFromTheEyeInPerspective)
{
    const json told = Told(WriteTwo(), {"--size", "101x101", "--eye", "0,0,10", "--target", "0,0,0", "--pick", "34,52"});
    const json& hits = told.at("pick").at("hits");
    ASSERT_EQ(hits.size(), 1u);
    const double x = hits[0].at("position")[0];
    const double y = hits[0].at("position")[1];
    EXPECT_NEAR(x, -16 * UnitsPerPixel * 0.9, 1e-3);
    EXPECT_NEAR(hits[0].at("distance").get<double>(), std::hypot(x, y, 9.0), 1e-3);
}

TEST_F(RenderPick, PixelsCountFromTheUpperLeftCorner)
{
    const std::string two = WriteTwo();
    EXPECT_EQ(Materials(Hits(two, "66,26", {"--target", "0,0,0"})), (Names{"green"}));
    EXPECT_EQ(Materials(Hits(two, "66,74", {"--target", "0,0,0"})), (Names{}));
    EXPECT_EQ(Materials(Hits(two, "26,66", {"--target", "0,0,0"})), (Names{}));
}

TEST_F(RenderPick, TheCornersOfThePictureArePixelsToo)
{
    const std::string square = WriteSquare();
    for (const char* pixel : {"0,0", "100,0", "0,100", "100,100"})
    {
        EXPECT_EQ(Materials(Hits(square, pixel)), (Names{})) << pixel;
        const json told = Told(square, {"--size", "101x101", "--eye", "0,0,1", "--pick", pixel});
        EXPECT_EQ(Materials(told.at("pick").at("hits")), (Names{"red"})) << pixel;
    }
}

TEST_F(RenderPick, WhatIsSeenComesFirstAndWhatIsBehindFollows)
{
    const std::string three = WriteObj(
        "three.obj", "v -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nf 1 2 3 4\nusemtl green\nv -1 -1 1\nv 1 -1 1\nv 1 1 1\n"
                     "v -1 1 1\nf 5 6 7 8\nusemtl blue\nv -1 -1 -1\nv 1 -1 -1\nv 1 1 -1\nv -1 1 -1\nf 9 10 11 12\n");
    const json hits = Hits(three, "50,50");
    EXPECT_EQ(Materials(hits), (Names{"green", "red", "blue"}));
    EXPECT_LT(hits[0].at("distance"), hits[1].at("distance"));
    EXPECT_LT(hits[1].at("distance"), hits[2].at("distance"));
}

TEST_F(RenderPick, WhatIsNotDrawnIsNotPicked)
{
    const std::string cube = WriteCube();
    EXPECT_EQ(Materials(Hits(cube, "50,50")), (Names{"red"}));
    EXPECT_EQ(Materials(Hits(cube, "50,50", {"--no-cull"})), (Names{"red", "green"}));
    EXPECT_EQ(Materials(Hits(cube, "50,50", {"--no-cull", "--clip", "0,0,1,0,0,0", "--poche", "off"})),
              (Names{"green"}));
}

TEST_F(RenderPick, WhatHasNoNameHasNull)
{
    const json told = Told(TestModel("IFC/AC14-FZK-Haus.ifc"), {"--pick", "640,360"});
    ASSERT_GE(told.at("pick").at("hits").size(), 1u);
    EXPECT_TRUE(told.at("pick").at("hits")[0].at("mesh").is_null());
    EXPECT_TRUE(told.at("pick").at("hits")[0].at("node").is_string());
}

TEST_F(RenderPick, TheNodeOfAHitIsWhatEditTakes)
{
    const std::string house = TestModel("IFC/AC14-FZK-Haus.ifc");
    const std::vector<std::string> view = {"--size", "320x180", "--eye", "24,8,6", "--target", "6,2,-5"};
    std::vector<std::string> options = view;
    options.insert(options.end(), {"--pick", "160,90"});
    const json hits = Told(house, options).at("pick").at("hits");
    ASSERT_GE(hits.size(), 2u);
    const Picture plain = Render(house, view);
    options = view;
    options.insert(options.end(), {"--edit", hits[0].at("node")});
    const Picture seen = Render(house, options);
    EXPECT_EQ(seen.At(160, 89), plain.At(160, 89));
    EXPECT_NE(seen, plain);
    options.back() = hits[1].at("node");
    EXPECT_NE(Render(house, options).At(160, 89), plain.At(160, 89));
}

TEST_F(RenderPick, APictureIsWrittenWhereOneIsAskedForAndIsTheSame)
{
    const std::string cube = WriteCube();
    const Picture plain = Render(cube, {"--size", "64x48"});
    const ProcessResult result =
        Run({cube, "-o", folder.Path("picked.png"), "--samples", "0", "--size", "64x48", "--pick", "32,24"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(json::parse(result.output).at("pick").at("hits").size(), 1u);
    EXPECT_EQ(LoadPicture(folder.Path("picked.png")), plain);
}

TEST_F(RenderPick, StatsAndPickAreOneDocument)
{
    const json told = Told(WriteCube(), {"--size", "64x48", "--stats", "--pick", "32,24", "--frames", "2"});
    EXPECT_EQ(told.at("frames"), 2);
    EXPECT_EQ(told.at("draws"), 6);
    EXPECT_EQ(told.at("pick").at("pixel"), (json{32, 24}));
    EXPECT_EQ(told.at("pick").at("hits").size(), 1u);
}

TEST_F(RenderPick, EveryWayOfDrawingPicksTheSame)
{
    const std::string two = WriteTwo();
    const json plain = Hits(two, "34,52", {"--target", "0,0,0"});
    ASSERT_EQ(plain.size(), 1u);
    const std::vector<std::vector<std::string>> ways = {
        {"--look", "crosshatch"}, {"--aa", "ssaa"}, {"--aa", "fxaa"}, {"--edges"}, {"--ao"}, {"--sky"},
        {"--title", "Title"}};
    for (std::vector<std::string> way : ways)
    {
        const std::string label = way.back();
        // So that a picture is drawn before.
        way.insert(way.end(), {"--target", "0,0,0", "--stats"});
        EXPECT_EQ(Hits(two, "34,52", way), plain) << label;
    }
}

} // namespace OV::Test
