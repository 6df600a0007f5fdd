#include "tests/orvane_host/present/PresentationModels.h"

#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/PresentationRenderer.h"
#include "orvane_host/present/PresentationStage.h"
#include "orvane_host/sheet/Notes.h"
#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <GL/glew.h>

#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace OV::Test
{

namespace
{

using Host::Look;
using Host::Presentation;
using Host::PresentationSettings;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// Numbers that arithmetic of a host may come to.
constexpr float kNumbers[] = {std::numeric_limits<float>::quiet_NaN(), kInfinity, -kInfinity, 0.0f, -1.0f, 1e-38f, 1e-20f,
                              1e3f, 1e20f, 3e38f, -3e38f};

/// What hosts get wrong.
class PresentationHost : public PresentationFixture
{
protected:
    /// Every stage that a frame may have.
    static PresentationSettings EveryStage(Look look)
    {
        PresentationSettings settings;
        settings.look = look;
        settings.sky = true;
        settings.surroundings = "sky";
        settings.fog = Host::FogRange{1.0f, 50.0f};
        settings.occlusion = true;
        settings.lines.emplace().hidden = Host::HiddenLines::Dashed;
        settings.edges.emplace();
        settings.sun.emplace().direction = Vector(1, 2, 1);
        settings.shadows.emplace().soft = true;
        settings.ground.emplace();
        settings.glass.order = Host::GlassOrder::Exact;
        if (look != Look::Crosshatch)
        {
            settings.section.planes = {{Vector(0.0f, 1.0f, 0.1f), Vector(0.0f, 0.6f, 0.0f)}};
            settings.section.outlineWidth = 2.0f;
        }
        settings.sheet.title = "Title";
        settings.sheet.scaleBar = true;
        settings.sheet.north = 10.0f;
        settings.batches.use = Host::BatchUse::On;
        return settings;
    }

    static void ExpectNoError(const std::string& after)
    {
        EXPECT_EQ(glGetError(), GLenum{GL_NO_ERROR}) << after;
    }

    /// Draws once in the fixture's size, and expects what was drawn before.
    void ExpectBack(Presentation& presentation, const Picture& before, const std::string& after)
    {
        ExpectNoError(after);
        ExpectSame(Draw(presentation), before, after);
        ExpectNoError("back " + after);
    }
};

} // namespace

TEST_F(PresentationHost, DrawnBeforeAContextIsCurrentItIsWholeOnceOneIs)
{
    const PresentationSettings wanted = EveryStage(Look::Advanced);
    const auto early = PresentBoxes();
    Apply(*early, wanted);
    Context().Release();
    early->Resize(Width(), Height());
    early->Prepare();
    early->Draw(Width(), Height());
    EXPECT_TRUE(early->NeedsDraw());
    EXPECT_FALSE(early->Pick(Width() / 2, Height() / 2));
    EXPECT_TRUE(early->PickThrough(Width() / 2, Height() / 2).empty());
    std::vector<unsigned char> rgba;
    std::string error;
    EXPECT_FALSE(early->TakePicture(rgba, 8, 8, error));
    EXPECT_NE(error.find("current"), std::string::npos) << error;
    ASSERT_TRUE(Context().MakeCurrent());
    const Picture late = Draw(*early);
    const auto usual = PresentBoxes();
    Apply(*usual, wanted);
    ExpectSame(late, Draw(*usual), "after a frame without a context");
}

TEST_F(PresentationHost, DrawsInAnySizeAndComesBack)
{
    const struct
    {
        Look look;
        Host::Antialiasing antialiasing;
    } cases[] = {{Look::Advanced, Host::Antialiasing::Multisampling},
                 {Look::Crosshatch, Host::Antialiasing::Supersampling},
                 {Look::Phong, Host::Antialiasing::Filter}};
    const int sizes[][2] = {{0, 0},     {0, 40},    {1, 1},  {1, 40},    {40, 1},
                            {16384, 1}, {1, 16384}, {-5, 7}, {100000, 1}};
    for (const auto& [look, antialiasing] : cases)
    {
        const auto presentation = PresentBoxes();
        PresentationSettings settings = EveryStage(look);
        settings.antialiasing = antialiasing;
        Apply(*presentation, settings);
        const Picture before = Draw(*presentation);
        for (const auto& [width, height] : sizes)
        {
            presentation->Draw(width, height);
            presentation->Pick(0, 0);
            ExpectBack(*presentation, before, std::to_string(width) + " x " + std::to_string(height));
        }
    }
}

TEST_F(PresentationHost, TakesAnyRatioOfPixelsAndComesBack)
{
    for (const auto antialiasing : {Host::Antialiasing::Multisampling, Host::Antialiasing::Supersampling})
    {
        const auto presentation = PresentBoxes();
        PresentationSettings settings = EveryStage(Look::Advanced);
        settings.antialiasing = antialiasing;
        Apply(*presentation, settings);
        const Picture before = Draw(*presentation);
        for (const float ratio : kNumbers)
        {
            presentation->Draw(Width(), Height(), ratio);
            if (antialiasing == Host::Antialiasing::Multisampling)
            {
                presentation->GetRenderer().SetDevicePixelRatio(ratio);
                presentation->Draw(Width(), Height());
                presentation->GetRenderer().SetDevicePixelRatio(1.0f);
            }
            ExpectBack(*presentation, before, "a ratio of " + std::to_string(ratio));
        }
    }
}

TEST_F(PresentationHost, SuspendsWithEveryStageAtAnyTime)
{
    for (const Look look : {Look::Advanced, Look::Crosshatch, Look::Phong, Look::Monotone, Look::Basic})
    {
        const auto presentation = PresentBoxes();
        Apply(*presentation, EveryStage(look));
        const Picture before = Draw(*presentation);
        presentation->Suspend();
        presentation->Draw(Width(), Height());
        presentation->Suspend();
        presentation->Pick(3, 3);
        ExpectNoError("suspended");
        presentation->Resume();
        presentation->Resume();
        ExpectBack(*presentation, before, "resumed");
        presentation->Suspend();
        Apply(*presentation, PresentationSettings());
        Apply(*presentation, EveryStage(look));
        presentation->Resume();
        ExpectBack(*presentation, before, "changed while suspended");
    }
}

TEST_F(PresentationHost, CameraWithNumbersThatAreNoneDrawsAndComesBack)
{
    const auto presentation = PresentBoxes();
    Apply(*presentation, EveryStage(Look::Advanced));
    const Picture before = Draw(*presentation);
    for (const float number : kNumbers)
    {
        const std::string after = "with " + std::to_string(number);
        presentation->SetCamera(Vector(number, 1, 1), Vector(0, 0, 0));
        Draw(*presentation);
        presentation->SetCamera(Vector(3, 4, 5), Vector(0, number, 0));
        Draw(*presentation);
        presentation->SetCamera(Vector(3, 4, 5), Vector(0, 0, 0), Vector(number, number, 0));
        Draw(*presentation);
        presentation->SetViewHeight(number);
        Draw(*presentation);
        Transform place;
        place.SetPosition(Vector(number, 0, 1));
        presentation->SetCamera(place, number);
        Draw(*presentation);
        CameraNode& camera = presentation->GetCamera();
        const float angle = camera.GetFOV();
        camera.SetFOV(number);
        Draw(*presentation);
        presentation->Pick(5, 5);
        ExpectNoError(after);
        camera.SetFOV(angle);
        const float reach = camera.GetDistanceToTarget();
        camera.SetDistanceToTarget(number);
        Draw(*presentation);
        camera.SetDistanceToTarget(reach);
        presentation->FrameAll();
        Apply(*presentation, PresentationSettings());
        Apply(*presentation, EveryStage(Look::Advanced));
        ExpectBack(*presentation, before, after);
    }
}

TEST_F(PresentationHost, NodesMayStandAnywhere)
{
    const auto presentation = PresentBoxes();
    PresentationSettings settings = EveryStage(Look::Advanced);
    // A node that moves leaves its batch.
    settings.batches.use = Host::BatchUse::Off;
    Apply(*presentation, settings);
    const Picture before = Draw(*presentation);
    Node* const node = presentation->FindNode("house/left");
    ASSERT_TRUE(node);
    const Transform place = node->GetLocal();
    for (const float number : kNumbers)
    {
        Transform other;
        other.SetPosition(Vector(number, 0, 1));
        node->SetLocal(other);
        Draw(*presentation);
        presentation->FrameAll();
        Draw(*presentation);
        node->SetLocal(place);
        presentation->FrameAll();
        Apply(*presentation, PresentationSettings());
        Apply(*presentation, settings);
        ExpectBack(*presentation, before, "a place of " + std::to_string(number));
    }
}

TEST_F(PresentationHost, MaterialsMayHoldAnyNumber)
{
    const auto presentation = PresentBoxes();
    Apply(*presentation, EveryStage(Look::Advanced));
    const Picture before = Draw(*presentation);
    for (const float number : kNumbers)
    {
        for (Material* material : presentation->GetScene().GetOptimizedMaterials())
        {
            const float factor = material->polygonOffsetFactor;
            const float units = material->polygonOffsetUnits;
            const float size = material->pointSize;
            const unsigned int flags = material->GetFlags();
            // As an offset of many steps has it.
            material->polygonOffsetFactor = number / 128.0f;
            material->polygonOffsetUnits = number;
            material->pointSize = number;
            material->SetFlags(MaterialFlagPolygonOffset);
            presentation->GetScene().MarkDirty();
            Draw(*presentation);
            material->SetFlags(MaterialFlagPoints);
            presentation->GetScene().MarkDirty();
            Draw(*presentation);
            ExpectNoError("a material with " + std::to_string(number));
            material->ClearFlags(MaterialFlagPoints);
            material->polygonOffsetFactor = factor;
            material->polygonOffsetUnits = units;
            material->pointSize = size;
            if ((flags & MaterialFlagPolygonOffset) == 0)
            {
                material->ClearFlags(MaterialFlagPolygonOffset);
            }
            presentation->GetScene().MarkDirty();
        }
        for (LineStyle* style : presentation->GetScene().GetLineStyles())
        {
            const float width = style->width;
            style->width = number;
            presentation->GetScene().MarkDirty();
            Draw(*presentation);
            style->width = width;
            presentation->GetScene().MarkDirty();
        }
        ExpectBack(*presentation, before, "with " + std::to_string(number));
    }
}

TEST_F(PresentationHost, DimensionsOfNoNumbersHaveATextAndAreRefused)
{
    const auto presentation = PresentBoxes();
    for (const float number : kNumbers)
    {
        for (const int count : {0, 1, 2, 3, 4})
        {
            Host::Dimension dimension;
            for (int i = 0; i < count; ++i)
            {
                dimension.points.emplace_back(i == 0 ? number : 1.0f, static_cast<float>(i), 0.0f);
            }
            EXPECT_FALSE(dimension.Text("m").empty());
            presentation->SetDimensions({dimension});
            Draw(*presentation);
            ExpectNoError("a dimension");
        }
    }
}

TEST_F(PresentationHost, WhatAHostDeletesIsNoLongerDrawn)
{
    for (const auto use : {Host::BatchUse::On, Host::BatchUse::Off})
    {
        const auto presentation = PresentBoxes();
        // Without those that the settings bring.
        const std::vector<Mesh*> meshes(presentation->GetScene().EachMesh().begin(), presentation->GetScene().EachMesh().end());
        std::vector<Material*> materials(presentation->GetScene().GetOptimizedMaterials().begin(),
                                         presentation->GetScene().GetOptimizedMaterials().end());
        PresentationSettings settings = EveryStage(Look::Advanced);
        settings.batches.use = use;
        Apply(*presentation, settings);
        Draw(*presentation);
        ASSERT_TRUE(presentation->Highlight("house/right", Color(1, 0, 0)));
        ASSERT_TRUE(presentation->AddLabel("house/right/roof"));
        ASSERT_TRUE(presentation->Hide("house/twin"));
        const auto look = [&](const std::string& after) {
            Draw(*presentation);
            presentation->Pick({0, 0, Width(), Height()});
            presentation->FrameShown();
            presentation->GetStatistics();
            Draw(*presentation);
            ExpectNoError(after);
        };
        const Picture labelled = Draw(*presentation);
        delete presentation->FindNode("house/right/roof");
        look("a node");
        EXPECT_FALSE(presentation->FindNode("house/right/roof"));
        EXPECT_TRUE(labelled != Draw(*presentation)) << "it is still there";
        delete presentation->FindNode("house/twin");
        EXPECT_FALSE(presentation->Show("house/twin"));
        delete presentation->FindNode("house/right");
        EXPECT_FALSE(presentation->ClearHighlight("house/right"));
        look("a node that was highlighted");
        for (Mesh* mesh : meshes)
        {
            delete mesh;
            look("a mesh");
        }
        for (Material* material : materials)
        {
            delete material;
            look("a material");
        }
        presentation->ShowAll();
        Apply(*presentation, PresentationSettings());
        look("all settings");
    }
}

/// What hosts take away of what a presentation works with, with every stage on.
class PresentationDeletions : public PresentationHost
{
protected:
    std::unique_ptr<Presentation> Present(Host::BatchUse use)
    {
        auto presentation = PresentBoxes();
        PresentationSettings settings = EveryStage(Look::Advanced);
        settings.batches.use = use;
        Apply(*presentation, settings);
        EXPECT_TRUE(presentation->Highlight("house", Color(1, 0, 0)));
        EXPECT_TRUE(presentation->AddLabel("house/right/roof"));
        Draw(*presentation);
        return presentation;
    }

    /// All that goes by the scene, the camera, the nodes and the light.
    void UseAll(Presentation& presentation, const std::string& after)
    {
        Draw(presentation);
        presentation.Pick({0, 0, Width(), Height()});
        presentation.PickThrough(Width() / 2, Height() / 2);
        presentation.ShowAll();
        presentation.ClearHighlights();
        presentation.ClearLabels();
        presentation.FrameAll();
        presentation.FrameShown();
        presentation.SetViewHeight(presentation.GetViewHeight());
        presentation.GetStatistics();
        presentation.NeedsDraw();
        presentation.Hurry(true);
        presentation.Hurry(false);
        presentation.FindBlank({});
        PresentationSettings other = presentation.GetSettings();
        other.look = other.look == Look::Basic ? Look::Advanced : Look::Basic;
        other.sun->direction = Vector(-1, 2, 1);
        other.lines->width += 1.0f;
        other.section.planes.front().position.y = 0.5f;
        Apply(presentation, other);
        Draw(presentation);
        presentation.Suspend();
        presentation.Resume();
        Draw(presentation);
        presentation.Refresh();
        Draw(presentation);
        ExpectNoError(after);
    }
};

TEST_F(PresentationDeletions, ACameraAndARootComeBackAndSoDoesTheView)
{
    for (const auto use : {Host::BatchUse::On, Host::BatchUse::Off})
    {
        const auto presentation = Present(use);
        const Picture before = Draw(*presentation);
        delete &presentation->GetCamera();
        ExpectSame(Draw(*presentation), before, "after the camera was deleted");
        EXPECT_EQ(presentation->GetScene().GetLights().front()->GetParent(), &presentation->GetCamera());
        delete &presentation->GetCamera();
        EXPECT_TRUE(presentation->SetCamera(Vector(3, 2, 5), Vector()));
        delete &presentation->GetCamera();
        EXPECT_GT(presentation->GetViewHeight(), 0.0);
        delete &presentation->GetCamera();
        presentation->Resize(Width(), 2 * Height());
        UseAll(*presentation, "a camera");
        Node* const root = presentation->GetScene().GetRoot();
        const NodeChildren children = root->EachChild();
        // They belong to whoever deletes a node by itself.
        const std::vector<Node*> left(children.begin(), children.end());
        delete root;
        EXPECT_TRUE(presentation->ListNodes().empty());
        UseAll(*presentation, "a root");
        EXPECT_EQ(presentation->GetCamera().GetParent(), presentation->GetScene().GetRoot());
        for (Node* const node : left)
        {
            presentation->GetScene().DeleteSubtree(node);
        }
        UseAll(*presentation, "what stood below it");
    }
}

TEST_F(PresentationDeletions, ASceneMayBeEmptied)
{
    for (const auto use : {Host::BatchUse::On, Host::BatchUse::Off})
    {
        const auto presentation = Present(use);
        presentation->GetScene().Clear();
        UseAll(*presentation, "a scene");
        EXPECT_TRUE(presentation->ListNodes().empty());
        EXPECT_FALSE(presentation->GetModelBox());
    }
}

TEST_F(PresentationDeletions, AnotherSceneIsPresentedInPlaceOfTheFirst)
{
    for (const auto use : {Host::BatchUse::On, Host::BatchUse::Off})
    {
        const auto presentation = Present(use);
        CoreContext& context = *presentation->GetContext().GetContext();
        context.SetScene(nullptr);
        EXPECT_EQ(presentation->GetScene().EachMesh().size(), 0u);
        UseAll(*presentation, "no scene");
        context.SetScene(MakeBoxes().scene);
        Apply(*presentation, EveryStage(Look::Advanced));
        const auto fresh = std::make_unique<Presentation>(MakeBoxes().scene);
        Apply(*fresh, EveryStage(Look::Advanced));
        ExpectSame(Draw(*presentation), Draw(*fresh), "another scene");
        UseAll(*presentation, "another scene");
    }
}

TEST_F(PresentationDeletions, WhatSettingsPutIntoASceneMayBeDeleted)
{
    for (const auto use : {Host::BatchUse::On, Host::BatchUse::Off})
    {
        const auto presentation = Present(use);
        Scene& scene = presentation->GetScene();
        while (!scene.GetLights().empty())
        {
            delete scene.GetLights().front();
        }
        UseAll(*presentation, "lights");
        EXPECT_FALSE(scene.GetLights().empty());
        while (!scene.GetLines().empty())
        {
            delete *scene.GetLines().begin();
        }
        UseAll(*presentation, "lines");
        while (!scene.GetLineStyles().empty())
        {
            delete scene.GetLineStyles().front();
        }
        UseAll(*presentation, "styles");
        while (!scene.GetOptimizedMaterials().empty())
        {
            delete scene.GetOptimizedMaterials().front();
        }
        UseAll(*presentation, "materials");
        while (!scene.EachMesh().empty())
        {
            delete *scene.EachMesh().begin();
        }
        UseAll(*presentation, "meshes");
        presentation->GetForeground().Clear();
        presentation->GetBackground().Clear();
        UseAll(*presentation, "layers");
    }
}

TEST_F(PresentationDeletions, NodesWithoutANameMayGoFromBelowAHighlight)
{
    for (const auto use : {Host::BatchUse::On, Host::BatchUse::Off})
    {
        NamedScene boxes = MakeBoxes();
        Node* const top = boxes.nodes.front().node;
        boxes.nodes.resize(1);
        Presentation presentation(std::move(boxes.scene), std::move(boxes.nodes));
        PresentationSettings settings = EveryStage(Look::Advanced);
        settings.batches.use = use;
        Apply(presentation, settings);
        ASSERT_TRUE(presentation.Highlight(presentation.PathOf(*top), Color(1, 0, 0)));
        Draw(presentation);
        while (!top->EachChild().empty())
        {
            presentation.GetScene().DeleteSubtree(*top->EachChild().begin());
            UseAll(presentation, "a node");
            ASSERT_TRUE(presentation.Highlight(presentation.PathOf(*top), Color(1, 0, 0)));
        }
    }
}

/// Does something of a host's at one moment of a frame.
class EditingStage : public Host::PresentationStage
{
public:
    enum Moment
    {
        AtPrepare,
        AtNeeds,
        AtDraw,
    };

    EditingStage(Moment moment, std::function<void()> edit) : m_moment(moment), m_edit(std::move(edit)) {}

    Host::FrameNeeds NeedsOf(const Host::PresentationFrame&) const override
    {
        Do(AtNeeds);
        Host::FrameNeeds needs;
        needs.depth = needs.objectIdentifiers = needs.optional = true;
        return needs;
    }
    void Prepare(Host::PresentationFrame&) override { Do(AtPrepare); }
    void Draw(Host::PresentationFrame&) override { Do(AtDraw); }
    void ReleaseGL() override {}

private:
    void Do(Moment moment) const
    {
        if (moment == m_moment && m_edit)
        {
            std::exchange(m_edit, nullptr)();
        }
    }

    Moment m_moment;
    mutable std::function<void()> m_edit;
};

TEST_F(PresentationDeletions, AStageOfTheHostsMayDeleteWhateverTheFrameDraws)
{
    using Edit = std::function<void(Presentation&)>;
    const std::vector<std::pair<const char*, Edit>> edits = {
        {"a mesh", [](Presentation& shown) { delete *shown.GetScene().EachMesh().begin(); }},
        {"a node", [](Presentation& shown) { shown.GetScene().DeleteSubtree(shown.FindNode("house/right")); }},
        {"a material", [](Presentation& shown) { delete shown.GetScene().GetOptimizedMaterials().front(); }},
        {"a line", [](Presentation& shown) { delete *shown.GetScene().GetLines().begin(); }},
        {"the camera", [](Presentation& shown) { delete &shown.GetCamera(); }},
        {"all", [](Presentation& shown) { shown.GetScene().Clear(); }},
        {"the settings", [](Presentation& shown) { Apply(shown, PresentationSettings()); }},
        {"lines", [](Presentation& shown) {
             for (const Scene& scene = shown.GetScene(); !scene.GetLines().empty();)
             {
                 delete *scene.GetLines().begin();
             }
         }}};
    struct At
    {
        EditingStage::Moment moment;
        Host::StageSlot slot;
        Host::BatchUse batches;
    };
    const At moments[] = {{EditingStage::AtPrepare, Host::StageSlot::BeforeSurfaces, Host::BatchUse::On},
                          {EditingStage::AtNeeds, Host::StageSlot::BeforeSurfaces, Host::BatchUse::Off},
                          {EditingStage::AtDraw, Host::StageSlot::BeforeSurfaces, Host::BatchUse::On},
                          {EditingStage::AtDraw, Host::StageSlot::AfterSurfaces, Host::BatchUse::Off}};
    for (const auto& [what, edit] : edits)
    {
        for (const At& at : moments)
        {
            SCOPED_TRACE(std::string(what) + " at " + std::to_string(at.moment));
            const auto presentation = Present(at.batches);
            const Edit& called = edit;
            presentation->GetRenderer().AddStage(
                std::make_unique<EditingStage>(at.moment, [&] { called(*presentation); }), at.slot);
            Draw(*presentation);
            Draw(*presentation);
            ExpectNoError(what);
        }
    }
}

/// A node of the host's that does something when it is brought up to date.
class EditingNode : public MeshNode
{
public:
    using MeshNode::MeshNode;

    void UpdateGraph() override
    {
        MeshNode::UpdateGraph();
        if (edit)
        {
            std::exchange(edit, nullptr)();
        }
    }

    std::function<void()> edit;
};

TEST_F(PresentationDeletions, ANodeOfTheHostsMayDeleteWhateverIsUpdated)
{
    using Edit = std::function<void(Presentation&)>;
    const std::vector<std::pair<const char*, Edit>> edits = {
        {"the camera", [](Presentation& shown) { delete shown.GetScene().GetCameraNode(); }},
        {"a node", [](Presentation& shown) { delete shown.FindNode("house/right/roof"); }},
        {"all", [](Presentation& shown) { shown.GetScene().Clear(); }},
        {"the scene", [](Presentation& shown) { shown.GetContext().GetContext()->SetScene(nullptr); }}};
    const std::vector<std::pair<const char*, Edit>> uses = {
        {"drawn", [this](Presentation& shown) { Draw(shown); }},
        {"picked", [this](Presentation& shown) { shown.Pick({0, 0, Width(), Height()}); }},
        {"framed", [](Presentation& shown) { shown.FrameNode("house/right/roof"); }},
        {"refreshed", [](Presentation& shown) { shown.Refresh(); }}};
    for (const auto& [what, edit] : edits)
    {
        for (const auto& [how, use] : uses)
        {
            SCOPED_TRACE(std::string(what) + ", " + how);
            const auto presentation = Present(Host::BatchUse::On);
            auto* const node = new EditingNode(&presentation->GetScene());
            presentation->GetScene().GetRoot()->AddChild(node, true);
            const Edit& called = edit;
            node->edit = [&] { called(*presentation); };
            use(*presentation);
            UseAll(*presentation, what);
        }
    }
}

TEST_F(PresentationDeletions, NodesThatAreNoneHaveNoNames)
{
    Scene other;
    NamedScene boxes = MakeBoxes();
    const std::size_t known = boxes.nodes.size();
    boxes.nodes.push_back({"none", nullptr});
    boxes.nodes.push_back({"other", other.GetRoot()});
    Presentation presentation(std::move(boxes.scene), std::move(boxes.nodes));
    EXPECT_EQ(presentation.GetNodes().size(), known);
    Host::ImportResult more;
    more.status = Host::ImportStatus::Done;
    more.scene = std::make_unique<Scene>();
    more.nodes = {{"root", more.scene->GetRoot()}, {"none", nullptr}, {"other", other.GetRoot()}};
    std::string error;
    EXPECT_FALSE(presentation.Add(std::move(more), error));
    EXPECT_EQ(error, "the model holds no node");
    presentation.Resize(-5, -5);
    ExpectNoError("a size below 0");
}

TEST_F(PresentationDeletions, ANodeOfAnotherSceneGetsNoName)
{
    const auto presentation = PresentBoxes();
    {
        Scene other;
        presentation->AddName(*other.GetRoot(), "other");
    }
    EXPECT_FALSE(presentation->FindNode("other"));
}

} // namespace OV::Test
