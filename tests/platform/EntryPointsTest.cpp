#include "orvane/platform/detail/EntryPoints.h"

#include <GL/glew.h>

#include <gtest/gtest.h>

namespace OV::Test
{

namespace
{

TEST(EntryPoints, WithoutAContextThereAreNone)
{
    EXPECT_FALSE(Platform::LoadEntryPoints());
    EXPECT_EQ(__glewCreateShader, nullptr);
    EXPECT_FALSE(Platform::LoadEntryPoints());
}

}  // namespace

}  // namespace OV::Test
