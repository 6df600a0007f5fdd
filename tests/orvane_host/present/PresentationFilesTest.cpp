#include "tests/orvane_host/import/TinyModels.h"
#include "tests/orvane_host/present/PresentationModels.h"
#include "tests/support/TemporaryFolder.h"

#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane_host/import/ModelImporter.h"

#include <gmock/gmock.h>

#include <cmath>

namespace OV::Test
{

namespace
{

using ::testing::ElementsAre;
using Host::PresentationSettings;

/// A model with a triangle of edge 1 at a place, in units of so many metres.
std::string Triangle(float x, const std::string& name, const std::string& metres, const std::string& more = "")
{
    const std::string first = std::to_string(x);
    const std::string second = std::to_string(x + 1.0f);
    return R"(<?xml version="1.0"?><COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">
<asset><unit name="u" meter=")" + metres + R"("/><up_axis>Y_UP</up_axis></asset>
<library_effects><effect id="e"><profile_COMMON><technique sid="t"><lambert><diffuse><color>0.2 0.6 0.3 1</color></diffuse></lambert></technique></profile_COMMON></effect></library_effects>
<library_materials><material id="m" name="paint"><instance_effect url="#e"/></material></library_materials>)" + more + R"(
<library_geometries><geometry id="g"><mesh><source id="p"><float_array id="a" count="9">)" + first + " 0 0 " + second
        + " 0 0 " + first + R"( 1 0</float_array><technique_common><accessor source="#a" count="3" stride="3">
<param name="X" type="float"/><param name="Y" type="float"/><param name="Z" type="float"/></accessor></technique_common></source>
<vertices id="v"><input semantic="POSITION" source="#p"/></vertices><triangles count="1" material="s">
<input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2</p></triangles></mesh></geometry></library_geometries>
<library_visual_scenes><visual_scene id=")" + name + R"("><node id="leaf"><instance_geometry url="#g">
<bind_material><technique_common><instance_material symbol="s" target="#m"/></technique_common></bind_material>
</instance_geometry></node>)" + (more.empty() ? "" : "<node id=\"lamp\"><instance_light url=\"#sun\"/></node>")
        + R"(</visual_scene></library_visual_scenes><scene><instance_visual_scene url="#)" + name + R"("/></scene></COLLADA>)";
}

const std::string kSun = "<library_lights><light id=\"sun\"><technique_common><directional><color>1 1 1</color>"
                         "</directional></technique_common></light></library_lights>";

class PresentationFiles : public PresentationFixture
{
protected:
    Host::ImportResult Import(const std::string& file, const std::string& text)
    {
        WriteFile(folder.Path(file), text);
        Host::ImportResult model = Host::ModelImporter::Import(folder.Path(file));
        EXPECT_TRUE(model) << model.error.Line();
        return model;
    }

    static void Add(Host::Presentation& presentation, Host::ImportResult model)
    {
        std::string error;
        ASSERT_TRUE(presentation.Add(std::move(model), error)) << error;
    }

    TemporaryFolder folder;
};

TEST_F(PresentationFiles, StandBesideEachOtherWithPathsOfTheirOwn)
{
    Host::Presentation both(Import("a.dae", Triangle(0, "house", "1")));
    Add(both, Import("b.dae", Triangle(3, "house", "1")));
    Add(both, Import("c.dae", Triangle(6, "barn", "1")));
    EXPECT_THAT(both.ListNodes(), ElementsAre("house", "house/leaf", "b.dae", "b.dae/leaf", "barn", "barn/leaf"));
    ASSERT_EQ(both.GetFiles().size(), 3u);
    EXPECT_EQ(both.GetFiles()[1].path, folder.Path("b.dae"));
    EXPECT_EQ(both.GetFiles()[1].top, both.FindNode("b.dae"));
    for (const std::string& path : both.ListNodes())
    {
        ASSERT_TRUE(both.FindNode(path)) << path;
        EXPECT_EQ(both.PathOf(*both.FindNode(path)), path);
    }
    EXPECT_FLOAT_EQ(both.GetModelBox()->low.x, 0.0f);
    EXPECT_FLOAT_EQ(both.GetModelBox()->high.x, 7.0f);
    EXPECT_EQ(both.GetReport().drawnTriangles, 3u);
}

