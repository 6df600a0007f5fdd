#include "orvane_host/import/ModelImporter.h"
#include "orvane_host/present/Picking.h"
#include "orvane_host/present/PresentationRenderer.h"
#include "orvane_host/view/ViewFit.h"
#include "orvane_host/present/detail/PickDrawing.h"
#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/platform/ESTextureLoader.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"
#include "tests/effects/EffectSettingsGuard.h"
#include "tests/orvane_host/present/RayCaster.h"
#include "tests/orvane_host/import/TinyModels.h"
#include "tests/support/GLFixture.h"

#include <GL/gl.h>

#include <glm/geometric.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <ostream>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

using namespace OV;
using namespace OV::Host;
using namespace OV::Test;

namespace
{

constexpr int kWidth = 1280;
constexpr int kHeight = 720;

/// Where the house is looked at from.
struct View
{
    const char* label;
    bool orthographic;
    /// Used where it isn't the same as the target; else all of the house is in the view.
    Vector eye;
    Vector target;
};

std::ostream& operator<<(std::ostream& stream, const View& view)
{
    return stream << view.label;
}

/// The rays through pixels of a camera, and how fine its depth is.
class Lens
{
public:
    explicit Lens(const CameraNode& camera) : m_perspective(camera.GetProjection() == CameraNode::Perspective)
    {
        const auto& m = camera.GetGlobal().GetTransf3d().m;
        const auto column = [&](int index) { return glm::dvec3(m[0][index], m[1][index], m[2][index]); };
        m_right = glm::normalize(column(0));
        m_up = glm::normalize(column(1));
        m_back = glm::normalize(column(2));
        m_eye = column(3);
        float nearDistance = 0.0f;
        float farDistance = 0.0f;
        camera.GetNearFar(nearDistance, farDistance);
        m_near = nearDistance;
        m_far = farDistance;
        // The height of a view that is wider than high.
        const double tangent = std::tan(static_cast<double>(camera.GetFOV()));
        m_half = m_perspective ? tangent : tangent * camera.GetDistanceToTarget();
        glGetIntegerv(GL_SUBPIXEL_BITS, &m_subpixelBits);
    }

    /// Distances on it count along the line of sight.
    Ray RayAt(int x, int y) const
    {
        const double u = m_half * (2.0 * (x + 0.5) - kWidth) / kHeight;
        const double v = m_half * (kHeight - 2.0 * (y + 0.5)) / kHeight;
        const glm::dvec3 aside = u * m_right + v * m_up;
        return m_perspective ? Ray{m_eye, aside - m_back, m_near, m_far} : Ray{m_eye + aside, -m_back, m_near, m_far};
    }

    /// How far off a distance may be that comes from the depth buffer: a few roundings on the way
    /// there, and vertices off by the grid within a pixel that GL puts them on.
    /// @param change of the distance from pixel to pixel.
    double ToleranceAt(double distance, double change) const
    {
        constexpr double roundings = 4.0;
        return roundings * StepAt(distance) + std::ldexp(change, -m_subpixelBits);
    }

private:
    /// What one step of a depth of 24 bits is at a distance.
    double StepAt(double distance) const
    {
        constexpr double step = 1.0 / (1 << 24);
        return m_perspective ? step * distance * distance * (m_far - m_near) / (m_far * m_near)
                             : step * (m_far - m_near);
    }

    bool m_perspective;
    glm::dvec3 m_right;
    glm::dvec3 m_up;
    glm::dvec3 m_back;
    glm::dvec3 m_eye;
    double m_near = 0.0;
    double m_far = 0.0;
    double m_half = 0.0;
    GLint m_subpixelBits = 0;
};

struct PickingModelTest : GLFixture, ::testing::WithParamInterface<View>
{
    EffectSettingsGuard settings;
    Platform::Linux::ESTextureLoader loader;
    AppContext app;
    PresentationRenderer renderer{&loader, app.GetContext()->GetRenderCapabilities()};
    Scene* scene = nullptr;
    CameraNode* camera = nullptr;

    PickingModelTest()
    {
        ImportResult result = ModelImporter::Import(kTestModels + "IFC/AC14-FZK-Haus.ifc");
        if (!result)
        {
            throw std::runtime_error(result.error.Line());
        }
        ViewFitOptions options;
        options.aspect = static_cast<float>(kWidth) / kHeight;
        options.orthographic = GetParam().orthographic;
        camera = result.scene->GetCameraNode();
        const Vector& boxMin = result.report.boxMin;
        const Vector& boxMax = result.report.boxMax;
        const Vector& eye = GetParam().eye;
        if (!ViewFit::Look(*camera, eye, GetParam().target, Vector(0, 1, 0), boxMin, boxMax, options))
        {
            ViewFit::Frame(*camera, boxMin, boxMax, NamedView::Iso, options);
        }
        scene = result.scene.get();
        app.GetContext()->SetScene(std::move(result.scene));
        app.SetScreenSize(kWidth, kHeight);
        renderer.Resize(kWidth, kHeight);
        app.Update(0.0f);
    }

