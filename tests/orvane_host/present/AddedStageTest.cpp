#include "orvane_host/present/StageAccess.h"
#include "orvane/effects/AAEffectES20.h"
#include "orvane/effects/EffectCache.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Scene.h"
#include "tests/orvane_host/present/AddedStage.h"
#include "tests/orvane_host/present/PresentationStage.h"

#include <GL/glew.h>

#include <cmath>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace OV::Test
{

namespace
{

using Host::EdgeLook;
using Host::FrameNeeds;
using Host::PresentationFrame;
using Host::StageSlot;

constexpr Pixel Paint{255, 200, 0, 255};

/// Covers a part of what is bound, without depth.
void PaintRect(const PixelRect& rect, const Pixel& color)
{
    GLint box[4] = {};
    glGetIntegerv(GL_SCISSOR_BOX, box);
    glEnable(GL_SCISSOR_TEST);
    glScissor(rect.x, rect.y, rect.width, rect.height);
    glClearColor(static_cast<float>(color.r) / 255.0f, static_cast<float>(color.g) / 255.0f,
                 static_cast<float>(color.b) / 255.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    glDisable(GL_SCISSOR_TEST);
    glScissor(box[0], box[1], box[2], box[3]);
}

int TextureWidth(GLuint texture)
{
    GLint width = 0;
    glBindTexture(GL_TEXTURE_2D, texture);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
    glBindTexture(GL_TEXTURE_2D, 0);
    return width;
}

/// A colour of a texture of the size of the frame's target.
Pixel ColorIn(GLuint texture, const PresentationFrame& frame, int x, int y)
{
    const auto width = static_cast<std::size_t>(frame.target.width);
    std::vector<unsigned char> bytes(4 * width * static_cast<std::size_t>(frame.target.height));
    glBindTexture(GL_TEXTURE_2D, texture);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
    glBindTexture(GL_TEXTURE_2D, 0);
    const unsigned char* at = &bytes[4 * (static_cast<std::size_t>(y) * width + static_cast<std::size_t>(x))];
    return {at[0], at[1], at[2], at[3]};
}

float DepthIn(GLuint texture, const PresentationFrame& frame, int x, int y)
{
    const auto width = static_cast<std::size_t>(frame.target.width);
    std::vector<float> depths(width * static_cast<std::size_t>(frame.target.height));
    glBindTexture(GL_TEXTURE_2D, texture);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT, GL_FLOAT, depths.data());
    glBindTexture(GL_TEXTURE_2D, 0);
    return depths[static_cast<std::size_t>(y) * width + static_cast<std::size_t>(x)];
}

Pixel ColorBound(int x, int y)
{
    unsigned char bytes[4] = {};
    glReadPixels(x, y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, bytes);
    return {bytes[0], bytes[1], bytes[2], bytes[3]};
}

/// Lets no framebuffer be complete for the length of a scope.
class NoFramebuffers
{
public:
    NoFramebuffers() : m_real(__glewCheckFramebufferStatus) { __glewCheckFramebufferStatus = &Refuse; }
    ~NoFramebuffers() { __glewCheckFramebufferStatus = m_real; }

    NoFramebuffers(const NoFramebuffers&) = delete;
    NoFramebuffers& operator=(const NoFramebuffers&) = delete;

private:
    static GLenum GLAPIENTRY Refuse(GLenum) { return GL_FRAMEBUFFER_UNSUPPORTED; }

    PFNGLCHECKFRAMEBUFFERSTATUSPROC m_real;
};

/// A grey thing of user data 1 and a green one of 2 that touch, and stages from outside.
class AddedStages : public StageByStage
{
protected:
    explicit AddedStages(int samples = 0) : StageByStage(SmallWidth, SmallHeight, samples) { AddThings(); }

    AddedStage& Add(StageSlot slot, const FrameNeeds& needs = {})
    {
        auto stage = std::make_unique<AddedStage>(record);
        AddedStage& added = *stage;
        added.needs = needs;
        EXPECT_EQ(renderer->AddStage(std::move(stage), slot), &added);
        return added;
    }

    static constexpr Pixel Grey{102, 102, 102, 255};
    static constexpr Pixel Green{51, 153, 51, 255};
    static constexpr int InGrey[2] = {20, 20};
    static constexpr int InGround[2] = {20, 50};

    std::shared_ptr<StageRecord> record = std::make_shared<StageRecord>();
};

class AddedStagesOfFourSamples : public AddedStages
{
protected:
    AddedStagesOfFourSamples() : AddedStages(4) {}
};

} // namespace

TEST_F(AddedStages, DrawInTheirPlaces)
{
    EdgeLook edges;
    edges.weight = 1.0f;
    edges.color = Color(1.0f, 0.0f, 0.0f);
    renderer->SetEdges(edges);
    const Picture plain = Draw();
    // All of the grey thing, its rim and some ground.
    const PixelRect part{4, 4, 40, 50};
    struct Case
    {
        const char* label;
        StageSlot slot;
        bool overSurfaces;
        bool overEdges;
    };
    for (const Case& at : {Case{"before surfaces", StageSlot::BeforeSurfaces, false, false},
                           Case{"after surfaces", StageSlot::AfterSurfaces, true, false},
                           Case{"over the picture", StageSlot::OverPicture, true, true}})
    {
        AddedStage& stage = Add(at.slot);
        stage.draw = [&](PresentationFrame&) { PaintRect(part, Paint); };
        const Picture picture = Draw();
        EXPECT_EQ(picture.At(InGround[0], InGround[1]), Paint) << at.label;
        EXPECT_EQ(picture.At(80, 50), Ground) << at.label;
        EXPECT_EQ(picture.At(InGrey[0], InGrey[1]), at.overSurfaces ? Paint : Grey) << at.label;
        int edgesLeft = 0;
        for (int y = part.y; y < part.y + part.height; ++y)
        {
            for (int x = part.x; x < part.x + part.width; ++x)
            {
                edgesLeft += plain.At(x, y) == Pixel{255, 0, 0, 255} && picture.At(x, y) == Pixel{255, 0, 0, 255};
            }
        }
        EXPECT_EQ(edgesLeft == 0, at.overEdges) << at.label;
        EXPECT_EQ(renderer->RemoveStage(&stage).get(), &stage);
    }
    ExpectSame(Draw(), plain, "without the stages");
}

TEST_F(AddedStages, NeitherComeNorGoWhileAFrameIsDrawn)
{
    AddedStage& stage = Add(StageSlot::AfterSurfaces);
    stage.draw = [&](PresentationFrame&) {
        EXPECT_FALSE(renderer->AddStage(std::make_unique<AddedStage>(record), StageSlot::OverPicture));
        EXPECT_FALSE(renderer->RemoveStage(&stage));
    };
    Draw();
    EXPECT_EQ(record->drawn, 1);
    EXPECT_EQ(record->destroyed, 1) << "the one that was refused";
    EXPECT_EQ(record->released, 0);
    EXPECT_EQ(renderer->RemoveStage(&stage).get(), &stage) << "between frames";
}

TEST_F(AddedStages, OfOnePlaceDrawInTheOrderInWhichTheyWereAdded)
{
    std::string order;
    Add(StageSlot::OverPicture).draw = [&](PresentationFrame&) { order += 'd'; };
    Add(StageSlot::BeforeSurfaces).draw = [&](PresentationFrame&) { order += 'a'; };
    Add(StageSlot::AfterSurfaces).draw = [&](PresentationFrame&) { order += 'c'; };
    Add(StageSlot::BeforeSurfaces).draw = [&](PresentationFrame&) { order += 'b'; };
    Add(StageSlot::OverPicture).draw = [&](PresentationFrame&) { order += 'e'; };
    Draw();
    EXPECT_EQ(order, "abcde");
    EXPECT_EQ(record->prepared, 5);
}

TEST_F(AddedStages, GetWhatTheyNeedAndNothingElse)
{
    struct Case
    {
        const char* label;
        bool FrameNeeds::*need;
        unsigned int PresentationFrame::*texture;
    };
    const Case cases[] = {
        {"nothing", nullptr, nullptr},
        {"target", &FrameNeeds::target, nullptr},
        {"identifiers of objects", &FrameNeeds::objectIdentifiers, &PresentationFrame::objectIdentifiers},
        {"identifiers of groups", &FrameNeeds::groupIdentifiers, &PresentationFrame::groupIdentifiers},
        {"depth", &FrameNeeds::depth, &PresentationFrame::depth},
        {"picture", &FrameNeeds::picture, &PresentationFrame::picture},
    };
    GLint bound = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &bound);
    for (const Case& one : cases)
    {
        AddedStage& stage = Add(StageSlot::AfterSurfaces);
        if (one.need)
        {
            stage.needs.*one.need = true;
        }
        stage.draw = [&](PresentationFrame& frame) {
            for (const Case& other : cases)
            {
                if (other.texture)
                {
                    EXPECT_EQ(frame.*other.texture != 0, other.need == one.need) << one.label << ": " << other.label;
                }
            }
            EXPECT_EQ(frame.framebuffer, one.need ? static_cast<unsigned int>(bound) : 0u) << one.label;
            EXPECT_EQ(frame.served, one.need != nullptr) << one.label;
        };
        const int drawn = record->drawn;
        Draw();
        EXPECT_EQ(record->drawn, drawn + 1) << one.label;
        renderer->RemoveStage(&stage);
    }
}

