#pragma once

#include "orvane/math/Vector.h"

#include <array>

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

    /// Planes of the view, a bit each.
    using PlaneSet = unsigned int;
    static constexpr PlaneSet AllPlanes = 0x3F;
    /// In place of a set: the box lies outside.
    static constexpr PlaneSet NoneSeen = 0x40;

    /// Which planes a box may lie across; none where it lies inside.
    /// @param planes those to be looked at: what lies across another box, of which this is a part. Inside the others
    ///        it lies as that does.
    PlaneSet PlanesAcross(const WorldBox& box, PlaneSet planes = AllPlanes) const;

    Relation RelationOf(const WorldBox& box) const
    {
        const PlaneSet across = PlanesAcross(box);
        return across == NoneSeen ? Relation::Outside : across == 0 ? Relation::Inside : Relation::Touches;
    }
    bool Sees(const WorldBox& box) const { return PlanesAcross(box) != NoneSeen; }

    /// How many times the height of the picture a length at a place takes up at most; infinite at
    /// and behind the eye.
    float ShareOfHeight(const Vector& place, float length) const;

private:
    struct Plane
    {
        double x, y, z, w; ///< inside where x * X + y * Y + z * Z + w >= 0
    };

    std::array<Plane, 6> m_planes;
    Plane m_depth;          ///< gives clip W
    double m_lengthScale;   ///< of the rows that give clip X and Y
};

} // namespace OV::Host
