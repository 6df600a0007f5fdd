#pragma once

#include "orvane/Export.h"

#include <cstdint>
#include <string>

namespace OV
{

/// What a host wants to remember about the device that it runs on.
///
/// The engine carries the object and reads nothing in it. The flags and limits have the
/// meaning that the host gives them.
class ORVANE_API DeviceConfig
{
public:
    virtual ~DeviceConfig();

    /// Pixels per unit of the user interface.
    virtual float GetDisplayScale() = 0;
    /// Does nothing unless a subclass keeps the scale.
    virtual void SetDisplayScale(float scale);
    virtual bool GetFlag1() = 0;
    virtual std::int64_t GetLimit64() = 0;
    virtual std::int32_t GetLimit1() = 0;
    virtual std::int32_t GetLimit2() = 0;
    virtual std::int32_t GetLimit3() = 0;
    virtual std::int32_t GetLimit4() = 0;
    virtual bool GetFlag2() = 0;
    virtual bool GetFlag3() = 0;
    /// Language of the user interface as a language tag, "en" for instance.
    virtual std::string GetLanguageTag() = 0;
};

}  // namespace OV
