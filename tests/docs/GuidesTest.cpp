// The code of the guides, built and run. What stands between two lines `// [name]` is a piece of code on a page
// of docs/, as it is.

#include "orvane_host/orvane_host.h"
#include "orvane/orvane.h"
#include "tests/orvane_host/present/PresentationModels.h"
#include "tests/support/GLFixture.h"
#include "tests/support/TemporaryFolder.h"

#include <GL/gl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace OV::Test
{

namespace
{

/// An empty scene that is looked at from the front, 2 units high, with the origin in the middle, and a light
/// that shines where the eye looks.
class Guides : public GLFixture
{
protected:
    Guides()
        : loader(OV::TextureLoader::Create())
        , renderer(loader.get(), app.GetContext()->GetRenderCapabilities())
    {
        AllowStateChange("polygon offset");
        app.GetContext()->SetScene(std::make_unique<Scene>());
        Scene& world = World();
        Host::ViewFitOptions fit;
        fit.aspect = 1.0f;
        fit.orthographic = true;
        fit.margin = 0.0f;
        Host::ViewFit::Frame(*world.GetCameraNode(), {-1, -1, -1}, {1, 1, 1}, Host::NamedView::Front, fit);
        world.GetRoot()->AddChild(new LightNode(&world), false);
        app.SetScreenSize(Width(), Height());
        renderer.Resize(Width(), Height());
    }

    Scene& World() const { return *app.GetContext()->GetScene(); }

    /// Fills the view and faces the eye, without a material.
    Mesh& AddSquare()
    {
        Scene& world = World();
        auto raw = std::make_shared<RawMesh>();
        raw->SetPositionBuffer({{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}});
        raw->SetNormalBuffer({{0, 0, 1}, {0, 0, 1}, {0, 0, 1}, {0, 0, 1}});
        raw->SetIndices({0, 1, 2, 0, 2, 3});
        raw->EndDescription(true);
        auto* mesh = new Mesh(raw, &world);
        auto* place = new MeshNode(&world);
        world.GetRoot()->AddChild(place, false);
        mesh->AddNode(place);
        return *mesh;
    }

    Picture Draw()
    {
        app.Update(0.0f);
        app.Render(&renderer, false);
        return ReadPixels();
    }

    Pixel Middle() { return Draw().At(Width() / 2, Height() / 2); }

    AppContext app;
    std::unique_ptr<TextureLoader> loader;
    Renderer20 renderer;
};

using GuidesOfTheKit = PresentationFixture;

} // namespace

TEST_F(Guides, AMaterialWithOnlyADiffuseColourIsWhite)
{
    auto* material = new Material("only diffuse");
    material->SetDiffuse({0.8f, 0.4f, 0.3f, 1.0f});
    World().AddMaterial(material);
    material->AddMesh(&AddSquare());
    EXPECT_EQ(Middle(), ToPixel(1.0f, 1.0f, 1.0f));
}

TEST_F(Guides, AMaterialHasItsColoursFromTheLightAndWithoutIt)
{
    OV::Scene& scene = World();
    OV::Mesh& mesh = AddSquare();
    // [material]
    auto* clay = new OV::Material("clay");
    clay->SetDiffuse({0.8f, 0.4f, 0.3f, 1.0f}); // of the light that falls on it
    clay->SetAmbient({0.2f, 0.1f, 0.1f, 1.0f}); // without any light, and white until it is set
    scene.AddMaterial(clay);
    clay->AddMesh(&mesh);
    // [material]
    EXPECT_EQ(Middle(), ToPixel(1.0f, 0.5f, 0.4f));
    scene.GetLights().front()->SetLocalDirection({1.0f, 0.0f, 0.0f});
    EXPECT_EQ(Middle(), ToPixel(0.2f, 0.1f, 0.1f)) << "the light passes by";
}

TEST_F(Guides, AMaterialBecomesSeeThrough)
{
    Scene& scene = World();
    app.GetContext()->SetBackgroundColor({0.0f, 0.0f, 0.0f, 1.0f});
    auto* glass = new Material("glass");
    glass->SetAmbient({1.0f, 0.0f, 0.0f, 1.0f});
    glass->SetDiffuse({0.0f, 0.0f, 0.0f, 1.0f});
    scene.AddMaterial(glass);
    glass->AddMesh(&AddSquare());
    EXPECT_EQ(Middle(), ToPixel(1.0f, 0.0f, 0.0f));
    // [see-through]
    glass->SetOpacity(0.4f);
    scene.ProcessChangedMaterial(glass);
    // [see-through]
    EXPECT_TRUE(scene.IsDirty());
    const Pixel seen = Middle();
    EXPECT_NEAR(seen.r, 102, 1);
}

TEST_F(Guides, ThePictureOfAMaterialIsScaledTwice)
{
    // Left half black, right half white.
    constexpr int Side = 16;
    auto* halves = new Material("halves");
    halves->SetFlags(MaterialFlagUnlit);
    halves->pixelWidth = halves->pixelHeight = Side;
    halves->pixels = static_cast<unsigned char*>(std::malloc(4 * Side * Side));
    for (int i = 0; i < 4 * Side * Side; ++i)
    {
        halves->pixels[i] = i % 4 == 3 || i / 4 % Side >= Side / 2 ? 255 : 0;
    }
    halves->uScale = 0.5f;
    World().AddMaterial(halves);
    Mesh& square = AddSquare();
    square.GetRawMesh()->textureCoordinates = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    halves->AddMesh(&square);
    const Picture picture = Draw();
    int changes = 0;
    for (int x = 1; x < Width(); ++x)
    {
        const auto isWhite = [&](int at) { return picture.At(at, Height() / 2).g > 127; };
        changes += isWhite(x) != isWhite(x - 1);
    }
    EXPECT_EQ(changes, 7) << "four pictures side by side";
}

TEST_F(Guides, AMaterialShowsAPicture)
{
    Scene& scene = World();
    const std::string name = ORVANE_GUIDES_PICTURES;
    const std::wstring folder(name.begin(), name.end());
    auto raw = std::make_shared<RawMesh>();
    raw->SetPositionBuffer({{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}});
    raw->SetNormalBuffer({{0, 0, 1}, {0, 0, 1}, {0, 0, 1}, {0, 0, 1}});
    raw->SetTextureBuffer({{0, 0}, {1, 0}, {1, 1}, {0, 1}});
    raw->SetIndices({0, 1, 2, 0, 2, 3});
    raw->EndDescription(true);
    auto* mesh = new Mesh(raw, &scene);
    auto* place = new MeshNode(&scene);
    scene.GetRoot()->AddChild(place, false);
    mesh->AddNode(place);
    auto* poster = new Material("poster");
    scene.AddMaterial(poster);
    poster->AddMesh(mesh);
    // [picture]
    poster->SetDiffuse({0.7f, 0.7f, 0.7f, 1.0f});
    poster->SetAmbient({0.3f, 0.3f, 0.3f, 1.0f}); // with the light white, which leaves the picture as it is
    poster->texturePath.path = folder; // ends in a slash
    poster->textureName = "house.png";
    // [picture]
    const Picture picture = Draw();
    EXPECT_NE(picture.At(10, 10), ToPixel(1.0f, 1.0f, 1.0f));
    int colours = 0;
    for (int x = 1; x < Width(); ++x)
    {
        colours += picture.At(x, Height() / 2) != picture.At(x - 1, Height() / 2) ? 1 : 0;
    }
    EXPECT_GT(colours, 10);
}

TEST_F(Guides, ALineBendsAtItsPoints)
{
    OV::Scene& scene = World();
    // [line]
    auto points = std::make_shared<OV::RawLine>();
    points->SetPositionBuffer({{-0.5f, 0.0f, 0.0f}, {0.0f, 0.0f, 0.0f}, {0.0f, 0.5f, 0.0f}});
    points->SetIndices({0, 1, 1, 2}); // a pair for each segment: a point and the one after it
    points->EndDescription(true);
    auto* line = new OV::Line(points, &scene);
    auto* place = new OV::MeshNode(&scene);
    scene.GetRoot()->AddChild(place, false);
    line->AddNode(place);
    auto* style = new OV::LineStyle("red");
    style->color = {0.8f, 0.1f, 0.1f, 1.0f};
    style->secondColor = {0.0f, 0.0f, 0.0f, 1.0f}; // added to the colour, and white until it is set
    style->width = 3.0f;                           // pixels
    scene.AddLineStyle(style);
    style->AddLine(line);
    // [line]
    style->antialias = false;
    const Picture picture = Draw();
    EXPECT_EQ(picture.At(48, 64), ToPixel(0.8f, 0.1f, 0.1f));
    EXPECT_EQ(picture.At(64, 80), ToPixel(0.8f, 0.1f, 0.1f));
    EXPECT_EQ(picture.At(80, 64), ToPixel(1.0f, 1.0f, 1.0f));
    style->antialias = true;
    // [dashes]
    style->SetDashed(true);
    style->SetDashFrequency(8.0f); // pixels of a dash, and of the gap after it
    scene.MarkDirty();             // the style's fields don't
    // [dashes]
    EXPECT_TRUE(app.Update(0.0f));
}

TEST_F(Guides, ATextFollowsANode)
{
    auto* door = new Node(&World());
    World().GetRoot()->AddChild(door, false);
    Transform place;
    place.SetPosition({0.5f, 0.0f, 0.0f});
    door->SetLocal(place);
    {
        // [label]
        OV::Scene2D& layer = *app.GetContext()->GetForeground2D();
        OV::Text label("DejaVu Sans", 16, "Door", &layer, true, true, 0); // both ways in the middle of its node
        label.SetColor({0.0f, 0.0f, 0.0f, 1.0f});                         // white at first
        label.GetInstance(0)->Set3DParent(door);
        // [label]
        const Picture picture = Draw();
        int leftmost = Width();
        int rightmost = 0;
        for (int x = 0; x < Width(); ++x)
        {
            for (int y = 50; y < 78; ++y)
            {
                if (picture.At(x, y).r < 100)
                {
                    leftmost = std::min(leftmost, x);
                    rightmost = std::max(rightmost, x);
                }
            }
        }
        EXPECT_NEAR((leftmost + rightmost) / 2, 96, 3);
        EXPECT_GT(rightmost - leftmost, 20);
    }
}

TEST_F(Guides, ARectangleStandsInALayer)
{
    // [sprite]
    OV::Scene2D& layer = *app.GetContext()->GetBackground2D();
    OV::Sprite bar(&layer, new OV::Rect(&layer, 40.0f, 10.0f, false));
    bar.SetColor({0.0f, 0.0f, 1.0f, 1.0f});
    OV::Transform place;
    place.SetPosition({20.0f, 30.0f, 0.0f}); // points from the lower left corner; z is the order
    bar.GetNode()->SetLocal(place);
    // [sprite]
    const Picture picture = Draw();
    EXPECT_EQ(picture.At(22, 32), ToPixel(0.0f, 0.0f, 1.0f));
    EXPECT_EQ(picture.At(58, 38), ToPixel(0.0f, 0.0f, 1.0f));
    EXPECT_EQ(picture.At(64, 32), ToPixel(1.0f, 1.0f, 1.0f));
}

TEST_F(Guides, ARectangleFollowsANodeWhereTheSizeIsToldInPoints)
{
    auto* followed = new Node(&World());
    Transform place;
    place.SetPosition({0.5f, 0.0f, 0.0f});
    followed->SetLocal(place);
    World().GetRoot()->AddChild(followed, false);
    Scene2D& layer = *app.GetContext()->GetForeground2D();
    Sprite mark(&layer, new Rect(&layer, 8.0f, 8.0f, false));
    mark.SetColor({0.0f, 0.0f, 1.0f, 1.0f});
    mark.GetNode()->Set3DParent(followed);
    const auto isThere = [&] { return Draw().At(3 * Width() / 4 + 2, Height() / 2 + 2) == ToPixel(0.0f, 0.0f, 1.0f); };
    EXPECT_TRUE(isThere());
    renderer.SetDevicePixelRatio(2.0f);
    EXPECT_FALSE(isThere()) << "the size is in pixels";
    app.SetScreenSize(Width() / 2, Height() / 2);
    EXPECT_TRUE(isThere());
}

TEST_F(Guides, AFrameIsDrawnWhereSomethingChanged)
{
    bool hasCapture = false;
    const auto draws = [&](float seconds) {
        glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT);
        // [loop]
        if (app.Update(seconds))
        {
            if (hasCapture && app.GetContext()->OnlyForegroundWasDirty())
            {
                app.RenderCapturedAndUI(&renderer);
            }
            else
            {
                app.Render(&renderer, true);
                hasCapture = true;
            }
        }
        // [loop]
        return ReadPixels().At(Width() / 2, Height() / 2) == ToPixel(1.0f, 1.0f, 1.0f);
    };
    EXPECT_TRUE(draws(0.0f));
    EXPECT_FALSE(draws(0.1f));
    app.GetContext()->GetForeground2D()->MarkDirty();
    EXPECT_TRUE(draws(0.2f));
    EXPECT_TRUE(app.GetContext()->OnlyForegroundWasDirty());
    World().MarkDirty();
    EXPECT_TRUE(draws(0.3f));
    EXPECT_FALSE(app.GetContext()->OnlyForegroundWasDirty());
    app.ClearOffscreenBuffers(&renderer);
}

