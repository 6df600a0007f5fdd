#include "orvane/math/Matrix.h"

#include "orvane/math/Matrix3x3.h"
#include "tests/math/MathTesting.h"

#include <type_traits>

using namespace MathTesting;
using OV::Matrix;
using OV::Matrix3x3;

namespace
{

Matrix Counting()
{
    Matrix m;
    for (int i = 0; i < 16; ++i)
    {
        m.m[i] = static_cast<float>(i + 1);
    }
    return m;
}

bool IsIdentity(const Matrix& m)
{
    for (int i = 0; i < 16; ++i)
    {
        if (m.m[i] != (i % 5 == 0 ? 1.0f : 0.0f))
        {
            return false;
        }
    }
    return true;
}

struct Volume
{
    float left;
    float right;
    float bottom;
    float top;
    float nearZ;
    float farZ;
};

Matrix Ortho(const Volume& v)
{
    Matrix m = Counting();
    m.CalculateOrthoMatrix(v.left, v.right, v.bottom, v.top, v.nearZ, v.farZ);
    return m;
}

Matrix Persp(const Volume& v)
{
    Matrix m = Counting();
    m.CalculatePerspMatrix(v.left, v.right, v.bottom, v.top, v.nearZ, v.farZ);
    return m;
}

Volume RandomVolume(Random& random, double lowestNear)
{
    Volume v{};
    v.left = static_cast<float>(random.Between(-5.0, 5.0));
    v.right = v.left + static_cast<float>(random.Between(0.5, 10.0));
    v.bottom = static_cast<float>(random.Between(-5.0, 5.0));
    v.top = v.bottom + static_cast<float>(random.Between(0.5, 10.0));
    v.nearZ = static_cast<float>(random.Between(lowestNear, 5.0));
    v.farZ = v.nearZ + static_cast<float>(random.Between(0.5, 100.0));
    return v;
}

} // namespace

TEST(Matrix, IsPlainMemoryWithoutInitialisation)
{
    EXPECT_EQ(sizeof(Matrix), 64u);
    EXPECT_EQ(sizeof(Matrix3x3), 36u);
    EXPECT_TRUE(std::is_trivial_v<Matrix>);
    EXPECT_TRUE(std::is_trivial_v<Matrix3x3>);
    EXPECT_TRUE(std::is_standard_layout_v<Matrix>);
}

TEST(Matrix, AssignmentCopiesAllElements)
{
    const Matrix source = Counting();
    Matrix copied;
    copied = source;
    Matrix moved;
    moved = std::move(copied);
    for (int i = 0; i < 16; ++i)
    {
        EXPECT_EQ(moved.m[i], static_cast<float>(i + 1));
    }
}

TEST(Matrix, IdentityOverwritesEverything)
{
    Matrix m = Counting();
    m.Identity();
    EXPECT_TRUE(IsIdentity(m));
}

TEST(Matrix, MultiplyLetsTheRightOperandActFirst)
{
    Matrix translation;
    translation.Identity();
    translation.m[12] = 10.0f;
    Matrix scale;
    scale.Identity();
    scale.m[0] = 2.0f;
    Matrix product;
    product.Multiply(translation, scale);
    EXPECT_EQ(product.m[0], 2.0f);
    EXPECT_EQ(product.m[12], 10.0f);
    product.Multiply(scale, translation);
    EXPECT_EQ(product.m[0], 2.0f);
    EXPECT_EQ(product.m[12], 20.0f);
}

TEST(Matrix, MultiplySumsRowsTimesColumns)
{
    Random random;
    for (int i = 0; i < 200; ++i)
    {
        Matrix a;
        Matrix b;
        for (int k = 0; k < 16; ++k)
        {
            a.m[k] = static_cast<float>(random.Between(-3.0, 3.0));
            b.m[k] = static_cast<float>(random.Between(-3.0, 3.0));
        }
        Matrix product = Counting();
        product.Multiply(a, b);
        ExpectNear(Widen(product), Product(Widen(a), Widen(b)), 1e-5);
        product.Multiply(a, a);
        ExpectNear(Widen(product), Product(Widen(a), Widen(a)), 1e-5);
    }
}

TEST(Matrix, TransposeExchangesRowsAndColumns)
{
    const Matrix source = Counting();
    Matrix transposed;
    transposed.Transpose(source);
    for (int r = 0; r < 4; ++r)
    {
        for (int c = 0; c < 4; ++c)
        {
            EXPECT_EQ(transposed.m[c * 4 + r], source.m[r * 4 + c]);
        }
    }
}

TEST(Matrix, OrthoHasTheStatedElements)
{
    const Matrix m = Ortho({1.0f, 5.0f, 2.0f, 10.0f, 4.0f, 20.0f});
    const float expected[16] = {0.5f, 0, 0, 0, 0, 0.25f, 0, 0, 0, 0, -0.125f, 0, -1.5f, -1.5f, -1.5f, 1};
    for (int i = 0; i < 16; ++i)
    {
        EXPECT_EQ(m.m[i], expected[i]) << i;
    }
}

TEST(Matrix, OrthoMapsTheCornersOfItsBoxToTheClipCube)
{
    Random random;
    for (int i = 0; i < 100; ++i)
    {
        const Volume v = RandomVolume(random, -5.0);
        const Matrix4 m = Widen(Ortho(v));
        for (int corner = 0; corner < 8; ++corner)
        {
            const double sx = corner & 1 ? 1.0 : -1.0;
            const double sy = corner & 2 ? 1.0 : -1.0;
            const double sz = corner & 4 ? 1.0 : -1.0;
            const Vector4 clip = Apply(m, {sx > 0 ? v.right : v.left, sy > 0 ? v.top : v.bottom,
                                           -(sz > 0 ? v.farZ : v.nearZ), 1.0});
            EXPECT_NEAR(clip[0], sx, 2e-5);
            EXPECT_NEAR(clip[1], sy, 2e-5);
            EXPECT_NEAR(clip[2], sz, 2e-5);
            EXPECT_EQ(clip[3], 1.0);
        }
    }
}

