#include "orvane_host/import/detail/SceneBuilder.h"

#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

using namespace OV;
using namespace OV::Host;

namespace
{

const std::vector<float> kPositions = {0, 0, 0, 1, 0, 0, 0, 1, 0};
const std::vector<std::uint32_t> kIndices = {0, 1, 2};
const double kNaN = std::numeric_limits<double>::quiet_NaN();

MeshData Triangle()
{
    MeshData mesh;
    mesh.positions = {kPositions.data(), kPositions.size()};
    mesh.indices = {kIndices.data(), kIndices.size()};
    return mesh;
}

NodeData Child(std::int32_t parent, std::vector<std::uint32_t> meshes = {})
{
    NodeData node;
    node.parent = parent;
    node.meshes = std::move(meshes);
    return node;
}

/// A root, and below it a node that shows a triangle.
ModelData OneTriangle()
{
    ModelData model;
    model.nodes = {Child(-1), Child(0, {0})};
    model.meshes = {Triangle()};
    model.materials.resize(1);
    return model;
}

ImportResult Build(const ModelData& model, const ImportOptions& options = ImportOptions())
{
    ImportResult result;
    BuildScene(model, "model", options, nullptr, result);
    return result;
}

TEST(SceneBuilder, NodesHangAsInTheFile)
{
    ModelData model = OneTriangle();
    model.nodes.push_back(Child(1));
    model.nodes[0].name = "root";
    model.nodes[2].name = "leaf";
    const ImportResult result = Build(model);
    ASSERT_TRUE(result);
    ASSERT_EQ(result.nodes.size(), 3u);
    EXPECT_EQ(result.nodes[0].name, "root");
    EXPECT_EQ(result.nodes[2].name, "leaf");
    EXPECT_EQ(result.nodes[0].node->GetParent(), result.scene->GetRoot());
    EXPECT_EQ(result.nodes[1].node->GetParent(), result.nodes[0].node);
    EXPECT_EQ(result.nodes[2].node->GetParent(), result.nodes[1].node);
    EXPECT_EQ(result.nodes[0].node->Type(), NodeTypeNode);
    EXPECT_EQ(result.nodes[1].node->Type(), NodeTypeMeshNode);
    EXPECT_EQ(result.report.nodes, 3u);
    EXPECT_EQ(result.report.meshNodes, 1u);
}

TEST(SceneBuilder, MeshesKeepTheirNames)
{
    ModelData model = OneTriangle();
    model.meshes.push_back(Triangle());
    model.nodes.push_back(Child(0, {1}));
    model.meshes[1].name = "roof";
    const ImportResult result = Build(model);
    ASSERT_TRUE(result);
    ASSERT_EQ(result.meshes.size(), 1u) << "one without a name is not listed";
    EXPECT_EQ(result.meshes[0].name, "roof");
    const auto* node = static_cast<const MeshNode*>(result.nodes[2].node);
    EXPECT_EQ(result.meshes[0].mesh, node->GetMeshes().at(0));
}

TEST(SceneBuilder, PathsLeadFromTheRootToTheNode)
{
    ModelData model = OneTriangle();
    model.nodes.push_back(Child(0));
    model.nodes.push_back(Child(2));
    const ImportResult result = Build(model);
    using Path = std::vector<std::pair<std::uint64_t, std::uint64_t>>;
    EXPECT_EQ(result.nodes[0].node->GetPath(), (Path{{0, 0}}));
    EXPECT_EQ(result.nodes[1].node->GetPath(), (Path{{0, 0}, {1, 0}}));
    EXPECT_EQ(result.nodes[2].node->GetPath(), (Path{{0, 0}, {2, 1}}));
    EXPECT_EQ(result.nodes[3].node->GetPath(), (Path{{0, 0}, {2, 1}, {3, 0}}));
}

TEST(SceneBuilder, TransformsAreComposedInDouble)
{
    ModelData model = OneTriangle();
    // In float the two would cancel to nothing but their rounding.
    model.nodes[0].local[3] = 4'000'000.125;
    model.nodes[1].local[3] = -4'000'000.0;
    const ImportResult result = Build(model);
    EXPECT_EQ(result.nodes[1].node->GetGlobal().GetTransf3d().m[0][3], 0.125);
    EXPECT_EQ(result.report.boxMin, Vector(0.125f, 0, 0));
    EXPECT_EQ(result.report.boxMax, Vector(1.125f, 1, 0));
}

TEST(SceneBuilder, AMeshShownByManyNodesIsHeldOnce)
{
    ModelData model = OneTriangle();
    for (int i = 0; i < 9; ++i)
    {
        model.nodes.push_back(Child(0, {0, 0}));
    }
    const ImportResult result = Build(model);
    ASSERT_EQ(result.scene->GetMeshes().size(), 1u);
    const Mesh& mesh = **result.scene->GetMeshes().begin();
    EXPECT_EQ(mesh.GetNodes().size(), 10u);
    EXPECT_EQ(mesh.GetRawMesh().use_count(), 1);
    EXPECT_EQ(result.report.meshes, 1u);
    EXPECT_EQ(result.report.triangles, 1u);
    EXPECT_EQ(result.report.drawnTriangles, 10u);
}

TEST(SceneBuilder, MeshesInNoNodeAreLeftOut)
{
    ModelData model = OneTriangle();
    model.meshes.push_back(Triangle());
    EXPECT_EQ(Build(model).scene->GetMeshes().size(), 1u);
}

TEST(SceneBuilder, TheBoxCountsEveryPlacedVertex)
{
    ModelData model = OneTriangle();
    model.nodes.push_back(Child(0, {0}));
    model.nodes[2].local[7] = 10.0;
    const ImportResult result = Build(model);
    ASSERT_TRUE(result.report.hasBox);
    EXPECT_EQ(result.report.boxMin, Vector(0, 0, 0));
    EXPECT_EQ(result.report.boxMax, Vector(1, 11, 0));
    Vector low;
    Vector high;
    result.scene->GetBoundingBox(low, high);
    EXPECT_EQ(low, result.report.boxMin);
    EXPECT_EQ(high, result.report.boxMax);
}

TEST(SceneBuilder, AModelOfNothingIsASceneWithAWarning)
{
    ModelData model;
    model.nodes = {Child(-1)};
    const ImportResult result = Build(model);
    ASSERT_TRUE(result);
    EXPECT_FALSE(result.report.hasBox);
    EXPECT_EQ(result.report.warnings.size(), 1u);
}

TEST(SceneBuilder, TreesThatAreNoneAreRefused)
{
    struct
    {
        const char* label;
        std::vector<NodeData> nodes;
    } const cases[] = {
        {"no nodes", {}},
        {"root with a parent", {Child(0)}},
        {"two roots", {Child(-1), Child(-1)}},
        {"its own parent", {Child(-1), Child(1)}},
        {"a parent that comes later", {Child(-1), Child(2), Child(0)}},
        {"a parent out of range", {Child(-1), Child(100)}},
        {"a parent below the root", {Child(-1), Child(-2)}},
    };
    for (const auto& test : cases)
    {
        ModelData model;
        model.nodes = test.nodes;
        const ImportResult result = Build(model);
        EXPECT_FALSE(result) << test.label;
        EXPECT_EQ(result.status, ImportStatus::Malformed) << test.label;
    }
}

TEST(SceneBuilder, TheDepthOfTheTreeIsLimited)
{
    ModelData model;
    for (std::int32_t i = -1; i < 20; ++i)
    {
        model.nodes.push_back(Child(i));
    }
    ImportOptions options;
    options.limits.depth = 20;
    EXPECT_TRUE(Build(model, options));
    options.limits.depth = 19;
    EXPECT_FALSE(Build(model, options));
}

TEST(SceneBuilder, IndicesOutOfRangeDoNoHarm)
{
    ModelData model = OneTriangle();
    model.nodes[1].meshes = {0, 77, 0xFFFFFFFF};
    model.meshes[0].material = 99;
    MaterialData material;
    material.texture.embedded = 55;
    model.materials = {material};
    model.cameras.resize(2);
    model.cameras[0].node = -5;
    model.cameras[1].node = 99;
    model.lights.resize(2);
    model.lights[0].node = -5;
    model.lights[1].node = 99;
    const ImportResult result = Build(model);
    ASSERT_TRUE(result);
    EXPECT_EQ(result.report.meshes, 1u);
    EXPECT_EQ(result.report.cameras, 0u);
    EXPECT_EQ(result.report.lights, 0u);
    EXPECT_TRUE(result.scene->GetLights().empty());
}

TEST(SceneBuilder, TransformsThatAreNotFiniteAreReplaced)
{
    for (double bad : {kNaN, std::numeric_limits<double>::infinity(), 1e16})
    {
        ModelData model = OneTriangle();
        model.nodes[1].local[0] = bad;
        const ImportResult result = Build(model);
        ASSERT_TRUE(result);
        EXPECT_EQ(result.report.boxMax, Vector(1, 1, 0));
        EXPECT_EQ(result.report.warnings.size(), 1u);
    }
}

TEST(SceneBuilder, NodesThatEndBeyondAllBoundsAreHidden)
{
    ModelData model;
    model.meshes = {Triangle()};
    for (std::int32_t i = -1; i < 30; ++i)
    {
        model.nodes.push_back(Child(i));
        model.nodes.back().local[0] = 1e14;
    }
    model.nodes.back().meshes = {0};
    model.nodes.front().meshes = {0};
    const ImportResult result = Build(model);
    ASSERT_TRUE(result);
    EXPECT_TRUE(static_cast<MeshNode*>(result.nodes.back().node)->GetFlags() & NodeFlagHidden);
    EXPECT_FALSE(static_cast<MeshNode*>(result.nodes.front().node)->GetFlags() & NodeFlagHidden);
    EXPECT_EQ(result.report.boxMax, Vector(1e14f, 1, 0));
}

TEST(SceneBuilder, MirroredMeshesShowTheirBackFaces)
{
    ModelData model = OneTriangle();
    EXPECT_FALSE((*Build(model).scene->GetMeshes().begin())->GetFlags() & MeshFlagNoCull);
    model.nodes[1].local[5] = -1.0;
    EXPECT_TRUE((*Build(model).scene->GetMeshes().begin())->GetFlags() & MeshFlagNoCull);
    // Two mirrors are none.
    model.nodes[0].local[0] = -1.0;
    EXPECT_FALSE((*Build(model).scene->GetMeshes().begin())->GetFlags() & MeshFlagNoCull);
}

TEST(SceneBuilder, ProgressRunsThroughTheMeshesAndMayCancel)
{
    ModelData model = OneTriangle();
    model.meshes.resize(10, Triangle());
    std::vector<float> shares;
    ImportResult result;
    BuildScene(
        model, "model", ImportOptions(),
        [&shares](float share)
        {
            shares.push_back(share);
            return true;
        },
        result);
    EXPECT_EQ(shares.size(), 10u);
    EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));

    ImportResult cancelled;
    BuildScene(
        model, "model", ImportOptions(), [](float share) { return share < 0.5f; }, cancelled);
    EXPECT_FALSE(cancelled);
    EXPECT_EQ(cancelled.status, ImportStatus::Cancelled);
}

