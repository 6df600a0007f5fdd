#include "orvane/scene/Material.h"
#include "tests/scene/SceneDoubles.h"
#include "tests/support/HeapCount.h"

namespace OV
{
namespace
{

using namespace Test;

/// A transparent mesh at many nodes.
class CrowdedScene : public ::testing::Test
{
protected:
    CrowdedScene()
    {
        Material* const material = new Material("a");
        material->SetOpacity(0.5f);
        scene.AddMaterial(material);
        Mesh* const mesh = new Mesh(Ball(Vector(0, 0, 0), 1.0f), &scene);
        material->AddMesh(mesh);
        for (int i = 0; i < 50; ++i)
        {
            MeshNode* const node = new MeshNode(&scene);
            scene.GetRoot()->AddChild(node, false);
            mesh->AddNode(node);
            nodes.push_back(node);
        }
    }

    template <class Work>
    static std::size_t AllocationsOf(Work work)
    {
        const std::size_t before = HeapCount();
        work();
        return HeapCount() - before;
    }

    void MoveAll(float step)
    {
        for (MeshNode* const node : nodes)
        {
            node->SetLocal(At(step, 0, -step));
        }
        scene.UpdateGraph(100.0f, 100.0f);
        scene.UpdateCulling();
        for (MeshNode* const node : nodes)
        {
            node->GetGlobalMatrix();
        }
    }

    OpenScene scene;
    std::vector<MeshNode*> nodes;
};

TEST_F(CrowdedScene, MovingEverythingAllocatesNothing)
{
    EXPECT_EQ(AllocationsOf([this] { MoveAll(1.0f); }), 0u) << "at first";
    EXPECT_EQ(AllocationsOf([this] { MoveAll(2.0f); }), 0u);
}

TEST_F(CrowdedScene, FillingTheDrawItemsAnewAllocatesNothing)
{
    EXPECT_GE(AllocationsOf([this] { scene.PopulateZOrderedDrawItems(); }), nodes.size());
    // The first return of the items sizes the store that keeps them.
    scene.PopulateZOrderedDrawItems();
    EXPECT_EQ(AllocationsOf([this] { scene.PopulateZOrderedDrawItems(); }), 0u);
    ASSERT_EQ(scene.GetZOrderedDrawItems().size(), nodes.size());
    EXPECT_EQ(AllocationsOf([this] { scene.UpdateGraph(100.0f, 100.0f); }), 0u);
}

} // namespace
} // namespace OV
