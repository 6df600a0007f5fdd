#include "tests/apps/render/RenderTool.h"

#include "tests/support/Golden.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace OV::Test
{

namespace fs = std::filesystem;

std::string RenderProgram()
{
    return ORVANE_RENDER_PROGRAM;
}

std::string TestModel(const std::string& name)
{
    const std::string path = std::string(ORVANE_TEST_MODELS) + "/" + name;
    if (!fs::exists(path))
    {
        throw std::runtime_error(path + " is missing; install the package assimp-testmodels");
    }
    return path;
}

std::string ReadWholeFile(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

void WriteWholeFile(const std::string& path, const std::string& content)
{
    std::ofstream(path, std::ios::binary) << content;
}

std::vector<std::string> FilesIn(const std::string& folder)
{
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
    {
        names.push_back(entry.path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

ProcessResult RenderTool::Run(const std::vector<std::string>& arguments, const std::vector<std::string>& variables)
{
    std::vector<std::string> all = {RenderProgram()};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return RunProcess(all, variables);
}

Picture RenderTool::Render(const std::string& model, const std::vector<std::string>& options) const
{
    const std::string output = folder.Path("rendered.png");
    fs::remove(output);
    std::vector<std::string> arguments = {model, "-o", output};
    const auto asksFor = [&](const char* option) {
        return std::find(options.begin(), options.end(), option) != options.end();
    };
    if (!asksFor("--samples") && !asksFor("--aa"))
    {
        arguments.insert(arguments.end(), {"--samples", "0"});
    }
    arguments.insert(arguments.end(), options.begin(), options.end());
    const ProcessResult result = Run(arguments);
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_EQ(result.signal, 0);
    EXPECT_EQ(result.errors, "");
    Picture picture = LoadPicture(output);
    EXPECT_FALSE(picture.IsEmpty()) << "there is no picture";
    return picture;
}

std::string RenderTool::WriteObj(const std::string& name, const std::string& geometry) const
{
    WriteWholeFile(folder.Path("colours.mtl"), "newmtl red\nKd 1 0 0\nnewmtl green\nKd 0 1 0\nnewmtl blue\nKd 0 0 1\n"
                                               "newmtl yellow\nKd 1 1 0\nnewmtl magenta\nKd 1 0 1\n"
                                               "newmtl cyan\nKd 0 1 1\n");
    const std::string path = folder.Path(name);
    WriteWholeFile(path, "mtllib colours.mtl\nusemtl red\n" + geometry);
    return path;
}

std::string RenderTool::WriteSquare() const
{
    return WriteObj("square.obj", "v -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nf 1 2 3 4\n");
}

std::string RenderTool::WriteCube() const
{
    return WriteObj("cube.obj", "v -1 -1 1\nv 1 -1 1\nv 1 1 1\nv -1 1 1\nv -1 -1 -1\nv 1 -1 -1\nv 1 1 -1\nv -1 1 -1\n"
                                "f 1 2 3 4\nusemtl green\nf 6 5 8 7\nusemtl blue\nf 5 1 4 8\nusemtl yellow\n"
                                "f 2 6 7 3\nusemtl magenta\nf 4 3 7 8\nusemtl cyan\nf 5 6 2 1\n");
}

} // namespace OV::Test
