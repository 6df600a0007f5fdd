#include "apps/viewer/ScriptRunner.h"

#include "apps/viewer/Actions.h"
#include "apps/viewer/Viewer.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <system_error>
#include <utility>

namespace OV::ViewerApp
{

namespace
{

constexpr double LoadingPoll = 0.02;
constexpr std::chrono::seconds AwaitTime(60);
/// That the window system takes to give a window another size.
constexpr std::chrono::milliseconds ResizeTime(100);

std::string Lines(const std::vector<std::string>& texts)
{
    std::string lines;
    for (const std::string& text : texts)
    {
        lines += (lines.empty() ? "" : "\n") + text;
    }
    return lines;
}

} // namespace

ScriptRunner::ScriptRunner(Viewer& viewer, Script script) : m_viewer(viewer), m_script(std::move(script))
{
}

double ScriptRunner::Timeout() const
{
    if (!m_steps.empty())
    {
        return 0.0;
    }
    if (m_awaited)
    {
        return LoadingPoll;
    }
    if (m_isWaiting)
    {
        return m_viewer.IsAtRest() ? 0.0 : LoadingPoll;
    }
    const double paused = std::chrono::duration<double>(m_pausedUntil - Clock::now()).count();
    if (paused > 0.0)
    {
        return paused;
    }
    return m_next < m_script.actions.size() ? 0.0 : -1.0;
}

void ScriptRunner::Step()
{
    if (!m_steps.empty())
    {
        const std::function<void()> step = std::move(m_steps.front());
        m_steps.pop_front();
        step();
        return;
    }
    if (m_awaited)
    {
        Await();
        return;
    }
    if (m_isWaiting && !m_viewer.IsAtRest())
    {
        return;
    }
    m_isWaiting = false;
    if (Clock::now() < m_pausedUntil || m_next == m_script.actions.size())
    {
        return;
    }
    Begin(m_script.actions[m_next++]);
}

void ScriptRunner::Fail(const ScriptAction& action, const std::string& reason) const
{
    throw Failure("line " + std::to_string(action.line) + ": " + action.name + ": " + reason);
}

double ScriptRunner::NumberIn(const ScriptAction& action, double least, double most) const
{
    double number = 0.0;
    const std::string& text = action.words[0];
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    // Written so that what is not a number fails.
    if (result.ec != std::errc() || result.ptr != end || !(number >= least && number <= most))
    {
        std::ostringstream bounds;
        bounds << least << " to " << most;
        Fail(action, "'" + text + "' is no number from " + bounds.str());
    }
    return number;
}

void ScriptRunner::Begin(const ScriptAction& action)
{
    if (BeginPointer(action))
    {
        // What was done to a panel is done by its next frame.
        Then([] {});
        return;
    }
    if (BeginModel(action) || BeginPicture(action) || BeginWords(action))
    {
        return;
    }
    if (action.name == "wait")
    {
        m_isWaiting = true;
    }
    else if (action.name == "try")
    {
        Try(action);
    }
    else if (action.name == "pause")
    {
        const double seconds = NumberIn(action, 0.0, 3600.0);
        m_pausedUntil = Clock::now() + std::chrono::microseconds(static_cast<long long>(seconds * 1e6));
    }
    else if (action.name == "copy")
    {
        std::error_code trouble;
        std::filesystem::copy_file(action.words[0], action.words[1], std::filesystem::copy_options::overwrite_existing,
                                   trouble);
        if (trouble)
        {
            Fail(action, trouble.message());
        }
    }
    else if (action.name == "quit")
    {
        m_viewer.Close();
    }
}

void ScriptRunner::Try(const ScriptAction& action)
{
    Script script;
    std::string error;
    if (!Script::Parse(action.words[0], script, error))
    {
        Fail(action, error);
    }
    try
    {
        for (const ScriptAction& tried : script.actions)
        {
            Begin(tried);
        }
    }
    catch (const Failure&)
    {
        // What was begun is not gone on with.
        m_steps.clear();
    }
}

bool ScriptRunner::BeginWords(const ScriptAction& action)
{
    if (action.name == "print")
    {
        std::cout << Print(action) << '\n' << std::flush;
    }
    else if (action.name == "expect")
    {
        const std::string told = Print(action);
        if (told.find(action.words[1]) == std::string::npos)
        {
            Fail(action, "'" + action.words[1] + "' is not in '" + told + "'");
        }
    }
    else if (action.name == "await")
    {
        m_awaited = &action;
        m_awaitedUntil = Clock::now() + AwaitTime;
    }
    else
    {
        return false;
    }
    return true;
}

void ScriptRunner::Await()
{
    const std::string told = Print(*m_awaited);
    if (told.find(m_awaited->words[1]) != std::string::npos)
    {
        m_awaited = nullptr;
    }
    else if (Clock::now() > m_awaitedUntil)
    {
        Fail(*m_awaited, "'" + m_awaited->words[1] + "' is still not in '" + told + "'");
    }
}

bool ScriptRunner::BeginModel(const ScriptAction& action)
{
    Desk& desk = m_viewer.GetDesk();
    if (action.name == "open")
    {
        m_viewer.Open(action.words[0]);
        m_isWaiting = true;
    }
    else if (action.name == "begin-open")
    {
        m_viewer.Open(action.words[0]);
    }
    else if (action.name == "add")
    {
        m_viewer.Open(action.words[0], Desk::Opening::Beside);
        m_isWaiting = true;
    }
    else if (action.name == "take-away")
    {
        if (!desk.TakeAway(action.words[0]))
        {
            Fail(action, "'" + action.words[0] + "' is the top of no file of several");
        }
    }
    else if (action.name == "drop" || action.name == "shift-drop" || action.name == "drop-two")
    {
        InputEvent event;
        event.kind = InputEvent::Kind::Dropped;
        event.modifiers = action.name == "shift-drop" ? ModifierShift : ModifierNone;
        event.files = action.words;
        m_viewer.GetWindow().Push(event);
    }
    else if (action.name == "look" || action.name == "set")
    {
        Set(action);
    }
    else if (action.name == "view")
    {
        Host::NamedView view{};
        if (!Host::ViewFit::ParseView(action.words[0], view))
        {
            Fail(action, "'" + action.words[0] + "' is none of iso, front, back, left, right, top, bottom");
        }
        desk.TurnTo(view);
    }
    else if (action.name == "select")
    {
        if (!desk.GetModel() || !desk.GetModel()->FindNode(action.words[0]))
        {
            Fail(action, "there is no node '" + action.words[0] + "'");
        }
        desk.Select({action.words[0]});
    }
    else if (action.name == "save-view")
    {
        m_viewer.SaveView(action.words[0]);
    }
    else if (action.name == "recall-view")
    {
        m_viewer.RecallView(action.words[0]);
    }
    else
    {
        return false;
    }
    return true;
}

void ScriptRunner::Set(const ScriptAction& action)
{
    Desk& desk = m_viewer.GetDesk();
    const bool isLook = action.name == "look";
    const std::string field = isLook ? "look" : action.words[0];
    std::string error;
    try
    {
        nlohmann::json json = nlohmann::json::parse(desk.GetSettings().ToJSON());
        std::string pointer = "/" + field;
        std::replace(pointer.begin(), pointer.end(), '.', '/');
        json[nlohmann::json::json_pointer(pointer)] =
            isLook ? nlohmann::json(action.words[0]) : nlohmann::json::parse(action.words[1]);
        const auto settings = Host::PresentationSettings::FromJSON(json.dump(), error);
        if (settings && desk.Apply(*settings))
        {
            return;
        }
        error = settings ? desk.GetMessage().text : error;
    }
    catch (const nlohmann::json::exception&)
    {
        error = "there is no such field, or its value is no JSON";
    }
    Fail(action, error);
}

void ScriptRunner::ResizeOften(int frames)
{
    int width = 0;
    int height = 0;
    m_viewer.GetWindow().GetSize(width, height);
    for (int i = 1; i <= frames; ++i)
    {
        // Larger and smaller by turns; the last one is that of before.
        const int other = i == frames ? 0 : (i % 2 == 0 ? -1 : 1) * (i * 37 % 150);
        Then([this, width, height, other] { m_viewer.GetWindow().SetSize(width + other, height - other / 2); });
    }
    Then([this]
         {
             m_pausedUntil = Clock::now() + ResizeTime;
             m_isWaiting = true;
         });
}

bool ScriptRunner::BeginPicture(const ScriptAction& action)
{
    if (action.name == "resize")
    {
        int width = 0;
        int height = 0;
        if (!ParseSize(action.words[0], width, height))
        {
            Fail(action, "'" + action.words[0] + "' is no size WxH");
        }
        m_viewer.GetWindow().SetSize(width, height);
        m_pausedUntil = Clock::now() + ResizeTime;
        m_isWaiting = true;
    }
    else if (action.name == "resize-often")
    {
        ResizeOften(static_cast<int>(NumberIn(action, 1.0, 1000.0)));
    }
    else if (action.name == "scale")
    {
        m_viewer.GetWindow().SetScale(static_cast<float>(NumberIn(action, 0.5, 8.0)));
        m_isWaiting = true;
    }
    else if (action.name == "minimise" || action.name == "restore")
    {
        m_viewer.GetWindow().Minimise(action.name == "minimise");
    }
    else if (action.name == "picture-of")
    {
        int width = 0;
        int height = 0;
        if (!ParseSize(action.words[0], width, height))
        {
            Fail(action, "'" + action.words[0] + "' is no size WxH");
        }
        m_viewer.TakePicture(action.words[1], width, height);
    }
    else if (action.name == "screenshot")
    {
        m_viewer.TakeScreenshot(action.words[0]);
        m_isWaiting = true;
    }
    else if (action.name == "picture")
    {
        m_viewer.TakePicture(action.words[0]);
    }
    else if (action.name == "lose-context")
    {
        m_viewer.LoseContext();
    }
    else
    {
        return false;
    }
    return true;
}

std::string ScriptRunner::Print(const ScriptAction& action) const
{
    Desk& desk = m_viewer.GetDesk();
    const std::string& what = action.words[0];
    if (what == "selection")
    {
        std::string text;
        for (const std::string& path : desk.GetSelection())
        {
            const auto thing = desk.Describe(path);
            text += (text.empty() ? "" : "\n") + path + (thing ? " (" + thing->material + ")" : std::string());
        }
        return text;
    }
    if (what == "thing")
    {
        const auto thing = desk.GetSelection().empty() ? std::nullopt : desk.Describe(desk.GetSelection().back());
        return thing ? thing->name + '\n' + thing->path + '\n' + thing->Text(desk.GetModel()->GetUnit()) : std::string();
    }
    if (what == "clipboard")
    {
        return m_viewer.GetWindow().GetClipboard();
    }
    if (what == "opening")
    {
        return desk.IsOpening() ? desk.GetOpeningPath() : std::string();
    }
    if (what == "recent")
    {
        return Lines(m_viewer.GetState().recent);
    }
    if (what == "keys")
    {
        std::vector<std::string> keys;
        for (const Action& key : ListActions())
        {
            keys.emplace_back(key.key);
        }
        return Lines(keys);
    }
    if (what == "sleep")
    {
        // How long the program would sleep now if the script had ended.
        const double seconds = m_viewer.SleepSeconds(-1.0);
        return seconds < 0.0 ? "until something happens" : std::to_string(std::lround(seconds * 1000.0)) + " ms";
    }
    if (what == "command")
    {
        return m_viewer.CommandLine();
    }
    if (what == "settings")
    {
        return desk.GetSettings().ToJSON();
    }
    if (what == "measure")
    {
        return m_viewer.GetMeasure().Text();
    }
    if (what == "message")
    {
        return desk.GetMessage().text;
    }
    if (what == "model")
    {
        return desk.GetPath();
    }
    if (what == "models")
    {
        return Lines(desk.GetPaths());
    }
    if (what == "nodes")
    {
        return desk.GetModel() ? Lines(desk.GetModel()->ListNodes()) : std::string();
    }
    if (what == "labels")
    {
        return Lines(desk.GetLabels());
    }
    if (what == "statistics")
    {
        return m_viewer.Statistics();
    }
    Fail(action, "'" + what + "' is none of those that --help-script lists");
}

} // namespace OV::ViewerApp
