#pragma once

#include "tests/scene/SceneDoubles.h"

namespace OV::Test
{

constexpr auto perspective = CameraNode::Perspective;
constexpr auto orthographic = CameraNode::Orthographic;

/// A host's mapping that notes what it is asked.
class NotedScreen : public IScreen
{
public:
    explicit NotedScreen(int* deaths = nullptr) : m_deaths(deaths) {}

    ~NotedScreen() override
    {
        if (m_deaths)
        {
            ++*m_deaths;
        }
    }

    void WorldToScreen(const Vector& world, float width, float height, Vector& out) override
    {
        ++calls;
        lastWorld = world;
        lastWidth = width;
        lastHeight = height;
        out.Set(7, 8, 9);
    }

    void ScreenToRay(float x, float y, Vector& start, Vector& end, bool fovOnSmallerSide) override
    {
        ++calls;
        lastX = x;
        lastY = y;
        lastFlag = fovOnSmallerSide;
        start.Set(1, 2, 3);
        end.Set(4, 5, 6);
    }

    int calls = 0;
    Vector lastWorld;
    float lastWidth = 0, lastHeight = 0, lastX = 0, lastY = 0;
    bool lastFlag = false;

private:
    int* m_deaths;
};

/// A camera at (10, 20, 30) turned a quarter about Y: it looks down -X, and its right is -Z.
class TurnedCamera : public ::testing::Test
{
protected:
    TurnedCamera()
    {
        camera.SetFOV(std::atan(0.5f));
        camera.SetDistanceToTarget(40.0f);
        camera.SetNearFar(1.0f, 100.0f);
        camera.SetGlobal(Product(At(10, 20, 30), TurnedAboutY(quarterTurn)));
        camera.UpdateGraph();
    }

    /// What lies forward, right and up of the camera.
    static Vector World(float forward, float right, float up)
    {
        return Vector(10.0f - forward, 20.0f + up, 30.0f - right);
    }

    static Vector Direction(float forward, float right, float up)
    {
        return Vector(-forward, up, -right);
    }

    CameraNode camera{nullptr};
};

inline void ExpectNearFar(const CameraNode& camera, float nearExpected, float farExpected)
{
    float nearValue = -1.0f;
    float farValue = -1.0f;
    camera.GetNearFar(nearValue, farValue);
    EXPECT_EQ(nearValue, nearExpected);
    EXPECT_EQ(farValue, farExpected);
}

} // namespace OV::Test
