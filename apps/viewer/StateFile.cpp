#include "apps/viewer/StateFile.h"

#include <nlohmann/json.hpp>

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace OV::ViewerApp
{

namespace
{

namespace fs = std::filesystem;

constexpr std::size_t MostBytes = 16u << 20;

Host::PresentationSettings SettingsOf(const nlohmann::json& json)
{
    std::string error;
    const auto settings = Host::PresentationSettings::FromJSON(json.dump(), error);
    if (!settings)
    {
        throw std::runtime_error(error);
    }
    return *settings;
}

/// Throws where it isn't what Write writes.
State Parse(const std::string& text)
{
    const nlohmann::json json = nlohmann::json::parse(text);
    State state;
    state.settings = SettingsOf(json.at("settings"));
    for (const nlohmann::json& view : json.at("views"))
    {
        state.views.push_back({view.at("name").get<std::string>(), view.at("model").get<std::string>(),
                               SettingsOf(view.at("settings"))});
    }
    state.recent = json.at("recent").get<std::vector<std::string>>();
    state.recent.resize(std::min(state.recent.size(), State::MostRecent));
    return state;
}

/// Paths may hold bytes that are no text; they are not kept.
bool IsText(const std::string& text)
{
    try
    {
        nlohmann::json(text).dump();
        return true;
    }
    catch (const nlohmann::json::exception&)
    {
        return false;
    }
}

} // namespace

std::string State::UsualPath()
{
    const char* const configuration = std::getenv("XDG_CONFIG_HOME");
    if (configuration && configuration[0] == '/')
    {
        return std::string(configuration) + "/orvane/view.json";
    }
    const char* const home = std::getenv("HOME");
    return std::string(home ? home : "") + "/.config/orvane/view.json";
}

Host::PresentationSettings State::FirstSettings()
{
    Host::PresentationSettings settings;
    settings.lines = Host::LineSettings();
    settings.occlusion = true;
    return settings;
}

State State::Read(const std::string& path, std::string& word)
{
    std::error_code ignored;
    State first;
    first.settings = FirstSettings();
    if (!fs::exists(path, ignored))
    {
        return first;
    }
    try
    {
        if (fs::file_size(path) > MostBytes)
        {
            throw std::runtime_error("it is too large");
        }
        std::ifstream stream(path, std::ios::binary);
        std::ostringstream text;
        text << stream.rdbuf();
        return Parse(text.str());
    }
    catch (const std::exception&)
    {
        const std::string aside = path + ".damaged";
        fs::rename(path, aside, ignored);
        word = "What was kept from the last time is damaged; it was set aside as " + aside;
        return first;
    }
}

bool State::Write(const std::string& path, std::string& error) const
{
    nlohmann::ordered_json json;
    json["settings"] = nlohmann::ordered_json::parse(settings.ToJSON());
    json["views"] = nlohmann::ordered_json::array();
    for (const SavedView& view : views)
    {
        if (IsText(view.name) && IsText(view.model))
        {
            json["views"].push_back({{"name", view.name},
                                     {"model", view.model},
                                     {"settings", nlohmann::ordered_json::parse(view.settings.ToJSON())}});
        }
    }
    json["recent"] = nlohmann::ordered_json::array();
    for (const std::string& file : recent)
    {
        if (IsText(file))
        {
            json["recent"].push_back(file);
        }
    }
    std::error_code trouble;
    fs::create_directories(fs::path(path).parent_path(), trouble);
    const std::string beside = path + "." + std::to_string(::getpid());
    {
        std::ofstream stream(beside, std::ios::binary);
        stream << json.dump(2) << '\n' << std::flush;
        if (!stream)
        {
            error = path + ": settings can't be kept there; make the folder writable or start with --forget";
            return false;
        }
    }
    fs::rename(beside, path, trouble);
    if (trouble)
    {
        fs::remove(beside, trouble);
        error = path + ": settings can't be kept there; make the folder writable or start with --forget";
        return false;
    }
    return true;
}

void State::AddRecent(const std::string& path)
{
    recent.erase(std::remove(recent.begin(), recent.end(), path), recent.end());
    recent.insert(recent.begin(), path);
    recent.resize(std::min(recent.size(), MostRecent));
}

void State::SetView(const std::string& name, const std::string& model, const Host::PresentationSettings& settings)
{
    RemoveView(name, model);
    views.push_back({name, model, settings});
}

const SavedView* State::FindView(const std::string& name, const std::string& model) const
{
    const auto found = std::find_if(views.begin(), views.end(), [&](const SavedView& view)
                                    { return view.name == name && view.model == model; });
    return found == views.end() ? nullptr : &*found;
}

void State::RemoveView(const std::string& name, const std::string& model)
{
    views.erase(std::remove_if(views.begin(), views.end(), [&](const SavedView& view)
                               { return view.name == name && view.model == model; }),
                views.end());
}

} // namespace OV::ViewerApp
