#pragma once

#include "orvane_host/import/ImportResult.h"

#include <string>
#include <vector>
#include <vector>

namespace OV::Host
{

/// Finds a node by its name, or by the names from some node down to it with slashes between
/// them. Of several the one that comes first in the file.
/// @return null if there is none.
Node* FindNode(const std::vector<ImportedNode>& nodes, const std::string& path);

/// The names from the file's root down to a node with slashes between them, which FindNode takes.
/// Names that are empty at its begin are left out; so is what is above a node that is not listed.
std::string PathOf(const std::vector<ImportedNode>& nodes, const Node& node);

/// What PathOf gives for every node that has a name, in the order of the nodes.
std::vector<std::string> ListNodePaths(const std::vector<ImportedNode>& nodes);

/// Some names of nodes, for a person who named none of them.
std::string SomeNodeNames(const std::vector<ImportedNode>& nodes);

} // namespace OV::Host
