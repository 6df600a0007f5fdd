#include "orvane_host/present/detail/ContactShadow.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace OV::Test
{

namespace
{

using Host::Detail::ContactShadow;
using Polygon = std::vector<ContactShadow::Point>;

/// The sides of an upright box.
std::vector<Polygon> Box(double x0, double y0, double z0, double x1, double y1, double z1)
{
    return {{{x0, y0, z0}, {x1, y0, z0}, {x1, y1, z0}, {x0, y1, z0}}, {{x0, y0, z1}, {x1, y0, z1}, {x1, y1, z1}, {x0, y1, z1}},
            {{x0, y0, z0}, {x1, y0, z0}, {x1, y0, z1}, {x0, y0, z1}}, {{x0, y1, z0}, {x1, y1, z0}, {x1, y1, z1}, {x0, y1, z1}},
            {{x0, y0, z0}, {x0, y1, z0}, {x0, y1, z1}, {x0, y0, z1}}, {{x1, y0, z0}, {x1, y1, z0}, {x1, y1, z1}, {x1, y0, z1}}};
}

ContactShadow ShadowOf(const std::vector<Polygon>& polygons)
{
    return ContactShadow([&](const auto& visit) {
        for (const Polygon& polygon : polygons)
        {
            visit(polygon);
        }
    });
}

double At(const ContactShadow& shadow, double x, double y)
{
    const int column = static_cast<int>((x - shadow.GetLeft()) / shadow.GetWidth() * ContactShadow::Size);
    const int row = static_cast<int>((y - shadow.GetFront()) / shadow.GetWidth() * ContactShadow::Size);
    const bool isInside = column >= 0 && row >= 0 && column < ContactShadow::Size && row < ContactShadow::Size;
    return isInside ? shadow.GetTexels()[static_cast<std::size_t>(row * ContactShadow::Size + column)] / 255.0 : 0.0;
}

} // namespace

TEST(ContactShadow, IsFullUnderABoxAndFadesAwayFromIt)
{
    const ContactShadow shadow = ShadowOf(Box(-1, -1, 0, 1, 1, 2));
    EXPECT_NEAR(At(shadow, 0, 0), 1.0, 0.01);
    double last = 1.0;
    for (const double x : {1.1, 1.2, 1.3, 1.4, 1.5, 1.6})
    {
        EXPECT_LT(At(shadow, x, 0), last + 0.005) << x;
        last = At(shadow, x, 0);
    }
    // Right beside an upright wall half the sky is hidden, less what is over it.
    EXPECT_NEAR(At(shadow, 1.05, 0), 0.45, 0.12);
    EXPECT_LT(last, 0.1);
    // The same to all sides.
    EXPECT_NEAR(At(shadow, -1.3, 0), At(shadow, 1.3, 0), 0.02);
    EXPECT_NEAR(At(shadow, 0, 1.3), At(shadow, 1.3, 0), 0.02);
    EXPECT_NEAR(At(shadow, 0, -1.3), At(shadow, 1.3, 0), 0.02);
}

TEST(ContactShadow, IsTheSameForAnySizeAndPlace)
{
    const ContactShadow shadow = ShadowOf(Box(-1, -1, 0, 1, 1, 2));
    const ContactShadow large = ShadowOf(Box(1e6 - 1e4, -1e4, 0, 1e6 + 1e4, 1e4, 2e4));
    const ContactShadow small = ShadowOf(Box(-1e-3, -1e-3, 0, 1e-3, 1e-3, 2e-3));
    for (const double x : {0.0, 1.15, 1.35, 1.5})
    {
        EXPECT_NEAR(At(large, 1e6 + 1e4 * x, 0), At(shadow, x, 0), 0.03) << x;
        EXPECT_NEAR(At(small, 1e-3 * x, 0), At(shadow, x, 0), 0.03) << x;
    }
}

TEST(ContactShadow, IsTheSameWhereSquaresOfHeightsAreBeyondFloat)
{
    const ContactShadow shadow = ShadowOf(Box(-1, -1, 0, 1, 1, 2));
    const ContactShadow huge = ShadowOf(Box(-1e25, -1e25, 0, 1e25, 1e25, 2e25));
    for (const double x : {0.0, 1.15, 1.35, 1.5})
    {
        EXPECT_NEAR(At(huge, 1e25 * x, 0), At(shadow, x, 0), 0.03) << x;
    }
}

TEST(ContactShadow, WhatGrowsAfterItWasMeasuredStaysWithinTheGrid)
{
    // As where a host's thread moves vertices meanwhile.
    for (const double far : {1e9, 1e25})
    {
        bool isMeasured = false;
        const ContactShadow shadow([&](const auto& visit) {
            const double side = isMeasured ? far : 1.0;
            visit({{-side, -side, 0.0}, {side, -side, 0.0}, {side, side, 0.0}, {-side, side, 0.0}});
            isMeasured = true;
        });
        EXPECT_GT(At(shadow, 0, 0), 0.9) << far;
        EXPECT_GT(At(shadow, 0.9, 0.2), 0.9) << far;
    }
    const double nan = std::numeric_limits<double>::quiet_NaN();
    bool isMeasured = false;
    const ContactShadow shadow([&](const auto& visit) {
        visit({{-1, -1, isMeasured ? 1e300 : 1.0}, {1, -1, 0.0}, {1, isMeasured ? nan : 1.0, 0.0}});
        visit({{isMeasured ? -1e300 : -1, -1, isMeasured ? 1e300 : 1.0}, {1, -1, 0.0}, {1, 1, 0.0}});
        isMeasured = true;
    });
    EXPECT_GT(shadow.GetWidth(), 2.0);
}

TEST(ContactShadow, LightComesInUnderWhatFloats)
{
    // A table: nothing touches the ground but its leg.
    std::vector<Polygon> table = Box(-1, -1, 0.9, 1, 1, 1);
    for (const Polygon& side : Box(-0.05, -0.05, 0, 0.05, 0.05, 0.9))
    {
        table.push_back(side);
    }
    const ContactShadow shadow = ShadowOf(table);
    EXPECT_GT(At(shadow, 0.5, 0.5), 0.15);
    EXPECT_LT(At(shadow, 0.5, 0.5), 0.8);
    EXPECT_LT(At(shadow, 1.05, 1.05), At(shadow, 0.5, 0.5));
    EXPECT_GT(At(shadow, 0, 0), 0.8);
}

TEST(ContactShadow, AThinWallCasts)
{
    const ContactShadow shadow = ShadowOf({{{-2, 0, 0}, {2, 0, 0}, {2, 0, 1.5}, {-2, 0, 1.5}}});
    EXPECT_GT(At(shadow, 0, 0.1), 0.3);
    EXPECT_GT(At(shadow, 0, -0.1), 0.3);
}

TEST(ContactShadow, EndsBeforeTheRimOfItsGrid)
{
    const ContactShadow shadow = ShadowOf(Box(0, 0, 0, 3, 1, 5));
    const auto& texels = shadow.GetTexels();
    const int size = ContactShadow::Size;
    for (int i = 0; i < size; ++i)
    {
        for (const int at : {i, i * size, (size - 1) * size + i, i * size + size - 1})
        {
            ASSERT_EQ(texels[static_cast<std::size_t>(at)], 0);
        }
        EXPECT_LE(texels[static_cast<std::size_t>(size + i)], 3);
    }
}

TEST(ContactShadow, WhatIsNotThereOrBelowCastsNothing)
{
    EXPECT_EQ(ShadowOf({}).GetWidth(), 0.0);
    EXPECT_EQ(ShadowOf(Box(0, 0, -3, 1, 1, -1)).GetWidth(), 0.0);
    EXPECT_EQ(ShadowOf({{{1, 2, 0}}}).GetWidth(), 0.0);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    std::vector<Polygon> damaged = Box(-1, -1, 0, 1, 1, 2);
    damaged.push_back({{nan, 0, 1}, {0, 1, 1}, {1, 0, 1}});
    const ContactShadow beside = ShadowOf(damaged);
    EXPECT_NEAR(At(beside, 0, 0), 1.0, 0.01);
    EXPECT_EQ(ShadowOf({{{infinity, 0, 1}, {0, 1, 1}, {1, 0, 1}}}).GetWidth(), 0.0);
}

} // namespace OV::Test
