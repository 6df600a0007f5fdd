#pragma once

#include "host/ImportResult.h"

#include <string>
#include <vector>

namespace OV::RenderApp
{

/// Finds a node by its name, or by the names from some node down to it with slashes between
/// them. Of several the one that comes first in the file.
/// @return null if there is none.
Node* FindNode(const std::vector<Host::ImportedNode>& nodes, const std::string& path);

/// Some names of nodes, for a person who named none of them.
std::string SomeNodeNames(const std::vector<Host::ImportedNode>& nodes);

} // namespace OV::RenderApp
