#include "orvane_host/geometry/RayCaster.h"

#include "orvane/math/Transform.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/NodeMaterial.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"
#include "tests/support/SmallStack.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <utility>
#include <vector>

namespace OV::Host::Test
{

namespace
{

using QGM::Point3d;
using QGM::Vector3d;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct Triangles
{
    std::vector<Point3d> points;
    std::vector<std::uint32_t> indices;

    void Add(const Point3d& a, const Point3d& b, const Point3d& c)
    {
        for (const Point3d& point : {a, b, c})
        {
            indices.push_back(static_cast<std::uint32_t>(points.size()));
            points.push_back(point);
        }
    }
};

struct Exact
{
    long double x, y, z;

    template <class From>
    explicit Exact(const From& from) : x(from.x), y(from.y), z(from.z)
    {
    }
    Exact(long double px, long double py, long double pz) : x(px), y(py), z(pz) {}

    Exact operator-(const Exact& o) const { return {x - o.x, y - o.y, z - o.z}; }
    long double Dot(const Exact& o) const { return x * o.x + y * o.y + z * o.z; }
    Exact Cross(const Exact& o) const { return {y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x}; }
};

/// What trying every triangle gives.
struct Tried
{
    bool clear = true; ///< rounding decides nothing
    std::vector<std::pair<long double, std::size_t>> hits;
};

Tried TryAll(const Triangles& triangles, const Point3d& origin, const Vector3d& direction, double from, double to)
{
    constexpr long double margin = 1e-9L;
    Tried tried;
    const Exact d(direction);
    for (std::size_t i = 0; i + 2 < triangles.indices.size(); i += 3)
    {
        const Exact a(triangles.points[triangles.indices[i]]);
        const Exact ab = Exact(triangles.points[triangles.indices[i + 1]]) - a;
        const Exact ac = Exact(triangles.points[triangles.indices[i + 2]]) - a;
        const Exact p = d.Cross(ac);
        const long double determinant = ab.Dot(p);
        const Exact s = Exact(origin) - a;
        const Exact q = s.Cross(ab);
        const long double u = s.Dot(p) / determinant;
        const long double v = d.Dot(q) / determinant;
        const long double t = ac.Dot(q) / determinant;
        const long double least = std::min({u, v, 1.0L - u - v});
        const bool inRange = t >= from && t <= to;
        const bool nearEnds = std::fabs(t - from) < margin || std::fabs(t - to) < margin;
        tried.clear = tried.clear && std::fabs(least) > margin && !(least > 0.0L && nearEnds);
        if (least >= 0.0L && inRange)
        {
            tried.hits.emplace_back(t, i / 3);
        }
    }
    std::sort(tried.hits.begin(), tried.hits.end());
    return tried;
}

class Dice
{
public:
    explicit Dice(unsigned int seed) : m_random(seed) {}

