#include "orvane_host/import/detail/MapBuilder.h"

#include "orvane/imaging/Image.h"
#include "orvane/imaging/ImageCodec.h"
#include "orvane/scene/Material.h"
#include "tests/orvane_host/import/TinyPictures.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

using namespace OV;
using namespace OV::Host;
using namespace OV::Test;

namespace
{

TEST(MapPaths, AreCutAtAFolder)
{
    struct
    {
        const char* label;
        std::string files[3];
        std::wstring folder;
        std::string names[3];
    } const cases[] = {
        {"one file", {"/a/b.png", "", ""}, L"/a/", {"b.png", "", ""}},
        {"only a map", {"", "", "/a/b.png"}, L"/a/", {"", "", "b.png"}},
        {"one folder", {"/a/b.png", "/a/c.png", "/a/d.png"}, L"/a/", {"b.png", "c.png", "d.png"}},
        {"names that begin alike", {"/a/bc/x.png", "/a/bd/x.png", ""}, L"/a/", {"bc/x.png", "bd/x.png", ""}},
        {"a folder that begins like another",
         {"/a/b/x.png", "/a/bb/x.png", ""},
         L"/a/",
         {"b/x.png", "bb/x.png", ""}},
        {"the second one is higher", {"/a/b/x.png", "/a/y.png", ""}, L"/a/", {"b/x.png", "y.png", ""}},
        {"nothing but the root", {"/a/x.png", "/b/x.png", ""}, L"/", {"a/x.png", "b/x.png", ""}},
        {"relative", {"a/x.png", "b/x.png", ""}, L"", {"a/x.png", "b/x.png", ""}},
        {"relative and absolute", {"x.png", "/b/x.png", ""}, L"", {"x.png", "/b/x.png", ""}},
        {"no folder", {"x.png", "y.png", ""}, L"", {"x.png", "y.png", ""}},
    };
    for (const auto& test : cases)
    {
        SCOPED_TRACE(test.label);
        Material material("m");
        SetTexturePaths(material, test.files[0], test.files[1], test.files[2]);
        EXPECT_EQ(material.texturePath.path, test.folder);
        EXPECT_EQ(material.textureName, test.names[0]);
        EXPECT_EQ(material.normalMapName, test.names[1]);
        EXPECT_EQ(material.opacityMapName, test.names[2]);
    }
}

/// Pixels of one picture, and whether they are normals.
struct NormalsCase
{
    const char* label;
    std::function<Colour(int x, int y)> paint;
    bool areNormals;
};

TEST(HoldsNormals, IsTrueOfDirectionsAwayFromASurface)
{
    const auto unit = [](double x, double y, double z)
    {
        const auto byte = [](double value)
        { return static_cast<unsigned char>(std::lround(value * 127.0 + 128.0)); };
        const double length = std::sqrt(x * x + y * y + z * z);
        return Colour{byte(x / length), byte(y / length), byte(z / length), 255};
    };
    const NormalsCase cases[] = {
        {"level", [](int, int) { return kLevel; }, true},
        {"steep waves", [&unit](int x, int) { return unit(1.2 * std::sin(x * 0.8), 0, 1); }, true},
        {"a bowl", [&unit](int x, int y) { return unit((x - 32) / 24.0, (y - 32) / 24.0, 1); }, true},
        {"a fifth of black room",
         [](int x, int) {
             return x % 5 ? kLevel : Colour{0, 0, 0, 255};
         },
         true},
        {"half of black room",
         [](int x, int) {
             return x % 2 ? kLevel : Colour{0, 0, 0, 255};
         },
         false},
        {"greys",
         [](int x, int y)
         {
             auto g = static_cast<unsigned char>(x * 3 + y);
             return Colour{g, g, g, 255};
         },
         false},
        // As long as a direction, but as red and as green as it is blue.
        {"a grey of length 1",
         [](int, int) {
             return Colour{201, 201, 201, 255};
         },
         false},
        {"white",
         [](int, int) {
             return Colour{255, 255, 255, 255};
         },
         false},
        {"the sky",
         [](int, int y) {
             return Colour{static_cast<unsigned char>(110 + y), 206, 235, 255};
         },
         false},
        {"pure blue",
         [](int, int) {
             return Colour{0, 0, 255, 255};
         },
         false},
        {"into the surface",
         [](int, int) {
             return Colour{128, 128, 0, 255};
         },
         false},
    };
    for (const NormalsCase& test : cases)
    {
        DecodedPicture picture;
        picture.width = 64;
        picture.height = 64;
        picture.pixels.reset(static_cast<unsigned char*>(std::malloc(picture.Bytes())));
        for (int i = 0; i < 64 * 64; ++i)
        {
            const Colour colour = test.paint(i % 64, i / 64);
            std::copy(colour.begin(), colour.end(), picture.pixels.get() + 4 * i);
        }
        EXPECT_EQ(HoldsNormals(picture), test.areNormals) << test.label;
    }
}

/// Makes maps of raw pictures of 2 x 1 texels.
class MapBuilderTest : public testing::Test
{
protected:
    /// @param map of the material, which is given the picture.
    void SetMaps(const std::vector<unsigned char>& texels, MapData& map)
    {
        m_model.textures.resize(1);
        m_model.textures[0].width = 2;
        m_model.textures[0].height = 1;
        m_model.textures[0].bytes = {texels.data(), texels.size()};
        map.picture.embedded = 0;
        m_report = ImportReport();
        m_material = std::make_unique<ImportedMaterial>("m");
        PictureReader pictures(m_model, "model", m_limits);
        MapBuilder(pictures, m_report).SetMaps(m_data, *m_material);
    }