TEST_F(PresentationFiles, LinesOfAFurtherFileComeWithIt)
{
    Host::Presentation both(Import("a.dae", Triangle(0, "house", "1")));
    Draw(both);
    Add(both, Import("b.obj", "v 3 0 0\nv 4 0 0\nv 4 1 0\nl 1 2 3\n"));
    ASSERT_EQ(both.GetScene().GetLines().size(), 1u);
    EXPECT_EQ(both.GetReport().lines, 2u);
    EXPECT_FLOAT_EQ(both.GetModelBox()->high.x, 4.0f);
    const Picture with = Draw(both);
    both.Remove(1);
    EXPECT_TRUE(both.GetScene().GetLines().empty());
    EXPECT_FLOAT_EQ(both.GetModelBox()->high.x, 1.0f);
    EXPECT_TRUE(Draw(both) != with);
}

TEST_F(PresentationFiles, TheFirstFileThatTellsItsPlaceAndNorthGivesThem)
{
    const auto standing = [&](double latitude, double north)
    {
        Host::ImportResult model = Import("b.dae", Triangle(3, "house", "1"));
        model.report.place = Host::ImportedPlace{latitude, 13.0};
        model.report.north = north;
        return model;
    };
    Host::Presentation files(Import("a.dae", Triangle(0, "house", "1")));
    EXPECT_FALSE(files.GetReport().place);
    Add(files, standing(52.0, 30.0));
    Add(files, standing(10.0, 40.0));
    ASSERT_TRUE(files.GetReport().place && files.GetReport().north);
    EXPECT_EQ(files.GetReport().place->latitude, 52.0);
    EXPECT_EQ(*files.GetReport().north, 30.0);
    std::string error;
    ASSERT_TRUE(files.Replace(1, standing(53.0, -5.0), error)) << error;
    EXPECT_EQ(files.GetReport().place->latitude, 53.0);
    EXPECT_EQ(*files.GetReport().north, -5.0);
    files.Remove(1);
    EXPECT_EQ(files.GetReport().place->latitude, 10.0);
    // A sun of the settings may go by it.
    files.Remove(1);
    ASSERT_TRUE(files.GetReport().place);
    EXPECT_EQ(files.GetReport().place->latitude, 10.0);
}

TEST_F(PresentationFiles, OneFileTwiceHasTwoNames)
{
    Host::Presentation both(Import("a.dae", Triangle(0, "house", "1")));
    Add(both, Import("a.dae", Triangle(0, "house", "1")));
    Add(both, Import("a.dae", Triangle(0, "house", "1")));
    EXPECT_THAT(both.ListNodes(), ElementsAre("house", "house/leaf", "a.dae", "a.dae/leaf", "a.dae (2)", "a.dae (2)/leaf"));
}

TEST_F(PresentationFiles, DrawWhatOneFileWithAllOfItDraws)
{
    Host::Presentation both(Import("a.dae", Triangle(0, "house", "1")));
    Add(both, Import("b.dae", Triangle(3, "barn", "1")));
    // The second triangle a thousand times as large, of a model that is told in millimetres.
    Host::Presentation scaled(Import("a.dae", Triangle(0, "house", "1")));
    std::string millimetres = Triangle(3, "barn", "1");
    for (const auto& [from, to] : {std::pair<std::string, std::string>{"3.000000 0 0", "3000 0 0"}, {"4.000000 0 0", "4000 0 0"},
                                   {"3.000000 1 0", "3000 1000 0"}})
    {
        millimetres.replace(millimetres.find(from), from.size(), to);
    }
    Host::ImportResult large = Import("b.dae", millimetres);
    large.report.metresPerUnit = 0.001;
    Add(scaled, std::move(large));
    EXPECT_FLOAT_EQ(scaled.GetModelBox()->high.x, 4.0f);
    const Picture drawn = Draw(both);
    ExpectSame(Draw(scaled), drawn, "a metre is a metre");
    EXPECT_DOUBLE_EQ(scaled.GetReport().metresPerUnit, 1.0);
    // A model whose unit nobody knows comes as it is.
    Host::ImportResult unknown = Import("b.dae", Triangle(3, "barn", "1"));
    unknown.report.metresPerUnit = 0.0;
    Host::Presentation plain(Import("a.dae", Triangle(0, "house", "1")));
    Add(plain, std::move(unknown));
    ExpectSame(Draw(plain), drawn, "as it is");
    Host::Presentation alone(Import("a.dae", Triangle(0, "house", "1")));
    EXPECT_TRUE(Draw(alone) != drawn);
    // Drawn before it grew, the picture is the same as well.
    Add(alone, Import("b.dae", Triangle(3, "barn", "1")));
    ExpectSame(Draw(alone), drawn, "added after a frame");
}

