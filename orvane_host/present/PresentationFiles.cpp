#include "orvane_host/import/detail/SceneMerge.h"
#include "orvane_host/present/detail/PresentationImpl.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

namespace OV::Host
{

namespace
{

/// All nodes of a tree, without recursion: it may be deeper than the stack.
std::vector<const Node*> NodesOf(const std::vector<Node*>& tops)
{
    std::vector<const Node*> found(tops.begin(), tops.end());
    for (std::size_t i = 0; i < found.size(); ++i)
    {
        const NodeChildren children = found[i]->EachChild();
        found.insert(found.end(), children.begin(), children.end());
    }
    return found;
}

/// Forgets the names of what doesn't stand in the tree of a model below the root, and comes to no other scene.
void KeepNodesOfTree(ImportResult& model)
{
    std::vector<Node*> tops;
    if (const Node* const root = model.scene->GetRoot())
    {
        const NodeChildren children = root->EachChild();
        tops.assign(children.begin(), children.end());
    }
    std::vector<const Node*> known = NodesOf(tops);
    known.erase(std::remove(known.begin(), known.end(), model.scene->GetCameraNode()), known.end());
    std::sort(known.begin(), known.end());
    model.nodes.erase(std::remove_if(model.nodes.begin(), model.nodes.end(),
                                     [&](const ImportedNode& node)
                                     { return !std::binary_search(known.begin(), known.end(), node.node); }),
                      model.nodes.end());
}

/// Deletes what no node shows any more, and the materials that nothing is left of.
void DeleteUnused(const std::set<Mesh*>& meshes, Scene& scene)
{
    std::set<Material*> materials;
    for (Mesh* const mesh : meshes)
    {
        if (mesh->EachNode().empty())
        {
            materials.insert(mesh->GetMaterial());
            delete mesh;
        }
    }
    for (Material* const material : materials)
    {
        if (material && material->EachMesh().empty() && scene.RemoveMaterial(material))
        {
            delete material;
        }
    }
}

} // namespace

void Presentation::Impl::NumberNodes()
{
    // Of more nodes some share an identifier; they are rarely neighbours.
    constexpr std::size_t most = 0xFFFF;
    // Those of a host's scene stand before all files, and keep the numbers that it gave them.
    const auto first = std::find_if(nodes.begin(), nodes.end(),
                                    [&](const ImportedNode& node) { return node.node == files.front().top; });
    for (auto imported = first; imported != nodes.end(); ++imported)
    {
        imported->node->SetUserData(static_cast<int>(static_cast<std::size_t>(imported - nodes.begin()) % most));
    }
}

void Presentation::Impl::TakeFirstFile(const std::string& path)
{
    if (nodes.empty())
    {
        return;
    }
    Content content;
    for (Node* const top : World().GetRoot()->EachChild())
    {
        if (top != &Camera())
        {
            content.tops.push_back(top);
        }
    }
    content.report = report;
    m_contents.push_back(std::move(content));
    files.push_back({path, nodes.front().node});
    NumberNodes();
}

bool Presentation::Impl::Add(ImportResult model, std::string& error)
{
    return Replace(files.size(), std::move(model), error);
}

bool Presentation::Impl::Replace(std::size_t place, ImportResult model, std::string& error)
{
    if (model)
    {
        KeepNodesOfTree(model);
    }
    if (!model || model.nodes.empty())
    {
        error = model ? "the model holds no node" : model.error.Line();
        return false;
    }
    if (place > files.size())
    {
        error = "there is no file at that place";
        return false;
    }
    TakeBackAll();
    if (place < files.size())
    {
        TakeFileOut(place);
        CountFiles();
    }
    PutFile(place, std::move(model));
    CountFiles();
    DoAllAgain();
    return true;
}

bool Presentation::Impl::Remove(std::size_t place)
{
    if (place >= files.size())
    {
        return false;
    }
    TakeBackAll();
    TakeFileOut(place);
    CountFiles();
    DoAllAgain();
    return true;
}

void Presentation::Impl::TakeFileOut(std::size_t place)
{
    // A host may have deleted what has no name, such as lights.
    ForgetGone();
    // What comes at the address of what goes is another one.
    m_materials->TakeBack();
    const std::vector<const Node*> gone = NodesOf(m_contents[place].tops);
    std::set<Mesh*> shown;
    for (const Node* const node : gone)
    {
        if (const auto* const meshNode = dynamic_cast<const MeshNode*>(node))
        {
            const PointerSpan<Mesh> meshes = meshNode->EachMesh();
            shown.insert(meshes.begin(), meshes.end());
        }
    }
    for (Node* const top : m_contents[place].tops)
    {
        World().DeleteSubtree(top);
    }
    DeleteUnused(shown, World());
    files.erase(files.begin() + static_cast<std::ptrdiff_t>(place));
    m_contents.erase(m_contents.begin() + static_cast<std::ptrdiff_t>(place));
    ForgetGone();
    visibility->Refresh();
}

void Presentation::Impl::PutFile(std::size_t place, ImportResult model)
{
    const bool isFirst = files.empty() && !report.hasBox && !m_isUnitTold;
    const bool areUnitsKnown = report.metresPerUnit > 0.0 && model.report.metresPerUnit > 0.0;
    Content content;
    content.scale = areUnitsKnown && !isFirst ? model.report.metresPerUnit / report.metresPerUnit : 1.0;
    content.report = model.report;
    if (isFirst)
    {
        report.metresPerUnit = model.report.metresPerUnit;
    }
    model.nodes.front().name = UniqueTopName(nodes, model);
    const std::string path = model.error.file;
    if (OwnLight() && !model.lights.empty())
    {
        // It stands in for those of files.
        m_lightWatch.Stop();
        World().DeleteSubtree(m_light);
    }
    content.tops = MoveInto(World(), model, content.scale, m_nextFile++);
    // Before the nodes of the files that come after it.
    auto next = nodes.end();
    if (place < files.size())
    {
        next = std::find_if(nodes.begin(), nodes.end(),
                            [&](const ImportedNode& node) { return node.node == files[place].top; });
    }
    Node* const top = model.nodes.front().node;
    nodes.insert(next, model.nodes.begin(), model.nodes.end());
    ForgetPaths();
    meshes.insert(meshes.end(), model.meshes.begin(), model.meshes.end());
    files.insert(files.begin() + static_cast<std::ptrdiff_t>(place), {path, top});
    m_contents.insert(m_contents.begin() + static_cast<std::ptrdiff_t>(place), std::move(content));
    visibility->Refresh();
    UpdateGlobals();
    NumberNodes();
}

void Presentation::Impl::CountFiles()
{
    UpdateGlobals();
    if (m_contents.empty() || m_isHostsScene)
    {
        CountModel();
        TellPlace();
        return;
    }
    ImportReport sum;
    sum.format = m_contents.front().report.format;
    // These stay, also where the file that brought them has gone.
    sum.metresPerUnit = report.metresPerUnit;
    sum.place = report.place;
    sum.north = report.north;
    for (const Content& content : m_contents)
    {
        AddReport(sum, content.report, content.scale);
    }
    report = std::move(sum);
    TellPlace();
}

void Presentation::Impl::TellPlace()
{
    const auto tells = [&](auto what)
    {
        const auto found = std::find_if(m_contents.begin(), m_contents.end(),
                                        [&](const Content& content) { return (content.report.*what).has_value(); });
        if (found != m_contents.end())
        {
            report.*what = found->report.*what;
        }
    };
    tells(&ImportReport::place);
    tells(&ImportReport::north);
}

} // namespace OV::Host
