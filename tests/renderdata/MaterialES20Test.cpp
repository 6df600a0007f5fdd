#include "orvane/renderdata/MaterialES20.h"

#include "orvane/effects/BasicMaterialAmbientPassEffectES20.h"
#include "orvane/effects/BasicMaterialEffectES20.h"
#include "orvane/effects/SkyEffectES20.h"
#include "orvane/renderdata/RenderDataStandIn.h"
#include "orvane/renderdata/SharedBuffer.h"
#include "orvane/renderdata/SharedBufferPool.h"
#include "orvane/scene/NodeMaterial.h"
#include "orvane/scene/Scene.h"
#include "tests/renderdata/RenderDataDoubles.h"
#include "tests/support/GLRecorder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace OV::Test
{

namespace
{

using Names = std::vector<std::string>;

constexpr unsigned kPending = MaterialES20::PendingTexture;

struct OpenMaterialES20 : MaterialES20
{
    using MaterialES20::CreateMeshES20;
    using MaterialES20::EnsureTextureLoaded;
    using MaterialES20::MaterialES20;
    using MaterialES20::Remove;
};

/// Material of a class that is not there yet: it answers to a tag.
class TaggedMaterial : public Material
{
public:
    explicit TaggedMaterial(int tag) : Material("tagged"), m_tag(tag) {}
    bool HasType(int type) override { return type == m_tag || Material::HasType(type); }

private:
    int m_tag;
};

constexpr int kSimMaterial = 0x536D4D61;

unsigned char* OwnedPixels(unsigned char first)
{
    auto* pixels = static_cast<unsigned char*>(std::calloc(2 * 3, 4));
    pixels[0] = first;
    return pixels;
}

class MaterialES20Test : public ::testing::Test
{
protected:
    MaterialES20Test() : material("material"), mesh(MakeRawMesh(3, {0, 1, 2})), camera(nullptr)
    {
        material.AddMesh(&mesh);
    }

    /// Render data without effects of its own; the default pass gets an effect that shows in
    /// the recording, which the render data then own.
    std::unique_ptr<OpenMaterialES20> MakeMarked(Material& of)
    {
        auto data = std::make_unique<OpenMaterialES20>(&of, nullptr, &pool, nullptr);
        effect = new MarkingEffect(&effectDeaths);
        data->passEffects[RenderPassDefault] = effect;
        return data;
    }

    GLRecorder recorder;
    SharedBufferPool pool;
    EffectCache cache;
    LaidDownLoader loader;
    Material material;
    Mesh mesh;
    CameraNodeES20* camera;
    MarkingEffect* effect = nullptr;
    int effectDeaths = 0;
    std::vector<RenderItemES20> items;
};

} // namespace

TEST_F(MaterialES20Test, AnOrdinaryMaterialFillsTheSlotsByTheTableOfPasses)
{
    OpenMaterialES20 data(&material, nullptr, &pool, &cache);
    EXPECT_NE(dynamic_cast<BasicMaterialAmbientPassEffectES20*>(data.passEffects[RenderPassAmbient]), nullptr);
    EXPECT_NE(dynamic_cast<BasicMaterialEffectES20*>(data.passEffects[RenderPassDefault]), nullptr);
    EXPECT_NE(dynamic_cast<BasicMaterialEffectES20*>(data.passEffects[RenderPassBasicVariant]), nullptr);
    EXPECT_NE(data.passEffects[RenderPassDefault], data.passEffects[RenderPassBasicVariant]);
    EXPECT_NE(dynamic_cast<SkyEffectES20*>(data.passEffects[RenderPassSky]), nullptr);

    const EffectCache::EffectType types[kRenderPassCount] = {
        EffectCache::BasicMaterialAmbientPass, EffectCache::BasicMaterial, EffectCache::BasicMaterialAdditive,
        EffectCache::WeightedAverageSecondPass, EffectCache::DepthIdPass, EffectCache::DepthIdPass,
        EffectCache::SSAO, EffectCache::Sky, EffectCache::VertexColor, EffectCache::AdvancedMaterial,
        EffectCache::AdvancedMaterial, EffectCache::Crosshatch, EffectCache::Crosshatch, EffectCache::Monotone,
        EffectCache::Monotone};
    for (unsigned pass = 0; pass < kRenderPassCount; ++pass)
    {
        EffectES20* expected = cache.GetEffect(types[pass]);
        ASSERT_NE(expected, nullptr) << pass;
        EXPECT_EQ(data.passEffects[pass], expected) << pass;
        expected->Release();
    }
}

TEST_F(MaterialES20Test, EachSlotHoldsOneReferenceWhichTheDestructorGivesBack)
{
    EffectES20* basic = cache.GetEffect(EffectCache::BasicMaterial);
    EXPECT_EQ(basic->GetReferenceCount(), 1);
    auto first = std::make_unique<MaterialES20>(&material, nullptr, &pool, &cache);
    EXPECT_EQ(basic->GetReferenceCount(), 2);
    auto second = std::make_unique<MaterialES20>(&material, nullptr, &pool, &cache);
    EXPECT_EQ(basic->GetReferenceCount(), 3);
    first.reset();
    EXPECT_EQ(basic->GetReferenceCount(), 2);
    second.reset();
    EXPECT_EQ(basic->GetReferenceCount(), 1);
    EXPECT_TRUE(basic->Release());
    EXPECT_EQ(recorder.Live(GLObjectKind::Program).size(), 0u);
}

TEST_F(MaterialES20Test, AMaterialOfTheSimKindHasSlotOneOnlyAndLoadsNoTexture)
{
    TaggedMaterial sim(kSimMaterial);
    sim.textureName = "t.png";
    OpenMaterialES20 data(&sim, &loader, &pool, &cache);
    for (unsigned pass = 0; pass < kRenderPassCount; ++pass)
    {
        if (pass != RenderPassDefault)
        {
            EXPECT_EQ(data.passEffects[pass], nullptr) << pass;
        }
    }
    EXPECT_TRUE(loader.log.empty());
    EXPECT_FALSE(data.Apply(camera, RenderPassAmbient));
}

TEST_F(MaterialES20Test, AMaterialWithSlotOneAloneServesTheDefaultPassOnly)
{
    auto data = MakeMarked(material);
    EXPECT_FALSE(data->Apply(camera, RenderPassAmbient));
    EXPECT_TRUE(data->Apply(camera, RenderPassDefault));
    EXPECT_EQ(effect->applied, 1);
}

TEST_F(MaterialES20Test, A2DMaterialTakesItsTextureFromTheNameFirst)
{
    loader.answers = {{21, 2.0f, 3.0f, true, false}};
    TaggedMaterial flat(NodeTypeMaterial2D);
    flat.textureName = "t.png";
    flat.pixels = OwnedPixels(9);
    flat.uScale = 5.0f;
    OpenMaterialES20 data(&flat, &loader, &pool, &cache);
    EXPECT_EQ(loader.log, (Names{"file t.png true 1.000000 2147483647"}));
    EXPECT_EQ(data.GetTextureID(), 21u);
    EXPECT_EQ(data.GetUScale(), 10.0f);
    EXPECT_EQ(data.GetVScale(), 3.0f);
    EXPECT_TRUE(flat.hasAlpha);
    EXPECT_NE(flat.pixels, nullptr);
    EXPECT_EQ(data.passEffects[RenderPassAmbient], nullptr);
}

TEST_F(MaterialES20Test, A2DMaterialHandsItsPixelsToTheLoaderAndFreesThem)
{
    loader.answers = {{22, 1.0f, 1.0f, false, false}};
    TaggedMaterial flat(NodeTypeMaterial2D);
    flat.pixels = OwnedPixels(9);
    flat.pixelWidth = 2;
    flat.pixelHeight = 3;
    OpenMaterialES20 data(&flat, &loader, &pool, &cache);
    EXPECT_EQ(loader.log, (Names{"pixels 9 2x3 clamp"}));
    EXPECT_EQ(data.GetTextureID(), 22u);
    EXPECT_EQ(flat.pixels, nullptr);
}

TEST_F(MaterialES20Test, A2DMaterialWithoutALoaderKeepsItsPixels)
{
    TaggedMaterial flat(NodeTypeMaterial2D);
    flat.pixels = OwnedPixels(9);
    OpenMaterialES20 data(&flat, nullptr, &pool, &cache);
    EXPECT_EQ(data.GetTextureID(), 0u);
    EXPECT_NE(flat.pixels, nullptr);
}

TEST_F(MaterialES20Test, ATextureIsAskedForByPathAndNameAndSaysWhetherItHasAlpha)
{
    loader.answers = {{31, 0.5f, 0.25f, true, false}};
    material.textureName = "brick.png";
    material.pixels = OwnedPixels(1); // a name goes before pixels
    material.uScale = 4.0f;
    material.vScale = 8.0f;
    MaterialES20 data(&material, &loader, &pool, &cache);
    EXPECT_EQ(loader.log, (Names{"file brick.png false 1.000000 2147483647"}));
    EXPECT_EQ(data.GetTextureID(), 31u);
    EXPECT_TRUE(material.hasAlpha);
    EXPECT_EQ(data.GetUScale(), 2.0f);
    EXPECT_EQ(data.GetVScale(), 2.0f);
    EXPECT_EQ(data.materialUScale, 4.0f);
    EXPECT_EQ(data.materialVScale, 8.0f);
    EXPECT_EQ(data.GetMaterial(), &material);
    EXPECT_EQ(data.GetTextureLoader(), &loader);
}

TEST_F(MaterialES20Test, RawPixelsAreUsedWithoutANameAndStayWithTheMaterial)
{
    loader.answers = {{32, 1.0f, 1.0f, false, false}};
    material.pixels = OwnedPixels(7);
    material.pixelWidth = 2;
    material.pixelHeight = 3;
    material.clampTexture = true;
    MaterialES20 data(&material, &loader, &pool, &cache);
    EXPECT_EQ(loader.log, (Names{"pixels 7 2x3 clamp"}));
    EXPECT_EQ(data.GetTextureID(), 32u);
    EXPECT_NE(material.pixels, nullptr);

    material.clampTexture = false;
    MaterialES20 repeating(&material, &loader, &pool, &cache);
    EXPECT_EQ(loader.log.back(), "pixels 7 2x3 repeat");
}

TEST_F(MaterialES20Test, WithoutALoaderThereIsNoTextureAndTheMaterialsScaleStands)
{
    material.textureName = "brick.png";
    material.normalMapName = "n.png";
    material.uScale = 3.0f;
    MaterialES20 data(&material, nullptr, &pool, &cache);
    EXPECT_EQ(data.GetTextureID(), 0u);
    EXPECT_EQ(data.GetNormalMapID(), 0u);
    EXPECT_EQ(data.GetUScale(), 3.0f);
    EXPECT_EQ(data.GetVScale(), 1.0f);

    material.pixels = OwnedPixels(7);
    MaterialES20 withPixels(&material, nullptr, &pool, &cache);
    EXPECT_EQ(withPixels.GetTextureID(), 0u);
}

TEST_F(MaterialES20Test, TheMapLoadedLastDecidesTheScale)
{
    loader.answers = {{1, 2.0f, 2.0f, true, false}, {2, 3.0f, 4.0f, false, false}};
    material.textureName = "base.png";
    material.normalMapName = "normal.png";
    MaterialES20 data(&material, &loader, &pool, &cache);
    EXPECT_EQ(data.GetNormalMapID(), 2u);
    EXPECT_EQ(data.GetOpacityMapID(), 0u);
    EXPECT_EQ(data.GetUScale(), 3.0f);
    EXPECT_EQ(data.GetVScale(), 4.0f);
    // The alpha of a normal map is no alpha of the material.
    EXPECT_TRUE(material.hasAlpha);

    loader.answers = {{1, 2.0f, 2.0f, false, false}, {2, 3.0f, 4.0f, true, false}, {3, 5.0f, 6.0f, true, false}};
    loader.log.clear();
    material.opacityMapName = "opacity.png";
    MaterialES20 three(&material, &loader, &pool, &cache);
    EXPECT_EQ(loader.log, (Names{"file base.png false 1.000000 2147483647", "file normal.png false 1.000000 2147483647",
                                 "file opacity.png false 1.000000 2147483647"}));
    EXPECT_EQ(three.GetOpacityMapID(), 3u);
    EXPECT_EQ(three.GetUScale(), 5.0f);
    EXPECT_EQ(three.GetVScale(), 6.0f);
    EXPECT_FALSE(material.hasAlpha);
}

TEST_F(MaterialES20Test, ATextureThatFailsLeavesNone)
{
    material.textureName = "missing.png";
    material.normalMapName = "missing too.png";
    MaterialES20 data(&material, &loader, &pool, &cache);
    EXPECT_EQ(data.GetTextureID(), 0u);
    EXPECT_EQ(data.GetNormalMapID(), 0u);
    EXPECT_EQ(data.GetUScale(), 1.0f);
}

TEST_F(MaterialES20Test, AnExceptionOfTheLoaderLeavesNoTextureAndNoScale)
{
    loader.answers = {{5, 7.0f, 7.0f, false, true}, {6, 2.0f, 2.0f, false, false}, {7, 9.0f, 9.0f, false, true}};
    material.textureName = "broken.png";
    material.normalMapName = "good.png";
    material.opacityMapName = "broken too.png";
    MaterialES20 data(&material, &loader, &pool, &cache);
    EXPECT_EQ(data.GetTextureID(), 0u);
    EXPECT_EQ(data.GetNormalMapID(), 6u);
    EXPECT_EQ(data.GetOpacityMapID(), 0u);
    EXPECT_EQ(data.GetUScale(), 2.0f);

    material.textureName.clear();
    material.normalMapName.clear();
    material.opacityMapName.clear();
    material.pixels = OwnedPixels(1);
    loader.answers = {{5, 7.0f, 7.0f, false, true}};
    MaterialES20 pixels(&material, &loader, &pool, &cache);
    EXPECT_EQ(pixels.GetTextureID(), 0u);
    EXPECT_EQ(pixels.GetUScale(), 1.0f);
}

TEST_F(MaterialES20Test, AMapStillToComeCountsAsNone)
{
    loader.answers = {{kPending, 2.0f, 2.0f, false, false}, {kPending, 3.0f, 3.0f, false, false}};
    material.normalMapName = "normal.png";
    material.opacityMapName = "opacity.png";
    auto data = std::make_unique<MaterialES20>(&material, &loader, &pool, &cache);
    EXPECT_EQ(data->GetNormalMapID(), 0u);
    EXPECT_EQ(data->GetOpacityMapID(), 0u);
    EXPECT_EQ(data->GetUScale(), 1.0f);
    loader.log.clear();
    data.reset();
    EXPECT_TRUE(loader.log.empty());
}

TEST_F(MaterialES20Test, DestructionReleasesEveryTexture)
{
    loader.answers = {{11}, {12}, {13}};
    material.textureName = "a";
    material.normalMapName = "b";
    material.opacityMapName = "c";
    auto data = std::make_unique<MaterialES20>(&material, &loader, &pool, &cache);
    loader.log.clear();
    data.reset();
    EXPECT_EQ(loader.log, (Names{"release 11", "release 12", "release 13"}));
}

TEST_F(MaterialES20Test, ATextureStillToComeKeepsTheMaterialOutOfTheFrameAndAsksForAnother)
{
    Scene scene;
    auto* own = new Material("pending");
    scene.AddMaterial(own);
    own->AddMesh(&mesh);
    own->textureName = "late.png";
    own->uScale = 2.0f;
    loader.answers = {{kPending}, {kPending}, {44, 3.0f, 5.0f, true, false}};
    auto* data = new OpenMaterialES20(own, &loader, &pool, nullptr);
    own->SetRenderData(data);
    EXPECT_EQ(data->GetTextureID(), kPending);

    scene.UpdateGraph(10, 10);
    ASSERT_FALSE(scene.IsDirty());
    data->Prepare(camera, items, false);
    EXPECT_TRUE(items.empty());
    EXPECT_TRUE(scene.IsDirty());
    EXPECT_EQ(loader.log.back(), "file late.png true 1.000000 2147483647");

    scene.UpdateGraph(10, 10);
    data->Prepare(camera, items, false);
    EXPECT_EQ(items.size(), 1u);
    EXPECT_FALSE(scene.IsDirty());
    EXPECT_EQ(data->GetTextureID(), 44u);
    // The loader's scale times the material's own, whenever the answer came.
    EXPECT_EQ(data->GetUScale(), 6.0f);
    EXPECT_EQ(data->GetVScale(), 5.0f);
    EXPECT_TRUE(own->hasAlpha);
    EXPECT_EQ(loader.log.size(), 3u);
    data->Prepare(camera, items, false);
    EXPECT_EQ(loader.log.size(), 3u);
    own->RemoveMesh(&mesh);
}

TEST_F(MaterialES20Test, ATextureThatFailsLateIsNone)
{
    material.textureName = "late.png";
    loader.answers = {{kPending}};
    OpenMaterialES20 data(&material, &loader, &pool, nullptr);
    EXPECT_TRUE(data.EnsureTextureLoaded());
    EXPECT_EQ(data.GetTextureID(), 0u);

    loader.answers = {{kPending}, {8, 1.0f, 1.0f, false, true}};
    OpenMaterialES20 throwing(&material, &loader, &pool, nullptr);
    EXPECT_TRUE(throwing.EnsureTextureLoaded());
    EXPECT_EQ(throwing.GetTextureID(), 0u);
}

TEST_F(MaterialES20Test, APendingTextureOfAMaterialWithoutASceneIsAskedForAgain)
{
    material.textureName = "late.png";
    loader.answers = {{kPending}, {kPending}};
    OpenMaterialES20 data(&material, &loader, &pool, nullptr);
    EXPECT_FALSE(data.EnsureTextureLoaded());
    data.PrepareSpecificNode(camera, &mesh, nullptr, items, false);
    // The second answer was the last one: failure, and so the mesh is listed.
    EXPECT_EQ(items.size(), 1u);
}

TEST_F(MaterialES20Test, PrepareListsTheMeshesInOrderOfCreationAndGivesThemRenderData)
{
    Mesh second(MakeRawMesh(3, {0, 1, 2}));
    Mesh third(MakeRawMesh(3, {0, 1, 2}));
    material.AddMesh(&third);
    material.AddMesh(&second);
    OpenMaterialES20 data(&material, nullptr, &pool, nullptr);
    data.Prepare(camera, items, true);
    ASSERT_EQ(items.size(), 3u);
    const Mesh* const order[] = {&mesh, &second, &third};
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_EQ(items[i].mesh, order[i]);
        EXPECT_EQ(items[i].style, &data);
        EXPECT_FALSE(items[i].specificNode);
        EXPECT_EQ(items[i].node, nullptr);
        ASSERT_NE(DataOf(*items[i].mesh), nullptr);
        EXPECT_TRUE(DataOf(*items[i].mesh)->clippingPlaneEnabled);
    }
    items.clear();
    data.Prepare(camera, items, false);
    EXPECT_FALSE(DataOf(mesh)->clippingPlaneEnabled);
}

