#include "apps/viewer/Script.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <sstream>
#include <string_view>
#include <utility>

namespace OV::ViewerApp
{

namespace
{

struct Form
{
    const char* name;
    /// What its words are called; the last one takes the rest of the line.
    std::vector<std::string> words;
    const char* purpose;
};

const std::vector<Form>& Forms()
{
    static const std::vector<Form> forms = {
        {"open", {"FILE"}, "open a model in place of what is shown, and wait until it is there"},
        {"begin-open", {"FILE"}, "the same without waiting until it is there"},
        {"add", {"FILE"}, "open a model beside what is shown, and wait until it is there"},
        {"drop", {"FILE"}, "drop a file on the window"},
        {"shift-drop", {"FILE"}, "drop a file with shift held"},
        {"drop-two", {"FILE", "FILE"}, "drop two files at once"},
        {"take-away", {"PATH"}, "take the file away that a node is the top of"},
        {"look", {"NAME"}, "draw surfaces in a look"},
        {"set", {"FIELD", "JSON"}, "change one setting, such as: set sky true"},
        {"view", {"NAME"}, "turn to a named view"},
        {"select", {"PATH"}, "select a node"},
        {"save-view", {"NAME"}, "keep the view under a name"},
        {"recall-view", {"NAME"}, "turn to a kept view"},
        {"click", {"X,Y"}, "press and let go of the left button"},
        {"double-click", {"X,Y"}, "do so twice"},
        {"shift-click", {"X,Y"}, "press and let go of the left button with shift held"},
        {"right-click", {"X,Y"}, "press and let go of the right button"},
        {"tap", {"X,Y"}, "press and let go of the left button sooner than a frame is drawn"},
        {"drag", {"X,Y", "X,Y"}, "drag with the left button"},
        {"right-drag", {"X,Y", "X,Y"}, "drag with the right button"},
        {"middle-drag", {"X,Y", "X,Y"}, "drag with the middle button"},
        {"shift-drag", {"X,Y", "X,Y"}, "drag with the left button and shift held"},
        {"ctrl-drag", {"X,Y", "X,Y"}, "drag with the left button and control held"},
        {"move", {"X,Y"}, "move the pointer"},
        {"scroll", {"X,Y", "STEPS"}, "turn the wheel over a place"},
        {"swipe", {"X,Y", "DX,DY"}, "scroll on a trackpad over a place"},
        {"shift-swipe", {"X,Y", "DX,DY"}, "scroll with shift held"},
        {"ctrl-swipe", {"X,Y", "DX,DY"}, "scroll with control held"},
        {"key", {"NAME"}, "press a key, such as: key ctrl+o"},
        {"type", {"TEXT"}, "type a text"},
        {"hammer", {"NAME", "TEXT"}, "press a key and type a text, all sooner than a frame is drawn"},
        {"resize", {"WxH"}, "give the window another size"},
        {"resize-often", {"FRAMES"}, "give it another size in each of some frames, and then its own again"},
        {"scale", {"N"}, "have so many pixels per point, as on another screen"},
        {"minimise", {}, "make the window small"},
        {"restore", {}, "make it large again"},
        {"wait", {}, "go on when nothing moves or loads any more"},
        {"pause", {"SECONDS"}, "let time pass"},
        {"screenshot", {"FILE"}, "write what the window shows as a PNG file"},
        {"picture", {"FILE"}, "write the model without panels as a PNG file"},
        {"picture-of", {"WxH", "FILE"}, "write it in another size"},
        {"print", {"WHAT"}, "write to standard output: selection, thing, command, clipboard, settings, measure, "
                            "message, opening, model, models, recent, nodes, labels, keys, statistics, sleep"},
        {"expect", {"WHAT", "TEXT"}, "end with status 1 unless what print writes holds the text"},
        {"await", {"WHAT", "TEXT"}, "go on when what print writes holds the text; end with status 1 after a minute"},
        {"copy", {"FILE", "FILE"}, "copy a file over another one"},
        {"try", {"ACTION"}, "do an action, and go on where it can't be done"},
        {"lose-context", {}, "lose the GL context and get another one"},
        {"quit", {}, "end"},
    };
    return forms;
}

std::string Signature(const Form& form)
{
    std::string text = form.name;
    for (const std::string& word : form.words)
    {
        text += " " + word;
    }
    return text;
}

std::string Trimmed(const std::string& text)
{
    const char* const blanks = " \t\r";
    const std::size_t begin = text.find_first_not_of(blanks);
    return begin == std::string::npos ? std::string() : text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

/// Takes the first word off a text.
std::string TakeWord(std::string& text)
{
    const std::size_t end = std::min(text.find_first_of(" \t"), text.size());
    const std::string word = text.substr(0, end);
    text = Trimmed(text.substr(end));
    return word;
}

bool ParseLine(std::string text, ScriptAction& action, std::string& reason)
{
    action.name = TakeWord(text);
    const auto form = std::find_if(Forms().begin(), Forms().end(),
                                   [&](const Form& candidate) { return candidate.name == action.name; });
    if (form == Forms().end())
    {
        reason = "there is no action '" + action.name + "'; --help-script lists those that there are";
        return false;
    }
    for (std::size_t i = 0; i < form->words.size(); ++i)
    {
        const bool isLast = i + 1 == form->words.size();
        action.words.push_back(isLast ? std::exchange(text, {}) : TakeWord(text));
    }
    if (!text.empty() || (!action.words.empty() && action.words.back().empty()))
    {
        reason = "it reads: " + Signature(*form);
        return false;
    }
    return true;
}

} // namespace

bool Script::Parse(const std::string& text, Script& script, std::string& error)
{
    Script parsed;
    std::istringstream lines(text);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number)
    {
        const std::string content = Trimmed(line);
        if (content.empty() || content[0] == '#')
        {
            continue;
        }
        ScriptAction action;
        action.line = number;
        std::string reason;
        if (!ParseLine(content, action, reason))
        {
            error = "line " + std::to_string(number) + ": " + reason;
            return false;
        }
        parsed.actions.push_back(std::move(action));
    }
    script = std::move(parsed);
    return true;
}

std::string Script::Help()
{
    std::size_t widest = 0;
    for (const Form& form : Forms())
    {
        widest = std::max(widest, Signature(form).size());
    }
    std::string help;
    for (const Form& form : Forms())
    {
        const std::string signature = Signature(form);
        help += signature + std::string(widest + 2 - signature.size(), ' ') + form.purpose + "\n";
    }
    return help;
}

bool ParsePoint(const std::string& text, double& x, double& y)
{
    const std::size_t comma = text.find(',');
    if (comma == std::string::npos)
    {
        return false;
    }
    const auto number = [](std::string_view part, double& value)
    {
        const auto result = std::from_chars(part.data(), part.data() + part.size(), value);
        return result.ec == std::errc() && result.ptr == part.data() + part.size() && std::isfinite(value);
    };
    double first = 0.0;
    double second = 0.0;
    if (!number(std::string_view(text).substr(0, comma), first) || !number(std::string_view(text).substr(comma + 1), second))
    {
        return false;
    }
    x = first;
    y = second;
    return true;
}

} // namespace OV::ViewerApp
