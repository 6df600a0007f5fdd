#include "orvane_host/import/ModelImporter.h"
#include "orvane_host/present/PresentationRenderer.h"
#include "orvane_host/view/ViewFit.h"
#include "orvane_host/import/detail/IsolatedProcess.h"

#include "orvane/effects/AdvancedMaterialBaseES20.h"
#include "orvane/effects/EffectCache.h"
#include "orvane/effects/EffectES20.h"
#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/imaging/TextureLoader.h"
#include "orvane/renderer/Renderer20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Scene.h"
#include "tests/orvane_host/import/TinyModels.h"
#include "tests/orvane_host/import/TinyPictures.h"
#include "tests/support/GLFixture.h"

#include <GL/glew.h>

#include <cmath>
#include <csignal>
#include <memory>
#include <string>
#include <vector>

using namespace OV;
using namespace OV::Host;
using namespace OV::Test;

namespace
{

const Pixel kRed{255, 0, 0, 255};
const Pixel kGreen{0, 255, 0, 255};
const Pixel kBlue{0, 0, 255, 255};
const Pixel kWhite{255, 255, 255, 255};

/// Red and green above, blue and white below, in blocks of 32 pixels.
Bytes FourBlocks()
{
    return Painted(64, 64,
                   [](int x, int y)
                   {
                       const Pixel& pixel = y < 32 ? (x < 32 ? kRed : kGreen) : (x < 32 ? kBlue : kWhite);
                       return Colour{static_cast<unsigned char>(pixel.r), static_cast<unsigned char>(pixel.g),
                                     static_cast<unsigned char>(pixel.b), 255};
                   });
}

/// A square of edge 2 about the origin that faces +Z and shows whole pictures.
/// @param images embedded ones or, where empty, the file picture.png; textures of the same
/// numbers show them.
/// @param material content of the material.
Bytes SquareGlb(const std::vector<Bytes>& images, const std::string& material)
{
    TinyGltf gltf;
    gltf.AddFloats({-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0}, 3);
    gltf.AddFloats({0, 1, 1, 1, 1, 0, 0, 0}, 2);
    gltf.AddFloats({0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1}, 3);
    gltf.AddIndices({0, 1, 2, 0, 2, 3});
    std::string list;
    std::string textures;
    for (std::size_t i = 0; i < images.size(); ++i)
    {
        const std::string comma = i ? "," : "";
        list += comma + (images[i].empty() ? "{\"uri\":\"picture.png\"}"
                                           : "{\"bufferView\":" + std::to_string(gltf.AddBytes(images[i])) +
                                                 ",\"mimeType\":\"image/png\"}");
        textures += comma + "{\"source\":" + std::to_string(i) + "}";
    }
    return gltf.Glb(
        "\"extensionsUsed\":[\"KHR_materials_unlit\"],\"scene\":0,\"scenes\":[{\"nodes\":[0]}],"
        "\"nodes\":[{\"mesh\":0}],\"images\":[" +
        list + "],\"textures\":[" + textures + "],\"materials\":[{" + material +
        "}],\"meshes\":[{\"primitives\":[{\"attributes\":{\"POSITION\":0,\"TEXCOORD_0\":1,\"NORMAL\":2},"
        "\"indices\":3,\"material\":0}]}]");
}

/// The same with one picture for its colours.
/// @param material further members of the material, with a comma at the end.
Bytes PictureGlb(const Bytes& picture, const std::string& material = "")
{
    return SquareGlb(std::vector<Bytes>{picture},
                     material + "\"pbrMetallicRoughness\":{\"baseColorTexture\":{\"index\":0}}");
}

/// The same as OBJ, with a file of materials of the given content.
std::string SquareObj()
{
    return "mtllib square.mtl\nusemtl m\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nvt 0 0\nvt 1 0\nvt 1 1\nvt "
           "0 1\n"
           "vn 0 0 1\nf 1/1/1 2/2/1 3/3/1 4/4/1\n";
}

/// Leaning left and right above, up and down below, in blocks of 32 pixels.
Bytes NormalBlocks()
{
    return Painted(64, 64,
                   [](int x, int y)
                   {
                       const bool isLeft = x < 32;
                       const Colour above = {static_cast<unsigned char>(isLeft ? 52 : 204), 128, 230, 255};
                       const Colour below = {128, static_cast<unsigned char>(isLeft ? 204 : 52), 230, 255};
                       return y < 32 ? above : below;
                   });
}

/// White, black for the upper left block.
Bytes OneHole()
{
    return Painted(64, 64,
                   [](int x, int y) {
                       return x < 32 && y < 32 ? Colour{0, 0, 0, 255} : Colour{255, 255, 255, 255};
                   });
}

/// The square in one colour of its vertices, without a word on materials; else its corners and middle.
std::string ColouredPly(bool hasFaces)
{
    std::string text = "ply\nformat ascii 1.0\nelement vertex 5\nproperty float x\nproperty float y\n"
                       "property float z\nproperty float nx\nproperty float ny\nproperty float nz\n"
                       "property uchar red\nproperty uchar green\nproperty uchar blue\n";
    text += hasFaces ? "element face 1\nproperty list uchar int vertex_indices\nend_header\n" : "end_header\n";
    for (const char* place : {"-1 -1", "1 -1", "1 1", "-1 1", "0 0"})
    {
        text += std::string(place) + " 0 0 0 1 255 128 0\n";
    }
    return text + (hasFaces ? "4 0 1 2 3\n" : "");
}

const std::string kUnlit = "\"extensions\":{\"KHR_materials_unlit\":{}},";

/// A cube map that is red all around.
GLuint RedCube()
{
    GLuint cube = 0;
    glGenTextures(1, &cube);
    glBindTexture(GL_TEXTURE_CUBE_MAP, cube);
    for (GLenum face = 0; face < 6; ++face)
    {
        const unsigned char red[4] = {255, 0, 0, 255};
        glTexImage2D(GL_TEXTURE_CUBE_MAP_POSITIVE_X + face, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                     red);
    }
    glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glBindTexture(GL_TEXTURE_CUBE_MAP, 0);
    return cube;
}

/// Lets a test set what shiny surfaces reflect.
class ReflectingRenderer : public PresentationRenderer
{
public:
    using PresentationRenderer::PresentationRenderer;

