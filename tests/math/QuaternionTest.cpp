#include "orvane/math/Quaternion.h"

#include "orvane/math/Matrix3x3.h"
#include "tests/math/MathTesting.h"

#include <algorithm>
#include <type_traits>

using namespace MathTesting;
using OV::Matrix;
using OV::Matrix3x3;
using OV::Quaternion;
using OV::Vector;

namespace
{

constexpr float quarter = 1.5707964f;
constexpr float rootHalf = 0.70710677f;

Matrix4 MatrixOf(const Quaternion& q)
{
    Matrix m;
    q.ExtractMatrix(m);
    return Widen(m);
}

std::array<float, 9> ColumnMajor3x3(const Matrix4& m)
{
    std::array<float, 9> result{};
    for (int r = 0; r < 3; ++r)
    {
        for (int c = 0; c < 3; ++c)
        {
            result[c * 3 + r] = static_cast<float>(m[r][c]);
        }
    }
    return result;
}

Quaternion FromColumns(const std::array<float, 9>& m)
{
    Quaternion q;
    q.FromColumnMajor3x3(m.data());
    return q;
}

/// The Hamilton product as i, j, k multiply, in double.
std::array<double, 4> HamiltonProduct(const Quaternion& a, const Quaternion& b)
{
    // Unit i, j, k, 1 at 0, 1, 2, 3: the product of units m and n is sign[m][n] * unit[m][n].
    static constexpr int unit[4][4] = {{3, 2, 1, 0}, {2, 3, 0, 1}, {1, 0, 3, 2}, {0, 1, 2, 3}};
    static constexpr int sign[4][4] = {{-1, 1, -1, 1}, {-1, -1, 1, 1}, {1, -1, -1, 1}, {1, 1, 1, 1}};
    const double left[4] = {a.x, a.y, a.z, a.w};
    const double right[4] = {b.x, b.y, b.z, b.w};
    std::array<double, 4> result{};
    for (int m = 0; m < 4; ++m)
    {
        for (int n = 0; n < 4; ++n)
        {
            result[unit[m][n]] += sign[m][n] * left[m] * right[n];
        }
    }
    return result;
}

Quaternion AboutX(double cosineOfHalf)
{
    return RawQuaternion(static_cast<float>(std::sqrt(1.0 - cosineOfHalf * cosineOfHalf)), 0.0f,
                         0.0f, static_cast<float>(cosineOfHalf));
}

Matrix4 EulerMatrix(const Vector& e)
{
    return Product(AxisRotation(2, e.z), Product(AxisRotation(1, e.y), AxisRotation(0, e.x)));
}

} // namespace

TEST(Quaternion, IsFourPackedFloatsWithWLast)
{
    EXPECT_EQ(sizeof(Quaternion), 16u);
    EXPECT_TRUE(std::is_standard_layout_v<Quaternion>);
    const Quaternion q = RawQuaternion(1.0f, 2.0f, 3.0f, 4.0f);
    const auto* floats = reinterpret_cast<const float*>(&q);
    EXPECT_EQ(floats[0], 1.0f);
    EXPECT_EQ(floats[3], 4.0f);
}

TEST(Quaternion, DefaultIsTheIdentity)
{
    ExpectExactly(Quaternion(), 0.0f, 0.0f, 0.0f, 1.0f);
}

TEST(Quaternion, ConstructorNormalises)
{
    ExpectExactly(Quaternion(0.0f, 0.0f, 0.0f, 2.0f), 0.0f, 0.0f, 0.0f, 1.0f);
    ExpectExactly(Quaternion(1.0f, -1.0f, 1.0f, -1.0f), 0.5f, -0.5f, 0.5f, -0.5f);
    ExpectExactly(Quaternion(2.0f, 4.0f, 5.0f, 6.0f), 2.0f / 9.0f, 4.0f / 9.0f, 5.0f / 9.0f,
                  6.0f / 9.0f);
}

TEST(Quaternion, SetNormalises)
{
    Quaternion q;
    q.Set(2.0f, 4.0f, 5.0f, 6.0f);
    ExpectExactly(q, 2.0f / 9.0f, 4.0f / 9.0f, 5.0f / 9.0f, 6.0f / 9.0f);
}

TEST(Quaternion, FourZerosGiveNotANumber)
{
    const Quaternion constructed(0.0f, 0.0f, 0.0f, 0.0f);
    EXPECT_TRUE(std::isnan(constructed.x) && std::isnan(constructed.w));
    Quaternion set;
    set.Set(0.0f, 0.0f, 0.0f, 0.0f);
    EXPECT_TRUE(std::isnan(set.y) && std::isnan(set.z));
    Quaternion normalised = RawQuaternion(0.0f, 0.0f, 0.0f, 0.0f);
    normalised.Normalize();
    EXPECT_TRUE(std::isnan(normalised.x) && std::isnan(normalised.w));
}

TEST(Quaternion, NormalizeDividesAllFour)
{
    Quaternion q = RawQuaternion(2.0f, 4.0f, -5.0f, 6.0f);
    q.Normalize();
    ExpectExactly(q, 2.0f / 9.0f, 4.0f / 9.0f, -5.0f / 9.0f, 6.0f / 9.0f);
}

TEST(Quaternion, MultiplyIsTheHamiltonProduct)
{
    Quaternion q;
    q.Multiply(RawQuaternion(1.0f, 0.0f, 0.0f, 0.0f), RawQuaternion(0.0f, 1.0f, 0.0f, 0.0f));
    ExpectExactly(q, 0.0f, 0.0f, 1.0f, 0.0f);
    q.Multiply(RawQuaternion(1.0f, 2.0f, 3.0f, 4.0f), RawQuaternion(5.0f, 6.0f, 7.0f, 8.0f));
    ExpectExactly(q, 24.0f, 48.0f, 48.0f, -6.0f);
    Random random;
    for (int i = 0; i < 200; ++i)
    {
        const Quaternion a = random.Rotation();
        const Quaternion b = random.Rotation();
        const auto expected = HamiltonProduct(a, b);
        q.Multiply(a, b);
        ExpectNear(q, expected[0], expected[1], expected[2], expected[3], 5e-7);
    }
}

