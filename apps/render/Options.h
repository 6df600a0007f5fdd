#pragma once

#include "apps/render/ModelOptions.h"
#include "apps/render/NodeOptions.h"
#include "orvane_host/present/PictureOptions.h"
#include "orvane_host/present/PresentationSettings.h"

#include <optional>
#include <string>
#include <vector>

namespace OV::RenderApp
{

/// A pixel of the picture, from its upper left corner.
struct PickedPixel
{
    int x = 0;
    int y = 0;
};

/// How the tree of nodes is told.
enum class NodeListing
{
    None,
    Text,
    JSON
};

/// A study of a day's sun.
struct SunStudyRequest
{
    std::string times; ///< as Host::SunStudyTimes reads them
    std::string hours; ///< "ground" or a node for a map of them; empty for a sheet of pictures
};

/// What the command line asks for.
struct Options
{
    /// What people are told it is called.
    std::string model;
    std::vector<std::string> besides; ///< further models in the same scene
    std::optional<PipedModel> piped;
    /// "-" for standard output; may be empty where something else is asked for.
    std::string output;
    int width = 1280;
    int height = 720;
    Host::PresentationSettings settings;
    NodeOptions nodes;

    /// Size and progress are not set here.
    Host::PictureOptions picture;
    /// Lengths in the world for one on paper.
    std::optional<double> scale;

    /// The view has room for all of the model, also for what planes cut away.
    bool fitsAll = false;
    /// Faces in one plane are left to the depths that rounding gives them.
    bool keepsCoplanar = false;
    bool quiet = false;
    bool failIfEmpty = false;
    NodeListing listing = NodeListing::None;
    std::optional<SunStudyRequest> study;
    std::optional<PickedPixel> pick;
    bool stats = false;
    int frames = 1;
};

/// What to do after the command line was read.
enum class Action
{
    Render,
    ListFormats,
    Leave ///< help or version was shown, or the usage was wrong
};

struct Command
{
    Action action = Action::Leave;
    int exitCode = 0; ///< for Action::Leave
    Options options;
};

/// Reads the command line. Help and version go to standard output, one line on wrong usage to
/// standard error.
Command ParseCommandLine(int argc, const char* const* argv);

/// The long names of all options, with their dashes, in the order of the help.
std::vector<std::string> ListOptions();

} // namespace OV::RenderApp
