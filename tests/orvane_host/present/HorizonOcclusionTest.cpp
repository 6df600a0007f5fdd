#include "orvane_host/geometry/RayCaster.h"
#include "orvane_host/import/ModelImporter.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "tests/orvane_host/present/OcclusionScenes.h"
#include "tests/orvane_host/present/PresentationModels.h"

#include <glm/geometric.hpp>
#include <glm/mat3x3.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <optional>

namespace OV::Test
{

namespace
{

using Host::OcclusionKind;
using Host::PresentationSettings;

constexpr double kPi = 3.14159265358979323846;

QGM::Point3d PointOf(const glm::dvec3& v)
{
    return {v.x, v.y, v.z};
}

QGM::Vector3d VectorOf(const glm::dvec3& v)
{
    return {v.x, v.y, v.z};
}

/// What a pixel sees, and how much of its surroundings is hidden there, by rays.
class Rays
{
public:
    Rays(const Host::Presentation& presentation, int width, int height) :
        m_caster(presentation.GetScene()), m_camera(presentation.GetCamera()), m_size(width, height)
    {
    }

    struct Place
    {
        glm::dvec3 point;
        glm::dvec3 normal; ///< unit, to the side of the eye
    };

    std::optional<Place> At(int x, int y) const
    {
        const auto& m = m_camera.GetGlobal().GetTransf3d().m;
        const auto axis = [&](int column) { return glm::dvec3(m[0][column], m[1][column], m[2][column]); };
        const double tangent = std::tan(static_cast<double>(m_camera.GetFOV()));
        // The picture is wider than high.
        const double up = (2.0 * (y + 0.5) / m_size.y - 1.0) * tangent;
        const double right = (2.0 * (x + 0.5) / m_size.x - 1.0) * tangent * m_size.x / m_size.y;
        glm::dvec3 origin = axis(3);
        glm::dvec3 direction = -axis(2);
        const glm::dvec3 aside = right * axis(0) + up * axis(1);
        if (m_camera.GetProjection() == CameraNode::Perspective)
        {
            direction += aside;
        }
        else
        {
            origin += aside * static_cast<double>(m_camera.GetDistanceToTarget());
        }
        direction = glm::normalize(direction);
        const auto hit = m_caster.Cast(PointOf(origin), VectorOf(direction));
        if (!hit)
        {
            return std::nullopt;
        }
        const glm::dvec3 normal = NormalOf(*hit);
        return Place{origin + hit->distance * direction, glm::dot(normal, direction) > 0.0 ? -normal : normal};
    }

    /// The share of the directions, counted as they light the face, in which something is nearer than a
    /// radius.
    double HiddenAt(const Place& place, double radius) const
    {
        const glm::dvec3 other = std::abs(place.normal.x) < 0.6 ? glm::dvec3(1, 0, 0) : glm::dvec3(0, 1, 0);
        const glm::dvec3 right = glm::normalize(glm::cross(other, place.normal));
        const glm::dvec3 ahead = glm::cross(place.normal, right);
        int hidden = 0;
        for (int i = 0; i < kAcross; ++i)
        {
            for (int j = 0; j < kAround; ++j)
            {
                const double sine = std::sqrt((i + 0.5) / kAcross);
                const double turn = 2.0 * kPi * (j + (i % 2 == 0 ? 0.25 : 0.75)) / kAround;
                const glm::dvec3 direction = sine * std::cos(turn) * right + sine * std::sin(turn) * ahead
                    + std::sqrt(1.0 - sine * sine) * place.normal;
                hidden += m_caster.IsBlocked(PointOf(place.point), VectorOf(direction), 1e-4 * radius, radius) ? 1 : 0;
            }
        }
        return static_cast<double>(hidden) / (kAcross * kAround);
    }

private:
    static constexpr int kAcross = 10;
    static constexpr int kAround = 24;

    static glm::dvec3 NormalOf(const Host::RayHit& hit)
    {
        const std::vector<Vector>& positions = hit.mesh->GetPositionBuffer();
        const std::vector<unsigned short>& indices = hit.mesh->GetIndices();
        const auto& m = hit.node->GetGlobal().GetTransf3d().m;
        glm::dvec3 corners[3];
        for (std::size_t i = 0; i < 3; ++i)
        {
            const Vector& p = positions[indices[3 * hit.triangle + i]];
            for (int row = 0; row < 3; ++row)
            {
                corners[i][row] = m[row][0] * p.x + m[row][1] * p.y + m[row][2] * p.z + m[row][3];
            }
        }
        return glm::normalize(glm::cross(corners[1] - corners[0], corners[2] - corners[0]));
    }

