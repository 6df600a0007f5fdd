#pragma once

#include "tests/overlay/OverlayDoubles.h"
#include "tests/support/GLFixture.h"

#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/platform/ESTextureLoader.h"
#include "orvane/renderer/Renderer20.h"
#include "orvane/scene/Scene.h"

#include <memory>
#include <vector>

namespace OV::Test
{

constexpr Pixel kWhite{255, 255, 255, 255};
constexpr Pixel kBlack{0, 0, 0, 255};
constexpr Pixel kRed{255, 0, 0, 255};
constexpr Pixel kGreen{0, 255, 0, 255};
constexpr Pixel kBlue{0, 0, 255, 255};

/// An engine with an empty 3D scene on a ground of opaque white, so that a picture is that of the
/// layers. A unit of a layer is a pixel, and pixel rectangles are those of the layer.
class LayerStage : public GLFixture
{
protected:
    explicit LayerStage(int width = DefaultSize, int height = DefaultSize)
    {
        if (width != Width() || height != Height())
        {
            UseFramebuffer(width, height);
        }
        context = std::make_unique<AppContext>();
        context->GetContext()->SetScene(std::make_unique<Scene>());
        renderer = std::make_unique<Renderer20>(&loader, context->GetContext()->GetRenderCapabilities());
        renderer->Resize(Width(), Height());
        context->SetScreenSize(Width(), Height());
    }

    ~LayerStage() override
    {
        sprites.clear();
        texts.clear();
        renderer.reset();
        context.reset();
    }

    Scene& World() { return *context->GetContext()->GetScene(); }
    Scene2D& Layer() { return *context->GetContext()->GetForeground2D(); }
    Scene2D& Background() { return *context->GetContext()->GetBackground2D(); }

    Sprite& AddSprite(const PixelRect& rect, const Color& color, float z = 0.0f, bool textured = false)
    {
        auto* const shape = new Rect(&Layer(), static_cast<float>(rect.width), static_cast<float>(rect.height),
                                     textured);
        sprites.push_back(std::make_unique<Sprite>(&Layer(), shape));
        sprites.back()->SetColor(color);
        Place(*sprites.back()->GetNode(), static_cast<float>(rect.x), static_cast<float>(rect.y), z);
        return *sprites.back();
    }

    Text& AddText(const std::string& string, int fontSize, float x, float y, float z = 0.0f, int maxWidth = 0)
    {
        texts.push_back(
            std::make_unique<Text>("DejaVu Sans", fontSize, string, &Layer(), false, false, maxWidth));
        Place(*texts.back()->GetInstance(0), x, y, z);
        return *texts.back();
    }

    Picture Frame()
    {
        context->Update(0.0f);
        context->Render(renderer.get(), false);
        return ReadPixels();
    }

    Platform::Linux::ESTextureLoader loader;
    std::unique_ptr<AppContext> context;
    std::unique_ptr<Renderer20> renderer;
    std::vector<std::unique_ptr<Sprite>> sprites;
    std::vector<std::unique_ptr<Text>> texts;
};

} // namespace OV::Test
