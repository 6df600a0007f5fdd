#include "tests/effects/AdvancedStage.h"

#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <glm/common.hpp>
#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>

namespace OV::Test
{

namespace
{

using glm::vec3;
using glm::vec4;

constexpr std::uint64_t kFog = 1;
constexpr std::uint64_t kStippling = 2;
constexpr std::uint64_t kAmbientPass = 4;
constexpr std::uint64_t kCutout = 8;
constexpr std::uint64_t kTexture = 16;
constexpr std::uint64_t kNormalMap = 32;
constexpr std::uint64_t kMasks = 64;

/// A normal that leans from the viewer by less than half a right angle.
vec3 LeaningNormal(std::mt19937& random)
{
    return glm::normalize(vec3(0, 0, 1) + RandomVec3(random, -0.6f, 0.6f)) * RandomIn(random, 0.5f, 2.0f);
}

/// Sets the settings, which are global, and the model of the test to values at random.
void RandomSettings(std::mt19937& random, AdvancedLook& look)
{
    look.colorIntensity = RandomIn(random, 0.5f, 1.2f);
    look.textureIntensity = RandomIn(random, 0.5f, 1.4f);
    look.sun = RandomIn(random, 0.0f, 1.0f);
    const float shadow = RandomIn(random, 0.0f, 0.8f);
    const bool isShadow = RandomBool(random);
    // Only one of the models knows shadows.
    look.shadow = isShadow && look.phong ? shadow : 0.0f;
    EffectES20::SetAmbientColorIntensity(look.colorIntensity);
    EffectES20::SetAmbientTextureIntensity(look.textureIntensity);
    EffectES20::SetSunShading(look.sun);
    EffectES20::SetShadowIntensity(shadow);
    EffectES20::SetShadow(isShadow);
}

void RandomClipping(std::mt19937& random, ClipModel& clip, std::optional<vec4>& poche)
{
    EffectES20::ClearClipPlanes();
    const int planes = static_cast<int>(RandomIn(random, 0.0f, 3.0f));
    for (int i = 0; i < planes; ++i)
    {
        const vec3 normal = RandomVec3(random, -1.0f, 1.0f);
        const vec3 position = RandomVec3(random, -3.0f, 3.0f) + 2.0f * normal;
        clip.planes.emplace_back(normal, position);
        EffectES20::AddClipPlane(normal, position);
    }
    clip.outlineSize = RandomIn(random, 0.05f, 0.8f);
    clip.outlineColor = RandomColor(random, 0.0f, 1.0f);
    EffectES20::SetClipPlaneOutlineSize(clip.outlineSize);
    EffectES20::SetClipPlaneOutlineColor(clip.outlineColor);
    const vec4 color(vec3(RandomColor(random, 0.0f, 1.0f)), 1.0f);
    const bool enabled = RandomBool(random);
    poche = enabled ? std::optional<vec4>(color) : std::nullopt;
    EffectES20::SetPocheColor(color);
    EffectES20::EnablePocheColor(enabled);
}

class AdvancedMasks : public AdvancedStage
{
protected:
    /// The pictures that the options of a mask stand for.
    void RandomMaps(std::mt19937& random, std::uint64_t mask, Material& material)
    {
        pictures.pictures["color"] = Texels::Random(random, 5, 4, vec4(0.2f, 0.2f, 0.2f, 0.0f), vec4(1.0f));
        pictures.pictures["normal"] =
            Texels::Random(random, 3, 5, vec4(0.3f, 0.3f, 0.8f, 1.0f), vec4(0.7f, 0.7f, 1.0f, 1.0f));
        pictures.pictures["opacity"] = Texels::Random(random, 4, 3, vec4(0.0f), vec4(1.0f));
        material.textureName = (mask & kTexture) != 0 ? "color" : "";
        material.normalMapName = (mask & kNormalMap) != 0 ? "normal" : "";
        material.opacityMapName = (mask & kCutout) != 0 ? "opacity" : "";
        material.uScale = RandomIn(random, 0.5f, 1.5f);
        material.vScale = RandomIn(random, 0.5f, 1.5f);
    }