TEST(Matrix, OrthoOfNoExtentIsTheIdentity)
{
    const float tooSmall = 1e-6f;
    const float justEnough = Above(1e-6f);
    for (const float extent : {tooSmall, 0.0f, -1.0f})
    {
        EXPECT_TRUE(IsIdentity(Ortho({0, extent, 0, 1, 0, 2}))) << extent;
        EXPECT_TRUE(IsIdentity(Ortho({0, 1, 0, extent, 0, 2}))) << extent;
        EXPECT_TRUE(IsIdentity(Ortho({0, 1, 0, 1, 0, extent}))) << extent;
    }
    EXPECT_EQ(Ortho({0, justEnough, 0, 1, 0, 2}).m[0], 2.0f / justEnough);
    EXPECT_EQ(Ortho({0, 1, 0, justEnough, 0, 2}).m[5], 2.0f / justEnough);
    EXPECT_EQ(Ortho({0, 1, 0, 1, 0, justEnough}).m[10], -2.0f / justEnough);
}

TEST(Matrix, OrthoWithLeftEqualToRightIsTheIdentity)
{
    EXPECT_TRUE(IsIdentity(Ortho({3.0f, 3.0f, 0.0f, 1.0f, 0.0f, 2.0f})));
}

TEST(Matrix, OrthoTakesANegativeNearDistance)
{
    const Matrix m = Ortho({-1.0f, 1.0f, -1.0f, 1.0f, -2.0f, 2.0f});
    EXPECT_EQ(m.m[10], -0.5f);
    EXPECT_EQ(m.m[14], 0.0f);
}

TEST(Matrix, PerspHasTheStatedElements)
{
    const Matrix m = Persp({1.0f, 5.0f, 2.0f, 10.0f, 4.0f, 20.0f});
    const float expected[16] = {2, 0, 0, 0, 0, 1, 0, 0, 1.5f, 1.5f, -1.5f, -1, 0, 0, -10, 0};
    for (int i = 0; i < 16; ++i)
    {
        EXPECT_EQ(m.m[i], expected[i]) << i;
    }
}

TEST(Matrix, PerspMapsTheCornersOfItsFrustumToTheClipCube)
{
    Random random;
    for (int i = 0; i < 100; ++i)
    {
        const Volume v = RandomVolume(random, 0.5);
        const Matrix4 m = Widen(Persp(v));
        for (int corner = 0; corner < 8; ++corner)
        {
            const double sx = corner & 1 ? 1.0 : -1.0;
            const double sy = corner & 2 ? 1.0 : -1.0;
            const double sz = corner & 4 ? 1.0 : -1.0;
            const double distance = sz > 0 ? v.farZ : v.nearZ;
            const double grow = distance / v.nearZ;
            const Vector4 clip = Apply(m, {grow * (sx > 0 ? v.right : v.left),
                                           grow * (sy > 0 ? v.top : v.bottom), -distance, 1.0});
            EXPECT_NEAR(clip[0] / clip[3], sx, 5e-5);
            EXPECT_NEAR(clip[1] / clip[3], sy, 5e-5);
            EXPECT_NEAR(clip[2] / clip[3], sz, 5e-5);
            EXPECT_EQ(clip[3], distance);
        }
    }
}

TEST(Matrix, PerspWithNearZeroIsTheIdentity)
{
    EXPECT_TRUE(IsIdentity(Persp({-1.0f, 1.0f, -1.0f, 1.0f, 0.0f, 10.0f})));
}

TEST(Matrix, PerspOfNoExtentIsTheIdentity)
{
    const float tooSmall = 1e-6f;
    const float justEnough = Above(1e-6f);
    for (const float extent : {tooSmall, 0.0f, -1.0f})
    {
        EXPECT_TRUE(IsIdentity(Persp({0, extent, 0, 1, 1, 2}))) << extent;
        EXPECT_TRUE(IsIdentity(Persp({0, 1, 0, extent, 1, 2}))) << extent;
        EXPECT_TRUE(IsIdentity(Persp({0, 1, 0, 1, extent, 2}))) << extent;
        EXPECT_TRUE(IsIdentity(Persp({0, 1, 0, 1, -1, extent}))) << extent;
    }
    EXPECT_TRUE(IsIdentity(Persp({0, 1, 0, 1, 2, 2})));
    EXPECT_TRUE(IsIdentity(Persp({0, 1, 0, 1, 3, 2})));
    EXPECT_EQ(Persp({0, justEnough, 0, 1, 1, 2}).m[0], 2.0f / justEnough);
    EXPECT_EQ(Persp({0, 1, 0, justEnough, 1, 2}).m[5], 2.0f / justEnough);
    EXPECT_EQ(Persp({0, 1, 0, 1, justEnough, 2}).m[0], 2.0f * justEnough);
    const float step = std::ldexp(1.0f, -23);
    EXPECT_TRUE(IsIdentity(Persp({0, 1, 0, 1, 1, 1.0f + 8.0f * step})));
    EXPECT_EQ(Persp({0, 1, 0, 1, 1, 1.0f + 9.0f * step}).m[11], -1.0f);
    // A near distance that is not a number passes its own bound; that of the far one holds.
    EXPECT_TRUE(IsIdentity(Persp({0, 1, 0, 1, notANumber, tooSmall})));
    EXPECT_FALSE(IsIdentity(Persp({0, 1, 0, 1, notANumber, justEnough})));
}
