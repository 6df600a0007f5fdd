#include "tests/orvane_host/present/OcclusionScenes.h"

#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <cmath>

namespace OV::Test
{

namespace
{

/// Faces with corners of their own, each convex and flat.
class Faces
{
public:
    void Add(const std::vector<Vector>& corners)
    {
        const auto first = static_cast<unsigned short>(m_positions.size());
        Vector along;
        along.Subtract(corners[1], corners[0]);
        Vector beside;
        beside.Subtract(corners[2], corners[0]);
        const Vector cross(along.y * beside.z - along.z * beside.y, along.z * beside.x - along.x * beside.z,
                           along.x * beside.y - along.y * beside.x);
        const float length = cross.Magnitude();
        for (std::size_t i = 0; i < corners.size(); ++i)
        {
            m_positions.push_back(corners[i]);
            m_normals.emplace_back(cross.x / length, cross.y / length, cross.z / length);
            if (i >= 2)
            {
                m_indices.push_back(first);
                m_indices.push_back(static_cast<unsigned short>(first + i - 1));
                m_indices.push_back(static_cast<unsigned short>(first + i));
            }
        }
    }

    std::shared_ptr<RawMesh> Take()
    {
        auto raw = std::make_shared<RawMesh>();
        raw->SetPositionBuffer(std::move(m_positions));
        raw->SetNormalBuffer(std::move(m_normals));
        raw->SetIndices(std::move(m_indices));
        raw->EndDescription(true);
        return raw;
    }

private:
    std::vector<Vector> m_positions;
    std::vector<Vector> m_normals;
    std::vector<unsigned short> m_indices;
};

} // namespace

SolidScene::SolidScene() : m_scene(std::make_unique<Scene>()), m_white(new Material("white"))
{
    m_white->SetDiffuse(Color(1.0f, 1.0f, 1.0f));
    m_scene->AddMaterial(m_white);
}

SolidScene::~SolidScene() = default;

std::unique_ptr<Scene> SolidScene::Take()
{
    return std::move(m_scene);
}

void SolidScene::AddBox(const Vector& low, const Vector& high)
{
    AddPrism({{low.x, low.y}, {high.x, low.y}, {high.x, high.y}, {low.x, high.y}}, low.z, high.z);
}

void SolidScene::AddPrism(const std::vector<std::pair<float, float>>& outline, float fromZ, float toZ)
{
    Faces faces;
    std::vector<Vector> front;
    std::vector<Vector> back;
    for (std::size_t i = 0; i < outline.size(); ++i)
    {
        const auto& [x, y] = outline[i];
        const auto& [nextX, nextY] = outline[(i + 1) % outline.size()];
        faces.Add({Vector(x, y, toZ), Vector(x, y, fromZ), Vector(nextX, nextY, fromZ), Vector(nextX, nextY, toZ)});
        front.emplace_back(x, y, toZ);
        back.emplace(back.begin(), x, y, fromZ);
    }
    faces.Add(front);
    faces.Add(back);
    auto* const mesh = new Mesh(faces.Take(), m_scene.get());
    m_white->AddMesh(mesh);
    auto* const node = new MeshNode(m_scene.get());
    m_scene->GetRoot()->AddChild(node, false);
    mesh->AddNode(node);
}

std::unique_ptr<Scene> MakeBoxOnPlane()
{
    SolidScene scene;
    scene.AddBox(Vector(-4, -0.2f, -4), Vector(4, 0, 4));
    scene.AddBox(Vector(-1, 0, -1), Vector(1, 1.5f, 1));
    return scene.Take();
}

std::unique_ptr<Scene> MakeRoomCorner()
{
    SolidScene scene;
    scene.AddBox(Vector(0, -0.2f, 0), Vector(5, 0, 5));
    scene.AddBox(Vector(-0.2f, -0.2f, -0.2f), Vector(0, 3, 5));
    scene.AddBox(Vector(0, -0.2f, -0.2f), Vector(5, 3, 0));
    scene.AddBox(Vector(0, 2.4f, 0), Vector(5, 2.6f, 0.4f));
    scene.AddBox(Vector(1.5f, 0, 0.3f), Vector(2.1f, 0.9f, 0.9f));
    return scene.Take();
}

std::unique_ptr<Scene> MakeStairs()
{
    SolidScene scene;
    scene.AddBox(Vector(-3, -0.2f, -3), Vector(4, 0, 3));
    for (int i = 0; i < 8; ++i)
    {
        const auto step = static_cast<float>(i);
        scene.AddBox(Vector(step * 0.3f, 0, -1), Vector(step * 0.3f + 0.3f, 0.18f * (step + 1.0f), 1));
    }
    scene.AddBox(Vector(-0.05f, 0, 1), Vector(2.4f, 0.3f, 1.15f));
    return scene.Take();
}

} // namespace OV::Test
