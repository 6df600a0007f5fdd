#include "tests/effects/SurfaceStage.h"

#include "orvane/effects/CrosshatchEffectES20.h"
#include "orvane/effects/MonotoneEffectES20.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/NodeMaterial.h"
#include "orvane/scene/RawMesh.h"
#include "tests/support/SketchModel.h"

#include <glm/geometric.hpp>

#include <cmath>

namespace OV::Test
{

namespace
{

using glm::vec2;
using glm::vec3;
using glm::vec4;

constexpr PixelRect kLeft{8, 40, 48, 48};
constexpr PixelRect kRight{72, 40, 48, 48};

/// A surface under pen strokes, and what its vertices hand on.
struct CrosshatchCase
{
    CrosshatchLook look;
    Surface surface;
    bool takesNormals = false; ///< the effect reads the normals of the mesh
    bool takesLight = false;
    vec3 towardsLight{0.0f, 0.0f, 1.0f};

    std::optional<vec4> At(int x, int y) const
    {
        const std::optional<vec4> weights = surface.Weights(x, y);
        if (!weights)
        {
            return std::nullopt;
        }
        std::array<CrosshatchVaryings, 4> corners;
        for (std::size_t i = 0; i < 4; ++i)
        {
            corners[i].position = surface.Object(static_cast<int>(i));
            corners[i].coordinate = surface.coordinates[i];
            // An attribute without an array is zero.
            corners[i].normal = takesNormals ? surface.NormalMatrix() * surface.normals[i] : vec3(0.0f);
            corners[i].colorFactor = takesLight ? glm::dot(corners[i].normal, towardsLight) : 1.0f;
        }
        return ShadeCrosshatch(look, Surface::Blend(corners, *weights));
    }
};

class CrosshatchPixels : public SurfaceStage
{
protected:
    CrosshatchPixels() :
        effect(dynamic_cast<CrosshatchEffectES20*>(renderer.Effects().GetEffect(EffectCache::Crosshatch)))
    {
        std::mt19937 random(7);
        for (int i = 0; i < 4; ++i)
        {
            hatches[i] = Texels::Random(random, 6, 5, vec4(0.0f), vec4(1.0f));
            textures[i] = PictureLoader::MakeTexture(hatches[i]);
            effect->SetHatchTexture(i, textures[i]);
        }
    }

    ~CrosshatchPixels() override
    {
        for (const unsigned texture : textures)
        {
            PictureLoader().ReleaseTexture(texture);
        }
        effect->Release();
    }

    CrosshatchCase Usual() const
    {
        CrosshatchCase usual;
        usual.surface.z = 0.4f; // at 0 every picture of strokes has the edge of a texel
        usual.look.ambient = vec4(0.2f, 0.1f, 0.3f, 1.0f);
        usual.look.color = vec4(0.5f, 0.6f, 0.4f, 1.0f);
        for (int i = 0; i < 4; ++i)
        {
            usual.look.hatches[i] = &hatches[i];
        }
        return usual;
    }

    Picture Draw(const CrosshatchCase& of)
    {
        return DrawPass(of.look.ambientPass ? RenderPassCrosshatchSecond : RenderPassCrosshatch);
    }

