// What Python puts into a model: nodes, geometry, materials, lines and texts.
#include "python/native/Model.h"

#include "python/native/Engine.h"
#include "python/native/Refused.h"
#include "orvane_host/geometry/Polyline.h"
#include "orvane_host/import/ImportOptions.h"
#include "orvane_host/present/SunHoursMap.h"
#include "orvane/math/Transform.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/overlay/Shape2DNode.h"
#include "orvane/overlay/Text.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawLine.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace OV::Python
{

namespace
{

/// So many numbers edges can tell apart; nodes beyond share them.
constexpr int kMostNumbers = 0xFFFF;
/// In front of titles and bars.
constexpr float kTextZ = 10.0f;

bool HasTransparentPixel(const Pixels& pixels)
{
    for (std::size_t i = 3; i < pixels.rgba.size(); i += 4)
    {
        if (pixels.rgba[i] != 255)
        {
            return true;
        }
    }
    return false;
}

void SetTexture(Material& material, const Pixels& pixels)
{
    std::free(std::exchange(material.pixels, nullptr));
    material.textureName.clear();
    material.hasAlpha = false;
    // The next frame loads the new one.
    material.Suspend();
    if (pixels.rgba.empty())
    {
        return;
    }
    material.pixels = static_cast<unsigned char*>(std::malloc(pixels.rgba.size()));
    if (!material.pixels)
    {
        throw std::bad_alloc();
    }
    std::memcpy(material.pixels, pixels.rgba.data(), pixels.rgba.size());
    material.pixelWidth = pixels.width;
    material.pixelHeight = pixels.height;
    material.hasAlpha = HasTransparentPixel(pixels);
}

void SetFlag(Material& material, MaterialFlags flag, std::optional<bool> isSet)
{
    if (isSet && *isSet)
    {
        material.SetFlags(flag);
    }
    else if (isSet)
    {
        material.ClearFlags(flag);
    }
}

/// What of the surface is seen without light, as importing has it.
Color AmbientOf(const Material& material)
{
    const float level = (material.GetFlags() & MaterialFlagUnlit) != 0 ? 0.0f : Host::ImportOptions().ambientLevel;
    const Color& diffuse = material.GetDiffuse();
    const Color& emissive = material.GetEmissive();
    return Color(std::min(1.0f, level * diffuse.r + emissive.r), std::min(1.0f, level * diffuse.g + emissive.g),
                 std::min(1.0f, level * diffuse.b + emissive.b));
}

LineStyle* MakeStyle(const LineValues& values)
{
    auto* const style = new LineStyle("python");
    style->color = values.color;
    style->secondColor = Color(0.0f, 0.0f, 0.0f, 0.0f); // it is added, and starts white
    style->antialias = false; // the samples of the picture smooth the rims
    style->width = values.width / 2.0f;
    style->SetDashed(values.dash.has_value());
    style->SetDashFrequency(values.dash.value_or(1.0f));
    style->noDepthTest = values.isOnTop;
    return style;
}

} // namespace

Node& Model::NodeOf(NodeId id)
{
    Opened();
    const auto found = m_nodes.find(id);
    if (found == m_nodes.end() || !found->second)
    {
        throw Refused(Trouble::Closed, "the node has been removed");
    }
    return *found->second;
}

NodeId Model::IdOf(Node& node)
{
    const auto known = m_idsOfNodes.find(&node);
    if (known != m_idsOfNodes.end() && m_nodes[known->second] == &node)
    {
        return known->second;
    }
    m_nodes[++m_lastId] = &node;
    m_idsOfNodes[&node] = m_lastId;
    return m_lastId;
}

NodeId Model::FindNode(const std::string& path)
{
    Node* const node = Fresh().FindNode(path);
    NeedNode(node != nullptr, path);
    return IdOf(*node);
}

std::string Model::PathOf(NodeId id)
{
    return Opened().PathOf(NodeOf(id));
}

std::string Model::FreeName(const std::string& wanted)
{
    const std::string stem = wanted.empty() ? "node" : wanted;
    std::string name = stem;
    for (std::size_t number = m_names.size() + 1; name.empty() || !m_names.insert(name).second; ++number)
    {
        name = stem + " " + std::to_string(number);
    }
    return name;
}

NodeId Model::Take(MeshNode* node, const std::string& name, std::optional<NodeId> parent, const Transform& place)
{
    Node& above = parent ? NodeOf(*parent) : *Opened().GetScene().GetRoot();
    above.AddChild(node, false);
    node->SetLocal(place);
    node->SetUserData(m_nextNumber);
    m_nextNumber = (m_nextNumber + 1) % kMostNumbers;
    const NodeId id = IdOf(*node);
    // Editing in place tells the way down by it.
    Node::Path path = above.GetPath();
    path.emplace_back(id, id);
    node->SetPath(path);
    m_presentation->AddName(*node, FreeName(name));
    m_isStale = true;
    return id;
}

void Model::Show(MeshNode& node, Mesh& mesh)
{
    mesh.AddNode(&node);
    m_meshes.insert(&mesh);
}

NodeId Model::AddGroup(const std::string& name, std::optional<NodeId> parent, const Transform& place)
{
    if (parent)
    {
        NodeOf(*parent);
    }
    return Take(new MeshNode(&Opened().GetScene()), name, parent, place);
}

NodeId Model::AddMesh(const std::vector<std::shared_ptr<Geometry>>& parts, MaterialId material, const std::string& name,
                      std::optional<NodeId> parent, const Transform& place)
{
    Scene& scene = Opened().GetScene();
    Material& surface = MaterialOf(material);
    for (const std::shared_ptr<Geometry>& part : parts)
    {
        if (!part)
        {
            throw Refused(Trouble::Value, "a part of the mesh is None; it has to be geometry");
        }
        NeedOwn(*part);
    }
    const NodeId id = AddGroup(name, parent, place);
    auto& node = static_cast<MeshNode&>(NodeOf(id));
    for (const std::shared_ptr<Geometry>& part : parts)
    {
        part->owner = weak_from_this();
        auto* const mesh = new Mesh(part->raw, &scene);
        surface.AddMesh(mesh);
        Show(node, *mesh);
    }
    return id;
}

NodeId Model::AddCopy(NodeId of, const std::string& name, std::optional<NodeId> parent, const Transform& place)
{
    auto* const source = dynamic_cast<MeshNode*>(&NodeOf(of));
    const PointerSpan<Mesh> meshes = source ? source->EachMesh() : PointerSpan<Mesh>();
    std::vector<Mesh*> shown(meshes.begin(), meshes.end());
    shown.erase(std::remove_if(shown.begin(), shown.end(), [&](Mesh* mesh) { return m_meshes.count(mesh) == 0; }),
                shown.end());
    if (shown.empty())
    {
        throw Refused(Trouble::Value, "the node has no meshes or lines that were added to the model; only those "
                                      "can be shown at another place");
    }
    const NodeId id = AddGroup(name, parent, place);
    auto& node = static_cast<MeshNode&>(NodeOf(id));
    for (Mesh* mesh : shown)
    {
        Show(node, *mesh);
    }
    return id;
}

NodeId Model::AddLine(const LineValues& values, const std::string& name, std::optional<NodeId> parent,
                      const Transform& place)
{
    Scene& scene = Opened().GetScene();
    const std::vector<std::shared_ptr<RawLine>> parts = Host::Polyline::Make(values.points, values.isClosed);
    if (parts.empty())
    {
        throw Refused(Trouble::Value, "points holds no two places apart; a line goes from one to another");
    }
    const NodeId id = AddGroup(name, parent, place);
    auto& node = static_cast<MeshNode&>(NodeOf(id));
    LineStyle* const style = MakeStyle(values);
    scene.AddLineStyle(style);
    for (const std::shared_ptr<RawLine>& part : parts)
    {
        auto* const line = new Line(part, &scene);
        style->AddLine(line);
        Show(node, *line);
    }
    return id;
}

Transform Model::PlaceOf(NodeId id)
{
    return NodeOf(id).GetLocal();
}

void Model::SetPlace(NodeId id, const Transform& place)
{
    NodeOf(id).SetLocal(place);
    m_isStale = true;
}

void Model::Remove(NodeId id)
{
    Node& node = NodeOf(id);
    m_presentation->GetScene().DeleteSubtree(&node);
    m_hasOrphans = true;
    m_isStale = true;
}

bool Model::RemoveOrphans()
{
    if (!std::exchange(m_hasOrphans, false))
    {
        return false;
    }
    std::set<LineStyle*> styles;
    for (auto entry = m_meshes.begin(); entry != m_meshes.end();)
    {
        Mesh* const mesh = *entry;
        if (!mesh->EachNode().empty())
        {
            ++entry;
            continue;
        }
        if (const auto* const line = dynamic_cast<Line*>(mesh))
        {
            styles.insert(line->GetStyle());
        }
        delete mesh;
        entry = m_meshes.erase(entry);
    }
    for (LineStyle* style : styles)
    {
        if (style && style->GetLines().empty())
        {
            delete style;
        }
    }
    // Names of nodes that are gone may be given again.
    m_names.clear();
    for (const Host::ImportedNode& named : m_presentation->GetNodes())
    {
        m_names.insert(named.name);
    }
    for (auto entry = m_nodes.begin(); entry != m_nodes.end();)
    {
        entry = entry->second ? std::next(entry) : m_nodes.erase(entry);
    }
    return true;
}

void Model::NeedOwn(const Geometry& geometry)
{
    const std::shared_ptr<Model> owner = geometry.owner.lock();
    if (owner && owner.get() != this && !owner->IsClosed())
    {
        throw Refused(Trouble::Value, "the geometry is in another model; make one of its own for this");
    }
}

void Model::Update(Geometry& geometry)
{
    Opened();
    NeedOwn(geometry);
    RawMesh& raw = *geometry.raw;
    const auto isFinite = [](const Vector& v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); };
    if (!std::all_of(raw.positions.begin(), raw.positions.end(), isFinite)
        || !std::all_of(raw.normals.begin(), raw.normals.end(), isFinite))
    {
        throw Refused(Trouble::Value, "positions or normals hold a coordinate that is not finite; every one has to be");
    }
    raw.EndDescription(true);
    raw.SetRenderData(nullptr);
    m_isStale = true;
}

