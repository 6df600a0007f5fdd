#include "bench/BenchSupport.h"
#include "orvane/imaging/Image.h"
#include "orvane/imaging/detail/FontSet.h"
#include "orvane/imaging/detail/TextRasterizer.h"
#include "orvane/math/Matrix.h"
#include "orvane/overlay/Material2D.h"
#include "orvane/overlay/Rect.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/overlay/Shape2DNode.h"
#include "orvane/overlay/Sprite.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/renderer/Renderer20.h"
#include "orvane/scene/AlphaMeshNode.h"

#include <GL/glew.h>
#include <benchmark/benchmark.h>
#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_OUTLINE_H
#include <raqm.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

// A layer of sprites against a hand-written loop that makes the same GL calls with the same
// arguments; and a label against FreeType and libraqm
// called directly. What counts is the ratio within each pair.
namespace
{

using namespace OV;
using namespace OV::Bench;

constexpr int kSprites = 2000;
constexpr int kSide = 256;

/// What changes from sprite to sprite, ready for GL.
struct FlatSprite
{
    unsigned vertexBuffer;
    unsigned indexBuffer;
    int stride;
    std::intptr_t positionOffset;
    std::intptr_t indexOffset;
    int indexCount;
    Color color;
    Matrix mvp;
};

/// Shows what the hand-written loop has to know.
class BenchRenderer : public Renderer20
{
public:
    BenchRenderer() : Renderer20(nullptr, nullptr) {}
    const Matrix& LayerMatrix() const { return hudCamera->GetHudMVP(); }
};

class SpriteBench
{
public:
    SpriteBench()
    {
        m_context = OpenContext(kSide, kSide);
        for (int i = 0; i < kSprites; ++i)
        {
            m_sprites.push_back(std::make_unique<Sprite>(&m_layer, new Rect(&m_layer, 8.0f, 8.0f, false)));
            m_sprites.back()->SetColor(Color(static_cast<float>(i) / kSprites, 0.5f, 0.25f, 0.5f));
            Transform place;
            place.SetPosition(Vector(static_cast<float>(i * 7 % 240), static_cast<float>(i * 13 % 240),
                                     static_cast<float>(i % 10)));
            m_sprites.back()->GetNode()->SetLocal(place);
        }
        m_renderer.Resize(kSide, kSide);
        m_layer.UpdateGraph(kSide, kSide);
        DrawWithEngine();
        Flatten();
    }

    ~SpriteBench() { m_layer.Suspend(); }

    /// A frame of the layer as the engine runs it.
    void DrawWithEngine()
    {
        m_layer.UpdateGraph(kSide, kSide);
        m_renderer.Render2D(&m_layer);
    }

    /// The same after a change: the layer is put in order anew.
    void DrawChangedWithEngine()
    {
        m_layer.MarkDirty();
        DrawWithEngine();
    }

    void DrawByHand() const;

private:
    void Flatten();

