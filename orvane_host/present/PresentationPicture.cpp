#include "orvane_host/context/HeadlessContext.h"
#include "orvane_host/context/detail/HeadlessFramebuffer.h"
#include "orvane_host/output/PictureFile.h"
#include "orvane_host/present/detail/PicturePixels.h"
#include "orvane_host/present/detail/PictureTiles.h"
#include "orvane_host/present/detail/PresentationImpl.h"
#include "orvane_host/present/detail/SceneReach.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Scene.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <new>

namespace OV::Host
{

namespace
{

constexpr int UsualSamples = 4;

const Color Black(0.0f, 0.0f, 0.0f, 1.0f);
const Color White(1.0f, 1.0f, 1.0f, 1.0f);

/// The framebuffer, renderbuffer and viewport of the host, put back at the end.
class HostTarget
{
public:
    explicit HostTarget(const Detail::GLFunctions& gl) : m_gl(gl)
    {
        m_gl.getIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &m_draw);
        m_gl.getIntegerv(GL_READ_FRAMEBUFFER_BINDING, &m_read);
        m_gl.getIntegerv(GL_RENDERBUFFER_BINDING, &m_renderbuffer);
        m_gl.getIntegerv(GL_VIEWPORT, m_viewport.data());
    }

    ~HostTarget()
    {
        m_gl.bindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(m_draw));
        m_gl.bindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(m_read));
        m_gl.bindRenderbuffer(GL_RENDERBUFFER, static_cast<GLuint>(m_renderbuffer));
        m_gl.viewport(m_viewport[0], m_viewport[1], m_viewport[2], m_viewport[3]);
    }

    HostTarget(const HostTarget&) = delete;
    HostTarget& operator=(const HostTarget&) = delete;

private:
    const Detail::GLFunctions& m_gl;
    GLint m_draw = 0;
    GLint m_read = 0;
    GLint m_renderbuffer = 0;
    std::array<GLint, 4> m_viewport{};
};

/// Keeps the rows of an opaque picture.
class RowsInMemory : public PictureFile
{
public:
    explicit RowsInMemory(const PictureFormat& format) : PictureFile(format)
    {
        rgba.reserve(4 * static_cast<std::size_t>(format.width) * static_cast<std::size_t>(format.height));
    }

    bool WriteRow(const void* row, std::string&) override
    {
        const auto* from = static_cast<const unsigned char*>(row);
        for (int x = 0; x < m_format.width; ++x, from += m_format.Channels())
        {
            rgba.insert(rgba.end(), {from[0], from[1], from[2], m_format.alpha ? from[3] : static_cast<unsigned char>(255)});
        }
        return true;
    }

    bool Finish(std::string&) override { return true; }

    std::vector<unsigned char> rgba;
};

} // namespace

/// Draws a picture tile by tile and hands out its rows.
class Presentation::Impl::PictureDrawing
{
public:
    PictureDrawing(Impl& impl, const Detail::GLFunctions& gl, const Detail::FramebufferLimits& limits,
                   const PictureOptions& options) :
        m_impl(impl), m_options(options), m_whole{options.width, options.height},
        m_samples(SamplesFor(impl.settings, limits.maxSamples)),
        m_isPoster(SizeFor(limits, 0) != m_whole),
        m_tiles(m_whole, SizeFor(limits, options.longestTile),
                impl.renderer->GetMargin(m_whole) + Detail::ReachOfPoints(impl.World()) + Detail::ReachOfLines(impl.World()),
                impl.renderer->GetColorMargin(m_whole)),
        m_gl(gl), m_limits(limits)
    {
    }

