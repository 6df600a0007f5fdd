#include "orvane_host/geometry/RayCaster.h"

#include "orvane_host/geometry/detail/BoxTree.h"
#include "orvane_host/geometry/detail/MeshNodes.h"
#include "orvane/math/Transform.h"
#include "orvane/math/Vector.h"
#include "orvane/scene/Mesh.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

namespace OV::Host
{

namespace
{

using QGM::Point3d;
using QGM::Vector3d;

/// What a few roundings may come to, as a share.
constexpr double kRounding = 16.0 * std::numeric_limits<double>::epsilon();

double Of(const Point3d& point, int axis)
{
    return axis == 0 ? point.x : axis == 1 ? point.y : point.z;
}

double Of(const Vector3d& vector, int axis)
{
    return axis == 0 ? vector.x : axis == 1 ? vector.y : vector.z;
}

bool IsFinite(const Point3d& point)
{
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

/// Wider than the triangle by what rounding may make of its edges, so that its box never hides it.
Detail::Box BoxOf(const Point3d (&corners)[3])
{
    Detail::Box box;
    double longest = 0.0;
    for (int axis = 0; axis < 3; ++axis)
    {
        const double values[] = {Of(corners[0], axis), Of(corners[1], axis), Of(corners[2], axis)};
        box.low[axis] = std::min({values[0], values[1], values[2]});
        box.high[axis] = std::max({values[0], values[1], values[2]});
        longest = std::max(longest, box.high[axis] - box.low[axis]);
    }
    for (int axis = 0; axis < 3; ++axis)
    {
        box.low[axis] -= kRounding * longest;
        box.high[axis] += kRounding * longest;
    }
    return box;
}

/// A place beside the ray: the ray itself is the zero point.
struct Beside
{
    double x;
    double y;
    double depth;
};

/// Twice the area of the triangle that an edge makes with the ray, and its side. Of two triangles
/// that share the edge one gets exactly the other's value with the other sign, since the two ends
/// come in one order whoever asks: then it doesn't matter how a compiler fuses the products.
double AreaBeside(const Beside& from, const Beside& to)
{
    const bool inOrder = from.x < to.x || (from.x == to.x && from.y <= to.y);
    const Beside& a = inOrder ? from : to;
    const Beside& b = inOrder ? to : from;
    const double area = a.x * b.y - a.y * b.x;
    return inOrder ? area : -area;
}

} // namespace

/// A ray as the tests of boxes and of triangles want it.
class RayCaster::Ray
{
public:
    Ray(const Point3d& origin, const Vector3d& direction, double from) : m_origin(origin), m_from(from)
    {
        m_depth = 0;
        for (int axis = 0; axis < 3; ++axis)
        {
            m_starts[axis] = Of(origin, axis);
            m_inverses[axis] = 1.0 / Of(direction, axis);
            m_isDown[axis] = std::signbit(Of(direction, axis));
            m_depth = std::abs(Of(direction, axis)) > std::abs(Of(direction, m_depth)) ? axis : m_depth;
        }
        m_x = (m_depth + 1) % 3;
        m_y = (m_depth + 2) % 3;
        // Keeps the turn of triangles what it is when seen along the ray.
        if (m_isDown[m_depth])
        {
            std::swap(m_x, m_y);
        }
        m_isValid = IsFinite(origin) && std::isfinite(direction.x) && std::isfinite(direction.y)
            && std::isfinite(direction.z) && std::isfinite(m_inverses[m_depth]);
        m_scale = m_inverses[m_depth];
        m_shearX = Of(direction, m_x) / Of(direction, m_depth);
        m_shearY = Of(direction, m_y) / Of(direction, m_depth);
    }

    bool IsValid() const { return m_isValid; }
    bool IsDown(std::uint32_t axis) const { return m_isDown[axis]; }

    /// Whether the ray comes through a box on its way to the limit; sometimes also where it narrowly
    /// doesn't, but never the other way.
    bool Meets(const Detail::Box& box, double limit) const
    {
        double enters = m_from;
        double leaves = limit;
        for (int axis = 0; axis < 3; ++axis)
        {
            const double* const ends[] = {box.low, box.high};
            double in = (ends[m_isDown[axis] ? 1 : 0][axis] - m_starts[axis]) * m_inverses[axis];
            double out = (ends[m_isDown[axis] ? 0 : 1][axis] - m_starts[axis]) * m_inverses[axis];
            in *= in > 0.0 ? 1.0 - kRounding : 1.0 + kRounding;
            out *= out > 0.0 ? 1.0 + kRounding : 1.0 - kRounding;
            // A ray within the plane of a side gives no number there, and goes through.
            enters = in > enters ? in : enters;
            leaves = out < leaves ? out : leaves;
        }
        return enters <= leaves;
    }

