#include "orvane/scene/Mesh.h"

#include "orvane/scene/Material.h"
#include "tests/scene/SceneDoubles.h"
#include "tests/support/VirtualSlot.h"

#include <set>
#include <thread>

namespace OV
{
namespace
{

using namespace Test;
using ::testing::Test;

std::shared_ptr<RawMesh> Triangle(std::vector<unsigned short> indices = {0, 1, 2})
{
    auto geometry = Points({Vector(0, 0, 0), Vector(3, 0, 0), Vector(0, 4, 12)});
    geometry->SetIndices(std::move(indices));
    return geometry;
}

TEST(Mesh, StartsAsStated)
{
    const auto geometry = Triangle();
    Mesh mesh(geometry);
    EXPECT_EQ(mesh.GetRawMesh(), geometry);
    EXPECT_TRUE(mesh.GetNodes().empty());
    EXPECT_EQ(mesh.GetMaterial(), nullptr);
    EXPECT_EQ(mesh.GetScene(), nullptr);
    EXPECT_FALSE(mesh.UsingDrawID());
    EXPECT_EQ(mesh.GetRenderData(), nullptr);
    EXPECT_EQ(mesh.GetFlags(), 0u);
}

TEST(Mesh, WithoutGeometryGetsAnEmptyOne)
{
    Mesh mesh(nullptr);
    ASSERT_NE(mesh.GetRawMesh(), nullptr);
    EXPECT_EQ(mesh.GetNumVertices(), 0u);
    EXPECT_EQ(mesh.GetNumIndices(), 0u);
}

TEST(Mesh, IsTakenInByTheSceneItIsMadeIn)
{
    Scene scene;
    scene.UpdateGraph(1, 1);
    Mesh* const mesh = new Mesh(Triangle(), &scene);
    EXPECT_EQ(mesh->GetScene(), &scene);
    EXPECT_EQ(scene.GetMeshes(), std::set<Mesh*>{mesh});
    EXPECT_TRUE(scene.IsDirty());
    const Mesh outside(Triangle(), nullptr);
    EXPECT_EQ(outside.GetScene(), nullptr);
}

TEST(Mesh, OverAnotherMeshSharesTheGeometryAndIsOtherwiseNew)
{
    Scene scene;
    Material material("a");
    MeshNode node(nullptr);
    Mesh mesh(Triangle());
    mesh.AddNode(&node);
    mesh.SetFlags(MeshFlagNoCull);
    mesh.SetDrawID(9);
    material.AddMesh(&mesh);

    Mesh* const use = new Mesh(mesh, &scene);
    EXPECT_EQ(use->GetRawMesh(), mesh.GetRawMesh());
    EXPECT_EQ(use->GetScene(), &scene);
    EXPECT_TRUE(use->GetNodes().empty());
    EXPECT_EQ(use->GetMaterial(), nullptr);
    EXPECT_EQ(use->GetFlags(), 0u);
    EXPECT_FALSE(use->UsingDrawID());
    EXPECT_EQ(use->GetSortID(), mesh.GetSortID() + 1);
    const Mesh outside(mesh, nullptr);
    EXPECT_EQ(outside.GetScene(), nullptr);
}

TEST(Mesh, SortIDsRiseByOneInOrderOfCreation)
{
    const Mesh first(nullptr);
    const Mesh second(nullptr);
    const Mesh third(first, nullptr);
    EXPECT_EQ(second.GetSortID(), first.GetSortID() + 1);
    EXPECT_EQ(third.GetSortID(), first.GetSortID() + 2);
}

TEST(Mesh, SortIDsAreUniqueOverThreads)
{
    std::vector<std::uint64_t> ids[2];
    const auto make = [](std::vector<std::uint64_t>& out)
    {
        for (int i = 0; i < 2000; ++i)
        {
            out.push_back(Mesh(nullptr).GetSortID());
        }
    };
    std::thread other(make, std::ref(ids[1]));
    make(ids[0]);
    other.join();
    std::set<std::uint64_t> all(ids[0].begin(), ids[0].end());
    all.insert(ids[1].begin(), ids[1].end());
    EXPECT_EQ(all.size(), 4000u);
    EXPECT_EQ(*all.rbegin() - *all.begin(), 3999u);
}

TEST(Mesh, PointersAreOrderedBySortIDWithNullLast)
{
    const Mesh first(nullptr);
    const Mesh second(nullptr);
    const CompareMeshPointers isBefore;
    EXPECT_TRUE(isBefore(&first, &second));
    EXPECT_FALSE(isBefore(&second, &first));
    EXPECT_FALSE(isBefore(&first, &first));
    EXPECT_TRUE(isBefore(&first, nullptr));
    EXPECT_FALSE(isBefore(nullptr, &first));
    EXPECT_FALSE(isBefore(nullptr, nullptr));
}

TEST(Mesh, FlagsAreOrdInAndRemoved)
{
    EXPECT_EQ(MeshFlagNoCull, 0x01u);
    EXPECT_EQ(MeshFlagShowFaceSides, 0x02u);
    EXPECT_EQ(MeshFlagEffectFlag, 0x04u);
    EXPECT_EQ(MeshFlagMonochrome, 0x08u);
    Mesh mesh(nullptr);
    mesh.SetFlags(MeshFlagNoCull);
    mesh.SetFlags(MeshFlagEffectFlag | MeshFlagMonochrome);
    EXPECT_EQ(mesh.GetFlags(), 0x0Du);
    mesh.ClearFlags(MeshFlagEffectFlag | MeshFlagShowFaceSides);
    EXPECT_EQ(mesh.GetFlags(), 0x09u);
    mesh.SetFlags(static_cast<MeshFlags>(0x80000000u));
    EXPECT_EQ(mesh.GetFlags(), 0x80000009u) << "other bits are the host's";
}

TEST(Mesh, ReadsItsGeometry)
{
    auto geometry = Triangle();
    geometry->SetNormalBuffer(std::vector<Vector>(3));
    geometry->SetTextureBuffer(std::vector<TextureCoordinate>(3));
    geometry->SetColorBuffer(std::vector<Color>(3));
    Mesh mesh(geometry);
    EXPECT_EQ(&mesh.GetPositionBuffer(), &geometry->positions);
    EXPECT_EQ(&mesh.GetNormalBuffer(), &geometry->normals);
    EXPECT_EQ(&mesh.GetTextureBuffer(), &geometry->textureCoordinates);
    EXPECT_EQ(&mesh.GetColorBuffer(), &geometry->colors);
    EXPECT_EQ(&mesh.GetIndices(), &geometry->indices);
    EXPECT_EQ(&mesh.GetSphere(), &geometry->sphere);
    EXPECT_EQ(&static_cast<const Mesh&>(mesh).GetSphere(), &geometry->sphere);
    EXPECT_EQ(mesh.GetNumVertices(), 3u);
    EXPECT_EQ(mesh.GetNumIndices(), 3u);
    geometry->indices.push_back(0);
    EXPECT_EQ(mesh.GetNumIndices(), 4u);

    geometry->SetBBox(Vector(-1, 0, 2), Vector(2, 4, 14));
    Vector boxMin, boxMax;
    mesh.GetBBox(boxMin, boxMax);
    EXPECT_TRUE(IsNear(boxMin, Vector(-1, 0, 2), 0.0f));
    EXPECT_TRUE(IsNear(boxMax, Vector(2, 4, 14), 0.0f));
    EXPECT_EQ(mesh.GetSizeX(), 3.0f);
    EXPECT_EQ(mesh.GetSizeY(), 4.0f);
    EXPECT_EQ(mesh.GetSizeZ(), 12.0f);
    EXPECT_EQ(mesh.GetRefSize(), 13.0f) << "the diagonal";
}

TEST(Mesh, SetSceneMovesItToThatScene)
{
    Scene first;
    Scene second;
    Mesh* const mesh = new Mesh(Triangle(), &first);
    mesh->SetScene(&second);
    EXPECT_TRUE(first.GetMeshes().empty());
    EXPECT_EQ(second.GetMeshes(), std::set<Mesh*>{mesh});
    EXPECT_EQ(mesh->GetScene(), &second);
    mesh->SetScene(nullptr);
    EXPECT_EQ(mesh->GetScene(), &second);
}

TEST(Mesh, AddNodeLinksBothOnce)
{
    Mesh mesh(nullptr);
    Mesh other(nullptr);
    MeshNode node(nullptr);
    MeshNode second(nullptr);
    EXPECT_TRUE(mesh.AddNode(&node));
    EXPECT_FALSE(mesh.AddNode(&node));
    EXPECT_TRUE(mesh.AddNode(&second));
    EXPECT_TRUE(other.AddNode(&node));
    EXPECT_FALSE(mesh.AddNode(nullptr));
    EXPECT_EQ(mesh.GetNodes(), (std::vector<MeshNode*>{&node, &second}));
    EXPECT_EQ(node.GetMeshes(), (std::vector<Mesh*>{&mesh, &other}));
    EXPECT_EQ(second.GetMeshes(), (std::vector<Mesh*>{&mesh}));
}

TEST(Mesh, RemoveNodeUnlinksBothAndKeepsTheOrderOfTheRest)
{
    Mesh mesh(nullptr);
    MeshNode nodes[3] = {MeshNode(nullptr), MeshNode(nullptr), MeshNode(nullptr)};
    for (MeshNode& node : nodes)
    {
        mesh.AddNode(&node);
    }
    EXPECT_TRUE(mesh.RemoveNode(&nodes[1]));
    EXPECT_FALSE(mesh.RemoveNode(&nodes[1]));
    EXPECT_FALSE(mesh.RemoveNode(nullptr));
    EXPECT_EQ(mesh.GetNodes(), (std::vector<MeshNode*>{&nodes[0], &nodes[2]}));
    EXPECT_TRUE(nodes[1].GetMeshes().empty());
}

TEST(Mesh, IsReadyToDrawWithoutADrawIDOrAtTheUpdateOfItsScene)
{
    Scene scene;
    Mesh* const mesh = new Mesh(nullptr, &scene);
    EXPECT_TRUE(mesh->ReadyToDraw());
    EXPECT_FALSE(mesh->UsingDrawID());
    mesh->SetDrawID(scene.GetUpdateID() + 1);
    EXPECT_TRUE(mesh->UsingDrawID());
    EXPECT_FALSE(mesh->ReadyToDraw());
    scene.UpdateGraph(1, 1);
    EXPECT_TRUE(mesh->ReadyToDraw());
    mesh->InvalidateDrawID();
    EXPECT_TRUE(mesh->UsingDrawID());
    EXPECT_FALSE(mesh->ReadyToDraw());
    scene.UpdateGraph(1, 1);
    EXPECT_FALSE(mesh->ReadyToDraw());
    mesh->SetDrawID(scene.GetUpdateID());
    EXPECT_TRUE(mesh->ReadyToDraw());
    mesh->SetDrawID(0);
    EXPECT_TRUE(mesh->ReadyToDraw());
}

TEST(Mesh, WithADrawIDButWithoutASceneIsNotReadyToDraw)
{
    Mesh mesh(nullptr);
    EXPECT_TRUE(mesh.ReadyToDraw());
    mesh.SetDrawID(1);
    EXPECT_FALSE(mesh.ReadyToDraw());
}

TEST(Mesh, InvalidDrawIDIsOne)
{
    Scene scene;
    Mesh* const mesh = new Mesh(nullptr, &scene);
    mesh->InvalidateDrawID();
    ASSERT_EQ(scene.GetUpdateID(), 1u);
    EXPECT_TRUE(mesh->ReadyToDraw()) << "before the first update 1 is the scene's own number";
}

TEST(Mesh, InvertOrderReversesWholeTriangles)
{
    struct Case
    {
        const char* label;
        std::vector<unsigned short> before, after;
    };
    const Case cases[] = {
        {"seven", {0, 1, 2, 3, 4, 5, 6}, {2, 1, 0, 5, 4, 3, 6}},
        {"eight", {0, 1, 2, 3, 4, 5, 6, 7}, {2, 1, 0, 5, 4, 3, 6, 7}},
        {"three", {0, 1, 2}, {2, 1, 0}},
        {"two", {0, 1}, {0, 1}},
        {"none", {}, {}},
    };
    for (const Case& given : cases)
    {
        SCOPED_TRACE(given.label);
        Mesh mesh(Triangle(given.before));
        Mesh sharer(mesh, nullptr);
        EXPECT_EQ(Mesh::InvertOrder(&mesh, false), &mesh);
        EXPECT_EQ(mesh.GetIndices(), given.after);
        EXPECT_EQ(sharer.GetIndices(), given.after) << "all sharers see the change";

        Mesh original(Triangle(given.before));
        const std::unique_ptr<Mesh> copy(Mesh::InvertOrder(&original, true));
        EXPECT_EQ(copy->GetIndices(), given.after);
        EXPECT_EQ(original.GetIndices(), given.before);
    }
    EXPECT_EQ(Mesh::InvertOrder(nullptr, false), nullptr);
    EXPECT_EQ(Mesh::InvertOrder(nullptr, true), nullptr);
}

TEST(Mesh, InvertOrderInPlaceDropsRenderData)
{
    int deaths = 0;
    Mesh mesh(Triangle());
    mesh.SetRenderData(Counted(deaths), true);
    Mesh::InvertOrder(&mesh, false);
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(mesh.GetRenderData(), nullptr);

    Mesh sharer(mesh, nullptr);
    mesh.SetRenderData(Counted(deaths), false);
    sharer.SetRenderData(Counted(deaths), true);
    Mesh::InvertOrder(&mesh, false);
    EXPECT_EQ(deaths, 3) << "its own and those of the geometry";
    EXPECT_EQ(mesh.GetRenderData(), nullptr);
    EXPECT_EQ(sharer.GetRenderData(), nullptr);
}

TEST(Mesh, InvertOrderOfACopyMakesAnotherMeshInTheSameScene)
{
    Scene scene;
    int deaths = 0;
    auto geometry = Triangle();
    geometry->SetNormalBuffer(std::vector<Vector>(3, Vector(0, 0, 1)));
    geometry->SetTextureBuffer(std::vector<TextureCoordinate>(3));
    geometry->SetColorBuffer(std::vector<Color>(3));
    Material material("a");
    MeshNode node(&scene);
    Mesh* const mesh = new Mesh(geometry, &scene);
    mesh->AddNode(&node);
    material.AddMesh(mesh);
    mesh->SetFlags(MeshFlagNoCull);
    mesh->SetRenderData(Counted(deaths), true);

    Mesh* const copy = Mesh::InvertOrder(mesh, true);
    ASSERT_NE(copy, mesh);
    EXPECT_EQ(scene.GetMeshes().count(copy), 1u);
    EXPECT_NE(copy->GetRawMesh(), geometry);
    EXPECT_EQ(copy->GetPositionBuffer(), geometry->positions);
    EXPECT_EQ(copy->GetNormalBuffer(), geometry->normals);
    EXPECT_EQ(copy->GetTextureBuffer().size(), 3u);
    EXPECT_EQ(copy->GetColorBuffer().size(), 3u);
    EXPECT_EQ(copy->GetRawMesh()->bboxMax, geometry->bboxMax);
    EXPECT_EQ(copy->GetSphere().radius, geometry->sphere.radius);
    EXPECT_TRUE(copy->GetNodes().empty());
    EXPECT_EQ(copy->GetMaterial(), nullptr);
    EXPECT_EQ(copy->GetFlags(), 0u);
    EXPECT_EQ(copy->GetRenderData(), nullptr);
    EXPECT_EQ(deaths, 0);
}

TEST(Mesh, RenderDataLieOnTheGeometryOrOnTheMeshAlone)
{
    Log log;
    Mesh mesh(Triangle());
    Mesh sharer(mesh, nullptr);
    Object* const shared = Logged(log, "shared");
    mesh.SetRenderData(shared, true);
    EXPECT_EQ(mesh.GetRenderData(), shared);
    EXPECT_EQ(sharer.GetRenderData(), shared);
    EXPECT_EQ(mesh.GetRawMesh()->GetRenderData(), shared);

    Object* const own = Logged(log, "own");
    sharer.SetRenderData(own, false);
    EXPECT_EQ(log, (Log{"shared"})) << "what counted before is deleted";
    EXPECT_EQ(sharer.GetRenderData(), own);
    EXPECT_EQ(mesh.GetRenderData(), nullptr);

    Object* const again = Logged(log, "again");
    mesh.SetRenderData(again, true);
    EXPECT_EQ(sharer.GetRenderData(), own);

    Object* const last = Logged(log, "last");
    sharer.SetRenderData(last, true);
    EXPECT_EQ(log, (Log{"shared", "own", "again"})) << "and what is in the slot that counts now";
    EXPECT_EQ(mesh.GetRenderData(), last);
    EXPECT_EQ(sharer.GetRenderData(), last);
}

TEST(Mesh, RenderDataReplaceEachOtherInOneSlot)
{
    for (const bool onRawMesh : {true, false})
    {
        Log log;
        Mesh mesh(Triangle());
        mesh.SetRenderData(Logged(log, "first"), onRawMesh);
        Object* const second = Logged(log, "second");
        mesh.SetRenderData(second, onRawMesh);
        EXPECT_EQ(log, (Log{"first"}));
        mesh.SetRenderData(second, onRawMesh);
        EXPECT_EQ(log, (Log{"first"})) << "given again it stays";
        EXPECT_EQ(mesh.GetRenderData(), second);
        mesh.SetRenderData(second, !onRawMesh);
        EXPECT_EQ(log, (Log{"first"})) << "or moves";
        EXPECT_EQ(mesh.GetRenderData(), second);
        mesh.SetRenderData(nullptr, onRawMesh);
        EXPECT_EQ(log, (Log{"first", "second"}));
        EXPECT_EQ(mesh.GetRenderData(), nullptr);
    }
}

TEST(Mesh, RenderDataFindTheirSlotEmptyWhenTheyDie)
{
    for (const bool onRawMesh : {true, false})
    {
        bool wasEmpty = false;
        {
            Mesh mesh(Triangle());
            mesh.SetRenderData(new WatchedObject([&] { wasEmpty = mesh.GetRenderData() == nullptr; }), onRawMesh);
        }
        EXPECT_TRUE(wasEmpty) << onRawMesh;
    }
}

TEST(Mesh, SuspendTakesTheRenderDataOfWhicheverSlot)
{
    for (const bool onRawMesh : {true, false})
    {
        int deaths = 0;
        Mesh mesh(Triangle());
        mesh.SetRenderData(Counted(deaths), onRawMesh);
        mesh.Suspend();
        EXPECT_EQ(deaths, 1);
        EXPECT_EQ(mesh.GetRenderData(), nullptr);
        mesh.Resume();
        EXPECT_EQ(mesh.GetRenderData(), nullptr);
        mesh.GetRawMesh()->SetRenderData(Counted(deaths));
        EXPECT_EQ(mesh.GetRenderData(), mesh.GetRawMesh()->GetRenderData()) << "the flag is back";
    }
}

TEST(Mesh, SuspendOfAMeshWithItsOwnRenderDataTakesThoseOfTheGeometryToo)
{
    int deaths = 0;
    Mesh mesh(Triangle());
    Mesh sharer(mesh, nullptr);
    mesh.SetRenderData(Counted(deaths), false);
    sharer.SetRenderData(Counted(deaths), true);
    mesh.Suspend();
    EXPECT_EQ(deaths, 2);
    EXPECT_EQ(sharer.GetRenderData(), nullptr);
}

TEST(Mesh, DyingDeletesSharedRenderDataFirstAndLeavesEverything)
{
    Scene scene;
    Material material("a");
    MeshNode nodes[2] = {MeshNode(&scene), MeshNode(&scene)};
    const auto geometry = Triangle();
    Mesh sharer(geometry);
    Mesh* const mesh = new Mesh(geometry, &scene);
    mesh->AddNode(&nodes[0]);
    mesh->AddNode(&nodes[1]);
    material.AddMesh(mesh);
    bool wasAllThere = false;
    mesh->SetRenderData(new WatchedObject(
                            [&] {
                                wasAllThere = mesh->GetScene() == &scene && scene.GetMeshes().count(mesh) == 1 &&
                                              mesh->GetMaterial() == &material && mesh->GetNodes().size() == 2;
                            }),
                        true);
    EXPECT_NE(sharer.GetRenderData(), nullptr);
    scene.UpdateGraph(1, 1);
    delete mesh;
    EXPECT_TRUE(wasAllThere);
    EXPECT_EQ(sharer.GetRenderData(), nullptr);
    EXPECT_TRUE(scene.GetMeshes().empty());
    EXPECT_TRUE(scene.IsDirty());
    EXPECT_TRUE(material.GetMeshes().empty());
    EXPECT_TRUE(nodes[0].GetMeshes().empty());
    EXPECT_TRUE(nodes[1].GetMeshes().empty());
    EXPECT_EQ(geometry.use_count(), 2) << "here and in the sharer";
}

TEST(Mesh, CopyTakesTheValuesAndTheSortIDButNoLinks)
{
    Scene scene;
    int deaths = 0;
    Material material("a");
    MeshNode node(&scene);
    Mesh* const mesh = new Mesh(Triangle(), &scene);
    mesh->AddNode(&node);
    material.AddMesh(mesh);
    mesh->SetFlags(MeshFlagMonochrome);
    mesh->SetDrawID(5);
    mesh->SetRenderData(Counted(deaths), false);

    const Mesh copy(*mesh);
    EXPECT_EQ(copy.GetSortID(), mesh->GetSortID());
    EXPECT_EQ(copy.GetRawMesh(), mesh->GetRawMesh());
    EXPECT_EQ(copy.GetFlags(), 0x08u);
    EXPECT_TRUE(copy.UsingDrawID());
    EXPECT_EQ(copy.GetRenderData(), nullptr);
    EXPECT_EQ(copy.GetScene(), nullptr);
    EXPECT_EQ(copy.GetMaterial(), nullptr);
    EXPECT_TRUE(copy.GetNodes().empty());
    EXPECT_EQ(deaths, 0);
    EXPECT_EQ(node.GetMeshes(), (std::vector<Mesh*>{mesh}));
}

TEST(Mesh, AssignmentKeepsItsOwnPlaceAndTakesTheRest)
{
    Scene scene;
    int deaths = 0;
    Material material("a");
    MeshNode node(&scene);
    Mesh source(Triangle());
    source.SetFlags(MeshFlagMonochrome);
    Mesh* const mesh = new Mesh(nullptr, &scene);
    mesh->AddNode(&node);
    material.AddMesh(mesh);
    mesh->SetRenderData(Counted(deaths), true);

    *mesh = source;
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(mesh->GetSortID(), source.GetSortID());
    EXPECT_EQ(mesh->GetRawMesh(), source.GetRawMesh());
    EXPECT_EQ(mesh->GetFlags(), 0x08u);
    EXPECT_EQ(mesh->GetScene(), &scene);
    EXPECT_EQ(mesh->GetNodes(), (std::vector<MeshNode*>{&node}));
    EXPECT_EQ(mesh->GetMaterial(), &material);
    EXPECT_EQ(material.GetMeshes().count(mesh), 1u) << "still found, under its new sort ID";

    const Mesh& itself = *mesh;
    mesh->SetRenderData(Counted(deaths), true);
    *mesh = itself;
    EXPECT_EQ(deaths, 1);
    delete mesh;
    EXPECT_TRUE(material.GetMeshes().empty());
}

TEST(Mesh, AssignmentOfASortIDThatItsMaterialHoldsAlreadyLeavesTheMaterial)
{
    Material material("a");
    Mesh first(nullptr);
    Mesh second(nullptr);
    material.AddMesh(&first);
    material.AddMesh(&second);
    second = first;
    EXPECT_EQ(second.GetMaterial(), nullptr);
    EXPECT_EQ(first.GetMaterial(), &material);
    EXPECT_EQ(material.GetMeshes().size(), 1u);
}

TEST(Mesh, VirtualsStandInTheirOrder)
{
    EXPECT_EQ(VirtualSlot(&Mesh::Type), 1);
    EXPECT_EQ(VirtualSlot(&Mesh::HasType), 2);
    EXPECT_EQ(VirtualSlot(&Mesh::ReadyToDraw), -1);
    EXPECT_EQ(VirtualSlot(&Mesh::Suspend), -1);
}

} // namespace
} // namespace OV
