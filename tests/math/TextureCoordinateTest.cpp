#include "orvane/math/TextureCoordinate.h"

#include <gtest/gtest.h>

#include <type_traits>

using OV::TextureCoordinate;

TEST(TextureCoordinate, IsTwoPackedFloats)
{
    EXPECT_EQ(sizeof(TextureCoordinate), 8u);
    EXPECT_TRUE(std::is_standard_layout_v<TextureCoordinate>);
    EXPECT_TRUE(std::is_trivially_copyable_v<TextureCoordinate>);
}

TEST(TextureCoordinate, HoldsUBeforeV)
{
    const TextureCoordinate coordinate(0.25f, 0.75f);
    EXPECT_EQ(coordinate.u, 0.25f);
    EXPECT_EQ(coordinate.v, 0.75f);
    EXPECT_EQ(reinterpret_cast<const float*>(&coordinate)[0], 0.25f);
}

TEST(TextureCoordinate, DefaultIsZero)
{
    const TextureCoordinate coordinate;
    EXPECT_EQ(coordinate.u, 0.0f);
    EXPECT_EQ(coordinate.v, 0.0f);
}
