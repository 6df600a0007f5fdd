// Trees that are deeper than the stack.

#include "orvane/scene/Material.h"
#include "tests/scene/GuardedMemory.h"
#include "tests/scene/SceneDoubles.h"
#include "tests/support/SmallStack.h"

#include <memory>
#include <utility>
#include <vector>

namespace OV
{
namespace
{

using namespace Test;

constexpr std::size_t levels = 60000;

/// A chain of nodes of that kind, from the top; each is one to the right of the one above.
template <class NodeOfChain, class... Arguments>
std::vector<NodeOfChain*> MakeChain(Scene& scene, std::size_t length, Arguments&&... arguments)
{
    std::vector<NodeOfChain*> chain;
    // At once: what is made later must not come to lie between the nodes.
    chain.reserve(length);
    for (std::size_t i = 0; i < length; ++i)
    {
        chain.push_back(new NodeOfChain(&scene, arguments...));
        (i == 0 ? scene.GetRoot() : chain[i - 1])->AddChild(chain.back(), false);
        chain.back()->SetLocal(At(1, 0, 0));
    }
    return chain;
}

TEST(DeepTree, IsUpdatedToTheBottom)
{
    OnASmallStack(
        []
        {
            Scene scene;
            const std::vector<Node*> chain = MakeChain<Node>(scene, levels);
            scene.UpdateGraph(100.0f, 100.0f);
            EXPECT_EQ(chain.back()->GetGlobal().GetPosition().x, static_cast<float>(levels));
            chain[0]->SetLocal(At(0, 5, 0));
            scene.UpdateGraph(100.0f, 100.0f);
            EXPECT_EQ(chain.back()->GetGlobal().GetPosition().x, static_cast<float>(levels - 1));
            EXPECT_EQ(chain.back()->GetGlobal().GetPosition().y, 5.0f);
        });
}

TEST(DeepTree, IsCulledAndMeasuredToTheBottom)
{
    OnASmallStack(
        []
        {
            OpenScene scene;
            const std::vector<MeshNode*> chain = MakeChain<MeshNode>(scene, levels);
            const auto geometry = std::make_shared<RawMesh>();
            geometry->SetPositionBuffer({{-1, -1, -1}, {1, 1, 1}});
            geometry->SetBBox(Vector(-1, 0, 0), Vector(1, 0, 0));
            geometry->EndDescription(false);
            Mesh* const mesh = new Mesh(geometry, &scene);
            mesh->AddNode(chain.back());
            scene.UpdateGraph(100.0f, 100.0f);

            scene.UpdateCulling();
            EXPECT_NE(chain.back()->GetFlags() & NodeFlagCulled, 0u);

            Vector low;
            Vector high;
            scene.GetRoot()->ComputeBoundingBox(low, high);
            EXPECT_EQ(high.x, static_cast<float>(levels + 1));
            scene.GetBoundingBox(low, high);
            EXPECT_EQ(high.x, static_cast<float>(levels + 1));

            chain[0]->SetFlags(NodeFlagHidden, true);
            EXPECT_NE(chain.back()->GetFlags() & NodeFlagHidden, 0u);
            chain[0]->ClearFlags(NodeFlagHidden, true);
            EXPECT_EQ(chain.back()->GetFlags() & NodeFlagHidden, 0u);

            scene.DeleteSubtree(chain[1]);
            EXPECT_TRUE(mesh->GetNodes().empty());
        });
}

TEST(DeepTree, WithoutASceneIsMeasuredToTheBottom)
{
    OnASmallStack(
        []
        {
            std::vector<std::unique_ptr<MeshNode>> chain;
            for (std::size_t i = 0; i < levels; ++i)
            {
                chain.push_back(std::make_unique<MeshNode>(nullptr));
                if (i > 0)
                {
                    chain[i - 1]->AddChild(chain[i].get(), false);
                }
            }
            Mesh mesh(Ball(Vector(7, 0, 0), 1.0f));
            mesh.AddNode(chain.back().get());
            Vector low;
            Vector high;
            chain[0]->ComputeBoundingBox(low, high);
            EXPECT_EQ(high.x, 8.0f);
        });
}

/// Notes when the walk comes to it and when it goes.
class NotingNode : public Node
{
public:
    struct Notes
    {
        std::vector<const Node*> entered;
        std::vector<const Node*> left;
        const Node* end = nullptr; ///< goes on no further
    };

