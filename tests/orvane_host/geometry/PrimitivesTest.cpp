#include "orvane_host/geometry/Primitives.h"

#include "orvane_host/geometry/FeatureEdges.h"
#include "orvane_host/geometry/detail/ClosedShells.h"
#include "orvane/scene/RawMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <limits>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace OV::Host::Test
{

namespace
{

constexpr double kPi = 3.14159265358979323846;

struct Body
{
    std::string name;
    std::shared_ptr<RawMesh> mesh;
    bool isSolid;
    double volume;     ///< of a solid, of the true body
    double tolerance;  ///< of the volume, as a share
    float normalError; ///< how far a normal may be off the face of a triangle, as 1 - cosine
};

std::vector<Body> Bodies()
{
    return {
        {"box", Primitives::Box({-1, 2, 3}, {2, 4, 9}), true, 36.0, 1e-6, 1e-6f},
        {"tiny box", Primitives::Box({0, 0, 0}, {1e-6f, 1e-6f, 1e-6f}), true, 1e-18, 1e-5, 1e-6f},
        {"plane", Primitives::Plane(2, 3), false, 0.0, 0.0, 1e-6f},
        {"divided plane", Primitives::Plane(2, 3, 7, 5), false, 0.0, 0.0, 1e-6f},
        {"largest plane", Primitives::Plane(2, 3, 100000, 100000), false, 0.0, 0.0, 1e-6f},
        {"cylinder", Primitives::Cylinder(2, 5, 256), true, kPi * 20.0, 2e-4, 1e-3f},
        {"prism", Primitives::Cylinder(1, 1, -5), true, 0.75 * std::sqrt(3.0), 1e-6, 0.6f},
        {"finest cylinder", Primitives::Cylinder(1, 1, 1000000), true, kPi, 1e-5, 1e-5f},
        {"cone", Primitives::Cone(2, 5, 256), true, kPi * 20.0 / 3.0, 2e-4, 1e-3f},
        {"pyramid", Primitives::Cone(1, 1, 0), true, 0.25 * std::sqrt(3.0), 1e-6, 0.5f},
        {"finest cone", Primitives::Cone(1, 1, 1000000), true, kPi / 3.0, 1e-5, 1e-5f},
        {"sphere", Primitives::Sphere(3, 128, 64), true, 36.0 * kPi, 2e-3, 3e-3f},
        {"octahedron", Primitives::Sphere(1, 4, 2), true, 4.0 / 3.0, 1e-6, 0.5f},
        {"coarsest sphere", Primitives::Sphere(1, 0, 0), true, 0.5 * std::sqrt(3.0), 1e-6, 0.6f},
        {"finest sphere", Primitives::Sphere(1, 100000, 100000), true, 4.0 / 3.0 * kPi, 5e-4, 1e-3f},
    };
}

double Dot(const Vector& a, const Vector& b)
{
    return double(a.x) * b.x + double(a.y) * b.y + double(a.z) * b.z;
}

/// Of a triangle, as long as twice its area.
Vector FaceOf(const RawMesh& mesh, std::size_t first)
{
    const auto corner = [&](std::size_t i) { return mesh.positions[mesh.indices[first + i]]; };
    Vector along;
    Vector across;
    Vector face;
    along.Subtract(corner(1), corner(0));
    across.Subtract(corner(2), corner(0));
    face.Cross(along, across);
    return face;
}

} // namespace

TEST(Primitives, HaveAnIndexForEveryVertexAndOneOfEachForAll)
{
    for (const Body& body : Bodies())
    {
        SCOPED_TRACE(body.name);
        ASSERT_TRUE(body.mesh);
        const RawMesh& mesh = *body.mesh;
        EXPECT_LE(mesh.positions.size(), 65536u);
        EXPECT_EQ(mesh.normals.size(), mesh.positions.size());
        EXPECT_EQ(mesh.textureCoordinates.size(), mesh.positions.size());
        EXPECT_EQ(mesh.indices.size() % 3, 0u);
        std::vector<bool> isUsed(mesh.positions.size());
        for (const unsigned short index : mesh.indices)
        {
            ASSERT_LT(index, mesh.positions.size());
            isUsed[index] = true;
        }
        EXPECT_EQ(std::count(isUsed.begin(), isUsed.end(), false), 0);
        for (std::size_t i = 0; i < mesh.positions.size(); ++i)
        {
            ASSERT_NEAR(Dot(mesh.normals[i], mesh.normals[i]), 1.0, 1e-5);
            ASSERT_GE(mesh.textureCoordinates[i].u, 0.0f);
            ASSERT_LE(mesh.textureCoordinates[i].u, 1.0f);
            ASSERT_GE(mesh.textureCoordinates[i].v, 0.0f);
            ASSERT_LE(mesh.textureCoordinates[i].v, 1.0f);
        }
        EXPECT_GT(mesh.sphere.radius, 0.0f);
    }
}

TEST(Primitives, NormalsAgreeWithTheFrontsOfFaces)
{
    for (const Body& body : Bodies())
    {
        SCOPED_TRACE(body.name);
        for (std::size_t i = 0; i < body.mesh->indices.size(); i += 3)
        {
            const Vector face = FaceOf(*body.mesh, i);
            const double area = std::sqrt(Dot(face, face));
            ASSERT_GT(area, 0.0) << i;
            for (std::size_t corner = 0; corner < 3; ++corner)
            {
                const double cosine = Dot(face, body.mesh->normals[body.mesh->indices[i + corner]]) / area;
                ASSERT_GE(cosine, 1.0 - body.normalError) << i;
            }
        }
    }
}

TEST(Primitives, SolidsAreClosedAndOutsideOut)
{
    for (const Body& body : Bodies())
    {
        SCOPED_TRACE(body.name);
        const Detail::VertexWelder welded({body.mesh.get()});
        EXPECT_EQ(Detail::FindClosedShells(welded).size(), body.isSolid ? body.mesh->indices.size() / 3 : 0u);
        // At this angle only what is open has edges left.
        EXPECT_EQ(FeatureEdges::Find(*body.mesh, 180.0f).empty(), body.isSolid);
        double volume = 0.0;
        for (std::size_t i = 0; i < body.mesh->indices.size(); i += 3)
        {
            volume += Dot(body.mesh->positions[body.mesh->indices[i]], FaceOf(*body.mesh, i)) / 6.0;
        }
        EXPECT_NEAR(volume, body.volume, body.volume * body.tolerance);
    }
}

TEST(Primitives, SeamsAreTheSameBitForBit)
{
    for (const Body& body : Bodies())
    {
        if (!body.isSolid)
        {
            continue;
        }
        SCOPED_TRACE(body.name);
        using Place = std::tuple<float, float, float>;
        std::map<std::pair<Place, Place>, int> edges;
        const auto place = [&](std::size_t i)
        {
            const Vector& p = body.mesh->positions[body.mesh->indices[i]];
            return Place(p.x, p.y, p.z);
        };
        for (std::size_t i = 0; i < body.mesh->indices.size(); i += 3)
        {
            for (std::size_t k = 0; k < 3; ++k)
            {
                const Place from = place(i + k);
                const Place to = place(i + (k + 1) % 3);
                ++edges[{from, to}];
                --edges[{to, from}];
            }
        }
        for (const auto& [edge, count] : edges)
        {
            ASSERT_EQ(count, 0) << std::get<0>(edge.first) << " " << std::get<1>(edge.first);
        }
    }
}

TEST(Primitives, StandWhereTheyAreSaidTo)
{
    const auto expectBox = [](const RawMesh& mesh, const Vector& low, const Vector& high)
    {
        EXPECT_TRUE(mesh.bboxMin.IsEqual(low));
        EXPECT_TRUE(mesh.bboxMax.IsEqual(high));
    };
    expectBox(*Primitives::Box({-1, 2, 3}, {2, 4, 9}), {-1, 2, 3}, {2, 4, 9});
    expectBox(*Primitives::Plane(2, 6, 3, 3), {-1, 0, -3}, {1, 0, 3});
    expectBox(*Primitives::Cylinder(2, 6, 4), {-2, -3, -2}, {2, 3, 2});
    expectBox(*Primitives::Cone(2, 6, 4), {-2, -3, -2}, {2, 3, 2});
    expectBox(*Primitives::Sphere(2, 4, 2), {-2, -2, -2}, {2, 2, 2});
    EXPECT_EQ(FeatureEdges::Find(*Primitives::Box({-1, 2, 3}, {2, 4, 9})).size(), 12u);
    EXPECT_EQ(FeatureEdges::Find(*Primitives::Cylinder(1, 1, 24)).size(), 48u);
    EXPECT_EQ(FeatureEdges::Find(*Primitives::Sphere(1, 64, 32)).size(), 0u);
}

TEST(Primitives, PicturesStandUprightAndAreNotMirrored)
{
    for (const Body& body : Bodies())
    {
        SCOPED_TRACE(body.name);
        const RawMesh& mesh = *body.mesh;
        for (std::size_t i = 0; i < mesh.indices.size(); i += 3)
        {
            const auto at = [&](std::size_t k) { return mesh.textureCoordinates[mesh.indices[i + k]]; };
            const double turn = (double(at(1).u) - at(0).u) * (double(at(2).v) - at(0).v) -
                                (double(at(2).u) - at(0).u) * (double(at(1).v) - at(0).v);
            // Counter-clockwise in the picture, as on the body.
            ASSERT_GT(turn, 0.0) << i;
        }
    }
    const auto box = Primitives::Box({0, 0, 0}, {1, 1, 1});
    for (std::size_t i = 0; i < 16; ++i)
    {
        EXPECT_EQ(box->textureCoordinates[i].v, box->positions[i].y) << "a side stands upright";
    }
}

TEST(Primitives, BadSizesGiveNothing)
{
    const float bad[] = {0.0f, -1.0f, std::numeric_limits<float>::infinity(),
                         std::numeric_limits<float>::quiet_NaN()};
    for (const float size : bad)
    {
        SCOPED_TRACE(size);
        EXPECT_FALSE(Primitives::Plane(size, 1));
        EXPECT_FALSE(Primitives::Plane(1, size));
        EXPECT_FALSE(Primitives::Cylinder(size, 1));
        EXPECT_FALSE(Primitives::Cylinder(1, size));
        EXPECT_FALSE(Primitives::Cone(size, 1));
        EXPECT_FALSE(Primitives::Cone(1, size));
        EXPECT_FALSE(Primitives::Sphere(size));
        EXPECT_FALSE(Primitives::Box({0, 0, 0}, {1, size, 1}));
        EXPECT_FALSE(Primitives::Box({0, 0, -size}, {1, 1, 0}) && size <= 0.0f);
    }
}

} // namespace OV::Host::Test
