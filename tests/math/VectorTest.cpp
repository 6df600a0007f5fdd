#include "orvane/math/Vector.h"

#include "tests/math/MathTesting.h"

#include <type_traits>

using namespace MathTesting;
using OV::Matrix;
using OV::Quaternion;
using OV::Transform;
using OV::Vector;

TEST(Vector, IsThreePackedFloats)
{
    EXPECT_EQ(sizeof(Vector), 12u);
    EXPECT_TRUE(std::is_standard_layout_v<Vector>);
    EXPECT_TRUE(std::is_trivially_copyable_v<Vector>);
}

TEST(Vector, DefaultIsZero)
{
    ExpectExactly(Vector(), 0.0f, 0.0f, 0.0f);
}

TEST(Vector, ConstructorTakesTheComponentsInOrder)
{
    ExpectExactly(Vector(1.0f, 2.0f, 3.0f), 1.0f, 2.0f, 3.0f);
}

TEST(Vector, IndexReadsAndWritesComponents)
{
    Vector v(1.0f, 2.0f, 3.0f);
    const Vector& reader = v;
    for (unsigned int i = 0; i < 3; ++i)
    {
        EXPECT_EQ(reader[i], static_cast<float>(i + 1));
        EXPECT_EQ(v[i], static_cast<float>(i + 1));
        v[i] = 10.0f * static_cast<float>(i + 1);
    }
    ExpectExactly(v, 10.0f, 20.0f, 30.0f);
    EXPECT_EQ(&v[0], &v.x);
    EXPECT_EQ(&v[1], &v.y);
    EXPECT_EQ(&v[2], &v.z);
}

TEST(Vector, SetReturnsItself)
{
    Vector v;
    EXPECT_EQ(&v.Set(4.0f, 5.0f, 6.0f), &v);
    ExpectExactly(v, 4.0f, 5.0f, 6.0f);
}

TEST(Vector, AddAndSubtractWriteToTheReceiver)
{
    Vector v(9.0f, 9.0f, 9.0f);
    v.Add(Vector(1.0f, 2.0f, 3.0f), Vector(10.0f, 20.0f, 30.0f));
    ExpectExactly(v, 11.0f, 22.0f, 33.0f);
    v.Subtract(Vector(1.0f, 2.0f, 3.0f), Vector(10.0f, 20.0f, 40.0f));
    ExpectExactly(v, -9.0f, -18.0f, -37.0f);
}

TEST(Vector, AddAndSubtractMayOverwriteAnOperand)
{
    Vector v(1.0f, 2.0f, 3.0f);
    v.Add(v, v);
    ExpectExactly(v, 2.0f, 4.0f, 6.0f);
    v.Subtract(Vector(1.0f, 1.0f, 1.0f), v);
    ExpectExactly(v, -1.0f, -3.0f, -5.0f);
    v.Subtract(v, Vector(1.0f, 1.0f, 1.0f));
    ExpectExactly(v, -2.0f, -4.0f, -6.0f);
}

TEST(Vector, CrossIsRightHanded)
{
    Vector v;
    v.Cross(Vector(1.0f, 0.0f, 0.0f), Vector(0.0f, 1.0f, 0.0f));
    ExpectExactly(v, 0.0f, 0.0f, 1.0f);
    v.Cross(Vector(0.0f, 1.0f, 0.0f), Vector(0.0f, 0.0f, 1.0f));
    ExpectExactly(v, 1.0f, 0.0f, 0.0f);
    v.Cross(Vector(0.0f, 0.0f, 1.0f), Vector(1.0f, 0.0f, 0.0f));
    ExpectExactly(v, 0.0f, 1.0f, 0.0f);
    v.Cross(Vector(1.0f, 2.0f, 3.0f), Vector(4.0f, 5.0f, 7.0f));
    ExpectExactly(v, -1.0f, 5.0f, -3.0f);
}

TEST(Vector, CrossMayOverwriteEitherOperand)
{
    const Vector a(1.0f, 2.0f, 3.0f);
    const Vector b(4.0f, 5.0f, 7.0f);
    Vector first = a;
    first.Cross(first, b);
    ExpectExactly(first, -1.0f, 5.0f, -3.0f);
    Vector second = b;
    second.Cross(a, second);
    ExpectExactly(second, -1.0f, 5.0f, -3.0f);
    Vector both = a;
    both.Cross(both, both);
    ExpectExactly(both, 0.0f, 0.0f, 0.0f);
}

