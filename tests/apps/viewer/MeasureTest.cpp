#include "apps/viewer/Measure.h"

#include "apps/viewer/Navigator.h"
#include "orvane_host/geometry/Primitives.h"
#include "orvane_host/present/Presentation.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <glm/geometric.hpp>
#include <gtest/gtest.h>

using namespace OV;
using namespace OV::ViewerApp;

namespace
{

/// A box whose front, of edge 2 about the origin, is seen from before it.
class MeasureSnap : public ::testing::Test
{
protected:
    MeasureSnap()
    {
        auto scene = std::make_unique<Scene>();
        mesh = new Mesh(Host::Primitives::Box({-1, -1, -2}, {1, 1, 0}), scene.get());
        node = new MeshNode(scene.get());
        scene->GetRoot()->AddChild(node, false);
        mesh->AddNode(node);
        presentation = std::make_unique<Host::Presentation>(std::move(scene));
        Host::PresentationSettings settings;
        settings.view.eye = Vector(0.0f, 0.0f, 10.0f);
        settings.view.target = Vector(0.0f, 0.0f, 0.0f);
        std::string error;
        EXPECT_TRUE(presentation->Apply(settings, error)) << error;
        view.SetPicture(800, 600);
        view.Follow(*presentation);
    }

    glm::dvec3 SnapAt(const glm::dvec3& place)
    {
        return Measure::Snapped(*mesh, *node, place, view, 8.0, snap);
    }

    Mesh* mesh = nullptr;
    MeshNode* node = nullptr;
    std::unique_ptr<Host::Presentation> presentation;
    Navigator view;
    Measure::Snap snap = Measure::Snap::Face;
};

} // namespace

TEST_F(MeasureSnap, GoesToCornersBeforeEdges)
{
    const double units = view.UnitsPerPixel({0, 0, 0});
    EXPECT_NEAR(glm::distance(SnapAt({1.0 - 4.0 * units, 1.0 - 4.0 * units, 0.0}), glm::dvec3(1, 1, 0)), 0.0, 1e-9);
    EXPECT_EQ(snap, Measure::Snap::Corner);
    EXPECT_NEAR(glm::distance(SnapAt({0.3, 1.0 - 6.0 * units, 0.0}), glm::dvec3(0.3, 1, 0)), 0.0, 1e-9);
    EXPECT_EQ(snap, Measure::Snap::Edge);
}

TEST_F(MeasureSnap, StaysOnAFaceWhereNothingIsNear)
{
    const double units = view.UnitsPerPixel({0, 0, 0});
    const glm::dvec3 place(0.3, 1.0 - 9.0 * units, 0.0);
    EXPECT_EQ(SnapAt(place), place);
    EXPECT_EQ(snap, Measure::Snap::Face);
}

TEST_F(MeasureSnap, SeesNoEdgeWhereTwoTrianglesLieInOnePlane)
{
    EXPECT_EQ(SnapAt({0.3, 0.3, 0.0}), glm::dvec3(0.3, 0.3, 0.0));
    EXPECT_EQ(snap, Measure::Snap::Face);
}
