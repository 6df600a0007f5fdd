#include "orvane_host/geometry/FeatureLines.h"

#include "orvane_host/geometry/detail/LineGeometry.h"
#include "orvane_host/geometry/detail/MeshNodes.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawLine.h"
#include "orvane/scene/Scene.h"

#include <iterator>

namespace OV::Host
{

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
        Found& found = entry->second;
        if (isNew)
        {
            std::vector<const RawMesh*> meshes;
            for (const std::shared_ptr<RawMesh>& part : entry->first)
            {
                meshes.push_back(part.get());
            }
            const std::vector<FeatureEdge> edges = FeatureEdges::Find(meshes, creaseDegrees);
            found.raw = Detail::MakeRawLines(edges);
            found.segments = edges.size();
        }
        if (!found.isUsed)
        {
            found.isUsed = true;
            for (const std::shared_ptr<RawLine>& raw : found.raw)
            {
                auto* const line = new Line(raw, &m_scene);
                style.AddLine(line);
                found.lines.push_back(line);
            }
        }
        for (Line* line : found.lines)
        {
            line->AddNode(node);
        }
        segments += found.segments;
    }
    // What no node shows now, such as the rims of an earlier section, is of no use later.
    for (auto entry = m_found.begin(); entry != m_found.end();)
    {
        entry = entry->second.isUsed ? std::next(entry) : m_found.erase(entry);
    }
    return segments;
}

void FeatureLines::Hide()
{
    for (auto& [parts, found] : m_found)
    {
        for (Line* line : found.lines)
        {
            delete line;
        }
        found.lines.clear();
        found.isUsed = false;
    }
}

void FeatureLines::Leave()
{
    for (auto& [parts, found] : m_found)
    {
        found.lines.clear();
        found.isUsed = false;
    }
}

void FeatureLines::Forget()
{
    Hide();
    m_found.clear();
}

} // namespace OV::Host
