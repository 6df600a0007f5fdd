#include "tests/orvane_host/import/ImportFixture.h"
#include "tests/orvane_host/import/TinyPictures.h"

#include "orvane/imaging/Image.h"
#include "orvane/imaging/ImageCodec.h"
#include "orvane/math/Base64.h"
#include "orvane/math/TextureCoordinate.h"
#include "orvane/scene/Mesh.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

using namespace OV;
using namespace OV::Host;
using namespace OV::Test;

namespace
{

const Colour kGrey = {90, 90, 90, 255};

Bytes Normals()
{
    // Left half leans left, right half leans right.
    return Painted(8, 8,
                   [](int x, int) {
                       return x < 4 ? Colour{51, 128, 230, 255} : Colour{204, 128, 230, 255};
                   });
}

std::string Folder(const Material& material)
{
    return std::filesystem::path(material.texturePath.path).string();
}

/// What the engine's loader would make of a map of a material.
std::unique_ptr<Image> Loaded(const Material& material, const std::string& name)
{
    return std::unique_ptr<Image>(ImageCodec::LoadImageData(material.texturePath, name, false, false));
}

Colour FirstPixel(const Material& material, const std::string& name)
{
    const std::unique_ptr<Image> image = Loaded(material, name);
    if (!image)
    {
        ADD_FAILURE() << name;
        return {};
    }
    return {image->data[0], image->data[1], image->data[2], image->data[3]};
}

std::string DataUri(const Bytes& picture)
{
    std::vector<char> text;
    Base64::Encode(std::vector<char>(picture.begin(), picture.end()), text);
    return "{\"uri\":\"data:image/png;base64," + std::string(text.begin(), text.end()) + "\"}";
}

class ModelMapTest : public ImportFixture
{
protected:
    /// A triangle with texture coordinates.
    ImportResult ImportObj(const std::string& material, const ImportOptions& options = ImportOptions())
    {
        WriteFile(m_folder.Path("m.mtl"), "newmtl m\n" + material);
        return ImportAs("m.obj",
                        "mtllib m.mtl\nusemtl m\nv 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nvt 1 0\nvt 0 1\n"
                        "f 1/1 2/2 3/3\n",
                        options);
    }

    /// A triangle with textures 0 and so on of these images.
    ImportResult ImportGltf(const std::vector<std::string>& images, const std::string& material)
    {
        std::string list;
        std::string textures;
        for (std::size_t i = 0; i < images.size(); ++i)
        {
            list += (i ? "," : "") + images[i];
            textures += std::string(i ? "," : "") + "{\"source\":" + std::to_string(i) + "}";
        }
        return ImportAs("m.glb",
                        TriangleGlb("{\"mesh\":0}",
                                    ",\"extensionsUsed\":[\"KHR_texture_transform\",\"KHR_materials_unlit\"],"
                                    "\"images\":[" +
                                        list + "],\"textures\":[" + textures + "]",
                                    "{" + material + "}"));
    }

