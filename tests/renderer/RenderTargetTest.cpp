#include "tests/renderer/OpenRenderTarget.h"

#include "orvane/platform/detail/EntryPoints.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Scene.h"
#include "tests/renderdata/RenderDataDoubles.h"
#include "tests/support/GLRecorder.h"
#include "tests/support/VirtualSlot.h"

#include <gmock/gmock.h>

#include <malloc.h>

#include <cstdlib>
#include <cstring>
#include <limits>
#include <utility>

namespace OV::Test
{

namespace
{

using Names = std::vector<std::string>;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr unsigned kHostFramebuffer = 71;
constexpr unsigned kHostRenderbuffer = 72;

std::string Call(const char* name, std::vector<double> numbers)
{
    return CallText(name, numbers);
}

Names Join(std::initializer_list<Names> lists)
{
    Names all;
    for (const Names& list : lists)
    {
        all.insert(all.end(), list.begin(), list.end());
    }
    return all;
}

const std::string kCheck = Call("glCheckFramebufferStatus", {GL_FRAMEBUFFER});

class RenderTargetTest : public ::testing::Test
{
protected:
    RenderTargetTest()
    {
        Platform::LoadEntryPoints();
        BindOfHost();
    }

    void BindOfHost()
    {
        glBindFramebuffer(GL_FRAMEBUFFER, kHostFramebuffer);
        glBindRenderbuffer(GL_RENDERBUFFER, kHostRenderbuffer);
        gl.Clear();
    }

    /// What the target writes to the standard error stream on the way to a size.
    static std::string Complaint(OpenRenderTarget& target)
    {
        ::testing::internal::CaptureStderr();
        target.SetDimensions(40, 30);
        return ::testing::internal::GetCapturedStderr();
    }

    static Names TextureSetUp(unsigned texture)
    {
        return {Call("glBindTexture", {GL_TEXTURE_2D, double(texture)}),
                Call("glTexParameteri", {GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE}),
                Call("glTexParameteri", {GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE}),
                Call("glTexParameteri", {GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST}),
                Call("glTexParameteri", {GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST})};
    }

    static std::string TextureImage(unsigned format, unsigned type)
    {
        return CallText("glTexImage2D",
                        {GL_TEXTURE_2D, 0, double(format), 40, 30, 0, double(format), double(type)}, "null");
    }

    static std::string AttachTexture(unsigned attachment, unsigned texture)
    {
        return Call("glFramebufferTexture2D",
                    {GL_FRAMEBUFFER, double(attachment), GL_TEXTURE_2D, double(texture), 0});
    }

    static std::string AttachRenderbuffer(unsigned attachment, unsigned name)
    {
        return Call("glFramebufferRenderbuffer",
                    {GL_FRAMEBUFFER, double(attachment), GL_RENDERBUFFER, double(name)});
    }

    /// How a target of the usual size gets its colour.
    static Names ColorPart(const OpenRenderTarget& target)
    {
        return Join({TextureSetUp(target.colorTexture),
                     {TextureImage(GL_RGBA, GL_UNSIGNED_BYTE),
                      AttachTexture(GL_COLOR_ATTACHMENT0, target.colorTexture), kCheck}});
    }

    /// How it gets its depth, without stencil: a renderbuffer first, then the texture in its place.
    static Names DepthPart(const OpenRenderTarget& target)
    {
        return Join({{Call("glBindRenderbuffer", {GL_RENDERBUFFER, double(target.depthRenderbuffer)}),
                      Call("glRenderbufferStorage", {GL_RENDERBUFFER, GL_DEPTH_COMPONENT16, 40, 30}),
                      AttachRenderbuffer(GL_DEPTH_ATTACHMENT, target.depthRenderbuffer), kCheck},
                     TextureSetUp(target.depthTexture),
                     {TextureImage(GL_DEPTH_COMPONENT, GL_UNSIGNED_INT),
                      AttachTexture(GL_DEPTH_ATTACHMENT, target.depthTexture),
                      Call("glBindTexture", {GL_TEXTURE_2D, 0}), kCheck}});
    }

    /// The calls that make buffers, without those that make names or ask for errors.
    Names Making()
    {
        return gl.Strings({"glBindFramebuffer", "glBindRenderbuffer", "glBindTexture", "glTexParameteri",
                           "glTexImage2D", "glRenderbufferStorage", "glFramebufferTexture2D",
                           "glFramebufferRenderbuffer", "glCheckFramebufferStatus"});
    }

    /// What comes first and last whatever the profile.
    Names Framed(const OpenRenderTarget& target, const Names& calls)
    {
        Names all = {Call("glBindFramebuffer", {GL_FRAMEBUFFER, double(target.framebuffer)})};
        all.insert(all.end(), calls.begin(), calls.end());
        all.push_back(Call("glBindFramebuffer", {GL_FRAMEBUFFER, kHostFramebuffer}));
        all.push_back(Call("glBindRenderbuffer", {GL_RENDERBUFFER, kHostRenderbuffer}));
        all.push_back(Call("glBindTexture", {GL_TEXTURE_2D, 0}));
        return all;
    }