TEST(Quaternion, MultiplyDoesNotRenormalise)
{
    Quaternion q;
    q.Multiply(RawQuaternion(0.0f, 0.0f, 0.0f, 2.0f), RawQuaternion(0.0f, 3.0f, 0.0f, 4.0f));
    ExpectExactly(q, 0.0f, 6.0f, 0.0f, 8.0f);
}

TEST(Quaternion, MultiplyOfUnitsKeepsItsRoundingAndComposeDoesNot)
{
    const Quaternion turn(0.1f, 0.2f, 0.3f, 0.4f);
    Quaternion product;
    Quaternion composed;
    for (int i = 0; i < 100000; ++i)
    {
        product.Multiply(product, turn);
        composed.Compose(turn, composed);
    }
    EXPECT_GT(std::fabs(Norm(product) - 1.0), 1e-5);
    EXPECT_LT(std::fabs(Norm(composed) - 1.0), 2e-7);
}

TEST(Quaternion, MultiplyMayOverwriteEitherOperand)
{
    const Quaternion a = RawQuaternion(1.0f, 2.0f, 3.0f, 4.0f);
    const Quaternion b = RawQuaternion(5.0f, 6.0f, 7.0f, 8.0f);
    Quaternion first = a;
    first.Multiply(first, b);
    ExpectExactly(first, 24.0f, 48.0f, 48.0f, -6.0f);
    Quaternion second = b;
    second.Multiply(a, second);
    ExpectExactly(second, 24.0f, 48.0f, 48.0f, -6.0f);
}

TEST(Quaternion, MultiplyLetsTheRightOperandActFirst)
{
    Random random;
    for (int i = 0; i < 100; ++i)
    {
        const Quaternion a = random.Rotation();
        const Quaternion b = random.Rotation();
        Quaternion q;
        q.Multiply(a, b);
        ExpectNear(MatrixOf(q), Product(RotationOf(a), RotationOf(b)), 3e-6);
    }
}

TEST(Quaternion, ComposeIsMultiplyReversedAndUnit)
{
    Random random;
    for (int i = 0; i < 500; ++i)
    {
        Quaternion a = random.Rotation();
        Quaternion b = random.Rotation();
        for (float* component : {&a.x, &a.y, &a.z, &a.w})
        {
            *component *= static_cast<float>(random.Between(0.5, 3.0));
        }
        const auto product = HamiltonProduct(b, a);
        const double norm = std::sqrt(product[0] * product[0] + product[1] * product[1] +
                                      product[2] * product[2] + product[3] * product[3]);
        Quaternion q;
        q.Compose(a, b);
        ExpectNear(q, product[0] / norm, product[1] / norm, product[2] / norm, product[3] / norm, 2e-6);
        EXPECT_NEAR(Norm(q), 1.0, 2e-7);
    }
}

TEST(Quaternion, ComposeOfSmallIntegersIsExact)
{
    // b (x) a = (1, 2, 3, 4) (x) (5, 6, 7, 8) = (24, 48, 48, -6), of norm sqrt(5220).
    Quaternion q;
    q.Compose(RawQuaternion(5.0f, 6.0f, 7.0f, 8.0f), RawQuaternion(1.0f, 2.0f, 3.0f, 4.0f));
    const float norm = std::sqrt(5220.0f);
    ExpectExactly(q, 24.0f / norm, 48.0f / norm, 48.0f / norm, -6.0f / norm);
}

TEST(Quaternion, ComposeMayOverwriteEitherOperand)
{
    Random random;
    const Quaternion a = random.Rotation();
    const Quaternion b = random.Rotation();
    Quaternion expected;
    expected.Compose(a, b);
    Quaternion first = a;
    first.Compose(first, b);
    ExpectExactly(first, expected.x, expected.y, expected.z, expected.w);
    Quaternion second = b;
    second.Compose(a, second);
    ExpectExactly(second, expected.x, expected.y, expected.z, expected.w);
}

TEST(Quaternion, ComposeOfZerosIsNotANumber)
{
    Quaternion q;
    q.Compose(RawQuaternion(0.0f, 0.0f, 0.0f, 0.0f), Quaternion());
    EXPECT_TRUE(std::isnan(q.x) && std::isnan(q.w));
}

TEST(Quaternion, UncomposeIsComposeWithTheConjugate)
{
    Random random;
    for (int i = 0; i < 200; ++i)
    {
        const Quaternion a = random.Rotation();
        const Quaternion b = random.Rotation();
        Quaternion expected;
        expected.Compose(a, RawQuaternion(-b.x, -b.y, -b.z, b.w));
        Quaternion q;
        q.Uncompose(a, b);
        ExpectExactly(q, expected.x, expected.y, expected.z, expected.w);

        Quaternion composed;
        composed.Compose(a, b);
        q.Uncompose(composed, b);
        ExpectNear(q, a.x, a.y, a.z, a.w, 1e-6);
    }
}

TEST(Quaternion, UncomposeMayOverwriteEitherOperand)
{
    Random random;
    const Quaternion a = random.Rotation();
    const Quaternion b = random.Rotation();
    Quaternion expected;
    expected.Uncompose(a, b);
    Quaternion first = a;
    first.Uncompose(first, b);
    ExpectExactly(first, expected.x, expected.y, expected.z, expected.w);
    Quaternion second = b;
    second.Uncompose(a, second);
    ExpectExactly(second, expected.x, expected.y, expected.z, expected.w);
}

TEST(Quaternion, InvertIsTheConjugateWithoutDivision)
{
    Quaternion q;
    q.Invert(RawQuaternion(1.0f, -2.0f, 3.0f, 4.0f));
    ExpectExactly(q, -1.0f, 2.0f, -3.0f, 4.0f);
    q.Invert(q);
    ExpectExactly(q, 1.0f, -2.0f, 3.0f, 4.0f);
}

