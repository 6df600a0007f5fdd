#include "orvane_host/present/PresentationSettings.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

// Ends the process unless a refusal comes with one printable line, and what was taken is without
// trouble and comes back the same through its own text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using OV::Host::PresentationSettings;
    const std::string text(data, data + size);
    std::string error;
    const auto settings = PresentationSettings::FromJSON(text, error);
    if (!settings)
    {
        const bool isLine =
            std::all_of(error.begin(), error.end(), [](char c) { return c >= ' ' && c <= '~'; });
        if (error.empty() || !isLine)
        {
            std::abort();
        }
        return 0;
    }
    const std::string written = settings->ToJSON();
    const auto again = PresentationSettings::FromJSON(written, error);
    if (!error.empty() || !settings->Trouble().empty() || !again || *again != *settings ||
        again->ToJSON() != written)
    {
        std::abort();
    }
    return 0;
}