    GLRecorder gl;
};

/// Lets the nth question for completeness, from 1, and all later ones be answered with no.
class IncompleteFrom
{
public:
    IncompleteFrom(GLRecorder& gl, int nth) : m_gl(gl), m_left(nth)
    {
        s_current = this;
        m_original = glCheckFramebufferStatus;
        glCheckFramebufferStatus = Answer;
    }

    ~IncompleteFrom() { glCheckFramebufferStatus = m_original; }

private:
    static GLenum GLAPIENTRY Answer(GLenum target)
    {
        if (--s_current->m_left <= 0)
        {
            s_current->m_gl.SetFramebufferStatus(GL_FRAMEBUFFER_UNSUPPORTED);
        }
        return s_current->m_original(target);
    }

    static IncompleteFrom* s_current;
    GLRecorder& m_gl;
    int m_left;
    PFNGLCHECKFRAMEBUFFERSTATUSPROC m_original;
};

IncompleteFrom* IncompleteFrom::s_current = nullptr;

/// The protected slots, as a derived class sees them.
struct ProtectedSlots : RenderTarget
{
    static int Initialize() { return VirtualSlot(&ProtectedSlots::InitializeBuffers); }
    static int Destroy() { return VirtualSlot(&ProtectedSlots::DestroyBuffers); }
    static int Mesh() { return VirtualSlot(&ProtectedSlots::CreateScreenMesh); }
};

} // namespace

TEST_F(RenderTargetTest, SlotsStandInTheirOrder)
{
    EXPECT_EQ(VirtualSlot(&RenderTarget::BeginCapture), 1);
    EXPECT_EQ(VirtualSlot(&RenderTarget::ResumeCapture), 2);
    EXPECT_EQ(VirtualSlot(&RenderTarget::SuspendCapture), 3);
    EXPECT_EQ(VirtualSlot(&RenderTarget::EndCapture), 4);
    EXPECT_EQ(VirtualSlot(&RenderTarget::SaveImageTo), 5);
    EXPECT_EQ(VirtualSlot(&RenderTarget::ApplyCapture), 6);
    EXPECT_EQ(VirtualSlot(&RenderTarget::SetDimensions), 7);
    EXPECT_EQ(VirtualSlot(&RenderTarget::GetColorTexture), 8);
    EXPECT_EQ(VirtualSlot(&RenderTarget::GetDepthTexture), 9);
    EXPECT_EQ(ProtectedSlots::Initialize(), 10);
    EXPECT_EQ(ProtectedSlots::Destroy(), 11);
    EXPECT_EQ(ProtectedSlots::Mesh(), 12);
}

TEST_F(RenderTargetTest, ConstructionMakesNoCall)
{
    for (unsigned i = 0; i < 4; ++i)
    {
        const OpenRenderTarget target(kProfiles[i]);
        EXPECT_EQ(target.profile, i);
        EXPECT_EQ(target.width, 0);
        EXPECT_EQ(target.height, 0);
        EXPECT_EQ(target.framebuffer, 0u);
        EXPECT_EQ(target.renderbuffer, 0u);
        EXPECT_FALSE(target.capturing);
        EXPECT_EQ(target.screenMesh, nullptr);
    }
    EXPECT_THAT(gl.Calls(), IsEmpty());
}

TEST_F(RenderTargetTest, AColourTargetIsMadeInOrder)
{
    OpenRenderTarget target(RenderTargetProfileColor);
    target.SetDimensions(40, 30);
    EXPECT_TRUE(target.initialized);
    EXPECT_EQ(Making(), Framed(target, ColorPart(target)));
    EXPECT_EQ(target.savedFramebuffer, kHostFramebuffer);
    EXPECT_EQ(target.savedRenderbuffer, kHostRenderbuffer);
}

TEST_F(RenderTargetTest, AProfileWithoutDepthHasNoDepthTexture)
{
    OpenRenderTarget target(RenderTargetProfileColor);
    target.SetDimensions(40, 30);
    EXPECT_EQ(target.GetDepthTexture(), 0u);
    EXPECT_EQ(target.GetColorTexture(), target.colorTexture);
    EXPECT_NE(target.GetColorTexture(), 0u);
    EXPECT_EQ(target.depthRenderbuffer, 0u);
}

TEST_F(RenderTargetTest, ADepthTargetIsMadeInOrderAndHasNoColour)
{
    OpenRenderTarget target(RenderTargetProfileDepth);
    target.SetDimensions(40, 30);
    EXPECT_TRUE(target.initialized);
    EXPECT_EQ(Making(), Framed(target, DepthPart(target)));
    EXPECT_EQ(target.GetColorTexture(), 0u);
    EXPECT_NE(target.GetDepthTexture(), 0u);
    EXPECT_EQ(gl.Count("glFramebufferTexture2D", {GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0}), 0u);
    EXPECT_EQ(gl.Count("glDrawBuffer", {GL_NONE}), 1u);
    EXPECT_EQ(gl.Count("glReadBuffer", {GL_NONE}), 1u);
}

TEST_F(RenderTargetTest, ATargetOfColourAndDepthIsMadeInOrder)
{
    OpenRenderTarget target(RenderTargetProfileColorDepth);
    target.SetDimensions(40, 30);
    EXPECT_TRUE(target.initialized);
    EXPECT_EQ(Making(), Framed(target, Join({ColorPart(target), DepthPart(target)})));
    EXPECT_EQ(gl.Count("glDrawBuffer"), 0u);
}

TEST_F(RenderTargetTest, ATargetWithStencilIsMadeInOrder)
{
    OpenRenderTarget target(RenderTargetProfileColorDepthStencil);
    target.SetDimensions(40, 30);
    EXPECT_TRUE(target.initialized);
    const unsigned renderbuffer = target.depthRenderbuffer;
    EXPECT_EQ(
        Making(),
        Framed(target, Join({ColorPart(target),
                             {Call("glBindRenderbuffer", {GL_RENDERBUFFER, double(renderbuffer)}),
                              Call("glRenderbufferStorage", {GL_RENDERBUFFER, GL_DEPTH24_STENCIL8, 40, 30}),
                              AttachRenderbuffer(GL_DEPTH_ATTACHMENT, renderbuffer),
                              AttachRenderbuffer(GL_STENCIL_ATTACHMENT, renderbuffer), kCheck},
                             TextureSetUp(target.depthTexture),
                             {TextureImage(GL_DEPTH_STENCIL, GL_UNSIGNED_INT_24_8),
                              AttachTexture(GL_DEPTH_ATTACHMENT, target.depthTexture),
                              AttachTexture(GL_STENCIL_ATTACHMENT, target.depthTexture), kCheck,
                              Call("glBindTexture", {GL_TEXTURE_2D, 0})}})));
}

TEST_F(RenderTargetTest, TheSizeThatItHasKeepsAllNames)
{
    for (const eRenderTargetProfile profile : kProfiles)
    {
        OpenRenderTarget target(profile);
        target.SetDimensions(40, 30);
        const auto names = std::make_tuple(target.framebuffer, target.depthRenderbuffer, target.colorTexture,
                                           target.depthTexture);
        gl.Clear();
        target.log.clear();
        target.SetDimensions(40, 30);
        EXPECT_THAT(gl.Calls(), IsEmpty());
        EXPECT_THAT(target.log, IsEmpty());
        EXPECT_EQ(std::make_tuple(target.framebuffer, target.depthRenderbuffer, target.colorTexture,
                                  target.depthTexture),
                  names);
    }
}

TEST_F(RenderTargetTest, TheFirstSizeDestroysNothingAndThenMakesTheBuffers)
{
    OpenRenderTarget target(RenderTargetProfileColorDepth);
    target.SetDimensions(40, 30);
    EXPECT_THAT(target.log, ElementsAre("destroy", "initialize"));
    EXPECT_EQ(target.width, 40);
    EXPECT_EQ(target.height, 30);
    for (const char* name : {"glDeleteRenderbuffers", "glDeleteTextures", "glDeleteFramebuffers"})
    {
        EXPECT_EQ(gl.Count(name), 0u);
    }
}

TEST_F(RenderTargetTest, ASideAloneIsAnotherSize)
{
    OpenRenderTarget target(RenderTargetProfileColor);
    target.SetDimensions(40, 30);
    const std::size_t live = gl.LiveCount();
    for (const auto& [width, height] : {std::pair{41, 30}, std::pair{41, 31}})
    {
        target.log.clear();
        gl.Clear();
        target.SetDimensions(width, height);
        EXPECT_THAT(target.log, ElementsAre("destroy", "initialize"));
        EXPECT_EQ(gl.TextureTexels(target.colorTexture).width, width);
        EXPECT_EQ(gl.TextureTexels(target.colorTexture).height, height);
        EXPECT_EQ(gl.LiveCount(), live);
    }
    EXPECT_THAT(gl.StrayDeletes(), IsEmpty());
}

TEST_F(RenderTargetTest, DestroyDeletesInOrderAndZeroesTheNames)
{
    OpenRenderTarget target(RenderTargetProfileColorDepth);
    target.SetDimensions(40, 30);
    const int names[] = {static_cast<int>(target.depthRenderbuffer), static_cast<int>(target.depthTexture),
                         static_cast<int>(target.colorTexture), static_cast<int>(target.framebuffer)};
    gl.Clear();
    target.DestroyBuffers();
    EXPECT_EQ(gl.Names(),
              (Names{"glDeleteRenderbuffers", "glDeleteTextures", "glDeleteTextures", "glDeleteFramebuffers"}));
    for (std::size_t i = 0; i < 4; ++i)
    {
        EXPECT_THAT(gl.Calls()[i].ints, ElementsAre(names[i]));
    }
    EXPECT_EQ(target.depthRenderbuffer, 0u);
    EXPECT_EQ(target.depthTexture, 0u);
    EXPECT_EQ(target.colorTexture, 0u);
    EXPECT_EQ(target.framebuffer, 0u);
    EXPECT_EQ(gl.LiveCount(), 0u);
    gl.Clear();
    target.DestroyBuffers();
    EXPECT_THAT(gl.Calls(), IsEmpty());
}

TEST_F(RenderTargetTest, ASizeOfZeroOrLessMakesNoBuffers)
{
    OpenRenderTarget target(RenderTargetProfileColorDepth);
    for (const auto& [width, height] : {std::pair{0, 30}, std::pair{40, 0}, std::pair{-1, 30}, std::pair{40, -1},
                                        std::pair{std::numeric_limits<int>::min(), 1}})
    {
        target.SetDimensions(40, 30);
        EXPECT_NE(target.framebuffer, 0u);
        EXPECT_EQ(Complaint(target), "");
        target.SetDimensions(width, height);
        EXPECT_FALSE(target.initialized);
        EXPECT_EQ(target.framebuffer, 0u);
        EXPECT_EQ(target.width, width);
        EXPECT_EQ(target.height, height);
        EXPECT_EQ(gl.LiveCount(), 0u);
    }
}

TEST_F(RenderTargetTest, EachFailureHasItsMessageAndLeavesWhatWasMadeBound)
{
    struct Row
    {
        const char* label;
        eRenderTargetProfile profile;
        int incompleteAt;  ///< which question for completeness is answered with no; 0: none
        bool storageFails;
        const char* message;
        bool color, renderbuffer, texture;
    };
    const char* const color = "Could not create color attachment for render target.\n";
    const char* const storage = "Could not allocate render buffer storage for depth target.\n";
    const char* const incomplete =
        "Could not allocate render buffer storage for depth target, framebuffer incomplete.\n";
    const char* const texture = "Could not create depth texture, framebuffer is incomplete.\n";
    const Row rows[] = {
        {"colour", RenderTargetProfileColor, 1, false, color, true, false, false},
        {"colour beside depth", RenderTargetProfileColorDepth, 1, false, color, true, false, false},
        {"colour beside stencil", RenderTargetProfileColorDepthStencil, 1, false, color, true, false, false},
        {"storage, depth alone", RenderTargetProfileDepth, 0, true, storage, false, true, false},
        {"storage", RenderTargetProfileColorDepth, 0, true, storage, true, true, false},
        {"error before completeness", RenderTargetProfileDepth, 1, true, storage, false, true, false},
        {"renderbuffer, depth alone", RenderTargetProfileDepth, 1, false, incomplete, false, true, false},
        {"renderbuffer", RenderTargetProfileColorDepth, 2, false, incomplete, true, true, false},
        {"depth texture, depth alone", RenderTargetProfileDepth, 2, false, texture, false, true, true},
        {"depth texture", RenderTargetProfileColorDepth, 3, false, texture, true, true, true},
        {"depth-stencil renderbuffer", RenderTargetProfileColorDepthStencil, 2, false,
         "Could not create depth stencil render buffer.\n", true, true, false},
        {"depth-stencil texture", RenderTargetProfileColorDepthStencil, 3, false,
         "Could not create depth stencil texture.\n", true, true, true},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.label);
        GLRecorder own;
        glBindFramebuffer(GL_FRAMEBUFFER, kHostFramebuffer);
        if (row.storageFails)
        {
            own.RaiseOn("glRenderbufferStorage", GL_OUT_OF_MEMORY);
        }
        OpenRenderTarget target(row.profile);
        {
            const IncompleteFrom incompleteFrom(own, row.incompleteAt > 0 ? row.incompleteAt : 1000);
            EXPECT_EQ(Complaint(target), row.message);
        }
        EXPECT_FALSE(target.initialized);
        EXPECT_EQ(target.colorTexture != 0, row.color);
        EXPECT_EQ(target.depthRenderbuffer != 0, row.renderbuffer);
        EXPECT_EQ(target.depthTexture != 0, row.texture);
        EXPECT_NE(target.framebuffer, 0u);
        EXPECT_EQ(own.FindLast("glBindFramebuffer")->Int(1), target.framebuffer);
        target.DestroyBuffers();
        EXPECT_EQ(own.LiveCount(), 0u);
    }
}

