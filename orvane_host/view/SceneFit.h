#pragma once

#include <functional>

namespace OV
{

class CameraNode;
class Mesh;
class MeshNode;
class Scene;

} // namespace OV

namespace OV::Host
{

/// Moves a camera, without turning it, so that the vertices that a scene draws fill the picture
/// and lie in its middle. A box about them, which ViewFit goes by, leaves room at its corners.
class SceneFit
{
public:
    /// Keeps the camera's direction and projection. Writes position, near, far and distance to
    /// target, and for an orthographic camera the angle. GL-free; visits every index a few times.
    /// @param scene its globals must be up to date; hidden nodes do not count.
    /// @param camera in the scene's tree, looking the way it shall.
    /// @param aspect width over height.
    /// @param margin share of half the picture left free on each side, 0 to below 1.
    /// @return false, with the camera untouched, when the scene draws less than a line of its
    /// own. Vertices that are not finite or beyond 1e15 do not count.
    static bool Frame(CameraNode& camera, const Scene& scene, float aspect, float margin = 0.05f);

    /// Which meshes at which nodes count.
    using Filter = std::function<bool(const MeshNode&, const Mesh&)>;

    /// The same for what a filter lets through, hidden or not.
    static bool Frame(CameraNode& camera, const Scene& scene, const Filter& counts, float aspect,
                      float margin = 0.05f);
};

} // namespace OV::Host