TEST_F(AddedStages, FindEachMeshAmongTheItems)
{
    AddedStage& stage = Add(StageSlot::AfterSurfaces);
    for (const Host::BatchUse use : {Host::BatchUse::Off, Host::BatchUse::On})
    {
        for (const Host::Look look : {Host::Look::Basic, Host::Look::Monotone, Host::Look::Advanced})
        {
            std::size_t listed = 0;
            stage.draw = [&](PresentationFrame& frame) {
                for (const RenderItemES20& item : frame.items.all)
                {
                    listed += item.mesh ? 1 : 0;
                }
                EXPECT_EQ(listed, frame.items.all.size());
                EXPECT_EQ(frame.items.firstAlpha, listed);
            };
            renderer->SetLook(look);
            renderer->SetBatches({use});
            Draw();
            EXPECT_EQ(listed, 2u);
        }
    }
}

TEST_F(AddedStages, FindInTexturesWhatTheySay)
{
    FrameNeeds needs;
    needs.objectIdentifiers = needs.groupIdentifiers = needs.depth = needs.picture = true;
    Add(StageSlot::AfterSurfaces).draw = [](PresentationFrame&) { PaintRect({60, 40, 10, 10}, Paint); };
    Add(StageSlot::AfterSurfaces, needs).draw = [](PresentationFrame& frame) {
        EXPECT_EQ(frame.target, (Host::PixelSize{SmallWidth, SmallHeight}));
        EXPECT_FALSE(frame.multisampled);
        EXPECT_EQ(ColorIn(frame.groupIdentifiers, frame, InGrey[0], InGrey[1]), IdentifierOf(1));
        EXPECT_EQ(ColorIn(frame.groupIdentifiers, frame, 50, 20), IdentifierOf(2));
        EXPECT_NE(ColorIn(frame.objectIdentifiers, frame, InGrey[0], InGrey[1]),
                  ColorIn(frame.objectIdentifiers, frame, InGround[0], InGround[1]));
        // The eye is 100 above the grey thing, the near plane at 1 and the far plane at 200.
        EXPECT_NEAR(DepthIn(frame.depth, frame, InGrey[0], InGrey[1]) / frame.depthShare, 99.0 / 199.0, 1e-4);
        EXPECT_NEAR(DepthIn(frame.objectDepth, frame, InGrey[0], InGrey[1]), 99.0 / 199.0, 1e-4);
        EXPECT_EQ(DepthIn(frame.depth, frame, InGround[0], InGround[1]), 1.0f);
        EXPECT_EQ(ColorIn(frame.picture, frame, InGrey[0], InGrey[1]), Grey);
        EXPECT_EQ(ColorIn(frame.picture, frame, 50, 20), Green);
        EXPECT_EQ(ColorIn(frame.picture, frame, 65, 45), Paint) << "what was drawn by then";
        EXPECT_EQ(ColorIn(frame.picture, frame, 5, 5), ColorBound(5, 5));
    };
    Draw();
    EXPECT_EQ(record->drawn, 2);
}