Material& Model::MaterialOf(MaterialId id)
{
    Opened();
    const auto found = m_materials.find(id);
    if (found == m_materials.end() || !found->second)
    {
        throw Refused(Trouble::Closed, "the material has been removed");
    }
    return *found->second;
}

void Model::Give(Material& material, MaterialValues& values)
{
    material.diffuse = values.diffuse.value_or(material.diffuse);
    material.specular = values.specular.value_or(material.specular);
    material.emissive = values.emissive.value_or(material.emissive);
    material.shininess = values.shininess.value_or(material.shininess);
    SetFlag(material, MaterialFlagNoCull, values.isTwoSided);
    SetFlag(material, MaterialFlagUnlit, values.isUnlit);
    if (values.ambient || values.diffuse || values.emissive || values.isUnlit)
    {
        material.ambient = values.ambient.value_or(AmbientOf(material));
    }
    if (values.texture)
    {
        SetTexture(material, *values.texture);
    }
    if (material.hasAlpha && !material.IsTransparent())
    {
        // The opacity alone decides what is drawn after all opaque things. This much less than 1 shows
        // in no pixel.
        material.SetOpacity(std::nextafter(1.0f, 0.0f));
    }
}

MaterialId Model::AddMaterial(const std::string& name, MaterialValues values)
{
    Scene& scene = Opened().GetScene();
    auto material = std::make_unique<Material>(name);
    // The light's colour leaves room for the ambient share.
    material->ignoreLightColor = false;
    Give(*material, values);
    scene.AddMaterial(material.get());
    m_materials[++m_lastId] = material.release();
    m_isStale = true;
    return m_lastId;
}

