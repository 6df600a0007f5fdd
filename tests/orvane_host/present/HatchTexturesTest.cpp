#include "orvane_host/present/HatchTextures.h"

#include "orvane/platform/ESTextureLoader.h"
#include "tests/support/GLFixture.h"

#include <GL/gl.h>
#include <GL/glext.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <vector>

using OV::Host::HatchTextures;

namespace
{

constexpr int kSize = HatchTextures::Size;

double Coverage(const std::vector<unsigned char>& ink)
{
    return std::accumulate(ink.begin(), ink.end(), 0.0) / (255.0 * static_cast<double>(ink.size()));
}

int InkAt(const std::vector<unsigned char>& ink, int x, int y)
{
    return ink[static_cast<std::size_t>(y * kSize + x)];
}

/// How much neighbouring columns differ on average, or rows when turned.
double Jump(const std::vector<unsigned char>& ink, int from, int to, bool turned)
{
    double sum = 0.0;
    for (int i = 0; i < kSize; ++i)
    {
        sum += std::abs(turned ? InkAt(ink, i, from) - InkAt(ink, i, to) : InkAt(ink, from, i) - InkAt(ink, to, i));
    }
    return sum / kSize;
}

/// Its end fails the test when a texture is left.
class HatchTexturesGL : public OV::Test::GLFixture
{
};

struct HatchFilter : OV::Test::GLFixture
{
};

} // namespace

TEST(HatchTextures, GetDenserFromToneToTone)
{
    double last = 0.0;
    for (int tone = 0; tone < HatchTextures::Tones; ++tone)
    {
        const double coverage = Coverage(HatchTextures::DrawTone(tone));
        EXPECT_GT(coverage, last * 1.3) << tone;
        last = coverage;
    }
    EXPECT_GT(Coverage(HatchTextures::DrawTone(0)), 0.02);
    EXPECT_LT(last, 0.8);
}

TEST(HatchTextures, EachToneHasAllTheStrokesOfTheLighterOnes)
{
    std::vector<unsigned char> lighter(static_cast<std::size_t>(kSize) * kSize, 0);
    for (int tone = 0; tone < HatchTextures::Tones; ++tone)
    {
        const std::vector<unsigned char> ink = HatchTextures::DrawTone(tone);
        ASSERT_EQ(ink.size(), lighter.size());
        EXPECT_TRUE(std::equal(ink.begin(), ink.end(), lighter.begin(),
                               [](unsigned char own, unsigned char before) { return own >= before; }))
            << tone;
        EXPECT_NE(ink, lighter) << tone;
        lighter = ink;
    }
}

TEST(HatchTextures, RepeatWithoutASeam)
{
    for (int tone = 0; tone < HatchTextures::Tones; ++tone)
    {
        const std::vector<unsigned char> ink = HatchTextures::DrawTone(tone);
        for (const bool turned : {false, true})
        {
            double inside = 0.0;
            for (int i = 0; i + 1 < kSize; ++i)
            {
                inside = std::max(inside, Jump(ink, i, i + 1, turned));
            }
            EXPECT_LE(Jump(ink, kSize - 1, 0, turned), inside) << tone << turned;
        }
    }
}

TEST(HatchTextures, HaveAnEvenToneAllOver)
{
    // A blotch would show in every repetition.
    constexpr int parts = 4;
    constexpr int edge = kSize / parts;
    for (int tone = 0; tone < HatchTextures::Tones; ++tone)
    {
        const std::vector<unsigned char> ink = HatchTextures::DrawTone(tone);
        const double whole = Coverage(ink);
        for (int part = 0; part < parts * parts; ++part)
        {
            double sum = 0.0;
            for (int i = 0; i < edge * edge; ++i)
            {
                sum += InkAt(ink, part % parts * edge + i % edge, part / parts * edge + i / edge);
            }
            const double share = sum / (255.0 * edge * edge);
            EXPECT_GT(share, 0.5 * whole) << tone << ' ' << part;
            EXPECT_LT(share, 1.6 * whole) << tone << ' ' << part;
        }
    }
}

TEST(HatchTextures, AreTheSameEveryTime)
{
    EXPECT_EQ(HatchTextures::DrawTone(3), HatchTextures::DrawTone(3));
}

TEST_F(HatchTexturesGL, GoWithTheirUserAfterTheEndOfTheLoader)
{
    std::unique_ptr<OV::TextureLoader> loader(OV::TextureLoader::Create());
    const HatchTextures textures(*loader);
    EXPECT_TRUE(glIsTexture(textures.GetTexture(0)));
    loader.reset();
    EXPECT_TRUE(glIsTexture(textures.GetTexture(0)));
}

TEST_F(HatchFilter, ReadsAsFewPixelsAsSmoothStrokesTake)
{
    OV::Platform::Linux::ESTextureLoader loader;
    {
        const HatchTextures hatches(loader);
        for (int tone = 0; tone < HatchTextures::Tones; ++tone)
        {
            glBindTexture(GL_TEXTURE_2D, hatches.GetTexture(tone));
            GLfloat degree = 0.0f;
            GLint filter = 0;
            glGetTexParameterfv(GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY_EXT, &degree);
            glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &filter);
            EXPECT_EQ(degree, 1.0f) << "24 anisotropic look-ups a pixel";
            EXPECT_EQ(filter, GL_LINEAR_MIPMAP_NEAREST);
        }
    }
    glBindTexture(GL_TEXTURE_2D, 0);
}
