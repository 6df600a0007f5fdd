#include "apps/viewer/Options.h"

#include <gtest/gtest.h>

#include <vector>

using namespace OV::ViewerApp;

namespace
{

Command Parse(std::vector<const char*> words)
{
    words.insert(words.begin(), "orvane-view");
    return ParseCommandLine(static_cast<int>(words.size()), words.data());
}

} // namespace

TEST(ViewerOptions, NothingIsNeeded)
{
    const Command command = Parse({});
    EXPECT_TRUE(command.run);
    EXPECT_TRUE(command.options.models.empty());
    EXPECT_EQ(command.options.width, 1280);
    EXPECT_FALSE(command.options.watch);
}

TEST(ViewerOptions, AreTakenOver)
{
    const Command command = Parse({"a.obj", "--size", "300x20", "--script", "s.txt", "--watch", "--forget",
                                   "--settings", "look.json"});
    EXPECT_TRUE(command.run);
    EXPECT_EQ(command.options.models, std::vector<std::string>{"a.obj"});
    EXPECT_EQ(command.options.width, 300);
    EXPECT_EQ(command.options.height, 20);
    EXPECT_EQ(command.options.script, "s.txt");
    EXPECT_EQ(command.options.settings, "look.json");
    EXPECT_TRUE(command.options.watch);
    EXPECT_TRUE(command.options.forget);
}

TEST(ViewerOptions, SeveralModelsStandBesideEachOther)
{
    const Command command = Parse({"a.obj", "--watch", "b.obj", "a.obj"});
    EXPECT_TRUE(command.run);
    EXPECT_EQ(command.options.models, (std::vector<std::string>{"a.obj", "b.obj", "a.obj"}));
}

TEST(ViewerOptions, WrongUsageIsStatusTwo)
{
    for (const char* size : {"0x5", "5", "5x", "x5", "5x16385", "-5x5", "5x5x5", "axb"})
    {
        const Command command = Parse({"--size", size});
        EXPECT_FALSE(command.run) << size;
        EXPECT_EQ(command.exitCode, 2) << size;
    }
    EXPECT_EQ(Parse({"--scale", "0.4"}).exitCode, 2);
    EXPECT_EQ(Parse({"--scale", "9"}).exitCode, 2);
    EXPECT_EQ(Parse({"--scale", "nan"}).exitCode, 2);
    EXPECT_EQ(Parse({"--scale", ""}).exitCode, 2);
    EXPECT_EQ(Parse({"--size", ""}).exitCode, 2);
    EXPECT_EQ(Parse({"--scale", "2"}).options.scale, 2.0f);
    EXPECT_TRUE(Parse({"--size", "16384x1"}).run);
}

TEST(ViewerOptions, FlagsTakeNoValue)
{
    for (const char* word : {"--watch=1", "--watch=true", "--watch=", "--forget=no", "--help-script=all", "--help=no",
                             "--version=2", "-h=1"})
    {
        testing::internal::CaptureStderr();
        const Command command = Parse({"a.obj", word});
        const std::string told = testing::internal::GetCapturedStderr();
        EXPECT_FALSE(command.run) << word;
        EXPECT_EQ(command.exitCode, 2) << word;
        EXPECT_NE(told.find(": it takes no value; leave out '="), std::string::npos) << told;
    }
    EXPECT_EQ(Parse({"--script", "--watch=1"}).options.script, "--watch=1");
    EXPECT_EQ(Parse({"--", "--watch=1"}).options.models, std::vector<std::string>{"--watch=1"});
}

TEST(ViewerOptions, HelpIsStatusZero)
{
    for (const char* option : {"--help", "--version", "--help-script"})
    {
        const Command command = Parse({option});
        EXPECT_FALSE(command.run);
        EXPECT_EQ(command.exitCode, 0);
    }
}
