#include "tests/orvane_host/present/PresentationModels.h"

#include "orvane_host/geometry/Primitives.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <optional>

namespace OV::Test
{

namespace
{

using Host::Antialiasing;
using Host::PresentationSettings;

constexpr Pixel Far{255, 0, 0, 255};
constexpr Pixel Fill{0, 0, 255, 255};

/// Two unlit walls that meet at x = 0, where the near one is let into the far one, which is red.
class PresentationSection : public PresentationFixture
{
protected:
    PresentationSection() : PresentationFixture(160, 120, 0)
    {
        auto scene = std::make_unique<Scene>();
        AddWall(*scene, Color(0, 1, 0), -4.0f, 0.01f);
        AddWall(*scene, Color(1, 0, 0), 0.0f, 4.0f);
        presentation = std::make_unique<Host::Presentation>(std::move(scene));
        wanted.look = Host::Look::Basic;
        wanted.section.planes = {{Vector(0, 1, 0), Vector(0, 0, 0)}};
        wanted.section.fill = Color(0, 0, 1);
        wanted.section.outlineWidth = 0.0f;
        // Of the far wall nothing but what meets the near one looks to the eye.
        wanted.view.orthographic = true;
        wanted.view.eye = Vector(-30.0f, 20.0f, 0.2f);
        wanted.view.target = Vector(0.0f, 0.3f, 0.2f);
    }

    static void AddWall(Scene& scene, const Color& color, float left, float right)
    {
        auto* const material = new Material("wall");
        material->SetDiffuse(color);
        material->SetAmbient(color);
        material->flags |= MaterialFlagUnlit;
        scene.AddMaterial(material);
        auto* const mesh = new Mesh(Host::Primitives::Box(Vector(left, -3, -1.5f), Vector(right, 3, 1.5f)), &scene);
        material->AddMesh(mesh);
        auto* const node = new MeshNode(&scene);
        scene.GetRoot()->AddChild(node, false);
        mesh->AddNode(node);
    }

    std::unique_ptr<Host::Presentation> presentation;
    PresentationSettings wanted;
};

TEST_F(PresentationSection, TheSideOfAWallThatAnotherMeetsIsBehindTheFill)
{
    for (const Host::Look look : {Host::Look::Basic, Host::Look::Advanced, Host::Look::Phong})
    {
        for (const Antialiasing antialiasing : {Antialiasing::None, Antialiasing::Filter, Antialiasing::Supersampling})
        {
            for (const float outline : {0.0f, 0.8f})
            {
                SCOPED_TRACE(testing::Message() << static_cast<int>(look) << ' ' << static_cast<int>(antialiasing)
                                                << ' ' << outline);
                wanted.look = look;
                wanted.antialiasing = antialiasing;
                wanted.section.outlineWidth = outline;
                Apply(*presentation, wanted);
                const Picture picture = Draw(*presentation);
                EXPECT_EQ(picture.Count(Far), 0);
                EXPECT_GT(picture.Count(Fill), 100);
            }
        }
    }
}

TEST_F(PresentationSection, EveryLookCutsWhatIsUnlitAndTheFillOfEachPlaneByTheOthers)
{
    wanted.antialiasing = Antialiasing::None;
    // From above: what is left is a quarter of the plan, filled, and nothing of the fill beside it.
    wanted.section.planes.push_back({Vector(1, 0, 0), Vector(0, 0, 0)});
    wanted.section.planes.push_back({Vector(0, 0, -1), Vector(0, 0, 0)});
    wanted.view.eye = Vector(-3.0f, 30.0f, 0.0f);
    wanted.view.target = Vector(-3.0f, 0.0f, 0.0f);
    wanted.view.up = Vector(0, 0, -1);
    std::optional<int> quarter;
    for (const Host::Look look : {Host::Look::Phong, Host::Look::Advanced, Host::Look::Basic, Host::Look::Monotone,
                                  Host::Look::VertexColor, Host::Look::Basic})
    {
        SCOPED_TRACE(static_cast<int>(look));
        wanted.look = look;
        wanted.view.named = Host::NamedView::Top;
        wanted.section.fill = Color(0, 0, 1);
        Apply(*presentation, wanted);
        const Picture filled = Draw(*presentation);
        const int area = filled.Count(Fill);
        EXPECT_GT(area, 100);
        quarter = quarter.value_or(area);
        EXPECT_NEAR(area, *quarter, *quarter / 50);
        EXPECT_EQ(filled.Count(Pixel{255, 255, 255, 255}), Width() * Height() - area);
    }
    wanted.section.fill.reset();
    Apply(*presentation, wanted);
    EXPECT_EQ(Draw(*presentation).Count(Far), 0);
    wanted.section.planes.clear();
    Apply(*presentation, wanted);
    EXPECT_GT(Draw(*presentation).Count(Far), 100) << "in its own colour again";
}

TEST_F(PresentationSection, APlaneBesideTheModelChangesNoColour)
{
    for (Material* material : presentation->GetScene().GetOptimizedMaterials())
    {
        material->SetDiffuse(Color(0.5f, 0.25f, 0.1f));
        material->SetAmbient(Color(0.1f, 0.0f, 0.2f));
    }
    for (const Host::Look look : {Host::Look::Basic, Host::Look::Advanced})
    {
        SCOPED_TRACE(static_cast<int>(look));
        wanted.look = look;
        wanted.section.planes.clear();
        Apply(*presentation, wanted);
        const Picture plain = Draw(*presentation);
        wanted.section.planes = {{Vector(0, 1, 0), Vector(0, 50, 0)}};
        Apply(*presentation, wanted);
        ExpectSame(Draw(*presentation), plain, "cut beside");
    }
}

TEST_F(PresentationSection, ItsFillIsAsDeepAsTheLookAndTheSamplesWant)
{
    wanted.section.outlineWidth = 0.8f;
    const auto draw = [&](Host::Look look, Antialiasing antialiasing)
    {
        wanted.look = look;
        wanted.antialiasing = antialiasing;
        Apply(*presentation, wanted);
        return Draw(*presentation);
    };
    const Picture basic = draw(Host::Look::Basic, Antialiasing::None);
    const Picture plain = draw(Host::Look::Phong, Antialiasing::None);
    EXPECT_LT(plain.Count(Fill), basic.Count(Fill)) << "below the outline";
    const Picture sampled = draw(Host::Look::Phong, Antialiasing::Multisampling);
    EXPECT_LT(sampled.Count(Fill), plain.Count(Fill)) << "below what samples may be shaded by";
    ExpectSame(draw(Host::Look::Phong, Antialiasing::None), plain, "without samples again");
    ExpectSame(draw(Host::Look::Basic, Antialiasing::None), basic, "without an outline again");
}

} // namespace

} // namespace OV::Test
