// A pass of one's own: what is chosen shines through whatever is before it. Written to own-pass.png.
#include <orvane_host/orvane_host.h>
#include <orvane/orvane.h>

namespace
{

/// Draws the meshes of a node once more, whatever hides them, in a colour.
class ShineThrough : public OV::Host::PresentationStage
{
public:
    /// @param node not owned; outlives this.
    ShineThrough(OV::MeshNode& node, const OV::Color& color) : m_node(node)
    {
        m_paint.SetDiffuse(color);
        m_paint.SetAmbient({0.0f, 0.0f, 0.0f, 1.0f});
        m_paint.SetFlags(OV::MaterialFlagAlwaysPass | OV::MaterialFlagUnlit);
        m_paint.noDepthWrite = true;
        for (const OV::Mesh* mesh : node.GetMeshes())
        {
            // Geometry of its own: what is shared would be drawn by the flags of one of its materials.
            auto geometry = std::make_shared<OV::RawMesh>(*mesh->GetRawMesh());
            m_meshes.push_back(std::make_unique<OV::Mesh>(geometry));
            m_paint.AddMesh(m_meshes.back().get());
        }
    }

    void Prepare(OV::Host::PresentationFrame& frame) override
    {
        m_items.clear();
        for (const auto& mesh : m_meshes)
        {
            frame.renderer.List(*mesh, m_node, frame.cameraData, m_items);
        }
    }

    void Draw(OV::Host::PresentationFrame& frame) override
    {
        frame.renderer.Draw(frame.cameraData, m_items, OV::RenderPassDefault);
    }

    void ReleaseGL() override
    {
        m_items.clear(); // they name render data
        m_paint.Suspend();
        for (const auto& mesh : m_meshes)
        {
            mesh->Suspend();
        }
    }

private:
    OV::MeshNode& m_node;
    OV::Material m_paint{"shine"};
    std::vector<std::unique_ptr<OV::Mesh>> m_meshes; // gone before the material, which they leave
    std::vector<OV::RenderItemES20> m_items;
};

OV::MeshNode* Add(OV::Scene& scene, const std::shared_ptr<OV::RawMesh>& body, const OV::Color& color)
{
    auto* material = new OV::Material("body");
    auto* mesh = new OV::Mesh(body, &scene);
    auto* node = new OV::MeshNode(&scene);
    material->SetDiffuse(color);
    material->SetSpecular({0.0f, 0.0f, 0.0f, 1.0f});
    scene.AddMaterial(material);
    material->AddMesh(mesh);
    mesh->AddNode(node);
    scene.GetRoot()->AddChild(node, false);
    return node;
}

} // namespace

int main()
{
    std::string error;
    const auto gl = OV::Host::HeadlessContext::Create({}, error);
    if (!gl) return 1;

    auto scene = std::make_unique<OV::Scene>();
    Add(*scene, OV::Host::Primitives::Box({-1.5f, -1.0f, 1.0f}, {1.5f, 0.5f, 1.2f}), {0.6f, 0.6f, 0.65f, 1.0f});
    OV::MeshNode* const ball = Add(*scene, OV::Host::Primitives::Sphere(0.8f, 96, 48), {0.2f, 0.5f, 0.3f, 1.0f});

    OV::Host::Presentation model(std::move(scene));
    model.GetRenderer().AddStage(std::make_unique<ShineThrough>(*ball, OV::Color(1.0f, 0.5f, 0.0f, 0.5f)),
                                 OV::Host::StageSlot::AfterSurfaces);
    OV::Host::PresentationSettings settings;
    settings.view.named = OV::Host::NamedView::Front;
    return model.Apply(settings, error) && model.SavePicture("own-pass.png", 640, 480, error) ? 0 : 1;
}
