#pragma once

#include "orvane_host/present/PresentationSettings.h"

#include <string>
#include <vector>

namespace OV::ViewerApp
{

/// A view that a person gave a name.
struct SavedView
{
    std::string name;
    std::string model; ///< path of the file that it is of
    /// Of these the view and the section count.
    Host::PresentationSettings settings;
};

/// What the program keeps from one time to the next.
struct State
{
    static constexpr std::size_t MostRecent = 10;

    Host::PresentationSettings settings;
    std::vector<SavedView> views;
    std::vector<std::string> recent; ///< paths, the last one first

    /// Those of the first time: a model as it is drawn to be looked at, with its edges and dark corners.
    static Host::PresentationSettings FirstSettings();

    /// Beside the user's configuration.
    static std::string UsualPath();

    /// Reads a file. One that is damaged is set aside under another name, and the state is that of
    /// the first time.
    /// @param word one sentence on what was done with a damaged file; empty where all is well.
    static State Read(const std::string& path, std::string& word);

    /// Writes the file whole or not at all, and makes the folder.
    /// @return false, with one line, where it can't be written.
    bool Write(const std::string& path, std::string& error) const;

    void AddRecent(const std::string& path);
    void SetView(const std::string& name, const std::string& model, const Host::PresentationSettings& settings);
    const SavedView* FindView(const std::string& name, const std::string& model) const;
    void RemoveView(const std::string& name, const std::string& model);
};

} // namespace OV::ViewerApp
