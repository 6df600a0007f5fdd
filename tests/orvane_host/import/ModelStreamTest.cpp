#include "tests/orvane_host/import/ImportFixture.h"
#include "tests/orvane_host/import/TinyModels.h"

#include "orvane_host/import/ModelImporter.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

using namespace OV;
using namespace OV::Host;
using namespace OV::Test;

namespace
{

struct ModelStreamBesideFiles : ImportFixture
{
};

/// Imports what a pipe brings, written by another thread as a pipe holds little.
ImportResult ImportPiped(const std::string& content, const std::string& format, const ImportOptions& options = {})
{
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0)
    {
        return {};
    }
    std::thread writer(
        [&]
        {
            std::size_t written = 0;
            while (written < content.size())
            {
                const ssize_t count = write(ends[1], content.data() + written, content.size() - written);
                if (count <= 0)
                {
                    break;
                }
                written += static_cast<std::size_t>(count);
            }
            close(ends[1]);
        });
    ImportResult result = ModelImporter::ImportStream(ends[0], format, options);
    // What is refused before its end is read on, so that the writer ends.
    char rest[4096];
    while (read(ends[0], rest, sizeof(rest)) > 0)
    {
    }
    writer.join();
    close(ends[0]);
    return result;
}

std::string TextOf(const Bytes& bytes)
{
    return std::string(bytes.begin(), bytes.end());
}

} // namespace

TEST(ModelStream, AModelIsReadByTheFormatThatIsNamed)
{
    for (const bool isolate : {true, false})
    {
        ImportOptions options;
        options.isolate = isolate;
        const ImportResult result = ImportPiped(CubeObj(), "obj", options);
        ASSERT_TRUE(result) << result.error.Line();
        EXPECT_EQ(result.report.format, "Wavefront Object");
        EXPECT_EQ(result.report.triangles, 12u);
        EXPECT_EQ(result.report.fileBytes, CubeObj().size());
        EXPECT_EQ(result.error.file, "standard input");
    }
}

TEST(ModelStream, AModelLargerThanAPipeIsReadWhole)
{
    const std::string grid = GridObj(300);
    ASSERT_GT(grid.size(), std::size_t(2) << 20);
    const ImportResult result = ImportPiped(grid, "obj");
    ASSERT_TRUE(result) << result.error.Line();
    EXPECT_EQ(result.report.triangles, 2u * 299u * 299u);
}

TEST(ModelStream, TheFormatIsFoundOutWhereNoneIsNamed)
{
    std::string stl(80, ' ');
    stl += std::string("\1\0\0\0", 4);
    const float corners[12] = {0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1, 0};
    stl.append(reinterpret_cast<const char*>(corners), sizeof(corners)).append(2, '\0');
    const struct
    {
        const char* format;
        std::string content;
    } cases[] = {
        {"Wavefront Object", CubeObj()},
        {"glTF2", TextOf(TriangleGlb())},
        {"Stereolithography (STL)", stl},
        {"Polygon", "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float z\n"
                    "element face 1\nproperty list uchar int vertex_indices\nend_header\n"
                    "0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n"},
    };
    for (const auto& one : cases)
    {
        const ImportResult result = ImportPiped(one.content, "");
        ASSERT_TRUE(result) << one.format << ": " << result.error.Line();
        EXPECT_NE(result.report.format.find(one.format), std::string::npos) << result.report.format;
        EXPECT_GE(result.report.triangles, 1u) << one.format;
    }
}

TEST(ModelStream, ABuildingIsNoDrawingOfLines)
{
    const int file = open((kTestModels + "IFC/AC14-FZK-Haus.ifc").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(file, 0);
    const ImportResult result = ModelImporter::ImportStream(file, "");
    close(file);
    ASSERT_TRUE(result) << result.error.Line();
    EXPECT_GT(result.report.triangles, 30000u);
    EXPECT_TRUE(result.report.place) << "what is read beside the parser is read of the stream too";
}

TEST(ModelStream, WhatCannotBeReadIsToldInOneSentence)
{
    ImportOptions small;
    small.limits.fileBytes = 100;
    const struct
    {
        const char* label;
        ImportResult result;
        ImportStatus status;
        const char* line;
    } cases[] = {
        {"empty", ImportPiped("", "obj"), ImportStatus::Malformed, "standard input: cannot be imported: it is empty"},
        {"noise", ImportPiped("\x01\x02 noise \x03", ""), ImportStatus::Unsupported, "Name its format, such as obj"},
        {"damaged", ImportPiped("v 0 0 0\nf 1 2 3\n", "obj"), ImportStatus::Malformed, "standard input: cannot be"},
        {"a picture", ImportPiped("\x89PNG\r\n", ""), ImportStatus::Unsupported, "it is a picture, not a model"},
        {"too large", ImportPiped(CubeObj(), "obj", small), ImportStatus::TooLarge, "more than 100 bytes"},
        {"no stream", ModelImporter::ImportStream(-1, "obj"), ImportStatus::NotReadable, "standard input: cannot be"},
    };
    for (const auto& one : cases)
    {
        EXPECT_FALSE(one.result) << one.label;
        EXPECT_EQ(one.result.status, one.status) << one.label << ": " << one.result.error.Line();
        EXPECT_NE(one.result.error.Line().find(one.line), std::string::npos) << one.result.error.Line();
    }
}

TEST_F(ModelStreamBesideFiles, WhatItRefersToIsFoundInTheWorkingFolder)
{
    WriteFile(m_folder.Path("paint.mtl"), std::string("newmtl blue\nKd 0 0 1\n"));
    char before[4096];
    ASSERT_TRUE(getcwd(before, sizeof(before)));
    ASSERT_EQ(chdir(m_folder.Path().c_str()), 0);
    const ImportResult result = ImportPiped("mtllib paint.mtl\nusemtl blue\n" + CubeObj(), "obj");
    ASSERT_EQ(chdir(before), 0);
    ASSERT_TRUE(result) << result.error.Line();
    EXPECT_EQ(OnlyMaterial(result).GetDiffuse().r, 0.0f);
    EXPECT_EQ(OnlyMaterial(result).GetDiffuse().b, 1.0f);
}
