#include "tests/apps/viewer/RandomActions.h"

#include "tests/orvane_host/present/SettingsDice.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <fstream>
#include <iterator>
#include <utility>
#include <vector>

namespace OV::Test
{

namespace
{

/// Throws dice for the words of actions.
class Words
{
public:
    Words(unsigned seed, std::string folder) : m_dice(seed), m_folder(std::move(folder)) {}

    int Below(int end) { return m_dice.Below(end); }

    const char* One(const std::vector<const char*>& of)
    {
        return of[static_cast<std::size_t>(Below(static_cast<int>(of.size())))];
    }

    std::string Point() { return std::to_string(Below(700) - 20) + "," + std::to_string(Below(520) - 20); }
    std::string Size() { return std::to_string(1 + Below(1100)) + "x" + std::to_string(1 + Below(700)); }
    std::string Steps() { return std::to_string(Below(9) - 4); }

    std::string Model()
    {
        return m_folder + "/" + One({"one.obj", "two.obj", "one.obj", "two.obj", "watched.obj", "broken.obj", "none.obj"});
    }

    std::string Picture() { return m_folder + "/picture.png"; }

    std::string Path() { return One({"left", "right", "one.obj", "two.obj", "watched.obj", "two.obj/wall", "attic", "one.obj (2)"}); }

    std::string Key()
    {
        return One({"1", "2", "3", "4", "5", "6", "7", "f", "shift+f", "p", "h", "i", "shift+h", "e", "l", "o", "m", "shift+m",
                    "w", "w", "s", "a", "d", "n", "escape", "tab", "?", "f1", "f9", "left", "right", "up", "down", "page-up",
                    "page-down", "shift+left", "shift+right", "shift+up", "shift+down", "ctrl+o", "shift+ctrl+o", "ctrl+r", "ctrl+s", "ctrl+c", "delete",
                    "shift+delete", "backspace", "enter"});
    }

    std::string Setting()
    {
        switch (Below(4))
        {
        case 0:
        case 1: return ChangedField();
        case 2: return AnyField();
        default: return KnownSetting();
        }
    }

private:
    /// One field of settings as other tests change them.
    std::string ChangedField()
    {
        Host::PresentationSettings settings;
        for (int i = 0; i < 3; ++i)
        {
            Change(settings, m_dice, {"left", "right", "one.obj"});
        }
        const auto json = nlohmann::ordered_json::parse(settings.ToJSON());
        const auto field = std::next(json.begin(), Below(static_cast<int>(json.size())));
        return field.key() + " " + field.value().dump();
    }

    /// Any field, or one of those in it, with a value that may be none of its kind.
    std::string AnyField()
    {
        Host::PresentationSettings settings;
        Change(settings, m_dice, {});
        const auto json = nlohmann::ordered_json::parse(settings.ToJSON());
        const auto field = std::next(json.begin(), Below(static_cast<int>(json.size())));
        std::string name = field.key();
        if (field.value().is_object() && !field.value().empty() && Below(4) != 0)
        {
            name += "." + std::next(field.value().begin(), Below(static_cast<int>(field.value().size()))).key();
        }
        return name + " "
            + One({"true", "false", "null", "{}", "[]", "0", "1", "-1", "0.5", "45", "1e30", "\"\"", "\"sky\"", "\"soft\"",
                   "\"left\"", "\"#336699\"", "[0, 1, 0]", "[1, 2, 3]"});
    }

    std::string KnownSetting()
    {
        return One({"sky true", "sky false", "occlusion true", "occlusion false", "lines {}", "lines null",
                    "lines {\"width\": 3, \"dash\": 5}", "edges {\"weight\": 0.8}", "edges null", "antialiasing \"ssaa\"",
                    "antialiasing \"fxaa\"", "antialiasing \"msaa\"", "antialiasing \"none\"", "cullBacks false",
                    "view.orthographic true", "view.orthographic false", "view.upAxis \"z\"", "view.upAxis \"y\"",
                    "view.eye null", "view.eye [5, 2, 9]", "view.fov 90", "view.fov 0", "fog {\"start\": 1, \"end\": 20}",
                    "fog null", "section.planes [{\"normal\": [1, 1, 0], \"position\": [0, 0, 0]}]", "section.planes []",
                    "section.planes [{\"normal\": [0, 1, 0], \"position\": [0, 0.5, 0]}, {\"normal\": [0, 0, 1], \"position\": [0, 0, 0]}]",
                    "editPath \"left\"", "editPath \"\"", "sheet.title \"A title\"", "sheet.scaleBar true", "sheet.north 20",
                    "sheet.title \"\"", "background \"#AABBCC\"", "background 3", "samples 2", "samples null"});
    }

