#include "orvane/scene/Node.h"

#include "orvane/base/WatchedPtr.h"
#include "tests/scene/SceneDoubles.h"
#include "tests/support/VirtualSlot.h"

#include <algorithm>
#include <random>

namespace OV
{
namespace
{

using namespace Test;
using ::testing::Test;

/// Notes each visit of the walks that pass it.
class VisitedNode : public Node
{
public:
    VisitedNode(Scene* scene, Log& log, std::string name) : Node(scene), m_log(log), m_name(std::move(name))
    {
    }

    void SetGlobal(const Transform& t) override
    {
        m_log.push_back("SetGlobal " + m_name);
        Node::SetGlobal(t);
    }

    void UpdateGraph() override
    {
        m_log.push_back("UpdateGraph " + m_name);
        Node::UpdateGraph();
    }

    void UpdateCulling(float& nearValue, float& farValue) override
    {
        m_log.push_back("UpdateCulling " + m_name);
        nearValue -= 1.0f;
        farValue += 1.0f;
        Node::UpdateCulling(nearValue, farValue);
    }

    void ComputeBoundingBox(Vector& boxMin, Vector& boxMax) override
    {
        m_log.push_back("ComputeBoundingBox " + m_name);
        boxMin.x -= 1.0f;
        boxMax.y += 2.0f;
        Node::ComputeBoundingBox(boxMin, boxMax);
    }

private:
    Log& m_log;
    std::string m_name;
};

/// A scene that is clean at update ID 2, with a parent and a child in its tree.
class NodeInScene : public Test
{
protected:
    NodeInScene()
    {
        scene.GetRoot()->AddChild(parent, false);
        parent->AddChild(child, false);
        Update();
    }

    void Update() { scene.UpdateGraph(100.0f, 100.0f); }

