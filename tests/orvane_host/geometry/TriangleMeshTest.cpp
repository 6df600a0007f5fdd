#include "orvane_host/geometry/TriangleMesh.h"

#include "orvane/scene/RawMesh.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace OV::Host::Test
{

namespace
{

using Parts = std::vector<std::shared_ptr<RawMesh>>;

Parts Make(TriangleMesh::Source source, float crease = TriangleMesh::UsualCrease)
{
    std::string error;
    Parts parts = TriangleMesh::Make(std::move(source), error, crease);
    EXPECT_EQ(error, "");
    return parts;
}

std::string Refusal(TriangleMesh::Source source)
{
    std::string error;
    EXPECT_TRUE(TriangleMesh::Make(std::move(source), error).empty());
    return error;
}

/// A strip of squares in the plane y = 0, two vertices a step.
TriangleMesh::Source Strip(std::uint32_t squares)
{
    TriangleMesh::Source strip;
    for (std::uint32_t i = 0; i <= squares; ++i)
    {
        strip.positions.emplace_back(static_cast<float>(i), 0.0f, 0.0f);
        strip.positions.emplace_back(static_cast<float>(i), 0.0f, -1.0f);
    }
    for (std::uint32_t i = 0; i < squares; ++i)
    {
        const std::uint32_t a = 2 * i;
        strip.indices.insert(strip.indices.end(), {a, a + 2, a + 3, a, a + 3, a + 1});
    }
    return strip;
}

/// Two triangles that share the edge of the first two vertices and bend by an angle there.
TriangleMesh::Source Fold(double degrees)
{
    const double angle = degrees * 3.14159265358979323846 / 180.0;
    TriangleMesh::Source fold;
    fold.positions = {{0, 0, 0}, {1, 0, 0}, {0.5f, 0, -1},
                      {0.5f, -static_cast<float>(std::sin(angle)), static_cast<float>(std::cos(angle))}};
    fold.indices = {0, 1, 2, 1, 0, 3};
    return fold;
}

} // namespace

TEST(TriangleMesh, TakesWhatFitsOverAsItIs)
{
    TriangleMesh::Source square = Strip(1);
    square.normals.assign(4, Vector(0, 0, 1));
    square.textureCoordinates.assign(4, TextureCoordinate(0.25f, 0.5f));
    square.colors.assign(4, Color(0.1f, 0.2f, 0.3f));
    const Vector* const taken = square.positions.data();
    const Parts parts = Make(std::move(square));
    ASSERT_EQ(parts.size(), 1u);
    EXPECT_EQ(parts[0]->positions.data(), taken);
    EXPECT_EQ(parts[0]->normals[3].z, 1.0f);
    EXPECT_EQ(parts[0]->textureCoordinates[3].v, 0.5f);
    EXPECT_EQ(parts[0]->colors[3].b, 0.3f);
    EXPECT_EQ(parts[0]->indices, (std::vector<unsigned short>{0, 2, 3, 0, 3, 1}));
    EXPECT_EQ(parts[0]->bboxMax.x, 1.0f);
    EXPECT_GT(parts[0]->sphere.radius, 0.5f);
}

TEST(TriangleMesh, MakesNormalsThatBendWithTheFacesUpToTheCrease)
{
    const Parts smooth = Make(Fold(34.0));
    ASSERT_EQ(smooth.size(), 1u);
    EXPECT_EQ(smooth[0]->positions.size(), 4u);
    EXPECT_NEAR(smooth[0]->normals[0].z, std::sin(17.0 * 3.14159265 / 180.0), 1e-5);
    const Parts sharp = Make(Fold(36.0));
    ASSERT_EQ(sharp.size(), 1u);
    ASSERT_EQ(sharp[0]->positions.size(), 6u);
    EXPECT_NEAR(sharp[0]->normals[0].y, 1.0, 1e-6);
    EXPECT_NEAR(sharp[0]->normals[sharp[0]->indices[3]].z, std::sin(36.0 * 3.14159265 / 180.0), 1e-5);
}

TEST(TriangleMesh, CopiesEverythingOfAVertexThatComesOutTwice)
{
    TriangleMesh::Source fold = Fold(90.0);
    fold.textureCoordinates = {{0, 0}, {1, 0}, {0, 1}, {1, 1}};
    fold.colors = {Color(0, 0, 0), Color(1, 0, 0), Color(0, 1, 0), Color(0, 0, 1)};
    const Parts parts = Make(std::move(fold));
    ASSERT_EQ(parts[0]->positions.size(), 6u);
    const unsigned short copy = parts[0]->indices[3];
    EXPECT_EQ(parts[0]->textureCoordinates[copy].u, 1.0f);
    EXPECT_EQ(parts[0]->colors[copy].r, 1.0f);
    EXPECT_EQ(parts[0]->positions[copy].x, 1.0f);
}

TEST(TriangleMesh, TrianglesWithoutAnAreaGetAUnitNormalAndNoSay)
{
    TriangleMesh::Source source = Strip(1);
    source.indices.insert(source.indices.begin(), {0, 0, 2});
    const Parts parts = Make(std::move(source));
    for (const Vector& normal : parts[0]->normals)
    {
        EXPECT_NEAR(normal.y, 1.0f, 1e-6f);
    }
    TriangleMesh::Source flat;
    flat.positions = {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}};
    flat.indices = {0, 1, 2};
    EXPECT_EQ(Make(std::move(flat))[0]->normals[0].y, 1.0f);
}

