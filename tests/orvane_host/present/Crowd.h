#pragma once

#include "orvane_host/import/ImportResult.h"
#include "orvane/math/Vector.h"

#include <memory>
#include <string>
#include <vector>

namespace OV
{

class Material;
class MeshNode;
class NodeMaterial;
class RawMesh;
class Scene;

} // namespace OV

namespace OV::Test
{

class Dice;

/// Many small solids side by side that share a few materials: turned, mirrored, pulled out of
/// shape, some at several nodes, some below others, with and without normals, textures and colours.
///
/// What is done to it by the same dice makes the same of it again.
class Crowd
{
public:
    /// @param colors how many solid materials there are besides that differ in their colours alone. With them their
    ///        fields are edited too.
    explicit Crowd(int count, unsigned int seed = 1, int colors = 0);
    ~Crowd();

    /// Both go to the presentation.
    std::unique_ptr<Scene> scene;
    std::vector<Host::ImportedNode> named;

    std::size_t GetCount() const { return m_nodes.size(); }
    MeshNode& GetNode(std::size_t index) const { return *m_nodes[index]; }
    Material& GetMaterial(std::size_t index) const { return *m_materials[index]; }

    /// Moves, hides or shows, deletes or adds, or changes the material or the geometry of something.
    void Edit(Dice& dice);

private:
    void Add(Dice& dice);
    void EditMaterial(Dice& dice);
    void TakeOutOrPutBack(Material& material);
    Material& AnyMaterial(Dice& dice) const;
    std::shared_ptr<RawMesh> MakeSolid(Dice& dice) const;

    Scene* m_scene;
    std::vector<Material*> m_materials;
    std::vector<std::unique_ptr<Material>> m_apart; ///< those that are out of the scene
    std::vector<MeshNode*> m_nodes;
    NodeMaterial* m_paint; ///< in the scene
    int m_next = 0;
    int m_columns;
    int m_colors;
};

} // namespace OV::Test
