#include "orvane_host/present/DrawCounts.h"

#include "orvane_host/context/HeadlessContext.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <set>

namespace OV::Host
{

namespace
{

/// Asks GL for the sizes of buffers, past the engine, and leaves its bindings as they were.
class BufferSizes
{
public:
    BufferSizes()
    {
        Fetch(m_getIntegerv, "glGetIntegerv");
        Fetch(m_bindBuffer, "glBindBuffer");
        Fetch(m_getBufferParameteriv, "glGetBufferParameteriv");
        m_getIntegerv(GL_ARRAY_BUFFER_BINDING, &m_bound);
    }

    ~BufferSizes() { m_bindBuffer(GL_ARRAY_BUFFER, static_cast<GLuint>(m_bound)); }

    BufferSizes(const BufferSizes&) = delete;
    BufferSizes& operator=(const BufferSizes&) = delete;

    std::uint64_t Of(unsigned int name) const
    {
        GLint size = 0;
        m_bindBuffer(GL_ARRAY_BUFFER, name);
        m_getBufferParameteriv(GL_ARRAY_BUFFER, GL_BUFFER_SIZE, &size);
        return size > 0 ? static_cast<std::uint64_t>(size) : 0;
    }

private:
    template <typename Function>
    static void Fetch(Function& function, const char* name)
    {
        function = reinterpret_cast<Function>(HeadlessContext::GetProcAddress(name));
    }

    decltype(&::glGetIntegerv) m_getIntegerv = nullptr;
    PFNGLBINDBUFFERPROC m_bindBuffer = nullptr;
    PFNGLGETBUFFERPARAMETERIVPROC m_getBufferParameteriv = nullptr;
    GLint m_bound = 0;
};

/// A node draws each of its meshes once, unless it is not seen or has a material of its own.
std::uint64_t CountNodes(const Mesh& mesh)
{
    constexpr unsigned int excluded = NodeFlagHidden | NodeFlagCulled | NodeFlagHasNodeMaterial;
    const PointerSpan<MeshNode> nodes = mesh.EachNode();
    return static_cast<std::uint64_t>(
        std::count_if(nodes.begin(), nodes.end(), [](const MeshNode* node)
                      { return (node->GetFlags() & excluded) == 0 && node->ReadyToDraw(); }));
}

void CountMaterial(const Material& material, DrawCounts& counts, std::set<unsigned int>& buffers)
{
    for (const Mesh* mesh : material.EachMesh())
    {
        const auto* data = dynamic_cast<const MeshES20*>(mesh->GetRenderData());
        if (!data || data->vertexBufferId == 0 || data->indexCount == 0 || !mesh->ReadyToDraw())
        {
            continue;
        }
        buffers.insert({data->vertexBufferId, data->indexBufferId});
        const std::uint64_t draws = CountNodes(*mesh);
        counts.draws += draws;
        if ((material.flags & MaterialFlagPoints) == 0)
        {
            counts.drawnTriangles += draws * static_cast<std::uint64_t>(data->indexCount / 3);
        }
    }
}

/// Lines are drawn ready or not, and with no index too.
void CountLineStyle(const LineStyle& style, DrawCounts& counts, std::set<unsigned int>& buffers)
{
    for (const Line* line : style.GetLines())
    {
        const auto* data = dynamic_cast<const MeshES20*>(line->GetRenderData());
        if (data && data->vertexBufferId != 0)
        {
            buffers.insert({data->vertexBufferId, data->indexBufferId});
            counts.draws += CountNodes(*line);
        }
    }
}

} // namespace

DrawCounts CountDraws(const std::vector<const Scene*>& scenes)
{
    DrawCounts counts;
    std::set<unsigned int> buffers;
    for (const Scene* scene : scenes)
    {
        for (const auto* list : {&scene->GetOptimizedMaterials(), &scene->GetAlphaMaterials()})
        {
            for (const Material* material : *list)
            {
                CountMaterial(*material, counts, buffers);
            }
        }
        for (const LineStyle* style : scene->GetLineStyles())
        {
            CountLineStyle(*style, counts, buffers);
        }
    }
    const BufferSizes sizes;
    for (const unsigned int buffer : buffers)
    {
        counts.bytes += sizes.Of(buffer);
    }
    counts.buffers = buffers.size();
    return counts;
}

} // namespace OV::Host
