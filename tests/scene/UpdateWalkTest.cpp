#include "orvane/scene/LightNode.h"
#include "tests/scene/GuardedMemory.h"
#include "tests/scene/SceneDoubles.h"

#include <algorithm>
#include <functional>
#include <list>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <vector>

namespace OV
{
namespace
{

using namespace Test;

/// Node of a host's class that does something where a walk comes to it.
class HostNode : public MeshNode
{
public:
    explicit HostNode(Scene* scene, std::function<void()> atVisit = {}) :
        MeshNode(scene), m_atVisit(std::move(atVisit))
    {
    }

    void UpdateGraph() override
    {
        if (m_atVisit)
        {
            m_atVisit();
        }
        MeshNode::UpdateGraph();
    }

private:
    std::function<void()> m_atVisit;
};

class UpdateWalk : public ::testing::Test
{
protected:
    template <class T = Node>
    T* Add(Node* parent)
    {
        T* const node = new T(&scene);
        parent->AddChild(node, false);
        return node;
    }

    HostNode* AddHost(Node* parent, std::function<void()> atVisit)
    {
        HostNode* const node = new HostNode(&scene, std::move(atVisit));
        parent->AddChild(node, false);
        return node;
    }

    HostNode* AddLogged(Node* parent, const std::string& name)
    {
        return AddHost(parent, [this, name] { log.push_back(name); });
    }

    void Update()
    {
        scene.MarkDirty();
        scene.UpdateGraph(100.0f, 100.0f);
    }

    static float X(const Node* node)
    {
        return node->GetGlobal().GetPosition().x;
    }

