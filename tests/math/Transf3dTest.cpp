#include "orvane/math/Transf3d.h"

#include "tests/math/MathTesting.h"

#include <algorithm>
#include <type_traits>

using namespace MathTesting;
using QGM::Point3d;
using QGM::Transf3d;
using QGM::Vector3d;

// Usable in a constant expression, so that no start-up order can find it unset.
static_assert(Transf3d::kIdentity.m[0][0] == 1.0 && Transf3d::kIdentity.m[3][3] == 1.0);
static_assert(Transf3d::kIdentity.m[0][1] == 0.0 && Transf3d::kIdentity.m[2][3] == 0.0);

namespace
{

bool AnyFinite(const Matrix4& m, int rows)
{
    for (int r = 0; r < rows; ++r)
    {
        for (int c = 0; c < rows; ++c)
        {
            if (std::isfinite(m[r][c]))
            {
                return true;
            }
        }
    }
    return false;
}

} // namespace

TEST(Transf3d, StartsWithSixteenDoublesInRows)
{
    Transf3d t;
    EXPECT_TRUE(std::is_standard_layout_v<Transf3d>);
    EXPECT_TRUE(std::is_trivially_copyable_v<Transf3d>);
    for (int r = 0; r < 4; ++r)
    {
        for (int c = 0; c < 4; ++c)
        {
            EXPECT_EQ(reinterpret_cast<const double*>(&t) + r * 4 + c, &t.m[r][c]);
        }
    }
}

TEST(Transf3d, DefaultAndConstantAreTheIdentity)
{
    EXPECT_EQ(Elements(Transf3d()), Identity4());
    EXPECT_EQ(Elements(Transf3d::kIdentity), Identity4());
}

TEST(Transf3d, AxesAndOriginBecomeColumns)
{
    const Matrix4 expected = {{{1, 4, 7, 10}, {2, 5, 8, 11}, {3, 6, 9, 12}, {0, 0, 0, 1}}};
    for (const bool flag : {false, true})
    {
        const Transf3d t(Point3d(10, 11, 12), Vector3d(1, 2, 3), Vector3d(4, 5, 6), Vector3d(7, 8, 9), flag);
        EXPECT_EQ(Elements(t), expected);
    }
}

TEST(Transf3d, SetValueWritesOneElement)
{
    for (std::uint64_t row = 0; row < 4; ++row)
    {
        for (std::uint64_t column = 0; column < 4; ++column)
        {
            Transf3d t;
            t.setValue(row, column, 0.1);
            Matrix4 expected = Identity4();
            expected[row][column] = 0.1;
            EXPECT_EQ(Elements(t), expected);
        }
    }
}

TEST(Transf3d, DirectionsAreTheColumnsAsTheyAre)
{
    const Transf3d t = MakeTransf3d({{{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}, {13, 14, 15, 16}}});
    const Vector3d directions[3] = {t.xDir(), t.yDir(), t.zDir()};
    for (int c = 0; c < 3; ++c)
    {
        EXPECT_EQ(directions[c].x, c + 1);
        EXPECT_EQ(directions[c].y, c + 5);
        EXPECT_EQ(directions[c].z, c + 9);
    }
}

TEST(Transf3d, IsMirrorTellsHandedness)
{
    EXPECT_FALSE(Transf3d().isMirror());
    for (int axis = 0; axis < 3; ++axis)
    {
        Transf3d t;
        t.setValue(axis, axis, -2.0);
        EXPECT_TRUE(t.isMirror()) << axis;
        t.setValue((axis + 1) % 3, (axis + 1) % 3, -3.0);
        EXPECT_FALSE(t.isMirror()) << axis;
        t.setValue((axis + 2) % 3, (axis + 2) % 3, -1.0);
        EXPECT_TRUE(t.isMirror()) << axis;
    }
    // Exchanging two axes mirrors, turning all three round does not.
    EXPECT_TRUE(MakeTransf3d({{{0, 1, 0, 0}, {1, 0, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}}}).isMirror());
    EXPECT_TRUE(MakeTransf3d({{{1, 0, 0, 0}, {0, 0, 1, 0}, {0, 1, 0, 0}, {0, 0, 0, 1}}}).isMirror());
    EXPECT_FALSE(MakeTransf3d({{{0, 0, 1, 0}, {1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 0, 1}}}).isMirror());
    Random random;
    for (int i = 0; i < 200; ++i)
    {
        EXPECT_FALSE(MakeTransf3d(random.AffineMatrix(false)).isMirror());
        EXPECT_TRUE(MakeTransf3d(random.AffineMatrix(true)).isMirror());
    }
}

TEST(Transf3d, FlatIsNoMirror)
{
    Transf3d t;
    t.setValue(0, 0, 0.0);
    EXPECT_FALSE(t.isMirror());
}

