#pragma once

#include "orvane/effects/EffectCache.h"
#include "orvane/effects/MaterialEffectES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/renderdata/SharedBufferPool.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/Scene.h"
#include "tests/support/GLFixture.h"

#include <functional>
#include <memory>
#include <stdexcept>
#include <vector>

namespace OV::Test
{

/// Base of tests that run an effect over the whole screen, on pictures laid down texel by texel.
class OffscreenStage : public GLFixture
{
protected:
    OffscreenStage();
    ~OffscreenStage() override;

    /// The effect of a type, which lives as long as the stage.
    template <class Effect>
    Effect& Get(EffectCache::EffectType type)
    {
        auto* effect = dynamic_cast<Effect*>(Fetch(type));
        if (!effect)
        {
            throw std::runtime_error("the cache has no such effect");
        }
        return *effect;
    }

    /// A texture of these colours, by texel; nearest filter, clamped.
    unsigned int MakeColors(int width, int height, const std::function<Pixel(int x, int y)>& color);

    /// A depth texture of 24 bits or more, by texel, 0 to 1.
    unsigned int MakeDepths(int width, int height, const std::function<float(int x, int y)>& depth);

    /// Applies the effect to the screen quad and gives the picture. The viewport is the fixture's.
    Picture Draw(MaterialEffectES20& effect);

private:
    EffectES20* Fetch(EffectCache::EffectType type);

    EffectCache m_cache;
    std::vector<EffectES20*> m_effects;
    std::vector<unsigned int> m_textures;
    SharedBufferPool m_pool;
    Scene m_scene;
    std::unique_ptr<Mesh> m_quad;
};

} // namespace OV::Test
