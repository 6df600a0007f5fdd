#pragma once

#include "orvane/renderdata/RenderPass.h"

#include <cstddef>

namespace OV
{

class BasicMaterialEffectES20;
class MaterialES20;
class MeshStyleES20;
struct RenderItemES20;

} // namespace OV

namespace OV::detail
{

/// Draws items of a material by the list that the material keeps, as far as they are what most meshes
/// are: neither the mesh nor its list of nodes is looked at, and no virtual operation is called.
class PlainDraws
{
public:
    /// The items to come are of this style, which is applied.
    void Begin(MeshStyleES20* style, RenderPass pass);

    /// Draws items from the first one on, none where the first has to be drawn by itself. Not to be
    /// asked once anything of a scene has died since they were listed.
    /// @return how many.
    std::size_t Draw(const RenderItemES20* items, const RenderItemES20* end);

    /// Draws the whole list.
    /// @return false, with nothing done, where its meshes have to be drawn one by one.
    bool DrawAll();

private:
    MaterialES20* m_material = nullptr; ///< null where there is no list that holds for what comes
    BasicMaterialEffectES20* m_effect = nullptr;
    std::size_t m_place = 0; ///< in its list
};

} // namespace OV::detail
