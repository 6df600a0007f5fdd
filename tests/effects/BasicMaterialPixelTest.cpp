#include "tests/effects/MaterialColorsScope.h"
#include "tests/effects/PixelStage.h"

#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <glm/geometric.hpp>
#include <glm/gtc/matrix_inverse.hpp>
#include <glm/gtc/matrix_transform.hpp>

#include <cmath>
#include <utility>

namespace OV::Test
{

namespace
{

using glm::vec3;
using glm::vec4;

constexpr PixelRect kLeft{8, 40, 48, 48};
constexpr PixelRect kRight{72, 40, 48, 48};
constexpr PixelRect kMiddle{32, 32, 64, 64};

const vec4 kDiffuse(0.6f, 0.5f, 0.3f, 1.0f);
const vec4 kAmbient(0.1f, 0.2f, 0.05f, 1.0f);

/// Where the light comes from in most tests, and which way it shines.
const vec3 kTowardsLight = glm::normalize(vec3(1.0f, 2.0f, 3.0f));

class BasicMaterialPixels : public PixelStage
{
protected:
    /// A fragment of a surface that takes the usual light.
    static Fragment Lit(const vec3& normal = vec3(0, 0, 1))
    {
        Fragment fragment;
        fragment.ambient = kAmbient;
        fragment.color = kDiffuse;
        fragment.lightFactor = LightAtVertex(normal, glm::mat3(1.0f), kTowardsLight, false);
        return fragment;
    }

    static Fragment Unlit()
    {
        Fragment fragment = Lit();
        fragment.lightFactor = 1.0f;
        return fragment;
    }

    LightNode& AddUsualLight() { return AddLight(-kTowardsLight); }

