#include "tests/apps/render/RenderTool.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <functional>

using namespace OV::Test;

namespace fs = std::filesystem;

namespace
{

/// A folder with a model that is fine, for tests that break one thing.
struct RenderFailure : RenderTool
{
    std::string output = folder.Path("out.png");

    /// Status 1, nothing on standard output, and one line that names the file, a reason and,
    /// behind it, a remedy. Nothing may appear in the folder.
    void ExpectFailure(const std::vector<std::string>& arguments, const std::string& file,
                       const std::vector<std::string>& parts, const std::vector<std::string>& variables = {}) const
    {
        const std::vector<std::string> before = FilesIn(folder.Path());
        ExpectFailureLine(Run(arguments, variables), file, parts);
        EXPECT_EQ(FilesIn(folder.Path()), before);
    }

    static void ExpectFailureLine(const ProcessResult& result, const std::string& file,
                                  const std::vector<std::string>& parts)
    {
        EXPECT_EQ(result.signal, 0);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
        EXPECT_EQ(result.errors.rfind("orvane-render: " + file + ": ", 0), 0u) << result.errors;
        for (const std::string& part : parts)
        {
            EXPECT_NE(result.errors.find(part), std::string::npos) << "no '" << part << "' in " << result.errors;
        }
    }

    /// Runs a shell command in which $0 is the tool, for what only a shell can arrange.
    static ProcessResult Shell(const std::string& command, const std::vector<std::string>& arguments)
    {
        std::vector<std::string> all = {"/bin/sh", "-c", command, RenderProgram()};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return RunProcess(all);
    }
};

/// A model file that must be refused.
struct BadModel
{
    const char* label;
    const char* name;
    std::function<std::string()> content;
};

std::ostream& operator<<(std::ostream& stream, const BadModel& model)
{
    return stream << model.label;
}

struct RenderBadModel : RenderFailure, ::testing::WithParamInterface<BadModel>
{
};

std::function<std::string()> Text(const std::string& text)
{
    return [text] { return text; };
}

/// The first part of a good model.
std::function<std::string()> Start(const std::string& model, double share)
{
    return [=]
    {
        const std::string whole = ReadWholeFile(TestModel(model));
        return whole.substr(0, static_cast<std::size_t>(static_cast<double>(whole.size()) * share));
    };
}

std::string Noise()
{
    std::string bytes(20000, '\0');
    unsigned int seed = 12345;
    for (char& byte : bytes)
    {
        seed = seed * 1664525u + 1013904223u;
        byte = static_cast<char>(seed >> 24);
    }
    return bytes;
}

} // namespace

TEST_P(RenderBadModel, EndsWithOneLineAndNoPicture)
{
    const std::string model = folder.Path(GetParam().name);
    WriteWholeFile(model, GetParam().content());
    ExpectFailure({model, "-o", output, "--size", "64x48"}, model, {});
}

INSTANTIATE_TEST_SUITE_P(
    Model, RenderBadModel,
    ::testing::Values(
        BadModel{"EmptyObj", "model.obj", Text("")}, BadModel{"EmptyGltf", "model.gltf", Text("")},
        BadModel{"EmptyIfc", "model.ifc", Text("")}, BadModel{"NoiseAsGlb", "model.glb", Noise},
        BadModel{"NoiseAsFbx", "model.fbx", Noise}, BadModel{"NoiseAs3ds", "model.3ds", Noise},
        BadModel{"NoiseWithoutKnownName", "model.xyzzy", Noise},
        BadModel{"ForeignText", "model.txt", Text("This is a letter, and no model at all.\n")},
        BadModel{"TruncatedGlb", "model.glb", Start("glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb", 0.5)},
        BadModel{"TruncatedGlbHeader", "model.glb", Start("glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb", 0.00001)},
        BadModel{"TruncatedGltf", "model.gltf", Start("glTF/CesiumMilkTruck/CesiumMilkTruck.gltf", 0.5)},
        BadModel{"TruncatedDae", "model.dae", Start("Collada/duck.dae", 0.5)},
        BadModel{"FaceOfVerticesThatAreNot", "model.obj", Text("v 0 0 0\nf 1 2000000000 3\n")},
        BadModel{"MoreVerticesThanMemory", "model.off", Text("OFF\n2000000000 2000000000 0\n0 0 0\n")},
        BadModel{"NestedWithoutEnd", "model.gltf", [] { return std::string(2000000, '['); }}),
    [](const auto& info) { return info.param.label; });

