#include "orvane_host/present/detail/SunHoursMesh.h"

#include "orvane/math/Transform.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <random>
#include <utility>
#include <vector>

namespace OV::Host::Detail
{

namespace
{

using QGM::Point3d;
using QGM::Vector3d;

constexpr double kStep = 0.5;
constexpr double kLongest = 10.0;

/// A board above a floor of 8 by 8, and a day of 21 moments.
struct SunHoursMeshScene : ::testing::Test
{
    Scene scene;
    std::vector<SunMoment> moments;
    std::vector<SunHoursMesh::Face> faces;

    SunHoursMeshScene()
    {
        auto* const material = new Material("board");
        scene.AddMaterial(material);
        auto raw = std::make_shared<RawMesh>();
        raw->StartDescription();
        raw->SetPositionBuffer({{2, 0.6f, 2.3f}, {6, 0.6f, 2.3f}, {6, 0.6f, 5.1f}, {2, 0.6f, 5.1f}});
        raw->SetIndices({0, 1, 2, 0, 2, 3});
        raw->EndDescription(true);
        auto* const mesh = new Mesh(raw, &scene);
        material->AddMesh(mesh);
        auto* const node = new MeshNode(&scene);
        scene.GetRoot()->AddChild(node, false);
        mesh->AddNode(node);
        for (int i = 0; i <= 20; ++i)
        {
            // Never far from overhead, so that shadows have hard rims along X.
            const double angle = 1.2 + 0.74 * i / 20.0;
            moments.push_back({{std::cos(angle), std::sin(angle), 0.0}, i == 0 || i == 20 ? 0.25 : 0.5, 0.5});
        }
        const auto at = [](int x, int z) { return Point3d(0.5 * x, 0.0, 0.5 * z); };
        for (int x = 0; x < 16; ++x)
        {
            for (int z = 0; z < 16; ++z)
            {
                faces.push_back({{at(x, z), at(x, z + 1), at(x + 1, z + 1)}});
                faces.push_back({{at(x, z), at(x + 1, z + 1), at(x + 1, z)}});
            }
        }
    }
};

/// What cells show at a place of the floor; none where nothing covers it.
const SunMapCell* CellAt(const std::vector<SunMapCell>& cells, double x, double z, double& value)
{
    for (const SunMapCell& cell : cells)
    {
        for (int i = 1; i + 1 < cell.count; ++i)
        {
            const Vector& a = cell.corners[0];
            const Vector& b = cell.corners[i];
            const Vector& c = cell.corners[i + 1];
            const double area = double(b.x - a.x) * (c.z - a.z) - double(c.x - a.x) * (b.z - a.z);
            const double u = ((x - a.x) * (c.z - a.z) - (c.x - a.x) * (z - a.z)) / area;
            const double v = ((b.x - a.x) * (z - a.z) - (x - a.x) * (b.z - a.z)) / area;
            if (u >= 0.0 && v >= 0.0 && u + v <= 1.0)
            {
                value = cell.values[0] + u * (cell.values[i] - cell.values[0]) + v * (cell.values[i + 1] - cell.values[0]);
                return &cell;
            }
        }
    }
    return nullptr;
}

} // namespace

TEST_F(SunHoursMeshScene, ShowsTheHoursWithinAStepButOnRims)
{
    const SunHours hours(scene, moments);
    const SunHoursMesh mesh(faces, hours, kStep, 100000);
    const std::vector<SunMapCell> cells = mesh.Cells(0.0, kLongest);
    std::mt19937 random(3);
    std::uniform_real_distribution<double> across(0.01, 7.99);
    int off = 0;
    int dark = 0;
    constexpr int places = 4000;
    for (int i = 0; i < places; ++i)
    {
        const double x = across(random);
        const double z = across(random);
        double value = 0.0;
        ASSERT_NE(CellAt(cells, x, z, value), nullptr) << x << ", " << z;
        const double right = hours.At({{x, 0, z}, {0, 1, 0}});
        off += std::abs(value * kLongest - right) > kStep ? 1 : 0;
        dark += right < 1.0 ? 1 : 0;
    }
    EXPECT_GT(dark, places / 20);
    // The rims along X are 8 long; what is off may be a hundredth wide: a fiftieth of a face.
    EXPECT_LT(off, places * 8.0 * 0.01 / 64.0 * 2.0);
}

TEST_F(SunHoursMeshScene, HasNoGaps)
{
    const SunHours hours(scene, moments);
    const SunHoursMesh mesh(faces, hours, kStep, 100000);
    EXPECT_GT(mesh.GetTriangles().size(), 2 * faces.size());
    // Each side within the floor is that of two cells, run through either way.
    using Place = std::pair<float, float>;
    std::map<std::pair<Place, Place>, int> sides;
    double area = 0.0;
    for (const SunMapCell& cell : mesh.Cells(0.0, kLongest))
    {
        for (int i = 0; i < cell.count; ++i)
        {
            const Vector& a = cell.corners[i];
            const Vector& b = cell.corners[(i + 1) % cell.count];
            area += 0.5 * (double(a.z) * b.x - double(b.z) * a.x);
            const bool isRim = (a.x == b.x && (a.x == 0.0f || a.x == 8.0f)) || (a.z == b.z && (a.z == 0.0f || a.z == 8.0f));
            if (!isRim)
            {
                ++sides[{{a.x, a.z}, {b.x, b.z}}];
                --sides[{{b.x, b.z}, {a.x, a.z}}];
            }
        }
    }
    EXPECT_NEAR(area, 64.0, 1e-3);
    EXPECT_EQ(std::count_if(sides.begin(), sides.end(), [](const auto& side) { return side.second != 0; }), 0);
}

TEST_F(SunHoursMeshScene, HasNoMoreTrianglesThanItMay)
{
    const SunHours hours(scene, moments);
    const std::size_t most = faces.size() + 300;
    EXPECT_LE(SunHoursMesh(faces, hours, kStep, most).GetTriangles().size(), most);
    EXPECT_EQ(SunHoursMesh(faces, hours, kStep, 1).GetTriangles().size(), faces.size());
}

} // namespace OV::Host::Detail
