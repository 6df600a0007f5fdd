#include "tests/apps/render/CommandPage.h"
#include "tests/apps/render/RenderTool.h"
#include "tests/support/Golden.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <ostream>

namespace OV::Test
{

namespace
{

namespace fs = std::filesystem;

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

const std::string Pictures = ORVANE_DOCS_DIR "/images";

/// The pictures come from another machine. Measured on the software renderer: the same bytes with
/// one thread and with two, with AVX, AVX2 and AVX-512.
constexpr GoldenLimits Limits{2, 0.001};

/// The renderer filters textures another way in vectors of another width, which the processor
/// decides: up to 157 off at a quarter of the pixels of a picture.
const std::string VectorWidth = "LP_NATIVE_VECTOR_WIDTH=256";

/// The README and every page of the docs.
const std::vector<CommandPage>& Pages()
{
    static const std::vector<CommandPage> pages = []
    {
        std::vector<CommandPage> all = {ReadCommandPage(ORVANE_DOCS_DIR "/../README.md")};
        for (const std::string& name : FilesIn(ORVANE_DOCS_DIR))
        {
            if (fs::path(name).extension() == ".md")
            {
                all.push_back(ReadCommandPage(ORVANE_DOCS_DIR "/" + name));
            }
        }
        return all;
    }();
    return pages;
}

/// What makes the picture of the window: no command of a page but a script, which names it.
CommandPage WindowPage()
{
    const std::string script = ReadWholeFile(ORVANE_DOCS_DIR "/view.txt");
    const std::string action = "\nscreenshot ";
    const std::size_t begin = script.find(action);
    const std::size_t end = script.find('\n', begin + 1);
    if (begin == std::string::npos || end == std::string::npos)
    {
        return {};
    }
    const std::string name = script.substr(begin + action.size(), end - begin - action.size());
    return ParseCommandPage("view.txt", "```sh\norvane-view -o " + name + "\n```\n![The window](images/" + name + ")\n");
}

/// A command of a page that runs the tool.
struct ToolCommand
{
    std::string label;
    std::string variables;
    PageCommand command;
};

std::ostream& operator<<(std::ostream& stream, const ToolCommand& command)
{
    return stream << command.command.text;
}

std::string Label(const std::string& text)
{
    std::string label = fs::path(text).stem();
    std::replace_if(label.begin(), label.end(), [](unsigned char c) { return !std::isalnum(c); }, '_');
    return label;
}

/// Those whose picture a page shows, or the others.
std::vector<ToolCommand> ToolCommands(bool shown)
{
    std::vector<ToolCommand> found;
    for (const CommandPage& page : Pages())
    {
        for (std::size_t i = 0; i < page.commands.size(); ++i)
        {
            const PageCommand& command = page.commands[i];
            const bool isShown = std::any_of(page.pictures.begin(), page.pictures.end(), [i](const PagePicture& picture)
                                             { return picture.command == static_cast<int>(i); });
            if (FileName(command.program) == "orvane-render" && isShown == shown)
            {
                const std::string number = "_" + std::to_string(i + 1);
                found.push_back({shown ? Label(command.picture) : Label(page.name) + number, page.variables, command});
            }
        }
    }
    return found;
}

std::string Replace(std::string text, const std::string& word, const std::string& with)
{
    for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + with.size()))
    {
        text.replace(at, word.size(), with);
    }
    return text;
}

/// Types commands of a page into a shell, in a folder of its own.
class PageTest : public RenderTool
{
protected:
    /// Wherever the page finds the tool, the one that was built runs. MODEL stands for any model.
    ProcessResult Type(const std::string& variables, const PageCommand& command) const
    {
        std::string line = "orvane-render" + command.text.substr(command.program.size());
        line = Replace(line, " MODEL ", " " + WriteCube() + " ");
        const std::string tool = fs::path(RenderProgram()).parent_path();
        const std::string place = "PATH=\"" + tool + ":$PATH\"\ncd \"" + folder.Path() + "\"\n";
        return RunProcess({"sh", "-euc", place + variables + line}, {VectorWidth});
    }

    /// Writes a picture of the docs with a few pixels damaged, and returns the damaged one.
    static Picture Damage(const std::string& name)
    {
        Picture picture = LoadPicture(Pictures + "/" + name + ".png");
        for (int i = 0; i < 9; ++i)
        {
            const int x = picture.GetWidth() / 2 + i % 3;
            const int y = picture.GetHeight() / 2 + i / 3;
            const Pixel old = picture.At(x, y);
            picture.Set(x, y, {old.r ^ 16, old.g, old.b, old.a});
        }
        return picture;
    }

    GoldenFolders Folders() const { return {Pictures, GoldenFolders::Default().output + "/gallery"}; }
};

struct Gallery : PageTest, ::testing::WithParamInterface<ToolCommand>
{
};

struct PageCommands : PageTest, ::testing::WithParamInterface<ToolCommand>
{
};

const auto LabelOf = [](const auto& info) { return info.param.label; };

} // namespace

TEST_P(Gallery, TheCommandMakesThePictureBelowIt)
{
    const PageCommand& command = GetParam().command;
    const ProcessResult result = Type(GetParam().variables, command);
    ASSERT_EQ(result.exitCode, 0) << command.text << "\n" << result.errors;
    EXPECT_EQ(result.errors, "");
    EXPECT_TRUE(MatchesGolden(LoadPicture(folder.Path(command.picture)), fs::path(command.picture).stem(), Limits,
                              Folders()))
        << command.text;
}

INSTANTIATE_TEST_SUITE_P(Docs, Gallery, ::testing::ValuesIn(ToolCommands(true)), LabelOf);

