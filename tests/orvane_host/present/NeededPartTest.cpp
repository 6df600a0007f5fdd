#include "orvane_host/present/PresentationRenderer.h"
#include "orvane/renderer/AAMode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/MeshNode.h"
#include "tests/orvane_host/present/PresentationStage.h"

#include <memory>
#include <vector>

namespace OV::Test
{

namespace
{

/// What of the picture is needed, whose rim goes across a corner that occlusion darkens, and something beside it.
constexpr PixelRect Needed{24, 16, 40, 20};
constexpr PixelRect Beside{11, 11, 10, 6};

/// Way of antialiasing, samples and how far it looks at colours.
struct Way
{
    const char* label;
    AAMode mode;
    int samples;
    int reach;
};

class NeededPart : public StageByStage, public ::testing::WithParamInterface<Way>
{
protected:
    NeededPart() : StageByStage(SmallWidth, SmallHeight, GetParam().samples)
    {
        renderer->SetAAMode(GetParam().mode);
        AddThings();
        AddLine(Vector(5, 20, 12), Vector(90, 36, 12), Color(0, 1, 0), 3.0f);
        AddRect(Color(0.9f, 0.2f, 0.2f, 0.5f), {30, 15, 40, 10}, 9.0f, 3);
    }

    Picture DrawPart(const Host::PictureRect& needed)
    {
        Host::PicturePart part;
        part.whole = {SmallWidth, SmallHeight};
        part.size = part.whole;
        part.needed = needed;
        renderer->ShowPart(part);
        return Draw(GetParam().mode != AAModeMSAA);
    }
};

TEST_P(NeededPart, IsDrawnAsInAllOfThePictureAndNothingElseIsColoured)
{
    std::vector<Stage> stages = Stages();
    stages.push_back({"glass in order", [](auto& of) {
                          Host::GlassSettings glass;
                          glass.order = Host::GlassOrder::Exact;
                          of.SetGlass(glass);
                      }});
    for (const Stage& stage : stages)
    {
        SCOPED_TRACE(stage.label);
        stage.use(*renderer);
        // First: what all of it leaves in buffers would be right.
        const Picture part = DrawPart({Needed.x, Needed.y, {Needed.width, Needed.height}});
        const Picture all = DrawPart({});
        int wrong = 0;
        const PixelRect kept = Inset(Needed, GetParam().reach);
        for (int y = kept.y; y < kept.y + kept.height; ++y)
        {
            for (int x = kept.x; x < kept.x + kept.width; ++x)
            {
                wrong += all.At(x, y) == part.At(x, y) ? 0 : 1;
            }
        }
        EXPECT_EQ(wrong, 0);
        EXPECT_NE(all.At(Beside.x, Beside.y), Ground);
        ExpectColorInRect(part, Beside, Ground, 0);
        DropStages();
    }
}

TEST_P(NeededPart, OcclusionIsFoundOnceForTwoBackgrounds)
{
    renderer->SetHorizonOcclusion({{20.0f, 1.0f}});
    MeshNode& nearer = AddRect(Color(0.2f, 0.2f, 0.8f), {10, 10, 8, 20}, 12.0f, 4);
    // Beside it, which then goes.
    constexpr int x = 20;
    constexpr int y = 27;
    const Pixel dark = DrawPart({}).At(x, y);
    nearer.SetFlags(NodeFlagHidden, false);
    const auto draw = [&](bool isAgain) {
        Host::PicturePart part;
        part.whole = {SmallWidth, SmallHeight};
        part.size = part.whole;
        part.isAgain = isAgain;
        renderer->ShowPart(part);
        return Draw(GetParam().mode != AAModeMSAA).At(x, y);
    };
    EXPECT_EQ(draw(true), dark);
    const Pixel open = draw(false);
    EXPECT_GT(open.r, dark.r + 5);
    EXPECT_EQ(draw(true), open);
    SuspendAndResume();
    EXPECT_EQ(draw(true), open) << "with new buffers";
}

INSTANTIATE_TEST_SUITE_P(Ways, NeededPart,
                         ::testing::Values(Way{"None", AAModeNone, 0, 0}, Way{"Samples", AAModeMSAA, 4, 0},
                                           Way{"Filter", AAModeFXAA, 0, 6}, Way{"Finer", AAModeSupersampling, 0, 2}),
                         [](const auto& info) { return info.param.label; });

} // namespace

} // namespace OV::Test
