// A renderer of one's own on the engine alone: the scene goes into one RenderTarget, what its nodes are into
// another, and two effects put them together, with darkened corners and edges. Written to render-target.png.
#include <orvane_host/orvane_host.h>
#include <orvane/orvane.h>

#include <GL/gl.h>

namespace
{

class EdgeRenderer : public OV::Renderer20
{
public:
    using Renderer20::Renderer20;

    /// GL, as all that draws.
    ~EdgeRenderer() override
    {
        for (RenderTarget* target : {&m_picture, &m_identifiers, &m_darkened}) target->SetDimensions(0, 0);
    }

    void Render3D(OV::Scene* scene, OV::CameraNode* camera) override
    {
        if (!scene || !camera) return;
        for (RenderTarget* target : {&m_picture, &m_identifiers, &m_darkened}) target->SetDimensions(width, height);

        glClearColor(clearColor.r, clearColor.g, clearColor.b, 1.0f);
        m_picture.BeginCapture(GL_COLOR_BUFFER_BIT);
        Renderer20::Render3D(scene, camera);
        m_picture.EndCapture();

        m_identifiers.BeginCapture(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        DrawIdentifiers(*scene, *camera);
        m_identifiers.EndCapture();

        m_darkened.BeginCapture(GL_COLOR_BUFFER_BIT);
        Darken(*camera);
        m_darkened.EndCapture();
        DrawEdges();
    }

private:
    /// Each node in a colour that stands for its user data.
    void DrawIdentifiers(OV::Scene& scene, OV::CameraNode& camera)
    {
        auto* effect = Effect<OV::DepthIdPassEffectES20>(OV::EffectCache::DepthIdPass);
        auto* cameraData = static_cast<OV::CameraNodeES20*>(camera.GetRenderData()); // the picture has made them
        effect->SetIdMode(1);
        std::vector<OV::RenderItemES20> items;
        PrepareOptimizedMaterials(scene.GetOptimizedMaterials(), cameraData, items, false);
        RenderItemList(cameraData, items, OV::RenderPassDepthId);
        effect->Release();
    }

    void Darken(const OV::CameraNode& camera)
    {
        float nearDistance = 0.0f;
        float farDistance = 0.0f;
        camera.GetNearFar(nearDistance, farDistance);
        auto* effect = Effect<OV::SSAOEffectES20>(OV::EffectCache::SSAO);
        effect->SetDimensions(width, height);
        effect->SetNearFar(nearDistance, farDistance);
        effect->SetRenderTexture(static_cast<int>(m_picture.GetColorTexture()));
        effect->SetDepthTexture(static_cast<int>(m_identifiers.GetDepthTexture()));
        effect->Apply(nullptr, nullptr);
        m_picture.ApplyCapture(effect);
        effect->Remove();
        effect->Release();
    }

    void DrawEdges()
    {
        auto* effect = Effect<OV::LineFilterEffectES20>(OV::EffectCache::LineFilter);
        effect->SetDimensions(width, height);
        effect->EdgeWeight(1.0f);
        effect->SetEdgeColor(OV::Color(0.0f, 0.0f, 0.0f));
        effect->SetRenderTexture(static_cast<int>(m_darkened.GetColorTexture()));
        effect->SetDepthTexture(static_cast<int>(m_identifiers.GetDepthTexture()));
        effect->SetIdTexture(static_cast<int>(m_identifiers.GetColorTexture()));
        effect->Apply(nullptr, nullptr);
        m_identifiers.ApplyCapture(effect);
        effect->Remove();
        effect->Release();
    }

    /// @return with a reference, to be given back with Release.
    template <class T>
    T* Effect(OV::EffectCache::EffectType type)
    {
        return static_cast<T*>(effectCache.GetEffect(type));
    }

    RenderTarget m_picture{RenderTargetProfileColorDepth};
    RenderTarget m_identifiers{RenderTargetProfileColorDepth};
    RenderTarget m_darkened{RenderTargetProfileColor};
};

void AddBox(OV::Scene& scene, OV::Material& material, const OV::Vector& low, const OV::Vector& high)
{
    auto* mesh = new OV::Mesh(OV::Host::Primitives::Box(low, high), &scene);
    auto* node = new OV::MeshNode(&scene);
    material.AddMesh(mesh);
    mesh->AddNode(node);
    node->SetUserData(static_cast<int>(scene.GetMeshes().size())); // nodes of one number have no edge between
    scene.GetRoot()->AddChild(node, false);
}

} // namespace

int main()
{
    constexpr int Width = 640;
    constexpr int Height = 480;
    std::string error;
    const auto gl = OV::Host::HeadlessContext::Create({Width, Height}, error);
    if (!gl) return 1;

    OV::AppContext app;
    app.GetContext()->SetScene(std::make_unique<OV::Scene>());
    OV::Scene& scene = *app.GetContext()->GetScene();
    auto* clay = new OV::Material("clay");
    clay->SetDiffuse({0.0f, 0.0f, 0.0f, 1.0f});
    clay->SetAmbient({0.9f, 0.75f, 0.6f, 1.0f});
    clay->SetFlags(OV::MaterialFlagUnlit); // without light, so that all shades are the effects'
    scene.AddMaterial(clay);
    AddBox(scene, *clay, {-2.0f, -0.1f, -2.0f}, {2.0f, 0.0f, 2.0f});
    AddBox(scene, *clay, {-1.0f, 0.0f, -1.0f}, {0.0f, 1.5f, 1.0f});
    AddBox(scene, *clay, {0.0f, 0.0f, -1.0f}, {1.0f, 0.6f, 1.0f});
    OV::Host::ViewFit::Frame(*scene.GetCameraNode(), {-2, -0.1f, -2}, {2, 1.5f, 2}, OV::Host::NamedView::Iso);
    OV::CameraNode& camera = *scene.GetCameraNode();
    camera.SetNearFar(0.5f, 12.0f * camera.GetDistanceToTarget()); // what gives corners shades of some ten pixels

    const std::unique_ptr<OV::TextureLoader> textures(OV::TextureLoader::Create());
    EdgeRenderer renderer(textures.get(), app.GetContext()->GetRenderCapabilities());
    app.SetScreenSize(Width, Height);
    renderer.Resize(Width, Height);
    app.Update(0.0f);
    app.Render(&renderer, false);
    return OV::Host::WritePNG(*gl, "render-target.png", OV::Host::PNGAlpha::Drop, error) ? 0 : 1;
}
