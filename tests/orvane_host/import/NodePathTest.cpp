#include "orvane_host/import/NodePath.h"

#include "orvane/scene/Node.h"
#include "orvane/scene/Scene.h"

#include <gtest/gtest.h>

#include <vector>

using namespace OV;
using namespace OV::Host;

namespace
{

struct NodePathTest : ::testing::Test
{
    Scene scene;
    std::vector<ImportedNode> nodes;

    Node* Add(const std::string& name, Node* parent)
    {
        auto* node = new Node(&scene);
        parent->AddChild(node, false);
        nodes.push_back({name, node});
        return node;
    }
};

} // namespace

TEST_F(NodePathTest, LeadsFromTheRootToTheNodeAndIsFoundAgain)
{
    Node* const root = Add("file", scene.GetRoot());
    Node* const left = Add("left", root);
    Node* const leftLeaf = Add("leaf", left);
    Node* const right = Add("right", root);
    Node* const rightLeaf = Add("leaf", right);
    EXPECT_EQ(PathOf(nodes, *root), "file");
    EXPECT_EQ(PathOf(nodes, *leftLeaf), "file/left/leaf");
    EXPECT_EQ(PathOf(nodes, *rightLeaf), "file/right/leaf");
    for (const Node* node : {root, left, leftLeaf, right, rightLeaf})
    {
        EXPECT_EQ(FindNode(nodes, PathOf(nodes, *node)), node);
    }
}

TEST_F(NodePathTest, NamesThatAreEmptyCountBelowTheFirstThatIsNot)
{
    Node* const root = Add("", scene.GetRoot());
    Node* const house = Add("house", root);
    Node* const nameless = Add("", house);
    Node* const door = Add("door", nameless);
    EXPECT_EQ(PathOf(nodes, *root), "");
    EXPECT_EQ(PathOf(nodes, *house), "house");
    EXPECT_EQ(PathOf(nodes, *nameless), "house/");
    EXPECT_EQ(PathOf(nodes, *door), "house//door");
    for (const Node* node : {house, nameless, door})
    {
        EXPECT_EQ(FindNode(nodes, PathOf(nodes, *node)), node);
    }
}

TEST_F(NodePathTest, NamesWithSlashesAreFoundToo)
{
    Node* const root = Add("a/b", scene.GetRoot());
    Node* const leaf = Add("c/d", root);
    EXPECT_EQ(PathOf(nodes, *leaf), "a/b/c/d");
    EXPECT_EQ(FindNode(nodes, PathOf(nodes, *leaf)), leaf);
}

TEST_F(NodePathTest, TheFirstInTheFileIsFoundHoweverItIsNamed)
{
    Node* const root = Add("file", scene.GetRoot());
    Node* const whole = Add("a/b", root);
    Node* const upper = Add("a", root);
    Node* const lower = Add("b", upper);
    Node* const again = Add("b", root);
    EXPECT_EQ(FindNode(nodes, "a/b"), whole);
    EXPECT_EQ(FindNode(nodes, "b"), lower);
    EXPECT_EQ(FindNode(nodes, "file/b"), again);
    EXPECT_EQ(FindNode(nodes, "file/a/b"), whole);
    EXPECT_EQ(FindNode(nodes, "b/a"), nullptr);
    EXPECT_EQ(FindNode(nodes, ""), nullptr);
    EXPECT_EQ(FindNode(nodes, "/"), nullptr);
}

TEST_F(NodePathTest, PathsFollowNodesThatMove)
{
    Node* const left = Add("left", scene.GetRoot());
    Node* const right = Add("right", scene.GetRoot());
    Node* const leaf = Add("leaf", left);
    const NodePaths paths(nodes);
    EXPECT_EQ(paths.PathTo(*leaf), "left/leaf");
    left->RemoveChild(leaf);
    right->AddChild(leaf, false);
    EXPECT_EQ(paths.PathTo(*leaf), "right/leaf");
    EXPECT_EQ(paths.Find("right/leaf"), leaf);
    EXPECT_EQ(paths.Find("left/leaf"), nullptr);
}

TEST_F(NodePathTest, ANodeThatIsNotListedHasNoPath)
{
    auto* node = new Node(&scene);
    scene.GetRoot()->AddChild(node, false);
    EXPECT_EQ(PathOf(nodes, *node), "");
}

TEST(NodeName, IsDividedWhereItHoldsAnIdentifier)
{
    static constexpr struct
    {
        const char* whole;
        const char* name;
        const char* kind;
    } cases[] = {
        {"IfcWall_A-1_25fsbPyk15VvuXI$yNKenK", "A-1", "Wall"},
        {"IfcWall_a_b_25fsbPyk15VvuXI_yNKenK", "a_b", "Wall"},
        {"IfcWall__25fsbPyk15VvuXI$yNKenK", "Wall", ""},
        {"IfcWall_25fsbPyk15VvuXI$yNKenK", "Wall", ""},
        {"IfcWall_A-1_25fsbPyk15VvuXI$yNKen", "IfcWall_A-1_25fsbPyk15VvuXI$yNKen", ""},
        {"IfcWall_A-1_25fsbPyk15VvuXI-yNKenK", "IfcWall_A-1_25fsbPyk15VvuXI-yNKenK", ""},
        {"Ifc", "Ifc", ""},
        {"wall", "wall", ""},
        {"", "", ""},
    };
    for (const auto& entry : cases)
    {
        const NodeName called = DivideName(entry.whole);
        EXPECT_EQ(called.name, entry.name) << entry.whole;
        EXPECT_EQ(called.kind, entry.kind) << entry.whole;
    }
}