MaterialId Model::FindMaterial(const std::string& name)
{
    Material* const material = Opened().GetScene().GetMaterial(name);
    if (!material)
    {
        throw Refused(Trouble::Node, "there is no material '" + name + "'");
    }
    const auto known = std::find_if(m_materials.begin(), m_materials.end(),
                                    [&](const auto& entry) { return entry.second == material; });
    if (known != m_materials.end())
    {
        return known->first;
    }
    m_materials[++m_lastId] = material;
    return m_lastId;
}

void Model::SetMaterial(MaterialId id, MaterialValues values)
{
    Material& material = MaterialOf(id);
    Give(material, values);
    m_presentation->GetScene().ProcessChangedMaterial(&material);
    m_isStale = true;
}

MaterialLook Model::Look(MaterialId id)
{
    const Material& material = MaterialOf(id);
    return {material.GetName(),
            material.GetDiffuse(),
            material.GetSpecular(),
            material.GetEmissive(),
            material.GetShininess(),
            (material.GetFlags() & MaterialFlagNoCull) != 0,
            (material.GetFlags() & MaterialFlagUnlit) != 0,
            material.pixels != nullptr || !material.textureName.empty()};
}

TextId Model::AddText(const TextValues& values)
{
    Host::Presentation& presentation = Opened();
    PlacedText placed;
    placed.values = values;
    Node* followed = values.node ? &NodeOf(*values.node) : nullptr;
    if (values.place)
    {
        followed = placed.anchor = new Node(&presentation.GetScene());
        presentation.GetScene().GetRoot()->AddChild(followed, false);
        Transform place;
        place.SetPosition(*values.place);
        followed->SetLocal(place);
    }
    placed.text = std::make_unique<Text>(values.font, values.size, values.text, &presentation.GetForeground(),
                                         followed != nullptr, followed != nullptr, 0);
    placed.text->SetColor(values.color);
    if (followed)
    {
        placed.text->GetInstance(0)->Set3DParent(followed);
    }
    m_texts.emplace(++m_lastId, std::move(placed));
    m_isStale = true;
    return m_lastId;
}

