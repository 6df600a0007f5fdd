#include "orvane/base/DeviceConfig.h"

namespace OV
{

DeviceConfig::~DeviceConfig() = default;

void DeviceConfig::SetDisplayScale(float)
{
}

}  // namespace OV
