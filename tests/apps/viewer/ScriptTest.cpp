#include "apps/viewer/Script.h"

#include <gtest/gtest.h>

using namespace OV::ViewerApp;

TEST(Script, HasAnActionALine)
{
    Script script;
    std::string error;
    ASSERT_TRUE(Script::Parse("# what it does\n\n  open a model.obj \r\ndrag 1,2 3,4\nset sky true\nwait\n", script, error))
        << error;
    ASSERT_EQ(script.actions.size(), 4u);
    EXPECT_EQ(script.actions[0].name, "open");
    EXPECT_EQ(script.actions[0].words, std::vector<std::string>{"a model.obj"});
    EXPECT_EQ(script.actions[0].line, 3);
    EXPECT_EQ(script.actions[1].words, (std::vector<std::string>{"1,2", "3,4"}));
    EXPECT_EQ(script.actions[2].words, (std::vector<std::string>{"sky", "true"}));
    EXPECT_TRUE(script.actions[3].words.empty());
}

TEST(Script, TroubleIsToldByLineWithNothingChanged)
{
    static constexpr struct
    {
        const char* text;
        const char* told;
    } cases[] = {
        {"wait\ndance", "line 2: there is no action 'dance'"},
        {"wait a while", "line 1: it reads: wait"},
        {"open", "line 1: it reads: open FILE"},
        {"drag 1,2", "line 1: it reads: drag X,Y X,Y"},
    };
    for (const auto& entry : cases)
    {
        Script script;
        script.actions.resize(7);
        std::string error;
        EXPECT_FALSE(Script::Parse(entry.text, script, error)) << entry.text;
        EXPECT_NE(error.find(entry.told), std::string::npos) << error;
        EXPECT_EQ(script.actions.size(), 7u);
    }
}

TEST(Script, TheHelpListsWhatIsRead)
{
    const std::string help = Script::Help();
    for (const char* name : {"open FILE", "look NAME", "click X,Y", "drag X,Y X,Y", "key NAME", "wait", "screenshot FILE",
                             "quit"})
    {
        EXPECT_NE(help.find(name), std::string::npos) << name;
    }
}

TEST(Script, PointsAreTwoNumbers)
{
    double x = 0.0;
    double y = 0.0;
    ASSERT_TRUE(ParsePoint("1.5,-2", x, y));
    EXPECT_EQ(x, 1.5);
    EXPECT_EQ(y, -2.0);
    for (const char* text : {"", "1", "1,", ",1", "1,2,3", "1 ,2", "nan,1", "1,inf"})
    {
        EXPECT_FALSE(ParsePoint(text, x, y)) << text;
        EXPECT_EQ(x, 1.5);
    }
}
