#include "orvane_host/present/detail/PresentationImpl.h"
#include "orvane_host/present/detail/SheetText.h"
#include "orvane_host/present/detail/ShownPoints.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace OV::Host
{

namespace
{

bool IsFinite(const QGM::Point3d& point)
{
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

bool IsDrawable(const Dimension& dimension)
{
    const std::size_t count = dimension.points.size();
    return (count == 2 || count == 3) && std::all_of(dimension.points.begin(), dimension.points.end(), IsFinite);
}

} // namespace

bool Presentation::Impl::SetDimensions(std::vector<Dimension> wanted)
{
    if (!std::all_of(wanted.begin(), wanted.end(), IsDrawable))
    {
        return false;
    }
    dimensions = std::move(wanted);
    m_areNotesStale = m_isForegroundChanged = true;
    return true;
}

bool Presentation::Impl::SetUnit(double metres)
{
    if (!(metres >= 0.0) || !std::isfinite(metres))
    {
        return false;
    }
    report.metresPerUnit = metres;
    m_isUnitTold = metres > 0.0;
    m_sheet.reset();
    m_areNotesStale = m_isForegroundChanged = true;
    return true;
}

bool Presentation::Impl::SetLabel(const Node* node, const std::string* text)
{
    if (!node)
    {
        return false;
    }
    const auto imported = std::find_if(nodes.begin(), nodes.end(),
                                       [&](const ImportedNode& candidate) { return candidate.node == node; });
    const bool isCalled = text && text->empty() && imported != nodes.end();
    const std::string shown = isCalled ? DivideName(imported->name).name : text ? *text : std::string();
    if (text && shown.empty())
    {
        return false;
    }
    m_labels.erase(std::remove_if(m_labels.begin(), m_labels.end(),
                                  [&](const NodeLabel& label) { return label.node == node; }), m_labels.end());
    if (text)
    {
        m_labels.push_back({node, shown, {}});
        PlaceLabels();
    }
    m_areNotesStale = m_isForegroundChanged = true;
    return true;
}

void Presentation::Impl::ClearLabels()
{
    m_labels.clear();
    m_areNotesStale = m_isForegroundChanged = true;
}

void Presentation::Impl::PlaceLabels()
{
    UpdateGlobals();
    if (m_lostNodes->AreThere())
    {
        return;
    }
    for (NodeLabel& label : m_labels)
    {
        const auto box = BoxOf(Detail::ShownPoints(*label.node, ModelFilter(), {}));
        QGM::Point3d middle;
        if (box)
        {
            middle = {(static_cast<double>(box->low.x) + box->high.x) / 2.0,
                      (static_cast<double>(box->low.y) + box->high.y) / 2.0,
                      (static_cast<double>(box->low.z) + box->high.z) / 2.0};
            middle *= label.node->GetGlobal().GetTransf3d().invert();
        }
        // A node that is flattened has no way back; its own place serves.
        label.place = IsFinite(middle) ? middle : QGM::Point3d();
    }
    m_areNotesStale = true;
}

void Presentation::Impl::MakeNotes()
{
    Notes::Content content;
    content.dimensions = dimensions;
    for (const Dimension& dimension : dimensions)
    {
        content.numbers.push_back(Detail::InLocale(dimension.Text(Detail::UnitSign(report.metresPerUnit))));
    }
    m_shownLabels.clear();
    for (std::size_t i = 0; i < m_labels.size(); ++i)
    {
        if (!ShownPointsBelow(*m_labels[i].node).empty())
        {
            m_shownLabels.push_back(i);
            content.labels.push_back({m_labels[i].place, Detail::InLocale(m_labels[i].text)});
        }
    }
    if (content.IsEmpty())
    {
        m_notes.reset();
        return;
    }
    if (!m_notes)
    {
        m_notes = std::make_unique<Notes>(*app.GetContext()->GetForeground2D());
    }
    m_notes->SetContent(std::move(content));
}

void Presentation::Impl::LayOutNotes()
{
    if (std::exchange(m_areNotesStale, false))
    {
        MakeNotes();
    }
    if (!m_notes)
    {
        return;
    }
    if (!m_shownLabels.empty() && World().IsDirty())
    {
        UpdateGlobals();
    }
    if (m_lostNodes->AreThere() || m_labels.size() < m_shownLabels.size())
    {
        return;
    }
    for (std::size_t i = 0; i < m_shownLabels.size(); ++i)
    {
        const NodeLabel& label = m_labels[m_shownLabels[i]];
        QGM::Point3d place = label.place;
        place *= label.node->GetGlobal().GetTransf3d();
        m_notes->MoveLabel(i, place);
    }
    m_notes->Layout(Camera(), m_width, m_height);
}

} // namespace OV::Host
