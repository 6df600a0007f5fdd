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

INSTANTIATE_TEST_SUITE_P(Of, Manual,
                         testing::Values(Program{"orvane-render", ORVANE_RENDER_PROGRAM, ORVANE_RENDER_MANUAL,
                                                 ORVANE_RENDER_COMPLETION},
                                         Program{"orvane-view", ORVANE_VIEW_PROGRAM, ORVANE_VIEW_MANUAL,
                                                 ORVANE_VIEW_COMPLETION}),
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

INSTANTIATE_TEST_SUITE_P(Tool, RenderManual,
                         testing::Values(Program{"orvane-render", ORVANE_RENDER_PROGRAM, ORVANE_RENDER_MANUAL,
                                                 ORVANE_RENDER_COMPLETION}));

} // namespace OV::Test
