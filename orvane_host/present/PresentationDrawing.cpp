#include "orvane_host/context/HeadlessContext.h"
#include "orvane_host/context/detail/HeadlessFramebuffer.h"
#include "orvane_host/output/WritePNG.h"
#include "orvane_host/present/HatchTextures.h"
#include "orvane_host/present/detail/PresentationImpl.h"
#include "orvane_host/present/detail/ProcessSettings.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Scene.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <utility>

namespace OV::Host
{

namespace
{

constexpr int UsualSamples = 4;
/// Above so many pixels multisampling would take more memory than it is worth: the picture is
/// scaled down to be looked at.
constexpr std::int64_t MultisampledPixels = 16 * 1024 * 1024;

/// Extent of a model that the strokes are drawn for.
constexpr float HatchedExtent = 24.0f;

/// How densely pen strokes lie on a model of an extent, so that a small one isn't drawn with a
/// broad pen.
int StrokeDensityFor(float extent)
{
    int density = 1;
    while (density < HatchTextures::MostDensity && extent * static_cast<float>(density) < HatchedExtent / 2.0f)
    {
        density *= 2;
    }
    return density;
}

AAMode ModeOf(Antialiasing antialiasing)
{
    switch (antialiasing)
    {
    case Antialiasing::Multisampling: return AAModeMSAA;
    case Antialiasing::Filter: return AAModeFXAA;
    case Antialiasing::Supersampling: return AAModeSupersampling;
    case Antialiasing::None: break;
    }
    return AAModeNone;
}

/// Sign of a unit of length; none for one that has none.
std::string UnitSign(double metres)
{
    static constexpr struct
    {
        double metres;
        const char* sign;
    } units[] = {{1.0, "m"}, {0.001, "mm"}, {0.01, "cm"}, {0.1, "dm"}, {1000.0, "km"}, {0.3048, "ft"}, {0.0254, "in"}};
    for (const auto& unit : units)
    {
        if (std::abs(metres - unit.metres) < 1e-6 * unit.metres)
        {
            return unit.sign;
        }
    }
    return {};
}

/// UTF-8 in the encoding of the C locale in force; as it is where that has no such characters.
std::string InLocale(const std::string& utf8)
{
    std::string text;
    std::mbstate_t state{};
    for (std::size_t at = 0; at < utf8.size();)
    {
        const auto head = static_cast<unsigned char>(utf8[at++]);
        const int more = head < 0xC0 ? 0 : head < 0xE0 ? 1 : head < 0xF0 ? 2 : 3;
        std::uint32_t character = more == 0 ? head : head & (0x3Fu >> more);
        for (int i = 0; i < more && at < utf8.size(); ++i)
        {
            character = character << 6 | (static_cast<unsigned char>(utf8[at++]) & 0x3Fu);
        }
        std::array<char, 64> bytes{};
        const std::size_t length = std::wcrtomb(bytes.data(), static_cast<wchar_t>(character), &state);
        if (length > bytes.size())
        {
            return utf8;
        }
        text.append(bytes.data(), length);
    }
    return text;
}

unsigned int BoundFramebuffer()
{
    GLint name = 0;
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &name);
    return static_cast<unsigned int>(name);
}

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

} // namespace

bool Presentation::Impl::IsCaptured() const
{
    return settings.antialiasing == Antialiasing::Filter || settings.antialiasing == Antialiasing::Supersampling;
}

void Presentation::Impl::Resize(int newWidth, int newHeight, float newRatio)
{
    const bool isNewSize = newWidth != m_width || newHeight != m_height;
    const float oldAspect = Aspect();
    m_width = newWidth;
    m_height = newHeight;
    if (isNewSize)
    {
        m_isWatermarkLaid = false;
        m_isPictureChanged = true;
        // A capture keeps its size otherwise.
        app.ClearOffscreenBuffers(renderer.get());
        m_holdsCapture = false;
    }
    if (std::exchange(m_ratio, newRatio) != newRatio)
    {
        UpdateStyle();
        UpdateMaterials();
        m_isPictureChanged = true;
    }
    if (isNewSize && Aspect() != oldAspect)
    {
        PlaceCamera();
    }
    // The host may have set another viewport since.
    renderer->Resize(m_width, m_height);
    app.SetScreenSize(m_width, m_height);
}

