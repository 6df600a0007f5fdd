#include "tests/orvane_host/import/TinyModels.h"
#include "tests/orvane_host/present/PresentationModels.h"

#include "orvane_host/import/ModelLoading.h"
#include "orvane/effects/SkySettings.h"
#include "orvane/engine/AppContext.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Material.h"
#include "tests/support/TemporaryFolder.h"

#include <glm/vec3.hpp>

#include <atomic>
#include <functional>
#include <utility>

namespace OV::Test
{

namespace
{

using Host::PresentationSettings;

class PresentationApply : public PresentationFixture
{
protected:
    PresentationApply() : presentation(PresentBoxes()) {}

    /// What Apply tells of settings that it refuses.
    std::string Refusal(const PresentationSettings& wanted)
    {
        const PresentationSettings before = presentation->GetSettings();
        const Picture picture = Draw(*presentation);
        std::string error;
        EXPECT_FALSE(presentation->Apply(wanted, error));
        EXPECT_TRUE(presentation->GetSettings() == before);
        EXPECT_FALSE(presentation->NeedsDraw());
        ExpectSame(Draw(*presentation), picture, error);
        return error;
    }

    static PresentationSettings Everything()
    {
        PresentationSettings all;
        all.look = Host::Look::Phong;
        all.cullBacks = false;
        all.section.planes = {{Vector(0, 1, 0), Vector(0, 0.3f, 0)}, {Vector(1, 0, 0), Vector(1.2f, 0, 0)}};
        all.section.fill = Color(0.9f, 0.1f, 0.5f);
        all.background = Color(0.5f, 0.6f, 0.7f);
        all.sky = true;
        all.fog = {3.0f, 20.0f};
        all.lines = Host::LineSettings();
        all.lines->width = 2.0f;
        all.edges = Host::EdgeLook();
        all.occlusion = true;
        all.antialiasing = Host::Antialiasing::Supersampling;
        all.editPath = "house/right";
        all.sheet.title = "House";
        all.sheet.scaleBar = true;
        all.view.named = Host::NamedView::Left;
        all.view.orthographic = true;
        return all;
    }