    Scene scene;
    Node* root = scene.GetRoot();
    Log log;
};

TEST_F(UpdateWalk, ComesToNodesOfAHostsClassInEveryWalkInTheOrderOfTheTree)
{
    Node* const first = Add(root);
    AddLogged(first, "a");
    AddLogged(root, "b");
    Node* const deep = Add(Add(Add(root)));
    AddLogged(deep, "c");
    AddLogged(deep, "d");
    AddLogged(first, "e");
    const Log all = {"a", "e", "b", "c", "d"};
    for (int i = 0; i < 3; ++i)
    {
        log.clear();
        Update();
        EXPECT_EQ(log, all) << i;
    }
    log.clear();
    scene.UpdateGraph(100.0f, 100.0f);
    EXPECT_EQ(log, Log()) << "of a clean scene";
    deep->UpdateGraph();
    EXPECT_EQ(log, (Log{"c", "d"})) << "of a subtree";
    log.clear();
    root->AddChild(first, false);
    Update();
    EXPECT_EQ(log, (Log{"b", "c", "d", "a", "e"})) << "in another order";
}

TEST_F(UpdateWalk, ComesToAHostsNodeThatWasPutTogetherOutsideTheTree)
{
    Node* const outside = new Node(&scene);
    AddLogged(outside, "a");
    Update();
    EXPECT_EQ(log, Log());
    root->AddChild(outside, false);
    for (int i = 0; i < 2; ++i)
    {
        log.clear();
        Update();
        EXPECT_EQ(log, Log{"a"}) << i;
    }
}

TEST_F(UpdateWalk, ComposesWhatACallMovesFurtherOnAndNotWhatItHasPassed)
{
    Node* const before = Add(root);
    bool moves = true;
    Node* after = nullptr;
    Node* belowAfter = nullptr;
    AddHost(root, [&] {
        if (moves)
        {
            before->SetLocal(At(1, 0, 0));
            after->SetLocal(At(2, 0, 0));
            belowAfter->SetLocal(At(3, 0, 0));
        }
    });
    Node* const between = Add(root);
    after = Add(root);
    belowAfter = Add(Add(after));
    Update();
    moves = false;
    EXPECT_EQ(X(before), 0.0f);
    EXPECT_EQ(X(between), 0.0f);
    EXPECT_EQ(X(after), 2.0f);
    EXPECT_EQ(X(belowAfter), 5.0f);
    Update();
    EXPECT_EQ(X(before), 0.0f) << "passed when it moved, and aged since";
}

TEST_F(UpdateWalk, ComesToWhatACallAddsAtTheEnd)
{
    Node* added = nullptr;
    AddHost(root, [&] {
        if (!added)
        {
            added = new Node(&scene);
            added->SetLocal(At(4, 0, 0));
            root->AddChild(added, false);
        }
    });
    for (int i = 0; i < 20; ++i)
    {
        Add(root);
    }
    Update();
    EXPECT_EQ(X(added), 4.0f);
}

TEST_F(UpdateWalk, GoesOnWhereACallTakesAwayWhatComesNext)
{
    for (const bool deletes : {false, true})
    {
        Node* next = nullptr;
        Node* last = nullptr;
        Node* unmoved = nullptr;
        AddHost(root, [&] {
            if (next && deletes)
            {
                delete next;
            }
            else if (next)
            {
                root->RemoveChild(next);
            }
            next = nullptr;
        });
        next = Add(root);
        Node* const taken = next;
        unmoved = Add(root);
        last = Add(root);
        Node* const stepOff = next;
        next = nullptr;
        Update();
        next = stepOff;
        stepOff->SetLocal(At(1, 0, 0));
        last->SetLocal(At(2, 0, 0));
        Update();
        EXPECT_EQ(X(unmoved), 0.0f);
        EXPECT_EQ(X(last), 2.0f);
        if (!deletes)
        {
            EXPECT_EQ(X(taken), 0.0f);
            delete taken;
        }
    }
}

TEST_F(UpdateWalk, FindsWhatMovedBeforeItsSubtreeWasAdded)
{
    Node* const top = new Node(&scene);
    Node* const below = Add(Add(top));
    below->SetLocal(At(1, 0, 0));
    root->AddChild(top, false);
    Update();
    EXPECT_EQ(X(below), 1.0f);
    root->RemoveChild(top);
    below->SetLocal(At(2, 0, 0));
    Update();
    EXPECT_EQ(X(below), 1.0f);
    root->AddChild(top, false);
    Update();
    EXPECT_EQ(X(below), 1.0f) << "moved in an update that has passed";
}

TEST_F(UpdateWalk, TakesMarksInAnyOrder)
{
    std::vector<Node*> nodes;
    for (int i = 0; i < 100; ++i)
    {
        nodes.push_back(Add(root));
    }
    Update();
    for (const std::vector<int>& moved : {std::vector<int>{90, 5, 50}, {3, 2, 1, 0}, {99}, {7, 8, 9, 7}})
    {
        for (const int index : moved)
        {
            Node* const node = nodes[static_cast<std::size_t>(index)];
            node->SetLocal(At(node->GetLocal().GetPosition().x + 1, 0, 0));
        }
        Update();
        for (const Node* node : nodes)
        {
            EXPECT_EQ(X(node), node->GetLocal().GetPosition().x);
        }
    }
}

// A node that is looked at ends the process.
TEST_F(UpdateWalk, LooksAtNoneOfManyThatStandStill)
{
    constexpr std::size_t count = 1000;
    const auto memory = static_cast<Node*>(operator new(count * sizeof(Node)));
    for (std::size_t i = 0; i < count; ++i)
    {
        root->AddChild(new (memory + i) Node(&scene), false);
    }
    Update();
    ExpectUntouched([&] { return Forbid(memory + 1, memory + count - 1); },
                    [&] {
                        for (const float x : {1.0f, 2.0f})
                        {
                            memory[count - 1].SetLocal(At(x, 0, 0));
                            memory[0].SetLocal(At(x, 0, 0));
                            Update();
                            if (X(memory) != x || X(memory + count - 1) != x)
                            {
                                _exit(3);
                            }
                        }
                    });
    for (std::size_t i = count; i-- > 0;)
    {
        memory[i].~Node();
    }
    operator delete(memory);
}

/// The walk as it is stated, which goes to every node.
struct PlainNode
{
    Node* node;
    PlainNode* parent = nullptr;
    std::list<PlainNode*> children;
    Transform local;
    Transform global;
    unsigned updateID = 0;
    bool isOfHost = false;

    void Walk(unsigned current, std::vector<Node*>& visits)
    {
        if (isOfHost)
        {
            visits.push_back(node);
        }
        const bool parentMoved = parent && parent->updateID == current;
        if (parentMoved || updateID == current)
        {
            if (parent)
            {
                global.Multiply(parent->global, local);
            }
            else
            {
                global = local;
            }
            updateID = parentMoved ? current : updateID;
        }
        for (PlainNode* child : children)
        {
            child->Walk(current, visits);
        }
    }

    bool IsAbove(const PlainNode* other) const
    {
        return other && (other == this || IsAbove(other->parent));
    }
};

class RandomTree
{
public:
    explicit RandomTree(unsigned seed) : m_random(seed)
    {
        m_plain.push_back(std::make_unique<PlainNode>());
        m_plain[0]->node = m_scene.GetRoot();
    }

