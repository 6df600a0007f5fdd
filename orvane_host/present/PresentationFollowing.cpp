// What is kept about the scene, and follows what its host does to it.

#include "orvane_host/present/detail/PresentationImpl.h"
#include "orvane_host/present/detail/SceneBase.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/Node.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <set>
#include <vector>

namespace OV::Host
{

void Presentation::Impl::Refresh()
{
    FollowScene();
    m_isSceneOther = false;
    TakeBackAll();
    ForgetGone();
    visibility->Refresh();
    UpdateGlobals();
    CountModel();
    DoAllAgain();
}

Presentation::Impl& Presentation::Impl::Followed()
{
    FollowScene();
    if (m_isSceneOther || m_lostNodes->AreThere())
    {
        Refresh();
    }
    return *this;
}

void Presentation::Impl::FollowScene()
{
    CoreContext& context = *app.GetContext();
    if (!context.GetScene())
    {
        context.SetScene(std::make_unique<Scene>());
    }
    const bool isOther = m_lostNodes->GetListenedScene() != &World();
    if (isOther)
    {
        m_isHostsScene = true;
        nodes.clear();
        meshes.clear();
        files.clear();
        m_contents.clear();
        m_highlights.clear();
        m_labels.clear();
        const double unit = m_isUnitTold ? report.metresPerUnit : 0.0;
        report = ImportReport();
        report.metresPerUnit = unit;
        StandOn(World());
    }
    const bool isWhole = Detail::HasBase(World());
    if (!isWhole)
    {
        Detail::GiveBase(World());
        LightNode* const light = OwnLight();
        if (light && !light->GetParent())
        {
            // A camera that goes by itself leaves the light that moved with it.
            World().GetCameraNode()->AddChild(light, false);
        }
    }
    m_isSceneOther = m_isSceneOther || isOther || !isWhole;
}

void Presentation::Impl::ForgetPaths()
{
    m_paths.reset();
    m_lostNodes->Restart();
}

void Presentation::Impl::TakeBackAll()
{
    m_lines->Forget();
    World().RemoveLineStyle(m_style.Get());
    m_section->Forget();
}

void Presentation::Impl::ForgetGone()
{
    const std::vector<const Node*> present = AllNodes();
    // Nodes that came since may have the addresses of those that went.
    const std::set<const Node*> lost = m_lostNodes->Take();
    const auto isGone = [&](const Node* node)
    { return lost.count(node) != 0 || !std::binary_search(present.begin(), present.end(), node); };
    nodes.erase(std::remove_if(nodes.begin(), nodes.end(),
                               [&](const ImportedNode& node) { return isGone(node.node); }), nodes.end());
    ForgetPaths();
    const PointerSpan<Mesh> all = World().EachMesh();
    std::vector<const Mesh*> known(all.begin(), all.end());
    std::sort(known.begin(), known.end());
    meshes.erase(std::remove_if(meshes.begin(), meshes.end(),
                                [&](const ImportedMesh& mesh)
                                { return !std::binary_search(known.begin(), known.end(), mesh.mesh); }),
                 meshes.end());
    for (auto entry = m_highlights.begin(); entry != m_highlights.end();)
    {
        entry = isGone(entry->first) ? m_highlights.erase(entry) : std::next(entry);
    }
    m_labels.erase(std::remove_if(m_labels.begin(), m_labels.end(),
                                  [&](const NodeLabel& label) { return isGone(label.node); }), m_labels.end());
    for (std::size_t i = 0; i < files.size(); ++i)
    {
        std::vector<Node*>& tops = m_contents[i].tops;
        files[i].top = files[i].top && isGone(files[i].top) ? nullptr : files[i].top;
        tops.erase(std::remove_if(tops.begin(), tops.end(), isGone), tops.end());
    }
}

void Presentation::Impl::DoAllAgain()
{
    MakeLight();
    PlaceLabels();
    Changes all;
    all.section = all.materials = all.lines = all.view = true;
    UpdateScene(all);
    UpdateHighlights();
    World().MarkDirty();
    m_isPictureChanged = true;
}

std::vector<const Node*> Presentation::Impl::AllNodes() const
{
    std::vector<const Node*> found = {World().GetRoot()};
    for (std::size_t i = 0; i < found.size(); ++i)
    {
        const NodeChildren children = found[i]->EachChild();
        found.insert(found.end(), children.begin(), children.end());
    }
    std::sort(found.begin(), found.end());
    return found;
}

} // namespace OV::Host