    Scene scene;
    Node* parent = new Node(&scene);
    Node* child = new Node(&scene);
};

TEST(Node, StartsAtTheOriginAttachedToNothing)
{
    Scene scene;
    Node node(&scene);
    EXPECT_EQ(node.GetParent(), nullptr);
    EXPECT_TRUE(node.GetChildren().empty());
    EXPECT_TRUE(IsSame(node.GetLocal(), Transform()));
    EXPECT_TRUE(IsSame(node.GetGlobal(), Transform()));
    EXPECT_EQ(NodeParts::UpdateID(node), 0u);
    EXPECT_EQ(node.GetUserData(), 0);
    EXPECT_EQ(node.GetAnimationData(), nullptr);
    EXPECT_TRUE(node.GetPath().empty());
    EXPECT_EQ(node.GetScene(), &scene);
    EXPECT_FALSE(NodeParts::IsMatrixDirty(node));
}

TEST(Node, MayHaveNoScene)
{
    Node node(nullptr);
    Node child(nullptr);
    node.AddChild(&child, true);
    node.SetLocal(At(1, 2, 3));
    child.SetGlobal(At(4, 5, 6));
    node.UpdateGraph();
    EXPECT_EQ(node.GetScene(), nullptr);
    EXPECT_TRUE(IsSame(node.GetGlobal(), Transform())) << "there is no clock to update by";
    EXPECT_EQ(NodeParts::UpdateID(node), 0u);
    EXPECT_EQ(NodeParts::UpdateID(child), 0u);
}

TEST(Node, KeepsUserDataAndPath)
{
    Node node(nullptr);
    node.SetUserData(-7);
    EXPECT_EQ(node.GetUserData(), -7);

    const Node::Path path = {{1, 2}, {0xFFFFFFFFFFFFFFFF, 4}};
    node.SetPath(path);
    EXPECT_EQ(node.GetPath(), path);
    EXPECT_NE(&node.GetPath(), &path);
    node.SetPath(node.GetPath());
    EXPECT_EQ(node.GetPath(), path) << "given its own";
    node.SetPath({});
    EXPECT_TRUE(node.GetPath().empty());
}

TEST(Node, OwnsItsAnimationData)
{
    int deaths = 0;
    {
        Node node(nullptr);
        ExpectOwningSlot([&] { return node.GetAnimationData(); },
                         [&](Object* data) { node.SetAnimationData(data); });
        node.SetAnimationData(Counted(deaths));
    }
    EXPECT_EQ(deaths, 1);
}

TEST(Node, SetAnimationDataToNullFreesTheData)
{
    Node node(nullptr);
    int deaths = 0;
    node.SetAnimationData(Counted(deaths));
    node.SetAnimationData(nullptr);
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(node.GetAnimationData(), nullptr);
}

TEST(Node, AnimationDataFindsItsSlotEmptyWhenTheNodeDies)
{
    bool wasEmpty = false;
    auto node = std::make_unique<Node>(nullptr);
    Node* const raw = node.get();
    node->SetAnimationData(new WatchedObject([&, raw] { wasEmpty = raw->GetAnimationData() == nullptr; }));
    node.reset();
    EXPECT_TRUE(wasEmpty);
}

TEST_F(NodeInScene, AddChildAppendsInOrder)
{
    Node* const second = new Node(&scene);
    parent->AddChild(second, false);
    EXPECT_EQ(parent->GetChildren(), (std::list<Node*>{child, second}));
    EXPECT_EQ(second->GetParent(), parent);
}

TEST_F(NodeInScene, AddChildKeepsTheGlobalWhenAskedTo)
{
    parent->SetLocal(At(10, 0, 0));
    Update();
    Node* const node = new Node(&scene);
    node->SetGlobal(At(1, 2, 3));
    Update();

    parent->AddChild(node, true);
    EXPECT_TRUE(IsSame(node->GetGlobal(), At(1, 2, 3)));
    EXPECT_TRUE(IsSame(node->GetLocal(), At(-9, 2, 3)));
    EXPECT_EQ(NodeParts::UpdateID(*node), scene.GetUpdateID());
    EXPECT_TRUE(scene.IsDirty());
    Update();
    EXPECT_TRUE(IsSame(node->GetGlobal(), At(1, 2, 3)));
}

TEST_F(NodeInScene, AddChildKeepsTheGlobalThroughTheVirtualSetGlobal)
{
    Log log;
    auto* const node = new VisitedNode(&scene, log, "node");
    parent->AddChild(node, false);
    EXPECT_TRUE(log.empty());
    parent->AddChild(node, true);
    EXPECT_EQ(log, (Log{"SetGlobal node"}));
}

TEST_F(NodeInScene, AddChildWithoutKeepingTheGlobalLeavesBothTransformsAndTheSceneUnmarked)
{
    parent->SetLocal(At(10, 0, 0));
    Node* const node = new Node(&scene);
    node->SetGlobal(At(1, 2, 3));
    Update();
    const unsigned stamp = NodeParts::UpdateID(*node);

    parent->AddChild(node, false);
    EXPECT_TRUE(IsSame(node->GetGlobal(), At(1, 2, 3)));
    EXPECT_TRUE(IsSame(node->GetLocal(), At(1, 2, 3)));
    EXPECT_EQ(NodeParts::UpdateID(*node), stamp);
    EXPECT_FALSE(scene.IsDirty());

    parent->SetLocal(At(20, 0, 0));
    Update();
    EXPECT_TRUE(IsSame(node->GetGlobal(), At(21, 2, 3))) << "the new place comes with the next walk";
}

TEST_F(NodeInScene, AddChildTakesTheChildFromItsOldParent)
{
    Node* const other = new Node(&scene);
    scene.GetRoot()->AddChild(other, false);
    other->AddChild(child, false);
    EXPECT_TRUE(parent->GetChildren().empty());
    EXPECT_EQ(other->GetChildren(), (std::list<Node*>{child}));
    EXPECT_EQ(child->GetParent(), other);
}

TEST_F(NodeInScene, AddChildToItsPresentParentMovesItToTheEnd)
{
    Node* const second = new Node(&scene);
    parent->AddChild(second, false);
    parent->AddChild(child, false);
    EXPECT_EQ(parent->GetChildren(), (std::list<Node*>{second, child}));
    EXPECT_EQ(child->GetParent(), parent);
}

TEST_F(NodeInScene, AddChildOfAnotherSceneChangesNothing)
{
    Scene otherScene;
    Node* const otherParent = new Node(&otherScene);
    otherScene.GetRoot()->AddChild(otherParent, false);
    Node* const stranger = new Node(&otherScene);
    otherParent->AddChild(stranger, false);

    parent->AddChild(stranger, true);
    EXPECT_EQ(parent->GetChildren(), (std::list<Node*>{child}));
    EXPECT_EQ(otherParent->GetChildren(), (std::list<Node*>{stranger}));
    EXPECT_EQ(stranger->GetParent(), otherParent);

    Node free(nullptr);
    parent->AddChild(&free, false);
    EXPECT_EQ(free.GetParent(), nullptr);
    EXPECT_EQ(parent->GetChildren(), (std::list<Node*>{child}));
}

TEST_F(NodeInScene, AddChildOfNullItselfOrAnAncestorChangesNothing)
{
    for (Node* const refused : {static_cast<Node*>(nullptr), child, parent, scene.GetRoot()})
    {
        child->AddChild(refused, true);
        EXPECT_TRUE(child->GetChildren().empty());
        EXPECT_EQ(child->GetParent(), parent);
        EXPECT_EQ(parent->GetParent(), scene.GetRoot());
        EXPECT_EQ(scene.GetRoot()->GetParent(), nullptr);
        EXPECT_FALSE(scene.IsDirty());
    }
}

TEST_F(NodeInScene, RemoveChildDetachesAndMarksNothing)
{
    child->SetLocal(At(1, 2, 3));
    Update();
    parent->RemoveChild(child);
    const std::unique_ptr<Node> own(child);
    EXPECT_EQ(child->GetParent(), nullptr);
    EXPECT_TRUE(parent->GetChildren().empty());
    EXPECT_TRUE(IsSame(child->GetLocal(), At(1, 2, 3)));
    EXPECT_TRUE(IsSame(child->GetGlobal(), At(1, 2, 3)));
    EXPECT_FALSE(scene.IsDirty());
}

TEST_F(NodeInScene, RemoveChildOfAStrangerHasNoEffectOnEither)
{
    parent->RemoveChild(nullptr);
    parent->RemoveChild(parent);
    parent->RemoveChild(scene.GetRoot());
    scene.GetRoot()->RemoveChild(child);
    Node free(&scene);
    parent->RemoveChild(&free);
    EXPECT_EQ(parent->GetChildren(), (std::list<Node*>{child}));
    EXPECT_EQ(child->GetParent(), parent);
    EXPECT_EQ(parent->GetParent(), scene.GetRoot());
    EXPECT_EQ(free.GetParent(), nullptr);
}

TEST_F(NodeInScene, SetLocalStampsTheNodeAndLeavesItsGlobal)
{
    child->SetLocal(At(1, 2, 3));
    EXPECT_TRUE(IsSame(child->GetLocal(), At(1, 2, 3)));
    EXPECT_TRUE(IsSame(child->GetGlobal(), Transform()));
    EXPECT_EQ(NodeParts::UpdateID(*child), 2u);
    EXPECT_NE(NodeParts::UpdateID(*parent), 2u);
    EXPECT_TRUE(scene.IsDirty());
}

TEST_F(NodeInScene, SetGlobalFindsTheLocalAtOnceAndStampsTheNode)
{
    parent->SetLocal(Product(At(10, 0, 0), Scaled(2, 2, 2)));
    Update();
    EXPECT_FALSE(scene.IsDirty());
    child->SetGlobal(At(14, 6, 0));
    EXPECT_TRUE(IsSame(child->GetGlobal(), At(14, 6, 0)));
    EXPECT_TRUE(IsSame(child->GetLocal(), Product(At(2, 3, 0), Scaled(0.5f, 0.5f, 0.5f))));
    EXPECT_EQ(NodeParts::UpdateID(*child), 3u);
    EXPECT_TRUE(scene.IsDirty());
    Update();
    EXPECT_TRUE(IsSame(child->GetGlobal(), At(14, 6, 0)));
}

TEST_F(NodeInScene, SetGlobalUsesTheParentsOldGlobalBeforeTheUpdate)
{
    parent->SetLocal(At(10, 0, 0));
    child->SetGlobal(At(1, 0, 0));
    EXPECT_TRUE(IsSame(child->GetLocal(), At(1, 0, 0))) << "the parent's global was still the identity";
    Update();
    EXPECT_TRUE(IsSame(child->GetGlobal(), At(11, 0, 0)));
}

TEST_F(NodeInScene, SetGlobalWithoutAParentTakesItAsTheLocal)
{
    Node free(&scene);
    free.SetGlobal(At(1, 2, 3));
    EXPECT_TRUE(IsSame(free.GetLocal(), At(1, 2, 3)));
}

TEST_F(NodeInScene, TransformsOfItsOwnMayBeGiven)
{
    parent->SetLocal(At(10, 0, 0));
    child->SetLocal(At(1, 0, 0));
    Update();
    child->SetGlobal(child->GetLocal());
    EXPECT_TRUE(IsSame(child->GetGlobal(), At(1, 0, 0)));
    EXPECT_TRUE(IsSame(child->GetLocal(), At(-9, 0, 0)));
    child->SetLocal(child->GetGlobal());
    EXPECT_TRUE(IsSame(child->GetLocal(), At(1, 0, 0)));
}

TEST_F(NodeInScene, AMovedNodeMovesItsDescendantsButNotItsSiblings)
{
    Node* const grandchild = new Node(&scene);
    child->AddChild(grandchild, false);
    Node* const sibling = new Node(&scene);
    scene.GetRoot()->AddChild(sibling, false);
    child->SetLocal(At(0, 1, 0));
    grandchild->SetLocal(At(0, 0, 1));
    sibling->SetLocal(At(5, 5, 5));
    Update();
    EXPECT_EQ(scene.GetUpdateID(), 3u);

    parent->SetLocal(At(1, 0, 0));
    // A stale global of the sibling would be repaired if the walk composed it.
    NodeParts::Global(*sibling) = At(9, 9, 9);
    scene.GetRoot()->UpdateGraph();
    EXPECT_TRUE(IsSame(parent->GetGlobal(), At(1, 0, 0)));
    EXPECT_TRUE(IsSame(child->GetGlobal(), At(1, 1, 0)));
    EXPECT_TRUE(IsSame(grandchild->GetGlobal(), At(1, 1, 1)));
    EXPECT_TRUE(IsSame(sibling->GetGlobal(), At(9, 9, 9)));
    for (const Node* const moved : {parent, child, grandchild})
    {
        EXPECT_EQ(NodeParts::UpdateID(*moved), 3u);
        EXPECT_TRUE(NodeParts::IsMatrixDirty(*moved));
    }
    EXPECT_EQ(NodeParts::UpdateID(*sibling), 2u);
    EXPECT_NE(NodeParts::UpdateID(*scene.GetRoot()), 3u);
}

TEST_F(NodeInScene, AMovedChildDoesNotMoveItsParent)
{
    NodeParts::Global(*parent) = At(7, 0, 0);
    child->SetLocal(At(0, 1, 0));
    scene.GetRoot()->UpdateGraph();
    EXPECT_TRUE(IsSame(parent->GetGlobal(), At(7, 0, 0)));
    EXPECT_TRUE(IsSame(child->GetGlobal(), At(7, 1, 0)));
}

TEST_F(NodeInScene, AnUnchangedWalkComposesNothingButVisitsAll)
{
    Log log;
    auto* const first = new VisitedNode(&scene, log, "first");
    auto* const second = new VisitedNode(&scene, log, "second");
    auto* const below = new VisitedNode(&scene, log, "below");
    child->AddChild(first, false);
    first->AddChild(below, false);
    child->AddChild(second, false);
    for (Node* const node : {scene.GetRoot(), parent, child})
    {
        NodeParts::Local(*node) = At(3, 3, 3);
    }
    scene.GetRoot()->UpdateGraph();
    EXPECT_EQ(log, (Log{"UpdateGraph first", "UpdateGraph below", "UpdateGraph second"}));
    for (const Node* const node : {scene.GetRoot(), parent, child})
    {
        EXPECT_TRUE(IsSame(node->GetGlobal(), Transform()));
        EXPECT_FALSE(NodeParts::IsMatrixDirty(*node));
    }
}

TEST_F(NodeInScene, TheWalkLooksAtTheDirectParentOnly)
{
    parent->SetLocal(At(1, 0, 0));
    child->UpdateGraph();
    EXPECT_TRUE(IsSame(child->GetGlobal(), Transform())) << "composed with the parent's stale global";
    EXPECT_EQ(NodeParts::UpdateID(*child), 2u);
}

TEST_F(NodeInScene, WithoutAParentTheGlobalIsTheLocal)
{
    scene.GetRoot()->SetLocal(At(1, 2, 3));
    scene.GetRoot()->UpdateGraph();
    EXPECT_TRUE(IsSame(scene.GetRoot()->GetGlobal(), At(1, 2, 3)));
    EXPECT_TRUE(IsSame(child->GetGlobal(), At(1, 2, 3)));
}

TEST_F(NodeInScene, ChildrenComposeFromTheRightInDoublePrecision)
{
    const Transform turn = TurnedAboutY(0.3);
    QGM::Transf3d distant;
    distant.setValue(0, 3, 1e7);
    distant.setValue(1, 3, 1.0 / 3.0);
    Transform there;
    there.SetTransf3d(distant);
    parent->SetLocal(there);
    child->SetLocal(turn);
    Update();
    EXPECT_TRUE(IsSame(child->GetGlobal(), Product(there, turn)));
    EXPECT_FALSE(child->GetGlobal() == Product(turn, there));
    EXPECT_EQ(child->GetGlobal().GetTransf3d().m[1][3], 1.0 / 3.0);
}

TEST_F(NodeInScene, GlobalMatrixIsExtractedOnceAChange)
{
    parent->SetLocal(Product(At(1, 2, 3), TurnedAboutY(0.5)));
    Update();
    EXPECT_TRUE(NodeParts::IsMatrixDirty(*parent));
    Matrix* const matrix = parent->GetGlobalMatrix();
    ASSERT_NE(matrix, nullptr);
    Matrix expected;
    parent->GetGlobal().ExtractMatrix(expected, true);
    for (int i = 0; i < 16; ++i)
    {
        EXPECT_EQ(matrix->m[i], expected.m[i]) << i;
    }
    EXPECT_EQ(matrix->m[12], 1.0f);
    EXPECT_EQ(matrix->m[13], 2.0f);
    EXPECT_EQ(matrix->m[14], 3.0f);

    EXPECT_TRUE(NodeParts::IsMatrixDirty(*parent)) << "the first call leaves the flag";
    matrix->m[0] = 77.0f;
    EXPECT_EQ(parent->GetGlobalMatrix(), matrix);
    EXPECT_EQ(matrix->m[0], expected.m[0]) << "and so costs one more extraction";
    EXPECT_FALSE(NodeParts::IsMatrixDirty(*parent));
    matrix->m[0] = 77.0f;
    EXPECT_EQ(parent->GetGlobalMatrix(), matrix);
    EXPECT_EQ(matrix->m[0], 77.0f) << "unchanged since";

    parent->SetLocal(At(4, 5, 6));
    EXPECT_EQ(parent->GetGlobalMatrix()->m[12], 1.0f) << "SetLocal alone changes no global";
    Update();
    EXPECT_EQ(parent->GetGlobalMatrix(), matrix);
    EXPECT_EQ(matrix->m[12], 4.0f);
    EXPECT_EQ(matrix->m[0], 1.0f);
}

TEST_F(NodeInScene, NormalMatrixAndMirrorFollowEveryChangeOfTheGlobalTransform)
{
    const auto expectCurrent = [&](const char* when)
    {
        SCOPED_TRACE(when);
        float expected[9];
        parent->GetGlobal().ExtractAffineInverseTranspose3x3(expected);
        for (int i = 0; i < 9; ++i)
        {
            EXPECT_EQ(parent->GetGlobalNormalMatrix().m[i], expected[i]) << i;
        }
        EXPECT_EQ(parent->IsGlobalMirror(), parent->GetGlobal().GetTransf3d().isMirror());
    };
    Transform mirror;
    mirror.SetScale(Vector(-2.0f, 1.0f, 3.0f));
    expectCurrent("at first");
    parent->SetGlobal(mirror);
    EXPECT_TRUE(parent->IsGlobalMirror());
    expectCurrent("after SetGlobal, before any update");
    parent->SetLocal(TurnedAboutY(0.5));
    EXPECT_TRUE(parent->IsGlobalMirror()) << "SetLocal alone changes no global";
    Update();
    EXPECT_FALSE(parent->IsGlobalMirror());
    expectCurrent("after an update");
    parent->GetGlobalMatrix();
    expectCurrent("after the matrix was asked for");
}

TEST_F(NodeInScene, AMatrixThatWasAskedForIsConvertedByTheWalkAndNotAgain)
{
    Matrix* const matrix = parent->GetGlobalMatrix();
    parent->SetLocal(At(4, 5, 6));
    Update();
    EXPECT_EQ(matrix->m[12], 4.0f);
    matrix->m[12] = 77.0f;
    EXPECT_EQ(parent->GetGlobalMatrix(), matrix);
    EXPECT_EQ(matrix->m[12], 77.0f);
    EXPECT_EQ(child->PeekGlobalMatrix(), nullptr) << "nobody asked for this one";
}

TEST_F(NodeInScene, WhatAHostsClassMakesOfItsPlaceAfterTheWalkIsWhatIsRendered)
{
    class Mirrored : public Node
    {
    public:
        using Node::Node;

        void UpdateGraph() override
        {
            Node::UpdateGraph();
            Transform mirror;
            mirror.SetScale(Vector(-2.0f, 1.0f, 1.0f));
            global.Multiply(global, mirror);
        }
    };
    auto* const node = new Mirrored(&scene);
    scene.GetRoot()->AddChild(node, false);
    for (const float x : {1.0f, 5.0f})
    {
        node->SetLocal(At(x, 0, 0));
        Update();
        EXPECT_EQ(node->GetGlobalMatrix()->m[0], -2.0f);
        EXPECT_EQ(node->GetGlobalMatrix()->m[12], x);
        EXPECT_EQ(node->GetGlobalNormalMatrix().m[0], -0.5f);
        EXPECT_TRUE(node->IsGlobalMirror());
    }
}

TEST_F(NodeInScene, TheMatrixFlagStandsAfterEachComposingWalkUntilTheMatrixIsAskedFor)
{
    const Matrix* const matrix = parent->GetGlobalMatrix();
    for (const float x : {4.0f, 5.0f})
    {
        parent->SetLocal(At(x, 0, 0));
        EXPECT_FALSE(NodeParts::IsMatrixDirty(*parent)) << "SetLocal composes nothing";
        Update();
        EXPECT_TRUE(NodeParts::IsMatrixDirty(*parent));
        Update();
        EXPECT_TRUE(NodeParts::IsMatrixDirty(*parent)) << "nothing has asked";
        EXPECT_EQ(matrix->m[12], x) << "and yet it is converted";
        EXPECT_EQ(parent->GetGlobalMatrix(), matrix);
        EXPECT_FALSE(NodeParts::IsMatrixDirty(*parent));
    }
}

TEST_F(NodeInScene, ADerivedClassThatWritesTheGlobalTransformRaisesTheFlagOfTheMatrix)
{
    parent->GetGlobalMatrix();
    parent->SetLocal(At(4, 0, 0));
    Update();
    NodeParts::Global(*parent) = At(9, 0, 0);
    NodeParts::MatrixDirty(*parent) = true;
    EXPECT_EQ(parent->GetGlobalMatrix()->m[12], 9.0f);
    EXPECT_FALSE(NodeParts::IsMatrixDirty(*parent));
}

TEST_F(NodeInScene, SetGlobalShowsInTheMatrixWithTheNextUpdateUnlessOneIsStillUnasked)
{
    const auto ask = [this] { return parent->GetGlobalMatrix()->m[12]; };
    parent->SetGlobal(At(1, 0, 0));
    Update();
    EXPECT_EQ(ask(), 1.0f);
    EXPECT_EQ(ask(), 1.0f) << "after the first conversion comes one more";
    parent->SetGlobal(At(2, 0, 0));
    EXPECT_EQ(ask(), 1.0f) << "nothing has marked the matrix";
    Update();
    EXPECT_EQ(ask(), 2.0f);

    parent->SetGlobal(At(3, 0, 0));
    Update();
    parent->SetGlobal(At(4, 0, 0));
    EXPECT_EQ(ask(), 4.0f) << "the update has marked it, and nobody has asked since";
    parent->SetGlobal(At(5, 0, 0));
    EXPECT_EQ(ask(), 4.0f);
    Update();
    EXPECT_EQ(ask(), 5.0f);
    parent->SetGlobal(At(6, 0, 0));
    EXPECT_EQ(ask(), 5.0f);
}

TEST_F(NodeInScene, GlobalMatrixOfANodeNeverMovedIsTheIdentity)
{
    Node fresh(&scene);
    Matrix identity;
    Transform().ExtractMatrix(identity);
    for (int i = 0; i < 16; ++i)
    {
        EXPECT_EQ(fresh.GetGlobalMatrix()->m[i], identity.m[i]) << i;
    }
    EXPECT_FALSE(NodeParts::IsMatrixDirty(fresh));
}

TEST_F(NodeInScene, CullingAndBoxRecurseInChildOrderAndLeaveTheStartToTheCaller)
{
    Log log;
    auto* const first = new VisitedNode(&scene, log, "first");
    auto* const below = new VisitedNode(&scene, log, "below");
    auto* const second = new VisitedNode(&scene, log, "second");
    child->AddChild(first, false);
    first->AddChild(below, false);
    child->AddChild(second, false);

    float nearValue = 10.0f;
    float farValue = 20.0f;
    child->UpdateCulling(nearValue, farValue);
    EXPECT_EQ(log, (Log{"UpdateCulling first", "UpdateCulling below", "UpdateCulling second"}));
    EXPECT_EQ(nearValue, 7.0f);
    EXPECT_EQ(farValue, 23.0f);

    log.clear();
    Vector boxMin(1, 2, 3);
    Vector boxMax(4, 5, 6);
    child->ComputeBoundingBox(boxMin, boxMax);
    EXPECT_EQ(log, (Log{"ComputeBoundingBox first", "ComputeBoundingBox below", "ComputeBoundingBox second"}));
    EXPECT_TRUE(IsNear(boxMin, Vector(-2, 2, 3), 0.0f));
    EXPECT_TRUE(IsNear(boxMax, Vector(4, 11, 6), 0.0f));
}

TEST_F(NodeInScene, CenterOfAPlainNodeIsTheOrigin)
{
    child->SetLocal(At(5, 5, 5));
    Update();
    Vector center(1, 2, 3);
    child->ComputeCenter(center);
    EXPECT_TRUE(IsNear(center, Vector(0, 0, 0), 0.0f));
}

TEST_F(NodeInScene, CenterIsHalfOfWhatTheVirtualBoxGivesFromZero)
{
    Log log;
    VisitedNode node(&scene, log, "node");
    Vector center(1, 2, 3);
    node.ComputeCenter(center);
    EXPECT_EQ(log, (Log{"ComputeBoundingBox node"}));
    EXPECT_TRUE(IsNear(center, Vector(-0.5f, 1, 0), 0.0f));
}

TEST_F(NodeInScene, ADyingNodeLeavesItsParentAndItsChildrenLiveOn)
{
    scene.GetRoot()->AddChild(new Node(&scene), false);
    delete parent;
    const std::unique_ptr<Node> own(child);
    EXPECT_EQ(child->GetParent(), nullptr);
    EXPECT_EQ(scene.GetRoot()->GetChildren().size(), 2u) << "the camera and the other node";
    child->UpdateGraph();
}

TEST(Node, OutlivesItsScene)
{
    auto scene = std::make_unique<Scene>();
    Node kept(scene.get());
    auto* const child = new Node(scene.get());
    kept.AddChild(child, false);
    scene.reset();
    EXPECT_EQ(kept.GetScene(), nullptr);
    EXPECT_EQ(child->GetScene(), nullptr);
    kept.SetLocal(At(1, 2, 3));
    kept.UpdateGraph();
    EXPECT_EQ(kept.GetChildren(), (std::list<Node*>{child}));
    delete child;
}

TEST(Node, ItsLifetimeEndsWithIt)
{
    auto node = std::make_unique<Node>(nullptr);
    const WatchedPtr<Node> watched = node.get();
    EXPECT_EQ(watched.Get(), node.get());
    node.reset();
    EXPECT_EQ(watched.Get(), nullptr);
}

TEST(Node, ManyDetachedNodesMayDieInAnyOrder)
{
    std::mt19937 random(7);
    std::vector<std::unique_ptr<Node>> nodes;
    auto scene = std::make_unique<Scene>();
    for (int i = 0; i < 100; ++i)
    {
        nodes.push_back(std::make_unique<Node>(scene.get()));
    }
    std::shuffle(nodes.begin(), nodes.end(), random);
    nodes.resize(60);
    scene.reset();
    for (const auto& node : nodes)
    {
        EXPECT_EQ(node->GetScene(), nullptr);
    }
}

/// Random moves in a random tree against products along each node's way to the root.
TEST(Node, RandomMovesGiveTheProductsOfAllLocals)
{
    for (unsigned seed = 0; seed < 50; ++seed)
    {
        std::mt19937 random(seed);
        const auto below = [&random](std::size_t end) { return random() % end; };
        Scene scene;
        std::vector<Node*> nodes = {scene.GetRoot()};
        for (int i = 0; i < 40; ++i)
        {
            Node* const node = new Node(&scene);
            nodes[below(nodes.size())]->AddChild(node, false);
            nodes.push_back(node);
        }
        for (int frame = 0; frame < 20; ++frame)
        {
            for (std::size_t move = below(6); move > 0; --move)
            {
                Node* const node = nodes[below(nodes.size())];
                const Transform place =
                    Product(At(static_cast<float>(below(9)) - 4.0f, static_cast<float>(below(9)), 1.0f),
                            TurnedAboutY(static_cast<double>(below(100)) * 0.1));
                below(3) == 0 ? node->SetGlobal(place) : node->SetLocal(place);
            }
            scene.UpdateGraph(1.0f, 1.0f);
            for (Node* const node : nodes)
            {
                Transform expected = node->GetLocal();
                for (const Node* up = node->GetParent(); up; up = up->GetParent())
                {
                    expected = Product(up->GetLocal(), expected);
                }
                ASSERT_TRUE(node->GetGlobal().GetTransf3d().isEqual(expected.GetTransf3d(), 1e-8))
                    << "seed " << seed << " frame " << frame;
                Matrix matrix;
                node->GetGlobal().ExtractMatrix(matrix);
                ASSERT_EQ(node->GetGlobalMatrix()->m[12], matrix.m[12]) << "seed " << seed;
            }
        }
    }
}

TEST(Node, VirtualsStandInTheirOrder)
{
    // The destructor is slot 0.
    EXPECT_EQ(VirtualSlot(&Node::SetLocal), 1);
    EXPECT_EQ(VirtualSlot(&Node::SetGlobal), 2);
    EXPECT_EQ(VirtualSlot(&Node::UpdateGraph), 3);
    EXPECT_EQ(VirtualSlot(&Node::UpdateCulling), 4);
    EXPECT_EQ(VirtualSlot(&Node::ComputeBoundingBox), 5);
    EXPECT_EQ(VirtualSlot(&Node::ComputeCenter), 6);
    EXPECT_EQ(VirtualSlot(&Node::Type), 7);
    EXPECT_EQ(VirtualSlot(&Node::HasType), 8);
}

} // namespace
} // namespace OV