TEST(SceneBuilder, AmbientAndLightAddUpToTheColourOfTheFile)
{
    ModelData model = OneTriangle();
    model.materials[0].diffuse[0] = 0.5f;
    model.materials[0].diffuse[1] = 1.0f;
    model.lights.resize(1);
    ImportOptions options;
    options.ambientLevel = 0.25f;
    const ImportResult result = Build(model, options);
    const Material& material = *result.scene->GetOptimizedMaterials().at(0);
    EXPECT_FALSE(material.ignoreLightColor);
    ASSERT_EQ(result.lights.size(), 1u);
    const Color& light = result.lights[0]->GetColor();
    EXPECT_FLOAT_EQ(material.GetAmbient().r + material.GetDiffuse().r * light.r, 0.5f);
    EXPECT_FLOAT_EQ(material.GetAmbient().g + material.GetDiffuse().g * light.g, 1.0f);
    EXPECT_FLOAT_EQ(material.GetAmbient().g, 0.25f);
    EXPECT_FLOAT_EQ(material.GetDiffuse().r, 0.5f);
    EXPECT_TRUE(result.lights[0]->HasAmbient());
}

TEST(SceneBuilder, UnlitMaterialsShowTheirColourAlone)
{
    ModelData model = OneTriangle();
    model.materials[0].isUnlit = true;
    const ImportResult result = Build(model);
    const Material& material = *result.scene->GetOptimizedMaterials().at(0);
    EXPECT_TRUE(const_cast<Material&>(material).GetFlags() & MaterialFlagUnlit);
    EXPECT_EQ(material.GetAmbient().r, 0.0f);
}