TEST_F(AddedStages, ShareWithTheStagesOfTheKitAndChangeNothingForThem)
{
    UseAllStages();
    const Picture plain = Draw();
    FrameNeeds needs;
    needs.objectIdentifiers = needs.groupIdentifiers = needs.depth = needs.picture = needs.fineIdentifiers = true;
    for (const StageSlot slot : {StageSlot::BeforeSurfaces, StageSlot::AfterSurfaces, StageSlot::OverPicture})
    {
        Add(slot, needs);
    }
    ExpectSame(Draw(), plain, "with stages that only look");
    EXPECT_EQ(record->drawn, 3);
}

TEST_F(AddedStagesOfFourSamples, GetFinerIdentifiersAndResolvedPicturesWhereTheyAsk)
{
    FrameNeeds needs;
    needs.groupIdentifiers = needs.picture = needs.fineIdentifiers = true;
    AddedStage& stage = Add(StageSlot::AfterSurfaces, needs);
    int width = 0;
    stage.draw = [&](PresentationFrame& frame) {
        EXPECT_TRUE(frame.multisampled);
        width = TextureWidth(frame.groupIdentifiers);
        EXPECT_EQ(ColorIn(frame.picture, frame, InGrey[0], InGrey[1]), Grey);
    };
    Draw();
    EXPECT_EQ(width, 2 * SmallWidth);
    stage.needs.fineIdentifiers = false;
    Draw();
    EXPECT_EQ(width, SmallWidth);
}

