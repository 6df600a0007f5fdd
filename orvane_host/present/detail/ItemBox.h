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

/// How far beyond its box, in the world's units, a mesh may come to lie by numbers of GL, which are floats.
/// @param mesh as for the box.
double RoundingOf(const Mesh& mesh, const MeshNode& node);

} // namespace OV::Host::Detail
