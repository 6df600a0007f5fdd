#pragma once

#include "orvane/engine/Renderer.h"
#include "orvane/math/Color.h"

#include <functional>
#include <sstream>
#include <string>
#include <vector>

namespace OV::Test
{

/// A renderer without GL that keeps a list of the calls that it gets.
class CountingRenderer : public Renderer
{
public:
    void Resize(int width, int height) override
    {
        Note("Resize " + std::to_string(width) + " " + std::to_string(height));
    }
    void SetOnScreenBuffers(int, int, unsigned, unsigned, unsigned, float) override { Note("SetOnScreenBuffers"); }
    void ClearOffscreenBuffers() override { Note("ClearOffscreenBuffers"); }
    void BeginOverDrawRender() override { Note("BeginOverDrawRender"); }
    void BeginRender(bool capture, Color const& color) override
    {
        std::ostringstream text;
        text << "BeginRender " << (capture ? "captured " : "direct ") << color.r << " " << color.g << " " << color.b
             << " " << color.a;
        Note(text.str());
    }
    void Render3D(Scene* scene, CameraNode* camera) override
    {
        lastScene = scene;
        lastCamera = camera;
        Note("Render3D");
    }
    void Render2D(Scene2D* layer) override { Note(layer == background ? "Render2D background" : "Render2D foreground"); }
    void EndRender() override { Note("EndRender"); }
    bool SupportsRenderToTexture() override { return false; }
    void BeginCapture() override { Note("BeginCapture"); }
    void EndCapture() override { Note("EndCapture"); }
    void ApplyCapture() override { Note("ApplyCapture"); }
    void Suspend() override { Note("Suspend renderer"); }
    void Resume() override { Note("Resume renderer"); }
    int GetWidthPx() override { return 0; }
    int GetHeightPx() override { return 0; }

    std::vector<std::string> calls;
    /// Where the calls go too, when given.
    std::function<void(const std::string&)> onCall;
    /// The layer that Render2D is to call the background.
    Scene2D* background = nullptr;
    Scene* lastScene = nullptr;
    CameraNode* lastCamera = nullptr;

    using Renderer::requestFlag;
    using Renderer::textureLoader;

private:
    void Note(const std::string& call)
    {
        calls.push_back(call);
        if (onCall)
        {
            onCall(call);
        }
    }
};

}  // namespace OV::Test
