#pragma once

#include "orvane_host/sheet/Notes.h"

#include <string>
#include <vector>

namespace CLI
{

class App;

} // namespace CLI

namespace OV::Host
{

class Presentation;

} // namespace OV::Host

namespace OV::RenderApp
{

/// What the command line asks for about nodes and places of the model.
struct NodeOptions
{
    std::vector<std::string> hidden; ///< paths
    std::string isolated;            ///< a path; empty for none
    std::vector<std::string> labels; ///< paths
    std::vector<Host::Dimension> dimensions;
};

/// The values as they were typed.
struct NodeTexts
{
    std::vector<std::string> hidden;
    std::string isolated;
    std::vector<std::string> labels;
    std::vector<std::string> distances;
    std::vector<std::string> angles;
};

void DefineNodeOptions(CLI::App& app, NodeTexts& texts);

/// Throws what CLI11 throws on wrong usage.
NodeOptions InterpretNodes(const NodeTexts& texts);

/// Does it all to what is presented. Throws Failure for a node that there isn't.
void ShowNodes(const NodeOptions& options, Host::Presentation& presentation, const std::string& model);

} // namespace OV::RenderApp
