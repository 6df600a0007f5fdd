#include "orvane_host/present/Surroundings.h"

#include "orvane/effects/SkySettings.h"
#include "tests/orvane_host/present/SurroundingPictures.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace OV::Test
{

namespace
{

using Host::Surroundings;
using Host::UpAxis;
using testing::HasSubstr;
using testing::StartsWith;

/// The texel of a level that effects find what a mirror reflects from a direction in: they look
/// up (-x, -z, y), the opposite direction after a quarter turn about X.
Pixel Reflected(const Surroundings& surroundings, int level, float x, float y, float z)
{
    const float look[3] = {-x, -z, y};
    int axis = 0;
    for (int i = 1; i < 3; ++i)
    {
        axis = std::fabs(look[i]) > std::fabs(look[axis]) ? i : axis;
    }
    const float reach = std::fabs(look[axis]);
    const bool isPositive = look[axis] > 0.0f;
    // Table 8.19 of GL 4.6: s and t of each face.
    const float s = axis == 0 ? (isPositive ? -look[2] : look[2]) : axis == 1 ? look[0] : isPositive ? look[0] : -look[0];
    const float t = axis == 1 ? (isPositive ? look[2] : -look[2]) : -look[1];
    const int size = surroundings.GetFaceSize() >> level;
    const auto texel = [size, reach](float at) {
        return std::clamp(static_cast<int>((at / reach + 1.0f) / 2.0f * static_cast<float>(size)), 0, size - 1);
    };
    const unsigned char* const rgba =
        surroundings.GetTexels(level, 2 * axis + (isPositive ? 0 : 1)) + (texel(t) * size + texel(s)) * 4;
    return {rgba[0], rgba[1], rgba[2], rgba[3]};
}

void ExpectNear(const Pixel& actual, const Pixel& expected, int tolerance, const std::string& what)
{
    EXPECT_LE(ChannelDifference(actual, expected), tolerance) << what << ": " << actual << " is not " << expected;
}

class SurroundingsTest : public testing::Test
{
protected:
    std::shared_ptr<const Surroundings> Read(const std::string& source, UpAxis up = UpAxis::Y)
    {
        std::string error;
        auto read = Surroundings::Read(source, up, error);
        EXPECT_TRUE(read) << error;
        return read;
    }

    static std::string Refusal(const std::string& source)
    {
        std::string error;
        EXPECT_FALSE(Surroundings::Read(source, UpAxis::Y, error));
        EXPECT_EQ(error.find('\n'), std::string::npos) << error;
        return error;
    }

    TemporaryFolder m_folder;
};

TEST_F(SurroundingsTest, APanoramaIsMirroredFromEachSideInItsColour)
{
    PaintPanorama(m_folder.Path("all.png"), 128);
    const auto read = Read(m_folder.Path("all.png"));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->GetFaceSize(), 32);
    for (const SeenSide& side : kSides)
    {
        ExpectNear(Reflected(*read, 0, side.x, side.y, side.z), side.color, 1, side.name);
    }
}

TEST_F(SurroundingsTest, WithZUpTheMiddleOfThePanoramaLiesInY)
{
    PaintPanorama(m_folder.Path("all.png"), 128);
    const auto read = Read(m_folder.Path("all.png"), UpAxis::Z);
    ASSERT_TRUE(read);
    for (const SeenSide& side : kSides)
    {
        ExpectNear(Reflected(*read, 0, side.x, -side.z, side.y), side.color, 1, side.name);
    }
}

TEST_F(SurroundingsTest, SixSidesAreFoundByAPatternOrByNameAndJoinAsTheyAreSeenFromInside)
{
    // Marked in a corner, the upper left one, so that a turned or mirrored side is found out.
    const Pixel mark = {255, 0, 255};
    const char* const words[] = {"px", "nx", "py", "ny", "pz", "nz"};
    std::string list;
    for (int i = 0; i < 6; ++i)
    {
        const Pixel color = kSides[static_cast<std::size_t>(i)].color;
        const auto paint = [&](int x, int y) { return x < 8 && y < 8 ? mark : color; };
        PaintFile(m_folder.Path(std::string("s_") + words[i] + ".png"), 32, 32, paint);
        PaintFile(m_folder.Path(std::string("room ") + kSides[static_cast<std::size_t>(i)].name + ".png"), 32, 32, paint);
        list += (i ? "," : "") + m_folder.Path(std::string("s_") + words[i] + ".png");
    }
    for (const std::string& source : {m_folder.Path("s_*.png"), m_folder.Path("room *.png"), list})
    {
        SCOPED_TRACE(source);
        const auto read = Read(source);
        ASSERT_TRUE(read);
        for (const SeenSide& side : kSides)
        {
            ExpectNear(Reflected(*read, 0, side.x, side.y, side.z), side.color, 1, side.name);
        }
        // Where each side's upper left corner is, for who looks at it from inside.
        const float corners[6][3] = {{1, 0.8f, -0.8f}, {-1, 0.8f, 0.8f}, {-0.8f, 1, 0.8f},
                                     {-0.8f, -1, -0.8f}, {-0.8f, 0.8f, -1}, {0.8f, 0.8f, 1}};
        for (int i = 0; i < 6; ++i)
        {
            ExpectNear(Reflected(*read, 0, corners[i][0], corners[i][1], corners[i][2]), mark, 1, kSides[static_cast<std::size_t>(i)].name);
            ExpectNear(Reflected(*read, 0, corners[i][0] * (i > 1 ? -1.0f : 1.0f), corners[i][1], corners[i][2] * (i < 2 ? -1.0f : 1.0f)),
                       kSides[static_cast<std::size_t>(i)].color, 1, std::string(kSides[static_cast<std::size_t>(i)].name) + ", right");
        }
    }
}

TEST_F(SurroundingsTest, OneColourStaysItselfAtEveryRoughness)
{
    PaintFile(m_folder.Path("grey.png"), 64, 32, [](int, int) { return Pixel{90, 128, 200}; });
    const auto read = Read(m_folder.Path("grey.png"));
    ASSERT_TRUE(read);
    for (int level = 0; level < read->GetLevelCount(); ++level)
    {
        for (const SeenSide& side : kSides)
        {
            ExpectNear(Reflected(*read, level, side.x, side.y, side.z), {90, 128, 200}, 1, std::to_string(level));
        }
    }
}

TEST_F(SurroundingsTest, RoughLevelsAreMeansOfLight)
{
    // Straight up half of the sky is white and half black; half the light is the byte 188.
    PaintFile(m_folder.Path("half.png"), 256, 128, [](int x, int) { return x < 128 ? Pixel{255, 255, 255} : Pixel{0, 0, 0}; });
    const auto read = Read(m_folder.Path("half.png"));
    ASSERT_TRUE(read);
    const int last = read->GetLevelCount() - 1;
    EXPECT_EQ(read->GetFaceSize() >> last, 4);
    int sum = 0;
    for (const float x : {-0.2f, 0.2f})
    {
        for (const float z : {-0.2f, 0.2f})
        {
            sum += Reflected(*read, last, x, 1.0f, z).r;
        }
    }
    EXPECT_NEAR(sum / 4, 188, 14);
    // The left half is the white one, and a blurred level still tells them apart.
    EXPECT_GT(Reflected(*read, last, -1, 0, 0).r, 235);
    EXPECT_LT(Reflected(*read, last, 1, 0, 0).r, 110);
    EXPECT_EQ(Reflected(*read, 0, -1, 0, 0).r, 255);
    EXPECT_EQ(Reflected(*read, 0, 1, 0, 0).r, 0);
}

TEST_F(SurroundingsTest, LevelsFollowTheSquareOfTheRoughness)
{
    PaintFile(m_folder.Path("grey.png"), 2048, 1024, [](int, int) { return Pixel{128, 128, 128}; });
    const auto read = Read(m_folder.Path("grey.png"));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->GetFaceSize(), 512);
    EXPECT_EQ(read->LevelOf(0.0f), 0.0f);
    EXPECT_EQ(read->LevelOf(0.05f), 0.0f);
    // Twice the alpha is one level more.
    EXPECT_NEAR(read->LevelOf(std::sqrt(0.5f)) - read->LevelOf(0.5f), 1.0f, 1e-4f);
    EXPECT_LE(read->LevelOf(1.0f), static_cast<float>(read->GetLevelCount() - 1));
    EXPECT_GT(read->LevelOf(1.0f), static_cast<float>(read->GetLevelCount() - 2));
}