    bool Write(PictureFile& file, PictureFacts& facts, std::string& error)
    {
        const PixelSize largest = m_tiles.GetLargest();
        m_buffer = Detail::HeadlessFramebuffer::Create(m_gl, m_limits, largest.width, largest.height, m_samples, error,
                                                       m_options.bits);
        if (!m_buffer)
        {
            return false;
        }
        const int kept = m_tiles.At(0, 0).kept.height;
        Detail::PicturePixels pixels(m_options.width, kept, m_options.transparent ? 4 : 3, m_options.bits);
        facts = PictureFacts();
        for (int row = m_tiles.GetRows(); row-- > 0;)
        {
            if (!DrawRow(row, pixels, facts, error) || !WriteRow(row, pixels, file, facts, error))
            {
                return false;
            }
        }
        return true;
    }

private:
    PixelSize SizeFor(const Detail::FramebufferLimits& limits, int longest) const
    {
        const int finer = static_cast<int>(m_impl.LineScale());
        PresentationSettings drawn = m_impl.settings;
        if (m_impl.World().GetAlphaMaterials().empty())
        {
            // There is no glass that would take buffers.
            drawn.glass.order = GlassOrder::Scene;
        }
        return Detail::TileSizeFor(drawn, m_whole, m_samples, m_options.bits,
                                   {limits.maxWidth / finer, limits.maxHeight / finer}, longest);
    }

    bool DrawRow(int row, Detail::PicturePixels& pixels, PictureFacts& facts, std::string& error)
    {
        for (int column = 0; column < m_tiles.GetColumns(); ++column)
        {
            const Detail::PictureTile tile = m_tiles.At(column, row);
            if (!DrawTile(tile, pixels))
            {
                error = "the picture could not be read back from GL; ask for a smaller one";
                return false;
            }
            ++facts.tiles;
            const int all = m_tiles.GetColumns() * m_tiles.GetRows();
            if (m_options.progress && !m_options.progress(100.0f * static_cast<float>(facts.tiles) / static_cast<float>(all)))
            {
                error = "drawing was stopped";
                return false;
            }
        }
        return true;
    }

    bool DrawTile(Detail::PictureTile tile, Detail::PicturePixels& pixels)
    {
        const int width = tile.kept.width;
        const int height = tile.kept.height;
        tile.part.ofPoster = m_isPoster;
        if (!m_options.transparent)
        {
            const bool isRead = DrawOn(m_impl.settings.background, tile, m_read);
            pixels.Put(m_read, tile.x, width, height);
            return isRead;
        }
        bool isRead = DrawOn(Black, tile, m_read);
        tile.part.isAgain = true;
        isRead = isRead && DrawOn(White, tile, m_readOnWhite);
        pixels.Put(m_read, m_readOnWhite, tile.x, width, height);
        return isRead;
    }

    bool DrawOn(const Color& background, const Detail::PictureTile& tile, std::vector<unsigned char>& rgba)
    {
        m_buffer->Bind();
        m_impl.DrawPart(tile.part, background, m_options.pixelRatio);
        rgba.resize(static_cast<std::size_t>(tile.kept.width) * static_cast<std::size_t>(tile.kept.height) * 4
                    * static_cast<std::size_t>(m_options.bits / 8));
        return m_buffer->ReadPart(tile.x - tile.part.x, tile.y - tile.part.y, tile.kept.width, tile.kept.height,
                                  rgba.data());
    }

    bool WriteRow(int row, Detail::PicturePixels& pixels, PictureFile& file, PictureFacts& facts,
                  std::string& error) const
    {
        const int height = m_tiles.At(0, row).kept.height;
        for (int line = height; line-- > 0;)
        {
            pixels.Look(line, facts);
            if (!file.WriteRow(pixels.RowAt(line), error))
            {
                return false;
            }
        }
        return true;
    }

    Impl& m_impl;
    const PictureOptions& m_options;
    PixelSize m_whole;
    int m_samples;
    bool m_isPoster; ///< whether it is too large to be drawn at once
    Detail::PictureTiles m_tiles;
    const Detail::GLFunctions& m_gl;
    const Detail::FramebufferLimits& m_limits;
    std::unique_ptr<Detail::HeadlessFramebuffer> m_buffer;
    std::vector<unsigned char> m_read;
    std::vector<unsigned char> m_readOnWhite;
};

