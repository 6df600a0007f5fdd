#include "tests/orvane_host/present/ShadowStageModels.h"

#include "orvane/math/Quaternion.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace OV::Test
{

namespace
{

using Host::PresentationSettings;

constexpr int kSize = 120;

/// About the X axis.
Transform QuarterTurn()
{
    Transform turn;
    turn.SetRotation(Quaternion(std::sqrt(0.5f), 0.0f, 0.0f, std::sqrt(0.5f)));
    return turn;
}

/// How lit a pixel of the white floor is: 0 in shadow, 1 outside.
double LitAt(const Picture& picture, int x, int y)
{
    return (picture.At(x, y).r - 102.0) / 153.0;
}

/// Where a rim runs.
struct RimRange
{
    double least = 1e9;
    double most = -1e9;

    void Add(double place)
    {
        least = std::min(least, place);
        most = std::max(most, place);
    }

    void ExpectAbout(double place, double width) const
    {
        EXPECT_NEAR(least, place, 1.5);
        EXPECT_NEAR(most, place, 1.5);
        EXPECT_LT(most - least, width);
    }
};

class ShadowRims : public FloorAndCubeFixture
{
protected:
    ShadowRims() : FloorAndCubeFixture(kSize, kSize, 4) {}
};

struct RimCase
{
    bool orthographic;
    bool soft;
    Host::UpAxis up;
    float height; ///< of the sun, against 1.06 along the ground
};

std::vector<RimCase> RimCases()
{
    constexpr float heights[] = {0.25f, 0.35f, 0.6f, 1.0f};
    std::vector<RimCase> cases;
    for (int i = 0; i < 32; ++i)
    {
        cases.push_back({(i & 16) != 0, (i & 8) != 0, (i & 4) != 0 ? Host::UpAxis::Z : Host::UpAxis::Y, heights[i & 3]});
    }
    return cases;
}

// However flat light comes in, and however it runs across the pixels.
TEST_F(ShadowRims, AreStraight)
{
    for (const RimCase& rim : RimCases())
    {
        const bool isZUp = rim.up == Host::UpAxis::Z;
        SCOPED_TRACE(std::string(rim.orthographic ? "orthographic" : "perspective") + (rim.soft ? ", soft, " : ", hard, ")
                     + (isZUp ? "z up, " : "y up, ") + std::to_string(rim.height));
        FloorAndCube made = MakeFloorAndCube(0.0f);
        // All of it is turned about what is up, for nothing to lie along an axis, and then laid down.
        constexpr float half = 0.26f;
        const auto turned = [&](const Vector& v) {
            const Vector about(std::cos(2 * half) * v.x + std::sin(2 * half) * v.z, v.y,
                               std::cos(2 * half) * v.z - std::sin(2 * half) * v.x);
            return isZUp ? Vector(about.x, -about.z, about.y) : about;
        };
        Transform turn;
        turn.SetRotation(Quaternion(0.0f, std::sin(half), 0.0f, std::cos(half)));
        made.cube->SetLocal(turn);
        made.floor->SetLocal(turn);
        if (isZUp)
        {
            made.presentation->GetScene().GetRoot()->SetLocal(QuarterTurn());
        }
        made.presentation->Refresh();
        PresentationSettings settings = LookingDown();
        settings.sun->direction = turned(Vector(1.0f, rim.height, 0.37f));
        settings.shadows->soft = rim.soft;
        settings.view.orthographic = rim.orthographic;
        settings.view.upAxis = rim.up;
        settings.view.up = turned(*settings.view.up);
        // The shadow of the edge of the cube that lies across it, as large as it gets.
        const Vector middle(-0.5f - 1.0f / rim.height, 0.0f, -0.37f / rim.height);
        settings.view.eye = turned(Vector(middle.x, 20.0f, middle.z));
        settings.view.target = turned(middle);
        settings.view.fov = 3.0f;
        const Picture picture = Draw(made, settings);
        RimRange range;
        for (int y = kSize / 2 - 40; y < kSize / 2 + 40; ++y)
        {
            double lit = 0.0;
            for (int x = 10; x < kSize - 10; ++x)
            {
                lit += LitAt(picture, x, y);
            }
            range.Add(lit);
        }
        range.ExpectAbout(0.5 * kSize - 10, 1.25);
    }
}

// As under the eaves of a house at noon.
TEST_F(ShadowRims, AreStraightOnWallsInSteepLight)
{
    for (const bool isSoft : {false, true})
    {
        for (const float height : {1.2f, 2.0f, 3.5f})
        {
            SCOPED_TRACE(std::string(isSoft ? "soft, " : "hard, ") + std::to_string(height));
            FloorAndCube made = MakeFloorAndCube(0.0f);
            made.floor->SetLocal(QuarterTurn());
            Transform eaves;
            eaves.SetScale(Vector(12.0f, 0.2f, 1.0f));
            eaves.SetPosition(Vector(0.0f, 4.0f, 0.5f));
            made.cube->SetLocal(eaves);
            made.presentation->Refresh();
            PresentationSettings settings = LookingDown();
            settings.shadows->soft = isSoft;
            settings.sun->direction = Vector(0.07f, height, 1.0f);
            const Vector rim(0.0f, 4.0f - height, 0.0f);
            settings.view.orthographic = false;
            settings.view.eye = Vector(rim.x, rim.y, 20.0f);
            settings.view.target = rim;
            settings.view.up = Vector(0, 1, 0);
            settings.view.fov = 8.0f;
            const Picture picture = Draw(made, settings);
            RimRange range;
            for (int x = 10; x < kSize - 10; ++x)
            {
                double lit = 0.0;
                for (int y = kSize / 2 - 15; y < kSize / 2 + 15; ++y)
                {
                    lit += LitAt(picture, x, y);
                }
                range.Add(lit);
            }
            range.ExpectAbout(15.0, 1.25);
        }
    }
}

// So close that the map is but of what is seen. A rim may lie a texel from where it should, but stays
// there.
TEST_F(ShadowRims, DoNotCrawlWhileTheEyeMoves)
{
    for (const bool orthographic : {false, true})
    {
        SCOPED_TRACE(orthographic ? "orthographic" : "perspective");
        FloorAndCube made = MakeFloorAndCube(2.0f);
        PresentationSettings settings = LookingDown();
        settings.view.orthographic = orthographic;
        // The rim of the shadow is in the middle of the picture.
        settings.view.fov = 1.0f;
        const double pixel = 2.0 * 20.0 * std::tan(0.5 * 3.14159265358979 / 180.0) / kSize;
        RimRange range;
        for (int step = 0; step < 24; ++step)
        {
            const float place = static_cast<float>(-3.5 + 0.37 * pixel * step);
            settings.view.eye = Vector(place, 20.0f, 0.0f);
            settings.view.target = Vector(place, 0.0f, 0.0f);
            const Picture picture = Draw(made, settings);
            double lit = 0.0;
            for (int x = 0; x < kSize; ++x)
            {
                for (int y = 40; y < 80; ++y)
                {
                    lit += LitAt(picture, x, y) / 40.0;
                }
            }
            range.Add(lit + 0.37 * step);
        }
        range.ExpectAbout(0.5 * kSize, 0.4);
    }
}

// Which side of such a plane the sun is on numbers tell otherwise from pixel to pixel.
TEST_F(ShadowRims, AreNoneOnAWallThatLightRunsAlong)
{
    // From a millimetre to ten kilometres, from near by and from far off.
    constexpr float scales[] = {1e-4f, 1.0f, 1e3f};
    constexpr float distances[] = {4.0f, 20.0f, 60.0f};
    for (int i = 0; i < 72; ++i)
    {
        const bool isSoft = (i & 1) != 0;
        const bool isAskew = (i & 2) != 0;
        const bool isOrthographic = (i & 4) != 0;
        const float scale = scales[i / 24];
        const float away = scale * distances[i / 8 % 3];
        SCOPED_TRACE(testing::Message() << (isSoft ? "soft, " : "hard, ") << (isAskew ? "askew, " : "")
                                        << (isOrthographic ? "orthographic, " : "") << scale << ", " << away);
        FloorAndCube made = MakeFloorAndCube(0.0f, Color(0.8f, 0.8f, 0.8f), scale);
        made.floor->SetLocal(QuarterTurn());
        Transform behind;
        behind.SetPosition(Vector(0.0f, 0.0f, -20.0f * scale));
        made.cube->SetLocal(behind);
        made.presentation->Refresh();
        PresentationSettings settings = LookingDown(scale);
        settings.shadows->soft = isSoft;
        settings.view.orthographic = isOrthographic;
        settings.view.eye = Vector(0.3f * away, 0.2f * away, away);
        settings.view.target = Vector();
        settings.view.up = Vector(0, 1, 0);
        settings.view.fov = 4.0f;
        const float across = isAskew ? 0.37f : 0.0f;
        settings.sun->direction = Vector(across, 1.0f, 0.0f);
        ExpectColorInRect(Draw(made, settings), {0, 0, kSize, kSize}, {102, 102, 102, 255}, 1);
        // A degree is enough for a side.
        settings.sun->direction = Vector(across, 1.0f, 0.0175f);
        ExpectColorInRect(Draw(made, settings), {0, 0, kSize, kSize}, {255, 255, 255, 255});
        settings.sun->direction = Vector(across, 1.0f, -0.0175f);
        ExpectColorInRect(Draw(made, settings), {0, 0, kSize, kSize}, {102, 102, 102, 255}, 1);
    }
}

} // namespace

} // namespace OV::Test
