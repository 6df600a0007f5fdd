#include "tests/effects/AdvancedStage.h"
#include "tests/effects/MaterialColorsScope.h"

#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/NodeMaterial.h"

#include <glm/geometric.hpp>

#include <algorithm>
#include <utility>

namespace OV::Test
{

namespace
{

using glm::vec3;
using glm::vec4;

constexpr PixelRect kLeft{8, 40, 48, 48};
constexpr PixelRect kRight{72, 40, 48, 48};

class AdvancedPixels : public AdvancedStage
{
protected:
    /// Compares the two halves with a case of their own, in one picture.
    void ExpectBoth(const AdvancedCase& left, const AdvancedCase& right)
    {
        const Picture picture = Draw(left);
        for (const AdvancedCase* of : {&left, &right})
        {
            ExpectShades(picture, of->surface.rect, [&](int x, int y) { return of->At(x, y, Background); });
        }
    }

    static void AddPlane(AdvancedLook& look, const vec3& normal, const vec3& position)
    {
        look.clip.planes.emplace_back(normal, position);
        EffectES20::AddClipPlane(normal, position);
    }
};

} // namespace

TEST_F(AdvancedPixels, ColoursOfTheVerticesMultiplyTheSurfaceOnRequestAlone)
{
    AddUsualLight();
    Material& material = AddUsualMaterial();
    for (const bool phong : {false, true})
    {
        AdvancedCase plain = Usual(phong);
        plain.surface.rect = kLeft;
        plain.surface.hasColors = true;
        plain.surface.colors.fill(vec4(0.5f, 0.25f, 1.0f, 0.5f));
        MeshNode& node = AddSurface(material, plain.surface);
        ExpectCase(plain);

        AdvancedCase colored = plain;
        colored.look.color *= vec4(0.5f, 0.25f, 1.0f, 1.0f);
        Effect(phong).SetVertexColors(true);
        ExpectCase(colored);
        Effect(phong).SetVertexColors(false);
        ExpectCase(plain);
        scene.DeleteSubtree(&node);
    }
}

TEST_F(AdvancedPixels, ColoursOfTheMaterialAtTheVerticesShowAsItsOwn)
{
    LightNode& light = AddUsualLight();
    Material& material = AddUsualMaterial();
    for (const bool phong : {false, true})
    {
        for (const bool isLit : {true, false})
        {
            AdvancedCase own = Usual(phong);
            own.surface.rect = kLeft;
            own.look.lit = isLit;
            isLit ? material.ClearFlags(MaterialFlagUnlit) : material.SetFlags(MaterialFlagUnlit);
            if (!isLit)
            {
                own.look.specular = vec4(0.0f, 0.0f, 0.0f, 1.0f);
                own.look.towardsLight = vec3(0.0f, 0.0f, 1.0f);
            }
            MeshNode& node = AddSurface(material, own.surface);
            ExpectCase(own);
            const AdvancedCase before = own;
            own.look.color = vec4(0.25f, 0.75f, 0.5f, 1.0f);
            own.look.ambient = vec4(0.6f, 0.1f, 0.3f, 1.0f);
            {
                const MaterialColorsScope scope;
                Draw(own);
                MaterialColorsScope::Send(own.look.color, own.look.ambient);
                ExpectCase(own);
                if (isLit)
                {
                    // The light colours them too.
                    light.SetColor(0.5f, 1.0f, 0.25f);
                    material.ignoreLightColor = false;
                    AdvancedCase coloured = own;
                    coloured.look.color *= vec4(0.5f, 1.0f, 0.25f, 1.0f);
                    coloured.look.specular = vec4(0.5f, 1.0f, 0.25f, 1.0f);
                    ExpectCase(coloured);
                    material.ignoreLightColor = true;
                }
            }
            ExpectCase(before);
            scene.DeleteSubtree(&node);
        }
    }
}

TEST_F(AdvancedPixels, AnEmptyEditPathGreysNodesWithoutAPathAndNoOther)
{
    AddUsualLight();
    Material& material = AddUsualMaterial();
    for (const bool phong : {false, true})
    {
        AdvancedCase left = Usual(phong);
        AdvancedCase right = left;
        left.surface.rect = kLeft;
        left.look.grey = true;
        right.surface.rect = kRight;
        MeshNode& without = AddSurface(material, left.surface);
        MeshNode& with = AddSurface(material, right.surface);
        with.SetPath({{7, 8}});
        Effect(phong).SetEditInContextPath({});
        ExpectBoth(left, right);
        Effect(phong).ClearEditInContextPath();
        left.look.grey = false;
        ExpectBoth(left, right);
        scene.DeleteSubtree(&without);
        scene.DeleteSubtree(&with);
    }
}

TEST_F(AdvancedPixels, OnlyNodesWhosePathBeginsWithTheEditPathKeepTheirColour)
{
    using Path = AdvancedMaterialBaseES20::Path;
    struct Case
    {
        const char* label;
        Path edit;
        Path own;
        bool grey;
    };
    const Case cases[] = {
        {"the same path", {{1, 2}, {3, 4}}, {{1, 2}, {3, 4}}, false},
        {"below it", {{1, 2}, {3, 4}}, {{1, 2}, {3, 4}, {5, 6}}, false},
        {"a path longer than the node's own", {{1, 2}, {3, 4}}, {{1, 2}}, true},
        {"another first word", {{1, 2}, {3, 4}}, {{1, 2}, {9, 4}}, true},
        {"another second word", {{1, 2}, {3, 4}}, {{1, 2}, {3, 9}, {5, 6}}, true},
        {"no path", {{1, 2}}, {}, true},
        {"an empty edit path", {}, {{1, 2}}, false},
    };
    AddUsualLight();
    Material& material = AddUsualMaterial();
    AdvancedCase usual = Usual(false);
    MeshNode& node = AddSurface(material, usual.surface);
    for (const bool phong : {false, true})
    {
        for (const Case& c : cases)
        {
            SCOPED_TRACE(c.label);
            usual.look = Usual(phong).look;
            usual.look.grey = c.grey;
            node.SetPath(c.own);
            Effect(phong).SetEditInContextPath(c.edit);
            Effect(!phong).ClearEditInContextPath(); // each model has a path of its own
            ExpectCase(usual);
        }
    }
}

TEST_F(AdvancedPixels, AnEditHoldsForAllMaterialsOfItsModelAndNotForTheOther)
{
    AddUsualLight();
    for (const bool phong : {false, true})
    {
        AdvancedCase left = Usual(phong);
        AdvancedCase right = left;
        left.surface.rect = kLeft;
        right.surface.rect = kRight;
        Material& first = AddUsualMaterial();
        Material& second = AddUsualMaterial();
        AddSurface(first, left.surface);
        AddSurface(second, right.surface);
        Effect(!phong).SetEditInContextPath({{1, 2}});
        ExpectBoth(left, right);
        Effect(!phong).ClearEditInContextPath();
        Effect(phong).SetEditInContextPath({{1, 2}});
        left.look.grey = right.look.grey = true;
        ExpectBoth(left, right);
        delete &first;
        delete &second;
        Effect(phong).ClearEditInContextPath();
    }
}

TEST_F(AdvancedPixels, PointsAreAsWideAsTheMaterialSays)
{
    Surface surface;
    surface.rect = {32, 32, 64, 64};
    Material& material = AddUsualMaterial();
    material.SetFlags(MaterialFlagPoints);
    material.pointSize = 8.0f;
    AddSurface(material, surface);
    for (const bool phong : {false, true})
    {
        const Picture picture = Draw(Usual(phong));
        const int drawn = DefaultSize * DefaultSize - picture.Count(ToPixel(Background));
        EXPECT_EQ(drawn, 4 * 8 * 8);
        EXPECT_NE(picture.At(28, 28), ToPixel(Background));
        EXPECT_NE(picture.At(35, 35), ToPixel(Background));
    }
}

TEST_F(AdvancedPixels, WithoutACubeMapTheReflectionTermIsThatOfOpaqueBlack)
{
    AddUsualLight();
    Material& material = AddUsualMaterial();
    const float factors[] = {0.5f, 0.9f, 0.75f};
    std::copy(factors, factors + 3, material.reflectionFactors);
    for (const bool phong : {false, true})
    {
        AdvancedCase usual = Usual(phong);
        usual.look.reflection = {0.5f, 0.9f, 0.75f};
        MeshNode& node = AddSurface(material, usual.surface);
        ExpectCase(usual);
        scene.DeleteSubtree(&node);
    }
}

TEST_F(AdvancedPixels, ACubeMapShowsUntilItIsTakenAway)
{
    CubeColors cube;
    for (int i = 0; i < 6; ++i)
    {
        cube.faces[i] = vec4(i % 2 == 0 ? 1.0f : 0.0f, i / 2 == 1 ? 1.0f : 0.0f, i / 2 == 2 ? 1.0f : 0.0f, 1.0f);
    }
    const unsigned texture = PictureLoader::MakeCube(cube);
    AddUsualLight();
    Material& material = AddUsualMaterial();
    const float factors[] = {0.6f, 0.6f, 1.0f};
    std::copy(factors, factors + 3, material.reflectionFactors);
    for (const bool phong : {false, true})
    {
        AdvancedCase usual = Usual(phong);
        usual.look.reflection = {0.6f, 0.6f, 1.0f};
        // A curved surface, which reflects more than one face.
        for (std::size_t i = 0; i < 4; ++i)
        {
            usual.surface.normals[i] = glm::normalize(vec3(usual.surface.World(static_cast<int>(i))) + vec3(0, 0, 3));
        }
        MeshNode& node = AddSurface(material, usual.surface);
        usual.look.reflectionMap = &cube;
        Effect(phong).SetReflectionMap(texture);
        ExpectCase(usual);
        usual.look.reflectionMap = nullptr;
        Effect(phong).SetReflectionMap(0);
        ExpectCase(usual);
        scene.DeleteSubtree(&node);
    }
    PictureLoader().ReleaseTexture(texture);
}

TEST_F(AdvancedPixels, ATexelOfLowAlphaIsDiscardedWhateverTheOpacity)
{
    const Texels texels(2, 1, {vec4(1.0f, 1.0f, 1.0f, 63.0f / 255.0f), vec4(1.0f, 1.0f, 1.0f, 64.0f / 255.0f)});
    pictures.pictures["color"] = texels;
    for (const bool phong : {false, true})
    {
        for (const float opacity : {1.0f, 0.5f})
        {
            AdvancedCase usual = Usual(phong);
            usual.look.color.a = opacity;
            usual.look.texture = &texels;
            usual.look.lit = false;
            usual.look.towardsLight = vec3(0, 0, 1);
            usual.look.specular = vec4(0, 0, 0, 1);
            usual.surface.hasCoordinates = true;
            Material& material = AddMaterial(usual.look.color, usual.look.ambient);
            material.textureName = "color";
            MeshNode& node = AddSurface(material, usual.surface);
            ExpectCase(usual);
            const Picture picture = Draw(usual);
            EXPECT_EQ(picture.At(30, 70), ToPixel(Background));
            EXPECT_NE(picture.At(90, 70), ToPixel(Background));
            scene.DeleteSubtree(&node);
            delete &material;
        }
    }
}

TEST_F(AdvancedPixels, AnOpacityMapCutsHolesWhereItsRedIsLow)
{
    const Texels texels(2, 1, {vec4(101.0f / 255.0f, 1, 1, 1), vec4(103.0f / 255.0f, 0, 0, 0)});
    pictures.pictures["opacity"] = texels;
    AddUsualLight();
    Material& material = AddUsualMaterial();
    material.opacityMapName = "opacity";
    for (const bool phong : {false, true})
    {
        AdvancedCase usual = Usual(phong);
        usual.look.opacityMap = &texels;
        usual.surface.hasCoordinates = true;
        MeshNode& node = AddSurface(material, usual.surface);
        ExpectCase(usual);
        EXPECT_EQ(Draw(usual).At(30, 70), ToPixel(Background));
        scene.DeleteSubtree(&node);
    }
}

TEST_F(AdvancedPixels, AFragmentBehindAPlaneIsOutlineUnlessAnotherPlaneDiscardsIt)
{
    const vec4 outline(0.9f, 0.1f, 0.2f, 1.0f);
    EffectES20::SetClipPlaneOutlineColor(outline);
    EffectES20::SetClipPlaneOutlineSize(1.0f);
    AddUsualLight();
    Material& material = AddUsualMaterial();
    for (const bool phong : {false, true})
    {
        EffectES20::ClearClipPlanes();
        AdvancedCase usual = Usual(phong);
        usual.look.clip.outlineSize = 1.0f;
        usual.look.clip.outlineColor = outline;
        MeshNode& node = AddSurface(material, usual.surface);
        AddPlane(usual.look, vec3(1, 0, 0), vec3(1, 0, 0));
        ExpectCase(usual);
        AddPlane(usual.look, vec3(0, 1, 0), vec3(0, 0, 0));
        ExpectCase(usual);
        const Picture picture = Draw(usual);
        const int x = 64 + 6; // half a unit to the right: in the band of the first plane
        EXPECT_EQ(picture.At(x, 20), ToPixel(outline));
        EXPECT_EQ(picture.At(x, 100), ToPixel(Background)) << "the second plane is above";
        scene.DeleteSubtree(&node);
    }
}

TEST_F(AdvancedPixels, TheFirstSixPlanesCutWhetherOrNotTheMeshIsClipped)
{
    AddUsualLight();
    Material& material = AddUsualMaterial();
    const std::pair<vec3, vec3> planes[] = {
        {vec3(1, 0, 0), vec3(3.0f, 0, 0)},    {vec3(-1, 0, 0), vec3(-3.2f, 0, 0)},
        {vec3(0, 1, 0), vec3(0, 3.1f, 0)},    {vec3(0, -2, 0), vec3(0, -2.9f, 0)},
        {vec3(1, 1, 0), vec3(2.0f, 1.5f, 7)}, {vec3(-1, 1, 0), vec3(-2.1f, 1.6f, 0)},
        {vec3(0, 0, 1), vec3(0, 0, -1)}}; // this one would take everything
    for (const bool phong : {false, true})
    {
        EffectES20::ClearClipPlanes();
        AdvancedCase usual = Usual(phong);
        MeshNode& node = AddSurface(material, usual.surface);
        for (const auto& [normal, position] : planes)
        {
            AddPlane(usual.look, normal, position);
            ExpectCase(usual);
        }
        scene.DeleteSubtree(&node);
    }
}

TEST_F(AdvancedPixels, WithoutSunThePhongModelIsFlat)
{
    EffectES20::SetSunShading(0.0f);
    AddUsualLight();
    Material& material = AddUsualMaterial();
    material.reflectionFactors[0] = material.reflectionFactors[1] = 0.8f;
    AdvancedCase usual = Usual(true);
    usual.look.sun = 0.0f;
    usual.look.reflection = {0.8f, 0.8f, 0.0f};
    usual.surface.normals[1] = glm::normalize(vec3(1, 1, 0.5f)); // the light would change over it
    AddSurface(material, usual.surface);
    ExpectCase(usual);
    // No highlight and no shading: the colour alone, times its intensity.
    ExpectShade(Draw(usual), usual.surface.rect, usual.look.color);
}

TEST_F(AdvancedPixels, TheOutlineSkipsFogStipplesAndGrey)
{
    const vec4 outline(0.9f, 0.1f, 0.2f, 1.0f);
    EffectES20::SetClipPlaneOutlineColor(outline);
    EffectES20::SetClipPlaneOutlineSize(100.0f);
    EffectES20::AddClipPlane(vec3(0, 0, 1), vec3(0, 0, 1));
    SkySettings::inst().SetUseFog(true);
    SkySettings::inst().SetFogStart(0.0f);
    SkySettings::inst().SetFogEnd(0.001f);
    AddUsualLight();
    Material& material = AddUsualMaterial();
    material.stippling = true;
    const AdvancedCase plain = Usual(false);
    AddSurface(material, plain.surface).GetMeshes().front()->SetFlags(MeshFlagMonochrome);
    ExpectShade(Draw(plain), plain.surface.rect, outline);
    const AdvancedCase phong = Usual(true);
    ExpectShade(Draw(phong), phong.surface.rect, outline);
}

TEST_F(AdvancedPixels, MirroredNodesKeepTheirFrontWhenTheyTakeLight)
{
    AddUsualLight();
    Material& material = AddUsualMaterial(); // back faces are culled
    for (const bool phong : {false, true})
    {
        AdvancedCase mirrored = Usual(phong);
        mirrored.surface.rect = kLeft;
        mirrored.surface.scale = vec3(-1, 1, 1);
        mirrored.surface.facesAway = true; // on the screen, and so to the front in its own space
        for (vec3& normal : mirrored.surface.normals)
        {
            normal = glm::normalize(vec3(0.4f, 0.2f, 1.0f));
        }
        AdvancedCase plain = Usual(phong);
        plain.surface.rect = kRight;
        MeshNode& first = AddSurface(material, mirrored.surface);
        MeshNode& second = AddSurface(material, plain.surface);
        ExpectBoth(mirrored, plain);
        scene.DeleteSubtree(&first);
        scene.DeleteSubtree(&second);
    }
}

TEST_F(AdvancedPixels, TheInsideOfACutSolidShowsThePocheColour)
{
    const vec4 poche(0.9f, 0.3f, 0.1f, 1.0f);
    EffectES20::SetPocheColor(poche);
    AddUsualLight();
    struct Case
    {
        const char* label;
        bool facesAway;
        bool plane;
        bool enabled;
        bool marked;    ///< MeshFlagShowFaceSides
        bool backFaces; ///< MeshFlagEffectFlag
        float opacity;
        bool filled;
    };
    const Case cases[] = {
        {"a back face", true, true, true, false, false, 1.0f, true},
        {"a front face", false, true, true, false, false, 1.0f, false},
        {"a front face of an inside", false, true, true, false, true, 1.0f, true},
        {"a back face that is marked", true, true, true, true, false, 1.0f, false},
        {"a front face of an inside that is marked", false, true, true, true, true, 1.0f, true},
        {"no plane", true, false, true, false, false, 1.0f, false},
        {"switched off", true, true, false, false, false, 1.0f, false},
        {"see-through", true, true, true, false, false, 0.998f, false},
        {"an inside that is see-through", false, true, true, false, true, 0.998f, false},
    };
    for (const bool phong : {false, true})
    {
        for (const Case& c : cases)
        {
            SCOPED_TRACE(c.label);
            EffectES20::ClearClipPlanes();
            EffectES20::EnablePocheColor(c.enabled);
            AdvancedCase usual = Usual(phong);
            usual.look.poche = c.enabled ? std::optional<vec4>(poche) : std::nullopt;
            usual.look.showFaceSides = c.marked;
            usual.look.backFaces = c.backFaces;
            usual.look.color.a = c.opacity;
            usual.surface.facesAway = c.facesAway;
            if (c.plane)
            {
                AddPlane(usual.look, vec3(0, 0, 1), vec3(0, 0, 3)); // in front of it all
            }
            Material& material = AddMaterial(usual.look.color, usual.look.ambient);
            material.SetFlags(MaterialFlagNoCull);
            MeshNode& node = AddSurface(material, usual.surface);
            node.GetMeshes().front()->SetFlags(static_cast<MeshFlags>((c.marked ? MeshFlagShowFaceSides : 0u) |
                                                                      (c.backFaces ? MeshFlagEffectFlag : 0u)));
            ExpectCase(usual);
            const bool isPoche = ChannelDifference(Draw(usual).At(40, 90), ToPixel(poche)) <= 1;
            EXPECT_EQ(isPoche, c.filled);
            scene.DeleteSubtree(&node);
            delete &material;
        }
    }
}

TEST_F(AdvancedPixels, TheSecondPassOfThePlainModelShowsTheAmbientColourAlone)
{
    AddUsualLight();
    Material& material = AddUsualMaterial();
    AdvancedCase usual = Usual(false);
    AddSurface(material, usual.surface);
    usual.look.ambientPass = true;
    ExpectCase(usual);
    const Picture second = Draw(usual);
    usual.look.ambientPass = false;
    ExpectCase(usual);
    EXPECT_NE(Draw(usual), second);

    // The Phong model knows no such pass.
    AdvancedCase phong = Usual(true);
    const Picture first = Draw(phong);
    phong.look.ambientPass = true;
    EXPECT_EQ(Draw(phong), first);
}

TEST_F(AdvancedPixels, TheModelFollowsTheSettingBetweenFrames)
{
    AddUsualLight();
    Material& material = AddUsualMaterial();
    const Surface surface = Usual(false).surface;
    AddSurface(material, surface);
    for (const bool phong : {false, true, false, true, true, false})
    {
        AdvancedCase usual = Usual(phong);
        ExpectCase(usual);
        usual.look.ambientPass = true;
        ExpectCase(usual);
    }
}

TEST_F(AdvancedPixels, ANodesMaterialDrawsItOnceAndTheFirstPushedWins)
{
    AddUsualLight();
    Material& shared = AddUsualMaterial();
    AdvancedCase left = Usual(false);
    left.surface.rect = kLeft;
    AdvancedCase right = Usual(false);
    right.surface.rect = kRight;
    MeshNode& own = AddSurface(shared, left.surface);
    AddSurface(shared, right.surface);

    const vec4 firstColor(0.1f, 0.6f, 0.2f, 0.5f); // see-through: drawn twice it would show
    auto* first = new NodeMaterial;
    auto* second = new NodeMaterial;
    for (NodeMaterial* material : {first, second})
    {
        material->SetAmbient(ToColor(left.look.ambient));
        scene.AddMaterial(material);
    }
    first->SetDiffuse(ToColor(firstColor));
    second->SetDiffuse(Color(1.0f, 0.0f, 1.0f, 1.0f));
    first->AddNode(&own);
    second->AddNode(&own);

    const AdvancedCase before = left;
    left.look.color = firstColor;
    ExpectBoth(left, right);
    first->RemoveNode(&own);
    left.look.color = vec4(1.0f, 0.0f, 1.0f, 1.0f);
    ExpectBoth(left, right);
    second->RemoveNode(&own);
    EXPECT_EQ(own.GetFlags() & NodeFlagHasNodeMaterial, 0u);
    ExpectBoth(before, right);
}

} // namespace OV::Test