TEST_F(PresentationFiles, GoAgainAndLeaveNothing)
{
    Host::Presentation one(Import("a.dae", Triangle(0, "house", "1")));
    PresentationSettings settings;
    settings.lines.emplace();
    settings.section.planes = {{Vector(0, 1, 0), Vector(0, 0.5f, 0)}};
    Apply(one, settings);
    const Picture before = Draw(one);
    const std::size_t meshes = one.GetScene().GetMeshes().size();
    const std::size_t materials = one.GetScene().GetOptimizedMaterials().size();
    const Host::ImportReport report = one.GetReport();
    Add(one, Import("b.dae", Triangle(3, "barn", "1", kSun)));
    EXPECT_TRUE(one.Hide("barn/leaf"));
    EXPECT_TRUE(one.Highlight("barn", Color(1, 0, 0)));
    EXPECT_TRUE(Draw(one) != before);
    EXPECT_FALSE(one.Remove(2));
    EXPECT_TRUE(one.Remove(1));
    EXPECT_EQ(one.GetScene().GetMeshes().size(), meshes);
    EXPECT_EQ(one.GetScene().GetOptimizedMaterials().size(), materials);
    EXPECT_EQ(one.GetReport().nodes, report.nodes);
    EXPECT_EQ(one.GetReport().boxMax.x, report.boxMax.x);
    EXPECT_THAT(one.ListNodes(), ElementsAre("house", "house/leaf"));
    ExpectSame(Draw(one), before, "as before it came");
    EXPECT_TRUE(one.Remove(0));
    EXPECT_TRUE(one.GetFiles().empty());
    EXPECT_FALSE(one.GetModelBox());
    Draw(one);
    Add(one, Import("a.dae", Triangle(0, "house", "1")));
    ExpectSame(Draw(one), before, "the first one again");
}

TEST_F(PresentationFiles, OneIsReplacedWhereItStood)
{
    Host::Presentation both(Import("a.dae", Triangle(0, "house", "1")));
    Add(both, Import("b.dae", Triangle(3, "barn", "1")));
    Draw(both);
    std::string error;
    ASSERT_TRUE(both.Replace(0, Import("a.dae", Triangle(-2, "house", "1")), error)) << error;
    EXPECT_THAT(both.ListNodes(), ElementsAre("house", "house/leaf", "barn", "barn/leaf"));
    EXPECT_FLOAT_EQ(both.GetModelBox()->low.x, -2.0f);
    Host::Presentation fresh(Import("a.dae", Triangle(-2, "house", "1")));
    Add(fresh, Import("b.dae", Triangle(3, "barn", "1")));
    ExpectSame(Draw(both), Draw(fresh), "as if it had been there from the start");
    EXPECT_FALSE(both.Replace(3, Import("a.dae", Triangle(0, "house", "1")), error));
    EXPECT_FALSE(both.Add(Host::ModelImporter::Import(folder.Path("none.dae")), error));
    EXPECT_NE(error.find("none.dae"), std::string::npos) << error;
    EXPECT_EQ(both.GetFiles().size(), 2u);
}