TEST_F(Guides, AGuardKeepsTheStateOfTheHost)
{
    glDepthFunc(GL_GREATER);
    {
        // [guard]
        const OV::Host::GLStateGuard guard;
        app.Update(0.0f);
        app.Render(&renderer, false);
        // [guard]
    }
    GLint function = 0;
    glGetIntegerv(GL_DEPTH_FUNC, &function);
    EXPECT_EQ(function, GL_GREATER);
    glDepthFunc(GL_LESS);
}

TEST_F(Guides, ATargetTakesAFrame)
{
    auto* material = new Material("red");
    material->SetAmbient({1.0f, 0.0f, 0.0f, 1.0f});
    material->SetDiffuse({0.0f, 0.0f, 0.0f, 1.0f});
    World().AddMaterial(material);
    material->AddMesh(&AddSquare());
    app.Update(0.0f);
    // [target]
    RenderTarget target(RenderTargetProfileColorDepth);
    target.SetDimensions(128, 128); // as large as the renderer
    target.BeginCapture(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    app.Render(&renderer, false);
    target.EndCapture();
    RenderTarget::RenderTargetImage image; // RGBA, the bottom row first
    target.SaveImageTo(image);
    target.SetDimensions(0, 0); // gives its GL objects back
    // [target]
    ASSERT_EQ(image.width, 128);
    EXPECT_EQ(image.data[0], 255);
    EXPECT_EQ(image.data[1], 0);
}

TEST_F(GuidesOfTheKit, ASceneOfOnesOwnIsPresentedPickedAndEdited)
{
    std::string error;
    const int width = Width();
    const int height = Height();
    const int x = width / 2;
    const int y = height / 2;
    auto scene = std::make_unique<Scene>();
    auto* mesh = new Mesh(Host::Primitives::Box({0, 0, 0}, {1000, 2000, 500}), scene.get());
    auto* place = new MeshNode(scene.get());
    auto* paint = new Material("paint");
    paint->SetDiffuse({0.9f, 0.1f, 0.1f, 1.0f});
    scene->AddMaterial(paint);
    paint->AddMesh(mesh);
    mesh->AddNode(place);
    scene->GetRoot()->AddChild(place, false);
    const auto present = [&] {
        // [presented]
        OV::Host::Presentation model(std::move(scene)); // with boxes that stand on the plane of X and Y
        model.SetUnit(0.001);                           // its numbers are millimetres
        OV::Host::PresentationSettings settings;
        settings.view.upAxis = OV::Host::UpAxis::Z;
        settings.lines = OV::Host::LineSettings();
        if (!model.Apply(settings, error)) return false;
        model.Draw(width, height); // into the framebuffer that is bound
        if (const auto hit = model.Pick(x, y))
        {
            model.Highlight(*hit->node, {1.0f, 0.5f, 0.0f, 0.6f});
            hit->mesh->GetMaterial()->SetDiffuse({0.2f, 0.6f, 0.3f, 1.0f}); // of all that is made of it
            model.Refresh();                                                // after any edit of the scene
        }
        // [presented]
        const Picture lit = Draw(model);
        EXPECT_EQ(model.GetUnit(), "mm");
        EXPECT_TRUE(model.ClearHighlight(*place));
        const Pixel green = Draw(model).At(x, y);
        EXPECT_GT(green.g, green.r);
        EXPECT_GT(lit.At(x, y).r, green.r) << "the highlight lies over it";
        const auto& up = model.GetCamera().GetGlobal().GetTransf3d().m;
        EXPECT_GT(up[2][1], 0.5) << "Z is up";
        return true;
    };
    EXPECT_TRUE(present()) << error;
}

TEST_F(GuidesOfTheKit, ALookIsAField)
{
    const auto model = PresentBoxes();
    std::string error;
    const auto change = [&]() -> bool {
        // [look]
        OV::Host::PresentationSettings settings = model->GetSettings();
        settings.look = OV::Host::Look::Monotone;
        settings.lines = OV::Host::LineSettings();
        settings.edges = OV::Host::EdgeLook();
        if (!model->Apply(settings, error)) return false;
        // [look]
        return true;
    };
    const Picture before = Draw(*model);
    EXPECT_TRUE(change()) << error;
    EXPECT_TRUE(model->NeedsDraw());
    EXPECT_NE(Draw(*model), before);
}

TEST_F(GuidesOfTheKit, APictureIsTakenWithoutAWindow)
{
    const auto model = PresentBoxes();
    std::string error;
    const TemporaryFolder folder;
    const std::string path = folder.Path("cutout.png");
    const auto save = [&]() -> bool {
        // [picture-file]
        OV::Host::PictureOptions options;
        options.width = 400;
        options.height = 300;
        options.transparent = true;
        if (!model->SavePicture(path, options, error)) return false;
        // [picture-file]
        return true;
    };
    EXPECT_TRUE(save()) << error;
    std::vector<unsigned char> rgba;
    EXPECT_TRUE(model->TakePicture(rgba, 64, 48, error)) << error;
    EXPECT_EQ(rgba.size(), 64u * 48u * 4u);
}

} // namespace OV::Test
