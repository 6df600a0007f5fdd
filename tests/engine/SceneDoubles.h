#pragma once

#include "orvane/engine/CoreContext.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/scene/Scene.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace OV::Test
{

/// What happened, in order.
using Log = std::vector<std::string>;

/// A scene or layer that notes its updates, its suspends and its end.
template <class Base>
class Logged : public Base
{
public:
    template <class... Arguments>
    Logged(std::string name, Log& log, Arguments... arguments)
        : Base(arguments...)
        , m_name(std::move(name))
        , m_log(log)
    {
    }

    ~Logged() override { m_log.push_back("~" + m_name); }

    void UpdateGraph(float width, float height) override
    {
        m_log.push_back("Update " + m_name);
        Base::UpdateGraph(width, height);
        if (afterUpdate)
        {
            afterUpdate();
        }
    }

    void Suspend() override
    {
        m_log.push_back("Suspend " + m_name);
        Base::Suspend();
    }

    void Resume() override
    {
        m_log.push_back("Resume " + m_name);
        Base::Resume();
    }

    /// Runs at the end of each update.
    std::function<void()> afterUpdate;

private:
    std::string m_name;
    Log& m_log;
};

using LoggedScene = Logged<Scene>;
using LoggedLayer = Logged<Scene2D>;

/// Reaches what a context keeps for its subclasses.
struct ContextParts : CoreContext
{
    static std::unique_ptr<Scene>& SceneOf(CoreContext& context) { return context.*&ContextParts::scene; }
    static std::unique_ptr<Scene2D>& BackgroundOf(CoreContext& context)
    {
        return context.*&ContextParts::background2D;
    }
    static std::unique_ptr<Scene2D>& ForegroundOf(CoreContext& context)
    {
        return context.*&ContextParts::foreground2D;
    }
};

/// Puts noting doubles in all three places of a context.
struct LoggedScenes
{
    LoggedScenes(CoreContext& context, Log& log)
        : scene(new LoggedScene("scene", log))
        , background(new LoggedLayer("background", log, &context))
        , foreground(new LoggedLayer("foreground", log, &context))
    {
        context.SetScene(std::unique_ptr<Scene>(scene));
        ContextParts::BackgroundOf(context).reset(background);
        ContextParts::ForegroundOf(context).reset(foreground);
    }

    LoggedScene* scene;
    LoggedLayer* background;
    LoggedLayer* foreground;
};

}  // namespace OV::Test
