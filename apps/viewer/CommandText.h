#pragma once

#include "orvane_host/present/PresentationSettings.h"
#include "orvane_host/sheet/Notes.h"

#include <string>
#include <vector>

namespace OV::ViewerApp
{

/// The arguments of orvane-render, without the program's own name, that draw a picture.
struct RenderCommand
{
    std::vector<std::string> arguments;
    /// What the program has no option for, one sentence each.
    std::vector<std::string> leftOut;

    /// One line that a shell understands.
    std::string ToShell() const;
};

/// What of a picture is no setting.
struct Shown
{
    std::vector<std::string> besides; ///< further models
    std::vector<std::string> hidden;  ///< paths
    std::string isolated;             ///< a path; empty for none
    std::vector<std::string> labels;  ///< paths
    std::vector<Host::Dimension> dimensions;
    float pixelRatio = 1.0f;
};

/// @param output the picture to be written.
RenderCommand MakeRenderCommand(const Host::PresentationSettings& settings, const std::string& model, int width,
                                int height, const std::string& output, const Shown& shown = Shown());

} // namespace OV::ViewerApp
