#pragma once

#include "orvane_host/geometry/FeatureEdges.h"

#include <cstddef>
#include <map>
#include <memory>
#include <vector>

namespace OV
{

class LineStyle;
class RawMesh;
class Scene;

} // namespace OV

namespace OV::Host
{

/// What FeatureEdges::AddTo does to a scene, as something that can be taken back.
///
/// The edges that were found last stay known, so that lines come back without another search. Lines that a host
/// deletes, or the scene when it is emptied, are gone until the next Show.
class FeatureLines
{
public:
    /// @param scene not owned; outlives this, unless Leave comes before its end.
    explicit FeatureLines(Scene& scene);

    /// Takes the lines away. GL, if they were drawn.
    ~FeatureLines();

    FeatureLines(const FeatureLines&) = delete;
    FeatureLines& operator=(const FeatureLines&) = delete;

    /// Gives every mesh node of the scene the edges of its meshes as lines of a style, in place of
    /// those that it has from here. GL, if they were drawn.
    /// @param style should be in the scene.
    /// @return the number of segments, those of each node counted.
    std::size_t Show(LineStyle& style, float creaseDegrees);

    /// Takes the lines away; their edges stay known. GL, if they were drawn.
    void Hide();

    /// Leaves the lines to the scene for good.
    void Leave();

    /// Forgets the edges, before geometry changes. GL, if they were drawn: it hides them first.
    void Forget();

private:
    /// The geometry is kept alive with what is known of it, so that no other takes its address.
    using Geometry = std::vector<std::shared_ptr<RawMesh>>;

    /// The edges of one geometry.
    struct Found;

    Scene& m_scene;
    float m_crease = -1.0f;
    std::map<Geometry, std::unique_ptr<Found>> m_found;
};

} // namespace OV::Host
