#include "tests/orvane_host/import/ImportFixture.h"
#include "tests/orvane_host/import/TinyPictures.h"
#include "tests/imaging/JpegFile.h"
#include "tests/imaging/PngFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

using namespace OV;
using namespace OV::Host;
using namespace OV::Test;

namespace
{

/// A PNG of 2 x 2: red and green above, blue and a white of the given alpha below.
Bytes FourColours(unsigned char alpha)
{
    const Colour colours[2][2] = {{{255, 0, 0, 255}, {0, 255, 0, 255}},
                                  {{0, 0, 255, 255}, {255, 255, 255, alpha}}};
    return Painted(2, 2, [&colours](int x, int y) { return colours[y][x]; });
}

/// A triangle whose picture lies inside the file.
/// @param material its members, which name picture 0.
Bytes PictureGlb(const Bytes& picture, const std::string& mimeType, const std::string& material)
{
    TinyGltf gltf;
    gltf.AddFloats({0, 0, 0, 1, 0, 0, 0, 1, 0}, 3);
    gltf.AddFloats({0, 0, 1, 0, 0, 1}, 2);
    const std::string view = std::to_string(gltf.AddBytes(picture));
    return gltf.Glb(
        "\"scene\":0,\"scenes\":[{\"nodes\":[0]}],\"nodes\":[{\"mesh\":0}],\"images\":[{\"bufferView\":" +
        view + ",\"mimeType\":\"" + mimeType + "\"}],\"textures\":[{\"source\":0}],\"materials\":[{" +
        material +
        "}],\"meshes\":[{\"primitives\":[{\"attributes\":{\"POSITION\":0,\"TEXCOORD_0\":1},\"material\":0}]}]");
}

/// The same, which the picture colours.
Bytes EmbeddedGlb(const Bytes& picture, const std::string& mimeType = "image/png",
                  const std::string& material = "")
{
    return PictureGlb(picture, mimeType, material + "\"pbrMetallicRoughness\":{\"baseColorTexture\":{\"index\":0}}");
}

class ModelTextureTest : public ImportFixture
{
protected:
    /// A cube whose material names a picture.
    ImportResult ImportWithPicture(const std::string& reference, const std::string& more = "")
    {
        WriteFile(m_folder.Path("m.mtl"), "newmtl m\nKd 0.5 0.5 0.5\nmap_Kd " + reference + "\n" + more);
        return ImportAs("m.obj", "mtllib m.mtl\nusemtl m\n" + CubeObj());
    }
};

TEST_F(ModelTextureTest, APictureByPathIsNamedForTheLoader)
{
    std::filesystem::create_directory(m_folder.Path("textures"));
    WriteFile(m_folder.Path("textures/wall.png"), FourColours(255));
    const ImportResult result = ImportWithPicture("textures\\Wall.PNG");
    Material& material = OnlyMaterial(result);
    EXPECT_EQ(material.textureName, "wall.png");
    EXPECT_EQ(std::filesystem::path(material.texturePath.path).string(), m_folder.Path("textures/"));
    EXPECT_EQ(material.pixels, nullptr);
    EXPECT_EQ(result.report.fileTextures, 1u);
    EXPECT_TRUE(result.report.warnings.empty());
}

TEST_F(ModelTextureTest, AlphaOfAPictureMakesTheMaterialTransparent)
{
    WriteFile(m_folder.Path("alpha.png"), FourColours(0));
    PngFile opaque;
    opaque.width = 4;
    opaque.height = 4;
    opaque.colorType = 2;
    opaque.FillWithNoise();
    WriteFile(m_folder.Path("opaque.png"), opaque.Write());

    const ImportResult alpha = ImportWithPicture("alpha.png");
    EXPECT_TRUE(OnlyMaterial(alpha).hasAlpha);
    EXPECT_EQ(alpha.scene->GetAlphaMaterials().size(), 1u);
    const ImportResult plain = ImportWithPicture("opaque.png");
    EXPECT_FALSE(OnlyMaterial(plain).hasAlpha);
    EXPECT_EQ(plain.scene->GetOptimizedMaterials().size(), 1u);
    EXPECT_EQ(OnlyMaterial(plain).GetOpacity(), 1.0f);
}

TEST_F(ModelTextureTest, ABlackSurfaceShowsThePictureOfWhatItEmits)
{
    const auto import = [this](const char* emission, const char* color) {
        return ImportAs("t.glb", PictureGlb(FourColours(255), "image/png",
                                            std::string("\"emissiveTexture\":{\"index\":0},\"emissiveFactor\":") +
                                                emission + ",\"pbrMetallicRoughness\":{\"baseColorFactor\":" + color +
                                                "}"));
    };
    const ImportResult label = import("[1,0.2140411,1]", "[0,0,0,1]");
    const Material& material = OnlyMaterial(label);
    ASSERT_NE(material.pixels, nullptr);
    EXPECT_EQ(material.pixelWidth, 2);
    EXPECT_TRUE(material.GetFlags() & MaterialFlagUnlit);
    EXPECT_EQ(material.GetDiffuse().r, 1.0f);
    EXPECT_NEAR(material.GetDiffuse().g, 0.5f, 1e-4f);

    const ImportResult dark = import("[0,0,0]", "[0,0,0,1]");
    EXPECT_EQ(OnlyMaterial(dark).pixels, nullptr);
    EXPECT_FALSE(OnlyMaterial(dark).GetFlags() & MaterialFlagUnlit);
    const ImportResult colored = import("[1,1,1]", "[1,0,0,1]");
    EXPECT_EQ(OnlyMaterial(colored).pixels, nullptr);
    EXPECT_EQ(OnlyMaterial(colored).GetDiffuse().r, 1.0f);
}

TEST_F(ModelTextureTest, ABlackColourUnderAPictureBecomesWhite)
{
    WriteFile(m_folder.Path("wall.png"), FourColours(255));
    const ImportResult result = ImportWithPicture("wall.png", "Kd 0 0 0\n");
    EXPECT_EQ(OnlyMaterial(result).GetDiffuse().r, 1.0f);
}

TEST_F(ModelTextureTest, PicturesThatCannotBeShownAreToldAndLeftOut)
{
    PngFile interlaced;
    interlaced.width = 4;
    interlaced.height = 4;
    interlaced.interlaced = true;
    interlaced.FillWithNoise();
    WriteFile(m_folder.Path("interlaced.png"), interlaced.Write());
    WriteFile(m_folder.Path("text.png"), std::string("this is no picture"));
    WriteFile(m_folder.Path("empty.png"), std::string());
    ASSERT_EQ(mkfifo(m_folder.Path("pipe.png").c_str(), 0600), 0);
    for (const char* name : {"interlaced.png", "text.png", "empty.png", "pipe.png", "missing.png"})
    {
        SCOPED_TRACE(name);
        const ImportResult result = ImportWithPicture(name);
        EXPECT_TRUE(OnlyMaterial(result).textureName.empty());
        EXPECT_EQ(OnlyMaterial(result).pixels, nullptr);
        EXPECT_EQ(result.report.missingTextures, 1u);
        ASSERT_EQ(result.report.warnings.size(), 1u);
        EXPECT_NE(result.report.warnings[0].find(name), std::string::npos);
    }
}

TEST_F(ModelTextureTest, AnEmbeddedPngIsDecodedWithTheBottomRowFirst)
{
    const ImportResult result = ImportAs("e.glb", EmbeddedGlb(FourColours(255)));
    Material& material = OnlyMaterial(result);
    ASSERT_NE(material.pixels, nullptr);
    EXPECT_EQ(material.pixelWidth, 2);
    EXPECT_EQ(material.pixelHeight, 2);
    const std::vector<unsigned char> expected = {0,   0, 255, 255, 255, 255, 255, 255,
                                                 255, 0, 0,   255, 0,   255, 0,   255};
    EXPECT_EQ(std::vector<unsigned char>(material.pixels, material.pixels + 16), expected);
    EXPECT_TRUE(material.textureName.empty());
    EXPECT_FALSE(material.hasAlpha) << "the alpha channel is there, but opaque throughout";
    EXPECT_EQ(result.report.embeddedTextures, 1u);
}

TEST_F(ModelTextureTest, AnEmbeddedJpegIsDecoded)
{
    JpegFile jpeg;
    jpeg.width = 16;
    jpeg.height = 8;
    jpeg.FillWithPicture();
    const ImportResult result = ImportAs("e.glb", EmbeddedGlb(jpeg.Write(), "image/jpeg"));
    Material& material = OnlyMaterial(result);
    ASSERT_NE(material.pixels, nullptr);
    EXPECT_EQ(material.pixelWidth, 16);
    EXPECT_EQ(material.pixelHeight, 8);
}

TEST_F(ModelTextureTest, AlphaOfAnEmbeddedPictureCountsWhereTheModeSaysSo)
{
    const Bytes picture = FourColours(100);
    const ImportResult opaque = ImportAs("e.glb", EmbeddedGlb(picture));
    EXPECT_FALSE(OnlyMaterial(opaque).hasAlpha);
    EXPECT_FALSE(OnlyMaterial(opaque).IsTransparent());
    for (const char* mode : {"BLEND", "MASK"})
    {
        const ImportResult result = ImportAs(
            "e.glb", EmbeddedGlb(picture, "image/png", std::string("\"alphaMode\":\"") + mode + "\","));
        EXPECT_TRUE(OnlyMaterial(result).hasAlpha) << mode;
        EXPECT_EQ(result.scene->GetAlphaMaterials().size(), 1u) << mode;
    }
}

TEST_F(ModelTextureTest, EveryTruncationOfAnEmbeddedPictureIsSurvived)
{
    const Bytes picture = FourColours(255);
    for (std::size_t size = 1; size < picture.size(); size += 5)
    {
        const Bytes part(picture.begin(), picture.begin() + static_cast<std::ptrdiff_t>(size));
        const ImportResult result = ImportAs("e.glb", EmbeddedGlb(part));
        const bool hasPixels = OnlyMaterial(result).pixels != nullptr;
        EXPECT_EQ(result.report.embeddedTextures, hasPixels ? 1u : 0u) << size;
        EXPECT_EQ(result.report.missingTextures, hasPixels ? 0u : 1u) << size;
    }
}

TEST_F(ModelTextureTest, AHeaderThatPromisesTooMuchIsNotBelieved)
{
    Bytes picture = FourColours(255);
    // 65,535 x 65,535 pixels would take 16 GiB.
    for (std::size_t i : {18u, 19u, 22u, 23u})
    {
        picture[i] = 0xFF;
    }
    RepairChecksums(picture);
    const ImportResult result = ImportAs("e.glb", EmbeddedGlb(picture));
    EXPECT_EQ(OnlyMaterial(result).pixels, nullptr);
    EXPECT_EQ(result.report.missingTextures, 1u);

    WriteFile(m_folder.Path("huge.png"), picture);
    EXPECT_TRUE(OnlyMaterial(ImportWithPicture("huge.png")).textureName.empty());
}

TEST_F(ModelTextureTest, TexturesCanBeLeftAside)
{
    ImportOptions options;
    options.textures = false;
    const ImportResult result = ImportAs("e.glb", EmbeddedGlb(FourColours(255)), options);
    EXPECT_EQ(OnlyMaterial(result).pixels, nullptr);
    EXPECT_TRUE(result.report.warnings.empty());
}

TEST_F(ModelTextureTest, AFolderWhoseNameIsNoTextGivesPixels)
{
    const std::string folder = m_folder.Path("\xff\xfe");
    std::filesystem::create_directory(folder);
    WriteFile(folder + "/wall.png", FourColours(255));
    WriteFile(folder + "/m.mtl", std::string("newmtl m\nmap_Kd wall.png\n"));
    WriteFile(folder + "/m.obj", "mtllib m.mtl\nusemtl m\n" + CubeObj());
    const ImportResult result = ModelImporter::Import(folder + "/m.obj");
    ASSERT_TRUE(result) << result.error.Line();
    EXPECT_TRUE(OnlyMaterial(result).textureName.empty());
    EXPECT_NE(OnlyMaterial(result).pixels, nullptr);
}

TEST_F(ModelTextureTest, RelativeModelPathsFindTheirPictures)
{
    WriteFile(m_folder.Path("wall.png"), FourColours(255));
    ImportWithPicture("wall.png");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(m_folder.Path());
    const ImportResult result = ModelImporter::Import("m.obj");
    std::filesystem::current_path(before);
    ASSERT_TRUE(result);
    EXPECT_EQ(OnlyMaterial(result).textureName, "wall.png");
    EXPECT_EQ(OnlyMaterial(result).texturePath.path, L"");
}

} // namespace
