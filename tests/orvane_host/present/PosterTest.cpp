#include "tests/orvane_host/present/PictureRows.h"
#include "tests/orvane_host/present/PresentationModels.h"
#include "tests/orvane_host/present/ShadowStageModels.h"
#include "tests/support/ShowMesh.h"

#include "orvane_host/geometry/Primitives.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>

namespace OV::Test
{

namespace
{

using Host::PresentationSettings;
using Host::Primitives;

/// Wider than the viewports of any GL that is common.
constexpr int kWide = 32896;
constexpr int kHigh = 20;

/// Pixels, of which each is a unit, between shadows; some rims of tiles, which are multiples of 64, lie in shadows and
/// some in the light.
constexpr int kApart = 192;

constexpr float kHeightOfEye = 100.0f;

/// A floor seen from above, and slabs beside the view whose shadows lie across it, 20 pixels wide.
std::unique_ptr<Host::Presentation> PresentSlabs()
{
    auto scene = std::make_unique<Scene>();
    auto* const material = new Material("white");
    material->SetDiffuse(Color(0.8f, 0.8f, 0.8f));
    scene->AddMaterial(material);
    const auto add = [&](const Vector& low, const Vector& high) {
        ShowMesh(Primitives::Box(low, high), *material, *scene);
    };
    const float half = 0.5f * static_cast<float>(kWide) + 50.0f;
    add(Vector(-half, -5.0f, -20.0f), Vector(half, 0.0f, 20.0f));
    const int last = kWide / 2 / kApart;
    for (int i = -last; i <= last; ++i)
    {
        const auto x = static_cast<float>(i * kApart);
        add(Vector(x - 10.0f, 24.0f, 12.0f), Vector(x + 10.0f, 26.0f, 37.0f));
    }
    return std::make_unique<Host::Presentation>(std::move(scene));
}

PresentationSettings FromAbove(bool soft)
{
    PresentationSettings wanted = LookingDown();
    wanted.view.eye = Vector(0, kHeightOfEye, 0);
    wanted.view.fov = static_cast<float>(2.0 * std::atan(0.5 * kHigh / kHeightOfEye) * 180.0 / 3.14159265358979323846);
    wanted.sun->direction = Vector(0, 1, 1);
    wanted.background = Color(1.0f, 0.0f, 0.0f);
    wanted.shadows->soft = soft;
    return wanted;
}

/// How far a column lies in the shadow nearest to it; below 0 outside.
double InShadow(int column)
{
    const double x = column + 0.5 - 0.5 * kWide;
    return 10.0 - std::abs(x - kApart * std::round(x / kApart));
}

class Poster : public PresentationFixture
{
};

TEST_F(Poster, CastsTheShadowsThatItIsToHaveWithoutSeams)
{
    const auto presentation = PresentSlabs();
    Host::PictureOptions options;
    options.width = kWide;
    options.height = kHigh;
    for (const bool soft : {false, true})
    {
        SCOPED_TRACE(soft ? "soft" : "hard");
        Apply(*presentation, FromAbove(soft));
        Host::PictureFacts facts;
        const Rows rows = WriteRows(*presentation, options, facts);
        EXPECT_GE(facts.tiles, 3);
        // Rims of hard shadows lie within 1.5 pixels of where they are to be, those of soft ones are that wide.
        constexpr double rim = 2.0;
        int wrong = 0;
        int first = kWide;
        int shaded = 0;
        for (int y = 0; y < kHigh; ++y)
        {
            for (int x = 0; x < kWide; ++x)
            {
                const double inside = InShadow(x);
                if (std::abs(inside) <= rim)
                {
                    continue;
                }
                // 1 - 0.6 of white in the shadow.
                const int expected = inside > 0.0 ? 102 : 255;
                shaded += inside > 0.0 ? 1 : 0;
                for (int channel = 0; channel < 3; ++channel)
                {
                    if (std::abs(rows.At(x, y, channel) - expected) > 1)
                    {
                        ++wrong;
                        first = std::min(first, x);
                        break;
                    }
                }
            }
        }
        EXPECT_EQ(wrong, 0) << "first in column " << first;
        EXPECT_GT(shaded, kWide / kApart * 15 * kHigh);
    }
}

} // namespace

} // namespace OV::Test
