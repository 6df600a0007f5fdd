#include "tests/orvane_host/present/PresentationModels.h"
#include "tests/orvane_host/present/SurroundingPictures.h"

#include "orvane/math/Transform.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "tests/support/TemporaryFolder.h"

#include <cmath>
#include <utility>

namespace OV::Test
{

namespace
{

using Host::Look;
using Host::PresentationSettings;

Vector Unit(float x, float y, float z)
{
    const float length = std::hypot(x, y, z);
    return Vector(x / length, y / length, z / length);
}

/// A square of an edge of 2 that faces a normal; a ball of radius 1 without one.
std::shared_ptr<RawMesh> MakeSquare(const Vector& normal, float half)
{
    Vector side;
    side.Cross(std::fabs(normal.y) < 0.9f ? Vector(0, 1, 0) : Vector(1, 0, 0), normal);
    side = Unit(side.x, side.y, side.z);
    Vector up;
    up.Cross(normal, side);
    std::vector<Vector> positions;
    for (const auto& [s, t] : {std::pair(-half, -half), std::pair(half, -half), std::pair(half, half), std::pair(-half, half)})
    {
        positions.emplace_back(s * side.x + t * up.x, s * side.y + t * up.y, s * side.z + t * up.z);
    }
    auto raw = std::make_shared<RawMesh>();
    raw->SetPositionBuffer(std::move(positions));
    raw->SetNormalBuffer(std::vector<Vector>(4, normal));
    raw->SetIndices({0, 1, 2, 0, 2, 3});
    raw->EndDescription(true);
    return raw;
}

std::shared_ptr<RawMesh> MakeBall()
{
    constexpr int rings = 96;
    constexpr int segments = 192;
    std::vector<Vector> positions;
    std::vector<unsigned short> indices;
    for (int ring = 0; ring <= rings; ++ring)
    {
        for (int segment = 0; segment <= segments; ++segment)
        {
            const double fall = std::acos(-1.0) * ring / rings;
            const double turn = 2.0 * std::acos(-1.0) * segment / segments;
            positions.emplace_back(static_cast<float>(std::sin(fall) * std::sin(turn)), static_cast<float>(std::cos(fall)),
                                   static_cast<float>(std::sin(fall) * std::cos(turn)));
            if (ring < rings && segment < segments)
            {
                const auto at = static_cast<unsigned short>(ring * (segments + 1) + segment);
                const auto below = static_cast<unsigned short>(at + segments + 1);
                for (const int index : {+at, +below, at + 1, at + 1, +below, below + 1})
                {
                    indices.push_back(static_cast<unsigned short>(index));
                }
            }
        }
    }
    auto raw = std::make_shared<RawMesh>();
    raw->SetNormalBuffer(std::vector<Vector>(positions));
    raw->SetPositionBuffer(std::move(positions));
    raw->SetIndices(std::move(indices));
    raw->EndDescription(true);
    return raw;
}

class PresentationSurroundings : public PresentationFixture
{
protected:
    PresentationSurroundings()
    {
        PaintPanorama(m_folder.Path("all.png"), 512);
        m_settings.surroundings = m_folder.Path("all.png");
        m_settings.antialiasing = Host::Antialiasing::None;
        m_settings.cullBacks = false;
    }

    /// One mesh in the middle of the world, that reflects so much.
    Material& Show(std::shared_ptr<RawMesh> raw, float straight, float gloss, float scale = 1.0f)
    {
        auto scene = std::make_unique<Scene>();
        auto* const material = new Material("mirror");
        material->SetDiffuse(Color(0.9f, 0.4f, 0.2f));
        material->SetSpecular(Color(0, 0, 0));
        material->reflectionFactors[0] = straight;
        material->reflectionFactors[1] = straight;
        material->reflectionFactors[2] = gloss;
        scene->AddMaterial(material);
        auto* const mesh = new Mesh(std::move(raw), scene.get());
        material->AddMesh(mesh);
        auto* const node = new MeshNode(scene.get());
        Transform transform;
        transform.SetScale(Vector(scale, scale, scale));
        node->SetLocal(transform);
        scene->GetRoot()->AddChild(node, false);
        mesh->AddNode(node);
        m_presentation = std::make_unique<Host::Presentation>(std::move(scene));
        return *material;
    }

    Picture From(const Vector& eye, float fov, const Vector& up = Vector(0, 1, 0))
    {
        m_settings.view.eye = eye;
        m_settings.view.target = Vector(0, 0, 0);
        m_settings.view.up = up;
        m_settings.view.fov = fov;
        Apply(*m_presentation, m_settings);
        return Draw(*m_presentation);
    }

    PixelRect Middle() const { return {Width() / 2 - 4, Height() / 2 - 4, 8, 8}; }