TEST(Quaternion, FromRotationNormalisesTheAxis)
{
    Quaternion q;
    q.FromRotation(Vector(0.0f, 5.0f, 0.0f), 1.0f);
    ExpectExactly(q, 0.0f, std::sin(0.5f), 0.0f, std::cos(0.5f));
    Random random;
    for (int i = 0; i < 200; ++i)
    {
        const Vector axis = random.AnyVector();
        const double angle = random.Between(-10.0, 10.0);
        q.FromRotation(axis, static_cast<float>(angle));
        ExpectNear(MatrixOf(q), AngleAxisRotation(axis.x, axis.y, axis.z, angle), 2e-6);
    }
}

TEST(Quaternion, FromRotationAboutNothingIsNotANumber)
{
    Quaternion q;
    q.FromRotation(Vector(), 1.0f);
    EXPECT_TRUE(std::isnan(q.x) && std::isnan(q.y) && std::isnan(q.z));
    EXPECT_EQ(q.w, std::cos(0.5f));
}

TEST(Quaternion, GetRotationGivesBackAxisAndAngle)
{
    Random random;
    for (int i = 0; i < 200; ++i)
    {
        const Vector axis = random.UnitVector();
        const double angle = random.Between(0.1, 2.0 * pi - 0.1);
        Quaternion q;
        q.FromRotation(axis, static_cast<float>(angle));
        Vector actualAxis;
        float actualAngle = 0.0f;
        q.GetRotation(actualAxis, actualAngle);
        ExpectNear(actualAxis, axis.x, axis.y, axis.z, 2e-6);
        EXPECT_NEAR(actualAngle, angle, 1e-5);
    }
}

TEST(Quaternion, GetRotationTakesBothEndsOfWAsNoRotation)
{
    const float lastTurned = 0.999999f;
    ASSERT_LT(static_cast<double>(lastTurned), 0.999999);
    ASSERT_GT(static_cast<double>(Above(lastTurned)), 0.999999);
    for (const float sign : {1.0f, -1.0f})
    {
        Vector axis(9.0f, 9.0f, 9.0f);
        float angle = 9.0f;
        Quaternion q = RawQuaternion(0.0f, 0.001f, 0.0f, sign * Above(lastTurned));
        q.GetRotation(axis, angle);
        ExpectExactly(axis, 1.0f, 0.0f, 0.0f);
        EXPECT_EQ(angle, 0.0f);

        q = RawQuaternion(0.0f, 0.001f, 0.0f, sign * lastTurned);
        q.GetRotation(axis, angle);
        ExpectExactly(axis, 0.0f, 1.0f, 0.0f);
        EXPECT_EQ(angle, static_cast<float>(2.0 * std::acos(static_cast<double>(sign * lastTurned))));
    }
}

TEST(Quaternion, GetRotationWithoutAxisKeepsTheAngleAboutX)
{
    Vector axis(9.0f, 9.0f, 9.0f);
    float angle = 9.0f;
    Quaternion q = RawQuaternion(0.0f, 0.5e-6f, 0.0f, 0.5f);
    q.GetRotation(axis, angle);
    ExpectExactly(axis, 1.0f, 0.0f, 0.0f);
    EXPECT_NEAR(angle, 2.0 * pi / 3.0, 1e-6);

    q = RawQuaternion(0.0f, 0.0f, -2e-6f, 0.5f);
    q.GetRotation(axis, angle);
    ExpectExactly(axis, 0.0f, 0.0f, -1.0f);
    EXPECT_NEAR(angle, 2.0 * pi / 3.0, 1e-6);
}

TEST(Quaternion, GetRotationOfNegativeWPassesTheHalfTurn)
{
    Vector axis;
    float angle = 0.0f;
    Quaternion q(0.0f, 0.0f, std::sqrt(0.75f), -0.5f);
    q.GetRotation(axis, angle);
    ExpectExactly(axis, 0.0f, 0.0f, 1.0f);
    EXPECT_NEAR(angle, 4.0 * pi / 3.0, 1e-6);
}

TEST(Quaternion, FromColumnMajor3x3InvertsTheMatrixUpToSign)
{
    Random random;
    for (int i = 0; i < 1000; ++i)
    {
        const Quaternion q = random.Rotation();
        const Quaternion back = FromColumns(ColumnMajor3x3(RotationOf(q)));
        const double dot = double(q.x) * back.x + double(q.y) * back.y + double(q.z) * back.z +
                           double(q.w) * back.w;
        const double sign = dot < 0.0 ? -1.0 : 1.0;
        ExpectNear(back, sign * q.x, sign * q.y, sign * q.z, sign * q.w, 1e-6);
        EXPECT_NEAR(Norm(back), 1.0, 2e-7);
    }
}

TEST(Quaternion, FromColumnMajor3x3WithPositiveTraceHasPositiveW)
{
    // 60 degrees about an oblique axis; x, y, z keep the signs of the axis.
    const Quaternion q = FromColumns(ColumnMajor3x3(AngleAxisRotation(1.0, -2.0, 3.0, pi / 3.0)));
    const double k = 0.5 / std::sqrt(14.0);
    ExpectNear(q, k, -2.0 * k, 3.0 * k, std::sqrt(0.75), 1e-6);
}

TEST(Quaternion, FromColumnMajor3x3WithLargestXHasPositiveX)
{
    const Matrix4 m = AngleAxisRotation(-3.0, 1.0, -2.0, 0.9 * pi);
    const double s = std::sin(0.45 * pi) / std::sqrt(14.0);
    ExpectNear(FromColumns(ColumnMajor3x3(m)), 3.0 * s, -s, 2.0 * s, -std::cos(0.45 * pi), 1e-6);
}