TEST_F(MaterialES20Test, PrepareKeepsTheRenderDataThatAreThere)
{
    OpenMaterialES20 data(&material, nullptr, &pool, nullptr);
    data.Prepare(camera, items, false);
    const MeshES20* first = DataOf(mesh);
    pool.GenerateVBOs();
    data.Prepare(camera, items, false);
    EXPECT_EQ(DataOf(mesh), first);
    EXPECT_FALSE(pool.GenerateVBOs());
}

TEST_F(MaterialES20Test, AMeshWithAForeignObjectInItsSlotIsLeftOutAndKeepsTheObject)
{
    struct Foreign : Object
    {
    };
    OpenMaterialES20 data(&material, nullptr, &pool, nullptr);
    data.Prepare(camera, items, false);
    ASSERT_EQ(items.size(), 1u);
    for (const bool onRawMesh : {true, false})
    {
        auto* const foreign = new Foreign;
        mesh.SetRenderData(foreign, onRawMesh);
        items.clear();
        data.Prepare(camera, items, true);
        data.PrepareSpecificNode(camera, &mesh, nullptr, items, true);
        EXPECT_TRUE(items.empty());
        EXPECT_EQ(mesh.GetRenderData(), foreign);
    }
    mesh.SetRenderData(nullptr, true);
    data.Prepare(camera, items, false);
    EXPECT_EQ(items.size(), 1u) << "drawn again once the slot is free";
}