    Host::RayCaster m_caster;
    const CameraNode& m_camera;
    glm::ivec2 m_size;
};

/// A white model on blue, whose pixels tell how much of their surroundings is hidden.
class HorizonOcclusion : public PresentationFixture
{
protected:
    HorizonOcclusion() : PresentationFixture(240, 160, 0)
    {
        m_settings.look = Host::Look::Monotone;
        m_settings.background = Color(0, 0, 1);
        m_settings.antialiasing = Host::Antialiasing::None;
        m_settings.occlusion = true;
        m_settings.occlusionLook.radius = 0.8f;
    }

    void Show(std::unique_ptr<Scene> scene, const Vector& eye, const Vector& target)
    {
        m_model = std::make_unique<Host::Presentation>(std::move(scene));
        m_settings.view.eye = eye;
        m_settings.view.target = target;
    }

    Picture Redraw()
    {
        Apply(*m_model, m_settings);
        return Draw(*m_model);
    }

    static bool IsOfTheModel(const Pixel& pixel) { return pixel.r == pixel.b; }

    /// The mean difference of the picture's occlusion from that of rays, over all that is seen.
    void ExpectRays(const char* what, double most = 0.04)
    {
        for (const bool orthographic : {false, true})
        {
            m_settings.view.orthographic = orthographic;
            const Picture picture = Redraw();
            const Rays rays(*m_model, Width(), Height());
            double sum = 0.0;
            double hidden = 0.0;
            double bias = 0.0;
            std::vector<double> differences;
            for (int y = 1; y < Height(); y += 3)
            {
                for (int x = 1; x < Width(); x += 3)
                {
                    const Pixel pixel = picture.At(x, y);
                    const std::optional<Rays::Place> place = rays.At(x, y);
                    if (!place || !IsOfTheModel(pixel))
                    {
                        continue;
                    }
                    const double expected = rays.HiddenAt(*place, *m_settings.occlusionLook.radius);
                    const double actual = 1.0 - pixel.g / 255.0;
                    differences.push_back(std::abs(actual - expected));
                    sum += differences.back();
                    bias += actual - expected;
                    hidden += expected;
                }
            }
            const auto count = static_cast<double>(differences.size());
            ASSERT_GT(count, 1000.0) << what;
            std::sort(differences.begin(), differences.end());
            std::cout << what << (orthographic ? " orthographic" : " perspective") << ": mean difference " << sum / count
                      << ", too dark by " << bias / count << ", 95 % within "
                      << differences[static_cast<std::size_t>(0.95 * count)] << ", hidden by rays " << hidden / count << '\n';
            EXPECT_LE(sum / count, most) << what << (orthographic ? " orthographic" : " perspective");
            EXPECT_GT(hidden / count, most) << "a picture without occlusion would fail";
        }
    }

