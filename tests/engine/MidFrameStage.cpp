#include "tests/engine/MidFrameStage.h"

#include "orvane/imaging/FilePath.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/RawLine.h"
#include "orvane/scene/detail/Subtree.h"
#include "tests/renderdata/RenderDataDoubles.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <utility>

namespace OV::Test
{

namespace
{

/// Runs without end only where the engine fails to refuse.
constexpr int kDeepestAllowed = 50;

void DeleteTree(Node* top)
{
    for (Node* node : detail::CollectSubtree(top))
    {
        delete node;
    }
}

class CallingLoader : public TextureLoader
{
public:
    explicit CallingLoader(MidFrameStage& stage) : m_stage(stage) {}

    unsigned CreateTextTexture(const std::string&, int, const std::string&, int, int& width, int& height,
                               int& textureWidth, int& textureHeight) override
    {
        width = height = textureWidth = textureHeight = 16;
        m_stage.Called(Place::LoadText);
        return 900;
    }

    unsigned CreateTexture(unsigned char*, int, int, float&, float&, bool&, bool) override
    {
        m_stage.Called(Place::LoadPixels);
        return 901;
    }

    unsigned CreateTexture(const FilePath&, const std::string& name, int&, int&, float& uScale, float& vScale, bool,
                           float, int, bool&) override
    {
        static const std::map<std::string, Place> places = {
            {"base", Place::LoadBase},         {"normal", Place::LoadNormalMap},
            {"opacity", Place::LoadOpacityMap}, {"alpha", Place::LoadOfAlpha},
            {"node", Place::LoadOfNodeMaterial}, {"layer", Place::LoadOfLayer}};
        uScale = vScale = 0.5f;
        if (name == "late")
        {
            if (!m_askedBefore)
            {
                m_askedBefore = true;
                return 0xFFFFFFFFu;
            }
            m_stage.Called(Place::LoadAgain);
            return 902;
        }
        const auto found = places.find(name);
        if (found != places.end())
        {
            m_stage.Called(found->second);
        }
        return 903;
    }

    unsigned CreateMipMapTexture(const FilePath&, const std::vector<std::string>&) override { return 0; }
    unsigned CreateCubeMap(const FilePath&, const std::vector<std::string>&) override { return 0; }

    bool ReleaseTexture(unsigned) override
    {
        m_stage.Called(Place::Release);
        return true;
    }

    void Suspend() override { m_stage.Called(Place::LoaderSuspend); }
    void Resume() override { m_stage.Called(Place::LoaderResume); }

private:
    MidFrameStage& m_stage;
    bool m_askedBefore = false;
};

class CallingNode : public MeshNode
{
public:
    CallingNode(Scene* scene, MidFrameStage& stage, Place begin, Place end) :
        MeshNode(scene), m_stage(stage), m_begin(begin), m_end(end)
    {
    }

    void UpdateGraph() override
    {
        // What runs below may delete this node.
        MidFrameStage& stage = m_stage;
        const Place end = m_end;
        stage.Called(m_begin);
        MeshNode::UpdateGraph();
        stage.Called(end);
    }

private:
    MidFrameStage& m_stage;
    Place m_begin;
    Place m_end;
};

class CallingCamera : public CameraNode
{
public:
    CallingCamera(Scene* scene, MidFrameStage& stage) : CameraNode(scene), m_stage(stage) {}

    void UpdateGraph() override
    {
        MidFrameStage& stage = m_stage;
        stage.Called(Place::CameraUpdateBegin);
        CameraNode::UpdateGraph();
        stage.Called(Place::CameraUpdateEnd);
    }

private:
    MidFrameStage& m_stage;
};

class CallingScreen : public IScreen
{
public:
    explicit CallingScreen(MidFrameStage& stage) : m_stage(stage) {}

    void WorldToScreen(const Vector&, float width, float height, Vector& out) override
    {
        out.Set(width / 2.0f, height / 2.0f, 0.0f);
        m_stage.Called(Place::ScreenMapping);
    }