TEST_F(RenderTargetTest, WithoutANameForTheFramebufferNothingIsMadeOrBound)
{
    for (const eRenderTargetProfile profile : {RenderTargetProfileColor, RenderTargetProfileDepth,
                                               RenderTargetProfileColorDepth, RenderTargetProfileColorDepthStencil})
    {
        SCOPED_TRACE(profile);
        OpenRenderTarget target(profile);
        gl.FailCreation("glGenFramebuffers");
        EXPECT_THAT(Complaint(target), ::testing::StartsWith("Could not"));
        EXPECT_EQ(gl.LiveCount(), 0u);
        EXPECT_EQ(gl.Count("glBindFramebuffer"), 0u);
        gl.FailCreation("glGenFramebuffers", false);
        target.SetDimensions(0, 0);
        target.SetDimensions(40, 30);
        EXPECT_NE(target.framebuffer, 0u);
        target.SetDimensions(0, 0);
        EXPECT_EQ(gl.LiveCount(), 0u);
        BindOfHost();
    }
}

TEST_F(RenderTargetTest, ACaptureIsClearedWithDepthWritesOn)
{
    OpenRenderTarget target(RenderTargetProfileColorDepth);
    target.SetDimensions(40, 30);
    glDepthMask(GL_FALSE);
    gl.Clear();
    target.BeginCapture(GL_DEPTH_BUFFER_BIT);
    EXPECT_EQ(gl.Strings({"glDepthMask", "glClear"}),
              (Names{"glDepthMask(1)", Call("glClear", {GL_DEPTH_BUFFER_BIT})}));
    target.EndCapture();
}

