// The table of docs/drawing.md, held to the truth: every call that it names is made in a scene that is clean.

#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/overlay/Rect.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/overlay/Shape2DNode.h"
#include "orvane/overlay/Sprite.h"
#include "orvane/overlay/Text.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/NodeLineStyle.h"
#include "orvane/scene/NodeMaterial.h"
#include "orvane/scene/RawLine.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <regex>
#include <set>
#include <string>

namespace OV::Test
{

namespace
{

/// One of everything, updated and clean.
struct World
{
    World()
    {
        app.GetContext()->SetScene(std::make_unique<Scene>());
        scene = app.GetContext()->GetScene();
        layer = app.GetContext()->GetForeground2D();
        node = new MeshNode(scene);
        child = new MeshNode(scene);
        loose = new MeshNode(scene);
        scene->GetRoot()->AddChild(node, false);
        node->AddChild(child, false);
        geometry = std::make_shared<RawMesh>();
        Describe();
        mesh = new Mesh(geometry, scene);
        bare = new Mesh(geometry, scene);
        mesh->AddNode(node);
        material = new Material("material");
        scene->AddMaterial(material);
        material->AddMesh(mesh);
        line = new Line(nullptr, scene);
        bareLine = new Line(nullptr, scene);
        style = new LineStyle("style");
        scene->AddLineStyle(style);
        style->AddLine(line);
        light = new LightNode(scene);
        scene->GetRoot()->AddChild(light, false);
        nodeMaterial = new NodeMaterial;
        scene->AddMaterial(nodeMaterial);
        nodeMaterial->AddNode(node);
        nodeStyle = new NodeLineStyle;
        scene->AddLineStyle(nodeStyle);
        rect = new Rect(layer, 10, 10, false);
        sprite = std::make_unique<Sprite>(layer, rect);
        text = std::make_unique<Text>("DejaVu Sans", 12, "text", layer, true, true, 0);
        app.SetScreenSize(64, 64);
        while (app.Update(0.0f))
        {
        }
    }

    ~World()
    {
        delete loose;
        delete removed;
    }

    void Describe() const
    {
        geometry->StartDescription();
        geometry->SetPositionBuffer({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}});
        geometry->SetIndices({0, 1, 2});
        geometry->EndDescription(true);
    }

    bool IsDirty() const { return scene->IsDirty() || layer->IsDirty(); }

