#include "orvane/math/Color.h"

#include "tests/math/MathTesting.h"

#include <type_traits>

using namespace MathTesting;
using OV::Color;

namespace
{

void ExpectChannels(const Color& color, float r, float g, float b, float a)
{
    EXPECT_EQ(color.r, r);
    EXPECT_EQ(color.g, g);
    EXPECT_EQ(color.b, b);
    EXPECT_EQ(color.a, a);
}

float& Channel(Color& color, int index)
{
    float* const channels[4] = {&color.r, &color.g, &color.b, &color.a};
    return *channels[index];
}

} // namespace

TEST(Color, IsFourPackedFloats)
{
    EXPECT_EQ(sizeof(Color), 16u);
    EXPECT_TRUE(std::is_standard_layout_v<Color>);
    EXPECT_TRUE(std::is_trivially_copyable_v<Color>);
}

TEST(Color, DefaultIsOpaqueWhite)
{
    ExpectChannels(Color(), 1.0f, 1.0f, 1.0f, 1.0f);
}

TEST(Color, ThreeArgumentsAreOpaqueFourSetAlpha)
{
    ExpectChannels(Color(0.1f, 0.2f, 0.3f), 0.1f, 0.2f, 0.3f, 1.0f);
    ExpectChannels(Color(0.1f, 0.2f, 0.3f, 0.4f), 0.1f, 0.2f, 0.3f, 0.4f);
}

TEST(Color, SetCopiesAndReturnsItself)
{
    Color color;
    EXPECT_EQ(&color.Set(Color(0.1f, 0.2f, 0.3f, 0.4f)), &color);
    ExpectChannels(color, 0.1f, 0.2f, 0.3f, 0.4f);
    EXPECT_EQ(&color.Set(0.5f, 0.6f, 0.7f, 0.8f), &color);
    ExpectChannels(color, 0.5f, 0.6f, 0.7f, 0.8f);
}

TEST(Color, SetOfThreeResetsAlphaToOne)
{
    Color color(0.0f, 0.0f, 0.0f, 0.25f);
    EXPECT_EQ(&color.Set(0.1f, 0.2f, 0.3f), &color);
    ExpectChannels(color, 0.1f, 0.2f, 0.3f, 1.0f);
}

TEST(Color, SetRGBDividesBy255AndKeepsAlpha)
{
    Color color(0.0f, 0.0f, 0.0f, 0.25f);
    color.SetRGB(255.0f, 127.5f, 510.0f);
    ExpectChannels(color, 1.0f, 0.5f, 2.0f, 0.25f);
}

TEST(Color, SetRGBADividesAllFourBy255)
{
    Color color;
    color.SetRGBA(51.0f, 127.5f, -255.0f, 25.5f);
    ExpectChannels(color, 51.0f / 255.0f, 0.5f, -1.0f, 25.5f / 255.0f);
}

TEST(Color, GetRGBMakesAnOpaqueColorOfBytes)
{
    ExpectChannels(Color::GetRGB(255, 102, 51), 1.0f, 102.0f / 255.0f, 51.0f / 255.0f, 1.0f);
    ExpectChannels(Color::GetRGB(0, 0, 0), 0.0f, 0.0f, 0.0f, 1.0f);
}

TEST(Color, GetRGBADividesEveryByteBy255)
{
    for (int i = 0; i < 256; ++i)
    {
        const auto byte = static_cast<unsigned char>(i);
        const auto other = static_cast<unsigned char>(255 - i);
        const auto fraction = static_cast<float>(i) / 255.0f;
        const auto otherFraction = static_cast<float>(255 - i) / 255.0f;
        ExpectChannels(Color::GetRGBA(byte, other, byte, other), fraction, otherFraction, fraction,
                       otherFraction);
    }
}

TEST(Color, AddRGBLeavesAlphaAndDoesNotClamp)
{
    Color color(0.5f, 0.75f, 1.0f, 0.5f);
    color.AddRGB(Color(1.0f, -1.0f, 0.25f, 0.75f));
    ExpectChannels(color, 1.5f, -0.25f, 1.25f, 0.5f);
    color.AddRGB(color);
    ExpectChannels(color, 3.0f, -0.5f, 2.5f, 0.5f);
}

TEST(Color, ModulateRGBLeavesAlphaAndDoesNotClamp)
{
    Color color(0.5f, 0.75f, -1.0f, 0.5f);
    color.ModulateRGB(4.0f);
    ExpectChannels(color, 2.0f, 3.0f, -4.0f, 0.5f);
}

TEST(Color, IsEqualIsStrictInAllFourChannels)
{
    for (int i = 0; i < 4; ++i)
    {
        Color zero(0.0f, 0.0f, 0.0f, 0.0f);
        Color color = zero;
        Channel(color, i) = Below(0.0001f);
        EXPECT_TRUE(color.IsEqual(zero)) << i;
        Channel(color, i) = -Below(0.0001f);
        EXPECT_TRUE(color.IsEqual(zero)) << i;
        Channel(color, i) = 0.0001f;
        EXPECT_FALSE(color.IsEqual(zero)) << i;
        Channel(color, i) = -0.0001f;
        EXPECT_FALSE(color.IsEqual(zero)) << i;
        Channel(color, i) = notANumber;
        EXPECT_FALSE(color.IsEqual(zero)) << i;
    }
}

TEST(Color, IsEqualComparesEachChannelWithItsOwn)
{
    const Color color(0.1f, 0.2f, 0.3f, 0.4f);
    EXPECT_TRUE(color.IsEqual(Color(0.1f, 0.2f, 0.3f, 0.4f)));
    for (int i = 0; i < 4; ++i)
    {
        Color other = color;
        Channel(other, i) = -Channel(other, i);
        EXPECT_FALSE(color.IsEqual(other)) << i;
    }
}

TEST(Color, IsExactlyEqualHasNoTolerance)
{
    const Color color(0.1f, 0.2f, 0.3f, 0.4f);
    EXPECT_TRUE(color.IsExactlyEqual(Color(0.1f, 0.2f, 0.3f, 0.4f)));
    for (int i = 0; i < 4; ++i)
    {
        Color other = color;
        Channel(other, i) = Above(Channel(other, i));
        EXPECT_FALSE(color.IsExactlyEqual(other)) << i;
        EXPECT_TRUE(color.IsEqual(other)) << i;
        Channel(other, i) = notANumber;
        EXPECT_FALSE(other.IsExactlyEqual(other)) << i;
    }
}