int Presentation::SamplesFor(const PresentationSettings& settings, int most)
{
    if (settings.antialiasing != Antialiasing::Multisampling)
    {
        return 0;
    }
    return settings.samples.value_or(std::min(UsualSamples, most));
}

int Presentation::BytesPerPixel(const PresentationSettings& settings, int samples, int bits)
{
    return Detail::BytesPerPixel(settings, samples, bits);
}

bool Presentation::Impl::SavePicture(const std::string& path, const PictureOptions& options, PictureFacts& facts,
                                     std::string& error)
{
    PictureFormat format = FormatOf(options);
    if (!PictureFile::KindOf(path, format.kind, error))
    {
        return false;
    }
    const std::unique_ptr<PictureFile> file = PictureFile::Create(path, format, error);
    return file && WritePicture(*file, options, facts, error) && file->Finish(error);
}

bool Presentation::Impl::TakePicture(std::vector<unsigned char>& rgba, const PictureOptions& options,
                                     std::string& error)
{
    const PictureFormat format = FormatOf(options);
    if (format.width < 1 || format.height < 1 || std::max(format.width, format.height) > PictureFormat::MostPixels)
    {
        error = "a picture of " + std::to_string(format.width) + "x" + std::to_string(format.height)
            + " can't be made; a side has 1 to " + std::to_string(PictureFormat::MostPixels) + " pixels";
        return false;
    }
    try
    {
        RowsInMemory rows(format);
        PictureFacts facts;
        if (!WritePicture(rows, options, facts, error))
        {
            return false;
        }
        rgba = std::move(rows.rgba);
        return true;
    }
    catch (const std::bad_alloc&)
    {
        error = "there is not enough memory for the picture; ask for a smaller one";
        return false;
    }
}

PictureFormat Presentation::Impl::FormatOf(const PictureOptions& options)
{
    PictureFormat format;
    format.width = options.width;
    format.height = options.height;
    format.alpha = options.transparent;
    format.bits = options.bits;
    format.pixelsPerMetre = options.pixelsPerMetre;
    return format;
}

bool Presentation::Impl::WritePicture(PictureFile& file, const PictureOptions& options, PictureFacts& facts,
                                      std::string& error)
{
    if (!CanDraw())
    {
        error = std::string("there is no context to draw it with; ")
            + (m_isSuspended ? "resume the presentation first" : "make one current first");
        return false;
    }
    Followed();
    Detail::GLFunctions gl;
    if (const char* const missing = gl.Load(&HeadlessContext::GetProcAddress))
    {
        error = std::string("this GL has no ") + missing + "; use a newer driver";
        return false;
    }
    const Detail::FramebufferLimits limits = Detail::FramebufferLimits::Query(gl);
    const HostTarget target(gl);
    const int oldWidth = m_width;
    const int oldHeight = m_height;
    const float oldRatio = m_ratio;
    const bool neededDraw = NeedsDraw();
    bool isWritten = false;
    try
    {
        // The margin is that of what is drawn, with lines as wide as there.
        Resize(std::max(m_width, 1), std::max(m_height, 1), options.pixelRatio);
        ConfigureRenderer();
        PictureDrawing drawing(*this, gl, limits, options);
        isWritten = drawing.Write(file, facts, error);
    }
    catch (const std::bad_alloc&)
    {
        error = "there is not enough memory for the picture; ask for a smaller one";
    }
    EndParts();
    if (oldWidth > 0 && oldHeight > 0)
    {
        Resize(oldWidth, oldHeight, oldRatio);
        LayOut();
        app.Update(0.0f);
        m_isPictureChanged = neededDraw;
    }
    return isWritten;
}

void Presentation::Impl::EndParts()
{
    app.ClearOffscreenBuffers(renderer.get());
    renderer->ShowPart(std::nullopt);
    if (auto* const data = dynamic_cast<CameraNodeES20*>(Followed().Camera().GetRenderData()))
    {
        data->SetPart({});
    }
    app.GetContext()->SetBackgroundColor(settings.background);
    m_holdsCapture = false;
    m_isPictureChanged = true;
}

} // namespace OV::Host
