#include "orvane_host/import/detail/AssimpNormals.h"

#include <assimp/Importer.hpp>
#include <assimp/config.h>
#include <assimp/mesh.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace OV::Test
{

namespace
{

/// A mesh as a file holds it: places, and three of them a triangle.
struct Shape
{
    std::vector<aiVector3D> places;
    std::vector<unsigned int> corners;
};

/// A square of so many cells a side that rises and falls, with creases of all angles.
Shape Hills(unsigned int cells)
{
    Shape shape;
    for (unsigned int y = 0; y <= cells; ++y)
    {
        for (unsigned int x = 0; x <= cells; ++x)
        {
            const auto u = static_cast<float>(x);
            const auto v = static_cast<float>(y);
            shape.places.emplace_back(u, v, 1.5f * std::sin(u * 0.7f) * std::cos(v * 1.1f) + (x % 5 == 0 ? 0.8f : 0.0f));
        }
    }
    for (unsigned int y = 0; y < cells; ++y)
    {
        for (unsigned int x = 0; x < cells; ++x)
        {
            const unsigned int a = y * (cells + 1) + x;
            const unsigned int c = a + cells + 1;
            shape.corners.insert(shape.corners.end(), {a, a + 1, c + 1, a, c + 1, c});
        }
    }
    return shape;
}

/// Two triangles over and over at the same place, one of no area, and places that differ by less
/// than the parser tells apart.
Shape Oddities()
{
    Shape shape = Hills(4);
    const auto count = static_cast<unsigned int>(shape.places.size());
    shape.corners.insert(shape.corners.end(), {0, 1, 6, 0, 6, 1, 2, 2, 3});
    for (unsigned int i = 0; i < count; ++i)
    {
        shape.places.push_back(shape.places[i] + aiVector3D(1e-5f, 0.0f, -1e-5f));
    }
    shape.corners.insert(shape.corners.end(), {count, count + 6, count + 1, count + 7, count + 8, count + 2});
    return shape;
}

std::string Ply(const Shape& shape)
{
    std::string text = "ply\nformat ascii 1.0\nelement vertex " + std::to_string(shape.places.size()) +
                       "\nproperty float x\nproperty float y\nproperty float z\nelement face " +
                       std::to_string(shape.corners.size() / 3) + "\nproperty list uchar int vertex_indices\nend_header\n";
    for (const aiVector3D& place : shape.places)
    {
        text += std::to_string(place.x) + ' ' + std::to_string(place.y) + ' ' + std::to_string(place.z) + '\n';
    }
    for (std::size_t i = 0; i < shape.corners.size(); i += 3)
    {
        text += "3 " + std::to_string(shape.corners[i]) + ' ' + std::to_string(shape.corners[i + 1]) + ' ' +
                std::to_string(shape.corners[i + 2]) + '\n';
    }
    return text;
}

aiScene& Read(Assimp::Importer& importer, const std::string& ply, float maxAngle)
{
    importer.SetPropertyFloat(AI_CONFIG_PP_GSN_MAX_SMOOTHING_ANGLE, maxAngle);
    return const_cast<aiScene&>(*importer.ReadFileFromMemory(ply.data(), ply.size(), 0, "ply"));
}

/// The same shape with corners that are all apart, which the parser gives normals to.
Shape Apart(const Shape& shape)
{
    Shape apart;
    for (const unsigned int corner : shape.corners)
    {
        apart.corners.push_back(static_cast<unsigned int>(apart.places.size()));
        apart.places.push_back(shape.places[corner]);
    }
    return apart;
}

std::vector<aiVector3D> NormalsByCorner(const aiMesh& mesh)
{
    std::vector<aiVector3D> normals;
    for (unsigned int face = 0; face < mesh.mNumFaces; ++face)
    {
        for (unsigned int corner = 0; corner < 3; ++corner)
        {
            normals.push_back(mesh.mNormals[mesh.mFaces[face].mIndices[corner]]);
        }
    }
    return normals;
}

void ExpectNormalsOfTheParser(const Shape& shape, float maxAngle)
{
    Assimp::Importer byParser;
    const aiScene& expected = Read(byParser, Ply(Apart(shape)), maxAngle);
    ASSERT_NE(byParser.ApplyPostProcessing(aiProcess_GenSmoothNormals), nullptr);
    Assimp::Importer importer;
    aiScene& scene = Read(importer, Ply(shape), maxAngle);
    ASSERT_EQ(scene.mNumMeshes, 1u);
    ASSERT_TRUE(Host::GiveNormalsToSharedCorners(scene, maxAngle));
    const aiMesh& mesh = *scene.mMeshes[0];
    ASSERT_NE(mesh.mNormals, nullptr);
    EXPECT_LE(mesh.mNumVertices, shape.corners.size());
    const std::vector<aiVector3D> actual = NormalsByCorner(mesh);
    const std::vector<aiVector3D> wanted = NormalsByCorner(*expected.mMeshes[0]);
    ASSERT_EQ(actual.size(), wanted.size());
    for (std::size_t i = 0; i < wanted.size(); ++i)
    {
        EXPECT_LT((actual[i] - wanted[i]).Length(), 1e-4f) << "corner " << i << " at " << maxAngle;
    }
    for (unsigned int face = 0; face < mesh.mNumFaces; ++face)
    {
        for (unsigned int corner = 0; corner < 3; ++corner)
        {
            const aiVector3D& place = mesh.mVertices[mesh.mFaces[face].mIndices[corner]];
            EXPECT_LT((place - shape.places[shape.corners[face * 3 + corner]]).Length(), 1e-5f);
        }
    }
}

} // namespace

TEST(SharedCorners, GetTheNormalsThatTheParserMakesOfSeparateOnes)
{
    for (const float maxAngle : {10.0f, 35.0f, 80.0f, 120.0f, 175.0f})
    {
        ExpectNormalsOfTheParser(Hills(20), maxAngle);
        ExpectNormalsOfTheParser(Oddities(), maxAngle);
    }
}

TEST(SharedCorners, AVertexIsDividedOnlyWhereItsNormalsDiffer)
{
    Shape roof;
    roof.places = {{0, 0, 0}, {0, 0, 1}, {-1, -1, 0}, {1, -1, 0}};
    roof.corners = {1, 0, 2, 0, 1, 3};
    for (const float maxAngle : {35.0f, 120.0f})
    {
        Assimp::Importer importer;
        aiScene& scene = Read(importer, Ply(roof), maxAngle);
        ASSERT_TRUE(Host::GiveNormalsToSharedCorners(scene, maxAngle));
        EXPECT_EQ(scene.mMeshes[0]->mNumVertices, maxAngle > 90.0f ? 4u : 6u);
        EXPECT_FALSE(Host::GiveNormalsToSharedCorners(scene, maxAngle)) << "it has normals now";
    }
}

TEST(SharedCorners, WithoutPlacesToMeasureTheyAreOnlySeparated)
{
    for (const float bad : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), 0.0f})
    {
        Assimp::Importer importer;
        aiScene& scene = Read(importer, Ply(Hills(2)), 35.0f);
        aiMesh& mesh = *scene.mMeshes[0];
        std::fill_n(mesh.mVertices, mesh.mNumVertices, aiVector3D(bad, 0, 0));
        ASSERT_TRUE(Host::GiveNormalsToSharedCorners(scene, 35.0f));
        EXPECT_EQ(mesh.mNormals, nullptr);
        EXPECT_EQ(mesh.mNumVertices, mesh.mNumFaces * 3);
    }
}

} // namespace OV::Test