void Presentation::Impl::ConfigureRenderer()
{
    renderer->ShowSky(settings.sky);
    renderer->SetLook(settings.look);
    renderer->SetStrokeDensity(StrokeDensityFor(Extent()));
    renderer->SetSun(sun.direction);
    renderer->SetShadows(settings.shadows);
    renderer->SetShadowGround(ShadowGroundOfModel());
    renderer->SetSurroundings(m_surroundings);
    renderer->SetGround(MakeGround());
    renderer->SetEdges(settings.edges);
    renderer->ShowAmbientOcclusion(settings.occlusion);
    if (renderer->SetAAMode(ModeOf(settings.antialiasing)))
    {
        m_holdsCapture = false;
    }
}

std::optional<float> Presentation::Impl::NorthInPicture() const
{
    if (!settings.sheet.north || !sun.north)
    {
        return settings.sheet.north;
    }
    // The sun's north as a compass shows it that is held towards where the view goes, so that shadows
    // and arrow agree whatever the view: from above that is where the top of the picture is.
    const auto& m = Camera().GetGlobal().GetTransf3d().m;
    const bool isUpY = settings.view.upAxis == UpAxis::Y;
    const auto heading = [&](int column, double sign)
    {
        const double right = sign * m[0][column];
        const double ahead = sign * (isUpY ? -m[2][column] : m[1][column]);
        return std::array<double, 2>{right, ahead};
    };
    // What looks ahead and what is up in the picture go the same way over the ground, or the opposite
    // one from below; the one that does so more plainly counts.
    const std::array<double, 2> ahead = heading(2, -1.0);
    const std::array<double, 2> up = heading(1, 1.0);
    const std::array<double, 2>& shown =
        std::hypot(up[0], up[1]) > std::hypot(ahead[0], ahead[1]) ? up : ahead;
    constexpr double degrees = 180.0 / 3.14159265358979323846;
    return *sun.north - static_cast<float>(std::atan2(shown[0], shown[1]) * degrees);
}

void Presentation::Impl::LayOut()
{
    CoreContext& context = *app.GetContext();
    if (m_watermark && !std::exchange(m_isWatermarkLaid, true))
    {
        m_watermark->Show(*context.GetBackground2D(), m_width, m_height);
    }
    const SheetSettings& wanted = settings.sheet;
    const std::optional<float> north = NorthInPicture();
    if (north != m_sheetNorth)
    {
        m_sheet.reset();
        m_sheetNorth = north;
    }
    if (!m_sheet && (!wanted.title.empty() || wanted.scaleBar || wanted.north))
    {
        SheetOptions sheet;
        sheet.title = InLocale(wanted.title);
        sheet.scaleBar = wanted.scaleBar;
        sheet.unit = UnitSign(report.metresPerUnit);
        sheet.north = north;
        m_sheet = std::make_unique<Sheet>(*context.GetForeground2D(), sheet);
    }
    if (m_sheet)
    {
        m_sheet->Layout(Camera(), m_width, m_height);
    }
}

void Presentation::Impl::FollowFramebuffer()
{
    // A capture is shown in the framebuffer that was bound when its buffers were made.
    const unsigned int bound = BoundFramebuffer();
    if (std::exchange(m_framebuffer, bound) != bound)
    {
        app.ClearOffscreenBuffers(renderer.get());
        m_holdsCapture = false;
    }
}

void Presentation::Impl::Prepare()
{
    ConfigureRenderer();
    const Detail::ProcessSettings scope(settings, Camera(), OutlineWidth());
    if (app.Update(0.0f))
    {
        m_isPictureChanged = true;
    }
    renderer->Pack(&World(), &Camera());
}

void Presentation::Impl::Draw(int newWidth, int newHeight, float newRatio)
{
    if (newWidth < 1 || newHeight < 1)
    {
        return;
    }
    FollowFramebuffer();
    Resize(newWidth, newHeight, newRatio);
    ConfigureRenderer();
    const Detail::ProcessSettings scope(settings, Camera(), OutlineWidth());
    LayOut();
    const bool hasChanged = app.Update(0.0f);
    m_sunLight.Aim(World());
    const bool isBehindChanged = m_isPictureChanged || (hasChanged && !app.GetContext()->OnlyForegroundWasDirty());
    m_isPictureChanged = false;
    m_isForegroundChanged = false;
    if (IsCaptured() && m_holdsCapture && !isBehindChanged)
    {
        app.RenderCapturedAndUI(renderer.get());
        return;
    }
    app.Render(renderer.get(), IsCaptured());
    m_holdsCapture = IsCaptured();
}