TEST(Vector, DotIsTheSameConstOrNot)
{
    Vector v(1.0f, 2.0f, 3.0f);
    const Vector& constant = v;
    EXPECT_EQ(v.Dot(Vector(4.0f, -5.0f, 6.0f)), 12.0f);
    EXPECT_EQ(constant.Dot(Vector(4.0f, -5.0f, 6.0f)), 12.0f);
    EXPECT_TRUE((std::is_same_v<float, decltype(v.Dot(v))>));
    float (Vector::*mutableOverload)(const Vector&) = &Vector::Dot;
    float (Vector::*constOverload)(const Vector&) const = &Vector::Dot;
    EXPECT_EQ((v.*mutableOverload)(v), (constant.*constOverload)(v));
}

TEST(Vector, LengthsAndDistances)
{
    const Vector v(2.0f, -3.0f, 6.0f);
    EXPECT_EQ(v.MagnitudeSquared(), 49.0f);
    EXPECT_EQ(v.Magnitude(), 7.0f);
    EXPECT_EQ(v.DistanceSquared(Vector(3.0f, -1.0f, 8.0f)), 9.0f);
    EXPECT_EQ(v.DistanceSquared(v), 0.0f);
}

TEST(Vector, MultiplyOfTwoVectorsGoesByComponents)
{
    Vector v;
    v.Multiply(Vector(2.0f, 3.0f, 4.0f), Vector(5.0f, -6.0f, 0.5f));
    ExpectExactly(v, 10.0f, -18.0f, 2.0f);
    v.Multiply(v, v);
    ExpectExactly(v, 100.0f, 324.0f, 4.0f);
}

TEST(Vector, MultiplyByMatrixAppliesLinearPartAndTranslationOnly)
{
    // Rows (1 2 3 4), (5 6 7 8), (9 10 11 12); row 3 would divide by 100 if it were used.
    const Matrix m{{1, 5, 9, 100, 2, 6, 10, 100, 3, 7, 11, 100, 4, 8, 12, 100}};
    Vector v;
    v.Multiply(m, Vector(1.0f, 10.0f, 100.0f));
    ExpectExactly(v, 325.0f, 773.0f, 1221.0f);
}

TEST(Vector, MultiplyByMatrixMayOverwriteTheVector)
{
    const Matrix m{{0, 1, 0, 0, 0, 0, 1, 0, 1, 0, 0, 0, 10, 20, 30, 1}};
    Vector v(1.0f, 2.0f, 3.0f);
    v.Multiply(m, v);
    ExpectExactly(v, 13.0f, 21.0f, 32.0f);
}

TEST(Vector, MultiplyByMatrixAgreesWithDoublePrecision)
{
    Random random;
    for (int i = 0; i < 200; ++i)
    {
        Matrix m;
        for (float& element : m.m)
        {
            element = static_cast<float>(random.Between(-3.0, 3.0));
        }
        const Vector v = random.AnyVector();
        const Vector4 expected = Apply(Widen(m), {v.x, v.y, v.z, 1.0});
        Vector actual;
        actual.Multiply(m, v);
        ExpectNear(actual, expected[0], expected[1], expected[2], 2e-5);
    }
}

TEST(Vector, MultiplyByQuaternionRotates)
{
    Quaternion quarterAboutZ;
    quarterAboutZ.FromRotation(Vector(0.0f, 0.0f, 1.0f), static_cast<float>(pi / 2));
    Vector v(1.0f, 0.0f, 5.0f);
    v.Multiply(quarterAboutZ, v);
    ExpectNear(v, 0.0, 1.0, 5.0, 1e-6);
}

TEST(Vector, MultiplyByQuaternionUsesTheFormulaAsItStandsWhenNotUnit)
{
    // u = (1, 2, 3), w = 4, v = (5, 6, 7): (16 - 14) v + 2 * 38 u + 8 (u x v), u x v = (-4, 8, -4).
    Vector v;
    v.Multiply(RawQuaternion(1.0f, 2.0f, 3.0f, 4.0f), Vector(5.0f, 6.0f, 7.0f));
    ExpectExactly(v, 54.0f, 228.0f, 210.0f);
}

TEST(Vector, MultiplyByQuaternionAgreesWithDoublePrecision)
{
    Random random;
    for (int i = 0; i < 500; ++i)
    {
        const Quaternion q = random.Rotation();
        const Vector v = random.AnyVector();
        const Vector4 expected = Apply(RotationOf(q), {v.x, v.y, v.z, 1.0});
        Vector actual = v;
        actual.Multiply(q, actual);
        ExpectNear(actual, expected[0], expected[1], expected[2], 2e-5);
    }
}

TEST(Vector, MultiplyByTransformMovesAPointInDouble)
{
    Matrix4 m = Identity4();
    m[0] = {1.0, 1e10, 0.0, -1e10};
    m[1] = {0.0, 2.0, 0.0, 7.0};
    m[2] = {3.0, 0.0, 1.0, -1.0};
    m[3] = {5.0, 5.0, 5.0, 5.0};
    Vector v;
    v.Multiply(MakeTransform(m), Vector(0.5f, 1.0f, 2.0f));
    ExpectExactly(v, 0.5f, 9.0f, 2.5f);
}