    /// Seen along the ray, which turns it into a plane problem: sheared, so that the ray runs along
    /// an axis. Whatever triangles share a corner see it at the same place, bit for bit.
    Beside Seen(const Point3d& corner) const
    {
        const Point3d apart(corner.x - m_origin.x, corner.y - m_origin.y, corner.z - m_origin.z);
        const double depth = Of(apart, m_depth);
        return {Of(apart, m_x) - m_shearX * depth, Of(apart, m_y) - m_shearY * depth, m_scale * depth};
    }

    bool Reaches(double distance, double limit) const { return distance >= m_from && distance <= limit; }

private:
    Point3d m_origin;
    double m_from;
    double m_starts[3];
    double m_inverses[3];
    bool m_isDown[3];
    bool m_isValid;
    int m_depth; ///< the axis that the ray runs along most
    int m_x;     ///< the other two, in such an order that all three are right-handed along the ray
    int m_y;
    double m_scale;
    double m_shearX;
    double m_shearY;
};

struct RayCaster::Meeting
{
    double distance;
    double second;
    double third;
    std::uint32_t triangle; ///< in m_triangles

    /// Where a ray meets a triangle.
    static bool Find(const Ray& ray, const Triangle& triangle, bool frontOnly, double limit, Meeting& found)
    {
        const Beside a = ray.Seen(triangle.corners[0]);
        const Beside b = ray.Seen(triangle.corners[1]);
        const Beside c = ray.Seen(triangle.corners[2]);
        // Seen along the ray a front turns clockwise in these axes.
        const double first = AreaBeside(c, b);
        const double second = AreaBeside(a, c);
        const double third = AreaBeside(b, a);
        const bool isBack = first < 0.0 || second < 0.0 || third < 0.0;
        const bool isFront = first > 0.0 || second > 0.0 || third > 0.0;
        if (isBack && (isFront || frontOnly))
        {
            return false;
        }
        const double area = first + second + third;
        if (area == 0.0)
        {
            return false;
        }
        found.second = second / area;
        found.third = third / area;
        found.distance = (first * a.depth + second * b.depth + third * c.depth) / area;
        return ray.Reaches(found.distance, limit);
    }
};

RayCaster::RayCaster(const Scene& scene, const Choice& choice)
{
    std::vector<Point3d> points;
    for (MeshNode* node : Detail::MeshNodesOf(scene))
    {
        for (Mesh* mesh : node->EachMesh())
        {
            const Faces faces = choice ? choice(*node, *mesh) : ShownFaces(*node, *mesh);
            if (faces == Faces::None)
            {
                continue;
            }
            points.clear();
            for (const Vector& position : mesh->GetPositionBuffer())
            {
                Point3d point(position.x, position.y, position.z);
                points.push_back(point *= node->GetGlobal().GetTransf3d());
            }
            m_things.push_back({node, mesh, faces == Faces::Front});
            const std::vector<unsigned short>& indices = mesh->GetIndices();
            for (std::size_t i = 0; i + 2 < indices.size(); i += 3)
            {
                Take(points, {indices[i], indices[i + 1], indices[i + 2]}, i / 3);
            }
        }
    }
    Build();
}

RayCaster::RayCaster(const std::vector<Point3d>& points, const std::vector<std::uint32_t>& indices)
{
    m_things.push_back({nullptr, nullptr, false});
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3)
    {
        Take(points, {indices[i], indices[i + 1], indices[i + 2]}, i / 3);
    }
    Build();
}

RayCaster::~RayCaster() = default;
RayCaster::RayCaster(RayCaster&& other) noexcept = default;
RayCaster& RayCaster::operator=(RayCaster&& other) noexcept = default;

RayCaster::Faces RayCaster::ShownFaces(const MeshNode& node, const Mesh& mesh)
{
    const bool isHidden = (node.GetFlags() & NodeFlagHidden) != 0;
    return !isHidden && (mesh.GetMaterial() || node.CurrentNodeMaterial()) ? Faces::Both : Faces::None;
}

void RayCaster::Take(const std::vector<Point3d>& points, const std::uint32_t (&corners)[3], std::size_t number)
{
    Triangle triangle;
    for (int i = 0; i < 3; ++i)
    {
        if (corners[i] >= points.size() || !IsFinite(points[corners[i]]))
        {
            return;
        }
        triangle.corners[i] = points[corners[i]];
    }
    triangle.thing = static_cast<std::uint32_t>(m_things.size() - 1);
    triangle.number = static_cast<std::uint32_t>(number);
    m_triangles.push_back(triangle);
}

void RayCaster::Build()
{
    std::vector<Detail::Box> boxes;
    boxes.reserve(m_triangles.size());
    for (const Triangle& triangle : m_triangles)
    {
        boxes.push_back(BoxOf(triangle.corners));
    }
    std::vector<std::uint32_t> order;
    m_branches = Detail::BuildBoxTree(boxes, order);
    std::vector<Triangle> triangles;
    triangles.reserve(m_triangles.size());
    for (const std::uint32_t number : order)
    {
        triangles.push_back(m_triangles[number]);
    }
    m_triangles = std::move(triangles);
}

template <class Visitor>
void RayCaster::Visit(const Ray& ray, const double& limit, const Visitor& visit) const
{
    if (m_branches.empty() || !ray.IsValid())
    {
        return;
    }
    std::uint32_t waiting[Detail::kDeepestBoxTree + 1];
    std::size_t depth = 0;
    waiting[depth++] = 0;
    while (depth > 0)
    {
        const std::uint32_t index = waiting[--depth];
        const Detail::BoxBranch& branch = m_branches[index];
        if (!ray.Meets(branch.box, limit))
        {
            continue;
        }
        if (branch.count == 0)
        {
            // The nearer child is the next one out.
            const bool isSecondNearer = ray.IsDown(branch.axis);
            waiting[depth++] = isSecondNearer ? index + 1 : branch.second;
            waiting[depth++] = isSecondNearer ? branch.second : index + 1;
            continue;
        }
        for (std::uint32_t i = branch.first; i < branch.first + branch.count; ++i)
        {
            Meeting meeting{0.0, 0.0, 0.0, i};
            if (Meeting::Find(ray, m_triangles[i], m_things[m_triangles[i].thing].frontOnly, limit, meeting)
                && visit(meeting))
            {
                return;
            }
        }
    }
}

bool RayCaster::IsBefore(const Meeting& left, const Meeting& right) const
{
    const auto place = [this](const Meeting& meeting)
    {
        const Triangle& triangle = m_triangles[meeting.triangle];
        return std::make_tuple(meeting.distance, triangle.thing, triangle.number);
    };
    return place(left) < place(right);
}

RayHit RayCaster::HitOf(const Meeting& meeting) const
{
    const Triangle& triangle = m_triangles[meeting.triangle];
    const Thing& thing = m_things[triangle.thing];
    return {meeting.distance, thing.node, thing.mesh, triangle.number, meeting.second, meeting.third};
}

std::optional<RayHit> RayCaster::Cast(const Point3d& origin, const Vector3d& direction, double from, double to) const
{
    std::optional<Meeting> nearest;
    double limit = to;
    Visit(Ray(origin, direction, from), limit,
          [&](const Meeting& meeting)
          {
              if (!nearest || IsBefore(meeting, *nearest))
              {
                  nearest = meeting;
                  limit = meeting.distance;
              }
              return false;
          });
    return nearest ? std::optional<RayHit>(HitOf(*nearest)) : std::nullopt;
}

bool RayCaster::IsBlocked(const Point3d& origin, const Vector3d& direction, double from, double to) const
{
    bool isBlocked = false;
    Visit(Ray(origin, direction, from), to, [&](const Meeting&) { return isBlocked = true; });
    return isBlocked;
}

std::vector<RayHit> RayCaster::CastThrough(const Point3d& origin, const Vector3d& direction, double from,
                                           double to) const
{
    std::vector<Meeting> meetings;
    Visit(Ray(origin, direction, from), to,
          [&](const Meeting& meeting)
          {
              meetings.push_back(meeting);
              return false;
          });
    std::sort(meetings.begin(), meetings.end(),
              [this](const Meeting& left, const Meeting& right) { return IsBefore(left, right); });
    std::vector<RayHit> hits;
    for (const Meeting& meeting : meetings)
    {
        hits.push_back(HitOf(meeting));
    }
    return hits;
}

} // namespace OV::Host
