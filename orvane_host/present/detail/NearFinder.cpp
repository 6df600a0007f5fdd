#include "orvane_host/present/detail/NearFinder.h"

#include "orvane_host/geometry/ViewVolume.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"

#include <algorithm>
#include <limits>

namespace OV::Host::Detail
{

namespace
{

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Meshes at nodes that are looked at in one moving frame for whether they were described anew, of which nobody
/// is told: that of one in the layer above the picture counts too, and may come in every frame.
constexpr std::size_t kMostChecked = 4096;

bool IsLine(const Mesh& mesh)
{
    return mesh.Type() == NodeTypeLine;
}

bool DrawsPoints(const Mesh& mesh)
{
    const Material* const material = mesh.GetMaterial();
    return material && (material->GetFlags() & MaterialFlagPoints) != 0;
}

} // namespace

/// What is found so far.
struct NearFinder::Question
{
    const NearView& view;
    double enough;
    std::size_t left; ///< corners that may still be looked at
    NearSpace space;  ///< of the mesh that is looked at
    double nearest = kInfinity;

    void Take(double depth)
    {
        nearest = depth < nearest ? depth : nearest;
        if (nearest < enough)
        {
            nearest = 0.0;
        }
    }

    bool Use(std::size_t corners)
    {
        if (corners > left)
        {
            nearest = 0.0;
            return false;
        }
        left -= corners;
        return true;
    }
};

double NearFinder::Find(const NearView& view, double enough, std::size_t most)
{
    Update(most < kAllCorners ? kMostChecked : kAllCorners);
    // What moves without a word is asked in every frame.
    if (m_view && *m_view == view && m_enough == enough && m_most == most && m_foreignCount == 0)
    {
        return m_answer;
    }
    ++m_question;
    FollowMoved();
    PutRestedIntoTree();
    Question question{view, enough, most, NearSpace(view)};
    if (std::any_of(m_unknown.begin(), m_unknown.end(), [this](Index index) { return IsShown(m_members[index]); }))
    {
        question.nearest = 0.0;
    }
    else
    {
        const NearSpace world(view);
        m_tree.Search(
            kInfinity, [&](const WorldBox& box) { return world.LeastDepth(box, question.nearest); },
            [&](Index index)
            {
                if (m_members[index].loose == kNone)
                {
                    Look(question, m_members[index]);
                }
                return question.nearest;
            });
        for (const Loose& loose : m_loose)
        {
            if (world.LeastDepth(loose.box, question.nearest) < question.nearest)
            {
                Look(question, m_members[loose.member]);
            }
        }
    }
    m_view = view;
    m_enough = enough;
    m_most = most;
    m_answer = question.nearest;
    return m_answer;
}

bool NearFinder::IsShown(const Member& member)
{
    return (member.node->GetFlags() & NodeFlagHidden) == 0 && (IsLine(*member.mesh) || member.mesh->GetMaterial());
}

void NearFinder::Look(Question& question, const Member& member)
{
    const Mesh& mesh = *member.mesh;
    if (!IsShown(member) || !(question.nearest > 0.0))
    {
        return;
    }
    question.space.Set(question.view, member.node->GetGlobal());
    if (member.isBoxTrue)
    {
        WorldBox box;
        mesh.GetBBox(box.low, box.high);
        if (!(question.space.LeastDepth(box, question.nearest) < question.nearest))
        {
            return;
        }
    }
    LookAtTriangles(question, mesh);
}

void NearFinder::LookAtTriangles(Question& question, const Mesh& mesh)
{
    const std::size_t count = mesh.GetIndices().size();
    if (count <= 3 * 2 * kTogether || IsLine(mesh) || DrawsPoints(mesh))
    {
        LookAtTriangles(question, mesh, 0, count);
        return;
    }
    const Parts& parts = PartsOf(mesh);
    m_order.clear();
    for (std::size_t i = 0; i < parts.boxes.size(); ++i)
    {
        const double least = question.space.LeastDepth(parts.boxes[i], question.nearest);
        if (least < question.nearest)
        {
            m_order.emplace_back(least, i);
        }
    }
    std::sort(m_order.begin(), m_order.end());
    for (const auto& [least, part] : m_order)
    {
        if (!(least < question.nearest))
        {
            return;
        }
        const std::size_t first = part * 3 * kTogether;
        LookAtTriangles(question, mesh, first, std::min(first + 3 * kTogether, count));
    }
}

void NearFinder::LookAtTriangles(Question& question, const Mesh& mesh, std::size_t first, std::size_t last) const
{
    if (!question.Use(last - first))
    {
        return;
    }
    const std::vector<Vector>& positions = mesh.GetPositionBuffer();
    const std::vector<unsigned short>& indices = mesh.GetIndices();
    const NearSpace& space = question.space;
    const std::size_t count = positions.size();
    if (IsLine(mesh))
    {
        // The six indices of a part name vertices of the point where it begins; those four further on are of
        // the point where it ends.
        for (std::size_t i = first; i < last; i += 6)
        {
            const std::size_t begin = indices[i];
            if (begin + 4 < count)
            {
                question.Take(space.DepthOf(positions[begin], positions[begin + 4], question.nearest));
            }
        }
        return;
    }
    if (DrawsPoints(mesh))
    {
        for (std::size_t i = first; i < last; ++i)
        {
            const std::size_t index = indices[i];
            if (index < count)
            {
                question.Take(space.DepthOf(positions[index], question.nearest));
            }
        }
        return;
    }
    for (std::size_t i = first; i + 3 <= last; i += 3)
    {
        const std::size_t corners[] = {indices[i], indices[i + 1], indices[i + 2]};
        if (corners[0] < count && corners[1] < count && corners[2] < count)
        {
            question.Take(space.DepthOf(positions[corners[0]], positions[corners[1]], positions[corners[2]],
                                        question.nearest));
        }
    }
}

const NearFinder::Parts& NearFinder::PartsOf(const Mesh& mesh)
{
    Parts& parts = m_parts[mesh.GetRawMesh().get()];
    parts.used = m_question;
    const std::uint32_t print = PrintOf(mesh);
    if (!parts.boxes.empty() && parts.print == print)
    {
        return parts;
    }
    parts.print = print;
    parts.boxes.clear();
    const std::vector<Vector>& positions = mesh.GetPositionBuffer();
    const std::vector<unsigned short>& indices = mesh.GetIndices();
    for (std::size_t first = 0; first < indices.size(); first += 3 * kTogether)
    {
        WorldBox box = WorldBox::Empty();
        const std::size_t last = std::min(first + 3 * kTogether, indices.size());
        for (std::size_t i = first; i < last; ++i)
        {
            const std::size_t index = indices[i];
            if (index < positions.size())
            {
                box.Widen(positions[index]);
            }
        }
        parts.boxes.push_back(box);
    }
    return parts;
}

} // namespace OV::Host::Detail
