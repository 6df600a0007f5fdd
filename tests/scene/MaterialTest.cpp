#include "orvane/scene/Material.h"

#include "orvane/scene/NodeMaterial.h"
#include "tests/scene/SceneDoubles.h"
#include "tests/support/VirtualSlot.h"

#include <cstdlib>
#include <set>
#include <type_traits>

namespace OV
{
namespace
{

using namespace Test;

bool IsExactly(const Color& color, float r, float g, float b, float a)
{
    return color.IsExactlyEqual(Color(r, g, b, a));
}

void ExpectStartValues(const Material& material)
{
    EXPECT_TRUE(IsExactly(material.diffuse, 1, 1, 1, 1));
    EXPECT_TRUE(IsExactly(material.ambient, 1, 1, 1, 1));
    EXPECT_TRUE(IsExactly(material.emissive, 0, 0, 0, 1));
    EXPECT_TRUE(IsExactly(material.specular, 1, 1, 1, 1));
    EXPECT_EQ(material.shininess, -1.0f);
    EXPECT_TRUE(material.texturePath.path.empty());
    EXPECT_TRUE(material.textureName.empty());
    EXPECT_EQ(material.pixels, nullptr);
    EXPECT_EQ(material.pixelWidth, 0);
    EXPECT_EQ(material.pixelHeight, 0);
    EXPECT_EQ(material.flags, 0u);
    EXPECT_EQ(material.pointSize, 1.0f);
    EXPECT_EQ(material.polygonOffsetFactor, 0.0f);
    EXPECT_EQ(material.polygonOffsetUnits, 0.0f);
    EXPECT_FALSE(material.hasAlpha);
    EXPECT_FALSE(material.clampTexture);
    EXPECT_EQ(material.uScale, 1.0f);
    EXPECT_EQ(material.vScale, 1.0f);
    EXPECT_TRUE(material.ignoreLightColor);
    EXPECT_FALSE(material.stippling);
    EXPECT_EQ(material.stippleOffset, 10.0f);
    EXPECT_EQ(material.stippleSize, 1.0f);
    EXPECT_EQ(material.hatchUScale, 1.0f);
    EXPECT_EQ(material.hatchVScale, 1.0f);
    EXPECT_TRUE(material.normalMapName.empty());
    EXPECT_TRUE(material.opacityMapName.empty());
    for (const float factor : material.reflectionFactors)
    {
        EXPECT_EQ(factor, 0.0f);
    }
    EXPECT_FALSE(material.noDepthWrite);
    EXPECT_TRUE(material.GetMeshes().empty());
    EXPECT_EQ(material.GetRenderData(), nullptr);
    EXPECT_EQ(material.GetScene(), nullptr);
    EXPECT_FALSE(material.UsingDrawID());
}

TEST(Material, StartsAsStated)
{
    Material material("stone");
    ExpectStartValues(material);
    EXPECT_TRUE(IsExactly(material.stippleColor, 1, 1, 1, 1));
    EXPECT_EQ(material.GetName(), "stone");
    EXPECT_EQ(material.GetShininess(), -1.0f);
    EXPECT_EQ(material.GetOpacity(), 1.0f);
    EXPECT_FALSE(material.IsTransparent());
}

TEST(Material, WithoutANameIsStippledInTransparentBlack)
{
    const NodeMaterial material;
    ExpectStartValues(material);
    EXPECT_TRUE(IsExactly(material.stippleColor, 0, 0, 0, 0));
    EXPECT_EQ(material.GetName(), "");
}

TEST(Material, SettersStoreInThePublicFields)
{
    Material material("a");
    material.SetDiffuse(Color(0.1f, 0.2f, 0.3f, 0.4f));
    material.SetAmbient(Color(0.2f, 0.2f, 0.3f, 0.4f));
    material.SetEmissive(Color(0.3f, 0.2f, 0.3f, 0.4f));
    material.SetSpecular(Color(0.4f, 0.2f, 0.3f, 0.4f));
    material.SetShininess(12.0f);
    material.SetName("b");
    EXPECT_EQ(&material.GetDiffuse(), &material.diffuse);
    EXPECT_EQ(&material.GetAmbient(), &material.ambient);
    EXPECT_EQ(&material.GetEmissive(), &material.emissive);
    EXPECT_EQ(&material.GetSpecular(), &material.specular);
    EXPECT_TRUE(IsExactly(material.diffuse, 0.1f, 0.2f, 0.3f, 0.4f));
    EXPECT_TRUE(IsExactly(material.ambient, 0.2f, 0.2f, 0.3f, 0.4f));
    EXPECT_TRUE(IsExactly(material.emissive, 0.3f, 0.2f, 0.3f, 0.4f));
    EXPECT_TRUE(IsExactly(material.specular, 0.4f, 0.2f, 0.3f, 0.4f));
    EXPECT_EQ(material.GetShininess(), 12.0f);
    EXPECT_EQ(material.GetName(), "b");
}

TEST(Material, OpacityIsTheAlphaOfDiffuse)
{
    Material material("a");
    material.SetDiffuse(Color(1, 1, 1, 0.5f));
    EXPECT_EQ(material.GetOpacity(), 0.5f);
    EXPECT_TRUE(material.IsTransparent());
    material.SetOpacity(0.25f);
    EXPECT_TRUE(IsExactly(material.diffuse, 1, 1, 1, 0.25f));
}

TEST(Material, IsTransparentBelowFullOpacityOnly)
{
    Material material("a");
    material.SetOpacity(0.999f);
    EXPECT_TRUE(material.IsTransparent());
    material.SetOpacity(std::nextafter(1.0f, 0.0f));
    EXPECT_TRUE(material.IsTransparent());
    material.SetOpacity(1.0f);
    EXPECT_FALSE(material.IsTransparent());
    material.SetOpacity(1.5f);
    EXPECT_FALSE(material.IsTransparent());
}

TEST(Material, ChangedOpacityMovesItOnlyThroughProcessChangedMaterial)
{
    Scene scene;
    Material* const material = new Material("a");
    scene.AddMaterial(material);
    material->SetOpacity(0.999f);
    EXPECT_EQ(scene.GetOptimizedMaterials(), (std::vector<Material*>{material}));
    EXPECT_TRUE(scene.GetAlphaMaterials().empty());
    EXPECT_TRUE(scene.ProcessChangedMaterial(material));
    EXPECT_EQ(scene.GetAlphaMaterials(), (std::vector<Material*>{material}));
    EXPECT_TRUE(scene.GetOptimizedMaterials().empty());
}

TEST(Material, FlagsAreOrdInAndRemoved)
{
    EXPECT_EQ(MaterialFlagNoCull, 0x01u);
    EXPECT_EQ(MaterialFlagUnlit, 0x02u);
    EXPECT_EQ(MaterialFlagPolygonOffset, 0x08u);
    EXPECT_EQ(MaterialFlagPoints, 0x10u);
    EXPECT_EQ(MaterialFlagAlwaysPass, 0x20u);
    Material material("a");
    material.SetFlags(MaterialFlagNoCull | MaterialFlagPoints);
    material.SetFlags(MaterialFlagAlwaysPass);
    EXPECT_EQ(material.GetFlags(), 0x31u);
    material.ClearFlags(MaterialFlagPoints | MaterialFlagUnlit);
    EXPECT_EQ(material.GetFlags(), 0x21u);
}

TEST(Material, CopyTakesTheStatedFieldsOnly)
{
    Scene scene;
    Material* const source = new Material("stone");
    scene.AddMaterial(source);
    int deaths = 0;
    Mesh mesh(nullptr);
    source->AddMesh(&mesh);
    source->SetRenderData(Counted(deaths));
    source->SetDrawID(3);
    source->diffuse = Color(0.1f, 0.2f, 0.3f, 0.4f);
    source->ambient = Color(0.2f, 0.2f, 0.3f, 0.4f);
    source->emissive = Color(0.3f, 0.2f, 0.3f, 0.4f);
    source->specular = Color(0.4f, 0.2f, 0.3f, 0.4f);
    source->shininess = 5;
    source->texturePath.path = L"dir/";
    source->textureName = "brick.png";
    source->hasAlpha = true;
    source->ignoreLightColor = false;
    source->stippling = true;
    source->stippleColor = Color(0.5f, 0.5f, 0.5f, 0.5f);
    source->pixels = static_cast<unsigned char*>(std::malloc(16));
    source->pixelWidth = source->pixelHeight = 2;
    source->SetFlags(MaterialFlagNoCull);
    source->pointSize = source->polygonOffsetFactor = source->polygonOffsetUnits = 7;
    source->clampTexture = source->noDepthWrite = true;
    source->uScale = source->vScale = source->hatchUScale = source->hatchVScale = 7;
    source->stippleOffset = source->stippleSize = 7;
    source->normalMapName = source->opacityMapName = "map";
    source->reflectionFactors[0] = source->reflectionFactors[1] = source->reflectionFactors[2] = 7;

    Material copy(*source);
    EXPECT_TRUE(copy.diffuse.IsExactlyEqual(source->diffuse));
    EXPECT_TRUE(copy.ambient.IsExactlyEqual(source->ambient));
    EXPECT_TRUE(copy.emissive.IsExactlyEqual(source->emissive));
    EXPECT_TRUE(copy.specular.IsExactlyEqual(source->specular));
    EXPECT_EQ(copy.shininess, 5.0f);
    EXPECT_EQ(copy.texturePath.path, L"dir/");
    EXPECT_EQ(copy.textureName, "brick.png");
    EXPECT_EQ(copy.name, "stone");
    EXPECT_TRUE(copy.hasAlpha);
    EXPECT_FALSE(copy.ignoreLightColor);
    EXPECT_TRUE(copy.stippling);
    EXPECT_TRUE(copy.stippleColor.IsExactlyEqual(source->stippleColor));

    // Putting the copied fields back must give a new material.
    const Material fresh("stone");
    copy.diffuse = fresh.diffuse;
    copy.ambient = fresh.ambient;
    copy.emissive = fresh.emissive;
    copy.specular = fresh.specular;
    copy.shininess = fresh.shininess;
    copy.texturePath = fresh.texturePath;
    copy.textureName = fresh.textureName;
    copy.hasAlpha = fresh.hasAlpha;
    copy.ignoreLightColor = fresh.ignoreLightColor;
    copy.stippling = fresh.stippling;
    ExpectStartValues(copy);
    EXPECT_EQ(deaths, 0);
}

TEST(Material, OnlySubclassesMayLeaveTheNameOut)
{
    EXPECT_FALSE(std::is_default_constructible_v<Material>);
    EXPECT_FALSE(std::is_copy_assignable_v<Material>);
    EXPECT_FALSE(std::is_copy_constructible_v<NodeMaterial>) << "the copy would not be registered with its nodes";
}

TEST(Material, OwnsItsRenderData)
{
    int deaths = 0;
    {
        Material material("a");
        ExpectOwningSlot([&] { return material.GetRenderData(); },
                         [&](Object* data) { material.SetRenderData(data); });
        material.SetRenderData(Counted(deaths));
    }
    EXPECT_EQ(deaths, 1);
}

TEST(Material, StoresNewRenderDataBeforeTheOldDie)
{
    Material material("a");
    Object* seen = nullptr;
    material.SetRenderData(new WatchedObject([&] { seen = material.GetRenderData(); }));
    int deaths = 0;
    Object* const second = Counted(deaths);
    material.SetRenderData(second);
    EXPECT_EQ(seen, second);
}

TEST(Material, SuspendDeletesTheRenderDataAfterEmptyingTheSlot)
{
    Material material("a");
    material.Suspend();
    bool wasEmpty = false;
    material.SetRenderData(new WatchedObject([&] { wasEmpty = material.GetRenderData() == nullptr; }));
    material.Suspend();
    EXPECT_TRUE(wasEmpty);
    EXPECT_EQ(material.GetRenderData(), nullptr);
    material.Resume();
    EXPECT_EQ(material.GetRenderData(), nullptr);
}

TEST(Material, IsReadyToDrawWithoutADrawIDOrAtTheUpdateOfItsScene)
{
    Scene scene;
    Material* const material = new Material("a");
    EXPECT_TRUE(material->ReadyToDraw());
    material->SetDrawID(2);
    EXPECT_TRUE(material->UsingDrawID());
    EXPECT_FALSE(material->ReadyToDraw()) << "without a scene";
    scene.AddMaterial(material);
    EXPECT_FALSE(material->ReadyToDraw());
    scene.UpdateGraph(1, 1);
    EXPECT_TRUE(material->ReadyToDraw());
    material->InvalidateDrawID();
    EXPECT_FALSE(material->ReadyToDraw());
    EXPECT_TRUE(material->UsingDrawID());
    material->SetDrawID(0);
    EXPECT_TRUE(material->ReadyToDraw());
}

TEST(Material, AddMeshGivesTheMeshThisMaterialAndMarksNothing)
{
    Scene scene;
    Material* const material = new Material("a");
    Mesh* const mesh = new Mesh(nullptr, &scene);
    scene.AddMaterial(material);
    scene.UpdateGraph(1, 1);
    EXPECT_TRUE(material->AddMesh(mesh));
    EXPECT_EQ(mesh->GetMaterial(), material);
    EXPECT_EQ(material->GetMeshes().size(), 1u);
    EXPECT_FALSE(scene.IsDirty());
    EXPECT_TRUE(material->AddMesh(mesh)) << "again";
    EXPECT_EQ(mesh->GetMaterial(), material);
    EXPECT_EQ(material->GetMeshes().size(), 1u);
    EXPECT_FALSE(material->AddMesh(nullptr));
}

TEST(Material, AddMeshMovesAMeshOfAnotherMaterial)
{
    Material first("a");
    Material second("b");
    Mesh mesh(nullptr);
    first.AddMesh(&mesh);
    EXPECT_TRUE(second.AddMesh(&mesh));
    EXPECT_TRUE(first.GetMeshes().empty());
    EXPECT_EQ(second.GetMeshes().size(), 1u);
    EXPECT_EQ(mesh.GetMaterial(), &second);
}

TEST(Material, MeshesStandInOrderOfCreation)
{
    Material material("a");
    std::vector<std::unique_ptr<Mesh>> meshes;
    for (int i = 0; i < 8; ++i)
    {
        meshes.push_back(std::make_unique<Mesh>(nullptr));
    }
    for (const int i : {5, 2, 7, 0, 3, 6, 1, 4})
    {
        material.AddMesh(meshes[i].get());
    }
    int next = 0;
    for (const Mesh* const mesh : material.GetMeshes())
    {
        EXPECT_EQ(mesh, meshes[next].get()) << next;
        ++next;
    }
    EXPECT_EQ(next, 8);
}

TEST(Material, AMeshOfASortIDThatIsThereIsNotTaken)
{
    Material material("a");
    Material other("b");
    Mesh mesh(nullptr);
    Mesh copy(mesh);
    material.AddMesh(&mesh);
    other.AddMesh(&copy);
    EXPECT_TRUE(material.AddMesh(&copy));
    EXPECT_EQ(copy.GetMaterial(), nullptr);
    EXPECT_TRUE(other.GetMeshes().empty());
    EXPECT_EQ(mesh.GetMaterial(), &material);
    EXPECT_EQ(*material.GetMeshes().begin(), &mesh);

    EXPECT_TRUE(material.RemoveMesh(&copy)) << "stands for the mesh of its sort ID";
    EXPECT_EQ(mesh.GetMaterial(), nullptr);
    EXPECT_TRUE(material.GetMeshes().empty());
}

TEST(Material, MeshesRevisionChangesWithEveryChangeOfTheSetAndOfWhatADrawReadsInIt)
{
    Material material("a");
    Mesh first(nullptr);
    Mesh second(nullptr);
    std::set<std::uint64_t> revisions = {material.GetMeshesRevision()};
    const auto isNew = [&] { return revisions.insert(material.GetMeshesRevision()).second; };
    material.AddMesh(&first);
    EXPECT_TRUE(isNew());
    material.AddMesh(&second);
    EXPECT_TRUE(isNew());
    material.RemoveMesh(&first);
    EXPECT_TRUE(isNew());
    material.RemoveMesh(&first);
    EXPECT_FALSE(isNew()) << "nothing changed";
    {
        Mesh third(nullptr);
        material.AddMesh(&third);
        EXPECT_TRUE(isNew());
    }
    EXPECT_TRUE(isNew()) << "a mesh has died";
    first.SetDrawID(5);
    EXPECT_FALSE(isNew()) << "it is no longer there";
    second.SetDrawID(5);
    EXPECT_TRUE(isNew());
    second.InvalidateDrawID();
    EXPECT_TRUE(isNew());
    second.SetFlags(MeshFlagNoCull);
    EXPECT_TRUE(isNew());
    second.ClearFlags(MeshFlagNoCull);
    EXPECT_TRUE(isNew());
    {
        MeshNode node(nullptr);
        MeshNode another(nullptr);
        second.AddNode(&node);
        EXPECT_TRUE(isNew());
        second.AddNode(&node);
        EXPECT_FALSE(isNew()) << "it is there already";
        second.AddNode(&another);
        EXPECT_TRUE(isNew());
        second.RemoveNode(&node);
        EXPECT_TRUE(isNew());
    }
    EXPECT_TRUE(isNew()) << "a node has died";
}

TEST(Material, RemoveMeshOfAStrangerIsRefused)
{
    Material material("a");
    Material other("b");
    Mesh mesh(nullptr);
    other.AddMesh(&mesh);
    EXPECT_FALSE(material.RemoveMesh(&mesh));
    EXPECT_FALSE(material.RemoveMesh(nullptr));
    EXPECT_EQ(mesh.GetMaterial(), &other);
    EXPECT_TRUE(other.RemoveMesh(&mesh));
    EXPECT_EQ(mesh.GetMaterial(), nullptr);
    EXPECT_FALSE(other.RemoveMesh(&mesh));
}

TEST(Material, HasVisibleItemsWhileANodeIsNeitherHiddenNorCulled)
{
    Material material("a");
    EXPECT_FALSE(material.HasVisibleItems());
    Mesh first(nullptr);
    Mesh second(nullptr);
    material.AddMesh(&first);
    material.AddMesh(&second);
    EXPECT_FALSE(material.HasVisibleItems()) << "no node shows the meshes";
    MeshNode nodes[3] = {MeshNode(nullptr), MeshNode(nullptr), MeshNode(nullptr)};
    first.AddNode(&nodes[0]);
    second.AddNode(&nodes[1]);
    second.AddNode(&nodes[2]);
    EXPECT_TRUE(material.HasVisibleItems());
    nodes[0].SetFlags(NodeFlagHidden, false);
    nodes[1].SetFlags(NodeFlagCulled, false);
    EXPECT_TRUE(material.HasVisibleItems());
    nodes[2].SetFlags(NodeFlagHidden | NodeFlagCulled, false);
    EXPECT_FALSE(material.HasVisibleItems());
    nodes[1].ClearFlags(NodeFlagCulled, false);
    nodes[1].SetFlags(NodeFlagHasNodeMaterial | NodeFlagNoHitTest, false);
    EXPECT_TRUE(material.HasVisibleItems());
}

TEST(Material, DyingLeavesTheSceneThenTheMeshesThenDeletesTheRenderData)
{
    Scene scene;
    Mesh mesh(nullptr);
    Material* const material = new Material("a");
    material->AddMesh(&mesh);
    material->pixels = static_cast<unsigned char*>(std::malloc(4));
    scene.AddMaterial(material);
    scene.UpdateGraph(1, 1);
    bool hadLeft = false;
    material->SetRenderData(new WatchedObject(
        [&] { hadLeft = scene.GetOptimizedMaterials().empty() && mesh.GetMaterial() == nullptr; }));
    delete material;
    EXPECT_TRUE(hadLeft);
    EXPECT_TRUE(scene.IsDirty());
    EXPECT_EQ(mesh.GetMaterial(), nullptr);
}

TEST(Material, VirtualsStandInTheirOrder)
{
    EXPECT_EQ(VirtualSlot(&Material::IsTransparent), 1);
    EXPECT_EQ(VirtualSlot(&Material::Type), 2);
    EXPECT_EQ(VirtualSlot(&Material::HasType), 3);
    EXPECT_EQ(VirtualSlot(&Material::Suspend), -1);
}

/// A scene, clean, with a node material and two nodes.
class NodesWithMaterial : public ::testing::Test
{
protected:
    NodesWithMaterial()
    {
        scene.AddMaterial(material);
        Clean();
    }

