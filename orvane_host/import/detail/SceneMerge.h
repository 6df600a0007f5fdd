#pragma once

#include "orvane_host/import/ImportResult.h"

#include <cstdint>
#include <string>
#include <vector>

namespace OV::Host
{

/// Moves what was imported into another scene, below its root: geometry, meshes and materials as
/// they are, nodes as new ones, since a node belongs to one scene for life. The result is left
/// without a scene, and what it lists is in the other one.
/// @param model has a scene, as its import made it.
/// @param scale of all that is moved, above 0.
/// @param number tells its nodes from those of other files, at the begin of their paths.
/// @return what came below the root: first the node at the top of the file, then what the import
///         put beside that.
std::vector<Node*> MoveInto(Scene& scene, ImportResult& model, double scale, std::uint64_t number);

/// Adds what a further file held to a report on several. Unit and format stay.
/// @param scale as of MoveInto.
void AddReport(ImportReport& sum, const ImportReport& more, double scale);

/// A name for the top of a further file that no other node has: its own, else that of the file, with
/// a number where even that is taken.
std::string UniqueTopName(const std::vector<ImportedNode>& others, const ImportResult& model);

} // namespace OV::Host
