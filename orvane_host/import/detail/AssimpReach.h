#pragma once

#include <vector>

struct aiScene;

namespace OV::Host
{

/// What was done to a scene that could not be drawn where and as large as it was.
struct ReachChange
{
    /// All lengths are multiplied by it.
    double factor = 1.0;
    /// How far from the origin the middle of the scene was, 0 for one that was not moved there.
    double movedBy = 0.0;
};

/// Brings a parsed scene within the reach of a camera: one that is too small, or beyond kMaxCoordinate as a whole, is
/// multiplied by a power of 1000, and one that is so far away for its size that places in it come together in floats
/// is moved to the origin.
ReachChange BringWithinReach(aiScene& scene);

/// Takes the vertices of very small and very large meshes to a size for which the parser is made, and back.
///
/// It makes normals in floats, whose range their squares leave, and joins what is nearer than a fixed distance.
/// Powers of two change no digit.
class MeshSizes
{
public:
    explicit MeshSizes(const aiScene& scene);

    void TakeAway(aiScene& scene) const;
    void GiveBack(aiScene& scene) const;

private:
    /// By mesh, of two.
    std::vector<int> m_exponents;
};

} // namespace OV::Host
