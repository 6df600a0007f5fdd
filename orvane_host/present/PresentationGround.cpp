// What settings do under and about the model.
#include "orvane_host/present/Surroundings.h"
#include "orvane_host/present/detail/ContactShadow.h"
#include "orvane_host/present/detail/PresentationImpl.h"
#include "orvane_host/present/detail/SectionPlanes.h"
#include "orvane_host/present/detail/ShownPoints.h"
#include "orvane/effects/SkySettings.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <vector>

namespace OV::Host
{

bool Presentation::Impl::ReadSurroundings(const PresentationSettings& wanted, Brought& brought,
                                          std::string& error) const
{
    const auto plainOf = [](const PresentationSettings& of) {
        return of.ground && of.ground->kind == GroundKind::Plain ? std::optional<Color>(of.ground->color) : std::nullopt;
    };
    const auto isSame = [](const Color& a, const Color& b) { return a.r == b.r && a.g == b.g && a.b == b.b; };
    const std::string& source = wanted.surroundings;
    const bool isNew = source != settings.surroundings || wanted.view.upAxis != settings.view.upAxis;
    brought.surroundings = isNew ? nullptr : m_surroundings;
    if (source != "sky")
    {
        std::string reason;
        if (isNew && !source.empty())
        {
            brought.surroundings = Surroundings::Read(source, wanted.view.upAxis, reason);
        }
        const bool isRead = source.empty() || brought.surroundings;
        error = isRead ? error : source + ": " + reason;
        return isRead;
    }
    const std::optional<Color> plain = plainOf(wanted);
    const std::optional<Color> before = plainOf(settings);
    const bool hasColors = isSame(wanted.background, settings.background) && plain.has_value() == before.has_value()
        && (!plain || isSame(*plain, *before));
    if (!brought.surroundings || !hasColors)
    {
        SkySettings sky;
        sky.SetHorizonColor(wanted.background);
        brought.surroundings = Surroundings::OfSky(sky, plain, wanted.view.upAxis);
    }
    return true;
}

bool Presentation::Impl::KeepsContactShadow() const
{
    // It takes longer than the frames of a section that is dragged.
    return m_hurries && !renderer->GetPart();
}

std::optional<Detail::Ground> Presentation::Impl::MakeGround()
{
    if (!settings.ground)
    {
        return std::nullopt;
    }
    const GroundSettings& wanted = *settings.ground;
    Detail::Ground ground;
    ground.kind = wanted.kind;
    ground.color = wanted.color;
    ground.up = settings.view.upAxis;
    const float lowest = !report.hasBox ? 0.0f : ground.up == UpAxis::Y ? report.boxMin.y : report.boxMin.z;
    ground.height = wanted.height.value_or(lowest);
    ground.hides = ground.height > lowest;
    ground.middle = MiddleOfModel();
    ground.extent = Extent();
    if (sun.direction && settings.shadows)
    {
        // The sun tells where things stand.
        return ground;
    }
    if (!m_contactShadow || (m_isContactShadowStale && !KeepsContactShadow()))
    {
        m_isContactShadowStale = false;
        UpdateGlobals();
        // Lines cast none.
        const auto isShown = [this](const MeshNode& place, const Mesh& mesh)
        { return mesh.GetMaterial() && IsOfModel(mesh) && (place.GetFlags() & NodeFlagHidden) == 0; };
        const std::vector<SectionPlane> planes = Detail::SectionPlanesOf(settings.section);
        m_contactShadow = std::make_shared<Detail::ContactShadow>([&](const auto& visit) {
            std::vector<Detail::ContactShadow::Point> along;
            Detail::VisitShown(*World().GetRoot(), isShown, planes, [&](const auto& polygon) {
                along.clear();
                for (const auto& corner : polygon)
                {
                    double place[3];
                    ground.ToGround(corner[0], corner[1], corner[2], place);
                    along.push_back({place[0], place[1], place[2]});
                }
                visit(along);
            });
        });
    }
    ground.shadow = m_contactShadow;
    return ground;
}

} // namespace OV::Host
