#include "orvane/math/Transform.h"

#include "tests/math/MathTesting.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <random>
#include <type_traits>

using namespace MathTesting;
using OV::Matrix;
using OV::Quaternion;
using OV::Transform;
using OV::Vector;

namespace
{

constexpr Matrix4 counting = {{{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}, {13, 14, 15, 16}}};

Transform Diagonal(double x, double y, double z)
{
    Matrix4 m = Identity4();
    m[0][0] = x;
    m[1][1] = y;
    m[2][2] = z;
    return MakeTransform(m);
}

Transform Rotated(const Quaternion& q)
{
    Transform t;
    t.SetRotation(q);
    return t;
}

Quaternion SomeRotation()
{
    return Quaternion(0.1f, -0.5f, 0.3f, 0.7f);
}

double ColumnLength(const Matrix4& m, int c)
{
    return std::hypot(m[0][c], m[1][c], m[2][c]);
}

/// Whether both are the same number, with the same sign of zero, or neither is a number.
template <class Number>
bool IsSame(Number a, Number b)
{
    return std::isnan(a) ? std::isnan(b) : a == b && std::signbit(a) == std::signbit(b);
}

void ExpectSameProduct(const Transform& product, const Matrix& inFloats, const Transform& a, const Transform& b)
{
    Transform expected;
    expected.Multiply(a, b);
    Matrix expectedInFloats;
    expected.ExtractMatrix(expectedInFloats);
    for (int i = 0; i < 16; ++i)
    {
        EXPECT_TRUE(IsSame(product.GetTransf3d().m[i / 4][i % 4], expected.GetTransf3d().m[i / 4][i % 4])) << i;
        EXPECT_TRUE(IsSame(inFloats.m[i], expectedInFloats.m[i])) << i;
    }
}

} // namespace

TEST(Transform, HoldsOneTransf3dAndNothingElse)
{
    EXPECT_EQ(sizeof(Transform), sizeof(QGM::Transf3d));
    EXPECT_TRUE(std::is_trivially_copyable_v<Transform>);
}

TEST(Transform, DefaultIsTheIdentity)
{
    EXPECT_EQ(Elements(Transform()), Identity4());
}

TEST(Transform, AssignmentCopiesAllOfIt)
{
    const Transform source = MakeTransform(counting);
    Transform copied;
    copied = source;
    EXPECT_EQ(Elements(copied), counting);
    Transform moved;
    moved = std::move(copied);
    EXPECT_EQ(Elements(moved), counting);
}

TEST(Transform, GetTransf3dRefersToTheMember)
{
    Transform t;
    const QGM::Transf3d& inside = t.GetTransf3d();
    t.SetTransf3d(MakeTransf3d(counting));
    EXPECT_EQ(Elements(inside), counting);
    EXPECT_EQ(static_cast<const void*>(&inside), static_cast<const void*>(&t));
}

TEST(Transform, IdentityOverwritesEverything)
{
    Transform t = MakeTransform(counting);
    t.Identity();
    EXPECT_EQ(Elements(t), Identity4());
}

TEST(Transform, MultiplyLetsTheRightOperandActFirst)
{
    Random random;
    for (int i = 0; i < 200; ++i)
    {
        const Matrix4 a = random.AffineMatrix();
        const Matrix4 b = random.AffineMatrix();
        Transform t = MakeTransform(counting);
        t.Multiply(MakeTransform(a), MakeTransform(b));
        ExpectNear(Elements(t), Product(a, b), 1e-10);
    }
}

TEST(Transform, MultiplyMayOverwriteEitherOperand)
{
    Random random;
    const Matrix4 a = random.AnyMatrix();
    const Matrix4 b = random.AnyMatrix();
    Transform first = MakeTransform(a);
    first.Multiply(first, MakeTransform(b));
    ExpectNear(Elements(first), Product(a, b), 1e-13);
    Transform second = MakeTransform(b);
    second.Multiply(MakeTransform(a), second);
    ExpectNear(Elements(second), Product(a, b), 1e-13);
    Transform both = MakeTransform(a);
    both.Multiply(both, both);
    ExpectNear(Elements(both), Product(a, a), 1e-13);
}