    double Number(double low, double high)
    {
        return low + (high - low) * (static_cast<double>(m_random()) / 4294967295.0);
    }
    Point3d Point(double size) { return {Number(-size, size), Number(-size, size), Number(-size, size)}; }
    Vector3d Direction(double size) { return {Number(-size, size), Number(-size, size), Number(-size, size)}; }

private:
    std::mt19937 m_random;
};

Triangles Soup(Dice& dice, int count, double size)
{
    Triangles soup;
    for (int i = 0; i < count; ++i)
    {
        const Point3d at = dice.Point(10.0);
        const auto corner = [&]
        {
            const Point3d by = dice.Point(size);
            return Point3d(at.x + by.x, at.y + by.y, at.z + by.z);
        };
        const Point3d a = corner();
        const Point3d b = corner();
        soup.Add(a, b, corner());
    }
    return soup;
}

/// A closed, bumpy shell about a middle, of triangles that share their corners.
Triangles Shell(const Point3d& middle, double radius, int rings, int sectors)
{
    Triangles shell;
    Dice dice(7);
    for (int ring = 0; ring <= rings; ++ring)
    {
        const double polar = 3.14159265358979 * ring / rings;
        for (int sector = 0; sector < sectors; ++sector)
        {
            const double turn = 6.28318530717959 * sector / sectors;
            const bool isPole = ring == 0 || ring == rings;
            const double r = radius * (isPole ? 1.0 : dice.Number(0.8, 1.2));
            const double wide = isPole ? 0.0 : r * std::sin(polar);
            shell.points.emplace_back(middle.x + wide * std::cos(turn), middle.y + r * std::cos(polar),
                                      middle.z + wide * std::sin(turn));
        }
    }
    const auto at = [&](int ring, int sector)
    { return static_cast<std::uint32_t>(ring * sectors + sector % sectors); };
    for (int ring = 0; ring < rings; ++ring)
    {
        for (int sector = 0; sector < sectors; ++sector)
        {
            for (const std::uint32_t corner :
                 {at(ring, sector), at(ring, sector + 1), at(ring + 1, sector), at(ring, sector + 1),
                  at(ring + 1, sector + 1), at(ring + 1, sector)})
            {
                shell.indices.push_back(corner);
            }
        }
    }
    return shell;
}

Vector3d Towards(const Point3d& from, const Point3d& to)
{
    return {to.x - from.x, to.y - from.y, to.z - from.z};
}

Point3d Between(const Point3d& a, const Point3d& b, double t)
{
    return {a.x + t * (b.x - a.x), a.y + t * (b.y - a.y), a.z + t * (b.z - a.z)};
}

std::shared_ptr<RawMesh> Describe(std::vector<Vector> positions, std::vector<unsigned short> indices)
{
    auto raw = std::make_shared<RawMesh>();
    raw->StartDescription();
    raw->SetPositionBuffer(std::move(positions));
    raw->SetIndices(std::move(indices));
    raw->EndDescription(true);
    return raw;
}

/// A square of two triangles in the plane y = 0, its front up.
std::shared_ptr<RawMesh> Square()
{
    return Describe({{-1, 0, -1}, {-1, 0, 1}, {1, 0, 1}, {1, 0, -1}}, {0, 1, 2, 0, 2, 3});
}

struct RayCasterScene : ::testing::Test
{
    Scene scene;
    Material* material = new Material("painted");

    RayCasterScene() { scene.AddMaterial(material); }

    Mesh* AddMesh(const std::shared_ptr<RawMesh>& raw, bool withMaterial = true)
    {
        auto* const mesh = new Mesh(raw, &scene);
        if (withMaterial)
        {
            material->AddMesh(mesh);
        }
        return mesh;
    }

