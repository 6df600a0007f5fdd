#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane_host/geometry/Primitives.h"
#include "tests/orvane_host/present/PresentationModels.h"
#include "tests/support/ShowMesh.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <vector>

namespace OV::Test
{

namespace
{

using Host::PresentationSettings;

constexpr float kRadians = 3.14159265f / 180.0f;

/// A flat square that faces the eye and fills the picture.
class Strokes : public PresentationFixture
{
protected:
    Strokes() : PresentationFixture(192, 192, 0)
    {
        m_settings.look = Host::Look::Crosshatch;
        m_settings.antialiasing = Host::Antialiasing::None;
    }

    /// @param grey of the square in the light.
    /// @param turned radians by which its normals are turned away from the eye.
    /// @param pane grey of a pane before it, that lets 0.7 of the light through; none below 0.
    void Show(float size, float grey, float turned = 0.0f, float pane = -1.0f)
    {
        auto scene = std::make_unique<Scene>();
        auto* const material = new Material("grey");
        material->SetAmbient(Color(0.0f, 0.0f, 0.0f));
        material->SetDiffuse(Color(grey, grey, grey));
        scene->AddMaterial(material);
        AddSquare(*scene, *material, size, 0.0f, turned);
        if (pane >= 0.0f)
        {
            auto* const glass = new Material("glass");
            glass->SetDiffuse(Color(pane, pane, pane));
            glass->SetOpacity(0.3f);
            scene->AddMaterial(glass);
            AddSquare(*scene, *glass, size, 0.1f, 0.0f);
        }
        m_model = std::make_unique<Host::Presentation>(std::move(scene));
        m_size = size;
        LookFrom(2.0f);
    }

    /// @param grey in the light.
    void ShowSphere(float grey)
    {
        auto scene = std::make_unique<Scene>();
        auto* const material = new Material("grey");
        material->SetAmbient(Color(0.0f, 0.0f, 0.0f));
        material->SetDiffuse(Color(grey, grey, grey));
        scene->AddMaterial(material);
        ShowMesh(Host::Primitives::Sphere(1.0f, 96, 48), *material, *scene);
        m_model = std::make_unique<Host::Presentation>(std::move(scene));
    }

    /// @param z in sizes.
    static void AddSquare(Scene& scene, Material& material, float size, float z, float turned)
    {
        auto raw = std::make_shared<RawMesh>();
        const float h = 4.0f * size;
        const float d = z * size;
        raw->SetPositionBuffer({Vector(-h, -h, d), Vector(h, -h, d), Vector(h, h, d), Vector(-h, h, d)});
        raw->SetNormalBuffer(std::vector<Vector>(4, Vector(0, -std::sin(turned), std::cos(turned))));
        raw->SetIndices({0, 1, 2, 0, 2, 3});
        raw->EndDescription(true);
        ShowMesh(raw, material, scene);
    }

    /// @param distance in sizes.
    void LookFrom(float distance, float aside = 0.0f)
    {
        m_settings.view.eye = Vector(aside * m_size, 0, distance * m_size);
        m_settings.view.target = Vector(aside * m_size, 0, 0);
    }

    Picture Redraw(float ratio = 1.0f)
    {
        Apply(*m_model, m_settings);
        m_model->Draw(Width(), Height(), ratio);
        return ReadPixels();
    }

    static double MeanOf(const Picture& picture)
    {
        double sum = 0.0;
        for (int y = 0; y < picture.GetHeight(); ++y)
        {
            for (int x = 0; x < picture.GetWidth(); ++x)
            {
                sum += picture.At(x, y).g / 255.0;
            }
        }
        return sum / (picture.GetWidth() * picture.GetHeight());
    }

