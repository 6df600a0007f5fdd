#include "orvane/scene/Scene.h"

#include "orvane/base/detail/Walk.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/NodeListener.h"
#include "orvane/scene/detail/Erase.h"
#include "orvane/scene/detail/TreeCursor.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace OV
{

namespace
{

/// The first entry of exactly this name, or null.
template <class T>
T* FindByName(const std::vector<T*>& list, const std::string& name)
{
    for (T* entry : list)
    {
        if (entry->GetName() == name)
        {
            return entry;
        }
    }
    return nullptr;
}

/// Suspends one after the other, whatever a texture loader that is given textures back does to
/// the list meanwhile.
template <class T>
void SuspendAll(const std::vector<T*>& list, const detail::Walk& walk, const Scene* scene)
{
    for (std::size_t i = 0; !walk.IsGone(scene) && i < list.size();)
    {
        T* const present = list[i];
        present->Suspend();
        if (walk.IsGone(scene))
        {
            return;
        }
        // From the start where the list has changed: what is suspended already takes no harm.
        i = i < list.size() && list[i] == present ? i + 1 : 0;
    }
}

template <class T>
void SuspendAll(const std::set<T*>& list, const detail::Walk& walk, const Scene* scene)
{
    for (T* last = nullptr; !walk.IsGone(scene);)
    {
        const auto next = last ? list.upper_bound(last) : list.begin();
        if (next == list.end())
        {
            return;
        }
        last = *next;
        last->Suspend();
    }
}

} // namespace

Scene::Scene() :
    m_treeWalks(std::make_unique<detail::TreeWalks>())
{
    Initialize();
}

bool Scene::AddMaterial(Material* material)
{
    if (!material || material->scene)
    {
        return false;
    }
    (material->IsTransparent() ? alphaMaterials : optimizedMaterials).push_back(material);
    material->scene = this;
    MarkDirty();
    return true;
}

bool Scene::RemoveMaterial(Material* material)
{
    if (!detail::EraseFirst(optimizedMaterials, material) &&
        !detail::EraseFirst(alphaMaterials, material) && !TakeBack(material))
    {
        return false;
    }
    material->scene = nullptr;
    MarkDirty();
    return true;
}

Material* Scene::GetMaterial(const std::string& name)
{
    Material* const opaque = FindByName(optimizedMaterials, name);
    return opaque ? opaque : FindByName(alphaMaterials, name);
}

bool Scene::ProcessChangedMaterial(Material* material)
{
    return RemoveMaterial(material) && AddMaterial(material);
}

bool Scene::AddLineStyle(LineStyle* style)
{
    if (!style || style->scene)
    {
        return false;
    }
    lineStyles.push_back(style);
    style->scene = this;
    MarkDirty();
    return true;
}

bool Scene::RemoveLineStyle(LineStyle* style)
{
    if (!detail::EraseFirst(lineStyles, style) && !TakeBack(style))
    {
        return false;
    }
    style->scene = nullptr;
    MarkDirty();
    return true;
}

LineStyle* Scene::GetLineStyle(const std::string& name) const
{
    return FindByName(lineStyles, name);
}

LineStyle* Scene::GetLineStyle(const Color&) const
{
    // Required as it stands: no search by colour exists.
    return nullptr;
}

bool Scene::AddMesh(Mesh* mesh)
{
    if (!mesh)
    {
        return false;
    }
    LeaveOtherScene(mesh);
    if (!IsAmong(m_meshes, mesh))
    {
        m_meshes.push_back(mesh);
        try
        {
            if (m_meshSet)
            {
                m_meshSet->insert(mesh);
            }
        }
        catch (...)
        {
            m_meshes.pop_back();
            throw;
        }
        // What a Clear has put aside is not deleted any more.
        TakeBack(mesh);
        mesh->m_placeInScene = static_cast<std::uint32_t>(m_meshes.size() - 1);
        ++m_meshesRevision;
    }
    mesh->scene = this;
    MarkDirty();
    return true;
}

bool Scene::RemoveMesh(Mesh* mesh)
{
    if (mesh && IsAmong(m_meshes, mesh))
    {
        TakeOut(m_meshes, mesh);
        ++m_meshesRevision;
        if (m_meshSet)
        {
            m_meshSet->erase(mesh);
        }
    }
    else if (!mesh || !TakeBack(mesh))
    {
        return false;
    }
    ReleaseMesh(mesh);
    MarkDirty();
    return true;
}

bool Scene::IsAmong(const std::vector<Mesh*>& list, const Mesh* mesh)
{
    return mesh->m_placeInScene < list.size() && list[mesh->m_placeInScene] == mesh;
}

void Scene::TakeOut(std::vector<Mesh*>& list, const Mesh* mesh)
{
    list.back()->m_placeInScene = mesh->m_placeInScene;
    list[mesh->m_placeInScene] = list.back();
    list.pop_back();
}

void Scene::SortMeshes()
{
    std::sort(m_meshes.begin(), m_meshes.end(), std::less<>());
    for (std::size_t i = 0; i < m_meshes.size(); ++i)
    {
        m_meshes[i]->m_placeInScene = static_cast<std::uint32_t>(i);
    }
}

const std::set<Mesh*>& Scene::GetMeshes() const
{
    if (!m_meshSet)
    {
        m_meshSet = std::make_unique<std::set<Mesh*>>(m_meshes.begin(), m_meshes.end());
    }
    return *m_meshSet;
}

bool Scene::AddLine(Line* line)
{
    if (!line || lines.count(line) != 0)
    {
        return false;
    }
    LeaveOtherScene(line);
    lines.insert(line);
    line->scene = this;
    MarkDirty();
    return true;
}

bool Scene::RemoveLine(Line* line)
{
    if (lines.erase(line) == 0 && !TakeBackLine(line))
    {
        return false;
    }
    ReleaseMesh(line);
    MarkDirty();
    return true;
}

void Scene::LeaveOtherScene(Mesh* mesh)
{
    Scene* const other = mesh->scene;
    if (!other || other == this)
    {
        return;
    }
    other->RemoveMesh(mesh);
    if (mesh->HasType(NodeTypeLine))
    {
        other->RemoveLine(static_cast<Line*>(mesh));
    }
}

void Scene::ReleaseMesh(Mesh* mesh)
{
    // A line that was also given to SetScene stands among the meshes as well, and has to be
    // able to leave both.
    const bool isLine = mesh->HasType(NodeTypeLine);
    if (!IsAmong(m_meshes, mesh) && !(isLine && lines.count(static_cast<Line*>(mesh)) != 0))
    {
        mesh->scene = nullptr;
    }
}

bool Scene::AddLightNode(LightNode* light)
{
    if (!light || detail::Contains(lights, light))
    {
        return false;
    }
    lights.push_back(light);
    MarkDirty();
    return true;
}

bool Scene::RemoveLightNode(LightNode* light)
{
    if (!detail::EraseFirst(lights, light))
    {
        return false;
    }
    MarkDirty();
    return true;
}

void Scene::SetCamera(CameraNode* camera)
{
    if (overrideCamera)
    {
        detail::EraseAny(overrideCamera->m_overriddenScenes, this);
    }
    overrideCamera = camera;
    if (overrideCamera)
    {
        overrideCamera->m_overriddenScenes.push_back(this);
    }
}

void Scene::Suspend()
{
    const detail::Walk walk(this, detail::Walk::Other);
    SuspendAll(lineStyles, walk, this);
    SuspendAll(lines, walk, this);
    SuspendAll(optimizedMaterials, walk, this);
    SuspendAll(alphaMaterials, walk, this);
    // By address, whatever the end of render data leads to meanwhile.
    Mesh* last = nullptr;
    std::size_t next = 0;
    for (bool isInOrder = false; !walk.IsGone(this);)
    {
        if (!isInOrder)
        {
            SortMeshes();
            const auto behind = std::upper_bound(m_meshes.begin(), m_meshes.end(), last, std::less<>());
            next = static_cast<std::size_t>(behind - m_meshes.begin());
        }
        if (next == m_meshes.size())
        {
            return;
        }
        last = m_meshes[next++];
        const std::uint64_t revision = m_meshesRevision;
        last->Suspend();
        isInOrder = !walk.IsGone(this) && m_meshesRevision == revision;
    }
}

void Scene::Resume()
{
    for (LineStyle* style : lineStyles)
    {
        style->Resume();
    }
    for (Line* line : lines)
    {
        line->Resume();
    }
    for (Material* material : optimizedMaterials)
    {
        material->Resume();
    }
    for (Material* material : alphaMaterials)
    {
        material->Resume();
    }
    for (Mesh* mesh : m_meshes)
    {
        mesh->Resume();
    }
    MarkDirty();
}

void Scene::GetTextureStats(int& first, int& second, int& third) const
{
    first = textureStats[0];
    second = textureStats[1];
    third = textureStats[2];
}

void Scene::OverrideViewport(bool enable, int x, int y, int width, int height)
{
    viewportOverridden = enable;
    viewport = {x, y, width, height};
}

bool Scene::GetOverrideViewport(int& x, int& y, int& width, int& height) const
{
    x = viewport.x;
    y = viewport.y;
    width = viewport.width;
    height = viewport.height;
    return viewportOverridden;
}

void Scene::AddNodeListener(NodeListener* listener)
{
    if (!listener || listener->m_scene == this)
    {
        return;
    }
    if (listener->m_scene)
    {
        listener->m_scene->RemoveNodeListener(listener);
    }
    m_nodeListeners.push_back(listener);
    listener->m_scene = this;
}

void Scene::RemoveNodeListener(NodeListener* listener)
{
    if (listener && listener->m_scene == this)
    {
        detail::EraseFirst(m_nodeListeners, listener);
        listener->m_scene = nullptr;
    }
}

void Scene::TellNodeChanged(Node& node, NodeChange change)
{
    for (NodeListener* listener : m_nodeListeners)
    {
        listener->NodeChanged(node, change);
    }
}

} // namespace OV
