#include "orvane/renderdata/MaterialES20.h"

#include "orvane/effects/AdvancedMaterialEffectES20.h"
#include "orvane/effects/AdvancedMaterialPhongEffectES20.h"
#include "orvane/effects/CrosshatchEffectES20.h"
#include "orvane/effects/HUDEffectES20.h"
#include "orvane/effects/MonotoneEffectES20.h"
#include "orvane/effects/SimMaterialEffectES20.h"
#include "orvane/effects/VertexColorEffectES20.h"
#include "orvane/effects/WeightedAverageSecondPassEffectES20.h"
#include "orvane/overlay/Material2D.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/SharedBufferPool.h"
#include "orvane/scene/Scene.h"
#include "orvane/scene/SimMaterial.h"
#include "tests/effects/EffectSettingsGuard.h"
#include "tests/renderdata/RenderDataDoubles.h"
#include "tests/support/GLRecorder.h"

#include <gtest/gtest.h>

#include <memory>

namespace OV::Test
{

namespace
{

struct OpenData : MaterialES20
{
    using MaterialES20::MaterialES20;
    using MaterialES20::Remove;
};

class MaterialPasses : public ::testing::Test
{
protected:
    MaterialPasses() : material("material"), mesh(MakeRawMesh(3, {0, 1, 2}))
    {
        material.AddMesh(&mesh);
    }

    static void UseModel(EffectCache::EffectType type) { EffectES20::SetAdvancedMaterialShaderType(type); }

    /// One draw without a mesh.
    static bool Run(OpenData& data, CameraNodeES20& camera, RenderPass pass)
    {
        const bool applied = data.Apply(&camera, pass);
        data.Remove();
        return applied;
    }

    /// References on an effect, apart from the one that it takes to look.
    int References(EffectCache::EffectType type)
    {
        EffectES20* const effect = cache.GetEffect(type);
        const int count = effect->GetReferenceCount() - 1;
        effect->Release();
        return count;
    }

