#pragma once

#include "orvane/base/DeviceConfig.h"

namespace OV::Platform::Generic
{

/// A device without limits: every limit at its greatest value, no flag raised, language "en".
class ORVANE_API DeviceConfig : public OV::DeviceConfig
{
public:
    ~DeviceConfig() override;

    float GetDisplayScale() override;
    void SetDisplayScale(float scale) override;
    bool GetFlag1() override;
    std::int64_t GetLimit64() override;
    std::int32_t GetLimit1() override;
    std::int32_t GetLimit2() override;
    std::int32_t GetLimit3() override;
    std::int32_t GetLimit4() override;
    bool GetFlag2() override;
    bool GetFlag3() override;
    std::string GetLanguageTag() override;

protected:
    float displayScale = 1.0f;
};

}  // namespace OV::Platform::Generic
