#define GL_GLEXT_PROTOTYPES

#include "orvane_host/present/detail/LineRuns.h"

#include "orvane_host/present/detail/LevelLineES20.h"
#include "orvane/effects/SolidLineEffectES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <functional>

namespace OV::Host::Detail
{

namespace
{

constexpr std::size_t kVertices = SolidLineEffectES20::VerticesPerPoint;
constexpr std::size_t kFloats = LineRuns::Stride / sizeof(float);

using Clip = std::array<double, 4>;

Clip ToClip(const Matrix& matrix, const Vector& place)
{
    Clip clip{};
    for (std::size_t row = 0; row < 4; ++row)
    {
        clip[row] = static_cast<double>(matrix.m[row]) * place.x + static_cast<double>(matrix.m[4 + row]) * place.y
            + static_cast<double>(matrix.m[8 + row]) * place.z + matrix.m[12 + row];
    }
    return clip;
}

/// The part of a segment on the right side of planes; none where low isn't below high.
struct Range
{
    double low = 0.0;
    double high = 1.0;

    void Cut(double atStart, double atEnd)
    {
        const double crossing = atStart / (atStart - atEnd);
        if (atStart < 0.0)
        {
            low = atEnd < 0.0 ? 2.0 : std::max(low, crossing);
        }
        else if (atEnd < 0.0)
        {
            high = std::min(high, crossing);
        }
    }
};

Clip Mix(const Clip& a, const Clip& b, double share)
{
    Clip mixed{};
    for (std::size_t i = 0; i < 4; ++i)
    {
        mixed[i] = a[i] + share * (b[i] - a[i]);
    }
    return mixed;
}

/// Lengths in the picture along a segment.
struct Lengths
{
    double toDrawn = 0.0; ///< to where the effect begins to draw it
    double whole = 0.0;
};

Lengths Measure(const Clip& start, const Clip& end, const PixelSize& whole, const std::array<float, 2>& guard)
{
    Range range;
    range.Cut(start[2] + start[3], end[2] + end[3]);
    if (range.low >= range.high)
    {
        return {};
    }
    const auto at = [&](double share) {
        const Clip place = Mix(start, end, share);
        return std::array<double, 2>{place[0] / place[3] * 0.5 * whole.width, place[1] / place[3] * 0.5 * whole.height};
    };
    const auto distance = [](const std::array<double, 2>& a, const std::array<double, 2>& b)
    { return std::hypot(b[0] - a[0], b[1] - a[1]); };
    Range drawn = range;
    for (std::size_t axis = 0; axis < 2; ++axis)
    {
        const double factor = guard[axis];
        drawn.Cut(factor * start[3] + start[axis], factor * end[3] + end[axis]);
        drawn.Cut(factor * start[3] - start[axis], factor * end[3] - end[axis]);
    }
    const std::array<double, 2> first = at(range.low);
    Lengths lengths;
    lengths.toDrawn = drawn.low < drawn.high ? distance(first, at(drawn.low)) : 0.0;
    lengths.whole = distance(first, at(range.high));
    return lengths;
}

} // namespace

bool LineRuns::Entry::operator==(const Entry& other) const
{
    return number == other.number && node == other.node && period == other.period && reach == other.reach
        && std::memcmp(toClip.m, other.toClip.m, sizeof(toClip.m)) == 0;
}

void LineRuns::Begin(const LineEffect::View& view)
{
    m_view = view;
    m_entries.clear();
}

void LineRuns::Add(const RenderItemES20& item, const LineEffect::Pen& pen, const Matrix& toClip)
{
    auto* const line = dynamic_cast<LevelLineES20*>(item.mesh->GetRenderData());
    if (!line)
    {
        return;
    }
    if (pen.dashes.period <= 0.0f && pen.hiddenHalfWidth <= 0.0f)
    {
        if (!line->GetJoints())
        {
            AddAt(*line, nullptr, pen, toClip);
        }
        return;
    }
    if (item.specificNode)
    {
        AddAt(*line, item.node, pen, toClip);
        return;
    }
    for (const MeshNode* node : item.mesh->EachNode())
    {
        AddAt(*line, node, pen, toClip);
    }
}

void LineRuns::AddAt(LevelLineES20& line, const MeshNode* node, const LineEffect::Pen& pen, const Matrix& toClip)
{
    Entry entry{&line, line.GetNumber(), node, 0.0f, 0.0f, Matrix(), 0};
    std::fill(std::begin(entry.toClip.m), std::end(entry.toClip.m), 0.0f);
    if (node)
    {
        entry.period = pen.dashes.period > 0.0f ? pen.dashes.period : pen.hiddenDashes.period;
        entry.reach = LineEffect::ReachOf(pen);
        entry.toClip.Multiply(toClip, *const_cast<MeshNode*>(node)->GetGlobalMatrix());
    }
    m_entries.push_back(entry);
}

void LineRuns::End()
{
    const auto before = [](const Entry& a, const Entry& b) {
        return a.line != b.line ? std::less<>()(a.line, b.line) : std::less<>()(a.node, b.node);
    };
    std::sort(m_entries.begin(), m_entries.end(), before);
    if (m_entries == m_uploaded && m_view.whole == m_uploadedWhole)
    {
        // Offsets are those of what was uploaded.
        m_entries = m_uploaded;
        return;
    }
    m_values.clear();
    for (Entry& entry : m_entries)
    {
        entry.offset = m_values.size();
        Fill(entry);
    }
    if (m_buffer == 0)
    {
        glGenBuffers(1, &m_buffer);
    }
    glBindBuffer(GL_ARRAY_BUFFER, m_buffer);
    glBufferData(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(m_values.size() * sizeof(float)), m_values.data(),
                 GL_STREAM_DRAW);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    MeshES20::ResetBufferCache();
    m_uploaded = m_entries;
    m_uploadedWhole = m_view.whole;
}

void LineRuns::Fill(const Entry& entry)
{
    const LineShape& shape = entry.line->GetShape();
    const std::vector<Vector>& positions = entry.line->GetMesh()->GetRawMesh()->positions;
    m_values.resize(entry.offset + shape.CountPoints() * kVertices * kFloats, 0.0f);
    const std::array<float, 2> guard = LineEffect::GuardOf(m_view.whole, entry.reach);
    double run = 0.0;
    for (const LineShape::Segment& segment : shape.GetSegments())
    {
        Lengths lengths;
        // The line may have become another one since it was uploaded.
        if (entry.node && (segment.point + std::size_t(1)) * kVertices < positions.size())
        {
            lengths = Measure(ToClip(entry.toClip, positions[segment.point * kVertices]),
                              ToClip(entry.toClip, positions[(segment.point + std::size_t(1)) * kVertices]),
                              m_view.whole, guard);
        }
        run = segment.goesOn ? run : 0.0;
        const double begins = entry.period > 0.0f ? std::fmod(run + lengths.toDrawn, double(entry.period)) : 0.0;
        run += lengths.whole;
        float* value = m_values.data() + entry.offset + segment.point * kVertices * kFloats;
        for (std::size_t vertex = 0; vertex < kVertices; ++vertex, value += kFloats)
        {
            value[0] = static_cast<float>(begins);
            value[1] = static_cast<float>(segment.joints);
        }
    }
}

const LineRuns::Entry* LineRuns::Find(const MeshES20& line, const MeshNode& node) const
{
    const auto first = std::lower_bound(m_entries.begin(), m_entries.end(), &line, [](const Entry& entry, const MeshES20* key)
                                        { return std::less<const MeshES20*>()(entry.line, key); });
    const auto last = std::upper_bound(first, m_entries.end(), &line, [](const MeshES20* key, const Entry& entry)
                                       { return std::less<const MeshES20*>()(key, entry.line); });
    if (first != last && !first->node)
    {
        return &*first;
    }
    const auto found = std::lower_bound(first, last, &node, [](const Entry& entry, const MeshNode* key)
                                        { return std::less<const MeshNode*>()(entry.node, key); });
    return found != last && found->node == &node ? &*found : nullptr;
}

int LineRuns::Bind(const MeshES20& line, const MeshNode& node, unsigned int attribute) const
{
    const Entry* const entry = Find(line, node);
    if (!entry)
    {
        auto* const level = dynamic_cast<LevelLineES20*>(const_cast<MeshES20*>(&line));
        glVertexAttrib2f(attribute, 0.0f, level ? static_cast<float>(level->GetJoints().value_or(0)) : 0.0f);
        return -1;
    }
    glBindBuffer(GL_ARRAY_BUFFER, m_buffer);
    return static_cast<int>(entry->offset * sizeof(float));
}

void LineRuns::Unbind(const MeshES20& line)
{
    glBindBuffer(GL_ARRAY_BUFFER, line.vertexBufferId);
}

void LineRuns::ReleaseGL()
{
    if (m_buffer != 0)
    {
        glDeleteBuffers(1, &m_buffer);
    }
    m_buffer = 0;
    m_entries.clear();
    m_uploaded.clear();
}

} // namespace OV::Host::Detail