TEST_F(MaterialES20Test, AStandInIsReplacedOnceTheMeshIsDrawn)
{
    struct StandIn : RenderDataStandIn
    {
        explicit StandIn(int& ends) : m_ends(ends) {}
        ~StandIn() override { ++m_ends; }
        int& m_ends;
    };
    OpenMaterialES20 data(&material, nullptr, &pool, nullptr);
    int ends = 0;
    for (const bool onRawMesh : {true, false})
    {
        ends = 0;
        mesh.SetRenderData(new StandIn(ends), onRawMesh);
        items.clear();
        data.Prepare(camera, items, false);
        EXPECT_EQ(items.size(), 1u);
        EXPECT_EQ(ends, 1);
        EXPECT_NE(DataOf(mesh), nullptr);
    }
}

TEST_F(MaterialES20Test, RenderDataOfADerivedClassAreDrawn)
{
    struct Derived : MeshES20
    {
        using MeshES20::MeshES20;
    };
    auto* const derived = new Derived(&mesh, &pool);
    mesh.SetRenderData(derived, true);
    OpenMaterialES20 data(&material, nullptr, &pool, nullptr);
    data.Prepare(camera, items, true);
    EXPECT_EQ(items.size(), 1u);
    EXPECT_EQ(mesh.GetRenderData(), derived);
    EXPECT_TRUE(derived->clippingPlaneEnabled);
}