    PresentationSettings m_settings;
    std::unique_ptr<Host::Presentation> m_model;
};

/// The largest share of its light that a pixel of the model loses.
double MostHidden(const Picture& picture, const std::function<bool(int, int)>& counts)
{
    int least = 255;
    for (int y = 0; y < picture.GetHeight(); ++y)
    {
        for (int x = 0; x < picture.GetWidth(); ++x)
        {
            const Pixel pixel = picture.At(x, y);
            least = pixel.r == pixel.b && counts(x, y) ? std::min(least, pixel.g) : least;
        }
    }
    return 1.0 - least / 255.0;
}

bool Anywhere(int, int)
{
    return true;
}

std::unique_ptr<Scene> MakeBox(float half)
{
    SolidScene scene;
    scene.AddBox(Vector(-half, -half, -half), Vector(half, half, half));
    return scene.Take();
}

} // namespace

TEST_F(HorizonOcclusion, OfABoxOnAPlaneIsThatOfRays)
{
    Show(MakeBoxOnPlane(), Vector(3.2f, 2.6f, 4.0f), Vector(0, 0.5f, 0));
    ExpectRays("box on a plane");
}

TEST_F(HorizonOcclusion, OfARoomIsThatOfRays)
{
    Show(MakeRoomCorner(), Vector(5.5f, 2.6f, 5.0f), Vector(1.0f, 1.0f, 1.0f));
    ExpectRays("corner of a room");
}

TEST_F(HorizonOcclusion, OfStairsIsThatOfRays)
{
    Show(MakeStairs(), Vector(-3.0f, 2.8f, 3.2f), Vector(1.0f, 0.6f, 0.2f));
    m_settings.occlusionLook.radius = 0.4f;
    ExpectRays("stairs");
}

TEST_F(HorizonOcclusion, OfAHouseIsThatOfRays)
{
    Host::ImportResult result = Host::ModelImporter::Import("/usr/share/assimp/models/IFC/AC14-FZK-Haus.ifc");
    ASSERT_TRUE(result);
    m_model = std::make_unique<Host::Presentation>(std::move(result));
    m_settings.view.eye = Vector(22, 6, 12);
    m_settings.view.target = Vector(6, 2.5f, -5);
    m_settings.occlusionLook.radius = 1.2f;
    ExpectRays("house");
}

TEST_F(HorizonOcclusion, LeavesFlatFacesAndConvexEdgesAsTheyAre)
{
    for (const float size : {1e-3f, 1.0f, 1e4f})
    {
        SCOPED_TRACE(size);
        for (const bool orthographic : {false, true})
        {
            m_settings.view.orthographic = orthographic;
            for (const Vector& from : {Vector(3, 2, 4), Vector(0.3f, 0.2f, 5), Vector(4.6f, 0.1f, 0.4f)})
            {
                Show(MakeBox(size), Vector(from.x * size, from.y * size, from.z * size), Vector(0, 0, 0));
                m_settings.occlusionLook.radius = size;
                const Picture picture = Redraw();
                EXPECT_GT(picture.Count({255, 255, 255, 255}), 5000);
                EXPECT_EQ(MostHidden(picture, Anywhere), 0.0);
            }
        }
    }
}

TEST_F(HorizonOcclusion, LeavesWhatIsRoundAndConvexAsItIs)
{
    // A ring of narrow faces, which differences between depths of pixels would see as hollows.
    SolidScene scene;
    std::vector<std::pair<float, float>> ring;
    for (int i = 0; i < 48; ++i)
    {
        ring.emplace_back(static_cast<float>(std::cos(2.0 * kPi * i / 48.0)), static_cast<float>(std::sin(2.0 * kPi * i / 48.0)));
    }
    scene.AddPrism(ring, -1.0f, 1.0f);
    Show(scene.Take(), Vector(1.5f, 3.0f, 3.5f), Vector(0, 0, 0));
    EXPECT_LE(MostHidden(Redraw(), Anywhere), 1.0 / 255.0);
}

TEST_F(HorizonOcclusion, ReachesAsFarAsTheRadiusInUnitsOfTheModel)
{
    // From above, a tenth of a unit is two pixels.
    m_settings.view.up = Vector(0, 0, -1);
    m_settings.view.orthographic = true;
    for (const float radius : {0.4f, 0.8f})
    {
        SolidScene scene;
        scene.AddBox(Vector(-4, -0.2f, -4), Vector(4, 0, 4));
        scene.AddBox(Vector(-1, 0, -1), Vector(1, 0.5f * radius, 1));
        Show(scene.Take(), Vector(0, 12.686f, 0), Vector(0, 0, 0));
        m_settings.occlusionLook.radius = radius;
        const Picture picture = Redraw();
        const auto beside = [&](float units) { return picture.At(static_cast<int>(120.5f + 20.0f * (1.0f + units)), 80).g; };
        EXPECT_LT(beside(0.5f * radius), 245) << radius;
        EXPECT_LT(beside(0.1f), beside(0.5f * radius)) << radius;
        EXPECT_EQ(beside(1.15f * radius), 255) << radius;
        EXPECT_EQ(picture.At(120, 80).g, 255) << "the top of the box";
    }
}

TEST_F(HorizonOcclusion, SeesWallsFromAboveThatAreHigherThanTheRadius)
{
    m_settings.view.up = Vector(0, 0, -1);
    for (const bool orthographic : {false, true})
    {
        m_settings.view.orthographic = orthographic;
        Show(MakeBoxOnPlane(), Vector(0, 12.686f, 0), Vector(0, 0, 0));
        EXPECT_GT(MostHidden(Redraw(), Anywhere), 0.1) << orthographic;
        // What is far above hides nothing.
        SolidScene scene;
        scene.AddBox(Vector(-4, -0.2f, -4), Vector(4, 0, 4));
        scene.AddBox(Vector(-1, 4, -1), Vector(1, 4.1f, 1));
        Show(scene.Take(), Vector(0, 12.686f, 0), Vector(0, 0, 0));
        EXPECT_EQ(MostHidden(Redraw(), Anywhere), 0.0) << orthographic;
    }
}

TEST_F(HorizonOcclusion, WithoutARadiusSuitsTheModel)
{
    Picture first;
    // The last is so large that the square of a pixel's area leaves floats.
    for (const float size : {1.0f, 1e3f, 1e13f})
    {
        SCOPED_TRACE(size);
        SolidScene scene;
        scene.AddBox(Vector(-4 * size, -0.2f * size, -4 * size), Vector(4 * size, 0, 4 * size));
        scene.AddBox(Vector(-size, 0, -size), Vector(size, 1.5f * size, size));
        Show(scene.Take(), Vector(3.2f * size, 2.6f * size, 4 * size), Vector(0, 0.5f * size, 0));
        m_settings.occlusionLook.radius.reset();
        const Picture suiting = Redraw();
        first = size == 1.0f ? suiting : first;
        EXPECT_GT(MostHidden(suiting, Anywhere), 0.3);
        m_settings.occlusionLook.radius = 0.04f * size * std::sqrt(64.0f + 64.0f + 1.7f * 1.7f);
        EXPECT_LE(Compare(Redraw(), suiting).largestChannelDifference, 1) << "a 25th of its extent";
        int differing = 0;
        for (int y = 0; y < Height(); ++y)
        {
            for (int x = 0; x < Width(); ++x)
            {
                differing += std::abs(first.At(x, y).g - suiting.At(x, y).g) > 2 ? 1 : 0;
            }
        }
        EXPECT_LT(differing, Width() * Height() / 200) << "of any size it looks the same";
    }
}

TEST_F(HorizonOcclusion, DarkensByItsStrength)
{
    Show(MakeBoxOnPlane(), Vector(3.2f, 2.6f, 4.0f), Vector(0, 0.5f, 0));
    const Picture whole = Redraw();
    m_settings.occlusionLook.strength = 0.5f;
    const Picture half = Redraw();
    m_settings.occlusionLook.strength = 0.0f;
    EXPECT_EQ(MostHidden(Redraw(), Anywhere), 0.0);
    EXPECT_GT(MostHidden(whole, Anywhere), 0.35);
    for (int y = 0; y < Height(); ++y)
    {
        for (int x = 0; x < Width(); ++x)
        {
            if (IsOfTheModel(whole.At(x, y)))
            {
                ASSERT_NEAR(255 - half.At(x, y).g, (255 - whole.At(x, y).g) / 2.0, 1.01) << x << ", " << y;
            }
        }
    }
}

TEST_F(HorizonOcclusion, LeavesBackgroundAlphaAndFogAsTheyAre)
{
    m_settings.look = Host::Look::Basic;
    for (const int samples : {0, 4})
    {
        UseFramebuffer(Width(), Height(), samples);
        m_settings.antialiasing = samples == 0 ? Host::Antialiasing::None : Host::Antialiasing::Multisampling;
        m_settings.fog.reset();
        m_settings.background = Color(0.0f, 0.0f, 1.0f, 0.25f);
        Show(MakeBoxOnPlane(), Vector(3.2f, 2.6f, 4.0f), Vector(0, 0.5f, 0));
        const Picture picture = Redraw();
        m_settings.occlusion = false;
        const Picture plain = Redraw();
        m_settings.occlusion = true;
        EXPECT_NE(picture, plain);
        for (int y = 0; y < Height(); ++y)
        {
            for (int x = 0; x < Width(); ++x)
            {
                const Pixel before = plain.At(x, y);
                const Pixel after = picture.At(x, y);
                ASSERT_EQ(after.a, before.a) << x << ", " << y;
                ASSERT_TRUE(before.r != 0 || after == before) << "background at " << x << ", " << y;
            }
        }
        // All of the model lies beyond it.
        m_settings.fog = Host::FogRange{0.1f, 0.5f};
        const Picture fogged = Redraw();
        m_settings.occlusion = false;
        ExpectSame(fogged, Redraw(), "in fog");
        m_settings.occlusion = true;
    }
}

TEST_F(HorizonOcclusion, TakesNoAccountOfWhatIsCutAway)
{
    Show(MakeBoxOnPlane(), Vector(3.2f, 2.6f, 4.0f), Vector(0, 0.5f, 0));
    EXPECT_GT(MostHidden(Redraw(), Anywhere), 0.3);
    m_settings.section.planes = {{Vector(0, 1, 0), Vector(0, 1e-3f, 0)}};
    m_settings.section.fill.reset();
    m_settings.section.outlineWidth = 0.0f;
    m_settings.cullBacks = true;
    // But for the cut through the box itself.
    const auto isBesideTheCut = [](int x, int y) { return y < 30 || x < 40 || x > 200; };
    EXPECT_LE(MostHidden(Redraw(), isBesideTheCut), 1.0 / 255.0);
}

TEST_F(HorizonOcclusion, OfAFinerPictureIsTheSame)
{
    Show(MakeBoxOnPlane(), Vector(3.2f, 2.6f, 4.0f), Vector(0, 0.5f, 0));
    const Picture plain = Redraw();
    m_settings.antialiasing = Host::Antialiasing::Supersampling;
    const Picture fine = Redraw();
    double sum = 0.0;
    for (int y = 0; y < Height(); ++y)
    {
        for (int x = 0; x < Width(); ++x)
        {
            sum += std::abs(fine.At(x, y).g - plain.At(x, y).g);
        }
    }
    EXPECT_LT(sum / (Width() * Height()), 3.0);
}

TEST_F(HorizonOcclusion, WithSamplesHasRimsAsSmoothAsThoseOfSurfaces)
{
    // The bright front of a slab before a wall that is dark below it, the rim between them slanted.
    SolidScene scene;
    scene.AddBox(Vector(-3, 0, -0.2f), Vector(3, 2, 0));
    scene.AddBox(Vector(-3, 2, -0.2f), Vector(3, 2.2f, 0.6f));
    Show(scene.Take(), Vector(0, 2.6f, 4), Vector(0, 1.6f, 0));
    m_settings.view.up = Vector(0.2f, 1, 0);
    const Picture plain = Redraw();
    m_settings.antialiasing = Host::Antialiasing::Multisampling;
    UseFramebuffer(Width(), Height(), 4);
    const Picture smooth = Redraw();
    // Columns in which it goes from one to the other between two pixels.
    const auto hardSteps = [this](const Picture& picture) {
        int count = 0;
        for (int x = 60; x < 180; ++x)
        {
            int largest = 0;
            int whole = 1;
            for (int y = 40; y < 140; ++y)
            {
                const int step = picture.At(x, y + 1).g - picture.At(x, y).g;
                if (IsOfTheModel(picture.At(x, y)) && IsOfTheModel(picture.At(x, y + 1)) && step > largest)
                {
                    largest = step;
                    whole = picture.At(x, y + 2).g - picture.At(x, y - 1).g;
                }
            }
            EXPECT_GT(whole, 40) << x;
            count += largest > 0.9 * whole ? 1 : 0;
        }
        return count;
    };
    EXPECT_GT(hardSteps(plain), 100);
    EXPECT_LT(hardSteps(smooth), 60) << "a rim falls between two pixels here and there";
    double sum = 0.0;
    for (int y = 0; y < Height(); ++y)
    {
        for (int x = 0; x < Width(); ++x)
        {
            sum += std::abs(smooth.At(x, y).g - plain.At(x, y).g);
        }
    }
    EXPECT_LT(sum / (Width() * Height()), 4.0) << "the rest is as ever";
}

TEST_F(HorizonOcclusion, OfWhatIsNarrowerThanAPixelMakesNoSpecks)
{
    SolidScene scene;
    scene.AddBox(Vector(-4, -4, -0.2f), Vector(4, 4, 0));
    for (int i = -30; i < 30; ++i)
    {
        // Half a pixel high, at places between pixels that differ.
        const float low = 0.1f * static_cast<float>(i) + 0.003f * static_cast<float>(i % 7);
        scene.AddBox(Vector(-3, low, 0), Vector(3, low + 0.05f, 0.01f));
    }
    Show(scene.Take(), Vector(0.7f, 1.5f, 8.0f), Vector(0, 0, 0));
    for (const int samples : {0, 4})
    {
        UseFramebuffer(Width(), Height(), samples);
        m_settings.antialiasing = samples == 0 ? Host::Antialiasing::None : Host::Antialiasing::Multisampling;
        const Picture picture = Redraw();
        int specks = 0;
        for (int y = 30; y < 130; ++y)
        {
            for (int x = 70; x < 170; ++x)
            {
                const int here = picture.At(x, y).g;
                const int least = std::min({picture.At(x - 1, y).g, picture.At(x + 1, y).g, picture.At(x, y - 1).g,
                                            picture.At(x, y + 1).g});
                specks += least - here > 50 ? 1 : 0;
            }
        }
        EXPECT_EQ(specks, 0) << samples;
    }
}

TEST_F(HorizonOcclusion, IsCoarseInAHurryAndFullAtRest)
{
    Show(MakeBoxOnPlane(), Vector(3.2f, 2.6f, 4.0f), Vector(0, 0.5f, 0));
    for (const int samples : {0, 4})
    {
        UseFramebuffer(Width(), Height(), samples);
        m_settings.antialiasing = samples == 0 ? Host::Antialiasing::None : Host::Antialiasing::Multisampling;
        const Picture full = Redraw();
        m_model->Hurry(true);
        EXPECT_TRUE(m_model->NeedsDraw());
        const Picture coarse = Draw(*m_model);
        EXPECT_NE(coarse, full);
        double sum = 0.0;
        for (int y = 0; y < Height(); ++y)
        {
            for (int x = 0; x < Width(); ++x)
            {
                sum += std::abs(coarse.At(x, y).g - full.At(x, y).g) / 255.0;
            }
        }
        EXPECT_LT(sum / (Width() * Height()), 0.01) << samples;
        m_model->Hurry(false);
        EXPECT_TRUE(m_model->NeedsDraw());
        ExpectSame(Draw(*m_model), full, "at rest");
    }
}

TEST_F(HorizonOcclusion, InAHurryLeavesFlatFacesAndConvexEdgesAsTheyAre)
{
    for (const bool orthographic : {false, true})
    {
        m_settings.view.orthographic = orthographic;
        Show(MakeBox(1.0f), Vector(3, 2, 4), Vector(0, 0, 0));
        m_settings.occlusionLook.radius = 1.0f;
        m_model->Hurry(true);
        EXPECT_EQ(MostHidden(Redraw(), Anywhere), 0.0);
    }
}

TEST_F(HorizonOcclusion, HasNoNoise)
{
    // From above, beside the middle of the box's side, pixels of a column are alike.
    m_settings.view.up = Vector(0, 0, -1);
    m_settings.view.orthographic = true;
    Show(MakeBoxOnPlane(), Vector(0, 12.686f, 0), Vector(0, 0, 0));
    const Picture picture = Redraw();
    for (int x = 142; x < 160; ++x)
    {
        for (int y = 76; y < 84; ++y)
        {
            ASSERT_NEAR(picture.At(x, y).g, picture.At(x, 80).g, 2) << x << ", " << y;
        }
        EXPECT_GE(picture.At(x + 1, 80).g, picture.At(x, 80).g - 1) << "it gets lighter without rings";
    }
}

TEST_F(HorizonOcclusion, IsOneOfTwoKinds)
{
    Show(MakeBoxOnPlane(), Vector(3.2f, 2.6f, 4.0f), Vector(0, 0.5f, 0));
    m_settings.occlusionLook.kind = OcclusionKind::Spiral;
    const Picture spiral = Redraw();
    m_settings.occlusionLook.radius = 0.1f;
    m_settings.occlusionLook.strength = 0.1f;
    ExpectSame(Redraw(), spiral, "radius and strength are the other's");
    m_settings.occlusionLook = Host::OcclusionLook();
    EXPECT_NE(Redraw(), spiral);
    m_settings.occlusion = false;
    EXPECT_EQ(MostHidden(Redraw(), Anywhere), 0.0);
}

} // namespace OV::Test
