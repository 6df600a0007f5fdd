// Lists of many entries: what leaves them looks at no others, and what stays keeps its order.

#include "orvane/scene/Material.h"
#include "tests/scene/GuardedMemory.h"
#include "tests/scene/SceneDoubles.h"

#include <algorithm>
#include <iterator>
#include <memory>
#include <random>

namespace OV
{
namespace
{

using namespace Test;

constexpr std::size_t many = 8000;

/// Many nodes under one parent that show one transparent mesh.
class LongLists : public ::testing::Test
{
protected:
    LongLists()
    {
        material->SetOpacity(0.5f);
        scene.AddMaterial(material);
        mesh = new Mesh(Ball(Vector(0, 0, 0), 1.0f), &scene);
        material->AddMesh(mesh);
        scene.GetRoot()->AddChild(parent, false);
        for (std::size_t i = 0; i < many; ++i)
        {
            nodes.push_back(new MeshNode(&scene));
        }
        // Apart from the nodes, which lie together.
        for (MeshNode* const node : nodes)
        {
            parent->AddChild(node, false);
        }
        for (MeshNode* const node : nodes)
        {
            mesh->AddNode(node);
        }
        scene.PopulateZOrderedDrawItems();
    }

    /// Nodes far from both ends.
    std::size_t ForbidSiblings() const
    {
        return ForbidRun(nodes, 1000, many - 1000);
    }

    /// What lies between two entries of a vector.
    template <class T>
    static std::size_t ForbidEntries(const std::vector<T*>& list, std::size_t first, std::size_t last)
    {
        return Forbid(&list[first], &list[last]);
    }

