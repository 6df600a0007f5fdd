#include "apps/common/FlagWords.h"

#include <CLI/CLI.hpp>

#include <cstddef>

namespace OV::Apps
{

void RefuseFlagValues(const CLI::App& app, const std::vector<std::string>& words)
{
    // What CLI11 has for this lets "true" and an empty word through, and calls the rest overrides.
    for (std::size_t i = 0; i < words.size() && words[i] != "--"; ++i)
    {
        const std::string& word = words[i];
        const std::size_t sign = word.find('=');
        const CLI::Option* option = word[0] == '-' ? app.get_option_no_throw(word.substr(0, sign)) : nullptr;
        if (option == nullptr)
        {
            continue;
        }
        const bool isFlag = option->get_items_expected_max() == 0;
        if (isFlag && sign != std::string::npos)
        {
            throw CLI::ValidationError(word.substr(0, sign), "it takes no value; leave out '" + word.substr(sign) + "'");
        }
        // The word behind an option is its value, whatever it looks like.
        i += !isFlag && sign == std::string::npos ? 1 : 0;
    }
}

} // namespace OV::Apps
