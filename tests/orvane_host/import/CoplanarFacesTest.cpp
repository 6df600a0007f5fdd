#include "orvane_host/import/detail/CoplanarFaces.h"

#include "orvane_host/geometry/detail/DepthRank.h"
#include "tests/orvane_host/import/BoxObj.h"
#include "tests/orvane_host/import/ImportFixture.h"

#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <gmock/gmock.h>

#include <map>
#include <memory>

namespace OV::Test
{

namespace
{

using namespace OV::Host;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

const char* const kColors = "newmtl wall\nKd 0 0 1\nnewmtl board\nKd 1 0 0\n";

class CoplanarFaces : public ImportFixture
{
protected:
    CoplanarFaces() { WriteFile(m_folder.Path("colors.mtl"), kColors); }

    ImportResult Import(const BoxObj& boxes, const ImportOptions& options = {})
    {
        return ImportAs("boxes.obj", boxes.Text("colors.mtl"), options);
    }

    static int RankOf(const ImportedMesh& mesh)
    {
        return Detail::DepthRank::Of(Detail::DepthRank::OffsetOf(*mesh.mesh->GetMaterial()));
    }

    /// By the names of meshes and materials.
    static std::multimap<std::string, int> RanksOf(const ImportResult& result)
    {
        std::multimap<std::string, int> ranks;
        for (const ImportedMesh& mesh : result.meshes)
        {
            ranks.emplace(mesh.name + "/" + mesh.mesh->GetMaterial()->name, RankOf(mesh));
        }
        return ranks;
    }

    BoxObj boxes{Vector(0, 0, 0), Vector(1, 0, 0), Vector(0, 1, 0), Vector(0, 0, 1)};
};

/// Closed boxes of a model in the making, one mesh of several.
class BoxModel
{
public:
    BoxModel() { model.nodes.emplace_back(); }

    std::uint32_t AddMesh(const std::vector<std::array<float, 6>>& boxes, bool areApart = false)
    {
        struct Arrays
        {
            std::vector<float> positions;
            std::vector<float> texCoords;
            std::vector<std::uint32_t> indices;
        };
        const auto arrays = std::make_shared<Arrays>();
        constexpr std::uint32_t faces[6][4] = {{4, 5, 7, 6}, {1, 0, 2, 3}, {5, 1, 3, 7}, {0, 4, 6, 2}, {6, 7, 3, 2}, {0, 1, 5, 4}};
        for (const std::array<float, 6>& box : boxes)
        {
            for (const auto& face : faces)
            {
                const auto first = static_cast<std::uint32_t>(arrays->positions.size() / 3);
                for (const std::uint32_t corner : face)
                {
                    for (std::uint32_t axis = 0; axis < 3; ++axis)
                    {
                        const bool isHigh = (corner >> axis & 1) != 0;
                        // By so much that no corner is that of another face, and the faces are in their planes.
                        const float shift = areApart && axis != (2 + (&face - faces) / 2) % 3 ? 1e-3f : 0.0f;
                        arrays->positions.push_back(box[axis + (isHigh ? 3 : 0)] + (isHigh ? -shift : shift));
                    }
                    arrays->texCoords.insert(arrays->texCoords.end(), {float(first), float(corner)});
                }
                for (const std::uint32_t i : {0, 1, 2, 0, 2, 3})
                {
                    arrays->indices.push_back(first + i);
                }
            }
        }
        MeshData mesh;
        mesh.name = "boxes";
        mesh.positions = {arrays->positions.data(), arrays->positions.size()};
        mesh.texCoords = {arrays->texCoords.data(), arrays->texCoords.size()};
        mesh.indices = {arrays->indices.data(), arrays->indices.size()};
        model.keepAlive.push_back(arrays);
        model.meshes.push_back(mesh);
        return static_cast<std::uint32_t>(model.meshes.size() - 1);
    }

    NodeData& AddNode(std::vector<std::uint32_t> meshes, double x = 0.0)
    {
        NodeData node;
        node.parent = 0;
        node.local[3] = x;
        node.meshes = std::move(meshes);
        model.nodes.push_back(node);
        return model.nodes.back();
    }

    /// How far back what a node shows stands.
    std::vector<int> RanksAt(std::size_t node) const
    {
        std::vector<int> ranks;
        for (const std::uint32_t mesh : model.nodes[node].meshes)
        {
            ranks.push_back(model.meshes[mesh].standsBack);
        }
        return ranks;
    }

