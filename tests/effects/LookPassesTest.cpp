#include "tests/effects/SurfaceStage.h"

#include "orvane/effects/AdvancedMaterialBaseES20.h"
#include "orvane/effects/CrosshatchEffectES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/NodeMaterial.h"

#include <glm/geometric.hpp>

#include <cstddef>
#include <vector>


namespace OV::Test
{

namespace
{

using glm::vec3;
using glm::vec4;

/// One way of drawing a scene.
struct Look
{
    const char* label;
    RenderPass pass;
    bool phong = false;
    bool clip = false;
};

constexpr Look kLooks[] = {
    {"ambient", RenderPassAmbient},
    {"basic", RenderPassDefault},
    {"basic, clipped", RenderPassDefault, false, true},
    {"basic variant", RenderPassBasicVariant},
    {"weighted average", RenderPassWeightedAverage},
    {"identifiers", RenderPassDepthId},
    {"vertex colours", RenderPassVertexColor},
    // Without a cube map, and so before the one that has it.
    {"Phong", RenderPassAdvanced, true},
    {"Phong second", RenderPassAdvancedSecond, true},
    {"advanced", RenderPassAdvanced},
    {"advanced second", RenderPassAdvancedSecond},
    {"crosshatch", RenderPassCrosshatch},
    {"crosshatch second", RenderPassCrosshatchSecond},
    {"monotone", RenderPassMonotone},
    {"monotone, clipped", RenderPassMonotone, false, true},
    {"monotone second", RenderPassMonotoneSecond},
};

constexpr EffectCache::EffectType kTypes[] = {
    EffectCache::BasicMaterial,         EffectCache::VertexColor,     EffectCache::BasicMaterialAmbientPass,
    EffectCache::BasicMaterialAdditive, EffectCache::DepthIdPass,     EffectCache::WeightedAverageSecondPass,
    EffectCache::AdvancedMaterial,      EffectCache::Crosshatch,      EffectCache::Monotone,
    EffectCache::AdvancedMaterialPhong,
};

/// A scene with a material of every kind, and all that a host sets on the effects.
class LookPasses : public SurfaceStage
{
protected:
    LookPasses()
    {
        AllowStateChange("dithering"); // the pass of identifiers turns it off
        std::mt19937 random(29);
        for (const char* const name : {"color", "normal", "opacity"})
        {
            pictures.pictures[name] = Texels::Random(random, 5, 4, vec4(0.3f), vec4(1.0f));
        }
        for (unsigned& texture : m_hatches)
        {
            texture = PictureLoader::MakeTexture(Texels::Random(random, 6, 5, vec4(0.0f), vec4(1.0f)));
        }
        for (vec4& face : m_cubeColors.faces)
        {
            face = RandomColor(random, 0.0f, 1.0f);
        }
        m_cube = PictureLoader::MakeCube(m_cubeColors);
        AddLight(vec3(-0.3f, -0.4f, -1.0f)).SetColor(0.9f, 0.8f, 0.7f);
        EffectES20::AddClipPlane(vec3(1, 0, 0), vec3(4, 0, 0));
        EffectES20::SetPocheColor(vec4(0.9f, 0.2f, 0.1f, 1.0f));
        AddMaterials(random);
    }

    ~LookPasses() override
    {
        scene.Suspend();
        for (const unsigned texture : m_hatches)
        {
            PictureLoader().ReleaseTexture(texture);
        }
        PictureLoader().ReleaseTexture(m_cube);
    }

    Picture Draw(const Look& look)
    {
        EffectES20::SetAdvancedMaterialShaderType(look.phong ? EffectCache::AdvancedMaterialPhong
                                                             : EffectCache::AdvancedMaterial);
        return DrawPass(look.pass, look.clip);
    }

    /// What a host does at the start, and again after a resume.
    void SetUpEffects()
    {
        // The Phong model comes to be with its first frame.
        for (const Look& look : kLooks)
        {
            Draw(look);
        }
        auto& crosshatch = SharedEffect<CrosshatchEffectES20>(EffectCache::Crosshatch);
        for (int i = 0; i < CrosshatchEffectES20::HatchCount; ++i)
        {
            crosshatch.SetHatchTexture(i, m_hatches[i]);
        }
        EffectES20::SetAdvancedMaterialShaderType(EffectCache::AdvancedMaterial);
        // One of the two models has a cube map, the other must not come by it.
        SharedEffect<AdvancedMaterialBaseES20>(EffectCache::AdvancedMaterial).SetReflectionMap(m_cube);
    }

    std::vector<Picture> DrawAll()
    {
        std::vector<Picture> pictures;
        for (const Look& look : kLooks)
        {
            pictures.push_back(Draw(look));
        }
        return pictures;
    }

