#pragma once

#include <memory>

namespace OV
{

class Mesh;
class MeshES20;
class RawMesh;
class Scene;
class SharedBufferPool;
}

namespace OV::Detail
{

/// The whole of clip space as two triangles with texture coordinates from 0 to 1. They turn
/// clockwise: it is drawn with culling off.
std::shared_ptr<RawMesh> MakeScreenQuad();

/// That quad at one node of a scene of its own, which owns mesh and data.
struct ScreenMesh
{
    std::unique_ptr<Scene> scene;
    Mesh* mesh = nullptr;
    MeshES20* data = nullptr; ///< in the pool, not yet uploaded

    ScreenMesh() = default;
    ScreenMesh(ScreenMesh&&) = default;
    ~ScreenMesh();
};

/// Leaves nothing behind where memory runs out.
ScreenMesh MakeScreenMesh(SharedBufferPool& pool);

} // namespace OV::Detail