    EffectSettingsGuard settings;
    GLRecorder recorder;
    SharedBufferPool pool;
    EffectCache cache;
    Material material;
    Mesh mesh;
    CameraNodeES20 camera{nullptr};
};

template <class Effect>
bool Is(const EffectES20* effect)
{
    return dynamic_cast<const Effect*>(effect) != nullptr;
}

} // namespace

TEST_F(MaterialPasses, EveryLookHasItsSlot)
{
    const MaterialES20 data(&material, nullptr, &pool, &cache);
    EXPECT_TRUE(Is<WeightedAverageSecondPassEffectES20>(data.passEffects[RenderPassWeightedAverage]));
    EXPECT_TRUE(Is<VertexColorEffectES20>(data.passEffects[RenderPassVertexColor]));
    EXPECT_TRUE(Is<AdvancedMaterialEffectES20>(data.passEffects[RenderPassAdvanced]));
    EXPECT_TRUE(Is<AdvancedMaterialEffectES20>(data.passEffects[RenderPassAdvancedSecond]));
    EXPECT_TRUE(Is<CrosshatchEffectES20>(data.passEffects[RenderPassCrosshatch]));
    EXPECT_TRUE(Is<CrosshatchEffectES20>(data.passEffects[RenderPassCrosshatchSecond]));
    EXPECT_TRUE(Is<MonotoneEffectES20>(data.passEffects[RenderPassMonotone]));
    EXPECT_TRUE(Is<MonotoneEffectES20>(data.passEffects[RenderPassMonotoneSecond]));
    EXPECT_EQ(data.passEffects[RenderPassAdvanced], data.passEffects[RenderPassAdvancedSecond]);
}

TEST_F(MaterialPasses, TheTwoModelsAreToldApart)
{
    const AdvancedMaterialEffectES20 plain(nullptr);
    const AdvancedMaterialPhongEffectES20 phong(nullptr);
    EXPECT_FALSE(Is<AdvancedMaterialPhongEffectES20>(&plain));
    EXPECT_FALSE(Is<AdvancedMaterialEffectES20>(&phong));
}

TEST_F(MaterialPasses, SecondPassesSetTheFlagAndFirstOnesClearIt)
{
    OpenData data(&material, nullptr, &pool, &cache);
    auto& advanced = dynamic_cast<AdvancedMaterialBaseES20&>(*data.passEffects[RenderPassAdvanced]);
    auto& crosshatch = dynamic_cast<CrosshatchEffectES20&>(*data.passEffects[RenderPassCrosshatch]);
    auto& monotone = dynamic_cast<MonotoneEffectES20&>(*data.passEffects[RenderPassMonotone]);
    for (int round = 0; round < 2; ++round)
    {
        EXPECT_TRUE(Run(data, camera, RenderPassAdvancedSecond));
        EXPECT_TRUE(advanced.passFlag);
        EXPECT_FALSE(crosshatch.passFlag && round == 0);
        EXPECT_TRUE(Run(data, camera, RenderPassCrosshatchSecond));
        EXPECT_TRUE(crosshatch.passFlag);
        EXPECT_TRUE(Run(data, camera, RenderPassMonotoneSecond));
        EXPECT_TRUE(monotone.passFlag);
        EXPECT_TRUE(Run(data, camera, RenderPassAdvanced));
        EXPECT_FALSE(advanced.passFlag);
        EXPECT_TRUE(Run(data, camera, RenderPassCrosshatch));
        EXPECT_FALSE(crosshatch.passFlag);
        EXPECT_TRUE(Run(data, camera, RenderPassMonotone));
        EXPECT_FALSE(monotone.passFlag);
    }
}

TEST_F(MaterialPasses, TheFlagReachesTheShader)
{
    OpenData data(&material, nullptr, &pool, &cache);
    Run(data, camera, RenderPassCrosshatchSecond);
    auto* const effect = data.passEffects[RenderPassCrosshatch];
    const unsigned program = effect->ProgramForOptions(0);
    EXPECT_EQ(recorder.Uniform(program, "u_ambientPass"), std::vector<float>{1});
    Run(data, camera, RenderPassCrosshatch);
    EXPECT_EQ(recorder.Uniform(program, "u_ambientPass"), std::vector<float>{0});
}

TEST_F(MaterialPasses, AChangeOfModelSwapsTheEffectOfASlotAtItsNextUse)
{
    OpenData data(&material, nullptr, &pool, &cache);
    UseModel(EffectCache::AdvancedMaterialPhong);
    EXPECT_TRUE(Is<AdvancedMaterialEffectES20>(data.GetShader(RenderPassAdvanced)));
    data.Apply(&camera, RenderPassAdvanced);
    EXPECT_TRUE(Is<AdvancedMaterialPhongEffectES20>(data.GetShader(RenderPassAdvanced)));
    EXPECT_EQ(data.currentEffect, data.GetShader(RenderPassAdvanced));
    EXPECT_TRUE(Is<AdvancedMaterialEffectES20>(data.GetShader(RenderPassAdvancedSecond))) << "not used yet";
    data.Remove();
    Run(data, camera, RenderPassAdvancedSecond);
    EXPECT_TRUE(Is<AdvancedMaterialPhongEffectES20>(data.GetShader(RenderPassAdvancedSecond)));
    EXPECT_TRUE(dynamic_cast<AdvancedMaterialBaseES20&>(*data.GetShader(RenderPassAdvanced)).passFlag);

    UseModel(EffectCache::AdvancedMaterial);
    Run(data, camera, RenderPassAdvanced);
    EXPECT_TRUE(Is<AdvancedMaterialEffectES20>(data.GetShader(RenderPassAdvanced)));
    EXPECT_TRUE(Is<AdvancedMaterialPhongEffectES20>(data.GetShader(RenderPassAdvancedSecond)));
}

TEST_F(MaterialPasses, RenderDataMadeUnderThePhongModelHasItFromTheStart)
{
    UseModel(EffectCache::AdvancedMaterialPhong);
    OpenData data(&material, nullptr, &pool, &cache);
    EXPECT_TRUE(Is<AdvancedMaterialPhongEffectES20>(data.GetShader(RenderPassAdvanced)));
    UseModel(EffectCache::AdvancedMaterial);
    Run(data, camera, RenderPassAdvanced);
    EXPECT_TRUE(Is<AdvancedMaterialEffectES20>(data.GetShader(RenderPassAdvanced)));
}

TEST_F(MaterialPasses, AReplacedEffectKeepsItsReferenceUntilTheRenderDataGo)
{
    auto data = std::make_unique<OpenData>(&material, nullptr, &pool, &cache);
    EXPECT_EQ(References(EffectCache::AdvancedMaterial), 2);
    UseModel(EffectCache::AdvancedMaterialPhong);
    Run(*data, camera, RenderPassAdvanced);
    Run(*data, camera, RenderPassAdvancedSecond);
    UseModel(EffectCache::AdvancedMaterial);
    EXPECT_EQ(References(EffectCache::AdvancedMaterial), 2);
    EXPECT_EQ(References(EffectCache::AdvancedMaterialPhong), 2);
    data.reset();
    EXPECT_EQ(recorder.Live(GLObjectKind::Program).size(), 0u);
    EXPECT_TRUE(recorder.StrayDeletes().empty());
}

TEST_F(MaterialPasses, GoingBackAndForthPilesUpNothingAndCompilesNothingAnew)
{
    auto data = std::make_unique<OpenData>(&material, nullptr, &pool, &cache);
    const auto round = [&] {
        for (const auto type : {EffectCache::AdvancedMaterialPhong, EffectCache::AdvancedMaterial})
        {
            UseModel(type);
            Run(*data, camera, RenderPassAdvanced);
            Run(*data, camera, RenderPassAdvancedSecond);
        }
    };
    round();
    recorder.Clear();
    for (int i = 0; i < 5; ++i)
    {
        round();
    }
    EXPECT_EQ(recorder.Count("glLinkProgram"), 0u);
    EXPECT_EQ(References(EffectCache::AdvancedMaterial), 2);
    EXPECT_EQ(References(EffectCache::AdvancedMaterialPhong), 2);
}

TEST_F(MaterialPasses, NothingLeaksOverSuspensionsBetweenTheModels)
{
    Scene scene;
    auto* own = new Material("own");
    scene.AddMaterial(own);
    own->AddMesh(&mesh);
    for (int i = 0; i < 10; ++i)
    {
        auto* data = new OpenData(own, nullptr, &pool, &cache);
        own->SetRenderData(data);
        UseModel(i % 2 == 0 ? EffectCache::AdvancedMaterialPhong : EffectCache::AdvancedMaterial);
        Run(*data, camera, RenderPassAdvanced);
        Run(*data, camera, RenderPassAdvancedSecond);
        EXPECT_GT(recorder.Live(GLObjectKind::Program).size(), 0u);
        own->Suspend();
        EXPECT_EQ(recorder.Live(GLObjectKind::Program).size(), 0u);
    }
    own->RemoveMesh(&mesh);
}

TEST_F(MaterialPasses, TheCacheMayDieAfterASwap)
{
    auto dying = std::make_unique<EffectCache>();
    OpenData data(&material, nullptr, &pool, dying.get());
    UseModel(EffectCache::AdvancedMaterialPhong);
    Run(data, camera, RenderPassAdvanced);
    dying.reset();
    EXPECT_EQ(recorder.LiveCount(), 0u);
    EXPECT_EQ(data.GetShader(RenderPassAdvanced), nullptr);
    UseModel(EffectCache::AdvancedMaterial);
    EXPECT_FALSE(data.Apply(&camera, RenderPassAdvanced));
    data.Remove();
}

TEST_F(MaterialPasses, AnEffectThatIsNoModelGivesWay)
{
    OpenData data(&material, nullptr, &pool, &cache);
    int deaths = 0;
    data.passEffects[RenderPassAdvanced]->Release();
    data.passEffects[RenderPassAdvanced] = new MarkingEffect(&deaths);
    EXPECT_TRUE(Run(data, camera, RenderPassAdvanced));
    EXPECT_TRUE(Is<AdvancedMaterialEffectES20>(data.GetShader(RenderPassAdvanced)));
    UseModel(EffectCache::AdvancedMaterialPhong);
    EXPECT_TRUE(Run(data, camera, RenderPassAdvanced));
    EXPECT_TRUE(Is<AdvancedMaterialPhongEffectES20>(data.GetShader(RenderPassAdvanced)));
    EXPECT_EQ(deaths, 1);
}

TEST_F(MaterialPasses, FlatAndScalarMaterialsServeTheDefaultPassAlone)
{
    Material2D flat("flat");
    SimMaterial scalar("scalar");
    for (Material* of : {static_cast<Material*>(&flat), static_cast<Material*>(&scalar)})
    {
        Mesh own(MakeRawMesh(3, {0, 1, 2}));
        of->AddMesh(&own);
        OpenData data(of, nullptr, &pool, &cache);
        for (unsigned pass = 0; pass < kRenderPassCount; ++pass)
        {
            EXPECT_EQ(data.passEffects[pass] != nullptr, pass == RenderPassDefault) << pass;
            EXPECT_EQ(Run(data, camera, static_cast<RenderPass>(pass)), pass == RenderPassDefault) << pass;
        }
        EXPECT_TRUE(of == &flat ? Is<HUDEffectES20>(data.GetShader()) : Is<SimMaterialEffectES20>(data.GetShader()));
    }
}

} // namespace OV::Test
