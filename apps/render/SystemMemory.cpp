#include "apps/render/SystemMemory.h"

#include <fstream>
#include <string>

namespace OV::RenderApp
{

std::uint64_t AvailableMemory()
{
    std::ifstream stream("/proc/meminfo");
    std::string name;
    std::uint64_t kibibytes = 0;
    std::string unit;
    while (stream >> name >> kibibytes)
    {
        if (name == "MemAvailable:")
        {
            return kibibytes * 1024;
        }
        std::getline(stream, unit);
    }
    return 0;
}

} // namespace OV::RenderApp
