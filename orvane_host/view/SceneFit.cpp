#include "orvane_host/view/SceneFit.h"

#include "orvane/math/Transform.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

namespace OV::Host
{

namespace
{

using Vec = QGM::Vector3d;

constexpr double kFarthest = 1e15;

double Dot(const Vec& a, const Vec& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

/// Axes of the camera in world space; z points backwards.
struct Axes
{
    Vec x;
    Vec y;
    Vec z;

    explicit Axes(const Transform& global)
    {
        const QGM::Transf3d& t = global.GetTransf3d();
        x = t.xDir();
        y = t.yDir();
        z = t.zDir();
        x.normalize();
        y.normalize();
        z.normalize();
    }
};

struct Range
{
    double low = std::numeric_limits<double>::max();
    double high = std::numeric_limits<double>::lowest();

    void Add(double value)
    {
        low = std::min(low, value);
        high = std::max(high, value);
    }

    double Middle() const { return (low + high) / 2.0; }
    double Length() const { return high - low; }
};

/// How far the vertices reach along the camera's axes and against the sides of its view.
struct Extent
{
    // Of the tangents of half the view's width and height.
    double tanH = 1.0;
    double tanV = 1.0;

    Range x;
    Range y;
    Range z;
    // A point is inside the side planes of an eye at (ex, ey, ez) when right <= ex + tanH * ez
    // and left <= -ex + tanH * ez; up and down likewise.
    double right = std::numeric_limits<double>::lowest();
    double left = std::numeric_limits<double>::lowest();
    double up = std::numeric_limits<double>::lowest();
    double down = std::numeric_limits<double>::lowest();

    void Add(double px, double py, double pz)
    {
        x.Add(px);
        y.Add(py);
        z.Add(pz);
        right = std::max(right, px + tanH * pz);
        left = std::max(left, -px + tanH * pz);
        up = std::max(up, py + tanV * pz);
        down = std::max(down, -py + tanV * pz);
    }

    double Diagonal() const { return std::hypot(x.Length(), y.Length(), z.Length()); }

    /// Whether there is something to fit, in numbers that the camera can hold.
    bool IsUsable() const
    {
        const double farthest = std::max({std::fabs(x.low), std::fabs(x.high), std::fabs(y.low), std::fabs(y.high),
                                          std::fabs(z.low), std::fabs(z.high)});
        return farthest <= kFarthest && Diagonal() > std::max(1e-4, farthest * 1e-6);
    }
};

/// Calls visit(x, y, z) with each indexed vertex of a mesh, along the camera's axes, but for those that no camera has
/// room for: one of them would leave the others without a view.
template <typename Visit>
void VisitMesh(const Mesh& mesh, const QGM::Transf3d& global, const Axes& axes, const Visit& visit)
{
    const auto row = [&](const Vec& axis)
    {
        return std::array<double, 4>{Dot(axis, global.xDir()), Dot(axis, global.yDir()), Dot(axis, global.zDir()),
                                     axis.x * global.m[0][3] + axis.y * global.m[1][3] + axis.z * global.m[2][3]};
    };
    const std::array<double, 4> rows[3] = {row(axes.x), row(axes.y), row(axes.z)};
    const auto along = [](const std::array<double, 4>& r, const Vector& p)
    { return r[0] * p.x + r[1] * p.y + r[2] * p.z + r[3]; };
    const std::vector<Vector>& positions = mesh.GetPositionBuffer();
    const auto visitVertex = [&](std::size_t vertex)
    {
        if (vertex < positions.size())
        {
            const Vector& p = positions[vertex];
            const double x = along(rows[0], p);
            const double y = along(rows[1], p);
            const double z = along(rows[2], p);
            // Written so that what is not a number fails.
            if (std::fabs(x) <= kFarthest && std::fabs(y) <= kFarthest && std::fabs(z) <= kFarthest)
            {
                visit(x, y, z);
            }
        }
    };
    const bool isLine = mesh.Type() == NodeTypeLine;
    for (const unsigned short index : mesh.GetIndices())
    {
        visitVertex(index);
        if (isLine)
        {
            visitVertex(std::size_t(index) + 4); // of the point that it goes to
        }
    }
}

/// Calls visit for all vertices at nodes that count.
template <typename Visit>
void VisitScene(const Scene& scene, const SceneFit::Filter& counts, const Axes& axes, const Visit& visit)
{
    std::vector<Node*> open;
    if (scene.GetRoot())
    {
        open.push_back(scene.GetRoot());
    }
    while (!open.empty())
    {
        Node* node = open.back();
        open.pop_back();
        open.insert(open.end(), node->EachChild().begin(), node->EachChild().end());
        const auto* meshNode = dynamic_cast<const MeshNode*>(node);
        if (!meshNode)
        {
            continue;
        }
        for (const Mesh* mesh : meshNode->EachMesh())
        {
            if (counts(*meshNode, *mesh))
            {
                VisitMesh(*mesh, node->GetGlobal().GetTransf3d(), axes, visit);
            }
        }
    }
}

/// The vertices that appear farthest to either side of an eye, on one axis of the picture.
struct Margins
{
    struct Point
    {
        double slope = std::numeric_limits<double>::lowest();
        double offset = 0.0;
        double depth = 1.0;
    };

    Point high;
    Point low;

    void Add(double offset, double depth, double eye)
    {
        const double slope = (offset - eye) / depth;
        if (slope > high.slope)
        {
            high = {slope, offset, depth};
        }
        if (-slope > low.slope)
        {
            low = {-slope, offset, depth};
        }
    }

    /// Where the two appear equally far from the middle.
    double Middle() const
    {
        return (high.offset * low.depth + low.offset * high.depth) / (high.depth + low.depth);
    }
};

struct Place
{
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    double fov = 0.0;
};

/// The nearest eye that sees everything. Both axes of the picture are tight there or have room.
Place FindPerspective(const Extent& extent, double fov)
{
    Place eye;
    eye.x = (extent.right - extent.left) / 2.0;
    eye.y = (extent.up - extent.down) / 2.0;
    eye.z = std::max({(extent.right + extent.left) / (2.0 * extent.tanH),
                      (extent.up + extent.down) / (2.0 * extent.tanV),
                      // A line seen end on, or a very wide angle, must not bring the eye inside.
                      extent.z.high + 0.025 * extent.Diagonal()});
    eye.fov = fov;
    return eye;
}

/// Makes the room left over equal on both sides, at the same distance. Another vertex may be the
/// outermost after a step; few steps bring it to rest.
void Center(Place& eye, const Scene& scene, const SceneFit::Filter& counts, const Axes& axes, const Extent& extent)
{
    // It lies between the vertices that were measured, whatever became of them since.
    const auto within = [](const Range& range, double middle) { return std::max(range.low, std::min(range.high, middle)); };
    for (int step = 0; step < 4; ++step)
    {
        Margins horizontal;
        Margins vertical;
        VisitScene(scene, counts, axes,
                   [&](double x, double y, double z)
                   {
                       horizontal.Add(x, eye.z - z, eye.x);
                       vertical.Add(y, eye.z - z, eye.y);
                   });
        const Place before = eye;
        eye.x = within(extent.x, horizontal.Middle());
        eye.y = within(extent.y, vertical.Middle());
        if (std::hypot(eye.x - before.x, eye.y - before.y) < 1e-6 * std::fabs(eye.z))
        {
            return;
        }
    }
}

Place FindOrthographic(const Extent& extent, double aspect, double fill)
{
    const double halfHeight = std::max(extent.y.Length(), extent.x.Length() / aspect) / 2.0 / fill;
    Place eye;
    eye.x = extent.x.Middle();
    eye.y = extent.y.Middle();
    eye.z = extent.z.high + extent.Diagonal();
    eye.fov = std::atan(std::max(halfHeight, 1e-3 * extent.Diagonal()) / (eye.z - extent.z.Middle()));
    return eye;
}

void Apply(CameraNode& camera, const Place& eye, const Axes& axes, const Extent& extent)
{
    const QGM::Point3d position(axes.x.x * eye.x + axes.y.x * eye.y + axes.z.x * eye.z,
                                axes.x.y * eye.x + axes.y.y * eye.y + axes.z.y * eye.z,
                                axes.x.z * eye.x + axes.y.z * eye.y + axes.z.z * eye.z);
    Transform transform;
    transform.SetTransf3d(QGM::Transf3d(position, axes.x, axes.y, axes.z, false));
    camera.SetGlobal(transform);
    camera.SetFOV(static_cast<float>(eye.fov));
    camera.SetDistanceToTarget(static_cast<float>(eye.z - extent.z.Middle()));
    const double slack = 0.01 * extent.Diagonal();
    const double farthest = eye.z - extent.z.low + slack;
    double nearest = eye.z - extent.z.high - slack;
    if (camera.GetProjection() == CameraNode::Perspective)
    {
        nearest = std::max(nearest, farthest * 1e-4);
    }
    camera.SetNearFar(static_cast<float>(nearest), static_cast<float>(farthest));
}

} // namespace

bool SceneFit::Frame(CameraNode& camera, const Scene& scene, float aspect, float margin)
{
    const auto isShown = [](const MeshNode& node, const Mesh&) { return (node.GetFlags() & NodeFlagHidden) == 0; };
    return Frame(camera, scene, isShown, aspect, margin);
}

bool SceneFit::Frame(CameraNode& camera, const Scene& scene, const Filter& counts, float aspect, float margin)
{
    const double ratio = std::isfinite(aspect) && aspect > 0.0f ? aspect : 1.0;
    const double fill = std::isfinite(margin) ? 1.0 - std::clamp(static_cast<double>(margin), 0.0, 0.95) : 1.0;
    const double fov = camera.GetFOV();
    // The angle belongs to the shorter side.
    const double tangent = std::tan(fov) * fill;
    Extent extent;
    extent.tanV = ratio < 1.0 ? tangent / ratio : tangent;
    extent.tanH = ratio < 1.0 ? tangent : tangent * ratio;

    const Axes axes(camera.GetGlobal());
    VisitScene(scene, counts, axes, [&](double x, double y, double z) { extent.Add(x, y, z); });
    if (!extent.IsUsable())
    {
        return false;
    }
    if (camera.GetProjection() == CameraNode::Perspective)
    {
        Place eye = FindPerspective(extent, fov);
        Center(eye, scene, counts, axes, extent);
        Apply(camera, eye, axes, extent);
    }
    else
    {
        Apply(camera, FindOrthographic(extent, ratio, fill), axes, extent);
    }
    return true;
}

} // namespace OV::Host