TEST(SceneBuilder, EmissiveColourShowsWithoutLight)
{
    ModelData model = OneTriangle();
    model.materials[0].emissive[2] = 0.5f;
    const ImportResult result = Build(model);
    const Material& material = *result.scene->GetOptimizedMaterials().at(0);
    EXPECT_FLOAT_EQ(material.GetEmissive().b, 0.5f);
    EXPECT_FLOAT_EQ(material.GetAmbient().b, 0.3f * 0.8f + 0.5f);
}

TEST(SceneBuilder, TransparencyIsDecidedBeforeTheSceneSortsTheMaterial)
{
    ModelData model = OneTriangle();
    model.materials[0].diffuse[3] = 0.5f;
    const ImportResult result = Build(model);
    EXPECT_TRUE(result.scene->GetOptimizedMaterials().empty());
    ASSERT_EQ(result.scene->GetAlphaMaterials().size(), 1u);
    EXPECT_EQ(result.scene->GetAlphaMaterials()[0]->GetOpacity(), 0.5f);
}

TEST(SceneBuilder, MaterialsAreMadeOnceAndOnlyWhenUsed)
{
    ModelData model = OneTriangle();
    model.meshes.resize(5, Triangle());
    model.meshes[4].material = 2;
    model.nodes[1].meshes = {0, 1, 2, 3, 4};
    model.materials.resize(4);
    model.materials[0].name = "a";
    model.materials[2].name = "c";
    const ImportResult result = Build(model);
    ASSERT_EQ(result.scene->GetOptimizedMaterials().size(), 2u);
    EXPECT_EQ(result.scene->GetMaterial("a")->GetMeshes().size(), 4u);
    EXPECT_EQ(result.scene->GetMaterial("c")->GetMeshes().size(), 1u);
    EXPECT_EQ(result.report.materials, 2u);
}