    CrosshatchEffectES20* effect;
    Texels hatches[4];
    unsigned textures[4] = {};
};

} // namespace

TEST_F(CrosshatchPixels, SurfacesAtRandomAreDrawnInTheStatedTones)
{
    constexpr int scenes = 24;
    constexpr int points = 60;
    std::mt19937 random(31);
    const Texels texture = Texels::Random(random, 4, 3, vec4(0.3f), vec4(1.0f));
    pictures.pictures["color"] = texture;
    int compared = 0;
    for (int i = 0; i < scenes; ++i)
    {
        SCOPED_TRACE(i);
        CrosshatchCase made = Usual();
        made.look.ambient = RandomColor(random, 0.0f, 0.5f);
        made.look.color = RandomColor(random, 0.0f, 1.0f);
        made.look.ambientPass = i % 4 == 3;
        Material& material = AddMaterial(made.look.color, made.look.ambient);
        material.SetFlags(MaterialFlagNoCull);
        if (RandomBool(random))
        {
            material.textureName = "color";
            material.hatchUScale = RandomIn(random, 0.4f, 2.0f);
            material.hatchVScale = RandomIn(random, 0.4f, 2.0f);
            made.look.texture = &texture;
            made.look.divisor = {material.hatchUScale, material.hatchVScale};
        }
        Surface& surface = made.surface;
        surface.z = RandomIn(random, -3.0f, 2.0f);
        surface.facesAway = RandomBool(random);
        surface.hasNormals = RandomIn(random, 0.0f, 1.0f) < 0.8f;
        surface.hasCoordinates = true;
        for (vec3& normal : surface.normals)
        {
            normal = RandomVec3(random, -0.4f, 0.4f) + vec3(0.2f, 0.5f, 0.8f);
        }
        surface.scale = vec3(RandomIn(random, 0.7f, 2.0f), RandomIn(random, 0.7f, 2.0f), RandomIn(random, 0.7f, 2.0f));
        surface.offset = RandomVec3(random, -2.0f, 2.0f);
        MeshNode& node = AddSurface(material, surface);
        LightNode* light = nullptr;
        if (RandomIn(random, 0.0f, 1.0f) < 0.8f)
        {
            made.towardsLight = glm::normalize(vec3(0.3f, 0.3f, 1.0f) + RandomVec3(random, -0.5f, 0.5f));
            light = &AddLight(-made.towardsLight);
            light->SetColor(0.9f, 0.7f, 0.8f);
            material.ignoreLightColor = RandomBool(random);
            made.takesNormals = surface.hasNormals;
            made.takesLight = !material.ignoreLightColor;
            made.look.color *= made.takesLight ? vec4(0.9f, 0.7f, 0.8f, 1.0f) : vec4(1.0f);
        }
        const Picture picture = Draw(made);
        compared += ExpectAtRandom(picture, surface.rect, points, random, [&](int x, int y) { return made.At(x, y); });
        scene.DeleteSubtree(&node);
        delete &material;
        if (light)
        {
            scene.DeleteSubtree(light);
        }
    }
    EXPECT_GT(compared, scenes * points / 3);
}

TEST_F(CrosshatchPixels, TheTonesMeetAtTheQuarters)
{
    // The model and the shader state the bands each in their way: at a bound both sides agree.
    const float tones[] = {0.1f, 0.3f, 0.6f, 0.9f};
    EXPECT_FLOAT_EQ(ToneOf(0.0f, tones), 0.1f);
    EXPECT_FLOAT_EQ(ToneOf(0.25f, tones), 0.3f);
    EXPECT_FLOAT_EQ(ToneOf(0.5f, tones), 0.6f);
    EXPECT_FLOAT_EQ(ToneOf(0.75f, tones), 0.9f);
    EXPECT_FLOAT_EQ(ToneOf(1.0f, tones), 1.0f);
    for (const float luminance : {0.0f, 0.25f, 0.5f, 0.75f, 1.0f})
    {
        CrosshatchCase made = Usual();
        made.look.ambient = vec4(0.0f);
        made.look.color = vec4(vec3(luminance), 1.0f);
        Material& material = AddMaterial(made.look.color, made.look.ambient);
        MeshNode& node = AddSurface(material, made.surface);
        ExpectShades(Draw(made), made.surface.rect, [&](int x, int y) { return made.At(x, y); });
        scene.DeleteSubtree(&node);
        delete &material;
    }
}

TEST_F(CrosshatchPixels, AMaterialThatIgnoresTheLightKeepsItsToneWhateverTheLight)
{
    CrosshatchCase made = Usual();
    Material& material = AddMaterial(made.look.color, made.look.ambient);
    ASSERT_TRUE(material.ignoreLightColor);
    LightNode& light = AddLight(vec3(0, 0, -1));
    AddSurface(material, made.surface);
    made.takesNormals = true;
    const Picture picture = Draw(made);
    ExpectShades(picture, made.surface.rect, [&](int x, int y) { return made.At(x, y); });
    light.SetLocalDirection(Vector(1, 0, 0));
    EXPECT_EQ(Draw(made), picture);
}

TEST_F(CrosshatchPixels, TheStrokesStayOnAnObjectThatMoves)
{
    CrosshatchCase made = Usual();
    made.surface.rect = kLeft;
    Material& material = AddMaterial(made.look.color, made.look.ambient);
    MeshNode& node = AddSurface(material, made.surface);
    const Picture before = Draw(made);
    Transform place;
    place.SetPosition(Vector(WorldAtCorner(DefaultSize, 0, made.surface.z).x, 0.0f, 0.0f)); // half of the picture
    node.SetLocal(place);
    const Picture after = Draw(made);
    const PixelRect inner = Inset(kLeft);
    for (int x = inner.x; x < inner.x + inner.width; ++x)
    {
        ASSERT_LE(ChannelDifference(before.At(x, 60), after.At(x + 64, 60)), 1) << x;
    }
}

TEST_F(CrosshatchPixels, ANodeMaterialScalesItsTextureTheOtherWayAndCopesWithZero)
{
    std::mt19937 random(5);
    const Texels texture = Texels::Random(random, 4, 3, vec4(0.0f), vec4(1.0f));
    pictures.pictures["color"] = texture;
    CrosshatchCase made = Usual();
    made.surface.hasCoordinates = true;
    Material& under = AddMaterial(made.look.color, made.look.ambient);
    MeshNode& node = AddSurface(under, made.surface);
    for (const float scale : {2.0f, 0.0f})
    {
        auto* material = new NodeMaterial;
        material->SetDiffuse(ToColor(made.look.color));
        material->SetAmbient(ToColor(made.look.ambient));
        material->textureName = "color";
        material->uScale = scale;
        material->vScale = 3.0f;
        material->hatchUScale = 7.0f; // not read here
        scene.AddMaterial(material);
        material->AddNode(&node);
        made.look.texture = &texture;
        made.look.divisor = {scale == 0.0f ? 1.0f : 1.0f / scale, 1.0f / 3.0f};
        ExpectShades(Draw(made), made.surface.rect, [&](int x, int y) { return made.At(x, y); });
        delete material;
    }
}

TEST_F(CrosshatchPixels, AnOpacityBelowOneIsDrawnOpaque)
{
    CrosshatchCase made = Usual();
    made.look.color.a = 0.3f;
    AddSurface(AddMaterial(made.look.color, made.look.ambient), made.surface);
    ExpectShades(Draw(made), made.surface.rect, [&](int x, int y) { return made.At(x, y); });
}

namespace
{

class MonotonePixels : public SurfaceStage
{
protected:
    static constexpr auto kPasses = {RenderPassMonotone, RenderPassMonotoneSecond};

