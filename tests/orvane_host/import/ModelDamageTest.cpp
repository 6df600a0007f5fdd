#include "orvane_host/import/ModelImporter.h"

#include "tests/orvane_host/import/TinyModels.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

using namespace OV::Host;
using namespace OV::Test;

namespace
{

constexpr ImportStatus kOutOfMemory = kNewEndsTheProcess ? ImportStatus::Crashed : ImportStatus::OutOfMemory;

/// What every failure owes to the person who chose the file.
void ExpectClearError(const ImportResult& result, const std::string& path)
{
    EXPECT_FALSE(result);
    EXPECT_NE(result.status, ImportStatus::Done);
    EXPECT_EQ(result.error.file, path);
    EXPECT_FALSE(result.error.reason.empty());
    EXPECT_FALSE(result.error.remedy.empty());
    const std::string line = result.error.Line();
    EXPECT_EQ(line.find('\n'), std::string::npos);
    EXPECT_TRUE(result.nodes.empty());
    EXPECT_TRUE(result.lights.empty());
    EXPECT_TRUE(result.cameras.empty());
}

class ModelDamageTest : public testing::Test
{
protected:
    ImportStatus StatusOf(const std::string& path, const ImportOptions& options = ImportOptions())
    {
        const ImportResult result = ModelImporter::Import(path, options);
        if (!result)
        {
            ExpectClearError(result, path);
        }
        return result.status;
    }

    template <typename Content>
    ImportStatus StatusOf(const std::string& name, const Content& content, const ImportOptions& options)
    {
        WriteFile(m_folder.Path(name), content);
        return StatusOf(m_folder.Path(name), options);
    }