    ModelData model;
};

TEST_F(CoplanarFaces, StandBackWhereTheyAreThicker)
{
    boxes.Add("wall", "wall", Vector(-5, -5, -2), Vector(5, 5, 0));
    boxes.Add("board", "board", Vector(-1, -1, -0.25f), Vector(1, 1, 0));
    const ImportResult result = Import(boxes);
    EXPECT_EQ(result.report.coplanarPairs, 1u);
    EXPECT_EQ(result.report.materials, 2u);
    EXPECT_EQ(result.report.triangles, 24u);
    EXPECT_THAT(RanksOf(result), UnorderedElementsAre(std::pair("wall/wall", 1), std::pair("board/board", 0)));
    EXPECT_THAT(result.report.warnings, IsEmpty());
}

TEST_F(CoplanarFaces, AreLeftAsTheyAreOnRequest)
{
    boxes.Add("wall", "wall", Vector(-5, -5, -2), Vector(5, 5, 0));
    boxes.Add("board", "board", Vector(-1, -1, -0.25f), Vector(1, 1, 0));
    ImportOptions options;
    options.orderCoplanar = false;
    const ImportResult result = Import(boxes, options);
    EXPECT_EQ(result.report.coplanarPairs, 0u);
    EXPECT_THAT(RanksOf(result), UnorderedElementsAre(std::pair("wall/wall", 0), std::pair("board/board", 0)));
}

TEST_F(CoplanarFaces, OfSheetsThatLookOppositeWaysAreInOrderWhereBacksMayBeSeenAlone)
{
    boxes.AddSheet("wall", "wall", Vector(-5, -5, 0), Vector(5, 5, 0), true);
    boxes.AddSheet("board", "board", Vector(-1, -1, 0), Vector(1, 1, 0), false);
    ImportOptions options;
    EXPECT_THAT(RanksOf(Import(boxes, options)), UnorderedElementsAre(std::pair("wall/wall", 1), std::pair("board/board", 0)));
    options.showBacks = false;
    const ImportResult alone = Import(boxes, options);
    EXPECT_EQ(alone.report.coplanarPairs, 0u);
    EXPECT_THAT(RanksOf(alone), UnorderedElementsAre(std::pair("wall/wall", 0), std::pair("board/board", 0)));
}

TEST_F(CoplanarFaces, OfASheetThatLooksAtASolidAreInOrderWhereBacksMayBeSeenAlone)
{
    boxes.Add("wall", "wall", Vector(-5, -5, -2), Vector(5, 5, 0));
    boxes.AddSheet("board", "board", Vector(-1, -1, 0), Vector(1, 1, 0), true);
    ImportOptions options;
    EXPECT_THAT(RanksOf(Import(boxes, options)), UnorderedElementsAre(std::pair("wall/wall", 1), std::pair("board/board", 0)));
    options.showBacks = false;
    EXPECT_EQ(Import(boxes, options).report.coplanarPairs, 0u);
}

TEST_F(CoplanarFaces, OfTwoSidedMaterialsAreInOrderWhateverElseShowsBacks)
{
    for (const bool isTwoSided : {false, true})
    {
        BoxModel solids;
        solids.model.materials.resize(2);
        solids.model.materials[0].isTwoSided = isTwoSided;
        const std::uint32_t wall = solids.AddMesh({{-5, -5, -2, 5, 5, 0}});
        const std::uint32_t board = solids.AddMesh({{-1, -1, 0, 1, 1, 0.25f}});
        solids.model.meshes[wall].material = 0;
        solids.model.meshes[board].material = 1;
        solids.AddNode({wall});
        solids.AddNode({board});
        OrderCoplanarFaces(solids.model, false);
        EXPECT_EQ(solids.model.coplanarPairs, isTwoSided ? 1u : 0u);
        EXPECT_THAT(solids.RanksAt(1), ElementsAre(isTwoSided ? 1 : 0));
    }
}

TEST_F(CoplanarFaces, AreFoundOnSlopes)
{
    boxes = BoxObj(Vector(12, 3, -40), Vector(0.6f, 0.8f, 0.0f), Vector(-0.48f, 0.36f, 0.8f), Vector(0.64f, -0.48f, 0.6f));
    boxes.Add("board", "board", Vector(-1, -1, -0.25f), Vector(1, 1, 0));
    boxes.Add("wall", "wall", Vector(-5, -5, -2), Vector(5, 5, 0));
    EXPECT_THAT(RanksOf(Import(boxes)), UnorderedElementsAre(std::pair("wall/wall", 1), std::pair("board/board", 0)));
}

TEST_F(CoplanarFaces, OfTheSameLookInOneMeshStayTogether)
{
    boxes.Add("wall", "wall", Vector(-5, -5, -2), Vector(5, 5, 0));
    BoxModel solids;
    solids.AddNode({solids.AddMesh({{-5, -5, -2, 5, 5, 0}, {-1, -1, -0.25f, 1, 1, 0}})});
    OrderCoplanarFaces(solids.model, true);
    EXPECT_THAT(solids.model.nodes[1].meshes, ElementsAre(0u));
}

TEST_F(CoplanarFaces, DivideATexturedMeshBetweenSolids)
{
    BoxModel solids;
    solids.model.materials.emplace_back();
    solids.model.materials[0].texture.path = "bricks.png";
    solids.AddNode({solids.AddMesh({{-5, -5, -2, 5, 5, 0}, {-1, -1, -0.25f, 1, 1, 0}})});
    OrderCoplanarFaces(solids.model, true);
    EXPECT_THAT(solids.RanksAt(1), ElementsAre(0, 1));
    std::vector<float> corners;
    for (const std::uint32_t index : solids.model.nodes[1].meshes)
    {
        const MeshData& piece = solids.model.meshes[index];
        EXPECT_EQ(piece.pieceOf, 0);
        EXPECT_EQ(piece.name, "boxes");
        EXPECT_EQ(piece.indices.count, 36u) << "nothing is cut";
        EXPECT_EQ(piece.positions.count, 72u);
        // Each vertex has what it had.
        for (std::uint64_t vertex = 0; vertex < 24; ++vertex)
        {
            const float first = index == solids.model.nodes[1].meshes.front() ? 24.0f : 0.0f;
            EXPECT_EQ(piece.texCoords[2 * vertex], first + float(vertex / 4 * 4));
        }
    }
}

TEST_F(CoplanarFaces, KnowASolidWhoseFacesAreApart)
{
    // By itself each face would be a sheet, and lie before the board.
    BoxModel solids;
    solids.AddNode({solids.AddMesh({{-5, -5, -2, 5, 5, 0}}, true)});
    solids.AddNode({solids.AddMesh({{-1, -1, -0.25f, 1, 1, 0}})});
    OrderCoplanarFaces(solids.model, true);
    EXPECT_THAT(solids.RanksAt(1), ElementsAre(1));
    EXPECT_THAT(solids.RanksAt(2), ElementsAre(0));
}

TEST_F(CoplanarFaces, StandBackOnlyWhereTheyLieBehindOthers)
{
    // The wall stands in two places, with a board in one of them.
    BoxModel solids;
    const std::uint32_t wall = solids.AddMesh({{-5, -5, -2, 5, 5, 0}});
    solids.AddNode({wall});
    solids.AddNode({wall}, 20.0);
    solids.AddNode({solids.AddMesh({{-1, -1, -0.25f, 1, 1, 0}})}, 20.0);
    OrderCoplanarFaces(solids.model, true);
    EXPECT_EQ(solids.model.coplanarPairs, 1u);
    EXPECT_THAT(solids.RanksAt(1), ElementsAre(0));
    EXPECT_THAT(solids.RanksAt(2), ElementsAre(1));
    EXPECT_THAT(solids.RanksAt(3), ElementsAre(0));
}

TEST_F(CoplanarFaces, LookOutOfAMirrorToo)
{
    BoxModel solids;
    const std::uint32_t wall = solids.AddMesh({{-5, -5, -2, 5, 5, 0}});
    NodeData& mirrored = solids.AddNode({wall});
    mirrored.local[10] = -1.0;
    // The wall looks along -Z there, where its front is, and the board looks back at it.
    solids.AddNode({solids.AddMesh({{-1, -1, 0, 1, 1, 0.25f}})});
    solids.AddNode({solids.AddMesh({{-1, -1, -0.25f, 1, 1, 0}})});
    OrderCoplanarFaces(solids.model, true);
    EXPECT_EQ(solids.model.coplanarPairs, 1u);
    EXPECT_THAT(solids.RanksAt(1), ElementsAre(1));
    EXPECT_THAT(solids.RanksAt(2), ElementsAre(0));
    EXPECT_THAT(solids.RanksAt(3), ElementsAre(0));
}

TEST_F(CoplanarFaces, AreLookedForInWhatIsOfUseAlone)
{
    const std::vector<float> positions = {0, 0, 0, 1, 0, 0, 0, 1, 0, std::numeric_limits<float>::quiet_NaN(), 0, 0};
    const std::vector<std::uint32_t> indices = {0, 1, 2, 0, 1, 3, 0, 1, 400, 7};
    BoxModel solids;
    solids.model.materials.emplace_back();
    solids.model.materials[0].texture.path = "bricks.png";
    for (int i = 0; i < 2; ++i)
    {
        MeshData mesh;
        mesh.positions = {positions.data(), positions.size()};
        mesh.indices = {indices.data(), indices.size()};
        solids.model.meshes.push_back(mesh);
    }
    solids.AddNode({0, 1, 9});
    OrderCoplanarFaces(solids.model, true);
    EXPECT_EQ(solids.model.coplanarPairs, 1u);
    EXPECT_THAT(solids.model.nodes[1].meshes, ElementsAre(2u, 1u, 9u));
    EXPECT_EQ(solids.model.meshes[2].indices.count, 3u);
    EXPECT_EQ(solids.model.droppedTriangles, 2u);
}

} // namespace

} // namespace OV::Test