    ~PickingModelTest() override { app.Suspend(&renderer); }

    /// The same pixels in every run.
    static std::vector<std::pair<int, int>> RandomPixels(int count)
    {
        std::mt19937 random(20240917);
        std::vector<std::pair<int, int>> pixels;
        for (int i = 0; i < count; ++i)
        {
            const int x = 1 + static_cast<int>(random() % (kWidth - 2));
            const int y = 1 + static_cast<int>(random() % (kHeight - 2));
            pixels.emplace_back(x, y);
        }
        return pixels;
    }

    /// The rays of a pixel and its neighbours, the pixel's own in the middle.
    static std::array<Ray, 9> RaysAbout(const Lens& lens, int x, int y)
    {
        std::array<Ray, 9> rays;
        for (int i = 0; i < 9; ++i)
        {
            rays[static_cast<std::size_t>(i)] = lens.RayAt(x + i % 3 - 1, y + i / 3 - 1);
        }
        return rays;
    }
};

constexpr std::size_t kMiddle = 4;

/// What a ray caster says of a pixel.
struct Expectation
{
    /// All neighbours see the same, and nothing else is so near to it that rounding decides.
    bool clear = false;
    RayHit hit;
    double tolerance = 0.0;
};

Expectation Expect(const RayCaster& caster, const Lens& lens, const std::array<Ray, 9>& rays)
{
    Expectation expected;
    expected.hit = caster.Cast(rays[kMiddle]);
    double change = 0.0;
    for (const Ray& ray : rays)
    {
        const RayHit hit = caster.Cast(ray);
        if (!hit.IsSame(expected.hit))
        {
            return expected;
        }
        change = std::max(change, std::abs(hit.distance - expected.hit.distance));
    }
    if (!expected.hit.mesh)
    {
        expected.clear = true;
        return expected;
    }
    expected.tolerance = lens.ToleranceAt(expected.hit.distance, change);
    // The nearest triangle of another thing, where there is one within the tolerance.
    Ray behind = rays[kMiddle];
    behind.to = expected.hit.distance + expected.tolerance;
    expected.clear = caster.CastThrough(behind).size() == 1;
    return expected;
}

const View kViews[] = {
    {"from a corner", false, Vector(17.0f, 5.0f, 6.0f), Vector(5.0f, 2.0f, -6.0f)},
    {"all of it without perspective", true, Vector(), Vector()},
    {"from within", false, Vector(3.0f, 1.5f, -3.0f), Vector(9.0f, 1.2f, -7.0f)},
};

} // namespace

TEST_P(PickingModelTest, AgreesWithARayCasterAwayFromEdges)
{
    const RayCaster caster(*scene);
    ASSERT_GT(caster.GetTriangleCount(), 1000u);
    const Lens lens(*camera);
    Host::Detail::PickDrawing drawing(renderer);
    ASSERT_TRUE(drawing.Draw(*scene, *camera, {0, 0, kWidth, kHeight}));
    int clear = 0;
    int surfaces = 0;
    int wrong = 0;
    int misplaced = 0;
    for (const auto& [x, y] : RandomPixels(10000))
    {
        const std::array<Ray, 9> rays = RaysAbout(lens, x, y);
        const Expectation expected = Expect(caster, lens, rays);
        if (!expected.clear)
        {
            continue;
        }
        ++clear;
        const PickHit found = drawing.NumberAt(x, y) == 0 ? PickHit() : drawing.HitAt(x, y);
        if (found.mesh != expected.hit.mesh || found.node != expected.hit.node)
        {
            ++wrong;
            continue;
        }
        if (!found.mesh)
        {
            continue;
        }
        ++surfaces;
        const glm::dvec3 place = rays[kMiddle].origin + expected.hit.distance * rays[kMiddle].direction;
        const glm::dvec3 actual(found.position.x, found.position.y, found.position.z);
        const double tolerance = expected.tolerance * glm::length(rays[kMiddle].direction);
        misplaced += glm::distance(actual, place) > tolerance ? 1 : 0;
    }
    RecordProperty("clear", clear);
    RecordProperty("surfaces", surfaces);
    RecordProperty("wrong", wrong);
    RecordProperty("misplaced", misplaced);
    EXPECT_GE(clear, 7000) << "too few pixels to judge by";
    EXPECT_GE(surfaces, 2000) << "too few pixels to judge by";
    EXPECT_LE(wrong, clear / 1000) << "of " << clear;
    EXPECT_LE(misplaced, surfaces / 1000) << "of " << surfaces;
}

