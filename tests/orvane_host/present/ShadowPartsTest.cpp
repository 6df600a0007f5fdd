#include "tests/orvane_host/present/ShadowStageModels.h"

#include <cmath>
#include <cstdlib>

namespace OV::Test
{

namespace
{

constexpr int kSize = 120;

class ShadowParts : public PresentationFixture
{
protected:
    ShadowParts() : PresentationFixture(kSize, kSize, 0) {}

    /// From just above the floor, so that its map has parts by distance.
    Picture DrawFromFloor(float scale)
    {
        FloorAndCube made = MakeFloorAndCube(0.4f, Color(0.8f, 0.8f, 0.8f), scale);
        Host::PresentationSettings settings = LookingDown(scale);
        settings.view.orthographic = false;
        settings.view.eye = Vector(1.6f * scale, 0.25f * scale, 2.0f * scale);
        settings.view.target = Vector(-1.5f * scale, 0.0f, 0.2f * scale);
        settings.view.up = Vector(0, 1, 0);
        settings.view.fov = 60.0f;
        settings.sun->direction = Vector(1.0f, 0.5f, 0.3f);
        Apply(*made.presentation, settings);
        return Draw(*made.presentation);
    }
};

// Parts begin at the same distances at every scale, and so others of the map's cells are the first.
TEST_F(ShadowParts, AreFoundAtAnyScale)
{
    const Picture expected = DrawFromFloor(1.0f);
    int shaded = 0;
    for (int i = 0; i < kSize * kSize; ++i)
    {
        shaded += expected.At(i % kSize, i / kSize).r == 102 ? 1 : 0;
    }
    EXPECT_GT(shaded, kSize);
    for (int step = 1; step <= 24; ++step)
    {
        SCOPED_TRACE(step);
        const Picture picture = DrawFromFloor(std::exp2(0.25f * static_cast<float>(step - 12)));
        int others = 0;
        for (int i = 0; i < kSize * kSize; ++i)
        {
            const int difference = picture.At(i % kSize, i / kSize).r - expected.At(i % kSize, i / kSize).r;
            others += std::abs(difference) > 40 ? 1 : 0;
        }
        // Texels lie otherwise, along rims.
        EXPECT_LT(others, kSize / 3);
    }
}

} // namespace

} // namespace OV::Test
