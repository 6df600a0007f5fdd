#pragma once

#include <cstddef>

namespace OV::Host
{

/// When what stands still is drawn together.
enum class BatchUse
{
    Auto, ///< in scenes of so many meshes at nodes that it pays
    On,
    Off, ///< node by node, and what lies outside the view too
};

/// How the many meshes of a large scene are drawn in few calls. No setting changes what is seen but
/// smallestPixels.
struct BatchSettings
{
    BatchUse use = BatchUse::Auto;
    /// What takes up fewer pixels of the picture's height is left out of the picture, though not of
    /// what is picked; 0 or more. Not where things are drawn node by node.
    float smallestPixels = 0.0f;
};

/// What is drawn together, for whoever wants to know.
struct BatchCounts
{
    std::size_t batches = 0;
    std::size_t pieces = 0; ///< meshes at nodes in them, as far as they are drawn so
    std::size_t single = 0; ///< meshes at nodes that are drawn by themselves
    std::size_t triangles = 0; ///< of the pieces
    std::size_t bytes = 0;  ///< of the buffers of the batches
};

} // namespace OV::Host