TEST_P(PickingModelTest, APixelAloneGivesWhatTheWholeViewHasThere)
{
    Host::Detail::PickDrawing drawing(renderer);
    ASSERT_TRUE(drawing.Draw(*scene, *camera, {0, 0, kWidth, kHeight}));
    Picking picking(renderer);
    for (const auto& [x, y] : RandomPixels(200))
    {
        const std::vector<PickHit> hits = picking.Pick(*scene, *camera, {x, y, 1, 1});
        ASSERT_EQ(hits.size(), drawing.NumberAt(x, y) == 0 ? 0u : 1u) << x << ", " << y;
        if (hits.empty())
        {
            continue;
        }
        const PickHit expected = drawing.HitAt(x, y);
        EXPECT_EQ(hits[0].mesh, expected.mesh);
        EXPECT_EQ(hits[0].node, expected.node);
        EXPECT_EQ(hits[0].depth, expected.depth);
        EXPECT_EQ(hits[0].x, x);
        EXPECT_EQ(hits[0].y, y);
    }
}

TEST_P(PickingModelTest, TheWholeViewGivesEachThingOnceWhereItIsNearest)
{
    Host::Detail::PickDrawing drawing(renderer);
    ASSERT_TRUE(drawing.Draw(*scene, *camera, {0, 0, kWidth, kHeight}));
    std::map<unsigned int, float> nearest;
    for (int y = 0; y < kHeight; ++y)
    {
        for (int x = 0; x < kWidth; ++x)
        {
            const auto known = nearest.emplace(drawing.NumberAt(x, y), drawing.DepthAt(x, y)).first;
            known->second = std::min(known->second, drawing.DepthAt(x, y));
        }
    }
    nearest.erase(0);
    Picking picking(renderer);
    const std::vector<PickHit> hits = picking.Pick(*scene, *camera, {0, 0, kWidth, kHeight});
    EXPECT_EQ(hits.size(), nearest.size());
    EXPECT_GE(hits.size(), 10u);
    for (std::size_t i = 0; i < hits.size(); ++i)
    {
        const unsigned int number = drawing.NumberAt(hits[i].x, hits[i].y);
        EXPECT_EQ(nearest.count(number), 1u);
        EXPECT_EQ(hits[i].depth, nearest[number]);
        EXPECT_EQ(hits[i].mesh, drawing.HitAt(hits[i].x, hits[i].y).mesh);
        nearest.erase(number);
        EXPECT_TRUE(i == 0 || hits[i - 1].depth <= hits[i].depth) << i;
    }
}

TEST_P(PickingModelTest, PickingThroughGivesWhatARayGoesThrough)
{
    constexpr int most = 64;
    const RayCaster caster(*scene);
    const Lens lens(*camera);
    Picking picking(renderer);
    int judged = 0;
    for (const auto& [x, y] : RandomPixels(400))
    {
        const std::array<Ray, 9> rays = RaysAbout(lens, x, y);
        const std::vector<RayHit> expected = caster.CastThrough(rays[kMiddle]);
        bool clear = expected.size() > 1;
        std::vector<double> changes(expected.size());
        for (const Ray& ray : rays)
        {
            const std::vector<RayHit> beside = caster.CastThrough(ray);
            clear = clear && beside.size() == expected.size();
            for (std::size_t i = 0; clear && i < expected.size(); ++i)
            {
                clear = beside[i].IsSame(expected[i]);
                changes[i] = std::max(changes[i], std::abs(beside[i].distance - expected[i].distance));
            }
        }
        for (std::size_t i = 0; clear && i + 1 < expected.size(); ++i)
        {
            const double room = expected[i + 1].distance - expected[i].distance;
            clear = room > lens.ToleranceAt(expected[i].distance, changes[i])
                        + lens.ToleranceAt(expected[i + 1].distance, changes[i + 1]);
        }
        if (!clear)
        {
            continue;
        }
        const std::vector<PickHit> hits = picking.PickThrough(*scene, *camera, x, y, most);
        ASSERT_EQ(hits.size(), expected.size()) << x << ", " << y;
        for (std::size_t i = 0; i < hits.size(); ++i)
        {
            EXPECT_EQ(hits[i].mesh, expected[i].mesh) << x << ", " << y << ": " << i;
            EXPECT_EQ(hits[i].node, expected[i].node) << x << ", " << y << ": " << i;
        }
        ++judged;
    }
    RecordProperty("judged", judged);
    EXPECT_GE(judged, 10) << "too few pixels to judge by";
}

INSTANTIATE_TEST_SUITE_P(House, PickingModelTest, ::testing::ValuesIn(kViews),
                         [](const ::testing::TestParamInfo<View>& info)
                         {
                             std::string name = info.param.label;
                             std::replace(name.begin(), name.end(), ' ', '_');
                             return name;
                         });
