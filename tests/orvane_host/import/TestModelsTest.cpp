#include "orvane_host/import/ModelImporter.h"

#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"
#include "tests/orvane_host/import/TinyModels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

using namespace OV;
using namespace OV::Host;
using namespace OV::Test;

namespace
{

namespace fs = std::filesystem;

/// Damaged copies are made of files up to this size.
constexpr std::uintmax_t kMaxDamagedBytes = 30'000;
constexpr std::uint32_t kCpuSeconds = 60;
constexpr std::uint32_t kCpuSecondsDamaged = 2;

using Files = std::map<std::string, std::vector<std::string>>;

Files FindFiles()
{
    Files result;
    std::error_code error;
    for (const auto& entry : fs::recursive_directory_iterator(kTestModels, error))
    {
        if (entry.is_regular_file())
        {
            const std::string relative = fs::relative(entry.path(), kTestModels).string();
            result[relative.substr(0, relative.find('/'))].push_back(entry.path().string());
        }
    }
    for (auto& folder : result)
    {
        std::sort(folder.second.begin(), folder.second.end());
    }
    return result;
}

/// Every regular file of the collection, by its top folder.
const Files& FilesByFolder()
{
    static const Files files = FindFiles();
    return files;
}

std::vector<std::string> Folders()
{
    std::vector<std::string> names;
    for (const auto& folder : FilesByFolder())
    {
        names.push_back(folder.first);
    }
    return names;
}

ImportOptions Bounded(std::uint32_t cpuSeconds)
{
    ImportOptions options;
    options.limits.cpuSeconds = cpuSeconds;
    options.limits.wallSeconds = 240;
    options.limits.memoryBytes = std::uint64_t(1) << 31;
    return options;
}

void ExpectSoundMesh(const Mesh& mesh)
{
    const std::size_t vertices = mesh.GetPositionBuffer().size();
    EXPECT_GT(vertices, 0u);
    EXPECT_LE(vertices, 65'536u);
    ASSERT_NE(const_cast<Mesh&>(mesh).GetMaterial(), nullptr);
    EXPECT_FALSE(mesh.GetNodes().empty());
    const bool isPoints = const_cast<Mesh&>(mesh).GetMaterial()->GetFlags() & MaterialFlagPoints;
    EXPECT_EQ(mesh.GetNormalBuffer().size(), isPoints ? 0 : vertices);
    EXPECT_TRUE(mesh.GetTextureBuffer().empty() || mesh.GetTextureBuffer().size() == vertices);
    EXPECT_TRUE(mesh.GetColorBuffer().empty() || mesh.GetColorBuffer().size() == vertices);
    EXPECT_FALSE(mesh.GetIndices().empty());
    for (unsigned short index : mesh.GetIndices())
    {
        ASSERT_LT(index, vertices);
    }
    for (const Vector& normal : mesh.GetNormalBuffer())
    {
        ASSERT_TRUE(std::isfinite(normal.MagnitudeSquared()) && normal.MagnitudeSquared() > 0.0f);
    }
}

void ExpectSoundScene(const ImportResult& result)
{
    EXPECT_EQ(result.scene->GetMeshes().size(), result.report.meshes);
    EXPECT_EQ(result.nodes.size(), result.report.nodes);
    for (const Mesh* mesh : result.scene->GetMeshes())
    {
        ExpectSoundMesh(*mesh);
    }
    if (result.report.hasBox)
    {
        for (unsigned axis = 0; axis < 3; ++axis)
        {
            EXPECT_TRUE(std::isfinite(result.report.boxMin[axis]));
            EXPECT_LE(result.report.boxMin[axis], result.report.boxMax[axis]);
        }
    }
    result.scene->UpdateGraph(640, 480);
}

/// Imports a file, whatever it is: a sound scene comes of it, or a clear error.
ImportStatus Survive(const std::string& path, std::uint32_t cpuSeconds)
{
    SCOPED_TRACE(path);
    const ImportResult result = ModelImporter::Import(path, Bounded(cpuSeconds));
    if (result)
    {
        ExpectSoundScene(result);
    }
    else
    {
        EXPECT_FALSE(result.error.reason.empty());
        EXPECT_FALSE(result.error.remedy.empty());
        EXPECT_EQ(result.error.Line().find('\n'), std::string::npos);
        EXPECT_NE(result.status, ImportStatus::Failed);
    }
    return result.status;
}

class TestModels : public testing::TestWithParam<std::string>
{
};

TEST_P(TestModels, EveryFileGivesASceneOrAClearError)
{
    for (const std::string& path : FilesByFolder().at(GetParam()))
    {
        const ImportStatus status = Survive(path, kCpuSeconds);
        if (kNewEndsTheProcess && fs::path(path).filename() == "OutOfMemory.off")
        {
            continue;
        }
        // Whole files neither bring a parser down nor keep it busy; that is for damaged ones.
        EXPECT_NE(status, ImportStatus::Crashed) << path;
        EXPECT_NE(status, ImportStatus::TimedOut) << path;
    }
}

TEST_P(TestModels, EverySmallFileMayBeDamaged)
{
    const TemporaryFolder folder;
    for (const std::string& path : FilesByFolder().at(GetParam()))
    {
        if (fs::file_size(path) > kMaxDamagedBytes || fs::file_size(path) == 0)
        {
            continue;
        }
        std::ifstream stream(path, std::ios::binary);
        const std::string whole((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
        const std::string copy = folder.Path(fs::path(path).filename().string());
        for (int share : {1, 2, 3})
        {
            WriteFile(copy, whole.substr(0, whole.size() * static_cast<std::size_t>(share) / 4));
            Survive(copy, kCpuSecondsDamaged);
            std::string flipped = whole;
            const std::size_t at = whole.size() * static_cast<std::size_t>(share) / 4;
            flipped[at] = static_cast<char>(flipped[at] ^ 0xFF);
            WriteFile(copy, flipped);
            Survive(copy, kCpuSecondsDamaged);
        }
        fs::remove(copy);
    }
}

std::string TestNameOf(const testing::TestParamInfo<std::string>& info)
{
    std::string name;
    for (char c : info.param)
    {
        name += std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(Collection, TestModels, testing::ValuesIn(Folders()), TestNameOf);

TEST(TestModelsCollection, IsThere)
{
    std::size_t files = 0;
    for (const auto& folder : FilesByFolder())
    {
        files += folder.second.size();
    }
    EXPECT_GT(files, 500u) << "Debian's package assimp-testmodels is needed";
}

struct KnownModel
{
    const char* path;
    std::uint64_t nodes;
    std::uint64_t meshes;
    std::uint64_t triangles;
    std::uint64_t fileTextures;
    std::uint64_t embeddedTextures;
};

const KnownModel kKnown[] = {
    {"IFC/AC14-FZK-Haus.ifc", 216, 73, 31'293, 0, 0},
    {"OBJ/spider.obj", 20, 19, 1'368, 4, 0},
    {"glTF2/BoxTextured-glTF/BoxTextured.gltf", 2, 1, 12, 1, 0},
    {"glTF2/BoxTextured-glTF-Binary/BoxTextured.glb", 2, 1, 12, 0, 1},
    {"glTF2/BoxTextured-glTF-Embedded/BoxTextured.gltf", 2, 1, 12, 0, 1},
    {"glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb", 83, 43, 90'256, 0, 0},
    {"Collada/duck.zae", 4, 1, 4'212, 0, 1},
    {"3DS/cube_with_diffuse_texture.3DS", 2, 1, 12, 1, 0},
    {"RAW/WithColor.raw", 2, 2, 4, 0, 0},
    {"BLEND/BlenderDefault_276.blend", 4, 1, 12, 0, 0},
};

/// Of hosts that draw no backs fewer meshes are divided.
struct KnownWithoutBacks
{
    const char* path;
    std::uint64_t meshes;
    std::uint64_t triangles;
};

const KnownWithoutBacks kKnownWithoutBacks[] = {
    {"IFC/AC14-FZK-Haus.ifc", 67, 31'235},
    {"glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb", 34, 75'730},
};

TEST(TestModelsCollection, KnownModelsAreDividedLessWhereNoBacksShow)
{
    ImportOptions options;
    options.showBacks = false;
    for (const KnownWithoutBacks& known : kKnownWithoutBacks)
    {
        SCOPED_TRACE(known.path);
        const ImportResult result = ModelImporter::Import(kTestModels + known.path, options);
        ASSERT_TRUE(result) << result.error.Line();
        EXPECT_EQ(result.report.meshes, known.meshes);
        EXPECT_EQ(result.report.triangles, known.triangles);
    }
}

TEST(TestModelsCollection, KnownModelsComeInWhole)
{
    for (const KnownModel& known : kKnown)
    {
        SCOPED_TRACE(known.path);
        const ImportResult result = ModelImporter::Import(kTestModels + known.path);
        ASSERT_TRUE(result) << result.error.Line();
        EXPECT_EQ(result.report.nodes, known.nodes);
        EXPECT_EQ(result.report.meshes, known.meshes);
        EXPECT_EQ(result.report.triangles, known.triangles);
        EXPECT_EQ(result.report.fileTextures, known.fileTextures);
        EXPECT_EQ(result.report.embeddedTextures, known.embeddedTextures);
        EXPECT_EQ(result.report.droppedTriangles, 0u);
    }
}

TEST(TestModelsCollection, FacesOfACubeAreFlatWhereTheParserSmoothsAll)
{
    const ImportResult result = ModelImporter::Import(kTestModels + std::string("BLEND/BlenderDefault_276.blend"));
    ASSERT_TRUE(result) << result.error.Line();
    for (const Mesh* mesh : result.scene->GetMeshes())
    {
        for (const Vector& normal : mesh->GetNormalBuffer())
        {
            const float along = std::max({std::abs(normal.x), std::abs(normal.y), std::abs(normal.z)});
            EXPECT_NEAR(along, 1.0f, 1e-4f);
        }
    }
}

/// The maps of a material of the collection, by its name there.
struct KnownMaps
{
    const char* path;
    const char* material;
    const char* normalMap;
    const char* opacityMap;
    float straight;
    float gloss;
};

const KnownMaps kKnownMaps[] = {
    // A clear coat over a ribbed ground, in all ways that the two can be told apart.
    {"glTF2/ClearCoat-glTF/ClearCoatTest.gltf", "BaseNorm_Base", "RibsNormal.png", "", 0.04f * 0.56f * 0.56f,
     0.56f},
    {"glTF2/ClearCoat-glTF/ClearCoatTest.gltf", "BaseNorm_Coated", "RibsNormal.png", "",
     0.04f * 0.56f * 0.56f, 0.56f},
    {"glTF2/ClearCoat-glTF/ClearCoatTest.gltf", "Simple_Coating", "", "", 0.04f * 0.97f * 0.97f, 0.97f},
    {"glTF2/ClearCoat-glTF/ClearCoatTest.gltf", "CoatNorm_Coating", "PlasticWrap_normals.jpg", "",
     0.04f * 0.97f * 0.97f, 0.97f},
    {"glTF2/ClearCoat-glTF/ClearCoatTest.gltf", "SharedNorm_Coating", "RibsNormal.png", "",
     0.04f * 0.97f * 0.97f, 0.97f},
    {"FBX/phong_cube.fbx", "phong1", "", "", 0.25f * (0.299f * 0.25f + 0.587f * 0.5f + 0.114f * 0.75f), 1.0f},
    {"Collada/duck.dae", "blinn3", "", "", 0.0f, 0.0f},
};

const Material* MaterialNamed(const ImportResult& result, const std::string& name)
{
    for (const auto* list : {&result.scene->GetOptimizedMaterials(), &result.scene->GetAlphaMaterials()})
    {
        for (const Material* material : *list)
        {
            if (material->GetName() == name)
            {
                return material;
            }
        }
    }
    return nullptr;
}

TEST(TestModelsCollection, KnownMapsComeIn)
{
    for (const KnownMaps& known : kKnownMaps)
    {
        SCOPED_TRACE(std::string(known.path) + " " + known.material);
        const ImportResult result = ModelImporter::Import(kTestModels + known.path);
        ASSERT_TRUE(result) << result.error.Line();
        const Material* material = MaterialNamed(result, known.material);
        ASSERT_NE(material, nullptr);
        EXPECT_EQ(material->normalMapName, known.normalMap);
        EXPECT_EQ(material->opacityMapName, known.opacityMap);
        EXPECT_NEAR(material->reflectionFactors[0], known.straight, 1e-5f);
        EXPECT_NEAR(material->reflectionFactors[2], known.gloss, 1e-5f);
    }
}

TEST(TestModelsCollection, TheClearCoatModelHasItsNormalMaps)
{
    const ImportResult result =
        ModelImporter::Import(kTestModels + "glTF2/ClearCoat-glTF/ClearCoatTest.gltf");
    ASSERT_TRUE(result) << result.error.Line();
    // Six materials have one, two of which are alike but for their names.
    EXPECT_EQ(result.report.normalMaps, 5u);
    EXPECT_EQ(result.report.opacityMaps, 0u);
    EXPECT_EQ(result.report.missingTextures, 0u);
}

TEST(TestModelsCollection, MapsWhosePicturesAreNotThereAreTold)
{
    const ImportResult result = ModelImporter::Import(kTestModels + "FBX/maxPbrMaterial_metalRough.fbx");
    ASSERT_TRUE(result) << result.error.Line();
    ASSERT_EQ(result.report.warnings.size(), 3u);
    const char* const words[] = {"its picture: 'Textures\\albedo.png'",
                                 "its normal map: 'Textures\\normal.png'",
                                 "its opacity map: 'Textures\\opacity.png'"};
    for (int i = 0; i < 3; ++i)
    {
        EXPECT_NE(result.report.warnings[std::size_t(i)].find(words[i]), std::string::npos)
            << result.report.warnings[std::size_t(i)];
    }
}

struct UprightModel
{
    const char* path;
    const char* what;
    Vector boxMin;
    Vector boxMax;
    double metresPerUnit;
};

TEST(TestModelsCollection, ModelsStandUpright)
{
    const UprightModel models[] = {
        // The ground reaches a metre down, the ridge 6.3 m up.
        {"IFC/AC14-FZK-Haus.ifc", "a house", Vector(-3, -1, -13), Vector(15, 6.31769f, 3), 1.0},
        {"Collada/duck.dae", "a duck", Vector(-0.692985f, 0.0992937f, -0.613282f),
         Vector(0.961799f, 1.6397f, 0.539252f), 1.0},
        // 30 high on its build plate, which is 10 by 20.
        {"3MF/box.3mf", "a box", Vector(0, 0, -20), Vector(10, 30, 0), 0.0},
    };
    for (const UprightModel& model : models)
    {
        SCOPED_TRACE(model.what);
        const ImportResult result = ModelImporter::Import(kTestModels + model.path);
        ASSERT_TRUE(result);
        for (unsigned axis = 0; axis < 3; ++axis)
        {
            EXPECT_NEAR(result.report.boxMin[axis], model.boxMin[axis], 1e-4f);
            EXPECT_NEAR(result.report.boxMax[axis], model.boxMax[axis], 1e-4f);
        }
        EXPECT_EQ(result.report.metresPerUnit, model.metresPerUnit);
    }
}

TEST(TestModelsCollection, BlenderScenesAreTurnedFromTheirZUp)
{
    // The default camera stands 5.34 above the ground, in front and to the right.
    const ImportResult result = ModelImporter::Import(kTestModels + "BLEND/BlenderDefault_276.blend");
    ASSERT_TRUE(result);
    for (const ImportedNode& node : result.nodes)
    {
        if (node.name == "Camera")
        {
            const Vector position = node.node->GetGlobal().GetPosition();
            EXPECT_NEAR(position.x, 7.48f, 0.01f);
            EXPECT_NEAR(position.y, 5.34f, 0.01f);
            EXPECT_NEAR(position.z, 6.51f, 0.01f);
        }
    }
    EXPECT_EQ(result.cameras.size(), 1u);
    EXPECT_EQ(result.lights.size(), 1u);
}

TEST(TestModelsCollection, ColoursOfVerticesAreThoseOfTheFile)
{
    const auto colorsOf = [](const char* path)
    {
        const ImportResult result = ModelImporter::Import(std::string(kTestModels) + path);
        EXPECT_TRUE(result) << path;
        std::vector<Color> colors;
        for (const Mesh* const mesh : result.scene->EachMesh())
        {
            const std::vector<Color>& own = mesh->GetRawMesh()->colors;
            colors.insert(colors.end(), own.begin(), own.end());
        }
        return colors;
    };
    EXPECT_TRUE(colorsOf("AMF/test1.amf").empty()) << "it gives none";
    const std::vector<Color> white = colorsOf("BLEND/BlenderDefault_250.blend");
    ASSERT_FALSE(white.empty());
    EXPECT_TRUE(std::all_of(white.begin(), white.end(), [](const Color& color) { return color.IsEqual(Color(1, 1, 1, 1)); }));
    const std::vector<Color> red = colorsOf("AMF/test3.amf");
    ASSERT_FALSE(red.empty());
    EXPECT_TRUE(red.front().IsEqual(Color(0.6f, 0.1f, 0.1f, 1)));
}

TEST(TestModelsCollection, UnitsOfFbxAreTold)
{
    EXPECT_FLOAT_EQ(ModelImporter::Import(kTestModels + "FBX/global_settings.fbx").report.metresPerUnit, 5.0);
    EXPECT_FLOAT_EQ(ModelImporter::Import(kTestModels + "FBX/phong_cube.fbx").report.metresPerUnit, 0.01);
}

} // namespace