TEST(Transform, MultiplyWithFloatsGivesWhatMultiplyAndExtractMatrixGive)
{
    std::mt19937 dice(3);
    const double special[] = {0.0, -0.0, 1.0, -1.0, 1e300, -1e300, 1e-300, HUGE_VAL, std::nan("")};
    std::uniform_real_distribution<double> plain(-100.0, 100.0);
    for (int round = 0; round < 1000; ++round)
    {
        Matrix4 elements[2];
        for (Matrix4& matrix : elements)
        {
            for (auto& row : matrix)
            {
                for (double& element : row)
                {
                    element = dice() % 20 < static_cast<unsigned>(round % 4) ? special[dice() % std::size(special)]
                                                                             : plain(dice);
                }
            }
        }
        const Transform a = MakeTransform(elements[0]);
        const Transform b = MakeTransform(elements[1]);
        Matrix inFloats;
        Transform product;
        product.Multiply(a, b, inFloats);
        ExpectSameProduct(product, inFloats, a, b);
        product = a;
        product.Multiply(product, b, inFloats);
        ExpectSameProduct(product, inFloats, a, b);
        product = b;
        product.Multiply(a, product, inFloats);
        ExpectSameProduct(product, inFloats, a, b);
        product.Multiply(product, product, inFloats);
        Transform ab;
        ab.Multiply(a, b);
        ExpectSameProduct(product, inFloats, ab, ab);
    }
}

TEST(Transform, InvertMayOverwriteItsOperand)
{
    Random random;
    const Matrix4 m = random.AffineMatrix();
    Transform t;
    t.Invert(MakeTransform(m));
    ExpectNear(Elements(t), Inverse(m), 1e-9);
    t.Invert(t);
    ExpectNear(Elements(t), m, 1e-9);
}

TEST(Transform, PositionIsTheTranslationColumn)
{
    Transform t = MakeTransform(counting);
    ExpectExactly(t.GetPosition(), 4.0f, 8.0f, 12.0f);
    t.SetPosition(Vector(0.1f, -20.0f, 30.0f));
    Matrix4 expected = counting;
    expected[0][3] = static_cast<double>(0.1f);
    expected[1][3] = -20.0;
    expected[2][3] = 30.0;
    EXPECT_EQ(Elements(t), expected);
}

TEST(Transform, PositionIsNarrowedOnTheWayOut)
{
    Matrix4 m = Identity4();
    m[0][3] = 0.1;
    m[1][3] = 16777217.0;
    m[2][3] = -1.0 / 3.0;
    ExpectExactly(MakeTransform(m).GetPosition(), 0.1f, 16777216.0f, -1.0f / 3.0f);
}

TEST(Transform, GetScaleGivesTheLengthsOfTheColumns)
{
    ExpectExactly(Diagonal(2.0, 3.0, 4.0).GetScale(), 2.0f, 3.0f, 4.0f);
    Matrix4 m = counting;
    const Vector scale = MakeTransform(m).GetScale();
    EXPECT_EQ(std::fabs(scale.x), static_cast<float>(ColumnLength(m, 0)));
    EXPECT_EQ(scale.y, static_cast<float>(ColumnLength(m, 1)));
    EXPECT_EQ(scale.z, static_cast<float>(ColumnLength(m, 2)));
}

TEST(Transform, GetScaleReportsAnyMirrorOnX)
{
    ExpectExactly(Diagonal(-2.0, 3.0, 4.0).GetScale(), -2.0f, 3.0f, 4.0f);
    ExpectExactly(Diagonal(2.0, -3.0, 4.0).GetScale(), -2.0f, 3.0f, 4.0f);
    ExpectExactly(Diagonal(2.0, 3.0, -4.0).GetScale(), -2.0f, 3.0f, 4.0f);
    ExpectExactly(Diagonal(-2.0, -3.0, 4.0).GetScale(), 2.0f, 3.0f, 4.0f);
    ExpectExactly(Diagonal(-2.0, -3.0, -4.0).GetScale(), -2.0f, 3.0f, 4.0f);
}

TEST(Transform, GetMaxScaleIsTheLargestAbsoluteScale)
{
    EXPECT_EQ(Diagonal(-4.0, 3.0, 2.0).GetMaxScale(), 4.0f);
    EXPECT_EQ(Diagonal(2.0, -4.0, 3.0).GetMaxScale(), 4.0f);
    EXPECT_EQ(Diagonal(2.0, 3.0, 4.0).GetMaxScale(), 4.0f);
    EXPECT_EQ(Diagonal(4.0, 4.0, 3.0).GetMaxScale(), 4.0f);
    EXPECT_EQ(Diagonal(3.0, 4.0, 4.0).GetMaxScale(), 4.0f);
    EXPECT_EQ(Diagonal(0.0, 0.0, 0.0).GetMaxScale(), 0.0f);
    Random random;
    for (int i = 0; i < 300; ++i)
    {
        const Transform t = MakeTransform(random.AffineMatrix(i % 2 == 1));
        const Vector s = t.GetScale();
        EXPECT_EQ(t.GetMaxScale(), std::max({std::fabs(s.x), std::fabs(s.y), std::fabs(s.z)}));
    }
}