    /// How many references there are on an effect; 0 when there is no such effect.
    int References(EffectCache::EffectType type)
    {
        EffectES20::SetAdvancedMaterialShaderType(EffectCache::AdvancedMaterial);
        EffectES20* const effect = renderer.Effects().GetEffect(type);
        const int count = effect->GetReferenceCount() - 1;
        effect->Release();
        return count;
    }

private:
    Material& AddShiny(const vec4& color)
    {
        Material& material = AddMaterial(color, vec4(0.4f, 0.3f, 0.2f, 1.0f));
        material.reflectionFactors[0] = 0.3f;
        material.reflectionFactors[1] = 0.6f;
        material.reflectionFactors[2] = 0.5f;
        return material;
    }

    MeshNode& Place(Material& material, std::mt19937& random, int column, int row, Surface surface)
    {
        surface.rect = {2 + 42 * column, 2 + 42 * row, 38, 38};
        for (std::size_t i = 0; i < 4; ++i)
        {
            surface.normals[i] = glm::normalize(vec3(0, 0, 1) + RandomVec3(random, -0.5f, 0.5f));
            surface.colors[i] = RandomColor(random, 0.0f, 1.0f);
        }
        return AddSurface(material, surface);
    }

    void AddMaterials(std::mt19937& random)
    {
        Surface full;
        full.hasCoordinates = true;
        full.hasColors = true;
        Surface bare;
        bare.hasNormals = false;
        Surface mirrored = full;
        mirrored.scale = vec3(-1.0f, 2.0f, 1.0f);
        mirrored.offset = vec3(0.5f, 0.25f, 0.0f);

        Material& mapped = AddShiny(vec4(0.8f, 0.6f, 0.4f, 1.0f));
        mapped.textureName = "color";
        mapped.normalMapName = "normal";
        mapped.opacityMapName = "opacity";
        mapped.hatchUScale = 0.5f;
        mapped.SetFlags(MaterialFlagNoCull);
        Place(mapped, random, 0, 0, full);
        Place(mapped, random, 1, 0, mirrored);
        Place(mapped, random, 2, 0, bare);

        Material& plain = AddShiny(vec4(0.3f, 0.7f, 0.5f, 1.0f));
        plain.ignoreLightColor = false;
        plain.SetFlags(MaterialFlagNoCull | MaterialFlagPolygonOffset);
        Place(plain, random, 0, 1, mirrored);
        Place(plain, random, 1, 1, bare);
        MeshNode& dressed = Place(plain, random, 2, 1, full);
        auto* const dress = new NodeMaterial;
        dress->SetDiffuse(Color(0.1f, 0.2f, 0.9f, 1.0f));
        scene.AddMaterial(dress);
        dress->AddNode(&dressed);

        Material& unlit = AddShiny(vec4(0.9f, 0.5f, 0.5f, 1.0f));
        unlit.SetFlags(MaterialFlagUnlit | MaterialFlagNoCull);
        unlit.stippling = true;
        Place(unlit, random, 0, 2, mirrored).GetMeshes().front()->SetFlags(MeshFlagShowFaceSides);
        Material& glass = AddShiny(vec4(0.2f, 0.9f, 0.9f, 0.5f));
        Place(glass, random, 1, 2, full).GetMeshes().front()->SetFlags(MeshFlagMonochrome);
        Material& points = AddShiny(vec4(0.9f, 0.9f, 0.2f, 1.0f));
        points.SetFlags(MaterialFlagPoints);
        points.pointSize = 5.0f;
        Place(points, random, 2, 2, bare);
    }

    unsigned m_hatches[CrosshatchEffectES20::HatchCount] = {};
    CubeColors m_cubeColors;
    unsigned m_cube = 0;
};

} // namespace

TEST_F(LookPasses, EveryLookIsTheSameBytesWhateverLookWasDrawnBefore)
{
    SetUpEffects();
    const std::vector<Picture> first = DrawAll();
    for (std::size_t i = 0; i < first.size(); ++i)
    {
        EXPECT_LT(first[i].Count(ToPixel(Background)), DefaultSize * DefaultSize * 3 / 4) << kLooks[i].label;
        for (const Look& before : kLooks)
        {
            Draw(before);
            EXPECT_EQ(Draw(kLooks[i]), first[i]) << kLooks[i].label << " after " << before.label;
        }
    }
}

TEST_F(LookPasses, ASuspensionLetsGoOfEveryEffectAndTheLooksComeBack)
{
    SetUpEffects();
    const std::vector<Picture> first = DrawAll();
    for (int round = 0; round < 2; ++round)
    {
        for (const EffectCache::EffectType type : kTypes)
        {
            EXPECT_GT(References(type), 0) << type;
        }
        scene.Suspend();
        renderer.Suspend();
        for (const EffectCache::EffectType type : kTypes)
        {
            EXPECT_EQ(References(type), 0) << type;
        }
        scene.Resume();
        renderer.Resume();
        SetUpEffects();
        for (std::size_t i = 0; i < first.size(); ++i)
        {
            EXPECT_EQ(Draw(kLooks[i]), first[i]) << kLooks[i].label << ", round " << round;
        }
    }
}

} // namespace OV::Test
