#pragma once

#include "orvane/effects/AdvancedMaterialBaseES20.h"
#include "tests/effects/SurfaceStage.h"
#include "tests/support/AdvancedModel.h"

namespace OV::Test
{

/// A surface under one of the two models of per-pixel shading, and what the model of the test
/// makes of it.
struct AdvancedCase
{
    AdvancedLook look;
    Surface surface;

    /// What the effect takes the surface for.
    bool takesWinding = false;

    /// The colour that a pixel shows; none where the model isn't sure.
    std::optional<glm::vec4> At(int x, int y, const glm::vec4& background) const;
};

/// Base of the pixel tests of the advanced materials. Holds both effects, so that their programs
/// are compiled once a test.
class AdvancedStage : public SurfaceStage
{
protected:
    AdvancedStage();
    ~AdvancedStage() override;

    AdvancedMaterialBaseES20& Effect(bool phong) { return phong ? *m_phong : *m_plain; }

    /// Makes the model that the tests speak of the one that is drawn with.
    static void UseModel(bool phong);

    /// A case of the usual colours in front of the usual light, which must be in the scene.
    static AdvancedCase Usual(bool phong);
    LightNode& AddUsualLight();
    Material& AddUsualMaterial();

    Picture Draw(const AdvancedCase& of);

    /// Draws and compares every pixel of the surface.
    void ExpectCase(const AdvancedCase& expected);

    /// Of a point of the surface, as fog takes it. After a frame.
    float DistanceOf(const Surface& surface) const;

private:
    AdvancedMaterialBaseES20* m_plain;
    AdvancedMaterialBaseES20* m_phong;
};

} // namespace OV::Test
