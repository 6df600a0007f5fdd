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