TEST_F(RenderFailure, AModelThatIsNotThereIsNamed)
{
    const std::string model = folder.Path("missing.ifc");
    ExpectFailure({model, "-o", output}, model, {"there is no such file", "; check"});
    ExpectFailure({folder.Path("no/such/folder.ifc"), "-o", output}, folder.Path("no/such/folder.ifc"),
                  {"there is no such file"});
}

TEST_F(RenderFailure, AFolderIsNoModel)
{
    ExpectFailure({folder.Path(), "-o", folder.Path("out.png")}, folder.Path(), {});
}

TEST_F(RenderFailure, APictureIsNoModel)
{
    const std::string square = WriteSquare();
    ASSERT_EQ(Run({square, "-o", output, "--size", "64x48"}).exitCode, 0);
    ExpectFailure({output, "-o", folder.Path("again.png")}, output, {"picture"});
}

TEST_F(RenderFailure, ControlCharactersOfAFileNameDoNotReachTheTerminal)
{
    const ProcessResult result = Run({"odd\n\x1b[31mname", "-o", output});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
    EXPECT_EQ(result.errors.find('\x1b'), std::string::npos);
}

TEST_F(RenderFailure, AnOutputThatCannotBeWrittenIsNamedWithAReason)
{
    const std::string square = WriteSquare();
    WriteWholeFile(folder.Path("file"), "x");
    const struct
    {
        std::string path;
        const char* reason;
    } cases[] = {
        {folder.Path("missing/out.png"), "there is no such folder; create it"},
        {folder.Path(), "this is a folder; name a file in it"},
        {folder.Path("file") + "/out.png", "is no folder; choose"},
        {folder.Path(std::string(300, 'n')), "the name is too long; choose"},
        {"/dev/full", "no room left"},
        {"/proc/out.png", "; "},
    };
    for (const auto& item : cases)
    {
        SCOPED_TRACE(item.path);
        ExpectFailure({square, "-o", item.path, "--size", "64x48"}, item.path, {item.reason});
    }
}

TEST_F(RenderFailure, ANameOfAnotherKindOfPictureIsRefused)
{
    const std::string square = WriteSquare();
    for (const char* name : {"out.bmp", "out.tif", "out.png.gif"})
    {
        SCOPED_TRACE(name);
        ExpectFailure({square, "-o", folder.Path(name), "--size", "64x48"}, folder.Path(name),
                      {"pictures are written as PNG or JPEG, which .", "; let the name end in .png"});
    }
    for (const char* name : {"out", "out.PNG", "a.jpg.png", "plan.2"})
    {
        SCOPED_TRACE(name);
        const ProcessResult result = Run({square, "-o", folder.Path(name), "--size", "64x48"});
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        EXPECT_EQ(ReadWholeFile(folder.Path(name)).substr(0, 4), "\x89PNG");
    }
}

TEST_F(RenderFailure, AModelOfAnotherSchemaIsNotCalledBroken)
{
    const std::string model = folder.Path("house.ifc");
    WriteWholeFile(model, "ISO-10303-21;\nHEADER;\nFILE_DESCRIPTION((''),'2;1');\n"
                          "FILE_NAME('','',(''),(''),'','','');\nFILE_SCHEMA(('IFC4'));\nENDSEC;\nDATA;\n"
                          "#1=IFCPROJECT('0xScRe4drECQ4DMSqUjd6d',$,'P',$,$,$,$,$,$);\nENDSEC;\nEND-ISO-10303-21;\n");
    ExpectFailure({model, "-o", output}, model, {"it states the schema IFC4, and IFC2X3 is what can be read"});
}

TEST_F(RenderFailure, TheModelIsNotReplacedByItsPicture)
{
    const std::string square = WriteSquare();
    const std::string before = ReadWholeFile(square);
    ExpectFailure({square, "-o", square}, square, {"would replace the model; name another"});
    fs::create_symlink(square, folder.Path("link.png"));
    ExpectFailure({square, "-o", folder.Path("link.png")}, folder.Path("link.png"), {"would replace the model"});
    EXPECT_EQ(ReadWholeFile(square), before);
}

