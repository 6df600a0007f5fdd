#pragma once

namespace OV
{

class Scene;

} // namespace OV

namespace OV::Host::Detail
{

/// Pixels about one that points of the scene reach: GL leaves a point out whose middle lies outside.
int ReachOfPoints(const Scene& scene);

/// Pixels about one that lines of the scene reach, and that it takes to tell whether they are seen.
int ReachOfLines(const Scene& scene);

} // namespace OV::Host::Detail
