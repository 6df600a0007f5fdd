#include "tests/apps/render/SolidSection.h"
#include "tests/orvane_host/present/PresentationModels.h"

#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"

#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace OV::Test
{

namespace
{

using Host::PresentationSettings;

constexpr const char* House = "/usr/share/assimp/models/IFC/AC14-FZK-Haus.ifc";
constexpr int Steps = 200;

/// A side of a section; what is solid lies on one hand of it.
struct Side
{
    double u1, v1, u2, v2;
};

/// Where a horizontal plane cuts a solid.
std::vector<Side> SidesAt(const Solid& solid, double height)
{
    std::vector<Side> sides;
    const auto crossing = [&](std::uint32_t a, std::uint32_t b)
    {
        const auto [from, to] = std::minmax(a, b);
        const double share = (height - solid.points[from].y) / (solid.points[to].y - solid.points[from].y);
        return solid.points[from] + (solid.points[to] - solid.points[from]) * share;
    };
    for (const auto& triangle : solid.triangles)
    {
        glm::dvec3 up(0.0);
        glm::dvec3 down(0.0);
        int crossings = 0;
        for (std::size_t i = 0; i < 3; ++i)
        {
            const std::uint32_t a = triangle[i];
            const std::uint32_t b = triangle[(i + 1) % 3];
            if ((solid.points[a].y >= height) != (solid.points[b].y >= height))
            {
                (solid.points[b].y >= height ? up : down) = crossing(a, b);
                ++crossings;
            }
        }
        if (crossings == 2)
        {
            sides.push_back({down.z, down.x, up.z, up.x});
        }
    }
    return sides;
}

/// What sides enclose, once where they do so several times. Exact but for sides that cross.
double AreaOf(const std::vector<Side>& sides)
{
    std::set<double> levels;
    for (const Side& side : sides)
    {
        levels.insert({side.v1, side.v2});
    }
    double area = 0.0;
    for (auto level = levels.begin(); level != levels.end() && std::next(level) != levels.end(); ++level)
    {
        const double middle = (*level + *std::next(level)) / 2.0;
        std::map<double, int> steps;
        for (const Side& side : sides)
        {
            if ((side.v1 > middle) != (side.v2 > middle))
            {
                steps[side.u1 + (side.u2 - side.u1) * (middle - side.v1) / (side.v2 - side.v1)] += side.v2 > side.v1 ? 1 : -1;
            }
        }
        int depth = 0;
        for (auto step = steps.begin(); step != steps.end() && std::next(step) != steps.end(); ++step)
        {
            depth += step->second;
            // A solid that is mirrored into place runs round the other way.
            area += depth != 0 ? (std::next(step)->first - step->first) * (*std::next(level) - *level) : 0.0;
        }
    }
    return area;
}

/// What faces of a section there are in a scene.
struct Faces
{
    double area = 0.0;
    double low = 1e30;
    double high = -1e30;
    std::size_t meshes = 0;
};

Faces FacesIn(const Scene& scene)
{
    Faces faces;
    for (const Material* material : scene.GetOptimizedMaterials())
    {
        if (material->GetName() != "section")
        {
            continue;
        }
        for (const Mesh* mesh : material->GetMeshes())
        {
            ++faces.meshes;
            for (const MeshNode* node : mesh->GetNodes())
            {
                const auto& m = node->GetGlobal().GetTransf3d().m;
                std::vector<glm::dvec3> points;
                for (const Vector& p : mesh->GetPositionBuffer())
                {
                    points.emplace_back(m[0][0] * p.x + m[0][1] * p.y + m[0][2] * p.z + m[0][3],
                                        m[1][0] * p.x + m[1][1] * p.y + m[1][2] * p.z + m[1][3],
                                        m[2][0] * p.x + m[2][1] * p.y + m[2][2] * p.z + m[2][3]);
                    faces.low = std::min(faces.low, points.back().y);
                    faces.high = std::max(faces.high, points.back().y);
                }
                const auto& indices = mesh->GetIndices();
                for (std::size_t i = 0; i + 2 < indices.size(); i += 3)
                {
                    const glm::dvec3& a = points[indices[i]];
                    faces.area += glm::length(glm::cross(points[indices[i + 1]] - a, points[indices[i + 2]] - a)) / 2.0;
                }
            }
        }
    }
    return faces;
}

class PresentationDrag : public PresentationFixture
{
protected:
    PresentationDrag() : PresentationFixture(320, 180)
    {
        std::string error;
        presentation = Host::Presentation::Open(House, error);
        EXPECT_TRUE(presentation) << error;
    }

    std::unique_ptr<Host::Presentation> presentation;
};

PresentationSettings CutAt(float height)
{
    PresentationSettings cut;
    cut.section.planes = {{Vector(0, 1, 0), Vector(0, height, 0)}};
    cut.section.fill = Color(1, 0, 1);
    cut.section.outlineWidth = 0.0f;
    return cut;
}

TEST_F(PresentationDrag, ThroughTheHouseTheFillIsTheSectionOfItsSolidsAtEachStep)
{
    const Picture whole = Draw(*presentation);
    const std::vector<Solid> solids = FindClosedSolids(presentation->GetScene());
    ASSERT_GT(solids.size(), 50u);
    const std::set<Mesh*> meshes = presentation->GetScene().GetMeshes();
    const std::vector<Material*> materials = presentation->GetScene().GetOptimizedMaterials();
    const Host::Presentation::Box box = presentation->GetModelBox().value();
    const float extent = std::hypot(box.high.x - box.low.x, box.high.y - box.low.y, box.high.z - box.low.z);
    int filledSteps = 0;
    for (int step = 0; step < Steps; ++step)
    {
        const float height = box.low.y + (box.high.y - box.low.y) * (static_cast<float>(step) + 0.5f) / Steps;
        Apply(*presentation, CutAt(height));
        presentation->Draw(Width(), Height());
        const Faces faces = FacesIn(presentation->GetScene());
        if (faces.meshes != 0)
        {
            // In one plane, just below that which cuts; nothing is left of another one.
            EXPECT_LT(faces.high - faces.low, 1e-4) << "step " << step;
            EXPECT_LT(faces.high, height) << "step " << step;
            EXPECT_GT(faces.low, height - 3e-4f * extent) << "step " << step;
            ++filledSteps;
        }
        const double inPlane = faces.meshes != 0 ? (faces.low + faces.high) / 2.0 : height - 2e-4 * extent;
        double exact = 0.0;
        for (const Solid& solid : solids)
        {
            exact += AreaOf(SidesAt(solid, inPlane));
        }
        EXPECT_NEAR(faces.area, exact, 0.01 * exact + 1e-6) << "step " << step << " at " << height;
    }
    EXPECT_GT(filledSteps, Steps * 9 / 10);
    Apply(*presentation, PresentationSettings());
    EXPECT_EQ(presentation->GetScene().GetMeshes(), meshes);
    EXPECT_EQ(presentation->GetScene().GetOptimizedMaterials(), materials);
    ExpectSame(Draw(*presentation), whole, "without the plane");
}

TEST_F(PresentationDrag, ThePictureOnTheWayIsThatOfAPlaneSetAtOnce)
{
    const std::vector<float> heights = {0.3f, 1.4f, 2.9f, 4.4f};
    for (float height = 0.0f; height < 5.0f; height += 0.1f)
    {
        PresentationSettings cut = CutAt(height);
        cut.lines = Host::LineSettings();
        Apply(*presentation, cut);
        presentation->Draw(Width(), Height());
        if (std::none_of(heights.begin(), heights.end(), [&](float h) { return std::abs(h - height) < 0.01f; }))
        {
            continue;
        }
        const Picture dragged = Draw(*presentation);
        std::string error;
        const auto fresh = Host::Presentation::Open(House, error);
        ASSERT_TRUE(fresh) << error;
        Apply(*fresh, cut);
        ExpectSame(dragged, Draw(*fresh), "at " + std::to_string(height));
    }
}

} // namespace

} // namespace OV::Test
