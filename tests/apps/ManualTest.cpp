// The pages of the manual and the completions that the build makes out of what programs say of their options.

#include "tests/support/Subprocess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace OV::Test
{

namespace
{

using testing::Contains;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

struct Program
{
    std::string name;
    std::string path;
    std::string manual;
    std::string completion;
    std::string zshCompletion;
};

std::ostream& operator<<(std::ostream& stream, const Program& program)
{
    return stream << program.name;
}

class Manual : public testing::TestWithParam<Program>
{
protected:
    static std::string Read(const std::string& path)
    {
        std::ifstream file(path);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /// The long options that begin a line of the help.
    static std::vector<std::string> Options()
    {
        const std::string help = RunProcess({GetParam().path, "--help"}).output;
        const std::regex option("\\n  (?:-[a-z],)?(--[a-z][-a-z]*)");
        std::vector<std::string> found;
        for (std::sregex_iterator it(help.begin(), help.end(), option), end; it != end; ++it)
        {
            found.push_back((*it)[1]);
        }
        return found;
    }

    /// What bash offers where the last word is being typed.
    static std::vector<std::string> Complete(const std::vector<std::string>& words)
    {
        std::string function = "_" + GetParam().name;
        function.replace(function.find('-'), 1, "_");
        std::vector<std::string> command = {
            "bash", "-c",
            "source \"$1\"; function=$2; shift 2; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); $function; "
            "printf '%s\\n' \"${COMPREPLY[@]}\"",
            "bash", GetParam().completion, function, GetParam().name};
        command.insert(command.end(), words.begin(), words.end());
        const ProcessResult result = RunProcess(command);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.errors, "");
        std::istringstream lines(result.output);
        std::vector<std::string> offered;
        for (std::string line; std::getline(lines, line);)
        {
            offered.push_back(line);
        }
        return offered;
    }
};

} // namespace

TEST_P(Manual, HasEveryOptionWithWordsAboutIt)
{
    const std::string page = Read(GetParam().manual);
    const std::vector<std::string> options = Options();
    ASSERT_GT(options.size(), 5u);
    for (const std::string& option : options)
    {
        const std::string written = std::regex_replace(option, std::regex("-"), "\\-");
        const std::size_t at = page.find(written + "\\fR");
        ASSERT_NE(at, std::string::npos) << option;
        EXPECT_NE(page.compare(page.find('\n', at), 4, "\n.TP"), 0) << option << " has no words";
    }
}

TEST_P(Manual, HasNameSynopsisAndOptions)
{
    const std::string page = Read(GetParam().manual);
    for (const char* const section : {".TH ORVANE", ".SH NAME", ".SH SYNOPSIS", ".SH OPTIONS"})
    {
        EXPECT_NE(page.find(section), std::string::npos) << section;
    }
}

TEST_P(Manual, BashOffersEveryOption)
{
    const std::vector<std::string> offered = Complete({"-"});
    for (const std::string& option : Options())
    {
        EXPECT_THAT(offered, Contains(option));
    }
}

TEST_P(Manual, BashOffersFilesWhereNoOptionBegins)
{
    const std::string& name = GetParam().completion;
    EXPECT_THAT(Complete({name.substr(0, name.size() - 1)}), ElementsAre(name));
}

const Program kRender{"orvane-render", ORVANE_RENDER_PROGRAM, ORVANE_RENDER_MANUAL, ORVANE_RENDER_COMPLETION,
                      ORVANE_RENDER_ZSH_COMPLETION};
const Program kView{"orvane-view", ORVANE_VIEW_PROGRAM, ORVANE_VIEW_MANUAL, ORVANE_VIEW_COMPLETION,
                    ORVANE_VIEW_ZSH_COMPLETION};

INSTANTIATE_TEST_SUITE_P(Of, Manual, testing::Values(kRender, kView),
                         [](const auto& info) { return info.param.name.substr(7); });

using RenderManual = Manual;

TEST_P(RenderManual, BashOffersTheNamesThatAnOptionTakes)
{
    EXPECT_THAT(Complete({"--look", "p"}), ElementsAre("phong"));
    EXPECT_THAT(Complete({"--up-axis", ""}), ElementsAre("y", "z"));
    EXPECT_THAT(Complete({"--shadows", ""}), ElementsAre("hard", "soft"));
    EXPECT_THAT(Complete({"--ao", "--sk"}), ElementsAre("--sky"));
    EXPECT_THAT(Complete({"--fov", ""}), UnorderedElementsAre(""));
}

INSTANTIATE_TEST_SUITE_P(Tool, RenderManual, testing::Values(kRender));

#ifdef ORVANE_ZSH

/// What zsh makes of a line at a terminal.
class ZshCompletion : public testing::TestWithParam<Program>
{
protected:
    /// @param typed after the name of the program, tabs and all.
    /// @return the words that the program would get, between angle brackets.
    static std::string Type(const std::string& typed)
    {
        const std::string& file = GetParam().zshCompletion;
        const ProcessResult result = RunProcess(
            {ORVANE_ZSH, "-f", "-c",
             "zmodload zsh/zpty; zpty shell $1 -f -i\n"
             "zpty -w shell \"PS1=; fpath=(${2:h} \\$fpath); autoload -U compinit; compinit -D -u\"\n"
             "zpty -w shell \"$3() { print -r -- \\\"<\\$*>\\\" }\"\n"
             "zpty -w shell \"$3 $4\"; zpty -w shell exit\n"
             "while zpty -r shell line; do print -r -- $line; done",
             "zsh", ORVANE_ZSH, file, GetParam().name, typed});
        const std::size_t begin = result.output.rfind('<');
        const std::size_t end = result.output.find('>', begin);
        return begin == std::string::npos || end == std::string::npos ? result.output + result.errors
                                                                      : result.output.substr(begin, end + 1 - begin);
    }
};

TEST_P(ZshCompletion, TypesTheRestOfAnOption)
{
    EXPECT_EQ(Type("--vers\t"), "<--version>");
}

TEST_P(ZshCompletion, TypesTheRestOfAFileWhereNoOptionBegins)
{
    const std::string& name = GetParam().completion;
    EXPECT_EQ(Type(name.substr(0, name.size() - 2) + "\t"), "<" + name + ">");
}

INSTANTIATE_TEST_SUITE_P(Of, ZshCompletion, testing::Values(kRender, kView),
                         [](const auto& info) { return info.param.name.substr(7); });

using RenderZshCompletion = ZshCompletion;

TEST_P(RenderZshCompletion, TypesTheRestOfANameThatAnOptionTakes)
{
    EXPECT_EQ(Type("--look ph\t"), "<--look phong>");
    EXPECT_EQ(Type("--shadows s\t"), "<--shadows soft>");
    EXPECT_EQ(Type("--fov s\t"), "<--fov s>");
}

INSTANTIATE_TEST_SUITE_P(Tool, RenderZshCompletion, testing::Values(kRender));

#endif

} // namespace OV::Test