    static Quad At(const PixelRect& rect)
    {
        Quad quad;
        quad.rect = rect;
        return quad;
    }
};

} // namespace

TEST_F(BasicMaterialPixels, TheBackgroundStaysWhereNothingIs)
{
    AddQuad(AddMaterial(kDiffuse, kAmbient), At(kLeft));
    ExpectShade(DrawFrame(), kRight, Background);
}

TEST_F(BasicMaterialPixels, LitByTheCosineOfTheNormal)
{
    AddUsualLight();
    Material& material = AddMaterial(kDiffuse, kAmbient);
    const vec3 slanted = glm::normalize(vec3(-1.0f, 0.5f, 1.0f));
    AddQuad(material, At(kLeft));
    Quad right = At(kRight);
    right.normal = slanted * 3.0f; // the length of a normal doesn't count
    AddQuad(material, right);
    const Picture picture = DrawFrame();
    ExpectShade(picture, kLeft, ShadeBasic(Lit()));
    ExpectShade(picture, kRight, ShadeBasic(Lit(slanted)));
}

TEST_F(BasicMaterialPixels, ALightFromBehindLeavesTheAmbientColour)
{
    AddLight(vec3(0, 0, 1));
    AddQuad(AddMaterial(kDiffuse, kAmbient), At(kLeft));
    ExpectShade(DrawFrame(), kLeft, vec4(vec3(kAmbient), 1.0f));
}

TEST_F(BasicMaterialPixels, TheLightIsComputedAtTheVerticesAndInterpolated)
{
    AddUsualLight();
    Quad quad = At(kMiddle);
    quad.normal = glm::normalize(vec3(-2.0f, 0.0f, 1.0f));
    quad.rightNormal = glm::normalize(vec3(1.0f, 1.0f, 1.0f));
    AddQuad(AddMaterial(kDiffuse, kAmbient), quad);
    const float left = Lit(*quad.normal).lightFactor;
    const float right = Lit(*quad.rightNormal).lightFactor;
    ExpectShades(DrawFrame(), kMiddle, [&](int x, int) {
        Fragment fragment = Lit();
        const float share = (static_cast<float>(x - kMiddle.x) + 0.5f) / kMiddle.width;
        fragment.lightFactor = left + (right - left) * share;
        return ShadeBasic(fragment);
    });
}

TEST_F(BasicMaterialPixels, UnlitAndWithoutLightsTheColoursAreAddedAndClamped)
{
    Material& plain = AddMaterial(kDiffuse, kAmbient);
    Material& bright = AddMaterial(vec4(0.9f, 0.5f, 0.1f, 1.0f), vec4(0.3f, 0.2f, 0.1f, 1.0f));
    AddQuad(plain, At(kLeft));
    AddQuad(bright, At(kRight));
    for (const bool hasLight : {false, true})
    {
        if (hasLight)
        {
            AddUsualLight();
            plain.SetFlags(MaterialFlagUnlit);
            bright.SetFlags(MaterialFlagUnlit);
        }
        const Picture picture = DrawFrame();
        ExpectShade(picture, kLeft, ShadeBasic(Unlit()));
        ExpectShade(picture, kRight, vec4(1.0f, 0.7f, 0.2f, 1.0f));
    }
}

TEST_F(BasicMaterialPixels, ColoursOfTheMaterialAtTheVerticesShowAsItsOwn)
{
    AddUsualLight().SetColor(0.5f, 1.0f, 0.25f);
    Material& material = AddMaterial(kDiffuse, kAmbient);
    AddQuad(material, At(kLeft));
    Fragment own = Lit();
    own.color = vec4(0.25f, 0.75f, 0.5f, 1.0f);
    own.ambient = vec4(0.2f, 0.1f, 0.3f, 1.0f);
    Fragment coloured = own;
    coloured.color *= vec4(0.5f, 1.0f, 0.25f, 1.0f);
    Fragment unlit = own;
    unlit.lightFactor = 1.0f;
    // The first frame loads the entry points of GL.
    DrawFrame();
    {
        const MaterialColorsScope scope;
        DrawFrame();
        MaterialColorsScope::Send(own.color, own.ambient);
        ExpectShade(DrawFrame(), kLeft, ShadeBasic(own));
        material.ignoreLightColor = false;
        ExpectShade(DrawFrame(), kLeft, ShadeBasic(coloured));
        material.ignoreLightColor = true;
        material.SetFlags(MaterialFlagUnlit);
        ExpectShade(DrawFrame(), kLeft, ShadeBasic(unlit));
        material.ClearFlags(MaterialFlagUnlit);
    }
    ExpectShade(DrawFrame(), kLeft, ShadeBasic(Lit()));
}

TEST_F(BasicMaterialPixels, TheLightColourCountsUnlessIgnored)
{
    AddUsualLight().SetColor(0.5f, 1.0f, 0.25f);
    Material& ignoring = AddMaterial(kDiffuse, kAmbient);
    Material& coloured = AddMaterial(kDiffuse, kAmbient);
    coloured.ignoreLightColor = false;
    AddQuad(ignoring, At(kLeft));
    AddQuad(coloured, At(kRight));
    const Picture picture = DrawFrame();
    ExpectShade(picture, kLeft, ShadeBasic(Lit()));
    Fragment fragment = Lit();
    fragment.color *= vec4(0.5f, 1.0f, 0.25f, 1.0f);
    ExpectShade(picture, kRight, ShadeBasic(fragment));
}

TEST_F(BasicMaterialPixels, AMeshWithoutNormalsInALitMaterialIsUnlit)
{
    AddUsualLight();
    Material& material = AddMaterial(kDiffuse, kAmbient);
    Quad bare = At(kLeft);
    bare.normal.reset();
    AddQuad(material, bare);
    AddQuad(material, At(kRight));
    const Picture picture = DrawFrame();
    ExpectShade(picture, kLeft, ShadeBasic(Unlit()));
    ExpectShade(picture, kRight, ShadeBasic(Lit()));
}

TEST_F(BasicMaterialPixels, ATextureIsScaledByMaterialTwice)
{
    // Once when the mesh is packed, and once more by the shader.
    const vec4 red(1.0f, 0.2f, 0.0f, 1.0f);
    const vec4 blue(0.0f, 0.4f, 1.0f, 1.0f);
    Material& plain = AddMaterial(vec4(0.5f, 0.5f, 0.5f, 1.0f), vec4(0.25f, 0.5f, 0.125f, 1.0f));
    Material& scaled = AddMaterial(vec4(0.5f, 0.5f, 0.5f, 1.0f), vec4(0.25f, 0.5f, 0.125f, 1.0f));
    SetTexture(plain, {red, blue});
    SetTexture(scaled, {red, blue});
    scaled.uScale = 0.70710678f;
    Quad quad = At(kLeft);
    quad.textured = true;
    AddQuad(plain, quad);
    quad.rect = kRight;
    AddQuad(scaled, quad);
    Fragment fragment;
    fragment.ambient = ToVec(plain.GetAmbient());
    fragment.color = ToVec(plain.GetDiffuse());
    const Picture picture = DrawFrame();
    // The bands repeat: once over the plain quad, twice over the scaled one.
    for (int band = 0; band < 2; ++band)
    {
        fragment.texel = band % 2 == 0 ? red : blue;
        ExpectShade(picture, {kLeft.x + band * 24, kLeft.y, 24, kLeft.height}, ShadeBasic(fragment));
    }
    for (int band = 0; band < 4; ++band)
    {
        fragment.texel = band % 2 == 0 ? red : blue;
        ExpectShade(picture, {kRight.x + band * 12, kRight.y, 12, kRight.height}, ShadeBasic(fragment));
    }
}

TEST_F(BasicMaterialPixels, ATextureOfALitMaterialTakesTheLight)
{
    AddUsualLight();
    const vec4 texel(0.8f, 0.4f, 0.6f, 1.0f);
    Material& material = AddMaterial(kDiffuse, kAmbient);
    SetTexture(material, {texel});
    Quad quad = At(kLeft);
    quad.textured = true;
    AddQuad(material, quad);
    Fragment fragment = Lit();
    fragment.texel = ToVec(ToColor(texel));
    ExpectShade(DrawFrame(), kLeft, ShadeBasic(fragment));
}

TEST_F(BasicMaterialPixels, ASeeThroughMaterialIsBlendedOverWhatIsThere)
{
    Material& opaque = AddMaterial(vec4(0.0f, 0.6f, 0.2f, 1.0f), vec4(0.0f));
    Material& glass = AddMaterial(vec4(0.8f, 0.2f, 0.4f, 0.25f), vec4(0.0f, 0.1f, 0.0f, 1.0f));
    Quad quad = At({8, 40, 112, 48});
    quad.z = 1.0f;
    AddQuad(glass, quad);
    quad.rect = kRight;
    quad.z = 0.0f;
    AddQuad(opaque, quad);
    Fragment fragment;
    fragment.ambient = ToVec(glass.GetAmbient());
    fragment.color = ToVec(glass.GetDiffuse());
    const Picture picture = DrawFrame();
    ExpectShade(picture, kLeft, BlendOver(ShadeBasic(fragment), Background));
    ExpectShade(picture, kRight, BlendOver(ShadeBasic(fragment), vec4(0.0f, 0.6f, 0.2f, 1.0f)));
}

TEST_F(BasicMaterialPixels, ATextureWithAlphaIsBlended)
{
    const vec4 clear(1.0f, 1.0f, 1.0f, 0.4f);
    const vec4 solid(0.2f, 0.4f, 1.0f, 1.0f);
    for (const bool hasAlpha : {true, false})
    {
        Material& material = AddMaterial(vec4(0.5f, 0.5f, 0.5f, 1.0f), vec4(0.25f, 0.25f, 0.25f, 1.0f));
        SetTexture(material, {clear, solid});
        material.hasAlpha = hasAlpha;
        Quad quad = At(hasAlpha ? kLeft : kRight);
        quad.textured = true;
        AddQuad(material, quad);
    }
    const Picture picture = DrawFrame();
    Fragment fragment;
    fragment.ambient = vec4(0.25f, 0.25f, 0.25f, 1.0f);
    fragment.color = vec4(0.5f, 0.5f, 0.5f, 1.0f);
    for (const bool hasAlpha : {true, false})
    {
        const PixelRect& rect = hasAlpha ? kLeft : kRight;
        for (int band = 0; band < 2; ++band)
        {
            fragment.texel = band == 0 ? clear : solid;
            const vec4 color = ShadeBasic(fragment);
            ExpectShade(picture, {rect.x + band * 24, rect.y, 24, rect.height},
                        hasAlpha ? BlendOver(color, Background) : color);
        }
    }
}

TEST_F(BasicMaterialPixels, BackFacesAreCulledUnlessTheMaterialOrTheMeshSaysNot)
{
    Material& culled = AddMaterial(kDiffuse, kAmbient);
    Material& shown = AddMaterial(kDiffuse, kAmbient);
    shown.SetFlags(MaterialFlagNoCull);
    Quad quad = At({4, 40, 32, 48});
    quad.facesAway = true;
    AddQuad(culled, quad);
    quad.rect.x = 48;
    AddQuad(shown, quad);
    quad.rect.x = 92;
    MeshNode& node = AddQuad(culled, quad);
    node.GetMeshes().front()->SetFlags(MeshFlagNoCull);
    const Picture picture = DrawFrame();
    Fragment fragment = Unlit();
    fragment.frontFacing = false;
    ExpectShade(picture, {4, 40, 32, 48}, Background);
    ExpectShade(picture, {48, 40, 32, 48}, ShadeBasic(fragment));
    ExpectShade(picture, {92, 40, 32, 48}, ShadeBasic(fragment));
}

TEST_F(BasicMaterialPixels, BackFacesAreLitFromBehind)
{
    AddUsualLight();
    Material& material = AddMaterial(kDiffuse, kAmbient);
    material.SetFlags(MaterialFlagNoCull);
    Quad quad = At(kLeft);
    quad.facesAway = true;
    quad.normal = vec3(0, 0, -1); // towards the side that would be the front
    AddQuad(material, quad);
    quad.rect = kRight;
    quad.normal = vec3(0, 0, 1);
    AddQuad(material, quad);
    const Picture picture = DrawFrame();
    Fragment fragment = Lit(vec3(0, 0, -1));
    fragment.frontFacing = false;
    ExpectShade(picture, kLeft, ShadeBasic(fragment));
    EXPECT_NE(ToPixel(ShadeBasic(fragment)), ToPixel(vec4(vec3(kAmbient), 1.0f)));
    ExpectShade(picture, kRight, vec4(vec3(kAmbient), 1.0f));
}

TEST_F(BasicMaterialPixels, BackFacesAreTintedWhereTheMeshMarksThem)
{
    AddUsualLight();
    Material& material = AddMaterial(kDiffuse, kAmbient);
    material.SetFlags(MaterialFlagNoCull);
    Quad quad = At(kLeft);
    quad.facesAway = true;
    quad.normal = vec3(0, 0, -1);
    AddQuad(material, quad).GetMeshes().front()->SetFlags(MeshFlagShowFaceSides);
    quad.rect = kRight;
    quad.facesAway = false;
    quad.normal = vec3(0, 0, 1);
    AddQuad(material, quad).GetMeshes().front()->SetFlags(MeshFlagShowFaceSides);
    const Picture picture = DrawFrame();
    Fragment fragment = Lit(vec3(0, 0, -1));
    fragment.frontFacing = false;
    fragment.showFaceSides = true;
    ExpectShade(picture, kLeft, ShadeBasic(fragment));
    fragment = Lit();
    fragment.showFaceSides = true;
    ExpectShade(picture, kRight, ShadeBasic(fragment));
}

TEST_F(BasicMaterialPixels, StipplingDrawsDotsOfTheScreen)
{
    Material& material = AddMaterial(kDiffuse, kAmbient);
    material.stippling = true;
    material.stippleColor = Color(1.0f, 0.0f, 0.8f, 1.0f);
    material.stippleOffset = 7.0f;
    material.stippleSize = 3.0f;
    AddQuad(material, At(kMiddle));
    int dots = 0;
    ExpectShades(DrawFrame(), kMiddle, [&](int x, int y) {
        Fragment fragment = Unlit();
        const vec4 plain = ShadeBasic(fragment);
        fragment.stipple = Fragment::Stipple{7.0f, 3.0f, vec4(1.0f, 0.0f, 0.8f, 1.0f),
                                             {static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f}};
        const vec4 color = ShadeBasic(fragment);
        dots += color != plain ? 1 : 0;
        return color;
    });
    EXPECT_GT(dots, 0);
}

TEST_F(BasicMaterialPixels, FogGrowsWithTheDistance)
{
    SkySettings& sky = SkySettings::inst();
    sky.SetUseFog(true);
    sky.SetHorizonColor(Color(0.9f, 0.1f, 0.4f, 1.0f));
    Material& material = AddMaterial(kDiffuse, kAmbient);
    const float depths[] = {2.0f, 0.0f, -3.0f, -12.0f};
    const PixelRect places[] = {{4, 8, 24, 100}, {36, 8, 24, 100}, {68, 8, 24, 100}, {100, 8, 24, 100}};
    for (int i = 0; i < 4; ++i)
    {
        Quad quad = At(places[i]);
        quad.z = depths[i];
        AddQuad(material, quad);
    }
    for (const bool monotone : {false, true})
    {
        sky.SetMonotone(monotone);
        sky.SetFogStart(0.0f);
        sky.SetFogEnd(1.0f);
        DrawFrame(); // settles the depth range, and with it the distances
        const glm::mat4 matrix = ViewProjection();
        const float start = 0.5f * (FogDistance(matrix, vec3(0, 0, 2)) + FogDistance(matrix, vec3(0, 0, 0)));
        const float end = 0.5f * (FogDistance(matrix, vec3(0, 0, -3)) + FogDistance(matrix, vec3(0, 0, -12)));
        sky.SetFogStart(start);
        sky.SetFogEnd(end);
        const Picture picture = DrawFrame();
        for (int i = 0; i < 4; ++i)
        {
            Fragment fragment = Unlit();
            fragment.fog = Fragment::Fog{FogDistance(matrix, vec3(0, 0, depths[i])), start, end,
                                         monotone ? vec4(1.0f) : vec4(0.9f, 0.1f, 0.4f, 1.0f)};
            ExpectShade(picture, places[i], ShadeBasic(fragment));
        }
        ExpectShade(picture, places[0], ShadeBasic(Unlit()));
        ExpectShade(picture, places[3], monotone ? vec4(1.0f) : vec4(0.9f, 0.1f, 0.4f, 1.0f));
    }
}

TEST_F(BasicMaterialPixels, WithoutFogDistanceDoesNotCount)
{
    SkySettings::inst().SetFogStart(0.0f);
    SkySettings::inst().SetFogEnd(0.1f);
    Quad quad = At(kLeft);
    quad.z = -20.0f;
    AddQuad(AddMaterial(kDiffuse, kAmbient), quad);
    ExpectShade(DrawFrame(), kLeft, ShadeBasic(Unlit()));
}

TEST_F(BasicMaterialPixels, AMirroredNodeKeepsItsLightAndItsSides)
{
    AddUsualLight();
    Material& material = AddMaterial(kDiffuse, kAmbient);
    material.SetFlags(MaterialFlagNoCull);
    const vec3 normal = glm::normalize(vec3(1.0f, 0.0f, 2.0f));
    Quad quad = At(kLeft);
    quad.normal = normal;
    Transform mirror;
    mirror.SetScale(Vector(-1, 1, 1));
    for (const bool sides : {false, true})
    {
        MeshNode& node = AddQuad(material, quad);
        node.SetLocal(mirror); // the left quad appears on the right
        if (sides)
        {
            node.GetMeshes().front()->SetFlags(MeshFlagShowFaceSides);
        }
        Fragment fragment = Lit();
        const glm::mat3 normalMatrix = glm::inverseTranspose(glm::mat3(glm::scale(glm::mat4(1.0f), vec3(-1, 1, 1))));
        fragment.lightFactor = LightAtVertex(normal, normalMatrix, kTowardsLight, true);
        fragment.frontFacing = false;
        fragment.mirrored = true;
        fragment.showFaceSides = sides;
        // Two negations cancel: the same light as on a quad whose normal is mirrored.
        ExpectShade(DrawFrame(), kRight, ShadeBasic(fragment));
        ExpectShade(DrawFrame(), kRight, ShadeBasic(Lit(vec3(-normal.x, normal.y, normal.z))));
        scene.DeleteSubtree(&node);
    }
}

TEST_F(BasicMaterialPixels, ANodeThatStretchesKeepsTheAngleOfItsNormals)
{
    AddUsualLight();
    const vec3 normal = glm::normalize(vec3(1.0f, 1.0f, 1.0f));
    Quad quad = At(kMiddle);
    quad.normal = normal;
    Transform stretch;
    stretch.SetScale(Vector(0.5f, 1.0f, 4.0f));
    AddQuad(AddMaterial(kDiffuse, kAmbient), quad).SetLocal(stretch);
    Fragment fragment = Lit();
    fragment.lightFactor = LightAtVertex(normal, glm::mat3(2, 0, 0, 0, 1, 0, 0, 0, 0.25f), kTowardsLight, false);
    ExpectShade(DrawFrame(), {48, 32, 32, 64}, ShadeBasic(fragment));
}

TEST_F(BasicMaterialPixels, ANodeThatIsFlattenedIsLitAsItsPlane)
{
    AddUsualLight();
    Quad quad = At(kMiddle);
    quad.normal = glm::normalize(vec3(1.0f, -1.0f, 1.0f));
    Transform flat;
    flat.SetScale(Vector(1.0f, 1.0f, 0.0f));
    AddQuad(AddMaterial(kDiffuse, kAmbient), quad).SetLocal(flat);
    ExpectShade(DrawFrame(), kMiddle, ShadeBasic(Lit(vec3(0.0f, 0.0f, 1.0f))));
}

TEST_F(BasicMaterialPixels, TheAdditiveEffectAddsUp)
{
    Material& first = AddMaterial(vec4(0.2f, 0.1f, 0.3f, 1.0f), vec4(0.0f));
    Material& second = AddMaterial(vec4(0.1f, 0.3f, 0.4f, 0.5f), vec4(0.0f));
    Quad quad = At(kLeft);
    quad.rect.width = 112;
    AddQuad(first, quad);
    quad.rect = kRight;
    quad.z = 1.0f;
    AddQuad(second, quad);
    const Picture picture = DrawPass(RenderPassBasicVariant);
    const vec4 once = BlendAdd(vec4(0.2f, 0.1f, 0.3f, 1.0f), Background);
    ExpectShade(picture, kLeft, once);
    ExpectShade(picture, kRight, BlendAdd(vec4(0.1f, 0.3f, 0.4f, 0.5f), once));
}

TEST_F(BasicMaterialPixels, OneToSixClipPlanesCutAndTheSeventhDoesNot)
{
    AddUsualLight();
    AddQuad(AddMaterial(kDiffuse, kAmbient), At({8, 8, 112, 112}));
    const std::pair<vec3, vec3> planes[] = {
        {vec3(1, 0, 0), vec3(3.0f, 0, 0)},   {vec3(-1, 0, 0), vec3(-3.2f, 0, 0)}, {vec3(0, 1, 0), vec3(0, 3.1f, 0)},
        {vec3(0, -2, 0), vec3(0, -2.9f, 0)}, {vec3(1, 1, 0), vec3(2.0f, 1.5f, 7)}, {vec3(-1, 1, 0), vec3(-2.1f, 1.6f, 0)},
        {vec3(0, 0, 1), vec3(0, 0, -1)}}; // this one would take everything
    std::vector<std::pair<vec3, vec3>> active;
    for (const auto& [normal, position] : planes)
    {
        EffectES20::AddClipPlane(normal, position);
        if (active.size() < 6)
        {
            active.emplace_back(normal, position);
        }
        int cut = 0;
        const Picture picture = DrawPass(RenderPassDefault, true);
        ExpectShades(picture, {8, 8, 112, 112}, [&](int x, int y) -> std::optional<vec4> {
            bool isCut = false;
            for (const auto& [n, p] : active)
            {
                const float side = glm::dot(glm::normalize(n), WorldAt(x, y) - p);
                const float twoPixels = 2.0f * 10.0f / DefaultSize;
                if (std::abs(side) < twoPixels)
                {
                    return std::nullopt;
                }
                isCut = isCut || side > 0.0f;
            }
            cut += isCut ? 1 : 0;
            return isCut ? Background : ShadeBasic(Lit());
        });
        EXPECT_GT(cut, 0) << EffectES20::GetClipPlaneNormals().size() << " planes";
    }
}

TEST_F(BasicMaterialPixels, TheEnginesOwnFrameIsNotCut)
{
    AddUsualLight();
    AddQuad(AddMaterial(kDiffuse, kAmbient), At(kMiddle));
    EffectES20::AddClipPlane(vec3(0, 0, 1), vec3(0, 0, -1));
    ExpectShade(DrawFrame(), kMiddle, ShadeBasic(Lit()));
    ExpectShade(DrawPass(RenderPassDefault, true), kMiddle, Background);
}

TEST_F(BasicMaterialPixels, TheInsideOfACutSolidShowsThePocheColour)
{
    const vec4 poche(0.9f, 0.3f, 0.1f, 1.0f);
    EffectES20::SetPocheColor(poche);
    AddUsualLight();
    Material& opaque = AddMaterial(kDiffuse, kAmbient);
    Material& almost = AddMaterial(vec4(vec3(kDiffuse), 0.998f), kAmbient);
    for (Material* material : {&opaque, &almost})
    {
        material->SetFlags(MaterialFlagNoCull);
    }
    Quad quad = At({4, 40, 32, 48});
    quad.facesAway = true;
    quad.normal = vec3(0, 0, -1);
    AddQuad(opaque, quad);
    quad.rect.x = 48;
    AddQuad(almost, quad);
    quad.rect.x = 92;
    AddQuad(opaque, quad).GetMeshes().front()->SetFlags(MeshFlagShowFaceSides);

    Fragment back = Lit(vec3(0, 0, -1));
    back.frontFacing = false;
    const vec4 plain = ShadeBasic(back);
    back.color.a = 0.998f;
    const vec4 seeThrough = BlendOver(ShadeBasic(back), Background);
    back.color.a = 1.0f;
    back.showFaceSides = true;
    const vec4 tinted = ShadeBasic(back);

    struct Case
    {
        const char* label;
        bool plane;
        bool active;
        bool enabled;
        vec4 expected;
    };
    const Case cases[] = {
        {"no plane", false, true, true, plain},
        {"planes not active for the mesh", true, false, true, plain},
        {"poche switched off", true, true, false, plain},
        {"poche", true, true, true, poche},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.label);
        EffectES20::ClearClipPlanes();
        if (c.plane)
        {
            EffectES20::AddClipPlane(vec3(0, 0, 1), vec3(0, 0, 3)); // in front of it all
        }
        EffectES20::EnablePocheColor(c.enabled);
        const Picture picture = DrawPass(RenderPassDefault, c.active);
        ExpectShade(picture, {4, 40, 32, 48}, c.expected);
        ExpectShade(picture, {48, 40, 32, 48}, seeThrough);
        ExpectShade(picture, {92, 40, 32, 48}, tinted);
    }
}

