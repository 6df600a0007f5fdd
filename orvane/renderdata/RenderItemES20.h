#pragma once

namespace OV
{

class Mesh;
class MeshNode;
class MeshStyleES20;

/// One entry of a frame's render list: a mesh under a style. Owns nothing.
///
/// Good for the frame that listed it: nothing in the scene may die between the two.
struct RenderItemES20
{
    Mesh* mesh = nullptr; ///< null for all that the style lists, see Renderer20::PrepareWholeMaterial
    MeshStyleES20* style = nullptr;

    /// True: the mesh is drawn at node alone. False: at all its nodes, and node is null.
    bool specificNode = false;
    MeshNode* node = nullptr;
};

} // namespace OV
