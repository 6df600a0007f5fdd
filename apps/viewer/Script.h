#pragma once

#include <string>
#include <vector>

namespace OV::ViewerApp
{

/// One line of a script: what is to be done, and its words.
struct ScriptAction
{
    std::string name;
    /// As many as the action takes; the last one may hold spaces.
    std::vector<std::string> words;
    int line = 0; ///< from 1
};

/// Actions in place of a person, one a line.
///
/// Lines that are empty or begin with # are passed over. Points are X,Y in points from the upper
/// left corner of the window.
struct Script
{
    std::vector<ScriptAction> actions;

    /// Reads a script.
    /// @param error on failure the line, what is wrong with it and what there is.
    /// @return false on failure.
    static bool Parse(const std::string& text, Script& script, std::string& error);

    /// One line an action, for the help.
    static std::string Help();
};

/// Reads "X,Y".
bool ParsePoint(const std::string& text, double& x, double& y);

} // namespace OV::ViewerApp