TEST(Vector, MultiplyByTransformMayOverwriteTheVector)
{
    Random random;
    for (int i = 0; i < 200; ++i)
    {
        const Matrix4 m = random.AffineMatrix();
        Vector v = random.AnyVector();
        const Vector4 expected = Apply(m, {v.x, v.y, v.z, 1.0});
        v.Multiply(MakeTransform(m), v);
        ExpectNear(v, expected[0], expected[1], expected[2], 2e-5);
    }
}

TEST(Vector, NormalizeDividesByTheLength)
{
    Vector v(2.0f, -3.0f, 6.0f);
    v.Normalize();
    ExpectExactly(v, 2.0f / 7.0f, -3.0f / 7.0f, 6.0f / 7.0f);
}

TEST(Vector, NormalizeOfZeroIsNotANumber)
{
    Vector v;
    v.Normalize();
    EXPECT_TRUE(std::isnan(v.x) && std::isnan(v.y) && std::isnan(v.z));
}

TEST(Vector, ScaleInPlaceByComponentsAndByFactor)
{
    Vector v(1.0f, 2.0f, 3.0f);
    v.Scale(Vector(2.0f, -3.0f, 0.5f));
    ExpectExactly(v, 2.0f, -6.0f, 1.5f);
    v.Scale(2.0f);
    ExpectExactly(v, 4.0f, -12.0f, 3.0f);
    v.Scale(v);
    ExpectExactly(v, 16.0f, 144.0f, 9.0f);
}

TEST(Vector, ScaleOfAnotherVector)
{
    Vector v(9.0f, 9.0f, 9.0f);
    v.Scale(-2.0f, Vector(1.0f, 2.0f, 3.0f));
    ExpectExactly(v, -2.0f, -4.0f, -6.0f);
    v.Scale(0.5f, v);
    ExpectExactly(v, -1.0f, -2.0f, -3.0f);
}

TEST(Vector, InterpolateRunsFromTheFirstToTheSecond)
{
    Vector v;
    v.Interpolate(Vector(0.0f, 10.0f, -4.0f), Vector(8.0f, 20.0f, 4.0f), 0.25f);
    ExpectExactly(v, 2.0f, 12.5f, -2.0f);
}

TEST(Vector, InterpolateClampsToTheEnds)
{
    const Vector a(0.1f, -7.3f, 1e6f);
    const Vector b(3.7f, 9.1f, -2.5f);
    Vector atStart;
    Vector atEnd;
    atStart.Interpolate(a, b, 0.0f);
    atEnd.Interpolate(a, b, 1.0f);
    ExpectExactly(atStart, a.x, a.y, a.z);
    ExpectExactly(atEnd, (b.x - a.x) + a.x, (b.y - a.y) + a.y, (b.z - a.z) + a.z);
    for (const float t : {-1e-30f, -0.5f, -1000.0f})
    {
        Vector v;
        v.Interpolate(a, b, t);
        ExpectExactly(v, atStart.x, atStart.y, atStart.z);
    }
    for (const float t : {Above(1.0f), 1.5f, 1000.0f})
    {
        Vector v;
        v.Interpolate(a, b, t);
        ExpectExactly(v, atEnd.x, atEnd.y, atEnd.z);
    }
}

TEST(Vector, InterpolateMayOverwriteEitherOperand)
{
    Vector a(0.0f, 10.0f, -4.0f);
    Vector b(8.0f, 20.0f, 4.0f);
    Vector first = a;
    first.Interpolate(first, b, 0.25f);
    ExpectExactly(first, 2.0f, 12.5f, -2.0f);
    b.Interpolate(a, b, 0.25f);
    ExpectExactly(b, 2.0f, 12.5f, -2.0f);
}

TEST(Vector, EqualityEndsAtAMillionthInEveryComponent)
{
    const Vector zero;
    for (unsigned int i = 0; i < 3; ++i)
    {
        for (const float sign : {1.0f, -1.0f})
        {
            // 1e-6f lies just below 1e-6, the next float above it.
            Vector inside;
            inside[i] = sign * 1e-6f;
            EXPECT_TRUE(inside == zero) << i;
            EXPECT_FALSE(inside != zero) << i;
            Vector outside;
            outside[i] = sign * Above(1e-6f);
            EXPECT_FALSE(outside == zero) << i;
            EXPECT_TRUE(outside != zero) << i;
            EXPECT_FALSE(zero == outside) << i;
        }
    }
}

