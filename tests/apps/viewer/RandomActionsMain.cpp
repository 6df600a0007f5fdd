// Does random things in windows of orvane-view for a time, and tells which seed went wrong:
//   viewer_random_actions SECONDS [SEED]

#include "tests/apps/viewer/RandomActions.h"
#include "tests/apps/viewer/VirtualDisplay.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iostream>

namespace
{

/// Few enough to be read by who looks for what went wrong.
constexpr int ActionsPerWindow = 150;

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2)
    {
        std::cerr << "viewer_random_actions SECONDS [SEED]\n";
        return 2;
    }
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(std::atoi(argv[1]));
    const OV::Test::VirtualDisplay display;
    auto seed = static_cast<unsigned>(argc > 2 ? std::atoi(argv[2]) : 1);
    int troubles = 0;
    int windows = 0;
    for (; std::chrono::steady_clock::now() < end; ++seed, ++windows)
    {
        const OV::Test::TemporaryFolder folder;
        OV::Test::WriteRandomModels(folder.Path());
        const std::string script = folder.Path("script.txt");
        std::ofstream(script) << OV::Test::MakeRandomScript(seed, ActionsPerWindow, folder.Path()) << "quit\n";
        const OV::Test::ProcessResult result = OV::Test::RunProcess(
            {ORVANE_VIEW_PROGRAM, "--forget", "--watch", "--size", "640x480", "--script", script, folder.Path("one.obj")},
            {"DISPLAY=" + display.Name()});
        if (result.exitCode != 0 || result.signal != 0 || !result.errors.empty())
        {
            ++troubles;
            std::cout << "seed " << seed << ": status " << result.exitCode << ", signal " << result.signal << "\n"
                      << result.errors << "\n" << std::flush;
        }
    }
    std::cout << windows << " windows of " << ActionsPerWindow << " actions, " << troubles << " of them with trouble\n";
    return troubles == 0 ? 0 : 1;
}
