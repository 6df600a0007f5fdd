#include "tests/support/GLFixture.h"

#include "orvane/platform/LinuxRenderCapabilities.h"
#include "orvane/platform/detail/EntryPoints.h"

#include <GL/glew.h>

namespace OV::Test
{

namespace
{

class ContextTest : public GLFixture
{
};

TEST_F(ContextTest, EntryPointsLoadWithoutTheHostKnowingOfThem)
{
    EXPECT_TRUE(Platform::LoadEntryPoints());
    EXPECT_NE(__glewCreateShader, nullptr);
    EXPECT_NE(__glewGenerateMipmap, nullptr);
    EXPECT_TRUE(Platform::LoadEntryPoints());
}

TEST_F(ContextTest, EntryPointsThatAreThereAreNotLoadedAgain)
{
    ASSERT_TRUE(Platform::LoadEntryPoints());
    const auto saved = __glewUniform1i;
    __glewUniform1i = nullptr;
    EXPECT_TRUE(Platform::LoadEntryPoints());
    EXPECT_EQ(__glewUniform1i, nullptr);
    __glewUniform1i = saved;
}

TEST_F(ContextTest, CapabilitiesOfARealContext)
{
    const auto capabilities = Platform::Linux::RenderCapabilities::Create();
    EXPECT_TRUE(capabilities->HasFramebufferObject());
    EXPECT_TRUE(capabilities->HasNpotTextures());
    EXPECT_FALSE(capabilities->RequiresPowerOfTwo());
    EXPECT_TRUE(capabilities->HasDepthTexture());
    EXPECT_FALSE(capabilities->HasDepthTextureFault());
    EXPECT_GE(capabilities->GetMaxTextureSize(), 1024);
}

}  // namespace

}  // namespace OV::Test
