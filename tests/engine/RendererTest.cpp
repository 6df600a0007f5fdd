#include "orvane/engine/Renderer.h"

#include "tests/engine/CountingRenderer.h"
#include "tests/support/GLRecorder.h"
#include "tests/support/VirtualSlot.h"

#include "orvane/imaging/TextureLoader.h"
#include "orvane/renderer/Renderer20.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace OV::Test
{

namespace
{

// Adds nothing to what Renderer itself does.
class BareRenderer : public CountingRenderer
{
public:
    void ClearOffscreenBuffers() override { Renderer::ClearOffscreenBuffers(); }
    void BeginOverDrawRender() override { Renderer::BeginOverDrawRender(); }
};

TEST(Renderer, ARequestIsConsumedOnce)
{
    CountingRenderer renderer;
    EXPECT_FALSE(renderer.ConsumeRequest());
    renderer.SetRequest();
    EXPECT_TRUE(renderer.requestFlag);
    EXPECT_TRUE(renderer.ConsumeRequest());
    EXPECT_FALSE(renderer.requestFlag);
    EXPECT_FALSE(renderer.ConsumeRequest());
}

TEST(Renderer, TwoRequestsAreOne)
{
    CountingRenderer renderer;
    renderer.SetRequest();
    renderer.SetRequest();
    EXPECT_TRUE(renderer.ConsumeRequest());
    EXPECT_FALSE(renderer.ConsumeRequest());
}

TEST(Renderer, ABareRendererClearsNoBuffersAndBeginsNoOverDraw)
{
    const GLRecorder recorder;
    BareRenderer renderer;
    renderer.ClearOffscreenBuffers();
    renderer.BeginOverDrawRender();
    EXPECT_THAT(renderer.calls, testing::IsEmpty());
    EXPECT_THAT(recorder.Strings(), testing::IsEmpty());
    EXPECT_FALSE(renderer.requestFlag);
    EXPECT_FALSE(renderer.useOnScreenBuffers);
}

TEST(Renderer, StartsWithoutALoaderARequestOrBuffersOfTheScreen)
{
    CountingRenderer renderer;
    EXPECT_EQ(renderer.textureLoader.Get(), nullptr);
    EXPECT_FALSE(renderer.requestFlag);
    EXPECT_FALSE(renderer.useOnScreenBuffers);
}

TEST(Renderer, ForgetsALoaderThatIsGone)
{
    CountingRenderer renderer;
    std::unique_ptr<TextureLoader> loader(TextureLoader::Create());
    renderer.textureLoader = loader.get();
    EXPECT_EQ(renderer.textureLoader.Get(), loader.get());
    loader.reset();
    EXPECT_EQ(renderer.textureLoader.Get(), nullptr);
}

// Opens what Renderer20 protects, to name it.
struct Slots : Renderer20
{
    static int OfClearOffscreenBuffers() { return VirtualSlot(&Slots::ClearOffscreenBuffers); }
};

TEST(Renderer, KeepsTheOrderOfItsVirtualOperations)
{
    EXPECT_EQ(VirtualSlot(&Renderer::Resize), 1);
    EXPECT_EQ(VirtualSlot(&Renderer::SetOnScreenBuffers), 2);
    EXPECT_EQ(VirtualSlot(&Renderer::ClearOffscreenBuffers), 3);
    EXPECT_EQ(VirtualSlot(&Renderer::BeginOverDrawRender), 4);
    EXPECT_EQ(VirtualSlot(&Renderer::BeginRender), 5);
    EXPECT_EQ(VirtualSlot(&Renderer::Render3D), 6);
    EXPECT_EQ(VirtualSlot(&Renderer::Render2D), 7);
    EXPECT_EQ(VirtualSlot(&Renderer::EndRender), 8);
    EXPECT_EQ(VirtualSlot(&Renderer::SupportsRenderToTexture), 9);
    EXPECT_EQ(VirtualSlot(&Renderer::BeginCapture), 10);
    EXPECT_EQ(VirtualSlot(&Renderer::EndCapture), 11);
    EXPECT_EQ(VirtualSlot(&Renderer::ApplyCapture), 12);
    EXPECT_EQ(VirtualSlot(&Renderer::Suspend), 13);
    EXPECT_EQ(VirtualSlot(&Renderer::Resume), 14);
    EXPECT_EQ(VirtualSlot(&Renderer::GetWidthPx), 15);
    EXPECT_EQ(VirtualSlot(&Renderer::GetHeightPx), 16);
    EXPECT_EQ(VirtualSlot(&Renderer::ConsumeRequest), 17);
    EXPECT_EQ(VirtualSlot(&Renderer::SetRequest), 18);
    EXPECT_EQ(VirtualSlot(&Renderer20::Configure), 19);
    EXPECT_EQ(Slots::OfClearOffscreenBuffers(), 3);
}

}  // namespace

}  // namespace OV::Test
