#pragma once

#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace OV::Apps
{

/// Refuses `--flag=word`, which CLI11 reads as a number or drops. The words are without the program's name, as they
/// were typed. Throws a CLI::ValidationError that names the flag.
void RefuseFlagValues(const CLI::App& app, const std::vector<std::string>& words);

} // namespace OV::Apps
