#include "tests/effects/PixelStage.h"

#include "orvane/scene/Material.h"

namespace OV::Test
{

namespace
{

using glm::vec4;

constexpr PixelRect kAll{0, 0, GLFixture::DefaultSize, GLFixture::DefaultSize};

class SkyPixels : public PixelStage
{
protected:
    SkyPixels()
    {
        sky.horizon = vec4(0.9f, 0.6f, 0.3f, 1.0f);
        sky.middle = vec4(0.3f, 0.7f, 0.8f, 1.0f);
        sky.upper = vec4(0.1f, 0.2f, 0.9f, 1.0f);
        sky.horizonStop = 0.4f;
        sky.skyStop = 0.7f;
        SkySettings::inst().SetHorizonColor(ToColor(sky.horizon));
        SkySettings::inst().SetSkyColor(ToColor(sky.middle));
        SkySettings::inst().SetSkyUpperColor(ToColor(sky.upper));
        SkySettings::inst().SetHorizonStop(sky.horizonStop);
        SkySettings::inst().SetSkyStop(sky.skyStop);
        // Over the whole picture, its second texture coordinate rising from 0 to 1.
        Quad quad;
        quad.rect = kAll;
        quad.textured = true;
        AddQuad(AddMaterial(vec4(1.0f), vec4(1.0f)), quad);
    }

    void ExpectSky(const Picture& picture)
    {
        ExpectShades(picture, kAll, [this](int, int y) {
            return ShadeSky(sky, (static_cast<float>(y) + 0.5f) / DefaultSize);
        });
    }

    Sky sky;
};

} // namespace

TEST_F(SkyPixels, FadesFromTheHorizonThroughTheSkyToTheUpperSky)
{
    const Picture picture = DrawPass(RenderPassSky);
    ExpectSky(picture);
    ExpectColorInRect(picture, {0, 92, DefaultSize, 34}, ToPixel(sky.upper), 1);
}

TEST_F(SkyPixels, MonotoneIsWhite)
{
    SkySettings::inst().SetMonotone(true);
    ExpectColorInRect(DrawPass(RenderPassSky), kAll, ToPixel(vec4(1.0f)));
}

TEST_F(SkyPixels, WithoutSkyColourItIsTheHorizonThroughout)
{
    SkySettings::inst().SetUseSkyColor(false);
    ExpectColorInRect(DrawPass(RenderPassSky), kAll, ToPixel(sky.horizon), 1);
}

TEST_F(SkyPixels, IsPaintedWithoutADepthTest)
{
    // Nearer things drawn before it are painted over.
    Quad quad;
    quad.rect = {32, 32, 64, 64};
    quad.z = 2.0f;
    AddQuad(AddMaterial(vec4(0.0f, 1.0f, 0.0f, 1.0f), vec4(0.0f)), quad);
    DrawFrame();
    scene.GetOptimizedMaterials().back()->SetDrawID(1);
    renderer.DrawPass(scene, RenderPassSky, false);
    ExpectSky(ReadPixels());
}

} // namespace OV::Test