TEST(Transform, SetScaleGivesTheColumnsNewLengthsInDouble)
{
    Random random;
    for (int i = 0; i < 200; ++i)
    {
        const Matrix4 m = random.AffineMatrix();
        const Vector s(0.3f, 1.7f, 123.4f);
        Transform t = MakeTransform(m);
        t.SetScale(s);
        Matrix4 expected = m;
        for (int c = 0; c < 3; ++c)
        {
            for (int r = 0; r < 3; ++r)
            {
                expected[r][c] = m[r][c] / ColumnLength(m, c) * static_cast<double>(s[c]);
            }
        }
        ExpectNear(Elements(t), expected, 1e-12);
    }
}

TEST(Transform, SetScaleLeavesTranslationAndLastRow)
{
    Transform t = MakeTransform(counting);
    t.SetScale(Vector(2.0f, 3.0f, 4.0f));
    const Matrix4 m = Elements(t);
    EXPECT_EQ(m[0][3], 4.0);
    EXPECT_EQ(m[1][3], 8.0);
    EXPECT_EQ(m[2][3], 12.0);
    EXPECT_EQ(m[3], counting[3]);
}

TEST(Transform, SetScaleNegativeXMakesAMirrorOnce)
{
    Transform t = Rotated(SomeRotation());
    const Matrix4 rotation = Elements(t);
    t.SetScale(Vector(-1.0f, 1.0f, 1.0f));
    EXPECT_TRUE(t.GetTransf3d().isMirror());
    EXPECT_NEAR(t.GetScale().x, -1.0, 1e-6);
    for (int r = 0; r < 3; ++r)
    {
        EXPECT_NEAR(Elements(t)[r][0], -rotation[r][0], 1e-6);
        EXPECT_NEAR(Elements(t)[r][1], rotation[r][1], 1e-6);
    }

    Transform unmirrored = t;
    unmirrored.SetScale(Vector(1.0f, 1.0f, 1.0f));
    EXPECT_FALSE(unmirrored.GetTransf3d().isMirror());
    ExpectNear(Elements(unmirrored), rotation, 1e-6);

    Transform stillMirrored = t;
    stillMirrored.SetScale(Vector(-2.0f, 1.0f, 1.0f));
    EXPECT_TRUE(stillMirrored.GetTransf3d().isMirror());
    EXPECT_NEAR(stillMirrored.GetScale().x, -2.0, 1e-6);
    for (int r = 0; r < 3; ++r)
    {
        EXPECT_NEAR(Elements(stillMirrored)[r][0], -2.0 * rotation[r][0], 1e-6);
    }
}

TEST(Transform, SetScaleZeroXLeavesAZeroColumnThatStaysZero)
{
    Transform t = Rotated(SomeRotation());
    t.SetScale(Vector(-1.0f, 1.0f, 1.0f));
    const Matrix4 before = Elements(t);
    t.SetScale(Vector(0.0f, 1.0f, 1.0f));
    for (int r = 0; r < 3; ++r)
    {
        EXPECT_EQ(Elements(t)[r][0], 0.0);
        EXPECT_NEAR(Elements(t)[r][1], before[r][1], 1e-12);
        EXPECT_NEAR(Elements(t)[r][2], before[r][2], 1e-12);
    }
    EXPECT_FALSE(t.GetTransf3d().isMirror());
    EXPECT_EQ(t.GetScale().x, 0.0f);
    t.SetScale(Vector(1.0f, 1.0f, 1.0f));
    EXPECT_EQ(t.GetScale().x, 0.0f);
}

TEST(Transform, SetScaleZeroXNeverFlips)
{
    // -0.0 would show a sign that the zero column got from a flip.
    Transform t = Diagonal(-1.0, 1.0, 1.0);
    t.SetScale(Vector(0.0f, 1.0f, 1.0f));
    EXPECT_TRUE(std::signbit(Elements(t)[0][0]));
    t = Diagonal(1.0, 1.0, 1.0);
    t.SetScale(Vector(-0.0f, 1.0f, 1.0f));
    EXPECT_FALSE(std::signbit(Elements(t)[0][0]));
}

TEST(Transform, SetScaleIgnoresTheSignsOfYAndZ)
{
    Transform positive = Rotated(SomeRotation());
    positive.SetScale(Vector(1.0f, 1.0f, 1.0f));
    for (const Vector& s : {Vector(1.0f, -1.0f, 1.0f), Vector(1.0f, 1.0f, -1.0f), Vector(1.0f, -1.0f, -1.0f)})
    {
        Transform t = Rotated(SomeRotation());
        t.SetScale(s);
        EXPECT_EQ(Elements(t), Elements(positive));
    }
}

