#include "orvane_host/present/detail/LineRoom.h"

#include "orvane_host/present/detail/MaterialDataOf.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/Scene.h"

#include <GL/gl.h>

namespace OV::Host::Detail
{

namespace
{

/// Writes depth anew, and nothing else, for the length of a scope.
class DepthAnewScope
{
public:
    DepthAnewScope()
    {
        glGetBooleanv(GL_COLOR_WRITEMASK, m_colorMask);
        glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
        glDepthMask(GL_TRUE);
        glClear(GL_DEPTH_BUFFER_BIT);
    }

    ~DepthAnewScope() { glColorMask(m_colorMask[0], m_colorMask[1], m_colorMask[2], m_colorMask[3]); }

    DepthAnewScope(const DepthAnewScope&) = delete;
    DepthAnewScope& operator=(const DepthAnewScope&) = delete;

private:
    GLboolean m_colorMask[4] = {};
};

} // namespace

void LineRoom::Draw(const std::vector<RenderItemES20>& items, std::size_t firstLine, std::size_t firstAlpha,
                    bool overDraw, const DrawItems& draw)
{
    if (overDraw || !TakeBack(items, firstLine))
    {
        draw(items, false);
        return;
    }
    const auto lines = items.begin() + static_cast<std::ptrdiff_t>(firstLine);
    m_part.assign(items.begin(), lines);
    const bool hasLines = firstAlpha > firstLine;
    m_meshes.clear();
    KeepDrawIDs(m_part);
    draw(m_part, false);
    GiveAgain();
    if (hasLines)
    {
        const DepthAnewScope depthAnew;
        RestoreDrawIDs();
        draw(m_part, true);
    }
    m_part.assign(lines, items.end());
    draw(m_part, false);
}

bool LineRoom::TakeBack(const std::vector<RenderItemES20>& items, std::size_t end)
{
    const MeshStyleES20* style = nullptr;
    for (std::size_t i = 0; i < end; ++i)
    {
        // The meshes of a material stand in a row.
        if (items[i].style == style)
        {
            continue;
        }
        style = items[i].style;
        const MaterialES20* const data = MaterialDataOf(*style);
        Material* const material = data ? data->GetMaterial() : nullptr;
        const DepthOffset offset = material ? DepthRank::OffsetOf(*material) : DepthOffset();
        if (DepthRank::HasRoom(offset))
        {
            DepthRank::Give(*material, DepthRank::Steps(DepthRank::Of(offset)));
            m_materials.push_back({material, offset});
        }
    }
    return !m_materials.empty();
}

void LineRoom::Without(const std::vector<RenderItemES20>& items, const std::vector<RenderItemES20>& more,
                       const std::function<void()>& draw)
{
    TakeBack(items, items.size());
    TakeBack(more, more.size());
    m_meshes.clear();
    KeepDrawIDs(items);
    KeepDrawIDs(more);
    draw();
    RestoreDrawIDs();
    GiveAgain();
}

void LineRoom::RestoreDrawIDs()
{
    for (Mesh* mesh : m_meshes)
    {
        mesh->SetDrawID(mesh->GetScene()->GetUpdateID());
    }
}

void LineRoom::KeepDrawIDs(const std::vector<RenderItemES20>& items)
{
    for (const RenderItemES20& item : items)
    {
        // A material that is drawn as a whole has none with draw IDs.
        if (item.mesh && item.mesh->UsingDrawID() && item.mesh->ReadyToDraw())
        {
            m_meshes.push_back(item.mesh);
        }
    }
}

void LineRoom::GiveAgain()
{
    for (const Moved& moved : m_materials)
    {
        DepthRank::Give(*moved.material, moved.offset);
    }
    m_materials.clear();
}

} // namespace OV::Host::Detail
