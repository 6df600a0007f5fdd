#include "tests/effects/PixelStage.h"

#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

namespace OV::Test
{

namespace
{

using glm::vec3;
using glm::vec4;

constexpr PixelRect kLeft{8, 40, 48, 48};
constexpr PixelRect kRight{72, 40, 48, 48};

const vec4 kDiffuse(0.6f, 0.5f, 0.3f, 1.0f);
const vec4 kAmbient(0.2f, 0.3f, 0.1f, 1.0f);
const vec4 kPoche(0.9f, 0.1f, 0.5f, 1.0f);

class AmbientPassPixels : public PixelStage
{
protected:
    AmbientPassPixels()
    {
        AllowStateChange("vertex attribute 0"); // the pass leaves it enabled
        EffectES20::SetPocheColor(kPoche);
    }

    Picture Draw() { return DrawPass(RenderPassAmbient); }

    static Fragment Of(const vec4& ambient)
    {
        Fragment fragment;
        fragment.ambient = ambient;
        return fragment;
    }

    static vec4 Shade(const Fragment& fragment, float shadow = 0.0f)
    {
        return ShadeAmbientPass(fragment, kPoche, shadow);
    }

    static Quad At(const PixelRect& rect)
    {
        Quad quad;
        quad.rect = rect;
        return quad;
    }
};

} // namespace

TEST_F(AmbientPassPixels, ALitMaterialShowsItsAmbientColourWithAndWithoutThatOfTheLight)
{
    LightNode& light = AddLight(vec3(0, 0, -1));
    AddQuad(AddMaterial(kDiffuse, kAmbient), At(kLeft));
    ExpectShade(Draw(), kLeft, Shade(Of(kAmbient)));
    light.SetAmbient(0.5f, 0.25f, 1.0f);
    ExpectShade(Draw(), kLeft, Shade(Of(kAmbient * vec4(0.5f, 0.25f, 1.0f, 1.0f))));
    light.ClearAmbient();
    ExpectShade(Draw(), kLeft, Shade(Of(kAmbient)));
}

TEST_F(AmbientPassPixels, AnUnlitMaterialShowsAtFullColour)
{
    Material& material = AddMaterial(kDiffuse, kAmbient);
    AddQuad(material, At(kLeft));
    const vec4 full(vec3(kAmbient + kDiffuse), 1.0f);
    ExpectShade(Draw(), kLeft, Shade(Of(full)));
    AddLight(vec3(0, 0, -1));
    ExpectShade(Draw(), kLeft, Shade(Of(kAmbient)));
    material.SetFlags(MaterialFlagUnlit);
    ExpectShade(Draw(), kLeft, Shade(Of(full)));
}

TEST_F(AmbientPassPixels, AMeshWithoutNormalsInALitMaterialShowsItsWholeColour)
{
    AddLight(vec3(0, 0, -1));
    Material& material = AddMaterial(kDiffuse, kAmbient);
    Quad bare = At(kLeft);
    bare.normal.reset();
    AddQuad(material, bare);
    AddQuad(material, At(kRight));
    const Picture picture = Draw();
    ExpectShade(picture, kLeft, Shade(Of(vec4(vec3(kAmbient + kDiffuse), 1.0f))));
    ExpectShade(picture, kRight, Shade(Of(kAmbient)));
}

TEST_F(AmbientPassPixels, ATextureMultipliesItAndAlphaBlends)
{
    AddLight(vec3(0, 0, -1));
    const vec4 texel(0.4f, 1.0f, 0.6f, 0.6f);
    for (const bool hasAlpha : {false, true})
    {
        Material& material = AddMaterial(kDiffuse, vec4(0.8f, 0.5f, 1.0f, 1.0f));
        SetTexture(material, {texel});
        material.hasAlpha = hasAlpha;
        Quad quad = At(hasAlpha ? kRight : kLeft);
        quad.textured = true;
        AddQuad(material, quad);
    }
    Fragment fragment = Of(vec4(0.8f, 0.5f, 1.0f, 1.0f));
    fragment.texel = texel;
    const Picture picture = Draw();
    ExpectShade(picture, kLeft, Shade(fragment));
    ExpectShade(picture, kRight, BlendOver(Shade(fragment), Background));
}

TEST_F(AmbientPassPixels, ASeeThroughMaterialIsBlended)
{
    AddLight(vec3(0, 0, -1));
    AddQuad(AddMaterial(vec4(vec3(kDiffuse), 0.25f), kAmbient), At(kLeft));
    ExpectShade(Draw(), kLeft, BlendOver(Shade(Of(vec4(vec3(kAmbient), 0.25f))), Background));
}

TEST_F(AmbientPassPixels, OpaqueBackFacesShowThePocheColourEvenWithoutClipPlanesAndSwitchedOff)
{
    EffectES20::EnablePocheColor(false);
    AddLight(vec3(0, 0, -1));
    Material& opaque = AddMaterial(kDiffuse, kAmbient);
    Material& almost = AddMaterial(vec4(vec3(kDiffuse), 0.998f), kAmbient);
    opaque.SetFlags(MaterialFlagNoCull);
    almost.SetFlags(MaterialFlagNoCull);
    Quad quad = At({4, 40, 32, 48});
    quad.facesAway = true;
    AddQuad(opaque, quad);
    quad.rect.x = 48;
    AddQuad(almost, quad);
    quad.rect.x = 92;
    AddQuad(opaque, quad).GetMeshes().front()->SetFlags(MeshFlagShowFaceSides);
    const Picture picture = Draw();
    ExpectShade(picture, {4, 40, 32, 48}, kPoche);
    ExpectShade(picture, {48, 40, 32, 48}, BlendOver(vec4(vec3(kAmbient), 0.998f), Background));
    Fragment tinted = Of(kAmbient);
    tinted.frontFacing = false;
    tinted.showFaceSides = true;
    ExpectShade(picture, {92, 40, 32, 48}, Shade(tinted));
}

TEST_F(AmbientPassPixels, AMirroredNodeKeepsItsSides)
{
    AddLight(vec3(0, 0, -1));
    Material& material = AddMaterial(kDiffuse, kAmbient);
    material.SetFlags(MaterialFlagNoCull);
    Transform mirror;
    mirror.SetScale(Vector(-1, 1, 1));
    AddQuad(material, At(kLeft)).SetLocal(mirror);
    ExpectShade(Draw(), kRight, Shade(Of(kAmbient)));
}

TEST_F(AmbientPassPixels, AShadowDarkensTheColourNotTheAlpha)
{
    AddLight(vec3(0, 0, -1));
    AddQuad(AddMaterial(kDiffuse, kAmbient), At(kLeft));
    EffectES20::SetShadowIntensity(0.4f);
    EffectES20::SetShadow(true);
    ExpectShade(Draw(), kLeft, Shade(Of(kAmbient)));
    EffectES20::SetAdvancedMaterialShaderType(EffectCache::AdvancedMaterialPhong);
    ExpectShade(Draw(), kLeft, Shade(Of(kAmbient), 0.4f));
}

TEST_F(AmbientPassPixels, FogAndStipplingComeBeforeTheShadow)
{
    AddLight(vec3(0, 0, -1));
    SkySettings& sky = SkySettings::inst();
    sky.SetUseFog(true);
    sky.SetHorizonColor(Color(0.9f, 0.8f, 0.2f, 1.0f));
    EffectES20::SetShadowIntensity(0.5f);
    EffectES20::SetShadow(true);
    EffectES20::SetAdvancedMaterialShaderType(EffectCache::AdvancedMaterialPhong);
    Material& material = AddMaterial(kDiffuse, kAmbient);
    material.stippling = true;
    material.stippleColor = Color(0.0f, 0.4f, 1.0f, 1.0f);
    material.stippleOffset = 5.0f;
    material.stippleSize = 2.0f;
    AddQuad(material, At(kLeft));
    Draw();
    const float distance = FogDistance(ViewProjection(), vec3(0, 0, 0));
    sky.SetFogStart(distance - 1.0f);
    sky.SetFogEnd(distance + 3.0f);
    ExpectShades(Draw(), kLeft, [&](int x, int y) {
        Fragment fragment = Of(kAmbient);
        fragment.fog = Fragment::Fog{distance, distance - 1.0f, distance + 3.0f, vec4(0.9f, 0.8f, 0.2f, 1.0f)};
        fragment.stipple = Fragment::Stipple{5.0f, 2.0f, vec4(0.0f, 0.4f, 1.0f, 1.0f),
                                             {static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f}};
        return Shade(fragment, 0.5f);
    });
}

} // namespace OV::Test
