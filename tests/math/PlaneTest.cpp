#include "orvane/math/Plane.h"

#include "tests/math/MathTesting.h"

using namespace MathTesting;
using OV::Plane;
using OV::Vector;

TEST(Plane, DefaultIsZero)
{
    const Plane plane;
    ExpectExactly(plane.point, 0.0f, 0.0f, 0.0f);
    ExpectExactly(plane.normal, 0.0f, 0.0f, 0.0f);
}

TEST(Plane, HoldsThePointBeforeTheNormal)
{
    EXPECT_EQ(sizeof(Plane), 24u);
    const Plane plane;
    EXPECT_LT(static_cast<const void*>(&plane.point), static_cast<const void*>(&plane.normal));
}

TEST(Plane, SetCopiesBothAsTheyAre)
{
    Plane plane;
    plane.Set(Vector(1.0f, 2.0f, 3.0f), Vector(0.0f, 5.0f, 0.0f));
    ExpectExactly(plane.point, 1.0f, 2.0f, 3.0f);
    ExpectExactly(plane.normal, 0.0f, 5.0f, 0.0f);
}

TEST(Plane, OutsideIsTheSideTheNormalPointsTo)
{
    Plane plane;
    plane.Set(Vector(0.0f, 2.0f, 0.0f), Vector(0.0f, 1.0f, 0.0f));
    EXPECT_TRUE(plane.IsOutside(Vector(50.0f, 3.0f, -7.0f), 0.0f));
    EXPECT_FALSE(plane.IsOutside(Vector(50.0f, 1.0f, -7.0f), 0.0f));
}

TEST(Plane, IsOutsideIsStrictAtTheTolerance)
{
    Plane plane;
    plane.Set(Vector(0.0f, 2.0f, 0.0f), Vector(0.0f, 1.0f, 0.0f));
    EXPECT_FALSE(plane.IsOutside(Vector(0.0f, 2.0f, 0.0f), 0.0f));
    EXPECT_TRUE(plane.IsOutside(Vector(0.0f, Above(2.0f), 0.0f), 0.0f));
    EXPECT_FALSE(plane.IsOutside(Vector(0.0f, 2.5f, 0.0f), 0.5f));
    EXPECT_TRUE(plane.IsOutside(Vector(0.0f, Above(2.5f), 0.0f), 0.5f));
    EXPECT_FALSE(plane.IsOutside(Vector(0.0f, 1.5f, 0.0f), -0.5f));
    EXPECT_TRUE(plane.IsOutside(Vector(0.0f, Above(1.5f), 0.0f), -0.5f));
}

TEST(Plane, IsOutsideMeasuresAlongAllThreeComponentsOfTheNormal)
{
    Plane plane;
    plane.Set(Vector(1.0f, 10.0f, 100.0f), Vector(2.0f, 3.0f, 4.0f));
    const Vector p(2.0f, 12.0f, 104.0f);
    EXPECT_TRUE(plane.IsOutside(p, Below(24.0f)));
    EXPECT_FALSE(plane.IsOutside(p, 24.0f));
}

TEST(Plane, DefaultPlaneHasNothingOutside)
{
    EXPECT_FALSE(Plane().IsOutside(Vector(1e30f, 1e30f, 1e30f), 0.0f));
}
