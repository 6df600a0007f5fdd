#include "tests/support/Golden.h"

#include "orvane_host/output/WritePNG.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

using namespace OV::Test;

namespace
{

struct Golden : ::testing::Test
{
    TemporaryFolder folder;
    GoldenFolders folders{folder.Path("golden"), folder.Path("output")};
    Picture picture{10, 10, {}};

    Golden()
    {
        std::filesystem::create_directories(folders.golden);
        for (int i = 0; i < 100; ++i)
        {
            picture.Set(i % 10, i / 10, {i, 2 * i, 255 - i, 255});
        }
        std::string error;
        OV::Host::WritePNG(picture.GetRows(), 10, 10, folders.golden + "/ramp.png", OV::Host::PNGAlpha::Keep, error);
    }

    bool Wrote(const std::string& kind) const
    {
        return std::filesystem::exists(folders.output + "/ramp." + kind + ".png");
    }
};

}  // namespace

TEST_F(Golden, AnEqualPictureMatchesAndWritesNothing)
{
    EXPECT_TRUE(MatchesGolden(picture, "ramp", {0, 0.0}, folders));
    EXPECT_FALSE(std::filesystem::exists(folders.output));
}

TEST_F(Golden, ADamagedPictureFailsAndShowsTheDamage)
{
    picture.Set(3, 4, {255, 0, 0, 255});
    const auto result = MatchesGolden(picture, "ramp", {2, 0.05}, folders);
    EXPECT_FALSE(result);
    EXPECT_NE(std::string(result.message()).find("(limit 2)"), std::string::npos) << result.message();
    EXPECT_TRUE(LoadPicture(folders.output + "/ramp.actual.png") == picture);
    EXPECT_EQ(LoadPicture(folders.output + "/ramp.expected.png").At(3, 4), (Pixel{43, 86, 212, 255}));
    const Picture difference = LoadPicture(folders.output + "/ramp.difference.png");
    EXPECT_EQ(difference.At(3, 4), (Pixel{255, 255, 255, 255}));
    EXPECT_EQ(difference.Count({0, 0, 0, 255}), 99);
}

TEST_F(Golden, BothLimitsMustHold)
{
    for (int x = 0; x < 5; ++x)
    {
        const Pixel old = picture.At(x, 0);
        picture.Set(x, 0, {old.r + 3, old.g, old.b, old.a});
    }
    EXPECT_TRUE(MatchesGolden(picture, "ramp", {3, 0.05}, folders));
    EXPECT_FALSE(MatchesGolden(picture, "ramp", {2, 0.05}, folders));
    EXPECT_FALSE(MatchesGolden(picture, "ramp", {3, 0.049}, folders));
}

TEST_F(Golden, AMissingGoldenPictureFailsAndKeepsTheActualOne)
{
    const auto result = MatchesGolden(picture, "other", {255, 1.0}, folders);
    EXPECT_FALSE(result);
    EXPECT_NE(std::string(result.message()).find("no golden picture"), std::string::npos);
    EXPECT_TRUE(std::filesystem::exists(folders.output + "/other.actual.png"));
}

TEST_F(Golden, AnotherSizeFailsWhateverTheLimits)
{
    EXPECT_FALSE(MatchesGolden(Picture(9, 10, {}), "ramp", {255, 1.0}, folders));
    EXPECT_TRUE(Wrote("actual"));
    EXPECT_TRUE(Wrote("difference"));
}
