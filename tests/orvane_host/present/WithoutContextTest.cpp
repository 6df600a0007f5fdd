// What a host asks for before there was any context in the process, so that no entry point of GL is loaded.
#include "orvane_host/geometry/Primitives.h"
#include "orvane_host/present/Presentation.h"
#include "orvane_host/present/PresentationRenderer.h"
#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace OV::Test
{

namespace
{

std::unique_ptr<Scene> MakeBox()
{
    auto scene = std::make_unique<Scene>();
    auto* mesh = new Mesh(Host::Primitives::Box(Vector(-1, -1, -1), Vector(1, 1, 1)), scene.get());
    auto* node = new MeshNode(scene.get());
    auto* material = new Material("box");
    scene->AddMaterial(material);
    material->AddMesh(mesh);
    mesh->AddNode(node);
    scene->GetRoot()->AddChild(node, false);
    return scene;
}

} // namespace

TEST(WithoutContext, APresentationDrawsNothingAndSaysWhy)
{
    Host::Presentation presentation(MakeBox());
    Host::PresentationSettings settings;
    settings.sky = true;
    settings.lines.emplace();
    settings.shadows.emplace();
    settings.sun.emplace().direction = Vector(1, 2, 1);
    settings.sheet.title = "Title";
    std::string error;
    ASSERT_TRUE(presentation.Apply(settings, error)) << error;
    presentation.Resize(64, 64);
    presentation.Prepare();
    presentation.Draw(64, 64);
    EXPECT_TRUE(presentation.NeedsDraw());
    EXPECT_FALSE(presentation.Pick(32, 32));
    std::vector<unsigned char> rgba;
    EXPECT_FALSE(presentation.TakePicture(rgba, 64, 64, error));
    EXPECT_EQ(error, "there is no context to draw it with; make one current first");
}

TEST(WithoutContext, APresentationRendererDrawsNothing)
{
    AppContext app;
    app.GetContext()->SetScene(MakeBox());
    Host::PresentationRenderer renderer(nullptr, app.GetContext()->GetRenderCapabilities());
    renderer.Resize(64, 64);
    app.SetScreenSize(64, 64);
    app.Update(0.0f);
    renderer.Pack(app.GetContext()->GetScene(), app.GetContext()->GetCamera());
    app.Render(&renderer, false);
    app.Render(&renderer, true);
}

} // namespace OV::Test