    AppContext app;
    Scene* scene;
    Scene2D* layer;
    MeshNode* node;
    MeshNode* child;
    MeshNode* loose;
    Node* removed = nullptr;
    std::shared_ptr<RawMesh> geometry;
    Mesh* mesh;
    Mesh* bare;
    Material* material;
    std::unique_ptr<Material> freed;
    Line* line;
    Line* bareLine;
    LineStyle* style;
    std::unique_ptr<LineStyle> freedStyle;
    LightNode* light;
    NodeMaterial* nodeMaterial;
    NodeLineStyle* nodeStyle;
    Rect* rect;
    std::unique_ptr<Sprite> sprite;
    std::unique_ptr<Text> text;
};

const Color kRed(1.0f, 0.0f, 0.0f, 1.0f);

const std::map<std::string, std::function<void(World&)>> kCalls = {
    {"Node::SetLocal", [](World& w) { w.node->SetLocal(Transform()); }},
    {"Node::SetGlobal", [](World& w) { w.node->SetGlobal(Transform()); }},
    {"Node::AddChild(child, true)", [](World& w) { w.scene->GetRoot()->AddChild(w.child, true); }},
    {"Node::AddChild(child, false)", [](World& w) { w.scene->GetRoot()->AddChild(w.child, false); }},
    {"Node::RemoveChild", [](World& w) { w.node->RemoveChild(w.child), w.removed = w.child; }},
    {"delete node", [](World& w) { delete w.child; }},
    {"Scene::DeleteSubtree", [](World& w) { w.scene->DeleteSubtree(w.node); }},
    {"Scene::Clear", [](World& w) { w.scene->Clear(); }},
    {"CoreContext::SetScene", [](World& w) {
         w.app.GetContext()->SetScene(std::make_unique<Scene>());
         w.scene = w.app.GetContext()->GetScene();
     }},
    {"CameraNode::SetFOV", [](World& w) { w.scene->GetCameraNode()->SetFOV(0.2f); }},
    {"CameraNode::SetProjection", [](World& w) { w.scene->GetCameraNode()->SetProjection(CameraNode::Orthographic); }},
    {"CameraNode::SetNearFar", [](World& w) { w.scene->GetCameraNode()->SetNearFar(1, 2); }},
    {"CameraNode::SetDistanceToTarget", [](World& w) { w.scene->GetCameraNode()->SetDistanceToTarget(2); }},
    {"Scene::SetCamera", [](World& w) { w.scene->SetCamera(nullptr); }},
    {"AppContext::SetScreenSize", [](World& w) { w.app.SetScreenSize(32, 32); }},
    {"new Mesh", [](World& w) { new Mesh(w.geometry, w.scene); }},
    {"delete mesh", [](World& w) { delete w.mesh; }},
    {"new Line", [](World& w) { new Line(nullptr, w.scene); }},
    {"delete line", [](World& w) { delete w.line; }},
    {"new LightNode", [](World& w) { w.removed = new LightNode(w.scene); }},
    {"delete light", [](World& w) { delete w.light; }},
    {"Mesh::AddNode", [](World& w) { w.mesh->AddNode(w.child); }},
    {"Mesh::RemoveNode", [](World& w) { w.mesh->RemoveNode(w.node); }},
    {"Material::AddMesh", [](World& w) { w.material->AddMesh(w.bare); }},
    {"Material::RemoveMesh", [](World& w) { w.material->RemoveMesh(w.mesh); }},
    {"LineStyle::AddLine", [](World& w) { w.style->AddLine(w.bareLine); }},
    {"LineStyle::RemoveLine", [](World& w) { w.style->RemoveLine(w.line); }},
    {"Scene::AddMaterial", [](World& w) { w.scene->AddMaterial(new Material("new")); }},
    {"Scene::RemoveMaterial", [](World& w) { w.scene->RemoveMaterial(w.material), w.freed.reset(w.material); }},
    {"Scene::ProcessChangedMaterial", [](World& w) { w.scene->ProcessChangedMaterial(w.material); }},
    {"Scene::AddLineStyle", [](World& w) { w.scene->AddLineStyle(new LineStyle("new")); }},
    {"Scene::RemoveLineStyle", [](World& w) { w.scene->RemoveLineStyle(w.style), w.freedStyle.reset(w.style); }},
    {"NodeMaterial::AddNode", [](World& w) { w.nodeMaterial->AddNode(w.child); }},
    {"NodeMaterial::RemoveNode", [](World& w) { w.nodeMaterial->RemoveNode(w.node); }},
    {"NodeMaterial::Clear", [](World& w) { w.nodeMaterial->Clear(); }},
    {"NodeLineStyle::SetNode", [](World& w) { w.nodeStyle->SetNode(w.child); }},
    {"Material::SetDiffuse", [](World& w) { w.material->SetDiffuse(kRed); }},
    {"Material::SetOpacity", [](World& w) { w.material->SetOpacity(0.5f); }},
    {"Material::SetFlags", [](World& w) { w.material->SetFlags(MaterialFlagUnlit); }},
    {"LineStyle::width", [](World& w) { w.style->width = 3.0f; }},
    {"LightNode::SetColor", [](World& w) { w.light->SetColor(1, 0, 0); }},
    {"LightNode::SetVisible", [](World& w) { w.light->SetVisible(false); }},
    {"LightNode::SetLocalDirection", [](World& w) { w.light->SetLocalDirection(Vector(1, 0, 0)); }},
    {"RawMesh::StartDescription", [](World& w) { w.geometry->StartDescription(); }},
    {"RawMesh::EndDescription", [](World& w) { w.Describe(); }},
    {"MeshNode::SetFlags", [](World& w) { w.node->SetFlags(NodeFlagHidden, false); }},
    {"MeshNode::ClearFlags", [](World& w) { w.node->ClearFlags(NodeFlagHidden, false); }},
    {"MeshNode::SetDrawID", [](World& w) { w.node->SetDrawID(2); }},
    {"Mesh::SetFlags", [](World& w) { w.mesh->SetFlags(MeshFlagNoCull); }},
    {"Mesh::SetDrawID", [](World& w) { w.mesh->SetDrawID(2); }},
    {"Material::SetDrawID", [](World& w) { w.material->SetDrawID(2); }},
    {"Scene::Show", [](World& w) { w.scene->Show(true); }},
    {"Scene::EnableLights", [](World& w) { w.scene->EnableLights(false); }},
    {"Scene::OverrideViewport", [](World& w) { w.scene->OverrideViewport(true, 0, 0, 8, 8); }},
    {"CoreContext::SetBackgroundColor", [](World& w) { w.app.GetContext()->SetBackgroundColor(kRed); }},
    {"Scene::Suspend", [](World& w) { w.scene->Suspend(); }},
    {"Scene::Resume", [](World& w) { w.scene->Resume(); }},
    {"Scene2D::AddSprite", [](World& w) { w.layer->AddSprite(w.sprite.get()), w.layer->RemoveSprite(w.sprite.get()); }},
    {"Sprite::Show", [](World& w) { w.sprite->Show(true); }},
    {"Sprite::SetColor", [](World& w) { w.sprite->SetColor(kRed); }},
    {"Sprite::SetOverrideMaterial", [](World& w) { w.sprite->SetOverrideMaterial(nullptr); }},
    {"Sprite::SetClipRegion", [](World& w) { w.sprite->SetClipRegion(0, 0, 20, 20); }},
    {"Sprite::UpdateToClipRegion", [](World& w) { w.sprite->UpdateToClipRegion(); }},
    {"Sprite::IgnorePick", [](World& w) { w.sprite->IgnorePick(true); }},
    {"Text::Update", [](World& w) { w.text->Update("other"); }},
    {"Text::Show", [](World& w) { w.text->Show(true); }},
    {"Text::SetColor", [](World& w) { w.text->SetColor(kRed); }},
    {"Text::AddBackdrop", [](World& w) { w.text->AddBackdrop(kRed, 5, 5, 0, 0); }},
    {"Text::SetClipRegion", [](World& w) { w.text->SetClipRegion(0, 0, 20, 20); }},
    {"Text::UpdateToClipRegion", [](World& w) { w.text->UpdateToClipRegion(); }},
    {"Text::IgnorePick", [](World& w) { w.text->IgnorePick(true); }},
    {"Shape2D::ShiftX", [](World& w) { w.rect->ShiftX(1); }},
    {"Rect::Resize", [](World& w) { w.rect->Resize(5, 5); }},
    {"Rect::Clip", [](World& w) { w.rect->Clip(1, 1, 1, 1); }},
    {"Rect::SetCorners", [](World& w) { w.rect->SetCorners(0, 0, 0, 5, 0, 0, 5, 5, 0, 0, 5, 0); }},
    {"Shape2DNode::Set3DParent", [](World& w) { w.sprite->GetNode()->Set3DParent(w.node); }},
    {"Material2D::color", [](World& w) { w.sprite->GetMaterial()->color = kRed; }},
};

/// Each call of the table of the page, and whether the page says that it makes its scene dirty.
std::map<std::string, bool> ReadTable()
{
    std::map<std::string, bool> table;
    std::ifstream page(ORVANE_DRAWING_PAGE);
    const std::regex row("\\| [^|]* \\| ([^|]*) \\| (yes|no) \\|");
    const std::regex call("`([^`]+)`");
    for (std::string line; std::getline(page, line);)
    {
        std::smatch cells;
        if (!std::regex_match(line, cells, row))
        {
            continue;
        }
        const std::string calls = cells[1];
        for (std::sregex_iterator it(calls.begin(), calls.end(), call), end; it != end; ++it)
        {
            EXPECT_TRUE(table.emplace((*it)[1], cells[2] == "yes").second) << (*it)[1] << " stands there twice";
        }
    }
    return table;
}

} // namespace

TEST(DrawingTable, SaysWhatMakesASceneDirty)
{
    for (const auto& [name, isDirty] : ReadTable())
    {
        const auto call = kCalls.find(name);
        if (call == kCalls.end())
        {
            ADD_FAILURE() << "nobody tests " << name;
            continue;
        }
        World world;
        ASSERT_FALSE(world.IsDirty());
        call->second(world);
        EXPECT_EQ(world.IsDirty(), isDirty) << name;
    }
}

TEST(DrawingTable, NamesEveryCallThatIsTested)
{
    const std::map<std::string, bool> table = ReadTable();
    for (const auto& [name, call] : kCalls)
    {
        EXPECT_TRUE(table.count(name)) << name;
    }
}

// The frame does not go by the flag alone where the size is new: the camera has it at once.
TEST(DrawingTable, ANewSizeIsForTheHostToDrawAfter)
{
    World world;
    world.app.SetScreenSize(32, 32);
    EXPECT_FALSE(world.app.Update(0.0f));
}

} // namespace OV::Test
