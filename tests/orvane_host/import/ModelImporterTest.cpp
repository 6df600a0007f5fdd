#include "orvane_host/import/ModelImporter.h"

#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"
#include "tests/orvane_host/import/TinyModels.h"
#include "tests/support/Sanitized.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <string>
#include <thread>
#include <vector>

using namespace OV;
using namespace OV::Host;
using namespace OV::Test;

namespace
{

class ModelImporterTest : public testing::Test
{
protected:
    template <typename Content>
    ImportResult ImportAs(const std::string& name, const Content& content,
                          const ImportOptions& options = ImportOptions())
    {
        WriteFile(m_folder.Path(name), content);
        ImportResult result = ModelImporter::Import(m_folder.Path(name), options);
        EXPECT_TRUE(result) << result.error.Line();
        return result;
    }

    TemporaryFolder m_folder;
};

const Mesh& OnlyMesh(const ImportResult& result)
{
    EXPECT_EQ(result.scene->GetMeshes().size(), 1u);
    return **result.scene->GetMeshes().begin();
}

Material& OnlyMaterial(const ImportResult& result)
{
    const auto& opaque = result.scene->GetOptimizedMaterials();
    const auto& alpha = result.scene->GetAlphaMaterials();
    EXPECT_EQ(opaque.size() + alpha.size(), 1u);
    return opaque.empty() ? *alpha.at(0) : *opaque.at(0);
}

Node* NodeNamed(const ImportResult& result, const std::string& name)
{
    for (const ImportedNode& node : result.nodes)
    {
        if (node.name == name)
        {
            return node.node;
        }
    }
    return nullptr;
}

TEST_F(ModelImporterTest, ACubeComesInWhole)
{
    const ImportResult result = ImportAs("cube.obj", CubeObj());
    EXPECT_EQ(result.status, ImportStatus::Done);
    EXPECT_EQ(result.report.format, "Wavefront Object");
    EXPECT_EQ(result.report.triangles, 12u);
    EXPECT_EQ(result.report.fileBytes, CubeObj().size());
    EXPECT_EQ(result.report.boxMin, Vector(-0.5f, -0.5f, -0.5f));
    EXPECT_EQ(result.report.boxMax, Vector(0.5f, 0.5f, 0.5f));
    EXPECT_TRUE(result.report.warnings.empty());
    Vector low;
    Vector high;
    result.scene->GetBoundingBox(low, high);
    EXPECT_EQ(low, result.report.boxMin);
    EXPECT_EQ(high, result.report.boxMax);
}

TEST_F(ModelImporterTest, TextOfUtf16ComesInAsThatOfUtf8)
{
    const auto ascii = [](const std::string& text) { return std::u16string(text.begin(), text.end()); };
    // A letter of two bytes, one of two units and half of such a one.
    const std::u16string name = u"H\u00E4user\U0001D11E\xD834" u"x";
    const std::string triangle = "v 0 0 0\nv 1 0 0\nv 0 1 0\nusemtl red\nf 1 2 3\n";
    for (const bool isBigEndian : {false, true})
    {
        WriteFile(m_folder.Path("red.mtl"), MarkedUtf16(u"newmtl red\nKd 1 0 0\n", isBigEndian));
        const ImportResult model =
            ImportAs("model.obj", MarkedUtf16(u"mtllib red.mtl\no " + name + u"\n" + ascii(triangle), isBigEndian));
        EXPECT_TRUE(NodeNamed(model, "H\u00E4user\U0001D11E?x"));
        EXPECT_EQ(model.report.triangles, 1u);
        EXPECT_EQ(OnlyMaterial(model).GetDiffuse().g, 0.0f) << "of the file beside it";
        const std::string stl = "solid s\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\n"
                                "endloop\nendfacet\nendsolid s\n";
        EXPECT_EQ(ImportAs("model.stl", MarkedUtf16(ascii(stl), isBigEndian)).report.triangles, 1u);
        const std::string ply = "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
                                "property float z\nelement face 1\nproperty list uchar int vertex_indices\nend_header\n"
                                "0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n";
        EXPECT_EQ(ImportAs("model.ply", MarkedUtf16(ascii(ply), isBigEndian)).report.triangles, 1u);
    }
    // No whole text.
    WriteFile(m_folder.Path("odd.obj"), MarkedUtf16(ascii(triangle), false) + "f");
    EXPECT_EQ(ModelImporter::Import(m_folder.Path("odd.obj")).report.triangles, 1u);
    WriteFile(m_folder.Path("mark.obj"), MarkedUtf16(u"", false));
    EXPECT_FALSE(ModelImporter::Import(m_folder.Path("mark.obj")));
}

TEST_F(ModelImporterTest, SharpEdgesGetFlatNormalsWhereTheFileHasNone)
{
    const ImportResult result = ImportAs("cube.obj", CubeObj());
    const Mesh& mesh = OnlyMesh(result);
    // Four vertices a face, shared by its two triangles.
    ASSERT_EQ(mesh.GetPositionBuffer().size(), 24u);
    ASSERT_EQ(mesh.GetNormalBuffer().size(), 24u);
    for (std::size_t i = 0; i < 24; ++i)
    {
        const Vector& normal = mesh.GetNormalBuffer()[i];
        EXPECT_NEAR(std::fabs(normal.x) + std::fabs(normal.y) + std::fabs(normal.z), 1.0f, 1e-6f);
        EXPECT_NEAR(normal.Dot(mesh.GetPositionBuffer()[i]), 0.5f, 1e-6f) << "outward";
    }
}

/// Two triangles that share an edge along Z and bend by an angle.
std::string BentObj(double degrees)
{
    const double radians = degrees * 3.14159265358979 / 180.0;
    return "v 0 0 0\nv 0 0 1\nv -1 0 0\nv " + std::to_string(std::cos(radians)) + " " +
           std::to_string(std::sin(radians)) + " 0\nf 1 3 2\nf 1 2 4\n";
}

TEST_F(ModelImporterTest, NormalsAreSmoothBelowTheSmoothingAngle)
{
    EXPECT_EQ(OnlyMesh(ImportAs("bent.obj", BentObj(30))).GetPositionBuffer().size(), 4u);
    EXPECT_EQ(OnlyMesh(ImportAs("bent.obj", BentObj(40))).GetPositionBuffer().size(), 6u);
    ImportOptions options;
    options.smoothingAngle = 45.0f;
    EXPECT_EQ(OnlyMesh(ImportAs("bent.obj", BentObj(40), options)).GetPositionBuffer().size(), 4u);
}

TEST_F(ModelImporterTest, NormalsOfNoLengthAreMadeLikeMissingOnes)
{
    const auto bent = [](const std::string& second)
    {
        return "solid bent\nfacet normal 0 0 0\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\nendloop\nendfacet\n"
               "facet normal " + second + "\nouter loop\nvertex 0 0 0\nvertex 0 0 1\nvertex 1 0 0\nendloop\nendfacet\n"
               "endsolid bent\n";
    };
    const ImportResult result = ImportAs("bent.stl", bent("0 0 0"));
    const Mesh& mesh = OnlyMesh(result);
    ASSERT_EQ(mesh.GetNormalBuffer().size(), 6u);
    for (const Vector& normal : mesh.GetNormalBuffer())
    {
        EXPECT_NEAR(std::max(normal.y, normal.z), 1.0f, 1e-6f);
    }
    // One that has a length is one that somebody meant.
    EXPECT_NEAR(OnlyMesh(ImportAs("meant.stl", bent("1 0 0"))).GetNormalBuffer().back().x, 1.0f, 1e-6f);
}

TEST_F(ModelImporterTest, CornersThatShareAVertexGetFlatNormalsToo)
{
    TinyGltf gltf;
    std::vector<float> positions;
    for (int i = 0; i < 8; ++i)
    {
        positions.insert(positions.end(), {(i & 1) ? 1.f : -1.f, (i & 2) ? 1.f : -1.f, (i & 4) ? 1.f : -1.f});
    }
    gltf.AddFloats(positions, 3);
    gltf.AddIndices({0, 2, 3, 0, 3, 1, 4, 5, 7, 4, 7, 6, 0, 1, 5, 0, 5, 4,
                     2, 6, 7, 2, 7, 3, 0, 4, 6, 0, 6, 2, 1, 3, 7, 1, 7, 5});
    const ImportResult result = ImportAs(
        "cube.glb", gltf.Glb("\"scene\":0,\"scenes\":[{\"nodes\":[0]}],\"nodes\":[{\"mesh\":0}],\"meshes\":"
                             "[{\"primitives\":[{\"attributes\":{\"POSITION\":0},\"indices\":1}]}]"));
    const Mesh& mesh = OnlyMesh(result);
    ASSERT_EQ(mesh.GetNormalBuffer().size(), 24u);
    for (std::size_t i = 0; i < 24; ++i)
    {
        EXPECT_NEAR(mesh.GetNormalBuffer()[i].Dot(mesh.GetPositionBuffer()[i]), 1.0f, 1e-5f);
    }
}

TEST_F(ModelImporterTest, ALargeMeshIsSplitWithItsVerticesShared)
{
    const int size = 300;
    const ImportResult result = ImportAs("grid.obj", GridObj(size));
    EXPECT_EQ(result.report.fileMeshes, 1u);
    EXPECT_GT(result.report.meshes, 1u);
    EXPECT_EQ(result.report.triangles, 2u * (size - 1) * (size - 1));
    EXPECT_LT(result.report.vertices, std::uint64_t(size * size * 1.1));
    std::set<std::array<int, 6>> triangles;
    for (const Mesh* mesh : result.scene->GetMeshes())
    {
        EXPECT_LE(mesh->GetPositionBuffer().size(), 65'536u);
        EXPECT_EQ(mesh->GetNodes().size(), 1u);
        const auto& indices = mesh->GetIndices();
        for (std::size_t i = 0; i + 2 < indices.size(); i += 3)
        {
            std::array<int, 6> corners;
            for (std::size_t corner = 0; corner < 3; ++corner)
            {
                const Vector& position = mesh->GetPositionBuffer().at(indices[i + corner]);
                corners[2 * corner] = static_cast<int>(position.x);
                corners[2 * corner + 1] = static_cast<int>(position.y);
                EXPECT_EQ(mesh->GetNormalBuffer()[indices[i + corner]], Vector(0, 0, 1));
            }
            triangles.insert(corners);
        }
    }
    EXPECT_EQ(triangles.size(), result.report.triangles);
}

TEST_F(ModelImporterTest, InstancesShareOneMesh)
{
    const ImportResult result =
        ImportAs("instances.glb",
                 TriangleGlb("{\"children\":[1,2,3]},{\"mesh\":0},{\"mesh\":0,\"translation\":[5,0,0]},"
                             "{\"mesh\":0,\"scale\":[2,2,2],\"translation\":[0,5,0]}"));
    const Mesh& mesh = OnlyMesh(result);
    EXPECT_EQ(mesh.GetNodes().size(), 3u);
    EXPECT_EQ(mesh.GetRawMesh().use_count(), 1);
    EXPECT_EQ(result.report.drawnTriangles, 3u);
    EXPECT_EQ(result.report.boxMax, Vector(6, 7, 0));
}

TEST_F(ModelImporterTest, NodesKeepNamesTreeAndTransforms)
{
    const ImportResult result = ImportAs(
        "tree.glb", TriangleGlb("{\"name\":\"house\",\"children\":[1],\"translation\":[1,2,3]},"
                                "{\"name\":\"door\",\"mesh\":0,\"rotation\":[0,0,0.70710678,0.70710678]}"));
    Node* house = NodeNamed(result, "house");
    Node* door = NodeNamed(result, "door");
    ASSERT_TRUE(house && door);
    EXPECT_EQ(door->GetParent(), house);
    EXPECT_EQ(house->GetLocal().GetPosition(), Vector(1, 2, 3));
    Vector corner;
    corner.Multiply(door->GetGlobal(), Vector(1, 0, 0));
    EXPECT_TRUE(corner.IsEqual(Vector(1, 3, 3)));
}

TEST_F(ModelImporterTest, VertexColoursReachTheRawMesh)
{
    const ImportResult result =
        ImportAs("colours.obj", std::string("v 0 0 0 1 0 0\nv 1 0 0 0 1 0\nv 0 1 0 0 0 0.5\nf 1 2 3\n"));
    const Mesh& mesh = OnlyMesh(result);
    ASSERT_EQ(mesh.GetColorBuffer().size(), 3u);
    for (std::size_t i = 0; i < 3; ++i)
    {
        const Vector& position = mesh.GetPositionBuffer()[i];
        const Color& color = mesh.GetColorBuffer()[i];
        EXPECT_EQ(color.g, position.x);
        EXPECT_EQ(color.b, position.y * 0.5f);
        EXPECT_EQ(color.a, 1.0f);
    }
}

TEST_F(ModelImporterTest, ColoursAndOpacityComeFromTheMaterial)
{
    WriteFile(m_folder.Path("glass.mtl"), std::string("newmtl glass\nKd 0.2 0.4 0.6\nKe 0.1 0 0\nd 0.25\n"));
    const ImportResult result = ImportAs("glass.obj", "mtllib glass.mtl\nusemtl glass\n" + CubeObj());
    Material& material = OnlyMaterial(result);
    EXPECT_EQ(material.GetName(), "glass");
    EXPECT_TRUE(material.GetDiffuse().IsEqual(Color(0.2f, 0.4f, 0.6f, 0.25f)));
    EXPECT_TRUE(material.GetAmbient().IsEqual(Color(0.16f, 0.12f, 0.18f, 1.0f)));
    EXPECT_TRUE(material.IsTransparent());
    EXPECT_EQ(result.scene->GetAlphaMaterials().size(), 1u);
    EXPECT_EQ(result.scene->GetMaterial("glass"), &material);
}

TEST_F(ModelImporterTest, FullTransparencyOutsideGltfIsTakenForFullOpacity)
{
    WriteFile(m_folder.Path("m.mtl"), std::string("newmtl m\nKd 1 1 1\nd 0\n"));
    EXPECT_EQ(OnlyMaterial(ImportAs("m.obj", "mtllib m.mtl\nusemtl m\n" + CubeObj())).GetOpacity(), 1.0f);
}

TEST_F(ModelImporterTest, AlphaModesOfGltfAreRespected)
{
    struct
    {
        const char* mode;
        float opacity;
        bool isTransparent;
    } const cases[] = {
        {"OPAQUE", 1.0f, false},
        {"BLEND", 0.5f, true},
    };
    for (const auto& test : cases)
    {
        const ImportResult result =
            ImportAs("alpha.glb",
                     TriangleGlb("{\"mesh\":0}", "",
                                 std::string("{\"alphaMode\":\"") + test.mode +
                                     "\",\"pbrMetallicRoughness\":{\"baseColorFactor\":[1,0.5,0.25,0.5]}}"));
        EXPECT_EQ(OnlyMaterial(result).GetOpacity(), test.opacity) << test.mode;
        EXPECT_EQ(OnlyMaterial(result).IsTransparent(), test.isTransparent) << test.mode;
    }
}

void ExpectColor(const Color& color, float red, float green, float blue)
{
    EXPECT_NEAR(color.r, red, 1e-4f);
    EXPECT_NEAR(color.g, green, 1e-4f);
    EXPECT_NEAR(color.b, blue, 1e-4f);
}

TEST_F(ModelImporterTest, ColoursThatMeasureLightAreEncodedForTheScreen)
{
    const ImportResult result = ImportAs(
        "t.glb", TriangleGlb("{\"mesh\":0}", "",
                             "{\"emissiveFactor\":[0.0021404,0,1],\"pbrMetallicRoughness\":"
                             "{\"baseColorFactor\":[1,0.2140411,0.0021404,0.5],\"metallicFactor\":0}}"));
    const Material& material = OnlyMaterial(result);
    ExpectColor(material.GetDiffuse(), 1.0f, 0.5f, 0.0276537f);
    ExpectColor(material.GetEmissive(), 0.0276537f, 0.0f, 1.0f);
    WriteFile(m_folder.Path("m.mtl"), std::string("newmtl m\nKd 1 0.2140411 0.0021404\n"));
    const ImportResult other = ImportAs("m.obj", "mtllib m.mtl\nusemtl m\n" + CubeObj());
    ExpectColor(OnlyMaterial(other).GetDiffuse(), 1.0f, 0.2140411f, 0.0021404f);
}

TEST_F(ModelImporterTest, ColoursOfVerticesThatMeasureLightAreEncodedForTheScreen)
{
    TinyGltf gltf;
    gltf.AddFloats({0, 0, 0, 1, 0, 0, 0, 1, 0}, 3);
    gltf.AddFloats({1, 0.2140411f, 0.0021404f, 0.5f, 0, 0, 0, 1, 0.2140411f, 1, 1, 1}, 4);
    const ImportResult result =
        ImportAs("t.glb", gltf.Glb("\"scene\":0,\"scenes\":[{\"nodes\":[0]}],\"nodes\":[{\"mesh\":0}],\"meshes\":"
                                   "[{\"primitives\":[{\"attributes\":{\"POSITION\":0,\"COLOR_0\":1}}]}]"));
    ASSERT_EQ(result.scene->GetMeshes().size(), 1u);
    const auto& colors = (*result.scene->GetMeshes().begin())->GetColorBuffer();
    ASSERT_EQ(colors.size(), 3u);
    ExpectColor(colors[0], 1.0f, 0.5f, 0.0276537f);
    EXPECT_EQ(colors[0].a, 0.5f);
    ExpectColor(colors[2], 0.5f, 1.0f, 1.0f);
}

TEST_F(ModelImporterTest, TwoSidedMaterialsAreNotCulled)
{
    EXPECT_TRUE(OnlyMaterial(ImportAs("t.glb", TriangleGlb("{\"mesh\":0}", "", "{\"doubleSided\":true}")))
                    .GetFlags() &
                MaterialFlagNoCull);
    EXPECT_FALSE(OnlyMaterial(ImportAs("t.glb", TriangleGlb())).GetFlags() & MaterialFlagNoCull);
}

TEST_F(ModelImporterTest, UnlitMaterialsAreUnlit)
{
    const ImportResult result =
        ImportAs("t.glb", TriangleGlb("{\"mesh\":0}", ",\"extensionsUsed\":[\"KHR_materials_unlit\"]",
                                      "{\"extensions\":{\"KHR_materials_unlit\":{}}}"));
    EXPECT_TRUE(OnlyMaterial(result).GetFlags() & MaterialFlagUnlit);
    // Elsewhere the word for it means nothing.
    WriteFile(m_folder.Path("m.mtl"), std::string("newmtl m\nKd 1 1 1\nillum 0\n"));
    EXPECT_FALSE(OnlyMaterial(ImportAs("m.obj", "mtllib m.mtl\nusemtl m\n" + CubeObj())).GetFlags() &
                 MaterialFlagUnlit);
}

TEST_F(ModelImporterTest, TextureCoordinatesRunUpwards)
{
    // glTF counts v downwards.
    const ImportResult result = ImportAs("t.glb", TriangleGlb());
    const Mesh& mesh = OnlyMesh(result);
    ASSERT_EQ(mesh.GetTextureBuffer().size(), 3u);
    for (std::size_t i = 0; i < 3; ++i)
    {
        EXPECT_EQ(mesh.GetTextureBuffer()[i].u, mesh.GetPositionBuffer()[i].x);
        EXPECT_EQ(mesh.GetTextureBuffer()[i].v, 1.0f - mesh.GetPositionBuffer()[i].y);
    }
}

TEST_F(ModelImporterTest, TextureTransformsOfGltfAreBakedIntoTheCoordinates)
{
    const float offset[2] = {0.25f, -0.5f};
    const float scale[2] = {2.0f, 3.0f};
    for (float rotation : {0.0f, 0.7f, -2.0f})
    {
        TinyGltf gltf;
        const std::vector<float> coordinates = {0, 0, 1, 0, 0.25f, 1};
        gltf.AddFloats({0, 0, 0, 1, 0, 0, 0, 1, 0}, 3);
        gltf.AddFloats(coordinates, 2);
        const std::string transform =
            "\"extensions\":{\"KHR_texture_transform\":{\"offset\":[0.25,-0.5],\"scale\":[2,3],"
            "\"rotation\":" +
            std::to_string(rotation) + "}}";
        const ImportResult result = ImportAs(
            "t.glb",
            gltf.Glb(
                "\"extensionsUsed\":[\"KHR_texture_transform\"],\"scene\":0,\"scenes\":[{\"nodes\":[0]}],"
                "\"nodes\":[{\"mesh\":0}],\"images\":[{\"uri\":\"x.png\"}],\"textures\":[{\"source\":0}],"
                "\"materials\":[{\"pbrMetallicRoughness\":{\"baseColorTexture\":{\"index\":0," +
                transform +
                "}}}],\"meshes\":[{\"primitives\":[{\"attributes\":{\"POSITION\":0,\"TEXCOORD_0\":1},"
                "\"material\":0}]}]"));
        const Mesh& mesh = OnlyMesh(result);
        ASSERT_EQ(mesh.GetTextureBuffer().size(), 3u);
        for (std::size_t i = 0; i < 3; ++i)
        {
            // The corner is known by its place: x and y are 0 or 1.
            const Vector& position = mesh.GetPositionBuffer()[i];
            const std::size_t corner = position.x > 0.5f ? 1 : position.y > 0.5f ? 2 : 0;
            const float u = coordinates[2 * corner] * scale[0];
            const float v = coordinates[2 * corner + 1] * scale[1];
            // To the left in a picture with v downwards.
            const float c = std::cos(rotation);
            const float s = std::sin(rotation);
            EXPECT_NEAR(mesh.GetTextureBuffer()[i].u, offset[0] + c * u + s * v, 1e-5f) << rotation;
            EXPECT_NEAR(mesh.GetTextureBuffer()[i].v, 1.0f - (offset[1] - s * u + c * v), 1e-5f) << rotation;
        }
    }
}

TEST_F(ModelImporterTest, MirroredNodesShowTheirBackFaces)
{
    EXPECT_TRUE(OnlyMesh(ImportAs("t.glb", TriangleGlb("{\"mesh\":0,\"scale\":[-1,1,1]}"))).GetRawMesh());
    const ImportResult mirrored = ImportAs("t.glb", TriangleGlb("{\"mesh\":0,\"scale\":[-1,1,1]}"));
    EXPECT_TRUE((*mirrored.scene->GetMeshes().begin())->GetFlags() & MeshFlagNoCull);
}

TEST_F(ModelImporterTest, DirectionalLightsComeIn)
{
    const ImportResult result = ImportAs(
        "light.glb",
        TriangleGlb("{\"mesh\":0,\"children\":[1]},{\"rotation\":[0.70710678,0,0,0.70710678],\"extensions\":"
                    "{\"KHR_lights_punctual\":{\"light\":0}}}",
                    ",\"extensionsUsed\":[\"KHR_lights_punctual\"],\"extensions\":{\"KHR_lights_punctual\":{"
                    "\"lights\":"
                    "[{\"type\":\"directional\",\"color\":[1,0.5,0],\"intensity\":3}]}}"));
    ASSERT_EQ(result.lights.size(), 1u);
    EXPECT_EQ(result.scene->GetLights(), result.lights);
    LightNode& light = *result.lights[0];
    EXPECT_TRUE(light.GetColor().IsEqual(Color(0.7f, 0.35f, 0, 1)));
    // Down -Z, turned by a quarter about X.
    EXPECT_TRUE(light.GetGlobalDirection().IsEqual(Vector(0, 1, 0)));
    EXPECT_EQ(ModelImporter::AddDefaultLights(*result.scene), nullptr);
}

TEST_F(ModelImporterTest, CamerasOfGltfComeIn)
{
    const ImportResult result = ImportAs(
        "camera.glb",
        TriangleGlb("{\"mesh\":0,\"children\":[1,2]},{\"camera\":0,\"translation\":[0,0,4]},{\"camera\":1}",
                    ",\"cameras\":[{\"type\":\"perspective\",\"perspective\":{\"yfov\":0.8,\"aspectRatio\":2,"
                    "\"znear\":0.1,"
                    "\"zfar\":50}},{\"type\":\"orthographic\",\"orthographic\":{\"xmag\":3,\"ymag\":1.5,"
                    "\"znear\":0.1,"
                    "\"zfar\":9}}]"));
    ASSERT_EQ(result.cameras.size(), 2u);
    CameraNode& camera = *result.cameras[0];
    EXPECT_EQ(camera.GetGlobal().GetPosition(), Vector(0, 0, 4));
    EXPECT_EQ(camera.GetProjection(), CameraNode::Perspective);
    EXPECT_NEAR(camera.GetFOV(), 0.4f, 1e-5f);
    float nearDistance = 0;
    float farDistance = 0;
    camera.GetNearFar(nearDistance, farDistance);
    EXPECT_FLOAT_EQ(nearDistance, 0.1f);
    EXPECT_FLOAT_EQ(farDistance, 50.0f);
    EXPECT_NE(result.cameras[1]->GetProjection(), CameraNode::Perspective);
    EXPECT_NEAR(std::tan(result.cameras[1]->GetFOV()) * result.cameras[1]->GetDistanceToTarget(), 1.5f,
                1e-4f);
}

TEST_F(ModelImporterTest, PointsAreDrawnAsPointsAndLinesAsLines)
{
    const ImportResult points = ImportAs("p.obj", std::string("v 0 0 0\nv 1 2 3\np 1 2\n"));
    EXPECT_EQ(points.report.points, 2u);
    EXPECT_TRUE(OnlyMaterial(points).GetFlags() & MaterialFlagPoints);
    EXPECT_EQ(OnlyMesh(points).GetIndices().size(), 2u);
    EXPECT_EQ(points.report.boxMax, Vector(1, 2, 3));

    const ImportResult lines = ImportAs("l.obj", std::string("v 0 0 0\nv 1 2 3\nv 4 5 6\nl 1 2 3\n"));
    EXPECT_EQ(lines.report.lines, 2u);
    EXPECT_EQ(lines.report.skippedLines, 0u);
    EXPECT_EQ(lines.report.boxMax, Vector(4, 5, 6));
    EXPECT_TRUE(lines.scene->GetMeshes().empty());
    ASSERT_EQ(lines.scene->GetLines().size(), 1u);
    EXPECT_EQ((*lines.scene->GetLines().begin())->GetNodes().size(), 1u);
    EXPECT_TRUE(lines.report.warnings.empty());
}

TEST_F(ModelImporterTest, InProcessAndIsolatedGiveTheSameScene)
{
    ImportOptions inProcess;
    inProcess.isolate = false;
    WriteFile(m_folder.Path("grid.obj"), GridObj(280));
    for (const std::string& path : {m_folder.Path("grid.obj"), kTestModels + "IFC/AC14-FZK-Haus.ifc",
                                    kTestModels + "glTF2/BoxTextured-glTF-Binary/BoxTextured.glb"})
    {
        SCOPED_TRACE(path);
        const ImportResult a = ModelImporter::Import(path);
        const ImportResult b = ModelImporter::Import(path, inProcess);
        ASSERT_TRUE(a && b);
        ASSERT_EQ(a.nodes.size(), b.nodes.size());
        for (std::size_t i = 0; i < a.nodes.size(); ++i)
        {
            EXPECT_EQ(a.nodes[i].name, b.nodes[i].name);
            EXPECT_TRUE(a.nodes[i].node->GetLocal() == b.nodes[i].node->GetLocal());
        }
        // Sets of meshes are in the order of addresses; that of creation is the same for both.
        const auto inOrder = [](const ImportResult& result)
        {
            std::vector<Mesh*> meshes(result.scene->GetMeshes().begin(), result.scene->GetMeshes().end());
            std::sort(meshes.begin(), meshes.end(),
                      [](Mesh* x, Mesh* y) { return x->GetSortID() < y->GetSortID(); });
            return meshes;
        };
        const std::vector<Mesh*> left = inOrder(a);
        const std::vector<Mesh*> right = inOrder(b);
        ASSERT_EQ(left.size(), right.size());
        for (std::size_t i = 0; i < left.size(); ++i)
        {
            EXPECT_EQ(left[i]->GetIndices(), right[i]->GetIndices());
            EXPECT_TRUE(left[i]->GetPositionBuffer() == right[i]->GetPositionBuffer());
            EXPECT_TRUE(left[i]->GetNormalBuffer() == right[i]->GetNormalBuffer());
            EXPECT_EQ(left[i]->GetMaterial()->GetName(), right[i]->GetMaterial()->GetName());
        }
    }
}

TEST_F(ModelImporterTest, ProgressRisesToAHundred)
{
    for (bool isolate : {true, false})
    {
        std::vector<float> percents;
        ImportOptions options;
        options.isolate = isolate;
        options.progress = [&percents](float percent)
        {
            percents.push_back(percent);
            return true;
        };
        ImportAs("grid.obj", GridObj(100), options);
        ASSERT_FALSE(percents.empty());
        EXPECT_TRUE(std::is_sorted(percents.begin(), percents.end()));
        EXPECT_GE(percents.front(), 0.0f);
        EXPECT_EQ(percents.back(), 100.0f);
    }
}

TEST_F(ModelImporterTest, ProgressMayCancel)
{
    WriteFile(m_folder.Path("grid.obj"), GridObj(100));
    for (bool isolate : {true, false})
    {
        for (float limit : {0.0f, 50.0f, 80.0f})
        {
            ImportOptions options;
            options.isolate = isolate;
            options.progress = [limit](float percent) { return percent < limit; };
            const ImportResult result = ModelImporter::Import(m_folder.Path("grid.obj"), options);
            EXPECT_FALSE(result);
            EXPECT_EQ(result.status, ImportStatus::Cancelled);
            EXPECT_FALSE(result.error.reason.empty());
        }
    }
}

TEST_F(ModelImporterTest, WhatTheCallbackThrowsDoesNotGetOut)
{
    WriteFile(m_folder.Path("cube.obj"), CubeObj());
    for (bool isolate : {true, false})
    {
        ImportOptions options;
        options.isolate = isolate;
        options.progress = [](float) -> bool { throw 7; };
        EXPECT_EQ(ModelImporter::Import(m_folder.Path("cube.obj"), options).status, ImportStatus::Failed);
        options.progress = [](float) -> bool { throw std::runtime_error("from the host"); };
        const ImportResult result = ModelImporter::Import(m_folder.Path("cube.obj"), options);
        EXPECT_FALSE(result);
        EXPECT_NE(result.error.Line().find("from the host"), std::string::npos);
    }
}

TEST_F(ModelImporterTest, SeveralThreadsMayImportAtOnce)
{
    WriteFile(m_folder.Path("grid.obj"), GridObj(60));
    ImportOptions options;
    // A process of its own is forked, which may find the sanitizer's memory locked by another thread.
    options.isolate = !isSanitized;
    std::vector<std::thread> threads;
    std::vector<std::uint64_t> triangles(4);
    for (std::size_t i = 0; i < triangles.size(); ++i)
    {
        threads.emplace_back(
            [this, i, &triangles, &options]
            {
                for (int round = 0; round < 5; ++round)
                {
                    triangles[i] += ModelImporter::Import(m_folder.Path("grid.obj"), options).report.triangles;
                }
            });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    for (std::uint64_t count : triangles)
    {
        EXPECT_EQ(count, 5u * 2 * 59 * 59);
    }
}

TEST_F(ModelImporterTest, FormatsAreListedWithTheirExtensions)
{
    std::set<std::string> extensions;
    for (const ImportFormat& format : ModelImporter::ListFormats())
    {
        EXPECT_FALSE(format.name.empty());
        EXPECT_FALSE(format.extensions.empty()) << format.name;
        extensions.insert(format.extensions.begin(), format.extensions.end());
    }
    for (const char* expected : {"obj", "gltf", "glb", "ifc", "fbx", "dae", "stl", "ply", "3ds"})
    {
        EXPECT_EQ(extensions.count(expected), 1u) << expected;
    }
}

TEST(DefaultLights, AreAddedWhereThereAreNoneAndFollowTheView)
{
    Scene scene;
    LightNode* light = ModelImporter::AddDefaultLights(scene, 0.25f);
    ASSERT_NE(light, nullptr);
    EXPECT_EQ(scene.GetLights().size(), 1u);
    EXPECT_EQ(light->GetParent(), scene.GetCameraNode());
    EXPECT_TRUE(light->GetColor().IsEqual(Color(0.75f, 0.75f, 0.75f, 1)));
    EXPECT_TRUE(light->HasAmbient());

    scene.UpdateGraph(100, 100);
    const Vector ahead = light->GetGlobalDirection();
    EXPECT_GT(ahead.x, 0.0f) << "from the left";
    EXPECT_LT(ahead.y, 0.0f) << "from above";
    EXPECT_LT(ahead.z, -0.8f) << "away from the viewer";

    Transform turned;
    turned.EyeLookUp(Vector(5, 0, 0), Vector(0, 0, 0), Vector(0, 1, 0));
    scene.GetCameraNode()->SetGlobal(turned);
    scene.UpdateGraph(100, 100);
    EXPECT_TRUE(light->GetGlobalDirection().IsEqual(Vector(ahead.z, ahead.y, -ahead.x)));

    EXPECT_EQ(ModelImporter::AddDefaultLights(scene), nullptr);
    EXPECT_EQ(scene.GetLights().size(), 1u);
}

TEST(ImportError, IsOneLineOfPrintableText)
{
    ImportError error;
    error.file = "a\nb\x1b[31m.obj";
    error.reason = "bad\ttext \xff\xfe and Grün \xc2\x85.\n";
    error.remedy = "Try again.";
    EXPECT_EQ(error.Line(), "a b [31m.obj: cannot be imported: bad text ?? and Grün. Try again.");
    error.reason = std::string(100'000, 'x');
    EXPECT_LT(error.Line().size(), 1500u);
}

} // namespace
