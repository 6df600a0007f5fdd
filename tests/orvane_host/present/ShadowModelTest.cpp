#include "tests/orvane_host/present/PresentationModels.h"

#include "orvane_host/geometry/RayCaster.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <glm/geometric.hpp>
#include <glm/gtc/type_ptr.hpp>
#include <glm/mat4x4.hpp>
#include <glm/matrix.hpp>

#include <cmath>
#include <map>
#include <random>

namespace OV::Test
{

namespace
{

using Host::Presentation;
using Host::PresentationSettings;
using Host::RayCaster;

constexpr int kWidth = 480;
constexpr int kHeight = 270;
constexpr int kPixels = 10000;

/// What a pixel shows.
enum class Light
{
    Nothing, ///< no surface, or one that is seen through
    Lit,
    Shadow,
};

/// What rays in double precision say of a picture.
class LightModel
{
public:
    LightModel(const Presentation& presentation, const Vector& towardSun) :
        m_casters(presentation.GetScene(), [](const MeshNode& node, const Mesh& mesh) {
            return IsGlass(mesh) ? RayCaster::Faces::None : RayCaster::ShownFaces(node, mesh);
        }),
        m_seen(presentation.GetScene(), &SeenFaces)
    {
        const auto* const camera = dynamic_cast<const CameraNodeES20*>(presentation.GetCamera().GetRenderData());
        m_toWorld = glm::inverse(glm::dmat4(glm::make_mat4(camera->GetMVP().m)));
        m_sun = glm::normalize(glm::dvec3(towardSun.x, towardSun.y, towardSun.z));
        const Presentation::Box box = *presentation.GetModelBox();
        m_extent = std::hypot(box.high.x - box.low.x, box.high.y - box.low.y, box.high.z - box.low.z);
    }

    /// At the middle of a pixel, counted from the lower left corner.
    Light At(int x, int y)
    {
        const auto known = m_known.find({x, y});
        return known != m_known.end() ? known->second : m_known[{x, y}] = Find(x + 0.5, y + 0.5);
    }

    /// Whether what the pixel shows is all that is seen within so many pixels.
    bool IsClear(int x, int y, int reach)
    {
        for (int dy = -reach; dy <= reach; ++dy)
        {
            for (int dx = -reach; dx <= reach; ++dx)
            {
                if (At(x + dx, y + dy) != At(x, y))
                {
                    return false;
                }
            }
        }
        return true;
    }

private:
    static bool IsGlass(const Mesh& mesh) { return mesh.GetMaterial() && mesh.GetMaterial()->IsTransparent(); }

    static RayCaster::Faces SeenFaces(const MeshNode& node, const Mesh& mesh)
    {
        const RayCaster::Faces shown = RayCaster::ShownFaces(node, mesh);
        const bool isCulled = mesh.GetMaterial() && (mesh.GetMaterial()->GetFlags() & MaterialFlagNoCull) == 0;
        return shown == RayCaster::Faces::Both && isCulled ? RayCaster::Faces::Front : shown;
    }

    Light Find(double x, double y) const
    {
        const auto toWorld = [&](double depth) {
            const glm::dvec4 place = m_toWorld * glm::dvec4(2 * x / kWidth - 1, 2 * y / kHeight - 1, depth, 1);
            return glm::dvec3(place) / place.w;
        };
        const glm::dvec3 eye = toWorld(-1.0);
        const glm::dvec3 sight = glm::normalize(toWorld(1.0) - eye);
        const auto hit = m_seen.Cast({eye.x, eye.y, eye.z}, {sight.x, sight.y, sight.z});
        if (!hit || IsGlass(*hit->mesh))
        {
            return Light::Nothing;
        }
        const glm::dvec3 normal = NormalOf(*hit);
        if ((glm::dot(normal, sight) < 0.0) != (glm::dot(normal, m_sun) > 0.0))
        {
            return Light::Shadow;
        }
        const glm::dvec3 place = eye + sight * hit->distance;
        return m_casters.IsBlocked({place.x, place.y, place.z}, {m_sun.x, m_sun.y, m_sun.z}, 1e-6 * m_extent)
            ? Light::Shadow : Light::Lit;
    }

    static glm::dvec3 NormalOf(const Host::RayHit& hit)
    {
        const auto& m = hit.node->GetGlobal().GetTransf3d().m;
        glm::dvec3 corners[3];
        for (std::size_t i = 0; i < 3; ++i)
        {
            const Vector& p = hit.mesh->GetPositionBuffer()[hit.mesh->GetIndices()[3 * hit.triangle + i]];
            for (int row = 0; row < 3; ++row)
            {
                corners[i][row] = m[row][0] * p.x + m[row][1] * p.y + m[row][2] * p.z + m[row][3];
            }
        }
        return glm::cross(corners[1] - corners[0], corners[2] - corners[0]);
    }

