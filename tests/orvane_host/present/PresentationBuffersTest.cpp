#include "orvane/effects/EffectES20.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Scene.h"
#include "tests/orvane_host/present/PresentationStage.h"

#include <GL/glew.h>

#include <algorithm>
#include <string>
#include <vector>

namespace OV::Test
{

namespace
{

using Host::EdgeLook;

const Color kGrey(0.4f, 0.4f, 0.4f);
constexpr Pixel Grey{102, 102, 102, 255};

/// GL's answer to every framebuffer of a scope: that it won't do, and an error as where memory is
/// short.
class RefusedFramebuffers
{
public:
    RefusedFramebuffers() : m_real(__glewCheckFramebufferStatus) { __glewCheckFramebufferStatus = &Refuse; }
    ~RefusedFramebuffers() { __glewCheckFramebufferStatus = m_real; }

    RefusedFramebuffers(const RefusedFramebuffers&) = delete;
    RefusedFramebuffers& operator=(const RefusedFramebuffers&) = delete;

private:
    static GLenum GLAPIENTRY Refuse(GLenum)
    {
        glEnable(GL_NONE);
        return GL_FRAMEBUFFER_UNSUPPORTED;
    }

    PFNGLCHECKFRAMEBUFFERSTATUSPROC m_real;
};

using PresentationBuffers = StageByStage;

} // namespace

TEST_F(PresentationBuffers, BuffersAreMadeOnceASizeAndGoWithASuspensionAndWithTheRenderer)
{
    AddThings();
    const auto buffersOf = [](const GLObjects& objects) {
        return objects.at("framebuffer").size() + objects.at("renderbuffer").size() + objects.at("texture").size();
    };
    // Programs too: no effect is held on to.
    const auto suspended = [this] {
        app.Suspend(renderer.get());
        GLState::Unbind();
        std::size_t count = 0;
        for (const auto& [kind, names] : GLState::CaptureObjects())
        {
            count += names.size();
        }
        app.Resume(renderer.get());
        return count;
    };
    Draw();
    const GLObjects plain = GLState::CaptureObjects();
    const std::size_t plainSuspended = suspended();
    for (const bool capture : {false, true})
    {
        for (const Stage& stage : Stages())
        {
            stage.use(*renderer);
            Draw(capture);
            const GLObjects used = GLState::CaptureObjects();
            EXPECT_GT(buffersOf(used), buffersOf(plain)) << stage.label;
            Draw(capture);
            Draw(capture);
            EXPECT_EQ(GLState::CaptureObjects(), used) << stage.label;
            EXPECT_EQ(suspended(), plainSuspended) << stage.label;
            DropStages();
        }
    }
    UseAllStages();
    Draw(true);
    renderer.reset();
    EXPECT_EQ(buffersOf(GLState::CaptureObjects()), buffersOf(plain)) << "the renderer is gone";
    NewRenderer();
}

TEST_F(PresentationBuffers, ADifferentSizeReplacesBuffersAndLeavesNone)
{
    AddThings();
    UseAllStages();
    Draw();
    const auto count = [] {
        std::size_t sum = 0;
        for (const auto& [kind, names] : GLState::CaptureObjects())
        {
            sum += names.size();
        }
        return sum;
    };
    const std::size_t before = count();
    for (const int width : {70, 80, 90, SmallWidth})
    {
        UseFramebuffer(width, SmallHeight);
        renderer->Resize(width, SmallHeight);
        app.SetScreenSize(width, SmallHeight);
        Draw();
        EXPECT_EQ(count(), before) << width;
    }
}

TEST_F(PresentationBuffers, OverDrawLeavesTheStagesOut)
{
    AddThings();
    const auto overDraw = [this] {
        const Color background(0.0f, 0.0f, 1.0f);
        World().MarkDirty();
        app.Update(0.0f);
        renderer->BeginRender(false, background);
        renderer->BeginOverDrawRender();
        renderer->Render3D(&World(), &Camera());
        renderer->EndRender();
        return ReadPixels();
    };
    const Picture plain = overDraw();
    EXPECT_EQ(plain.At(20, 20), Grey);
    for (const Stage& stage : Stages())
    {
        stage.use(*renderer);
        ExpectSame(overDraw(), plain, stage.label);
        DropStages();
    }
    UseAllStages();
    EXPECT_NE(Draw(), plain) << "the next frame has them again";
}

TEST_F(PresentationBuffers, WhatTheHostSetStaysWhateverIsDrawn)
{
    AddThings();
    for (const Stage& stage : Stages())
    {
        for (const bool dither : {true, false})
        {
            (dither ? glEnable : glDisable)(GL_DITHER);
            glDepthRange(0.25, 0.75);
            stage.use(*renderer);
            Draw();
            EXPECT_EQ(glIsEnabled(GL_DITHER) == GL_TRUE, dither) << stage.label;
            GLfloat range[2] = {0.0f, 0.0f};
            glGetFloatv(GL_DEPTH_RANGE, range);
            EXPECT_EQ(range[0], 0.25f) << stage.label;
            EXPECT_EQ(range[1], 0.75f) << stage.label;
            GLfloat color[4] = {};
            glGetFloatv(GL_COLOR_CLEAR_VALUE, color);
            EXPECT_EQ(std::vector<float>(color, color + 4), (std::vector<float>{0, 0, 1, 1})) << stage.label;
            const GLStateValues state = GLState::Capture();
            EXPECT_EQ(state.at("viewport"), (std::vector<double>{0, 0, SmallWidth, SmallHeight})) << stage.label;
            EXPECT_EQ(state.at("blend equation"), (std::vector<double>{GL_FUNC_ADD})) << stage.label;
            EXPECT_EQ(state.at("colour mask"), (std::vector<double>{1, 1, 1, 1})) << stage.label;
            EXPECT_EQ(state.at("depth mask"), (std::vector<double>{1})) << stage.label;
            for (const char* unit : {"texture of unit 0", "texture of unit 1", "texture of unit 2"})
            {
                EXPECT_EQ(state.at(unit), (std::vector<double>{0})) << stage.label;
            }
            for (const GLuint attribute : {1u, 2u})
            {
                GLfloat value[4] = {};
                glGetVertexAttribfv(attribute, GL_CURRENT_VERTEX_ATTRIB, value);
                EXPECT_EQ(std::vector<float>(value, value + 4), (std::vector<float>{0, 0, 0, 1})) << stage.label;
            }
            DropStages();
        }
    }
    glDepthRange(0.0, 1.0);
    glEnable(GL_DITHER);
}

TEST_F(PresentationBuffers, TheSceneByItselfLeavesTheStateOfAPlainOne)
{
    AddThings();
    const auto stateAfter = [this] {
        World().MarkDirty();
        app.Update(0.0f);
        renderer->BeginRender(false, Color(0.0f, 0.0f, 1.0f));
        renderer->Render3D(&World(), &Camera());
        GLStateValues state = GLState::Capture();
        renderer->EndRender();
        // What each that draws binds or sets for itself.
        for (const char* own : {"program", "array buffer", "element buffer", "blend source", "blend destination",
                                "blend source alpha", "blend destination alpha"})
        {
            state.erase(own);
        }
        return state;
    };
    const GLStateValues plain = stateAfter();
    for (const Stage& stage : Stages())
    {
        stage.use(*renderer);
        for (const auto& [name, value] : stateAfter())
        {
            EXPECT_EQ(value, plain.at(name)) << name << ", " << stage.label;
        }
        DropStages();
    }
}

TEST_F(PresentationBuffers, SampleShadingOfTheHostStaysOnAndNoneStaysOff)
{
    UseFramebuffer(SmallWidth, SmallHeight, 4);
    AddThings();
    EffectES20::AddClipPlane(glm::vec3(1, 0, 0), glm::vec3(45, 0, 0));
    UseAllStages();
    for (const bool on : {true, false})
    {
        (on ? glEnable : glDisable)(GL_SAMPLE_SHADING);
        Draw();
        EXPECT_EQ(glIsEnabled(GL_SAMPLE_SHADING) == GL_TRUE, on);
    }
}

TEST_F(PresentationBuffers, BeyondTheLargestTextureTheStagesAreLeftOut)
{
    AddThings();
    GLint limit = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &limit);
    // The framebuffer holds the lower left corner of the view.
    renderer->Resize(limit + 1, SmallHeight);
    app.SetScreenSize(limit + 1, SmallHeight);
    const Picture plain = Draw();
    EXPECT_NE(plain.Count(Ground), 0);
    const GLObjects objects = GLState::CaptureObjects();
    const GLStateValues state = GLState::Capture();
    for (const Stage& stage : Stages())
    {
        stage.use(*renderer);
        testing::internal::CaptureStderr();
        ExpectSame(Draw(), plain, stage.label);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << "it is not even tried";
        ExpectNoGLError();
        EXPECT_EQ(GLState::Capture(), state) << stage.label;
        DropStages();
    }
    for (const char* kind : {"framebuffer", "renderbuffer", "texture"})
    {
        EXPECT_EQ(GLState::CaptureObjects().at(kind), objects.at(kind)) << kind;
    }
    renderer->Resize(SmallWidth, SmallHeight);
    app.SetScreenSize(SmallWidth, SmallHeight);
    const Picture small = Draw();
    UseAllStages();
    EXPECT_NE(Draw(), small) << "in a size that GL can";
}

