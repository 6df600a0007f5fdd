// What goes through children, nodes and meshes without a list of them, beside the lists, which are
// made where somebody asks for one and hold from then on.

#include "orvane/scene/Material.h"
#include "tests/scene/SceneDoubles.h"
#include "tests/support/HeapCount.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iterator>
#include <list>
#include <memory>
#include <random>
#include <set>
#include <type_traits>
#include <utility>
#include <vector>

namespace OV
{
namespace
{

using namespace Test;

template <class Range>
auto Listed(const Range& range)
{
    using Entry = std::decay_t<decltype(*range.begin())>;
    return std::vector<Entry>(range.begin(), range.end());
}

template <class Range>
auto ListedBackwards(const Range& range)
{
    using Entry = std::decay_t<decltype(*range.begin())>;
    return std::vector<Entry>(range.rbegin(), range.rend());
}

template <class List, class Entry>
void Erase(List& list, Entry entry)
{
    list.erase(std::find(list.begin(), list.end(), entry));
}

/// Whether the list is asked for before anything happens, or not before the end.
class KeptLists : public ::testing::TestWithParam<bool>
{
protected:
    Scene scene;
    std::mt19937 random{1};

    std::size_t Pick(std::size_t count) { return std::uniform_int_distribution<std::size_t>(0, count - 1)(random); }
};

INSTANTIATE_TEST_SUITE_P(, KeptLists, ::testing::Bool(),
                         [](const auto& info) { return info.param ? "AskedForAtFirst" : "AskedForAtLast"; });

TEST_P(KeptLists, ChildrenAreTheSameEitherWay)
{
    Node* const parents[] = {new Node(&scene), new Node(&scene)};
    std::vector<Node*> expected[2];
    for (Node* const parent : parents)
    {
        scene.GetRoot()->AddChild(parent, false);
        Node* const first = new Node(&scene);
        parent->AddChild(first, false);
        expected[parent == parents[1] ? 1 : 0].push_back(first);
    }
    const std::list<Node*>* const early = GetParam() ? &parents[0]->GetChildren() : nullptr;
    std::vector<Node*> loose;
    for (int step = 0; step < 2000; ++step)
    {
        const std::size_t which = Pick(2);
        std::vector<Node*>& own = expected[which];
        std::vector<Node*>& others = expected[1 - which];
        switch (Pick(4))
        {
        case 0:
            own.push_back(new Node(&scene));
            parents[which]->AddChild(own.back(), false);
            break;
        case 1:
            if (!own.empty())
            {
                Node* const leaving = own[Pick(own.size())];
                parents[which]->RemoveChild(leaving);
                EXPECT_EQ(leaving->GetNextSibling(), nullptr);
                EXPECT_EQ(leaving->GetPreviousSibling(), nullptr);
                Erase(own, leaving);
                loose.push_back(leaving);
            }
            break;
        case 2:
            if (!others.empty())
            {
                Node* const moving = others[Pick(others.size())];
                parents[which]->AddChild(moving, true);
                Erase(others, moving);
                own.push_back(moving);
            }
            break;
        default:
            if (!own.empty())
            {
                // To the end of its own.
                Node* const moving = own[Pick(own.size())];
                parents[which]->AddChild(moving, false);
                Erase(own, moving);
                own.push_back(moving);
            }
        }
        ASSERT_EQ(Listed(parents[0]->EachChild()), expected[0]);
        ASSERT_EQ(ListedBackwards(parents[1]->EachChild()),
                  std::vector<Node*>(expected[1].rbegin(), expected[1].rend()));
        ASSERT_TRUE(!early || Listed(*early) == expected[0]);
    }
    EXPECT_TRUE(!early || early == &parents[0]->GetChildren());
    for (std::size_t i = 0; i < 2; ++i)
    {
        EXPECT_EQ(Listed(parents[i]->GetChildren()), expected[i]);
        EXPECT_EQ(parents[i]->GetFirstChild(), expected[i].empty() ? nullptr : expected[i].front());
        EXPECT_EQ(parents[i]->GetLastChild(), expected[i].empty() ? nullptr : expected[i].back());
    }
    for (Node* const node : loose)
    {
        scene.DeleteSubtree(node);
    }
}

TEST_P(KeptLists, NodesAndMeshesAreTheSameEitherWay)
{
    constexpr std::size_t count = 5;
    std::vector<Mesh*> meshes;
    std::vector<MeshNode*> nodes;
    std::vector<MeshNode*> ofMesh[count];
    std::vector<Mesh*> ofNode[count];
    for (std::size_t i = 0; i < count; ++i)
    {
        meshes.push_back(new Mesh(nullptr, &scene));
        nodes.push_back(new MeshNode(&scene));
        scene.GetRoot()->AddChild(nodes.back(), false);
    }
    if (GetParam())
    {
        meshes[0]->GetNodes();
        nodes[0]->GetMeshes();
    }
    for (int step = 0; step < 2000; ++step)
    {
        const std::size_t mesh = Pick(count);
        const std::size_t node = Pick(count);
        if (Pick(2) == 0)
        {
            if (meshes[mesh]->AddNode(nodes[node]))
            {
                ofMesh[mesh].push_back(nodes[node]);
                ofNode[node].push_back(meshes[mesh]);
            }
        }
        else if (meshes[mesh]->RemoveNode(nodes[node]))
        {
            Erase(ofMesh[mesh], nodes[node]);
            Erase(ofNode[node], meshes[mesh]);
        }
        ASSERT_EQ(Listed(meshes[mesh]->EachNode()), ofMesh[mesh]);
        ASSERT_EQ(Listed(nodes[node]->EachMesh()), ofNode[node]);
    }
    for (std::size_t i = 0; i < count; ++i)
    {
        EXPECT_EQ(meshes[i]->GetNodes(), ofMesh[i]);
        EXPECT_EQ(nodes[i]->GetMeshes(), ofNode[i]);
    }
}

TEST_P(KeptLists, TheOnlyNodeStaysWhenAListIsAskedFor)
{
    Mesh* const mesh = new Mesh(nullptr, &scene);
    MeshNode* const node = new MeshNode(&scene);
    scene.GetRoot()->AddChild(node, false);
    mesh->AddNode(node);
    const std::vector<MeshNode*>& nodes = mesh->GetNodes();
    const std::vector<Mesh*>& meshes = node->GetMeshes();
    EXPECT_EQ(nodes, std::vector<MeshNode*>{node});
    EXPECT_EQ(meshes, std::vector<Mesh*>{mesh});
    if (GetParam())
    {
        mesh->RemoveNode(node);
    }
    else
    {
        delete mesh;
    }
    EXPECT_TRUE(meshes.empty());
    EXPECT_TRUE(node->EachMesh().empty());
}

TEST_P(KeptLists, MeshesOfAMaterialStandInOrderOfCreation)
{
    constexpr std::size_t count = 3000;
    Material material("m");
    const auto* const early = GetParam() ? &material.GetMeshes() : nullptr;
    std::vector<std::unique_ptr<Mesh>> meshes;
    for (std::size_t i = 0; i < count; ++i)
    {
        meshes.push_back(std::make_unique<Mesh>(nullptr));
    }
    std::set<Mesh*, CompareMeshPointers> expected;
    const auto expectAll = [&]
    {
        EXPECT_EQ(material.EachMesh().size(), expected.size());
        EXPECT_EQ(Listed(material.EachMesh()), Listed(expected));
        EXPECT_TRUE(!early || *early == expected);
    };
    // Most of them in any order, then many out and in again, then all out.
    for (std::size_t step = 0; step < 6 * count; ++step)
    {
        Mesh* const mesh = meshes[Pick(count)].get();
        const bool adds = step < 3 * count || (step < 4 * count && step % 2 == 0);
        if (adds)
        {
            EXPECT_TRUE(material.AddMesh(mesh));
            expected.insert(mesh);
        }
        else
        {
            EXPECT_EQ(material.RemoveMesh(mesh), expected.erase(mesh) != 0);
        }
        const auto behind = material.EachMesh().Behind(mesh->GetSortID());
        const auto next = expected.upper_bound(mesh);
        ASSERT_EQ(behind == material.EachMesh().end(), next == expected.end());
        ASSERT_TRUE(next == expected.end() || *behind == *next);
        if (step % count == count / 2)
        {
            expectAll();
        }
    }
    expectAll();
    // A copy has the sort ID of the mesh: where one is, the other does not come in.
    Mesh* const original = meshes[count / 2].get();
    material.AddMesh(original);
    const auto copy = std::make_unique<Mesh>(*original);
    const std::size_t before = material.EachMesh().size();
    EXPECT_TRUE(material.AddMesh(copy.get()));
    EXPECT_EQ(copy->GetMaterial(), nullptr);
    EXPECT_EQ(material.EachMesh().size(), before);
    EXPECT_EQ(material.GetMeshes().size(), before);
}

TEST_P(KeptLists, MeshesOfASceneAreTheSameEitherWay)
{
    Scene other;
    const std::set<Mesh*>* const early = GetParam() ? &scene.GetMeshes() : nullptr;
    std::set<Mesh*> expected[2];
    Scene* const scenes[] = {&scene, &other};
    for (int step = 0; step < 2000; ++step)
    {
        const std::size_t which = Pick(2);
        std::set<Mesh*>& own = expected[which];
        const auto any = own.empty() ? own.end() : std::next(own.begin(), static_cast<std::ptrdiff_t>(Pick(own.size())));
        const std::size_t kind = Pick(3);
        if (kind == 0 || any == own.end())
        {
            own.insert(new Mesh(nullptr, scenes[which]));
        }
        else if (kind == 1)
        {
            delete *any;
            own.erase(any);
        }
        else
        {
            (*any)->SetScene(scenes[1 - which]);
            expected[1 - which].insert(*any);
            own.erase(any);
        }
        std::vector<Mesh*> all = Listed(scenes[which]->EachMesh());
        std::sort(all.begin(), all.end(), std::less<>());
        ASSERT_EQ(all, Listed(own));
        ASSERT_TRUE(!early || *early == expected[0]);
    }
    EXPECT_EQ(scene.GetMeshes(), expected[0]);
    EXPECT_EQ(other.GetMeshes(), expected[1]);
    scene.Clear();
    EXPECT_TRUE(scene.GetMeshes().empty());
    EXPECT_TRUE(scene.EachMesh().empty());
}

TEST(KeptListsOnTheHeap, GoingThroughATreeAndItsMeshesTakesNothing)
{
    Scene scene;
    Material* const material = new Material("m");
    scene.AddMaterial(material);
    for (int i = 0; i < 10; ++i)
    {
        Mesh* const mesh = new Mesh(nullptr, &scene);
        MeshNode* const node = new MeshNode(&scene);
        scene.GetRoot()->AddChild(node, false);
        mesh->AddNode(node);
        material->AddMesh(mesh);
    }
    const std::size_t before = HeapCount();
    std::size_t found = 0;
    for (Node* const child : scene.GetRoot()->EachChild())
    {
        if (child->HasType(NodeTypeMeshNode))
        {
            found += static_cast<MeshNode*>(child)->EachMesh().size();
        }
    }
    for (const Mesh* const mesh : material->EachMesh())
    {
        found += mesh->EachNode().size();
    }
    for (const Mesh* const mesh : scene.EachMesh())
    {
        found += mesh->EachNode().size();
    }
    EXPECT_EQ(found, 30u);
    EXPECT_EQ(HeapCount(), before);
}

/// Render data that do something as they end.
class EndingData : public Object
{
public:
    explicit EndingData(std::function<void()> atEnd) : m_atEnd(std::move(atEnd)) {}
    ~EndingData() override { m_atEnd(); }

private:
    std::function<void()> m_atEnd;
};

TEST(KeptListsInASuspend, EveryMeshThatStaysIsSuspended)
{
    constexpr std::size_t count = 40;
    Scene scene;
    for (std::size_t i = 0; i < count; ++i)
    {
        new Mesh(nullptr, &scene);
    }
    const std::vector<Mesh*> meshes = Listed(scene.GetMeshes());
    std::set<const Mesh*> ended;
    for (std::size_t i = 0; i < count; ++i)
    {
        // Some take another one with them, which stands behind or before.
        const bool takesOne = i % 10 == 0 || i % 10 == 7;
        const std::size_t victim = i % 10 == 0 ? i + 5 : i - 4;
        meshes[i]->SetRenderData(new EndingData(
                                     [&, i, takesOne, victim]
                                     {
                                         ended.insert(meshes[i]);
                                         if (takesOne)
                                         {
                                             delete meshes[victim];
                                             new Mesh(nullptr, &scene);
                                         }
                                     }),
                                 false);
    }
    scene.Suspend();
    EXPECT_EQ(ended.size(), count);
    EXPECT_EQ(scene.EachMesh().size(), count);
}

/// Does something in the walk of an update.
class WorkingNode : public Node
{
public:
    WorkingNode(Scene* scene, std::function<void()> duty) : Node(scene), m_duty(std::move(duty)) {}

    void UpdateGraph() override
    {
        if (const std::function<void()> duty = std::exchange(m_duty, nullptr))
        {
            duty();
        }
    }

private:
    std::function<void()> m_duty;
};

TEST(KeptListsInAnUpdate, AMeshThatComesBackAfterAClearStays)
{
    Scene scene;
    Mesh* const kept = new Mesh(nullptr, &scene);
    new Mesh(nullptr, &scene);
    Node* const node = new WorkingNode(&scene, [&] {
        scene.Clear();
        kept->SetScene(&scene);
    });
    scene.GetRoot()->AddChild(node, false);
    scene.UpdateGraph(1.0f, 1.0f);
    EXPECT_EQ(Listed(scene.EachMesh()), std::vector<Mesh*>{kept});
    EXPECT_EQ(kept->GetScene(), &scene);
    EXPECT_EQ(scene.GetMeshes(), std::set<Mesh*>{kept});
}

} // namespace
} // namespace OV