TEST(SceneBuilder, PointsGetAMaterialOfTheirOwn)
{
    ModelData model = OneTriangle();
    MeshData points = Triangle();
    points.kind = PrimitiveKind::Points;
    points.indices = {};
    model.meshes.push_back(points);
    model.nodes[1].meshes = {0, 1};
    const ImportResult result = Build(model);
    const auto& materials = result.scene->GetOptimizedMaterials();
    ASSERT_EQ(materials.size(), 2u);
    EXPECT_FALSE(materials[0]->GetFlags() & MaterialFlagPoints);
    EXPECT_TRUE(materials[1]->GetFlags() & MaterialFlagPoints);
    EXPECT_TRUE(materials[1]->GetFlags() & MaterialFlagUnlit);
    EXPECT_EQ((*materials[1]->GetMeshes().begin())->GetIndices().size(), 3u);
    EXPECT_EQ(result.report.points, 3u);
    EXPECT_EQ(result.report.triangles, 1u);
}

TEST(SceneBuilder, RawTexelsBecomePixelsWithTheBottomRowFirst)
{
    const std::vector<unsigned char> texels = {1, 2, 3, 255, 4, 5, 6, 255, 7, 8, 9, 255, 10, 11, 12, 128};
    ModelData model = OneTriangle();
    TextureData texture;
    texture.width = 2;
    texture.height = 2;
    texture.bytes = {texels.data(), texels.size()};
    model.textures = {texture};
    model.materials[0].texture.embedded = 0;
    model.materials[0].clampsTexture = true;
    const ImportResult result = Build(model);
    ASSERT_EQ(result.scene->GetAlphaMaterials().size(), 1u);
    const Material& material = *result.scene->GetAlphaMaterials()[0];
    ASSERT_NE(material.pixels, nullptr);
    EXPECT_EQ(material.pixelWidth, 2);
    EXPECT_EQ(material.pixelHeight, 2);
    const std::vector<unsigned char> expected = {7, 8, 9, 255, 10, 11, 12, 128, 1, 2, 3, 255, 4, 5, 6, 255};
    EXPECT_EQ(std::vector<unsigned char>(material.pixels, material.pixels + 16), expected);
    EXPECT_TRUE(material.hasAlpha);
    EXPECT_TRUE(material.clampTexture);
    EXPECT_EQ(result.report.embeddedTextures, 1u);
    // Nothing of the colour is lost by the step that makes the material transparent.
    EXPECT_EQ(std::lround(material.GetOpacity() * 255.0f), 255);
}