TEST(Quaternion, FromColumnMajor3x3WithLargestYHasPositiveY)
{
    const Matrix4 m = AngleAxisRotation(1.0, -3.0, -2.0, 0.9 * pi);
    const double s = std::sin(0.45 * pi) / std::sqrt(14.0);
    ExpectNear(FromColumns(ColumnMajor3x3(m)), -s, 3.0 * s, 2.0 * s, -std::cos(0.45 * pi), 1e-6);
}

TEST(Quaternion, FromColumnMajor3x3WithLargestZHasPositiveZ)
{
    const Matrix4 m = AngleAxisRotation(1.0, -2.0, -3.0, 0.9 * pi);
    const double s = std::sin(0.45 * pi) / std::sqrt(14.0);
    ExpectNear(FromColumns(ColumnMajor3x3(m)), -s, 2.0 * s, 3.0 * s, -std::cos(0.45 * pi), 1e-6);
}

TEST(Quaternion, FromColumnMajor3x3ChoosesTheSignByTraceAndLargestDiagonal)
{
    Random random;
    int withoutW = 0;
    for (int i = 0; i < 1000; ++i)
    {
        const Matrix4 m = RotationOf(random.Rotation());
        const double trace = m[0][0] + m[1][1] + m[2][2];
        const Quaternion q = FromColumns(ColumnMajor3x3(m));
        if (trace > 0.001)
        {
            EXPECT_GT(q.w, 0.0f);
        }
        else if (trace < -0.001)
        {
            ++withoutW;
            const double largest = std::max({m[0][0], m[1][1], m[2][2]});
            const float chosen = largest == m[0][0] ? q.x : largest == m[1][1] ? q.y : q.z;
            EXPECT_GT(chosen, 0.0f);
        }
    }
    EXPECT_GT(withoutW, 100);
}

TEST(Quaternion, FromColumnMajor3x3TakesATraceOfZeroAsNotPositive)
{
    // A third of a turn about (-1, -1, -1): with the trace branch w would be positive.
    ExpectExactly(FromColumns({0, 0, 1, 1, 0, 0, 0, 1, 0}), 0.5f, 0.5f, 0.5f, -0.5f);
}

TEST(Quaternion, FromColumnMajor3x3BreaksTiesTowardsTheLaterAxis)
{
    // Half turns about (1, -1, 0), (1, 0, -1), (0, 1, -1): the later of the two is positive.
    ExpectNear(FromColumns({0, -1, 0, -1, 0, 0, 0, 0, -1}), -rootHalf, rootHalf, 0.0, 0.0, 1e-7);
    ExpectNear(FromColumns({0, 0, -1, 0, -1, 0, -1, 0, 0}), -rootHalf, 0.0, rootHalf, 0.0, 1e-7);
    ExpectNear(FromColumns({-1, 0, 0, 0, 0, -1, 0, -1, 0}), 0.0, -rootHalf, rootHalf, 0.0, 1e-7);
}

TEST(Quaternion, FromColumnMajor3x3DividesByTheNormInEveryBranch)
{
    for (const auto& diagonal : {std::array<float, 3>{4, 3, 2}, {4, -3, -2}, {-3, 4, -2}, {-3, -2, 4}})
    {
        // Off the diagonal entries that are no rotation's.
        const Quaternion q = FromColumns({diagonal[0], 0.3f, 0.1f, 0.2f, diagonal[1], 0.4f, 0.5f, -0.6f,
                                          diagonal[2]});
        EXPECT_NEAR(Norm(q), 1.0, 2e-7);
    }
}

TEST(Quaternion, FromRowMajor3x3Transposes)
{
    Random random;
    const Quaternion q = random.Rotation();
    const auto columns = ColumnMajor3x3(RotationOf(q));
    const float rows[9] = {columns[0], columns[3], columns[6], columns[1], columns[4],
                           columns[7], columns[2], columns[5], columns[8]};
    const Quaternion expected = FromColumns(columns);
    Quaternion actual;
    actual.FromRowMajor3x3(rows);
    ExpectExactly(actual, expected.x, expected.y, expected.z, expected.w);
}

TEST(Quaternion, FromThreeVectorsTakesColumns)
{
    Random random;
    const auto m = ColumnMajor3x3(RotationOf(random.Rotation()));
    const Quaternion expected = FromColumns(m);
    Quaternion actual;
    actual.FromThreeVectors(Vector(m[0], m[1], m[2]), Vector(m[3], m[4], m[5]), Vector(m[6], m[7], m[8]));
    ExpectExactly(actual, expected.x, expected.y, expected.z, expected.w);
}

TEST(Quaternion, GetThreeVectorsGivesTheColumns)
{
    Random random;
    for (int i = 0; i < 100; ++i)
    {
        const Quaternion q = random.Rotation();
        const Matrix4 m = RotationOf(q);
        Vector columns[3];
        q.GetThreeVectors(columns[0], columns[1], columns[2]);
        for (int c = 0; c < 3; ++c)
        {
            ExpectNear(columns[c], m[0][c], m[1][c], m[2][c], 1e-6);
        }
    }
}

TEST(Quaternion, GetThreeVectorsNormalisesEachColumn)
{
    const Quaternion q = RawQuaternion(0.3f, 0.5f, 0.7f, 1.1f);
    Matrix3x3 m;
    q.ExtractMatrix(m);
    Vector columns[3];
    q.GetThreeVectors(columns[0], columns[1], columns[2]);
    for (int c = 0; c < 3; ++c)
    {
        const float* column = m.m + c * 3;
        const double length = std::hypot(double(column[0]), double(column[1]), double(column[2]));
        ASSERT_GT(std::fabs(length - 1.0), 0.1);
        ExpectNear(columns[c], column[0] / length, column[1] / length, column[2] / length, 1e-6);
    }
}

