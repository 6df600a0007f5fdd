#include "tests/orvane_host/present/Crowd.h"

#include "orvane/math/Color.h"
#include "orvane/math/Quaternion.h"
#include "orvane/math/TextureCoordinate.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/NodeMaterial.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"
#include "tests/orvane_host/present/SettingsDice.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace OV::Test
{

namespace
{

Transform PlaceAt(const Vector& position, Dice& dice)
{
    Transform place;
    const float angle = 6.0f * dice.Share();
    Quaternion turn;
    turn.w = std::cos(0.5f * angle);
    turn.x = 0.0f;
    turn.y = std::sin(0.5f * angle);
    turn.z = 0.0f;
    place.SetRotation(turn);
    const float pull = 0.7f + 0.5f * dice.Share();
    place.SetScale(Vector(dice.Below(6) == 0 ? -pull : pull, 1.0f, 1.6f - pull));
    place.SetPosition(position);
    return place;
}

} // namespace

Crowd::Crowd(int count, unsigned int seed, int colors) :
    scene(std::make_unique<Scene>()), m_scene(scene.get()), m_colors(colors)
{
    m_columns = static_cast<int>(std::ceil(std::sqrt(static_cast<float>(count))));
    for (int i = 0; i < 5; ++i)
    {
        auto* const material = new Material("material");
        material->SetDiffuse(Color(0.2f + 0.15f * static_cast<float>(i), 0.8f - 0.1f * static_cast<float>(i), 0.4f,
                                   i == 4 ? 0.5f : 1.0f));
        material->SetAmbient(Color(0.2f, 0.2f, 0.2f));
        m_scene->AddMaterial(material);
        m_materials.push_back(material);
    }
    m_materials[1]->SetFlags(MaterialFlagNoCull);
    for (int i = 0; i < colors; ++i)
    {
        const auto share = [i](int step) { return static_cast<float>(i * step % 23) / 23.0f; };
        auto* const material = new Material("colour");
        material->SetDiffuse(Color(share(5), share(7), share(11)));
        material->SetAmbient(Color(0.3f * share(3), 0.3f * share(2), 0.2f));
        m_scene->AddMaterial(material);
        m_materials.push_back(material);
    }
    m_paint = new NodeMaterial;
    m_paint->SetDiffuse(Color(0.9f, 0.1f, 0.1f));
    m_scene->AddMaterial(m_paint);
    Dice dice(seed);
    for (int i = 0; i < count; ++i)
    {
        Add(dice);
    }
}

Crowd::~Crowd() = default;

std::shared_ptr<RawMesh> Crowd::MakeSolid(Dice& dice) const
{
    const int sides = 4 + dice.Below(5);
    const float radius = 0.25f + 0.2f * dice.Share();
    const float height = 0.5f + dice.Share();
    std::vector<Vector> positions;
    std::vector<Vector> normals;
    std::vector<TextureCoordinate> uvs;
    std::vector<Color> colors;
    std::vector<unsigned short> indices;
    for (int i = 0; i < sides; ++i)
    {
        const float from = 6.2831853f * static_cast<float>(i) / static_cast<float>(sides);
        const float to = 6.2831853f * static_cast<float>(i + 1) / static_cast<float>(sides);
        const float middle = 0.5f * (from + to);
        const auto first = static_cast<unsigned short>(positions.size());
        const auto put = [&](float x, float y, float z, const Vector& normal) {
            positions.emplace_back(radius * x, height * y, radius * z);
            normals.push_back(normal);
            uvs.emplace_back(x, y);
            colors.emplace_back(0.5f + 0.5f * y, 0.3f, 0.6f, 1.0f);
        };
        const Vector outward(std::cos(middle), 0.0f, std::sin(middle));
        put(std::cos(from), 0.0f, std::sin(from), outward);
        put(std::cos(from), 1.0f, std::sin(from), outward);
        put(std::cos(to), 1.0f, std::sin(to), outward);
        put(std::cos(to), 0.0f, std::sin(to), outward);
        const Vector up(0.0f, 1.0f, 0.0f);
        put(0.0f, 1.0f, 0.0f, up);
        put(std::cos(to), 1.0f, std::sin(to), up);
        put(std::cos(from), 1.0f, std::sin(from), up);
        for (const int index : {0, 1, 2, 0, 2, 3, 4, 5, 6})
        {
            indices.push_back(static_cast<unsigned short>(first + index));
        }
    }
    auto raw = std::make_shared<RawMesh>();
    raw->SetPositionBuffer(std::move(positions));
    if (dice.Below(12) != 0)
    {
        raw->SetNormalBuffer(std::move(normals));
    }
    if (dice.Below(9) == 0)
    {
        raw->SetTextureBuffer(std::move(uvs));
    }
    if (dice.Below(7) == 0)
    {
        raw->SetColorBuffer(std::move(colors));
    }
    raw->SetIndices(std::move(indices));
    raw->EndDescription(true);
    return raw;
}

void Crowd::Add(Dice& dice)
{
    auto* const node = new MeshNode(m_scene);
    const int column = m_next % m_columns;
    const int row = m_next / m_columns;
    node->SetLocal(PlaceAt(Vector(static_cast<float>(column), 0.0f, static_cast<float>(row)), dice));
    // One below another is where that takes it.
    Node* const parent = !m_nodes.empty() && dice.Below(6) == 0 ? m_nodes.back() : m_scene->GetRoot();
    parent->AddChild(node, false);
    Material* const material = &AnyMaterial(dice);
    Mesh* shared = nullptr;
    if (!m_nodes.empty() && dice.Below(5) == 0 && !m_nodes.back()->GetMeshes().empty())
    {
        shared = m_nodes.back()->GetMeshes().front();
    }
    else
    {
        shared = new Mesh(MakeSolid(dice), m_scene);
        shared->SetFlags(dice.Below(9) == 0 ? MeshFlagNoCull : MeshFlags{});
        material->AddMesh(shared);
    }
    shared->AddNode(node);
    node->SetUserData(m_next);
    node->SetPath({{1, static_cast<std::uint64_t>(m_next % 7)}});
    named.push_back({"n" + std::to_string(m_next), node});
    m_nodes.push_back(node);
    ++m_next;
}

Material& Crowd::AnyMaterial(Dice& dice) const
{
    return *m_materials[static_cast<std::size_t>(dice.Below(static_cast<int>(m_materials.size())))];
}

void Crowd::TakeOutOrPutBack(Material& material)
{
    if (material.GetScene())
    {
        m_scene->RemoveMaterial(&material);
        m_apart.emplace_back(&material);
        return;
    }
    const auto isIt = [&](const std::unique_ptr<Material>& apart) { return apart.get() == &material; };
    const auto place = std::find_if(m_apart.begin(), m_apart.end(), isIt);
    m_scene->AddMaterial(place->release());
    m_apart.erase(place);
}

void Crowd::EditMaterial(Dice& dice)
{
    Material& material = AnyMaterial(dice);
    const auto flip = [&](MaterialFlags flag) {
        (material.GetFlags() & flag) != 0 ? material.ClearFlags(flag) : material.SetFlags(flag);
    };
    switch (dice.Below(9))
    {
    case 0: flip(MaterialFlagNoCull); return;
    case 1: flip(MaterialFlagUnlit); return;
    case 2: material.ignoreLightColor = !material.ignoreLightColor; return;
    case 3: material.reflectionFactors[dice.Below(3)] = 0.5f * dice.Share(); return;
    case 4:
        material.SetOpacity(dice.Below(2) != 0 ? 1.0f : 0.5f);
        m_scene->ProcessChangedMaterial(&material);
        return;
    case 5: TakeOutOrPutBack(material); return;
    case 6:
        material.SetAmbient(Color(0.4f * dice.Share(), 0.2f, 0.3f * dice.Share(), 1.0f));
        return;
    default:
        material.SetDiffuse(Color(dice.Share(), dice.Share(), dice.Share(), material.GetOpacity()));
        return;
    }
}

void Crowd::Edit(Dice& dice)
{
    if (m_colors > 0 && dice.Below(3) == 0)
    {
        m_scene->MarkDirty();
        EditMaterial(dice);
        return;
    }
    MeshNode& node = *m_nodes[static_cast<std::size_t>(dice.Below(static_cast<int>(m_nodes.size())))];
    Mesh* const mesh = node.GetMeshes().empty() ? nullptr : node.GetMeshes().front();
    m_scene->MarkDirty();
    switch (dice.Below(9))
    {
    case 0:
    case 1:
        node.SetLocal(PlaceAt(Vector(4.0f * dice.Share(), 0.5f * dice.Share(), 4.0f * dice.Share()), dice));
        return;
    case 2: node.SetFlags(NodeFlagHidden, dice.Below(2) != 0); return;
    case 3: node.ClearFlags(NodeFlagHidden, dice.Below(2) != 0); return;
    case 4:
        if (mesh)
        {
            AnyMaterial(dice).AddMesh(mesh);
        }
        return;
    case 5:
        if (mesh)
        {
            // In place, as one who edits a shape does.
            const std::shared_ptr<RawMesh> other = MakeSolid(dice);
            RawMesh& raw = *mesh->GetRawMesh();
            raw.StartDescription();
            raw.SetPositionBuffer(std::move(other->positions));
            raw.SetNormalBuffer(std::move(other->normals));
            raw.SetIndices(std::move(other->indices));
            raw.EndDescription(true);
        }
        return;
    case 6:
        node.CurrentNodeMaterial() ? m_paint->RemoveNode(&node) : m_paint->AddNode(&node);
        return;
    case 7: Add(dice); return;
    default: break;
    }
    // What has nothing below it.
    if (node.GetChildren().empty() && m_nodes.size() > 4)
    {
        m_nodes.erase(std::find(m_nodes.begin(), m_nodes.end(), &node));
        m_scene->DeleteSubtree(&node);
    }
}

} // namespace OV::Test