TEST_F(SurroundingsTest, SeamsBetweenSidesDoNotShow)
{
    // A smooth picture: across each edge two texels differ no more than within a side.
    PaintFile(m_folder.Path("smooth.png"), 512, 256, [](int x, int y) {
        const double u = (x + 0.5) / 512 * 2.0 * std::acos(-1.0);
        const double v = (y + 0.5) / 256;
        return Pixel{static_cast<int>(128 + 100 * std::sin(u) * std::sin(v * std::acos(-1.0))), static_cast<int>(255 * v), 60};
    });
    const auto read = Read(m_folder.Path("smooth.png"));
    ASSERT_TRUE(read);
    for (int level = 0; level < 4; ++level)
    {
        const float half = 1.0f / static_cast<float>(read->GetFaceSize() >> level);
        for (float along = -0.9f; along <= 0.9f; along += 0.1f)
        {
            const Pixel here = Reflected(*read, level, 1.0f, along, 1.0f - half);
            const Pixel there = Reflected(*read, level, 1.0f - half, along, 1.0f);
            EXPECT_LE(ChannelDifference(here, there), 3 + (4 << level) / 2) << level << " at " << along;
            const Pixel above = Reflected(*read, level, along, 1.0f, 1.0f - half);
            const Pixel below = Reflected(*read, level, along, 1.0f - half, 1.0f);
            EXPECT_LE(ChannelDifference(above, below), 3 + (4 << level) / 2) << level << " at " << along;
        }
    }
}