    void ExpectOneWarning(const ImportResult& result, const std::string& words)
    {
        EXPECT_EQ(result.report.missingTextures, 1u);
        ASSERT_EQ(result.report.warnings.size(), 1u);
        EXPECT_NE(result.report.warnings[0].find(words), std::string::npos) << result.report.warnings[0];
    }
};

TEST_F(ModelMapTest, MapsOfAMaterialFileAreNamedForTheLoader)
{
    WriteFile(m_folder.Path("wall.png"), Plain(kGrey));
    WriteFile(m_folder.Path("Normals.PNG"), Normals());
    WriteFile(m_folder.Path("holes.png"), Plain(kGrey));
    const ImportResult result = ImportObj("map_Kd wall.png\nnorm normals.png\nmap_d holes.png\n");
    const Material& material = OnlyMaterial(result);
    EXPECT_EQ(Folder(material), m_folder.Path(""));
    EXPECT_EQ(material.textureName, "wall.png");
    EXPECT_EQ(material.normalMapName, "Normals.PNG");
    EXPECT_EQ(material.opacityMapName, "holes.png");
    EXPECT_EQ(result.report.fileTextures, 3u);
    EXPECT_EQ(result.report.normalMaps, 1u);
    EXPECT_EQ(result.report.opacityMaps, 1u);
    EXPECT_TRUE(result.report.warnings.empty());
}

TEST_F(ModelMapTest, MapsInSeveralFoldersAreNamedFromTheFolderThatTheyShare)
{
    for (const char* folder : {"textures", "textures/fine", "normals"})
    {
        std::filesystem::create_directory(m_folder.Path(folder));
    }
    WriteFile(m_folder.Path("textures/wall.png"), Plain({1, 0, 0, 255}));
    WriteFile(m_folder.Path("textures/fine/holes.png"), Plain({2, 0, 0, 255}));
    WriteFile(m_folder.Path("normals/wall.png"), Normals());

    const ImportResult below = ImportObj("map_Kd textures/wall.png\nmap_d textures/fine/holes.png\n");
    EXPECT_EQ(Folder(OnlyMaterial(below)), m_folder.Path("textures/"));
    EXPECT_EQ(OnlyMaterial(below).textureName, "wall.png");
    EXPECT_EQ(OnlyMaterial(below).opacityMapName, "fine/holes.png");

    const ImportResult apart =
        ImportObj("map_Kd textures/wall.png\nnorm normals/wall.png\nmap_d textures/fine/holes.png\n");
    const Material& material = OnlyMaterial(apart);
    EXPECT_EQ(Folder(material), m_folder.Path(""));
    EXPECT_EQ(material.textureName, "textures/wall.png");
    EXPECT_EQ(material.normalMapName, "normals/wall.png");
    EXPECT_EQ(material.opacityMapName, "textures/fine/holes.png");
    EXPECT_EQ(FirstPixel(material, material.textureName)[0], 1);
    EXPECT_EQ(FirstPixel(material, material.normalMapName)[2], 230);
    EXPECT_EQ(FirstPixel(material, material.opacityMapName)[0], 2);
}

TEST_F(ModelMapTest, ThePictureOfABumpDecidesWhetherItHoldsNormals)
{
    WriteFile(m_folder.Path("normals.png"), Normals());
    WriteFile(m_folder.Path("heights.png"), Plain(kGrey));
    for (const char* word : {"bump", "map_bump", "map_Bump -bm 0.5", "norm", "map_Kn"})
    {
        SCOPED_TRACE(word);
        const ImportResult normals = ImportObj(std::string(word) + " normals.png\n");
        EXPECT_EQ(OnlyMaterial(normals).normalMapName, "normals.png");
        EXPECT_TRUE(normals.report.warnings.empty());
        const ImportResult heights = ImportObj(std::string(word) + " heights.png\n");
        EXPECT_TRUE(OnlyMaterial(heights).normalMapName.empty());
        EXPECT_EQ(heights.report.normalMaps, 0u);
        ExpectOneWarning(heights, "heights");
    }
}

TEST_F(ModelMapTest, NormalsComeBeforeABump)
{
    WriteFile(m_folder.Path("normals.png"), Normals());
    WriteFile(m_folder.Path("heights.png"), Plain(kGrey));
    const ImportResult result = ImportObj("bump heights.png\nnorm normals.png\n");
    EXPECT_EQ(OnlyMaterial(result).normalMapName, "normals.png");
    EXPECT_TRUE(result.report.warnings.empty());
}

TEST_F(ModelMapTest, GltfIsBelievedWhatItCallsNormals)
{
    WriteFile(m_folder.Path("n.png"), Plain({40, 200, 130, 255}));
    const ImportResult result = ImportGltf({"{\"uri\":\"n.png\"}"}, "\"normalTexture\":{\"index\":0}");
    EXPECT_EQ(OnlyMaterial(result).normalMapName, "n.png");
    EXPECT_TRUE(OnlyMaterial(result).textureName.empty());
    EXPECT_EQ(Folder(OnlyMaterial(result)), m_folder.Path(""));
    EXPECT_TRUE(result.report.warnings.empty());
}

TEST_F(ModelMapTest, MapsThatCannotBeShownAreToldAndLeftOut)
{
    PngFile deep;
    deep.width = 4;
    deep.height = 4;
    deep.bitDepth = 16;
    deep.FillWithNoise();
    WriteFile(m_folder.Path("deep.png"), deep.Write());
    PngFile interlaced;
    interlaced.width = 4;
    interlaced.height = 4;
    interlaced.interlaced = true;
    interlaced.FillWithNoise();
    WriteFile(m_folder.Path("interlaced.png"), interlaced.Write());
    Bytes huge = Normals();
    for (std::size_t i : {18u, 19u, 22u, 23u})
    {
        huge[i] = 0xFF;
    }
    RepairChecksums(huge);
    WriteFile(m_folder.Path("huge.png"), huge);
    WriteFile(m_folder.Path("text.png"), std::string("this is no picture"));
    WriteFile(m_folder.Path("empty.png"), std::string());
    ASSERT_EQ(mkfifo(m_folder.Path("pipe.png").c_str(), 0600), 0);
    for (const char* name :
         {"deep.png", "interlaced.png", "huge.png", "text.png", "empty.png", "pipe.png", "missing.png"})
    {
        for (const char* word : {"norm", "map_d"})
        {
            SCOPED_TRACE(std::string(word) + " " + name);
            const ImportResult result = ImportObj(std::string(word) + " " + name + "\n");
            EXPECT_TRUE(OnlyMaterial(result).normalMapName.empty());
            EXPECT_TRUE(OnlyMaterial(result).opacityMapName.empty());
            EXPECT_EQ(result.report.fileTextures, 0u);
            ExpectOneWarning(result, name);
            ExpectOneWarning(result, *word == 'n' ? "normal map" : "opacity map");
        }
    }
}

TEST_F(ModelMapTest, AMapThatIsLeftOutLeavesTheOthersThere)
{
    WriteFile(m_folder.Path("wall.png"), Plain(kGrey));
    WriteFile(m_folder.Path("holes.png"), Plain(kGrey));
    const ImportResult result = ImportObj("map_Kd wall.png\nnorm missing.png\nmap_d holes.png\n");
    EXPECT_EQ(OnlyMaterial(result).textureName, "wall.png");
    EXPECT_EQ(OnlyMaterial(result).opacityMapName, "holes.png");
    ExpectOneWarning(result, "missing.png");
}

TEST_F(ModelMapTest, OpacityInAlphaIsPutIntoAGreyPicture)
{
    WriteFile(m_folder.Path("wall.png"), Plain(kGrey));
    WriteFile(m_folder.Path("holes.png"), Plain({200, 10, 20, 77}));
    WriteFile(m_folder.Path("opaque.png"), Plain({200, 10, 20, 255}));
    const ImportResult alpha = ImportObj("map_Kd wall.png\nmap_d holes.png\n");
    const Material& material = OnlyMaterial(alpha);
    EXPECT_EQ(FirstPixel(material, material.opacityMapName), (Colour{77, 77, 77, 255}));
    EXPECT_EQ(FirstPixel(material, material.textureName), kGrey);
    EXPECT_EQ(alpha.report.fileTextures, 2u);
    // An alpha that says nothing leaves the red.
    const ImportResult opaque = ImportObj("map_d opaque.png\n");
    EXPECT_EQ(OnlyMaterial(opaque).opacityMapName, "opaque.png");
}

TEST_F(ModelMapTest, ThePictureOfTheColoursIsNoOpacityMapAsWell)
{
    WriteFile(m_folder.Path("leaf.png"), Plain({0, 200, 0, 99}));
    const ImportResult obj = ImportObj("map_Kd leaf.png\nmap_d leaf.png\n");
    EXPECT_TRUE(OnlyMaterial(obj).opacityMapName.empty());
    EXPECT_TRUE(OnlyMaterial(obj).hasAlpha);
    for (const char* mode : {"MASK", "BLEND"})
    {
        const ImportResult gltf =
            ImportGltf({"{\"uri\":\"leaf.png\"}"},
                       std::string("\"alphaMode\":\"") + mode +
                           "\",\"pbrMetallicRoughness\":{\"baseColorTexture\":{\"index\":0}}");
        EXPECT_TRUE(OnlyMaterial(gltf).opacityMapName.empty()) << mode;
        EXPECT_TRUE(OnlyMaterial(gltf).hasAlpha) << mode;
    }
}

TEST_F(ModelMapTest, AnEmbeddedMapLivesInMemoryAsLongAsItsMaterial)
{
    std::string path;
    {
        ImportResult result = ImportGltf({DataUri(Normals())}, "\"normalTexture\":{\"index\":0}");
        const Material& material = OnlyMaterial(result);
        EXPECT_EQ(FirstPixel(material, material.normalMapName), (Colour{51, 128, 230, 255}));
        EXPECT_TRUE(material.textureName.empty());
        EXPECT_EQ(material.pixels, nullptr);
        EXPECT_EQ(result.report.embeddedTextures, 1u);
        EXPECT_EQ(result.report.normalMaps, 1u);
        path = Folder(material) + material.normalMapName;

        // The scene keeps it when the rest of the result is gone.
        const std::unique_ptr<Scene> scene = std::move(result.scene);
        result = ImportResult();
        EXPECT_TRUE(std::filesystem::is_regular_file(path));
    }
    EXPECT_FALSE(std::filesystem::is_regular_file(path));
}

TEST_F(ModelMapTest, AnEmbeddedMapGoesWithAPictureInAFile)
{
    WriteFile(m_folder.Path("wall.png"), Plain(kGrey));
    const ImportResult result = ImportGltf({"{\"uri\":\"wall.png\"}", DataUri(Normals())},
                                           "\"pbrMetallicRoughness\":{\"baseColorTexture\":{\"index\":0}},"
                                           "\"normalTexture\":{\"index\":1}");
    const Material& material = OnlyMaterial(result);
    EXPECT_EQ(FirstPixel(material, material.textureName), kGrey);
    EXPECT_EQ(FirstPixel(material, material.normalMapName)[2], 230);
    EXPECT_EQ(result.report.fileTextures, 1u);
    EXPECT_EQ(result.report.embeddedTextures, 1u);
}

TEST_F(ModelMapTest, AMapInAFileGoesWithAnEmbeddedPicture)
{
    WriteFile(m_folder.Path("normals.png"), Normals());
    const ImportResult result = ImportGltf({DataUri(Plain(kGrey)), "{\"uri\":\"normals.png\"}"},
                                           "\"pbrMetallicRoughness\":{\"baseColorTexture\":{\"index\":0}},"
                                           "\"normalTexture\":{\"index\":1}");
    const Material& material = OnlyMaterial(result);
    ASSERT_NE(material.pixels, nullptr);
    EXPECT_EQ(material.pixels[0], kGrey[0]);
    EXPECT_TRUE(material.textureName.empty());
    EXPECT_EQ(material.normalMapName, "normals.png");
}

TEST_F(ModelMapTest, MaterialsShareTheFileOfAnEmbeddedMap)
{
    const std::string nodes = "{\"mesh\":0},{\"mesh\":1,\"translation\":[0,0,1]}";
    TinyGltf gltf;
    gltf.AddFloats({0, 0, 0, 1, 0, 0, 0, 1, 0}, 3);
    gltf.AddFloats({0, 0, 1, 0, 0, 1}, 2);
    const std::string view = std::to_string(gltf.AddBytes(Normals()));
    const auto mesh = [](const char* material)
    {
        return std::string(
                   "{\"primitives\":[{\"attributes\":{\"POSITION\":0,\"TEXCOORD_0\":1},\"material\":") +
               material + "}]}";
    };
    const ImportResult result = ImportAs(
        "two.glb", gltf.Glb("\"scene\":0,\"scenes\":[{\"nodes\":[0,1]}],\"nodes\":[" + nodes +
                            "],\"meshes\":[" + mesh("0") + "," + mesh("1") +
                            "],\"images\":[{\"mimeType\":\"image/png\",\"bufferView\":" + view +
                            "}],\"textures\":[{\"source\":0}],\"materials\":[{\"name\":\"a\","
                            "\"normalTexture\":{\"index\":0}},"
                            "{\"name\":\"b\",\"doubleSided\":true,\"normalTexture\":{\"index\":0}}]"));
    const auto& materials = result.scene->GetOptimizedMaterials();
    ASSERT_EQ(materials.size(), 2u);
    EXPECT_EQ(FirstPixel(*materials[0], materials[0]->normalMapName), (Colour{51, 128, 230, 255}));
    EXPECT_EQ(materials[0]->normalMapName, materials[1]->normalMapName);
    EXPECT_EQ(Folder(*materials[0]), Folder(*materials[1]));
    EXPECT_EQ(result.report.embeddedTextures, 2u);
}

TEST_F(ModelMapTest, EveryTruncationOfAnEmbeddedMapIsSurvived)
{
    const Bytes picture = Normals();
    for (std::size_t size = 1; size < picture.size(); size += 5)
    {
        const Bytes part(picture.begin(), picture.begin() + static_cast<std::ptrdiff_t>(size));
        const ImportResult result = ImportGltf({DataUri(part)}, "\"normalTexture\":{\"index\":0}");
        const bool hasMap = !OnlyMaterial(result).normalMapName.empty();
        EXPECT_EQ(hasMap, Loaded(OnlyMaterial(result), OnlyMaterial(result).normalMapName) != nullptr)
            << size;
        EXPECT_EQ(result.report.embeddedTextures, hasMap ? 1u : 0u) << size;
        EXPECT_EQ(result.report.missingTextures, hasMap ? 0u : 1u) << size;
    }
}

TEST_F(ModelMapTest, NoMoreMapsAreHeldInMemoryThanThereMayBeOpenFiles)
{
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit few = before;
    few.rlim_cur = 64;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &few), 0);
    std::string images;
    std::string textures;
    std::string materials;
    std::string meshes;
    std::string nodes;
    std::string list;
    for (int i = 0; i < 20; ++i)
    {
        const std::string comma = i ? "," : "";
        const std::string index = std::to_string(i);
        images += comma + DataUri(Plain({128, 128, static_cast<unsigned char>(230 + i), 255}));
        textures += comma + "{\"source\":" + index + "}";
        materials += comma + "{\"normalTexture\":{\"index\":" + index + "}}";
        meshes += comma +
                  "{\"primitives\":[{\"attributes\":{\"POSITION\":0,\"TEXCOORD_0\":1},\"material\":" + index +
                  "}]}";
        nodes += comma + "{\"mesh\":" + index + "}";
        list += comma + index;
    }
    TinyGltf gltf;
    gltf.AddFloats({0, 0, 0, 1, 0, 0, 0, 1, 0}, 3);
    gltf.AddFloats({0, 0, 1, 0, 0, 1}, 2);
    {
        const ImportResult result = ImportAs(
            "many.glb", gltf.Glb("\"scene\":0,\"scenes\":[{\"nodes\":[" + list + "]}],\"nodes\":[" + nodes +
                                 "],\"meshes\":[" + meshes + "],\"images\":[" + images + "],\"textures\":[" +
                                 textures + "],\"materials\":[" + materials + "]"));
        EXPECT_EQ(result.report.normalMaps, 16u);
        EXPECT_EQ(result.report.missingTextures, 4u);
    }
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
}