TEST_F(PresentationFiles, BringTheirOwnLightInPlaceOfTheUsualOne)
{
    Host::Presentation both(Import("a.dae", Triangle(0, "house", "1")));
    Node* const camera = &both.GetCamera();
    ASSERT_EQ(both.GetScene().GetLights().size(), 1u);
    EXPECT_EQ(both.GetScene().GetLights()[0]->GetParent(), camera);
    Add(both, Import("b.dae", Triangle(3, "barn", "1", kSun)));
    ASSERT_EQ(both.GetScene().GetLights().size(), 1u);
    LightNode& sun = *both.GetScene().GetLights()[0];
    EXPECT_NE(sun.GetParent(), camera);
    EXPECT_NEAR(sun.GetGlobalDirection().z, -1.0f, 1e-6f);
    both.Remove(1);
    ASSERT_EQ(both.GetScene().GetLights().size(), 1u);
    EXPECT_EQ(both.GetScene().GetLights()[0]->GetParent(), camera);
}

TEST_F(PresentationFiles, ArePartedByEdgesAndEditedByThemselves)
{
    Host::Presentation both(Import("a.dae", Triangle(0, "house", "1")));
    Add(both, Import("b.dae", Triangle(0.5f, "barn", "1")));
    EXPECT_NE(both.FindNode("house/leaf")->GetUserData(), both.FindNode("barn/leaf")->GetUserData());
    EXPECT_NE(both.FindNode("house/leaf")->GetPath(), both.FindNode("barn/leaf")->GetPath());
    PresentationSettings settings;
    settings.view.named = Host::NamedView::Front;
    const auto edited = [&](const std::string& path)
    {
        settings.editPath = path;
        Apply(both, settings);
        return Draw(both);
    };
    const Picture first = edited("house");
    EXPECT_TRUE(first != edited("barn"));
    EXPECT_TRUE(first != edited(""));
}

TEST_F(PresentationFiles, CanBeAddedToASceneOfAHost)
{
    NamedScene boxes = MakeBoxes();
    const int number = boxes.nodes.back().node->GetUserData();
    Node* const last = boxes.nodes.back().node;
    Host::Presentation presentation(std::move(boxes.scene), std::move(boxes.nodes));
    EXPECT_TRUE(presentation.GetFiles().empty());
    const Picture before = Draw(presentation);
    Add(presentation, Import("b.dae", Triangle(3, "barn", "1")));
    EXPECT_EQ(last->GetUserData(), number);
    EXPECT_EQ(presentation.ListNodes().back(), "barn/leaf");
    EXPECT_TRUE(Draw(presentation) != before);
    presentation.Remove(0);
    ExpectSame(Draw(presentation), before, "without it");
}

TEST_F(PresentationFiles, ComeInTheUnitThatTheHostHasTold)
{
    // A triangle that is a metre large, by files of metres and of centimetres.
    const auto sizeAfter = [&](Host::Presentation& presentation, float x, const char* metres)
    {
        Add(presentation, Import("t.dae", Triangle(x, "barn", metres)));
        const float size = presentation.GetModelBox()->high.x;
        presentation.Remove(0);
        return size;
    };
    NamedScene boxes = MakeBoxes();
    Host::Presentation presentation(std::move(boxes.scene), std::move(boxes.nodes));
    EXPECT_NEAR(sizeAfter(presentation, 9, "1"), 10.0f, 1e-4f) << "as it comes";
    EXPECT_TRUE(presentation.SetUnit(0.001));
    EXPECT_EQ(presentation.GetUnit(), "mm");
    EXPECT_NEAR(sizeAfter(presentation, 9, "1"), 10000.0f, 0.1f);
    EXPECT_NEAR(sizeAfter(presentation, 9, "0.01"), 100.0f, 1e-3f);
    EXPECT_EQ(presentation.GetUnit(), "mm");

    // Of an empty scene too, which files tell theirs otherwise.
    Host::Presentation empty(std::make_unique<Scene>());
    EXPECT_TRUE(empty.SetUnit(0.001));
    EXPECT_NEAR(sizeAfter(empty, 9, "1"), 10000.0f, 0.1f);
    EXPECT_TRUE(empty.SetUnit(0.0));
    EXPECT_NEAR(sizeAfter(empty, 9, "1"), 10.0f, 1e-4f);
    EXPECT_EQ(empty.GetUnit(), "m");

    for (const double wrong : {-1.0, static_cast<double>(INFINITY), static_cast<double>(NAN)})
    {
        EXPECT_FALSE(empty.SetUnit(wrong));
    }
    EXPECT_EQ(empty.GetUnit(), "m");
}

} // namespace

} // namespace OV::Test
