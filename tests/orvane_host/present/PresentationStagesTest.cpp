#include "orvane_host/present/PresentationRenderer.h"
#include "orvane/renderer/AAMode.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Scene.h"
#include "tests/orvane_host/present/EveryFeatureScene.h"
#include "tests/orvane_host/present/Pairwise.h"
#include "tests/orvane_host/present/PresentationStage.h"

#include <gtest/gtest.h>

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace OV::Test
{

namespace
{

using Host::EdgeLook;
using Host::Identity;
using Host::Look;

/// What a frame of a presentation can be set to.
enum Setting : std::size_t
{
    SettingLook,
    SettingAntialiasing,
    SettingEdges, ///< none, by object, by group
    SettingSky,
    SettingSurfaces,
    SettingLines,
    SettingOverlay,
    SettingOcclusion, ///< none, by horizons, the spiral
    SettingIdentifiers,
    SettingSamples,
    SettingCapture,
    SettingOrthographic,
    SettingLayerRatio,
    SettingCount,
};

/// Names of the values, as a test is named by them; an empty one is what a presentation starts as.
const std::vector<std::vector<std::string>> kValues = {
    {"Basic", "Advanced", "Phong", "Crosshatch", "Monotone", "VertexColor"},
    {"NoAA", "Msaa", "Fxaa", "Ssaa"},
    {"", "ObjectEdges", "GroupEdges"},
    {"", "Sky"},
    {"", "NoSurfaces"},
    {"", "NoLines"},
    {"", "Overlay"},
    {"", "Occlusion", "Spiral"},
    {"", "Identifiers"},
    {"", "FourSamples"},
    {"", "Captured"},
    {"", "Orthographic"},
    {"", "LayerRatio"},
};

using Combination = std::vector<int>;

std::vector<int> Sizes()
{
    std::vector<int> sizes;
    for (const std::vector<std::string>& values : kValues)
    {
        sizes.push_back(static_cast<int>(values.size()));
    }
    return sizes;
}

/// Every pair, and every stage at once in each mode of antialiasing.
std::vector<Combination> AllCombinations()
{
    std::vector<Combination> list = PairwiseCombinations(Sizes());
    for (int mode = 0; mode < 4; ++mode)
    {
        Combination everything(SettingCount, 1);
        everything[SettingAntialiasing] = mode;
        for (const Setting off : {SettingSurfaces, SettingLines, SettingIdentifiers, SettingOrthographic})
        {
            everything[off] = 0;
        }
        list.push_back(everything);
    }
    return list;
}

std::string NameOf(const Combination& combination)
{
    std::string name;
    for (std::size_t setting = 0; setting < SettingCount; ++setting)
    {
        name += kValues[setting][static_cast<std::size_t>(combination[setting])];
    }
    return name;
}

class EveryStage : public PresentationStage, public ::testing::WithParamInterface<Combination>
{
protected:
    EveryStage() :
        PresentationStage(SmallWidth, SmallHeight, GetParam()[SettingSamples] == 1 ? 4 : 0), scene(*app.GetContext())
    {
    }

    static bool Is(Setting setting) { return GetParam()[setting] == 1; }

    void UseSettings()
    {
        renderer->SetAAMode(static_cast<AAMode>(GetParam()[SettingAntialiasing]));
        renderer->SetLook(static_cast<Look>(GetParam()[SettingLook]));
        renderer->ShowSky(Is(SettingSky));
        renderer->ShowSurfaces(!Is(SettingSurfaces));
        renderer->ShowLines(!Is(SettingLines));
        renderer->SetLayerRatio(Is(SettingLayerRatio) ? std::optional<float>(1.0f) : std::nullopt);
        scene.UseOrthographic(Is(SettingOrthographic));
        UseStages();
    }

    void UseStages()
    {
        const int edges = GetParam()[SettingEdges];
        if (edges != 0)
        {
            EdgeLook look;
            look.weight = 1.0f;
            look.color = Color(0.9f, 0.0f, 0.1f);
            look.identity = edges == 1 ? Identity::Object : Identity::Group;
            renderer->SetEdges(look);
        }
        renderer->OverlayLines(Is(SettingOverlay));
        const int occlusion = GetParam()[SettingOcclusion];
        renderer->SetHorizonOcclusion(
            occlusion == 1 ? std::optional<Host::PresentationRenderer::HorizonOcclusion>({0.5f, 1.0f}) : std::nullopt);
        renderer->ShowAmbientOcclusion(occlusion == 2);
        renderer->ShowIdentifiers(Is(SettingIdentifiers));
    }

    void DropStages()
    {
        renderer->SetEdges(std::nullopt);
        renderer->OverlayLines(false);
        renderer->ShowAmbientOcclusion(false);
        renderer->SetHorizonOcclusion(std::nullopt);
        renderer->ShowIdentifiers(false);
    }

    Picture Frame() { return Draw(Is(SettingCapture)); }

    EveryFeatureScene scene;
};

/// Expects a state to be that of a frame without stages. A texture that the plain frame leaves in
/// a unit may be gone; none may have come.
void ExpectState(const GLStateValues& actual, const GLStateValues& plain, const std::string& when)
{
    for (const auto& [name, value] : plain)
    {
        const bool released = name.rfind("texture of unit", 0) == 0 && actual.at(name) == std::vector<double>{0.0};
        if (!released)
        {
            EXPECT_EQ(actual.at(name), value) << name << ' ' << when;
        }
    }
}

std::size_t CountColors(const Picture& picture)
{
    std::set<std::vector<int>> colors;
    for (int y = 0; y < picture.GetHeight(); ++y)
    {
        for (int x = 0; x < picture.GetWidth(); ++x)
        {
            const Pixel pixel = picture.At(x, y);
            colors.insert({pixel.r, pixel.g, pixel.b, pixel.a});
        }
    }
    return colors.size();
}

} // namespace

TEST(PairwiseCombinations, HoldEveryPairOfValuesOfEveryTwoSettings)
{
    const std::vector<int> sizes = Sizes();
    std::set<std::vector<std::size_t>> pairs;
    for (const Combination& combination : PairwiseCombinations(sizes))
    {
        ASSERT_EQ(combination.size(), sizes.size());
        for (std::size_t a = 0; a < sizes.size(); ++a)
        {
            ASSERT_GE(combination[a], 0);
            ASSERT_LT(combination[a], sizes[a]);
            for (std::size_t b = a + 1; b < sizes.size(); ++b)
            {
                pairs.insert({a, static_cast<std::size_t>(combination[a]), b, static_cast<std::size_t>(combination[b])});
            }
        }
    }
    std::size_t expected = 0;
    for (std::size_t a = 0; a < sizes.size(); ++a)
    {
        for (std::size_t b = a + 1; b < sizes.size(); ++b)
        {
            expected += static_cast<std::size_t>(sizes[a] * sizes[b]);
        }
    }
    EXPECT_EQ(pairs.size(), expected);
}

TEST_P(EveryStage, DrawsTheSameAgainAlsoAfterASuspensionAndLeavesTheStateOfAPlainFrame)
{
    UseSettings();
    DropStages();
    Frame();
    ExpectNoGLError();
    const GLStateValues plainState = GLState::Capture();
    const Picture plain = Frame();

    UseStages();
    float nearDistance = 0.0f;
    float farDistance = 0.0f;
    Camera().GetNearFar(nearDistance, farDistance);
    const CameraNode::CameraProjection projection = Camera().GetProjection();
    const Picture first = Frame();
    ExpectNoGLError();
    ExpectState(GLState::Capture(), plainState, "after the first frame");
    // Sprites, text and fog alone make more.
    EXPECT_GT(CountColors(first), 20u);
    EXPECT_FALSE(app.Update(0.0f)) << "drawing dirties nothing";
    float nearAfter = 0.0f;
    float farAfter = 0.0f;
    Camera().GetNearFar(nearAfter, farAfter);
    EXPECT_EQ(nearAfter, nearDistance);
    EXPECT_EQ(farAfter, farDistance);
    EXPECT_EQ(Camera().GetProjection(), projection);

    const GLObjects objects = GLState::CaptureObjects();
    ExpectSame(Frame(), first, "in the second frame");
    ExpectState(GLState::Capture(), plainState, "after the second frame");
    EXPECT_EQ(GLState::CaptureObjects(), objects) << "a steady frame makes no object";

    SuspendAndResume();
    ExpectSame(Frame(), first, "after a suspension");
    ExpectNoGLError();

    DropStages();
    ExpectSame(Frame(), plain, "with every stage off again");
}

INSTANTIATE_TEST_SUITE_P(Pairwise, EveryStage, ::testing::ValuesIn(AllCombinations()),
                         [](const auto& info) { return NameOf(info.param); });

} // namespace OV::Test