TEST(Quaternion, ExtractMatrixGivesTheStatedElements)
{
    // Powers of two make every term exact, and a quaternion off the unit sphere tells apart
    // forms that agree on it.
    const Quaternion q = RawQuaternion(0.5f, 0.25f, 2.0f, 4.0f);
    const float expected[9] = {-7.125f, 16.25f, 0.0f, -15.75f, -7.5f, 5.0f, 4.0f, -3.0f, 0.375f};
    Matrix3x3 m3;
    q.ExtractMatrix(m3);
    for (int i = 0; i < 9; ++i)
    {
        EXPECT_EQ(m3.m[i], expected[i]) << i;
    }
    Matrix m4;
    std::fill(m4.m, m4.m + 16, 7.0f);
    q.ExtractMatrix(m4);
    for (int r = 0; r < 4; ++r)
    {
        for (int c = 0; c < 4; ++c)
        {
            const float element = r < 3 && c < 3 ? expected[c * 3 + r] : r == c ? 1.0f : 0.0f;
            EXPECT_EQ(m4.m[c * 4 + r], element) << r << " " << c;
        }
    }
}

TEST(Quaternion, ExtractMatrixAgreesWithDoublePrecision)
{
    Random random;
    for (int i = 0; i < 500; ++i)
    {
        const Quaternion q = random.Rotation();
        ExpectNear(MatrixOf(q), RotationOf(q), 2e-6);
    }
}

TEST(Quaternion, FromTwoVectorsOfTheSameVectorIsTheIdentity)
{
    Random random;
    for (int i = 0; i < 100; ++i)
    {
        const Vector v = random.UnitVector();
        Quaternion q = RawQuaternion(9.0f, 9.0f, 9.0f, 9.0f);
        q.FromTwoVectors(v, v);
        ExpectExactly(q, 0.0f, 0.0f, 0.0f, 1.0f);
    }
}

TEST(Quaternion, FromTwoVectorsOfOppositeVectorsIsTheHalfTurnAboutY)
{
    Random random;
    for (int i = 0; i < 100; ++i)
    {
        const Vector v = i == 0 ? Vector(0.0f, 1.0f, 0.0f) : random.UnitVector();
        Quaternion q;
        q.FromTwoVectors(v, Vector(-v.x, -v.y, -v.z));
        ExpectExactly(q, 0.0f, 1.0f, 0.0f, 0.0f);
    }
    Quaternion aboutY;
    aboutY.FromTwoVectors(Vector(0.0f, 1.0f, 0.0f), Vector(0.0f, -1.0f, 0.0f));
    Vector moved;
    moved.Multiply(aboutY, Vector(0.0f, 1.0f, 0.0f));
    ExpectExactly(moved, 0.0f, 1.0f, 0.0f);
}

TEST(Quaternion, FromTwoVectorsCarriesTheSecondOntoTheFirst)
{
    Quaternion q;
    q.FromTwoVectors(Vector(1.0f, 0.0f, 0.0f), Vector(0.0f, 1.0f, 0.0f));
    Vector moved;
    moved.Multiply(q, Vector(0.0f, 1.0f, 0.0f));
    ExpectNear(moved, 1.0, 0.0, 0.0, 1e-6);
    moved.Multiply(q, Vector(1.0f, 0.0f, 0.0f));
    ExpectNear(moved, 0.0, -1.0, 0.0, 1e-6);

    Random random;
    for (int i = 0; i < 500; ++i)
    {
        const Vector a = random.UnitVector();
        const Vector b = random.UnitVector();
        if (std::fabs(a.Dot(b)) > 0.999f)
        {
            continue;
        }
        q.FromTwoVectors(a, b);
        moved.Multiply(q, b);
        ExpectNear(moved, a.x, a.y, a.z, 5e-6);
        // The shortest way: the axis is square to both.
        EXPECT_NEAR(Vector(q.x, q.y, q.z).Dot(a), 0.0, 1e-5);
        EXPECT_NEAR(Vector(q.x, q.y, q.z).Dot(b), 0.0, 1e-5);
    }
}

TEST(Quaternion, FromTwoVectorsEndsWhereTheDotPassesItsBounds)
{
    const float lastTurned = 0.999999f;
    const double sine = std::sqrt(1.0 - double(lastTurned) * lastTurned);
    for (const float sign : {1.0f, -1.0f})
    {
        Quaternion q;
        q.FromTwoVectors(Vector(1.0f, 0.0f, 0.0f),
                         Vector(sign * lastTurned, 0.0f, static_cast<float>(sine)));
        EXPECT_NEAR(q.y, std::sin(std::acos(sign * double(lastTurned)) / 2.0), 1e-6);
        EXPECT_NEAR(q.w, std::cos(std::acos(sign * double(lastTurned)) / 2.0), 1e-6);
        EXPECT_NE(q.w, sign > 0 ? 1.0f : 0.0f);
        q.FromTwoVectors(Vector(1.0f, 0.0f, 0.0f),
                         Vector(sign * Above(lastTurned), 0.0f, static_cast<float>(sine)));
        ExpectExactly(q, 0.0f, sign > 0 ? 0.0f : 1.0f, 0.0f, sign > 0 ? 1.0f : 0.0f);
    }
}

TEST(Quaternion, FromTwoVectorsDoesNotNormaliseItsOperands)
{
    // The dot of 0.5 is taken for the cosine, although the vectors stand at 45 degrees.
    Quaternion q;
    q.FromTwoVectors(Vector(0.5f, 0.5f, 0.0f), Vector(1.0f, 0.0f, 0.0f));
    ExpectNear(q, 0.0, 0.0, 0.5, std::sqrt(0.75), 1e-6);
}

TEST(Quaternion, FromTwoVectorsOfTooShortACrossProductIsTheIdentity)
{
    Quaternion q = RawQuaternion(9.0f, 9.0f, 9.0f, 9.0f);
    q.FromTwoVectors(Vector(0.9e-3f, 0.0f, 0.0f), Vector(0.0f, 1.0f, 0.0f));
    ExpectExactly(q, 0.0f, 0.0f, 0.0f, 1.0f);
    q.FromTwoVectors(Vector(1.1e-3f, 0.0f, 0.0f), Vector(0.0f, 1.0f, 0.0f));
    ExpectNear(q, 0.0, 0.0, -rootHalf, rootHalf, 1e-6);
}

