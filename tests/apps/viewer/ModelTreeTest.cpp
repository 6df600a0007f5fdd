#include "apps/viewer/ModelTree.h"

#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"
#include "orvane_host/present/Presentation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using namespace OV;
using namespace OV::ViewerApp;

namespace
{

class ModelTreeTest : public ::testing::Test
{
protected:
    Node* Add(const std::string& name, Node* parent)
    {
        auto* const node = new MeshNode(scene.get());
        parent->AddChild(node, false);
        nodes.push_back({name, node});
        return node;
    }

    /// A site with a building of two floors, of which one has so many walls, all named as files of
    /// buildings name them.
    void AddBuilding(int walls)
    {
        Node* const site = Add("IfcSite_Lot_0000000000000000000001", scene->GetRoot());
        Node* const relation = Add("$Relation", site);
        Node* const building = Add("IfcBuilding_House_000000000000000000000_", relation);
        Node* const floor = Add("Floor", building);
        Add("Attic", building);
        for (int i = 0; i < walls; ++i)
        {
            Add("wall " + std::to_string(i), floor);
        }
    }

    void Read()
    {
        model = std::make_unique<Host::Presentation>(std::move(scene), std::move(nodes));
        tree.Read(*model);
    }

    std::vector<std::string> Names(const std::string& search = std::string())
    {
        std::vector<std::string> names;
        for (const std::size_t row : tree.List(search))
        {
            names.push_back(tree.GetRows()[row].name);
        }
        return names;
    }

    std::unique_ptr<Scene> scene = std::make_unique<Scene>();
    std::vector<Host::ImportedNode> nodes;
    std::unique_ptr<Host::Presentation> model;
    ModelTree tree;
};

using Texts = std::vector<std::string>;

} // namespace

TEST_F(ModelTreeTest, SmallOnesAreOpen)
{
    AddBuilding(2);
    Read();
    EXPECT_EQ(Names(), (Texts{"Lot", "House", "Floor", "wall 0", "wall 1", "Attic"}));
    const std::vector<ModelTree::Row>& rows = tree.GetRows();
    EXPECT_EQ(rows[1].kind, "Building");
    EXPECT_EQ(rows[1].level, 1u) << "below the lot, with no row of the relation between them";
    EXPECT_EQ(rows[3].path, model->PathOf(*model->FindNode("wall 0")));
    EXPECT_EQ(rows[3].parent, 2u);
    EXPECT_EQ(rows[2].end, 5u);
    EXPECT_TRUE(tree.HasRowsBelow(2));
    EXPECT_FALSE(tree.HasRowsBelow(5));
    tree.Toggle(2);
    EXPECT_EQ(Names(), (Texts{"Lot", "House", "Floor", "Attic"}));
    tree.Read(*model);
    EXPECT_EQ(Names(), (Texts{"Lot", "House", "Floor", "Attic"})) << "read again";
    tree.Toggle(2);
    EXPECT_EQ(Names().size(), 6u);
}

TEST_F(ModelTreeTest, LargeOnesAreOpenedWhereSomethingIsSelected)
{
    AddBuilding(100);
    Read();
    EXPECT_EQ(Names(), (Texts{"Lot", "House", "Floor", "Attic"}));
    const auto row = tree.Reveal(model->PathOf(*model->FindNode("wall 99")));
    ASSERT_TRUE(row);
    EXPECT_EQ(tree.GetRows()[*row].name, "wall 99");
    EXPECT_EQ(Names().size(), 104u);
    EXPECT_FALSE(tree.Reveal("wall 1000"));
}

TEST_F(ModelTreeTest, IsSearchedByNamesAndKindsWhetherOpenOrNot)
{
    AddBuilding(100);
    Read();
    EXPECT_EQ(Names("WALL 9"), (Texts{"wall 9", "wall 90", "wall 91", "wall 92", "wall 93", "wall 94", "wall 95", "wall 96",
                                      "wall 97", "wall 98", "wall 99"}));
    EXPECT_EQ(Names("building"), Texts{"House"});
    EXPECT_TRUE(Names("cellar").empty());
    EXPECT_EQ(Names().size(), 4u);
}

TEST_F(ModelTreeTest, TellsWhatHasAShape)
{
    AddBuilding(1);
    const auto geometry = std::make_shared<RawMesh>();
    geometry->StartDescription();
    geometry->SetPositionBuffer({Vector(0, 0, 0), Vector(1, 0, 0), Vector(0, 1, 0)});
    geometry->SetIndices({0, 1, 2});
    geometry->EndDescription(true);
    auto* const mesh = new Mesh(geometry, scene.get());
    mesh->AddNode(static_cast<MeshNode*>(nodes[4].node));
    Read();
    const std::vector<ModelTree::Row>& rows = tree.GetRows();
    EXPECT_TRUE(rows[0].isDrawn);
    EXPECT_TRUE(rows[1].isDrawn);
    EXPECT_FALSE(rows[2].isDrawn);
    EXPECT_FALSE(rows[3].isDrawn);
    EXPECT_TRUE(rows[4].isDrawn);
}

TEST_F(ModelTreeTest, TellsWhatARowIsIn)
{
    AddBuilding(2);
    Read();
    const std::optional<std::size_t> wall = tree.Find(tree.GetRows().back().path);
    ASSERT_TRUE(wall);
    EXPECT_EQ(tree.GetRows()[*wall].name, tree.GetRows().back().name);
    EXPECT_FALSE(tree.Find("garage"));
    const auto placeOf = [this](const std::string& name)
    {
        const auto& rows = tree.GetRows();
        const auto row = std::find_if(rows.begin(), rows.end(), [&](const ModelTree::Row& any) { return any.name == name; });
        return row == rows.end() ? "no row" : tree.PlaceOf(static_cast<std::size_t>(row - rows.begin()));
    };
    EXPECT_EQ(placeOf("Lot"), "");
    EXPECT_EQ(placeOf("Floor"), "Lot / House");
    EXPECT_EQ(placeOf("wall 1"), "Lot / House / Floor");
}
