#include "orvane/effects/SkySettings.h"

#include <gtest/gtest.h>

#include <utility>

namespace OV::Test
{

namespace
{

void ExpectColor(const Color& actual, float r, float g, float b, float a)
{
    EXPECT_TRUE(actual.IsExactlyEqual(Color(r, g, b, a)))
        << actual.r << ' ' << actual.g << ' ' << actual.b << ' ' << actual.a;
}

void ExpectDefaults(const SkySettings& sky)
{
    EXPECT_TRUE(sky.UseFog());
    EXPECT_EQ(sky.GetFogStart(), 8000.0f);
    EXPECT_EQ(sky.GetFogEnd(), 10000.0f);
    ExpectColor(sky.GetHorizonColor(), 1, 1, 1, 1);
    EXPECT_TRUE(sky.UseLinearFog());
    EXPECT_EQ(sky.FogDensity(), 0.00005f);
    ExpectColor(sky.GetSkyColor(), 0.7372549f, 0.8f, 0.85490197f, 1);
    ExpectColor(sky.GetUpperSkyColor(), 0.5921569f, 0.7294118f, 0.8862745f, 1);
    EXPECT_EQ(sky.HorizonStop(), 0.1f);
    EXPECT_EQ(sky.SkyStop(), 0.2f);
    EXPECT_TRUE(sky.UseSkyColor());
    EXPECT_FALSE(sky.IsMonotone());
}

} // namespace

TEST(SkySettings, StartsAsStated)
{
    ExpectDefaults(SkySettings());
}

// CTest gives each test a process of its own, so this is what the process starts with.
TEST(SkySettings, TheOneInstanceStartsAsStated)
{
    ExpectDefaults(SkySettings::inst());
    EXPECT_EQ(&SkySettings::inst(), &SkySettings::inst());
}

TEST(SkySettings, SettersAreRead)
{
    SkySettings sky;
    sky.SetUseFog(false);
    sky.SetFogStart(1.0f);
    sky.SetFogEnd(2.0f);
    sky.SetSkyColor(Color(0.1f, 0.2f, 0.3f, 0.4f));
    sky.SetSkyUpperColor(Color(0.5f, 0.6f, 0.7f, 0.8f));
    sky.SetHorizonStop(0.3f);
    sky.SetSkyStop(0.4f);
    sky.SetUseSkyColor(false);
    sky.SetMonotone(true);
    EXPECT_FALSE(sky.UseFog());
    EXPECT_EQ(sky.GetFogStart(), 1.0f);
    EXPECT_EQ(sky.GetFogEnd(), 2.0f);
    ExpectColor(sky.GetSkyColor(), 0.1f, 0.2f, 0.3f, 0.4f);
    ExpectColor(sky.GetUpperSkyColor(), 0.5f, 0.6f, 0.7f, 0.8f);
    EXPECT_EQ(sky.HorizonStop(), 0.3f);
    EXPECT_EQ(sky.SkyStop(), 0.4f);
    EXPECT_FALSE(sky.UseSkyColor());
    EXPECT_TRUE(sky.IsMonotone());
}

TEST(SkySettings, TheFogHasTheColourOfTheHorizon)
{
    SkySettings sky;
    sky.SetHorizonColor(Color(0.1f, 0.2f, 0.3f, 0.4f));
    ExpectColor(sky.GetFogColor(), 0.1f, 0.2f, 0.3f, 0.4f);
    EXPECT_EQ(&sky.GetFogColor(), &sky.GetHorizonColor());
}

TEST(SkySettings, MonotoneLeavesTheColours)
{
    SkySettings sky;
    sky.SetHorizonColor(Color(0.1f, 0.2f, 0.3f, 0.4f));
    sky.SetMonotone(true);
    ExpectColor(sky.GetHorizonColor(), 0.1f, 0.2f, 0.3f, 0.4f);
    ExpectColor(sky.GetSkyColor(), 0.7372549f, 0.8f, 0.85490197f, 1);
}

TEST(SkySettings, CopiesAndMovesTakeEveryValue)
{
    SkySettings sky;
    sky.SetFogStart(1.0f);
    sky.SetMonotone(true);
    const SkySettings copy(sky);
    EXPECT_EQ(copy.GetFogStart(), 1.0f);
    SkySettings assigned;
    assigned = std::move(sky);
    EXPECT_TRUE(assigned.IsMonotone());
}

} // namespace OV::Test
