#pragma once

struct aiMesh;
struct aiScene;

namespace OV::Host
{

/// Gives each corner of a triangle a vertex of its own in meshes that have no normals.
///
/// The parser makes normals vertex by vertex; corners that share one could have no edge
/// between them, and a cube of eight vertices would be shaded like a ball.
/// @return whether there was any such mesh.
bool SeparateCornersWithoutNormals(aiScene& scene);

} // namespace OV::Host