TEST_F(MaterialES20Test, PrepareFollowsEveryChangeOfTheMaterialsMeshes)
{
    OpenMaterialES20 data(&material, nullptr, &pool, nullptr);
    const auto listed = [&]
    {
        items.clear();
        data.Prepare(camera, items, false);
        std::vector<Mesh*> meshes;
        for (const RenderItemES20& item : items)
            meshes.push_back(item.mesh);
        return meshes;
    };
    EXPECT_EQ(listed(), std::vector<Mesh*>{&mesh});
    auto second = std::make_unique<Mesh>(MakeRawMesh(3, {0, 1, 2}));
    Mesh third(MakeRawMesh(3, {0, 1, 2}));
    const std::uint64_t before = material.GetMeshesRevision();
    material.AddMesh(second.get());
    EXPECT_NE(material.GetMeshesRevision(), before);
    EXPECT_EQ(listed(), (std::vector<Mesh*>{&mesh, second.get()}));
    // One leaves and one comes: as many as before, but others.
    material.AddMesh(&third);
    second.reset();
    EXPECT_EQ(listed(), (std::vector<Mesh*>{&mesh, &third}));
    Material other("other");
    other.AddMesh(&mesh);
    EXPECT_EQ(listed(), std::vector<Mesh*>{&third});
    material.RemoveMesh(&third);
    EXPECT_TRUE(listed().empty());
    const std::uint64_t unchanged = material.GetMeshesRevision();
    material.RemoveMesh(&third);
    EXPECT_EQ(material.GetMeshesRevision(), unchanged);
}

