#include "tests/renderer/OffscreenStage.h"

#include "orvane/platform/detail/EntryPoints.h"
#include "orvane/renderer/detail/ScreenQuad.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"

#include <GL/glew.h>

#include <cmath>
#include <cstdint>
#include <stdexcept>

namespace OV::Test
{

namespace
{

unsigned int MakeTexture()
{
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    for (const GLenum filter : {GL_TEXTURE_MIN_FILTER, GL_TEXTURE_MAG_FILTER})
    {
        glTexParameteri(GL_TEXTURE_2D, filter, GL_NEAREST);
    }
    for (const GLenum wrap : {GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T})
    {
        glTexParameteri(GL_TEXTURE_2D, wrap, GL_CLAMP_TO_EDGE);
    }
    return texture;
}

} // namespace

OffscreenStage::OffscreenStage()
{
    Platform::LoadEntryPoints();
    m_quad = std::make_unique<Mesh>(Detail::MakeScreenQuad(), &m_scene);
    auto* node = new MeshNode(&m_scene);
    m_quad->AddNode(node);
    m_scene.GetRoot()->AddChild(node, false);
    auto* data = new MeshES20(m_quad.get(), &m_pool);
    m_quad->SetRenderData(data, true);
    m_pool.GenerateVBOs();
}

OffscreenStage::~OffscreenStage()
{
    m_quad.reset();
    for (EffectES20* effect : m_effects)
    {
        effect->Release();
    }
    for (const unsigned int texture : m_textures)
    {
        glDeleteTextures(1, &texture);
    }
    MeshES20::ResetBufferCache();
}

EffectES20* OffscreenStage::Fetch(EffectCache::EffectType type)
{
    EffectES20* effect = m_cache.GetEffect(type);
    if (effect)
    {
        m_effects.push_back(effect);
    }
    return effect;
}

unsigned int OffscreenStage::MakeColors(int width, int height, const std::function<Pixel(int x, int y)>& color)
{
    std::vector<unsigned char> bytes;
    for (int y = 0; y < height; ++y)
    {
        for (int x = 0; x < width; ++x)
        {
            const Pixel pixel = color(x, y);
            for (const int channel : {pixel.r, pixel.g, pixel.b, pixel.a})
            {
                bytes.push_back(static_cast<unsigned char>(channel));
            }
        }
    }
    m_textures.push_back(MakeTexture());
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
    glBindTexture(GL_TEXTURE_2D, 0);
    return m_textures.back();
}

unsigned int OffscreenStage::MakeDepths(int width, int height, const std::function<float(int x, int y)>& depth)
{
    std::vector<std::uint32_t> values;
    for (int y = 0; y < height; ++y)
    {
        for (int x = 0; x < width; ++x)
        {
            values.push_back(static_cast<std::uint32_t>(std::llround(double(depth(x, y)) * 4294967295.0)));
        }
    }
    m_textures.push_back(MakeTexture());
    glTexImage2D(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT, width, height, 0, GL_DEPTH_COMPONENT, GL_UNSIGNED_INT,
                 values.data());
    glBindTexture(GL_TEXTURE_2D, 0);
    return m_textures.back();
}

Picture OffscreenStage::Draw(MaterialEffectES20& effect)
{
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    effect.Apply(nullptr, nullptr);
    static_cast<MeshES20*>(m_quad->GetRenderData())->Render(&effect, m_quad->GetNodes(), false);
    effect.Remove();
    MeshES20::ResetBufferCache();
    return ReadPixels();
}

} // namespace OV::Test
