#include "tests/effects/PixelStage.h"

#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"

#include <GL/glew.h>
#include <glm/gtc/type_ptr.hpp>

#include <algorithm>
#include <cstdlib>

namespace OV::Test
{

namespace
{

constexpr float kEye = 5.0f;
constexpr float kQuarterPi = 0.78539816f;

/// Half of what the camera sees of a plane, which its half angle makes as large as its distance.
float HalfExtent(float z)
{
    return kEye - z;
}

float ToWorld(float pixel, float z)
{
    const float half = GLFixture::DefaultSize / 2.0f;
    return (pixel - half) / half * HalfExtent(z);
}

Vector ToVector(const glm::vec3& v)
{
    return Vector(v.x, v.y, v.z);
}

std::shared_ptr<RawMesh> MakeGeometry(const Quad& quad)
{
    const float left = ToWorld(static_cast<float>(quad.rect.x), quad.z);
    const float right = ToWorld(static_cast<float>(quad.rect.x + quad.rect.width), quad.z);
    const float bottom = ToWorld(static_cast<float>(quad.rect.y), quad.z);
    const float top = ToWorld(static_cast<float>(quad.rect.y + quad.rect.height), quad.z);
    auto raw = std::make_shared<RawMesh>();
    raw->StartDescription();
    raw->SetPositionBuffer({Vector(left, bottom, quad.z), Vector(right, bottom, quad.z),
                            Vector(right, top, quad.z), Vector(left, top, quad.z)});
    if (quad.normal)
    {
        const Vector leftNormal = ToVector(*quad.normal);
        const Vector rightNormal = ToVector(quad.rightNormal.value_or(*quad.normal));
        raw->SetNormalBuffer({leftNormal, rightNormal, rightNormal, leftNormal});
    }
    if (quad.textured)
    {
        raw->SetTextureBuffer({{0, 0}, {1, 0}, {1, 1}, {0, 1}});
    }
    raw->SetIndices(quad.facesAway ? std::vector<unsigned short>{0, 2, 1, 0, 3, 2}
                                   : std::vector<unsigned short>{0, 1, 2, 0, 2, 3});
    raw->EndDescription(true);
    return raw;
}

} // namespace

glm::vec3 WorldAtCorner(int x, int y, float z)
{
    return {ToWorld(static_cast<float>(x), z), ToWorld(static_cast<float>(y), z), z};
}

void PassRenderer::DrawPass(Scene& scene, RenderPass pass, bool clip)
{
    CameraNode* camera = scene.GetCameraNode();
    if (camera->GetRenderData() == nullptr)
    {
        camera->SetRenderData(new CameraNodeES20(camera));
    }
    auto* data = static_cast<CameraNodeES20*>(camera->GetRenderData());
    data->UpdateMVP(GetWidthPx(), GetHeightPx(), false);
    glEnable(GL_CULL_FACE);
    glEnable(GL_DEPTH_TEST);
    std::vector<RenderItemES20> items;
    for (Material* material : scene.GetOptimizedMaterials())
    {
        PrepareOptimizedMaterial(material, data, items, clip);
    }
    for (Material* material : scene.GetAlphaMaterials())
    {
        PrepareOptimizedMaterial(material, data, items, clip);
    }
    bufferPool.GenerateVBOs();
    RenderItemList(data, items, pass);
    MeshES20::ResetBufferCache();
}

const glm::vec4 PixelStage::Background(0.2f, 0.4f, 0.6f, 1.0f);

PixelStage::PixelStage()
{
    SkySettings::inst().SetUseFog(false);
    renderer.Resize(Width(), Height());
    Transform place;
    place.SetPosition(Vector(0, 0, kEye));
    scene.GetCameraNode()->SetLocal(place);
    scene.GetCameraNode()->SetFOV(kQuarterPi);
}

PixelStage::~PixelStage() = default;

Material& PixelStage::AddMaterial(const glm::vec4& diffuse, const glm::vec4& ambient)
{
    auto* material = new Material("material");
    material->SetDiffuse(ToColor(diffuse));
    material->SetAmbient(ToColor(ambient));
    scene.AddMaterial(material);
    return *material;
}

LightNode& PixelStage::AddLight(const glm::vec3& direction)
{
    auto* light = new LightNode(&scene);
    light->SetLocalDirection(ToVector(direction));
    scene.GetRoot()->AddChild(light, false);
    return *light;
}

MeshNode& PixelStage::AddQuad(Material& material, const Quad& quad)
{
    auto* mesh = new Mesh(MakeGeometry(quad), &scene);
    material.AddMesh(mesh);
    auto* node = new MeshNode(&scene);
    scene.GetRoot()->AddChild(node, false);
    mesh->AddNode(node);
    return *node;
}

void PixelStage::SetTexture(Material& material, const std::vector<glm::vec4>& bands)
{
    constexpr int bandWidth = 16;
    const int width = bandWidth * static_cast<int>(bands.size());
    auto* pixels = static_cast<unsigned char*>(std::malloc(static_cast<std::size_t>(width) * 4));
    for (int x = 0; x < width; ++x)
    {
        const Pixel pixel = ToPixel(bands[static_cast<std::size_t>(x / bandWidth)]);
        const int channels[] = {pixel.r, pixel.g, pixel.b, pixel.a};
        std::copy(channels, channels + 4, pixels + 4 * x);
    }
    material.pixels = pixels;
    material.pixelWidth = width;
    material.pixelHeight = 1;
}

void PixelStage::BeginFrame()
{
    scene.MarkDirty();
    scene.UpdateGraph(static_cast<float>(Width()), static_cast<float>(Height()));
    renderer.BeginRender(false, ToColor(Background));
}

Picture PixelStage::DrawFrame()
{
    BeginFrame();
    renderer.Render3D(&scene, scene.GetCameraNode());
    renderer.EndRender();
    return ReadPixels();
}

Picture PixelStage::DrawPass(RenderPass pass, bool clip)
{
    BeginFrame();
    renderer.DrawPass(scene, pass, clip);
    renderer.EndRender();
    return ReadPixels();
}

glm::mat4 PixelStage::ViewProjection() const
{
    const auto* data = static_cast<const CameraNodeES20*>(scene.GetCameraNode()->GetRenderData());
    return glm::make_mat4(data->GetMVP().m);
}

glm::vec3 PixelStage::WorldAt(int x, int y, float z)
{
    return {ToWorld(static_cast<float>(x) + 0.5f, z), ToWorld(static_cast<float>(y) + 0.5f, z), z};
}

void PixelStage::ExpectShade(const Picture& picture, const PixelRect& rect, const glm::vec4& color) const
{
    ExpectColorInRect(picture, Inset(rect), ToPixel(color), 1);
}

void PixelStage::ExpectShades(const Picture& picture, const PixelRect& rect,
                              const std::function<std::optional<glm::vec4>(int, int)>& model) const
{
    const PixelRect inner = Inset(rect);
    int compared = 0;
    int wrong = 0;
    for (int y = inner.y; y < inner.y + inner.height; ++y)
    {
        for (int x = inner.x; x < inner.x + inner.width; ++x)
        {
            const std::optional<glm::vec4> color = model(x, y);
            if (!color)
            {
                continue;
            }
            ++compared;
            if (ChannelDifference(picture.At(x, y), ToPixel(*color)) > 1 && wrong++ == 0)
            {
                ADD_FAILURE() << "at " << x << ", " << y << ": " << picture.At(x, y) << " is not "
                              << ToPixel(*color);
            }
        }
    }
    EXPECT_GT(compared, 0);
    EXPECT_EQ(wrong, 0) << "of " << compared;
}

glm::vec4 ToVec(const Color& color)
{
    return {color.r, color.g, color.b, color.a};
}

Color ToColor(const glm::vec4& color)
{
    return Color(color.r, color.g, color.b, color.a);
}

} // namespace OV::Test
