#include "orvane/effects/LineFilterEffectES20.h"
#include "orvane/effects/DepthIdPassEffectES20.h"
#include "tests/renderer/OffscreenStage.h"

#include <gtest/gtest.h>

#include <random>

namespace OV::Test
{

namespace
{

constexpr int kSize = GLFixture::DefaultSize;
const Pixel kGround{40, 80, 120, 255};

Pixel IdColor(int id)
{
    float color[4];
    DepthIdPassEffectES20::EncodeId(id, color);
    return ToPixel(color[0], color[1], color[2]);
}

class LineFilterPixels : public OffscreenStage
{
protected:
    LineFilterPixels() : effect(Get<LineFilterEffectES20>(EffectCache::LineFilter))
    {
        effect.SetDimensions(kSize, kSize);
        effect.SetEdgeColor(Color(1.0f, 0.0f, 0.0f, 1.0f));
        effect.EdgeWeight(1.0f);
        effect.SetRenderTexture(static_cast<int>(MakeColors(kSize, kSize, [](int, int) { return kGround; })));
    }

    /// The filter over a picture of identifiers.
    Picture FilteredColors(const std::function<Pixel(int, int)>& color)
    {
        effect.SetIdTexture(static_cast<int>(MakeColors(kSize, kSize, color)));
        return Draw(effect);
    }

    /// The filter over identifiers of pixels.
    Picture Filtered(const std::function<int(int, int)>& id)
    {
        return FilteredColors([&](int x, int y) { return IdColor(id(x, y)); });
    }

    /// One pixel of another node.
    Picture Dot()
    {
        return Filtered([](int x, int y) { return x == 50 && y == 60 ? 7 : 3; });
    }