TEST_F(RenderFailure, ASizeBeyondAFileOrGLNamesTheRealLimit)
{
    const std::string square = WriteSquare();
    for (const char* size : {"100000x100000", "100000x1", "1x100000", "2147483648x2", "99999999999x99999999999"})
    {
        SCOPED_TRACE(size);
        ExpectFailure({square, "-o", output, "--size", size}, output,
                      {"can't be written; a side has 1 to 65535 pixels"});
        ExpectFailure({square, "--stats", "--size", size}, square,
                      {"too large to be measured; this GL draws at most ", "x", "smaller --size"});
    }
}

TEST_F(RenderFailure, MoreSamplesThanGLHasNamesTheLimit)
{
    ExpectFailure({WriteSquare(), "-o", output, "--size", "8x8", "--samples", "64"}, output, {"samples"});
}

TEST_F(RenderFailure, AnEyeInItsTargetSeesNothing)
{
    ExpectFailure({WriteSquare(), "-o", output, "--eye", "1,2,3", "--target", "1,2,3"}, output,
                  {"the eye is where it looks at; move"});
}

TEST_F(RenderFailure, WithoutGLTheMissingDriverIsNamed)
{
    ExpectFailure({WriteSquare(), "-o", output}, output, {"no EGL display", "; install a GL driver"},
                  {"__EGL_VENDOR_LIBRARY_FILENAMES=/nonexistent"});
    ExpectFailure({WriteSquare(), "-o", output}, output, {"OpenGL", "; install a GL driver"},
                  {"LIBGL_DRIVERS_PATH=/nonexistent", "GALLIUM_DRIVER=none"});
}

TEST_F(RenderFailure, AFileSizeLimitLeavesTheOldPicture)
{
    const std::string square = WriteSquare();
    WriteWholeFile(output, "old");
    const std::vector<std::string> before = FilesIn(folder.Path());
    // Eight blocks of 512 bytes are less than this sky takes, and more than the model does.
    const ProcessResult result = Shell("ulimit -f 8; exec \"$0\" \"$@\"",
                                       {square, "-o", output, "--size", "1000x1000", "--view", "front", "--sky"});
    ExpectFailureLine(result, output, {"larger than allowed here; raise the limit"});
    EXPECT_EQ(ReadWholeFile(output), "old");
    EXPECT_EQ(FilesIn(folder.Path()), before);
}

TEST_F(RenderFailure, ABrokenPipeIsAFailureAndNoSignal)
{
    const std::string status = folder.Path("status");
    const ProcessResult result = Shell("{ \"$0\" \"$@\" --stats; echo $? >" + status + "; } | true",
                                       {WriteSquare(), "-o", output, "--size", "8x8"});
    EXPECT_EQ(ReadWholeFile(status), "1\n");
    EXPECT_EQ(result.errors.rfind("orvane-render: standard output: it cannot be written; ", 0), 0u) << result.errors;
}

TEST_F(RenderFailure, AClosedStandardOutputIsAFailureAndThePictureStaysWhole)
{
    const std::string square = WriteSquare();
    const ProcessResult result = Shell("exec \"$0\" \"$@\" --stats >&-", {square, "-o", output, "--size", "8x8"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.errors.find("standard output"), std::string::npos);
    EXPECT_EQ(ReadWholeFile(output).substr(1, 3), "PNG");
    const ProcessResult formats = Shell("exec \"$0\" --list-formats >/dev/full", {});
    EXPECT_EQ(formats.exitCode, 1);
    const ProcessResult all = Shell("exec \"$0\" \"$@\" <&- >&- 2>&-", {square, "-o", output, "--size", "8x8"});
    EXPECT_EQ(all.exitCode, 0);
    EXPECT_EQ(ReadWholeFile(output).substr(1, 3), "PNG");
}

TEST_F(RenderFailure, ALineThatIsSeenFromItsEndGivesABackgroundAndIsExplained)
{
    const std::string lines = WriteObj("lines.obj", "v 0 0 0\nv 1 1 1\nl 1 2\n");
    const ProcessResult result = Run({lines, "-o", output, "--size", "8x8"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.errors.rfind("orvane-render: " + output + ": nothing of the model is seen: ", 0), 0u) << result.errors;
    EXPECT_TRUE(fs::exists(output));
}