    /// Widths of the strokes of the first direction in pixels, where half of the ink of each begins and
    /// ends. Those that come in or end are left out.
    std::vector<double> WidthsOf(const Picture& picture) const
    {
        std::vector<double> widths;
        for (int y = 0; y < picture.GetHeight(); y += 3)
        {
            int begin = -1;
            for (int x = 0; x < picture.GetWidth(); ++x)
            {
                const bool isInk = picture.At(x, y).g < 250;
                if (isInk && begin < 0)
                {
                    begin = x;
                }
                if (!isInk && begin > 0)
                {
                    int darkest = 255;
                    double ink = 0.0;
                    for (int i = begin; i < x; ++i)
                    {
                        darkest = std::min(darkest, picture.At(i, y).g);
                        ink += 255 - picture.At(i, y).g;
                    }
                    if (darkest < 125)
                    {
                        widths.push_back(ink / (255 - darkest));
                    }
                }
                begin = isInk ? begin : -1;
            }
        }
        std::sort(widths.begin(), widths.end());
        return widths;
    }

    /// Turns the strokes of the first direction upright.
    void StandUp() { m_settings.view.up = Vector(0.6603f, 0.5002f, 0); }

    PresentationSettings m_settings;
    std::unique_ptr<Host::Presentation> m_model;
    float m_size = 1.0f;
};

double MeanDifference(const Picture& left, const Picture& right)
{
    double sum = 0.0;
    for (int y = 0; y < left.GetHeight(); ++y)
    {
        for (int x = 0; x < left.GetWidth(); ++x)
        {
            sum += std::abs(left.At(x, y).g - right.At(x, y).g);
        }
    }
    return sum / (255.0 * left.GetWidth() * left.GetHeight());
}

constexpr float kSizes[] = {1e-3f, 1.0f, 1e3f, 1e4f};

} // namespace

/// What docs/looks.md says that strokes stand for.
/// @param facing cosine of the angle to the light.
double ToneFor(double grey, double facing)
{
    const double light = 0.74 + 0.26 * std::min(std::max(facing, 0.0) / 0.75, 1.0);
    return light * (1.0 - 0.28 * (1.0 - grey));
}

TEST_F(Strokes, HaveTheToneOfTheShadingAtAnySize)
{
    double worst = 0.0;
    double darkest = 1.0;
    for (const float size : kSizes)
    {
        for (const float turned : {0.0f, 0.7f, 1.1f, 2.4f})
        {
            Show(size, 1.0f, turned);
            m_settings.look = Host::Look::Basic;
            m_settings.view.orthographic = false;
            const double facing = MeanOf(Redraw());
            m_settings.look = Host::Look::Crosshatch;
            for (const float grey : {0.0f, 0.1f, 0.25f, 0.4f, 0.55f, 0.7f, 0.85f, 1.0f})
            {
                Show(size, grey, turned);
                const double expected = ToneFor(grey, facing);
                darkest = std::min(darkest, expected);
                for (const bool orthographic : {false, true})
                {
                    m_settings.view.orthographic = orthographic;
                    const double tone = MeanOf(Redraw());
                    EXPECT_NEAR(tone, expected, 0.05) << size << ' ' << grey << ' ' << facing << ' ' << orthographic;
                    worst = std::max(worst, std::abs(tone - expected));
                }
            }
        }
    }
    std::cout << "worst tone " << worst << ", darkest " << darkest << '\n';
    EXPECT_LT(darkest, 0.55);
}

TEST_F(Strokes, LeaveThePaperWhiteInFullLight)
{
    Show(1.0f, 1.0f);
    EXPECT_EQ(MeanOf(Redraw()), 1.0);
}

TEST_F(Strokes, OfOneSetStandForALightTone)
{
    // Nothing but strokes one way: along them the picture stays, but for where the pen was lifted.
    StandUp();
    Show(1.0f, 0.5f);
    const Picture light = Redraw();
    Show(1.0f, 0.5f, 2.4f);
    const Picture dark = Redraw();
    const auto alongOverAcross = [this](const Picture& picture) {
        double along = 0.0;
        double across = 0.0;
        for (int y = 0; y + 1 < Height(); ++y)
        {
            for (int x = 0; x + 1 < Width(); ++x)
            {
                along += std::abs(picture.At(x, y + 1).g - picture.At(x, y).g);
                across += std::abs(picture.At(x + 1, y).g - picture.At(x, y).g);
            }
        }
        return along / across;
    };
    EXPECT_LT(alongOverAcross(light), 0.2);
    EXPECT_GT(alongOverAcross(dark), 0.3);
}

TEST_F(Strokes, LieAsFarApartAsSingleLinesDo)
{
    StandUp();
    // About the middle of what one set stands for.
    Show(1.0f, 0.65f);
    const Picture picture = Redraw();
    int strokes = 0;
    for (int y = 0; y < Height(); ++y)
    {
        for (int x = 1; x + 1 < Width(); ++x)
        {
            const int here = picture.At(x, y).g;
            strokes += here < 200 && here <= picture.At(x - 1, y).g && here < picture.At(x + 1, y).g ? 1 : 0;
        }
    }
    const double apart = static_cast<double>(Width()) * Height() / strokes;
    std::cout << "pixels from stroke to stroke " << apart << '\n';
    EXPECT_GT(apart, 7.0);
    EXPECT_LT(apart, 14.0);
}

TEST_F(Strokes, OnAPaneAreFewAndLetSeeWhatLiesBehind)
{
    for (const float grey : {0.0f, 1.0f})
    {
        Show(1.0f, 0.0f, 2.4f);
        const double behind = MeanOf(Redraw());
        Show(1.0f, 0.0f, 2.4f, grey);
        const double through = MeanOf(Redraw());
        // A veil of paper that covers 0.6 where nothing of the pane does, with strokes of a light tone.
        const double covered = 0.6 + 0.4 * 0.3;
        const double expected = (covered + (1.0 - covered) * behind) * (0.92 + 0.3 * (1.0 - 0.92));
        EXPECT_NEAR(through, expected, 0.05) << "whatever its colour, " << grey;
        EXPECT_GT(through, behind + 0.2);
    }
}

TEST_F(Strokes, AreAsWideAtAnySizeAndZoom)
{
    StandUp();
    double narrowest = 1e9;
    double widest = 0.0;
    for (const float size : kSizes)
    {
        Show(size, 0.6f);
        for (const bool orthographic : {false, true})
        {
            m_settings.view.orthographic = orthographic;
            for (int i = 0; i < 12; ++i)
            {
                LookFrom(0.5f * std::pow(2.0f, static_cast<float>(i) / 4.0f));
                // Four times as broad, so that a pixel more or less is little.
                const std::vector<double> widths = WidthsOf(Redraw(4.0f));
                ASSERT_GT(widths.size(), 60u) << size << ' ' << i;
                const double middle = widths[widths.size() / 2] / 4.0;
                narrowest = std::min(narrowest, middle);
                widest = std::max(widest, middle);
                EXPECT_GT(widths[widths.size() / 20] / 4.0, 0.8) << size << ' ' << i;
            }
        }
    }
    std::cout << "widths " << narrowest << " to " << widest << '\n';
    EXPECT_NEAR(narrowest, 1.1, 0.2);
    EXPECT_LT(widest / narrowest, 1.5);
}

TEST_F(Strokes, AreWrittenInPixelsOfTheScreen)
{
    StandUp();
    Show(1.0f, 0.6f);
    const std::vector<double> twice = WidthsOf(Redraw(2.0f));
    const std::vector<double> fourTimes = WidthsOf(Redraw(4.0f));
    EXPECT_NEAR(fourTimes[fourTimes.size() / 2] / twice[twice.size() / 2], 2.0, 0.3);
    // A finer capture shows what the screen would.
    m_settings.antialiasing = Host::Antialiasing::Supersampling;
    const std::vector<double> fine = WidthsOf(Redraw(4.0f));
    EXPECT_NEAR(fine[fine.size() / 2] / fourTimes[fourTimes.size() / 2], 1.0, 0.15);
}

TEST_F(Strokes, KeepToneAndChangeSmoothlyWhileZooming)
{
    for (const float grey : {0.8f, 0.3f})
    {
        Show(1.0f, grey);
        m_settings.view.orthographic = true;
        std::vector<double> steps;
        double lightest = 0.0;
        double darkest = 1.0;
        Picture last;
        // A little more than from one lattice to the next.
        for (int i = 0; i <= 150; ++i)
        {
            LookFrom(2.0f * std::pow(2.0f, static_cast<float>(i) / 140.0f));
            const Picture picture = Redraw();
            const double tone = MeanOf(picture);
            lightest = std::max(lightest, tone);
            darkest = std::min(darkest, tone);
            if (i > 0)
            {
                steps.push_back(MeanDifference(picture, last));
            }
            last = picture;
        }
        EXPECT_LT(lightest - darkest, 0.05) << grey;
        std::vector<double> sorted = steps;
        std::sort(sorted.begin(), sorted.end());
        std::cout << "steps " << sorted.front() << ' ' << sorted[sorted.size() / 2] << ' ' << sorted.back() << '\n';
        EXPECT_LT(sorted.back(), 1.5 * sorted[sorted.size() / 2]) << "a pop, for " << grey;
    }
}

TEST_F(Strokes, AreAnchoredToTheObject)
{
    Show(1.0f, 0.5f);
    m_settings.view.orthographic = true;
    const Picture before = Redraw();
    // Sixteen pixels to the side.
    const float pixel = 2.0f * 2.0f * std::tan(17.5f * kRadians) / static_cast<float>(Height());
    LookFrom(2.0f, 16.0f * pixel);
    const Picture after = Redraw();
    double sum = 0.0;
    for (int y = 0; y < Height(); ++y)
    {
        for (int x = 0; x + 16 < Width(); ++x)
        {
            sum += std::abs(after.At(x, y).g - before.At(x + 16, y).g);
        }
    }
    EXPECT_LT(sum / (Height() * (Width() - 16)), 2.0);
    EXPECT_GT(MeanDifference(before, after), 0.1) << "they moved";
}

TEST_F(Strokes, AreLinesAndNoFlatGreyAtAnySize)
{
    for (const float size : kSizes)
    {
        for (const float grey : {0.2f, 0.5f, 0.8f})
        {
            Show(size, grey);
            const Picture picture = Redraw();
            double sum = 0.0;
            for (int y = 0; y < Height(); ++y)
            {
                for (int x = 0; x + 2 < Width(); ++x)
                {
                    sum += std::abs(picture.At(x + 2, y).g - picture.At(x, y).g) / 255.0;
                }
            }
            const double ink = 1.0 - MeanOf(picture);
            EXPECT_GT(ink, 0.05);
            EXPECT_GT(sum / (Height() * (Width() - 2)), ink) << size << ' ' << grey;
        }
    }
}

TEST_F(Strokes, FollowTheShadingOfWhatIsRound)
{
    m_settings.view.eye = Vector(1.2f, 1.0f, 2.4f);
    m_settings.view.target = Vector(0, 0, 0);
    m_settings.look = Host::Look::Basic;
    ShowSphere(1.0f);
    const Picture facing = Redraw();
    m_settings.look = Host::Look::Crosshatch;
    ShowSphere(0.4f);
    const Picture strokes = Redraw();
    constexpr int edge = 24;
    int counted = 0;
    for (int top = 36; top + edge <= 156; top += edge)
    {
        for (int left = 36; left + edge <= 156; left += edge)
        {
            double expected = 0.0;
            double actual = 0.0;
            bool isInside = true;
            for (int y = top; y < top + edge; ++y)
            {
                for (int x = left; x < left + edge; ++x)
                {
                    isInside = isInside && facing.At(x, y) != Pixel{255, 255, 255, 255};
                    expected += ToneFor(0.4, facing.At(x, y).g / 255.0);
                    actual += strokes.At(x, y).g / 255.0;
                }
            }
            if (isInside)
            {
                ++counted;
                EXPECT_NEAR(actual / (edge * edge), expected / (edge * edge), 0.05) << left << ", " << top;
            }
        }
    }
    EXPECT_GT(counted, 10);
}

TEST_F(Strokes, BendWithWhatIsRoundWithoutASeam)
{
    // Normals of a flat square that are those of something round tell where strokes change their direction.
    const auto draw = [this](float mostTurned)
    {
        auto scene = std::make_unique<Scene>();
        auto* const material = new Material("dark");
        material->SetDiffuse(Color(0.0f, 0.0f, 0.0f));
        material->SetFlags(MaterialFlagUnlit);
        scene->AddMaterial(material);
        auto raw = std::make_shared<RawMesh>();
        raw->SetPositionBuffer({Vector(-4, -4, 0), Vector(4, -4, 0), Vector(4, 4, 0), Vector(-4, 4, 0)});
        const Vector left(-std::sin(mostTurned), -std::sin(mostTurned), std::cos(mostTurned));
        const Vector right(std::sin(mostTurned), std::sin(mostTurned), std::cos(mostTurned));
        raw->SetNormalBuffer({left, right, right, left});
        raw->SetIndices({0, 1, 2, 0, 2, 3});
        raw->EndDescription(true);
        ShowMesh(raw, *material, *scene);
        m_model = std::make_unique<Host::Presentation>(std::move(scene));
        LookFrom(12.0f);
        return Redraw();
    };
    const Picture flat = draw(0.0f);
    EXPECT_LT(MeanOf(flat), 0.74) << "two sets at least";
    ExpectSame(draw(1.4f), flat, "round");
}

TEST_F(Strokes, HaveTheToneOfShadowsOfAnyDarkness)
{
    // Throws a shadow on all that is in the picture from behind the eye.
    const Vector sun(0.7f, 0.0f, 1.0f);
    double worst = 0.0;
    for (const float grey : {0.0f, 0.4f, 1.0f})
    {
        auto scene = std::make_unique<Scene>();
        auto* const material = new Material("grey");
        material->SetAmbient(Color(0.0f, 0.0f, 0.0f));
        material->SetDiffuse(Color(grey, grey, grey));
        scene->AddMaterial(material);
        AddSquare(*scene, *material, 1.0f, 0.0f, 0.0f);
        auto raw = std::make_shared<RawMesh>();
        raw->SetPositionBuffer({Vector(0.6f, -1.5f, 3), Vector(3.6f, -1.5f, 3), Vector(3.6f, 1.5f, 3), Vector(0.6f, 1.5f, 3)});
        raw->SetNormalBuffer(std::vector<Vector>(4, Vector(0, 0, 1)));
        raw->SetIndices({0, 1, 2, 0, 2, 3});
        raw->EndDescription(true);
        ShowMesh(raw, *material, *scene);
        m_model = std::make_unique<Host::Presentation>(std::move(scene));
        LookFrom(2.0f);
        m_settings.sun.emplace().direction = sun;
        m_settings.shadows.reset();
        const double lit = MeanOf(Redraw());
        EXPECT_NEAR(lit, ToneFor(grey, 1.0), 0.05) << "full light";
        for (const float darkness : {0.0f, 0.05f, 0.1f, 0.2f, 0.35f, 0.5f, 0.65f, 0.8f, 0.9f, 0.95f, 1.0f})
        {
            m_settings.shadows.emplace().darkness = darkness;
            const double tone = MeanOf(Redraw());
            EXPECT_NEAR(tone, (1.0 - darkness) * ToneFor(grey, 1.0), 0.05) << grey << ' ' << darkness;
            worst = std::max(worst, std::abs(tone - (1.0 - darkness) * ToneFor(grey, 1.0)));
        }
    }
    std::cout << "worst tone of a shadow " << worst << '\n';
}

} // namespace OV::Test