TEST_F(MaterialES20Test, ASteadyListGivesWayToADrawIDToLostRenderDataAndToClipping)
{
    Scene scene;
    auto* second = new Mesh(MakeRawMesh(3, {0, 1, 2}), &scene);
    material.AddMesh(second);
    OpenMaterialES20 data(&material, nullptr, &pool, nullptr);
    const auto count = [&](bool clippingPlane)
    {
        items.clear();
        data.Prepare(camera, items, clippingPlane);
        return items.size();
    };
    const auto isClipped = [&] { return static_cast<MeshES20*>(second->GetRenderData())->clippingPlaneEnabled; };
    EXPECT_EQ(count(false), 2u);
    EXPECT_EQ(count(false), 2u) << "as before";
    EXPECT_FALSE(isClipped());

    EXPECT_EQ(count(true), 2u);
    EXPECT_TRUE(isClipped());
    EXPECT_EQ(count(false), 2u);
    EXPECT_FALSE(isClipped());

    second->SetDrawID(scene.GetUpdateID());
    EXPECT_EQ(count(false), 2u);
    scene.UpdateGraph(1.0f, 1.0f);
    EXPECT_EQ(count(false), 1u) << "the time of its draw ID has passed";
    second->SetDrawID(0);
    EXPECT_EQ(count(false), 2u);
    second->InvalidateDrawID();
    EXPECT_EQ(count(false), 1u);
    second->SetDrawID(0);
    EXPECT_EQ(count(false), 2u);

    second->Suspend();
    EXPECT_EQ(count(false), 2u);
    EXPECT_NE(second->GetRenderData(), nullptr) << "made anew";
    EXPECT_EQ(count(false), 2u);
}

TEST_F(MaterialES20Test, AMeshThatIsAddedConcernsItsOwnMaterialAlone)
{
    constexpr int materials = 20;
    std::vector<std::unique_ptr<Material>> others;
    std::vector<std::unique_ptr<Mesh>> meshes;
    std::vector<std::unique_ptr<OpenMaterialES20>> data;
    const auto addMesh = [&](Material& to)
    {
        meshes.push_back(std::make_unique<Mesh>(MakeRawMesh(3, {0, 1, 2})));
        to.AddMesh(meshes.back().get());
    };
    const auto prepareAll = [&](bool clippingPlane)
    {
        items.clear();
        for (const auto& each : data)
        {
            each->Prepare(camera, items, clippingPlane);
        }
    };
    for (int i = 0; i < materials; ++i)
    {
        others.push_back(std::make_unique<Material>("other"));
        addMesh(*others.back());
        data.push_back(std::make_unique<OpenMaterialES20>(others.back().get(), nullptr, &pool, nullptr));
    }
    for (const bool clippingPlane : {false, true})
    {
        prepareAll(clippingPlane);
        prepareAll(clippingPlane);
        // A list that is made anew sets this back.
        const auto mark = [&](bool marked)
        {
            for (int i = 0; i < materials; ++i)
            {
                auto* const meshData = static_cast<MeshES20*>(meshes[static_cast<std::size_t>(i)]->GetRenderData());
                if (i != 7)
                {
                    EXPECT_EQ(meshData->clippingPlaneEnabled, marked ? clippingPlane : !clippingPlane) << i;
                    meshData->clippingPlaneEnabled = marked ? !clippingPlane : clippingPlane;
                }
            }
        };
        mark(true);
        const std::size_t before = items.size();
        addMesh(*others[7]);
        prepareAll(clippingPlane);
        EXPECT_EQ(items.size(), before + 1);
        mark(false);
    }
}

