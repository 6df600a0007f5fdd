#pragma once

#include "orvane/base/Object.h"
#include "orvane/base/WatchedPtr.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/NodeLineStyle.h"
#include "orvane/scene/NodeMaterial.h"
#include "orvane/scene/RawLine.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace OV::Test
{

template <class T>
bool Has(const std::vector<T*>& list, const T* entry)
{
    return std::find(list.begin(), list.end(), entry) != list.end();
}

/// Everything of a test that is alive, whoever owns it, and what must hold between all of it
/// whatever was done. Objects enter and leave by being Tracked; roots and default cameras,
/// which scenes make themselves, are found through their scenes.
class World
{
public:
    /// @return the first rule that is broken, in words; empty when all hold.
    std::string Violation() const;

    /// The tracked nodes, and the roots and default cameras of the scenes, strays included.
    std::vector<Node*> AllNodes() const;

    /// To be called before a scene deletes its tree: a default camera that was taken out of it
    /// stays alive, and is the test's from then on.
    void KeepStrayCamera(const Scene& scene);

    bool IsEmpty() const;

    template <class T>
    void Enter(T* object)
    {
        ForEachListOf<T>([object](auto& list) { list.push_back(object); });
    }

    template <class T>
    void Leave(T* object)
    {
        ForEachListOf<T>([object](auto& list) { list.erase(std::find(list.begin(), list.end(), object)); });
        if constexpr (std::is_base_of_v<MeshNode, T>)
        {
            styledNodes.erase(object);
        }
    }

    std::vector<Scene*> scenes;
    std::vector<Node*> nodes;
    std::vector<MeshNode*> meshNodes;
    std::vector<CameraNode*> cameras;
    std::vector<LightNode*> lights;
    /// Lines too.
    std::vector<Mesh*> meshes;
    std::vector<Line*> lines;
    std::vector<Material*> materials;
    std::vector<NodeMaterial*> nodeMaterials;
    std::vector<LineStyle*> lineStyles;
    std::vector<NodeLineStyle*> nodeLineStyles;
    std::vector<RawMesh*> geometries;
    std::vector<Object*> objects;

    /// What the test itself holds.
    std::vector<std::shared_ptr<RawMesh>> heldGeometries;
    /// Default cameras of scenes that have gone on without them.
    std::vector<WatchedPtr<CameraNode>> strayCameras;
    /// Nodes that a style was ever bound to: it may have cleared the flag under a material.
    std::set<const MeshNode*> styledNodes;

private:
    template <class T, class Entry, class Do>
    static void If(std::vector<Entry*>& list, Do action)
    {
        if constexpr (std::is_base_of_v<Entry, T>)
        {
            action(list);
        }
    }

    template <class T, class Do>
    void ForEachListOf(Do action)
    {
        If<T>(scenes, action);
        If<T>(nodes, action);
        If<T>(meshNodes, action);
        If<T>(cameras, action);
        If<T>(lights, action);
        If<T>(meshes, action);
        If<T>(lines, action);
        If<T>(materials, action);
        If<T>(nodeMaterials, action);
        If<T>(lineStyles, action);
        If<T>(nodeLineStyles, action);
        If<T>(geometries, action);
        If<T>(objects, action);
    }

    std::string TreeViolation() const;
    std::string SceneViolation(const Scene& scene) const;
    std::string OwnershipViolation() const;
    std::string MeshViolation() const;
    std::string MaterialViolation() const;
    std::string NodeMaterialViolation() const;
    std::string LineViolation() const;
    std::string ObjectViolation() const;
    std::string GeometryViolation() const;
};

/// Anything of a scene that a world knows to be alive.
template <class Base>
class Tracked : public Base
{
public:
    template <class... Arguments>
    explicit Tracked(World& world, Arguments&&... arguments)
        : Base(std::forward<Arguments>(arguments)...)
        , m_world(world)
    {
        m_world.Enter<Base>(this);
    }

    ~Tracked() override { m_world.Leave<Base>(this); }

private:
    World& m_world;
};

} // namespace OV::Test
