#include "tests/apps/render/RenderTool.h"

#include "tests/support/Golden.h"

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <set>
#include <string>
#include <vector>

using namespace OV::Test;

namespace fs = std::filesystem;

namespace
{

/// Folders of the package of test models, each with the number of its files that must give a
/// picture: what imports today must import tomorrow.
struct ModelFolder
{
    const char* name;
    int fewestPictures;
};

std::ostream& operator<<(std::ostream& stream, const ModelFolder& folder)
{
    return stream << folder.name;
}

struct ModelSweep : RenderTool, ::testing::WithParamInterface<ModelFolder>
{
};

std::vector<std::string> FilesBelow(const std::string& folder)
{
    std::vector<std::string> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder))
    {
        if (entry.is_regular_file())
        {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

const ModelFolder Folders[] = {
    {"3D", 3}, {"3DS", 10}, {"3MF", 1}, {"AC", 10}, {"AMF", 11}, {"ASE", 15}, {"B3D", 1}, {"BLEND", 25},
    {"BVH", 3}, {"COB", 6}, {"CSM", 1}, {"Collada", 27}, {"DXF", 5}, {"FBX", 18}, {"HMP", 2}, {"IFC", 1},
    {"IQM", 1}, {"IRR", 1}, {"IRRMesh", 0}, {"JT", 0}, {"LWO", 38}, {"LWS", 15}, {"M3D", 2}, {"MD2", 2},
    {"MD5", 1}, {"MDC", 1}, {"MDL", 18}, {"MS3D", 4}, {"NFF", 9}, {"OBJ", 22}, {"OFF", 4}, {"Ogre", 1},
    {"OpenGEX", 4}, {"PLY", 8}, {"ParsingFiles", 0}, {"Q3D", 4}, {"RAW", 3}, {"ReferenceImages", 0},
    {"SIB", 1}, {"SMD", 3}, {"STL", 9}, {"SourceFiles", 0}, {"TER", 0}, {"WRL", 0}, {"X", 10}, {"X3D", 2},
    {"XGL", 8}, {"glTF", 6}, {"glTF2", 33}, {"invalid", 1},
};

} // namespace

TEST_P(ModelSweep, EveryFileGivesAPictureOrOneLine)
{
    int pictures = 0;
    for (const std::string& model : FilesBelow(TestModel(GetParam().name)))
    {
        SCOPED_TRACE(model);
        const std::string output = folder.Path("out.png");
        const ProcessResult result = Run({model, "-o", output, "--size", "64x48"});
        EXPECT_EQ(result.signal, 0);
        ASSERT_TRUE(result.exitCode == 0 || result.exitCode == 1) << result.exitCode << result.errors;
        EXPECT_EQ(result.output, "");
        if (result.exitCode == 0)
        {
            ++pictures;
            const Picture picture = LoadPicture(output);
            EXPECT_EQ(picture.GetWidth(), 64);
            EXPECT_EQ(picture.GetHeight(), 48);
            fs::remove(output);
        }
        else
        {
            EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
            EXPECT_EQ(result.errors.rfind("orvane-render: " + model + ": ", 0), 0u) << result.errors;
        }
        EXPECT_EQ(FilesIn(folder.Path()), std::vector<std::string>());
    }
    EXPECT_GE(pictures, GetParam().fewestPictures);
}

TEST(ModelSweepTable, NamesEveryFolderOfThePackage)
{
    std::set<std::string> listed;
    for (const ModelFolder& folder : Folders)
    {
        listed.insert(folder.name);
    }
    for (const fs::directory_entry& entry : fs::directory_iterator(ORVANE_TEST_MODELS))
    {
        EXPECT_EQ(listed.count(entry.path().filename()), 1u) << entry.path();
    }
}

INSTANTIATE_TEST_SUITE_P(Package, ModelSweep, ::testing::ValuesIn(Folders),
                         [](const auto& info)
                         {
                             std::string name = info.param.name;
                             std::replace_if(name.begin(), name.end(), [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
                             return name;
                         });
