#pragma once

#include "orvane_host/geometry/RayCaster.h"
#include "orvane_host/geometry/SectionFill.h"
#include "orvane/math/Point3d.h"
#include "orvane/math/Vector3d.h"

#include <vector>

namespace OV
{

class Scene;

} // namespace OV

namespace OV::Host
{

/// A moment out of a time that is looked at.
struct SunMoment
{
    QGM::Vector3d towardSun; ///< world space, of any length above 0
    double hours = 0.0;      ///< that it stands for
    double toNext = 0.0;     ///< hours to the next of the moments; 0 where the sun isn't followed to it
};

/// A place on a surface, in world space.
struct SunSpot
{
    QGM::Point3d place;
    QGM::Vector3d normal; ///< to the side that is looked at, of length 1
};

/// Counts how long the sun shines on places of a scene, without GL.
///
/// Where it shines at one moment and not at the next, the time between is halved again and again in search of
/// the change, so that hours go up and down evenly along a surface: what is counted stays within the
/// longest time between moments of what the moments alone come to.
///
/// The sun shines on a place where it stands on the side of its normal and no triangle of what is
/// drawn stands between the two. What is see-through as a whole (Material::GetOpacity below 1) and
/// what planes cut away stop no sun. The triangles are held as they were, see RayCaster.
class SunHours
{
public:
    /// @param moments when the sun is above the horizon.
    /// @param cut planes that cut away what lies on the side of their normals.
    SunHours(const Scene& scene, std::vector<SunMoment> moments, std::vector<SectionPlane> cut = {});

    /// Hours of sun on a place.
    double At(const SunSpot& spot) const;

    /// The same for many places, on all processors; the order of the result is theirs.
    std::vector<float> At(const std::vector<SunSpot>& spots) const;

    /// How far rays begin off a surface, so that it doesn't shade itself.
    double GetLift() const { return m_lift; }

private:
    bool IsLit(const SunSpot& spot, const QGM::Point3d& from, const QGM::Vector3d& towardSun) const;
    bool IsShaded(const QGM::Point3d& from, const QGM::Vector3d& towardSun) const;
    bool IsCutAway(const QGM::Point3d& place) const;

    RayCaster m_caster;
    std::vector<SunMoment> m_moments;
    std::vector<SectionPlane> m_cut;
    double m_lift;
};

} // namespace OV::Host
