#pragma once

#include "orvane/math/Color.h"
#include "orvane/platform/ESTextureLoader.h"
#include "orvane/renderer/Renderer20.h"
#include "orvane/scene/Scene.h"
#include "tests/effects/EffectSettingsGuard.h"
#include "tests/support/GLFixture.h"
#include "tests/support/ShadingModel.h"

#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <functional>
#include <optional>
#include <vector>

namespace OV
{
class LightNode;
class Material;
class MeshNode;
} // namespace OV

namespace OV::Test
{

/// A renderer that runs any pass, with or without clip planes.
class PassRenderer : public Renderer20
{
public:
    using Renderer20::Renderer20;

    void DrawPass(Scene& scene, RenderPass pass, bool clip);

    /// The effects that the materials share.
    EffectCache& Effects() { return effectCache; }
};

/// The point of a plane in world space that the lower left corner of a pixel shows to the camera
/// of a PixelStage.
glm::vec3 WorldAtCorner(int x, int y, float z);

/// A rectangle that faces the camera, or shows it its back.
struct Quad
{
    /// Where it appears.
    PixelRect rect;

    /// Depth in world space; the camera stands at 5 and looks down to -5 and beyond.
    float z = 0.0f;
    bool facesAway = false;

    /// Normal of the two left and the two right vertices; none for a mesh without normals.
    std::optional<glm::vec3> normal = glm::vec3(0.0f, 0.0f, 1.0f);
    std::optional<glm::vec3> rightNormal;

    /// Whether it has texture coordinates, from (0, 0) lower left to (1, 1) upper right.
    bool textured = false;
};

/// Base of tests that compare pictures of rectangles with the shading model, pixel by pixel.
///
/// The picture is a square; the camera stands at (0, 0, 5), looks down -Z and sees 5 units to
/// each side of the origin. Fog is off. Colours in the framebuffer start as Background.
class PixelStage : public GLFixture
{
protected:
    static const glm::vec4 Background;

    PixelStage();
    ~PixelStage() override;

    /// An opaque material of these colours that takes light.
    Material& AddMaterial(const glm::vec4& diffuse, const glm::vec4& ambient);

    LightNode& AddLight(const glm::vec3& direction);

    /// A rectangle of a material at a node of its own.
    MeshNode& AddQuad(Material& material, const Quad& quad);

    /// Gives a material a texture of these colours from left to right, in equal bands.
    void SetTexture(Material& material, const std::vector<glm::vec4>& bands);

    /// Draws one frame of the engine.
    Picture DrawFrame();

    /// Draws the scene in one pass.
    Picture DrawPass(RenderPass pass, bool clip = false);

    /// World to clip space, as of the last frame.
    glm::mat4 ViewProjection() const;

    /// The point of a plane in world space that a pixel's centre shows.
    static glm::vec3 WorldAt(int x, int y, float z = 0.0f);

    /// Every pixel well inside of the rectangle has that colour.
    void ExpectShade(const Picture& picture, const PixelRect& rect, const glm::vec4& color) const;

    /// Every pixel well inside of the rectangle has the colour that a function gives for it; none
    /// for a pixel not to be looked at.
    void ExpectShades(const Picture& picture, const PixelRect& rect,
                      const std::function<std::optional<glm::vec4>(int x, int y)>& model) const;

    EffectSettingsGuard settings;
    Platform::Linux::ESTextureLoader loader;
    PassRenderer renderer{&loader, nullptr};
    Scene scene;

private:
    void BeginFrame();
};

/// Colour of the engine as the model takes it, and back.
glm::vec4 ToVec(const Color& color);
Color ToColor(const glm::vec4& color);

} // namespace OV::Test
