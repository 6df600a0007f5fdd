#include "apps/viewer/StateFile.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

using namespace OV;
using namespace OV::ViewerApp;

namespace
{

std::string ReadAll(const std::string& path)
{
    std::ifstream stream(path);
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

} // namespace

TEST(StateFile, ComesBackAsItWas)
{
    const OV::Test::TemporaryFolder folder;
    State state;
    state.settings.sky = true;
    state.settings.view.eye = Vector(0.1f, 2.0f, 3.0f);
    Host::PresentationSettings seen;
    seen.section.planes.push_back({});
    state.SetView("from the street", "/a/b.ifc", seen);
    state.AddRecent("/a/b.ifc");
    std::string error;
    ASSERT_TRUE(state.Write(folder.Path("new/folder/view.json"), error)) << error;
    std::string word;
    const State read = State::Read(folder.Path("new/folder/view.json"), word);
    EXPECT_EQ(word, "");
    EXPECT_TRUE(read.settings == state.settings);
    ASSERT_NE(read.FindView("from the street", "/a/b.ifc"), nullptr);
    EXPECT_TRUE(read.FindView("from the street", "/a/b.ifc")->settings == seen);
    EXPECT_EQ(read.FindView("from the street", "/other.ifc"), nullptr);
    EXPECT_EQ(read.recent, std::vector<std::string>{"/a/b.ifc"});
}

TEST(StateFile, IsThatOfTheFirstTimeWhereThereIsNone)
{
    const OV::Test::TemporaryFolder folder;
    std::string word;
    const State state = State::Read(folder.Path("none.json"), word);
    EXPECT_EQ(word, "");
    EXPECT_TRUE(state.settings == State::FirstSettings());
    EXPECT_TRUE(state.settings.lines && state.settings.occlusion);
}

TEST(StateFile, ADamagedOneIsSetAside)
{
    const OV::Test::TemporaryFolder folder;
    for (const char* text : {"", "[]", "{\"settings\": {}}", "{\"settings\": {\"sky\": 1}, \"views\": [], \"recent\": []}",
                             "{\"settings\": {}, \"views\": [3], \"recent\": []}", "\xFF\xFE"})
    {
        const std::string path = folder.Path("view.json");
        std::ofstream(path) << text;
        std::string word;
        const State state = State::Read(path, word);
        EXPECT_NE(word.find("set aside"), std::string::npos) << text;
        EXPECT_TRUE(state.settings == State::FirstSettings());
        EXPECT_EQ(ReadAll(path + ".damaged"), text);
        EXPECT_FALSE(std::ifstream(path).good());
    }
}

TEST(StateFile, KeepsTheLastOnesOnceEach)
{
    State state;
    for (int i = 0; i < 15; ++i)
    {
        state.AddRecent(std::to_string(i));
    }
    state.AddRecent("12");
    ASSERT_EQ(state.recent.size(), State::MostRecent);
    EXPECT_EQ(state.recent[0], "12");
    EXPECT_EQ(state.recent[1], "14");
    EXPECT_EQ(state.recent[2], "13");
    EXPECT_EQ(state.recent[3], "11");
}

TEST(StateFile, NamesThatAreNoTextAreLeftOut)
{
    const OV::Test::TemporaryFolder folder;
    State state;
    state.AddRecent("/good");
    state.AddRecent("/bad\xFF");
    std::string error;
    ASSERT_TRUE(state.Write(folder.Path("view.json"), error)) << error;
    std::string word;
    EXPECT_EQ(State::Read(folder.Path("view.json"), word).recent, std::vector<std::string>{"/good"});
}

TEST(StateFile, IsBesideTheConfiguration)
{
    ::setenv("XDG_CONFIG_HOME", "/some/where", 1);
    EXPECT_EQ(State::UsualPath(), "/some/where/orvane/view.json");
    ::setenv("XDG_CONFIG_HOME", "relative", 1);
    ::setenv("HOME", "/home/someone", 1);
    EXPECT_EQ(State::UsualPath(), "/home/someone/.config/orvane/view.json");
    ::unsetenv("XDG_CONFIG_HOME");
}

TEST(StateFile, AFolderThatCannotBeMadeIsTold)
{
    const OV::Test::TemporaryFolder folder;
    std::ofstream(folder.Path("file")) << "x";
    std::string error;
    EXPECT_FALSE(State().Write(folder.Path("file/view.json"), error));
    EXPECT_NE(error.find("file/view.json"), std::string::npos);
}