    Surface RandomSurface(std::mt19937& random)
    {
        Surface surface;
        surface.z = RandomIn(random, -4.0f, 2.0f);
        surface.facesAway = RandomBool(random);
        surface.hasNormals = RandomIn(random, 0.0f, 1.0f) < 0.8f;
        for (std::size_t i = 0; i < 4; ++i)
        {
            surface.normals[i] = LeaningNormal(random);
            surface.coordinates[i] += glm::vec2(RandomVec3(random, -0.2f, 0.2f));
        }
        surface.hasCoordinates = RandomIn(random, 0.0f, 1.0f) < 0.9f;
        surface.scale = vec3(RandomIn(random, 0.5f, 2.0f), RandomIn(random, 0.5f, 2.0f), RandomIn(random, 0.5f, 2.0f));
        surface.scale.x *= RandomBool(random) ? 1.0f : -1.0f;
        surface.offset = RandomVec3(random, -2.0f, 2.0f);
        return surface;
    }

    /// A scene at random whose material has the options of a mask, in the scene and in the model.
    AdvancedCase RandomCase(std::mt19937& random, bool phong, std::uint64_t mask)
    {
        UseModel(phong);
        AdvancedCase made;
        AdvancedLook& look = made.look;
        look.phong = phong;
        look.ambientPass = (mask & kAmbientPass) != 0;
        look.camera = Eye();
        look.ambient = RandomColor(random, 0.0f, 1.0f);
        look.color = RandomColor(random, 0.1f, 1.0f);
        look.color.a = RandomBool(random) ? 1.0f : look.color.a;
        Material& material = AddMaterial(look.color, look.ambient);
        material.SetFlags(MaterialFlagNoCull);
        RandomMaps(random, mask, material);
        look.texture = (mask & kTexture) != 0 ? &pictures.pictures["color"] : nullptr;
        look.normalMap = (mask & kNormalMap) != 0 ? &pictures.pictures["normal"] : nullptr;
        look.opacityMap = (mask & kCutout) != 0 ? &pictures.pictures["opacity"] : nullptr;
        // Once when the mesh is packed, and once more by the shader.
        look.textureScale = 1.0f / glm::vec2(material.uScale * material.uScale, material.vScale * material.vScale);
        look.reflection = RandomVec3(random, 0.0f, 0.6f);
        std::copy(&look.reflection.x, &look.reflection.x + 3, material.reflectionFactors);
        RandomSettings(random, look);
        RandomClipping(random, look.clip, look.poche);
        AddReflection(random, phong, look);
        AddStipples(random, mask, material, look);

        made.surface = RandomSurface(random);
        MeshNode& node = AddSurface(material, made.surface);
        AddMarks(random, phong, node, look);
        AddLighting(random, material, made);
        AddFog(random, mask, made);
        m_material = &material;
        m_node = &node;
        return made;
    }

    void DropCase()
    {
        scene.DeleteSubtree(m_node);
        delete m_material;
        if (m_light)
        {
            scene.DeleteSubtree(m_light);
            m_light = nullptr;
        }
        Effect(false).SetReflectionMap(0);
        Effect(true).SetReflectionMap(0);
        if (m_cubeTexture != 0)
        {
            PictureLoader().ReleaseTexture(m_cubeTexture);
            m_cubeTexture = 0;
        }
    }

private:
    void AddReflection(std::mt19937& random, bool phong, AdvancedLook& look)
    {
        if (RandomBool(random))
        {
            for (vec4& face : m_cube.faces)
            {
                face = Texels(1, 1, {RandomColor(random, 0.0f, 1.0f)}).At({0.5f, 0.5f}).value();
            }
            m_cubeTexture = PictureLoader::MakeCube(m_cube);
            look.reflectionMap = &m_cube;
        }
        Effect(phong).SetReflectionMap(m_cubeTexture);
    }