    NotingNode(Scene* scene, Notes& notes) : Node(scene), m_notes(notes) {}

    void UpdateGraph() override
    {
        m_notes.entered.push_back(this);
        if (m_notes.end != this)
        {
            // Another walk from within, which has nothing to do with the one under way.
            Vector low;
            Vector high;
            if (GetChildren().size() > 1)
            {
                ComputeBoundingBox(low, high);
            }
            Node::UpdateGraph();
        }
        m_notes.left.push_back(this);
    }

private:
    Notes& m_notes;
};

TEST(DeepTree, EachNodeOfADerivedClassIsVisitedOnceFromTheTopInListOrder)
{
    OnASmallStack(
        []
        {
            Scene scene;
            NotingNode::Notes notes;
            std::vector<NotingNode*> chain = MakeChain<NotingNode>(scene, 2000, notes);
            std::vector<const Node*> expected(chain.begin(), chain.end());
            for (const std::size_t level : {100u, 1000u, 1999u})
            {
                // After the child that leads down.
                NotingNode* const twig = new NotingNode(&scene, notes);
                chain[level]->AddChild(twig, false);
            }
            for (const std::size_t level : {1999u, 1000u, 100u})
            {
                expected.push_back(chain[level]->GetChildren().back());
            }
            scene.UpdateGraph(100.0f, 100.0f);
            EXPECT_EQ(notes.entered, expected);
            EXPECT_EQ(notes.left.size(), expected.size());

            // What is below one that keeps the walk to itself stays out.
            for (const std::size_t level : {50u, 1500u})
            {
                notes = {};
                notes.end = chain[level];
                scene.MarkDirty();
                scene.UpdateGraph(100.0f, 100.0f);
                std::vector<const Node*> shorter(chain.begin(),
                                                 chain.begin() + static_cast<std::ptrdiff_t>(level) + 1);
                if (level > 1000)
                {
                    shorter.push_back(chain[1000]->GetChildren().back());
                }
                if (level > 100)
                {
                    shorter.push_back(chain[100]->GetChildren().back());
                }
                EXPECT_EQ(notes.entered, shorter) << level;
            }
        });
}

TEST(DeepTree, ADerivedClassFindsEverythingBelowItUpdatedDownToAHundredLevels)
{
    Scene scene;
    NotingNode::Notes notes;
    const std::vector<NotingNode*> chain = MakeChain<NotingNode>(scene, 100, notes);
    scene.UpdateGraph(100.0f, 100.0f);
    EXPECT_EQ(notes.left, (std::vector<const Node*>(chain.rbegin(), chain.rend())));
}

TEST(DeepTree, GrowsWithoutALookAtAllThatIsAbove)
{
    Scene scene;
    const std::vector<Node*> chain = MakeChain<Node>(scene, levels);
    const auto forbid = [&] { return ForbidRun(chain, 100, levels - 100); };
    Node* const leaf = new Node(&scene);
    Node* const top = new Node(&scene);
    // What a first child takes from the heap may come from between the nodes.
    for (Node* const parent : {chain.back(), top})
    {
        parent->AddChild(new Node(&scene), false);
    }
    ExpectUntouched(forbid, [&] { chain.back()->AddChild(leaf, false); });
    Node* const pair = new Node(&scene);
    pair->AddChild(new Node(&scene), false);
    ExpectUntouched(forbid, [&] { chain.back()->AddChild(pair, false); });
    // The whole chain below something new.
    ExpectUntouched(forbid, [&] { top->AddChild(chain[0], false); });
    // Another process has put them into its tree.
    for (Node* made : {leaf, pair, top})
    {
        scene.DeleteSubtree(made);
    }
}

TEST(DeepTree, IsNoChildOfItsOwn)
{
    Scene scene;
    const std::vector<Node*> chain = MakeChain<Node>(scene, 300);
    for (const std::size_t below : {0u, 1u, 2u, 150u, 298u, 299u})
    {
        chain[below]->AddChild(chain[0], false);
        EXPECT_EQ(chain[0]->GetParent(), scene.GetRoot()) << below;
    }
    chain[298]->AddChild(chain[299], false);
    EXPECT_EQ(chain[299]->GetParent(), chain[298]);
    chain[100]->AddChild(chain[200], false);
    EXPECT_EQ(chain[200]->GetParent(), chain[100]);
}

} // namespace
} // namespace OV
