#include "apps/viewer/ScriptRunner.h"

#include "apps/viewer/Viewer.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <system_error>

namespace OV::ViewerApp
{

namespace
{

/// Places between the ends of a drag, as a hand makes some.
constexpr int DragSteps = 4;

/// Seconds from one action to the next for who looks at the time of events: two clicks are two,
/// however fast a script is, and a double click is one, however slow.
constexpr double ActionSeconds = 10.0;

InputEvent PointerEvent(InputEvent::Kind kind, double x, double y, int button, unsigned modifiers)
{
    InputEvent event;
    event.kind = kind;
    event.x = x;
    event.y = y;
    event.button = static_cast<Button>(button);
    event.modifiers = modifiers;
    return event;
}

/// Reads UTF-8; what is none stands for itself.
std::vector<unsigned> CodepointsOf(const std::string& text)
{
    std::vector<unsigned> points;
    for (std::size_t i = 0; i < text.size();)
    {
        const auto lead = static_cast<unsigned char>(text[i]);
        const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
        unsigned point = length == 1 ? lead : lead & (0xFFu >> (length + 1));
        for (std::size_t k = 1; k < length && i + k < text.size(); ++k)
        {
            point = (point << 6) | (static_cast<unsigned char>(text[i + k]) & 0x3Fu);
        }
        points.push_back(point);
        i += length;
    }
    return points;
}

} // namespace

bool ScriptRunner::BeginPointer(const ScriptAction& action)
{
    static constexpr struct
    {
        const char* name;
        int button;
        unsigned modifiers;
        int times;
    } clicks[] = {{"click", 0, ModifierNone, 1},
                  {"double-click", 0, ModifierNone, 2},
                  {"shift-click", 0, ModifierShift, 1},
                  {"right-click", 2, ModifierNone, 1}},
      drags[] = {{"drag", 0, ModifierNone, 1},
                 {"middle-drag", 1, ModifierNone, 1},
                 {"right-drag", 2, ModifierNone, 1},
                 {"shift-drag", 0, ModifierShift, 1},
                 {"ctrl-drag", 0, ModifierControl, 1}};
    for (const auto& drag : drags)
    {
        if (action.name == drag.name)
        {
            Drag(action, drag.button, drag.modifiers);
            return true;
        }
    }
    double x = 0.0;
    double y = 0.0;
    const bool hasPoint = !action.words.empty() && ParsePoint(action.words[0], x, y);
    for (const auto& click : clicks)
    {
        if (action.name == click.name && hasPoint)
        {
            Click(x, y, click.button, click.modifiers, click.times);
            return true;
        }
        if (action.name == click.name)
        {
            Fail(action, "'" + action.words[0] + "' is no point X,Y");
        }
    }
    if (action.name == "tap" && hasPoint)
    {
        Tap(x, y);
        return true;
    }
    if (action.name == "move" && hasPoint)
    {
        m_viewer.GetWindow().Push(PointerEvent(InputEvent::Kind::PointerMoved, x, y, 0, ModifierNone));
        return true;
    }
    if (action.name == "scroll" && hasPoint)
    {
        InputEvent event = PointerEvent(InputEvent::Kind::Scrolled, x, y, 0, ModifierNone);
        const std::string& text = action.words[1];
        if (std::from_chars(text.data(), text.data() + text.size(), event.dy).ec != std::errc()
            || !std::isfinite(event.dy))
        {
            Fail(action, "'" + text + "' is no number of steps");
        }
        m_time += ActionSeconds;
        event.time = m_time;
        m_viewer.GetWindow().Push(PointerEvent(InputEvent::Kind::PointerMoved, x, y, 0, ModifierNone));
        Then([this, event] { m_viewer.GetWindow().Push(event); });
        return true;
    }
    const bool isSwipe = action.name == "swipe" || action.name == "shift-swipe" || action.name == "ctrl-swipe";
    if (isSwipe && hasPoint)
    {
        const unsigned held = action.name[0] == 'c'   ? ModifierControl
                              : action.name[1] == 'h' ? ModifierShift
                                                      : ModifierNone;
        InputEvent event = PointerEvent(InputEvent::Kind::Scrolled, x, y, 0, held);
        if (!ParsePoint(action.words[1], event.dx, event.dy))
        {
            Fail(action, "'" + action.words[1] + "' is no pair of steps DX,DY");
        }
        // Those that follow each other are one movement, unlike turns of a wheel.
        event.time = m_time;
        m_viewer.GetWindow().Push(PointerEvent(InputEvent::Kind::PointerMoved, x, y, 0, ModifierNone));
        Then([this, event] { m_viewer.GetWindow().Push(event); });
        return true;
    }
    if (action.name == "tap" || action.name == "move" || action.name == "scroll" || isSwipe)
    {
        Fail(action, "'" + action.words[0] + "' is no point X,Y");
    }
    if (action.name == "key")
    {
        Press(action);
        return true;
    }
    if (action.name == "type")
    {
        Type(action.words[0]);
        return true;
    }
    if (action.name == "hammer")
    {
        Hammer(action);
        return true;
    }
    return false;
}

void ScriptRunner::Click(double x, double y, int button, unsigned modifiers, int times)
{
    m_time += ActionSeconds;
    const auto push = [this, x, y, button, modifiers](InputEvent::Kind kind)
    {
        InputEvent event = PointerEvent(kind, x, y, button, modifiers);
        event.time = m_time;
        Then([this, event] { m_viewer.GetWindow().Push(event); });
    };
    push(InputEvent::Kind::PointerMoved);
    // A panel learns in a frame that the pointer is over it.
    push(InputEvent::Kind::PointerMoved);
    for (int i = 0; i < times; ++i)
    {
        push(InputEvent::Kind::ButtonDown);
        push(InputEvent::Kind::ButtonUp);
    }
}

void ScriptRunner::Tap(double x, double y)
{
    m_time += ActionSeconds;
    for (const auto kind : {InputEvent::Kind::PointerMoved, InputEvent::Kind::ButtonDown, InputEvent::Kind::ButtonUp})
    {
        InputEvent event = PointerEvent(kind, x, y, 0, ModifierNone);
        event.time = m_time;
        m_viewer.GetWindow().Push(event);
    }
}

void ScriptRunner::Drag(const ScriptAction& action, int button, unsigned modifiers)
{
    double fromX = 0.0;
    double fromY = 0.0;
    double toX = 0.0;
    double toY = 0.0;
    if (!ParsePoint(action.words[0], fromX, fromY) || !ParsePoint(action.words[1], toX, toY))
    {
        Fail(action, "a drag takes two points X,Y X,Y");
    }
    const auto push = [this, button, modifiers](InputEvent::Kind kind, double x, double y)
    { Then([=] { m_viewer.GetWindow().Push(PointerEvent(kind, x, y, button, modifiers)); }); };
    push(InputEvent::Kind::PointerMoved, fromX, fromY);
    push(InputEvent::Kind::PointerMoved, fromX, fromY);
    push(InputEvent::Kind::ButtonDown, fromX, fromY);
    for (int i = 1; i <= DragSteps; ++i)
    {
        const double share = static_cast<double>(i) / DragSteps;
        push(InputEvent::Kind::PointerMoved, fromX + (toX - fromX) * share, fromY + (toY - fromY) * share);
    }
    push(InputEvent::Kind::ButtonUp, toX, toY);
}

void ScriptRunner::Press(const ScriptAction& action)
{
    InputEvent event;
    event.kind = InputEvent::Kind::KeyDown;
    if (!ParseKey(action.words[0], event.key, event.modifiers))
    {
        Fail(action, "there is no key '" + action.words[0] + "'");
    }
    m_viewer.GetWindow().Push(event);
    Then([this, event]() mutable
         {
             event.kind = InputEvent::Kind::KeyUp;
             event.modifiers = ModifierNone;
             m_viewer.GetWindow().Push(event);
         });
}

void ScriptRunner::Hammer(const ScriptAction& action)
{
    InputEvent event;
    event.kind = InputEvent::Kind::KeyDown;
    if (!ParseKey(action.words[0], event.key, event.modifiers))
    {
        Fail(action, "there is no key '" + action.words[0] + "'");
    }
    const auto strike = [this](InputEvent key)
    {
        m_viewer.GetWindow().Push(key);
        if (key.codepoint != 0)
        {
            InputEvent typed = key;
            typed.kind = InputEvent::Kind::Typed;
            m_viewer.GetWindow().Push(typed);
        }
        key.kind = InputEvent::Kind::KeyUp;
        key.modifiers = ModifierNone;
        m_viewer.GetWindow().Push(key);
    };
    strike(event);
    for (const unsigned point : CodepointsOf(action.words[1]))
    {
        InputEvent letter;
        letter.kind = InputEvent::Kind::KeyDown;
        letter.key = point < 128 ? std::toupper(static_cast<int>(point)) : KeyNone;
        letter.codepoint = point;
        strike(letter);
    }
}

void ScriptRunner::Type(const std::string& text)
{
    for (const unsigned point : CodepointsOf(text))
    {
        Then([this, point]
             {
                 InputEvent event;
                 event.kind = InputEvent::Kind::Typed;
                 event.codepoint = point;
                 m_viewer.GetWindow().Push(event);
             });
    }
}

} // namespace OV::ViewerApp
