#pragma once

#include "orvane/Export.h"
#include "orvane/base/Lifetime.h"
#include "orvane/base/WatchedPtr.h"
#include "orvane/renderdata/MeshStyleES20.h"
#include "orvane/renderdata/RenderItemES20.h"
#include "orvane/renderdata/SharedBufferPool.h"

#include <vector>

namespace OV
{

class EffectCache;
class Line;
class LineES20;
class LineStyle;
class MeshNode;
class Object;

/// Render data of a line style: lists its lines and applies the effect that draws them.
///
/// Hangs on a LineStyle, which owns it. Pool and cache may die first: nothing more is drawn
/// through it then, and a renderer replaces it.
class ORVANE_API LineStyleES20 : public MeshStyleES20
{
public:
    /// Fetches the effect. GL, as far as that needs it.
    /// @param style not null. When it dies first nothing more is drawn.
    /// @param bufferPool, effectCache not owned; each may be null.
    /// @param extension of the renderer; not read.
    LineStyleES20(LineStyle* style, SharedBufferPool* bufferPool, EffectCache* effectCache,
                  Object* extension = nullptr);
    LineStyleES20(const LineStyleES20&) = delete;
    LineStyleES20& operator=(const LineStyleES20&) = delete;

    /// Gives the effect back. GL if nobody else holds it.
    ~LineStyleES20() override;

    /// Lists the style's lines, ready or not, making their render data at need. A NodeLineStyle
    /// lists the lines of its node, at that node.
    /// @param clippingPlane whether the clip planes cut these lines; a style with clipping off
    ///        is never cut, except a NodeLineStyle, which follows the argument alone.
    void Prepare(CameraNodeES20* camera, std::vector<RenderItemES20>& items, bool clippingPlane);

    /// Lists one line at one node.
    void PrepareSpecificNode(Line* line, MeshNode* node, std::vector<RenderItemES20>& items, bool clippingPlane);

    /// Applies the line effect, in RenderPassAmbient with the first colour alone. GL.
    /// @return true, always.
    bool Apply(CameraNodeES20* camera, RenderPass pass) override;
    void Apply(CameraNodeES20* camera) override;

protected:
    /// Puts the depth state back that the style has changed: what is drawn next does not
    /// depend on it. GL.
    void Remove() override;

public:
    /// The line effect, whatever the pass. Null without a cache.
    EffectES20* GetShader(RenderPass pass) override;
    EffectES20* GetShader() override;

    /// False once the pool or the cache is gone, or if there never was one.
    bool IsConnected() const { return bufferPool && m_effectCache; }

    WatchedPtr<SharedBufferPool> bufferPool; ///< not owned; reads null once it is gone
    EffectES20* effect = nullptr;            ///< one counted reference, as the next
    EffectES20* secondEffect = nullptr;      ///< filled by nobody
    LineStyle* lineStyle = nullptr;          ///< not owned; null once it is gone

private:
    static void OnStyleGone(void* self);
    static void OnEffectCacheGone(void* self);
    void ReleaseEffects();
    void ApplyStyle(CameraNodeES20* camera, bool addSecondColor);
    LineES20* LineDataOf(Line* line);

    EffectCache* m_effectCache = nullptr;
    LifetimeWatch m_cacheWatch;
    LifetimeWatch m_styleWatch;
};

} // namespace OV