    static void AddStipples(std::mt19937& random, std::uint64_t mask, Material& material, AdvancedLook& look)
    {
        if ((mask & kStippling) != 0)
        {
            look.stipple = Fragment::Stipple{std::floor(RandomIn(random, 4.0f, 10.0f)),
                                             std::floor(RandomIn(random, 1.0f, 4.0f)), RandomColor(random, 0.0f, 1.0f),
                                             {}};
            material.stippling = true;
            material.stippleColor = ToColor(look.stipple->color);
            material.stippleOffset = look.stipple->offset;
            material.stippleSize = look.stipple->size;
        }
    }

    /// Flags of the mesh, and whether the node is being edited.
    void AddMarks(std::mt19937& random, bool phong, MeshNode& node, AdvancedLook& look)
    {
        Mesh& mesh = *node.GetMeshes().front();
        const auto mark = [&](MeshFlags flag, bool& told) {
            told = RandomIn(random, 0.0f, 1.0f) < 0.3f;
            if (told)
            {
                mesh.SetFlags(flag);
            }
        };
        mark(MeshFlagShowFaceSides, look.showFaceSides);
        mark(MeshFlagEffectFlag, look.backFaces);
        mark(MeshFlagMonochrome, look.grey);
        node.SetPath({{1, 2}, {3, 4}});
        Effect(phong).ClearEditInContextPath();
        if (RandomBool(random))
        {
            const bool outside = RandomBool(random);
            Effect(phong).SetEditInContextPath({{1, outside ? 3u : 2u}});
            look.grey = look.grey || outside;
        }
    }

    void AddLighting(std::mt19937& random, Material& material, AdvancedCase& made)
    {
        AdvancedLook& look = made.look;
        const float kind = RandomIn(random, 0.0f, 1.0f);
        if (kind > 0.2f)
        {
            const vec3 towards = glm::normalize(vec3(0, 0, 1) + RandomVec3(random, -1.0f, 1.0f));
            const vec4 color = vec4(vec3(RandomColor(random, 0.3f, 1.0f)), 1.0f);
            m_light = &AddLight(-towards);
            m_light->SetColor(color.r, color.g, color.b);
            material.ignoreLightColor = RandomBool(random);
            look.towardsLight = towards;
            look.specular = material.ignoreLightColor ? vec4(1.0f) : color;
            look.color *= material.ignoreLightColor ? vec4(1.0f) : color;
            look.lit = made.surface.hasNormals;
            made.takesWinding = look.lit;
        }
    }

    void AddFog(std::mt19937& random, std::uint64_t mask, AdvancedCase& made)
    {
        SkySettings& sky = SkySettings::inst();
        sky.SetUseFog((mask & kFog) != 0);
        if ((mask & kFog) == 0)
        {
            return;
        }
        Draw(made); // settles the depth range, and with it the distances
        const float distance = DistanceOf(made.surface);
        made.look.fog = Fragment::Fog{distance, distance * RandomIn(random, 0.2f, 0.9f),
                                      distance * RandomIn(random, 1.1f, 2.0f), RandomColor(random, 0.0f, 1.0f)};
        sky.SetFogStart(made.look.fog->start);
        sky.SetFogEnd(made.look.fog->end);
        sky.SetHorizonColor(ToColor(made.look.fog->color));
        sky.SetMonotone(RandomBool(random));
        made.look.fog->color = sky.IsMonotone() ? vec4(1.0f) : ToVec(sky.GetFogColor());
    }