TEST(Quaternion, MakeYUpBringsUpBackIntoTheScreenPlane)
{
    Quaternion q;
    q.FromRotation(Vector(0.0f, 0.0f, 1.0f), quarter);
    EXPECT_TRUE(q.MakeYUp(Quaternion()));
    ExpectNear(q, 0.0, 0.0, 0.0, 1.0, 1e-6);

    Random random;
    for (int i = 0; i < 200; ++i)
    {
        q = random.Rotation();
        Vector up;
        up.Multiply(q, Vector(0.0f, 1.0f, 0.0f));
        const double inPlane = std::hypot(double(up.x), double(up.y));
        if (inPlane < 0.1 || up.y / inPlane < -0.999 || up.y / inPlane > 0.999)
        {
            continue;
        }
        EXPECT_TRUE(q.MakeYUp(Quaternion()));
        Vector corrected;
        corrected.Multiply(q, Vector(0.0f, 1.0f, 0.0f));
        ExpectNear(corrected, 0.0, inPlane, up.z, 3e-6);
    }
}

TEST(Quaternion, MakeYUpTurnsByTheArgumentBeforeCorrectingForTheOldUp)
{
    Random random;
    for (int i = 0; i < 200; ++i)
    {
        Quaternion q = random.Rotation();
        const Quaternion r = random.Rotation();
        const Matrix4 before = RotationOf(q);
        const double upX = before[0][1];
        const double upY = before[1][1];
        const double length = std::hypot(upX, upY);
        if (length < 0.1 || std::fabs(upY / length) > 0.999)
        {
            continue;
        }
        const Matrix4 correction = AxisRotation(2, pi / 2.0 - std::atan2(upY, upX));
        EXPECT_TRUE(q.MakeYUp(r));
        ExpectNear(MatrixOf(q), Product(correction, Product(RotationOf(r), before)), 5e-6);
        EXPECT_NEAR(Norm(q), 1.0, 2e-7);
    }
}

TEST(Quaternion, MakeYUpOfUpsideDownTurnsAboutY)
{
    Quaternion q = RawQuaternion(0.0f, 0.0f, 1.0f, 0.0f);
    EXPECT_TRUE(q.MakeYUp(Quaternion()));
    ExpectExactly(q, 1.0f, 0.0f, 0.0f, 0.0f);
}

TEST(Quaternion, MakeYUpNormalises)
{
    Quaternion q;
    EXPECT_TRUE(q.MakeYUp(RawQuaternion(0.0f, 3.0f, 0.0f, 4.0f)));
    ExpectNear(q, 0.0, 0.6, 0.0, 0.8, 1e-7);
}

TEST(Quaternion, MakeYUpMayTurnByItself)
{
    Quaternion q;
    q.FromRotation(Vector(0.0f, 1.0f, 0.0f), 0.5f);
    EXPECT_TRUE(q.MakeYUp(q));
    ExpectNear(q, 0.0, std::sin(0.5), 0.0, std::cos(0.5), 1e-6);
}

TEST(Quaternion, MakeYUpAlongTheLineOfSightIsNotANumber)
{
    Quaternion q = RawQuaternion(rootHalf, 0.0f, 0.0f, rootHalf);
    EXPECT_TRUE(q.MakeYUp(Quaternion()));
    EXPECT_TRUE(std::isnan(q.x) && std::isnan(q.w));
}

TEST(Quaternion, SetEulerAnglesTurnsAboutXThenYThenZ)
{
    Random random;
    for (int i = 0; i < 300; ++i)
    {
        const Vector e = random.AnyVector(7.0);
        Quaternion q;
        q.SetEulerAngles(e);
        ExpectNear(MatrixOf(q), EulerMatrix(e), 3e-6);
    }
}

TEST(Quaternion, SetEulerAnglesHasTheStatedSigns)
{
    // Each angle alone lies on its own axis; a full turn of one gives the opposite quaternion.
    Quaternion q;
    q.SetEulerAngles(Vector(1.0f, 0.0f, 0.0f));
    ExpectExactly(q, std::sin(0.5f), 0.0f, 0.0f, std::cos(0.5f));
    q.SetEulerAngles(Vector(0.0f, 1.0f, 0.0f));
    ExpectExactly(q, 0.0f, std::sin(0.5f), 0.0f, std::cos(0.5f));
    q.SetEulerAngles(Vector(0.0f, 0.0f, 1.0f));
    ExpectExactly(q, 0.0f, 0.0f, std::sin(0.5f), std::cos(0.5f));
    q.SetEulerAngles(Vector(6.2831855f, 0.0f, 0.0f));
    ExpectNear(q, 0.0, 0.0, 0.0, -1.0, 1e-6);
}

TEST(Quaternion, GetEulerAnglesInvertsSetEulerAngles)
{
    Random random;
    for (int i = 0; i < 500; ++i)
    {
        const Vector e(static_cast<float>(random.Between(0.001, 6.28)),
                       static_cast<float>(random.Between(-1.4, 1.4)),
                       static_cast<float>(random.Between(0.001, 6.28)));
        Quaternion q;
        q.SetEulerAngles(e);
        Vector back;
        q.GetEulerAngles(back);
        ExpectNear(back, e.x, e.y < 0.0f ? e.y + 2.0 * pi : e.y, e.z, 1e-5);
    }
}

TEST(Quaternion, GetEulerAnglesIsNeverNegative)
{
    Random random;
    for (int i = 0; i < 2000; ++i)
    {
        const Quaternion q = random.Rotation();
        Vector e;
        q.GetEulerAngles(e);
        for (unsigned int k = 0; k < 3; ++k)
        {
            EXPECT_GE(e[k], 0.0f);
            EXPECT_LE(e[k], 6.2831855f);
        }
        ExpectNear(EulerMatrix(e), RotationOf(q), 5e-5);
    }
}

