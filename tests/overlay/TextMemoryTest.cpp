#include "tests/support/GLRecorder.h"

#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/overlay/Shape2DNode.h"
#include "orvane/overlay/Text.h"
#include "orvane/platform/ESTextureLoader.h"
#include "orvane/renderer/Renderer20.h"
#include "orvane/scene/Scene.h"

#include <gtest/gtest.h>

#include <malloc.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
// Of the sanitizer's own heap; its header is a package of its own.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

namespace OV::Test
{

namespace
{

/// Bytes that the process holds on its heap, the libraries' among them.
std::size_t HeapBytes()
{
#if defined(__SANITIZE_ADDRESS__)
    return __sanitizer_get_current_allocated_bytes();
#else
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}

class TextMemory : public testing::Test
{
protected:
    TextMemory()
    {
        context.GetContext()->SetScene(std::make_unique<Scene>());
        renderer = std::make_unique<Renderer20>(&loader, nullptr);
        renderer->Resize(640, 480);
        context.SetScreenSize(640, 480);
        gl.SetRecording(false);
    }

    Scene2D& Layer() { return *context.GetContext()->GetForeground2D(); }

    void Draw()
    {
        context.Update(0.0f);
        context.Render(renderer.get(), false);
    }

    // Digits alone, so that the glyphs that are kept are known early on.
    static std::string Words(int number) { return "Level +" + std::to_string(10000 + number); }

    GLRecorder gl;
    Platform::Linux::ESTextureLoader loader;
    AppContext context;
    std::unique_ptr<Renderer20> renderer;
};

TEST_F(TextMemory, TenThousandUpdatesOfOneTextLeaveNoGLObjectAndNoMemoryBehind)
{
    Text text("DejaVu Sans", 20, Words(0), &Layer(), false, false, 0);
    text.AddBackdrop(Color(1, 1, 1, 1), 200, 30, 0, 0);
    for (int i = 0; i < 100; ++i)
    {
        text.Update(Words(i * 97));
        Draw();
    }
    const std::size_t objectsBefore = gl.LiveCount();
    const std::size_t texturesBefore = gl.Live(GLObjectKind::Texture).size();
    const std::size_t bytesBefore = HeapBytes();
    EXPECT_EQ(texturesBefore, 1u);
    for (int i = 0; i < 10000; ++i)
    {
        text.Update(Words(i));
        Draw();
        ASSERT_EQ(gl.LiveCount(), objectsBefore);
    }
    EXPECT_EQ(gl.Live(GLObjectKind::Texture).size(), 1u);
    EXPECT_LE(HeapBytes(), bytesBefore + 16 * 1024);
    EXPECT_TRUE(gl.StrayDeletes().empty());
}

TEST_F(TextMemory, TextsThatComeAndGoLeaveNothingBehind)
{
    // Keeps the effect: the recorder remembers the text of every program that there was.
    const Text stays("DejaVu Sans", 20, "stays", &Layer(), false, false, 0);
    const auto comeAndGo = [&](int number) {
        Text text("DejaVu Sans", 20, Words(number), &Layer(), false, false, 0);
        text.AddBackdrop(Color(1, 1, 1, 1), 200, 30, 0, 0);
        Draw();
    };
    for (int i = 0; i < 100; ++i)
    {
        comeAndGo(i * 97);
    }
    Draw();
    const std::size_t objectsBefore = gl.LiveCount();
    const std::size_t bytesBefore = HeapBytes();
    for (int i = 0; i < 2000; ++i)
    {
        comeAndGo(i);
    }
    Draw();
    EXPECT_EQ(gl.LiveCount(), objectsBefore);
    EXPECT_EQ(gl.Live(GLObjectKind::Texture).size(), 1u);
    EXPECT_LE(HeapBytes(), bytesBefore + 16 * 1024);
}

TEST_F(TextMemory, EqualTextsShareATextureUntilTheLastOneGoes)
{
    auto first = std::make_unique<Text>("DejaVu Sans", 20, "same", &Layer(), false, false, 0);
    auto second = std::make_unique<Text>("DejaVu Sans", 20, "same", &Layer(), false, false, 0);
    Draw();
    EXPECT_EQ(gl.Live(GLObjectKind::Texture).size(), 1u);
    first->Update("other");
    Draw();
    EXPECT_EQ(gl.Live(GLObjectKind::Texture).size(), 2u);
    second.reset();
    Draw();
    EXPECT_EQ(gl.Live(GLObjectKind::Texture).size(), 1u);
    first.reset();
    EXPECT_EQ(gl.Live(GLObjectKind::Texture).size(), 0u);
}

TEST_F(TextMemory, ASuspendedLayerHoldsNoTextureAndGetsItBack)
{
    Text text("DejaVu Sans", 20, "suspended", &Layer(), false, false, 0);
    Draw();
    for (int i = 0; i < 10; ++i)
    {
        context.Suspend(renderer.get());
        EXPECT_EQ(gl.Live(GLObjectKind::Texture).size(), 0u);
        if (i == 5)
        {
            text.Update("changed meanwhile");
        }
        context.Resume(renderer.get());
        Draw();
        EXPECT_EQ(gl.Live(GLObjectKind::Texture).size(), 1u);
    }
    EXPECT_TRUE(gl.StrayDeletes().empty());
}

} // namespace

} // namespace OV::Test
