#include "orvane/math/Sphere.h"

#include "tests/math/MathTesting.h"

using namespace MathTesting;
using OV::Sphere;

TEST(Sphere, DefaultIsZero)
{
    const Sphere sphere;
    EXPECT_EQ(sphere.radius, 0.0f);
    ExpectExactly(sphere.center, 0.0f, 0.0f, 0.0f);
}

TEST(Sphere, HoldsTheRadiusBeforeTheCenter)
{
    EXPECT_EQ(sizeof(Sphere), 16u);
    const Sphere sphere{2.0f, OV::Vector(1.0f, 2.0f, 3.0f)};
    EXPECT_EQ(sphere.radius, 2.0f);
    ExpectExactly(sphere.center, 1.0f, 2.0f, 3.0f);
}