TEST(Quaternion, GetEulerAnglesWrapsByAFullTurn)
{
    Quaternion q;
    Vector e;
    for (unsigned int k = 0; k < 3; ++k)
    {
        Vector angles;
        angles[k] = -0.5f;
        q.SetEulerAngles(angles);
        q.GetEulerAngles(e);
        Vector expected;
        expected[k] = static_cast<float>(2.0 * pi - 0.5);
        ExpectNear(e, expected.x, expected.y, expected.z, 1e-6);
    }
    // A negative angle too small to matter ends at the full turn itself.
    q = RawQuaternion(-1e-9f, 0.0f, 0.0f, 1.0f);
    q.GetEulerAngles(e);
    ExpectExactly(e, 6.2831855f, 0.0f, 0.0f);
}

TEST(Quaternion, GetEulerAnglesAtTheUpperGimbal)
{
    // Exactly a quarter turn about Y: cos is not above 1e-6. x takes x - z.
    Quaternion q = RawQuaternion(0.0f, rootHalf, 0.0f, rootHalf);
    Vector e(9.0f, 9.0f, 9.0f);
    q.GetEulerAngles(e);
    ExpectNear(e, 0.0, pi / 2.0, 0.0, 1e-6);
    EXPECT_EQ(e.z, 0.0f);

    Quaternion aboutX;
    aboutX.FromRotation(Vector(1.0f, 0.0f, 0.0f), 0.5f);
    q.Multiply(RawQuaternion(0.0f, rootHalf, 0.0f, rootHalf), aboutX);
    q.GetEulerAngles(e);
    EXPECT_EQ(e.z, 0.0f);
    ExpectNear(e, 0.5, pi / 2.0, 0.0, 1e-3);

    Quaternion aboutZ;
    aboutZ.FromRotation(Vector(0.0f, 0.0f, 1.0f), 0.5f);
    q.Multiply(aboutZ, RawQuaternion(0.0f, rootHalf, 0.0f, rootHalf));
    q.GetEulerAngles(e);
    EXPECT_EQ(e.z, 0.0f);
    ExpectNear(e, 2.0 * pi - 0.5, pi / 2.0, 0.0, 1e-3);
}

TEST(Quaternion, GetEulerAnglesAtTheLowerGimbal)
{
    const Quaternion down = RawQuaternion(0.0f, -rootHalf, 0.0f, rootHalf);
    Vector e(9.0f, 9.0f, 9.0f);
    down.GetEulerAngles(e);
    ExpectNear(e, 0.0, 1.5 * pi, 0.0, 1e-6);

    for (const float turn : {0.5f, -0.5f})
    {
        const double wrapped = turn < 0.0f ? 2.0 * pi + turn : turn;
        Quaternion aboutX;
        aboutX.FromRotation(Vector(1.0f, 0.0f, 0.0f), turn);
        Quaternion q;
        q.Multiply(down, aboutX);
        q.GetEulerAngles(e);
        EXPECT_EQ(e.z, 0.0f);
        ExpectNear(e, wrapped, 1.5 * pi, 0.0, 1e-3);

        Quaternion aboutZ;
        aboutZ.FromRotation(Vector(0.0f, 0.0f, 1.0f), turn);
        q.Multiply(aboutZ, down);
        q.GetEulerAngles(e);
        EXPECT_EQ(e.z, 0.0f);
        ExpectNear(e, wrapped, 1.5 * pi, 0.0, 1e-3);
    }
}

TEST(Quaternion, GetEulerAnglesAtExactlyAQuarterTurn)
{
    Vector e;
    RawQuaternion(-0.5f, 0.5f, 0.5f, 0.5f).GetEulerAngles(e);
    EXPECT_EQ(e.y, quarter);
    ExpectNear(e, 1.5 * pi, pi / 2.0, 0.0, 1e-6);
    RawQuaternion(0.5f, 0.5f, 0.5f, -0.5f).GetEulerAngles(e);
    EXPECT_EQ(e.y, 6.2831855f - quarter);
    ExpectNear(e, 1.5 * pi, 1.5 * pi, 0.0, 1e-6);
}

TEST(Quaternion, InterpolateFollowsTheArc)
{
    Random random;
    for (int i = 0; i < 300; ++i)
    {
        const Vector axis = random.UnitVector();
        const double angle = random.Between(0.8, 3.0);
        const double t = random.Between(0.0, 1.0);
        Quaternion b;
        b.FromRotation(axis, static_cast<float>(angle));
        Quaternion q;
        q.Interpolate(Quaternion(), b, static_cast<float>(t));
        const double sine = std::sin(angle * t / 2.0);
        ExpectNear(q, axis.x * sine, axis.y * sine, axis.z * sine, std::cos(angle * t / 2.0), 2e-6);
    }
}

TEST(Quaternion, InterpolateTakesTheShorterArcByNegatingTheFirst)
{
    const Quaternion a = AboutX(0.5);
    const Quaternion b = RawQuaternion(0.0f, 0.0f, 0.0f, -1.0f);
    Quaternion q;
    q.Interpolate(a, b, 0.0f);
    ExpectNear(q, -a.x, 0.0, 0.0, -a.w, 1e-6);
    q.Interpolate(a, b, 0.5f);
    ExpectNear(q, -std::sin(pi / 6.0), 0.0, 0.0, -std::cos(pi / 6.0), 1e-6);
    q.Interpolate(a, b, 1.0f);
    ExpectNear(q, 0.0, 0.0, 0.0, -1.0, 1e-6);
}

TEST(Quaternion, InterpolateOfRightAnglesIsNotNegated)
{
    Quaternion q;
    q.Interpolate(RawQuaternion(1.0f, 0.0f, 0.0f, 0.0f), Quaternion(), 0.0f);
    ExpectNear(q, 1.0, 0.0, 0.0, 0.0, 1e-6);
}

