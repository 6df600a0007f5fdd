#include "orvane/effects/SSAOEffectES20.h"
#include "tests/renderer/OffscreenStage.h"
#include "tests/support/OcclusionModel.h"

#include <GL/glew.h>
#include <glm/common.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace OV::Test
{

namespace
{

constexpr int kSize = GLFixture::DefaultSize;

/// The effect with options that Apply never takes.
class OccludingWith : public SSAOEffectES20
{
public:
    explicit OccludingWith(std::uint64_t options) : SSAOEffectES20(nullptr), m_options(options) {}

    void Apply(MaterialES20*, CameraNodeES20*) override
    {
        Bind();
        UseOptions(m_options);
    }

private:
    std::uint64_t m_options;
};

/// Occlusion without mist at one place of the pictures, all over the screen.
class OccludingAt : public OccludingWith
{
public:
    explicit OccludingAt(glm::vec2 place) : OccludingWith(0), m_place(place) {}

    ~OccludingAt() override { glVertexAttrib4f(2, 0.0f, 0.0f, 0.0f, 1.0f); }

    void BindMeshAttributes(MeshES20* mesh) override
    {
        OccludingWith::BindMeshAttributes(mesh);
        glDisableVertexAttribArray(2);
        glVertexAttrib2f(2, m_place.x, m_place.y);
    }

private:
    glm::vec2 m_place;
};

class SSAOPixels : public OffscreenStage
{
protected:
    using DepthFunction = std::function<float(int, int)>;

    SSAOPixels() : effect(Get<SSAOEffectES20>(EffectCache::SSAO)), ground(MakeColors(kSize, kSize, ColorAt))
    {
        SetUp(effect);
    }

    void SetUp(SSAOEffectES20& used) const
    {
        used.SetDimensions(kSize, kSize);
        used.SetNearFar(1.0f, 50.0f);
        used.SetRenderTexture(static_cast<int>(ground));
    }

    static Pixel ColorAt(int x, int y) { return {40 + x, 220 - y, 30 + (x + y) / 2, 255}; }

    /// Depth of the picture for a distance to the eye.
    float AtDistance(double distance) const
    {
        return static_cast<float>((model.zFar - model.zFar * model.zNear / distance) / (model.zFar - model.zNear));
    }

    Picture Shaded(const DepthFunction& depth) { return Shaded(effect, depth); }

    Picture Shaded(SSAOEffectES20& used, const DepthFunction& depth)
    {
        const unsigned int texture = MakeDepths(kSize, kSize, depth);
        used.SetDepthTexture(static_cast<int>(texture));
        glBindTexture(GL_TEXTURE_2D, texture);
        model.depths.resize(std::size_t(kSize) * kSize);
        glGetTexImage(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT, GL_FLOAT, model.depths.data());
        glBindTexture(GL_TEXTURE_2D, 0);
        return Draw(used);
    }

    /// @param share of the pixels that must be comparable.
    void ExpectModel(const DepthFunction& depth, double share) { ExpectModel(effect, depth, share); }

    void ExpectModel(SSAOEffectES20& used, const DepthFunction& depth, double share)
    {
        const Picture picture = Shaded(used, depth);
        int compared = 0;
        int worst = 0;
        int darkened = 0;
        for (int y = 0; y < kSize; ++y)
        {
            for (int x = 0; x < kSize; ++x)
            {
                const Pixel before = ColorAt(x, y);
                const auto color = model.Shade(x, y, glm::dvec3(before.r, before.g, before.b) / 255.0);
                if (color)
                {
                    ++compared;
                    const glm::vec3 expected(*color);
                    const Pixel pixel = ToPixel(expected.r, expected.g, expected.b);
                    worst = std::max(worst, ChannelDifference(picture.At(x, y), pixel));
                    darkened += before.g - pixel.g > 5 ? 1 : 0;
                }
            }
        }
        EXPECT_LE(worst, 3);
        EXPECT_GT(compared, share * kSize * kSize);
        EXPECT_GT(darkened, 0);
    }

    OcclusionModel model{kSize, kSize};
    SSAOEffectES20& effect;
    unsigned int ground;
};

} // namespace

TEST_F(SSAOPixels, APlaneFacingTheEyeFollowsTheModel)
{
    ExpectModel([this](int, int) { return AtDistance(5.0); }, 0.99);
}

TEST_F(SSAOPixels, APlaneSeenAtASlantFollowsTheModel)
{
    ExpectModel([this](int x, int y) { return AtDistance(3.0 + 0.02 * x + 0.01 * y); }, 0.3);
}

TEST_F(SSAOPixels, AStepFollowsTheModel)
{
    ExpectModel([this](int x, int) { return AtDistance(x < 64 ? 5.0 : 5.6); }, 0.8);
}

TEST_F(SSAOPixels, AHighStepFollowsTheModel)
{
    ExpectModel([this](int x, int y) { return AtDistance(x + y < 120 ? 4.0 : 20.0); }, 0.8);
}

TEST_F(SSAOPixels, ACornerFollowsTheModel)
{
    ExpectModel([this](int x, int y) { return AtDistance(9.0 - 0.05 * std::max(std::abs(x - 64), std::abs(y - 64))); },
                0.2);
}

TEST_F(SSAOPixels, AShapeBeforeTheFarPlaneFollowsTheModel)
{
    ExpectModel([this](int x, int y) { return (x - 64) * (x - 64) + (y - 64) * (y - 64) < 900 ? AtDistance(6.0) : 1.0f; },
                0.8);
}

TEST_F(SSAOPixels, OtherNearAndFarFollowTheModel)
{
    model.zNear = 2.0;
    model.zFar = 20.0;
    effect.SetNearFar(2.0f, 20.0f);
    ExpectModel([this](int x, int) { return AtDistance(x < 64 ? 5.0 : 5.6); }, 0.8);
}

TEST_F(SSAOPixels, MistStartsAtTheNearPlane)
{
    // Near is half of far, so that a start at the eye would show.
    model.zNear = 10.0;
    model.zFar = 20.0;
    effect.SetNearFar(10.0f, 20.0f);
    ExpectModel([this](int x, int) { return AtDistance(x < 64 ? 11.0 : 12.0); }, 0.8);
}

TEST_F(SSAOPixels, SeventeenSamplesCountBySixteenths)
{
    OccludingWith plain(0);
    SetUp(plain);
    const Picture picture = Shaded(plain, [](int, int) { return 1.0f; });
    const double ao = 1.0 - 17.0 * std::pow(2.7182, -2.0) / 16.0;
    for (int i = 0; i < kSize; ++i)
    {
        const Pixel before = ColorAt(i, 0);
        const double lum = (0.299 * before.r + 0.587 * before.g + 0.114 * before.b) / 255.0;
        // One sample less would be lighter by more than 1.
        EXPECT_NEAR(picture.At(i, 0).g, before.g * glm::mix(ao, 1.0, lum * 0.5), 0.6) << i;
    }
}

TEST_F(SSAOPixels, WidthAndHeightAreEachOfTheirOwnDirection)
{
    // Neither is even, nor the size of the picture: the dithering shows.
    model.size = glm::dvec2(101, 37);
    effect.SetDimensions(101, 37);
    ExpectModel([this](int x, int y) { return AtDistance(x < 64 ? 5.0 : 5.6 + (y < 50 ? 0.0 : 0.3)); }, 0.7);
}

TEST_F(SSAOPixels, WithoutMistOnlyOcclusionFollowsTheModel)
{
    OccludingWith plain(0);
    SetUp(plain);
    model.options = 0;
    ExpectModel(plain, [this](int x, int) { return AtDistance(x < 64 ? 5.0 : 5.6); }, 0.8);
    // What mist would hide: far away a plane is as dark as near by.
    ExpectModel(plain, [this](int, int) { return AtDistance(49.0); }, 0.99);
}

TEST_F(SSAOPixels, NoiseMovesTheSamplesALittle)
{
    OccludingWith noisy(3);
    SetUp(noisy);
    const DepthFunction plane = [this](int, int) { return AtDistance(5.0); };
    EXPECT_EQ(Shaded(noisy, plane), Shaded(plane)) << "nowhere is another depth to be found";
    const DepthFunction stripes = [this](int x, int y) { return AtDistance(5.0 + 0.02 * ((3 * x + 5 * y) % 11)); };
    const Picture with = Shaded(noisy, stripes);
    const Picture without = Shaded(stripes);
    int moved = 0;
    for (int y = 0; y < kSize; ++y)
    {
        for (int x = 0; x < kSize; ++x)
        {
            moved += with.At(x, y) != without.At(x, y) ? 1 : 0;
        }
    }
    EXPECT_GT(moved, kSize * kSize / 20);
    EXPECT_EQ(Shaded(noisy, stripes), with) << "the same in each frame";
}

TEST_F(SSAOPixels, AFarPlaneSamplesItselfAloneAndIsHardlyDimmed)
{
    const Picture picture = Shaded([](int, int) { return 1.0f; });
    // Every sample has the weight of no difference; mist then takes nearly all of it away.
    const double weight = std::pow(2.7182, -2.0);
    const double ao = glm::mix(1.0 - 17.0 * weight / 16.0, 1.0, 49.0 / 50.0);
    for (int i = 0; i < kSize; i += 7)
    {
        const Pixel before = ColorAt(i, i);
        const double lum = (0.299 * before.r + 0.587 * before.g + 0.114 * before.b) / 255.0;
        const double factor = glm::mix(ao, 1.0, lum * 0.5);
        EXPECT_NEAR(picture.At(i, i).g, before.g * factor, 1.0) << i;
        EXPECT_GE(picture.At(i, i).g, before.g - 1);
        EXPECT_EQ(picture.At(i, i).a, 255);
    }
}

TEST_F(SSAOPixels, APlaceBelowZeroIsTakenForTheFarPlaneWhateverTheDepthPicture)
{
    const double open = 1.0 - 17.0 * std::pow(2.7182, -2.0) / 16.0;
    // The effect at one place, which shows the colour of the texel next to it.
    const auto occlusion = [this](glm::vec2 place, const DepthFunction& depth)
    {
        OccludingAt there(place);
        SetUp(there);
        const Pixel before = ColorAt(static_cast<int>(std::max(place.x, 0.0f) * kSize),
                                     static_cast<int>(std::max(place.y, 0.0f) * kSize));
        const double lum = (0.299 * before.r + 0.587 * before.g + 0.114 * before.b) / 255.0;
        const double shade = double(Shaded(there, depth).At(64, 64).g) / before.g;
        return (shade - lum * 0.5) / (1.0 - lum * 0.5);
    };
    const DepthFunction across = [this](int, int y) { return AtDistance(y < 64 ? 5.0 : 5.6); };
    const DepthFunction upright = [this](int x, int) { return AtDistance(x < 64 ? 5.0 : 5.6); };
    const float edge = 64.5f / kSize;
    for (const float inside : {0.001f, 0.3f})
    {
        EXPECT_GT(std::abs(occlusion({inside, edge}, across) - open), 0.05) << inside;
        EXPECT_GT(std::abs(occlusion({edge, inside}, upright) - open), 0.05) << inside;
    }
    for (const float outside : {-0.001f, -0.3f})
    {
        EXPECT_NEAR(occlusion({outside, edge}, across), open, 0.01) << outside;
        EXPECT_NEAR(occlusion({edge, outside}, upright), open, 0.01) << outside;
    }
}

TEST_F(SSAOPixels, TheFootOfAStepIsDarkerThanTheOpenGround)
{
    const Picture picture = Shaded([this](int x, int) { return AtDistance(x < 64 ? 5.0 : 5.3); });
    const auto darkening = [&](int x) { return double(picture.At(x, 64).g) / ColorAt(x, 64).g; };
    EXPECT_LT(darkening(66), darkening(120) - 0.05);
}

TEST_F(SSAOPixels, ASizeOfZeroDividesByZeroAndDoesNoHarm)
{
    effect.SetDimensions(0, 0);
    Shaded([](int, int) { return 0.5f; });
    ExpectNoGLError();
}

} // namespace OV::Test
