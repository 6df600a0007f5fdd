#include "tests/apps/render/RenderTool.h"
#include "tests/support/GLFixture.h"

#include <nlohmann/json.hpp>

using namespace OV::Test;
using nlohmann::json;

namespace
{

struct RenderStats : RenderTool
{
    json Stats(const std::string& model, std::vector<std::string> options) const
    {
        options.insert(options.begin(), {model, "-o", folder.Path("out.png"), "--stats"});
        const ProcessResult result = Run(options);
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        EXPECT_EQ(result.errors, "");
        return json::parse(result.output);
    }
};

} // namespace

TEST_F(RenderStats, ACubeOfSixMaterialsIsCountedExactly)
{
    const json stats = Stats(WriteCube(), {"--size", "64x48", "--samples", "0"});
    EXPECT_EQ(stats.at("meshes"), 6);
    EXPECT_EQ(stats.at("triangles"), 12);
    EXPECT_EQ(stats.at("drawn_triangles"), 12);
    EXPECT_EQ(stats.at("draws"), 6);
    EXPECT_EQ(stats.at("buffers"), 2);
    EXPECT_EQ(stats.at("frames"), 1);
    EXPECT_EQ(stats.at("width"), 64);
    EXPECT_EQ(stats.at("height"), 48);
    EXPECT_EQ(stats.at("samples"), 0);
    // Four vertices a face of position and normal at least, and six indices.
    EXPECT_GE(stats.at("bytes").get<int>(), 6 * (4 * 24 + 6 * 2));
    EXPECT_LE(stats.at("bytes").get<int>(), 6 * (4 * 64 + 6 * 2));
}

TEST_F(RenderStats, GLCallsAreCountedByKind)
{
    const auto callsOf = [this](const std::vector<std::string>& options) {
        std::vector<std::string> all{"--size", "64x48", "--frames", "3"};
        all.insert(all.end(), options.begin(), options.end());
        return Stats(WriteCube(), all);
    };
    const json stats = callsOf({});
    const json& calls = stats.at("gl_calls");
    EXPECT_EQ(calls.size(), 9u);
    EXPECT_EQ(calls.at("draw"), stats.at("draws"));
    EXPECT_EQ(calls.at("program"), 12) << "each of six materials takes one and gives it back";
    EXPECT_EQ(calls.at("buffer"), 2) << "all lies in one";
    EXPECT_GT(calls.at("uniform").get<int>(), 0);
    EXPECT_EQ(calls.at("framebuffer"), 0) << "the host's own stays bound";
    const json edges = callsOf({"--edges"}).at("gl_calls");
    EXPECT_EQ(edges.at("draw").get<int>(), 2 * calls.at("draw").get<int>() + 1) << "identifiers, and the screen";
    const json again = callsOf({}).at("gl_calls");
    EXPECT_EQ(again, calls);
}

TEST_F(RenderStats, TheSkyIsCountedWhereItIsDrawn)
{
    const json plain = Stats(WriteCube(), {"--size", "64x48"});
    const json sky = Stats(WriteCube(), {"--size", "64x48", "--sky"});
    EXPECT_EQ(sky.at("draws").get<int>(), plain.at("draws").get<int>() + 1);
    EXPECT_EQ(sky.at("buffers").get<int>(), plain.at("buffers").get<int>() + 2);
    EXPECT_GT(sky.at("bytes").get<int>(), plain.at("bytes").get<int>());
    EXPECT_EQ(sky.at("triangles"), plain.at("triangles"));
}

TEST_F(RenderStats, TheHouseHasItsNodesMeshesAndTriangles)
{
    const json stats = Stats(TestModel("IFC/AC14-FZK-Haus.ifc"), {"--size", "64x48", "--frames", "5"});
    EXPECT_EQ(stats.at("nodes"), 216);
    EXPECT_EQ(stats.at("meshes"), 67) << "of the 66, one is divided between two that lie one before the other";
    EXPECT_EQ(stats.at("triangles"), 31235);
    EXPECT_GT(stats.at("coplanar_pairs").get<int>(), 0);
    EXPECT_GE(stats.at("drawn_triangles").get<int>(), 31235);
    EXPECT_GE(stats.at("draws").get<int>(), 66);
    EXPECT_EQ(stats.at("frames"), 5);
}

TEST_F(RenderStats, MoreMeshesAreDividedWhereBacksAreDrawn)
{
    const std::string house = TestModel("IFC/AC14-FZK-Haus.ifc");
    const std::vector<std::string> size = {"--size", "64x48"};
    for (const std::vector<std::string>& backs : {std::vector<std::string>{"--no-cull"}, {"--clip", "0,1,0,0,3,0"}})
    {
        std::vector<std::string> options = size;
        options.insert(options.end(), backs.begin(), backs.end());
        EXPECT_EQ(Stats(house, options).at("meshes"), 73) << backs.front();
    }
}

TEST_F(RenderStats, TimesAreThereAndFitTogether)
{
    const json stats = Stats(WriteCube(), {"--size", "64x48", "--frames", "3"});
    for (const char* name : {"load_ms", "pack_ms", "first_frame_ms", "median_frame_ms"})
    {
        EXPECT_GT(stats.at(name).get<double>(), 0.0) << name;
    }
    EXPECT_LE(stats.at("pack_ms").get<double>(), stats.at("first_frame_ms").get<double>());
    const json single = Stats(WriteCube(), {"--size", "64x48"});
    EXPECT_EQ(single.at("median_frame_ms"), single.at("first_frame_ms"));
}

TEST_F(RenderStats, GLNamesItself)
{
    const json stats = Stats(WriteCube(), {"--size", "64x48"});
    const OV::Host::HeadlessContext& gl = GLFixture::Context();
    EXPECT_EQ(stats.at("gl_vendor"), gl.GetVendor());
    EXPECT_EQ(stats.at("gl_renderer"), gl.GetRenderer());
    EXPECT_EQ(stats.at("gl_version"), gl.GetVersion());
}

TEST_F(RenderStats, WithoutStatsNothingIsSaid)
{
    const ProcessResult result = Run({WriteCube(), "-o", folder.Path("out.png"), "--size", "64x48"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "");
}
