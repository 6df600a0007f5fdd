#pragma once

#include "apps/render/Options.h"
#include "apps/render/PickReport.h"
#include "apps/render/Stats.h"
#include "orvane_host/import/ImportResult.h"

#include <memory>
#include <vector>

namespace OV
{

class AppContext;

} // namespace OV

namespace OV::Host
{

class HeadlessContext;
class PresentationRenderer;
class Sheet;
class Watermark;

} // namespace OV::Host

namespace OV::Platform::Linux
{

class ESTextureLoader;

} // namespace OV::Platform::Linux

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
    void CheckFiles() const;
    void CheckOutput() const;
    void OpenContext();
    void ReadWatermark();
    void Load();
    void MakeFramebuffer();
    void SetLook();
    void SetEdit();
    void AddLines();
    void PlaceCamera();
    void SetFog();
    void AddSheet();
    void Draw();
    void DrawFrame(int frame);
    void Pick();
    void Count();
    void Write();

    Options m_options;
    Stats m_stats;
    PickReport m_pick;
    Host::ImportReport m_report;
    std::vector<Host::ImportedNode> m_nodes;
    std::vector<Host::ImportedMesh> m_meshes;
    // Whatever holds GL objects goes before the context does.
    std::unique_ptr<Host::HeadlessContext> m_gl;
    std::unique_ptr<Platform::Linux::ESTextureLoader> m_textures;
    std::unique_ptr<AppContext> m_app;
    std::unique_ptr<Host::PresentationRenderer> m_renderer;
    std::unique_ptr<Host::Watermark> m_watermark;
    std::unique_ptr<Host::Sheet> m_sheet;
};

} // namespace OV::RenderApp
