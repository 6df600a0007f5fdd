#include "orvane_host/import/detail/FileFinder.h"

#include "tests/orvane_host/import/TinyModels.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

using namespace OV::Host;
using namespace OV::Test;

namespace
{

class FileFinderTest : public testing::Test
{
protected:
    FileFinderTest()
    {
        for (const char* folder : {"model", "model/Textures", "model/maps", "model/sub", "textures"})
        {
            std::filesystem::create_directory(m_folder.Path(folder));
        }
        for (const char* file : {"model/Wall.PNG", "model/Textures/brick.jpg", "model/maps/a b.png",
                                 "textures/shared.png", "model/sub/deep.png", "model/Grün.png"})
        {
            WriteFile(m_folder.Path(file), std::string("x"));
        }
    }

    std::string Find(const std::string& reference)
    {
        FileFinder finder(m_folder.Path("model/house.obj"));
        const std::string found = finder.Find(reference);
        std::error_code error;
        return found.empty() ? found : std::filesystem::relative(found, m_folder.Path(), error).string();
    }

    TemporaryFolder m_folder;
};

TEST_F(FileFinderTest, FindsReferencesAsOtherMachinesWriteThem)
{
    struct
    {
        const char* label;
        const char* reference;
        const char* found;
    } const cases[] = {
        {"as it is", "Wall.PNG", "model/Wall.PNG"},
        {"other case", "wall.png", "model/Wall.PNG"},
        {"with dot", "./Wall.PNG", "model/Wall.PNG"},
        {"backslashes", "textures\\BRICK.JPG", "model/Textures/brick.jpg"},
        {"backslash and dot", ".\\sub\\deep.png", "model/sub/deep.png"},
        {"a drive", "C:\\projects\\house\\sub\\Deep.png", "model/sub/deep.png"},
        {"a folder that is not here", "/home/somebody/maps/wall.png", "model/Wall.PNG"},
        {"bare name in textures", "brick.jpg", "model/Textures/brick.jpg"},
        {"bare name in maps", "a b.png", "model/maps/a b.png"},
        {"bare name in the neighbour", "shared.png", "textures/shared.png"},
        {"up and across", "../textures/shared.png", "textures/shared.png"},
        {"percent signs", "maps/a%20b.png", "model/maps/a b.png"},
        {"a file address", "file://sub/deep.png", "model/sub/deep.png"},
        {"not ASCII", "Grün.png", "model/Grün.png"},
    };
    for (const auto& test : cases)
    {
        EXPECT_EQ(Find(test.reference), test.found) << test.label;
    }
}

TEST_F(FileFinderTest, AbsolutePathsAreTakenAsTheyAre)
{
    EXPECT_EQ(Find(m_folder.Path("textures/shared.png")), "textures/shared.png");
}

TEST_F(FileFinderTest, OnlyRegularFilesAreFound)
{
    ASSERT_EQ(mkfifo(m_folder.Path("model/pipe.png").c_str(), 0600), 0);
    for (const char* reference :
         {"", "sub", "sub/", "pipe.png", "nothing.png", "/", "..", "/dev/zero", "%00", "a%2"})
    {
        EXPECT_EQ(Find(reference), "") << reference;
    }
    EXPECT_EQ(Find(std::string("Wall.PNG\0.jpg", 13)), "");
    EXPECT_EQ(Find(std::string(100'000, 'a')), "");
    EXPECT_EQ(Find(std::string(3000, '/')), "");
}

TEST_F(FileFinderTest, AnExactNameWinsOverOneOfAnotherCase)
{
    WriteFile(m_folder.Path("model/wall.png"), std::string("y"));
    EXPECT_EQ(Find("wall.png"), "model/wall.png");
    EXPECT_EQ(Find("Wall.PNG"), "model/Wall.PNG");
    // Neither fits: the choice must not hang on the order of the folder.
    EXPECT_EQ(Find("WALL.png"), "model/Wall.PNG");
}

TEST(FileFinder, PathsComeApartAtTheLastSlash)
{
    EXPECT_EQ(FolderOf("a/b/c.obj"), "a/b/");
    EXPECT_EQ(NameOf("a/b/c.obj"), "c.obj");
    EXPECT_EQ(FolderOf("c.obj"), "");
    EXPECT_EQ(NameOf("c.obj"), "c.obj");
}

} // namespace