    std::unique_ptr<Host::HeadlessContext> m_context;
    BenchRenderer m_renderer;
    Scene2D m_layer{nullptr};
    std::vector<std::unique_ptr<Sprite>> m_sprites;
    std::vector<FlatSprite> m_flat;
    int m_program = 0;
    int m_mvp = 0;
    int m_color = 0;
    int m_enableTexture = 0;
    unsigned m_position = 0;
};

void SpriteBench::Flatten()
{
    glGetIntegerv(GL_CURRENT_PROGRAM, &m_program);
    const auto program = static_cast<unsigned>(m_program);
    m_mvp = glGetUniformLocation(program, "u_mvpMatrix");
    m_color = glGetUniformLocation(program, "u_color");
    m_enableTexture = glGetUniformLocation(program, "u_enableTexture");
    m_position = static_cast<unsigned>(glGetAttribLocation(program, "a_position"));
    for (const AlphaMeshNode* item : m_layer.GetZOrderedDrawItems())
    {
        const auto* data = static_cast<MeshES20*>(item->mesh->GetRenderData());
        FlatSprite flat;
        flat.vertexBuffer = data->vertexBufferId;
        flat.indexBuffer = data->indexBufferId;
        flat.stride = data->GetStride();
        flat.positionOffset = data->GetPositionOffset();
        flat.indexOffset = data->indexOffset;
        flat.indexCount = static_cast<int>(data->indexCount);
        flat.color = static_cast<Material2D*>(item->mesh->GetMaterial())->color;
        flat.mvp.Multiply(m_renderer.LayerMatrix(), *item->node->GetGlobalMatrix());
        m_flat.push_back(flat);
    }
}

void SpriteBench::DrawByHand() const
{
    glDisable(GL_BLEND);
    glDepthMask(GL_TRUE);
    glClear(GL_DEPTH_BUFFER_BIT);
    glEnable(GL_DEPTH_TEST);
    GLint function = 0;
    glGetIntegerv(GL_DEPTH_FUNC, &function);
    glDepthFunc(GL_LEQUAL);
    const bool clamped = glIsEnabled(GL_DEPTH_CLAMP) != GL_FALSE;
    glEnable(GL_DEPTH_CLAMP);
    unsigned bound = 0;
    for (const FlatSprite& sprite : m_flat)
    {
        glDisable(GL_POLYGON_OFFSET_FILL);
        glUseProgram(static_cast<unsigned>(m_program));
        glDepthMask(GL_TRUE);
        glEnable(GL_BLEND);
        glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        glUniform1i(m_enableTexture, 0);
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, 0);
        glUniform4f(m_color, sprite.color.r, sprite.color.g, sprite.color.b, sprite.color.a);
        if (sprite.vertexBuffer != bound)
        {
            glBindBuffer(GL_ARRAY_BUFFER, sprite.vertexBuffer);
            glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, sprite.indexBuffer);
            bound = sprite.vertexBuffer;
        }
        glVertexAttribPointer(m_position, 3, GL_FLOAT, GL_FALSE, sprite.stride, Pointer(sprite.positionOffset));
        glEnableVertexAttribArray(m_position);
        glUniformMatrix4fv(m_mvp, 1, GL_FALSE, sprite.mvp.m);
        glDrawElements(GL_TRIANGLES, sprite.indexCount, GL_UNSIGNED_SHORT, Pointer(sprite.indexOffset));
        glDisableVertexAttribArray(m_position);
        glDisable(GL_BLEND);
        glDepthMask(GL_TRUE);
    }
    if (!clamped)
    {
        glDisable(GL_DEPTH_CLAMP);
    }
    glDepthFunc(static_cast<GLenum>(function));
}

SpriteBench& Sprites()
{
    static SpriteBench bench;
    return bench;
}

/// Forty letters, and the size of the text of a drawing.
const char kFont[] = "DejaVu Sans";
const char kLabel[] = "Ground floor plan, section A-A, 1 to 50.";
constexpr int kFontSize = 16;

/// The same label by the libraries alone, in the plainest way: one font, that is open already.
class PlainText
{
public:
    PlainText()
    {
        FcPattern* const wanted = FcNameParse(reinterpret_cast<const FcChar8*>(kFont));
        FcConfigSubstitute(nullptr, wanted, FcMatchPattern);
        FcDefaultSubstitute(wanted);
        FcResult result = FcResultNoMatch;
        FcPattern* const best = FcFontMatch(nullptr, wanted, &result);
        FcChar8* file = nullptr;
        const bool found = FT_Init_FreeType(&m_library) == 0 && best &&
                           FcPatternGetString(best, FC_FILE, 0, &file) == FcResultMatch &&
                           FT_New_Face(m_library, reinterpret_cast<const char*>(file), 0, &m_face) == 0 &&
                           FT_Set_Pixel_Sizes(m_face, 0, kFontSize) == 0;
        if (!found)
        {
            std::fprintf(stderr, "no font %s; install fonts-dejavu-core\n", kFont);
            std::exit(1);
        }
        FcPatternDestroy(best);
        FcPatternDestroy(wanted);
    }

    ~PlainText()
    {
        FT_Done_Face(m_face);
        FT_Done_FreeType(m_library);
    }

