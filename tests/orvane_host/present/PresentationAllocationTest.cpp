#include "orvane_host/import/detail/ImportedMaterial.h"
#include "orvane/renderdata/RenderItemES20.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"
#include "tests/orvane_host/present/AddedStage.h"
#include "tests/orvane_host/present/EveryFeatureScene.h"
#include "tests/orvane_host/present/PresentationStage.h"
#include "tests/support/HeapCount.h"

#include <cstddef>
#include <memory>

namespace OV::Test
{

namespace
{

class PresentationAllocation : public PresentationStage
{
protected:
    PresentationAllocation() : scene(*app.GetContext()) {}

    /// What a frame takes from the heap that nothing but time parts from the one before.
    std::size_t AllocationsOfSteadyFrame(bool capture)
    {
        const auto frame = [&] {
            app.Update(0.0f);
            app.Render(renderer.get(), capture);
        };
        // The first makes what it needs, and what it makes may change the list of the second.
        frame();
        frame();
        frame();
        const std::size_t before = HeapCount();
        frame();
        return HeapCount() - before;
    }

    void AddTriangle(Material& material, float left)
    {
        auto raw = std::make_shared<RawMesh>();
        raw->SetPositionBuffer({Vector(left, 0, 0), Vector(left + 1.0f, 0, 0), Vector(left, 1, 0)});
        raw->SetIndices({0, 1, 2});
        raw->EndDescription(true);
        auto* const mesh = new Mesh(raw, &World());
        auto* const node = new MeshNode(&World());
        mesh->AddNode(node);
        World().GetRoot()->AddChild(node, false);
        material.AddMesh(mesh);
    }

    EveryFeatureScene scene;
};

} // namespace

TEST_F(PresentationAllocation, ASteadyFrameTakesNothingFromTheHeap)
{
    for (const Host::Look look : {Host::Look::Advanced, Host::Look::Crosshatch, Host::Look::VertexColor})
    {
        renderer->SetLook(look);
        for (const bool stages : {false, true})
        {
            renderer->ShowSky(stages);
            renderer->SetEdges(stages ? std::optional<Host::EdgeLook>(Host::EdgeLook()) : std::nullopt);
            renderer->ShowAmbientOcclusion(stages);
            renderer->SetHorizonOcclusion(stages ? std::optional<Host::PresentationRenderer::HorizonOcclusion>({0.5f, 1.0f})
                                                  : std::nullopt);
            renderer->OverlayLines(stages);
            for (const bool capture : {false, true})
            {
                EXPECT_EQ(AllocationsOfSteadyFrame(capture), 0u)
                    << static_cast<int>(look) << (stages ? " with stages" : "") << (capture ? ", captured" : "");
            }
        }
    }
}

TEST_F(PresentationAllocation, NeitherDoesOneThatDrawsTogetherWhatStandsStill)
{
    auto* const material = new Material("of two");
    World().AddMaterial(material);
    AddTriangle(*material, 0.0f);
    AddTriangle(*material, 2.0f);
    renderer->SetBatches({Host::BatchUse::On});
    for (const bool stages : {false, true})
    {
        renderer->SetEdges(stages ? std::optional<Host::EdgeLook>(Host::EdgeLook()) : std::nullopt);
        renderer->ShowAmbientOcclusion(stages);
        renderer->SetHorizonOcclusion(stages ? std::optional<Host::PresentationRenderer::HorizonOcclusion>({0.5f, 1.0f})
                                              : std::nullopt);
        EXPECT_EQ(AllocationsOfSteadyFrame(false), 0u) << stages;
        EXPECT_GT(renderer->CountBatches().batches, 0u);
    }
}

TEST_F(PresentationAllocation, NorDoesOneThatDrawsMaterialsOfManyColoursTogether)
{
    for (int i = 0; i < 20; ++i)
    {
        auto* const material = new Material("of many");
        material->SetDiffuse(Color(0.05f * static_cast<float>(i), 0.5f, 0.5f));
        World().AddMaterial(material);
        AddTriangle(*material, static_cast<float>(i));
    }
    renderer->SetBatches({Host::BatchUse::On});
    for (const Host::Look look : {Host::Look::Basic, Host::Look::Advanced, Host::Look::Monotone})
    {
        renderer->SetLook(look);
        EXPECT_EQ(AllocationsOfSteadyFrame(false), 0u) << static_cast<int>(look);
        EXPECT_GE(renderer->CountBatches().pieces, 20u);
    }
}

// What lists each mesh takes room for it, and that stays.
TEST_F(PresentationAllocation, LooksWithLightListNoMeshesUntilSomebodyLooksAtEach)
{
    constexpr int count = 2000;
    Material* const materials[] = {new Material("plain"), new Host::ImportedMaterial("imported")};
    for (Material* const material : materials)
    {
        World().AddMaterial(material);
        for (int i = 0; i < count / 2; ++i)
        {
            AddTriangle(*material, 0.01f * static_cast<float>(i));
        }
    }
    for (const Host::Look look : {Host::Look::Basic, Host::Look::Advanced, Host::Look::Phong})
    {
        NewRenderer();
        renderer->ShowLines(false);
        renderer->SetBatches({Host::BatchUse::Off});
        renderer->SetLook(look);
        Draw();
        Draw();
        const std::size_t before = HeapBytes();
        renderer->AddStage(std::make_unique<AddedStage>(std::make_shared<StageRecord>()), Host::StageSlot::OverPicture);
        Draw();
        EXPECT_GT(HeapBytes(), before + count * 2 * sizeof(RenderItemES20)) << static_cast<int>(look);
    }
}

TEST_F(PresentationAllocation, NeitherDoesOneWithAnAddedStageThatNeedsEverything)
{
    const auto record = std::make_shared<StageRecord>();
    auto stage = std::make_unique<AddedStage>(record);
    stage->needs.objectIdentifiers = true;
    stage->needs.groupIdentifiers = true;
    stage->needs.depth = true;
    stage->needs.picture = true;
    renderer->AddStage(std::move(stage), Host::StageSlot::AfterSurfaces);
    EXPECT_EQ(AllocationsOfSteadyFrame(false), 0u);
    EXPECT_EQ(AllocationsOfSteadyFrame(true), 0u);
    EXPECT_EQ(record->drawn, 8);
}

} // namespace OV::Test