    void ScreenToRay(float, float, Vector&, Vector&, bool) override {}

private:
    MidFrameStage& m_stage;
};

class CallingLayerNode : public Shape2DNode
{
public:
    CallingLayerNode(Scene2D* layer, MidFrameStage& stage) : Shape2DNode(layer), m_stage(stage) {}

    void SetLocal(const Transform& t) override
    {
        Shape2DNode::SetLocal(t);
        m_stage.Called(Place::LayerNodeSetLocal);
    }

    void UpdateGraph() override
    {
        Shape2DNode::UpdateGraph();
        m_stage.Called(Place::LayerNodeUpdateEnd);
    }

    void UpdateCulling(float& nearValue, float& farValue) override
    {
        Shape2DNode::UpdateCulling(nearValue, farValue);
        m_stage.Called(Place::LayerCullingEnd);
    }

private:
    MidFrameStage& m_stage;
};

class CallingScene : public Scene
{
public:
    explicit CallingScene(MidFrameStage& stage) : m_stage(stage) {}

protected:
    void ProcessZOrderedDrawItems() override
    {
        Scene::ProcessZOrderedDrawItems();
        m_stage.Called(Place::SceneOrder);
    }

private:
    MidFrameStage& m_stage;
};

class CallingMaterial : public Material
{
public:
    explicit CallingMaterial(MidFrameStage& stage) : Material("calling"), m_stage(stage) {}

    bool HasType(int type) override
    {
        const bool has = Material::HasType(type);
        m_stage.Called(Place::MaterialType);
        return has;
    }

private:
    MidFrameStage& m_stage;
};

class CallingLineStyle : public LineStyle
{
public:
    explicit CallingLineStyle(MidFrameStage& stage) : LineStyle("calling"), m_stage(stage) {}

    bool HasType(int type) override
    {
        const bool has = LineStyle::HasType(type);
        m_stage.Called(Place::LineStyleType);
        return has;
    }

private:
    MidFrameStage& m_stage;
};

class CallingMeshES20 : public MeshES20
{
public:
    CallingMeshES20(Mesh* mesh, SharedBufferPool* pool, MidFrameStage& stage) : MeshES20(mesh, pool), m_stage(stage) {}

    void Render(EffectES20* effect, const std::vector<MeshNode*>& nodes, bool specificNode) override
    {
        MeshES20::Render(effect, nodes, specificNode);
        m_stage.Called(Place::MeshDraw);
    }

private:
    MidFrameStage& m_stage;
};

class CallingRenderer : public Renderer20
{
public:
    CallingRenderer(MidFrameStage& stage, TextureLoader* loader) : Renderer20(loader, nullptr), m_stage(stage) {}

    void BeginRender(bool capture, Color const& color) override
    {
        m_stage.Called(Place::BeginRender);
        Renderer20::BeginRender(capture, color);
    }

    void Render3D(Scene* scene, CameraNode* camera) override
    {
        m_stage.Called(Place::BeforeRender3D);
        // Drawn for the first time, this mesh gets render data of the host's.
        if (m_stage.mesh && !m_hasOwnData)
        {
            m_hasOwnData = true;
            m_stage.mesh->SetRenderData(new CallingMeshES20(m_stage.mesh, &bufferPool, m_stage), true);
        }
        Renderer20::Render3D(scene, camera);
        m_stage.Called(Place::AfterRender3D);
    }

    void Render2D(Scene2D* layer) override
    {
        m_stage.Called(Place::BeforeRender2D);
        Renderer20::Render2D(layer);
    }

    void BeginCapture() override
    {
        Renderer20::BeginCapture();
        m_stage.Called(Place::BeginCapture);
    }

    void EndCapture() override
    {
        Renderer20::EndCapture();
        m_stage.Called(Place::EndCapture);
    }

    void ApplyCapture() override
    {
        m_stage.Called(Place::ApplyCapture);
        Renderer20::ApplyCapture();
    }

