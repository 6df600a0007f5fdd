#pragma once

#include "orvane_host/present/Presentation.h"
#include "orvane/scene/Scene.h"
#include "tests/effects/EffectSettingsGuard.h"
#include "tests/orvane_host/present/EveryFeatureScene.h"
#include "tests/support/GLFixture.h"

#include <memory>
#include <vector>

namespace OV::Test
{

/// A scene that has the names of its nodes with it.
struct NamedScene
{
    std::unique_ptr<Scene> scene;
    std::vector<Host::ImportedNode> nodes;
};

/// Closed boxes: "house" with "left" (a small box within it), "right" and "twin", which share a
/// mesh, "glass", which is see-through, and "roof" below "right". Some share a material.
NamedScene MakeBoxes();

/// Base of tests on presentations: a small framebuffer, and the settings of the process put back.
class PresentationFixture : public GLFixture
{
protected:
    static constexpr int SmallWidth = 72;
    static constexpr int SmallHeight = 48;

    explicit PresentationFixture(int width = SmallWidth, int height = SmallHeight, int samples = 4);

    static std::unique_ptr<Host::Presentation> PresentBoxes();

    /// Applies settings that are right.
    static void Apply(Host::Presentation& presentation, const Host::PresentationSettings& settings);

    /// One frame in the fixture's framebuffer.
    Picture Draw(Host::Presentation& presentation) const;

    /// Reports how many pixels differ, and the first.
    static void ExpectSame(const Picture& actual, const Picture& expected, const std::string& what);

    EffectSettingsGuard settings;
};

} // namespace OV::Test
