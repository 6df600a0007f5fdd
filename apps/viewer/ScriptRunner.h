#pragma once

#include "apps/viewer/Script.h"

#include <chrono>
#include <deque>
#include <functional>

namespace OV::ViewerApp
{

class Viewer;

/// Does what a script says, in place of a person: what a pointer and keys do goes the same way as
/// if a person had done it, an event a frame.
///
/// ScriptPointer.cpp has what is done with a pointer and keys.
class ScriptRunner
{
public:
    ScriptRunner(Viewer& viewer, Script script);

    /// Goes on by one step. Throws Failure where an action can't be done.
    void Step();

    /// Seconds until there is something to do again; below 0 for never.
    double Timeout() const;

private:
    using Clock = std::chrono::steady_clock;

    void Begin(const ScriptAction& action);
    bool BeginPointer(const ScriptAction& action);
    bool BeginModel(const ScriptAction& action);
    bool BeginPicture(const ScriptAction& action);
    void Then(std::function<void()> step) { m_steps.push_back(std::move(step)); }
    void Click(double x, double y, int button, unsigned modifiers, int times);
    void Tap(double x, double y);
    void Drag(const ScriptAction& action, int button, unsigned modifiers);
    void Press(const ScriptAction& action);
    void Hammer(const ScriptAction& action);
    void Type(const std::string& text);
    void Set(const ScriptAction& action);
    void ResizeOften(int frames);
    bool BeginWords(const ScriptAction& action);
    void Await();
    void Try(const ScriptAction& action);
    std::string Print(const ScriptAction& action) const;
    /// The first word as a number.
    double NumberIn(const ScriptAction& action, double least, double most) const;
    [[noreturn]] void Fail(const ScriptAction& action, const std::string& reason) const;

    Viewer& m_viewer;
    Script m_script;
    std::size_t m_next = 0;
    std::deque<std::function<void()>> m_steps;
    bool m_isWaiting = false;
    const ScriptAction* m_awaited = nullptr; ///< null while none is
    Clock::time_point m_awaitedUntil;
    Clock::time_point m_pausedUntil;
    double m_time = 0.0; ///< of events
};

} // namespace OV::ViewerApp
