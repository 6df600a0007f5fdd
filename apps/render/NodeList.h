#pragma once

#include "orvane_host/import/ImportResult.h"

#include <string>
#include <vector>

namespace OV::RenderApp
{

/// The tree of the named nodes: a line each, indented by how many named ones are above it.
std::string ListNodesAsText(const Scene& scene, const std::vector<Host::ImportedNode>& nodes);

/// The same as a JSON array of objects with "name", "path" and, where there are some, "children".
std::string ListNodesAsJSON(const Scene& scene, const std::vector<Host::ImportedNode>& nodes);

} // namespace OV::RenderApp