TEST_F(BasicMaterialPixels, UnlitMeshesAreNeverCutWhateverWasDrawnBefore)
{
    AddUsualLight();
    EffectES20::AddClipPlane(vec3(0, 0, 1), vec3(0, 0, -1));
    Material& before = AddMaterial(kDiffuse, kAmbient);
    Material& lit = AddMaterial(kDiffuse, kAmbient);
    Material& after = AddMaterial(kDiffuse, kAmbient);
    before.SetFlags(MaterialFlagUnlit);
    after.SetFlags(MaterialFlagUnlit);
    AddQuad(before, At({4, 40, 24, 48}));
    AddQuad(lit, At({36, 40, 24, 48}));
    Quad bare = At({68, 40, 24, 48});
    bare.normal.reset();
    AddQuad(lit, bare);
    AddQuad(after, At({100, 40, 24, 48}));
    const Picture first = DrawPass(RenderPassDefault, true);
    const Picture second = DrawPass(RenderPassDefault, true);
    EXPECT_EQ(first, second);
    ExpectShade(first, {4, 40, 24, 48}, ShadeBasic(Unlit()));
    ExpectShade(first, {36, 40, 24, 48}, Background);
    ExpectShade(first, {68, 40, 24, 48}, ShadeBasic(Unlit()));
    ExpectShade(first, {100, 40, 24, 48}, ShadeBasic(Unlit()));
}