TEST_F(MaterialES20Test, TheClippingThatAnotherUserOfAMeshHasSetIsSetBack)
{
    OpenMaterialES20 data(&material, nullptr, &pool, nullptr);
    data.Prepare(camera, items, false);
    data.Prepare(camera, items, false);
    auto* const meshData = static_cast<MeshES20*>(mesh.GetRenderData());
    meshData->EnableClippingPlane(true);
    data.Prepare(camera, items, false);
    EXPECT_FALSE(meshData->clippingPlaneEnabled);
}

TEST_F(MaterialES20Test, LongListsAreListedInFull)
{
    std::vector<std::unique_ptr<Mesh>> many;
    for (int i = 0; i < 200; ++i)
    {
        many.push_back(std::make_unique<Mesh>(MakeRawMesh(3, {0, 1, 2})));
        material.AddMesh(many.back().get());
    }
    OpenMaterialES20 data(&material, nullptr, &pool, nullptr);
    for (int round = 0; round < 2; ++round)
    {
        items.clear();
        data.Prepare(camera, items, false);
        ASSERT_EQ(items.size(), 201u);
        for (int i = 0; i < 200; ++i)
            EXPECT_EQ(items[i + 1].mesh, many[i].get());
    }
}

TEST_F(MaterialES20Test, AMeshThatIsNotReadyIsLeftOutAndGetsNoRenderData)
{
    Scene scene;
    auto* waiting = new Mesh(MakeRawMesh(3, {0, 1, 2}), &scene);
    material.AddMesh(waiting);
    waiting->SetDrawID(scene.GetUpdateID() + 1);
    OpenMaterialES20 data(&material, nullptr, &pool, nullptr);
    data.Prepare(camera, items, false);
    EXPECT_EQ(items.size(), 1u);
    EXPECT_EQ(waiting->GetRenderData(), nullptr);
    waiting->SetDrawID(scene.GetUpdateID());
    data.Prepare(camera, items, false);
    EXPECT_EQ(items.size(), 3u);
}

TEST_F(MaterialES20Test, TwoMeshesOverOneRawMeshYieldOneObjectAndTwoItems)
{
    Mesh twin(mesh.GetRawMesh());
    material.AddMesh(&twin);
    OpenMaterialES20 data(&material, nullptr, &pool, nullptr);
    data.Prepare(camera, items, false);
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(DataOf(mesh), DataOf(twin));
    // The first to arrive stands for both.
    EXPECT_EQ(DataOf(twin)->GetMesh(), &mesh);
    EXPECT_EQ(DataOf(mesh)->sharedBuffer->meshes.size(), 1u);
}

TEST_F(MaterialES20Test, ANodeMaterialListsTheMeshesOfTheNodesThatItIsCurrentOn)
{
    NodeMaterial nodeMaterial;
    NodeMaterial later;
    MeshNode first(nullptr);
    MeshNode second(nullptr);
    Mesh other(MakeRawMesh(3, {0, 1, 2}));
    mesh.AddNode(&first);
    other.AddNode(&first);
    other.AddNode(&second);
    nodeMaterial.AddNode(&first);
    later.AddNode(&first);
    later.AddNode(&second);

    OpenMaterialES20 data(&nodeMaterial, nullptr, &pool, nullptr);
    data.Prepare(camera, items, true);
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0].mesh, &mesh);
    EXPECT_EQ(items[1].mesh, &other);
    for (const RenderItemES20& item : items)
    {
        EXPECT_EQ(item.style, &data);
        EXPECT_TRUE(item.specificNode);
        EXPECT_EQ(item.node, &first);
        EXPECT_TRUE(DataOf(*item.mesh)->clippingPlaneEnabled);
    }

    items.clear();
    OpenMaterialES20 laterData(&later, nullptr, &pool, nullptr);
    laterData.Prepare(camera, items, false);
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0].node, &second);
}

TEST_F(MaterialES20Test, PrepareSpecificNodeListsThatNodeAndUsesUpTheDrawID)
{
    Scene scene;
    auto* own = new Material("own");
    scene.AddMaterial(own);
    own->SetDrawID(scene.GetUpdateID() + 5);
    MeshNode node(nullptr);
    OpenMaterialES20 data(own, nullptr, &pool, nullptr);
    data.PrepareSpecificNode(camera, &mesh, &node, items, true);
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0].mesh, &mesh);
    EXPECT_EQ(items[0].style, &data);
    EXPECT_TRUE(items[0].specificNode);
    EXPECT_EQ(items[0].node, &node);
    EXPECT_TRUE(DataOf(mesh)->clippingPlaneEnabled);
    EXPECT_TRUE(own->UsingDrawID());
    // 1 is the ID that InvalidateDrawID leaves, and the ID of the scene's first update.
    EXPECT_TRUE(own->ReadyToDraw());
    scene.UpdateGraph(1, 1);
    EXPECT_FALSE(own->ReadyToDraw());

    Material plain("plain");
    OpenMaterialES20 plainData(&plain, nullptr, &pool, nullptr);
    plainData.PrepareSpecificNode(camera, &mesh, &node, items, false);
    EXPECT_FALSE(plain.UsingDrawID());
}

