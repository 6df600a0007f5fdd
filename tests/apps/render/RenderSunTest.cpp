#include "tests/apps/render/RenderTool.h"

#include "tests/support/Golden.h"

#include <gmock/gmock.h>

using namespace OV::Test;
using ::testing::HasSubstr;

namespace
{

struct RenderSun : RenderTool
{
    const std::string cube = WriteCube();

    ProcessResult RunOn(const std::string& model, std::vector<std::string> options) const
    {
        options.insert(options.begin(), {model, "-o", folder.Path("sun.png"), "--size", "320x240", "--aa", "none"});
        return Run(options);
    }
};

int Count(const Picture& picture, const Pixel& color)
{
    int count = 0;
    for (int y = 0; y < picture.GetHeight(); ++y)
    {
        for (int x = 0; x < picture.GetWidth(); ++x)
        {
            count += picture.At(x, y) == color ? 1 : 0;
        }
    }
    return count;
}

} // namespace

TEST_F(RenderSun, TellsThatItIsNight)
{
    const ProcessResult night = RunOn(cube, {"--sun", "2026-12-21T12:00+01:00", "--place", "78.22,15.64"});
    EXPECT_EQ(night.exitCode, 0);
    EXPECT_EQ(night.errors, "orvane-render: " + cube + ": the sun is 11.7 degrees below the horizon at "
                               "2026-12-21T12:00+01:00: there is no direct light\n");
    const ProcessResult day = RunOn(cube, {"--sun", "2026-06-21T00:00+02:00", "--place", "78.22,15.64"});
    EXPECT_EQ(day.exitCode, 0);
    EXPECT_EQ(day.errors, "");
    EXPECT_EQ(RunOn(cube, {"--sun", "1,2,3"}).errors, "");
}

TEST_F(RenderSun, TakesThePlaceOfTheFileOrAsksForOne)
{
    const ProcessResult nowhere = RunOn(cube, {"--sun", "2026-06-21T15:00+02:00"});
    EXPECT_EQ(nowhere.exitCode, 1);
    EXPECT_EQ(nowhere.errors,
              "orvane-render: " + cube + ": it tells no place for the sun; name one by --place LAT,LON\n");
    const ProcessResult house = RunOn(TestModel("IFC/AC14-FZK-Haus.ifc"), {"--sun", "2026-12-21T23:00+01:00"});
    EXPECT_EQ(house.exitCode, 0);
    EXPECT_THAT(house.errors, HasSubstr("below the horizon at 2026-12-21T23:00+01:00"));
}

TEST_F(RenderSun, AStudyIsASheetOfPicturesThatIsTheSameEachTime)
{
    const std::vector<std::string> study = {"--sun-study", "2026-03-20T09:00/12:00/1h", "--place", "52.52,13.4"};
    ProcessResult done = RunOn(cube, study);
    EXPECT_EQ(done.exitCode, 0);
    EXPECT_EQ(done.errors, "");
    const Picture first = LoadPicture(folder.Path("sun.png"));
    EXPECT_EQ(first.GetWidth(), 320);
    EXPECT_EQ(first.GetHeight(), 240);
    // White strips between two by two pictures.
    for (int y = 0; y < 240; ++y)
    {
        ASSERT_EQ(first.At(159, y), (Pixel{255, 255, 255, 255})) << y;
    }
    done = RunOn(cube, study);
    EXPECT_EQ(LoadPicture(folder.Path("sun.png")), first);
    done = RunOn(cube, {"--sun-study", "2026-03-20T00:00/23:59/1m", "--place", "52.52,13.4"});
    EXPECT_EQ(done.exitCode, 1);
    EXPECT_THAT(done.errors, HasSubstr("1440 pictures have no room on 320x240"));
}

TEST_F(RenderSun, HoursAreAMapWithItsScale)
{
    std::vector<std::string> hours = {"--sun-study", "2026-03-20T09:00/17:00/1h", "--place", "52.52,13.4", "--view",
                                      "top", "--sun-hours", "ground"};
    ProcessResult done = RunOn(cube, hours);
    EXPECT_EQ(done.exitCode, 0);
    EXPECT_EQ(done.errors, "");
    const Picture ground = LoadPicture(folder.Path("sun.png"));
    EXPECT_GT(Count(ground, {255, 0, 0, 255}), 8000) << "what is in the open has sun all the time";
    hours.back() = "no such node";
    done = RunOn(cube, hours);
    EXPECT_EQ(done.exitCode, 1);
    EXPECT_THAT(done.errors, HasSubstr("there is no node 'no such node'"));
}
