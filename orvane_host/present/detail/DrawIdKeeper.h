#pragma once

#include "orvane/renderdata/RenderItemES20.h"

#include <vector>

namespace OV
{

class Material;
class Scene;

} // namespace OV

namespace OV::Host::Detail
{

/// Gives draw IDs back that being drawn uses up, at the end of a scope: who draws besides the
/// frame must not take a mesh out of it.
class DrawIdKeeper
{
public:
    /// Before anything is listed, which uses up the IDs of materials.
    explicit DrawIdKeeper(const Scene& scene);

    /// Before they are drawn, which uses up the IDs of meshes.
    void Keep(const std::vector<RenderItemES20>& items);

    ~DrawIdKeeper();

    DrawIdKeeper(const DrawIdKeeper&) = delete;
    DrawIdKeeper& operator=(const DrawIdKeeper&) = delete;

private:
    unsigned int m_id;
    std::vector<Material*> m_materials;
    std::vector<Mesh*> m_meshes;
};

} // namespace OV::Host::Detail