TEST_F(MaterialES20Test, CreateMeshPutsTheDataOnTheRawMesh)
{
    OpenMaterialES20 data(&material, nullptr, &pool, nullptr);
    data.CreateMeshES20(&mesh);
    EXPECT_NE(mesh.GetRawMesh()->GetRenderData(), nullptr);
    EXPECT_EQ(mesh.GetRenderData(), mesh.GetRawMesh()->GetRenderData());
}

TEST_F(MaterialES20Test, ApplySetsPolygonOffsetThenTheEffect)
{
    auto data = MakeMarked(material);
    EXPECT_TRUE(data->Apply(camera, RenderPassDefault));
    EXPECT_EQ(recorder.Strings(),
              (Names{"glDisable(" + std::to_string(GL_POLYGON_OFFSET_FILL) + ")", "glUseProgram(77)"}));
    EXPECT_EQ(effect->lastMaterial, data.get());
    EXPECT_EQ(effect->lastCamera, camera);
    EXPECT_EQ(data->currentEffect, effect);

    recorder.Clear();
    data->Remove();
    EXPECT_EQ(recorder.Strings(), (Names{"glUseProgram(0)"}));
    EXPECT_EQ(data->currentEffect, nullptr);

    material.SetFlags(MaterialFlagPolygonOffset);
    material.polygonOffsetFactor = 1.5f;
    material.polygonOffsetUnits = -2.0f;
    recorder.Clear();
    EXPECT_TRUE(data->Apply(camera, RenderPassDefault));
    EXPECT_EQ(recorder.Strings(), (Names{"glEnable(" + std::to_string(GL_POLYGON_OFFSET_FILL) + ")",
                                         "glPolygonOffset(1.5, -2)", "glUseProgram(77)"}));
    recorder.Clear();
    data->Remove();
    // Polygon offset stays.
    EXPECT_EQ(recorder.Strings(), (Names{"glUseProgram(0)"}));
}

TEST_F(MaterialES20Test, TheNoCullFlagTurnsCullingOffFromApplyToRemove)
{
    material.SetFlags(MaterialFlagNoCull);
    auto data = MakeMarked(material);
    data->Apply(camera, RenderPassDefault);
    EXPECT_EQ(recorder.Names(), (Names{"glDisable", "glDisable", "glUseProgram"}));
    EXPECT_EQ(recorder.Calls()[0].Int(0), GL_CULL_FACE);
    recorder.Clear();
    data->Remove();
    EXPECT_EQ(recorder.Names(), (Names{"glEnable", "glUseProgram"}));
    EXPECT_EQ(recorder.Calls()[0].Int(0), GL_CULL_FACE);
}

TEST_F(MaterialES20Test, APassWithoutAnEffectReturnsFalseWithCullingAndOffsetSet)
{
    material.SetFlags(MaterialFlagNoCull);
    auto data = MakeMarked(material);
    EXPECT_FALSE(data->Apply(camera, RenderPassSSAO));
    EXPECT_EQ(data->currentEffect, nullptr);
    EXPECT_EQ(recorder.Count("glDisable", {GL_CULL_FACE}), 1u);
    EXPECT_EQ(recorder.Count("glDisable", {GL_POLYGON_OFFSET_FILL}), 1u);
    recorder.Clear();
    data->Remove();
    EXPECT_EQ(recorder.Names(), (Names{"glEnable"}));
}

TEST_F(MaterialES20Test, APassOutOfRangeAppliesNothingAndHasTheShaderOfSlotOne)
{
    auto data = MakeMarked(material);
    for (const int pass : {15, 16, 1000, -1})
    {
        EXPECT_FALSE(data->Apply(camera, static_cast<RenderPass>(pass))) << pass;
        EXPECT_EQ(data->currentEffect, nullptr) << pass;
        EXPECT_EQ(data->GetShader(static_cast<RenderPass>(pass)), effect) << pass;
    }
    EXPECT_EQ(data->GetShader(RenderPassDefault), effect);
    EXPECT_EQ(data->GetShader(RenderPassAmbient), nullptr);
    EXPECT_EQ(data->GetShader(), effect);
    EXPECT_EQ(effect->applied, 0);
}

TEST_F(MaterialES20Test, AMaterialWithoutMeshesAppliesNothingUnlessItIsANodesMaterial)
{
    Material empty("empty");
    empty.SetFlags(MaterialFlagNoCull);
    auto data = MakeMarked(empty);
    EXPECT_FALSE(data->Apply(camera, RenderPassDefault));
    EXPECT_TRUE(recorder.Calls().empty());

    NodeMaterial nodeMaterial;
    auto nodeData = MakeMarked(nodeMaterial);
    EXPECT_TRUE(nodeData->Apply(camera, RenderPassDefault));
}

TEST_F(MaterialES20Test, ApplyWithoutAPassAppliesSlotOneAndChangesNoOtherState)
{
    material.SetFlags(MaterialFlagNoCull | MaterialFlagPolygonOffset);
    auto data = MakeMarked(material);
    data->Apply(camera);
    EXPECT_EQ(recorder.Names(), (Names{"glUseProgram"}));
    EXPECT_EQ(data->currentEffect, effect);

    OpenMaterialES20 bare(&material, nullptr, &pool, nullptr);
    bare.Apply(camera);
    EXPECT_EQ(bare.currentEffect, nullptr);
}