TEST_F(RenderTargetTest, AScreenMeshThatCouldNotBeUploadedIsMadeAgain)
{
    OpenRenderTarget target(RenderTargetProfileColor);
    target.SetDimensions(40, 30);
    MarkingEffect effect;
    gl.FailCreation("glGenBuffers");
    target.BeginCapture(GL_COLOR_BUFFER_BIT);
    target.EndCapture();
    target.ApplyCapture(&effect);
    EXPECT_EQ(gl.Count("glDrawElements"), 0u);
    gl.FailCreation("glGenBuffers", false);
    target.BeginCapture(GL_COLOR_BUFFER_BIT);
    target.EndCapture();
    target.ApplyCapture(&effect);
    EXPECT_EQ(gl.Count("glDrawElements"), 1u);
    target.SetDimensions(0, 0);
}

TEST_F(RenderTargetTest, AnErrorOfSomebodyElseIsNotTakenForAFailure)
{
    for (const eRenderTargetProfile profile : {RenderTargetProfileDepth, RenderTargetProfileColorDepth})
    {
        OpenRenderTarget target(profile);
        gl.QueueError(GL_INVALID_ENUM);
        gl.QueueError(GL_INVALID_OPERATION);
        EXPECT_EQ(Complaint(target), "");
        EXPECT_TRUE(target.initialized);
    }
}