TEST_F(ModelMapTest, AFolderWhoseNameIsNoTextGivesMapsInMemory)
{
    const std::string folder = m_folder.Path("\xff\xfe");
    std::filesystem::create_directory(folder);
    WriteFile(folder + "/normals.png", Normals());
    WriteFile(folder + "/m.mtl", std::string("newmtl m\nnorm normals.png\n"));
    WriteFile(folder + "/m.obj", "mtllib m.mtl\nusemtl m\n" + CubeObj());
    const ImportResult result = ModelImporter::Import(folder + "/m.obj");
    ASSERT_TRUE(result) << result.error.Line();
    const Material& material = OnlyMaterial(result);
    EXPECT_EQ(FirstPixel(material, material.normalMapName), (Colour{51, 128, 230, 255}));
}

TEST_F(ModelMapTest, AMapOnOtherCoordinatesThanThePictureIsLeftOut)
{
    WriteFile(m_folder.Path("wall.png"), Plain(kGrey));
    WriteFile(m_folder.Path("normals.png"), Normals());
    const auto import = [this](const std::string& base, const std::string& map)
    {
        return ImportGltf({"{\"uri\":\"wall.png\"}", "{\"uri\":\"normals.png\"}"},
                          "\"pbrMetallicRoughness\":{\"baseColorTexture\":{\"index\":0" + base +
                              "}},\"normalTexture\":{\"index\":1" + map + "}");
    };
    const auto scaled = [](const char* scale)
    { return std::string(",\"extensions\":{\"KHR_texture_transform\":{\"scale\":[") + scale + "]}}"; };
    struct
    {
        const char* label;
        std::string base;
        std::string map;
        bool isShown;
    } const cases[] = {
        {"the same set", ",\"texCoord\":0", "", true},
        {"the same other set", ",\"texCoord\":1", ",\"texCoord\":1", true},
        {"another set", "", ",\"texCoord\":1", false},
        {"the same transform", scaled("2,2"), scaled("2,2"), true},
        {"another transform", scaled("2,2"), scaled("2,3"), false},
        {"a transform of the map alone", "", scaled("2,2"), false},
        {"a transform of the picture alone", scaled("2,2"), "", false},
    };
    for (const auto& test : cases)
    {
        SCOPED_TRACE(test.label);
        const ImportResult result = import(test.base, test.map);
        EXPECT_EQ(OnlyMaterial(result).textureName, "wall.png");
        EXPECT_EQ(OnlyMaterial(result).normalMapName, test.isShown ? "normals.png" : "");
        if (!test.isShown)
        {
            ExpectOneWarning(result, "coordinates of its own");
        }
        else
        {
            EXPECT_TRUE(result.report.warnings.empty());
        }
    }
}