TEST(Transf3d, InvertOfAnAffineTransform)
{
    Random random;
    for (int i = 0; i < 500; ++i)
    {
        const Matrix4 m = random.AffineMatrix(i % 2 == 1);
        const Matrix4 inverse = Elements(MakeTransf3d(m).invert());
        ExpectNear(inverse, Inverse(m), 1e-9);
        ExpectNear(Product(inverse, m), Identity4(), 1e-12);
        EXPECT_EQ(inverse[3], (std::array<double, 4>{0, 0, 0, 1}));
    }
}

TEST(Transf3d, InvertOfAProjectiveTransform)
{
    Random random;
    for (int i = 0; i < 500; ++i)
    {
        const Matrix4 m = random.AnyMatrix();
        const Matrix4 expected = Inverse(m);
        double largest = 0.0;
        for (const auto& row : expected)
        {
            for (const double element : row)
            {
                largest = std::max(largest, std::fabs(element));
            }
        }
        ExpectNear(Elements(MakeTransf3d(m).invert()), expected, 1e-12 * largest * largest);
    }
}

TEST(Transf3d, InvertUsesEveryElementOfTheLastRow)
{
    for (int c = 0; c < 4; ++c)
    {
        Matrix4 m = Identity4();
        m[0][3] = 5.0;
        m[3][c] = 2.0;
        ExpectNear(Elements(MakeTransf3d(m).invert()), Inverse(m), 1e-12);
    }
}

TEST(Transf3d, InvertKeepsItsPrecisionFarFromUnitScale)
{
    for (const double scale : {1e-30, 1e-6, 1e6, 1e30})
    {
        Matrix4 m = Identity4();
        m[0][0] = m[1][1] = m[2][2] = scale;
        m[0][3] = scale;
        const Matrix4 inverse = Elements(MakeTransf3d(m).invert());
        EXPECT_NEAR(inverse[0][0] * scale, 1.0, 1e-14);
        EXPECT_NEAR(inverse[2][2] * scale, 1.0, 1e-14);
        EXPECT_NEAR(inverse[0][3], -1.0, 1e-14);
    }
}

TEST(Transf3d, InvertOfASingularTransformIsNotFinite)
{
    Transf3d flat;
    flat.setValue(1, 1, 0.0);
    EXPECT_FALSE(AnyFinite(Elements(flat.invert()), 3));

    Transf3d withoutRow;
    withoutRow.setValue(3, 3, 0.0);
    EXPECT_FALSE(AnyFinite(Elements(withoutRow.invert()), 4));
}

TEST(Transf3d, AffineInverseTransposeIsThatOfTheLinearPart)
{
    Random random;
    for (int i = 0; i < 500; ++i)
    {
        Matrix4 m = i % 3 == 0 ? random.AnyMatrix() : random.AffineMatrix(i % 3 == 1);
        const Matrix4 actual = Elements(MakeTransf3d(m).affineInverseTranspose());
        for (int k = 0; k < 3; ++k)
        {
            m[k][3] = m[3][k] = 0.0;
        }
        m[3][3] = 1.0;
        const Matrix4 inverse = Inverse(m);
        double largest = 1.0;
        for (int r = 0; r < 3; ++r)
        {
            for (int c = 0; c < 3; ++c)
            {
                largest = std::max(largest, std::fabs(inverse[r][c]));
            }
        }
        Matrix4 expected{};
        for (int r = 0; r < 4; ++r)
        {
            for (int c = 0; c < 4; ++c)
            {
                expected[r][c] = inverse[c][r];
            }
        }
        ExpectNear(actual, expected, 1e-12 * largest * largest);
    }
}

TEST(Transf3d, AffineInverseTransposeOfAFlatTransformTakesNormalsToThatOfThePlane)
{
    Transf3d flat;
    flat.setValue(0, 0, 0.0);
    const Matrix4 normals = Elements(flat.affineInverseTranspose());
    for (int r = 0; r < 3; ++r)
    {
        for (int c = 0; c < 3; ++c)
        {
            EXPECT_EQ(normals[r][c], r == 0 && c == 0 ? 1.0 : 0.0) << r << ' ' << c;
        }
    }
}