TEST_F(PresentationBuffers, WhereGLRefusesBuffersTheStagesAreLeftOut)
{
    GLuint ofTheHost = 0;
    glGenRenderbuffers(1, &ofTheHost);
    glBindRenderbuffer(GL_RENDERBUFFER, ofTheHost);
    AddThings();
    const Picture plain = Draw();
    const GLObjects objects = GLState::CaptureObjects();
    for (const Stage& stage : Stages())
    {
        const GLStateValues state = GLState::Capture();
        stage.use(*renderer);
        {
            const RefusedFramebuffers refused;
            testing::internal::CaptureStderr();
            World().MarkDirty();
            app.Update(0.0f);
            app.Render(renderer.get(), false);
            ExpectNoGLError();
            ExpectSame(ReadPixels(), plain, stage.label);
            ExpectSame(Draw(), plain, stage.label);
            const std::string errors = testing::internal::GetCapturedStderr();
            EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), 1) << "not tried again: " << errors;
        }
        ExpectNoGLError();
        EXPECT_EQ(GLState::Capture(), state) << stage.label;
        for (const char* kind : {"framebuffer", "renderbuffer", "texture"})
        {
            EXPECT_EQ(GLState::CaptureObjects().at(kind), objects.at(kind)) << kind << ", " << stage.label;
        }
        ExpectSame(Draw(), plain, "also when it would not refuse any more");
        SuspendAndResume();
        EXPECT_TRUE(std::string(stage.label) == "overlaid lines" || Draw() != plain) << stage.label;
        DropStages();
        SuspendAndResume();
        Draw();
    }
    glDeleteRenderbuffers(1, &ofTheHost);
}