    std::unique_ptr<Host::Presentation> presentation;
};

TEST_F(PresentationApply, AFieldOutOfRangeIsNamedAndTheOldSettingsStay)
{
    PresentationSettings wanted = presentation->GetSettings();
    wanted.view.fov = 171.0f;
    const std::string error = Refusal(wanted);
    EXPECT_NE(error.find("view.fov"), std::string::npos) << error;
    EXPECT_NE(error.find("170"), std::string::npos) << error;
}

TEST_F(PresentationApply, AnEditPathThatThereIsNotIsToldWithSomeThatThereAre)
{
    PresentationSettings wanted = presentation->GetSettings();
    wanted.editPath = "house/attic";
    wanted.look = Host::Look::Monotone;
    const std::string error = Refusal(wanted);
    EXPECT_NE(error.find("'house/attic'"), std::string::npos) << error;
    EXPECT_NE(error.find("left"), std::string::npos) << error;
}

TEST_F(PresentationApply, AWatermarkThatCannotBeReadIsRefusedByName)
{
    PresentationSettings wanted = presentation->GetSettings();
    wanted.sheet.watermark = "no-such-picture.png";
    EXPECT_NE(Refusal(wanted).find("no-such-picture.png"), std::string::npos);
}

TEST_F(PresentationApply, AnEyeWhereItLooksAtIsRefused)
{
    PresentationSettings wanted = presentation->GetSettings();
    wanted.view.eye = Vector(1.0f, 2.0f, 3.0f);
    wanted.view.target = wanted.view.eye;
    EXPECT_NE(Refusal(wanted).find("view.eye"), std::string::npos);
    // The middle of the model, which is what is looked at without a target.
    const Host::Presentation::Box box = presentation->GetModelBox().value();
    wanted.view.eye = Vector((box.low.x + box.high.x) / 2.0f, (box.low.y + box.high.y) / 2.0f,
                             (box.low.z + box.high.z) / 2.0f);
    wanted.view.target.reset();
    EXPECT_NE(Refusal(wanted).find("view.eye"), std::string::npos);
}

TEST_F(PresentationApply, WithoutADirectionUpwardsTheAxisThatIsUpIsSoInThePicture)
{
    const Vector target(1.0f, 1.0f, 0.5f);
    const auto upOfCamera = [&] {
        presentation->GetContext().Update(0.0f);
        const auto& m = presentation->GetCamera().GetGlobal().GetTransf3d().m;
        return Vector(static_cast<float>(m[0][1]), static_cast<float>(m[1][1]), static_cast<float>(m[2][1]));
    };
    for (const Host::UpAxis axis : {Host::UpAxis::Z, Host::UpAxis::Y})
    {
        const bool isZ = axis == Host::UpAxis::Z;
        PresentationSettings wanted;
        wanted.view.upAxis = axis;
        wanted.view.eye = isZ ? Vector(4.0f, -6.0f, 3.0f) : Vector(4.0f, 3.0f, 6.0f);
        wanted.view.target = target;
        Apply(*presentation, wanted);
        const Vector up = upOfCamera();
        EXPECT_GT(isZ ? up.z : up.y, 0.8f);
        const Picture picture = Draw(*presentation);
        wanted.view.up = isZ ? Vector(0.0f, 0.0f, 1.0f) : Vector(0.0f, 1.0f, 0.0f);
        Apply(*presentation, wanted);
        ExpectSame(Draw(*presentation), picture, "with the axis told");

        // Another one is followed, and does not stay behind.
        EXPECT_TRUE(presentation->SetCamera(*wanted.view.eye, target, Vector(1.0f, 0.0f, 0.0f)));
        EXPECT_GT(upOfCamera().x, 0.5f);
        EXPECT_TRUE(presentation->SetCamera(*wanted.view.eye, target));
        EXPECT_FALSE(presentation->GetSettings().view.up);
        ExpectSame(Draw(*presentation), picture, "by SetCamera");
    }
}

TEST_F(PresentationApply, GoingBackGivesTheEarlierPictureAndLeavesNoPartOfTheScene)
{
    const PresentationSettings start = presentation->GetSettings();
    const Picture first = Draw(*presentation);
    const Scene& scene = presentation->GetScene();
    const std::vector<Material*> materials = scene.GetOptimizedMaterials();
    const std::set<Mesh*> meshes = scene.GetMeshes();
    std::vector<unsigned int> flags;
    for (const Material* material : materials)
    {
        flags.push_back(material->GetFlags());
    }
    Apply(*presentation, Everything());
    EXPECT_NE(Draw(*presentation), first);
    EXPECT_NE(scene.GetMeshes(), meshes);
    Apply(*presentation, start);
    ExpectSame(Draw(*presentation), first, "back at the start");
    EXPECT_EQ(scene.GetOptimizedMaterials(), materials);
    EXPECT_EQ(scene.GetMeshes(), meshes);
    EXPECT_TRUE(scene.GetLines().empty());
    EXPECT_TRUE(scene.GetLineStyles().empty());
    for (std::size_t i = 0; i < materials.size(); ++i)
    {
        EXPECT_EQ(materials[i]->GetFlags(), flags[i]);
        EXPECT_EQ(materials[i]->polygonOffsetFactor, 0.0f);
    }
}

TEST_F(PresentationApply, OnlyWhatChangesNeedsADraw)
{
    EXPECT_TRUE(presentation->NeedsDraw());
    Draw(*presentation);
    EXPECT_FALSE(presentation->NeedsDraw());
    Apply(*presentation, presentation->GetSettings());
    EXPECT_FALSE(presentation->NeedsDraw()) << "the same settings";
    const std::pair<const char*, std::function<void(PresentationSettings&)>> changes[] = {
        {"look", [](PresentationSettings& s) { s.look = Host::Look::Basic; }},
        {"title", [](PresentationSettings& s) { s.sheet.title = "A"; }},
        {"edges", [](PresentationSettings& s) { s.edges = Host::EdgeLook(); }},
        {"section", [](PresentationSettings& s) { s.section.planes = {{Vector(0, 1, 0), Vector()}}; }},
        {"outline", [](PresentationSettings& s) { s.section.outlineColor = Color(1, 0, 0); }},
        {"view", [](PresentationSettings& s) { s.view.named = Host::NamedView::Top; }},
        {"fog", [](PresentationSettings& s) { s.fog = Host::FogRange{1.0f, 9.0f}; }},
        {"edit", [](PresentationSettings& s) { s.editPath = "left"; }},
        {"lines", [](PresentationSettings& s) { s.lines = Host::LineSettings(); }},
        {"colour of lines", [](PresentationSettings& s) { s.lines->color = Color(1, 0, 0); }},
    };
    for (const auto& [label, change] : changes)
    {
        PresentationSettings wanted = presentation->GetSettings();
        change(wanted);
        Apply(*presentation, wanted);
        EXPECT_TRUE(presentation->NeedsDraw()) << label;
        Draw(*presentation);
        EXPECT_FALSE(presentation->NeedsDraw()) << label;
    }
    presentation->Hide("left");
    EXPECT_TRUE(presentation->NeedsDraw());
    Draw(*presentation);
    presentation->Highlight("left", Color(1, 0, 0));
    EXPECT_TRUE(presentation->NeedsDraw());
    Draw(*presentation);
    presentation->Pick(1, 1);
    EXPECT_FALSE(presentation->NeedsDraw());
    presentation->GetScene().MarkDirty();
    EXPECT_TRUE(presentation->NeedsDraw());
}

TEST_F(PresentationApply, TwoPresentationsDrawInTurnsWhatEachDrawsAlone)
{
    const std::unique_ptr<Host::Presentation> other = PresentBoxes();
    PresentationSettings plain;
    plain.view.named = Host::NamedView::Top;
    Apply(*presentation, Everything());
    Apply(*other, plain);
    const Picture mine = Draw(*presentation);
    const Picture theirs = Draw(*other);
    for (int turn = 0; turn < 3; ++turn)
    {
        presentation->GetScene().MarkDirty();
        other->GetScene().MarkDirty();
        ExpectSame(Draw(*presentation), mine, "mine");
        ExpectSame(Draw(*other), theirs, "theirs");
    }
    const auto fresh = PresentBoxes();
    Apply(*fresh, plain);
    ExpectSame(theirs, Draw(*fresh), "alone");
}

TEST_F(PresentationApply, SettingsOfTheProcessAreThoseOfTheHostAfterAFrame)
{
    EffectES20::AddClipPlane(glm::vec3(1, 0, 0), glm::vec3(5, 6, 7));
    EffectES20::SetClipPlaneOutlineSize(0.7f);
    SkySettings::inst().SetFogStart(123.0f);
    Apply(*presentation, Everything());
    const Picture picture = Draw(*presentation);
    presentation->Pick(3, 3);
    ASSERT_EQ(EffectES20::GetClipPlaneNormals().size(), 1u);
    EXPECT_EQ(EffectES20::GetClipPlanePositions().front(), glm::vec3(5, 6, 7));
    EXPECT_EQ(EffectES20::GetClipPlaneOutlineSize(), 0.7f);
    EXPECT_EQ(SkySettings::inst().GetFogStart(), 123.0f);
    EffectES20::ClearClipPlanes();
    SkySettings::inst() = SkySettings();
    ExpectSame(Draw(*presentation), picture, "whatever the host has set");
}

TEST_F(PresentationApply, SuspendedAndResumedThePictureIsTheSame)
{
    for (const bool everything : {false, true})
    {
        Apply(*presentation, everything ? Everything() : PresentationSettings());
        presentation->Highlight("left", Color(1, 0.5f, 0, 0.5f));
        const Picture before = Draw(*presentation);
        presentation->Suspend();
        presentation->Resume();
        EXPECT_TRUE(presentation->NeedsDraw());
        ExpectSame(Draw(*presentation), before, everything ? "everything" : "plain");
    }
}

TEST_F(PresentationApply, SettingsFromJsonGiveThePictureThatTheyWereWrittenFor)
{
    Apply(*presentation, Everything());
    std::string error;
    const std::optional<PresentationSettings> read =
        PresentationSettings::FromJSON(presentation->GetSettings().ToJSON(), error);
    ASSERT_TRUE(read) << error;
    const auto other = PresentBoxes();
    Apply(*other, *read);
    ExpectSame(Draw(*other), Draw(*presentation), "read from JSON");
}

TEST_F(PresentationApply, AFileIsOpenedAndATroubledOneTold)
{
    const TemporaryFolder folder;
    const std::string path = folder.Path() + "/cube.obj";
    WriteFile(path, CubeObj());
    std::string error;
    const auto cube = Host::Presentation::Open(path, error);
    ASSERT_TRUE(cube) << error;
    EXPECT_EQ(cube->GetStatistics().triangles, 12u);
    EXPECT_NE(Draw(*cube).Count(Pixel{255, 255, 255, 255}), Width() * Height());
    EXPECT_FALSE(Host::Presentation::Open(folder.Path() + "/none.obj", error));
    EXPECT_NE(error.find("none.obj"), std::string::npos) << error;
}

TEST_F(PresentationApply, AModelReadOnAnotherThreadIsTheOneReadHere)
{
    const TemporaryFolder folder;
    const std::string path = folder.Path() + "/grid.obj";
    WriteFile(path, GridObj(60));
    std::atomic<float> told{0.0f};
    Host::ImportOptions options;
    options.progress = [&](float percent)
    {
        EXPECT_GE(percent, told);
        told = percent;
        return true;
    };
    Host::ModelLoading loading(path, options);
    loading.Wait();
    EXPECT_TRUE(loading.IsReady());
    EXPECT_GT(loading.GetPercent(), 0.0f);
    EXPECT_LT(loading.GetPercent(), 100.0f);
    Host::Presentation read(loading.Take());
    EXPECT_EQ(loading.GetPercent(), 100.0f);
    EXPECT_EQ(told, 100.0f);
    EXPECT_EQ(loading.Take().status, Host::ImportStatus::Failed) << "taken twice";
    std::string error;
    const auto opened = Host::Presentation::Open(path, error);
    ExpectSame(Draw(read), Draw(*opened), "read on another thread");
}

TEST_F(PresentationApply, ACancelledReadingSaysSoAndNeverGivesAScene)
{
    const TemporaryFolder folder;
    const std::string path = folder.Path() + "/grid.obj";
    WriteFile(path, GridObj(200));
    Host::ModelLoading loading(path);
    loading.Cancel();
    const Host::ImportResult result = loading.Take();
    EXPECT_EQ(result.status, Host::ImportStatus::Cancelled);
    EXPECT_FALSE(result);
    // One that nobody takes ends by itself.
    const Host::ModelLoading dropped(path);
}

TEST_F(PresentationApply, AnEmptyModelIsABackground)
{
    Host::Presentation empty{std::unique_ptr<Scene>()};
    PresentationSettings wanted;
    wanted.background = Color(1, 0, 0);
    wanted.lines = Host::LineSettings();
    wanted.section.planes = {{Vector(0, 1, 0), Vector()}};
    Apply(empty, wanted);
    EXPECT_EQ(Draw(empty).Count(Pixel{255, 0, 0, 255}), Width() * Height());
    EXPECT_FALSE(empty.GetModelBox());
    EXPECT_FALSE(empty.GetShownBox());
    EXPECT_FALSE(empty.FrameAll());
    EXPECT_FALSE(empty.Pick(3, 3));
}

} // namespace

} // namespace OV::Test
