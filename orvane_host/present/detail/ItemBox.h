#pragma once

#include "orvane_host/present/detail/SunView.h"

namespace OV
{

class Mesh;
class MeshNode;

} // namespace OV

namespace OV::Host::Detail
{

class BatchES20;

/// What a mesh with render data stands for where it is drawn together with others; else null.
const BatchES20* BatchOf(const Mesh& mesh);

/// The box about a mesh where it stands in the world, or about all that is drawn together with it.
/// @param mesh one that has render data.
CastBox BoxOf(const Mesh& mesh, const MeshNode& node);

} // namespace OV::Host::Detail
