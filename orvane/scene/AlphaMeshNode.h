#pragma once

namespace OV
{

class Mesh;
class MeshNode;

/// One transparent mesh at one node, as an entry of the scene's list that is drawn back to
/// front.
struct AlphaMeshNode
{
    MeshNode* node = nullptr;
    Mesh* mesh = nullptr;
    /// Distance in front of the camera as of the last sort.
    float z = 0.0f;
};

} // namespace OV