    LineFilterEffectES20& effect;
};

/// The ground with so much red over it.
Pixel Mixed(float alpha)
{
    const auto mix = [alpha](int ground, float line)
    { return static_cast<float>(ground) / 255.0f * (1.0f - alpha) + line * alpha; };
    return ToPixel(mix(kGround.r, 1.0f), mix(kGround.g, 0.0f), mix(kGround.b, 0.0f));
}

} // namespace

TEST_F(LineFilterPixels, WithoutAnEdgeThePictureStays)
{
    EXPECT_EQ(Filtered([](int, int) { return 12; }).Count(kGround), kSize * kSize);
}

TEST_F(LineFilterPixels, TheLeftNeighbourAloneGivesNoLine)
{
    const Picture picture = Dot();
    EXPECT_EQ(picture.At(51, 60), kGround) << "differs from its left neighbour only";
    EXPECT_EQ(picture.At(49, 60), Mixed(0.5f)) << "from its right one";
    EXPECT_EQ(picture.At(50, 59), Mixed(0.5f)) << "from the one above";
    EXPECT_EQ(picture.At(50, 61), Mixed(0.5f)) << "from the one below";
    EXPECT_EQ(picture.At(50, 60), Mixed(1.0f)) << "from all";
    EXPECT_EQ(picture.Count(kGround), kSize * kSize - 4);
}

TEST_F(LineFilterPixels, AVerticalBorderHasItsLineOnOneSide)
{
    const Picture picture = Filtered([](int x, int) { return x < 64 ? 1 : 2; });
    ExpectColorInRect(picture, {63, 0, 1, kSize}, Mixed(0.5f));
    EXPECT_EQ(picture.Count(kGround), kSize * (kSize - 1));
}

TEST_F(LineFilterPixels, AHorizontalBorderHasItsLineOnBothSides)
{
    const Picture picture = Filtered([](int, int y) { return y < 64 ? 1 : 2; });
    ExpectColorInRect(picture, {0, 63, kSize, 2}, Mixed(0.5f));
    EXPECT_EQ(picture.Count(kGround), kSize * (kSize - 2));
}

TEST_F(LineFilterPixels, TheNumberOfNeighboursDecidesAndTheWeightScales)
{
    std::mt19937 random(3);
    std::vector<int> ids;
    for (int i = 0; i < kSize * kSize; ++i)
    {
        ids.push_back(int(random() % 3));
    }
    const auto id = [&](int x, int y) {
        return ids[std::size_t(std::min(std::max(y, 0), kSize - 1) * kSize + std::min(std::max(x, 0), kSize - 1))];
    };
    for (const float weight : {1.0f, 0.5f, 0.25f, 0.0f})
    {
        effect.EdgeWeight(weight);
        const Picture picture = Filtered(id);
        int wrong = 0;
        for (int y = 0; y < kSize; ++y)
        {
            for (int x = 0; x < kSize; ++x)
            {
                const int own = id(x, y);
                const int sum = (id(x + 1, y) != own) + (id(x, y + 1) != own) + (id(x, y - 1) != own);
                const float share = sum == 0 ? 0.0f : sum == 1 ? 0.5f : 1.0f;
                wrong += ChannelDifference(picture.At(x, y), Mixed(share * weight)) > 1 ? 1 : 0;
            }
        }
        EXPECT_EQ(wrong, 0) << weight;
    }
}

TEST_F(LineFilterPixels, NeighboursLieAPixelOfTheSetSizeAwayInEachDirection)
{
    effect.SetDimensions(kSize / 4, kSize / 2);
    const Picture picture = Dot();
    EXPECT_EQ(picture.At(46, 60), Mixed(0.5f)) << "four texels to the left";
    EXPECT_EQ(picture.At(50, 58), Mixed(0.5f)) << "two below";
    EXPECT_EQ(picture.At(50, 62), Mixed(0.5f)) << "two above";
    EXPECT_EQ(picture.At(50, 60), Mixed(1.0f));
    EXPECT_EQ(picture.Count(kGround), kSize * kSize - 4);
}

TEST_F(LineFilterPixels, OneStepOfAnyChannelIsAnotherIdentifierAndAlphaIsNone)
{
    struct Row
    {
        const char* label;
        Pixel left, right;
        bool differ;
    };
    for (const Row& row : {Row{"red", {7, 8, 9, 255}, {8, 8, 9, 255}, true},
                           Row{"green", {7, 8, 9, 255}, {7, 9, 9, 255}, true},
                           Row{"blue", {7, 8, 9, 255}, {7, 8, 10, 255}, true},
                           Row{"red for green", {1, 0, 0, 255}, {0, 1, 0, 255}, true},
                           Row{"green for blue", {0, 1, 0, 255}, {0, 0, 1, 255}, true},
                           Row{"red for blue", {1, 0, 0, 255}, {0, 0, 1, 255}, true},
                           Row{"from black", {0, 0, 0, 255}, {1, 0, 0, 255}, true},
                           Row{"a spread beside much blue", {7, 0, 255, 255}, {129, 0, 255, 255}, true},
                           Row{"alpha", {7, 8, 9, 255}, {7, 8, 9, 0}, false}})
    {
        const Picture picture = FilteredColors([&](int x, int) { return x < 64 ? row.left : row.right; });
        EXPECT_EQ(picture.At(63, 64), row.differ ? Mixed(0.5f) : kGround) << row.label;
    }
}

TEST_F(LineFilterPixels, TheAlphaOfTheEdgeColourPlaysNoPart)
{
    const Picture plain = Dot();
    effect.SetEdgeColor(Color(1.0f, 0.0f, 0.0f, 0.25f));
    EXPECT_EQ(Dot(), plain);
}

TEST_F(LineFilterPixels, TheOverlayIsTheLineAloneWithItsAlpha)
{
    effect.SetOverlayOnly(true);
    effect.EdgeWeight(0.6f);
    const Picture picture = Dot();
    EXPECT_LE(ChannelDifference(picture.At(49, 60), ToPixel(1, 0, 0, 0.3f)), 1);
    EXPECT_LE(ChannelDifference(picture.At(50, 60), ToPixel(1, 0, 0, 0.6f)), 1);
    EXPECT_EQ(picture.At(10, 10), (Pixel{255, 0, 0, 0}));
    effect.SetOverlayOnly(false);
    EXPECT_EQ(Dot().At(50, 60).a, 255);
}

TEST_F(LineFilterPixels, ShowingIdentifiersWinsOverTheOverlay)
{
    effect.SetShowIds(true);
    for (const bool overlay : {false, true})
    {
        effect.SetOverlayOnly(overlay);
        const Picture picture = Dot();
        EXPECT_EQ(picture.At(50, 60), IdColor(7));
        EXPECT_EQ(picture.At(49, 60), IdColor(3));
        EXPECT_EQ(picture.Count(IdColor(3)), kSize * kSize - 1);
    }
}

TEST_F(LineFilterPixels, DebugDepthAndNearAndFarChangeNothing)
{
    const Picture plain = Dot();
    effect.SetShowDebug(true);
    EXPECT_EQ(Dot(), plain);
    effect.SetNearFar(1.0f, 100.0f);
    effect.SetDepthTexture(
        static_cast<int>(MakeDepths(kSize, kSize, [](int x, int) { return x < 64 ? 0.0f : 1.0f; })));
    EXPECT_EQ(Dot(), plain);
}

TEST_F(LineFilterPixels, NeighbouringIdentifiersDifferEnough)
{
    for (const int id : {0, 1, 254, 0xFFFE, 0xFFFF, 0x10000, 0x20000})
    {
        const Picture picture = Filtered([id](int x, int) { return x < 64 ? id : id + 1; });
        EXPECT_EQ(picture.At(63, 64), Mixed(0.5f)) << id;
    }
}

} // namespace OV::Test
