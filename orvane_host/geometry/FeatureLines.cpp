#include "orvane_host/geometry/FeatureLines.h"

#include "orvane_host/geometry/detail/Lent.h"
#include "orvane_host/geometry/detail/LineGeometry.h"
#include "orvane_host/geometry/detail/MeshNodes.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawLine.h"
#include "orvane/scene/Scene.h"

#include <iterator>
#include <list>

namespace OV::Host
{

namespace
{

/// A line that tells when it is gone.
class KnownLine final : public Line
{
public:
    using Line::Line;

    Lifetime& GetLifetime() { return m_lifetime; }

private:
    Lifetime m_lifetime;
};

} // namespace

struct FeatureLines::Found
{
    std::vector<std::shared_ptr<RawLine>> raw;
    std::size_t segments = 0;
    std::list<Detail::Lent<KnownLine>> lines; ///< in the scene
    bool isUsed = false;
};

FeatureLines::FeatureLines(Scene& scene) : m_scene(scene)
{
}

FeatureLines::~FeatureLines()
{
    Hide();
}

std::size_t FeatureLines::Show(LineStyle& style, float creaseDegrees)
{
    Hide();
    if (m_crease != creaseDegrees)
    {
        m_found.clear();
        m_crease = creaseDegrees;
    }
    std::size_t segments = 0;
    for (MeshNode* node : Detail::MeshNodesOf(m_scene))
    {
        Geometry parts = Detail::EdgeParts(*node);
        if (parts.empty())
        {
            continue;
        }
        const auto [entry, isNew] = m_found.try_emplace(std::move(parts));
        if (isNew)
        {
            entry->second = std::make_unique<Found>();
            std::vector<const RawMesh*> meshes;
            for (const std::shared_ptr<RawMesh>& part : entry->first)
            {
                meshes.push_back(part.get());
            }
            const std::vector<FeatureEdge> edges = FeatureEdges::Find(meshes, creaseDegrees);
            entry->second->raw = Detail::MakeRawLines(edges);
            entry->second->segments = edges.size();
        }
        Found& found = *entry->second;
        if (!found.isUsed)
        {
            found.isUsed = true;
            for (const std::shared_ptr<RawLine>& raw : found.raw)
            {
                found.lines.emplace_back(std::make_unique<KnownLine>(raw, &m_scene));
                style.AddLine(found.lines.back().Get());
            }
        }
        for (const Detail::Lent<KnownLine>& line : found.lines)
        {
            line.Get()->AddNode(node);
        }
        segments += found.segments;
    }
    // What no node shows now, such as the rims of an earlier section, is of no use later.
    for (auto entry = m_found.begin(); entry != m_found.end();)
    {
        entry = entry->second->isUsed ? std::next(entry) : m_found.erase(entry);
    }
    return segments;
}

void FeatureLines::Hide()
{
    for (auto& [parts, found] : m_found)
    {
        found->lines.clear();
        found->isUsed = false;
    }
}

void FeatureLines::Leave()
{
    for (auto& [parts, found] : m_found)
    {
        for (Detail::Lent<KnownLine>& line : found->lines)
        {
            line.Release();
        }
        found->lines.clear();
        found->isUsed = false;
    }
}

void FeatureLines::Forget()
{
    Hide();
    m_found.clear();
}

} // namespace OV::Host