TEST_F(AddedStages, ThatNeedSomethingAreLeftOutOfAFrameOverAnotherUnlessItIsOptional)
{
    FrameNeeds needs;
    needs.depth = true;
    const auto strict = std::make_shared<StageRecord>();
    auto stage = std::make_unique<AddedStage>(strict);
    stage->needs = needs;
    renderer->AddStage(std::move(stage), StageSlot::AfterSurfaces);
    needs.optional = true;
    std::vector<bool> served;
    Add(StageSlot::AfterSurfaces, needs).draw = [&](PresentationFrame& frame) {
        EXPECT_EQ(frame.depth != 0, frame.served);
        EXPECT_EQ(frame.overDraw, !frame.served);
        served.push_back(frame.served);
    };
    app.Update(0.0f);
    renderer->BeginRender(false, Color(0, 0, 0));
    renderer->Render3D(&World(), &Camera());
    renderer->BeginOverDrawRender();
    renderer->Render3D(&World(), &Camera());
    renderer->EndRender();
    EXPECT_EQ(served, (std::vector<bool>{true, false}));
    EXPECT_EQ(strict->drawn, 1);
}

TEST_F(AddedStages, ThatNeedABufferAreLeftOutWhereThereIsNone)
{
    FrameNeeds needs;
    needs.picture = true;
    Add(StageSlot::AfterSurfaces, needs);
    const auto other = std::make_shared<StageRecord>();
    renderer->AddStage(std::make_unique<AddedStage>(other), StageSlot::AfterSurfaces);
    {
        const NoFramebuffers none;
        EXPECT_EQ(Draw().At(InGrey[0], InGrey[1]), Grey);
    }
    EXPECT_EQ(record->drawn, 0);
    EXPECT_EQ(other->drawn, 1);
    SuspendAndResume();
    Draw();
    EXPECT_EQ(record->drawn, 1);
}

