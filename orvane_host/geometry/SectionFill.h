#pragma once

#include "orvane/math/Color.h"
#include "orvane/math/Vector.h"

#include <cstddef>
#include <vector>

namespace OV
{

class Scene;

} // namespace OV

namespace OV::Host
{

/// A plane that cuts away what lies on the side of its normal, in world space.
struct SectionPlane
{
    Vector normal; ///< of length 1
    Vector position;
};

/// Closes the solids of a scene where planes cut them.
///
/// The section fill of the effects shows on the backs of faces. That closes a solid unless another
/// lies within it, is not cut itself, and turns its front to the eye; and it lies as deep as those
/// faces do. With faces in the plane a section is closed whatever is behind it, has a rim that
/// FeatureEdges finds, and hides what is in the solid.
class SectionFill
{
public:
    /// Gives the nodes of a scene faces where planes run through what closes of their opaque
    /// meshes. They show their backs to the side that is cut away, which has the section fill of
    /// the effects; where an effect has none it shows the colour, at its vertices and in its
    /// material. Call it when the scene stands as it shall be cut, with its graph up to date and
    /// before FeatureEdges.
    /// @param inset how deep below its plane a face lies, besides what rounding takes: more than
    ///        the outline of a cut where that shall show.
    /// @return the number of nodes that got faces, counted for each plane.
    static std::size_t AddTo(Scene& scene, const std::vector<SectionPlane>& planes, float inset, const Color& color);

    /// Lets the materials of what the planes run through show the backs of faces, as the section
    /// fill of the effects and the outline of a cut need it. What isn't cut stays as it is, or its
    /// backs would have the fill too: a material that is on both is copied for what is cut. The
    /// graph must be up to date.
    static void ShowInsides(Scene& scene, const std::vector<SectionPlane>& planes);
};

} // namespace OV::Host