    void Clean() { scene.UpdateGraph(1, 1); }

    Scene scene;
    NodeMaterial* material = new NodeMaterial;
    MeshNode first{&scene};
    MeshNode second{&scene};
};

TEST_F(NodesWithMaterial, AddNodeRegistersAndMarksTheScene)
{
    material->AddNode(&first);
    EXPECT_TRUE(scene.IsDirty());
    material->AddNode(&second);
    EXPECT_EQ(material->GetNodes(), (std::vector<MeshNode*>{&first, &second}));
    EXPECT_EQ(first.CurrentNodeMaterial(), material);
    EXPECT_EQ(first.GetFlags(), 0x04u);
}

TEST_F(NodesWithMaterial, AddNodeOfNullOrOfANodeThatIsThereDoesNothing)
{
    material->AddNode(&first);
    Clean();
    material->AddNode(nullptr);
    material->AddNode(&first);
    EXPECT_EQ(material->GetNodes(), (std::vector<MeshNode*>{&first}));
    EXPECT_FALSE(scene.IsDirty());
}

TEST_F(NodesWithMaterial, RemoveNodeUnregistersAndMarksTheScene)
{
    MeshNode third(&scene);
    for (MeshNode* const node : {&first, &second, &third})
    {
        material->AddNode(node);
    }
    Clean();
    material->RemoveNode(&second);
    EXPECT_EQ(material->GetNodes(), (std::vector<MeshNode*>{&first, &third}));
    EXPECT_EQ(second.CurrentNodeMaterial(), nullptr);
    EXPECT_EQ(second.GetFlags(), 0x00u);
    EXPECT_TRUE(scene.IsDirty());
    Clean();
    material->RemoveNode(&second);
    material->RemoveNode(nullptr);
    EXPECT_FALSE(scene.IsDirty());
    EXPECT_EQ(material->GetNodes().size(), 2u);
}

TEST_F(NodesWithMaterial, ClearRemovesAllAndMarksTheSceneOnlyWhenThereWasOne)
{
    material->Clear();
    EXPECT_FALSE(scene.IsDirty());
    material->AddNode(&first);
    material->AddNode(&second);
    Clean();
    material->Clear();
    EXPECT_TRUE(material->GetNodes().empty());
    EXPECT_EQ(first.GetFlags(), 0x00u);
    EXPECT_EQ(second.CurrentNodeMaterial(), nullptr);
    EXPECT_TRUE(scene.IsDirty());
}

TEST_F(NodesWithMaterial, WithoutASceneNothingIsMarked)
{
    NodeMaterial loose;
    loose.AddNode(&first);
    loose.RemoveNode(&first);
    loose.AddNode(&first);
    loose.Clear();
    EXPECT_FALSE(scene.IsDirty());
}

TEST_F(NodesWithMaterial, RemovingTheFirstOfTwoMaterialsMakesTheSecondCurrent)
{
    NodeMaterial other;
    material->AddNode(&first);
    other.AddNode(&first);
    EXPECT_EQ(first.CurrentNodeMaterial(), material);
    material->RemoveNode(&first);
    EXPECT_EQ(first.CurrentNodeMaterial(), &other);
    EXPECT_EQ(first.GetFlags(), 0x04u);
    other.RemoveNode(&first);
    EXPECT_EQ(first.GetFlags(), 0x00u);
}

TEST_F(NodesWithMaterial, DyingUnregisters)
{
    material->AddNode(&first);
    Clean();
    delete material;
    EXPECT_EQ(first.CurrentNodeMaterial(), nullptr);
    EXPECT_EQ(first.GetFlags(), 0x00u);
    EXPECT_TRUE(scene.IsDirty());
    EXPECT_TRUE(scene.GetOptimizedMaterials().empty());
}

} // namespace
} // namespace OV
