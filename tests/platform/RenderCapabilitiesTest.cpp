#include "orvane/base/RenderCapabilities.h"

#include "tests/support/GLRecorder.h"
#include "tests/support/VirtualSlot.h"

#include "orvane/platform/LinuxRenderCapabilities.h"

#include <GL/glew.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <type_traits>

namespace OV::Test
{

namespace
{

using Base = Platform::OpenGLES::RenderCapabilities;

class CountingCapabilities : public Platform::Linux::RenderCapabilities
{
public:
    void Detect() override
    {
        ++detections;
        Base::Detect();
    }

    int detections = 0;

    using Base::detected;
    using Base::extensions;
    using Base::renderer;
    using Base::vendor;
    using Base::version;
};

class RenderCapabilitiesTest : public testing::Test
{
protected:
    GLRecorder gl;
    CountingCapabilities capabilities;
};

TEST(RenderCapabilities, CreateMakesThePlatformsOwnLevelWithoutGL)
{
    const GLRecorder gl;
    const std::unique_ptr<Base> capabilities = RenderCapabilities::Create();
    EXPECT_NE(dynamic_cast<Platform::Linux::RenderCapabilities*>(capabilities.get()), nullptr);
    EXPECT_NE(Platform::Win32::RenderCapabilities::Create(), nullptr);
    static_assert(std::is_same_v<Platform::Win32::RenderCapabilities, Platform::Linux::RenderCapabilities>);
    EXPECT_THAT(gl.Strings(), testing::IsEmpty());
}

TEST_F(RenderCapabilitiesTest, AnEmptyExtensionStringMeansNoToEverything)
{
    gl.SetIntegers(GL_MAX_TEXTURE_SIZE, {2048});
    EXPECT_FALSE(capabilities.HasFramebufferObject());
    EXPECT_FALSE(capabilities.HasARBDepthTexture());
    EXPECT_FALSE(capabilities.HasTextureStencil8());
    EXPECT_FALSE(capabilities.HasPackedDepthStencil());
    EXPECT_FALSE(capabilities.HasNpotTextures());
    EXPECT_TRUE(capabilities.RequiresPowerOfTwo());
    EXPECT_FALSE(capabilities.HasNpotRepeat());
    EXPECT_FALSE(capabilities.HasNpotMipmap());
    EXPECT_FALSE(capabilities.HasDepthTexture());
    EXPECT_FALSE(capabilities.HasDepthTextureFault());
    EXPECT_EQ(capabilities.GetMaxTextureSize(), 2048);
}

TEST_F(RenderCapabilitiesTest, ReadsTheStringsAndSplitsTheExtensionsAtWhiteSpace)
{
    gl.SetString(GL_VENDOR, "A maker");
    gl.SetString(GL_RENDERER, "A device");
    gl.SetString(GL_VERSION, "2.1 something");
    gl.SetString(GL_EXTENSIONS, "  GL_B\tGL_A \n GL_C GL_A ");
    capabilities.GetMaxTextureSize();
    EXPECT_EQ(capabilities.vendor, "A maker");
    EXPECT_EQ(capabilities.renderer, "A device");
    EXPECT_EQ(capabilities.version, "2.1 something");
    EXPECT_THAT(capabilities.extensions, testing::ElementsAre("GL_A", "GL_B", "GL_C"));
}

TEST_F(RenderCapabilitiesTest, DetectionCountsOnlyWhenEveryAnswerCame)
{
    for (const unsigned silent : {GL_EXTENSIONS, GL_VENDOR, GL_RENDERER, GL_VERSION})
    {
        SCOPED_TRACE(silent);
        CountingCapabilities asked;
        gl.SetString(GL_EXTENSIONS, "GL_OES_depth_texture");
        gl.SetString(GL_VENDOR, "A maker");
        gl.SetString(GL_RENDERER, "A device");
        gl.SetString(GL_VERSION, "2.1");
        gl.SetString(silent, nullptr);
        EXPECT_EQ(asked.HasDepthTexture(), silent != GL_EXTENSIONS);
        EXPECT_FALSE(asked.detected) << "a context that dies while it is asked";
        gl.SetString(silent, "GL_OES_depth_texture");
        EXPECT_TRUE(asked.HasDepthTexture());
        EXPECT_TRUE(asked.detected);
        EXPECT_EQ(asked.detections, 2);
    }
}

TEST_F(RenderCapabilitiesTest, DetectionWaitsForTheTextureSizeToo)
{
    gl.SetIntegers(GL_MAX_TEXTURE_SIZE, {});
    EXPECT_EQ(capabilities.GetMaxTextureSize(), 0);
    EXPECT_FALSE(capabilities.detected);
    gl.SetIntegers(GL_MAX_TEXTURE_SIZE, {4096});
    EXPECT_EQ(capabilities.GetMaxTextureSize(), 4096);
    EXPECT_TRUE(capabilities.detected);
}

// One extension string and what it alone brings.
struct Case
{
    const char* label;
    const char* extensions;
    const char* version;
    bool framebufferObject;
    bool arbDepthTexture;
    bool textureStencil8;
    bool packedDepthStencil;
    bool npotTextures;
    bool npotRepeat;
    bool npotMipmap;
    bool depthTexture;
};

constexpr Case kCases[] = {
    {"framebuffer object", "GL_ARB_framebuffer_object", "2.1", 1, 0, 0, 0, 0, 0, 0, 0},
    {"WebGL without the extension", "", "WebGL 1.0 (some browser)", 1, 0, 0, 0, 0, 0, 0, 0},
    {"WebGL of another version", "", "WebGL 2.0", 0, 0, 0, 0, 0, 0, 0, 0},
    {"ES gets no special treatment", "", "OpenGL ES 2.0", 0, 0, 0, 0, 0, 0, 0, 0},
    {"stencil textures", "GL_ARB_texture_stencil8", "2.1", 0, 0, 1, 0, 0, 0, 0, 0},
    {"packed depth and stencil", "GL_EXT_packed_depth_stencil", "2.1", 0, 0, 0, 1, 0, 0, 0, 0},
    {"any size on the desktop", "GL_ARB_texture_non_power_of_two", "2.1", 0, 0, 0, 0, 1, 1, 1, 0},
    {"any size on ES", "GL_OES_texture_npot", "2.1", 0, 0, 0, 0, 1, 1, 1, 0},
    {"any size without repeat", "GL_NV_texture_npot_2D_mipmap", "2.1", 0, 0, 0, 0, 1, 0, 1, 0},
    {"ARB depth texture", "GL_ARB_depth_texture", "2.1", 0, 1, 0, 0, 0, 0, 0, 1},
    {"OES depth texture", "GL_OES_depth_texture", "2.1", 0, 0, 0, 0, 0, 0, 0, 1},
    {"GL_ANGLE depth texture", "GL_ANGLE_depth_texture", "2.1", 0, 0, 0, 0, 0, 0, 0, 1},
    {"ANGLE depth texture", "ANGLE_depth_texture", "2.1", 0, 0, 0, 0, 0, 0, 0, 1},
    {"WEBGL depth texture", "WEBGL_depth_texture", "2.1", 0, 0, 0, 0, 0, 0, 0, 1},
    {"GL_WEBGL depth texture", "GL_WEBGL_depth_texture", "2.1", 0, 0, 0, 0, 0, 0, 0, 1},
    {"WEBKIT depth texture", "WEBKIT_WEBGL_depth_texture", "2.1", 0, 0, 0, 0, 0, 0, 0, 1},
    {"OES without prefix", "OES_depth_texture", "2.1", 0, 0, 0, 0, 0, 0, 0, 1},
    {"a longer name does not count", "GL_OES_depth_texture_cube_map", "2.1", 0, 0, 0, 0, 0, 0, 0, 0},
    {"a shorter name does not count", "GL_OES_depth", "2.1", 0, 0, 0, 0, 0, 0, 0, 0},
    {"case counts", "gl_oes_depth_texture", "2.1", 0, 0, 0, 0, 0, 0, 0, 0},
    {"the last of several", "GL_X GL_Y GL_ARB_depth_texture", "2.1", 0, 1, 0, 0, 0, 0, 0, 1},
};

TEST(RenderCapabilities, AnswersByExactWordsOfTheExtensionString)
{
    for (const Case& expected : kCases)
    {
        SCOPED_TRACE(expected.label);
        GLRecorder gl;
        gl.SetString(GL_EXTENSIONS, expected.extensions);
        gl.SetString(GL_VERSION, expected.version);
        CountingCapabilities capabilities;
        EXPECT_EQ(capabilities.HasFramebufferObject(), expected.framebufferObject);
        EXPECT_EQ(capabilities.HasARBDepthTexture(), expected.arbDepthTexture);
        EXPECT_EQ(capabilities.HasTextureStencil8(), expected.textureStencil8);
        EXPECT_EQ(capabilities.HasPackedDepthStencil(), expected.packedDepthStencil);
        EXPECT_EQ(capabilities.HasNpotTextures(), expected.npotTextures);
        EXPECT_EQ(capabilities.RequiresPowerOfTwo(), !expected.npotTextures);
        EXPECT_EQ(capabilities.HasNpotRepeat(), expected.npotRepeat);
        EXPECT_EQ(capabilities.HasNpotMipmap(), expected.npotMipmap);
        EXPECT_EQ(capabilities.HasDepthTexture(), expected.depthTexture);
        EXPECT_FALSE(capabilities.HasDepthTextureFault());
    }
}

TEST(RenderCapabilities, EveryQuestionDetectsWhenItIsTheFirst)
{
    bool (Base::*const questions[])() = {
        &Base::HasFramebufferObject,  &Base::HasARBDepthTexture, &Base::HasTextureStencil8,
        &Base::HasPackedDepthStencil, &Base::HasNpotTextures,    &Base::RequiresPowerOfTwo,
        &Base::HasNpotRepeat,         &Base::HasNpotMipmap,      &Base::HasDepthTexture,
        &Base::HasDepthTextureFault,
    };
    const GLRecorder gl;
    for (const auto question : questions)
    {
        CountingCapabilities capabilities;
        (capabilities.*question)();
        EXPECT_EQ(capabilities.detections, 1);
        (capabilities.*question)();
        EXPECT_EQ(capabilities.detections, 1);
    }
    CountingCapabilities capabilities;
    capabilities.GetMaxTextureSize();
    capabilities.HasDepthTexture();
    EXPECT_EQ(capabilities.detections, 1);
}

TEST_F(RenderCapabilitiesTest, DetectionReadsFourStringsAndOneInteger)
{
    capabilities.HasNpotMipmap();
    capabilities.HasDepthTexture();
    EXPECT_THAT(gl.Strings(), testing::ElementsAre("glGetString(7939)", "glGetString(7936)", "glGetString(7937)",
                                                   "glGetString(7938)", "glGetIntegerv(3379, data)"));
}

TEST_F(RenderCapabilitiesTest, KeepsItsAnswersWhenTheContextChanges)
{
    gl.SetString(GL_EXTENSIONS, "GL_ARB_depth_texture");
    EXPECT_TRUE(capabilities.HasDepthTexture());
    gl.SetString(GL_EXTENSIONS, "");
    EXPECT_TRUE(capabilities.HasDepthTexture());
}

TEST_F(RenderCapabilitiesTest, DetectForgetsTheExtensionsOfBefore)
{
    gl.SetString(GL_EXTENSIONS, "GL_ARB_depth_texture");
    capabilities.Detect();
    gl.SetString(GL_EXTENSIONS, "GL_OTHER");
    capabilities.Detect();
    EXPECT_FALSE(capabilities.HasDepthTexture());
    EXPECT_THAT(capabilities.extensions, testing::ElementsAre("GL_OTHER"));
}

TEST_F(RenderCapabilitiesTest, WithoutAContextItStaysUndetectedAndAsksAgain)
{
    gl.SetString(GL_VERSION, nullptr);
    gl.SetString(GL_EXTENSIONS, nullptr);
    EXPECT_FALSE(capabilities.HasDepthTexture());
    EXPECT_FALSE(capabilities.detected);

    gl.SetString(GL_VERSION, "2.1");
    gl.SetString(GL_EXTENSIONS, "GL_ARB_depth_texture");
    EXPECT_TRUE(capabilities.HasDepthTexture());
    EXPECT_TRUE(capabilities.detected);
    EXPECT_EQ(capabilities.detections, 2);
}

TEST(RenderCapabilities, WithoutAnyGLTheAnswersAreNo)
{
    CountingCapabilities capabilities;
    EXPECT_FALSE(capabilities.HasFramebufferObject());
    EXPECT_EQ(capabilities.GetMaxTextureSize(), 0);
    EXPECT_FALSE(capabilities.detected);
}

TEST_F(RenderCapabilitiesTest, HasExtensionKnowsExactWordsAndDetectsNothing)
{
    gl.SetString(GL_EXTENSIONS, "GL_OES_texture_npot GL_OTHER");
    EXPECT_FALSE(capabilities.HasExtension("GL_OTHER"));
    EXPECT_EQ(capabilities.detections, 0);
    capabilities.HasNpotTextures();
    EXPECT_TRUE(capabilities.HasExtension("GL_OTHER"));
    EXPECT_FALSE(capabilities.HasExtension("GL_OTHE"));
    EXPECT_FALSE(capabilities.HasExtension("GL_OTHER2"));
    EXPECT_FALSE(capabilities.HasExtension(""));
}

TEST(RenderCapabilities, KeepsTheOrderOfItsVirtualOperations)
{
    EXPECT_EQ(VirtualSlot(&Base::HasFramebufferObject), 1);
    EXPECT_EQ(VirtualSlot(&Base::HasARBDepthTexture), 2);
    EXPECT_EQ(VirtualSlot(&Base::HasTextureStencil8), 3);
    EXPECT_EQ(VirtualSlot(&Base::HasPackedDepthStencil), 4);
    EXPECT_EQ(VirtualSlot(&Base::GetMaxTextureSize), 5);
    EXPECT_EQ(VirtualSlot(&Base::HasNpotTextures), 6);
    EXPECT_EQ(VirtualSlot(&Base::RequiresPowerOfTwo), 7);
    EXPECT_EQ(VirtualSlot(&Base::HasNpotRepeat), 8);
    EXPECT_EQ(VirtualSlot(&Base::HasNpotMipmap), 9);
    EXPECT_EQ(VirtualSlot(&Base::HasDepthTexture), 10);
    EXPECT_EQ(VirtualSlot(&Base::HasDepthTextureFault), 11);
    EXPECT_EQ(VirtualSlot(&Base::Detect), 12);
    EXPECT_EQ(VirtualSlot(&Base::HasExtension), -1);
}

}  // namespace

}  // namespace OV::Test
