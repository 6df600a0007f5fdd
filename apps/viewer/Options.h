#pragma once

#include <string>
#include <vector>

namespace OV::ViewerApp
{

/// What the command line asks for.
struct Options
{
    /// Files to stand beside each other; may be none.
    std::vector<std::string> models;
    /// Of the window, in points.
    int width = 1280;
    int height = 800;
    /// Pixels per point; 0 for those of the screen.
    float scale = 0.0f;
    /// JSON file of settings; empty for those of the last time.
    std::string settings;
    /// File of actions in place of a person; empty for none.
    std::string script;
    /// Opens a model again when its file changes.
    bool watch = false;
    /// Neither reads nor writes the file beside the user's configuration.
    bool forget = false;
};

/// What to do after the command line was read.
struct Command
{
    bool run = false;
    int exitCode = 0; ///< where nothing is run
    Options options;
};

/// Reads the command line. Help and version go to standard output, one line on wrong usage to
/// standard error.
Command ParseCommandLine(int argc, const char* const* argv);

/// Reads "WxH"; false, with nothing changed, for any other text or what no window is as large as.
bool ParseSize(const std::string& text, int& width, int& height);

} // namespace OV::ViewerApp