    void Step()
    {
        switch (Below(8))
        {
        case 0:
            AddNode();
            return;
        case 1:
        case 2:
            Move(*Any(), Below(4) == 0);
            return;
        case 3:
            Attach(*Any(), *Any(), Below(3) == 0);
            return;
        case 4:
            Detach(*Any());
            return;
        case 5:
            UpdateBelow(*Any());
            return;
        default:
            UpdateScene();
        }
    }

    void ExpectAgreement() const
    {
        ASSERT_EQ(m_visits, m_expected);
        for (const std::unique_ptr<PlainNode>& plain : m_plain)
        {
            ASSERT_TRUE(plain->node->GetGlobal() == plain->global);
            ASSERT_EQ(NodeParts::UpdateID(*plain->node), plain->updateID);
        }
    }

    ~RandomTree()
    {
        for (std::size_t i = m_plain.size(); i-- > 1;)
        {
            delete m_plain[i]->node;
        }
    }

private:
    std::size_t Below(std::size_t end)
    {
        return std::uniform_int_distribution<std::size_t>(0, end - 1)(m_random);
    }

    PlainNode* Any()
    {
        return m_plain[Below(m_plain.size())].get();
    }

    void AddNode()
    {
        if (m_plain.size() > 60)
        {
            return;
        }
        m_plain.push_back(std::make_unique<PlainNode>());
        PlainNode& plain = *m_plain.back();
        switch (Below(8))
        {
        case 0:
            plain.isOfHost = true;
            plain.node = new HostNode(&m_scene, [this, &plain] { m_visits.push_back(plain.node); });
            break;
        case 1:
            plain.node = new LightNode(&m_scene);
            break;
        case 2:
            plain.node = new MeshNode(&m_scene);
            break;
        default:
            plain.node = new Node(&m_scene);
        }
        Attach(*Any(), plain, false);
    }

    void Move(PlainNode& plain, bool inWorld)
    {
        const Transform place = At(static_cast<float>(Below(100)), 0, 0);
        if (inWorld)
        {
            SetGlobal(plain, place);
            plain.node->SetGlobal(place);
            return;
        }
        plain.local = place;
        plain.updateID = m_scene.GetUpdateID();
        plain.node->SetLocal(place);
    }

    void SetGlobal(PlainNode& plain, const Transform& place)
    {
        Transform toParent;
        if (plain.parent)
        {
            toParent.Invert(plain.parent->global);
        }
        plain.global = place;
        plain.local.Multiply(toParent, place);
        plain.updateID = m_scene.GetUpdateID();
    }

    void Attach(PlainNode& parent, PlainNode& child, bool keepGlobal)
    {
        if (&child == m_plain[0].get() || child.IsAbove(&parent))
        {
            return;
        }
        if (child.parent)
        {
            child.parent->children.remove(&child);
        }
        child.parent = &parent;
        parent.children.push_back(&child);
        if (keepGlobal)
        {
            SetGlobal(child, Transform(child.global));
        }
        parent.node->AddChild(child.node, keepGlobal);
    }

    void Detach(PlainNode& plain)
    {
        if (plain.parent)
        {
            plain.parent->node->RemoveChild(plain.node);
            plain.parent->children.remove(&plain);
            plain.parent = nullptr;
        }
    }

    void UpdateBelow(PlainNode& top)
    {
        top.node->UpdateGraph();
        top.Walk(m_scene.GetUpdateID(), m_expected);
    }

    void UpdateScene()
    {
        const unsigned current = m_scene.GetUpdateID();
        const bool isWalked = m_scene.IsDirty();
        m_scene.UpdateGraph(100.0f, 100.0f);
        if (isWalked)
        {
            m_plain[0]->Walk(current, m_expected);
        }
    }

    Scene m_scene;
    std::mt19937 m_random;
    std::vector<std::unique_ptr<PlainNode>> m_plain;
    std::vector<Node*> m_visits;
    std::vector<Node*> m_expected;
};

TEST(RandomUpdateWalk, ComposesWhatAWalkToEveryNodeComposesAndCallsTheSame)
{
    for (unsigned seed = 0; seed < 60; ++seed)
    {
        SCOPED_TRACE(seed);
        RandomTree tree(seed);
        for (int step = 0; step < 400; ++step)
        {
            tree.Step();
            tree.ExpectAgreement();
            if (::testing::Test::HasFatalFailure())
            {
                return;
            }
        }
    }
}

} // namespace
} // namespace OV
