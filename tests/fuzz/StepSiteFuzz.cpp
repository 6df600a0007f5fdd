#include "orvane_host/import/detail/StepSite.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

// Ends the process unless what is told of a building's place is on the earth.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::istringstream stream(std::string(data, data + size));
    const OV::Host::StepSite site = OV::Host::ReadStepSite(stream);
    const bool isPlace = !site.place
        || (std::abs(site.place->latitude) <= 90.0 && std::abs(site.place->longitude) <= 180.0);
    const bool isNorth = !site.north || (*site.north > -180.0 && *site.north <= 180.0);
    if (!isPlace || !isNorth)
    {
        std::abort();
    }
    return 0;
}
