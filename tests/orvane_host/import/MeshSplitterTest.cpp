#include "orvane_host/import/detail/MeshSplitter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

using namespace OV;
using namespace OV::Host;

namespace
{

/// A mesh with storage of its own.
struct OwnMesh
{
    std::vector<float> positions;
    std::vector<float> normals;
    std::vector<float> texCoords;
    std::vector<float> colors;
    std::vector<std::uint32_t> indices;
    PrimitiveKind kind = PrimitiveKind::Triangles;

    MeshData View() const
    {
        MeshData data;
        data.kind = kind;
        data.positions = {positions.data(), positions.size()};
        data.normals = {normals.data(), normals.size()};
        data.texCoords = {texCoords.data(), texCoords.size()};
        data.colors = {colors.data(), colors.size()};
        data.indices = {indices.data(), indices.size()};
        return data;
    }
};

/// Vertices on a curve, each with streams that tell its number, in a strip of triangles.
OwnMesh Strip(std::uint32_t vertices)
{
    OwnMesh mesh;
    for (std::uint32_t i = 0; i < vertices; ++i)
    {
        const float number = static_cast<float>(i);
        mesh.positions.insert(mesh.positions.end(), {number, (i & 1) ? 1.0f : 0.0f, 0.0f});
        mesh.normals.insert(mesh.normals.end(), {0.0f, 0.6f, 0.8f});
        mesh.texCoords.insert(mesh.texCoords.end(), {number, -number});
        mesh.colors.insert(mesh.colors.end(), {number, 0.5f, 0.25f, 1.0f});
    }
    for (std::uint32_t i = 0; i + 2 < vertices; ++i)
    {
        mesh.indices.insert(mesh.indices.end(), {i, i + 1, i + 2});
    }
    return mesh;
}

/// The corners of all parts as vertex numbers of the source, in order.
std::vector<std::uint32_t> SourceIndices(const MeshParts& split)
{
    std::vector<std::uint32_t> result;
    for (const MeshPart& part : split.parts)
    {
        for (unsigned short index : part.indices)
        {
            result.push_back(static_cast<std::uint32_t>(part.positions.at(index).x));
        }
    }
    return result;
}

TEST(MeshSplitter, AMeshOf65536VerticesStaysWhole)
{
    const OwnMesh mesh = Strip(65'536);
    const MeshParts split = SplitMesh(mesh.View());
    ASSERT_EQ(split.parts.size(), 1u);
    EXPECT_EQ(split.parts[0].positions.size(), 65'536u);
    EXPECT_EQ(*std::max_element(split.parts[0].indices.begin(), split.parts[0].indices.end()), 65'535);
    EXPECT_EQ(SourceIndices(split), mesh.indices);
}

TEST(MeshSplitter, OneVertexMoreMakesTwoParts)
{
    const OwnMesh mesh = Strip(65'537);
    const MeshParts split = SplitMesh(mesh.View());
    ASSERT_EQ(split.parts.size(), 2u);
    EXPECT_EQ(split.parts[0].positions.size(), 65'536u);
    EXPECT_EQ(split.parts[1].positions.size(), 3u);
    EXPECT_EQ(SourceIndices(split), mesh.indices);
    EXPECT_EQ(split.dropped, 0u);
}

TEST(MeshSplitter, EveryStreamFollowsItsVertex)
{
    const MeshParts split = SplitMesh(Strip(200'000).View());
    ASSERT_EQ(split.parts.size(), 4u);
    for (const MeshPart& part : split.parts)
    {
        ASSERT_EQ(part.normals.size(), part.positions.size());
        ASSERT_EQ(part.texCoords.size(), part.positions.size());
        ASSERT_EQ(part.colors.size(), part.positions.size());
        for (std::size_t i = 0; i < part.positions.size(); ++i)
        {
            const float number = part.positions[i].x;
            ASSERT_EQ(part.texCoords[i].u, number);
            ASSERT_EQ(part.texCoords[i].v, -number);
            ASSERT_EQ(part.colors[i].r, number);
            ASSERT_EQ(part.colors[i].g, 0.5f);
            ASSERT_EQ(part.colors[i].b, 0.25f);
            ASSERT_EQ(part.colors[i].a, 1.0f);
            ASSERT_EQ(part.normals[i].y, 0.6f);
            ASSERT_EQ(part.normals[i].z, 0.8f);
        }
    }
}

TEST(MeshSplitter, VerticesAreSharedWithinAPart)
{
    const MeshParts split = SplitMesh(Strip(200'000).View());
    std::size_t vertices = 0;
    for (const MeshPart& part : split.parts)
    {
        vertices += part.positions.size();
    }
    // Two vertices are repeated at each of the three cuts of a strip.
    EXPECT_EQ(vertices, 200'006u);
}

TEST(MeshSplitter, TheSameMeshIsCutTheSameWay)
{
    const OwnMesh mesh = Strip(150'000);
    const MeshParts first = SplitMesh(mesh.View());
    const MeshParts second = SplitMesh(mesh.View());
    ASSERT_EQ(first.parts.size(), second.parts.size());
    for (std::size_t i = 0; i < first.parts.size(); ++i)
    {
        EXPECT_EQ(first.parts[i].indices, second.parts[i].indices);
    }
}

TEST(MeshSplitter, StreamsThatAreMissingStayEmpty)
{
    OwnMesh mesh = Strip(10);
    mesh.texCoords.clear();
    mesh.colors.clear();
    const MeshParts split = SplitMesh(mesh.View());
    EXPECT_TRUE(split.parts[0].texCoords.empty());
    EXPECT_TRUE(split.parts[0].colors.empty());
}

TEST(MeshSplitter, StreamsThatAreTooShortCountAsMissing)
{
    OwnMesh mesh = Strip(10);
    mesh.texCoords.pop_back();
    mesh.colors.pop_back();
    mesh.normals.pop_back();
    const MeshParts split = SplitMesh(mesh.View());
    ASSERT_EQ(split.parts.size(), 1u);
    EXPECT_TRUE(split.parts[0].texCoords.empty());
    EXPECT_TRUE(split.parts[0].colors.empty());
    EXPECT_EQ(split.parts[0].normals.size(), 10u);
}

TEST(MeshSplitter, TrianglesWithUselessCornersAreLeftOut)
{
    const float inf = std::numeric_limits<float>::infinity();
    for (float bad : {inf, -inf, std::numeric_limits<float>::quiet_NaN(), 1.1e15f, -1.1e15f})
    {
        OwnMesh mesh = Strip(6);
        mesh.positions[3 * 5 + 1] = bad;
        const MeshParts split = SplitMesh(mesh.View());
        EXPECT_EQ(split.dropped, 1u) << bad;
        EXPECT_EQ(SourceIndices(split).size(), 9u);
    }
    OwnMesh limit = Strip(6);
    limit.positions[3 * 5 + 1] = 1e15f;
    EXPECT_EQ(SplitMesh(limit.View()).dropped, 0u);

    OwnMesh mesh = Strip(6);
    mesh.indices[0] = 6;
    mesh.indices[4] = 0xFFFFFFFF;
    const MeshParts split = SplitMesh(mesh.View());
    EXPECT_EQ(split.dropped, 2u);
    EXPECT_EQ(SourceIndices(split), (std::vector<std::uint32_t>{2, 3, 4, 3, 4, 5}));
}

TEST(MeshSplitter, AnIncompleteTriangleAtTheEndIsIgnored)
{
    OwnMesh mesh = Strip(4);
    mesh.indices.push_back(0);
    mesh.indices.push_back(1);
    EXPECT_EQ(SourceIndices(SplitMesh(mesh.View())).size(), 6u);
}

TEST(MeshSplitter, NothingComesOfNothing)
{
    EXPECT_TRUE(SplitMesh(MeshData()).parts.empty());
    OwnMesh mesh = Strip(5);
    mesh.indices.clear();
    EXPECT_TRUE(SplitMesh(mesh.View()).parts.empty());
}

TEST(MeshSplitter, MissingNormalsAreThoseOfTheFaces)
{
    OwnMesh mesh = Strip(3);
    mesh.normals.clear();
    const MeshParts split = SplitMesh(mesh.View());
    ASSERT_EQ(split.parts.size(), 1u);
    // The strip's first triangle runs clockwise as seen from +Z.
    for (const Vector& normal : split.parts[0].normals)
    {
        EXPECT_EQ(normal, Vector(0, 0, -1));
    }
}

TEST(MeshSplitter, UselessNormalsAreReplacedAndGoodOnesKept)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    OwnMesh mesh = Strip(3);
    const float useless[3][3] = {{nan, 0, 0}, {0, 0, 0}, {0, 0.6f, 0.8f}};
    for (int i = 0; i < 9; ++i)
    {
        mesh.normals[static_cast<std::size_t>(i)] = useless[i / 3][i % 3];
    }
    const MeshParts split = SplitMesh(mesh.View());
    EXPECT_EQ(split.parts[0].normals[0], Vector(0, 0, -1));
    EXPECT_EQ(split.parts[0].normals[1], Vector(0, 0, -1));
    EXPECT_EQ(split.parts[0].normals[2], Vector(0, 0.6f, 0.8f));
}

TEST(MeshSplitter, NormalsOfTinyAndOfDegenerateFacesAreUnit)
{
    OwnMesh tiny = Strip(3);
    tiny.normals.clear();
    for (float& x : tiny.positions)
    {
        x *= 1e-9f;
    }
    const MeshParts tinyParts = SplitMesh(tiny.View());
    for (const Vector& normal : tinyParts.parts.at(0).normals)
    {
        EXPECT_EQ(normal, Vector(0, 0, -1));
    }
    OwnMesh degenerate = Strip(3);
    degenerate.normals.clear();
    degenerate.indices = {0, 0, 1};
    const MeshParts degenerateParts = SplitMesh(degenerate.View());
    for (const Vector& normal : degenerateParts.parts.at(0).normals)
    {
        EXPECT_EQ(normal, Vector(0, 0, 1));
    }
}

TEST(MeshSplitter, TexturesAndColoursThatAreNoNumbersAreReplaced)
{
    OwnMesh mesh = Strip(3);
    mesh.texCoords[0] = std::numeric_limits<float>::quiet_NaN();
    mesh.colors[1] = std::numeric_limits<float>::infinity();
    const MeshParts split = SplitMesh(mesh.View());
    EXPECT_EQ(split.parts[0].texCoords[0].u, 0.0f);
    EXPECT_EQ(split.parts[0].colors[0].g, 1.0f);
}

TEST(MeshSplitter, PointsAreCutAtTheSameCount)
{
    OwnMesh mesh = Strip(65'540);
    mesh.kind = PrimitiveKind::Points;
    mesh.indices.clear();
    mesh.normals.clear();
    mesh.positions[3] = std::numeric_limits<float>::quiet_NaN();
    const MeshParts split = SplitMesh(mesh.View());
    ASSERT_EQ(split.parts.size(), 2u);
    EXPECT_EQ(split.parts[0].positions.size(), 65'536u);
    EXPECT_EQ(split.parts[1].positions.size(), 3u);
    EXPECT_EQ(split.parts[1].indices, (std::vector<unsigned short>{0, 1, 2}));
    EXPECT_TRUE(split.parts[0].normals.empty());
    EXPECT_EQ(split.dropped, 1u);
}

} // namespace