    RayCaster m_casters;
    RayCaster m_seen;
    glm::dmat4 m_toWorld{1.0};
    glm::dvec3 m_sun{0.0};
    double m_extent = 0.0;
    std::map<std::pair<int, int>, Light> m_known;
};

struct ModelCase
{
    const char* label;
    const char* path;
    Vector eye;
    Vector target;
    float fov;
    bool orthographic;
    Vector sun;
};

const char* const kHouse = "/usr/share/assimp/models/IFC/AC14-FZK-Haus.ifc";
const char* const kTruck = "/usr/share/assimp/models/glTF/CesiumMilkTruck/CesiumMilkTruck.gltf";

const ModelCase kCases[] = {
    {"HouseOutside", kHouse, {28, 10, 16}, {6, 1.4f, -5}, 32, false, {-0.7f, 0.55f, 0.35f}},
    {"HouseInALowSun", kHouse, {28, 10, 16}, {6, 1.4f, -5}, 32, false, {-0.7f, 0.12f, 0.35f}},
    {"HouseWithoutPerspective", kHouse, {28, 10, 16}, {6, 1.4f, -5}, 32, true, {0.4f, 0.6f, 0.5f}},
    {"HouseElevation", kHouse, {6, 3, 30}, {6, 3, -5}, 17, true, {0.3f, 0.9f, 0.3f}},
    {"HouseInside", kHouse, {4, 1.6f, -3}, {9, 1, -6}, 80, false, {-0.3f, 0.5f, 0.7f}},
    {"Truck", kTruck, {6, 4.2f, 6.4f}, {0, 1.1f, 0}, 29, false, {-0.3f, 0.5f, 0.7f}},
};

class ShadowModel : public PresentationFixture, public testing::WithParamInterface<ModelCase>
{
protected:
    ShadowModel() : PresentationFixture(kWidth, kHeight, 0) {}
};

/// 1 where a pixel is lit, 0 where it is in the shadow, and between on rims.
double LightIn(const Picture& picture, int x, int y)
{
    return picture.At(x, y).r / 255.0;
}

TEST_P(ShadowModel, IsWhereRaysSayItIs)
{
    const ModelCase& model = GetParam();
    std::string error;
    const std::unique_ptr<Presentation> presentation = Presentation::Open(model.path, error);
    ASSERT_TRUE(presentation) << error;
    PresentationSettings settings;
    settings.look = Host::Look::Monotone;
    settings.antialiasing = Host::Antialiasing::None;
    settings.view.eye = model.eye;
    settings.view.target = model.target;
    settings.view.fov = model.fov;
    settings.view.orthographic = model.orthographic;
    settings.sun.emplace().direction = model.sun;
    settings.shadows.emplace().darkness = 1.0f;
    Apply(*presentation, settings);
    const Picture picture = Draw(*presentation);
    LightModel rays(*presentation, model.sun);
    std::mt19937 random(7);
    int checked = 0;
    int clear = 0;
    int wrong = 0;
    int rims = 0;
    int farRims = 0;
    while (checked < kPixels)
    {
        const int x = static_cast<int>(random() % kWidth);
        const int y = static_cast<int>(random() % kHeight);
        const Light light = rays.At(x, y);
        if (light == Light::Nothing)
        {
            continue;
        }
        ++checked;
        const bool isRight = (LightIn(picture, x, y) > 0.5) == (light == Light::Lit);
        if (rays.IsClear(x, y, 2))
        {
            ++clear;
            wrong += isRight ? 0 : 1;
        }
        else if (!isRight)
        {
            // The rim of the picture lies within 1.5 pixels of that of the rays where a neighbour
            // has what the pixel should have.
            ++rims;
            farRims += rays.IsClear(x, y, 1) ? 1 : 0;
        }
    }
    RecordProperty("clear", clear);
    RecordProperty("wrong", wrong);
    RecordProperty("offRim", rims);
    EXPECT_GT(clear, kPixels / 2);
    EXPECT_LE(wrong, 0.003 * clear) << "of " << clear;
    EXPECT_LE(farRims, 0.001 * kPixels) << "of " << rims << " pixels on rims";
}

INSTANTIATE_TEST_SUITE_P(Models, ShadowModel, testing::ValuesIn(kCases),
                         [](const auto& info) { return std::string(info.param.label); });

} // namespace

} // namespace OV::Test