TEST_F(PresentationBuffers, WhereFinerIdentifiersAreTooLargeEdgesComeFromOthers)
{
    GLint limit = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &limit);
    AddRect(kGrey, {10, 10, 30, 20}, 0.0f, 1);
    UseFramebuffer(SmallWidth, 4, 4);
    const int width = limit / 2 + 1;
    const auto resize = [this](int to) {
        renderer->Resize(to, 4);
        app.SetScreenSize(to, 4);
    };
    CameraNode& camera = Camera();
    camera.SetDistanceToTarget(2.0f);
    const auto lookAt = [&](int of) {
        Transform place;
        place.SetPosition(Vector(static_cast<float>(of) / 2.0f, 28.0f, 100.0f));
        camera.SetLocal(place);
    };
    resize(width);
    lookAt(width);
    const Picture plain = Draw();
    EXPECT_EQ(plain.At(20, 2), Grey);
    EdgeLook look;
    look.weight = 1.0f;
    look.color = Color(1.0f, 0.0f, 0.0f);
    renderer->SetEdges(look);
    const Picture edges = Draw();
    ExpectNoGLError();
    EXPECT_NE(edges.At(39, 2), plain.At(39, 2)) << "a line at the right rim";
    const GLObjects objects = GLState::CaptureObjects();
    ExpectSame(Draw(), edges, "in the second frame");
    EXPECT_EQ(GLState::CaptureObjects(), objects) << "not tried in every frame";

    // A smaller view has finer ones again.
    const auto widestTexture = [] {
        const GLObjects now = GLState::CaptureObjects();
        GLint widest = 0;
        for (const unsigned int name : now.at("texture"))
        {
            GLint found = 0;
            glBindTexture(GL_TEXTURE_2D, name);
            glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &found);
            widest = std::max(widest, found);
        }
        glBindTexture(GL_TEXTURE_2D, 0);
        return widest;
    };
    EXPECT_EQ(widestTexture(), width);
    resize(SmallWidth);
    lookAt(SmallWidth);
    Draw();
    EXPECT_EQ(widestTexture(), 2 * SmallWidth);
}

} // namespace OV::Test
