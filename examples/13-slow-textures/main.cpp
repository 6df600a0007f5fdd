// A texture that arrives later, fetched by another thread. What has it is not drawn until then, and frames go
// on. Written to slow-textures-1.png, before, and slow-textures-2.png, after.
#include <orvane_host/orvane_host.h>
#include <orvane/orvane.h>

#include <chrono>
#include <future>
#include <map>

namespace
{

/// The platform's loader, but for pictures in files: those come from a server, here one that waits for a sign.
class SlowTextures : public OV::Platform::Linux::ESTextureLoader
{
public:
    using ESTextureLoader::CreateTexture;

    void GiveSign() { m_sign.set_value(); }

    unsigned int CreateTexture(const OV::FilePath& path, const std::string& name, int& width, int& height,
                               float& uScale, float& vScale, bool, float, int, bool& hasAlpha) override
    {
        constexpr unsigned int StillToCome = 0xFFFFFFFF; // the next frame asks again
        std::future<Picture>& answer = m_answers[name];
        if (!answer.valid()) answer = std::async(std::launch::async, &Fetch, m_signGiven, path, name);
        if (answer.wait_for(std::chrono::seconds(0)) != std::future_status::ready) return StillToCome;
        const Picture picture = answer.get();
        if (!picture) return 0; // there is no such picture: the material stays without
        width = picture->width;
        height = picture->height;
        return CreateTexture(picture->data, width, height, uScale, vScale, hasAlpha, false);
    }

private:
    using Picture = std::shared_ptr<OV::Image>;

    /// Runs on a thread of its own.
    static Picture Fetch(std::shared_future<void> signGiven, OV::FilePath path, std::string name)
    {
        signGiven.wait();
        constexpr bool BottomRowFirst = true;
        return Picture(OV::ImageCodec::LoadImageData(path, name, false, BottomRowFirst));
    }

    std::map<std::string, std::future<Picture>> m_answers; // whose end waits for the threads
    std::promise<void> m_sign;                             // gone before, so that none waits for it any longer
    std::shared_future<void> m_signGiven{m_sign.get_future().share()};
};

/// The picture that is to come, of 256 by 256 pixels: red above blue.
std::vector<unsigned char> Halves()
{
    std::vector<unsigned char> pixels;
    for (int i = 0; i < 256 * 256; ++i)
    {
        const bool isAbove = i < 256 * 128;
        const unsigned char red = isAbove ? 200 : 50;
        const unsigned char blue = isAbove ? 40 : 200;
        pixels.insert(pixels.end(), {red, 80, blue, 255});
    }
    return pixels;
}

void Add(OV::Scene& scene, const std::shared_ptr<OV::RawMesh>& body, const std::string& texture)
{
    auto* material = new OV::Material(texture); // the scene owns it, as all that follows
    material->SetFlags(OV::MaterialFlagUnlit);
    material->SetAmbient({0.0f, 0.0f, 0.0f, 1.0f});
    material->SetDiffuse({0.8f, 0.8f, 0.8f, 1.0f});
    material->textureName = texture;
    auto* mesh = new OV::Mesh(body, &scene);
    auto* node = new OV::MeshNode(&scene);
    scene.AddMaterial(material);
    material->AddMesh(mesh);
    mesh->AddNode(node);
    scene.GetRoot()->AddChild(node, false);
}

std::unique_ptr<OV::Scene> MakeScene()
{
    auto scene = std::make_unique<OV::Scene>();
    Add(*scene, OV::Host::Primitives::Box({-1, -1, -1}, {1, 1, 1}), "slow-texture.png");
    Add(*scene, OV::Host::Primitives::Box({-2, -1.2f, -2}, {2, -1, 2}), "");
    OV::Host::ViewFit::Frame(*scene->GetCameraNode(), {-2, -1.2f, -2}, {2, 1, 2}, OV::Host::NamedView::Iso);
    return scene;
}

} // namespace

int main()
{
    constexpr int Width = 640;
    constexpr int Height = 480;
    constexpr auto Opaque = OV::Host::PNGAlpha::Drop;
    std::string error;
    const auto gl = OV::Host::HeadlessContext::Create({Width, Height, 4}, error);
    if (!gl || !OV::Host::WritePNG(Halves(), 256, 256, "slow-texture.png", Opaque, error)) return 1;

    SlowTextures textures;
    OV::AppContext app;
    app.GetContext()->SetScene(MakeScene());
    app.SetScreenSize(Width, Height);
    OV::Host::PresentationRenderer renderer(&textures, app.GetContext()->GetRenderCapabilities());
    renderer.Resize(Width, Height);

    app.Update(0.0f);
    app.Render(&renderer, false);
    if (!OV::Host::WritePNG(*gl, "slow-textures-1.png", Opaque, error)) return 1;
    textures.GiveSign();
    // A texture that is still to come keeps the scene dirty. In a window, the swap paces this loop.
    while (app.Update(0.0f))
    {
        app.Render(&renderer, false);
    }
    return OV::Host::WritePNG(*gl, "slow-textures-2.png", Opaque, error) ? 0 : 1;
}