TEST_F(SurroundingsTest, LargePicturesAreScaledDownAndSmallOnesAreTaken)
{
    PaintPanorama(m_folder.Path("large.png"), 4096);
    PaintPanorama(m_folder.Path("small.png"), 2);
    PaintPanorama(m_folder.Path("odd.png"), 130);
    const auto large = Read(m_folder.Path("large.png"));
    ASSERT_TRUE(large);
    EXPECT_EQ(large->GetFaceSize(), Surroundings::MostFaceSize);
    ExpectNear(Reflected(*large, 0, 1, 0, 0), kSides[0].color, 1, "large");
    EXPECT_TRUE(Read(m_folder.Path("small.png")));
    EXPECT_TRUE(Read(m_folder.Path("odd.png")));
}

TEST_F(SurroundingsTest, TheSkyIsTheGradientBehindAScene)
{
    SkySettings sky;
    sky.SetHorizonColor(Color(1, 1, 1));
    const auto made = Surroundings::OfSky(sky, std::nullopt, UpAxis::Y);
    const Color& upper = sky.GetUpperSkyColor();
    ExpectNear(Reflected(*made, 0, 0, 1, 0), ToPixel(upper.r, upper.g, upper.b), 1, "up");
    ExpectNear(Reflected(*made, 0, 0, -1, 0), {255, 255, 255}, 0, "down");
    ExpectNear(Reflected(*made, 0, 1, -0.02f, 0.1f), {255, 255, 255}, 1, "horizon");
    // A tenth of the way up, at 9 degrees, lies the colour of the sky.
    const Color& middle = sky.GetSkyColor();
    ExpectNear(Reflected(*made, 0, 0.1f, std::tan(9.0f * std::acos(-1.0f) / 180.0f), 1), ToPixel(middle.r, middle.g, middle.b), 6, "sky");
    const auto onGround = Surroundings::OfSky(sky, Color(0.5f, 0.25f, 0.0f), UpAxis::Y);
    ExpectNear(Reflected(*onGround, 0, 0, -1, 0), ToPixel(0.5f, 0.25f, 0.0f), 1, "ground");
}

TEST_F(SurroundingsTest, WhatCanNotBeReadIsToldInOneLine)
{
    PaintFile(m_folder.Path("square.png"), 64, 64, [](int, int) { return Pixel{}; });
    EXPECT_THAT(Refusal(m_folder.Path("square.png")), HasSubstr("twice as wide as high"));
    EXPECT_THAT(Refusal(m_folder.Path("none.png")), StartsWith("cannot be read: No such file"));
    EXPECT_THAT(Refusal(m_folder.Path("none_*.png")), HasSubstr("star"));
    EXPECT_THAT(Refusal(m_folder.Path()), HasSubstr("folder"));
    std::ofstream(m_folder.Path("text.png")) << "no picture at all";
    EXPECT_THAT(Refusal(m_folder.Path("text.png")), StartsWith("the picture "));
    PaintPanorama(m_folder.Path("cut.png"), 64);
    std::filesystem::resize_file(m_folder.Path("cut.png"), std::filesystem::file_size(m_folder.Path("cut.png")) / 2);
    EXPECT_THAT(Refusal(m_folder.Path("cut.png")), StartsWith("cannot be decoded"));
    PaintFile(m_folder.Path("a_px.png"), 32, 32, [](int, int) { return Pixel{}; });
    EXPECT_THAT(Refusal(m_folder.Path("a_*.png")), HasSubstr("a_nx.png: cannot be read"));
    PaintFile(m_folder.Path("a_nx.png"), 32, 16, [](int, int) { return Pixel{}; });
    EXPECT_THAT(Refusal(m_folder.Path("a_*.png")), HasSubstr("square"));
    PaintFile(m_folder.Path("a_nx.png"), 16, 16, [](int, int) { return Pixel{}; });
    EXPECT_THAT(Refusal(m_folder.Path("a_*.png")), HasSubstr("one size"));
}

TEST_F(SurroundingsTest, AFileBeyondTheLimitIsRefusedUnread)
{
    const std::string path = m_folder.Path("huge.png");
    PaintPanorama(path, 64);
    std::filesystem::resize_file(path, Surroundings::MostFileBytes + 1);
    EXPECT_THAT(Refusal(path), HasSubstr("larger than 256 MiB"));
}

} // namespace

} // namespace OV::Test
