#include "orvane/renderdata/LineStyleES20.h"

#include "orvane/effects/EffectCache.h"
#include "orvane/effects/SolidLineEffectES20.h"
#include "orvane/renderdata/LineES20.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/NodeLineStyle.h"

#include <typeinfo>

namespace OV
{

namespace
{

/// Null for what is none, as a material may have left it. The cast, which searches the classes,
/// is for what a host derives.
LineES20* AsLineData(Object* data)
{
    if (data && typeid(*data) == typeid(LineES20))
    {
        return static_cast<LineES20*>(data);
    }
    return dynamic_cast<LineES20*>(data);
}

} // namespace

LineStyleES20::LineStyleES20(LineStyle* style, SharedBufferPool* pool, EffectCache* cache, Object*) :
    bufferPool(pool), lineStyle(style), m_effectCache(cache)
{
    m_styleWatch.Watch(lineStyle->GetLifetime(), &OnStyleGone, this);
    if (m_effectCache)
    {
        m_cacheWatch.Watch(m_effectCache->GetLifetime(), &OnEffectCacheGone, this);
        effect = m_effectCache->GetEffect(EffectCache::SolidLine);
    }
}

LineStyleES20::~LineStyleES20()
{
    ReleaseEffects();
}

void LineStyleES20::ReleaseEffects()
{
    for (EffectES20** slot : {&effect, &secondEffect})
    {
        if (EffectES20* const held = *slot)
        {
            *slot = nullptr;
            held->Release();
        }
    }
}

void LineStyleES20::OnStyleGone(void* self)
{
    static_cast<LineStyleES20*>(self)->lineStyle = nullptr;
}

void LineStyleES20::OnEffectCacheGone(void* self)
{
    auto* const data = static_cast<LineStyleES20*>(self);
    data->ReleaseEffects();
    data->m_effectCache = nullptr;
}

void LineStyleES20::Prepare(CameraNodeES20*, std::vector<RenderItemES20>& items, bool clippingPlane)
{
    if (!bufferPool || !lineStyle)
    {
        return;
    }
    // A style of the host's may be gone after the question.
    const bool isOfNode = lineStyle->HasType(NodeTypeNodeLineStyle);
    if (!lineStyle)
    {
        return;
    }
    if (isOfNode)
    {
        MeshNode* const node = static_cast<NodeLineStyle*>(lineStyle)->GetNode();
        if (!node)
        {
            return;
        }
        for (Mesh* mesh : node->EachMesh())
        {
            if (auto* const line = dynamic_cast<Line*>(mesh))
            {
                PrepareSpecificNode(line, node, items, clippingPlane);
            }
        }
        return;
    }
    const bool clip = clippingPlane && lineStyle->IsClippingEnabled();
    std::size_t next = items.size();
    items.resize(next + lineStyle->GetLines().size());
    for (Line* line : lineStyle->GetLines())
    {
        LineDataOf(line)->EnableClippingPlane(clip);
        items[next++] = {line, this, false, nullptr};
    }
}

void LineStyleES20::PrepareSpecificNode(Line* line, MeshNode* node, std::vector<RenderItemES20>& items,
                                        bool clippingPlane)
{
    if (!bufferPool)
    {
        return;
    }
    LineDataOf(line)->EnableClippingPlane(clippingPlane);
    items.push_back({line, this, true, node});
}

LineES20* LineStyleES20::LineDataOf(Line* line)
{
    LineES20* lineData = AsLineData(line->GetRenderData());
    if (!lineData || !lineData->pool)
    {
        lineData = new LineES20(line, bufferPool);
        line->SetRenderData(lineData, true);
    }
    return lineData;
}

bool LineStyleES20::Apply(CameraNodeES20* camera, RenderPass pass)
{
    ApplyStyle(camera, pass != RenderPassAmbient);
    return true;
}

void LineStyleES20::Apply(CameraNodeES20* camera)
{
    ApplyStyle(camera, true);
}

void LineStyleES20::ApplyStyle(CameraNodeES20* camera, bool addSecondColor)
{
    if (effect && lineStyle)
    {
        static_cast<SolidLineEffectES20*>(effect)->Apply(lineStyle, camera, addSecondColor);
    }
}

void LineStyleES20::Remove()
{
    if (effect)
    {
        static_cast<SolidLineEffectES20*>(effect)->RestoreDepthState();
    }
}

EffectES20* LineStyleES20::GetShader(RenderPass)
{
    return GetShader();
}

EffectES20* LineStyleES20::GetShader()
{
    return lineStyle ? effect : nullptr;
}

} // namespace OV
