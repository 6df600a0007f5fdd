#include "orvane_host/context/detail/GLVersion.h"
#include "orvane_host/present/detail/PresentationImpl.h"
#include "orvane_host/present/detail/ProcessSettings.h"
#include "orvane_host/present/detail/SheetText.h"
#include "orvane_host/present/detail/TextLocale.h"
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
#include <utility>

namespace OV::Host
{

namespace
{

/// Side of a view that is picked in as a whole: of a larger one GL may have no buffers.
constexpr int LargestPicked = 4096;

/// Of a pen stroke, in pixels that settings count.
constexpr float UsualStrokeWidth = 1.1f;

/// Radius of occlusion, as a share of the model's extent.
constexpr float UsualOcclusionShare = 0.04f;

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

unsigned int BoundFramebuffer()
{
    GLint name = 0;
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &name);
    return static_cast<unsigned int>(name);
}

} // namespace

bool Presentation::Impl::CanDraw() const
{
    return !m_isSuspended && Detail::HasContext();
}

bool Presentation::Impl::IsCaptured() const
{
    return settings.antialiasing == Antialiasing::Filter || settings.antialiasing == Antialiasing::Supersampling;
}

void Presentation::Impl::Resize(int newWidth, int newHeight, float newRatio)
{
    const bool isNewSize = newWidth != m_width || newHeight != m_height;
    const float oldAspect = Aspect();
    m_width = std::max(newWidth, 0);
    m_height = std::max(newHeight, 0);
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
    if (!renderer->GetPart())
    {
        // The host may have set another viewport since.
        renderer->Resize(m_width, m_height);
    }
    app.SetScreenSize(m_width, m_height);
}

std::optional<HiddenLineLook> Presentation::Impl::HiddenLook() const
{
    if (!settings.lines || settings.lines->hidden == HiddenLines::None)
    {
        return std::nullopt;
    }
    // Longer dashes suit wider lines; and twice as long as the gaps they look like one line.
    HiddenLineLook look;
    look.dash = (4.0f + 2.0f * settings.lines->width) * m_ratio;
    look.gap = look.dash / 2.0f;
    return look;
}

void Presentation::Impl::ConfigureRenderer()
{
    renderer->ShowSky(settings.sky);
    renderer->SetSkyAxis(settings.view.upAxis);
    renderer->SetLook(settings.look);
    renderer->SetStrokeWidth(UsualStrokeWidth * m_ratio);
    renderer->SetSun(sun.direction, Up());
    renderer->SetShadows(settings.shadows);
    GlassSettings glass = settings.glass;
    const bool hurries = m_hurries && !renderer->GetPart();
    if (hurries && glass.order == GlassOrder::Exact)
    {
        glass.order = GlassOrder::Weighted;
    }
    renderer->SetGlass(glass);
    renderer->SetShadowGround(ShadowGroundOfModel());
    renderer->SetSurroundings(m_surroundings);
    renderer->SetGround(MakeGround());
    renderer->SetEdges(settings.edges);
    renderer->SetHiddenLines(HiddenLook());
    const OcclusionLook& occlusion = settings.occlusionLook;
    const bool isSpiral = occlusion.kind == OcclusionKind::Spiral;
    renderer->ShowAmbientOcclusion(settings.occlusion && isSpiral);
    renderer->SetHorizonOcclusion(
        settings.occlusion && !isSpiral
            ? std::optional<PresentationRenderer::HorizonOcclusion>(
                  {occlusion.radius.value_or(UsualOcclusionShare * Extent()), occlusion.strength, hurries})
            : std::nullopt);
    renderer->SetBatches(settings.batches);
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
    const Detail::TextLocale texts;
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
        sheet.title = Detail::InLocale(wanted.title);
        sheet.scaleBar = wanted.scaleBar;
        sheet.unit = Detail::UnitSign(report.metresPerUnit);
        sheet.north = north;
        m_sheet = std::make_unique<Sheet>(*context.GetForeground2D(), sheet);
    }
    if (m_sheet)
    {
        m_sheet->Layout(Camera(), m_width, m_height);
    }
    LayOutNotes();
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
    if (!CanDraw())
    {
        return;
    }
    Followed();
    ConfigureRenderer();
    const Detail::ProcessSettings scope(settings, Camera(), OutlineWidth());
    if (app.Update(0.0f))
    {
        m_isPictureChanged = true;
    }
    if (HasCamera())
    {
        renderer->Pack(&World(), &Camera());
    }
}