    void EndRender() override
    {
        Renderer20::EndRender();
        m_stage.Called(Place::EndRender);
    }

private:
    MidFrameStage& m_stage;
    bool m_hasOwnData = false;
};

/// A mesh whose draw has this many indices.
Mesh* MakeMesh(Scene& scene, int triangles)
{
    std::vector<unsigned short> indices;
    for (int i = 0; i < triangles; ++i)
    {
        indices.insert(indices.end(), {0, 1, 2});
    }
    return new Mesh(MakeRawMesh(3, std::move(indices)), &scene);
}

Material* MakeMaterial(Scene& scene, const std::string& texture, float opacity = 1.0f)
{
    auto* const made = new Material(texture);
    made->textureName = texture;
    made->SetOpacity(opacity);
    scene.AddMaterial(made);
    return made;
}

} // namespace

MidFrameStage::MidFrameStage() :
    loader(new CallingLoader(*this)), renderer(new CallingRenderer(*this, loader.get())), app(new AppContext)
{
    renderer->Resize(64, 48);
    app->SetScreenSize(64, 48);
    app->GetContext()->SetScene(std::make_unique<CallingScene>(*this));
    BuildScene(*CurrentScene(), 1);
    BuildLayers();
}

MidFrameStage::~MidFrameStage()
{
    m_place = Place::Nowhere;
    for (const WatchedPtr<Node>& orphan : m_orphans)
    {
        if (orphan && !orphan->GetParent())
        {
            DeleteTree(orphan);
        }
    }
}

void MidFrameStage::DeleteAlone(Node* node)
{
    if (node)
    {
        m_orphans.insert(m_orphans.end(), node->GetChildren().begin(), node->GetChildren().end());
    }
    delete node;
}

void MidFrameStage::Arm(Place place, std::function<void(MidFrameStage&)> edit, bool always)
{
    m_place = place;
    m_edit = std::move(edit);
    m_always = always;
}

void MidFrameStage::Called(Place place)
{
    if (place != m_place || place == Place::Nowhere || m_depth >= kDeepestAllowed)
    {
        return;
    }
    if (!m_always)
    {
        m_place = Place::Nowhere;
    }
    ++edits;
    ++m_depth;
    deepest = std::max(deepest, m_depth);
    m_edit(*this);
    --m_depth;
}

void MidFrameStage::BuildScene(Scene& scene, int triangles)
{
    material = new CallingMaterial(*this);
    material->textureName = "base";
    material->normalMapName = "normal";
    material->opacityMapName = "opacity";
    scene.AddMaterial(material);
    otherMaterial = MakeMaterial(scene, "late");
    alphaMaterial = MakeMaterial(scene, "alpha", 0.5f);
    auto* const ofPixels = new Material("pixels");
    ofPixels->pixels = static_cast<unsigned char*>(std::calloc(4, 1));
    ofPixels->pixelWidth = ofPixels->pixelHeight = 1;
    scene.AddMaterial(ofPixels);

    parent = new CallingNode(&scene, *this, Place::Nowhere, Place::Nowhere);
    node = new CallingNode(&scene, *this, Place::NodeUpdateBegin, Place::NodeUpdateEnd);
    child = new CallingNode(&scene, *this, Place::Nowhere, Place::ChildUpdateEnd);
    sibling = new CallingNode(&scene, *this, Place::Nowhere, Place::SiblingUpdateEnd);
    scene.GetRoot()->AddChild(parent, false);
    parent->AddChild(node, false);
    node->AddChild(child, false);
    scene.GetRoot()->AddChild(sibling, false);
    auto* const last = new MeshNode(&scene);
    scene.GetRoot()->AddChild(last, false);

    camera = new CallingCamera(&scene, *this);
    camera->SetScreenMapping(new CallingScreen(*this));
    scene.GetRoot()->AddChild(camera, false);
    scene.SetCamera(camera);
    Transform place;
    place.SetPosition(Vector(0.0f, 0.0f, 10.0f));
    camera->SetLocal(place);

    mesh = MakeMesh(scene, triangles);
    mesh->AddNode(node);
    material->AddMesh(mesh);
    const auto show = [&](Material* with, MeshNode* at) {
        Mesh* const shown = MakeMesh(scene, ++triangles);
        shown->AddNode(at);
        with->AddMesh(shown);
    };
    show(material, parent);
    show(material, child);
    show(otherMaterial, sibling);
    show(ofPixels, last);
    show(alphaMaterial, sibling);
    show(alphaMaterial, last);

    nodeMaterial = new NodeMaterial;
    nodeMaterial->textureName = "node";
    scene.AddMaterial(nodeMaterial);
    auto* const withOwn = new MeshNode(&scene);
    scene.GetRoot()->AddChild(withOwn, false);
    show(otherMaterial, withOwn);
    nodeMaterial->AddNode(withOwn);

    lineStyle = new CallingLineStyle(*this);
    scene.AddLineStyle(lineStyle);
    auto raw = std::make_shared<RawLine>();
    raw->SetPositionBuffer({Vector(0.0f, 0.0f, 0.0f), Vector(1.0f, 0.0f, 0.0f)});
    raw->SetIndices({0, 1});
    raw->EndDescription(true);
    line = new Line(raw, &scene);
    line->AddNode(sibling);
    lineStyle->AddLine(line);
}

void MidFrameStage::BuildLayers()
{
    Scene2D* const layer = Foreground();
    auto* const flat = new Material2D("flat");
    flat->textureName = "layer";
    flat->uScale = 0.5f;
    layer->AddMaterial(flat);
    sprite = std::make_unique<Sprite>(flat, layer, new Rect(layer, 8.0f, 8.0f, true));
    follower = new CallingLayerNode(layer, *this);
    layer->GetRoot()->AddChild(follower, false);
    sprite->GetShape()->AddNode(follower);
    follower->Set3DParent(sibling);
    auto* const second = new Shape2DNode(layer);
    layer->GetRoot()->AddChild(second, false);
    second->Set3DParent(sibling);
    text = std::make_unique<Text>("Sans", 12, "text", layer, false, false, 0);

    backdrop = std::make_unique<Sprite>(Background(), new Rect(Background(), 64.0f, 48.0f, false));
    backdrop->GetMaterial()->textureName = "backdrop";
    backdrop->GetMaterial()->uScale = 0.5f;
}

std::unique_ptr<Scene> MidFrameStage::MakeOtherScene()
{
    auto scene = std::make_unique<Scene>();
    Fill(*scene);
    return scene;
}

void MidFrameStage::Fill(Scene& scene)
{
    Material* const only = MakeMaterial(scene, "other");
    Mesh* const shown = MakeMesh(scene, 20);
    auto* const at = new MeshNode(&scene);
    scene.GetRoot()->AddChild(at, false);
    shown->AddNode(at);
    only->AddMesh(shown);
}

void MidFrameStage::Frame()
{
    MarkAllDirty();
    app->Update(1.0f);
    app->Render(renderer.get(), true);
}

void MidFrameStage::MarkAllDirty()
{
    for (Scene* scene : {CurrentScene(), static_cast<Scene*>(Foreground()), static_cast<Scene*>(Background())})
    {
        if (scene)
        {
            scene->MarkDirty();
        }
    }
}

void MidFrameStage::RunWhileThereIsAContext()
{
    for (const int width : {64, 80, 80})
    {
        if (app)
        {
            app->SetScreenSize(width, 60);
            MarkAllDirty();
            app->Update(1.0f);
        }
        if (app)
        {
            app->Render(renderer.get(), true);
        }
    }
}

void MidFrameStage::Run()
{
    Frame();
    app->SetScreenSize(80, 60);
    Frame();
    Frame();
    app->Suspend(renderer.get());
    app->Resume(renderer.get());
    Frame();
}

std::vector<int> MidFrameStage::DrawnInAFrame()
{
    recorder.Clear();
    Frame();
    std::vector<int> counts;
    for (const GLCall& call : recorder.All("glDrawElements"))
    {
        counts.push_back(static_cast<int>(call.Int(1)));
    }
    return counts;
}

} // namespace OV::Test
