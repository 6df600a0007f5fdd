#pragma once

#include "orvane/base/Object.h"
#include "orvane/math/Sphere.h"
#include "orvane/math/Transform.h"
#include "orvane/math/Vector.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace OV::Test
{

/// What happened, in order.
using Log = std::vector<std::string>;

/// Object that does something as it dies.
class WatchedObject : public Object
{
public:
    explicit WatchedObject(std::function<void()> atDeath) : m_atDeath(std::move(atDeath)) {}

    ~WatchedObject() override { m_atDeath(); }

private:
    std::function<void()> m_atDeath;
};

inline Object* Counted(int& deaths)
{
    return new WatchedObject([&deaths] { ++deaths; });
}

inline Object* Logged(Log& log, std::string name)
{
    return new WatchedObject([&log, name = std::move(name)] { log.push_back(name); });
}

/// Sets, replaces, sets to itself and clears the object of a slot whose setter does not look
/// for the object that is there already.
template <class Get, class Set>
void ExpectOwningSlot(Get get, Set set)
{
    int deaths = 0;
    EXPECT_EQ(get(), nullptr);
    Object* const first = Counted(deaths);
    set(first);
    EXPECT_EQ(get(), first);
    EXPECT_EQ(deaths, 0);

    Object* const second = Counted(deaths);
    set(second);
    EXPECT_EQ(get(), second);
    EXPECT_EQ(deaths, 1);

    set(second);
    EXPECT_EQ(get(), nullptr) << "given its own object";
    EXPECT_EQ(deaths, 2);

    bool wasEmpty = false;
    set(new WatchedObject([&] { wasEmpty = get() == nullptr; }));
    set(nullptr);
    EXPECT_EQ(get(), nullptr);
    EXPECT_TRUE(wasEmpty) << "while the object died";
}

/// Reaches what nodes keep for their subclasses.
struct NodeParts : Node
{
    static unsigned UpdateID(const Node& node) { return node.*&NodeParts::updateID; }
    static bool IsMatrixDirty(const Node& node) { return node.*&NodeParts::globalMatrixDirty; }
    static auto& MatrixDirty(Node& node) { return node.*&NodeParts::globalMatrixDirty; }
    /// Without telling anybody.
    static Transform& Local(Node& node) { return node.*&NodeParts::local; }
    static Transform& Global(Node& node) { return node.*&NodeParts::global; }
};

struct CameraParts : CameraNode
{
    static bool& FovOnSmallerSide(CameraNode& camera) { return camera.*&CameraParts::fovOnSmallerSide; }
};

/// Scene with its protected operations open.
class OpenScene : public Scene
{
public:
    using Scene::AddLightNode;
    using Scene::AddLine;
    using Scene::AddMesh;
    using Scene::defaultCamera;
    using Scene::ProcessNearFar;
    using Scene::ProcessZOrderedDrawItems;
    using Scene::RemoveLightNode;
    using Scene::RemoveLine;
    using Scene::RemoveMesh;
    using Scene::textureStats;
    using Scene::UpdateCulling;
    using Scene::zOrderedDrawItems;
};

/// Reaches the same of any scene.
struct SceneParts : Scene
{
    static CameraNode* DefaultCamera(const Scene& scene) { return scene.*&SceneParts::defaultCamera; }
};

inline Transform At(float x, float y, float z)
{
    Transform place;
    place.SetPosition(Vector(x, y, z));
    return place;
}

inline Transform Scaled(float x, float y, float z)
{
    Transform place;
    place.SetScale(Vector(x, y, z));
    return place;
}

/// Turned about Y, counter-clockwise from above: a quarter turn takes Z to X and X to -Z.
inline Transform TurnedAboutY(double angle)
{
    QGM::Transf3d turn;
    turn.setValue(0, 0, std::cos(angle));
    turn.setValue(0, 2, std::sin(angle));
    turn.setValue(2, 0, -std::sin(angle));
    turn.setValue(2, 2, std::cos(angle));
    Transform result;
    result.SetTransf3d(turn);
    return result;
}

inline Transform Product(const Transform& a, const Transform& b)
{
    Transform result;
    result.Multiply(a, b);
    return result;
}

inline Transform Inverse(const Transform& t)
{
    Transform result;
    result.Invert(t);
    return result;
}

constexpr double quarterTurn = 1.57079632679489661923;

inline ::testing::AssertionResult IsNear(const Vector& actual, const Vector& expected,
                                         float tolerance = 1e-5f)
{
    const auto isClose = [tolerance](float a, float b) { return std::fabs(a - b) <= tolerance; };
    if (isClose(actual.x, expected.x) && isClose(actual.y, expected.y) && isClose(actual.z, expected.z))
    {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "(" << actual.x << ", " << actual.y << ", " << actual.z
                                         << ") instead of (" << expected.x << ", " << expected.y
                                         << ", " << expected.z << ")";
}

/// Positions of the first places of a transform; the whole comparison is Transform's own.
inline ::testing::AssertionResult IsSame(const Transform& actual, const Transform& expected)
{
    if (actual == expected)
    {
        return ::testing::AssertionSuccess();
    }
    const Vector a = actual.GetPosition();
    const Vector b = expected.GetPosition();
    return ::testing::AssertionFailure()
           << "another transform, at (" << a.x << ", " << a.y << ", " << a.z << ") instead of (" << b.x
           << ", " << b.y << ", " << b.z << ")";
}

/// Geometry of these points and a box around them.
inline std::shared_ptr<RawMesh> Points(std::initializer_list<Vector> points)
{
    auto geometry = std::make_shared<RawMesh>();
    geometry->SetPositionBuffer(std::vector<Vector>(points));
    geometry->EndDescription(true);
    return geometry;
}

/// Geometry without points that claims to fill a sphere.
inline std::shared_ptr<RawMesh> Ball(const Vector& center, float radius)
{
    auto geometry = std::make_shared<RawMesh>();
    geometry->sphere.center = center;
    geometry->sphere.radius = radius;
    return geometry;
}

} // namespace OV::Test