    CubeColors m_cube;
    unsigned m_cubeTexture = 0;
    Material* m_material = nullptr;
    MeshNode* m_node = nullptr;
    LightNode* m_light = nullptr;
};

} // namespace

TEST_F(AdvancedMasks, EveryMaskOfBothModelsIsShadedAsStated)
{
    constexpr int enough = 250;
    constexpr int mostScenes = 20;
    constexpr int points = 300;
    std::mt19937 random(20240601);
    for (const bool phong : {false, true})
    {
        for (std::uint64_t mask = 0; mask < kMasks; ++mask)
        {
            // What is cut away, and the flat outline of a cut, is compared but doesn't count.
            int shaded = 0;
            int scenes = 0;
            for (; shaded < enough && scenes < mostScenes; ++scenes)
            {
                SCOPED_TRACE(::testing::Message()
                             << (phong ? "Phong" : "plain") << " mask " << mask << " scene " << scenes);
                const AdvancedCase made = RandomCase(random, phong, mask);
                const Picture picture = Draw(made);
                ExpectAtRandom(picture, made.surface.rect, points, random, [&](int x, int y) {
                    const std::optional<vec4> color = made.At(x, y, Background);
                    const bool flat = color && (*color == Background || *color == made.look.clip.outlineColor);
                    shaded += color && !flat ? 1 : 0;
                    return color;
                });
                DropCase();
            }
            EXPECT_GE(shaded, enough) << (phong ? "Phong" : "plain") << " mask " << mask;
        }
    }
}

/// Nothing of a picture may hang on what GL leaves open: no face is black, and no frame differs
/// from the one before.
TEST_F(AdvancedMasks, EveryMaskOfBothModelsDrawsMeshesLitUnlitAndWithoutNormals)
{
    // Lit, unlit and without normals from left to right; the upper ones show their backs.
    const PixelRect places[] = {{4, 4, 36, 56},  {46, 4, 36, 56},  {88, 4, 36, 56},
                                {4, 68, 36, 56}, {46, 68, 36, 56}, {88, 68, 36, 56}};
    pictures.pictures["color"] = Texels(1, 1, {vec4(0.8f, 0.6f, 0.7f, 1.0f)});
    pictures.pictures["normal"] = Texels(1, 1, {vec4(0.5f, 0.5f, 1.0f, 1.0f)});
    pictures.pictures["opacity"] = Texels(1, 1, {vec4(1.0f)});
    AddUsualLight();
    for (const bool phong : {false, true})
    {
        for (std::uint64_t mask = 0; mask < kMasks; ++mask)
        {
            SCOPED_TRACE(::testing::Message() << (phong ? "Phong" : "plain") << " mask " << mask);
            AdvancedCase usual = Usual(phong);
            usual.look.ambientPass = (mask & kAmbientPass) != 0;
            SkySettings::inst().SetUseFog((mask & kFog) != 0);
            SkySettings::inst().SetFogStart(100.0f);
            SkySettings::inst().SetFogEnd(200.0f);
            std::vector<Material*> materials;
            std::vector<MeshNode*> nodes;
            for (int i = 0; i < 6; ++i)
            {
                Material& material = AddUsualMaterial();
                material.SetFlags(MaterialFlagNoCull);
                material.textureName = (mask & kTexture) != 0 ? "color" : "";
                material.normalMapName = (mask & kNormalMap) != 0 ? "normal" : "";
                material.opacityMapName = (mask & kCutout) != 0 ? "opacity" : "";
                material.stippling = (mask & kStippling) != 0;
                material.reflectionFactors[1] = 0.2f;
                usual.surface.rect = places[i];
                usual.surface.facesAway = i >= 3;
                usual.surface.hasNormals = i % 3 != 2;
                usual.surface.hasCoordinates = true;
                if (i % 3 == 1)
                {
                    material.SetFlags(MaterialFlagUnlit);
                }
                nodes.push_back(&AddSurface(material, usual.surface));
                materials.push_back(&material);
            }
            const Picture picture = Draw(usual);
            for (const PixelRect& place : places)
            {
                const PixelRect inner = Inset(place);
                for (int y = inner.y; y < inner.y + inner.height; y += 3)
                {
                    for (int x = inner.x; x < inner.x + inner.width; x += 3)
                    {
                        const Pixel pixel = picture.At(x, y);
                        ASSERT_GT(std::min({pixel.r, pixel.g, pixel.b}), 20) << x << ", " << y << ": " << pixel;
                        ASSERT_EQ(pixel.a, 255);
                    }
                }
            }
            EXPECT_EQ(Draw(usual), picture);
            for (std::size_t i = 0; i < nodes.size(); ++i)
            {
                scene.DeleteSubtree(nodes[i]);
                delete materials[i];
            }
        }
    }
}

} // namespace OV::Test