    /// Holds as long as a material of the scene was drawn in the advanced look before.
    void SetReflectionMap(GLuint cube)
    {
        EffectES20* effect = effectCache.GetEffect(EffectCache::AdvancedMaterial);
        dynamic_cast<AdvancedMaterialBaseES20&>(*effect).SetReflectionMap(cube);
        effect->Release();
    }
};

class ImportedPictureTest : public GLFixture
{
protected:
    /// Imports a square and lets it fill the framebuffer.
    template <typename Content>
    void Show(const Content& model, const std::string& name = "square.glb")
    {
        WriteFile(m_folder.Path(name), model);
        ImportResult result = ModelImporter::Import(m_folder.Path(name));
        ASSERT_TRUE(result) << result.error.Line();
        ModelImporter::AddDefaultLights(*result.scene);
        ViewFitOptions options;
        options.aspect = 1.0f;
        options.orthographic = true;
        options.margin = 0.0f;
        ViewFit::Frame(*result.scene->GetCameraNode(), result.report.boxMin, result.report.boxMax,
                       NamedView::Front, options);
        m_app.GetContext()->SetScene(std::move(result.scene));
        m_app.SetScreenSize(Width(), Height());
        m_renderer.Resize(Width(), Height());
        m_presentation.Resize(Width(), Height());
    }

    Picture Draw()
    {
        m_app.Update(0);
        m_app.Render(&m_renderer, false);
        return ReadPixels();
    }

    Picture DrawIn(Look look)
    {
        m_presentation.SetLook(look);
        m_app.Update(0);
        m_app.Render(&m_presentation, false);
        return ReadPixels();
    }

    /// The grey of a white surface in the advanced look, by the model of its shader.
    /// @param normal of the surface, of any length; the light is the default one.
    static Pixel WhiteSurface(double x, double y, double z)
    {
        const double light[3] = {-0.35, 0.6, 1.0};
        const double cosine = std::abs(light[0] * x + light[1] * y + light[2] * z) /
                              std::sqrt((light[0] * light[0] + light[1] * light[1] + light[2] * light[2]) *
                                        (x * x + y * y + z * z));
        // Of a light of 0.7, the ambient share shows 0.3 without a cosine.
        const int grey = static_cast<int>(std::lround(255.0 * 0.7 * (0.3 + 0.7 * cosine)));
        return {grey, grey, grey, 255};
    }

    /// What NormalBlocks must look like.
    void ExpectLeaningBlocks(const Picture& picture)
    {
        const int half = Width() / 2;
        // 8 bits hold a direction to about 1/127, the grey to 2.
        ExpectColorInRect(picture, Inset({0, half, half, half}, 4), WhiteSurface(-0.6, 0, 0.8), 2);
        ExpectColorInRect(picture, Inset({half, half, half, half}, 4), WhiteSurface(0.6, 0, 0.8), 2);
        ExpectColorInRect(picture, Inset({0, 0, half, half}, 4), WhiteSurface(0, 0.6, 0.8), 2);
        ExpectColorInRect(picture, Inset({half, 0, half, half}, 4), WhiteSurface(0, -0.6, 0.8), 2);
    }