void Presentation::Impl::DrawPart(const PicturePart& part, const Color& background, float ratio)
{
    renderer->ShowPart(part);
    app.GetContext()->SetBackgroundColor(background);
    m_isPictureChanged = true;
    Draw(part.whole.width, part.whole.height, ratio);
}

void Presentation::Impl::Draw(int newWidth, int newHeight, float newRatio)
{
    if (newWidth < 1 || newHeight < 1 || !CanDraw())
    {
        return;
    }
    const Detail::TextLocale texts;
    Followed();
    FollowFramebuffer();
    Resize(newWidth, newHeight, newRatio);
    ConfigureRenderer();
    const Detail::ProcessSettings scope(settings, Camera(), OutlineWidth());
    LayOut();
    const bool hasChanged = app.Update(0.0f);
    if (HasCamera())
    {
        FitNear();
        m_sunLight.Aim(World());
    }
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

void Presentation::Impl::Hurry(bool hurry)
{
    const bool mixesGlass = settings.glass.order == GlassOrder::Exact && !World().GetAlphaMaterials().empty();
    const bool coarsens = settings.occlusion && settings.occlusionLook.kind == OcclusionKind::Horizon;
    const bool keepsShadow = settings.ground && m_contactShadow && m_isContactShadowStale;
    const bool isOther = m_hurries != hurry && (mixesGlass || coarsens || keepsShadow);
    m_hurries = hurry;
    m_isPictureChanged = m_isPictureChanged || isOther;
}

bool Presentation::Impl::NeedsDraw() const
{
    const CoreContext& context = *app.GetContext();
    return m_isPictureChanged || m_isForegroundChanged || World().IsDirty() || context.GetBackground2D()->IsDirty()
        || context.GetForeground2D()->IsDirty();
}

void Presentation::Impl::Suspend()
{
    if (std::exchange(m_isSuspended, true))
    {
        return;
    }
    picking->Suspend();
    app.Suspend(renderer.get());
    // What is out of the scene for now.
    m_section->Suspend();
    if (LineStyle* const style = m_style.Get())
    {
        style->Suspend();
    }
    m_isWatermarkLaid = false;
    m_holdsCapture = false;
}

void Presentation::Impl::Resume()
{
    m_isSuspended = false;
    app.Resume(renderer.get());
    m_isPictureChanged = true;
}

std::vector<PickHit> Presentation::Impl::Pick(const PickArea& area)
{
    if (!CanDraw())
    {
        return {};
    }
    Followed();
    const Detail::ProcessSettings scope(settings, Camera(), OutlineWidth());
    m_isPictureChanged = app.Update(0.0f) || m_isPictureChanged;
    if (!HasCamera())
    {
        return {};
    }
    FitNear();
    return picking->Pick(World(), Camera(), area);
}

std::vector<PickHit> Presentation::Impl::PickThrough(int x, int y, int most)
{
    if (!CanDraw())
    {
        return {};
    }
    Followed();
    const Detail::ProcessSettings scope(settings, Camera(), OutlineWidth());
    m_isPictureChanged = app.Update(0.0f) || m_isPictureChanged;
    if (!HasCamera())
    {
        return {};
    }
    FitNear();
    if (std::max(m_width, m_height) <= LargestPicked || x < 0 || y < 0 || x >= m_width || y >= m_height)
    {
        return picking->PickThrough(World(), Camera(), x, y, most);
    }
    renderer->ShowPart(PicturePart{{m_width, m_height}, {1, 1}, x, m_height - 1 - y});
    std::vector<PickHit> hits = picking->PickThrough(World(), Camera(), 0, 0, most);
    renderer->ShowPart(std::nullopt);
    for (PickHit& hit : hits)
    {
        hit.x = x;
        hit.y = y;
    }
    return hits;
}

} // namespace OV::Host