TEST(Vector, EqualityComparesEachComponentWithItsOwn)
{
    const Vector v(1.0f, 2.0f, 3.0f);
    EXPECT_TRUE(v == Vector(1.0f, 2.0f, 3.0f));
    EXPECT_TRUE(v.IsEqual(Vector(1.0f, 2.0f, 3.0f)));
    for (unsigned int i = 0; i < 3; ++i)
    {
        Vector other = v;
        other[i] = -other[i];
        EXPECT_FALSE(v == other) << i;
        EXPECT_FALSE(v.IsEqual(other)) << i;
    }
}

TEST(Vector, EqualityTakesNotANumberAsEqual)
{
    EXPECT_TRUE(Vector(notANumber, notANumber, notANumber) == Vector(1.0f, 2.0f, 3.0f));
    EXPECT_FALSE(Vector(notANumber, notANumber, notANumber) != Vector(1.0f, 2.0f, 3.0f));
    EXPECT_FALSE(Vector(notANumber, notANumber, 4.0f) == Vector(1.0f, 2.0f, 3.0f));
    EXPECT_FALSE(Vector(notANumber, notANumber, notANumber).IsEqual(Vector(1.0f, 2.0f, 3.0f)));
}

TEST(Vector, IsEqualIsStrictAtAHundredThousandth)
{
    const Vector zero;
    for (unsigned int i = 0; i < 3; ++i)
    {
        for (const float sign : {1.0f, -1.0f})
        {
            Vector inside;
            inside[i] = sign * Below(1e-5f);
            EXPECT_TRUE(inside.IsEqual(zero)) << i;
            Vector onTheBound;
            onTheBound[i] = sign * 1e-5f;
            EXPECT_FALSE(onTheBound.IsEqual(zero)) << i;
            EXPECT_FALSE(zero.IsEqual(onTheBound)) << i;
        }
    }
}

TEST(Vector, EqualityIsNarrowerThanIsEqual)
{
    const Vector v(5e-6f, 0.0f, 0.0f);
    EXPECT_FALSE(v == Vector());
    EXPECT_TRUE(v.IsEqual(Vector()));
}

TEST(Vector, IsUnityWithinAHundredThousandthOfOne)
{
    EXPECT_TRUE(Vector(1.0f, 1.0f, 1.0f).IsUnity());
    // Floats near 1 do not hit 1e-5 itself: these are its two neighbours on either side.
    const float aboveStep = std::ldexp(1.0f, -23);
    const float belowStep = std::ldexp(1.0f, -24);
    ASSERT_LT(83.0f * aboveStep, 1e-5f);
    ASSERT_GT(84.0f * aboveStep, 1e-5f);
    ASSERT_LT(167.0f * belowStep, 1e-5f);
    ASSERT_GT(168.0f * belowStep, 1e-5f);
    for (unsigned int i = 0; i < 3; ++i)
    {
        Vector v(1.0f, 1.0f, 1.0f);
        v[i] = 1.0f + 83.0f * aboveStep;
        EXPECT_TRUE(v.IsUnity()) << i;
        v[i] = 1.0f + 84.0f * aboveStep;
        EXPECT_FALSE(v.IsUnity()) << i;
        v[i] = 1.0f - 167.0f * belowStep;
        EXPECT_TRUE(v.IsUnity()) << i;
        v[i] = 1.0f - 168.0f * belowStep;
        EXPECT_FALSE(v.IsUnity()) << i;
        v[i] = notANumber;
        EXPECT_FALSE(v.IsUnity()) << i;
    }
}

TEST(Vector, IsUnityTestsAScaleNotALength)
{
    EXPECT_FALSE(Vector(1.0f, 0.0f, 0.0f).IsUnity());
    EXPECT_FALSE(Vector(-1.0f, 1.0f, 1.0f).IsUnity());
}

TEST(Vector, ProductsAgreeWithDoublePrecision)
{
    Random random;
    for (int i = 0; i < 500; ++i)
    {
        const Vector a = random.AnyVector();
        const Vector b = random.AnyVector();
        const double ax = a.x, ay = a.y, az = a.z, bx = b.x, by = b.y, bz = b.z;
        Vector cross;
        cross.Cross(a, b);
        ExpectNear(cross, ay * bz - az * by, az * bx - ax * bz, ax * by - ay * bx, 2e-5);
        EXPECT_NEAR(a.Dot(b), ax * bx + ay * by + az * bz, 4e-5);
        EXPECT_NEAR(a.DistanceSquared(b), std::pow(ax - bx, 2) + std::pow(ay - by, 2) + std::pow(az - bz, 2),
                    3e-4);
        EXPECT_NEAR(a.Magnitude(), std::hypot(ax, ay, az), 2e-6);
    }
}
