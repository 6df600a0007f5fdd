#pragma once

#include "orvane_host/import/detail/ModelData.h"

namespace OV::Host
{

/// Says of surfaces that have faces in one plane with others which of them stand back, so that one of the two is
/// seen everywhere. See Detail::FindCoplanarOrder for which.
///
/// Meshes some of whose surfaces stand back further than others are divided between them; no surface is cut, so
/// that edges, sections and what hides a node find what the file has. Trusts that the indices of nodes and meshes
/// can be followed where they are in range, and nothing else.
/// @param showsBacks as ImportOptions::showBacks.
void OrderCoplanarFaces(ModelData& model, bool showsBacks);

} // namespace OV::Host