    static vec3 Grey(RenderPass pass) { return vec3(pass == RenderPassMonotone ? 1.0f : 0.8f); }
};

} // namespace

TEST_F(MonotonePixels, SurfacesAtRandomAreFlatAndCut)
{
    constexpr int scenes = 24;
    constexpr int points = 60;
    std::mt19937 random(11);
    AddLight(vec3(0, 0, -1));
    int compared = 0;
    for (int i = 0; i < scenes; ++i)
    {
        SCOPED_TRACE(i);
        const RenderPass pass = i % 2 == 0 ? RenderPassMonotone : RenderPassMonotoneSecond;
        MonotoneLook look;
        look.color = Grey(pass);
        look.clip.outlineSize = RandomIn(random, 0.1f, 1.0f);
        look.clip.outlineColor = RandomColor(random, 0.0f, 1.0f);
        look.poche = RandomColor(random, 0.0f, 1.0f);
        look.shadow = RandomIn(random, 0.0f, 0.9f);
        EffectES20::SetClipPlaneOutlineSize(look.clip.outlineSize);
        EffectES20::SetClipPlaneOutlineColor(look.clip.outlineColor);
        EffectES20::SetPocheColor(*look.poche);
        EffectES20::SetShadowIntensity(look.shadow);
        const bool isShadow = RandomBool(random);
        EffectES20::SetShadow(isShadow);
        look.shadow = isShadow ? look.shadow : 0.0f;
        const bool enabled = RandomBool(random);
        EffectES20::EnablePocheColor(enabled);
        look.poche = enabled ? look.poche : std::nullopt;

        Surface surface;
        surface.facesAway = RandomBool(random);
        surface.hasNormals = RandomBool(random);
        surface.scale.x = RandomBool(random) ? 1.5f : -1.5f;
        surface.offset = RandomVec3(random, -1.0f, 1.0f);
        Material& material = AddMaterial(RandomColor(random, 0.0f, 1.0f), vec4(0.5f));
        material.SetFlags(MaterialFlagNoCull);
        MeshNode& node = AddSurface(material, surface);
        look.showFaceSides = RandomBool(random);
        look.backFaces = RandomBool(random);
        node.GetMeshes().front()->SetFlags(static_cast<MeshFlags>((look.showFaceSides ? MeshFlagShowFaceSides : 0u) |
                                                                  (look.backFaces ? MeshFlagEffectFlag : 0u)));
        EffectES20::ClearClipPlanes();
        const bool clipped = RandomIn(random, 0.0f, 1.0f) < 0.8f;
        for (int plane = 0; plane < 2; ++plane)
        {
            const vec3 normal = RandomVec3(random, -1.0f, 1.0f);
            const vec3 position = RandomVec3(random, -2.0f, 2.0f) + normal;
            EffectES20::AddClipPlane(normal, position);
            if (clipped)
            {
                look.clip.planes.emplace_back(normal, position);
            }
        }
        const Picture picture = DrawPass(pass, clipped);
        compared += ExpectAtRandom(picture, surface.rect, points, random, [&](int x, int y) -> std::optional<vec4> {
            const vec3 world = WorldAt(x, y, surface.z);
            const ClipModel::Place place = look.clip.At(world);
            if (place == ClipModel::Place::Cut)
            {
                return Background;
            }
            return ShadeMonotone(look, world, surface.facesAway == surface.IsMirrored());
        });
        scene.DeleteSubtree(&node);
        delete &material;
    }
    EXPECT_GT(compared, scenes * points * 3 / 4);
}

TEST_F(MonotonePixels, TheSecondPassIsLightGreyWithNothingElseChanged)
{
    Surface surface;
    AddSurface(AddMaterial(vec4(0.1f, 0.9f, 0.2f, 0.4f), vec4(0.5f)), surface);
    ExpectShade(DrawPass(RenderPassMonotoneSecond), surface.rect, vec4(0.8f, 0.8f, 0.8f, 1.0f));
    ExpectShade(DrawPass(RenderPassMonotone), surface.rect, vec4(1.0f));
    ExpectShade(DrawPass(RenderPassMonotoneSecond), surface.rect, vec4(0.8f, 0.8f, 0.8f, 1.0f));
}

TEST_F(MonotonePixels, PointsAreBlackAndSixWideInEitherPass)
{
    Surface surface;
    surface.rect = {32, 32, 64, 64};
    Material& material = AddMaterial(vec4(0.9f, 0.9f, 0.9f, 1.0f), vec4(1.0f));
    material.pointSize = 20.0f; // not read here
    material.SetFlags(MaterialFlagPoints);
    AddSurface(material, surface);
    for (const RenderPass pass : kPasses)
    {
        const Picture picture = DrawPass(pass);
        EXPECT_EQ(picture.Count(Pixel{0, 0, 0, 255}), 4 * 6 * 6);
        ExpectColorInRect(picture, {29, 29, 6, 6}, Pixel{0, 0, 0, 255});
        EXPECT_EQ(picture.At(64, 64), ToPixel(Background));
    }
}

TEST_F(MonotonePixels, PointsBehindAPlainFirstMeshAreOfOneSizeFromTheFirstFrameOn)
{
    Surface surface;
    surface.rect = {32, 32, 64, 64};
    Material& points = AddMaterial(vec4(0.9f, 0.9f, 0.9f, 1.0f), vec4(1.0f));
    points.SetFlags(MaterialFlagPoints);
    MeshNode& node = AddSurface(points, surface);
    // A mesh of nothing that is drawn, with a material of no points, comes first at the node.
    Mesh* const drawn = node.GetMeshes().front();
    Mesh first(std::make_shared<RawMesh>());
    AddMaterial(vec4(1.0f), vec4(1.0f)).AddMesh(&first);
    drawn->RemoveNode(&node);
    first.AddNode(&node);
    drawn->AddNode(&node);
    ASSERT_EQ(node.GetMeshes().front(), &first);
    const Picture picture = DrawPass(RenderPassMonotone);
    EXPECT_EQ(picture.Count(ToPixel(vec4(1.0f))), 4 * 6 * 6);
    EXPECT_EQ(DrawPass(RenderPassMonotone), picture);
}

TEST_F(MonotonePixels, AMirroredNodeKeepsItsFrontAndTheNextMeshIsAsEver)
{
    Material& material = AddMaterial(vec4(1.0f), vec4(1.0f)); // back faces are culled
    Surface mirrored;
    mirrored.rect = kLeft;
    mirrored.scale.x = -1.0f;
    mirrored.facesAway = true; // on the screen, and so to the front in its own space
    Surface plain;
    plain.rect = kRight;
    AddSurface(material, mirrored);
    AddSurface(material, plain);
    const Picture picture = DrawPass(RenderPassMonotone);
    ExpectShade(picture, kLeft, vec4(1.0f));
    ExpectShade(picture, kRight, vec4(1.0f));
}

} // namespace OV::Test
