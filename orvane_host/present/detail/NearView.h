#pragma once

#include "orvane_host/geometry/SectionFill.h"
#include "orvane/math/Transform.h"
#include "orvane/math/Vector.h"

#include <array>
#include <cstddef>
#include <vector>

namespace OV
{

class CameraNode;

} // namespace OV

namespace OV::Host
{

struct WorldBox;

} // namespace OV::Host

namespace OV::Host::Detail
{

/// What a camera with perspective has in its picture, as a cone without near and far, less what planes cut
/// away.
class NearView
{
public:
    /// How much wider than the camera sees the cone is, for what reaches beyond its own place: factors of
    /// half the picture's width and height, 1 for not at all.
    struct Room
    {
        double across = 1.0;
        double up = 1.0;
    };

    /// @param camera with an up-to-date transform, one that is not scaled.
    /// @param aspect width over height of the picture.
    /// @param cuts what lies on the side of their normals is cut away.
    NearView(const CameraNode& camera, double aspect, const Room& room, const std::vector<SectionPlane>& cuts);

    /// Whether the camera is one that there can be a cone of.
    static bool Suits(const CameraNode& camera);

    bool operator==(const NearView& other) const
    {
        return m_count == other.m_count && m_forms == other.m_forms && m_eye == other.m_eye;
    }
    bool operator!=(const NearView& other) const { return !(*this == other); }

    /// What rounding may move a point by, in the numbers of GL.
    double GetSlack() const { return m_slack; }

    /// How far before the eye a level plane is seen nearest; infinite where it isn't.
    /// @param up unit.
    double DepthOfPlane(const Vector& position, const Vector& up) const;

private:
    friend class NearSpace;

    /// A function of places that has no terms but linear ones.
    struct Form
    {
        double x, y, z, w;

        bool operator==(const Form& other) const
        {
            return x == other.x && y == other.y && z == other.z && w == other.w;
        }
    };

    using Direction = std::array<double, 3>;

    /// Planes beyond are left out: more is seen then.
    static constexpr std::size_t kMostForms = 17;

    Direction m_eye{};
    std::array<Direction, 4> m_corners{}; ///< from the eye, at depth 1
    /// In world space, from the eye: the depth, and what is not below 0 within the cone.
    std::array<Form, kMostForms> m_forms{};
    std::size_t m_count = 0;
    double m_slack = 0.0;
};

/// The same in the space of a mesh, to ask for its parts.
class NearSpace
{
public:
    /// Of world space.
    explicit NearSpace(const NearView& view);

    /// Of a mesh at a place; may be set again, which keeps the room.
    NearSpace(const NearView& view, const Transform& place) { Set(view, place); }
    void Set(const NearView& view, const Transform& place);

    /// No depth within the box that is seen is smaller. Infinite where nothing of it is; what is not below the
    /// limit may be told as any such number.
    double LeastDepth(const WorldBox& box, double limit) const;

    /// The smallest depth of a point, a part of a line or a triangle that is seen, likewise.
    double DepthOf(const Vector& point, double limit) const;
    double DepthOf(const Vector& from, const Vector& to, double limit) const;
    double DepthOf(const Vector& first, const Vector& second, const Vector& third, double limit) const;

private:
    using Form = NearView::Form;

    static constexpr std::size_t kMostForms = NearView::kMostForms;

    /// What the forms give at a place.
    using Values = std::array<double, kMostForms>;

    double DepthAt(const Vector& point) const;
    Values ValuesAt(const Vector& point) const;
    unsigned int OutsideOf(const Values& values) const;
    double DepthOf(const Values* corners, std::size_t count, double limit) const;

    std::array<Form, kMostForms> m_forms{};
    std::size_t m_count = 0;
};

} // namespace OV::Host::Detail
