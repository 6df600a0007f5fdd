#include "orvane_host/present/Look.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace OV::Host
{

namespace
{

/// In the order of Look.
const char* const kNames[] = {"basic", "advanced", "phong", "crosshatch", "monotone", "vertex-color"};
static_assert(std::size(kNames) == static_cast<std::size_t>(Look::VertexColor) + 1, "one name a look");

} // namespace

bool ParseLook(const std::string& name, Look& look)
{
    const auto found = std::find(std::begin(kNames), std::end(kNames), name);
    if (found == std::end(kNames))
    {
        return false;
    }
    look = static_cast<Look>(found - std::begin(kNames));
    return true;
}

const char* NameOfLook(Look look)
{
    const auto index = static_cast<std::size_t>(look);
    return index < std::size(kNames) ? kNames[index] : nullptr;
}

} // namespace OV::Host