    OpenScene scene;
    Material* material = new Material("glass");
    Mesh* mesh = nullptr;
    Node* parent = new Node(&scene);
    std::vector<MeshNode*> nodes;
};

TEST_F(LongLists, AChildLeavesWithoutALookAtItsSiblings)
{
    for (MeshNode* const child : {nodes[3], nodes[many - 3]})
    {
        ExpectUntouched([this] { return ForbidSiblings(); }, [&] { parent->RemoveChild(child); });
    }
}

TEST_F(LongLists, AChildMovesToAnotherParentWithoutALookAtItsSiblings)
{
    Node* const other = new Node(&scene);
    scene.GetRoot()->AddChild(other, false);
    for (MeshNode* const child : {nodes[3], nodes[many - 3]})
    {
        ExpectUntouched([this] { return ForbidSiblings(); }, [&] { other->AddChild(child, true); });
    }
}

TEST_F(LongLists, ANodeLeavesItsMeshWithoutALookAtTheOthers)
{
    const auto remove = [this](std::size_t index) { return [this, index] { mesh->RemoveNode(nodes[index]); }; };
    const std::vector<MeshNode*>& list = mesh->GetNodes();
    ExpectUntouched([&] { return ForbidEntries(list, 1, many); }, remove(0));
    ExpectUntouched([&] { return ForbidEntries(list, 0, many - 1); }, remove(many - 1));
    ExpectUntouched([&] { return ForbidEntries(list, 0, many / 2) + ForbidEntries(list, many / 2 + 600, many); },
                    remove(many / 2));
}

TEST_F(LongLists, ANodeDiesWithoutALookAtTheOtherDrawItems)
{
    const std::vector<AlphaMeshNode*>& list = scene.GetZOrderedDrawItems();
    ASSERT_EQ(list.size(), many);
    for (const std::size_t index : {std::size_t(0), many / 2, many - 1})
    {
        ExpectUntouched([&] { return ForbidEntries(list, 0, many); }, [&] { delete nodes[index]; });
    }
}

TEST_F(LongLists, KeepTheOrderOfWhatStays)
{
    std::mt19937 random(3);
    std::vector<MeshNode*> expected = nodes;
    while (!expected.empty())
    {
        // From either end, from the middle and from anywhere; now one at a time, now a crowd.
        const std::size_t crowd = 1 + random() % (random() % 4 == 0 ? 900 : 3);
        const std::size_t from = random() % 4;
        for (std::size_t i = 0; i < crowd && !expected.empty(); ++i)
        {
            const std::size_t places[] = {0, expected.size() - 1, expected.size() / 2, random() % expected.size()};
            const auto leaving = expected.begin() + static_cast<std::ptrdiff_t>(places[from]);
            if (from == 2)
            {
                scene.DeleteSubtree(*leaving);
                expected.erase(leaving);
                continue;
            }
            ASSERT_TRUE(mesh->RemoveNode(*leaving));
            ASSERT_FALSE(mesh->RemoveNode(*leaving)) << "twice";
            delete *leaving;
            expected.erase(leaving);
        }
        ASSERT_EQ(mesh->GetNodes(), expected);
        ASSERT_EQ(parent->GetChildren(), (std::list<Node*>(expected.begin(), expected.end())));
        std::vector<MeshNode*> listed;
        for (const AlphaMeshNode* const item : scene.GetZOrderedDrawItems())
        {
            ASSERT_EQ(item->mesh, mesh);
            listed.push_back(item->node);
        }
        ASSERT_EQ(listed, expected);
        if (expected.size() > 10 && random() % 3 == 0)
        {
            // One that left comes back, at the end.
            MeshNode* const back = expected[expected.size() / 3];
            mesh->RemoveNode(back);
            mesh->AddNode(back);
            parent->AddChild(back, false);
            expected.erase(std::find(expected.begin(), expected.end(), back));
            expected.push_back(back);
            scene.PopulateZOrderedDrawItems();
            ASSERT_EQ(mesh->GetNodes(), expected);
        }
    }
    EXPECT_TRUE(mesh->GetNodes().empty());
}

TEST_F(LongLists, AShortListIsClosedUpAtOnce)
{
    Mesh* const shared = new Mesh(Ball(Vector(0, 0, 0), 1.0f), &scene);
    std::vector<MeshNode*> expected(nodes.begin(), nodes.begin() + 256);
    for (MeshNode* const node : expected)
    {
        shared->AddNode(node);
    }
    const std::vector<MeshNode*>& held = shared->GetNodes();
    shared->RemoveNode(expected.front());
    expected.erase(expected.begin());
    EXPECT_EQ(held, expected);
    shared->RemoveNode(expected[100]);
    expected.erase(expected.begin() + 100);
    EXPECT_EQ(held, expected);
}

TEST_F(LongLists, AnUpdateSortsOnlyWhatIsLeft)
{
    for (std::size_t i = 0; i < many; i += 2)
    {
        delete nodes[i];
    }
    scene.ProcessZOrderedDrawItems();
    EXPECT_EQ(scene.zOrderedDrawItems.size(), many / 2);
    for (std::size_t i = 1; i < many; i += 4)
    {
        delete nodes[i];
    }
    scene.MarkDirty();
    scene.UpdateGraph(100.0f, 100.0f);
    EXPECT_EQ(scene.zOrderedDrawItems.size(), many / 4);
}

TEST_F(LongLists, DrawItemsOfTwoScenesAtOneNodeLeaveEachItsOwn)
{
    // A mesh of this scene at a node of another: both lists name the node.
    auto other = std::make_unique<OpenScene>();
    Material* const otherMaterial = new Material("other glass");
    otherMaterial->SetOpacity(0.5f);
    other->AddMaterial(otherMaterial);
    Mesh* const otherMesh = new Mesh(Ball(Vector(0, 0, 0), 1.0f), other.get());
    otherMaterial->AddMesh(otherMesh);
    for (std::size_t i = 0; i < 10; ++i)
    {
        otherMesh->AddNode(nodes[i]);
    }
    other->PopulateZOrderedDrawItems();
    ASSERT_EQ(other->GetZOrderedDrawItems().size(), 10u);
    delete nodes[4];
    EXPECT_EQ(other->GetZOrderedDrawItems().size(), 9u);
    EXPECT_EQ(scene.GetZOrderedDrawItems().size(), many - 1);
    delete otherMesh;
    EXPECT_TRUE(other->GetZOrderedDrawItems().empty());
    EXPECT_EQ(scene.GetZOrderedDrawItems().size(), many - 1);
    other.reset();
    delete mesh;
    EXPECT_TRUE(scene.GetZOrderedDrawItems().empty());
    EXPECT_TRUE(nodes[0]->GetMeshes().empty());
}

TEST(LongList, ANodeOfManyMeshesLeavesEachOfThem)
{
    Scene scene;
    MeshNode* const node = new MeshNode(&scene);
    MeshNode* const stays = new MeshNode(&scene);
    std::vector<Mesh*> meshes;
    for (int i = 0; i < 9; ++i)
    {
        meshes.push_back(new Mesh(nullptr, &scene));
        // The ranks differ from mesh to mesh.
        for (int before = 0; before < i; ++before)
        {
            MeshNode* const passing = new MeshNode(&scene);
            meshes.back()->AddNode(passing);
            delete passing;
        }
        meshes.back()->AddNode(stays);
        meshes.back()->AddNode(node);
    }
    EXPECT_TRUE(meshes[0]->RemoveNode(node));
    delete meshes[4];
    EXPECT_TRUE(meshes[8]->RemoveNode(node));
    EXPECT_TRUE(meshes[0]->AddNode(node));
    EXPECT_EQ(node->GetMeshes(), (std::vector<Mesh*>{meshes[1], meshes[2], meshes[3], meshes[5], meshes[6], meshes[7],
                                                     meshes[0]}));
    delete node;
    for (const int left : {0, 1, 2, 3, 5, 6, 7, 8})
    {
        EXPECT_EQ(meshes[static_cast<std::size_t>(left)]->GetNodes(), (std::vector<MeshNode*>{stays})) << left;
    }
    delete stays;
}

} // namespace
} // namespace OV