TEST(Transf3d, AffineInverseTransposeOfATurnedFlatTransformIsOfUsualSize)
{
    // For rounding, the determinant isn't 0.
    Random random;
    for (int i = 0; i < 500; ++i)
    {
        const double scale = i % 2 ? 1.0 : 1e-3;
        Transf3d squeeze;
        squeeze.setValue(0, 0, scale);
        squeeze.setValue(1, 1, 0.0);
        squeeze.setValue(2, 2, scale);
        const Transf3d turn = MakeTransf3d(random.AffineMatrix());
        const Transf3d flat = turn * squeeze * MakeTransf3d(random.AffineMatrix());
        const Matrix4 actual = Elements(flat.affineInverseTranspose());
        double largest = 0.0;
        for (int column = 0; column < 3; ++column)
        {
            Vector3d normal(actual[0][column], actual[1][column], actual[2][column]);
            largest = std::max(largest, normal.length());
            normal.normalize();
            for (Vector3d axis : {turn.xDir(), turn.zDir()})
            {
                axis.normalize();
                EXPECT_NEAR(normal.x * axis.x + normal.y * axis.y + normal.z * axis.z, 0.0, 1e-9);
            }
        }
        EXPECT_GT(largest, 1e-12);
        EXPECT_LT(largest, 1e6);
    }
}

TEST(Transf3d, AffineInverseTransposeOfASmallTransformIsItsOwn)
{
    Transf3d small;
    for (int axis = 0; axis < 3; ++axis)
    {
        small.setValue(axis, axis, 1e-7);
    }
    const Matrix4 normals = Elements(small.affineInverseTranspose());
    EXPECT_NEAR(normals[0][0] * 1e-7, 1.0, 1e-12);
    EXPECT_NEAR(normals[2][2] * 1e-7, 1.0, 1e-12);
}

TEST(Transf3d, ProductLetsTheRightOperandActFirst)
{
    Random random;
    for (int i = 0; i < 500; ++i)
    {
        const Matrix4 a = i % 2 ? random.AffineMatrix() : random.AnyMatrix();
        const Matrix4 b = random.AnyMatrix();
        ExpectNear(Elements(MakeTransf3d(a) * MakeTransf3d(b)), Product(a, b), 1e-12);
    }
}

TEST(Transf3d, ProductMayReplaceItsOperands)
{
    Random random;
    const Matrix4 m = random.AnyMatrix();
    Transf3d t = MakeTransf3d(m);
    t = t * t;
    ExpectNear(Elements(t), Product(m, m), 1e-13);
}

TEST(Transf3d, IsEqualIncludesItsToleranceInEveryElement)
{
    for (int r = 0; r < 4; ++r)
    {
        for (int c = 0; c < 4; ++c)
        {
            for (const double sign : {1.0, -1.0})
            {
                Transf3d zero = MakeTransf3d(Matrix4{});
                Transf3d t = zero;
                t.setValue(r, c, sign * 0.25);
                EXPECT_TRUE(t.isEqual(zero, 0.25));
                EXPECT_FALSE(t.isEqual(zero, std::nextafter(0.25, 0.0)));
                EXPECT_FALSE(zero.isEqual(t, std::nextafter(0.25, 0.0)));
            }
        }
    }
}

TEST(Transf3d, IsEqualTakesNotANumberAsDifferent)
{
    Transf3d t;
    t.setValue(2, 1, std::numeric_limits<double>::quiet_NaN());
    EXPECT_FALSE(t.isEqual(t, 1.0));
}

TEST(Point3d, DefaultIsZero)
{
    const Point3d p;
    EXPECT_TRUE(p.x == 0.0 && p.y == 0.0 && p.z == 0.0);
}

TEST(Point3d, IsTransformedInPlaceWithTranslation)
{
    const Transf3d t = MakeTransf3d({{{1, 2, 3, 4}, {5, 6, 7, 8}, {9, 10, 11, 12}, {13, 14, 15, 16}}});
    Point3d p(1.0, 10.0, 100.0);
    EXPECT_EQ(&(p *= t), &p);
    EXPECT_EQ(p.x, 325.0);
    EXPECT_EQ(p.y, 773.0);
    EXPECT_EQ(p.z, 1221.0);
}

TEST(Vector3d, DefaultIsZero)
{
    const Vector3d v;
    EXPECT_TRUE(v.x == 0.0 && v.y == 0.0 && v.z == 0.0);
}

TEST(Vector3d, LengthIsEuclidean)
{
    EXPECT_EQ(Vector3d(3.0, -4.0, 12.0).length(), 13.0);
}

TEST(Vector3d, NormalizeMakesItUnitAndReturnsItself)
{
    Vector3d v(2.0, -3.0, 6.0);
    EXPECT_EQ(&v.normalize(), &v);
    EXPECT_EQ(v.x, 2.0 / 7.0);
    EXPECT_EQ(v.y, -3.0 / 7.0);
    EXPECT_EQ(v.z, 6.0 / 7.0);
}

TEST(Vector3d, NormalizeLeavesZeroAlone)
{
    Vector3d v;
    EXPECT_EQ(&v.normalize(), &v);
    EXPECT_TRUE(v.x == 0.0 && v.y == 0.0 && v.z == 0.0);
}