TEST(SceneBuilder, TexelsBelowTheirSizeAreNotTouched)
{
    const std::vector<unsigned char> texels(15);
    ModelData model = OneTriangle();
    TextureData texture;
    texture.width = 2;
    texture.height = 2;
    texture.bytes = {texels.data(), texels.size()};
    model.textures = {texture};
    model.materials[0].texture.embedded = 0;
    const ImportResult result = Build(model);
    EXPECT_EQ(result.scene->GetOptimizedMaterials().at(0)->pixels, nullptr);
    EXPECT_EQ(result.report.missingTextures, 1u);
    EXPECT_EQ(result.report.warnings.size(), 1u);
}

TEST(SceneBuilder, PicturesBeyondTheLimitsAreLeftOut)
{
    const std::vector<unsigned char> texels(16);
    ModelData model = OneTriangle();
    TextureData texture;
    texture.width = 2;
    texture.height = 2;
    texture.bytes = {texels.data(), texels.size()};
    model.textures = {texture};
    model.materials.resize(2);
    model.meshes.push_back(Triangle());
    model.meshes[1].material = 1;
    model.nodes[1].meshes = {0, 1};
    model.materials[0].texture.embedded = 0;
    model.materials[1].texture.embedded = 0;
    ImportOptions options;
    options.limits.textureBytes = 32;
    options.limits.texturePixels = 4;
    EXPECT_EQ(Build(model, options).report.embeddedTextures, 2u);
    options.limits.textureBytes = 31;
    EXPECT_EQ(Build(model, options).report.embeddedTextures, 1u);
    options.limits.texturePixels = 3;
    EXPECT_EQ(Build(model, options).report.embeddedTextures, 0u);
    options = ImportOptions();
    options.textures = false;
    EXPECT_EQ(Build(model, options).report.embeddedTextures, 0u);
    EXPECT_TRUE(Build(model, options).report.warnings.empty());
}

TEST(SceneBuilder, PointsHaveNoMaps)
{
    ModelData model = OneTriangle();
    model.materials[0].normalMap.picture.path = "missing.png";
    EXPECT_EQ(Build(model).report.warnings.size(), 1u);
    model.meshes[0].kind = PrimitiveKind::Points;
    model.meshes[0].indices = {};
    EXPECT_TRUE(Build(model).report.warnings.empty());
}

TEST(SceneBuilder, ALightWithADirectionComesBeforeAPoint)
{
    ModelData model = OneTriangle();
    model.lights.resize(3);
    model.lights[0].kind = LightKind::Positional;
    model.lights[0].direction[2] = 0;
    model.lights[0].position[2] = 10;
    model.lights[1].kind = LightKind::Positional;
    model.lights[1].direction[0] = 2;
    model.lights[1].direction[2] = 0;
    model.lights[2].direction[1] = -3;
    model.lights[2].direction[2] = 0;
    const ImportResult result = Build(model);
    ASSERT_EQ(result.scene->GetLights().size(), 3u);
    EXPECT_EQ(result.scene->GetLights(), result.lights);
    EXPECT_EQ(result.lights[0]->GetGlobalDirection(), Vector(0, -1, 0));
    EXPECT_EQ(result.lights[1]->GetGlobalDirection(), Vector(1, 0, 0));
    // From above towards the middle of the triangle's box.
    Vector towards(0.5f, 0.5f, -10.0f);
    towards.Normalize();
    EXPECT_TRUE(result.lights[2]->GetGlobalDirection().IsEqual(towards));
    EXPECT_EQ(result.lights[2]->GetGlobalPosition(), Vector(0, 0, 10));
}

TEST(SceneBuilder, LightsAreScaledToFullStrength)
{
    ModelData model = OneTriangle();
    model.lights.resize(4);
    const float colors[4][3] = {
        {1000, 500, 0}, {0, 0, 0}, {static_cast<float>(kNaN), 1, 1}, {0.5f, 0.5f, 0.25f}};
    for (int i = 0; i < 4; ++i)
    {
        std::copy(colors[i], colors[i] + 3, model.lights[static_cast<std::size_t>(i)].color);
    }
    ImportOptions options;
    options.ambientLevel = 0.0f;
    const ImportResult result = Build(model, options);
    ASSERT_GE(result.lights.size(), 2u);
    EXPECT_EQ(result.lights[0]->GetColor().r, 1.0f);
    EXPECT_EQ(result.lights[0]->GetColor().g, 0.5f);
    EXPECT_EQ(result.lights[0]->GetColor().b, 0.0f);
    EXPECT_EQ(result.lights.back()->GetColor().b, 0.5f);
    for (const LightNode* light : result.lights)
    {
        EXPECT_TRUE(std::isfinite(const_cast<LightNode*>(light)->GetColor().r));
    }
}

