#include "orvane/platform/GenericDeviceConfig.h"

#include <limits>

namespace OV::Platform::Generic
{

namespace
{

constexpr std::int32_t kUnlimited = std::numeric_limits<std::int32_t>::max();

}  // namespace

DeviceConfig::~DeviceConfig() = default;

float DeviceConfig::GetDisplayScale()
{
    return displayScale;
}

void DeviceConfig::SetDisplayScale(float scale)
{
    displayScale = scale;
}

bool DeviceConfig::GetFlag1()
{
    return false;
}

std::int64_t DeviceConfig::GetLimit64()
{
    return std::numeric_limits<std::int64_t>::max();
}

std::int32_t DeviceConfig::GetLimit1()
{
    return kUnlimited;
}

std::int32_t DeviceConfig::GetLimit2()
{
    return kUnlimited;
}

std::int32_t DeviceConfig::GetLimit3()
{
    return kUnlimited;
}

std::int32_t DeviceConfig::GetLimit4()
{
    return kUnlimited;
}

bool DeviceConfig::GetFlag2()
{
    return false;
}

bool DeviceConfig::GetFlag3()
{
    return false;
}

std::string DeviceConfig::GetLanguageTag()
{
    return "en";
}

}  // namespace OV::Platform::Generic
