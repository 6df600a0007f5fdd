#pragma once

#include "orvane_host/present/PresentationRenderer.h"
#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/platform/ESTextureLoader.h"
#include "tests/effects/EffectSettingsGuard.h"
#include "tests/support/GLFixture.h"

#include <functional>
#include <memory>
#include <vector>

namespace OV
{

class CameraNode;
class Line;
class LineStyle;
class Material;
class MeshNode;
class Scene;

} // namespace OV

namespace OV::Test
{

/// Base of tests on the stages of a presentation: an engine with its renderer on a small picture.
class PresentationStage : public GLFixture
{
protected:
    static constexpr int SmallWidth = 96;
    static constexpr int SmallHeight = 64;

    explicit PresentationStage(int width = SmallWidth, int height = SmallHeight, int samples = 0);
    ~PresentationStage() override;

    /// Starts over with a renderer of the framebuffer's size.
    void NewRenderer();

    Scene& World() { return *app.GetContext()->GetScene(); }
    CameraNode& Camera();

    /// One frame on a cleared framebuffer.
    Picture Draw(bool capture = false);

    /// The frame with identifiers in place of the scene.
    Picture DrawIdentifiers(bool capture = false);

    void SuspendAndResume();

    /// Reports how many pixels differ, and the first.
    static void ExpectSame(const Picture& actual, const Picture& expected, const char* what);

    EffectSettingsGuard settings;
    Platform::Linux::ESTextureLoader loader;
    AppContext app;
    std::unique_ptr<Host::PresentationRenderer> renderer;
};

/// The same with an orthographic scene in which a unit is a pixel and the origin the lower left
/// corner of the picture. Surfaces are unlit and drawn in Look::Basic, so that colours are exact;
/// the ground is blue. Near is 1, far 200, and the eye at a height of 100.
class FlatStage : public PresentationStage
{
protected:
    explicit FlatStage(int width = SmallWidth, int height = SmallHeight, int samples = 0);

    static constexpr Pixel Ground{0, 0, 255, 255};

    /// Makes the camera see as many units as the framebuffer has pixels.
    void FitCamera();

    Material& AddMaterial(const Color& color);

    /// A rectangle that faces the eye.
    /// @param colors of its vertices: lower left, lower right, upper right, upper left; none for a
    ///        mesh without.
    MeshNode& AddRect(Material& material, const PixelRect& rect, float z, int userData,
                      const std::vector<Color>& colors = {});
    MeshNode& AddRect(const Color& color, const PixelRect& rect, float z, int userData);

    /// A style without antialiasing and a line of it.
    LineStyle& AddLine(const Vector& start, const Vector& end, const Color& color, float width);
};

/// The same with each stage at hand by itself.
class StageByStage : public FlatStage
{
protected:
    using FlatStage::FlatStage;

    struct Stage
    {
        const char* label;
        std::function<void(Host::PresentationRenderer&)> use;
    };

    /// Each stage, and all of them.
    static std::vector<Stage> Stages();

    void UseAllStages();
    void DropStages();

    /// A grey rectangle and a green one before it that touch.
    void AddThings();
};

/// The colour of a picture that stands for a user data.
Pixel IdentifierOf(int userData);

} // namespace OV::Test
