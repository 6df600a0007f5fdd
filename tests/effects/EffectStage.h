#pragma once

#include "orvane/effects/MaterialEffectES20.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/renderdata/SharedBufferPool.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <memory>
#include <string>
#include <vector>

namespace OV::Test
{

class GLRecorder;

/// What an effect needs to be called by hand, without a renderer: one material, one camera and
/// meshes of one triangle. Under a GLRecorder it needs no context.
class EffectStage
{
public:
    /// The streams of a mesh besides its positions.
    enum Streams : unsigned
    {
        Bare = 0,
        Normals = 1,
        Texture = 2,
    };

    EffectStage();
    EffectStage(const EffectStage&) = delete;
    EffectStage& operator=(const EffectStage&) = delete;
    ~EffectStage();

    LightNode& AddLight();

    /// A mesh of the material at a node of its own, uploaded.
    MeshES20& AddMesh(unsigned int streams);

    /// A further node of the last mesh.
    MeshNode& AddNode();

    /// The node of the last mesh.
    MeshNode& Node() { return *m_nodes.back(); }

    /// Brings global transforms up to date.
    void Update();

    Scene scene;
    Material* material;
    MaterialES20 data;
    CameraNodeES20 camera;

private:
    SharedBufferPool m_pool;
    std::vector<std::unique_ptr<MeshES20>> m_meshes;
    std::vector<MeshNode*> m_nodes;
};

/// Writes what a recorder noted as a reader of an effect's text would: uniforms by their names,
/// as in "u_fogRange(8000, 10000)", all else as calls. Queries are left out. Forgets the calls.
std::vector<std::string> ReadCalls(GLRecorder& gl);

} // namespace OV::Test
