#pragma once

#include "bench/BenchSupport.h"
#include "orvane/math/Matrix.h"
#include "orvane/math/Transform.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <GL/glew.h>

#include <cstdint>

namespace OV::Bench
{

/// What changes from mesh to mesh, ready for GL: all that a hand-written loop needs.
struct FlatMesh
{
    unsigned vertexBuffer;
    unsigned indexBuffer;
    int stride;
    std::intptr_t positionOffset;
    std::intptr_t normalOffset;
    std::intptr_t indexOffset;
    int indexCount;
    Matrix mvp;
};

/// What moves with a node, for a scene that moves: worked out in double, as the engine does.
struct FlatNode
{
    Transform local;
    Transform global;
    Matrix matrix;
    float normalMatrix[9];
    bool isMirror;
};

/// Of a mesh with render data, at its first node.
inline FlatMesh Flatten(const Mesh& mesh, const Matrix& viewProjection)
{
    const auto* const data = static_cast<const MeshES20*>(mesh.GetRenderData());
    FlatMesh flat;
    flat.vertexBuffer = data->vertexBufferId;
    flat.indexBuffer = data->indexBufferId;
    flat.stride = data->GetStride();
    flat.positionOffset = data->GetPositionOffset();
    flat.normalOffset = data->GetNormalOffset();
    flat.indexOffset = data->indexOffset;
    flat.indexCount = static_cast<int>(mesh.GetNumIndices());
    flat.mvp.Multiply(viewProjection, *mesh.EachNode().front()->GetGlobalMatrix());
    return flat;
}

/// Brings up to date what is drawn from a node whose local transform has changed.
inline void Compose(FlatNode& node, const Matrix& viewProjection, FlatMesh& mesh)
{
    const Transform parent;
    node.global.Multiply(parent, node.local);
    node.global.ExtractMatrix(node.matrix, true);
    node.global.ExtractAffineInverseTranspose3x3(node.normalMatrix);
    node.isMirror = node.global.GetTransf3d().isMirror();
    mesh.mvp.Multiply(viewProjection, node.matrix);
}

/// Binds the buffers of a mesh unless they are bound.
inline void BindFlat(const FlatMesh& mesh, unsigned& bound)
{
    if (mesh.vertexBuffer != bound)
    {
        glBindBuffer(GL_ARRAY_BUFFER, mesh.vertexBuffer);
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, mesh.indexBuffer);
        bound = mesh.vertexBuffer;
    }
}

} // namespace OV::Bench
