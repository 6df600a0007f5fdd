#include "orvane_host/import/detail/ForeignPicture.h"

#include "orvane_host/import/detail/PictureFile.h"
#include "tests/orvane_host/import/ForeignPictures.h"
#include "tests/orvane_host/import/ImportFixture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

using namespace OV;
using namespace OV::Host;
using namespace OV::Test;

namespace
{

struct FileCase
{
    const char* name;
    Bytes bytes;
    bool hasAlpha;
};

std::vector<FileCase> Files(const FourPixels& pixels)
{
    return {{"plain.tga", Tga(pixels), true},
            {"packed.tga", Tga(pixels, true), true},
            {"top.tga", Tga(pixels, false, true), true},
            {"true.bmp", Bmp(pixels), false},
            {"palette.gif", Gif(pixels), true},
            {"lossless.webp", Webp(pixels), true}};
}

ImageFacts Probe(const Bytes& bytes)
{
    return ProbeImage(MemorySource(bytes.data(), bytes.size()));
}

std::vector<unsigned char> RowsOf(const FourPixels& pixels, FirstRow first)
{
    std::vector<unsigned char> rgba;
    for (int i = 0; i < 4; ++i)
    {
        const Colour colour = pixels.At(i % 2, first == FirstRow::Top ? i / 2 : 1 - i / 2);
        rgba.insert(rgba.end(), colour.begin(), colour.end());
    }
    return rgba;
}

TEST(ForeignPicture, TheHeadTellsSizeAndAlpha)
{
    for (const FileCase& file : Files({{9, 8, 7, 0}}))
    {
        SCOPED_TRACE(file.name);
        const ImageFacts facts = Probe(file.bytes);
        EXPECT_TRUE(facts.isReadable) << facts.obstacle;
        EXPECT_TRUE(facts.needsConversion);
        EXPECT_EQ(facts.width, 2u);
        EXPECT_EQ(facts.height, 2u);
        EXPECT_EQ(facts.hasAlpha, file.hasAlpha);
    }
}

TEST(ForeignPicture, PixelsComeOutAsTheyWere)
{
    const FourPixels pixels = {{10, 20, 30, 255}};
    for (const FileCase& file : Files(pixels))
    {
        SCOPED_TRACE(file.name);
        EXPECT_EQ(DecodeForeign(file.bytes.data(), file.bytes.size(), Probe(file.bytes)),
                  RowsOf(pixels, FirstRow::Top));
    }
}

TEST(ForeignPicture, EveryTruncationIsRefusedOrGivesAWholePicture)
{
    for (const FileCase& file : Files({{10, 20, 30, 255}}))
    {
        for (std::size_t size = 0; size < file.bytes.size(); ++size)
        {
            SCOPED_TRACE(file.name + std::string(", ") + std::to_string(size));
            const Bytes cut(file.bytes.begin(), file.bytes.begin() + static_cast<std::ptrdiff_t>(size));
            const ImageFacts facts = Probe(cut);
            EXPECT_EQ(facts.obstacle.empty(), facts.isReadable);
            if (facts.isReadable)
            {
                EXPECT_EQ(facts.Pixels(), 4u);
                const std::vector<unsigned char> first = DecodeForeign(cut.data(), cut.size(), facts);
                EXPECT_TRUE(first.empty() || first.size() == 16);
                EXPECT_EQ(first, DecodeForeign(cut.data(), cut.size(), facts));
            }
        }
    }
}

TEST(ForeignPicture, AFileThatChangedSinceItsHeadWasReadIsRefused)
{
    for (const FileCase& file : Files({}))
    {
        ImageFacts facts = Probe(file.bytes);
        facts.width = 1;
        EXPECT_TRUE(DecodeForeign(file.bytes.data(), file.bytes.size(), facts).empty()) << file.name;
    }
}

class ForeignTextureTest : public ImportFixture
{
protected:
    ImportResult ImportWithPicture(const std::string& reference, const std::string& more = "",
                                   const ImportOptions& options = ImportOptions())
    {
        WriteFile(m_folder.Path("m.mtl"), "newmtl m\nKd 0.5 0.5 0.5\nmap_Kd " + reference + "\n" + more);
        return ImportAs("m.obj", "mtllib m.mtl\nusemtl m\n" + CubeObj(), options);
    }
};

TEST_F(ForeignTextureTest, PicturesOfEachKindBecomePixelsOfTheMaterial)
{
    const FourPixels pixels = {{10, 20, 30, 255}};
    for (const bool isolate : {true, false})
    {
        for (const FileCase& file : Files(pixels))
        {
            SCOPED_TRACE(file.name);
            WriteFile(m_folder.Path(file.name), file.bytes);
            ImportOptions options;
            options.isolate = isolate;
            const ImportResult result = ImportWithPicture(file.name, "", options);
            const Material& material = OnlyMaterial(result);
            EXPECT_TRUE(material.textureName.empty());
            EXPECT_FALSE(material.hasAlpha);
            ASSERT_NE(material.pixels, nullptr);
            EXPECT_EQ(std::vector<unsigned char>(material.pixels, material.pixels + 16),
                      RowsOf(pixels, FirstRow::Bottom));
            EXPECT_EQ(result.report.fileTextures, 1u);
            EXPECT_EQ(result.report.embeddedTextures, 0u);
            EXPECT_TRUE(result.report.warnings.empty());
        }
    }
}

TEST_F(ForeignTextureTest, TheyAreFoundWithBackslashesAndInAnotherCase)
{
    std::filesystem::create_directory(m_folder.Path("Maps"));
    WriteFile(m_folder.Path("Maps/Brick Wall.TGA"), Tga({}));
    const ImportResult result = ImportWithPicture("C:\\work\\maps\\brick wall.tga");
    EXPECT_NE(OnlyMaterial(result).pixels, nullptr);
    EXPECT_EQ(result.report.missingTextures, 0u);
}

TEST_F(ForeignTextureTest, OneThatLetsThroughMakesTheMaterialTransparent)
{
    WriteFile(m_folder.Path("leaf.tga"), Tga({{255, 255, 255, 0}}));
    EXPECT_TRUE(OnlyMaterial(ImportWithPicture("leaf.tga")).hasAlpha);
}

TEST_F(ForeignTextureTest, AnOpacityMapGetsAFileThatTheEngineLoads)
{
    WriteFile(m_folder.Path("mask.tga"), Tga({}));
    WriteFile(m_folder.Path("wall.bmp"), Bmp({}));
    const ImportResult result = ImportWithPicture("wall.bmp", "map_d mask.tga\n");
    EXPECT_FALSE(OnlyMaterial(result).opacityMapName.empty());
    EXPECT_EQ(result.report.opacityMaps, 1u);
    EXPECT_EQ(result.report.fileTextures, 2u);
    EXPECT_TRUE(result.report.warnings.empty());
}

TEST_F(ForeignTextureTest, DamagedOnesAndThoseBeyondTheLimitsAreToldAndLeftOut)
{
    Bytes damaged = Webp({});
    damaged.resize(damaged.size() - 6);
    Bytes large = Tga({});
    large[13] = large[15] = 0x7F;
    WriteFile(m_folder.Path("damaged.webp"), damaged);
    WriteFile(m_folder.Path("large.tga"), large);
    for (const char* name : {"damaged.webp", "large.tga"})
    {
        SCOPED_TRACE(name);
        const ImportResult result = ImportWithPicture(name);
        EXPECT_EQ(OnlyMaterial(result).pixels, nullptr);
        EXPECT_EQ(result.report.missingTextures, 1u);
        ASSERT_EQ(result.report.warnings.size(), 1u);
        EXPECT_NE(result.report.warnings[0].find(name), std::string::npos);
    }
}

TEST_F(ForeignTextureTest, ThePicturesOfSeveralMaterialsShareTheMemoryThatIsGranted)
{
    WriteFile(m_folder.Path("one.tga"), Tga({}));
    WriteFile(m_folder.Path("two.bmp"), Bmp({}));
    ImportOptions options;
    options.limits.textureBytes = 20;
    const ImportResult result = ImportWithPicture("one.tga", "map_d two.bmp\n", options);
    EXPECT_NE(OnlyMaterial(result).pixels, nullptr);
    EXPECT_EQ(result.report.missingTextures, 1u);
}

TEST_F(ForeignTextureTest, APictureFileIsReadFromEitherEnd)
{
    const FourPixels pixels = {{10, 20, 30, 255}};
    for (const FileCase& file : Files(pixels))
    {
        for (const FirstRow first : {FirstRow::Top, FirstRow::Bottom})
        {
            SCOPED_TRACE(file.name);
            WriteFile(m_folder.Path(file.name), file.bytes);
            PicturePixels picture;
            std::string error;
            ASSERT_TRUE(ReadPictureFile(m_folder.Path(file.name), first, picture, error)) << error;
            EXPECT_EQ(picture.width, 2);
            EXPECT_EQ(picture.height, 2);
            EXPECT_EQ(picture.rgba, RowsOf(pixels, first));
        }
    }
}

TEST_F(ForeignTextureTest, APictureIsNoModel)
{
    for (const char* name : {"palette.gif", "lossless.webp"})
    {
        WriteFile(m_folder.Path(name), name[0] == 'p' ? Gif({}) : Webp({}));
        const ImportResult result = ModelImporter::Import(m_folder.Path(name));
        EXPECT_EQ(result.status, ImportStatus::Unsupported) << name;
        EXPECT_NE(result.error.reason.find("picture"), std::string::npos) << name;
    }
}

} // namespace
