#pragma once

struct aiScene;

namespace OV::Host
{

/// Gives smooth normals to meshes that have none and whose triangles share vertices, or some of whose vertices have
/// no place.
///
/// The parser makes normals vertex by vertex; corners that share one could have no edge between
/// them, and a cube of eight vertices would be shaded like a ball. A vertex is therefore divided
/// where its normals differ, and only there. The normals are those that the parser makes of
/// corners that are all apart, at a fraction of the time, as the triangles around a vertex are
/// known. Where a mesh is more than triangles its corners are set apart for the parser instead.
/// @param maxAngle in degrees: a sharper edge stays sharp.
/// @return whether there was any such mesh.
bool GiveNormalsToSharedCorners(aiScene& scene, float maxAngle);

/// Leaves out the normals of meshes all of which have no length, as some programs write them into STL
/// files, so that they are made like those that are missing.
void LeaveOutEmptyNormals(aiScene& scene);

} // namespace OV::Host