    void ExpectBlocks(const Picture& picture, float share = 1.0f)
    {
        const int half = Width() / 2;
        const auto scaled = [share](const Pixel& pixel)
        {
            return Pixel{static_cast<int>(std::lround(pixel.r * share)),
                         static_cast<int>(std::lround(pixel.g * share)),
                         static_cast<int>(std::lround(pixel.b * share)), 255};
        };
        ExpectColorInRect(picture, Inset({0, half, half, half}, 4), scaled(kRed), 1);
        ExpectColorInRect(picture, Inset({half, half, half, half}, 4), scaled(kGreen), 1);
        ExpectColorInRect(picture, Inset({0, 0, half, half}, 4), scaled(kBlue), 1);
        ExpectColorInRect(picture, Inset({half, 0, half, half}, 4), scaled(kWhite), 1);
    }

    TemporaryFolder m_folder;
    std::unique_ptr<TextureLoader> m_loader{TextureLoader::Create()};
    AppContext m_app;
    Renderer20 m_renderer{m_loader.get(), m_app.GetContext()->GetRenderCapabilities()};
    ReflectingRenderer m_presentation{m_loader.get(), m_app.GetContext()->GetRenderCapabilities()};
};

TEST_F(ImportedPictureTest, AnEmbeddedPictureStandsUpright)
{
    Show(PictureGlb(FourBlocks(), kUnlit));
    ExpectBlocks(Draw());
}

TEST_F(ImportedPictureTest, APictureInAFileStandsUpright)
{
    WriteFile(m_folder.Path("picture.png"), FourBlocks());
    Show(PictureGlb({}, kUnlit));
    ExpectBlocks(Draw());
}

TEST_F(ImportedPictureTest, AmbientAndDefaultLightMakeUpTheColour)
{
    Show(PictureGlb(FourBlocks()));
    // The light meets the square at the angle of its direction (0.35, -0.6, -1).
    const float cosine = 1.0f / std::sqrt(0.35f * 0.35f + 0.6f * 0.6f + 1.0f);
    ExpectBlocks(Draw(), 0.3f + 0.7f * cosine);
}

TEST_F(ImportedPictureTest, ColoursOfTheVerticesShowInTheAdvancedLooks)
{
    Show(ColouredPly(true), "square.ply");
    const Pixel white = WhiteSurface(0, 0, 1);
    const Pixel expected{white.r, static_cast<int>(std::lround(white.g * 128.0 / 255.0)), 0, 255};
    const PixelRect inner = Inset({0, 0, Width(), Height()}, 4);
    ExpectColorInRect(DrawIn(Look::Advanced), inner, expected, 1);
    const Pixel phong = DrawIn(Look::Phong).At(Width() / 2, Height() / 2);
    EXPECT_GT(phong.r, 100);
    EXPECT_NEAR(phong.g, phong.r * 128.0 / 255.0, 2.0);
    EXPECT_EQ(phong.b, 0);
    // Nothing of it stays behind for what is drawn next.
    EXPECT_EQ(DrawIn(Look::Monotone).At(Width() / 2, Height() / 2), kWhite);
    ExpectColorInRect(DrawIn(Look::Advanced), inner, expected, 1);
}

TEST_F(ImportedPictureTest, ColoursOfTheVerticesMultiplyTheColourOfTheMaterial)
{
    TinyGltf gltf;
    gltf.AddFloats({-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0}, 3);
    gltf.AddFloats({1, 0.5f, 0.5f, 1, 0.5f, 0.5f, 1, 0.5f, 0.5f, 1, 0.5f, 0.5f}, 3);
    gltf.AddIndices({0, 1, 2, 0, 2, 3});
    Show(gltf.Glb("\"extensionsUsed\":[\"KHR_materials_unlit\"],\"scene\":0,\"scenes\":[{\"nodes\":[0]}],"
                  "\"nodes\":[{\"mesh\":0}],\"materials\":[{" + kUnlit +
                  "\"pbrMetallicRoughness\":{\"baseColorFactor\":[0.4,0.8,0,1]}}],\"meshes\":[{\"primitives\":["
                  "{\"attributes\":{\"POSITION\":0,\"COLOR_0\":1},\"indices\":2,\"material\":0}]}]"));
    ExpectColorInRect(DrawIn(Look::Advanced), Inset({0, 0, Width(), Height()}, 4), Pixel{170, 170, 0, 255}, 1);
}

TEST_F(ImportedPictureTest, PointsShowTheirColours)
{
    Show(ColouredPly(false), "points.ply");
    // Three pixels wide, about the corner that the four middle pixels share.
    const Picture picture = DrawIn(Look::Advanced);
    int points = 0;
    for (int y = Height() / 2 - 4; y < Height() / 2 + 4; ++y)
    {
        for (int x = Width() / 2 - 4; x < Width() / 2 + 4; ++x)
        {
            points += picture.At(x, y) == Pixel{255, 128, 0, 255} ? 1 : 0;
        }
    }
    EXPECT_EQ(points, 9);
}

TEST_F(ImportedPictureTest, LinesShowInTheColourOfTheirMaterial)
{
    AllowStateChange("blending");
    AllowStateChange("polygon offset");
    WriteFile(m_folder.Path("m.mtl"), std::string("newmtl m\nKd 1 0 0\n"));
    Show(std::string("mtllib m.mtl\nusemtl m\nv -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nv -1 0 0\nv 1 0 0\n"
                     "l 1 2 3 4 1\nl 5 6\n"),
         "lines.obj");
    const Picture picture = DrawIn(Look::Advanced);
    const Pixel background = picture.At(Width() / 4, Height() / 4);
    for (int x = 4; x < Width() - 4; ++x)
    {
        // It is 1.5 pixels wide, and its middle is a rim of pixels: it covers three quarters of those beside.
        const int half = Height() / 2;
        const Pixel line = picture.At(x, half);
        EXPECT_EQ(line.r, 255) << x;
        EXPECT_NEAR(line.g, 64, 3) << x;
        EXPECT_EQ(line.b, line.g) << x;
        EXPECT_EQ(picture.At(x, half + 4), background) << x;
    }
}

TEST_F(ImportedPictureTest, WithoutANormalMapTheSquareIsOfOneGrey)
{
    Show(SquareGlb({}, std::string()));
    ExpectColorInRect(DrawIn(Look::Advanced), Inset({0, 0, Width(), Height()}, 4), WhiteSurface(0, 0, 1), 1);
}

TEST_F(ImportedPictureTest, AnEmbeddedNormalMapTurnsTheSurface)
{
    Show(SquareGlb({NormalBlocks()}, "\"normalTexture\":{\"index\":0}"));
    ExpectLeaningBlocks(DrawIn(Look::Advanced));
}

TEST_F(ImportedPictureTest, ANormalMapInAFileTurnsTheSurface)
{
    WriteFile(m_folder.Path("picture.png"), NormalBlocks());
    Show(SquareGlb({Bytes()}, "\"normalTexture\":{\"index\":0}"));
    ExpectLeaningBlocks(DrawIn(Look::Advanced));

    WriteFile(m_folder.Path("square.mtl"), std::string("newmtl m\nKd 1 1 1\nnorm picture.png\n"));
    Show(SquareObj(), "square.obj");
    ExpectLeaningBlocks(DrawIn(Look::Advanced));
}

TEST_F(ImportedPictureTest, AnEmbeddedNormalMapComesBackAfterASuspend)
{
    Show(SquareGlb({NormalBlocks()}, "\"normalTexture\":{\"index\":0}"));
    const Picture before = DrawIn(Look::Advanced);
    m_app.Suspend(&m_presentation);
    m_app.Resume(&m_presentation);
    ExpectLeaningBlocks(before);
    EXPECT_TRUE(DrawIn(Look::Advanced) == before);
}

TEST_F(ImportedPictureTest, UnderAStrongSunANormalMapDarkensWhatLeansAwayInThePhongLookToo)
{
    Show(SquareGlb({NormalBlocks()}, "\"normalTexture\":{\"index\":0}"));
    const float before = EffectES20::GetSunShading();
    EffectES20::SetSunShading(1.0f);
    const Picture picture = DrawIn(Look::Phong);
    EffectES20::SetSunShading(before);
    const int quarter = Width() / 4;
    // The light comes from the upper left.
    EXPECT_GT(picture.At(quarter, 3 * quarter).r, picture.At(3 * quarter, 3 * quarter).r + 20);
    EXPECT_GT(picture.At(quarter, quarter).r, picture.At(3 * quarter, quarter).r + 20);
}

TEST_F(ImportedPictureTest, ANormalMapAndThePictureOfTheColoursShowTogether)
{
    Show(SquareGlb(
        {FourBlocks(), NormalBlocks()},
        "\"pbrMetallicRoughness\":{\"baseColorTexture\":{\"index\":0}},\"normalTexture\":{\"index\":1}"));
    const Picture picture = DrawIn(Look::Advanced);
    const int half = Width() / 2;
    ExpectColorInRect(picture, Inset({0, half, half, half}, 4), {WhiteSurface(-0.6, 0, 0.8).r, 0, 0, 255}, 2);
    ExpectColorInRect(picture, Inset({half, half, half, half}, 4), {0, WhiteSurface(0.6, 0, 0.8).r, 0, 255},
                      2);
    ExpectColorInRect(picture, Inset({0, 0, half, half}, 4), {0, 0, WhiteSurface(0, 0.6, 0.8).r, 255}, 2);
    ExpectColorInRect(picture, Inset({half, 0, half, half}, 4), WhiteSurface(0, -0.6, 0.8), 2);
}

TEST_F(ImportedPictureTest, AnOpacityMapCutsHoles)
{
    const int half = Width() / 2;
    const Bytes inAlpha = Painted(64, 64,
                                  [](int x, int y)
                                  {
                                      const bool isHole = x < 32 && y < 32;
                                      return Colour{10, 10, 10, static_cast<unsigned char>(isHole ? 0 : 255)};
                                  });
    for (const Bytes& map : {OneHole(), inAlpha})
    {
        WriteFile(m_folder.Path("holes.png"), map);
        WriteFile(m_folder.Path("square.mtl"), std::string("newmtl m\nKd 1 1 1\nmap_d holes.png\n"));
        // The loader knows the file of the last square as long as that is there.
        m_app.GetContext()->SetScene(nullptr);
        Show(SquareObj(), "square.obj");
        for (Look look : {Look::Advanced, Look::Phong})
        {
            const Picture picture = DrawIn(look);
            // The background is white, which no lit surface here reaches.
            ExpectColorInRect(picture, Inset({0, half, half, half}, 4), kWhite);
            EXPECT_LT(picture.At(3 * half / 2, 3 * half / 2).r, 250);
            EXPECT_LT(picture.At(half / 2, half / 2).r, 250);
        }
        ExpectColorInRect(DrawIn(Look::Advanced), Inset({half, 0, half, 2 * half}, 4), WhiteSurface(0, 0, 1),
                          1);
    }
}

TEST_F(ImportedPictureTest, WhatReflectsLooksTheSameAsLongAsThereIsNothingToReflect)
{
    Show(SquareGlb({}, "\"pbrMetallicRoughness\":{\"metallicFactor\":1,\"roughnessFactor\":0}"));
    ExpectColorInRect(DrawIn(Look::Advanced), Inset({0, 0, Width(), Height()}, 4), WhiteSurface(0, 0, 1), 1);
}

TEST_F(ImportedPictureTest, AMirrorReflectsTheCubeMapAndAMattSurfaceDoesNot)
{
    const GLuint cube = RedCube();
    const Pixel matt = WhiteSurface(0, 0, 1);
    struct
    {
        const char* roughness;
        Pixel color;
    } const cases[] = {{"0", {255, matt.g, matt.b, 255}}, {"1", matt}};
    for (const auto& test : cases)
    {
        SCOPED_TRACE(test.roughness);
        Show(SquareGlb({},
                       std::string("\"pbrMetallicRoughness\":{\"roughnessFactor\":") + test.roughness + "}"));
        DrawIn(Look::Advanced);
        m_presentation.SetReflectionMap(cube);
        const Picture picture = DrawIn(Look::Advanced);
        m_presentation.SetReflectionMap(0);
        ExpectColorInRect(picture, Inset({0, 0, Width(), Height()}, 4), test.color, 1);
    }
    glDeleteTextures(1, &cube);
}

TEST_F(ImportedPictureTest, ImportsAndTheirCrashesLeaveTheContextAlone)
{
    Show(PictureGlb(FourBlocks(), kUnlit));
    const Picture before = Draw();
    for (int i = 0; i < 5; ++i)
    {
        EXPECT_TRUE(ModelImporter::Import(m_folder.Path("square.glb")));
        IsolationLimits limits;
        limits.memoryBytes = std::uint64_t(1) << 30;
        limits.outputBytes = 1 << 20;
        limits.cpuSeconds = 10;
        limits.wallSeconds = 60;
        EXPECT_EQ(RunIsolated(
                      limits, [](IsolatedWork&) { std::raise(SIGSEGV); }, nullptr)
                      .end,
                  IsolationEnd::Crashed);
        ExpectNoGLError();
        EXPECT_TRUE(Draw() == before);
    }
}

} // namespace