TEST(Quaternion, InterpolateIsLinearBetweenCloseOnes)
{
    const Quaternion a;
    const Quaternion close = AboutX(0.9501);
    const Quaternion distant = AboutX(0.9499);
    Quaternion q;
    q.Interpolate(a, close, 0.25f);
    ExpectNear(q, 0.25 * close.x, 0.0, 0.0, 0.75 + 0.25 * close.w, 1e-7);
    EXPECT_LT(Norm(q), 0.995);

    q.Interpolate(a, distant, 0.25f);
    const double theta = std::acos(0.9499);
    ExpectNear(q, std::sin(0.25 * theta), 0.0, 0.0, std::cos(0.25 * theta), 1e-6);
}

TEST(Quaternion, InterpolateDoesNotNormaliseItsOperands)
{
    Quaternion q;
    q.Interpolate(RawQuaternion(0.0f, 0.0f, 0.0f, 2.0f), RawQuaternion(0.0f, 0.0f, 0.0f, 4.0f), 0.5f);
    ExpectExactly(q, 0.0f, 0.0f, 0.0f, 3.0f);
}

TEST(Quaternion, InterpolateClampsToTheEnds)
{
    Random random;
    for (int i = 0; i < 50; ++i)
    {
        const Quaternion a = random.Rotation();
        const Quaternion b = random.Rotation();
        Quaternion atStart;
        Quaternion atEnd;
        atStart.Interpolate(a, b, 0.0f);
        atEnd.Interpolate(a, b, 1.0f);
        const double sign = HamiltonProduct(a, RawQuaternion(-b.x, -b.y, -b.z, b.w))[3] < 0.0 ? -1.0 : 1.0;
        ExpectNear(atStart, sign * a.x, sign * a.y, sign * a.z, sign * a.w, 1e-6);
        ExpectNear(atEnd, b.x, b.y, b.z, b.w, 1e-6);
        Quaternion q;
        for (const float t : {-1e-30f, -0.5f, -1000.0f})
        {
            q.Interpolate(a, b, t);
            ExpectExactly(q, atStart.x, atStart.y, atStart.z, atStart.w);
        }
        for (const float t : {Above(1.0f), 1.5f, 1000.0f})
        {
            q.Interpolate(a, b, t);
            ExpectExactly(q, atEnd.x, atEnd.y, atEnd.z, atEnd.w);
        }
    }
}

TEST(Quaternion, InterpolateTowardsNotANumberTurnsToAPerpendicular)
{
    const Quaternion a = RawQuaternion(0.1f, 0.2f, 0.3f, 0.4f);
    const Quaternion b = RawQuaternion(notANumber, notANumber, notANumber, notANumber);
    Quaternion q;
    q.Interpolate(a, b, 0.25f);
    const double fromWeight = std::sin(0.25 * pi);
    const double toWeight = std::sin(0.25 * pi);
    ExpectNear(q, fromWeight * 0.1 - toWeight * 0.2, fromWeight * 0.2 + toWeight * 0.1,
               fromWeight * 0.3 - toWeight * 0.4, fromWeight * 0.4 + toWeight * 0.3, 1e-6);
    q.Interpolate(a, b, 0.75f);
    const double back = std::sin(-0.25 * pi);
    const double on = std::sin(0.75 * pi);
    ExpectNear(q, back * 0.1 - on * 0.2, back * 0.2 + on * 0.1, back * 0.3 - on * 0.4,
               back * 0.4 + on * 0.3, 1e-6);
}

TEST(Quaternion, InterpolateMayOverwriteEitherOperand)
{
    Random random;
    for (int i = 0; i < 50; ++i)
    {
        const Quaternion a = random.Rotation();
        const Quaternion b = random.Rotation();
        Quaternion expected;
        expected.Interpolate(a, b, 0.3f);
        Quaternion first = a;
        first.Interpolate(first, b, 0.3f);
        ExpectExactly(first, expected.x, expected.y, expected.z, expected.w);
        Quaternion second = b;
        second.Interpolate(a, second, 0.3f);
        ExpectExactly(second, expected.x, expected.y, expected.z, expected.w);
    }
}

TEST(Quaternion, EqualityEndsAtAMillionthInEveryComponent)
{
    const Quaternion zero = RawQuaternion(0.0f, 0.0f, 0.0f, 0.0f);
    for (int i = 0; i < 4; ++i)
    {
        for (const float sign : {1.0f, -1.0f})
        {
            Quaternion q = zero;
            float* const components[4] = {&q.x, &q.y, &q.z, &q.w};
            *components[i] = sign * 1e-6f;
            EXPECT_TRUE(q == zero) << i;
            EXPECT_FALSE(q != zero) << i;
            *components[i] = sign * Above(1e-6f);
            EXPECT_FALSE(q == zero) << i;
            EXPECT_TRUE(q != zero) << i;
        }
    }
}

TEST(Quaternion, EqualityComparesEachComponentWithItsOwn)
{
    const Quaternion q = RawQuaternion(1.0f, 2.0f, 3.0f, 4.0f);
    EXPECT_TRUE(q == RawQuaternion(1.0f, 2.0f, 3.0f, 4.0f));
    EXPECT_FALSE(q == RawQuaternion(-1.0f, 2.0f, 3.0f, 4.0f));
    EXPECT_FALSE(q == RawQuaternion(1.0f, -2.0f, 3.0f, 4.0f));
    EXPECT_FALSE(q == RawQuaternion(1.0f, 2.0f, -3.0f, 4.0f));
    EXPECT_FALSE(q == RawQuaternion(1.0f, 2.0f, 3.0f, -4.0f));
}

TEST(Quaternion, EqualityTakesNotANumberAsEqual)
{
    EXPECT_TRUE(RawQuaternion(notANumber, notANumber, notANumber, notANumber) == Quaternion());
    EXPECT_FALSE(RawQuaternion(notANumber, notANumber, notANumber, 0.0f) == Quaternion());
}

TEST(Quaternion, EqualityTellsTheOppositeQuaternionApart)
{
    EXPECT_TRUE(Quaternion() != RawQuaternion(0.0f, 0.0f, 0.0f, -1.0f));
}