    TemporaryFolder m_folder;
};

TEST_F(ModelDamageTest, FilesThatAreNoneAreToldApart)
{
    EXPECT_EQ(StatusOf(m_folder.Path("missing.obj")), ImportStatus::NotFound);
    EXPECT_EQ(StatusOf(m_folder.Path("missing/model.obj")), ImportStatus::NotFound);
    EXPECT_EQ(StatusOf(""), ImportStatus::NotFound);
    EXPECT_EQ(StatusOf(std::string("a\0b", 3)), ImportStatus::NotFound);
    EXPECT_EQ(StatusOf(m_folder.Path()), ImportStatus::NotReadable);
    EXPECT_EQ(StatusOf("/dev/zero"), ImportStatus::NotReadable);
    ASSERT_EQ(mkfifo(m_folder.Path("pipe.obj").c_str(), 0600), 0);
    EXPECT_EQ(StatusOf(m_folder.Path("pipe.obj")), ImportStatus::NotReadable);
    EXPECT_EQ(StatusOf(m_folder.Path(std::string(5000, 'x'))), ImportStatus::NotReadable);
    std::filesystem::create_symlink("loop.obj", m_folder.Path("loop.obj"));
    EXPECT_EQ(StatusOf(m_folder.Path("loop.obj")), ImportStatus::NotReadable);
}

TEST_F(ModelDamageTest, AFileIsNamedAsItIs)
{
    for (const std::string name : {".", "..", "./nothing.", "nothing...", "nothing "})
    {
        const std::string line = ModelImporter::Import(name).error.Line();
        EXPECT_EQ(line.rfind(name + ": cannot be imported: ", 0), 0u) << line;
    }
}

TEST_F(ModelDamageTest, ForeignFilesAreToldApart)
{
    const ImportOptions options;
    EXPECT_EQ(StatusOf("empty.obj", std::string(), options), ImportStatus::Malformed);
    EXPECT_EQ(StatusOf("letter.doc", std::string("Dear reader"), options), ImportStatus::Unsupported);
    // A word of it is what another format begins with.
    EXPECT_EQ(StatusOf("letter.txt", std::string("Dear reader, made with BLENDER and DirectX.\n"), options),
              ImportStatus::Unsupported);
    EXPECT_EQ(StatusOf("noise", std::string(1000, '\xa5'), options), ImportStatus::Unsupported);
    EXPECT_EQ(StatusOf("picture.png", Bytes{0x89, 'P', 'N', 'G', 13, 10, 26, 10, 0}, options),
              ImportStatus::Unsupported);
    EXPECT_EQ(StatusOf("picture.jpg", Bytes{0xFF, 0xD8, 0xFF, 0xE0, 0}, options), ImportStatus::Unsupported);
}

TEST_F(ModelDamageTest, TheSizeOfTheFileIsLimited)
{
    ImportOptions options;
    options.limits.fileBytes = CubeObj().size();
    EXPECT_EQ(StatusOf("cube.obj", CubeObj(), options), ImportStatus::Done);
    --options.limits.fileBytes;
    EXPECT_EQ(StatusOf("cube.obj", CubeObj(), options), ImportStatus::TooLarge);
}

TEST_F(ModelDamageTest, ContentIsLimited)
{
    for (bool isolate : {true, false})
    {
        struct
        {
            const char* label;
            std::uint64_t ImportLimits::*limit;
            std::uint64_t enough;
        } const cases[] = {
            // The parser repeats vertices, 4 a quad, before they are joined again.
            {"vertices", &ImportLimits::vertices, 36},
            {"faces", &ImportLimits::faces, 12},
            // Two nodes, and one place of a mesh.
            {"nodes", &ImportLimits::nodes, 3},
        };
        for (const auto& test : cases)
        {
            SCOPED_TRACE(test.label);
            ImportOptions options;
            options.isolate = isolate;
            options.limits.*test.limit = test.enough;
            EXPECT_EQ(StatusOf("cube.obj", CubeObj(), options), ImportStatus::Done);
            options.limits.*test.limit = test.enough / 2;
            EXPECT_EQ(StatusOf("cube.obj", CubeObj(), options), ImportStatus::LimitExceeded);
        }
    }
}

TEST_F(ModelDamageTest, TheDepthOfTheTreeIsLimited)
{
    std::string nodes = "{\"mesh\":0,\"children\":[1]}";
    for (int i = 1; i < 100; ++i)
    {
        nodes += ",{\"children\":[" + std::to_string(i + 1) + "]}";
    }
    nodes += ",{}";
    ImportOptions options;
    options.limits.depth = 200;
    EXPECT_EQ(StatusOf("deep.glb", TriangleGlb(nodes), options), ImportStatus::Done);
    options.limits.depth = 50;
    EXPECT_EQ(StatusOf("deep.glb", TriangleGlb(nodes), options), ImportStatus::LimitExceeded);
}

TEST_F(ModelDamageTest, ATreeDeepEnoughToBreakTheParserEndsInAnError)
{
    std::string nodes = "{\"mesh\":0,\"children\":[1]}";
    const int depth = 60'000;
    for (int i = 1; i < depth; ++i)
    {
        nodes += ",{\"children\":[" + std::to_string(i + 1) + "]}";
    }
    nodes += ",{}";
    EXPECT_NE(StatusOf("deep.glb", TriangleGlb(nodes), ImportOptions()), ImportStatus::Done);
}

TEST_F(ModelDamageTest, TheMemoryOfAnImportIsLimited)
{
    ImportOptions options;
    options.limits.memoryBytes = 4 << 20;
    EXPECT_EQ(StatusOf("grid.obj", GridObj(250), options), kOutOfMemory);
    options.limits.memoryBytes = std::uint64_t(1) << 30;
    EXPECT_EQ(StatusOf("grid.obj", GridObj(250), options), ImportStatus::Done);
}

TEST_F(ModelDamageTest, NobodyIsToldToRaiseALimit)
{
    ImportOptions options;
    options.isolate = false;
    const auto expectWays = [&](const std::string& name, const std::string& content, const ImportLimits& limits)
    {
        options.limits = limits;
        WriteFile(m_folder.Path(name), content);
        const ImportResult result = ModelImporter::Import(m_folder.Path(name), options);
        ASSERT_FALSE(result);
        EXPECT_EQ(result.error.remedy.find("raise"), std::string::npos) << result.error.Line();
        EXPECT_EQ(result.error.remedy.find("limit"), std::string::npos) << result.error.Line();
    };
    ImportLimits limits;
    limits.fileBytes = 8;
    expectWays("large.obj", GridObj(2), limits);
    limits = ImportLimits();
    limits.vertices = 2;
    expectWays("many.obj", GridObj(2), limits);
    options.isolate = true;
    limits = ImportLimits();
    limits.memoryBytes = 4 << 20;
    expectWays("grid.obj", GridObj(250), limits);
}

TEST_F(ModelDamageTest, CountsThatPromiseTooMuchDoNotTakeMemory)
{
    EXPECT_EQ(StatusOf(kTestModels + "invalid/OutOfMemory.off"), kOutOfMemory);
}

TEST_F(ModelDamageTest, PartsOfAModelThatNeverEndAreNotRead)
{
    ASSERT_EQ(mkfifo(m_folder.Path("pipe.bin").c_str(), 0600), 0);
    for (const char* uri : {"/dev/zero", "pipe.bin", "/dev/stdin", ".", "missing.bin"})
    {
        SCOPED_TRACE(uri);
        const std::string text = std::string("{\"asset\":{\"version\":\"2.0\"},\"scene\":0,\"scenes\":[{"
                                             "\"nodes\":[0]}],\"nodes\":[{\"mesh\":0}],"
                                             "\"meshes\":[{\"primitives\":[{\"attributes\":{\"POSITION\":0}}]"
                                             "}],\"accessors\":[{\"bufferView\":0,"
                                             "\"componentType\":5126,\"count\":3,\"type\":\"VEC3\"}],"
                                             "\"bufferViews\":[{\"buffer\":0,\"byteLength\":36}],"
                                             "\"buffers\":[{\"byteLength\":36,\"uri\":\"") +
                                 uri + "\"}]}";
        EXPECT_EQ(StatusOf("parts.gltf", text, ImportOptions()), ImportStatus::Malformed);
    }
}

TEST_F(ModelDamageTest, AParserThatReadsOnAtTheEndOfAFileIsEnded)
{
    // The header never ends, for which this parser waits.
    ImportOptions options;
    options.limits.cpuSeconds = 20;
    EXPECT_EQ(StatusOf("cut.ply", std::string("ply\nformat ascii 1.0\nelement vertex 8\nproperty float x\n"),
                       options),
              ImportStatus::Malformed);
}

TEST_F(ModelDamageTest, EveryTruncationOfAnObjIsSurvived)
{
    const std::string whole = CubeObj();
    int imported = 0;
    for (std::size_t size = 0; size <= whole.size(); ++size)
    {
        imported += StatusOf("cube.obj", whole.substr(0, size), ImportOptions()) == ImportStatus::Done;
    }
    EXPECT_GT(imported, 0);
}

TEST_F(ModelDamageTest, EveryTruncationOfAGlbEndsInAnErrorOrAScene)
{
    const Bytes whole = TriangleGlb();
    for (std::size_t size = 0; size < whole.size(); ++size)
    {
        const Bytes part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        const ImportStatus status = StatusOf("t.glb", part, ImportOptions());
        EXPECT_NE(status, ImportStatus::TimedOut) << size;
        EXPECT_NE(status, ImportStatus::Failed) << size;
    }
    EXPECT_EQ(StatusOf("t.glb", whole, ImportOptions()), ImportStatus::Done);
}

TEST_F(ModelDamageTest, FlippedBytesThroughoutAGlbAreSurvived)
{
    const Bytes whole = TriangleGlb();
    for (std::size_t at = 0; at < whole.size(); at += 7)
    {
        Bytes damaged = whole;
        damaged[at] ^= 0xFF;
        const ImportStatus status = StatusOf("t.glb", damaged, ImportOptions());
        EXPECT_NE(status, ImportStatus::TimedOut) << at;
        EXPECT_NE(status, ImportStatus::Failed) << at;
    }
}

TEST_F(ModelDamageTest, WorksWhereTheHostIgnoresItsChildren)
{
    const auto before = std::signal(SIGCHLD, SIG_IGN);
    const ImportStatus good = StatusOf("t.glb", TriangleGlb(), ImportOptions());
    const ImportStatus bad = StatusOf("t.doc", std::string("Dear reader"), ImportOptions());
    std::signal(SIGCHLD, before);
    EXPECT_EQ(good, ImportStatus::Done);
    EXPECT_EQ(bad, ImportStatus::Unsupported);
}

TEST_F(ModelDamageTest, NoProcessIsLeftBehind)
{
    StatusOf("t.glb", TriangleGlb(), ImportOptions());
    StatusOf(kTestModels + "invalid/OutOfMemory.off");
    ImportOptions options;
    options.progress = [](float) { return false; };
    StatusOf("t.glb", TriangleGlb(), options);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
}

} // namespace