TEST_F(BasicMaterialPixels, AMirroredLitNodeChangesNoUnlitMeshOfTheNextFrame)
{
    AddUsualLight();
    Material& unlit = AddMaterial(kDiffuse, kAmbient);
    unlit.SetFlags(MaterialFlagUnlit);
    AddQuad(unlit, At(kLeft)).GetMeshes().front()->SetFlags(MeshFlagShowFaceSides);
    Material& lit = AddMaterial(kDiffuse, kAmbient);
    lit.SetFlags(MaterialFlagNoCull);
    Transform mirror;
    mirror.SetScale(Vector(-1, 1, 1));
    AddQuad(lit, At(kLeft)).SetLocal(mirror);
    const Picture first = DrawFrame();
    const Picture second = DrawFrame();
    EXPECT_EQ(first, second);
    ExpectShade(second, kLeft, ShadeBasic(Unlit()));
}

TEST_F(BasicMaterialPixels, AFrameDoesNotDependOnThePassBefore)
{
    AddUsualLight().SetAmbient(0.5f, 0.5f, 0.5f);
    SkySettings::inst().SetUseFog(true);
    SkySettings::inst().SetFogStart(3.0f);
    SkySettings::inst().SetFogEnd(9.0f);
    Material& textured = AddMaterial(kDiffuse, kAmbient);
    SetTexture(textured, {vec4(1.0f, 0.5f, 0.0f, 1.0f), vec4(0.0f, 0.5f, 1.0f, 0.5f)});
    textured.hasAlpha = true;
    Material& stippled = AddMaterial(vec4(vec3(kDiffuse), 0.5f), kAmbient);
    stippled.stippling = true;
    stippled.SetFlags(MaterialFlagNoCull);
    Quad quad = At(kLeft);
    quad.textured = true;
    AddQuad(textured, quad);
    quad = At(kRight);
    quad.facesAway = true;
    AddQuad(stippled, quad).GetMeshes().front()->SetFlags(MeshFlagShowFaceSides);
    const Picture first = DrawFrame();
    AllowStateChange("vertex attribute 0"); // as the ambient pass leaves it
    for (const RenderPass pass : {RenderPassDefault, RenderPassBasicVariant, RenderPassAmbient, RenderPassSky})
    {
        DrawPass(pass, true);
        EXPECT_EQ(DrawFrame(), first) << pass;
    }
}

} // namespace OV::Test