    /// Four bytes a pixel, as a texture takes them.
    std::vector<unsigned char> Draw(int& width, int& height) const
    {
        raqm_t* const layout = raqm_create();
        raqm_set_text_utf8(layout, kLabel, std::strlen(kLabel));
        raqm_set_freetype_face(layout, m_face);
        raqm_set_freetype_load_flags(layout, detail::kGlyphLoadFlags);
        raqm_layout(layout);
        std::size_t count = 0;
        const raqm_glyph_t* const glyphs = raqm_get_glyphs(layout, &count);
        long advance = 0;
        for (std::size_t i = 0; i < count; ++i)
        {
            advance += glyphs[i].x_advance;
        }
        const FT_Size_Metrics& metrics = m_face->size->metrics;
        const int ascender = static_cast<int>((metrics.ascender + 63) / 64);
        width = static_cast<int>((advance + 63) / 64);
        height = ascender + static_cast<int>((-metrics.descender + 63) / 64);
        std::vector<unsigned char> pixels(static_cast<std::size_t>(width) * height * 4);
        long x = 0;
        for (std::size_t i = 0; i < count; ++i)
        {
            DrawGlyph(glyphs[i].index, x + glyphs[i].x_offset, ascender, width, height, pixels);
            x += glyphs[i].x_advance;
        }
        raqm_destroy(layout);
        return pixels;
    }

private:
    void DrawGlyph(unsigned int index, long x, int ascender, int width, int height,
                   std::vector<unsigned char>& pixels) const
    {
        if (FT_Load_Glyph(m_face, index, detail::kGlyphLoadFlags) != 0)
        {
            return;
        }
        FT_GlyphSlot const slot = m_face->glyph;
        FT_Outline_Translate(&slot->outline, x & 63, 0);
        if (FT_Render_Glyph(slot, FT_RENDER_MODE_NORMAL) != 0)
        {
            return;
        }
        const int left = static_cast<int>(x >> 6) + slot->bitmap_left;
        const int top = ascender - slot->bitmap_top;
        for (int row = 0; row < static_cast<int>(slot->bitmap.rows); ++row)
        {
            const unsigned char* const source = slot->bitmap.buffer + row * slot->bitmap.pitch;
            for (int column = 0; column < static_cast<int>(slot->bitmap.width); ++column)
            {
                const int px = left + column;
                const int py = top + row;
                if (px < 0 || px >= width || py < 0 || py >= height)
                {
                    continue;
                }
                unsigned char* const pixel = pixels.data() + (static_cast<std::size_t>(py) * width + px) * 4;
                const auto sum = static_cast<unsigned char>(std::min(255, pixel[0] + source[column]));
                std::fill_n(pixel, 4, sum);
            }
        }
    }

    FT_Library m_library = nullptr;
    FT_Face m_face = nullptr;
};

PlainText& Plain()
{
    static PlainText text;
    return text;
}

std::unique_ptr<Image> DrawLabelWithEngine()
{
    return std::unique_ptr<Image>(detail::RasterizeText(kFont, kFontSize, kLabel, 0));
}

/// The comparison is of no use unless both draw the same picture.
void RequireSamePicture()
{
    const std::unique_ptr<Image> image = DrawLabelWithEngine();
    int width = 0;
    int height = 0;
    const std::vector<unsigned char> pixels = Plain().Draw(width, height);
    if (!image || image->width != width || image->height != height ||
        std::memcmp(image->data, pixels.data(), pixels.size()) != 0)
    {
        std::fprintf(stderr, "the libraries alone draw another label (%dx%d) than the engine (%dx%d)\n", width, height,
                     image ? image->width : 0, image ? image->height : 0);
        std::exit(1);
    }
}

void SpritesByEngine(benchmark::State& state)
{
    Repeat(state, kSprites, [] { Sprites().DrawWithEngine(); });
}

void ChangedSpritesByEngine(benchmark::State& state)
{
    Repeat(state, kSprites, [] { Sprites().DrawChangedWithEngine(); });
}

void SpritesByHand(benchmark::State& state)
{
    Repeat(state, kSprites, [] { Sprites().DrawByHand(); });
}

void LabelByEngine(benchmark::State& state)
{
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(DrawLabelWithEngine());
    }
}

void LabelByLibraries(benchmark::State& state)
{
    int width = 0;
    int height = 0;
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(Plain().Draw(width, height));
    }
}

BENCHMARK(SpritesByEngine)->Unit(benchmark::kMicrosecond);
BENCHMARK(SpritesByHand)->Unit(benchmark::kMicrosecond);
BENCHMARK(ChangedSpritesByEngine)->Unit(benchmark::kMicrosecond);
BENCHMARK(LabelByEngine)->Unit(benchmark::kMicrosecond);
BENCHMARK(LabelByLibraries)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv)
{
    DropDrawing();
    benchmark::Initialize(&argc, argv);
    RequireSameCalls([] { Sprites().DrawWithEngine(); }, [] { Sprites().DrawByHand(); });
    RequireSamePicture();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