TEST_F(MaterialES20Test, ACopyTakesTheValuesAndOwnsNothing)
{
    loader.answers = {{51, 2.0f, 5.0f, false, false}};
    material.textureName = "t.png";
    material.uScale = 3.0f;
    material.vScale = 7.0f;
    auto data = std::make_unique<MaterialES20>(&material, &loader, &pool, &cache);
    EffectES20* basic = data->GetShader();
    const int references = basic->GetReferenceCount();
    {
        MaterialES20 copy(*data);
        EXPECT_EQ(copy.GetMaterial(), &material);
        EXPECT_EQ(copy.GetTextureLoader(), &loader);
        EXPECT_EQ(copy.GetUScale(), 6.0f);
        EXPECT_EQ(copy.GetVScale(), 35.0f);
        EXPECT_EQ(copy.materialUScale, 3.0f);
        EXPECT_EQ(copy.materialVScale, 7.0f);
        EXPECT_EQ(copy.GetTextureID(), 0u);
        EXPECT_EQ(copy.GetShader(), nullptr);
        EXPECT_EQ(basic->GetReferenceCount(), references);
        loader.log.clear();
    }
    EXPECT_TRUE(loader.log.empty());
    EXPECT_EQ(basic->GetReferenceCount(), references);

    Material other("other");
    MaterialES20 assigned(&other, &loader, &pool, &cache);
    EXPECT_EQ(basic->GetReferenceCount(), references + 1);
    assigned = *data;
    EXPECT_EQ(assigned.GetMaterial(), &material);
    EXPECT_EQ(assigned.GetUScale(), 6.0f);
    EXPECT_EQ(assigned.GetVScale(), 35.0f);
    EXPECT_EQ(assigned.materialUScale, 3.0f);
    EXPECT_EQ(assigned.materialVScale, 7.0f);
    EXPECT_EQ(basic->GetReferenceCount(), references);
    MaterialES20& same = *data;
    *data = same;
    EXPECT_EQ(data->GetTextureID(), 51u);
    EXPECT_EQ(basic->GetReferenceCount(), references);
}

TEST_F(MaterialES20Test, TheLoaderMayDieFirst)
{
    auto own = std::make_unique<LaidDownLoader>();
    own->answers = {{61}, {kPending}};
    material.textureName = "t.png";
    auto data = std::make_unique<OpenMaterialES20>(&material, own.get(), &pool, &cache);
    own.reset();
    EXPECT_EQ(data->GetTextureLoader(), nullptr);
    EXPECT_EQ(data->GetTextureID(), 61u);
    data.reset();
}

TEST_F(MaterialES20Test, AnAnswerThatCannotComeAnyMoreIsNone)
{
    auto own = std::make_unique<LaidDownLoader>();
    own->answers = {{kPending}};
    material.textureName = "t.png";
    OpenMaterialES20 data(&material, own.get(), &pool, nullptr);
    own.reset();
    EXPECT_TRUE(data.EnsureTextureLoaded());
    EXPECT_EQ(data.GetTextureID(), 0u);
}

TEST_F(MaterialES20Test, TheCacheMayDieFirst)
{
    auto own = std::make_unique<EffectCache>();
    Material other("other");
    auto first = std::make_unique<OpenMaterialES20>(&material, nullptr, &pool, own.get());
    auto second = std::make_unique<OpenMaterialES20>(&other, nullptr, &pool, own.get());
    EXPECT_TRUE(first->IsConnected());
    first->GetShader()->UseOptions(0);
    EXPECT_GT(recorder.Live(GLObjectKind::Program).size(), 0u);
    own.reset();
    EXPECT_EQ(recorder.LiveCount(), 0u);
    for (OpenMaterialES20* data : {first.get(), second.get()})
    {
        EXPECT_FALSE(data->IsConnected());
        EXPECT_EQ(data->GetShader(), nullptr);
        EXPECT_FALSE(data->Apply(camera, RenderPassDefault));
    }
    second.reset();
    first.reset();
    EXPECT_TRUE(recorder.StrayDeletes().empty());
}

TEST_F(MaterialES20Test, TheCacheMayDieBetweenApplyAndRemove)
{
    auto own = std::make_unique<EffectCache>();
    OpenMaterialES20 data(&material, nullptr, &pool, own.get());
    data.Apply(camera);
    own.reset();
    data.Remove();
    EXPECT_EQ(data.currentEffect, nullptr);
}

TEST_F(MaterialES20Test, ThePoolMayDieFirst)
{
    auto own = std::make_unique<SharedBufferPool>();
    OpenMaterialES20 data(&material, nullptr, own.get(), &cache);
    data.Prepare(camera, items, false);
    own.reset();
    EXPECT_FALSE(data.IsConnected());
    // A mesh that has lost its pool stays listed, and one that never had one is left out.
    Mesh late(MakeRawMesh(3, {0, 1, 2}));
    material.AddMesh(&late);
    items.clear();
    data.Prepare(camera, items, false);
    EXPECT_EQ(items.size(), 1u);
    EXPECT_EQ(late.GetRenderData(), nullptr);
}

TEST_F(MaterialES20Test, AMeshWhosePoolIsGoneIsPlacedAnew)
{
    auto old = std::make_unique<SharedBufferPool>();
    Attach(mesh, *old);
    old->GenerateVBOs();
    old.reset();
    OpenMaterialES20 data(&material, nullptr, &pool, nullptr);
    data.Prepare(camera, items, false);
    EXPECT_EQ(DataOf(mesh)->pool.Get(), &pool);
    EXPECT_EQ(DataOf(mesh)->vertexBufferId, 0u);
    EXPECT_EQ(recorder.LiveCount(), 0u);
    EXPECT_TRUE(pool.GenerateVBOs());
}

} // namespace OV::Test