TEST_F(RenderTargetTest, OnlyDepthTargetsReadErrors)
{
    for (const eRenderTargetProfile profile : {RenderTargetProfileColor, RenderTargetProfileColorDepthStencil})
    {
        OpenRenderTarget target(profile);
        gl.Clear();
        target.SetDimensions(40, 30);
        EXPECT_EQ(gl.Count("glGetError"), 0u);
    }
}

TEST_F(RenderTargetTest, BeginCaptureMakesTheMeshOnceBindsAndClears)
{
    OpenRenderTarget target(RenderTargetProfileColorDepth);
    target.SetDimensions(40, 30);
    target.log.clear();
    gl.Clear();
    target.BeginCapture(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    EXPECT_THAT(target.log, ElementsAre("mesh", "resume"));
    EXPECT_TRUE(target.capturing);
    EXPECT_EQ(gl.Strings({"glBindFramebuffer", "glBindRenderbuffer", "glViewport", "glClear"}),
              (Names{Call("glBindFramebuffer", {GL_FRAMEBUFFER, double(target.framebuffer)}),
                     Call("glBindRenderbuffer", {GL_RENDERBUFFER, 0}), "glViewport(0, 0, 40, 30)",
                     Call("glClear", {GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT})}));
    EXPECT_EQ(target.savedFramebuffer, kHostFramebuffer);
    EXPECT_EQ(target.savedRenderbuffer, kHostRenderbuffer);
    target.EndCapture();
    target.log.clear();
    gl.Clear();
    target.BeginCapture(0);
    EXPECT_THAT(target.log, ElementsAre("resume"));
    EXPECT_EQ(gl.Count("glClear", {0}), 1u);
    target.EndCapture();
}

TEST_F(RenderTargetTest, ACaptureBindsTheRenderbufferThatADerivedTargetPutsThere)
{
    OpenRenderTarget target(RenderTargetProfileColor);
    target.SetDimensions(40, 30);
    target.renderbuffer = 55;
    target.BeginCapture(0);
    EXPECT_EQ(gl.FindLast("glBindRenderbuffer")->Int(1), 55);
    target.EndCapture();
    EXPECT_EQ(gl.FindLast("glBindRenderbuffer")->Int(1), kHostRenderbuffer);
}

TEST_F(RenderTargetTest, WithoutASizeACaptureGoesToFramebufferZero)
{
    OpenRenderTarget target(RenderTargetProfileColor);
    target.BeginCapture(GL_COLOR_BUFFER_BIT);
    EXPECT_EQ(gl.Count("glBindFramebuffer", {GL_FRAMEBUFFER, 0}), 1u);
    EXPECT_EQ(gl.Count("glViewport", {0, 0, 0, 0}), 1u);
    target.EndCapture();
    EXPECT_EQ(gl.FindLast("glBindFramebuffer")->Int(1), kHostFramebuffer);
}

TEST_F(RenderTargetTest, EndCaptureTwiceBindsTheSavedNamesOnce)
{
    OpenRenderTarget target(RenderTargetProfileColor);
    target.SetDimensions(40, 30);
    target.BeginCapture(0);
    target.log.clear();
    gl.Clear();
    target.EndCapture();
    EXPECT_EQ(gl.Strings(), (Names{"glFlush()", Call("glBindFramebuffer", {GL_FRAMEBUFFER, kHostFramebuffer}),
                                   Call("glBindRenderbuffer", {GL_RENDERBUFFER, kHostRenderbuffer})}));
    EXPECT_FALSE(target.capturing);
    gl.Clear();
    target.EndCapture();
    EXPECT_THAT(gl.Calls(), IsEmpty());
    EXPECT_THAT(target.log, ElementsAre("suspend", "suspend"));
}

TEST_F(RenderTargetTest, ResumeCaptureTwiceKeepsTheSavedBindings)
{
    OpenRenderTarget target(RenderTargetProfileColor);
    target.SetDimensions(40, 30);
    target.BeginCapture(0);
    gl.Clear();
    target.ResumeCapture();
    EXPECT_THAT(gl.Calls(), IsEmpty());
    EXPECT_EQ(target.savedFramebuffer, kHostFramebuffer);
    EXPECT_EQ(target.savedRenderbuffer, kHostRenderbuffer);
    target.EndCapture();
}

TEST_F(RenderTargetTest, ACaptureIsEnteredAgainWithoutAClearAndGivesBackWhatWasBoundThen)
{
    OpenRenderTarget target(RenderTargetProfileColor);
    target.SetDimensions(40, 30);
    target.BeginCapture(GL_COLOR_BUFFER_BIT);
    target.SuspendCapture();
    glBindFramebuffer(GL_FRAMEBUFFER, 81);
    glBindRenderbuffer(GL_RENDERBUFFER, 82);
    gl.Clear();
    target.ResumeCapture();
    EXPECT_EQ(gl.Count("glClear"), 0u);
    EXPECT_EQ(gl.Count("glViewport", {0, 0, 40, 30}), 1u);
    target.EndCapture();
    EXPECT_EQ(gl.FindLast("glBindFramebuffer")->Int(1), 81);
    EXPECT_EQ(gl.FindLast("glBindRenderbuffer")->Int(1), 82);
}

TEST_F(RenderTargetTest, ANewSizeWithinACaptureKeepsCapturingAndTheSavedBindings)
{
    OpenRenderTarget target(RenderTargetProfileColorDepth);
    target.SetDimensions(40, 30);
    target.BeginCapture(0);
    target.SetDimensions(50, 60);
    EXPECT_EQ(gl.FindLast("glBindFramebuffer")->Int(1), target.framebuffer);
    target.EndCapture();
    EXPECT_EQ(gl.FindLast("glBindFramebuffer")->Int(1), kHostFramebuffer);
    EXPECT_EQ(gl.FindLast("glBindRenderbuffer")->Int(1), kHostRenderbuffer);
}

TEST_F(RenderTargetTest, SavingLeavesCapturingAndTheSavedBindingAsTheyAre)
{
    OpenRenderTarget target(RenderTargetProfileColor);
    target.SetDimensions(3, 2);
    for (const bool capturing : {false, true})
    {
        if (capturing)
        {
            target.BeginCapture(0);
        }
        gl.Clear();
        RenderTarget::RenderTargetImage image;
        target.SaveImageTo(image);
        EXPECT_EQ(target.capturing, capturing);
        EXPECT_EQ(image.width, 3);
        EXPECT_EQ(image.height, 2);
        ASSERT_NE(image.data, nullptr);
        const double own = target.framebuffer;
        EXPECT_EQ(gl.Strings({"glBindFramebuffer", "glReadPixels"}),
                  (Names{Call("glBindFramebuffer", {GL_FRAMEBUFFER, own}),
                         CallText("glReadPixels", {0, 0, 3, 2, GL_RGBA, GL_UNSIGNED_BYTE}, "data"),
                         Call("glBindFramebuffer", {GL_FRAMEBUFFER, capturing ? own : double(kHostFramebuffer)})}));
        EXPECT_EQ(target.savedFramebuffer, kHostFramebuffer);
    }
    target.EndCapture();
    EXPECT_EQ(gl.FindLast("glBindFramebuffer")->Int(1), kHostFramebuffer);
}

TEST_F(RenderTargetTest, SavingSetsThePackStateThatItReliesOn)
{
    OpenRenderTarget target(RenderTargetProfileColor);
    target.SetDimensions(3, 2);
    const std::vector<std::pair<int, int>> settings = {
        {GL_PACK_ALIGNMENT, 4}, {GL_PACK_ROW_LENGTH, 0}, {GL_PACK_SKIP_ROWS, 0}, {GL_PACK_SKIP_PIXELS, 0}};
    for (const auto& [name, value] : settings)
    {
        glPixelStorei(static_cast<GLenum>(name), 8);
    }
    gl.Clear();
    RenderTarget::RenderTargetImage image;
    target.SaveImageTo(image);
    const std::size_t read = gl.IndexOf("glReadPixels");
    ASSERT_LT(read, gl.Calls().size());
    for (const auto& [name, value] : settings)
    {
        EXPECT_LT(gl.IndexOf("glPixelStorei", {double(name), double(value)}), read) << name;
        EXPECT_LT(gl.IndexOf("glPixelStorei", {double(name), 8}, read), gl.Calls().size()) << name << " put back";
    }
}

TEST_F(RenderTargetTest, SavingATargetWithoutASizeReadsNothing)
{
    OpenRenderTarget target(RenderTargetProfileColor);
    RenderTarget::RenderTargetImage image;
    target.SaveImageTo(image);
    EXPECT_EQ(image.width, 0);
    EXPECT_EQ(image.height, 0);
    EXPECT_EQ(gl.Count("glReadPixels"), 0u);
}

TEST_F(RenderTargetTest, ASavedPictureStartsAsZeroes)
{
    // The stand-in reads nothing.
    OpenRenderTarget target(RenderTargetProfileColor);
    target.SetDimensions(30, 20);
    RenderTarget::RenderTargetImage image;
    target.SaveImageTo(image);
    for (int i = 0; i < 30 * 20 * 4; ++i)
    {
        ASSERT_EQ(image.data[i], 0) << i;
    }
}

TEST_F(RenderTargetTest, SavingDoesNotFreeTheBlockThatTheImageHeld)
{
    OpenRenderTarget target(RenderTargetProfileColor);
    target.SetDimensions(3, 2);
    RenderTarget::RenderTargetImage image;
    auto* const held = static_cast<unsigned char*>(std::malloc(24));
    std::memset(held, 7, 24);
    image.data = held;
    target.SaveImageTo(image);
    EXPECT_NE(image.data, held);
    for (int i = 0; i < 24; ++i)
    {
        EXPECT_EQ(held[i], 7) << i;
    }
    std::free(held);
}

TEST_F(RenderTargetTest, TheSizeOfAPictureIsMultipliedIn64Bits)
{
    // Four bytes a pixel pass 32 bits here and would wrap round to 256 KiB. The stand-in reads
    // nothing, so that the pages are never touched.
    OpenRenderTarget target(RenderTargetProfileColor);
    target.SetDimensions(65536, 16385);
    RenderTarget::RenderTargetImage image;
    target.SaveImageTo(image);
    EXPECT_EQ(image.width, 65536);
    EXPECT_EQ(image.height, 16385);
    ASSERT_NE(image.data, nullptr);
    EXPECT_GE(malloc_usable_size(image.data), std::size_t(65536) * 16385 * 4);
}

TEST_F(RenderTargetTest, AFailedTargetIsCapturedIntoAllTheSame)
{
    OpenRenderTarget target(RenderTargetProfileColor);
    gl.SetFramebufferStatus(GL_FRAMEBUFFER_UNSUPPORTED);
    EXPECT_NE(Complaint(target), "");
    gl.Clear();
    target.BeginCapture(GL_COLOR_BUFFER_BIT);
    EXPECT_EQ(gl.Count("glBindFramebuffer", {GL_FRAMEBUFFER, double(target.framebuffer)}), 1u);
    EXPECT_EQ(gl.Count("glClear"), 1u);
    target.EndCapture();
    gl.SetFramebufferStatus(GL_FRAMEBUFFER_COMPLETE);
    target.SetDimensions(41, 30);
    EXPECT_TRUE(target.initialized);
    EXPECT_EQ(gl.Live(GLObjectKind::Framebuffer).size(), 1u) << "the next size frees what was made";
    EXPECT_EQ(gl.Live(GLObjectKind::Texture).size(), 1u);
}

TEST_F(RenderTargetTest, CopiesOfAnImageShareTheBlock)
{
    RenderTarget::RenderTargetImage first;
    EXPECT_EQ(first.width, 0);
    EXPECT_EQ(first.height, 0);
    EXPECT_EQ(first.data, nullptr);
    first.width = 1;
    first.height = 2;
    first.data = static_cast<unsigned char*>(std::malloc(8));
    RenderTarget::RenderTargetImage second;
    second = first;
    EXPECT_EQ(second.data, first.data);
    EXPECT_EQ(second.width, 1);
    EXPECT_EQ(second.height, 2);
    first.data = nullptr;
}

TEST_F(RenderTargetTest, ApplyCaptureDrawsTheQuadOverTheTargetsSizeAndAppliesNothing)
{
    OpenRenderTarget target(RenderTargetProfileColor);
    target.SetDimensions(40, 30);
    target.BeginCapture(0);
    target.EndCapture();
    ASSERT_EQ(target.screenMeshData->vertexBufferId, 0u);
    MarkingEffect effect;
    target.ApplyCapture(&effect);
    EXPECT_NE(target.screenMeshData->vertexBufferId, 0u) << "nobody else uploads this pool";
    gl.Clear();
    target.ApplyCapture(&effect);
    const double vertices = target.screenMeshData->vertexBufferId;
    const double indices = target.screenMeshData->indexBufferId;
    EXPECT_EQ(gl.Strings(),
              (Names{Call("glDisable", {GL_BLEND}), Call("glDisable", {GL_DEPTH_TEST}),
                     Call("glDisable", {GL_CULL_FACE}), "glViewport(0, 0, 40, 30)",
                     Call("glBindBuffer", {GL_ARRAY_BUFFER, vertices}),
                     Call("glBindBuffer", {GL_ELEMENT_ARRAY_BUFFER, indices}), "glEnableVertexAttribArray(0)",
                     "glUniform1i(0, 0)", Call("glDrawElements", {GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, 0}),
                     "glDisableVertexAttribArray(0)", Call("glEnable", {GL_CULL_FACE})}));
    EXPECT_EQ(effect.applied, 0);
    EXPECT_EQ(effect.removed, 0);
    EXPECT_EQ(MeshES20::s_vertexId, 0u);
}

TEST_F(RenderTargetTest, ApplyCaptureBeforeTheFirstCaptureDrawsNothing)
{
    OpenRenderTarget target(RenderTargetProfileColor);
    target.SetDimensions(40, 30);
    gl.Clear();
    MarkingEffect effect;
    target.ApplyCapture(&effect);
    EXPECT_EQ(gl.Count("glDrawElements"), 0u);
}

TEST_F(RenderTargetTest, TheScreenMeshIsAQuadOverAllOfClipSpace)
{
    OpenRenderTarget target(RenderTargetProfileColor);
    target.CreateScreenMesh();
    ASSERT_NE(target.screenScene, nullptr);
    const std::vector<Vector> positions = {{-1, -1, 0}, {-1, 1, 0}, {1, 1, 0}, {1, 1, 0}, {1, -1, 0}, {-1, -1, 0}};
    const std::vector<TextureCoordinate> coordinates = {{0, 0}, {0, 1}, {1, 1}, {1, 1}, {1, 0}, {0, 0}};
    ASSERT_EQ(target.screenMesh->GetNumVertices(), 6u);
    for (int i = 0; i < 6; ++i)
    {
        EXPECT_EQ(target.screenMesh->GetPositionBuffer()[i], positions[i]) << i;
        EXPECT_EQ(target.screenMesh->GetTextureBuffer()[i].u, coordinates[i].u) << i;
        EXPECT_EQ(target.screenMesh->GetTextureBuffer()[i].v, coordinates[i].v) << i;
    }
    EXPECT_EQ(target.screenMesh->GetIndices(), (std::vector<unsigned short>{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ(target.screenMesh->GetRenderData(), target.screenMeshData);
    EXPECT_EQ(target.screenMeshData->pool.Get(), &target.bufferPool);
    EXPECT_EQ(target.screenMesh->GetScene(), target.screenScene.get());
    ASSERT_EQ(target.screenMesh->GetNodes().size(), 1u);
    EXPECT_EQ(target.screenMesh->GetNodes()[0]->GetParent(), target.screenScene->GetRoot());
    EXPECT_TRUE(target.screenScene->GetCameraNode()->GetGlobal() == Transform());
    target.CreateScreenMesh();
    EXPECT_EQ(target.screenMesh->GetScene(), target.screenScene.get()) << "replaces the old one";
}

TEST_F(RenderTargetTest, TheEndOfATargetFreesNoNameOfItsBuffers)
{
    {
        OpenRenderTarget target(RenderTargetProfileColorDepth);
        target.freeAtEnd = false;
        target.SetDimensions(40, 30);
        target.BeginCapture(0);
        target.EndCapture();
        MarkingEffect effect;
        target.ApplyCapture(&effect);
        EXPECT_EQ(gl.Live(GLObjectKind::Buffer).size(), 2u);
        gl.Clear();
    }
    EXPECT_THAT(gl.Live(GLObjectKind::Buffer), IsEmpty()) << "the quad goes with its pool";
    EXPECT_EQ(gl.Count("glDeleteFramebuffers"), 0u);
    EXPECT_EQ(gl.Live(GLObjectKind::Framebuffer).size(), 1u);
    EXPECT_EQ(gl.Live(GLObjectKind::Renderbuffer).size(), 1u);
    EXPECT_EQ(gl.Live(GLObjectKind::Texture).size(), 2u);
}

} // namespace OV::Test
