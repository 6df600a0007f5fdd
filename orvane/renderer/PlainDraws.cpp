#include "orvane/renderer/detail/PlainDraws.h"

#include "orvane/effects/AdvancedMaterialEffectES20.h"
#include "orvane/effects/AdvancedMaterialPhongEffectES20.h"
#include "orvane/effects/BasicMaterialEffectES20.h"
#include "orvane/effects/DepthIdPassEffectES20.h"
#include "orvane/effects/MaterialEffectES20.h"
#include "orvane/effects/MonotoneEffectES20.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/RenderItemES20.h"
#include "orvane/renderdata/detail/PlainDraw.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"

#include <typeinfo>
#include <vector>

namespace OV::detail
{

namespace
{

template <class Effect>
void DrawByClass(EffectES20& effect, PlainDraw* draws, PlainDraw* end)
{
    static_cast<Effect&>(effect).DrawPlain(draws, end);
}

} // namespace

PlainDraws::DrawBy PlainDraws::WayOf(const EffectES20& effect)
{
    struct Way
    {
        const std::type_info& type;
        DrawBy draw;
    };
    // A class of the host's may change each operation.
    static constexpr Way ways[] = {
        {typeid(BasicMaterialEffectES20), &DrawByClass<BasicMaterialEffectES20>},
        {typeid(AdvancedMaterialEffectES20), &DrawByClass<AdvancedMaterialEffectES20>},
        {typeid(AdvancedMaterialPhongEffectES20), &DrawByClass<AdvancedMaterialPhongEffectES20>},
        {typeid(MonotoneEffectES20), &DrawByClass<MonotoneEffectES20>},
        {typeid(DepthIdPassEffectES20), &DrawByClass<DepthIdPassEffectES20>},
    };
    const std::type_info& type = typeid(effect);
    for (const Way& way : ways)
    {
        if (way.type == type)
        {
            return way.draw;
        }
    }
    // All that materials are drawn by are of this class.
    return static_cast<const MaterialEffectES20&>(effect).m_positionAttribute >= 0 ? &DrawByStreams : nullptr;
}

void PlainDraws::DrawByStreams(EffectES20& effect, PlainDraw* draws, PlainDraw* end)
{
    static_cast<MaterialEffectES20&>(effect).DrawPlainByStreams(draws, end);
}

void PlainDraws::Begin(MeshStyleES20* style, RenderPass pass)
{
    m_material = nullptr;
    m_followsList = false;
    m_place = 0;
    // A class of the host's may draw in another way.
    if (!style || typeid(*style) != typeid(MaterialES20))
    {
        return;
    }
    auto* const material = static_cast<MaterialES20*>(style);
    EffectES20* const effect = material->MaterialES20::GetShader(pass);
    constexpr unsigned int special = MaterialFlagAlwaysPass | MaterialFlagPoints;
    const DrawBy drawBy = effect && material->currentEffect == effect ? WayOf(*effect) : nullptr;
    if (drawBy && (material->material->GetFlags() & special) == 0)
    {
        m_material = material;
        m_effect = effect;
        m_drawBy = drawBy;
        m_followsList = true;
    }
}

std::size_t PlainDraws::Draw(const RenderItemES20* items, const RenderItemES20* end)
{
    m_followsList = m_followsList && m_material->ListHolds();
    if (!m_followsList)
    {
        return 0;
    }
    std::vector<PlainDraw>& list = m_material->m_list.items;
    PlainDraw* const first = list.data() + m_place;
    PlainDraw* const last = list.data() + list.size();
    PlainDraw* draw = first;
    const RenderItemES20* item = items;
    while (draw != last && draw->node && item != end && item->mesh == draw->mesh && item->style == m_material &&
           !item->specificNode)
    {
        ++draw;
        ++item;
    }
    if (draw == first)
    {
        // Where the item is the next of the list after all, those behind it may be drawn from it.
        m_followsList = draw != last && item->mesh == draw->mesh && !item->specificNode;
        m_place += m_followsList ? 1 : 0;
        return 0;
    }
    Flush();
    m_place += static_cast<std::size_t>(draw - first);
    m_drawBy(*m_effect, first, draw);
    return static_cast<std::size_t>(draw - first);
}

bool PlainDraws::Take(const RenderItemES20& item)
{
    if (!m_material || item.specificNode || item.mesh->GetMaterial() != m_material->material ||
        item.mesh->UsingDrawID())
    {
        return false;
    }
    // Only Prepare puts a mesh on the list, and it has seen to the render data.
    auto* const data = static_cast<MeshES20*>(item.mesh->GetRenderData());
    if (!data)
    {
        return false;
    }
    const PlainDraw draw = PlainDrawOf(item.mesh, data);
    if (!draw.node)
    {
        return false;
    }
    m_taken[m_takenCount++] = draw;
    if (m_takenCount == kMostTaken)
    {
        DrawTaken();
    }
    return true;
}

void PlainDraws::DrawTaken()
{
    const std::size_t count = m_takenCount;
    m_takenCount = 0;
    m_drawBy(*m_effect, m_taken, m_taken + count);
}

bool PlainDraws::DrawAll()
{
    if (!m_material || !m_material->m_list.arePlain || !m_material->ListHolds())
    {
        return false;
    }
    std::vector<PlainDraw>& list = m_material->m_list.items;
    m_drawBy(*m_effect, list.data(), list.data() + list.size());
    return true;
}

} // namespace OV::detail