TEST(SceneBuilder, CamerasStandBelowTheirNodes)
{
    ModelData model = OneTriangle();
    model.nodes[1].local[11] = 5;
    model.cameras.resize(1);
    CameraData& camera = model.cameras[0];
    camera.node = 1;
    camera.position[0] = 0.5;
    camera.position[1] = 0.5;
    camera.position[2] = 5;
    camera.horizontalAngle = 1.0;
    camera.aspect = 2.0;
    camera.nearDistance = 0.5;
    camera.farDistance = 50;
    const ImportResult result = Build(model);
    ASSERT_EQ(result.cameras.size(), 1u);
    CameraNode& node = *result.cameras[0];
    EXPECT_EQ(node.GetParent(), result.nodes[1].node);
    EXPECT_EQ(node.GetGlobal().GetPosition(), Vector(0.5f, 0.5f, 10));
    EXPECT_FLOAT_EQ(node.GetFOV(), std::atan(std::tan(0.5f) / 2.0f));
    EXPECT_FLOAT_EQ(node.GetDistanceToTarget(), 5.0f);
    float nearDistance = 0;
    float farDistance = 0;
    node.GetNearFar(nearDistance, farDistance);
    EXPECT_EQ(nearDistance, 0.5f);
    EXPECT_EQ(farDistance, 50.0f);
    EXPECT_NE(result.scene->GetCameraNode(), &node) << "the default camera stays the current one";
}

TEST(SceneBuilder, CameraAnglesAreHalvedOnTheShorterSide)
{
    struct
    {
        const char* label;
        double angle;
        double aspect;
        double expected;
    } const cases[] = {
        {"wide", 1.0, 2.0, std::atan(std::tan(0.5) / 2.0)},
        {"square", 1.0, 1.0, 0.5},
        {"tall", 1.0, 0.5, 0.5},
        {"no aspect", 1.0, 0.0, 0.5},
        {"no angle", 0.0, 1.0, 0.45},
        {"not a number", kNaN, kNaN, 0.45},
    };
    for (const auto& test : cases)
    {
        ModelData model = OneTriangle();
        model.cameras.resize(1);
        model.cameras[0].horizontalAngle = test.angle;
        model.cameras[0].aspect = test.aspect;
        const ImportResult result = Build(model);
        ASSERT_EQ(result.cameras.size(), 1u);
        EXPECT_NEAR(result.cameras[0]->GetFOV(), test.expected, 1e-6) << test.label;
    }
}

TEST(SceneBuilder, OrthographicCamerasKeepTheirHeight)
{
    ModelData model = OneTriangle();
    model.cameras.resize(1);
    model.cameras[0].position[2] = 7;
    model.cameras[0].orthographicHalfWidth = 3;
    model.cameras[0].aspect = 1.5;
    const ImportResult result = Build(model);
    CameraNode& camera = *result.cameras.at(0);
    EXPECT_NE(camera.GetProjection(), CameraNode::Perspective);
    EXPECT_NEAR(std::tan(camera.GetFOV()) * camera.GetDistanceToTarget(), 2.0, 1e-5);
}

TEST(SceneBuilder, CamerasThatLookNowhereAreLeftOut)
{
    const double bad[][3] = {{0, 0, 0}, {kNaN, 0, 0}, {0, 1, 0}};
    for (const auto& direction : bad)
    {
        ModelData model = OneTriangle();
        model.cameras.resize(1);
        std::copy(direction, direction + 3, model.cameras[0].direction);
        const ImportResult result = Build(model);
        ASSERT_TRUE(result);
        EXPECT_TRUE(result.cameras.empty());
        EXPECT_EQ(result.report.warnings.size(), 1u);
    }
}

TEST(SceneBuilder, ASceneMadeOfAModelOutlivesIt)
{
    ImportResult result;
    {
        const std::vector<float> positions = kPositions;
        ModelData model = OneTriangle();
        model.meshes[0].positions = {positions.data(), positions.size()};
        BuildScene(model, "model", ImportOptions(), nullptr, result);
    }
    EXPECT_EQ((*result.scene->GetMeshes().begin())->GetPositionBuffer()[1], Vector(1, 0, 0));
    result.scene->UpdateGraph(100, 100);
}

} // namespace
