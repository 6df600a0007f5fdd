#include "orvane_host/present/detail/PickEffect.h"

#include "orvane/math/Matrix.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <GL/gl.h>
#include <GL/glext.h>

namespace OV::Host::Detail
{

namespace
{

/// Takes every vertex to (2, 2, 2, 1) in clip space, beyond the right, the upper and the far side
/// of the view. A draw call can't be skipped from within an effect; one of which nothing is left
/// after clipping comes to the same.
constexpr Matrix kOutside = {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 2, 2, 1}};

} // namespace

PickEffect::PickEffect() : DepthIdPassEffectES20(nullptr)
{
    SetIdMode(1);
}

void PickEffect::Begin(Depths depths)
{
    m_depths = depths;
    m_hasOffsets = false;
    m_drawn.clear();
}

void PickEffect::LeaveOut(unsigned int number)
{
    m_leftOut.insert(number);
}

void PickEffect::LeaveNothingOut()
{
    m_leftOut.clear();
}

const PickEffect::Drawn* PickEffect::Find(unsigned int number) const
{
    return number > 0 && number <= m_drawn.size() ? &m_drawn[number - 1] : nullptr;
}

Mesh* PickEffect::MeshOf(unsigned int number) const
{
    const Drawn* const drawn = Find(number);
    if (!drawn)
    {
        return nullptr;
    }
    // Render data are shared by all meshes of the same geometry and name one of them only, which
    // may be at another node.
    Mesh* found = nullptr;
    for (Mesh* mesh : drawn->node->EachMesh())
    {
        if (mesh->GetRenderData() != drawn->mesh)
        {
            continue;
        }
        if (mesh->GetMaterial() == drawn->material)
        {
            return mesh;
        }
        // Under the material of a node no mesh has the one that it is drawn with.
        found = found ? found : mesh;
    }
    return found;
}

MeshNode* PickEffect::NodeOf(unsigned int number) const
{
    const Drawn* const drawn = Find(number);
    return drawn ? drawn->node : nullptr;
}

unsigned int PickEffect::Decode(const unsigned char* rgb)
{
    return rgb[0] | static_cast<unsigned int>(rgb[1]) << 8 | static_cast<unsigned int>(rgb[2]) << 16;
}

void PickEffect::Encode(unsigned int number, float (&color)[4])
{
    for (int channel = 0; channel < 3; ++channel)
    {
        color[channel] = static_cast<float>(((number >> (8 * channel)) & 0xFFu) / 255.0);
    }
    color[3] = 1.0f;
}

void PickEffect::Apply(MaterialES20* material, CameraNodeES20* camera)
{
    DepthIdPassEffectES20::Apply(material, camera);
    m_material = material->GetMaterial();
}

void PickEffect::BindMeshAttributes(MeshES20* mesh)
{
    DepthIdPassEffectES20::BindMeshAttributes(mesh);
    m_mesh = mesh;
}

void PickEffect::BindMeshUniforms(MeshNode* node)
{
    DepthIdPassEffectES20::BindMeshUniforms(node);
    unsigned int number = 0;
    if (m_drawn.size() < MostNumbers)
    {
        m_drawn.push_back({m_mesh, node, m_material});
        number = static_cast<unsigned int>(m_drawn.size());
    }
    float color[4];
    Encode(number, color);
    Set(UniformIdentifier, color[0], color[1], color[2], color[3]);
    if (m_leftOut.count(number) > 0)
    {
        Set(UniformObjectToClip, kOutside);
    }
    if ((m_material->GetFlags() & MaterialFlagPolygonOffset) != 0)
    {
        m_hasOffsets = true;
        if (m_depths == Depths::InPlace)
        {
            glDisable(GL_POLYGON_OFFSET_FILL);
        }
    }
    if ((m_material->GetFlags() & MaterialFlagPoints) != 0)
    {
        // The shader of identifiers writes no size, so that GL's own has to count.
        glDisable(GL_PROGRAM_POINT_SIZE);
        glPointSize(m_material->pointSize > 1.0f ? m_material->pointSize : 1.0f);
    }
}

} // namespace OV::Host::Detail
