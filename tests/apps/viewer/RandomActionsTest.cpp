#include "tests/apps/viewer/RandomActions.h"

#include "apps/viewer/Script.h"
#include "orvane_host/present/PresentationSettings.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <set>
#include <sstream>
#include <string>

using namespace OV;

namespace
{

/// So many that the rarest ones are among them.
const std::string& ManyActions()
{
    static const std::string actions = OV::Test::MakeRandomScript(3, 8000, "/folder");
    return actions;
}

} // namespace

TEST(RandomActions, AreAllThatThereAre)
{
    // Those that end a window, and those that are of use to a script alone.
    const std::set<std::string> left = {"quit", "expect", "await", "try"};
    std::istringstream help(ViewerApp::Script::Help());
    int count = 0;
    for (std::string line; std::getline(help, line); ++count)
    {
        const std::string name = line.substr(0, line.find(' '));
        if (left.count(name) == 0)
        {
            EXPECT_TRUE(ManyActions().find("try " + name + " ") != std::string::npos
                        || ManyActions().find("try " + name + "\n") != std::string::npos)
                << name;
        }
    }
    EXPECT_GT(count, 30);
}

TEST(RandomActions, ChangeEverySetting)
{
    const auto fields = nlohmann::json::parse(Host::PresentationSettings().ToJSON());
    for (const auto& [name, value] : fields.items())
    {
        EXPECT_NE(ManyActions().find("try set " + name), std::string::npos) << name;
    }
    EXPECT_GT(fields.size(), 10u);
}

TEST(RandomActions, AreReadByAScript)
{
    ViewerApp::Script script;
    std::string error;
    EXPECT_TRUE(ViewerApp::Script::Parse(ManyActions(), script, error)) << error;
    for (const ViewerApp::ScriptAction& action : script.actions)
    {
        ViewerApp::Script tried;
        EXPECT_TRUE(action.name != "try" || ViewerApp::Script::Parse(action.words[0], tried, error)) << error;
    }
}