    /// The pixels of a map as the engine loads it, without their alpha.
    std::vector<int> LoadedColors(const std::string& name) const
    {
        const std::unique_ptr<Image> image(
            ImageCodec::LoadImageData(m_material->texturePath, name, false, false));
        std::vector<int> colors;
        for (int i = 0; image && i < image->width * image->height; ++i)
        {
            colors.insert(colors.end(), image->data + 4 * i, image->data + 4 * i + 3);
        }
        return colors;
    }

    ModelData m_model;
    MaterialData m_data;
    ImportLimits m_limits;
    ImportReport m_report;
    std::unique_ptr<ImportedMaterial> m_material;
};

TEST_F(MapBuilderTest, RawTexelsBecomeANormalMap)
{
    SetMaps({128, 128, 255, 255, 204, 128, 230, 255}, m_data.normalMap);
    EXPECT_EQ(LoadedColors(m_material->normalMapName), (std::vector<int>{128, 128, 255, 204, 128, 230}));
    EXPECT_EQ(m_material->pixels, nullptr);
    EXPECT_EQ(m_report.embeddedTextures, 1u);
    EXPECT_EQ(m_report.normalMaps, 1u);
}

TEST_F(MapBuilderTest, OpacityMapsSayTheirOpacityInRed)
{
    const std::vector<unsigned char> inRed = {50, 1, 2, 255, 250, 3, 4, 255};
    const std::vector<unsigned char> inAlpha = {9, 9, 9, 50, 9, 9, 9, 250};
    struct
    {
        const char* label;
        const std::vector<unsigned char>& texels;
        bool isInverted;
        std::vector<int> colors;
    } const cases[] = {
        {"in red", inRed, false, {50, 1, 2, 250, 3, 4}},
        {"in red, inverted", inRed, true, {205, 205, 205, 5, 5, 5}},
        {"in alpha", inAlpha, false, {50, 50, 50, 250, 250, 250}},
        {"in alpha, inverted", inAlpha, true, {205, 205, 205, 5, 5, 5}},
    };
    for (const auto& test : cases)
    {
        SCOPED_TRACE(test.label);
        m_data.opacityMap.isInverted = test.isInverted;
        SetMaps(test.texels, m_data.opacityMap);
        EXPECT_EQ(LoadedColors(m_material->opacityMapName), test.colors);
        EXPECT_EQ(m_report.opacityMaps, 1u);
    }
}

TEST_F(MapBuilderTest, MapsBeyondTheLimitsAreLeftOut)
{
    const std::vector<unsigned char> texels = {128, 128, 255, 255, 128, 128, 255, 255};
    m_limits.textureBytes = 8;
    m_limits.texturePixels = 2;
    SetMaps(texels, m_data.normalMap);
    EXPECT_EQ(m_report.normalMaps, 1u);
    m_limits.textureBytes = 7;
    SetMaps(texels, m_data.normalMap);
    EXPECT_EQ(m_report.normalMaps, 0u);
    m_limits.textureBytes = 8;
    m_limits.texturePixels = 1;
    SetMaps(texels, m_data.normalMap);
    EXPECT_EQ(m_report.normalMaps, 0u);
    EXPECT_EQ(m_report.missingTextures, 1u);
}

TEST_F(MapBuilderTest, TexelsBelowTheirSizeAreNotTouched)
{
    SetMaps({128, 128, 255, 255, 128, 128, 255}, m_data.normalMap);
    EXPECT_TRUE(m_material->normalMapName.empty());
    EXPECT_EQ(m_report.missingTextures, 1u);
}

TEST_F(MapBuilderTest, PicturesThatTheModelLacksAreTold)
{
    m_data.normalMap.picture.embedded = 1;
    SetMaps({128, 128, 255, 255, 128, 128, 255, 255}, m_data.opacityMap);
    EXPECT_TRUE(m_material->normalMapName.empty());
    EXPECT_FALSE(m_material->opacityMapName.empty());
    EXPECT_EQ(m_report.warnings,
              std::vector<std::string>{
                  "Material '' is shown without its normal map: 'embedded' is not to be found."});
}

TEST(MemoryFile, HasANameForAsLongAsItLives)
{
    const Bytes bytes = Plain(kLevel);
    std::shared_ptr<const MemoryFile> file = MemoryFile::Create(bytes.data(), bytes.size());
    ASSERT_NE(file, nullptr);
    const std::string path = file->GetPath();
    for (int i = 0; i < 2; ++i)
    {
        std::ifstream stream(path, std::ios::binary);
        EXPECT_EQ(Bytes(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()), bytes);
    }
    file.reset();
    EXPECT_FALSE(std::ifstream(path, std::ios::binary));
}

TEST(MemoryFile, ThereIsNoneWhereNoFileCanBeOpened)
{
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit none = before;
    none.rlim_cur = 0;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
    const unsigned char byte = 0;
    EXPECT_EQ(MemoryFile::Create(&byte, 1), nullptr);
    EXPECT_EQ(MemoryFile::MostAtOnce(), 0u);
    EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
}

} // namespace
