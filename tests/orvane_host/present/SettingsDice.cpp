#include "tests/orvane_host/present/SettingsDice.h"

namespace OV::Test
{

using Host::PresentationSettings;

namespace
{

Color AnyColor(Dice& dice)
{
    return Color(dice.Share(), dice.Share(), dice.Share());
}

Host::ClipPlane AnyPlane(Dice& dice)
{
    static constexpr std::array<std::array<float, 3>, 5> normals = {
        {{0, 1, 0}, {1, 0, 0}, {0, 0, 1}, {0.5f, 1, 0.2f}, {-1, 0, 0}}};
    const auto& normal = dice.Of(normals);
    return {Vector(normal[0], normal[1], normal[2]),
            Vector(dice.Share() - 0.5f, 1.5f * dice.Share() - 0.5f, dice.Share() - 0.5f)};
}

void ChangeSection(PresentationSettings& settings, Dice& dice)
{
    switch (dice.Below(6))
    {
    case 0: settings.section.planes.clear(); break;
    case 1: settings.section.planes = {AnyPlane(dice)}; break;
    case 2: settings.section.planes = {AnyPlane(dice), AnyPlane(dice)}; break;
    case 3: settings.section.fill = dice.Below(3) != 0 ? std::optional<Color>(AnyColor(dice)) : std::nullopt; break;
    case 4: settings.section.outlineWidth = dice.Below(2) != 0 ? std::optional<float>(0.1f * dice.Share()) : std::nullopt; break;
    default: settings.section.outlineColor = AnyColor(dice); break;
    }
}

void ChangeLines(PresentationSettings& settings, Dice& dice)
{
    if (dice.Below(3) == 0)
    {
        settings.lines.reset();
        return;
    }
    Host::LineSettings lines = settings.lines.value_or(Host::LineSettings());
    lines.crease = dice.Of(std::array<float, 3>{30.0f, 100.0f, 180.0f});
    lines.width = dice.Of(std::array<float, 3>{1.0f, 2.0f, 4.0f});
    lines.color = AnyColor(dice);
    lines.dash = dice.Below(3) == 0 ? std::optional<float>(3.0f) : std::nullopt;
    lines.offset = dice.Of(std::array<float, 2>{0.0f, 2.0f});
    lines.hidden = static_cast<Host::HiddenLines>(dice.Below(2));
    settings.lines = lines;
}

void ChangeView(PresentationSettings& settings, Dice& dice)
{
    Host::ViewSettings& view = settings.view;
    switch (dice.Below(4))
    {
    case 0:
        view.eye.reset();
        view.target.reset();
        view.named = static_cast<Host::NamedView>(dice.Below(7));
        break;
    case 1:
        view.eye = Vector(8.0f * dice.Share() - 4.0f, 3.0f, 6.0f + 2.0f * dice.Share());
        view.target = dice.Below(2) != 0 ? std::optional<Vector>(Vector(0.2f, 0.1f, 0.0f)) : std::nullopt;
        break;
    case 2: view.orthographic = !view.orthographic; break;
    default: view.fov = dice.Of(std::array<float, 3>{20.0f, 35.0f, 60.0f}); break;
    }
}

void ChangeSheet(PresentationSettings& settings, Dice& dice)
{
    switch (dice.Below(3))
    {
    case 0: settings.sheet.title = dice.Of(std::array<const char*, 3>{"", "A", "House"}); break;
    case 1: settings.sheet.scaleBar = !settings.sheet.scaleBar; break;
    default: settings.sheet.north = dice.Below(2) != 0 ? std::optional<float>(30.0f) : std::nullopt; break;
    }
}

void ChangeSun(PresentationSettings& settings, Dice& dice)
{
    settings.sun.reset();
    settings.shadows.reset();
    if (dice.Below(3) == 0)
    {
        return;
    }
    settings.sun.emplace().direction = Vector(dice.Share() - 0.5f, 0.2f + dice.Share(), dice.Share() - 0.5f);
    if (dice.Below(3) != 0)
    {
        settings.shadows = Host::ShadowSettings{dice.Below(2) != 0, 0.5f + dice.Share(), dice.Share(), dice.Below(2) != 0};
    }
}

} // namespace

void Change(PresentationSettings& settings, Dice& dice, const std::vector<std::string>& paths)
{
    switch (dice.Below(16))
    {
    case 0:
    case 1: settings.look = static_cast<Host::Look>(dice.Below(6)); break;
    case 2: settings.cullBacks = !settings.cullBacks; break;
    case 3:
    case 4: ChangeSection(settings, dice); break;
    case 5: settings.editPath = paths.empty() ? "" : paths[static_cast<std::size_t>(dice.Below(static_cast<int>(paths.size())))]; break;
    case 6: settings.background = AnyColor(dice); break;
    case 7: settings.sky = !settings.sky; break;
    case 8: settings.fog = dice.Below(2) != 0 ? std::optional<Host::FogRange>({3.0f, 9.0f + dice.Share()}) : std::nullopt; break;
    case 9: ChangeLines(settings, dice); break;
    case 10:
        settings.edges = dice.Below(2) != 0 ? std::optional<Host::EdgeLook>({dice.Share(), AnyColor(dice), dice.Below(2) != 0 ? Host::Identity::Object : Host::Identity::Group})
                                            : std::nullopt;
        settings.occlusion = dice.Below(2) != 0;
        settings.occlusionLook.kind = static_cast<Host::OcclusionKind>(dice.Below(2));
        settings.occlusionLook.radius = dice.Below(2) != 0 ? std::optional<float>(0.05f + dice.Share()) : std::nullopt;
        settings.occlusionLook.strength = 2.0f * dice.Share();
        break;
    case 11:
        settings.ground.reset();
        if (dice.Below(3) != 0)
        {
            settings.ground = Host::GroundSettings{static_cast<Host::GroundKind>(dice.Below(2)), AnyColor(dice), std::nullopt};
        }
        break;
    case 12: settings.surroundings = dice.Below(2) != 0 ? "sky" : ""; break;
    case 13: dice.Below(2) != 0 ? ChangeView(settings, dice) : ChangeSheet(settings, dice); break;
    case 14: ChangeSun(settings, dice); break;
    default: settings.antialiasing = static_cast<Host::Antialiasing>(dice.Below(4)); break;
    }
    // The one look that is not cut.
    if (settings.look == Host::Look::Crosshatch)
    {
        settings.section.planes.clear();
    }
}

} // namespace OV::Test