TEST(TriangleMesh, SplitsAboveTheVerticesThatIndicesReach)
{
    // 65,536 vertices, and two more.
    EXPECT_EQ(Make(Strip(32767)).size(), 1u);
    const Parts parts = Make(Strip(32768));
    ASSERT_EQ(parts.size(), 2u);
    std::size_t triangles = 0;
    double area = 0.0;
    for (const auto& part : parts)
    {
        EXPECT_LE(part->positions.size(), TriangleMesh::MostVertices);
        EXPECT_EQ(part->normals.size(), part->positions.size());
        triangles += part->indices.size() / 3;
        for (std::size_t i = 0; i < part->indices.size(); i += 3)
        {
            ASSERT_LT(part->indices[i], part->positions.size());
            const Vector& a = part->positions[part->indices[i]];
            const Vector& b = part->positions[part->indices[i + 1]];
            const Vector& c = part->positions[part->indices[i + 2]];
            area += 0.5 * std::abs((b.x - a.x) * (c.z - a.z) - (b.z - a.z) * (c.x - a.x));
        }
    }
    EXPECT_EQ(triangles, 65536u);
    EXPECT_NEAR(area, 32768.0, 1e-3);
}

TEST(TriangleMesh, TellsWhatIsWrongWithAnArray)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    TriangleMesh::Source source = Strip(1);
    source.indices[4] = 4;
    EXPECT_EQ(Refusal(source), "triangles[1] names vertex 4; there are 4");
    source = Strip(1);
    source.positions[2].y = nan;
    EXPECT_EQ(Refusal(source), "positions[2] is not finite; every coordinate has to be");
    source = Strip(1);
    source.normals.assign(3, Vector(0, 1, 0));
    EXPECT_EQ(Refusal(source), "normals holds 3; there are 4 positions");
    source.normals.assign(4, Vector(0, nan, 0));
    EXPECT_EQ(Refusal(source), "normals[0] is not finite; every coordinate has to be");
    source = Strip(1);
    source.indices.pop_back();
    EXPECT_NE(Refusal(source).find("5 indices"), std::string::npos);
    source.indices.clear();
    EXPECT_EQ(Refusal(source), "triangles is empty; a mesh has to have some");
    EXPECT_EQ(Refusal({}), "positions is empty; a mesh has to have vertices");
}

} // namespace OV::Host::Test
