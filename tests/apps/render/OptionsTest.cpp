#include "apps/render/Options.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <string>
#include <vector>

using namespace OV::RenderApp;

namespace
{

/// What a user may rely on. It is written down here so that no option comes or goes unseen.
const std::vector<std::string> Known = {
    "--help",       "--version", "--list-formats", "--output",     "--size",          "--aa",         "--samples",
    "--background", "--sky",     "--fog",          "--no-cull",    "--view",          "--eye",        "--target",
    "--up",         "--fov",     "--ortho",        "--look",       "--clip",          "--poche",      "--outline",
    "--outline-color", "--edit", "--edges",        "--edge-color", "--ao",            "--lines",      "--crease",
    "--line-width", "--line-color", "--dash",      "--line-offset", "--title",        "--scale-bar",  "--north",
    "--watermark",  "--pick",    "--stats",        "--frames",     "--hide",          "--isolate",    "--label",
    "--distance",   "--angle",   "--up-axis",      "--pixel-ratio", "--quiet",        "--fail-if-empty", "--paper",
    "--portrait",   "--dpi",     "--scale",        "--alpha",      "--depth",         "--list-nodes",  "--format",
    "--surroundings", "--ground",    "--batches",
    "--fit-all",    "--sun",        "--place",   "--sun-study",    "--sun-hours",
    "--ao-kind",    "--ao-radius",  "--ao-strength",     "--keep-coplanar", "--hidden", "--glass", "--glass-layers",
    "--shadows",    "--sun-width", "--shadow-darkness", "--clipped-casts",
};

struct Told
{
    Command command;
    std::string errors;
};

Told Parse(const std::vector<std::string>& words)
{
    std::vector<const char*> arguments = {"orvane-render"};
    for (const std::string& word : words)
    {
        arguments.push_back(word.c_str());
    }
    Told told;
    testing::internal::CaptureStderr();
    told.command = ParseCommandLine(static_cast<int>(arguments.size()), arguments.data());
    told.errors = testing::internal::GetCapturedStderr();
    return told;
}

std::string Help()
{
    const char* const words[] = {"orvane-render", "--help"};
    testing::internal::CaptureStdout();
    const Command command = ParseCommandLine(2, words);
    const std::string help = testing::internal::GetCapturedStdout();
    EXPECT_EQ(command.action, Action::Leave);
    EXPECT_EQ(command.exitCode, 0);
    return help;
}

} // namespace

TEST(RenderOptions, AreAllKnownHere)
{
    const std::vector<std::string> options = ListOptions();
    EXPECT_EQ(std::set<std::string>(options.begin(), options.end()), std::set<std::string>(Known.begin(), Known.end()));
}

TEST(RenderOptions, AllHaveALineOfTheHelp)
{
    const std::string help = Help();
    for (const std::string& option : ListOptions())
    {
        // At the start of a line, so that a mention in the text of another one does not count.
        const std::regex line("(^|\\n) +(-[a-z],)?" + option + "(?![-a-z])[^\\n]*\\s+\\S");
        EXPECT_TRUE(std::regex_search(help, line)) << option << " is not in\n" << help;
    }
}

TEST(RenderOptions, FlagsTakeNoValueWhateverItIs)
{
    const std::vector<std::string> flags = {"--help",  "--version",  "--list-formats", "--quiet", "--fail-if-empty",
                                            "--sky",   "--no-cull",  "--keep-coplanar", "--fit-all", "--ortho",
                                            "--scale-bar", "--stats", "--portrait",    "--alpha", "--ao",
                                            "--lines", "--clipped-casts"};
    for (const std::string& flag : flags)
    {
        for (const char* value : {"1", "-1", "true", "false", "maybe", "{}", ""})
        {
            const std::string word = flag + "=" + value;
            const Told told = Parse({"m.obj", "-o", "p.png", word});
            EXPECT_EQ(told.command.exitCode, 2) << word;
            EXPECT_EQ(told.errors, "orvane-render: " + flag + ": it takes no value; leave out '=" + value
                                       + "'; see orvane-render --help\n");
        }
    }
}

TEST(RenderOptions, WordsBehindOptionsAreTheirValuesWhateverTheyLookLike)
{
    const Told title = Parse({"m.obj", "-o", "p.png", "--title", "--sky=1"});
    EXPECT_EQ(title.command.action, Action::Render) << title.errors;
    EXPECT_EQ(title.command.options.settings.sheet.title, "--sky=1");
    EXPECT_EQ(Parse({"-o", "p.png", "--", "--sky=1"}).command.action, Action::Render);
    // These two may stand alone or have a value.
    for (const char* word : {"--edges", "--edges=0.5", "--list-nodes", "--list-nodes=json"})
    {
        EXPECT_EQ(Parse({word, "m.obj", "-o", "p.png"}).command.action, Action::Render) << word;
        EXPECT_EQ(Parse({word, "--sky=1", "m.obj", "-o", "p.png"}).command.exitCode, 2) << word;
    }
}
