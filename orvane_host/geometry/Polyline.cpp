#include "orvane_host/geometry/Polyline.h"

#include "orvane/scene/RawLine.h"

#include <algorithm>
#include <cmath>

namespace OV::Host
{

namespace
{

bool IsFinite(const Vector& point)
{
    return std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z);
}

/// Not by the operator of Vector, which takes near ones for the same.
bool Same(const Vector& left, const Vector& right)
{
    return left.x == right.x && left.y == right.y && left.z == right.z;
}

std::shared_ptr<RawLine> MakePart(const std::vector<Vector>& points)
{
    std::vector<unsigned short> pairs;
    for (std::size_t i = 0; i + 1 < points.size(); ++i)
    {
        pairs.push_back(static_cast<unsigned short>(i));
        pairs.push_back(static_cast<unsigned short>(i + 1));
    }
    auto line = std::make_shared<RawLine>();
    line->SetPositionBuffer(points);
    line->SetIndices(pairs);
    line->EndDescription(true);
    return line;
}

} // namespace

std::vector<std::shared_ptr<RawLine>> Polyline::Make(const std::vector<Vector>& points, bool closed)
{
    std::vector<Vector> path;
    for (const Vector& point : points)
    {
        if (IsFinite(point) && (path.empty() || !Same(point, path.back())))
        {
            path.push_back(point);
        }
    }
    if (closed && path.size() > 2 && !Same(path.front(), path.back()))
    {
        path.push_back(path.front());
    }
    std::vector<std::shared_ptr<RawLine>> parts;
    for (std::size_t first = 0; first + 1 < path.size(); first += MostPoints - 1)
    {
        const std::size_t last = std::min(first + MostPoints, path.size());
        parts.push_back(MakePart(std::vector<Vector>(path.begin() + static_cast<std::ptrdiff_t>(first),
                                                     path.begin() + static_cast<std::ptrdiff_t>(last))));
    }
    return parts;
}

} // namespace OV::Host
