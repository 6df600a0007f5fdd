#pragma once

#include "orvane/math/Vector.h"

#include <array>
#include <cstddef>

namespace OV
{

class Matrix;

} // namespace OV

namespace OV::Host
{

/// A box along the axes of the world. Nothing is in one whose low lies above its high.
struct WorldBox
{
    Vector low;
    Vector high;

    void Widen(const WorldBox& other);
    void Widen(const Vector& point);

    /// A box that nothing is in, to be widened.
    static WorldBox Empty();
};

/// What a camera sees, or a part of its picture does, as the planes around it.
class ViewVolume
{
public:
    /// How a box lies to the view.
    enum class Relation
    {
        Outside, ///< for certain; rounding never hides what touches the view
        Touches, ///< or may touch: the test is by planes
        Inside,  ///< all of it
    };

    /// A part of the picture in clip space, -1 to 1 each way from the lower left.
    struct Part
    {
        float left = -1.0f;
        float right = 1.0f;
        float bottom = -1.0f;
        float top = 1.0f;
    };

    /// @param worldToClip such as CameraNodeES20::GetMVP. Numbers that are not finite see everything.
    explicit ViewVolume(const Matrix& worldToClip) : ViewVolume(worldToClip, Part()) {}

    /// What is seen in a part of the picture.
    ViewVolume(const Matrix& worldToClip, const Part& part);

    Relation RelationOf(const WorldBox& box) const;
    bool Sees(const WorldBox& box) const { return RelationOf(box) != Relation::Outside; }

    /// How many times the height of the picture a length at a place takes up at most; infinite at
    /// and behind the eye.
    float ShareOfHeight(const Vector& place, float length) const;

private:
    struct Plane
    {
        double x, y, z, w; ///< inside where x * X + y * Y + z * Z + w >= 0
    };

    static constexpr std::size_t kPlanes = 6;
    using Numbers = std::array<double, kPlanes>;

    /// A number of each plane beside those of the others, so that several are worked out at once.
    struct Planes
    {
        Numbers x, y, z, w;
    };

    Planes m_planes;
    Plane m_depth;          ///< gives clip W
    double m_lengthScale;   ///< of the rows that give clip X and Y
};

} // namespace OV::Host
