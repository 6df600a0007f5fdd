#include "apps/viewer/Input.h"

#include <gtest/gtest.h>

using namespace OV::ViewerApp;

TEST(Input, KeysHaveNames)
{
    static constexpr struct
    {
        const char* name;
        int key;
        unsigned modifiers;
    } cases[] = {
        {"f", 'F', ModifierNone},
        {"7", '7', ModifierNone},
        {"?", '?', ModifierNone},
        {"+", '+', ModifierNone},
        {"escape", KeyEscape, ModifierNone},
        {"page-up", KeyPageUp, ModifierNone},
        {"f1", KeyF1, ModifierNone},
        {"f12", KeyF12, ModifierNone},
        {"ctrl+o", 'O', ModifierControl},
        {"shift+ctrl+left", KeyLeft, ModifierShift | ModifierControl},
        {"ctrl++", '+', ModifierControl},
    };
    for (const auto& entry : cases)
    {
        int key = KeyNone;
        unsigned modifiers = ModifierNone;
        EXPECT_TRUE(ParseKey(entry.name, key, modifiers)) << entry.name;
        EXPECT_EQ(key, entry.key) << entry.name;
        EXPECT_EQ(modifiers, entry.modifiers) << entry.name;
    }
}

TEST(Input, OtherTextsAreNoKeys)
{
    for (const char* text : {"", "ctrl+", "f0", "f13", "foo", "ctrl+foo", " "})
    {
        int key = 5;
        unsigned modifiers = 6;
        EXPECT_FALSE(ParseKey(text, key, modifiers)) << text;
        EXPECT_EQ(key, 5);
        EXPECT_EQ(modifiers, 6u);
    }
}