    Dice m_dice;
    std::string m_folder;
};

std::string Action(Words& dice, const std::string& folder)
{
    switch (dice.Below(34))
    {
    case 0: return "open " + dice.Model();
    case 1: return "begin-open " + dice.Model();
    case 2: return "add " + dice.Model();
    case 3: return std::string(dice.One({"drop ", "shift-drop "})) + dice.Model();
    case 4: return "drop-two " + dice.Model() + " " + dice.Model();
    case 5: return "take-away " + dice.Path();
    case 6: return std::string("look ") + dice.One({"basic", "advanced", "phong", "crosshatch", "monotone", "vertex-color"});
    case 7:
    case 8:
    case 9: return "set " + dice.Setting();
    case 10: return std::string("view ") + dice.One({"iso", "front", "back", "left", "right", "top", "bottom"});
    case 11: return "select " + dice.Path();
    case 12: return std::string(dice.One({"save-view ", "recall-view "})) + dice.One({"mine", "yours"});
    case 13:
    case 14: return std::string(dice.One({"click ", "tap ", "double-click ", "shift-click ", "right-click "})) + dice.Point();
    case 15:
    case 16:
    case 17:
        return std::string(dice.One({"drag ", "right-drag ", "middle-drag ", "shift-drag ", "ctrl-drag "})) + dice.Point() + " "
            + dice.Point();
    case 18: return "move " + dice.Point();
    case 19: return "scroll " + dice.Point() + " " + dice.Steps();
    case 20:
        return std::string(dice.One({"swipe ", "shift-swipe ", "ctrl-swipe "})) + dice.Point() + " " + dice.Steps() + "," + dice.Steps();
    case 21:
        return (dice.Below(3) != 0 ? "type " : "hammer " + dice.Key() + " ")
            + dice.One({"left", "7", "\u00B0", "x/y", "?", "two.obj"});
    case 22: return dice.Below(3) != 0 ? "resize " + dice.Size() : "resize-often " + std::to_string(1 + dice.Below(12));
    case 23: return std::string("scale ") + dice.One({"0.5", "1", "1.25", "2", "9"});
    case 24: return dice.One({"minimise", "restore", "restore", "restore"});
    case 25: return dice.One({"wait", "pause 0.01"});
    case 26: return std::string(dice.One({"screenshot ", "picture "})) + dice.Picture();
    case 27: return "picture-of " + dice.Size() + " " + dice.Picture();
    case 28:
        return std::string("print ")
            + dice.One({"selection", "thing", "command", "clipboard", "settings", "measure", "message", "opening", "model",
                        "models", "recent", "nodes", "labels", "keys", "statistics", "sleep"});
    case 29:
        return "copy " + folder + "/" + dice.One({"one.obj", "two.obj", "broken.obj"}) + " " + folder + "/watched.obj";
    case 30: return "lose-context";
    default: return "key " + dice.Key();
    }
}

} // namespace

std::string MakeRandomScript(unsigned seed, int actions, const std::string& folder)
{
    Words dice(seed, folder);
    std::string script;
    for (int i = 0; i < actions; ++i)
    {
        script += "try " + Action(dice, folder) + "\n";
    }
    return script + "restore\nwait\n";
}

void WriteRandomModels(const std::string& folder)
{
    const std::string pair = "o left\nv -3 -1 0\nv -1 -1 0\nv -1 1 0\nv -3 1 0\nf 1 2 3 4\n"
                             "o right\nv 1 -1 0\nv 3 -1 0\nv 3 1 0\nv 1 1 0\nf 5 6 7 8\n";
    const std::string wall = "o wall\nv 0 0 -9\nv 0 3 -9\nv 0 3 9\nv 0 0 9\nf 1 2 3 4\n"
                             "o floor\nv -9 0 -9\nv -9 0 9\nv 9 0 9\nv 9 0 -9\nf 5 6 7 8\n";
    std::ofstream(folder + "/one.obj") << pair;
    std::ofstream(folder + "/two.obj") << wall;
    std::ofstream(folder + "/watched.obj") << wall;
    std::ofstream(folder + "/broken.obj") << "no model";
}

} // namespace OV::Test
