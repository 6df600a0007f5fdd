#include "tests/orvane_host/import/ImportFixture.h"

#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <limits>
#include <sstream>

namespace OV::Test
{

namespace
{

using Host::ImportResult;

const int kFaces[6][4] = {{1, 4, 3, 2}, {5, 6, 7, 8}, {1, 2, 6, 5}, {4, 8, 7, 3}, {2, 3, 7, 6}, {1, 5, 8, 4}};

/// A cube of this edge about a place, without normals.
std::string CubeAt(double edge, double place, const std::string& more = std::string())
{
    std::ostringstream text;
    text << std::setprecision(17);
    for (int corner = 0; corner < 8; ++corner)
    {
        const bool isRight = corner % 4 == 1 || corner % 4 == 2;
        text << "v " << place + (isRight ? 0.5 : -0.5) * edge << ' ' << place + (corner % 4 > 1 ? 0.5 : -0.5) * edge << ' '
             << place + (corner > 3 ? 0.5 : -0.5) * edge << '\n';
    }
    for (const auto& face : kFaces)
    {
        text << "f " << face[0] << ' ' << face[1] << ' ' << face[2] << ' ' << face[3] << '\n';
    }
    return text.str() + more;
}

/// The cube as a mesh of a glTF file, which shares its corners, with one triangle more to a place of its own.
Bytes CubeGlb(float edge, const std::string& nodes, const std::vector<float>& stray = {})
{
    TinyGltf file;
    std::vector<float> places;
    for (int corner = 0; corner < 8; ++corner)
    {
        const bool isRight = corner % 4 == 1 || corner % 4 == 2;
        places.insert(places.end(), {isRight ? edge / 2 : -edge / 2, corner % 4 > 1 ? edge / 2 : -edge / 2, corner > 3 ? edge / 2 : -edge / 2});
    }
    std::vector<unsigned short> indices;
    for (const auto& face : kFaces)
    {
        for (const int corner : {0, 1, 2, 0, 2, 3})
        {
            indices.push_back(static_cast<unsigned short>(face[corner] - 1));
        }
    }
    if (!stray.empty())
    {
        places.insert(places.end(), stray.begin(), stray.end());
        indices.insert(indices.end(), {0, 1, 8});
    }
    const std::size_t positions = file.AddFloats(places, 3);
    const std::size_t corners = file.AddIndices(indices);
    return file.Glb("\"scene\":0,\"scenes\":[{\"nodes\":[0]}],\"nodes\":[" + nodes
                    + "],\"meshes\":[{\"primitives\":[{\"attributes\":{\"POSITION\":" + std::to_string(positions)
                    + "},\"indices\":" + std::to_string(corners) + "}]}]");
}

double SizeOf(const ImportResult& result)
{
    const Vector& low = result.report.boxMin;
    const Vector& high = result.report.boxMax;
    return std::hypot(high.x - low.x, high.y - low.y, high.z - low.z);
}

bool IsTold(const ImportResult& result, const std::string& words)
{
    const auto& warnings = result.report.warnings;
    return std::any_of(warnings.begin(), warnings.end(),
                       [&](const std::string& line) { return line.find(words) != std::string::npos; });
}

/// That each normal has a length and goes along an axis, as those of a cube do.
void ExpectSharpNormals(const ImportResult& result)
{
    for (const Mesh* mesh : result.scene->GetMeshes())
    {
        ASSERT_FALSE(mesh->GetNormalBuffer().empty());
        for (const Vector& normal : mesh->GetNormalBuffer())
        {
            const float largest = std::max({std::fabs(normal.x), std::fabs(normal.y), std::fabs(normal.z)});
            EXPECT_GT(largest, 0.999f) << normal.x << ' ' << normal.y << ' ' << normal.z;
        }
    }
}

class ModelReach : public ImportFixture
{
};

} // namespace

TEST_F(ModelReach, AModelTooSmallOrTooLargeIsBroughtToASizeThatCanBeDrawn)
{
    for (const double edge : {2e-30, 2e-12, 2e-6, 2e-5, 4e15, 2e20, 2e30, 2e37})
    {
        SCOPED_TRACE(edge);
        const ImportResult result = ImportAs("cube.obj", CubeAt(edge, 0.0));
        EXPECT_GT(SizeOf(result), 0.9);
        EXPECT_LT(SizeOf(result), 1001.0);
        EXPECT_EQ(result.report.triangles, 12u);
        EXPECT_TRUE(IsTold(result, edge < 1.0 ? "too small to be drawn as it is" : "too large to be drawn as it is"));
        ExpectSharpNormals(result);
    }
    const ImportResult tiny = ImportAs("cube.obj", CubeAt(2e-12, 0.0));
    EXPECT_TRUE(IsTold(tiny, "it stands there 1e+12 times as large."));
}

TEST_F(ModelReach, OtherModelsStayAsTheyAre)
{
    for (const double edge : {1e-4, 1.0, 1e9, 1e14})
    {
        SCOPED_TRACE(edge);
        const ImportResult result = ImportAs("cube.obj", CubeAt(edge, 0.0));
        EXPECT_NEAR(SizeOf(result) / edge, std::sqrt(3.0), 1e-5);
        EXPECT_TRUE(result.report.warnings.empty());
        ExpectSharpNormals(result);
    }
}

TEST_F(ModelReach, UnitsStayTrueWhereTheScaleChanges)
{
    const ImportResult result = ImportAs("cube.glb", CubeGlb(2e-9f, "{\"mesh\":0}"));
    EXPECT_GT(SizeOf(result), 0.9);
    EXPECT_NEAR(SizeOf(result) * result.report.metresPerUnit, 2e-9 * std::sqrt(3.0), 1e-14);
}

TEST_F(ModelReach, NodesAreBroughtAlong)
{
    const std::string nodes = R"({"children":[1,2]},{"mesh":0,"translation":[3e-9,0,0]},{"mesh":0})";
    const ImportResult result = ImportAs("two.glb", CubeGlb(2e-9f, nodes));
    const Vector& low = result.report.boxMin;
    const Vector& high = result.report.boxMax;
    EXPECT_NEAR((high.x - low.x) / (high.y - low.y), 2.5, 1e-4);
}

TEST_F(ModelReach, AModelFarFromTheOriginForItsSizeIsMovedThere)
{
    for (const double place : {1e6, 1e7})
    {
        SCOPED_TRACE(place);
        const ImportResult result = ImportAs("cube.obj", CubeAt(2.0, place));
        EXPECT_NEAR(SizeOf(result), 2.0 * std::sqrt(3.0), 1e-5);
        EXPECT_LT(std::fabs(result.report.boxMax.x), 2.0f);
        EXPECT_TRUE(IsTold(result, "too far for its size: it stands at the origin instead."));
        ExpectSharpNormals(result);
    }
    const ImportResult near = ImportAs("cube.obj", CubeAt(2.0, 3e4));
    EXPECT_GT(near.report.boxMin.x, 2.9e4f);
    EXPECT_TRUE(near.report.warnings.empty());
}

TEST_F(ModelReach, ANodeFarFromTheOriginIsMovedThere)
{
    const std::string nodes = R"({"mesh":0,"translation":[1e12,-1e12,5e11]})";
    const ImportResult result = ImportAs("far.glb", CubeGlb(2.0f, nodes));
    EXPECT_NEAR(SizeOf(result), 2.0 * std::sqrt(3.0), 1e-4);
    EXPECT_LT(std::fabs(result.report.boxMin.y), 2.0f);
    EXPECT_TRUE(IsTold(result, "1.5e+12 units from the origin"));
}

TEST_F(ModelReach, PartsOfAPlotInASurveyStandInTheirPlaces)
{
    // A plot of 60, a house and a window before its wall, where places in floats are half a unit apart.
    const std::string nodes = R"({"translation":[457900,100,-5430600],"children":[1,2,3]},)"
                              R"({"mesh":0,"scale":[30,1,30]},{"mesh":0,"translation":[0.3,2,0.2]},)"
                              R"({"mesh":0,"translation":[0.4,1.7,1.21],"scale":[0.5,0.5,0.01]})";
    const ImportResult result = ImportAs("plot.glb", CubeGlb(2.0f, nodes));
    EXPECT_TRUE(IsTold(result, "too far for its size: it stands at the origin instead."));
    result.scene->GetRoot()->UpdateGraph();
    std::vector<Vector> places;
    for (const Mesh* mesh : result.scene->GetMeshes())
    {
        for (const MeshNode* node : mesh->EachNode())
        {
            places.push_back(node->GetGlobal().GetPosition());
        }
    }
    ASSERT_EQ(places.size(), 3u);
    EXPECT_NEAR(places[2].x - places[1].x, 0.1, 1e-4);
    EXPECT_NEAR(places[2].y - places[1].y, -0.3, 1e-4);
    EXPECT_NEAR(places[2].z - places[1].z, 1.01, 1e-4);
}

TEST_F(ModelReach, OneOfSeveralFilesKeepsItsPlaceAndSize)
{
    Host::ImportOptions options;
    options.bringsWithinReach = false;
    const ImportResult far = ImportAs("cube.obj", CubeAt(2.0, 1e7), options);
    EXPECT_GT(far.report.boxMin.x, 9e6f);
    const ImportResult tiny = ImportAs("cube.obj", CubeAt(2e-12, 0.0), options);
    EXPECT_LT(SizeOf(tiny), 1e-11);
    EXPECT_TRUE(tiny.report.warnings.empty());
}

TEST_F(ModelReach, OneStrayVertexSpoilsNoNormalsOfTheOthers)
{
    const float inf = std::numeric_limits<float>::infinity();
    for (const float stray : {1e30f, inf, -inf, std::numeric_limits<float>::quiet_NaN()})
    {
        SCOPED_TRACE(stray);
        std::ostringstream more;
        more << "v " << stray << " 0 0\nf 1 2 9\n";
        const ImportResult apart = ImportAs("cube.obj", CubeAt(1.0, 0.0, more.str()));
        EXPECT_NEAR(SizeOf(apart), std::sqrt(3.0), 1e-5);
        EXPECT_TRUE(IsTold(apart, "Triangles or points left out: 1 "));
        ExpectSharpNormals(apart);
    }
    // The parser of this format wants numbers.
    const ImportResult shared = ImportAs("cube.glb", CubeGlb(1.0f, "{\"mesh\":0}", {1e30f, 0.0f, 0.0f}));
    EXPECT_NEAR(SizeOf(shared), std::sqrt(3.0), 1e-5);
    ExpectSharpNormals(shared);
}

TEST_F(ModelReach, SmallMeshesKeepTheirCorners)
{
    // Squares of a chessboard a ten-thousandth of a unit wide: corners nearer than what the parser tells apart.
    std::ostringstream text;
    constexpr int cells = 60;
    for (int y = 0; y <= cells; ++y)
    {
        for (int x = 0; x <= cells; ++x)
        {
            text << "v " << x * 1.5e-6 << ' ' << y * 1.5e-6 << " 0\n";
        }
    }
    const auto at = [](int x, int y) { return y * (cells + 1) + x + 1; };
    for (int y = 0; y < cells; ++y)
    {
        for (int x = y % 2; x < cells; x += 2)
        {
            text << "f " << at(x, y) << ' ' << at(x + 1, y) << ' ' << at(x + 1, y + 1) << ' ' << at(x, y + 1) << '\n';
        }
    }
    const ImportResult result = ImportAs("board.obj", text.str());
    double area = 0.0;
    for (const Mesh* mesh : result.scene->GetMeshes())
    {
        const auto& places = mesh->GetPositionBuffer();
        const auto& indices = mesh->GetIndices();
        for (std::size_t i = 0; i + 2 < indices.size(); i += 3)
        {
            const Vector &a = places[indices[i]], &b = places[indices[i + 1]], &c = places[indices[i + 2]];
            const double own = 0.5 * ((double(b.x) - a.x) * (double(c.y) - a.y) - (double(b.y) - a.y) * (double(c.x) - a.x));
            area += own / (1.5e-6 * 1.5e-6);
            EXPECT_NEAR(own / (1.5e-6 * 1.5e-6), 0.5, 1e-3);
        }
    }
    EXPECT_NEAR(area, cells * cells / 2.0, 1.0);
}

} // namespace OV::Test