TEST_P(PageCommands, Runs)
{
    const ProcessResult result = Type(GetParam().variables, GetParam().command);
    EXPECT_EQ(result.exitCode, 0) << GetParam().command.text << "\n" << result.errors;
    // A model of the tests tells no unit, which a scale wants.
    const bool mayWarn = GetParam().command.text.find("--scale ") != std::string::npos;
    EXPECT_TRUE(result.errors.empty() || (mayWarn && result.errors.find("warning: ") != std::string::npos)) << result.errors;
}

INSTANTIATE_TEST_SUITE_P(Docs, PageCommands, ::testing::ValuesIn(ToolCommands(false)), LabelOf);

struct Docs : PageTest
{
};

TEST_F(Docs, EveryPictureHasACommandAndEveryFileAPage)
{
    std::vector<CommandPage> pages = Pages();
    pages.push_back(WindowPage());
    EXPECT_THAT(FindPageFaults(pages, FilesIn(Pictures)), IsEmpty());
}

TEST_F(Docs, ThereAreCommandsAndPictures)
{
    EXPECT_GE(ToolCommands(true).size(), 12u);
    EXPECT_FALSE(ToolCommands(false).empty());
}

TEST_F(Docs, ADamagedPictureFailsAndShowsTheDamage)
{
    const std::string name = fs::path(ToolCommands(true).front().command.picture).stem();
    const GoldenFolders folders{Pictures, folder.Path("output")};
    EXPECT_TRUE(MatchesGolden(LoadPicture(Pictures + "/" + name + ".png"), name, Limits, folders));
    EXPECT_FALSE(MatchesGolden(Damage(name), name, Limits, folders));
    EXPECT_THAT(FilesIn(folders.output),
                ElementsAre(name + ".actual.png", name + ".difference.png", name + ".expected.png"));
}

TEST_F(Docs, ACommandThatFailsIsSeen)
{
    const CommandPage page = ParseCommandPage("page.md", "```sh\norvane-render MODEL -o a.png --bogus\n"
                                                         "orvane-render $UNSET -o a.png\n"
                                                         "orvane-render MODEL -o a.png\n```\n");
    ASSERT_EQ(page.commands.size(), 3u);
    EXPECT_EQ(Type("", page.commands[0]).exitCode, 2);
    EXPECT_NE(Type("", page.commands[1]).exitCode, 0);
    EXPECT_EQ(Type("", page.commands[2]).exitCode, 0);
}

TEST(CommandPageText, CommandsVariablesAndPicturesAreRead)
{
    const CommandPage page = ParseCommandPage("page.md", "`orvane-render a -o b.png` is no block\n"
                                                         "```sh\n# a comment\nHOUSE=/models/house.ifc\n\n```\n"
                                                         "```cpp\norvane-render wrong -o wrong.png\n```\n"
                                                         "```sh\norvane-render $HOUSE -o house.png \\\n    --sky\n"
                                                         "X=1 ninja\n```\n\nWords.\n\n![A house](images/house.png)\n");
    EXPECT_EQ(page.variables, "HOUSE=/models/house.ifc\n");
    ASSERT_EQ(page.commands.size(), 2u);
    EXPECT_EQ(page.commands[0].text, "orvane-render $HOUSE -o house.png     --sky");
    EXPECT_EQ(page.commands[0].program, "orvane-render");
    EXPECT_EQ(page.commands[0].picture, "house.png");
    EXPECT_EQ(page.commands[1].program, "X=1");
    ASSERT_EQ(page.pictures.size(), 1u);
    EXPECT_EQ(page.pictures[0].path, "images/house.png");
    EXPECT_EQ(page.pictures[0].command, 0);
}

TEST(CommandPageText, EachFaultIsNamed)
{
    const std::string made = "```sh\norvane-render M -o a.png\n```\n![a](images/a.png)\n";
    const auto faults = [](const std::string& text, const std::vector<std::string>& files)
    { return FindPageFaults({ParseCommandPage("page.md", text)}, files); };
    EXPECT_THAT(faults(made, {"a.png"}), IsEmpty());
    EXPECT_THAT(faults(made, {}), ElementsAre(HasSubstr("not in the folder")));
    EXPECT_THAT(faults(made, {"a.png", "b.png"}), ElementsAre("no page shows b.png"));
    EXPECT_THAT(faults("![a](images/a.png)\n", {"a.png"}), ElementsAre(HasSubstr("no command above it")));
    EXPECT_THAT(faults("![a](images/a.png)\n" + made, {"a.png"}), ElementsAre(HasSubstr("no command above it")));
    EXPECT_THAT(faults("```sh\norvane-render M -o b.png\n```\n![a](images/a.png)\n", {"a.png"}),
                ElementsAre(HasSubstr("no command above it")));
    EXPECT_THAT(faults(made + made, {"a.png"}), ElementsAre(HasSubstr("another command"), HasSubstr("another command")));
    EXPECT_THAT(faults(made + "```sh\nls\n```\n![a](images/a.png)\n", {"a.png"}),
                ElementsAre(HasSubstr("no command above it")));
}

TEST(CommandPageText, APageMayShowWhatAnotherMakes)
{
    const CommandPage gallery = ParseCommandPage("gallery.md", "```sh\nx M -o a.png\n```\n![a](images/a.png)\n");
    const CommandPage readme = ParseCommandPage("README.md", "![a](docs/images/a.png)\n");
    EXPECT_THAT(FindPageFaults({readme, gallery}, {"a.png"}), IsEmpty());
    EXPECT_THAT(FindPageFaults({readme}, {"a.png"}), ElementsAre(HasSubstr("no command above it")));
}

} // namespace OV::Test
