#pragma once

#include "orvane/renderdata/RenderPass.h"
#include "orvane/renderdata/detail/PlainDraw.h"

#include <cstddef>

namespace OV
{

class EffectES20;
class MaterialES20;
class MeshStyleES20;
struct RenderItemES20;

} // namespace OV

namespace OV::detail
{

/// Draws items of a material as far as they are what most meshes are, without a call of a virtual operation: by
/// the list that the material keeps, where neither the mesh nor its list of nodes is looked at, or as many
/// at once as come one after another.
class PlainDraws
{
public:
    /// The items to come are of this style, which is applied.
    void Begin(MeshStyleES20* style, RenderPass pass);

    /// Draws items by the list from the first one on, none where the first is not the next of the list. Not to be
    /// asked once anything of a scene has died since they were listed; likewise Take.
    /// @return how many.
    std::size_t Draw(const RenderItemES20* items, const RenderItemES20* end);

    /// Takes an item to be drawn with those that come after it, by the next Flush.
    /// @return false where it has to be drawn by itself.
    bool Take(const RenderItemES20& item);

    /// Draws what was taken. To be called before anything else is drawn or applied.
    void Flush()
    {
        if (m_takenCount > 0)
        {
            DrawTaken();
        }
    }

    /// Draws the whole list.
    /// @return false, with nothing done, where its meshes have to be drawn one by one.
    bool DrawAll();

private:
    using DrawBy = void (*)(EffectES20& effect, PlainDraw* draws, PlainDraw* end);

    /// How an effect of one of the engine's own classes, or one that has said how it draws, draws plain meshes in one
    /// go; null for what doesn't.
    static DrawBy WayOf(const EffectES20& effect);
    static void DrawByStreams(EffectES20& effect, PlainDraw* draws, PlainDraw* end);

    void DrawTaken();

    static constexpr std::size_t kMostTaken = 64;

    MaterialES20* m_material = nullptr; ///< null where all items have to be drawn by themselves
    EffectES20* m_effect = nullptr;
    DrawBy m_drawBy = nullptr;
    bool m_followsList = false; ///< whether the next item may be the next of the list
    std::size_t m_place = 0;    ///< in its list
    std::size_t m_takenCount = 0;
    PlainDraw m_taken[kMostTaken];
};

} // namespace OV::detail
