#include "tests/orvane_host/present/PresentationModels.h"

#include "orvane/math/Transform.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace OV::Test
{

namespace
{

using Host::GroundKind;
using Host::GroundSettings;
using Host::PresentationSettings;

const Pixel kGreen = {51, 153, 51};

class PresentationGround : public PresentationFixture
{
protected:
    PresentationGround() : PresentationFixture(160, 120, 0), m_presentation(PresentBoxes())
    {
        m_settings.ground.emplace();
        m_settings.ground->color = Color(0.2f, 0.6f, 0.2f);
        m_settings.antialiasing = Host::Antialiasing::None;
    }

    Picture From(const Vector& eye, const Vector& target, const Vector& up = Vector(0, 1, 0))
    {
        m_settings.view.eye = eye;
        m_settings.view.target = target;
        m_settings.view.up = up;
        return Redraw();
    }

    Picture Redraw()
    {
        Apply(*m_presentation, m_settings);
        return Draw(*m_presentation);
    }

    /// A place on the ground, from the middle of the model.
    struct Place
    {
        double x;
        double z;
    };

    /// What a pixel shows of a ground, for an eye that looks along -Z.
    Place PlaceSeen(const Vector& eye, double height, int x, int y) const
    {
        const double tangent = std::tan(17.5 * std::acos(-1.0) / 180.0);
        const double down = (Height() / 2.0 - y - 0.5) / (Height() / 2.0) * tangent;
        const double right = (x + 0.5 - Width() / 2.0) / (Height() / 2.0) * tangent;
        const double distance = (eye.y - height) / down;
        const auto box = m_presentation->GetModelBox();
        return {eye.x + right * distance - (box->low.x + box->high.x) / 2.0,
                eye.z - distance - (box->low.z + box->high.z) / 2.0};
    }

    /// Of the plain where no shadow is: half of it has faded at four extents of the model, or at
    /// one and a half times the distance of the eye.
    Pixel ColorAt(const Place& place, const Vector& eye, double height) const
    {
        const auto box = m_presentation->GetModelBox();
        const double extent = std::hypot(box->high.x - box->low.x, box->high.y - box->low.y, box->high.z - box->low.z);
        const double toMiddle = std::hypot(eye.x - (box->low.x + box->high.x) / 2.0, eye.y - height,
                                           eye.z - (box->low.z + box->high.z) / 2.0);
        const double share = std::hypot(place.x, place.z) / std::max(4.0 * extent, 1.5 * toMiddle);
        const auto left = static_cast<float>(1.0 / (1.0 + share * share * share));
        return ToPixel(1.0f - 0.8f * left, 1.0f - 0.4f * left, 1.0f - 0.8f * left);
    }

    /// The column of pixels a fifth of a unit beside the left box, which ends at -2.6, as it is seen
    /// from above without perspective from 21.5 units away.
    int BesideTheLeftBox() const
    {
        const double unit = Height() / 2.0 / (21.5 * std::tan(17.5 * std::acos(-1.0) / 180.0));
        return static_cast<int>(Width() / 2.0 - 2.8 * unit);
    }

    int CountOf(const Picture& picture, const std::function<bool(const Pixel&)>& counts) const
    {
        int count = 0;
        for (int y = 0; y < Height(); ++y)
        {
            for (int x = 0; x < Width(); ++x)
            {
                count += counts(picture.At(x, y)) ? 1 : 0;
            }
        }
        return count;
    }

    PresentationSettings m_settings;
    std::unique_ptr<Host::Presentation> m_presentation;
};

TEST_F(PresentationGround, IsSeenFromAboveInItsColourAndNotFromBelow)
{
    for (const bool orthographic : {false, true})
    {
        SCOPED_TRACE(orthographic);
        m_settings.view.orthographic = orthographic;
        // Past the contact shadow, where a twentieth has faded.
        const Picture above = From(Vector(0, 20, 0.1f), Vector(0, -1.5f, 0));
        ExpectColorInRect(above, {2, 2, 4, 4}, kGreen, 10);
        const Picture below = From(Vector(0, -20, 0.1f), Vector(0, -1.5f, 0));
        m_settings.ground.reset();
        const Picture without = From(Vector(0, -20, 0.1f), Vector(0, -1.5f, 0));
        ExpectSame(below, without, "below");
        m_settings.ground = GroundSettings{GroundKind::Plain, Color(0.2f, 0.6f, 0.2f), std::nullopt};
    }
}

TEST_F(PresentationGround, LiesWhereItsHeightIs)
{
    // A level view: below the eye line a pixel shows the ground where its ray meets it, however far
    // the far plane is; above it there is none.
    const Vector eye(0, 1, 30);
    for (const float height : {-1.5f, -3.0f})
    {
        m_settings.ground->height = height;
        const Picture level = From(eye, Vector(0, 1, 0));
        int compared = 0;
        for (int y = 0; y < Height() / 2; ++y)
        {
            for (int x = 2; x < Width(); x += 13)
            {
                const Place place = PlaceSeen(eye, height, x, y);
                // Beside the model and its shadow.
                if (std::abs(x - Width() / 2) > 30 && std::hypot(place.x, place.z) > 7.0)
                {
                    ASSERT_LE(ChannelDifference(level.At(x, y), ColorAt(place, eye, height)), 2)
                        << x << ", " << y << ": " << level.At(x, y) << " is not " << ColorAt(place, eye, height);
                    ++compared;
                }
            }
        }
        EXPECT_GT(compared, 200);
        EXPECT_EQ(level.At(2, Height() / 2 + 1), (Pixel{255, 255, 255, 255}));
        EXPECT_EQ(level.At(2, Height() - 1), (Pixel{255, 255, 255, 255}));
    }
}

TEST_F(PresentationGround, TheModelStandsOnItAndHidesItAndIsNotCutByIt)
{
    ASSERT_TRUE(m_presentation->Hide("glass"));
    const Picture with = From(Vector(6, 4, 9), Vector(0, -0.5f, 0));
    m_settings.ground.reset();
    const Picture without = Redraw();
    int model = 0;
    for (int y = 0; y < Height(); ++y)
    {
        for (int x = 0; x < Width(); ++x)
        {
            const Pixel pixel = without.At(x, y);
            if (pixel != Pixel{255, 255, 255, 255})
            {
                ++model;
                ASSERT_EQ(with.At(x, y), pixel) << x << ", " << y;
            }
        }
    }
    EXPECT_GT(model, 500);
}

TEST_F(PresentationGround, AHeightOfItsOwnHidesWhatIsBelow)
{
    const auto clay = [](const Pixel& pixel) { return pixel.r > pixel.g + 30; };
    const int whole = CountOf(From(Vector(0, 6, 12), Vector(0, 0, 0)), clay);
    m_settings.ground->height = 0.0f;
    const int above = CountOf(Redraw(), clay);
    m_settings.ground->height = 5.0f;
    const int none = CountOf(Redraw(), clay);
    EXPECT_LT(above, whole * 3 / 4);
    EXPECT_GT(above, whole / 5);
    EXPECT_EQ(none, 0);
}

TEST_F(PresentationGround, ItIsDarkerAtTheFeetAndNowhereElse)
{
    m_settings.ground->kind = GroundKind::ShadowCatcher;
    m_settings.ground->color = Color(1, 0, 0);
    m_settings.view.orthographic = true;
    m_settings.background = Color(0.8f, 0.8f, 0.8f);
    const Picture with = From(Vector(0, 20, 0.1f), Vector(0, -1.5f, 0));
    m_settings.ground.reset();
    const Picture without = Redraw();
    const int x = BesideTheLeftBox();
    EXPECT_LT(with.At(x, Height() / 2).r, without.At(x, Height() / 2).r - 25);
    EXPECT_GT(with.At(x, Height() / 2).r, 80);
    EXPECT_EQ(with.At(x, Height() / 2).r, with.At(x, Height() / 2).g);
    ExpectColorInRect(with, {0, 0, 6, 6}, {204, 204, 204, 255}, 1);
}

TEST_F(PresentationGround, TheShadowFollowsWhatIsHiddenAndCut)
{
    m_settings.ground->kind = GroundKind::ShadowCatcher;
    m_settings.view.orthographic = true;
    const Picture all = From(Vector(0, 20, 0.1f), Vector(0, -1.5f, 0));
    ASSERT_TRUE(m_presentation->Hide("left"));
    const Picture hidden = Draw(*m_presentation);
    const int x = BesideTheLeftBox();
    EXPECT_GT(hidden.At(x, Height() / 2).r, all.At(x, Height() / 2).r + 25);
    m_presentation->ShowAll();
    ExpectSame(Draw(*m_presentation), all, "shown again");
    m_settings.section.planes = {{Vector(-1, 0, 0), Vector(0, 0, 0)}};
    EXPECT_GT(Redraw().At(x, Height() / 2).r, all.At(x, Height() / 2).r + 25);
    m_settings.section.planes.clear();
    ExpectSame(Redraw(), all, "whole again");
}

TEST_F(PresentationGround, TheShadowWaitsForTheEndOfAHurry)
{
    m_settings.ground->kind = GroundKind::ShadowCatcher;
    m_settings.view.orthographic = true;
    From(Vector(0, 20, 0.1f), Vector(0, -1.5f, 0));
    const int x = BesideTheLeftBox();
    const int before = Redraw().At(x, Height() / 2).r;
    m_settings.section.planes = {{Vector(-1, 0, 0), Vector(0, 0, 0)}};
    m_presentation->Hurry(true);
    EXPECT_EQ(Redraw().At(x, Height() / 2).r, before) << "while the section moves";
    EXPECT_FALSE(m_presentation->NeedsDraw());
    std::string error;
    std::vector<unsigned char> saved;
    ASSERT_TRUE(m_presentation->TakePicture(saved, Width(), Height(), error)) << error;
    const auto middle = static_cast<std::size_t>((Height() / 2 * Width() + x) * 4);
    EXPECT_GT(saved[middle], before + 25) << "in a picture that is saved";

    // What was saved tells nothing of the end of the next one.
    m_settings.section.planes.clear();
    EXPECT_GT(Redraw().At(x, Height() / 2).r, before + 25) << "while it moves back";
    m_presentation->Hurry(false);
    EXPECT_TRUE(m_presentation->NeedsDraw());
    EXPECT_EQ(Draw(*m_presentation).At(x, Height() / 2).r, before) << "at rest";
}

TEST_F(PresentationGround, FogLiesOverItAsOverTheModel)
{
    m_settings.background = Color(1, 0, 0);
    m_settings.fog = Host::FogRange{5.0f, 25.0f};
    // Straight down from 15 units above: half way into the fog.
    const Picture picture = From(Vector(0, 13.5f, 0.01f), Vector(0, -1.5f, 0));
    ExpectColorInRect(picture, {2, 2, 4, 4}, {153, 76, 26, 255}, 10);
}

TEST_F(PresentationGround, ZIsUpWhereTheViewSaysSo)
{
    m_settings.view.upAxis = Host::UpAxis::Z;
    const Picture above = From(Vector(0.1f, 0, 20), Vector(0, 0, -1), Vector(0, 1, 0));
    ExpectColorInRect(above, {2, 2, 4, 4}, kGreen, 8);
    const Picture side = From(Vector(0, 20, 0.1f), Vector(0, 0, 0.1f), Vector(0, 0, 1));
    EXPECT_EQ(side.At(2, Height() - 3), (Pixel{255, 255, 255, 255}));
}

TEST_F(PresentationGround, BelongsToThePictureAlone)
{
    From(Vector(6, 4, 9), Vector(0, -0.5f, 0));
    const Host::PresentationStatistics with = m_presentation->GetStatistics();
    const auto box = m_presentation->GetShownBox();
    ASSERT_TRUE(box);
    EXPECT_EQ(m_presentation->Pick(2, Height() - 3), std::nullopt);
    m_settings.ground.reset();
    Redraw();
    const Host::PresentationStatistics without = m_presentation->GetStatistics();
    EXPECT_EQ(with.meshes, without.meshes);
    EXPECT_EQ(with.triangles, without.triangles);
    EXPECT_EQ(with.drawn.draws, without.drawn.draws);
    EXPECT_EQ(m_presentation->GetShownBox()->low.y, box->low.y);
}

TEST_F(PresentationGround, StandsWithEverythingElse)
{
    m_settings.sky = true;
    m_settings.edges.emplace();
    m_settings.occlusion = true;
    m_settings.lines.emplace();
    for (const auto antialiasing : {Host::Antialiasing::None, Host::Antialiasing::Multisampling, Host::Antialiasing::Filter,
                                    Host::Antialiasing::Supersampling})
    {
        m_settings.antialiasing = antialiasing;
        const Picture picture = From(Vector(0, 20, 0.1f), Vector(0, -1.5f, 0));
        ExpectColorInRect(picture, {4, 4, 4, 4}, kGreen, 8);
        ExpectNoGLError();
    }
    m_presentation->Suspend();
    m_presentation->Resume();
    ExpectColorInRect(Draw(*m_presentation), {4, 4, 4, 4}, kGreen, 8);
}

TEST_F(PresentationGround, SeeThroughThingsShowIt)
{
    // The glass is blue, before it is white ground and then green.
    const auto seen = [this] { return From(Vector(0.2f, 3.0f, 9), Vector(0.2f, 0.1f, 1.9f)).At(Width() / 2, Height() / 2); };
    m_settings.ground->color = Color(1, 1, 1);
    const Pixel white = seen();
    m_settings.ground->color = Color(0, 0.4f, 0);
    const Pixel green = seen();
    EXPECT_GT(white.r + white.g + white.b, green.r + green.g + green.b);
}

} // namespace

} // namespace OV::Test
