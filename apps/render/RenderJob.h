#pragma once

#include "apps/render/Options.h"
#include "apps/render/PickReport.h"
#include "apps/render/Stats.h"

#include <memory>

namespace OV::Host
{

class HeadlessContext;
class Presentation;
class SunHoursMap;

} // namespace OV::Host

namespace OV::RenderApp
{

/// Turns one model file into one picture.
class RenderJob
{
public:
    explicit RenderJob(const Options& options);
    ~RenderJob();

    /// Does it all, from the checks to the file, if one is asked for. Throws Failure, with no
    /// file written.
    void Run();

    /// What was measured by Run.
    const Stats& GetStats() const { return m_stats; }

    /// What Run found at the pixel to pick.
    const PickReport& GetPick() const { return m_pick; }

private:
    bool IsDrawn() const;
    void OpenContext();
    void Load();
    void Present();
    void MakeFramebuffer();
    void Draw();
    void Pick();
    void Write();

    Options m_options;
    Stats m_stats;
    PickReport m_pick;
    // Whatever holds GL objects goes before the context does.
    std::unique_ptr<Host::HeadlessContext> m_gl;
    std::unique_ptr<Host::Presentation> m_presentation;
    std::unique_ptr<Host::SunHoursMap> m_map; ///< null without one
};

} // namespace OV::RenderApp
