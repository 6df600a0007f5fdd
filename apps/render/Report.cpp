#include "apps/render/Report.h"

#include "apps/common/Process.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstddef>
#include <iostream>

namespace OV::RenderApp
{

namespace
{

/// So many warnings of the import tell enough.
constexpr std::size_t MostWarnings = 5;

} // namespace

void PrintLine(const std::string& text)
{
    Apps::PrintLine("orvane-render", text);
}

void PrintWarnings(const std::vector<std::string>& warnings, const std::string& file)
{
    for (std::size_t i = 0; i < std::min(warnings.size(), MostWarnings); ++i)
    {
        PrintLine("warning: " + file + ": " + warnings[i]);
    }
    if (warnings.size() > MostWarnings)
    {
        PrintLine("warning: " + file + ": and " + std::to_string(warnings.size() - MostWarnings) + " more");
    }
}

std::string ToText(const nlohmann::ordered_json& json)
{
    return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

bool FlushOutput()
{
    std::cout << std::flush;
    if (std::cout)
    {
        return true;
    }
    PrintLine("standard output: it cannot be written; keep its reader alive or send it to a file");
    return false;
}

} // namespace OV::RenderApp