TEST(Transform, GetRotationDropsScaleAndMirror)
{
    Random random;
    for (int i = 0; i < 300; ++i)
    {
        const Quaternion q = random.Rotation();
        Transform t = Rotated(q);
        t.SetScale(Vector(i % 2 ? -0.2f : 0.2f, 3.0f, 10.0f));
        t.SetPosition(Vector(1.0f, 2.0f, 3.0f));
        ExpectNear(RotationOf(t.GetRotation()), RotationOf(q), 5e-6);
    }
}

TEST(Transform, GetRotationOfAMirrorTurnsItsXAxisRound)
{
    // diag(1, 1, -1) is read as the half turn about Y of a mirror along X.
    const Quaternion q = Diagonal(1.0, 1.0, -1.0).GetRotation();
    ExpectExactly(q, 0.0f, 1.0f, 0.0f, 0.0f);
}

TEST(Transform, GetRotationOfAFlatTransformIsNotANumber)
{
    const Quaternion q = Diagonal(0.0, 1.0, 1.0).GetRotation();
    EXPECT_TRUE(std::isnan(q.x));
}

TEST(Transform, SetRotationKeepsPositionScaleAndMirror)
{
    Random random;
    for (int i = 0; i < 200; ++i)
    {
        const Matrix4 m = random.AffineMatrix(i % 2 == 1);
        const Quaternion q = random.Rotation();
        const Matrix4 rotation = RotationOf(q);
        Transform t = MakeTransform(m);
        t.SetRotation(q);
        Matrix4 expected = m;
        for (int c = 0; c < 3; ++c)
        {
            const double sign = c == 0 && i % 2 == 1 ? -1.0 : 1.0;
            for (int r = 0; r < 3; ++r)
            {
                expected[r][c] = rotation[r][c] * ColumnLength(m, c) * sign;
            }
        }
        ExpectNear(Elements(t), expected, 3e-5);
        EXPECT_EQ(t.GetTransf3d().isMirror(), i % 2 == 1);
    }
}

TEST(Transform, SetRotationLeavesTranslationAndLastRow)
{
    Transform t = MakeTransform(counting);
    t.SetRotation(SomeRotation());
    const Matrix4 m = Elements(t);
    EXPECT_EQ(m[0][3], 4.0);
    EXPECT_EQ(m[1][3], 8.0);
    EXPECT_EQ(m[2][3], 12.0);
    EXPECT_EQ(m[3], counting[3]);
}

TEST(Transform, ExtractMatrixNarrowsAllElementsColumnByColumn)
{
    Random random;
    const Matrix4 source = random.AnyMatrix();
    for (const bool flag : {false, true})
    {
        Matrix m;
        MakeTransform(source).ExtractMatrix(m, flag);
        for (int r = 0; r < 4; ++r)
        {
            for (int c = 0; c < 4; ++c)
            {
                EXPECT_EQ(m.m[c * 4 + r], static_cast<float>(source[r][c]));
            }
        }
    }
}

TEST(Transform, ExtractRot3x3NarrowsTheLinearPart)
{
    float out[10] = {};
    out[9] = 77.0f;
    MakeTransform(counting).ExtractRot3x3(out);
    for (int r = 0; r < 3; ++r)
    {
        for (int c = 0; c < 3; ++c)
        {
            EXPECT_EQ(out[c * 3 + r], static_cast<float>(counting[r][c]));
        }
    }
    EXPECT_EQ(out[9], 77.0f);
}

TEST(Transform, ExtractAffineInverseTranspose3x3GivesTheNormalMatrix)
{
    Random random;
    for (int i = 0; i < 200; ++i)
    {
        const Matrix4 m = random.AffineMatrix(i % 2 == 1);
        const Matrix4 inverse = Inverse(m);
        float out[10] = {};
        out[9] = 77.0f;
        MakeTransform(m).ExtractAffineInverseTranspose3x3(out);
        for (int r = 0; r < 3; ++r)
        {
            for (int c = 0; c < 3; ++c)
            {
                EXPECT_NEAR(out[c * 3 + r], inverse[c][r], 2e-6);
            }
        }
        EXPECT_EQ(out[9], 77.0f);
    }
}