TEST_F(AddedStages, DrawAnEffectOverTheScreenAndTheUnitsThatTheyUseAreFreed)
{
    FrameNeeds needs;
    needs.picture = true;
    AddedStage& stage = Add(StageSlot::AfterSurfaces, needs);
    AAEffectES20* effect = nullptr;
    stage.draw = [&](PresentationFrame& frame) {
        // The copy in place of the picture changes nothing, and what was painted between is gone.
        if (!effect)
        {
            effect = dynamic_cast<AAEffectES20*>(frame.renderer.GetEffects().GetEffect(EffectCache::AA));
        }
        ASSERT_NE(effect, nullptr);
        PaintRect({10, 10, 30, 20}, Paint);
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, frame.picture);
        effect->SetDimensions(frame.screen.width, frame.screen.height);
        glDisable(GL_DEPTH_TEST);
        glDisable(GL_CULL_FACE);
        glDisable(GL_BLEND);
        frame.renderer.DrawOverScreen(*effect);
        glEnable(GL_CULL_FACE);
        glEnable(GL_DEPTH_TEST);
        frame.usedUnits[0] = true;
    };
    stage.release = [&] {
        if (effect)
        {
            std::exchange(effect, nullptr)->Release();
        }
    };
    const Picture picture = Draw();
    EXPECT_EQ(picture.At(InGrey[0], InGrey[1]), Grey);
    EXPECT_EQ(picture.At(InGround[0], InGround[1]), Ground);
    GLint texture = -1;
    glGetIntegerv(GL_TEXTURE_BINDING_2D, &texture);
    EXPECT_EQ(texture, 0);
    renderer->RemoveStage(&stage);
    EXPECT_EQ(effect, nullptr);
}

TEST_F(AddedStages, LetGoOfTheirObjectsOnSuspendOnRemovalAndAtTheEnd)
{
    GLuint texture = 0;
    AddedStage& stage = Add(StageSlot::OverPicture);
    stage.draw = [&](PresentationFrame&) {
        if (texture == 0)
        {
            glGenTextures(1, &texture);
            glBindTexture(GL_TEXTURE_2D, texture);
            glBindTexture(GL_TEXTURE_2D, 0);
        }
        PaintRect({4, 4, 40, 50}, Paint);
    };
    stage.release = [&] {
        glDeleteTextures(1, &texture);
        texture = 0;
    };
    const Picture first = Draw();
    EXPECT_NE(texture, 0u);
    app.Suspend(renderer.get());
    EXPECT_EQ(texture, 0u);
    EXPECT_EQ(record->released, 1);
    app.Resume(renderer.get());
    ExpectSame(Draw(), first, "after a suspension");
    EXPECT_NE(texture, 0u);

    std::unique_ptr<Host::PresentationStage> removed = renderer->RemoveStage(&stage);
    EXPECT_EQ(texture, 0u);
    EXPECT_EQ(record->destroyed, 0);
    EXPECT_NE(Draw().At(InGround[0], InGround[1]), Paint);

    renderer->AddStage(std::move(removed), StageSlot::OverPicture);
    Draw();
    EXPECT_NE(texture, 0u);
    const int released = record->released;
    app.Suspend(renderer.get());
    Draw();
    NewRenderer();
    EXPECT_EQ(texture, 0u);
    EXPECT_GE(record->released, released + 2);
    EXPECT_EQ(record->destroyed, 1);
}

TEST_F(AddedStages, NoneIsAddedOrRemovedWhereThereIsNone)
{
    EXPECT_EQ(renderer->AddStage(nullptr, StageSlot::OverPicture), nullptr);
    EXPECT_EQ(renderer->RemoveStage(nullptr), nullptr);
    AddedStage other(record);
    EXPECT_EQ(renderer->RemoveStage(&other), nullptr);
    EXPECT_EQ(record->released, 0);
    Draw();
}

} // namespace OV::Test
