#include "orvane/renderdata/MeshES20.h"

#include "orvane/effects/EffectES20.h"
#include "orvane/base/GLCheckpoint.h"
#include "orvane/renderdata/SharedBuffer.h"
#include "orvane/renderdata/SharedBufferPool.h"
#include "orvane/renderdata/detail/PlainDraw.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"

#include <GL/glew.h>

namespace OV
{

unsigned int MeshES20::s_vertexId = 0;
std::uint64_t MeshES20::s_listingRevision = 0;

MeshES20::MeshES20(Mesh* sceneMesh, SharedBufferPool* bufferPool) :
    mesh(sceneMesh), pool(bufferPool)
{
    if (mesh && mesh->GetNumVertices() > 0)
    {
        sharedBuffer = bufferPool->AddMesh(this);
    }
}

MeshES20::~MeshES20()
{
    ++s_listingRevision;
    if (sharedBuffer)
    {
        sharedBuffer->RemoveMesh(this);
    }
}

void MeshES20::Render(EffectES20* effect, const std::vector<MeshNode*>& nodes, bool specificNode)
{
    if (!mesh || !effect || vertexBufferId == 0 || mesh->GetRawMesh()->positions.empty())
    {
        return;
    }
    ApplyBuffer(vertexBufferId, indexBufferId);
    OV_GL_CHECKPOINT();

    const Material* material = mesh->GetMaterial();
    const unsigned int meshFlags = mesh->GetFlags();
    const unsigned int materialFlags = material ? material->GetFlags() : 0;
    // A material with the bit has turned culling off for all of its meshes.
    const bool cullOff =
        material && (meshFlags & MeshFlagNoCull) != 0 && (materialFlags & MaterialFlagNoCull) == 0;
    if (cullOff)
    {
        glDisable(GL_CULL_FACE);
    }

    effect->clipPlanesActive = clippingPlaneEnabled;
    effect->meshNodeFlag = (meshFlags & MeshFlagEffectFlag) != 0;
    effect->BindMeshAttributes(this);
    EffectES20::DisableSpareAttributes();
    OV_GL_CHECKPOINT();

    const bool alwaysPass = (materialFlags & MaterialFlagAlwaysPass) != 0;
    int depthFunction = GL_LESS;
    if (alwaysPass)
    {
        depthFunction = PassAlways();
    }
    const bool asPoints = (materialFlags & MaterialFlagPoints) != 0;
    if (asPoints)
    {
        // Without it desktop GL ignores the size that the vertex shader writes.
        glEnable(GL_PROGRAM_POINT_SIZE);
    }
    if (const int count = DrawnIndexCount())
    {
        const unsigned int mode = asPoints ? GL_POINTS : GL_TRIANGLES;
        for (MeshNode* node : nodes)
        {
            if (!IsDrawn(*node, specificNode))
            {
                continue;
            }
            effect->BindMeshUniforms(node);
            OV_GL_CHECKPOINT();
            glDrawElements(mode, count, GL_UNSIGNED_SHORT, FirstIndex());
            OV_GL_CHECKPOINT();
        }
    }
    if (asPoints)
    {
        glDisable(GL_PROGRAM_POINT_SIZE);
    }

    if (mesh->UsingDrawID())
    {
        mesh->InvalidateDrawID();
    }
    effect->ReleaseMeshAttributes(this);
    if (alwaysPass)
    {
        glDepthFunc(static_cast<GLenum>(depthFunction));
        OV_GL_CHECKPOINT();
    }
    if (cullOff)
    {
        glEnable(GL_CULL_FACE);
    }
}

int MeshES20::PassAlways()
{
    int before = GL_LESS;
    glGetIntegerv(GL_DEPTH_FUNC, &before);
    OV_GL_CHECKPOINT();
    glDepthFunc(GL_ALWAYS);
    OV_GL_CHECKPOINT();
    return before;
}

int MeshES20::DrawnIndexCount(int reach) const
{
    return detail::DrawnIndexCount(*this, *mesh->GetRawMesh(), reach);
}

const void* MeshES20::FirstIndex() const
{
    return detail::FirstIndex(*this);
}

bool MeshES20::IsDrawn(const MeshNode& node, bool specificNode)
{
    return detail::IsDrawn(node, specificNode);
}

void MeshES20::BindBuffer(unsigned int vertexBuffer, unsigned int indexBuffer)
{
    glBindBuffer(GL_ARRAY_BUFFER, vertexBuffer);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, indexBuffer);
    s_vertexId = vertexBuffer;
}

void MeshES20::ResetBufferCache()
{
    s_vertexId = 0;
}

} // namespace OV
