#include "orvane/base/DeviceConfig.h"

#include "tests/support/VirtualSlot.h"

#include "orvane/platform/GenericDeviceConfig.h"

#include <gtest/gtest.h>

namespace OV::Test
{

namespace
{

// Answers only what must be answered.
class PlainConfig : public DeviceConfig
{
public:
    float GetDisplayScale() override { return 3.0f; }
    bool GetFlag1() override { return true; }
    std::int64_t GetLimit64() override { return 1; }
    std::int32_t GetLimit1() override { return 1; }
    std::int32_t GetLimit2() override { return 2; }
    std::int32_t GetLimit3() override { return 3; }
    std::int32_t GetLimit4() override { return 4; }
    bool GetFlag2() override { return true; }
    bool GetFlag3() override { return true; }
    std::string GetLanguageTag() override { return "de"; }
};

TEST(DeviceConfig, SetDisplayScaleDoesNothingByItself)
{
    PlainConfig config;
    config.SetDisplayScale(2.0f);
    EXPECT_EQ(config.GetDisplayScale(), 3.0f);
}

TEST(DeviceConfig, KeepsTheOrderOfItsVirtualOperations)
{
    EXPECT_EQ(VirtualSlot(&DeviceConfig::GetDisplayScale), 1);
    EXPECT_EQ(VirtualSlot(&DeviceConfig::SetDisplayScale), 2);
    EXPECT_EQ(VirtualSlot(&DeviceConfig::GetFlag1), 3);
    EXPECT_EQ(VirtualSlot(&DeviceConfig::GetLimit64), 4);
    EXPECT_EQ(VirtualSlot(&DeviceConfig::GetLimit1), 5);
    EXPECT_EQ(VirtualSlot(&DeviceConfig::GetLimit2), 6);
    EXPECT_EQ(VirtualSlot(&DeviceConfig::GetLimit3), 7);
    EXPECT_EQ(VirtualSlot(&DeviceConfig::GetLimit4), 8);
    EXPECT_EQ(VirtualSlot(&DeviceConfig::GetFlag2), 9);
    EXPECT_EQ(VirtualSlot(&DeviceConfig::GetFlag3), 10);
    EXPECT_EQ(VirtualSlot(&DeviceConfig::GetLanguageTag), 11);
}

TEST(GenericDeviceConfig, IsUnlimitedWithoutFlagsAtScaleOneInEnglish)
{
    Platform::Generic::DeviceConfig config;
    EXPECT_EQ(config.GetDisplayScale(), 1.0f);
    EXPECT_EQ(config.GetFlag1(), 0);
    EXPECT_EQ(config.GetLimit64(), 0x7FFFFFFFFFFFFFFF);
    EXPECT_EQ(config.GetLimit1(), 0x7FFFFFFF);
    EXPECT_EQ(config.GetLimit2(), 0x7FFFFFFF);
    EXPECT_EQ(config.GetLimit3(), 0x7FFFFFFF);
    EXPECT_EQ(config.GetLimit4(), 0x7FFFFFFF);
    EXPECT_EQ(config.GetFlag2(), 0);
    EXPECT_EQ(config.GetFlag3(), 0);
    EXPECT_EQ(config.GetLanguageTag(), "en");
}

TEST(GenericDeviceConfig, StoresTheDisplayScale)
{
    Platform::Generic::DeviceConfig config;
    DeviceConfig& base = config;
    base.SetDisplayScale(1.5f);
    EXPECT_EQ(base.GetDisplayScale(), 1.5f);
}

}  // namespace

}  // namespace OV::Test