Model::PlacedText& Model::TextOf(TextId id)
{
    Opened();
    const auto found = m_texts.find(id);
    if (found == m_texts.end())
    {
        throw Refused(Trouble::Closed, "the text has been removed");
    }
    return found->second;
}

void Model::SetText(TextId id, const std::string& text)
{
    TextOf(id).text->Update(text);
}

void Model::RemoveText(TextId id)
{
    PlacedText& placed = TextOf(id);
    if (placed.anchor)
    {
        m_presentation->GetScene().DeleteSubtree(placed.anchor);
        m_isStale = true;
    }
    m_texts.erase(id);
}

void Model::LayOut(PictureSize size)
{
    if (m_map)
    {
        m_map->Layout(size.width, size.height);
    }
    for (auto& [id, placed] : m_texts)
    {
        Shape2DNode* const node = placed.text->GetInstance(0);
        if (!node || placed.anchor || placed.values.node)
        {
            continue;
        }
        const int width = placed.text->GetRight() - placed.text->GetLeft();
        const int height = placed.text->GetTop() - placed.text->GetBottom();
        const int left = placed.values.x < 0 ? size.width + placed.values.x - width : placed.values.x;
        const int top = placed.values.y < 0 ? size.height + placed.values.y - height : placed.values.y;
        Transform place;
        place.SetPosition(Vector(static_cast<float>(left), static_cast<float>(size.height - top - height), kTextZ));
        node->SetLocal(place);
    }
}

} // namespace OV::Python
