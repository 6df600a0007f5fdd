#pragma once

#include "apps/render/Options.h"
#include "apps/render/PickReport.h"
#include "apps/render/Stats.h"

#include <cstddef>
#include <memory>
#include <string>

namespace OV::Host
{

class HeadlessContext;
struct ImportResult;
class PictureFile;
class Presentation;
class SunHoursMap;

} // namespace OV::Host

namespace OV::RenderApp
{

/// Turns model files into one picture.
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

    /// Whether Run wrote a picture that shows nothing of the model.
    bool IsBlank() const { return m_isBlank; }

    /// The tree of nodes, where it was asked for.
    const std::string& GetNodeList() const { return m_nodeList; }

    /// What Run found at the pixel to pick.
    const PickReport& GetPick() const { return m_pick; }

private:
    bool IsMeasured() const;
    void ListNodes();
    void SetScale();
    void PresentStudy();
    void Warn(const std::string& text) const;
    void OpenContext();
    void Load();
    Host::ImportResult Read(std::size_t index) const;
    void Present();
    void MakeFramebuffer();
    void Draw();
    void Pick();
    void Write();
    void WriteTo(Host::PictureFile& file);
    void TellBlank(const Host::PictureFacts& facts);

    Options m_options;
    Stats m_stats;
    PickReport m_pick;
    std::string m_nodeList;
    bool m_isBlank = false;
    // Whatever holds GL objects goes before the context does.
    std::unique_ptr<Host::HeadlessContext> m_gl;
    std::unique_ptr<Host::Presentation> m_presentation;
    std::unique_ptr<Host::SunHoursMap> m_map; ///< null without one
};

} // namespace OV::RenderApp