bool Presentation::Impl::NeedsDraw() const
{
    const CoreContext& context = *app.GetContext();
    return m_isPictureChanged || m_isForegroundChanged || World().IsDirty() || context.GetBackground2D()->IsDirty()
        || context.GetForeground2D()->IsDirty();
}

void Presentation::Impl::Suspend()
{
    picking->Suspend();
    app.Suspend(renderer.get());
    // What is out of the scene for now.
    m_section.Suspend();
    m_style->Suspend();
    m_isWatermarkLaid = false;
    m_holdsCapture = false;
}

void Presentation::Impl::Resume()
{
    app.Resume(renderer.get());
    m_isPictureChanged = true;
}

int Presentation::SamplesFor(const PresentationSettings& settings, int width, int height, int most)
{
    if (settings.antialiasing != Antialiasing::Multisampling)
    {
        return 0;
    }
    if (settings.samples)
    {
        return *settings.samples;
    }
    return static_cast<std::int64_t>(width) * height <= MultisampledPixels ? std::min(UsualSamples, most) : 0;
}

bool Presentation::Impl::SavePicture(const std::string& path, int pictureWidth, int pictureHeight, std::string& error)
{
    Detail::GLFunctions gl;
    if (const char* const missing = gl.Load(&HeadlessContext::GetProcAddress))
    {
        error = std::string("this GL has no ") + missing + "; use a newer driver";
        return false;
    }
    const Detail::FramebufferLimits limits = Detail::FramebufferLimits::Query(gl);
    const int finer = static_cast<int>(LineScale());
    if (pictureWidth < 1 || pictureHeight < 1 || pictureWidth > limits.maxWidth / finer
        || pictureHeight > limits.maxHeight / finer)
    {
        error = "a picture of " + std::to_string(pictureWidth) + "x" + std::to_string(pictureHeight)
            + " can't be made; this GL allows 1x1 to " + std::to_string(limits.maxWidth / finer) + "x"
            + std::to_string(limits.maxHeight / finer);
        return false;
    }
    const HostTarget target(gl);
    const std::unique_ptr<Detail::HeadlessFramebuffer> buffer =
        Detail::HeadlessFramebuffer::Create(gl, limits, pictureWidth, pictureHeight,
                                            SamplesFor(settings, pictureWidth, pictureHeight, limits.maxSamples),
                                            error);
    if (!buffer)
    {
        return false;
    }
    const int oldWidth = m_width;
    const int oldHeight = m_height;
    const float oldRatio = m_ratio;
    const bool neededDraw = NeedsDraw();
    buffer->Bind();
    Draw(pictureWidth, pictureHeight, 1.0f);
    std::vector<unsigned char> rgba;
    const bool isRead = buffer->ReadPixels(rgba);
    if (oldWidth > 0 && oldHeight > 0)
    {
        Resize(oldWidth, oldHeight, oldRatio);
        LayOut();
        app.Update(0.0f);
        m_isPictureChanged = neededDraw;
    }
    if (!isRead)
    {
        error = "the picture could not be read back from GL; ask for a smaller one";
        return false;
    }
    return WritePNG(std::move(rgba), pictureWidth, pictureHeight, path, PNGAlpha::Drop, error);
}

std::vector<PickHit> Presentation::Impl::Pick(const PickArea& area)
{
    const Detail::ProcessSettings scope(settings, Camera(), OutlineWidth());
    m_isPictureChanged = app.Update(0.0f) || m_isPictureChanged;
    return picking->Pick(World(), Camera(), area);
}

std::vector<PickHit> Presentation::Impl::PickThrough(int x, int y, int most)
{
    const Detail::ProcessSettings scope(settings, Camera(), OutlineWidth());
    m_isPictureChanged = app.Update(0.0f) || m_isPictureChanged;
    return picking->PickThrough(World(), Camera(), x, y, most);
}

} // namespace OV::Host