TEST_F(ModelMapTest, WithoutAPictureTheMeshTakesTheCoordinatesOfTheMap)
{
    WriteFile(m_folder.Path("normals.png"), Normals());
    const ImportResult result = ImportGltf(
        {"{\"uri\":\"normals.png\"}"},
        "\"normalTexture\":{\"index\":0,\"extensions\":{\"KHR_texture_transform\":{\"scale\":[4,1]}}}");
    EXPECT_EQ(OnlyMaterial(result).normalMapName, "normals.png");
    float largest = 0.0f;
    for (const TextureCoordinate& coordinate : (*result.scene->GetMeshes().begin())->GetTextureBuffer())
    {
        largest = std::max(largest, coordinate.u);
    }
    EXPECT_EQ(largest, 4.0f);
}

TEST_F(ModelMapTest, WhatTakesNoLightHasNoNormalMap)
{
    WriteFile(m_folder.Path("normals.png"), Normals());
    const ImportResult result =
        ImportGltf({"{\"uri\":\"normals.png\"}"},
                   "\"extensions\":{\"KHR_materials_unlit\":{}},\"normalTexture\":{\"index\":0}");
    EXPECT_TRUE(OnlyMaterial(result).GetFlags() & MaterialFlagUnlit);
    EXPECT_TRUE(OnlyMaterial(result).normalMapName.empty());
    EXPECT_TRUE(result.report.warnings.empty());
}

TEST_F(ModelMapTest, MapsCanBeLeftAside)
{
    WriteFile(m_folder.Path("normals.png"), Normals());
    ImportOptions options;
    options.textures = false;
    const ImportResult result = ImportObj("norm normals.png\nmap_d missing.png\n", options);
    EXPECT_TRUE(OnlyMaterial(result).normalMapName.empty());
    EXPECT_TRUE(result.report.warnings.empty());
}

} // namespace