    MeshNode* AddNode(Mesh& mesh, const Vector& position)
    {
        auto* const node = new MeshNode(&scene);
        scene.GetRoot()->AddChild(node, false);
        Transform place;
        place.SetPosition(position);
        node->SetGlobal(place);
        mesh.AddNode(node);
        return node;
    }
};

const Vector3d kDown(0, -1, 0);
const Vector3d kUp(0, 1, 0);

} // namespace

TEST(RayCaster, FindsWhatTryingEveryTriangleFinds)
{
    Dice dice(1);
    int clear = 0;
    int hits = 0;
    for (const double size : {0.3, 3.0, 30.0})
    {
        const Triangles soup = Soup(dice, 400, size);
        const RayCaster caster(soup.points, soup.indices);
        ASSERT_EQ(caster.GetTriangleCount(), 400u);
        for (int i = 0; i < 700; ++i)
        {
            const Point3d origin = dice.Point(15.0);
            const Vector3d direction = i % 2 == 0 ? dice.Direction(2.0) : Towards(origin, dice.Point(10.0));
            const double from = i % 5 == 0 ? dice.Number(-3.0, 1.0) : 0.0;
            const double to = i % 7 == 0 ? dice.Number(0.0, 4.0) : kInfinity;
            const Tried tried = TryAll(soup, origin, direction, from, to);
            if (!tried.clear)
            {
                continue;
            }
            ++clear;
            const std::optional<RayHit> hit = caster.Cast(origin, direction, from, to);
            ASSERT_EQ(hit.has_value(), !tried.hits.empty()) << size << ", " << i;
            EXPECT_EQ(caster.IsBlocked(origin, direction, from, to), hit.has_value()) << size << ", " << i;
            const std::vector<RayHit> all = caster.CastThrough(origin, direction, from, to);
            ASSERT_EQ(all.size(), tried.hits.size()) << size << ", " << i;
            for (std::size_t k = 0; k < all.size(); ++k)
            {
                EXPECT_EQ(all[k].triangle, tried.hits[k].second) << size << ", " << i;
                EXPECT_NEAR(all[k].distance, static_cast<double>(tried.hits[k].first), 1e-9) << size << ", " << i;
            }
            if (hit)
            {
                ++hits;
                EXPECT_EQ(hit->triangle, tried.hits[0].second) << size << ", " << i;
                EXPECT_EQ(hit->distance, all[0].distance);
            }
        }
    }
    EXPECT_GE(clear, 2000);
    EXPECT_GE(hits, 700);
}

TEST(RayCaster, TellsTheSharesOfTheCornersInAPlace)
{
    Triangles one;
    one.Add({1, 2, 3}, {4, -1, 5}, {2, 6, -3});
    const RayCaster caster(one.points, one.indices);
    const double first = 0.5, second = 0.2, third = 0.3;
    const Point3d place(1 * first + 4 * second + 2 * third, 2 * first - 1 * second + 6 * third,
                        3 * first + 5 * second - 3 * third);
    for (const Point3d& origin : {Point3d(10, 1, 1), Point3d(-7, 2, -3), Point3d(0, 30, 4)})
    {
        const std::optional<RayHit> hit = caster.Cast(origin, Towards(origin, place));
        ASSERT_TRUE(hit);
        EXPECT_NEAR(hit->distance, 1.0, 1e-12);
        EXPECT_NEAR(hit->second, second, 1e-12);
        EXPECT_NEAR(hit->third, third, 1e-12);
        EXPECT_EQ(hit->node, nullptr);
        EXPECT_EQ(hit->mesh, nullptr);
    }
}

TEST(RayCaster, LetsNothingThroughAtCornersAndEdgesOfAClosedShell)
{
    for (const Point3d& middle : {Point3d(0, 0, 0), Point3d(1e6, -2e5, 3e6)})
    {
        const Triangles shell = Shell(middle, 5.0, 24, 36);
        const RayCaster caster(shell.points, shell.indices);
        Dice dice(3);
        int leaks = 0;
        int rays = 0;
        for (const double aside : {0.0, 1.0})
        {
            const Point3d by = dice.Point(aside);
            const Point3d origin(middle.x + by.x, middle.y + by.y, middle.z + by.z);
            const auto look = [&](const Point3d& at)
            {
                ++rays;
                leaks += caster.IsBlocked(origin, Towards(origin, at)) ? 0 : 1;
                leaks += caster.Cast(origin, Towards(origin, at)) ? 0 : 1;
            };
            for (std::size_t i = 0; i < shell.indices.size(); i += 3)
            {
                for (std::size_t k = 0; k < 3; ++k)
                {
                    const Point3d& a = shell.points[shell.indices[i + k]];
                    const Point3d& b = shell.points[shell.indices[i + (k + 1) % 3]];
                    look(a);
                    look(Between(a, b, 0.5));
                    look(Between(a, b, dice.Number(0.0, 1.0)));
                }
            }
        }
        EXPECT_GE(rays, 10000);
        EXPECT_EQ(leaks, 0) << middle.x;
    }
}

TEST(RayCaster, LetsNothingThroughBetweenSquaresOfAFloor)
{
    constexpr int across = 20;
    Triangles floor;
    for (int x = 0; x <= across; ++x)
    {
        for (int z = 0; z <= across; ++z)
        {
            floor.points.emplace_back(0.1 * x, 0.0, 0.1 * z);
        }
    }
    for (std::uint32_t x = 0; x < across; ++x)
    {
        for (std::uint32_t z = 0; z < across; ++z)
        {
            const std::uint32_t a = x * (across + 1) + z;
            const std::uint32_t b = a + across + 1;
            floor.indices.insert(floor.indices.end(), {a, a + 1, b + 1, a, b + 1, b});
        }
    }
    const RayCaster caster(floor.points, floor.indices);
    for (const Point3d& point : floor.points)
    {
        const Point3d above(point.x, 3.0, point.z);
        EXPECT_TRUE(caster.IsBlocked(above, kDown)) << point.x << ", " << point.z;
        const std::optional<RayHit> hit = caster.Cast(above, kDown);
        ASSERT_TRUE(hit) << point.x << ", " << point.z;
        EXPECT_EQ(hit->distance, 3.0);
    }
    // Beside it, by the least that there is.
    const double outside = std::nextafter(floor.points.back().x, kInfinity);
    EXPECT_FALSE(caster.IsBlocked(Point3d(outside, 3.0, 0.5), kDown));
    EXPECT_FALSE(caster.IsBlocked(Point3d(0.5, 3.0, outside), kDown));
    EXPECT_FALSE(caster.IsBlocked(Point3d(-1e-100, 3.0, 0.5), kDown));
}

TEST(RayCaster, CountsBothEndsOfTheRange)
{
    Triangles one;
    one.Add({-1, 0, -1}, {-1, 0, 3}, {3, 0, -1});
    const RayCaster caster(one.points, one.indices);
    const Point3d above(0, 2, 0);
    EXPECT_TRUE(caster.IsBlocked(above, kDown, 0.0, 2.0));
    EXPECT_FALSE(caster.IsBlocked(above, kDown, 0.0, std::nextafter(2.0, 0.0)));
    EXPECT_TRUE(caster.IsBlocked(above, kDown, 2.0, 5.0));
    EXPECT_FALSE(caster.IsBlocked(above, kDown, std::nextafter(2.0, 3.0), 5.0));
    EXPECT_FALSE(caster.IsBlocked(above, kUp));
    EXPECT_TRUE(caster.IsBlocked(above, kUp, -2.0));
    // A distance is as many lengths of the direction.
    EXPECT_TRUE(caster.IsBlocked(above, Vector3d(0, -4, 0), 0.0, 0.5));
    EXPECT_EQ(caster.Cast(above, Vector3d(0, -4, 0))->distance, 0.5);
    EXPECT_FALSE(caster.IsBlocked(above, kDown, 3.0, 1.0));
    EXPECT_TRUE(caster.Cast(above, kDown, 0.0, 2.0));
    EXPECT_EQ(caster.CastThrough(above, kDown, 0.0, 2.0).size(), 1u);
    EXPECT_TRUE(caster.CastThrough(above, kDown, 0.0, 1.9).empty());
}

TEST(RayCaster, MeetsNothingByNumbersThatAreNone)
{
    Triangles some;
    some.Add({-1, 0, -1}, {-1, 0, 3}, {3, 0, -1});
    some.Add({-1, 0, -1}, {-1, kNaN, 3}, {3, 0, -1});
    some.Add({-1, 0, -1}, {-1, kInfinity, 3}, {3, 0, -1});
    some.Add({-1, 1, -1}, {3, 1, -1}, {1, 1, -1});
    some.indices.insert(some.indices.end(), {0, 1, 4000000000u, 0, 1});
    const RayCaster caster(some.points, some.indices);
    const Point3d above(0, 2, 0);
    ASSERT_EQ(caster.CastThrough(above, kDown).size(), 1u);
    EXPECT_EQ(caster.CastThrough(above, kDown)[0].triangle, 0u);
    EXPECT_FALSE(caster.IsBlocked(Point3d(0, 2, -1), Vector3d(0, -1e-320, 0)));
    for (const double bad : {kNaN, kInfinity})
    {
        EXPECT_FALSE(caster.IsBlocked(Point3d(0, bad, 0), kDown)) << bad;
        EXPECT_FALSE(caster.IsBlocked(above, Vector3d(bad, -1, 0))) << bad;
        EXPECT_FALSE(caster.IsBlocked(above, kDown, bad)) << bad;
    }
    EXPECT_FALSE(caster.IsBlocked(above, kDown, 0.0, kNaN));
    EXPECT_FALSE(caster.IsBlocked(above, Vector3d(0, 0, 0)));
    EXPECT_FALSE(caster.Cast(above, Vector3d(0, 0, 0)));
    EXPECT_FALSE(RayCaster(std::vector<Point3d>(), {}).Cast(above, kDown));
}

TEST(RayCaster, OfEquallyNearTrianglesTheFirstCounts)
{
    Triangles many;
    for (int i = 0; i < 50; ++i)
    {
        many.Add({-1, 0, -1}, {-1, 0, 3}, {3, 0, -1});
    }
    const RayCaster caster(many.points, many.indices);
    EXPECT_EQ(caster.Cast(Point3d(0.1, 2, 0.2), kDown)->triangle, 0u);
    const std::vector<RayHit> all = caster.CastThrough(Point3d(0.1, 2, 0.2), kDown);
    ASSERT_EQ(all.size(), 50u);
    for (std::size_t i = 0; i < all.size(); ++i)
    {
        EXPECT_EQ(all[i].triangle, i);
    }
}

TEST(RayCaster, NeedsNoStackForTreesThatDividingBadlyMakesDeep)
{
    // Each triangle is twice as far out and twice as large as the one before: cuts by cost take one
    // off at a time.
    Triangles growing;
    for (int i = -1000; i < 1000; ++i)
    {
        const double size = std::ldexp(1.0, i);
        growing.Add({size, 0, -size}, {size, 0, size}, {1.5 * size, size, 0});
    }
    for (int i = 0; i < 200000; ++i)
    {
        growing.Add({-1.0 - i, 0, -1}, {-1.0 - i, 0, 1}, {-1.0 - i, 1, 0});
    }
    OV::Test::OnASmallStack(
        [&]
        {
            const RayCaster caster(growing.points, growing.indices);
            for (int i = -300; i < 300; i += 7)
            {
                const double size = std::ldexp(1.0, i);
                const std::optional<RayHit> hit =
                    caster.Cast(Point3d(1.25 * size, 2 * size, 0.1 * size), Vector3d(0, -size, 0));
                ASSERT_TRUE(hit) << i;
                EXPECT_EQ(hit->triangle, static_cast<std::size_t>(i + 1000));
            }
            EXPECT_EQ(caster.Cast(Point3d(-150000.5, 0.1, 0), Vector3d(1, 0, 0))->triangle, 151999u);
            EXPECT_FALSE(caster.Cast(Point3d(-5, 2, 0), Vector3d(-1, 0, 0)));
        });
}

TEST_F(RayCasterScene, KnowsNodeMeshAndTriangleInWorldSpace)
{
    Mesh* const square = AddMesh(Square());
    Mesh* const other = AddMesh(Square());
    MeshNode* const low = AddNode(*square, {0, 0, 0});
    MeshNode* const high = AddNode(*square, {0.5, 4, 0});
    other->AddNode(high);
    const RayCaster caster(scene);
    EXPECT_EQ(caster.GetTriangleCount(), 6u);
    // Off the diagonal that the two triangles of a square share, on either side.
    const std::optional<RayHit> top = caster.Cast(Point3d(0.2, 10, -0.5), kDown);
    ASSERT_TRUE(top);
    EXPECT_EQ(top->distance, 6.0);
    EXPECT_EQ(top->node, high);
    EXPECT_EQ(top->mesh, square) << "the first of the two meshes that lie in one place";
    EXPECT_EQ(top->triangle, 1u);
    EXPECT_EQ(caster.Cast(Point3d(0.2, 10, 0.5), kDown)->triangle, 0u);
    const std::optional<RayHit> bottom = caster.Cast(Point3d(-0.8, 10, 0.5), kDown);
    ASSERT_TRUE(bottom);
    EXPECT_EQ(bottom->node, low);
    EXPECT_EQ(bottom->distance, 10.0);
    EXPECT_EQ(caster.CastThrough(Point3d(0.2, 10, 0.5), kDown).size(), 3u);
    EXPECT_FALSE(caster.IsBlocked(Point3d(1.6, 10, 0), kDown));
}

TEST_F(RayCasterScene, LeavesOutWhatIsNotDrawnButNotWhatIsOutOfTheView)
{
    Mesh* const square = AddMesh(Square());
    Mesh* const bare = AddMesh(Square(), false);
    AddNode(*square, {0, 0, 0})->SetFlags(NodeFlagHidden, false);
    AddNode(*bare, {10, 0, 0});
    AddNode(*square, {20, 0, 0})->SetFlags(NodeFlagCulled, false);
    MeshNode* const dressed = AddNode(*bare, {30, 0, 0});
    auto* const own = new NodeMaterial;
    scene.AddMaterial(own);
    own->AddNode(dressed);
    const RayCaster caster(scene);
    EXPECT_FALSE(caster.IsBlocked(Point3d(0, 1, 0), kDown));
    EXPECT_FALSE(caster.IsBlocked(Point3d(10, 1, 0), kDown));
    EXPECT_TRUE(caster.IsBlocked(Point3d(20, 1, 0), kDown));
    EXPECT_TRUE(caster.IsBlocked(Point3d(30, 1, 0), kDown));
    const RayCaster every(scene, [](const MeshNode&, const Mesh&) { return RayCaster::Faces::Both; });
    EXPECT_EQ(every.GetTriangleCount(), 8u);
    EXPECT_TRUE(every.IsBlocked(Point3d(0, 1, 0), kDown));
}

TEST_F(RayCasterScene, StopsRaysAtFrontsAloneWhereThatIsWanted)
{
    Mesh* const square = AddMesh(Square());
    AddNode(*square, {0, 0, 0});
    MeshNode* const turned = AddNode(*square, {10, 0, 0});
    QGM::Transf3d leftToRight;
    leftToRight.setValue(0, 0, -1.0);
    leftToRight.setValue(0, 3, 10.0);
    Transform mirror;
    mirror.SetTransf3d(leftToRight);
    turned->SetGlobal(mirror);
    const RayCaster fronts(scene, [](const MeshNode&, const Mesh&) { return RayCaster::Faces::Front; });
    EXPECT_TRUE(fronts.IsBlocked(Point3d(0.1, 1, 0.2), kDown));
    EXPECT_FALSE(fronts.IsBlocked(Point3d(0.1, -1, 0.2), kUp));
    EXPECT_FALSE(fronts.IsBlocked(Point3d(10.1, 1, 0.2), kDown)) << "a mirror turns the order of the corners round";
    EXPECT_TRUE(fronts.IsBlocked(Point3d(10.1, -1, 0.2), kUp));
    // Along each axis and against it.
    for (int axis = 0; axis < 3; ++axis)
    {
        Triangles one;
        const auto turn = [axis](double x, double y, double z)
        { return axis == 0 ? Point3d(y, z, x) : axis == 1 ? Point3d(x, y, z) : Point3d(z, x, y); };
        one.Add(turn(-1, 0, -1), turn(-1, 0, 3), turn(3, 0, -1));
        Scene own;
        auto* const painted = new Material("painted");
        own.AddMaterial(painted);
        std::vector<Vector> positions;
        for (const Point3d& p : one.points)
        {
            positions.emplace_back(static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z));
        }
        auto* const mesh = new Mesh(Describe(positions, {0, 1, 2}), &own);
        painted->AddMesh(mesh);
        auto* const node = new MeshNode(&own);
        own.GetRoot()->AddChild(node, false);
        mesh->AddNode(node);
        const RayCaster caster(own, [](const MeshNode&, const Mesh&) { return RayCaster::Faces::Front; });
        const Point3d down = turn(0, -1, 0);
        const Point3d up = turn(0, 1, 0);
        EXPECT_TRUE(caster.IsBlocked(turn(0, 2, 0), Vector3d(down.x, down.y, down.z))) << axis;
        EXPECT_FALSE(caster.IsBlocked(turn(0, -2, 0), Vector3d(up.x, up.y, up.z))) << axis;
    }
}

TEST_F(RayCasterScene, KeepsTheTrianglesAsTheyWere)
{
    Mesh* const square = AddMesh(Square());
    MeshNode* const node = AddNode(*square, {0, 0, 0});
    RayCaster caster(scene);
    node->SetFlags(NodeFlagHidden, false);
    EXPECT_TRUE(caster.IsBlocked(Point3d(0, 1, 0), kDown));
    const RayCaster moved = std::move(caster);
    EXPECT_TRUE(moved.IsBlocked(Point3d(0, 1, 0), kDown));
    caster = RayCaster(scene);
    EXPECT_FALSE(caster.IsBlocked(Point3d(0, 1, 0), kDown));
}

} // namespace OV::Host::Test