    TemporaryFolder m_folder;
    PresentationSettings m_settings;
    std::unique_ptr<Host::Presentation> m_presentation;
};

TEST_F(PresentationSurroundings, AFlatMirrorShowsTheSideThatItTurnsTheViewTo)
{
    for (const SeenSide& side : kSides)
    {
        // The mirror stands half way between the eye and what it shows.
        const bool isAlongX = side.x == 0.0f;
        const Vector eye = isAlongX ? Vector(1, 0, 0) : Vector(0, 0, 1);
        const Vector normal = Unit(eye.x + side.x, eye.y + side.y, eye.z + side.z);
        for (const float scale : {1.0f, 0.01f, 50.0f})
        {
            for (const Look look : {Look::Advanced, Look::Phong})
            {
                SCOPED_TRACE(std::string(side.name) + " " + std::to_string(scale) + " " + Host::NameOfLook(look));
                Show(MakeSquare(normal, 1.0f), 1.0f, 1.0f, scale);
                m_settings.look = look;
                const Picture picture = From(Vector(6 * scale * eye.x, 0, 6 * scale * eye.z), 8.0f);
                // The second look multiplies reflections by 0.9 and by how the light falls.
                const int tolerance = look == Look::Advanced ? 2 : 255;
                ExpectColorInRect(picture, Middle(), side.color, tolerance);
                if (look == Look::Phong)
                {
                    const Pixel seen = picture.At(Width() / 2, Height() / 2);
                    EXPECT_NEAR(seen.r * side.color.g, seen.g * side.color.r, 400);
                    EXPECT_NEAR(seen.b * side.color.g, seen.g * side.color.b, 400);
                }
            }
        }
    }
}

TEST_F(PresentationSurroundings, ABallShowsAllSidesWhereItsNormalsTurnTheView)
{
    Show(MakeBall(), 1.0f, 1.0f);
    // From far away: a normal n turns the view by 2 (n e) n - e.
    const float fov = 2.4f;
    const Picture picture = From(Vector(0, 0, 50), fov);
    const double radius = Height() / 2.0 / (50.0 * std::tan(fov * std::acos(-1.0) / 360.0));
    for (const SeenSide& side : kSides)
    {
        if (std::string(side.name) == "front")
        {
            continue; // at the very rim
        }
        const Vector normal = Unit(side.x, side.y, 1.0f + side.z);
        const int x = static_cast<int>(Width() / 2.0 + radius * normal.x);
        const int y = static_cast<int>(Height() / 2.0 + radius * normal.y);
        // So small a ball is looked up a little blurred.
        ExpectColorInRect(picture, {x - 1, y - 1, 2, 2}, side.color, 20);
    }
}

TEST_F(PresentationSurroundings, ALargeFlatMirrorDoesNotBendWhatItShows)
{
    // The rim between two halves of the surroundings, in the plane x = 0, is seen on a floor right
    // below and before the eye, wherever the corners of the floor are.
    PaintFile(m_folder.Path("halves.png"), 1024, 512, [](int x, int) { return x < 512 ? Pixel{255, 0, 0} : Pixel{0, 0, 255}; });
    m_settings.surroundings = m_folder.Path("halves.png");
    Show(MakeSquare(Vector(0, 1, 0), 40.0f), 1.0f, 1.0f);
    m_settings.view.target = Vector(-30, 0, 10);
    m_settings.view.eye = Vector(-30, 2, 32);
    m_settings.view.fov = 40.0f;
    Apply(*m_presentation, m_settings);
    const Picture picture = Draw(*m_presentation);
    for (const int y : {4, 10, 16})
    {
        for (int x = 2; x < Width() - 2; ++x)
        {
            if (std::abs(x - Width() / 2) > 2)
            {
                const Pixel expected = x < Width() / 2 ? Pixel{255, 0, 0} : Pixel{0, 0, 255};
                ASSERT_LE(ChannelDifference(picture.At(x, y), expected), 2) << x << ", " << y << ": " << picture.At(x, y);
            }
        }
    }
}

TEST_F(PresentationSurroundings, RoughSurfacesShowABlurredPictureAndMattOnesNone)
{
    PaintFile(m_folder.Path("halves.png"), 1024, 512, [](int x, int) { return x < 512 ? Pixel{255, 0, 0} : Pixel{0, 0, 255}; });
    m_settings.surroundings = m_folder.Path("halves.png");
    Show(MakeBall(), 1.0f, 0.9f);
    const auto mixed = [this](const Picture& picture) {
        int count = 0;
        for (int x = 0; x < Width(); ++x)
        {
            const Pixel pixel = picture.At(x, Height() / 2);
            count += pixel.r > 60 && pixel.b > 60 && pixel.g < 200 ? 1 : 0;
        }
        return count;
    };
    const int smooth = mixed(From(Vector(0, 0, 50), 2.4f));
    Show(MakeBall(), 1.0f, 0.5f);
    const int rough = mixed(From(Vector(0, 0, 50), 2.4f));
    EXPECT_GT(rough, smooth + 4);
    Show(MakeBall(), 0.0f, 0.0f);
    const Picture matt = From(Vector(0, 0, 50), 2.4f);
    m_settings.surroundings.clear();
    ExpectSame(From(Vector(0, 0, 50), 2.4f), matt, "matt");
}

TEST_F(PresentationSurroundings, AMetalReflectsInItsColour)
{
    PaintFile(m_folder.Path("white.png"), 64, 32, [](int, int) { return Pixel{200, 200, 200}; });
    m_settings.surroundings = m_folder.Path("white.png");
    Material& gold = Show(MakeSquare(Vector(0, 0, 1), 1.0f), 0.5f, 1.0f);
    // Of a luminance of 0.5, half of which each channel has times its own.
    gold.SetSpecular(Color(0.8f, 0.4f, 0.2236842f));
    gold.SetDiffuse(Color(0, 0, 0));
    const Picture picture = From(Vector(0, 0, 6), 8.0f);
    ExpectColorInRect(picture, Middle(), {160, 80, 45, 255}, 2);
}

TEST_F(PresentationSurroundings, WhatIsReflectedTakesTheShareOfTheColourBesides)
{
    PaintFile(m_folder.Path("black.png"), 64, 32, [](int, int) { return Pixel{0, 0, 0}; });
    Show(MakeSquare(Vector(0, 0, 1), 1.0f), 0.25f, 1.0f);
    m_settings.surroundings.clear();
    const Pixel plain = From(Vector(0, 0, 6), 8.0f).At(Width() / 2, Height() / 2);
    m_settings.surroundings = m_folder.Path("black.png");
    const Pixel kept = From(Vector(0, 0, 6), 8.0f).At(Width() / 2, Height() / 2);
    EXPECT_NEAR(kept.g, plain.g * 0.75, 3);
    // And it comes back.
    m_settings.surroundings.clear();
    EXPECT_EQ(From(Vector(0, 0, 6), 8.0f).At(Width() / 2, Height() / 2), plain);
}

TEST_F(PresentationSurroundings, GlassHidesWhatIsBehindItAsFarAsItReflects)
{
    PaintFile(m_folder.Path("red.png"), 64, 32, [](int, int) { return Pixel{200, 0, 0}; });
    m_settings.surroundings = m_folder.Path("red.png");
    Material& glass = Show(MakeSquare(Vector(0, 0, 1), 1.0f), 0.5f, 1.0f);
    glass.SetDiffuse(Color(0, 0, 0, 0.2f));
    m_presentation->GetScene().ProcessChangedMaterial(&glass);
    m_presentation->Refresh();
    const Picture picture = From(Vector(0, 0, 6), 8.0f);
    // 0.5 of the red, and of the white behind what 0.2 and 0.5 leave: 0.4.
    const Pixel seen = picture.At(Width() / 2, Height() / 2);
    EXPECT_LE(ChannelDifference({seen.r, seen.g, seen.b}, {202, 102, 102}), 3) << seen;
}

TEST_F(PresentationSurroundings, ComeBackAfterASuspendAndStandInNoOtherLook)
{
    Show(MakeBall(), 1.0f, 1.0f);
    const Picture before = From(Vector(0, 0, 5), 30.0f);
    m_presentation->Suspend();
    m_presentation->Resume();
    ExpectSame(Draw(*m_presentation), before, "resumed");
    m_settings.look = Look::Basic;
    const Picture basic = From(Vector(0, 0, 5), 30.0f);
    m_settings.surroundings.clear();
    ExpectSame(From(Vector(0, 0, 5), 30.0f), basic, "basic");
}

TEST_F(PresentationSurroundings, AFileThatCanNotBeReadLeavesTheOldSettings)
{
    Show(MakeBall(), 1.0f, 1.0f);
    const Picture before = From(Vector(0, 0, 5), 30.0f);
    PresentationSettings wanted = m_settings;
    wanted.surroundings = m_folder.Path("none.png");
    std::string error;
    EXPECT_FALSE(m_presentation->Apply(wanted, error));
    EXPECT_NE(error.find("none.png: cannot be read"), std::string::npos) << error;
    EXPECT_TRUE(m_presentation->GetSettings() == m_settings);
    ExpectSame(Draw(*m_presentation), before, "refused");
}

} // namespace

} // namespace OV::Test