TEST(Transform, FromColumnMajor4x4TakesAllSixteen)
{
    float m[16];
    for (int i = 0; i < 16; ++i)
    {
        m[i] = 0.1f * static_cast<float>(i);
    }
    for (const bool flag : {false, true})
    {
        Transform t;
        t.FromColumnMajor4x4(m, flag);
        for (int r = 0; r < 4; ++r)
        {
            for (int c = 0; c < 4; ++c)
            {
                EXPECT_EQ(Elements(t)[r][c], static_cast<double>(m[c * 4 + r]));
            }
        }
    }
}

TEST(Transform, FromRowMajor4x4TakesAllSixteen)
{
    float m[16];
    for (int i = 0; i < 16; ++i)
    {
        m[i] = 0.1f * static_cast<float>(i);
    }
    for (const bool flag : {false, true})
    {
        Transform t;
        t.FromRowMajor4x4(m, flag);
        for (int r = 0; r < 4; ++r)
        {
            for (int c = 0; c < 4; ++c)
            {
                EXPECT_EQ(Elements(t)[r][c], static_cast<double>(m[r * 4 + c]));
            }
        }
    }
}

TEST(Transform, EyeLookUpLooksDownItsNegativeZ)
{
    Transform t = MakeTransform(counting);
    t.EyeLookUp(Vector(1.0f, 2.0f, 13.0f), Vector(1.0f, 2.0f, 3.0f), Vector(0.0f, 7.0f, 0.0f));
    Matrix4 expected = Identity4();
    expected[0][3] = 1.0;
    expected[1][3] = 2.0;
    expected[2][3] = 13.0;
    EXPECT_EQ(Elements(t), expected);

    t.EyeLookUp(Vector(), Vector(5.0f, 0.0f, 0.0f), Vector(0.0f, 0.0f, 1.0f));
    const Matrix4 alongX = {{{0, 0, -1, 0}, {-1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 0, 1}}};
    ExpectNear(Elements(t), alongX, 0.0);
}

TEST(Transform, EyeLookUpBuildsARightHandedFrame)
{
    Random random;
    for (int i = 0; i < 200; ++i)
    {
        const Vector eye = random.AnyVector();
        const Vector direction = random.UnitVector();
        const Vector up = random.UnitVector();
        Vector side;
        side.Cross(direction, up);
        if (side.Magnitude() < 0.1f)
        {
            continue;
        }
        Vector at;
        at.Add(eye, direction);
        Transform t;
        t.EyeLookUp(eye, at, up);
        const Matrix4 m = Elements(t);
        const Matrix4 inverse = Inverse(m);
        const Vector4 target = Apply(inverse, {at.x, at.y, at.z, 1.0});
        EXPECT_NEAR(target[0], 0.0, 5e-6);
        EXPECT_NEAR(target[1], 0.0, 5e-6);
        EXPECT_NEAR(target[2], -1.0, 5e-6);
        const Vector4 upSeen = Apply(inverse, {up.x, up.y, up.z, 0.0});
        EXPECT_NEAR(upSeen[0], 0.0, 5e-6);
        EXPECT_GT(upSeen[1], 0.0);
        EXPECT_FALSE(t.GetTransf3d().isMirror());
        for (int c = 0; c < 3; ++c)
        {
            EXPECT_NEAR(ColumnLength(m, c), 1.0, 1e-6);
        }
    }
}

TEST(Transform, EyeLookUpHasNoGuards)
{
    Transform parallel;
    parallel.EyeLookUp(Vector(0.0f, 0.0f, 1.0f), Vector(), Vector(0.0f, 0.0f, 1.0f));
    EXPECT_TRUE(std::isnan(Elements(parallel)[0][0]));
    Transform nowhere;
    nowhere.EyeLookUp(Vector(1.0f, 2.0f, 3.0f), Vector(1.0f, 2.0f, 3.0f), Vector(0.0f, 1.0f, 0.0f));
    EXPECT_TRUE(std::isnan(Elements(nowhere)[2][2]));
    EXPECT_EQ(nowhere.GetPosition().y, 2.0f);
}

TEST(Transform, EqualityToleratesABillionthOfAThousandth)
{
    for (int r = 0; r < 4; ++r)
    {
        for (int c = 0; c < 4; ++c)
        {
            Matrix4 m{};
            const Transform zero = MakeTransform(m);
            m[r][c] = 1e-12;
            EXPECT_TRUE(MakeTransform(m) == zero);
            EXPECT_FALSE(MakeTransform(m) != zero);
            m[r][c] = std::nextafter(1e-12, 1.0);
            EXPECT_FALSE(MakeTransform(m) == zero);
            EXPECT_TRUE(MakeTransform(m) != zero);
            m[r][c] = -1.1e-12;
            EXPECT_FALSE(MakeTransform(m) == zero);
        }
    }
}
