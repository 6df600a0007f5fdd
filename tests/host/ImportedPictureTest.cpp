#include "host/ModelImporter.h"
#include "host/ViewFit.h"
#include "host/detail/IsolatedProcess.h"

#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/imaging/TextureLoader.h"
#include "orvane/renderer/Renderer20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Scene.h"
#include "tests/host/TinyModels.h"
#include "tests/imaging/PngFile.h"
#include "tests/support/GLFixture.h"

#include <cmath>
#include <csignal>
#include <memory>
#include <string>

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
    PngFile png;
    png.width = 64;
    png.height = 64;
    png.colorType = 2;
    for (int y = 0; y < 64; ++y)
    {
        Bytes row;
        for (int x = 0; x < 64; ++x)
        {
            const Pixel& pixel = y < 32 ? (x < 32 ? kRed : kGreen) : (x < 32 ? kBlue : kWhite);
            row.insert(row.end(), {static_cast<unsigned char>(pixel.r), static_cast<unsigned char>(pixel.g),
                                   static_cast<unsigned char>(pixel.b)});
        }
        png.rows.push_back(row);
    }
    return png.Write();
}

/// A square of edge 2 about the origin that faces +Z and shows a whole picture.
/// @param picture an embedded one, or empty for the file picture.png.
/// @param material further members of the material, with a comma at the end.
Bytes SquareGlb(const Bytes& picture, const std::string& material = "")
{
    TinyGltf gltf;
    gltf.AddFloats({-1, -1, 0, 1, -1, 0, 1, 1, 0, -1, 1, 0}, 3);
    gltf.AddFloats({0, 1, 1, 1, 1, 0, 0, 0}, 2);
    gltf.AddFloats({0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1}, 3);
    gltf.AddIndices({0, 1, 2, 0, 2, 3});
    const std::string image = picture.empty() ? "{\"uri\":\"picture.png\"}"
                                              : "{\"bufferView\":" + std::to_string(gltf.AddBytes(picture)) +
                                                    ",\"mimeType\":\"image/png\"}";
    return gltf.Glb(
        "\"extensionsUsed\":[\"KHR_materials_unlit\"],\"scene\":0,\"scenes\":[{\"nodes\":[0]}],"
        "\"nodes\":[{\"mesh\":0}],\"images\":[" +
        image + "],\"textures\":[{\"source\":0}],\"materials\":[{" + material +
        "\"pbrMetallicRoughness\":{\"baseColorTexture\":{\"index\":0}}}],\"meshes\":[{\"primitives\":"
        "[{\"attributes\":{\"POSITION\":0,\"TEXCOORD_0\":1,\"NORMAL\":2},\"indices\":3,\"material\":0}]}]");
}

const std::string kUnlit = "\"extensions\":{\"KHR_materials_unlit\":{}},";

class ImportedPictureTest : public GLFixture
{
protected:
    /// Imports a square and lets it fill the framebuffer.
    void Show(const Bytes& model)
    {
        WriteFile(m_folder.Path("square.glb"), model);
        ImportResult result = ModelImporter::Import(m_folder.Path("square.glb"));
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
    }

    Picture Draw()
    {
        m_app.Update(0);
        m_app.Render(&m_renderer, false);
        return ReadPixels();
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
};

TEST_F(ImportedPictureTest, AnEmbeddedPictureStandsUpright)
{
    Show(SquareGlb(FourBlocks(), kUnlit));
    ExpectBlocks(Draw());
}

TEST_F(ImportedPictureTest, APictureInAFileStandsUpright)
{
    WriteFile(m_folder.Path("picture.png"), FourBlocks());
    Show(SquareGlb({}, kUnlit));
    ExpectBlocks(Draw());
}

TEST_F(ImportedPictureTest, AmbientAndDefaultLightMakeUpTheColour)
{
    Show(SquareGlb(FourBlocks()));
    // The light meets the square at the angle of its direction (0.35, -0.6, -1).
    const float cosine = 1.0f / std::sqrt(0.35f * 0.35f + 0.6f * 0.6f + 1.0f);
    ExpectBlocks(Draw(), 0.3f + 0.7f * cosine);
}

TEST_F(ImportedPictureTest, ImportsAndTheirCrashesLeaveTheContextAlone)
{
    Show(SquareGlb(FourBlocks(), kUnlit));
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
